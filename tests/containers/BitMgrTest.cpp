// Tests of BitMgr against bit-by-bit loops.
#include "kdrcore/containers/BitMgr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

namespace {

// Reference answers for a value of `width` bits, bit by bit: counts of 1 and 0, first 1, first
// 0, last 1, last 0. First-bit queries give the width when nothing matches, last-bit queries 8.
template <class W> void expectWidth(W w, int width) {
    auto const v = static_cast<std::uint32_t>(w);
    int want[6] = {0, width, width, width, 8, 8};
    for (int b = width - 1; b >= 0; --b)
        want[((v >> b) & 1u) != 0 ? (++want[0], --want[1], 2) : 3] = b;
    for (int b = 0; b < width; ++b)
        want[((v >> b) & 1u) != 0 ? 4 : 5] = b;
    int const got[6] = {BitMgr::getNumBits1(w),  BitMgr::getNumBits0(w), BitMgr::getFirstBit1(w),
                        BitMgr::getFirstBit0(w), BitMgr::getLastBit1(w), BitMgr::getLastBit0(w)};
    for (int q = 0; q < 6; ++q)
        ASSERT_EQ(got[q], want[q]) << "query " << q << " of " << width << "-bit " << v;
}

} // namespace

TEST(BitMgr, EveryByteAnd16BitValueAndRandom32BitWords) {
    for (unsigned v = 0; v < 65536; ++v) {
        if (v < 256)
            expectWidth(static_cast<unsigned char>(v), 8);
        expectWidth(static_cast<unsigned short>(v), 16);
    }
    std::mt19937 rng(7);
    for (int k = 0; k < 20000; ++k) { // single bits, 0, all set, then even, sparse and dense
        const std::uint32_t r = static_cast<std::uint32_t>(rng()),
                            v = k < 32       ? 1u << k
                                : k == 32    ? 0u
                                : k == 33    ? ~0u
                                : k % 3 == 0 ? r
                                : k % 3 == 1 ? r & static_cast<std::uint32_t>(rng()) &
                                                   static_cast<std::uint32_t>(rng())
                                             : ~(r & static_cast<std::uint32_t>(rng()));
        expectWidth(static_cast<unsigned long>(v), 32);
    }
    EXPECT_EQ(BitMgr::getNumBits1(0xF00000000ul), 0); // only the low 32 bits form the word
    EXPECT_EQ(BitMgr::getBitOrdering(), e_lowBitFirst);
    EXPECT_EQ(static_cast<int>(e_lowBitFirst), 1);
}
