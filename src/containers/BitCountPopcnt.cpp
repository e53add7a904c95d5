// Compiled for POPCNT, called only on processors that have it; nothing here but the one
// function is shared with other sources.
#include "containers/BitCount.h"

#if KDRCORE_SIMD_X86

#include <cstdint>
#include <cstring>

namespace kdrcore::detail {
namespace {

std::uint64_t load64(unsigned char const * p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

} // namespace

int countBitsPopcnt(unsigned char const * p, int count) {
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

} // namespace kdrcore::detail

#endif // KDRCORE_SIMD_X86
