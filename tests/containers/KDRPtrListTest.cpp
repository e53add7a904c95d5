// Tests of KDRPtrList: insertSorted's use of the cursor as a hint, which its comparison count
// shows. The model of every operation of both lists, cursor rules included, lives in
// fuzz/ptrlist_fuzzer.cpp.
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

} // namespace

TEST(KDRPtrList, InsertSortedUsesTheCursorAsHint) {
    // Keys 0, 10, ..., 90 with the cursor on 50: inserting 75 costs the first, last and current
    // comparisons, then 60, 70, 80; inserting 25 before the cursor searches from the start:
    // 10, 20, 30. A tie with the current element in the middle is refused.
    int keys[10], mid = 75, low = 25, tie = 30, tieFirst = 0, tieLast = 90;
    KDRPtrList list;
    for (int i = 0; i < 10; ++i)
        keys[i] = 10 * i, list.append(&keys[i]);
    list.goToPosition(5);
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
