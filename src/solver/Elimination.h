// src/solver/Elimination.h - the Gaussian elimination of LUDecomp, blocked, with vector row
// updates (private)
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
// The row updates have a baseline, an AVX2 and an AVX-512 version with the same bits
// (RowUpdate.h).
#ifndef KDRCORE_SRC_SOLVER_ELIMINATION_H
#define KDRCORE_SRC_SOLVER_ELIMINATION_H

#include "kdrcore/solver/LUDecomp.h"

namespace kdrcore::detail {

/// Eliminates below the diagonal of the row-major n x n matrix `a` in place, with the right-hand
/// side `b`; the results are those of the plain step-by-step elimination. `scratch` holds
/// 2 * n * n doubles (at most (n - 1) * (n + 6) are used).
void eliminate(double * a, double * b, int n, double * scratch);
void eliminate(double * a, _POINT3D * b, int n, double * scratch);

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_SOLVER_ELIMINATION_H
