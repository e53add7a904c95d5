// Tests of KDRPtrList and KDRPtrDList: the stated cursor cases, and agreement with a
// vector-plus-cursor model over long random runs of every operation.
#include "kdrcore/containers/KDRPtrList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <type_traits>
#include <vector>

namespace {

int g_compareCalls = 0;

int keyOf(void * p) {
    return p != nullptr ? *static_cast<int *>(p) : INT_MIN;
}

// Orders data by the int they point to, null first; counts its calls.
int compareInts(void * a, void * b) {
    ++g_compareCalls;
    return keyOf(a) < keyOf(b) ? -1 : (keyOf(a) > keyOf(b) ? 1 : 0);
}

template <class List> std::vector<void *> contents(List & list) {
    std::vector<void *> out;
    for (int i = 0; i < list.size(); ++i)
        out.push_back(list.getData(i));
    return out;
}

template <class List> List listOf(int * v, int n, int cursor) {
    List list;
    for (int i = 0; i < n; ++i)
        list.append(&v[i]);
    list.goToPosition(cursor);
    return list;
}

} // namespace

template <class List> class PtrLists : public ::testing::Test {};
using PtrListTypes = ::testing::Types<KDRPtrList, KDRPtrDList>;
TYPED_TEST_SUITE(PtrLists, PtrListTypes);

TYPED_TEST(PtrLists, EmptyListsAndStatedCursorCases) {
    int v[6] = {0, 1, 2, 3, 4, 5};
    TypeParam list;
    EXPECT_EQ(list.getCurrentPosition(), -1);
    EXPECT_FALSE(list.goToStart() || list.goToEnd() || list.goToNext());
    EXPECT_EQ(list.getFirstData(), nullptr);
    EXPECT_EQ(list.getCurrentData(), nullptr);
    EXPECT_FALSE(list.removeFirstData() || list.removeLastData() || list.removeAll(true));
    EXPECT_FALSE(list.insert(&v[0], 0)); // an empty list cannot be filled by insert
    EXPECT_TRUE(list.isEmpty());
    EXPECT_TRUE(list.append(&v[0])); // the first element takes the cursor
    EXPECT_EQ(list.getCurrentPosition(), 0);
    EXPECT_FALSE(list.reverseList());
    EXPECT_TRUE(list.removeLastData());
    EXPECT_EQ(list.getCurrentPosition(), -1);

    TypeParam one = listOf<TypeParam>(v, 1, 0);
    EXPECT_TRUE(one.insert(&v[1], 1)); // at the end
    EXPECT_EQ(one.getLastData(), &v[1]);
    EXPECT_EQ(one.getCurrentPosition(), (std::is_same_v<TypeParam, KDRPtrList> ? 1 : 0));

    TypeParam five = listOf<TypeParam>(v, 5, 2);
    five.prepend(&v[5]); // same element, position + 1
    EXPECT_EQ(five.getCurrentPosition(), 3);
    EXPECT_EQ(five.getCurrentData(), &v[2]);
    EXPECT_FALSE(five.removeData(five.size()) || five.removeData(-1) || five.goToPosition(6));
    EXPECT_EQ(five.getCurrentPosition(), 3);
    five.goToStart();
    EXPECT_TRUE(five.removeFirstData()); // it stood on the removed one: on the new first
    EXPECT_EQ(five.getCurrentData(), &v[0]);
    EXPECT_TRUE(five.removeLastData()); // from position 0 of five: on the new last, 3
    EXPECT_EQ(five.getCurrentPosition(), 3);
    EXPECT_TRUE(five.removeData(2)); // in the middle: on the predecessor
    EXPECT_EQ(five.getCurrentData(), &v[1]);
    EXPECT_EQ(contents(five), (std::vector<void *>{&v[0], &v[1], &v[3]}));
    five.append(&v[1]); // 0 1 3 1
    // The ends are tested before the search: the last element goes, not the first match.
    EXPECT_TRUE(five.removeData(&v[1]));
    EXPECT_EQ(five.getCurrentPosition(), 2);
    int stranger = 9;
    five.goToStart();
    EXPECT_FALSE(five.removeData(&stranger)); // no match: the cursor rests on the last element
    EXPECT_EQ(five.getCurrentPosition(), 2);

    five.goToEnd();
    TypeParam copy(five); // a copy's cursor is at the start, wherever the source's was
    EXPECT_EQ(copy.getCurrentPosition(), 0);
    EXPECT_EQ(contents(copy), contents(five));
    copy.goToEnd();
    const TypeParam & same = copy;
    copy = same; // self-assignment changes nothing, the cursor included
    EXPECT_EQ(copy.getCurrentPosition(), 2);
    copy = TypeParam();
    EXPECT_EQ(copy.getCurrentPosition(), -1);
}

TEST(KDRPtrDList, GoToPrevAfterPrependAndReverse) {
    int v[3] = {0, 1, 2};
    KDRPtrDList list;
    EXPECT_FALSE(list.goToPrev());
    list.append(&v[0]);
    list.prepend(&v[1]);
    EXPECT_TRUE(list.goToPrev()); // from the former first element to the new one
    EXPECT_EQ(list.getCurrentData(), &v[1]);
    EXPECT_FALSE(list.goToPrev());
    list.append(&v[2]);
    list.reverseList(); // the back links follow: 2 0 1
    list.goToEnd();
    EXPECT_TRUE(list.goToPrev());
    EXPECT_EQ(list.getCurrentData(), &v[0]);
}

TEST(KDRPtrList, RemoveRangeCursorRules) {
    int v[5] = {0, 1, 2, 3, 4};
    KDRPtrList a = listOf<KDRPtrList>(v, 5, 4);
    EXPECT_TRUE(a.removeRange(1, 3)); // behind the range: same element, position - 2
    EXPECT_EQ(a.getCurrentPosition(), 2);
    EXPECT_EQ(a.getCurrentData(), &v[4]);
    KDRPtrList b = listOf<KDRPtrList>(v, 5, 2);
    EXPECT_TRUE(b.removeRange(1, 3)); // inside: on the element that followed the range
    EXPECT_EQ(b.getCurrentPosition(), 1);
    EXPECT_EQ(b.getCurrentData(), &v[3]);
    KDRPtrList c = listOf<KDRPtrList>(v, 5, 3);
    EXPECT_TRUE(c.removeRange(2, 5)); // inside, up to the end: on the new last element
    EXPECT_EQ(c.getCurrentPosition(), 1);
    EXPECT_EQ(c.getLastData(), &v[1]);
    EXPECT_FALSE(c.removeRange(1, 1) || c.removeRange(-1, 1) || c.removeRange(0, 3));
    EXPECT_TRUE(c.removeRange(0, c.size()));
    EXPECT_EQ(c.getCurrentPosition(), -1);
    EXPECT_EQ(c.getLastData(), nullptr);
}

TEST(KDRPtrList, InsertSortedTiesAndHint) {
    int k[8] = {1, 3, 3, 3, 9, 3, 1, 9};
    KDRPtrList list;
    EXPECT_EQ(list.insertSorted(nullptr, compareInts), -1);
    for (int i = 0; i < 5; ++i)
        list.insertSorted(&k[i], compareInts); // rising keys: each goes to the back
    EXPECT_EQ(contents(list), (std::vector<void *>{&k[0], &k[1], &k[2], &k[3], &k[4]}));
    list.goToStart();
    EXPECT_EQ(list.insertSorted(&k[5], compareInts), 4); // behind every tie the search meets
    EXPECT_EQ(list.getCurrentPosition(), 4);
    list.goToPosition(2);
    EXPECT_EQ(list.insertSorted(&k[5], compareInts), -1); // ties with the current element
    EXPECT_EQ(list.size(), 6);
    EXPECT_EQ(list.insertSorted(&k[6], compareInts), 0);      // ties with the first: before it
    const int atBack = list.insertSorted(&k[7], compareInts); // ties with the last: behind it
    EXPECT_EQ(atBack, 7);
    EXPECT_EQ(list.getLastData(), &k[7]);
    EXPECT_EQ(list.getCurrentPosition(), 3); // moved as by prepend, then append

    // The cursor is the hint. Keys 0, 10, ..., 90 with the cursor on 50: inserting 75 costs
    // the first, last and current comparisons, then 60, 70, 80; inserting 25 before the cursor
    // searches from the start: 10, 20, 30.
    int keys[10], mid = 75, low = 25;
    for (int i = 0; i < 10; ++i)
        keys[i] = 10 * i;
    KDRPtrList hinted = listOf<KDRPtrList>(keys, 10, 5);
    g_compareCalls = 0;
    EXPECT_EQ(hinted.insertSorted(&mid, compareInts), 8);
    EXPECT_EQ(g_compareCalls, 6);
    g_compareCalls = 0;
    EXPECT_EQ(hinted.insertSorted(&low, compareInts), 3);
    EXPECT_EQ(g_compareCalls, 6);
}

namespace {

// Vector-plus-cursor model of both lists, written from the table of cursor movements.
struct Model {
    std::vector<void *> v;
    int cur = -1;

    int n() const { return static_cast<int>(v.size()); }
    void prepend(void * d) {
        v.insert(v.begin(), d);
        cur = cur < 0 ? 0 : cur + 1;
    }
    void append(void * d) {
        v.push_back(d);
        cur = std::max(cur, 0);
    }
    bool removeFirst() {
        if (v.empty())
            return false;
        v.erase(v.begin());
        cur = v.empty() ? -1 : std::max(cur - 1, 0);
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

// Compares everything observable, walking forward (and back) and putting the cursor back.
template <class List> void expectAgrees(List & list, const Model & m) {
    ASSERT_EQ(list.size(), m.n());
    ASSERT_EQ(list.getCurrentPosition(), m.cur);
    ASSERT_EQ(list.getCurrentData(), m.cur >= 0 ? m.v[m.cur] : nullptr);
    ASSERT_EQ(list.getFirstData(), m.v.empty() ? nullptr : m.v.front());
    ASSERT_EQ(list.getLastData(), m.v.empty() ? nullptr : m.v.back());
    if (m.cur < 0)
        return;
    list.goToStart();
    for (int i = 0; i < m.n(); ++i) {
        ASSERT_EQ(list.getCurrentData(), m.v[i]) << "forward " << i;
        ASSERT_EQ(list.goToNext(), i + 1 < m.n());
    }
    if constexpr (std::is_same_v<List, KDRPtrDList>)
        for (int i = m.n() - 1; i >= 0; --i) {
            ASSERT_EQ(list.getCurrentData(), m.v[i]) << "backward " << i;
            ASSERT_EQ(list.goToPrev(), i > 0);
        }
    ASSERT_TRUE(list.goToPosition(m.cur));
}

} // namespace

TYPED_TEST(PtrLists, AgreesWithAVectorAndCursorOverRandomOperations) {
    constexpr bool doubly = std::is_same_v<TypeParam, KDRPtrDList>;
    std::mt19937 rng(doubly ? 99 : 98);
    auto U = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    int pool[24];
    for (int i = 0; i < 24; ++i)
        pool[i] = i / 2; // pairs of equal keys behind distinct pointers
    auto data = [&]() -> void * { return U(0, 30) == 0 ? nullptr : &pool[U(0, 23)]; };
    auto cmp = [](void * a, void * b) { return keyOf(a) < keyOf(b) ? -1 : keyOf(a) > keyOf(b); };

    for (int run = 0; run < 30; ++run) {
        TypeParam list;
        Model m;
        for (int step = 0; step < 300; ++step) {
            const int op = U(0, 15);
            const int n = m.n();
            void * d = data();
            switch (op) {
            case 0:
                EXPECT_TRUE(list.prepend(d));
                m.prepend(d);
                break;
            case 1:
                EXPECT_TRUE(list.append(d));
                m.append(d);
                break;
            case 2: { // moves
                const int kind = doubly ? U(0, 3) : U(0, 2);
                const bool ok = kind <= 1 ? n > 0 : kind == 2 ? m.cur + 1 < n : m.cur > 0;
                bool got = false;
                if (kind == 0)
                    got = list.goToStart(), m.cur = ok ? 0 : m.cur;
                else if (kind == 1)
                    got = list.goToEnd(), m.cur = ok ? n - 1 : m.cur;
                else if (kind == 2)
                    got = list.goToNext(), m.cur += ok;
                else if constexpr (doubly)
                    got = list.goToPrev(), m.cur -= ok;
                EXPECT_EQ(got, ok);
                break;
            }
            case 3: { // by position
                const int p = U(-2, n + 1);
                const bool ok = p >= 0 && p < n;
                void * expected = ok ? m.v[p] : nullptr;
                m.cur = ok ? p : m.cur;
                const int kind = U(0, 2);
                if (kind == 0)
                    EXPECT_EQ(list.goToPosition(p), ok);
                else if (kind == 1)
                    EXPECT_EQ(list.getData(p), expected);
                else if (auto * e = list.getElement(p); e != nullptr)
                    EXPECT_EQ(e->m_data, expected);
                else
                    EXPECT_FALSE(ok);
                break;
            }
            case 4: {
                const auto it = std::find(m.v.begin(), m.v.end(), d);
                const bool ok = d != nullptr && it != m.v.end();
                m.cur = ok ? static_cast<int>(it - m.v.begin()) : m.cur;
                EXPECT_EQ(list.goToData(d), ok);
                break;
            }
            case 5:
            case 6: { // insert
                const int p = U(-1, n + 1);
                const bool ok = p >= 0 && p <= n && n > 0;
                if (ok && p == 0)
                    m.prepend(d);
                else if (ok && doubly && p == n)
                    m.append(d);
                else if (ok)
                    m.v.insert(m.v.begin() + p, d), m.cur = p;
                EXPECT_EQ(list.insert(d, p), ok);
                break;
            }
            case 7:
                EXPECT_EQ(list.removeFirstData(), m.removeFirst());
                break;
            case 8:
                EXPECT_EQ(list.removeLastData(), m.removeLast());
                break;
            case 9: { // removeData by position
                const int p = U(-1, n);
                bool ok = p > 0 && p < n;
                if (p == 0)
                    ok = m.removeFirst();
                else if (p == n - 1)
                    ok = m.removeLast();
                else if (ok)
                    m.v.erase(m.v.begin() + p), m.cur = p - 1;
                EXPECT_EQ(list.removeData(p), ok);
                break;
            }
            case 10: { // removeData by data
                bool ok = false;
                if (d != nullptr && n > 0) {
                    const auto it = std::find(m.v.begin() + 1, m.v.end(), d);
                    if (m.v.front() == d)
                        ok = m.removeFirst();
                    else if (m.v.back() == d)
                        ok = m.removeLast();
                    else if (it != m.v.end())
                        m.cur = static_cast<int>(it - m.v.begin()) - 1, m.v.erase(it), ok = true;
                    else
                        m.cur = n - 1;
                }
                EXPECT_EQ(list.removeData(d), ok);
                break;
            }
            case 11: // rarely everything
                if (U(0, 5) == 0) {
                    EXPECT_EQ(list.removeAll(U(0, 1) == 1), n > 0);
                    m.v.clear(), m.cur = -1;
                }
                break;
            case 12:
                if (n >= 2)
                    std::reverse(m.v.begin(), m.v.end()), m.cur = 0;
                EXPECT_EQ(list.reverseList(), n >= 2);
                break;
            case 13: { // copies
                TypeParam other;
                other.append(&pool[0]);
                other = list;
                if (U(0, 1)) {
                    TypeParam copy(other);
                    list = copy;
                } else {
                    list = other;
                }
                m.cur = n > 0 ? 0 : -1;
                break;
            }
            default: // the singly linked list's own members
                if constexpr (!doubly) {
                    if (op == 14) {
                        int expected = -1;
                        if (d == nullptr) {
                        } else if (n == 0 || cmp(d, m.v.front()) <= 0) {
                            m.prepend(d), expected = 0;
                        } else if (cmp(d, m.v.back()) >= 0) {
                            m.append(d), expected = n;
                        } else if (const int c = cmp(d, m.v[m.cur]); c != 0) {
                            int e = c < 0 ? 0 : m.cur;
                            const int end = c < 0 ? m.cur : n - 1;
                            while (e < end && cmp(d, m.v[e + 1]) >= 0)
                                ++e;
                            if (e < end)
                                m.v.insert(m.v.begin() + e + 1, d), m.cur = expected = e + 1;
                        }
                        EXPECT_EQ(list.insertSorted(d, compareInts), expected);
                    } else {
                        const int from = U(-1, n), to = U(from, n + 1);
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
            expectAgrees(list, m);
            ASSERT_FALSE(::testing::Test::HasFailure())
                << "run " << run << " step " << step << " op " << op;
        }
    }
}
