// Tests of IDGenerator: the top of the id space reached by generating every id, worked out by
// hand. The model of the documented walks, copies and clear lives in fuzz/idgenerator_fuzzer.cpp.
#include "kdrcore/containers/IDGenerator.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(IDGenerator, TheIdAboveTheFullRangeJoinsItsTop) {
    // A new generator's range is [1, 2147483647): 2147483647 = 1 + 0x7FFFFFFE is its end, so
    // freeing it grows the range at the top. It is then given out on request, and once only.
    IDGenerator fresh;
    EXPECT_TRUE(fresh.freeID(INT_MAX));
    EXPECT_FALSE(fresh.freeID(INT_MAX)); // free already
    EXPECT_EQ(fresh.generateID(INT_MAX), INT_MAX);
    EXPECT_EQ(fresh.generateID(INT_MAX), 1);

    // Exhausted: all of 1 to 2147483646 given out in order, the empty range left at the end.
    IDGenerator all;
    int last = 0;
    for (int k = 0; k < 0x7FFFFFFE; ++k)
        last = all.generateID();
    ASSERT_EQ(last, INT_MAX - 1);
    ASSERT_EQ(all.generateID(), -1);
    EXPECT_TRUE(all.freeID(INT_MAX));
    EXPECT_EQ(all.generateID(), INT_MAX);
    EXPECT_EQ(all.generateID(), -1);
    // 2147483647 is the last id there is; the empty range still takes it and the one below.
    EXPECT_TRUE(all.freeID(INT_MAX - 1) && all.freeID(INT_MAX));
    EXPECT_EQ(all.generateID(), INT_MAX - 1);
    EXPECT_EQ(all.generateID(), INT_MAX);
    EXPECT_EQ(all.generateID(), -1);
    // Taken on request, the last free id also leaves its emptied range as the mark, which the
    // next freeID extends again.
    EXPECT_TRUE(all.freeID(INT_MAX));
    EXPECT_EQ(all.generateID(INT_MAX), INT_MAX);
    EXPECT_TRUE(all.freeID(INT_MAX));
}

} // namespace
