// BitCount.h - the number of set bits in a run of bytes, in a baseline version and one with the
// POPCNT instruction (private)
//
// Bytes are read eight at a time as one 64-bit word; the count does not depend on how the bits
// are grouped, so both versions give the same number. The POPCNT version is taken on processors
// with AVX2, all of which have POPCNT. The header is also compiled into the tests.
#ifndef KDRCORE_CONTAINERS_BITCOUNT_H
#define KDRCORE_CONTAINERS_BITCOUNT_H

#include "../kernel/SimdLevel.h" // relative: the header is also compiled into the tests

#include <cstdint>
#include <cstring>

namespace kdrbits {

inline std::uint64_t load64(unsigned char const * p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

/// Set bits of a word, without the library call that std::popcount becomes on baseline x86-64.
inline int popcountSwar(std::uint64_t x) {
    x = x - ((x >> 1) & 0x5555555555555555u);
    x = (x & 0x3333333333333333u) + ((x >> 2) & 0x3333333333333333u);
    x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0Fu;
    return static_cast<int>((x * 0x0101010101010101u) >> 56);
}

/// Number of bits set in bytes [0, count).
inline int countBitsPlain(unsigned char const * p, int count) {
    int n = 0;
    int j = 0;
    for (; j + 8 <= count; j += 8)
        n += popcountSwar(load64(p + j));
    for (; j < count; ++j)
        n += popcountSwar(p[j]);
    return n;
}

#if KDRCORE_SIMD_X86
__attribute__((target("popcnt"))) inline int countBitsPopcnt(unsigned char const * p, int count) {
    // Four running sums: the additions do not wait on each other.
    std::uint64_t n0 = 0, n1 = 0, n2 = 0, n3 = 0;
    int j = 0;
    for (; j + 32 <= count; j += 32) {
        n0 += static_cast<std::uint64_t>(__builtin_popcountll(load64(p + j)));
        n1 += static_cast<std::uint64_t>(__builtin_popcountll(load64(p + j + 8)));
        n2 += static_cast<std::uint64_t>(__builtin_popcountll(load64(p + j + 16)));
        n3 += static_cast<std::uint64_t>(__builtin_popcountll(load64(p + j + 24)));
    }
    for (; j + 8 <= count; j += 8)
        n0 += static_cast<std::uint64_t>(__builtin_popcountll(load64(p + j)));
    for (; j < count; ++j)
        n0 += static_cast<std::uint64_t>(__builtin_popcount(p[j]));
    return static_cast<int>(n0 + n1 + n2 + n3);
}
#endif

/// countBitsPlain, by the fastest version this processor runs.
inline int countBits(unsigned char const * p, int count) {
#if KDRCORE_SIMD_X86
    if (kdrsimd::level() >= kdrsimd::LEVEL_AVX2)
        return countBitsPopcnt(p, count);
#endif
    return countBitsPlain(p, count);
}

} // namespace kdrbits

#endif // KDRCORE_CONTAINERS_BITCOUNT_H
