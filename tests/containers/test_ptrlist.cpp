// Tests of KDRPtrList and KDRPtrDList: the cursor rules of each operation, and agreement with a
// vector-plus-cursor model over long random runs.
#include "kdrcore/containers/KDRPtrList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <type_traits>
#include <vector>

namespace {

int g_compareCalls = 0;

// Orders data by the int they point to; null data first.
int compareInts(void * a, void * b) {
    ++g_compareCalls;
    const int x = a != nullptr ? *static_cast<int *>(a) : INT_MIN;
    const int y = b != nullptr ? *static_cast<int *>(b) : INT_MIN;
    return x < y ? -1 : (x > y ? 1 : 0);
}

template <class List> std::vector<void *> contents(List & list) {
    std::vector<void *> out;
    for (int i = 0; i < list.size(); ++i)
        out.push_back(list.getData(i));
    return out;
}

} // namespace

template <class List> class PtrLists : public ::testing::Test {};
using PtrListTypes = ::testing::Types<KDRPtrList, KDRPtrDList>;
TYPED_TEST_SUITE(PtrLists, PtrListTypes);

TYPED_TEST(PtrLists, EmptyListAndFirstElements) {
    TypeParam list;
    int a = 1, b = 2;
    EXPECT_EQ(list.getCurrentPosition(), -1);
    EXPECT_EQ(list.size(), 0);
    EXPECT_TRUE(list.isEmpty());
    EXPECT_FALSE(list.goToStart());
    EXPECT_FALSE(list.goToEnd());
    EXPECT_FALSE(list.goToNext());
    EXPECT_EQ(list.getFirstData(), nullptr);
    EXPECT_EQ(list.getLastData(), nullptr);
    EXPECT_EQ(list.getCurrentData(), nullptr);
    EXPECT_EQ(list.getData(0), nullptr);
    EXPECT_EQ(list.getElement(0), nullptr);
    EXPECT_FALSE(list.removeFirstData());
    EXPECT_FALSE(list.removeLastData());
    EXPECT_FALSE(list.removeData(&a));
    EXPECT_FALSE(list.removeAll(true));
    EXPECT_FALSE(list.reverseList());
    EXPECT_FALSE(list.insert(&a, 0)); // an empty list cannot be filled by insert
    EXPECT_EQ(list.size(), 0);
    EXPECT_EQ(list.getCurrentPosition(), -1);

    EXPECT_TRUE(list.append(&a)); // the first element takes the cursor
    EXPECT_EQ(list.getCurrentPosition(), 0);
    EXPECT_EQ(list.getCurrentData(), &a);
    EXPECT_FALSE(list.reverseList()); // one element: nothing moves
    EXPECT_TRUE(list.removeFirstData());
    EXPECT_EQ(list.getCurrentPosition(), -1);
    EXPECT_TRUE(list.prepend(&b));
    EXPECT_EQ(list.getCurrentData(), &b);
    EXPECT_TRUE(list.removeLastData());
    EXPECT_TRUE(list.isEmpty());
    EXPECT_EQ(list.getFirstData(), nullptr);
    EXPECT_TRUE(list.append(nullptr)); // null data is stored like any other
    EXPECT_EQ(list.size(), 1);
    EXPECT_FALSE(list.goToData(nullptr));
    EXPECT_FALSE(list.removeData(static_cast<void *>(nullptr)));
    EXPECT_TRUE(list.removeAll(false));
    EXPECT_FALSE(list.removeAll(false));
}

TYPED_TEST(PtrLists, CursorRulesOfTheStatedCases) {
    int v[6] = {0, 1, 2, 3, 4, 5};
    TypeParam list;
    for (int i = 0; i < 5; ++i)
        list.append(&v[i]);
    EXPECT_EQ(list.getCurrentPosition(), 0); // append never moves a cursor
    ASSERT_TRUE(list.goToPosition(2));
    list.prepend(&v[5]); // same element, position + 1
    EXPECT_EQ(list.getCurrentPosition(), 3);
    EXPECT_EQ(list.getCurrentData(), &v[2]);
    list.removeFirstData(); // not on the removed element: same element, position - 1
    EXPECT_EQ(list.getCurrentPosition(), 2);
    EXPECT_EQ(list.getCurrentData(), &v[2]);

    EXPECT_FALSE(list.removeData(list.size()));
    EXPECT_FALSE(list.removeData(-1));
    EXPECT_FALSE(list.goToPosition(5));
    EXPECT_EQ(list.getData(-1), nullptr);
    EXPECT_EQ(list.getCurrentPosition(), 2);

    list.goToStart();
    EXPECT_TRUE(list.removeLastData()); // the cursor always ends on the new last element
    EXPECT_EQ(list.getCurrentPosition(), 3);
    EXPECT_EQ(list.getCurrentData(), &v[3]);
    EXPECT_EQ(list.getLastData(), &v[3]);

    list.goToEnd();
    EXPECT_TRUE(list.removeData(1)); // in the middle: the cursor on the predecessor
    EXPECT_EQ(list.getCurrentPosition(), 0);
    EXPECT_EQ(list.size(), 3); // 0 2 3
    int stranger = 9;
    EXPECT_FALSE(list.removeData(&stranger)); // no match: the cursor rests on the last element
    EXPECT_EQ(list.getCurrentPosition(), 2);
    EXPECT_TRUE(list.removeData(&v[2])); // by data in the middle: on the predecessor
    EXPECT_EQ(list.getCurrentPosition(), 0);
    EXPECT_EQ(list.getCurrentData(), &v[0]);

    list.goToEnd();
    EXPECT_TRUE(list.removeFirstData()); // the cursor stood on the last element: it stays
    EXPECT_EQ(list.getCurrentData(), &v[3]);
    list.prepend(&v[1]);
    list.goToStart();
    EXPECT_TRUE(list.removeFirstData()); // it stood on the removed one: on the new first
    EXPECT_EQ(list.getCurrentPosition(), 0);
    EXPECT_EQ(list.getCurrentData(), &v[3]);

    // insert at the end of a one-element list
    TypeParam one;
    one.append(&v[0]);
    EXPECT_TRUE(one.insert(&v[1], 1));
    EXPECT_EQ(one.getLastData(), &v[1]);
    if (std::is_same_v<TypeParam, KDRPtrList>) {
        EXPECT_EQ(one.getCurrentPosition(), 1);
        EXPECT_EQ(one.getCurrentData(), &v[1]);
    } else {
        EXPECT_EQ(one.getCurrentPosition(), 0);
        EXPECT_EQ(one.getCurrentData(), &v[0]);
    }
    EXPECT_FALSE(one.insert(&v[2], 3));
    EXPECT_FALSE(one.insert(&v[2], -1));
    EXPECT_TRUE(one.insert(&v[2], 1)); // in the middle: on the new element
    EXPECT_EQ(one.getCurrentPosition(), 1);
    EXPECT_TRUE(one.insert(&v[3], 0)); // at 0: same element, position + 1
    EXPECT_EQ(one.getCurrentPosition(), 2);
    EXPECT_EQ(contents(one), (std::vector<void *>{&v[3], &v[0], &v[2], &v[1]}));
}

TYPED_TEST(PtrLists, ReverseGoToDataAndCopies) {
    int v[4] = {0, 1, 2, 3};
    TypeParam list;
    for (int & x : v)
        list.append(&x);
    list.append(&v[1]);                // 0 1 2 3 1: a second element holding the same pointer
    EXPECT_TRUE(list.goToData(&v[1])); // the first match
    EXPECT_EQ(list.getCurrentPosition(), 1);
    int stranger = 7;
    EXPECT_FALSE(list.goToData(&stranger));
    EXPECT_EQ(list.getCurrentPosition(), 1);
    // The ends are tested before the search: the last element goes, not the first match.
    EXPECT_TRUE(list.removeData(&v[1]));
    EXPECT_EQ(contents(list), (std::vector<void *>{&v[0], &v[1], &v[2], &v[3]}));
    EXPECT_TRUE(list.insert(&v[1], 3)); // 0 1 2 1 3: in the middle only the first match goes
    EXPECT_TRUE(list.removeData(&v[1]));
    EXPECT_EQ(list.getCurrentPosition(), 0);
    EXPECT_EQ(contents(list), (std::vector<void *>{&v[0], &v[2], &v[1], &v[3]}));

    list.goToEnd();
    EXPECT_TRUE(list.reverseList());
    EXPECT_EQ(list.getCurrentPosition(), 0);
    EXPECT_EQ(list.getCurrentData(), &v[3]);
    EXPECT_EQ(list.getLastData(), &v[0]);
    EXPECT_EQ(contents(list), (std::vector<void *>{&v[3], &v[1], &v[2], &v[0]}));

    list.goToEnd();
    TypeParam copy(list); // the copy's cursor is at the start, wherever the source's was
    EXPECT_EQ(copy.getCurrentPosition(), 0);
    EXPECT_EQ(list.getCurrentPosition(), 3);
    EXPECT_EQ(contents(copy), contents(list));
    TypeParam assigned;
    assigned.append(&stranger);
    assigned.append(&stranger);
    list.goToPosition(2);
    assigned = list;
    EXPECT_EQ(assigned.getCurrentPosition(), 0);
    EXPECT_EQ(assigned.size(), 4);
    EXPECT_EQ(contents(assigned), contents(list));
    assigned.goToPosition(2);
    const TypeParam & same = assigned;
    assigned = same; // self-assignment changes nothing, the cursor included
    EXPECT_EQ(assigned.getCurrentPosition(), 2);
    EXPECT_EQ(assigned.size(), 4);
    TypeParam empty;
    assigned = empty;
    EXPECT_EQ(assigned.getCurrentPosition(), -1);
    EXPECT_TRUE(assigned.isEmpty());
}

TEST(KDRPtrDList, GoToPrevWalksBackOverPrependedElements) {
    int v[3] = {0, 1, 2};
    KDRPtrDList list;
    EXPECT_FALSE(list.goToPrev());
    list.append(&v[0]);
    EXPECT_FALSE(list.goToPrev());
    list.prepend(&v[1]);
    list.prepend(&v[2]);
    EXPECT_EQ(list.getCurrentPosition(), 2);
    EXPECT_TRUE(list.goToPrev());
    EXPECT_EQ(list.getCurrentData(), &v[1]);
    EXPECT_TRUE(list.goToPrev());
    EXPECT_EQ(list.getCurrentData(), &v[2]);
    EXPECT_EQ(list.getCurrentPosition(), 0);
    EXPECT_FALSE(list.goToPrev());
    EXPECT_EQ(list.getCurrentPosition(), 0);
    list.reverseList(); // the back links follow: 0 1 2
    list.goToEnd();
    EXPECT_TRUE(list.goToPrev());
    EXPECT_EQ(list.getCurrentData(), &v[1]);
}

TEST(KDRPtrList, RemoveRangeCursorRules) {
    int v[5] = {0, 1, 2, 3, 4};
    auto make = [&v](int cursor) {
        KDRPtrList list;
        for (int & x : v)
            list.append(&x);
        list.goToPosition(cursor);
        return list;
    };
    KDRPtrList a = make(0);
    a.goToPosition(4);
    EXPECT_TRUE(a.removeRange(1, 3)); // behind the range: same element, position - 2
    EXPECT_EQ(a.getCurrentPosition(), 2);
    EXPECT_EQ(a.getCurrentData(), &v[4]);
    EXPECT_EQ(contents(a), (std::vector<void *>{&v[0], &v[3], &v[4]}));

    KDRPtrList b = make(0);
    b.goToPosition(2);
    EXPECT_TRUE(b.removeRange(1, 3)); // inside: the element that followed the range
    EXPECT_EQ(b.getCurrentPosition(), 1);
    EXPECT_EQ(b.getCurrentData(), &v[3]);

    KDRPtrList c = make(0);
    c.goToPosition(3);
    EXPECT_TRUE(c.removeRange(2, 5)); // inside, range to the end: the new last element
    EXPECT_EQ(c.getCurrentPosition(), 1);
    EXPECT_EQ(c.getCurrentData(), &v[1]);
    EXPECT_EQ(c.getLastData(), &v[1]);
    EXPECT_TRUE(c.append(&v[4])); // the end was relinked
    EXPECT_EQ(c.size(), 3);

    KDRPtrList d = make(0);
    d.goToPosition(1);
    EXPECT_TRUE(d.removeRange(2, 4)); // before the range: unchanged
    EXPECT_EQ(d.getCurrentPosition(), 1);
    EXPECT_FALSE(d.removeRange(2, 2));
    EXPECT_FALSE(d.removeRange(-1, 2));
    EXPECT_FALSE(d.removeRange(1, 4));
    EXPECT_EQ(d.getCurrentPosition(), 1);
    EXPECT_TRUE(d.removeRange(0, 1)); // the first element, cursor behind it
    EXPECT_EQ(d.getCurrentPosition(), 0);
    EXPECT_EQ(d.getFirstData(), &v[1]);
    EXPECT_TRUE(d.removeRange(0, d.size()));
    EXPECT_TRUE(d.isEmpty());
    EXPECT_EQ(d.getCurrentPosition(), -1);
    EXPECT_EQ(d.getLastData(), nullptr);
}

TEST(KDRPtrList, InsertSortedTiesHintAndRefusals) {
    int k[8] = {1, 3, 3, 3, 9, 3, 1, 9};
    KDRPtrList list;
    EXPECT_EQ(list.insertSorted(nullptr, compareInts), -1);
    EXPECT_EQ(list.insertSorted(&k[0], compareInts), 0); // empty: prepend
    for (int i = 1; i < 5; ++i)
        list.insertSorted(&k[i], compareInts); // rising keys: each goes to the back
    EXPECT_EQ(contents(list), (std::vector<void *>{&k[0], &k[1], &k[2], &k[3], &k[4]}));

    list.goToStart();
    EXPECT_EQ(list.insertSorted(&k[5], compareInts), 4); // behind every tie the search meets
    EXPECT_EQ(list.getCurrentPosition(), 4);
    EXPECT_EQ(list.getData(4), &k[5]);
    list.goToPosition(2);
    const int sizeBefore = list.size();
    EXPECT_EQ(list.insertSorted(&k[5], compareInts), -1); // ties with the current element
    EXPECT_EQ(list.size(), sizeBefore);
    EXPECT_EQ(list.getCurrentPosition(), 2);
    EXPECT_EQ(list.insertSorted(&k[6], compareInts), 0); // ties with the first: before it
    EXPECT_EQ(list.getFirstData(), &k[6]);
    EXPECT_EQ(list.getCurrentPosition(), 3);                  // as prepend
    const int atBack = list.insertSorted(&k[7], compareInts); // ties with the last: behind it
    EXPECT_EQ(atBack, list.size() - 1);
    EXPECT_EQ(list.getLastData(), &k[7]);
    EXPECT_EQ(list.getCurrentPosition(), 3); // as append

    // The cursor is the hint: behind it the search starts there. Ten keys 0, 10, ..., 90, the
    // cursor on 50: inserting 75 costs the first, last and current comparisons, then 60, 70, 80.
    int keys[10], mid = 75;
    KDRPtrList hinted;
    for (int i = 0; i < 10; ++i) {
        keys[i] = 10 * i;
        hinted.append(&keys[i]);
    }
    hinted.goToPosition(5);
    g_compareCalls = 0;
    EXPECT_EQ(hinted.insertSorted(&mid, compareInts), 8);
    EXPECT_EQ(g_compareCalls, 6);
    int low = 25; // before the cursor the search runs from the start: 10, 20, 30
    g_compareCalls = 0;
    EXPECT_EQ(hinted.insertSorted(&low, compareInts), 3);
    EXPECT_EQ(g_compareCalls, 6);
}

namespace {

// Vector-plus-cursor model of both lists, written from the cursor table.
struct Model {
    std::vector<void *> v;
    int cur = -1;
    bool doubly = false;

    int n() const { return static_cast<int>(v.size()); }
    void clear() { v.clear(), cur = -1; }
    bool prepend(void * d) {
        v.insert(v.begin(), d);
        cur = cur < 0 ? 0 : cur + 1;
        return true;
    }
    bool append(void * d) {
        v.push_back(d);
        if (cur < 0)
            cur = 0;
        return true;
    }
    bool removeFirst() {
        if (v.empty())
            return false;
        v.erase(v.begin());
        cur = v.empty() ? -1 : (cur == 0 ? 0 : cur - 1);
        return true;
    }
    bool removeLast() {
        if (v.empty())
            return false;
        v.pop_back();
        cur = n() - 1;
        return true;
    }
};

template <class List> void expectAgrees(List & list, const Model & m, int step, int op) {
    ASSERT_EQ(list.size(), m.n()) << "step " << step << " op " << op;
    ASSERT_EQ(list.getCurrentPosition(), m.cur) << "step " << step << " op " << op;
    ASSERT_EQ(list.getCurrentData(), m.cur >= 0 ? m.v[static_cast<std::size_t>(m.cur)] : nullptr)
        << "step " << step << " op " << op;
    ASSERT_EQ(list.isEmpty(), m.v.empty());
    ASSERT_EQ(list.getFirstData(), m.v.empty() ? nullptr : m.v.front());
    ASSERT_EQ(list.getLastData(), m.v.empty() ? nullptr : m.v.back());
    // Walk forward (and back, for the doubly linked list), then put the cursor back.
    if (m.cur < 0)
        return;
    list.goToStart();
    for (int i = 0; i < m.n(); ++i) {
        ASSERT_EQ(list.getCurrentData(), m.v[static_cast<std::size_t>(i)])
            << "forward " << i << " step " << step << " op " << op;
        ASSERT_EQ(list.goToNext(), i + 1 < m.n());
    }
    if constexpr (std::is_same_v<List, KDRPtrDList>) {
        for (int i = m.n() - 1; i >= 0; --i) {
            ASSERT_EQ(list.getCurrentData(), m.v[static_cast<std::size_t>(i)])
                << "backward " << i << " step " << step << " op " << op;
            ASSERT_EQ(list.goToPrev(), i > 0);
        }
    }
    ASSERT_TRUE(list.goToPosition(m.cur));
}

} // namespace

TYPED_TEST(PtrLists, AgreesWithAVectorAndCursorOverRandomOperations) {
    constexpr bool doubly = std::is_same_v<TypeParam, KDRPtrDList>;
    std::mt19937 rng(doubly ? 99 : 98);
    auto uniform = [&rng](int lo, int hi) {
        return std::uniform_int_distribution<int>(lo, hi)(rng);
    };
    int pool[24];
    for (int i = 0; i < 24; ++i)
        pool[i] = i / 2; // pairs of equal keys behind distinct pointers
    auto randomData = [&]() -> void * {
        return uniform(0, 30) == 0 ? nullptr : &pool[uniform(0, 23)];
    };

    for (int run = 0; run < 30; ++run) {
        TypeParam list;
        Model m;
        m.doubly = doubly;
        for (int step = 0; step < 300; ++step) {
            const int op = uniform(0, 19);
            const int n = m.n();
            switch (op) {
            case 0: {
                void * d = randomData();
                EXPECT_EQ(list.prepend(d), m.prepend(d));
                break;
            }
            case 1:
            case 2: {
                void * d = randomData();
                EXPECT_EQ(list.append(d), m.append(d));
                break;
            }
            case 3: { // moves
                const int kind = uniform(0, 3);
                bool expected = false;
                if (kind == 0) {
                    expected = n > 0;
                    if (expected)
                        m.cur = 0;
                    EXPECT_EQ(list.goToStart(), expected);
                } else if (kind == 1) {
                    expected = n > 0;
                    if (expected)
                        m.cur = n - 1;
                    EXPECT_EQ(list.goToEnd(), expected);
                } else if (kind == 2) {
                    expected = m.cur >= 0 && m.cur + 1 < n;
                    if (expected)
                        ++m.cur;
                    EXPECT_EQ(list.goToNext(), expected);
                } else if constexpr (doubly) {
                    expected = m.cur > 0;
                    if (expected)
                        --m.cur;
                    EXPECT_EQ(list.goToPrev(), expected);
                }
                break;
            }
            case 4: { // by position: goToPosition, getData, getElement
                const int p = uniform(-2, n + 1);
                const bool ok = p >= 0 && p < n;
                void * expected = ok ? m.v[static_cast<std::size_t>(p)] : nullptr;
                if (ok)
                    m.cur = p;
                const int kind = uniform(0, 2);
                if (kind == 0)
                    EXPECT_EQ(list.goToPosition(p), ok);
                else if (kind == 1)
                    EXPECT_EQ(list.getData(p), expected);
                else {
                    auto * e = list.getElement(p);
                    EXPECT_EQ(e != nullptr, ok);
                    if (e != nullptr) {
                        EXPECT_EQ(e->m_data, expected);
                    }
                }
                break;
            }
            case 5: { // goToData
                void * d = randomData();
                const auto it = std::find(m.v.begin(), m.v.end(), d);
                const bool ok = d != nullptr && it != m.v.end();
                if (ok)
                    m.cur = static_cast<int>(it - m.v.begin());
                EXPECT_EQ(list.goToData(d), ok);
                break;
            }
            case 6:
            case 7: { // insert
                void * d = randomData();
                const int p = uniform(-1, n + 1);
                bool ok = !(p < 0 || p > n || n == 0);
                if (ok) {
                    if (p == 0)
                        m.prepend(d);
                    else if (doubly && p == n)
                        m.append(d);
                    else {
                        m.v.insert(m.v.begin() + p, d);
                        m.cur = p;
                    }
                }
                EXPECT_EQ(list.insert(d, p), ok);
                break;
            }
            case 8:
                EXPECT_EQ(list.removeFirstData(), m.removeFirst());
                break;
            case 9:
                EXPECT_EQ(list.removeLastData(), m.removeLast());
                break;
            case 10:
            case 11: { // removeData by position
                const int p = uniform(-1, n);
                bool ok;
                if (p == 0)
                    ok = m.removeFirst();
                else if (p == n - 1)
                    ok = m.removeLast();
                else if (p < 0 || p >= n)
                    ok = false;
                else {
                    m.v.erase(m.v.begin() + p);
                    m.cur = p - 1;
                    ok = true;
                }
                EXPECT_EQ(list.removeData(p), ok);
                break;
            }
            case 12: { // removeData by data
                void * d = randomData();
                bool ok = false;
                if (d != nullptr && n > 0) {
                    if (m.v.front() == d)
                        ok = m.removeFirst();
                    else if (m.v.back() == d)
                        ok = m.removeLast();
                    else {
                        const auto it = std::find(m.v.begin() + 1, m.v.end(), d);
                        if (it != m.v.end()) {
                            m.cur = static_cast<int>(it - m.v.begin()) - 1;
                            m.v.erase(it);
                            ok = true;
                        } else {
                            m.cur = n - 1;
                        }
                    }
                }
                EXPECT_EQ(list.removeData(d), ok);
                break;
            }
            case 13: // removeAll, rarely
                if (uniform(0, 5) == 0) {
                    EXPECT_EQ(list.removeAll(uniform(0, 1) == 1), n > 0);
                    m.clear();
                }
                break;
            case 14: {
                const bool ok = n >= 2;
                if (ok) {
                    std::reverse(m.v.begin(), m.v.end());
                    m.cur = 0;
                }
                EXPECT_EQ(list.reverseList(), ok);
                break;
            }
            case 15: { // copies
                const int kind = uniform(0, 2);
                if (kind == 0) {
                    TypeParam copy(list);
                    list.removeAll(false);
                    list = copy;
                } else if (kind == 1) {
                    TypeParam other;
                    other.append(&pool[0]);
                    other = list; // replaces other's element
                    list = other;
                } else {
                    const TypeParam & same = list;
                    list = same;
                    break;
                }
                if (n > 0)
                    m.cur = 0;
                break;
            }
            default: { // the singly linked list's own members
                if constexpr (!doubly) {
                    if (op == 16 || op == 17) {
                        void * d = randomData();
                        int expected = -1;
                        auto key = [](void * p) {
                            return p != nullptr ? *static_cast<int *>(p) : INT_MIN;
                        };
                        auto cmp = [&](void * a, void * b) {
                            return key(a) < key(b) ? -1 : (key(a) > key(b) ? 1 : 0);
                        };
                        if (d == nullptr) {
                            expected = -1;
                        } else if (n == 0 || cmp(d, m.v.front()) <= 0) {
                            m.prepend(d);
                            expected = 0;
                        } else if (cmp(d, m.v.back()) >= 0) {
                            m.append(d);
                            expected = m.n() - 1;
                        } else {
                            const int c = cmp(d, m.v[static_cast<std::size_t>(m.cur)]);
                            if (c != 0) {
                                int e = c < 0 ? 0 : m.cur;
                                const int end = c < 0 ? m.cur : n - 1;
                                for (; e < end; ++e)
                                    if (cmp(d, m.v[static_cast<std::size_t>(e) + 1]) < 0)
                                        break;
                                if (e < end) {
                                    m.v.insert(m.v.begin() + e + 1, d);
                                    m.cur = e + 1;
                                    expected = e + 1;
                                }
                            }
                        }
                        EXPECT_EQ(list.insertSorted(d, compareInts), expected);
                    } else {
                        const int from = uniform(-1, n);
                        const int to = uniform(from, n + 1);
                        const bool ok = from >= 0 && from < to && to <= n;
                        if (ok) {
                            const int p = m.cur;
                            m.v.erase(m.v.begin() + from, m.v.begin() + to);
                            if (m.v.empty())
                                m.cur = -1;
                            else if (p >= to)
                                m.cur = p - (to - from);
                            else if (p >= from)
                                m.cur = to < n ? from : from - 1;
                        }
                        EXPECT_EQ(list.removeRange(from, to), ok);
                    }
                }
                break;
            }
            }
            expectAgrees(list, m, step, op);
            if (::testing::Test::HasFailure()) {
                ADD_FAILURE() << "run " << run << " step " << step << " op " << op;
                return;
            }
        }
    }
}
