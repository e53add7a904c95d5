// Compiled for AVX-512, called only on processors that have it; nothing here but the one
// function is shared with other sources.
#include "solver/RowUpdate.h"

#if KDRCORE_SIMD_X86

#include <immintrin.h>

namespace kdrcore::detail {

// GCC 12's AVX-512 headers start some results from an undefined register, which
// -Wuninitialized reports wherever they are inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
void rowUpdateAvx512(double * row, double const * packed, double const * f, int steps,
                     std::ptrdiff_t from, std::ptrdiff_t to) {
    std::ptrdiff_t j = from;
    for (; j + 2 * BLOCK <= to; j += 2 * BLOCK, packed += 2 * steps * BLOCK) {
        double const * const next = packed + steps * BLOCK;
        __m512d v0 = _mm512_loadu_pd(row + j), v1 = _mm512_loadu_pd(row + j + BLOCK);
        for (int s = 0; s < steps; ++s) {
            __m512d const fs = _mm512_set1_pd(f[s]);
            v0 = _mm512_sub_pd(v0, _mm512_mul_pd(fs, _mm512_loadu_pd(packed + s * BLOCK)));
            v1 = _mm512_sub_pd(v1, _mm512_mul_pd(fs, _mm512_loadu_pd(next + s * BLOCK)));
        }
        _mm512_storeu_pd(row + j, v0);
        _mm512_storeu_pd(row + j + BLOCK, v1);
    }
    for (; j < to; j += BLOCK, packed += steps * BLOCK) {
        // A short last block is masked: lanes beyond `to` are neither read nor written.
        std::ptrdiff_t const len = (to - j < BLOCK ? to - j : BLOCK);
        __mmask8 const m = static_cast<__mmask8>((1u << len) - 1u);
        __m512d v = _mm512_maskz_loadu_pd(m, row + j);
        for (int s = 0; s < steps; ++s)
            v = _mm512_sub_pd(v, _mm512_mul_pd(_mm512_set1_pd(f[s]),
                                               _mm512_maskz_loadu_pd(m, packed + s * BLOCK)));
        _mm512_mask_storeu_pd(row + j, m, v);
    }
}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

} // namespace kdrcore::detail

#endif // KDRCORE_SIMD_X86
