#include "solver/RowUpdate.h"

#include <algorithm>

namespace kdrcore::detail {

void rowUpdatePlain(double * row, double const * packed, double const * f, int steps,
                    std::ptrdiff_t from, std::ptrdiff_t to) {
    for (std::ptrdiff_t j = from; j < to; j += BLOCK, packed += steps * BLOCK) {
        std::ptrdiff_t const len = std::min<std::ptrdiff_t>(BLOCK, to - j);
        for (std::ptrdiff_t c = 0; c < len; ++c) {
            double v = row[j + c];
            for (int s = 0; s < steps; ++s)
                v = v - f[s] * packed[s * BLOCK + c];
            row[j + c] = v;
        }
    }
}

/// The row update for the level the library uses.
RowUpdate bestRowUpdate() {
#if KDRCORE_SIMD_X86
    switch (simdLevel()) {
    case LEVEL_AVX512:
        return rowUpdateAvx512;
    case LEVEL_AVX2:
        return rowUpdateAvx2;
    default:
        break;
    }
#endif
    return rowUpdatePlain;
}

} // namespace kdrcore::detail
