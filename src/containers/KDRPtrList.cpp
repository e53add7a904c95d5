// KDRPtrList.cpp - the two cursor lists, written once over their element type
#include "kdrcore/containers/KDRPtrList.h"

#include <new>
#include <type_traits>

namespace {

// The five fields of either list, by reference: both classes run the same code on them.
template <class E> struct Core {
    static constexpr bool doubly = std::is_same_v<E, s_KDRPtrDListElement>;

    E *& first;
    E *& last;
    E *& current;
    int & position;
    int & size;

    static E * make(void * data) {
        E * e = new (std::nothrow) E();
        if (e != nullptr)
            e->m_data = data;
        return e;
    }

    void init() {
        first = last = current = nullptr;
        position = -1;
        size = 0;
    }

    // Links `e` behind `at`, which is not the last element unless `e` becomes the last.
    void linkAfter(E * at, E * e) {
        e->m_next = at->m_next;
        if constexpr (doubly) {
            e->m_prev = at;
            if (at->m_next != nullptr)
                at->m_next->m_prev = e;
        }
        at->m_next = e;
        if (last == at)
            last = e;
        ++size;
    }

    // Unlinks and frees the successor of `at`.
    void freeAfter(E * at) {
        E * victim = at->m_next;
        at->m_next = victim->m_next;
        if constexpr (doubly) {
            if (victim->m_next != nullptr)
                victim->m_next->m_prev = at;
        }
        if (last == victim)
            last = at;
        delete victim;
        --size;
    }

    bool prepend(void * data) {
        E * e = make(data);
        if (e == nullptr)
            return false;
        e->m_next = first;
        if constexpr (doubly) {
            if (first != nullptr)
                first->m_prev = e;
        }
        first = e;
        if (last == nullptr)
            last = e;
        if (current == nullptr) {
            current = e;
            position = 0;
        } else {
            ++position;
        }
        ++size;
        return true;
    }

    bool append(void * data) {
        E * e = make(data);
        if (e == nullptr)
            return false;
        if (last == nullptr) {
            first = last = current = e;
            position = 0;
            size = 1;
            return true;
        }
        linkAfter(last, e);
        return true;
    }

    bool goToStart() {
        if (first == nullptr)
            return false;
        current = first;
        position = 0;
        return true;
    }

    bool goToEnd() {
        if (last == nullptr)
            return false;
        current = last;
        position = size - 1;
        return true;
    }

    bool goToNext() {
        if (current == nullptr || current->m_next == nullptr)
            return false;
        current = current->m_next;
        ++position;
        return true;
    }

    bool goToData(void * data) {
        if (data == nullptr)
            return false;
        int i = 0;
        for (E * e = first; e != nullptr; e = e->m_next, ++i)
            if (e->m_data == data) {
                current = e;
                position = i;
                return true;
            }
        return false;
    }

    bool goToPosition(int target) {
        if (target < 0 || target >= size)
            return false;
        // Forward from the cursor, else from the start: m_prev is never walked.
        if (target < position) {
            current = first;
            position = 0;
        }
        while (position < target) {
            current = current->m_next;
            ++position;
        }
        return true;
    }

    bool insert(void * data, int target) {
        if (target < 0 || target > size || size == 0)
            return false;
        if (target == 0)
            return prepend(data);
        if constexpr (doubly) {
            if (target == size)
                return append(data);
        }
        E * e = make(data);
        if (e == nullptr)
            return false;
        goToPosition(target - 1);
        linkAfter(current, e);
        current = e;
        position = target;
        return true;
    }

    bool removeFirstData() {
        if (first == nullptr)
            return false;
        if (size == 1) {
            delete first;
            init();
            return true;
        }
        E * old = first;
        first = old->m_next;
        if constexpr (doubly)
            first->m_prev = nullptr;
        if (current == old) {
            current = first;
            position = 0;
        } else {
            --position;
        }
        delete old;
        --size;
        return true;
    }

    bool removeLastData() {
        if (last == nullptr)
            return false;
        if (size == 1) {
            delete last;
            init();
            return true;
        }
        E * before;
        if constexpr (doubly) {
            before = last->m_prev;
        } else {
            before = current != last ? current : first;
            while (before->m_next != last)
                before = before->m_next;
        }
        freeAfter(before);
        current = before;
        position = size - 1;
        return true;
    }

    bool removeAt(int target) {
        if (target == 0)
            return removeFirstData();
        if (target == size - 1)
            return removeLastData();
        if (target < 0 || target >= size)
            return false;
        goToPosition(target - 1);
        freeAfter(current);
        return true;
    }

    bool removeData(void * data) {
        if (data == nullptr || first == nullptr)
            return false;
        if (first->m_data == data)
            return removeFirstData();
        if (last->m_data == data)
            return removeLastData();
        goToStart();
        while (current->m_next != nullptr) {
            if (current->m_next->m_data == data) {
                freeAfter(current);
                return true;
            }
            current = current->m_next;
            ++position;
        }
        return false; // the cursor rests on the last element
    }

    bool removeAll() {
        if (first == nullptr)
            return false;
        for (E * e = first; e != nullptr;) {
            E * next = e->m_next;
            delete e;
            e = next;
        }
        init();
        return true;
    }

    bool reverseList() {
        if (size < 2)
            return false;
        E * previous = nullptr;
        for (E * e = first; e != nullptr;) {
            E * next = e->m_next;
            e->m_next = previous;
            if constexpr (doubly)
                e->m_prev = next;
            previous = e;
            e = next;
        }
        last = first;
        first = previous;
        current = first;
        position = 0;
        return true;
    }

    void copyFrom(E * source) {
        removeAll();
        for (E * e = source; e != nullptr; e = e->m_next)
            if (!append(e->m_data)) {
                removeAll();
                throw std::bad_alloc();
            }
        goToStart();
    }
};

} // namespace

#define KDR_CORE(E) (Core<E>{m_first, m_last, m_current, m_currentPosition, m_size})
#define LIST_CORE KDR_CORE(s_KDRPtrListElement)
#define DLIST_CORE KDR_CORE(s_KDRPtrDListElement)

// ---- KDRPtrList -------------------------------------------------------------------------------

KDRPtrList::KDRPtrList() {
    init();
}

KDRPtrList::KDRPtrList(KDRPtrList const & other) {
    init();
    copy(other);
}

KDRPtrList & KDRPtrList::operator=(KDRPtrList const & other) {
    if (this != &other)
        copy(other);
    return *this;
}

KDRPtrList::~KDRPtrList() {
    removeAll(false);
}

void KDRPtrList::init() {
    LIST_CORE.init();
}

void KDRPtrList::copy(KDRPtrList const & other) {
    LIST_CORE.copyFrom(other.m_first);
}

bool KDRPtrList::prepend(void * data) {
    return LIST_CORE.prepend(data);
}

bool KDRPtrList::append(void * data) {
    return LIST_CORE.append(data);
}

void * KDRPtrList::getFirstData() const {
    return m_first != nullptr ? m_first->m_data : nullptr;
}

void * KDRPtrList::getLastData() const {
    return m_last != nullptr ? m_last->m_data : nullptr;
}

void * KDRPtrList::getCurrentData() const {
    return m_current != nullptr ? m_current->m_data : nullptr;
}

bool KDRPtrList::goToStart() {
    return LIST_CORE.goToStart();
}

bool KDRPtrList::goToEnd() {
    return LIST_CORE.goToEnd();
}

bool KDRPtrList::goToNext() {
    return LIST_CORE.goToNext();
}

bool KDRPtrList::goToData(void * data) {
    return LIST_CORE.goToData(data);
}

bool KDRPtrList::goToPosition(int position) {
    return LIST_CORE.goToPosition(position);
}

void * KDRPtrList::getData(int position) {
    return goToPosition(position) ? m_current->m_data : nullptr;
}

s_KDRPtrListElement * KDRPtrList::getElement(int position) {
    return goToPosition(position) ? m_current : nullptr;
}

bool KDRPtrList::insert(void * data, int position) {
    return LIST_CORE.insert(data, position);
}

int KDRPtrList::insertSorted(void * data, int (*compare)(void *, void *)) {
    if (data == nullptr)
        return -1;
    if (m_first == nullptr || compare(data, m_first->m_data) <= 0)
        return prepend(data) ? 0 : -1;
    if (compare(data, m_last->m_data) >= 0)
        return append(data) ? m_size - 1 : -1;
    int const c = compare(data, m_current->m_data);
    if (c == 0)
        return -1; // a tie with the current element in the middle is refused
    // Before the cursor the search runs from the start up to it, behind the cursor from the
    // cursor up to the last element; the new element goes behind every tie it meets.
    s_KDRPtrListElement * e = c < 0 ? m_first : m_current;
    int at = c < 0 ? 0 : m_currentPosition;
    s_KDRPtrListElement * const end = c < 0 ? m_current : m_last;
    for (; e != end; e = e->m_next, ++at) {
        if (compare(data, e->m_next->m_data) < 0) {
            s_KDRPtrListElement * n = Core<s_KDRPtrListElement>::make(data);
            if (n == nullptr)
                return -1;
            LIST_CORE.linkAfter(e, n);
            m_current = n;
            m_currentPosition = at + 1;
            return m_currentPosition;
        }
    }
    return -1; // only an inconsistent order gets here
}

bool KDRPtrList::removeFirstData() {
    return LIST_CORE.removeFirstData();
}

bool KDRPtrList::removeLastData() {
    return LIST_CORE.removeLastData();
}

bool KDRPtrList::removeData(int position) {
    return LIST_CORE.removeAt(position);
}

bool KDRPtrList::removeData(void * data) {
    return LIST_CORE.removeData(data);
}

bool KDRPtrList::removeRange(int from, int to) {
    if (from < 0 || from >= to || to > m_size)
        return false;
    if (from == 0 && to == m_size)
        return removeAll(false);
    // The element before the range, reached without moving the cursor.
    s_KDRPtrListElement * before = nullptr;
    if (from > 0) {
        int at = 0;
        before = m_first;
        if (m_currentPosition <= from - 1) {
            before = m_current;
            at = m_currentPosition;
        }
        for (; at < from - 1; ++at)
            before = before->m_next;
    }
    s_KDRPtrListElement * e = before != nullptr ? before->m_next : m_first;
    for (int k = from; k < to; ++k) {
        s_KDRPtrListElement * next = e->m_next;
        delete e;
        e = next;
    }
    s_KDRPtrListElement * const after = e;
    if (before != nullptr)
        before->m_next = after;
    else
        m_first = after;
    if (after == nullptr)
        m_last = before;
    int const removed = to - from;
    m_size -= removed;
    if (m_currentPosition >= to) {
        m_currentPosition -= removed;
    } else if (m_currentPosition >= from) {
        if (after != nullptr) {
            m_current = after;
            m_currentPosition = from;
        } else {
            m_current = m_last;
            m_currentPosition = from - 1;
        }
    }
    return true;
}

bool KDRPtrList::removeAll(bool) {
    return LIST_CORE.removeAll();
}

bool KDRPtrList::reverseList() {
    return LIST_CORE.reverseList();
}

// ---- KDRPtrDList ------------------------------------------------------------------------------

KDRPtrDList::KDRPtrDList() {
    init();
}

KDRPtrDList::KDRPtrDList(KDRPtrDList const & other) {
    init();
    copy(other);
}

KDRPtrDList & KDRPtrDList::operator=(KDRPtrDList const & other) {
    if (this != &other)
        copy(other);
    return *this;
}

KDRPtrDList::~KDRPtrDList() {
    removeAll(false);
}

void KDRPtrDList::init() {
    DLIST_CORE.init();
}

void KDRPtrDList::copy(KDRPtrDList const & other) {
    DLIST_CORE.copyFrom(other.m_first);
}

bool KDRPtrDList::prepend(void * data) {
    return DLIST_CORE.prepend(data);
}

bool KDRPtrDList::append(void * data) {
    return DLIST_CORE.append(data);
}

void * KDRPtrDList::getFirstData() const {
    return m_first != nullptr ? m_first->m_data : nullptr;
}

void * KDRPtrDList::getLastData() const {
    return m_last != nullptr ? m_last->m_data : nullptr;
}

void * KDRPtrDList::getCurrentData() const {
    return m_current != nullptr ? m_current->m_data : nullptr;
}

bool KDRPtrDList::goToStart() {
    return DLIST_CORE.goToStart();
}

bool KDRPtrDList::goToEnd() {
    return DLIST_CORE.goToEnd();
}

bool KDRPtrDList::goToNext() {
    return DLIST_CORE.goToNext();
}

bool KDRPtrDList::goToPrev() {
    if (m_current == nullptr || m_current->m_prev == nullptr)
        return false;
    m_current = m_current->m_prev;
    --m_currentPosition;
    return true;
}

bool KDRPtrDList::goToData(void * data) {
    return DLIST_CORE.goToData(data);
}

bool KDRPtrDList::goToPosition(int position) {
    return DLIST_CORE.goToPosition(position);
}

void * KDRPtrDList::getData(int position) {
    return goToPosition(position) ? m_current->m_data : nullptr;
}

s_KDRPtrDListElement * KDRPtrDList::getElement(int position) {
    return goToPosition(position) ? m_current : nullptr;
}

bool KDRPtrDList::insert(void * data, int position) {
    return DLIST_CORE.insert(data, position);
}

bool KDRPtrDList::removeFirstData() {
    return DLIST_CORE.removeFirstData();
}

bool KDRPtrDList::removeLastData() {
    return DLIST_CORE.removeLastData();
}

bool KDRPtrDList::removeData(int position) {
    return DLIST_CORE.removeAt(position);
}

bool KDRPtrDList::removeData(void * data) {
    return DLIST_CORE.removeData(data);
}

bool KDRPtrDList::removeAll(bool) {
    return DLIST_CORE.removeAll();
}

bool KDRPtrDList::reverseList() {
    return DLIST_CORE.reverseList();
}
