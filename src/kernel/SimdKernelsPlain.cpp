// src/kernel/SimdKernelsPlain.cpp - the baseline versions of the kernel's hot operations
//
// The reference: every element at double width, rounded to float once, where it is stored.
#include "detail/Wide.h"
#include "kernel/SimdKernels.h"

#include <cmath>

namespace kdrcore::detail {
namespace {

// The right-hand side the elimination starts from.
constexpr double kIdentity[4][4] = {
    {1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};

// One row of the augmented 4 by 8 system: its half in R and its half in I, exchanged together.
struct RowRef {
    double * r;
    double * i;
};

// |a| > |b|, a quiet comparison: false when either is a NaN, and no exception flag raised.
inline bool greaterMagnitude(double a, double b) {
    return std::isgreater(std::fabs(a), std::fabs(b));
}

inline void swapRows(RowRef & p, RowRef & q) {
    RowRef const t = p;
    p = q;
    q = t;
}

// Makes v opaque to the optimiser. The four lines of the product below stay four scalar
// computations: vectorisers pair a line that adds with one that subtracts by computing both
// in each lane and keeping one, and the other can raise FE_INVALID (an infinity minus an
// infinity) that no operation written here raises.
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define KDRCORE_OPAQUE(v) __asm__("" : "+x"(v))
#else
#define KDRCORE_OPAQUE(v) static_cast<void>(v)
#endif
template <bool conjugateB>
void hamilton(float * const dst, float const * const a, float const * const b) {
    double const a0 = static_cast<double>(a[0]), a1 = static_cast<double>(a[1]),
                 a2 = static_cast<double>(a[2]), a3 = static_cast<double>(a[3]);
    double const b0 = static_cast<double>(b[0]);
    double const b1 = conjugateB ? -static_cast<double>(b[1]) : static_cast<double>(b[1]);
    double const b2 = conjugateB ? -static_cast<double>(b[2]) : static_cast<double>(b[2]);
    double const b3 = conjugateB ? -static_cast<double>(b[3]) : static_cast<double>(b[3]);
    double d0 = a0 * b0 - a1 * b1 - a2 * b2 - a3 * b3;
    KDRCORE_OPAQUE(d0);
    double d1 = a0 * b1 + a1 * b0 + a2 * b3 - a3 * b2;
    KDRCORE_OPAQUE(d1);
    double d2 = a0 * b2 + a2 * b0 + a3 * b1 - a1 * b3;
    KDRCORE_OPAQUE(d2);
    double d3 = a0 * b3 + a3 * b0 + a1 * b2 - a2 * b1;
    KDRCORE_OPAQUE(d3);
    dst[0] = static_cast<float>(d0);
    dst[1] = static_cast<float>(d1);
    dst[2] = static_cast<float>(d2);
    dst[3] = static_cast<float>(d3);
}

} // namespace

void multMatricesPlain(float * const dst, float const * const a, float const * const b) {
    // dst must not overlap a or b, so the rows of a can be held for the whole product.
    double const a00 = wide(a[0]), a10 = wide(a[1]), a20 = wide(a[2]), a30 = wide(a[3]);
    double const a01 = wide(a[4]), a11 = wide(a[5]), a21 = wide(a[6]), a31 = wide(a[7]);
    double const a02 = wide(a[8]), a12 = wide(a[9]), a22 = wide(a[10]), a32 = wide(a[11]);
    double const a03 = wide(a[12]), a13 = wide(a[13]), a23 = wide(a[14]), a33 = wide(a[15]);
    for (int c = 0; c < 4; ++c) {
        float const * const bc = b + 4 * c;
        double const b0 = wide(bc[0]), b1 = wide(bc[1]), b2 = wide(bc[2]), b3 = wide(bc[3]);
        float * const dc = dst + 4 * c;
        dc[0] = narrow(a00 * b0 + a01 * b1 + a02 * b2 + a03 * b3);
        dc[1] = narrow(a10 * b0 + a11 * b1 + a12 * b2 + a13 * b3);
        dc[2] = narrow(a20 * b0 + a21 * b1 + a22 * b2 + a23 * b3);
        dc[3] = narrow(a30 * b0 + a31 * b1 + a32 * b2 + a33 * b3);
    }
}

void multMatrixVec3fPlain(float * const dst, float const * const m, float const * const v) {
    // All of v is read before the first store: dst may be v.
    double const x = wide(v[0]), y = wide(v[1]), z = wide(v[2]);
    double const w = wide(m[3]) * x + wide(m[7]) * y + wide(m[11]) * z + wide(m[15]);
    // Only an exact zero is caught; a NaN passes and makes the result NaN.
    if (w == 0.0) {
        dst[0] = 0.0f;
        dst[1] = 0.0f;
        dst[2] = 0.0f;
        return;
    }
    double const k = 1.0 / w;
    dst[0] = narrow((wide(m[0]) * x + wide(m[4]) * y + wide(m[8]) * z + wide(m[12])) * k);
    dst[1] = narrow((wide(m[1]) * x + wide(m[5]) * y + wide(m[9]) * z + wide(m[13])) * k);
    dst[2] = narrow((wide(m[2]) * x + wide(m[6]) * y + wide(m[10]) * z + wide(m[14])) * k);
}

void multAffineMatricesPlain(float * const dst, float const * const a, float const * const b) {
    double const a00 = wide(a[0]), a10 = wide(a[1]), a20 = wide(a[2]);
    double const a01 = wide(a[4]), a11 = wide(a[5]), a21 = wide(a[6]);
    double const a02 = wide(a[8]), a12 = wide(a[9]), a22 = wide(a[10]);
    for (int c = 0; c < 3; ++c) {
        float const * const bc = b + 4 * c;
        double const b0 = wide(bc[0]), b1 = wide(bc[1]), b2 = wide(bc[2]);
        float * const dc = dst + 4 * c;
        dc[0] = narrow(a00 * b0 + a01 * b1 + a02 * b2);
        dc[1] = narrow(a10 * b0 + a11 * b1 + a12 * b2);
        dc[2] = narrow(a20 * b0 + a21 * b1 + a22 * b2);
    }
    double const t0 = wide(b[12]), t1 = wide(b[13]), t2 = wide(b[14]);
    dst[12] = narrow(a00 * t0 + a01 * t1 + a02 * t2 + wide(a[12]));
    dst[13] = narrow(a10 * t0 + a11 * t1 + a12 * t2 + wide(a[13]));
    dst[14] = narrow(a20 * t0 + a21 * t1 + a22 * t2 + wide(a[14]));
    dst[3] = 0.0f;
    dst[7] = 0.0f;
    dst[11] = 0.0f;
    dst[15] = 1.0f;
}

void multAffineMatrixVec3fPlain(float * const dst, float const * const m, float const * const v) {
    double const x = wide(v[0]), y = wide(v[1]), z = wide(v[2]);
    for (int r = 0; r < 3; ++r)
        dst[r] = narrow(wide(m[r]) * x + wide(m[4 + r]) * y + wide(m[8 + r]) * z + wide(m[12 + r]));
}

bool inverseMatrixPlain(float * const dst, float const * const src) {
    // The four groups of src are taken as the rows of the system. Since the inverse of the
    // transpose is the transpose of the inverse, storing the result the same way gives the inverse
    // in src's own layout. src is read only here, dst only written at the very end: dst may be
    // src, and a singular matrix leaves dst untouched.
    double R[4][4];
    double I[4][4];
    for (int n = 0; n < 4; ++n) {
        for (int j = 0; j < 4; ++j) {
            R[n][j] = wide(src[4 * n + j]);
            I[n][j] = kIdentity[n][j];
        }
    }
    RowRef r0{R[0], I[0]}, r1{R[1], I[1]}, r2{R[2], I[2]}, r3{R[3], I[3]};

    // Partial pivoting with strict comparisons: of two equal candidates the upper row stays, and
    // a NaN never causes an exchange. Only an exactly zero pivot counts as singular.
    if (greaterMagnitude(r3.r[0], r2.r[0]))
        swapRows(r3, r2);
    if (greaterMagnitude(r2.r[0], r1.r[0]))
        swapRows(r2, r1);
    if (greaterMagnitude(r1.r[0], r0.r[0]))
        swapRows(r1, r0);
    if (r0.r[0] == 0.0)
        return false;
    {
        double const k = 1.0 / r0.r[0];
        double const f1 = r1.r[0] * k, f2 = r2.r[0] * k, f3 = r3.r[0] * k;
        for (int j = 1; j < 4; ++j) {
            double const p = r0.r[j];
            r1.r[j] -= f1 * p;
            r2.r[j] -= f2 * p;
            r3.r[j] -= f3 * p;
        }
        // The right-hand side is still mostly the identity's zeros: skip them.
        for (int j = 0; j < 4; ++j) {
            double const p = r0.i[j];
            if (p != 0.0) {
                r1.i[j] -= f1 * p;
                r2.i[j] -= f2 * p;
                r3.i[j] -= f3 * p;
            }
        }
    }

    if (greaterMagnitude(r3.r[1], r2.r[1]))
        swapRows(r3, r2);
    if (greaterMagnitude(r2.r[1], r1.r[1]))
        swapRows(r2, r1);
    if (r1.r[1] == 0.0)
        return false;
    {
        double const k = 1.0 / r1.r[1];
        double const f2 = r2.r[1] * k, f3 = r3.r[1] * k;
        for (int j = 2; j < 4; ++j) {
            double const p = r1.r[j];
            r2.r[j] -= f2 * p;
            r3.r[j] -= f3 * p;
        }
        for (int j = 0; j < 4; ++j) {
            double const p = r1.i[j];
            if (p != 0.0) {
                r2.i[j] -= f2 * p;
                r3.i[j] -= f3 * p;
            }
        }
    }

    if (greaterMagnitude(r3.r[2], r2.r[2]))
        swapRows(r3, r2);
    if (r2.r[2] == 0.0)
        return false;
    {
        // A true division here rather than a reciprocal: the last factor is used only once.
        double const f3 = r3.r[2] / r2.r[2];
        r3.r[3] -= f3 * r2.r[3];
        for (int j = 0; j < 4; ++j)
            r3.i[j] -= f3 * r2.i[j];
    }

    if (r3.r[3] == 0.0)
        return false;

    // Back substitution, column by column of the right-hand side.
    double const k3 = 1.0 / r3.r[3];
    double const k2 = 1.0 / r2.r[2];
    double const k1 = 1.0 / r1.r[1];
    double const k0 = 1.0 / r0.r[0];
    for (int j = 0; j < 4; ++j) {
        double const x3 = r3.i[j] * k3;
        double const x2 = k2 * (r2.i[j] - x3 * r2.r[3]);
        double y1 = r1.i[j] - x3 * r1.r[3];
        double y0 = r0.i[j] - x3 * r0.r[3];
        double const x1 = k1 * (y1 - x2 * r1.r[2]);
        y0 -= x2 * r0.r[2];
        double const x0 = k0 * (y0 - x1 * r0.r[1]);
        r3.i[j] = x3;
        r2.i[j] = x2;
        r1.i[j] = x1;
        r0.i[j] = x0;
    }

    // Row n of the solution, wherever the exchanges left it, is group n of dst.
    RowRef const rows[4] = {r0, r1, r2, r3};
    for (int n = 0; n < 4; ++n)
        for (int j = 0; j < 4; ++j)
            dst[4 * n + j] = narrow(rows[n].i[j]);
    return true;
}

/// The rotation matrix of q, with the diagonal in the w*w form (equal to 1 - 2(y*y + z*z) for
/// unit quaternions only); no translation, bottom row 0, 0, 0, 1.
void quaternionToMatrixPlain(float * const dst, float const * const q) {
    double const w = static_cast<double>(q[0]), x = static_cast<double>(q[1]),
                 y = static_cast<double>(q[2]), z = static_cast<double>(q[3]);
    double const ww = w * w, xx = x * x, yy = y * y, zz = z * z;
    double const xy = x * y, xz = x * z, yz = y * z;
    double const wx = w * x, wy = w * y, wz = w * z;
    dst[0] = static_cast<float>(2.0 * (ww + xx) - 1.0);
    dst[1] = static_cast<float>(2.0 * (xy + wz));
    dst[2] = static_cast<float>(2.0 * (xz - wy));
    dst[4] = static_cast<float>(2.0 * (xy - wz));
    dst[5] = static_cast<float>(2.0 * (ww + yy) - 1.0);
    dst[6] = static_cast<float>(2.0 * (yz + wx));
    dst[8] = static_cast<float>(2.0 * (xz + wy));
    dst[9] = static_cast<float>(2.0 * (yz - wx));
    dst[10] = static_cast<float>(2.0 * (ww + zz) - 1.0);
    dst[3] = dst[7] = dst[11] = 0.0f;
    dst[12] = dst[13] = dst[14] = 0.0f;
    dst[15] = 1.0f;
}

void multQuaternionsPlain(float * const dst, float const * const a, float const * const b) {
    hamilton<false>(dst, a, b);
}

void divQuaternionsUPlain(float * const dst, float const * const a, float const * const b) {
    hamilton<true>(dst, a, b);
}

} // namespace kdrcore::detail
