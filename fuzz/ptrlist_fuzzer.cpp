// Fuzz target: KDRPtrList and KDRPtrDList against a model of their contract.
//
// The model is a vector of data pointers and the cursor's position. Each operation of the table
// runs with the same arguments on a singly and on a doubly linked list and on the model of each
// (they differ in insert at the end; insertSorted and removeRange belong to the singly linked
// list, goToPrev to the doubly linked one); after each one every list is compared with its
// model: size, cursor position and data, both ends, every element in order and, in the doubly
// linked list, every m_prev link. The data pointers are fake (small integers): the lists must
// never look into them, and AddressSanitizer would see it if they did.
#include "Fuzz.h"

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
    // The cursor goes to the element before the removed one; removing the first keeps it on the
    // same element, or on the new first one.
    bool removeAt(int position) {
        if (position < 0 || position >= size())
            return false;
        data.erase(data.begin() + position);
        cursor = data.empty() ? -1 : position == 0 ? std::max(cursor - 1, 0) : position - 1;
        return true;
    }
    // The element holding p: the first one, else the last one, else the first in between; when
    // none holds it the cursor goes to the end.
    bool removeData(void * p) {
        if (p == nullptr || data.empty())
            return false;
        int const i = last() == p && first() != p
                          ? size() - 1
                          : static_cast<int>(std::find(data.begin(), data.end(), p) - data.begin());
        if (i == size())
            cursor = size() - 1;
        return removeAt(i);
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
    int const c = cmp(m.at(m.cursor));
    if (c == 0)
        return -1;
    int const from = c < 0 ? 0 : m.cursor;
    int const end = c < 0 ? m.cursor : m.size() - 1;
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
    int const p = m.cursor;
    bool const reachedEnd = to == m.size();
    m.data.erase(m.data.begin() + from, m.data.begin() + to);
    if (m.data.empty())
        m.cursor = -1;
    else if (p >= to)
        m.cursor = p - (to - from);
    else if (p >= from)
        m.cursor = reachedEnd ? from - 1 : from;
    return true;
}

// Size, ends, cursor and every element in order, with its m_prev link in the doubly linked list.
template <class List> void checkSame(List & list, Model const & m) {
    FUZZ_CHECK(list.size() == m.size() && list.isEmpty() == m.data.empty() &&
               list.getCurrentPosition() == m.cursor && list.getFirstData() == m.first() &&
               list.getLastData() == m.last() &&
               list.getCurrentData() == (m.cursor < 0 ? nullptr : m.at(m.cursor)));
    auto * e = list.getElement(0); // moves the cursor: put it back where the model has it
    if (m.cursor >= 0)
        list.goToPosition(m.cursor);
    decltype(e) prev = nullptr;
    for (int i = 0; i < m.size(); ++i, prev = e, e = e->m_next) {
        FUZZ_CHECK(e != nullptr && e->m_data == m.at(i), "element %d", i);
        if constexpr (requires { e->m_prev; })
            FUZZ_CHECK(e->m_prev == prev, "element %d", i);
    }
    FUZZ_CHECK(m.size() == 0 || e == nullptr);
    FUZZ_CHECK(list.getCurrentPosition() == m.cursor);
}

using In = FuzzedDataProvider;

template <class List> struct Side {
    List lists[2];
    Model models[2];
};

struct State {
    Side<KDRPtrList> single;
    Side<KDRPtrDList> twin;
    int which = 0; // the list the operation works on; the other is the source of copies

    void check() {
        for (int k = 0; k < 2; ++k) {
            checkSame(single.lists[k], single.models[k]);
            checkSame(twin.lists[k], twin.models[k]);
        }
    }
};

// The operation F on the chosen list of both kinds, each decoding the same argument bytes.
template <auto const & F, class List>
void onSide(Side<List> & side, std::vector<std::uint8_t> const & bytes, int which, bool doubly) {
    In args(bytes.data(), bytes.size());
    F(side.lists[which], side.models[which], side.lists[1 - which], side.models[1 - which], args,
      doubly);
}

template <auto const & F> void both(State & s, In & in) {
    std::vector<std::uint8_t> const bytes = in.ConsumeBytes<std::uint8_t>(4);
    onSide<F>(s.single, bytes, s.which, false);
    onSide<F>(s.twin, bytes, s.which, true);
}

void * consumeData(In & a) {
    return fake(a.ConsumeIntegralInRange(0, 40));
}
int consumePosition(In & a, Model const & m) {
    return a.ConsumeIntegralInRange(-2, m.size() + 2);
}

// clang-format off
#define OPERATION [](auto & list, Model & m, [[maybe_unused]] auto & other,                 \
                           [[maybe_unused]] Model & mo, [[maybe_unused]] In & a,                   \
                           [[maybe_unused]] bool doubly)
// clang-format on

auto const prepend = OPERATION {
    void * const p = consumeData(a);
    FUZZ_CHECK(list.prepend(p));
    m.prepend(p);
};
auto const append = OPERATION {
    void * const p = consumeData(a);
    FUZZ_CHECK(list.append(p));
    m.append(p);
};
auto const insert = OPERATION {
    void * const p = consumeData(a);
    int const position = consumePosition(a, m);
    FUZZ_CHECK(list.insert(p, position) == m.insert(p, position, doubly));
};
auto const goToStart = OPERATION {
    FUZZ_CHECK(list.goToStart() == (m.size() > 0));
    m.cursor = m.size() > 0 ? 0 : m.cursor;
};
auto const goToEnd = OPERATION {
    FUZZ_CHECK(list.goToEnd() == (m.size() > 0));
    m.cursor = m.size() > 0 ? m.size() - 1 : m.cursor;
};
auto const goToNext = OPERATION {
    bool const moves = m.cursor >= 0 && m.cursor + 1 < m.size();
    FUZZ_CHECK(list.goToNext() == moves);
    m.cursor += moves ? 1 : 0;
};
auto const goToData = OPERATION {
    void * const p = consumeData(a);
    auto const it = std::find(m.data.begin(), m.data.end(), p);
    bool const found = p != nullptr && it != m.data.end();
    FUZZ_CHECK(list.goToData(p) == found);
    m.cursor = found ? static_cast<int>(it - m.data.begin()) : m.cursor;
};
// goToPosition, getData and getElement: each moves the cursor to a position inside the list.
auto const goToPosition = OPERATION {
    int const position = consumePosition(a, m);
    bool const inside = position >= 0 && position < m.size();
    FUZZ_CHECK(list.goToPosition(position) == inside);
    m.cursor = inside ? position : m.cursor;
};
auto const getData = OPERATION {
    int const position = consumePosition(a, m);
    bool const inside = position >= 0 && position < m.size();
    FUZZ_CHECK(list.getData(position) == (inside ? m.at(position) : nullptr));
    m.cursor = inside ? position : m.cursor;
};
auto const getElement = OPERATION {
    int const position = consumePosition(a, m);
    bool const inside = position >= 0 && position < m.size();
    auto * const e = list.getElement(position);
    FUZZ_CHECK((e != nullptr && (!inside || e->m_data == m.at(position))) == inside);
    m.cursor = inside ? position : m.cursor;
};
auto const removeFirstData = OPERATION {
    FUZZ_CHECK(list.removeFirstData() == m.removeAt(0));
};
auto const removeLastData = OPERATION {
    FUZZ_CHECK(list.removeLastData() == m.removeAt(m.size() - 1));
};
auto const removeAt = OPERATION {
    int const position = consumePosition(a, m);
    FUZZ_CHECK(list.removeData(position) == m.removeAt(position));
};
auto const removeData = OPERATION {
    void * const p = consumeData(a);
    FUZZ_CHECK(list.removeData(p) == m.removeData(p));
};
auto const removeAll = OPERATION {
    FUZZ_CHECK(list.removeAll(a.ConsumeBool()) == (m.size() > 0));
    m.clearAll();
};
auto const reverseList = OPERATION {
    FUZZ_CHECK(list.reverseList() == (m.size() >= 2));
    if (m.size() >= 2) {
        std::reverse(m.data.begin(), m.data.end());
        m.cursor = 0;
    }
};
// Copy construction and assignment: the cursor goes to the start; self-assignment changes nothing.
auto const copy = OPERATION {
    int const kind = a.ConsumeIntegralInRange(0, 2);
    if (kind == 2) {
        auto & self = list;
        list = self;
        return;
    }
    if (kind == 0) {
        auto c(other);
        list = c;
    } else {
        list = other;
    }
    m.data = mo.data;
    m.cursor = m.data.empty() ? -1 : 0;
};

void insertSorted(State & s, In & in) {
    Model & m = s.single.models[s.which];
    void * const p = consumeData(in);
    g_inserting = p;
    g_compareCalls = 0;
    int const expected = modelInsertSorted(m, p);
    int const got = s.single.lists[s.which].insertSorted(p, compareKeys);
    FUZZ_CHECK(got == expected, "insertSorted(%d) gave %d, expected %d", keyOf(p), got, expected);
    FUZZ_CHECK(p != nullptr || g_compareCalls == 0);
}

void removeRange(State & s, In & in) {
    Model & m = s.single.models[s.which];
    int const from = in.ConsumeIntegralInRange(-1, m.size() + 1);
    int const to = in.ConsumeIntegralInRange(-1, m.size() + 1);
    bool const expected = modelRemoveRange(m, from, to);
    FUZZ_CHECK(s.single.lists[s.which].removeRange(from, to) == expected, "(%d, %d)", from, to);
}

void goToPrev(State & s, In &) {
    Model & m = s.twin.models[s.which];
    bool const moves = m.cursor > 0;
    FUZZ_CHECK(s.twin.lists[s.which].goToPrev() == moves);
    m.cursor -= moves ? 1 : 0;
}

fuzz::Operation<State> const OPS[] = {
    {"switch lists", [](State & s, In &) { s.which = 1 - s.which; }},
    {"prepend", both<prepend>},
    {"append", both<append>},
    {"insert", both<insert>},
    {"goToStart", both<goToStart>},
    {"goToEnd", both<goToEnd>},
    {"goToNext", both<goToNext>},
    {"goToData", both<goToData>},
    {"goToPosition", both<goToPosition>},
    {"getData", both<getData>},
    {"getElement", both<getElement>},
    {"removeFirstData", both<removeFirstData>},
    {"removeLastData", both<removeLastData>},
    {"removeData(position)", both<removeAt>},
    {"removeData(data)", both<removeData>},
    {"removeAll", both<removeAll>},
    {"reverseList", both<reverseList>},
    {"copy", both<copy>},
    {"insertSorted", insertSorted},
    {"removeRange", removeRange},
    {"goToPrev", goToPrev},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    State state;
    fuzz::runModel(state, in, OPS, 300);
    return 0;
}
