// Tests of KDRBoolArray: its storage layout and guards, which its fuzz target's model does not
// see. The model of the operations lives in fuzz/boolarray_fuzzer.cpp.
#include "kdrcore/containers/KDRBoolArray.h"

#include "detail/SimdLevel.h"

#include <gtest/gtest.h>

TEST(KDRBoolArray, StorageIsExactAndGuarded) {
    KDRBoolArray a;
    // getNoSizeTest peeks at the guards: byte -1 and the byte at capacity / 8 hold 1, also in
    // the shared bytes of an array without storage.
    EXPECT_TRUE(a.capacity() == 0 && a.getNoSizeTest(0) && a.getNoSizeTest(-8));
    a.resize(9, true); // (9 + 7) / 8 bytes, no growth factor
    EXPECT_EQ(a.capacity(), 16);
    a.resize(0, false); // size 0 keeps the storage
    a.toggleAll();      // size 0: nothing
    a.resize(3, true);
    a.toggleAll(); // the whole storage flips, the guards do not
    EXPECT_TRUE(a.getNoSizeTest(16) && a.getNoSizeTest(-8) && a.getNoSizeTest(3));
    EXPECT_FALSE(a.getNoSizeTest(17) || a.getNoSizeTest(-1) || a.getNoSizeTest(15) || a.get(3));
    a.assign(16, false); // the scans stop on the guard behind a full last byte
    EXPECT_EQ(a.findFirst(true, 4), -1);

    // A copy is exact too; every bit from its size up to the capacity takes the spare value.
    KDRBoolArray wide(40, false);
    wide.copy(KDRBoolArray(3, true), true);
    EXPECT_TRUE(wide.size() == 3 && wide.capacity() == 40);
    for (int i = 3; i < 40; ++i)
        ASSERT_TRUE(wide.getNoSizeTest(i)) << "spare bit " << i;
    const KDRBoolArray copied(wide); // spare bits clear
    EXPECT_TRUE(copied.capacity() == 8 && !copied.getNoSizeTest(3) && !copied.getNoSizeTest(7));
    // The intersection clears the bits above its new size in the last partial byte and writes
    // 1 into the byte behind; with an empty argument the size falls to 0, the storage stays.
    KDRBoolArray p(24, true);
    p.inter(KDRBoolArray(13, true));
    for (int i = 13; i < 24; ++i)
        EXPECT_EQ(p.getNoSizeTest(i), i == 16) << "spare bit " << i;
    p.inter(KDRBoolArray());
    EXPECT_TRUE(p.size() == 0 && p.capacity() == 24);
}

TEST(KDRBoolArray, LongUnionAndExclusiveOrAtEveryLevel) {
    // Long enough for the whole-word and vector loops, at an odd size so a partial byte follows.
    // Multiples of 3 against multiples of 5: the union holds either, the exclusive or one alone.
    using namespace kdrcore::detail;
    constexpr int N = 4099;
    for (int level = 0; level <= detectSimdLevel(); ++level) {
        setSimdLevel(static_cast<SimdLevel>(level));
        KDRBoolArray threes(N, false), fives(N, false);
        for (int i = 0; i < N; i += 3)
            threes.set(i);
        for (int i = 0; i < N; i += 5)
            fives.set(i);
        KDRBoolArray both = threes, either = threes;
        both.set(fives);
        either.toggle(fives);
        for (int i = 0; i < N; ++i)
            ASSERT_TRUE(both.get(i) == (i % 3 == 0 || i % 5 == 0) &&
                        either.get(i) == ((i % 3 == 0) != (i % 5 == 0)))
                << "bit " << i << " at level " << level;
    }
    setSimdLevel(detectSimdLevel());
}

TEST(KDRBoolArray, RangesMayStartAtBitZero) {
    // A count below 1 still covers its one bit.
    KDRBoolArray a(10, true);
    a.clear(0, 4);
    EXPECT_TRUE(a.findFirst(true) == 4 && a.size() == 10);
    a.set(0, 0);
    EXPECT_TRUE(a.get(0) && !a.get(1));
}
