// src/solver/RowUpdate.h - the row update of the blocked elimination, in a baseline, an AVX2 and
// an AVX-512 version (private)
//
// f * A[k][j] is a product of two doubles, not exact: every version uses separate multiplies and
// subtractions (no fused multiply-add), in step order, and gives the same bits. The AVX2 and
// AVX-512 versions are compiled for their instruction sets (RowUpdateAvx2.cpp,
// RowUpdateAvx512.cpp) and called only on processors that have them.
#ifndef KDRCORE_SRC_SOLVER_ROWUPDATE_H
#define KDRCORE_SRC_SOLVER_ROWUPDATE_H

#include "detail/SimdLevel.h"

#include <cstddef>

namespace kdrcore::detail {

/// Pivot rows packed for the pass over the rows below a panel: from column `from` on, blocks of
/// BLOCK columns, each block holding for every step its BLOCK elements, so that the pass reads
/// one stream whatever the row length (rows a power of two apart would share cache sets).
constexpr int BLOCK = 8;

/// row[j] = ((row[j] - f[0] * p0[j]) - f[1] * p1[j]) - ..., for j in [from, to) and the `steps`
/// pivot rows p0, p1, ... packed in `packed`; each update rounded to double, in step order.
using RowUpdate = void (*)(double * row, double const * packed, double const * f, int steps,
                           std::ptrdiff_t from, std::ptrdiff_t to);

void rowUpdatePlain(double * row, double const * packed, double const * f, int steps,
                    std::ptrdiff_t from, std::ptrdiff_t to);
#if KDRCORE_SIMD_X86
void rowUpdateAvx2(double * row, double const * packed, double const * f, int steps,
                   std::ptrdiff_t from, std::ptrdiff_t to);
void rowUpdateAvx512(double * row, double const * packed, double const * f, int steps,
                     std::ptrdiff_t from, std::ptrdiff_t to);
#endif

/// The row update for the level the library uses.
RowUpdate bestRowUpdate();

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_SOLVER_ROWUPDATE_H
