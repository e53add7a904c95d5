// Compiled for AVX2 and FMA, called only on processors that have them; nothing here but the one
// function is shared with other sources.
#include "solver/RowUpdate.h"

#if KDRCORE_SIMD_X86

#include <immintrin.h>

namespace kdrcore::detail {

void rowUpdateAvx2(double * row, double const * packed, double const * f, int steps,
                   std::ptrdiff_t from, std::ptrdiff_t to) {
    std::ptrdiff_t j = from;
    for (; j + BLOCK <= to; j += BLOCK, packed += steps * BLOCK) {
        __m256d v0 = _mm256_loadu_pd(row + j), v1 = _mm256_loadu_pd(row + j + 4);
        for (int s = 0; s < steps; ++s) {
            __m256d const fs = _mm256_set1_pd(f[s]);
            v0 = _mm256_sub_pd(v0, _mm256_mul_pd(fs, _mm256_loadu_pd(packed + s * BLOCK)));
            v1 = _mm256_sub_pd(v1, _mm256_mul_pd(fs, _mm256_loadu_pd(packed + s * BLOCK + 4)));
        }
        _mm256_storeu_pd(row + j, v0);
        _mm256_storeu_pd(row + j + 4, v1);
    }
    rowUpdatePlain(row, packed, f, steps, j, to);
}

} // namespace kdrcore::detail

#endif // KDRCORE_SIMD_X86
