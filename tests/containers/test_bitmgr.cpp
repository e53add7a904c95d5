// Tests of BitMgr against bit-by-bit loops.
#include "kdrcore/containers/BitMgr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

namespace {

// Reference answers for a value of `width` bits: first-bit queries give the width when nothing
// matches, last-bit queries give 8 in every width.
void expectAll(std::uint32_t v, int width, int n1, int n0, int f1, int f0, int l1, int l0) {
    int count = 0, first1 = width, first0 = width, last1 = 8, last0 = 8;
    for (int b = width - 1; b >= 0; --b) {
        const bool set = ((v >> b) & 1u) != 0;
        count += set;
        (set ? first1 : first0) = b;
    }
    for (int b = 0; b < width; ++b)
        (((v >> b) & 1u) != 0 ? last1 : last0) = b;
    ASSERT_EQ(n1, count) << width << "-bit " << v;
    ASSERT_EQ(n0, width - count) << width << "-bit " << v;
    ASSERT_EQ(f1, first1) << width << "-bit " << v;
    ASSERT_EQ(f0, first0) << width << "-bit " << v;
    ASSERT_EQ(l1, last1) << width << "-bit " << v;
    ASSERT_EQ(l0, last0) << width << "-bit " << v;
}

template <class W> void expectWidth(W v, int width) {
    expectAll(static_cast<std::uint32_t>(v), width, BitMgr::getNumBits1(v), BitMgr::getNumBits0(v),
              BitMgr::getFirstBit1(v), BitMgr::getFirstBit0(v), BitMgr::getLastBit1(v),
              BitMgr::getLastBit0(v));
}

} // namespace

TEST(BitMgr, EveryByteAnd16BitValueAndRandom32BitWords) {
    for (unsigned v = 0; v < 65536; ++v) {
        if (v < 256)
            expectWidth(static_cast<unsigned char>(v), 8);
        expectWidth(static_cast<unsigned short>(v), 16);
    }
    std::mt19937 rng(7);
    for (int k = 0; k < 20000; ++k) {
        // Sparse, dense and single-bit words reach every byte of the word.
        std::uint32_t v = k % 3 == 0   ? rng()
                          : k % 3 == 1 ? rng() & rng() & rng()
                                       : ~(rng() & rng());
        if (k < 33)
            v = k == 32 ? 0u : 1u << k;
        expectWidth(static_cast<unsigned long>(v), 32);
    }
}

TEST(BitMgr, NothingMatchesAndTheOrdering) {
    EXPECT_EQ(BitMgr::getFirstBit0(static_cast<unsigned short>(65535)), 16);
    EXPECT_EQ(BitMgr::getFirstBit0(0xFFFFFFFFul), 32);
    EXPECT_EQ(BitMgr::getFirstBit1(0ul), 32);
    EXPECT_EQ(BitMgr::getLastBit1(static_cast<unsigned short>(0)), 8);
    EXPECT_EQ(BitMgr::getLastBit1(0ul), 8);
    EXPECT_EQ(BitMgr::getLastBit0(0xFFFFFFFFul), 8);
    // Only the low 32 bits of an unsigned long form the word.
    EXPECT_EQ(BitMgr::getNumBits1(0xF00000000ul), 0);
    EXPECT_EQ(BitMgr::getFirstBit0(0xFFFFFFFFFFFFFFFFul), 32);
    EXPECT_EQ(BitMgr::getLastBit1(0x100000001ul), 0);
    EXPECT_EQ(BitMgr::getBitOrdering(), e_lowBitFirst);
    EXPECT_EQ(static_cast<int>(e_lowBitFirst), 1);
}
