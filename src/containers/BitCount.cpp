#include "containers/BitCount.h"

#include <cstdint>
#include <cstring>

namespace kdrcore::detail {
namespace {

std::uint64_t load64(unsigned char const * p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

/// Set bits of a word, without the library call that std::popcount becomes on baseline x86-64.
int popcountSwar(std::uint64_t x) {
    x = x - ((x >> 1) & 0x5555555555555555u);
    x = (x & 0x3333333333333333u) + ((x >> 2) & 0x3333333333333333u);
    x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0Fu;
    return static_cast<int>((x * 0x0101010101010101u) >> 56);
}

} // namespace

int countBitsPlain(unsigned char const * p, int count) {
    int n = 0;
    int j = 0;
    for (; j + 8 <= count; j += 8)
        n += popcountSwar(load64(p + j));
    for (; j < count; ++j)
        n += popcountSwar(p[j]);
    return n;
}

int countBits(unsigned char const * p, int count) {
#if KDRCORE_SIMD_X86
    if (simdLevel() >= LEVEL_AVX2)
        return countBitsPopcnt(p, count);
#endif
    return countBitsPlain(p, count);
}

} // namespace kdrcore::detail
