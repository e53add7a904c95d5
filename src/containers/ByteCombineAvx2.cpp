// Compiled for AVX2, called only on processors that have it; nothing here but the one function
// is shared with other sources.
#include "containers/ByteCombine.h"

#if KDRCORE_SIMD_X86

#include <cstdint>
#include <immintrin.h>

namespace kdrcore::detail {
namespace {

template <bool EXCLUSIVE>
void combine(unsigned char * dst, unsigned char const * a, unsigned char const * b, int count) {
    auto const op = [](auto x, auto y) { return EXCLUSIVE ? x ^ y : x | y; };
    int j = 0;
    for (; j < count && (reinterpret_cast<std::uintptr_t>(dst + j) & 31) != 0; ++j)
        dst[j] = static_cast<unsigned char>(op(a[j], b[j]));
    for (; j + 32 <= count; j += 32) {
        __m256i const x = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(a + j));
        __m256i const y = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(b + j));
        __m256i const r = EXCLUSIVE ? _mm256_xor_si256(x, y) : _mm256_or_si256(x, y);
        _mm256_store_si256(reinterpret_cast<__m256i *>(dst + j), r);
    }
    for (; j < count; ++j)
        dst[j] = static_cast<unsigned char>(op(a[j], b[j]));
}

} // namespace

void combineBytesAvx2(unsigned char * dst, unsigned char const * a, unsigned char const * b,
                      int count, bool exclusive) {
    if (exclusive)
        combine<true>(dst, a, b, count);
    else
        combine<false>(dst, a, b, count);
}

} // namespace kdrcore::detail

#endif // KDRCORE_SIMD_X86
