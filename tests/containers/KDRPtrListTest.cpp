// Tests of KDRPtrList and KDRPtrDList: insertSorted's use of the cursor, removeRange's cursor
// rules, and agreement with a vector-plus-cursor model over long random runs of every operation.
#include "kdrcore/containers/KDRPtrList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <type_traits>
#include <vector>

namespace {

int g_compareCalls = 0;

// Orders data by the int they point to; counts its calls.
int compareInts(void * a, void * b) {
    ++g_compareCalls;
    const int x = *static_cast<int *>(a), y = *static_cast<int *>(b);
    return (x > y) - (x < y);
}

void fill(KDRPtrList & list, int * v, int n, int cursor) {
    for (int i = 0; i < n; ++i)
        list.append(&v[i]);
    list.goToPosition(cursor);
}

} // namespace

TEST(KDRPtrList, InsertSortedUsesTheCursorAsHint) {
    // Keys 0, 10, ..., 90 with the cursor on 50: inserting 75 costs the first, last and current
    // comparisons, then 60, 70, 80; inserting 25 before the cursor searches from the start:
    // 10, 20, 30. A tie with the current element in the middle is refused.
    int keys[10], mid = 75, low = 25, tie = 30, tieFirst = 0, tieLast = 90;
    for (int i = 0; i < 10; ++i)
        keys[i] = 10 * i;
    KDRPtrList list;
    fill(list, keys, 10, 5);
    g_compareCalls = 0;
    EXPECT_EQ(list.insertSorted(&mid, compareInts), 8);
    EXPECT_EQ(g_compareCalls, 6);
    g_compareCalls = 0;
    EXPECT_EQ(list.insertSorted(&low, compareInts), 3);
    EXPECT_EQ(g_compareCalls, 6);
    EXPECT_EQ(list.insertSorted(&tie, compareInts), 5); // a tie met by the search: behind it
    EXPECT_EQ(list.insertSorted(&tie, compareInts), -1);
    EXPECT_EQ(list.insertSorted(nullptr, compareInts), -1);
    EXPECT_EQ(list.insertSorted(&tieFirst, compareInts), 0); // a tie with the first: before it
    EXPECT_EQ(list.insertSorted(&tieLast, compareInts), 14); // with the last: behind it
    EXPECT_EQ(list.getCurrentPosition(), 6);                 // moved as by prepend, then append
    EXPECT_TRUE(list.getFirstData() == &tieFirst && list.getLastData() == &tieLast);
}

TEST(KDRPtrList, RemoveRangeCursorRules) {
    struct Case {
        int cursor, from, to, position, data; // data: index in v of the current element after
    } const cases[] = {
        {4, 1, 3, 2, 4}, // behind the range: same element, position - 2
        {0, 1, 3, 0, 0}, // before it: unchanged
        {2, 1, 3, 1, 3}, // inside: on the element that followed the range
        {3, 2, 5, 1, 1}, // inside, up to the end: on the new last element
    };
    for (int i = 0; i < 4; ++i) {
        int v[5] = {0, 1, 2, 3, 4};
        KDRPtrList list;
        fill(list, v, 5, cases[i].cursor);
        EXPECT_TRUE(list.removeRange(cases[i].from, cases[i].to)) << "case " << i;
        EXPECT_EQ(list.getCurrentPosition(), cases[i].position) << "case " << i;
        EXPECT_EQ(list.getCurrentData(), &v[cases[i].data]) << "case " << i;
        EXPECT_EQ(list.getLastData(), &v[cases[i].to == 5 ? cases[i].from - 1 : 4]) << i;
        EXPECT_FALSE(list.removeRange(1, 1) || list.removeRange(-1, 1) ||
                     list.removeRange(0, list.size() + 1));
        EXPECT_TRUE(list.removeRange(0, list.size()) && list.getCurrentPosition() == -1);
        EXPECT_EQ(list.getLastData(), nullptr);
    }
}

namespace {

// Vector-plus-cursor model of both lists, written from the table of cursor movements.
struct Model {
    std::vector<void *> v;
    int cur = -1;

    int n() const { return static_cast<int>(v.size()); }
    void prepend(void * d) {
        v.insert(v.begin(), d);
        ++cur;
    }
    void append(void * d) {
        v.push_back(d);
        cur = std::max(cur, 0);
    }
    bool removeFirst() { // on a non-empty list
        v.erase(v.begin());
        cur = v.empty() ? -1 : std::max(cur - 1, 0);
        return true;
    }
    bool removeLast() { // on a non-empty list
        v.pop_back();
        cur = n() - 1;
        return true;
    }
};

// Compares everything observable, walking forward (and back) and putting the cursor back.
template <class List> void expectAgrees(List & list, const Model & m) {
    ASSERT_EQ(list.size(), m.n());
    ASSERT_EQ(list.isEmpty(), m.n() == 0);
    ASSERT_EQ(list.getCurrentPosition(), m.cur);
    ASSERT_EQ(list.getCurrentData(), m.cur >= 0 ? m.v[m.cur] : nullptr);
    ASSERT_EQ(list.getFirstData(), m.v.empty() ? nullptr : m.v.front());
    ASSERT_EQ(list.getLastData(), m.v.empty() ? nullptr : m.v.back());
    ASSERT_EQ(list.goToEnd(), m.n() > 0);
    ASSERT_EQ(list.getCurrentPosition(), m.n() - 1);
    ASSERT_EQ(list.goToStart(), m.n() > 0);
    for (int i = 0; i < m.n(); ++i) {
        ASSERT_EQ(list.getCurrentData(), m.v[i]) << "forward " << i;
        ASSERT_EQ(list.goToNext(), i + 1 < m.n());
    }
    if constexpr (std::is_same_v<List, KDRPtrDList>)
        for (int i = m.n() - 1; i >= 0; --i) {
            ASSERT_EQ(list.getCurrentData(), m.v[i]) << "backward " << i;
            ASSERT_EQ(list.goToPrev(), i > 0);
        }
    ASSERT_EQ(list.goToPosition(m.cur), m.cur >= 0);
}

} // namespace

template <class List> class PtrLists : public ::testing::Test {};
using PtrListTypes = ::testing::Types<KDRPtrList, KDRPtrDList>;
TYPED_TEST_SUITE(PtrLists, PtrListTypes);

TYPED_TEST(PtrLists, AgreesWithAVectorAndCursorOverRandomOperations) {
    constexpr bool doubly = std::is_same_v<TypeParam, KDRPtrDList>;
    std::mt19937 rng(doubly ? 99 : 98);
    auto U = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    int pool[24] = {}; // only the addresses count
    for (int run = 0; run < 30; ++run) {
        TypeParam list;
        Model m;
        for (int step = 0; step < 300; ++step) {
            const int op = U(0, 8), n = m.n(), p = U(-1, n + 1), kind = U(0, 3);
            const bool v = U(0, 1) == 1;
            void * d = U(0, 30) == 0 ? nullptr : &pool[U(0, 23)];
            if (op == 0) { // prepend, append
                EXPECT_TRUE(v ? list.prepend(d) : list.append(d));
                v ? m.prepend(d) : m.append(d);
            } else if (op == 1) { // one step on, or back in KDRPtrDList
                const bool back = doubly && v, ok = back ? m.cur > 0 : m.cur + 1 < n;
                if constexpr (doubly)
                    EXPECT_EQ(back ? list.goToPrev() : list.goToNext(), ok);
                else
                    EXPECT_EQ(list.goToNext(), ok);
                m.cur += ok ? (back ? -1 : 1) : 0;
            } else if (op == 2) { // by position, each of the three moving the cursor, or by data
                const auto it = std::find(m.v.begin(), m.v.end(), d);
                const bool ok = p >= 0 && p < n, found = d != nullptr && it != m.v.end();
                const auto * e = kind == 2 ? list.getElement(p) : nullptr;
                if (kind == 0)
                    EXPECT_EQ(list.goToPosition(p), ok);
                else if (kind == 1)
                    EXPECT_EQ(list.getData(p), ok ? m.v[p] : nullptr);
                else if (kind == 2)
                    EXPECT_TRUE(e == nullptr ? !ok : ok && e->m_data == m.v[p]);
                else
                    EXPECT_EQ(list.goToData(d), found);
                m.cur = kind < 3 && ok ? p : kind == 3 && found ? int(it - m.v.begin()) : m.cur;
            } else if (op == 3) { // insert: refused on an empty list; at the end of a
                                  // KDRPtrDList as append, in KDRPtrList on the new element
                const bool ok = p >= 0 && p <= n && n > 0;
                if (ok && p == 0)
                    m.prepend(d);
                else if (ok && doubly && p == n)
                    m.append(d);
                else if (ok)
                    m.v.insert(m.v.begin() + p, d), m.cur = p;
                EXPECT_EQ(list.insert(d, p), ok);
            } else if (op == 4) { // the ends
                EXPECT_EQ(v ? list.removeFirstData() : list.removeLastData(),
                          n > 0 && (v ? m.removeFirst() : m.removeLast()));
            } else if (op == 5) { // removeData by position: the cursor ends on the predecessor
                bool ok = p > 0 && p < n - 1;
                if (ok)
                    m.v.erase(m.v.begin() + p), m.cur = p - 1;
                else
                    ok = n > 0 && (p == 0 ? m.removeFirst() : p == n - 1 && m.removeLast());
                EXPECT_EQ(list.removeData(p), ok);
            } else if (op == 6) { // removeData by data: the ends first, then the first match
                bool ok = false;
                if (d != nullptr && n > 0) {
                    const auto it = std::find(m.v.begin() + 1, m.v.end(), d);
                    if (m.v.front() == d || m.v.back() == d)
                        ok = m.v.front() == d ? m.removeFirst() : m.removeLast();
                    else if (it != m.v.end())
                        m.cur = static_cast<int>(it - m.v.begin()) - 1, m.v.erase(it), ok = true;
                    else
                        m.cur = n - 1; // no match: the cursor rests on the last element
                }
                EXPECT_EQ(list.removeData(d), ok);
            } else if (op == 7 && v) {
                EXPECT_EQ(list.reverseList(), n >= 2);
                std::reverse(m.v.begin(), m.v.end());
                m.cur = n >= 2 ? 0 : m.cur;
            } else if (op == 7 && kind == 0) { // rarely everything
                EXPECT_EQ(list.removeAll(U(0, 1) == 1), n > 0);
                m.v.clear(), m.cur = -1;
            } else if (op == 8) { // copies: the cursor goes to the start
                TypeParam copy(list);
                list.append(d);
                m.cur = n > 0 ? 0 : -1;
                expectAgrees(copy, m);
                list = copy;
            }
            expectAgrees(list, m);
            ASSERT_FALSE(::testing::Test::HasFailure())
                << "run " << run << " step " << step << " op " << op;
        }
    }
}
