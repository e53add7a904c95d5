// The bit counts behind KDRBoolArray: every version this machine runs against a count bit by bit,
// on runs of 0 to 300 bytes (odd lengths, partial words) and dense, sparse, full and empty bytes,
// over 10^5 bytes in all; and getNumberOfBitSet on arrays whose size ends inside a byte.
#include "containers/BitCount.h"

#include "kdrcore/containers/KDRBoolArray.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

int countOneByOne(unsigned char const * p, int count) {
    int n = 0;
    for (int j = 0; j < count; ++j)
        for (int b = 0; b < 8; ++b)
            n += (p[j] >> b) & 1;
    return n;
}

std::vector<std::pair<std::string, int (*)(unsigned char const *, int)>> versions() {
    std::vector<std::pair<std::string, int (*)(unsigned char const *, int)>> v{
        {"baseline", kdrcore::detail::countBitsPlain}, {"chosen", kdrcore::detail::countBits}};
#if KDRCORE_SIMD_X86
    if (kdrcore::detail::detectSimdLevel() >= kdrcore::detail::LEVEL_AVX2)
        v.emplace_back("POPCNT", kdrcore::detail::countBitsPopcnt);
#endif
    return v;
}

} // namespace

TEST(BitCount, EveryVersionCountsAsBitByBit) {
    std::mt19937 rng(11u);
    std::vector<unsigned char> bytes(300);
    long total = 0;
    for (int round = 0; total < 120000; ++round) {
        int const length = round % 301;
        int const style = round % 4; // random, sparse, full, empty bytes mixed in
        for (unsigned char & b : bytes) {
            unsigned const r = static_cast<unsigned>(rng());
            b = static_cast<unsigned char>(style == 0   ? r
                                           : style == 1 ? (r % 7 == 0 ? 1u << (r % 8) : 0u)
                                           : style == 2 ? (r % 3 == 0 ? r : 0xFFu)
                                                        : (r % 5 == 0 ? r : 0u));
        }
        // Start at an odd address now and then: the words are read unaligned.
        unsigned char const * const p = bytes.data() + (round % 3 == 0 && length < 300 ? 1 : 0);
        int const want = countOneByOne(p, length);
        for (auto const & [name, count] : versions())
            ASSERT_EQ(count(p, length), want) << name << ", length " << length;
        total += length;
    }
}

TEST(BitCount, NumberOfBitsSetIgnoresTheSpareBitsOfTheLastByte) {
    // 0xFF bytes: every spare bit beyond the size is set, and must not be counted.
    std::vector<char> const ones(40, static_cast<char>(0xFF));
    for (int n : {0, 1, 7, 8, 9, 63, 64, 65, 255, 257, 319}) {
        KDRBoolArray bits;
        bits.assign(n, ones.data());
        EXPECT_EQ(bits.getNumberOfBitSet(), n) << n;
        EXPECT_EQ(bits.getNumberOfBitCleared(), 0) << n;
    }
}
