// The plain 4x4 arithmetic of the kernel: element-wise operations, the general product, products
// with vectors, determinants and the affine family. All of them are leaves: they call nothing of
// the kernel. Every element is computed at double width and rounded once, where it is stored.
//
// The products with the most traffic live in SimdKernels.h, in a baseline and an AVX2 version
// with the same bits; their members here only choose the version the CPU can run.
#include "detail/Wide.h"
#include "kernel/SimdKernels.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>

using kdrcore::detail::narrow;
using kdrcore::detail::wide;

namespace {

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
#if KDRCORE_SIMD_X86
    kdrcore::detail::SimdLevel const level = kdrcore::detail::simdLevel();
    if (level >= kdrcore::detail::LEVEL_AVX512)
        return kdrcore::detail::multMatricesAvx512(dst, a, b);
    if (level >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::multMatricesAvx2(dst, a, b);
#endif
    kdrcore::detail::multMatricesPlain(dst, a, b);
}

void EnhancedMathFunctions::multMatrixVec3f(float * const dst, float const * const m,
                                            float const * const v) const {
#if KDRCORE_SIMD_X86
    if (kdrcore::detail::simdLevel() >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::multMatrixVec3fAvx2(dst, m, v);
#endif
    kdrcore::detail::multMatrixVec3fPlain(dst, m, v);
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
#if KDRCORE_SIMD_X86
    kdrcore::detail::SimdLevel const level = kdrcore::detail::simdLevel();
    if (level >= kdrcore::detail::LEVEL_AVX512)
        return kdrcore::detail::multAffineMatricesAvx512(dst, a, b);
    if (level >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::multAffineMatricesAvx2(dst, a, b);
#endif
    kdrcore::detail::multAffineMatricesPlain(dst, a, b);
}

void EnhancedMathFunctions::multAffineMatrixVec3f(float * const dst, float const * const m,
                                                  float const * const v) const {
#if KDRCORE_SIMD_X86
    if (kdrcore::detail::simdLevel() >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::multAffineMatrixVec3fAvx2(dst, m, v);
#endif
    kdrcore::detail::multAffineMatrixVec3fPlain(dst, m, v);
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
