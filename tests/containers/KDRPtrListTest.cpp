// Tests of KDRPtrList: insertSorted's use of the cursor and removeRange's cursor rules, worked
// out by hand. The model of every operation of both lists lives in fuzz/ptrlist_fuzzer.cpp.
#include "kdrcore/containers/KDRPtrList.h"

#include <gtest/gtest.h>

namespace {

int g_compareCalls = 0;

// Orders data by the int they point to; counts its calls.
int compareInts(void * a, void * b) {
    ++g_compareCalls;
    int const x = *static_cast<int *>(a), y = *static_cast<int *>(b);
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
