// Fuzz target: KDRPtrList and KDRPtrDList against a model of their contract.
//
// The model is a vector of data pointers and the cursor's position; every operation decoded from
// the input runs on a singly and a doubly linked list (and on the model of each: they differ in
// insert at the end and goToPrev), and after each one the lists are compared with their models:
// size, cursor position and data, both ends, every element in order and, in the doubly linked
// list, every m_prev link. The data pointers are fake (small integers): the lists must never look
// into them, and AddressSanitizer would see it if they did.
#include "FuzzCheck.h"

#include "kdrcore/containers/KDRPtrList.h"

#include <algorithm>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <vector>

namespace {

void * fake(int k) {
    return k == 0 ? nullptr : reinterpret_cast<void *>(static_cast<std::uintptr_t>(k) << 4);
}
int keyOf(void * p) {
    return static_cast<int>(reinterpret_cast<std::uintptr_t>(p) >> 4);
}

struct Model {
    std::vector<void *> data;
    int cursor = -1;

    int size() const { return static_cast<int>(data.size()); }
    void * at(int i) const { return data[static_cast<std::size_t>(i)]; }
    void * first() const { return data.empty() ? nullptr : data.front(); }
    void * last() const { return data.empty() ? nullptr : data.back(); }

    void prepend(void * p) {
        data.insert(data.begin(), p);
        cursor = cursor < 0 ? 0 : cursor + 1;
    }
    void append(void * p) {
        data.push_back(p);
        if (cursor < 0)
            cursor = 0;
    }
    void clearAll() {
        data.clear();
        cursor = -1;
    }
    bool removeFirst() {
        if (data.empty())
            return false;
        data.erase(data.begin());
        if (data.empty())
            cursor = -1;
        else if (cursor > 0)
            --cursor;
        return true;
    }
    bool removeLast() {
        if (data.empty())
            return false;
        data.pop_back();
        cursor = data.empty() ? -1 : size() - 1;
        return true;
    }
    bool removeAt(int position) {
        if (position == 0)
            return removeFirst();
        if (position == size() - 1)
            return removeLast();
        if (position < 0 || position >= size())
            return false;
        data.erase(data.begin() + position);
        cursor = position - 1;
        return true;
    }
    bool removeData(void * p) {
        if (p == nullptr || data.empty())
            return false;
        if (first() == p)
            return removeFirst();
        if (last() == p)
            return removeLast();
        for (int i = 1; i < size(); ++i)
            if (at(i) == p) {
                data.erase(data.begin() + i);
                cursor = i - 1;
                return true;
            }
        cursor = size() - 1;
        return false;
    }
    // position size(): the singly linked list puts the cursor on the new element, the doubly
    // linked one appends and keeps it.
    bool insert(void * p, int position, bool doubly) {
        if (position < 0 || position > size() || data.empty())
            return false;
        if (position == 0) {
            prepend(p);
            return true;
        }
        if (doubly && position == size()) {
            append(p);
            return true;
        }
        data.insert(data.begin() + position, p);
        cursor = position;
        return true;
    }
};

int compareKeys(void * a, void * b);
void * g_inserting; // the data of the insertSorted call under way
int g_compareCalls;

int compareKeys(void * a, void * b) {
    ++g_compareCalls;
    FUZZ_CHECK(a == g_inserting, "insertSorted called compare with %p first, not the new data %p",
               a, g_inserting);
    // Keys 1..15 compare by value; the rest of the key is a tag that makes pointers distinct.
    return (keyOf(a) & 15) - (keyOf(b) & 15);
}

// insertSorted as the contract walks it, on the model.
int modelInsertSorted(Model & m, void * p) {
    auto cmp = [p](void * e) { return (keyOf(p) & 15) - (keyOf(e) & 15); };
    if (p == nullptr)
        return -1;
    if (m.data.empty() || cmp(m.first()) <= 0) {
        m.prepend(p);
        return 0;
    }
    if (cmp(m.last()) >= 0) {
        m.append(p);
        return m.size() - 1;
    }
    const int c = cmp(m.at(m.cursor));
    if (c == 0)
        return -1;
    const int from = c < 0 ? 0 : m.cursor;
    const int end = c < 0 ? m.cursor : m.size() - 1;
    for (int e = from; e < end; ++e)
        if (cmp(m.at(e + 1)) < 0) {
            m.data.insert(m.data.begin() + e + 1, p);
            m.cursor = e + 1;
            return e + 1;
        }
    return -1;
}

bool modelRemoveRange(Model & m, int from, int to) {
    if (from < 0 || from >= to || to > m.size())
        return false;
    const int p = m.cursor;
    const bool reachedEnd = to == m.size();
    m.data.erase(m.data.begin() + from, m.data.begin() + to);
    if (m.data.empty())
        m.cursor = -1;
    else if (p >= to)
        m.cursor = p - (to - from);
    else if (p >= from)
        m.cursor = reachedEnd ? from - 1 : from;
    return true;
}

template <class List, class Element> Element * firstElement(List & list, const Model & m) {
    // getElement moves the cursor: put it back where the model has it.
    Element * e = list.getElement(0);
    if (m.cursor >= 0)
        list.goToPosition(m.cursor);
    return e;
}

void checkLinks(KDRPtrList & list, const Model & m, int step) {
    s_KDRPtrListElement * e = firstElement<KDRPtrList, s_KDRPtrListElement>(list, m);
    for (int i = 0; i < m.size(); ++i, e = e->m_next) {
        FUZZ_CHECK(e != nullptr, "step %d: singly linked list ends at %d of %d", step, i, m.size());
        FUZZ_CHECK(e->m_data == m.at(i), "step %d: element %d holds %d, expected %d", step, i,
                   keyOf(e->m_data), keyOf(m.at(i)));
    }
    FUZZ_CHECK(m.size() == 0 || e == nullptr, "step %d: singly linked list longer than %d", step,
               m.size());
}

void checkLinks(KDRPtrDList & list, const Model & m, int step) {
    s_KDRPtrDListElement * e = firstElement<KDRPtrDList, s_KDRPtrDListElement>(list, m);
    s_KDRPtrDListElement * prev = nullptr;
    for (int i = 0; i < m.size(); ++i, prev = e, e = e->m_next) {
        FUZZ_CHECK(e != nullptr, "step %d: doubly linked list ends at %d of %d", step, i, m.size());
        FUZZ_CHECK(e->m_prev == prev, "step %d: m_prev of element %d is wrong", step, i);
        FUZZ_CHECK(e->m_data == m.at(i), "step %d: element %d holds %d, expected %d", step, i,
                   keyOf(e->m_data), keyOf(m.at(i)));
    }
    FUZZ_CHECK(m.size() == 0 || e == nullptr, "step %d: doubly linked list longer than %d", step,
               m.size());
}

template <class List> void checkSame(List & list, const Model & m, const char * name, int step) {
    FUZZ_CHECK(list.size() == m.size(), "step %d: %s size %d, expected %d", step, name, list.size(),
               m.size());
    FUZZ_CHECK(list.isEmpty() == m.data.empty(), "step %d: %s isEmpty", step, name);
    FUZZ_CHECK(list.getCurrentPosition() == m.cursor, "step %d: %s cursor at %d, expected %d", step,
               name, list.getCurrentPosition(), m.cursor);
    FUZZ_CHECK(list.getFirstData() == m.first(), "step %d: %s getFirstData", step, name);
    FUZZ_CHECK(list.getLastData() == m.last(), "step %d: %s getLastData", step, name);
    FUZZ_CHECK(list.getCurrentData() == (m.cursor < 0 ? nullptr : m.at(m.cursor)),
               "step %d: %s getCurrentData %d, expected the data at %d", step, name,
               keyOf(list.getCurrentData()), m.cursor);
    checkLinks(list, m, step);
    FUZZ_CHECK(list.getCurrentPosition() == m.cursor, "step %d: %s cursor moved by the check", step,
               name);
}

// One operation on one list and its model. `doubly` selects the doubly linked list's rules.
template <class List>
void apply(List & list, Model & m, List & other, Model & mo, int op, FuzzedDataProvider & in,
           bool doubly, int step) {
    void * const p = fake(in.ConsumeIntegralInRange(0, 40));
    const int position = in.ConsumeIntegralInRange(-2, m.size() + 2);
    auto expect = [step](bool got, bool expected, const char * what, int arg) {
        FUZZ_CHECK(got == expected, "step %d: %s(%d) gave %d", step, what, arg, got);
    };
    const bool any = !m.data.empty();
    switch (op) {
    case 0:
    case 1:
        expect(op == 0 ? list.prepend(p) : list.append(p), true, "prepend/append", keyOf(p));
        op == 0 ? m.prepend(p) : m.append(p);
        break;
    case 2:
        expect(list.insert(p, position), m.insert(p, position, doubly), "insert", position);
        break;
    case 3:
    case 4: // goToStart, goToEnd
        expect(op == 3 ? list.goToStart() : list.goToEnd(), any, "goToStart/End", 0);
        if (any)
            m.cursor = op == 3 ? 0 : m.size() - 1;
        break;
    case 5: {
        const bool expected = m.cursor >= 0 && m.cursor + 1 < m.size();
        expect(list.goToNext(), expected, "goToNext", 0);
        m.cursor += expected ? 1 : 0;
        break;
    }
    case 6: {
        int found = -1;
        for (int i = 0; p != nullptr && found < 0 && i < m.size(); ++i)
            found = m.at(i) == p ? i : -1;
        expect(list.goToData(p), found >= 0, "goToData", keyOf(p));
        if (found >= 0)
            m.cursor = found;
        break;
    }
    case 7: {
        const bool inside = position >= 0 && position < m.size();
        const int kind = in.ConsumeIntegralInRange(0, 2);
        if (kind == 0) {
            expect(list.goToPosition(position), inside, "goToPosition", position);
        } else if (kind == 1) {
            expect(list.getData(position) == (inside ? m.at(position) : nullptr), true, "getData",
                   position);
        } else {
            auto * e = list.getElement(position);
            expect(e != nullptr && (!inside || e->m_data == m.at(position)), inside, "getElement",
                   position);
        }
        if (inside)
            m.cursor = position;
        break;
    }
    case 8:
        expect(list.removeFirstData(), m.removeFirst(), "removeFirstData", 0);
        break;
    case 9:
        expect(list.removeLastData(), m.removeLast(), "removeLastData", 0);
        break;
    case 10:
        expect(list.removeData(position), m.removeAt(position), "removeData", position);
        break;
    case 11:
        expect(list.removeData(p), m.removeData(p), "removeData(data)", keyOf(p));
        break;
    case 12:
        expect(list.removeAll(in.ConsumeBool()), any, "removeAll", 0);
        m.clearAll();
        break;
    case 13:
        expect(list.reverseList(), m.size() >= 2, "reverseList", 0);
        if (m.size() >= 2) {
            std::reverse(m.data.begin(), m.data.end());
            m.cursor = 0;
        }
        break;
    case 14: { // copy construction and assignment: the cursor goes to the start
        const int kind = in.ConsumeIntegralInRange(0, 2);
        if (kind == 0) {
            List copy(other);
            list = copy;
        } else if (kind == 1) {
            list = other;
        } else {
            List & self = list;
            list = self; // changes nothing
            break;
        }
        m.data = mo.data;
        m.cursor = m.data.empty() ? -1 : 0;
        break;
    }
    default:
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    KDRPtrList single[2];
    KDRPtrDList twin[2];
    Model singleModel[2], twinModel[2];
    for (int step = 0; in.remaining_bytes() > 0 && step < 300; ++step) {
        const int which = in.ConsumeBool() ? 1 : 0;
        const int op = in.ConsumeIntegralInRange(0, 18);
        // The same operation and arguments for both kinds of list.
        const std::vector<std::uint8_t> arguments = in.ConsumeBytes<std::uint8_t>(3);
        {
            FuzzedDataProvider args(arguments.data(), arguments.size());
            Model & m = singleModel[which];
            KDRPtrList & list = single[which];
            if (op == 15 || op == 16) { // insertSorted: singly linked only
                void * const p = fake(args.ConsumeIntegralInRange(0, 40));
                g_inserting = p;
                g_compareCalls = 0;
                const int expected = modelInsertSorted(m, p);
                const int got = list.insertSorted(p, compareKeys);
                FUZZ_CHECK(got == expected, "step %d: insertSorted(%d) gave %d, expected %d", step,
                           keyOf(p), got, expected);
                FUZZ_CHECK(p != nullptr || g_compareCalls == 0,
                           "step %d: insertSorted(null) called compare", step);
            } else if (op == 17) { // removeRange: singly linked only
                const int from = args.ConsumeIntegralInRange(-1, m.size() + 1);
                const int to = args.ConsumeIntegralInRange(-1, m.size() + 1);
                const bool expected = modelRemoveRange(m, from, to);
                FUZZ_CHECK(list.removeRange(from, to) == expected,
                           "step %d: removeRange(%d, %d) should be %d", step, from, to, expected);
            } else {
                apply(list, m, single[1 - which], singleModel[1 - which], op, args, false, step);
            }
            checkSame(list, m, "KDRPtrList", step);
        }
        {
            FuzzedDataProvider args(arguments.data(), arguments.size());
            Model & m = twinModel[which];
            KDRPtrDList & list = twin[which];
            if (op == 18) { // goToPrev: doubly linked only
                const bool expected = m.cursor > 0;
                FUZZ_CHECK(list.goToPrev() == expected, "step %d: goToPrev", step);
                if (expected)
                    --m.cursor;
            } else if (op < 15) {
                apply(list, m, twin[1 - which], twinModel[1 - which], op, args, true, step);
            }
            checkSame(list, m, "KDRPtrDList", step);
        }
    }
    return 0;
}
