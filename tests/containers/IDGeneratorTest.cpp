// Tests of IDGenerator: the documented sequences and the top of the id space, worked out by
// hand. The model of long runs lives in fuzz/idgenerator_fuzzer.cpp.
#include "kdrcore/containers/IDGenerator.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

// One call on a generator: 'n' generateID(), 'r' generateID(arg), 'f' freeID(arg) (0 or 1),
// 'c' clear(), 'k' keep a copy, 'o' swap the generator with the copy kept.
struct Step {
    char op;
    int arg, expected;
};

TEST(IDGenerator, DocumentedSequences) {
    // clang-format off
    const Step steps[] = {
        {'n', 0, 1}, {'n', 0, 2}, {'n', 0, 3}, {'f', 2, 1}, {'f', 2, 0}, {'n', 0, 2}, {'n', 0, 4},
        {'f', 4, 1}, {'f', 1, 1}, {'n', 0, 1}, {'n', 0, 4}, {'n', 0, 5}, // 4 grows [5, ...) down
        // Ranges grow without merging: [3, 6) touches [6, ...), where 6 is free already.
        {'f', 3, 1}, {'f', 4, 1}, {'f', 5, 1}, {'f', 6, 0}, {'n', 0, 3}, {'r', 6, 6}, {'n', 0, 4},
        {'n', 0, 5}, {'n', 0, 7}, {'f', -1, 0},
        {'k', 0, 0}, {'f', 2, 1}, {'o', 0, 0}, {'n', 0, 8}, {'o', 0, 0}, {'n', 0, 2}, // copies
        {'c', 0, 0}, {'f', 5, 0}, {'f', 0, 1}, {'n', 0, 0}, {'n', 0, 1}, // clear: all free again
        // Requested ids: a split, a taken id gives the lowest instead, as do 0 and -5; then the
        // last id of [6, 10), a split of [6, 9) and the first id of the piece [8, 9).
        {'r', 10, 10}, {'r', 10, 2}, {'r', 0, 3}, {'r', -5, 4}, {'n', 0, 5}, {'r', 9, 9},
        {'r', 7, 7}, {'r', 8, 8}, {'n', 0, 6}, {'n', 0, 11},
        {'r', INT_MAX - 1, INT_MAX - 1}, {'f', INT_MAX - 1, 1}, {'r', INT_MAX - 1, INT_MAX - 1},
        {'r', INT_MAX, 12}};
    // clang-format on
    IDGenerator g, other;
    for (std::size_t i = 0; i < sizeof steps / sizeof steps[0]; ++i) {
        Step const & s = steps[i];
        if (s.op == 'k') {
            other = g;
        } else if (s.op == 'o') {
            IDGenerator kept(g);
            g = other;
            other = kept;
        } else if (s.op == 'c') {
            g.clear();
        } else {
            int const got = s.op == 'n'   ? g.generateID()
                            : s.op == 'r' ? g.generateID(s.arg)
                                          : static_cast<int>(g.freeID(s.arg));
            EXPECT_EQ(got, s.expected) << "step " << i;
        }
    }
}

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
