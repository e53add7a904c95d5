// Eigen-decomposition of a symmetric 3x3 block by cyclic Jacobi rotations, and the polar
// factorisation of an affine matrix built on it.
#include "detail/Wide.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>

using kdrcore::detail::narrow;
using kdrcore::detail::wide;

namespace {

// Off-diagonal elements below this share of their sum are skipped in the first three sweeps: the
// float 0.2 divided by 9.
constexpr double kThresholdShare = 0.022222222553359136;
static_assert(kThresholdShare == static_cast<double>(0.2f) / 9.0);
constexpr int kMaxSweeps = 50;

// The plane rotation applied to one pair of elements, both from their old values.
inline void mix(double & e, double & f, double sn, double tau) {
    double const e0 = e;
    double const f0 = f;
    e = e0 - sn * (f0 + e0 * tau);
    f = f0 + sn * (e0 - f0 * tau);
}

inline void mix(float & e, float & f, double sn, double tau) {
    double const e0 = wide(e);
    double const f0 = wide(f);
    e = narrow(e0 - sn * (f0 + e0 * tau));
    f = narrow(f0 + sn * (e0 - f0 * tau));
}

// Annihilates apq, the element (p, q) of the upper triangle, whose magnitude times 100 is g. In a
// 3x3 block exactly one other pair of off-diagonal elements is touched: (e, f), given by the caller
// in the order of the rotation.
template <int p, int q>
inline void rotate(double & apq, double & e, double & f, double g, float * const values,
                   double * const z, float (*const vectors)[3]) {
    double h = wide(values[q]) - wide(values[p]);
    double tn;
    if (std::fabs(h) + g == std::fabs(h)) {
        tn = apq / h;
    } else {
        double const theta = 0.5 * h / apq;
        tn = 1.0 / (std::fabs(theta) + std::sqrt(1.0 + theta * theta));
        if (theta < 0.0)
            tn = -tn;
    }
    double const c = 1.0 / std::sqrt(1.0 + tn * tn);
    double const sn = tn * c;
    double const tau = sn / (1.0 + c);
    h = tn * apq;
    z[p] -= h;
    z[q] += h;
    values[p] = narrow(wide(values[p]) - h);
    values[q] = narrow(wide(values[q]) + h);
    apq = 0.0;
    mix(e, f, sn, tau);
    for (int j = 0; j < 3; ++j)
        mix(vectors[j][p], vectors[j][q], sn, tau);
}

// One visit of the pair (p, q) in the given sweep; e and f as for rotate().
template <int p, int q>
inline void visit(int sweep, double thresh, double & apq, double & e, double & f,
                  float * const values, double * const z, float (*const vectors)[3]) {
    double const g = 100.0 * std::fabs(apq);
    double const vp = std::fabs(wide(values[p]));
    double const vq = std::fabs(wide(values[q]));
    // From the fifth sweep on, an element too small to change either diagonal value is dropped.
    if (sweep > 3 && vp + g == vp && vq + g == vq)
        apq = 0.0;
    else if (std::fabs(apq) > thresh)
        rotate<p, q>(apq, e, f, g, values, z, vectors);
}
} // namespace

void EnhancedMathFunctions::jacobi3(float * const valuesOut, float (*const vectorsOut)[3],
                                    int & rotations, float const * const m) const {
    // The work runs on local copies, written to the caller's arrays once at the end: the result
    // is the same, and the rotations' chain of dependent operations no longer goes through
    // memory (the caller's two float arrays might overlap, as far as the compiler knows).
    float values[3];
    float vectors[3][3];
    // The upper triangle, at double width; the diagonal lives in `values`.
    double a01 = wide(m[1]);
    double a02 = wide(m[2]);
    double a12 = wide(m[6]);
    double b[3];
    double z[3];
    for (int i = 0; i < 3; ++i) {
        values[i] = m[5 * i];
        b[i] = wide(m[5 * i]);
        z[i] = 0.0;
        for (int j = 0; j < 3; ++j)
            vectors[i][j] = (i == j) ? 1.0f : 0.0f;
    }
    int visited = 0;

    for (int sweep = 0; sweep < kMaxSweeps; ++sweep) {
        double const sm = std::fabs(a01) + std::fabs(a02) + std::fabs(a12);
        if (sm == 0.0)
            break;
        double const thresh = sweep < 3 ? sm * kThresholdShare : 0.0;
        // The count is of pairs visited, rotated or not: three per sweep.
        visit<0, 1>(sweep, thresh, a01, a02, a12, values, z, vectors);
        visit<0, 2>(sweep, thresh, a02, a01, a12, values, z, vectors);
        visit<1, 2>(sweep, thresh, a12, a01, a02, values, z, vectors);
        visited += 3;
        for (int k = 0; k < 3; ++k) {
            b[k] += z[k];
            values[k] = narrow(b[k]);
            z[k] = 0.0;
        }
    }
    // Converged (a diagonal block), or not after the last sweep: what there is stands, without a
    // report.
    rotations = visited;
    for (int i = 0; i < 3; ++i) {
        valuesOut[i] = values[i];
        for (int j = 0; j < 3; ++j)
            vectorsOut[i][j] = vectors[i][j];
    }
}

bool EnhancedMathFunctions::factor(float * const r, float * const s, float * const u,
                                   float * const t, float * const p, float const * const m) const {
    float a[16];
    copyMat4fTo(a, m);
    setIdentity(p);
    t[0] = m[12];
    t[1] = m[13];
    t[2] = m[14];
    // Keep the upper-left block alone: no translation, no perspective row.
    a[3] = a[7] = a[11] = 0.0f;
    a[12] = a[13] = a[14] = 0.0f;
    a[15] = 1.0f;

    double const det = wide(det3(a));
    double const sign = det < 0.0 ? -1.0 : 1.0;
    if (sign * det < 1e-12)
        return false;

    // The eigenvectors of L'L are the frame of the symmetric stretch sqrt(L'L).
    float b[16];
    float h[16];
    transpose(b, a);
    multMatrices(h, b, a);
    float values[3];
    float vectors[3][3];
    int rotations;
    jacobi3(values, vectors, rotations, h);

    // The eigenvectors, columns of `vectors`, become the rows of r.
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            r[4 * i + j] = vectors[i][j];
        r[4 * i + 3] = 0.0f;
        r[12 + i] = 0.0f;
    }
    r[15] = 1.0f;

    // A mirror goes into the stretch: all three factors take the sign of the determinant, so
    // that u stays a proper rotation.
    float d[16];
    setIdentity(d);
    for (int i = 0; i < 3; ++i) {
        s[i] = narrow(sign * std::sqrt(wide(values[i])));
        d[5 * i] = narrow(1.0 / wide(s[i]));
    }

    // u = L r' S^-1 r.
    float e[16];
    float f[16];
    transpose(b, r);
    multMatrices(e, a, b);
    multMatrices(f, e, d);
    multMatrices(u, f, r);
    return true;
}
