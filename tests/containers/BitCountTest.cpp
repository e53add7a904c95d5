// The bit counts behind KDRBoolArray: every version this machine runs against a count bit by bit,
// on every length of 0 to 100 bytes (blocks of 32, words of 8 and a tail), at an aligned and an
// odd address. The boolarray fuzz target compares the counts of arrays, spare bits included, with
// its model at every level on arrays of a few dozen bytes.
#include "containers/BitCount.h"

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
    std::vector<unsigned char> bytes(101);
    for (unsigned char & b : bytes)
        b = static_cast<unsigned char>(rng());
    for (int length = 0; length <= 100; ++length)
        for (unsigned char const * p : {bytes.data(), bytes.data() + 1})
            for (auto const & [name, count] : versions())
                ASSERT_EQ(count(p, length), countOneByOne(p, length)) << name << ", " << length;
}
