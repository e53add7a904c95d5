// Elimination.h - the Gaussian elimination of LUDecomp, blocked, with vector row updates
// (private)
//
// Step k of the elimination sets, for every row i > k, f = inv * A[i][k] (inv = 1 / A[k][k]) and
// A[i][j] = A[i][j] - f * A[k][j] for j > k, then A[i][k] = 0 and rhs[i] -= f * rhs[k]. Each
// element thus receives one subtraction per step, in the order of the steps, from values that
// are final when it needs them: a pivot row no longer changes once its step comes. So the steps
// may be applied in any loop order that keeps, for each element, its own sequence of updates.
//
// The blocked form takes a panel of up to PANEL steps: the pivot rows of the panel are brought
// up to date step by step, then every row below gets all the steps of the panel in one pass
// while it sits in the cache, each element running through its updates in step order. A pivot
// below TOLERANCE needs the search among all rows below: the panel then stops, every row is
// brought up to date, and that step runs on its own as in the plain form.
//
// The row updates have a baseline, an AVX2 and an AVX-512 version. f * A[k][j] is a product of
// two doubles, not exact: the versions use separate multiplies and subtractions (no FMA) and give
// the same bits. The header is also compiled into the test that checks every version.
#ifndef KDRCORE_SOLVER_ELIMINATION_H
#define KDRCORE_SOLVER_ELIMINATION_H

#include "../kernel/SimdLevel.h" // relative: the header is also compiled into the tests
#include "../types/RoundedFloat.h"

#include "kdrcore/solver/LUDecomp.h"
#include "kdrcore/types/Scalar.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#if KDRCORE_SIMD_X86
#include <immintrin.h>
#endif

namespace kdrsolver {

/// Steps applied together to the rows below a panel.
constexpr int PANEL = 16;

/// Pivot rows packed for the pass over the rows below a panel: from column `from` on, blocks of
/// BLOCK columns, each block holding for every step its BLOCK elements, so that the pass reads
/// one stream whatever the row length (rows a power of two apart would share cache sets).
constexpr int BLOCK = 8;

/// row[j] = ((row[j] - f[0] * p0[j]) - f[1] * p1[j]) - ..., for j in [from, to) and the `steps`
/// pivot rows p0, p1, ... packed in `packed`; each update rounded to double, in step order.
using RowUpdate = void (*)(double * row, double const * packed, double const * f, int steps,
                           std::ptrdiff_t from, std::ptrdiff_t to);

inline void rowUpdatePlain(double * row, double const * packed, double const * f, int steps,
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

#if KDRCORE_SIMD_X86
KDRCORE_TARGET_AVX2 inline void rowUpdateAvx2(double * row, double const * packed, double const * f,
                                              int steps, std::ptrdiff_t from, std::ptrdiff_t to) {
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

// GCC 12's AVX-512 headers start some results from an undefined register, which
// -Wuninitialized reports wherever they are inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
KDRCORE_TARGET_AVX512 inline void rowUpdateAvx512(double * row, double const * packed,
                                                  double const * f, int steps, std::ptrdiff_t from,
                                                  std::ptrdiff_t to) {
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
        std::ptrdiff_t const len = std::min<std::ptrdiff_t>(BLOCK, to - j);
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
#endif // KDRCORE_SIMD_X86

/// The row update for the level the library uses.
inline RowUpdate bestRowUpdate() {
#if KDRCORE_SIMD_X86
    switch (kdrsimd::level()) {
    case kdrsimd::LEVEL_AVX512:
        return rowUpdateAvx512;
    case kdrsimd::LEVEL_AVX2:
        return rowUpdateAvx2;
    default:
        break;
    }
#endif
    return rowUpdatePlain;
}

/// Packs the `steps` rows `pivots` from column `from` to `to` for a RowUpdate; the last block is
/// padded with zeros. Needs steps * (to - from + BLOCK - 1) doubles.
inline void packPivots(double * packed, double const * const * pivots, int steps,
                       std::ptrdiff_t from, std::ptrdiff_t to) {
    for (std::ptrdiff_t j = from; j < to; j += BLOCK, packed += steps * BLOCK) {
        std::ptrdiff_t const len = std::min<std::ptrdiff_t>(BLOCK, to - j);
        for (int s = 0; s < steps; ++s)
            for (std::ptrdiff_t c = 0; c < BLOCK; ++c)
                packed[s * BLOCK + c] = c < len ? pivots[s][j + c] : 0.0;
    }
}

/// rhs[i] - f * rhs[k] at double width, stored in the right-hand side's own precision.
inline void subtractScaled(double & target, double f, double const & pivot) {
    target = target - f * pivot;
}
/// Each coordinate goes through roundedFloat: g++ 12 at -O3 otherwise packs x and y of the update
/// repeated over a panel's steps into one register and carries the unrounded doubles across them.
inline void subtractScaled(_POINT3D & target, double f, _POINT3D const & pivot) {
    target.x =
        kdrcore::roundedFloat(static_cast<double>(target.x) - f * static_cast<double>(pivot.x));
    target.y =
        kdrcore::roundedFloat(static_cast<double>(target.y) - f * static_cast<double>(pivot.y));
    target.z =
        kdrcore::roundedFloat(static_cast<double>(target.z) - f * static_cast<double>(pivot.z));
}

/// One step on its own: rows first .. n - 1 of `a` lose f times the pivot row `s`, f being
/// 1 / pivot times their entry in column s, which becomes exactly 0.
template <class Rhs>
void singleStep(double * a, Rhs * b, std::ptrdiff_t w, std::ptrdiff_t s, std::ptrdiff_t first,
                std::ptrdiff_t last, double inv) {
    double const * const pivot = a + s * w;
    for (std::ptrdiff_t i = first; i < last; ++i) {
        double * const ri = a + i * w;
        double const f = inv * ri[s];
        for (std::ptrdiff_t j = s + 1; j < w; ++j)
            ri[j] = ri[j] - f * pivot[j];
        ri[s] = 0.0;
        subtractScaled(b[i], f, b[s]);
    }
}

/// Eliminates below the diagonal of the row-major n x n matrix `a` in place, with the right-hand
/// side `b`; the results are those of the plain step-by-step elimination. `scratch` holds
/// 2 * n * n doubles (at most (n - 1) * (n + 6) are used).
template <class Rhs>
void eliminate(double * a, Rhs * b, int n, RowUpdate update, double * scratch) {
    double const tolerance = TOLERANCE;
    std::ptrdiff_t const w = n;
    auto row = [a, w](std::ptrdiff_t i) { return a + i * w; };
    std::ptrdiff_t k = 0;
    while (k + 1 < w) {
        // Steps k .. end - 1. Their pivot rows, and in the last panel every row, are updated
        // step by step; the rows from `below` on take the panel's steps in one pass.
        std::ptrdiff_t const end = std::min<std::ptrdiff_t>(k + PANEL, w - 1);
        std::ptrdiff_t const below = end == w - 1 ? w : end;
        double inv[PANEL];
        double const * pivots[PANEL];
        // The panel's own pivot rows, step by step, up to a pivot that needs the search.
        std::ptrdiff_t s = k;
        for (; s < end; ++s) {
            double const p = row(s)[s];
            if (std::fabs(p) < tolerance)
                break;
            inv[s - k] = 1.0 / p;
            pivots[s - k] = row(s);
            singleStep(a, b, w, s, s + 1, below, inv[s - k]);
        }
        // Every row below the panel takes its steps k .. s - 1 in one pass.
        int const steps = static_cast<int>(s - k);
        if (steps > 0 && below < w) {
            packPivots(scratch, pivots, steps, s, w);
            // Rows go in groups of ROWS: the panel's columns of a row form a chain of dependent
            // operations (each column takes the steps before its own, then gives f), and a group
            // runs its chains side by side.
            constexpr int ROWS = 4;
            double f[ROWS][PANEL];
            for (std::ptrdiff_t i = below; i < w; i += ROWS) {
                int const g = static_cast<int>(std::min<std::ptrdiff_t>(ROWS, w - i));
                double * ri[ROWS];
                for (int r = 0; r < ROWS; ++r)
                    ri[r] = row(i + (r < g ? r : 0));
                for (int t = 0; t < steps; ++t) {
                    double x[ROWS];
                    for (int r = 0; r < ROWS; ++r)
                        x[r] = ri[r][k + t];
                    for (int u = 0; u < t; ++u) {
                        double const p = pivots[u][k + t];
                        for (int r = 0; r < ROWS; ++r)
                            x[r] = x[r] - f[r][u] * p;
                    }
                    for (int r = 0; r < ROWS; ++r)
                        f[r][t] = inv[t] * x[r];
                }
                for (int r = 0; r < g; ++r) {
                    for (int t = 0; t < steps; ++t)
                        ri[r][k + t] = 0.0;
                    update(ri[r], scratch, f[r], steps, s, w);
                    for (int t = 0; t < steps; ++t)
                        subtractScaled(b[i + r], f[r][t], b[k + t]);
                }
            }
        }
        if (s == end) {
            k = end;
            continue;
        }
        // Step s on its own: every row is up to date through step s - 1. The first later row
        // whose entry reaches the tolerance replaces the pivot (a NaN is acceptable).
        std::ptrdiff_t r = s + 1;
        while (r < w && std::fabs(row(r)[s]) < tolerance)
            ++r;
        if (r == w) {
            for (std::ptrdiff_t i = s + 1; i < w; ++i)
                row(i)[s] = 0.0;
        } else {
            // Rows at or below step s hold exact zeros left of column s.
            LUDecomp::Permut_lignes(a, n, n, static_cast<int>(s), static_cast<int>(r),
                                    static_cast<int>(s));
            std::swap(b[s], b[r]);
            singleStep(a, b, w, s, s + 1, w, 1.0 / row(s)[s]);
        }
        k = s + 1;
    }
}

} // namespace kdrsolver

#endif // KDRCORE_SOLVER_ELIMINATION_H
