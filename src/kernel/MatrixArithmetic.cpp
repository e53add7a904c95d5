// The plain 4x4 arithmetic of the kernel: element-wise operations, the general product, products
// with vectors, determinants and the affine family. All of them are leaves: they call nothing of
// the kernel. Every element is computed at double width and rounded once, where it is stored.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>

namespace {
inline double wide(float v) {
    return static_cast<double>(v);
}

inline float narrow(double v) {
    return static_cast<float>(v);
}

// Determinant of three 3-vectors, expanded along the components of `a`. Products of three floats
// are not exact in double, so the grouping below is part of the result.
inline double det3Vectors(double a0, double a1, double a2, double b0, double b1, double b2,
                          double c0, double c1, double c2) {
    return a0 * (b1 * c2 - b2 * c1) - a1 * (b0 * c2 - b2 * c0) + a2 * (b0 * c1 - b1 * c0);
}
} // namespace

// ---- Element-wise: dst may be an input, since each element is read just before it is written.

void EnhancedMathFunctions::addMatrices(float * const dst, float const * const a,
                                        float const * const b) const {
    for (int i = 0; i < 16; ++i)
        dst[i] = narrow(wide(a[i]) + wide(b[i]));
}

void EnhancedMathFunctions::subMatrices(float * const dst, float const * const a,
                                        float const * const b) const {
    for (int i = 0; i < 16; ++i)
        dst[i] = narrow(wide(a[i]) - wide(b[i]));
}

void EnhancedMathFunctions::multMatrixScalar(float * const dst, float const * const m,
                                             float s) const {
    double const ws = wide(s);
    for (int i = 0; i < 16; ++i)
        dst[i] = narrow(wide(m[i]) * ws);
}

void EnhancedMathFunctions::neg(float * const dst, float const * const src) const {
    for (int i = 0; i < 16; ++i)
        dst[i] = -src[i];
}

void EnhancedMathFunctions::abs(float * const dst, float const * const src) const {
    // fabs, not a sign test: -0 becomes +0 and a NaN loses its sign bit.
    for (int i = 0; i < 16; ++i)
        dst[i] = std::fabs(src[i]);
}

void EnhancedMathFunctions::transpose(float * const dst, float const * const src) const {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            dst[4 * i + j] = src[4 * j + i];
}

// ---- Products

void EnhancedMathFunctions::multMatrices(float * const dst, float const * const a,
                                         float const * const b) const {
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

void EnhancedMathFunctions::multMatrixVec3f(float * const dst, float const * const m,
                                            float const * const v) const {
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

void EnhancedMathFunctions::multMatrixVec4f(float * const dst, float const * const m,
                                            float const * const v) const {
    double const x = wide(v[0]), y = wide(v[1]), z = wide(v[2]), w = wide(v[3]);
    for (int r = 0; r < 4; ++r)
        dst[r] =
            narrow(wide(m[r]) * x + wide(m[4 + r]) * y + wide(m[8 + r]) * z + wide(m[12 + r]) * w);
}

// ---- Determinants

float EnhancedMathFunctions::det4(float const * const m) const {
    // Expansion along row 0 (m[0], m[4], m[8], m[12]); the minor of each is rows 1 to 3 of the
    // other three columns, expanded in turn along its first column.
    double const c0r1 = wide(m[1]), c0r2 = wide(m[2]), c0r3 = wide(m[3]);
    double const c1r1 = wide(m[5]), c1r2 = wide(m[6]), c1r3 = wide(m[7]);
    double const c2r1 = wide(m[9]), c2r2 = wide(m[10]), c2r3 = wide(m[11]);
    double const c3r1 = wide(m[13]), c3r2 = wide(m[14]), c3r3 = wide(m[15]);
    double const minor0 = det3Vectors(c1r1, c1r2, c1r3, c2r1, c2r2, c2r3, c3r1, c3r2, c3r3);
    double const minor1 = det3Vectors(c0r1, c0r2, c0r3, c2r1, c2r2, c2r3, c3r1, c3r2, c3r3);
    double const minor2 = det3Vectors(c0r1, c0r2, c0r3, c1r1, c1r2, c1r3, c3r1, c3r2, c3r3);
    double const minor3 = det3Vectors(c0r1, c0r2, c0r3, c1r1, c1r2, c1r3, c2r1, c2r2, c2r3);
    return narrow(wide(m[0]) * minor0 - wide(m[4]) * minor1 + wide(m[8]) * minor2 -
                  wide(m[12]) * minor3);
}

float EnhancedMathFunctions::det3(float const * const m) const {
    return narrow(det3Vectors(wide(m[0]), wide(m[1]), wide(m[2]), wide(m[4]), wide(m[5]),
                              wide(m[6]), wide(m[8]), wide(m[9]), wide(m[10])));
}

// ---- The affine family: the bottom rows of the inputs are taken as 0, 0, 0, 1 and never read.

void EnhancedMathFunctions::multAffineMatrices(float * const dst, float const * const a,
                                               float const * const b) const {
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

void EnhancedMathFunctions::multAffineMatrixVec3f(float * const dst, float const * const m,
                                                  float const * const v) const {
    double const x = wide(v[0]), y = wide(v[1]), z = wide(v[2]);
    for (int r = 0; r < 3; ++r)
        dst[r] = narrow(wide(m[r]) * x + wide(m[4 + r]) * y + wide(m[8 + r]) * z + wide(m[12 + r]));
}

void EnhancedMathFunctions::multAffineMatrixVec3fAsDir(float * const dst, float const * const m,
                                                       float const * const v) const {
    double const x = wide(v[0]), y = wide(v[1]), z = wide(v[2]);
    for (int r = 0; r < 3; ++r)
        dst[r] = narrow(wide(m[r]) * x + wide(m[4 + r]) * y + wide(m[8 + r]) * z);
}

void EnhancedMathFunctions::multAffineColRow(float * const dst, float const * const col,
                                             float const * const row) const {
    // dst[12..15] belong to the caller (setProjection fills them): not written here.
    double const c0 = wide(col[0]), c1 = wide(col[1]), c2 = wide(col[2]);
    for (int c = 0; c < 3; ++c) {
        double const rc = wide(row[c]);
        dst[4 * c + 0] = narrow(c0 * rc);
        dst[4 * c + 1] = narrow(c1 * rc);
        dst[4 * c + 2] = narrow(c2 * rc);
        dst[4 * c + 3] = 0.0f;
    }
}

void EnhancedMathFunctions::transposeAffine(float * const dst, float const * const src) const {
    // Only the upper-left block: MatAff4f and MatRot4f keep their translation and bottom row,
    // and inverseRotateAndTr writes the translation before calling this.
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            dst[4 * i + j] = src[4 * j + i];
}
