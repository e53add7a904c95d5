// Matrix inversion in the kernel: the general Gauss-Jordan inverse and the cheap inverses of
// matrices whose form the caller knows (scale, translation, rotation, rigid motion).
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>

namespace {
inline double wide(float v) {
    return static_cast<double>(v);
}

inline float narrow(double v) {
    return static_cast<float>(v);
}

// The right-hand side the elimination starts from.
constexpr double kIdentity[4][4] = {
    {1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};

// One row of the augmented 4 by 8 system: its half in R and its half in I, exchanged together.
struct RowRef {
    double * r;
    double * i;
};

inline void swapRows(RowRef & p, RowRef & q) {
    RowRef const t = p;
    p = q;
    q = t;
}
} // namespace

bool EnhancedMathFunctions::inverseMatrix(float * const dst, float const * const src) const {
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
    if (std::fabs(r3.r[0]) > std::fabs(r2.r[0]))
        swapRows(r3, r2);
    if (std::fabs(r2.r[0]) > std::fabs(r1.r[0]))
        swapRows(r2, r1);
    if (std::fabs(r1.r[0]) > std::fabs(r0.r[0]))
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

    if (std::fabs(r3.r[1]) > std::fabs(r2.r[1]))
        swapRows(r3, r2);
    if (std::fabs(r2.r[1]) > std::fabs(r1.r[1]))
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

    if (std::fabs(r3.r[2]) > std::fabs(r2.r[2]))
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

// Both go through the table, so that a replacement of inverseMatrix serves them too.
bool EnhancedMathFunctions::inverse3(float * const dst, float const * const src) const {
    return inverseMatrix(dst, src);
}

bool EnhancedMathFunctions::inverseAffine(float * const dst, float const * const src) const {
    return inverseMatrix(dst, src);
}

bool EnhancedMathFunctions::inverseScale(float * const m) const {
    if (m[0] == 0.0f || m[5] == 0.0f || m[10] == 0.0f)
        return false;
    m[0] = narrow(1.0 / wide(m[0]));
    m[5] = narrow(1.0 / wide(m[5]));
    m[10] = narrow(1.0 / wide(m[10]));
    return true;
}

bool EnhancedMathFunctions::inverseScale(float * const dst, float const * const src) const {
    double const s0 = wide(src[0]), s1 = wide(src[5]), s2 = wide(src[10]);
    if (s0 == 0.0 || s1 == 0.0 || s2 == 0.0)
        return false;
    // The diagonal is read before dst is written: dst may be src.
    for (int i = 0; i < 16; ++i)
        dst[i] = 0.0f;
    dst[0] = narrow(1.0 / s0);
    dst[5] = narrow(1.0 / s1);
    dst[10] = narrow(1.0 / s2);
    dst[15] = 1.0f;
    return true;
}

bool EnhancedMathFunctions::inverseTranslate(float * const m) const {
    m[12] = -m[12];
    m[13] = -m[13];
    m[14] = -m[14];
    return true;
}

bool EnhancedMathFunctions::inverseTranslate(float * const dst, float const * const src) const {
    float const t0 = src[12], t1 = src[13], t2 = src[14];
    for (int i = 0; i < 16; ++i)
        dst[i] = 0.0f;
    dst[0] = 1.0f;
    dst[5] = 1.0f;
    dst[10] = 1.0f;
    dst[15] = 1.0f;
    dst[12] = -t0;
    dst[13] = -t1;
    dst[14] = -t2;
    return true;
}

bool EnhancedMathFunctions::inverseRotate(float * const dst, float const * const src) const {
    // The inverse of a rotation is its transpose; translation and bottom row of dst stay.
    transposeAffine(dst, src);
    return true;
}

bool EnhancedMathFunctions::inverseRotateAndTr(float * const dst, float const * const src) const {
    // (R, t) inverts to (R', -R' t). The translation is computed first, from src, and the block
    // transposed after through the table; dst[3], dst[7], dst[11], dst[15] are not written.
    double const t0 = wide(src[12]), t1 = wide(src[13]), t2 = wide(src[14]);
    dst[12] = narrow(-(wide(src[0]) * t0 + wide(src[1]) * t1 + wide(src[2]) * t2));
    dst[13] = narrow(-(wide(src[4]) * t0 + wide(src[5]) * t1 + wide(src[6]) * t2));
    dst[14] = narrow(-(wide(src[8]) * t0 + wide(src[9]) * t1 + wide(src[10]) * t2));
    transposeAffine(dst, src);
    return true;
}
