// Tests of BitMgr against a bit-by-bit walk over the bytes of the value.
#include "kdrcore/containers/BitMgr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

namespace {

// Reference: the bytes are walked one after the other (low to high for "first", high to low
// for "last"); each byte's answer is found by testing its bits one at a time, 8 meaning none.
struct Ref {
    static int byteFirst(unsigned v, bool one) {
        for (int b = 0; b < 8; ++b)
            if (((v >> b) & 1u) == (one ? 1u : 0u))
                return b;
        return 8;
    }
    static int byteLast(unsigned v, bool one) {
        for (int b = 7; b >= 0; --b)
            if (((v >> b) & 1u) == (one ? 1u : 0u))
                return b;
        return 8;
    }
    static int first(std::uint32_t v, int bytes, bool one) {
        for (int i = 0; i < bytes; ++i) {
            const int r = 8 * i + byteFirst((v >> (8 * i)) & 0xFFu, one);
            if (r - 8 * i < 8 || i == bytes - 1)
                return r;
        }
        return -1;
    }
    static int last(std::uint32_t v, int bytes, bool one) {
        for (int i = bytes - 1; i >= 0; --i) {
            const int e = byteLast((v >> (8 * i)) & 0xFFu, one);
            if (e < 8)
                return 8 * i + e;
            if (i == 0)
                return e;
        }
        return -1;
    }
    static int count(std::uint32_t v) {
        int n = 0;
        for (; v != 0; v >>= 1)
            n += static_cast<int>(v & 1u);
        return n;
    }
};

} // namespace

TEST(BitMgr, EveryByteAndEvery16BitValue) {
    for (unsigned v = 0; v < 256; ++v) {
        const auto b = static_cast<unsigned char>(v);
        EXPECT_EQ(BitMgr::getNumBits1(b), Ref::count(v)) << v;
        EXPECT_EQ(BitMgr::getNumBits0(b), 8 - Ref::count(v)) << v;
        EXPECT_EQ(BitMgr::getFirstBit1(b), Ref::first(v, 1, true)) << v;
        EXPECT_EQ(BitMgr::getFirstBit0(b), Ref::first(v, 1, false)) << v;
        EXPECT_EQ(BitMgr::getLastBit1(b), Ref::last(v, 1, true)) << v;
        EXPECT_EQ(BitMgr::getLastBit0(b), Ref::last(v, 1, false)) << v;
    }
    for (unsigned v = 0; v < 65536; ++v) {
        const auto s = static_cast<unsigned short>(v);
        ASSERT_EQ(BitMgr::getNumBits1(s), Ref::count(v)) << v;
        ASSERT_EQ(BitMgr::getNumBits0(s), 16 - Ref::count(v)) << v;
        ASSERT_EQ(BitMgr::getFirstBit1(s), Ref::first(v, 2, true)) << v;
        ASSERT_EQ(BitMgr::getFirstBit0(s), Ref::first(v, 2, false)) << v;
        ASSERT_EQ(BitMgr::getLastBit1(s), Ref::last(v, 2, true)) << v;
        ASSERT_EQ(BitMgr::getLastBit0(s), Ref::last(v, 2, false)) << v;
    }
}

TEST(BitMgr, ThirtyTwoBitForms) {
    std::mt19937 rng(7);
    for (int k = 0; k < 20000; ++k) {
        std::uint32_t v = rng();
        // Sparse and dense words reach the upper bytes of the walk.
        if (k % 3 == 1)
            v &= rng() & rng() & rng();
        else if (k % 3 == 2)
            v |= rng() | rng() | rng();
        if (k < 33)
            v = k == 32 ? 0u : (1u << k); // each single bit
        const unsigned long w = v;
        ASSERT_EQ(BitMgr::getNumBits1(w), Ref::count(v)) << v;
        ASSERT_EQ(BitMgr::getNumBits0(w), 32 - Ref::count(v)) << v;
        ASSERT_EQ(BitMgr::getFirstBit1(w), Ref::first(v, 4, true)) << v;
        ASSERT_EQ(BitMgr::getFirstBit0(w), Ref::first(v, 4, false)) << v;
        ASSERT_EQ(BitMgr::getLastBit1(w), Ref::last(v, 4, true)) << v;
        ASSERT_EQ(BitMgr::getLastBit0(w), Ref::last(v, 4, false)) << v;
    }
}

TEST(BitMgr, NothingMatchesAndTheOrdering) {
    EXPECT_EQ(BitMgr::getFirstBit0(static_cast<unsigned char>(255)), 8);
    EXPECT_EQ(BitMgr::getFirstBit0(static_cast<unsigned short>(65535)), 16);
    EXPECT_EQ(BitMgr::getFirstBit0(0xFFFFFFFFul), 32);
    EXPECT_EQ(BitMgr::getFirstBit1(static_cast<unsigned char>(0)), 8);
    EXPECT_EQ(BitMgr::getFirstBit1(static_cast<unsigned short>(0)), 16);
    EXPECT_EQ(BitMgr::getFirstBit1(0ul), 32);
    // The last-bit queries end on the low byte's entry: 8 in every width.
    EXPECT_EQ(BitMgr::getLastBit1(static_cast<unsigned char>(0)), 8);
    EXPECT_EQ(BitMgr::getLastBit1(static_cast<unsigned short>(0)), 8);
    EXPECT_EQ(BitMgr::getLastBit1(0ul), 8);
    EXPECT_EQ(BitMgr::getLastBit0(static_cast<unsigned short>(65535)), 8);
    EXPECT_EQ(BitMgr::getLastBit0(0xFFFFFFFFul), 8);
    // Only the low 32 bits of an unsigned long form the word.
    EXPECT_EQ(BitMgr::getNumBits1(0xF00000000ul), 0);
    EXPECT_EQ(BitMgr::getFirstBit0(0xFFFFFFFFFFFFFFFFul), 32);
    EXPECT_EQ(BitMgr::getLastBit1(0x100000001ul), 0);
    EXPECT_EQ(BitMgr::getBitOrdering(), e_lowBitFirst);
    EXPECT_EQ(static_cast<int>(e_lowBitFirst), 1);
}
