// MatrixKernels.h - the hot 4x4 operations of the kernel, in a baseline and an AVX2 version
// (private)
//
// EnhancedMathFunctions' members multMatrices, multAffineMatrices, multMatrixVec3f,
// multAffineMatrixVec3f and inverseMatrix only choose between the two versions here, by the
// level the CPU offers (SimdLevel.h). The baseline versions are the reference: every element at
// double width, rounded to float once, where it is stored. The AVX2 versions give the same bits,
// read the same elements and raise the same floating-point exception flags; the section in front
// of them says how.
//
// On the processors measured, AVX-512 gave these small kernels nothing over AVX2 (its 512-bit
// operations run as two halves there), so the AVX-512 level uses the AVX2 versions.
//
// The baseline versions are out of line, so that the dispatch in front of them saves no
// registers. The header is also compiled into the test that checks every version against the
// baseline on every instruction set the machine offers.
#ifndef KDRCORE_KERNEL_MATRIXKERNELS_H
#define KDRCORE_KERNEL_MATRIXKERNELS_H

#include "SimdLevel.h" // same folder: the header is also compiled into the tests

#include <cmath>
#include <cstdint>
#include <cstring>

#if KDRCORE_SIMD_X86
#include <immintrin.h>
#endif

namespace kdrkernel {

inline double wide(float v) {
    return static_cast<double>(v);
}

inline float narrow(double v) {
    return static_cast<float>(v);
}

// ---- Baseline

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

[[gnu::noinline]] inline void multMatricesPlain(float * const dst, float const * const a,
                                                float const * const b) {
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

[[gnu::noinline]] inline void multMatrixVec3fPlain(float * const dst, float const * const m,
                                                   float const * const v) {
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

[[gnu::noinline]] inline void multAffineMatricesPlain(float * const dst, float const * const a,
                                                      float const * const b) {
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

[[gnu::noinline]] inline void multAffineMatrixVec3fPlain(float * const dst, float const * const m,
                                                         float const * const v) {
    double const x = wide(v[0]), y = wide(v[1]), z = wide(v[2]);
    for (int r = 0; r < 3; ++r)
        dst[r] = narrow(wide(m[r]) * x + wide(m[4 + r]) * y + wide(m[8 + r]) * z + wide(m[12 + r]));
}

[[gnu::noinline]] inline bool inverseMatrixPlain(float * const dst, float const * const src) {
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

// ---- AVX2
//
// How these versions keep the baseline's bits and its floating-point exception flags:
// - Which NaN an operation on two NaNs returns depends on the order of its operands, which the
//   compiler chooses for the baseline code, differently at each optimisation level. Inputs that
//   hold a NaN therefore go to the baseline version. The test is a quiet comparison, which
//   raises FE_INVALID for a signalling NaN only, as the baseline's widening of that element
//   does; where the baseline may stop before widening everything (multMatrixVec3f), it is made
//   on the bits. Without NaN inputs every NaN is the processor's default NaN, made by an
//   invalid operation, whichever operand it comes from and whatever the signs of the factors
//   that made it. A subtraction may add the product of a negated factor, never a negated NaN.
// - A float times a float is exact in double, so fma(a, b, s) on widened floats rounds and
//   raises as s + a * b does, and fnmadd as s - a * b. (Whether a fused infinity times 0 plus a
//   NaN raises FE_INVALID is the processor's choice; that NaN was made by an invalid operation
//   of the same call, so the flag is raised either way.) Sums keep the baseline's grouping, one
//   lane per element. Products of two doubles are not exact: they stay separate operations.
// - A lane the baseline never computes (the bottom row of an affine product, the homogeneous
//   coordinate of a point, the finished columns of the elimination) gets 0 in both factors, or
//   0 subtracted, which raises nothing. Elements the baseline never reads (the bottom rows of the
//   affine operations, v[3]) are never loaded.
// - An elimination step is computed before the zero test that follows it, as the baseline's,
//   whose rows are stored, even when the compiler could prove the step unused.

#if KDRCORE_SIMD_X86

/// Whether one of the floats of x, y, z, w is a NaN.
KDRCORE_TARGET_AVX2 inline bool anyNaN(__m128 x, __m128 y, __m128 z, __m128 w) {
    return _mm_movemask_ps(_mm_or_ps(_mm_cmpunord_ps(x, y), _mm_cmpunord_ps(z, w))) != 0;
}

/// Lanes of the 16 floats at m that hold a NaN, on the bits: no floating-point operation.
KDRCORE_TARGET_AVX2 inline __m256i nanLanes(float const * m) {
    __m256i const magnitude = _mm256_set1_epi32(0x7FFFFFFF), inf = _mm256_set1_epi32(0x7F800000);
    __m256i const lo = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(m));
    __m256i const hi = _mm256_loadu_si256(reinterpret_cast<__m256i const *>(m + 8));
    return _mm256_or_si256(_mm256_cmpgt_epi32(_mm256_and_si256(lo, magnitude), inf),
                           _mm256_cmpgt_epi32(_mm256_and_si256(hi, magnitude), inf));
}

KDRCORE_TARGET_AVX2 inline __m256d widen(__m128 v) {
    return _mm256_cvtps_pd(v);
}

KDRCORE_TARGET_AVX2 inline __m256d loadWide4(float const * p) {
    return widen(_mm_loadu_ps(p));
}

/// p[0..2], lane 3 = 0; p[3] is not read.
KDRCORE_TARGET_AVX2 inline __m128 load3(float const * p) {
    __m128 const xy = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<__m64 const *>(p));
    return _mm_insert_ps(xy, _mm_load_ss(p + 2), 0x20);
}

/// Lane `j` of `v` in all four lanes.
template <int j> KDRCORE_TARGET_AVX2 inline __m256d lane(__m256d v) {
    return _mm256_permute4x64_pd(v, j * 0x55);
}

/// Lane `j` of `v` in lanes 0 to 2, lane 3 of `v` (0 from load3) in lane 3.
template <int j> KDRCORE_TARGET_AVX2 inline __m256d lane3(__m256d v) {
    return _mm256_permute4x64_pd(v, j * 0x15 + 0xC0);
}

/// Stores lanes 0 to 2 of `v`; dst[3] is not touched.
KDRCORE_TARGET_AVX2 inline void store3(float * dst, __m128 v) {
    _mm_storel_pi(reinterpret_cast<__m64 *>(dst), v);
    _mm_store_ss(dst + 2, _mm_movehl_ps(v, v));
}

KDRCORE_TARGET_AVX2 inline __m256d add(__m256d a, __m256d b) {
    return _mm256_add_pd(a, b);
}
KDRCORE_TARGET_AVX2 inline __m256d sub(__m256d a, __m256d b) {
    return _mm256_sub_pd(a, b);
}
KDRCORE_TARGET_AVX2 inline __m256d mul(__m256d a, __m256d b) {
    return _mm256_mul_pd(a, b);
}
/// s + a b, for a and b widened floats (see above).
KDRCORE_TARGET_AVX2 inline __m256d addProduct(__m256d s, __m256d a, __m256d b) {
    return _mm256_fmadd_pd(a, b, s);
}
/// s - a b, for a and b widened floats.
KDRCORE_TARGET_AVX2 inline __m256d subProduct(__m256d s, __m256d a, __m256d b) {
    return _mm256_fnmadd_pd(a, b, s);
}

/// Whether one of the 16 floats of m or of n is a NaN.
KDRCORE_TARGET_AVX2 inline bool anyNaN(float const * m, float const * n) {
    __m256 const mm = _mm256_cmp_ps(_mm256_loadu_ps(m), _mm256_loadu_ps(m + 8), _CMP_UNORD_Q);
    __m256 const nn = _mm256_cmp_ps(_mm256_loadu_ps(n), _mm256_loadu_ps(n + 8), _CMP_UNORD_Q);
    return _mm256_movemask_ps(_mm256_or_ps(mm, nn)) != 0;
}

/// dst = a b, 16 elements; dst overlaps neither input.
KDRCORE_TARGET_AVX2 inline void multMatricesAvx2(float * dst, float const * a, float const * b) {
    if (anyNaN(a, b))
        return multMatricesPlain(dst, a, b);
    __m256d const a0 = loadWide4(a), a1 = loadWide4(a + 4), a2 = loadWide4(a + 8),
                  a3 = loadWide4(a + 12);
    for (int c = 0; c < 4; ++c) {
        __m256d const bc = loadWide4(b + 4 * c);
        __m256d s = mul(a0, lane<0>(bc));
        s = addProduct(s, a1, lane<1>(bc));
        s = addProduct(s, a2, lane<2>(bc));
        s = addProduct(s, a3, lane<3>(bc));
        _mm_storeu_ps(dst + 4 * c, _mm256_cvtpd_ps(s));
    }
}

/// (a0 b[0] + a1 b[1]) + a2 b[2] in lanes 0 to 2; lane 3 = 0 when a0 to a2 and b have 0 there.
KDRCORE_TARGET_AVX2 inline __m256d threeTerms(__m256d a0, __m256d a1, __m256d a2, __m256d b) {
    __m256d const s = addProduct(mul(a0, lane3<0>(b)), a1, lane3<1>(b));
    return addProduct(s, a2, lane3<2>(b));
}

/// The affine product: bottom rows of a and b not read, dst's written 0, 0, 0, 1.
KDRCORE_TARGET_AVX2 inline void multAffineMatricesAvx2(float * dst, float const * a,
                                                       float const * b) {
    __m128 const fa0 = load3(a), fa1 = load3(a + 4), fa2 = load3(a + 8), fa3 = load3(a + 12);
    __m128 const fb[4] = {load3(b), load3(b + 4), load3(b + 8), load3(b + 12)};
    if (anyNaN(fa0, fa1, fa2, fa3) || anyNaN(fb[0], fb[1], fb[2], fb[3]))
        return multAffineMatricesPlain(dst, a, b);
    __m256d const a0 = widen(fa0), a1 = widen(fa1), a2 = widen(fa2);
    // Lane 3 of every sum is 0 + 0: it stores the 0 of the bottom row.
    for (int c = 0; c < 3; ++c)
        _mm_storeu_ps(dst + 4 * c, _mm256_cvtpd_ps(threeTerms(a0, a1, a2, widen(fb[c]))));
    __m256d const s = add(threeTerms(a0, a1, a2, widen(fb[3])), widen(fa3));
    _mm_storeu_ps(dst + 12, _mm_blend_ps(_mm256_cvtpd_ps(s), _mm_set1_ps(1.0f), 0x8));
}

/// ((m0 x + m1 y) + m2 z) + m3 for rows 0 to 2, m_k being column k (lane 3 = 0 in each) and v
/// holding x, y, z, 0.
KDRCORE_TARGET_AVX2 inline __m256d affinePoint(__m256d m0, __m256d m1, __m256d m2, __m256d m3,
                                               __m256d v) {
    __m256d s = mul(m0, lane3<0>(v));
    s = addProduct(s, m1, lane3<1>(v));
    s = addProduct(s, m2, lane3<2>(v));
    return add(s, m3);
}

/// m v divided by the homogeneous coordinate; 0, 0, 0 when it is exactly 0. dst may be v.
KDRCORE_TARGET_AVX2 inline void multMatrixVec3fAvx2(float * dst, float const * m, float const * v) {
    // On the bits: when W is 0 the baseline widens nothing but v and the bottom row.
    __m128 const fv = load3(v);
    __m128i const vNaN =
        _mm_cmpgt_epi32(_mm_and_si128(_mm_castps_si128(fv), _mm_set1_epi32(0x7FFFFFFF)),
                        _mm_set1_epi32(0x7F800000));
    __m256i const mNaN = nanLanes(m);
    if (!_mm256_testz_si256(mNaN, mNaN) || !_mm_testz_si128(vNaN, vNaN))
        return multMatrixVec3fPlain(dst, m, v);
    // W first and alone, as the baseline: nothing else is computed when it is 0.
    double const x = wide(v[0]), y = wide(v[1]), z = wide(v[2]);
    double const w = wide(m[3]) * x + wide(m[7]) * y + wide(m[11]) * z + wide(m[15]);
    if (w == 0.0) {
        dst[0] = 0.0f;
        dst[1] = 0.0f;
        dst[2] = 0.0f;
        return;
    }
    double const k = 1.0 / w;
    // All of m is read now, as in the baseline. Lane 3 computes W again with the baseline's
    // operations and is cleared before the product with k, which the baseline does not form.
    __m256d const V = widen(fv);
    __m256d s = mul(loadWide4(m), lane<0>(V));
    s = addProduct(s, loadWide4(m + 4), lane<1>(V));
    s = addProduct(s, loadWide4(m + 8), lane<2>(V));
    s = _mm256_blend_pd(add(s, loadWide4(m + 12)), _mm256_setzero_pd(), 0x8);
    store3(dst, _mm256_cvtpd_ps(mul(s, _mm256_set1_pd(k))));
}

/// m v with the bottom row taken as 0, 0, 0, 1 and not read. dst may be v.
KDRCORE_TARGET_AVX2 inline void multAffineMatrixVec3fAvx2(float * dst, float const * m,
                                                          float const * v) {
    __m128 const m0 = load3(m), m1 = load3(m + 4), m2 = load3(m + 8), m3 = load3(m + 12);
    __m128 const fv = load3(v);
    if (anyNaN(m0, m1, m2, m3) || anyNaN(fv, fv, fv, fv))
        return multAffineMatrixVec3fPlain(dst, m, v);
    store3(dst,
           _mm256_cvtpd_ps(affinePoint(widen(m0), widen(m1), widen(m2), widen(m3), widen(fv))));
}

// ---- inverseMatrix: the baseline's elimination with a row of R and of I in one register each.
// The pivot searches give the baseline's quiet comparisons, the zero tests are its own.

/// greaterMagnitude on the bit patterns, which no compiler can turn into a signalling
/// comparison: |a| > |b| exactly when the magnitude bits of a exceed those of b and a is no NaN.
inline bool greaterMagnitudeBits(double a, double b) {
    std::uint64_t ua, ub;
    std::memcpy(&ua, &a, sizeof ua);
    std::memcpy(&ub, &b, sizeof ub);
    ua &= 0x7FFFFFFFFFFFFFFFu;
    ub &= 0x7FFFFFFFFFFFFFFFu;
    return ua > ub && ua <= 0x7FF0000000000000u;
}

template <int j> KDRCORE_TARGET_AVX2 inline double element(__m256d v) {
    return _mm256_cvtsd_f64(lane<j>(v));
}

struct VecRow {
    __m256d r, i;
};

KDRCORE_TARGET_AVX2 inline void swapVecRows(VecRow & p, VecRow & q) {
    VecRow const t = p;
    p = q;
    q = t;
}

/// Makes the row computed here, on every path, as the baseline's stored rows are: the flags of
/// an elimination step are raised even when a later zero pivot ends the inversion.
KDRCORE_TARGET_AVX2 inline void computedHere(VecRow & n) {
    __asm__ volatile("" : "+x"(n.r), "+x"(n.i));
}

/// Row n -= f * pivot row: in R only the lanes in `later` (the columns after the pivot's), in I
/// only where the pivot row's element is not 0 (a NaN is not 0); the other lanes subtract 0 * 0.
/// The masked factors pass through an empty statement, so that no optimiser turns the product
/// of two masked values into a masked product, computed in every lane.
KDRCORE_TARGET_AVX2 inline void eliminate(VecRow & n, __m256d f, VecRow const & pivot,
                                          __m256d later, __m256d nonZero) {
    __m256d fr = _mm256_and_pd(f, later), pr = _mm256_and_pd(pivot.r, later);
    __m256d fi = _mm256_and_pd(f, nonZero), pi = _mm256_and_pd(pivot.i, nonZero);
    __asm__("" : "+x"(fr), "+x"(pr), "+x"(fi), "+x"(pi));
    n.r = sub(n.r, mul(fr, pr));
    n.i = sub(n.i, mul(fi, pi));
    computedHere(n);
}

/// Element j of `row` times k, in every lane. The broadcast passes through an empty statement, so
/// that no optimiser multiplies the whole row first and broadcasts after.
template <int j> KDRCORE_TARGET_AVX2 inline __m256d factor(__m256d row, __m256d k) {
    __m256d e = lane<j>(row);
    __asm__("" : "+x"(e));
    return mul(e, k);
}

KDRCORE_TARGET_AVX2 inline __m256d nonZeroLanes(__m256d v) {
    return _mm256_cmp_pd(v, _mm256_setzero_pd(), _CMP_NEQ_UQ);
}

/// The general inverse; false, dst untouched, on an exactly zero pivot. dst may be src.
KDRCORE_TARGET_AVX2 inline bool inverseMatrixAvx2(float * dst, float const * src) {
    if (anyNaN(src, src))
        return inverseMatrixPlain(dst, src);
    __m256i const ones = _mm256_set1_epi64x(-1);
    VecRow r0{loadWide4(src), _mm256_setr_pd(1.0, 0.0, 0.0, 0.0)};
    VecRow r1{loadWide4(src + 4), _mm256_setr_pd(0.0, 1.0, 0.0, 0.0)};
    VecRow r2{loadWide4(src + 8), _mm256_setr_pd(0.0, 0.0, 1.0, 0.0)};
    VecRow r3{loadWide4(src + 12), _mm256_setr_pd(0.0, 0.0, 0.0, 1.0)};

    if (greaterMagnitudeBits(element<0>(r3.r), element<0>(r2.r)))
        swapVecRows(r3, r2);
    if (greaterMagnitudeBits(element<0>(r2.r), element<0>(r1.r)))
        swapVecRows(r2, r1);
    if (greaterMagnitudeBits(element<0>(r1.r), element<0>(r0.r)))
        swapVecRows(r1, r0);
    if (element<0>(r0.r) == 0.0)
        return false;
    __m256d const k0 = _mm256_set1_pd(1.0 / element<0>(r0.r));
    {
        __m256d const later = _mm256_castsi256_pd(_mm256_setr_epi64x(0, -1, -1, -1));
        __m256d const nz = nonZeroLanes(r0.i);
        eliminate(r1, factor<0>(r1.r, k0), r0, later, nz);
        eliminate(r2, factor<0>(r2.r, k0), r0, later, nz);
        eliminate(r3, factor<0>(r3.r, k0), r0, later, nz);
    }

    if (greaterMagnitudeBits(element<1>(r3.r), element<1>(r2.r)))
        swapVecRows(r3, r2);
    if (greaterMagnitudeBits(element<1>(r2.r), element<1>(r1.r)))
        swapVecRows(r2, r1);
    if (element<1>(r1.r) == 0.0)
        return false;
    __m256d const k1 = _mm256_set1_pd(1.0 / element<1>(r1.r));
    {
        __m256d const later = _mm256_castsi256_pd(_mm256_setr_epi64x(0, 0, -1, -1));
        __m256d const nz = nonZeroLanes(r1.i);
        eliminate(r2, factor<1>(r2.r, k1), r1, later, nz);
        eliminate(r3, factor<1>(r3.r, k1), r1, later, nz);
    }

    if (greaterMagnitudeBits(element<2>(r3.r), element<2>(r2.r)))
        swapVecRows(r3, r2);
    if (element<2>(r2.r) == 0.0)
        return false;
    {
        // A true division, as in the baseline; all of I, and of R only the last column.
        __m256d const f3 = _mm256_set1_pd(element<2>(r3.r) / element<2>(r2.r));
        __m256d const last = _mm256_castsi256_pd(_mm256_setr_epi64x(0, 0, 0, -1));
        eliminate(r3, f3, r2, last, _mm256_castsi256_pd(ones));
    }
    if (element<3>(r3.r) == 0.0)
        return false;

    // Back substitution, the four columns of I at once.
    __m256d const k3 = _mm256_set1_pd(1.0 / element<3>(r3.r));
    __m256d const k2 = _mm256_set1_pd(1.0 / element<2>(r2.r));
    __m256d const x3 = mul(r3.i, k3);
    __m256d const x2 = mul(k2, sub(r2.i, mul(x3, lane<3>(r2.r))));
    __m256d const y1 = sub(r1.i, mul(x3, lane<3>(r1.r)));
    __m256d y0 = sub(r0.i, mul(x3, lane<3>(r0.r)));
    __m256d const x1 = mul(k1, sub(y1, mul(x2, lane<2>(r1.r))));
    y0 = sub(y0, mul(x2, lane<2>(r0.r)));
    __m256d const x0 = mul(k0, sub(y0, mul(x1, lane<1>(r0.r))));

    _mm_storeu_ps(dst, _mm256_cvtpd_ps(x0));
    _mm_storeu_ps(dst + 4, _mm256_cvtpd_ps(x1));
    _mm_storeu_ps(dst + 8, _mm256_cvtpd_ps(x2));
    _mm_storeu_ps(dst + 12, _mm256_cvtpd_ps(x3));
    return true;
}

#endif // KDRCORE_SIMD_X86

} // namespace kdrkernel

#endif // KDRCORE_KERNEL_MATRIXKERNELS_H
