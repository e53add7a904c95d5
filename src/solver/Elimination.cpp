#include "solver/Elimination.h"

#include "detail/Wide.h"
#include "solver/RowUpdate.h"

#include "kdrcore/types/Scalar.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace kdrcore::detail {
namespace {

/// Steps applied together to the rows below a panel.
constexpr int PANEL = 16;

/// Packs the `steps` rows `pivots` from column `from` to `to` for a RowUpdate; the last block is
/// padded with zeros. Needs steps * (to - from + BLOCK - 1) doubles.
void packPivots(double * packed, double const * const * pivots, int steps, std::ptrdiff_t from,
                std::ptrdiff_t to) {
    for (std::ptrdiff_t j = from; j < to; j += BLOCK, packed += steps * BLOCK) {
        std::ptrdiff_t const len = std::min<std::ptrdiff_t>(BLOCK, to - j);
        for (int s = 0; s < steps; ++s)
            for (std::ptrdiff_t c = 0; c < BLOCK; ++c)
                packed[s * BLOCK + c] = c < len ? pivots[s][j + c] : 0.0;
    }
}

/// rhs[i] - f * rhs[k] at double width, stored in the right-hand side's own precision.
void subtractScaled(double & target, double f, double const & pivot) {
    target = target - f * pivot;
}
/// Each coordinate goes through roundedFloat: g++ 12 at -O3 otherwise packs x and y of the update
/// repeated over a panel's steps into one register and carries the unrounded doubles across them.
void subtractScaled(_POINT3D & target, double f, _POINT3D const & pivot) {
    target.x = roundedFloat(static_cast<double>(target.x) - f * static_cast<double>(pivot.x));
    target.y = roundedFloat(static_cast<double>(target.y) - f * static_cast<double>(pivot.y));
    target.z = roundedFloat(static_cast<double>(target.z) - f * static_cast<double>(pivot.z));
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

template <class Rhs> void eliminateRows(double * a, Rhs * b, int n, double * scratch) {
    RowUpdate const update = bestRowUpdate();
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

} // namespace

void eliminate(double * a, double * b, int n, double * scratch) {
    eliminateRows(a, b, n, scratch);
}

void eliminate(double * a, _POINT3D * b, int n, double * scratch) {
    eliminateRows(a, b, n, scratch);
}

} // namespace kdrcore::detail
