// MatrixKernels.h - the hot 4x4 operations of the kernel, in a baseline and an AVX2 version
// (private)
//
// EnhancedMathFunctions' members multMatrices, multAffineMatrices, multMatrixVec3f,
// multAffineMatrixVec3f and inverseMatrix only choose between the two versions here, by the
// level the CPU offers (SimdLevel.h). The baseline versions are the reference: every element at
// double width, rounded to float once, where it is stored. The AVX2 versions give the same bits:
// - a float times a float is exact in double (at most 48 significant bits, and no overflow or
//   underflow is possible), so fma(a, b, s) on widened floats rounds once, as s + a * b does;
// - sums of such products keep their grouping, ((p0 + p1) + p2) + p3, one lane per element;
// - products of two doubles are not exact: they stay separate multiplies and subtractions;
// - each element is rounded to float once, where it is stored.
// A lane whose value the baseline never computes (the bottom row of an affine product, a column
// that elimination has finished with) may hold anything: it is replaced or never stored.
//
// On the processors measured, AVX-512 gave these small kernels nothing over AVX2 (its 512-bit
// operations run as two halves there), so the AVX-512 level uses the AVX2 versions.
//
// The baseline versions are out of line, so that the dispatch in front of them saves no
// registers. The header is also compiled into the test that checks every version against plain
// reference code on every instruction set the machine offers.
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

// ---- AVX2 and FMA

#if KDRCORE_SIMD_X86

KDRCORE_TARGET_AVX2 inline __m256d loadWide4(float const * p) {
    return _mm256_cvtps_pd(_mm_loadu_ps(p));
}

/// Lane `j` of `v` in all four lanes.
template <int j> KDRCORE_TARGET_AVX2 inline __m256d lane(__m256d v) {
    return _mm256_permute4x64_pd(v, j * 0x55);
}

/// Stores lanes 0 to 2 of `v`; dst[3] is not touched.
KDRCORE_TARGET_AVX2 inline void store3(float * dst, __m128 v) {
    _mm_storel_pi(reinterpret_cast<__m64 *>(dst), v);
    _mm_store_ss(dst + 2, _mm_movehl_ps(v, v));
}

/// ((a0 b[0] + a1 b[1]) + a2 b[2]) with b[k] spread over the lanes, b widened.
KDRCORE_TARGET_AVX2 inline __m256d threeTerms(__m256d a0, __m256d a1, __m256d a2, __m256d b) {
    __m256d const s = _mm256_mul_pd(a0, lane<0>(b));
    return _mm256_fmadd_pd(a2, lane<2>(b), _mm256_fmadd_pd(a1, lane<1>(b), s));
}

/// dst = a b, 16 elements; dst overlaps neither input.
KDRCORE_TARGET_AVX2 inline void multMatricesAvx2(float * dst, float const * a, float const * b) {
    __m256d const a0 = loadWide4(a), a1 = loadWide4(a + 4), a2 = loadWide4(a + 8),
                  a3 = loadWide4(a + 12);
    for (int c = 0; c < 4; ++c) {
        __m256d const bc = loadWide4(b + 4 * c);
        __m256d const s = _mm256_fmadd_pd(a3, lane<3>(bc), threeTerms(a0, a1, a2, bc));
        _mm_storeu_ps(dst + 4 * c, _mm256_cvtpd_ps(s));
    }
}

/// The affine product: bottom rows of a and b not used, dst's written 0, 0, 0, 1.
KDRCORE_TARGET_AVX2 inline void multAffineMatricesAvx2(float * dst, float const * a,
                                                       float const * b) {
    __m256d const a0 = loadWide4(a), a1 = loadWide4(a + 4), a2 = loadWide4(a + 8);
    __m128 const zero = _mm_setzero_ps();
    for (int c = 0; c < 3; ++c) {
        __m256d const s = threeTerms(a0, a1, a2, loadWide4(b + 4 * c));
        _mm_storeu_ps(dst + 4 * c, _mm_blend_ps(_mm256_cvtpd_ps(s), zero, 0x8));
    }
    __m256d const s = _mm256_add_pd(threeTerms(a0, a1, a2, loadWide4(b + 12)), loadWide4(a + 12));
    _mm_storeu_ps(dst + 12, _mm_blend_ps(_mm256_cvtpd_ps(s), _mm_set1_ps(1.0f), 0x8));
}

KDRCORE_TARGET_AVX2 inline __m256d splat(float v) {
    return _mm256_set1_pd(static_cast<double>(v));
}

/// ((m0 x + m1 y) + m2 z) + m3 for the four rows, m_k being column k. Reads v[0..2] only.
KDRCORE_TARGET_AVX2 inline __m256d affinePoint(float const * m, float const * v) {
    __m256d s = _mm256_mul_pd(loadWide4(m), splat(v[0]));
    s = _mm256_fmadd_pd(loadWide4(m + 4), splat(v[1]), s);
    s = _mm256_fmadd_pd(loadWide4(m + 8), splat(v[2]), s);
    return _mm256_add_pd(s, loadWide4(m + 12));
}

/// m v divided by the homogeneous coordinate; 0, 0, 0 when it is exactly 0. dst may be v.
KDRCORE_TARGET_AVX2 inline void multMatrixVec3fAvx2(float * dst, float const * m, float const * v) {
    __m256d const s = affinePoint(m, v);
    __m128d const zw = _mm256_extractf128_pd(s, 1);
    double const w = _mm_cvtsd_f64(_mm_unpackhi_pd(zw, zw));
    if (w == 0.0) {
        dst[0] = 0.0f;
        dst[1] = 0.0f;
        dst[2] = 0.0f;
        return;
    }
    store3(dst, _mm256_cvtpd_ps(_mm256_mul_pd(s, _mm256_set1_pd(1.0 / w))));
}

/// m v with the bottom row taken as 0, 0, 0, 1. dst may be v.
KDRCORE_TARGET_AVX2 inline void multAffineMatrixVec3fAvx2(float * dst, float const * m,
                                                          float const * v) {
    store3(dst, _mm256_cvtpd_ps(affinePoint(m, v)));
}

// ---- inverseMatrix: Gauss-Jordan on four rows [R | I] of four doubles each.
//
// The pivot searches compare magnitudes on the bit patterns: for IEEE numbers |a| > |b| exactly
// when (bits(a) & ~sign) > (bits(b) & ~sign) as unsigned integers and a is no NaN, which is the
// strict, NaN-false comparison of the baseline. The searches are decided in integer registers
// and the rows fetched in their new order, which moves no vector data through the compares.

inline bool greaterMagnitude(std::uint32_t ua, std::uint32_t ub) {
    return (ua > ub) & (ua <= 0x7F800000u);
}
inline bool greaterMagnitude(std::uint64_t ua, std::uint64_t ub) {
    return (ua > ub) & (ua <= 0x7FF0000000000000u);
}

inline std::uint32_t magnitudeBits(float const * p) {
    std::uint32_t b;
    std::memcpy(&b, p, sizeof b);
    return b & 0x7FFFFFFFu;
}
inline std::uint64_t magnitudeBits(double const * p) {
    std::uint64_t b;
    std::memcpy(&b, p, sizeof b);
    return b & 0x7FFFFFFFFFFFFFFFu;
}

/// The three exchanges of the pivot search over rows 0 to 3 (or 1 to 3 with `first` 1), from the
/// bottom up, on the magnitudes x: `order[n]` receives the row that ends at position n.
template <class U> inline void pivotOrder(U const * x, int first, int * order) {
    int r1 = first, r2 = first + 1, r3 = first + 2;
    if (greaterMagnitude(x[r3], x[r2])) {
        int const t = r3;
        r3 = r2;
        r2 = t;
    }
    if (greaterMagnitude(x[r2], x[r1])) {
        int const t = r2;
        r2 = r1;
        r1 = t;
    }
    order[first + 1] = r2;
    order[first + 2] = r3;
    order[first] = r1;
}

/// Row n -= f * pivot row; in I only where the pivot row's element is not 0 (a NaN is not 0).
KDRCORE_TARGET_AVX2 inline void eliminate(__m256d f, __m256d rk, __m256d ik, __m256d nonZero,
                                          __m256d & rn, __m256d & in) {
    rn = _mm256_sub_pd(rn, _mm256_mul_pd(f, rk));
    in = _mm256_blendv_pd(in, _mm256_sub_pd(in, _mm256_mul_pd(f, ik)), nonZero);
}

/// The general inverse; false, dst untouched, on an exactly zero pivot. dst may be src.
KDRCORE_TARGET_AVX2 inline bool inverseMatrixAvx2(float * dst, float const * src) {
    alignas(32) static constexpr double identity[16] = {1, 0, 0, 0, 0, 1, 0, 0,
                                                        0, 0, 1, 0, 0, 0, 0, 1};
    __m256d const one = _mm256_set1_pd(1.0), zero = _mm256_setzero_pd();

    // Column 0, decided on the floats of src (widening keeps every comparison).
    int o[4];
    {
        std::uint32_t x[4];
        for (int n = 0; n < 4; ++n)
            x[n] = magnitudeBits(src + 4 * n);
        int below[4];
        pivotOrder(x, 1, below); // rows 1 to 3 first: the bubble from the bottom
        o[2] = below[2];
        o[3] = below[3];
        // The last exchange, between row 0 and the winner of rows 1 to 3.
        bool const up = greaterMagnitude(x[below[1]], x[0]);
        o[0] = up ? below[1] : 0;
        o[1] = up ? 0 : below[1];
    }
    if (src[4 * o[0]] == 0.0f)
        return false;
    __m256d const r0 = loadWide4(src + 4 * o[0]), i0 = _mm256_load_pd(identity + 4 * o[0]);
    __m256d const k0 = _mm256_div_pd(one, lane<0>(r0));

    // Rows 1 to 3 after column 0, kept in memory so that the next search can fetch them.
    alignas(32) double rows1[3][2][4];
    {
        __m256d const nz = _mm256_cmp_pd(i0, zero, _CMP_NEQ_UQ);
        for (int n = 1; n < 4; ++n) {
            __m256d r = loadWide4(src + 4 * o[n]), i = _mm256_load_pd(identity + 4 * o[n]);
            eliminate(_mm256_mul_pd(lane<0>(r), k0), r0, i0, nz, r, i);
            _mm256_store_pd(rows1[n - 1][0], r);
            _mm256_store_pd(rows1[n - 1][1], i);
        }
    }

    // Column 1, among rows 1 to 3.
    int p[4];
    {
        std::uint64_t x[4];
        for (int n = 1; n < 4; ++n)
            x[n] = magnitudeBits(&rows1[n - 1][0][1]);
        pivotOrder(x, 1, p);
    }
    double const * const row1 = rows1[p[1] - 1][0];
    if (row1[1] == 0.0)
        return false;
    __m256d const r1 = _mm256_load_pd(row1), i1 = _mm256_load_pd(rows1[p[1] - 1][1]);
    __m256d const k1 = _mm256_div_pd(one, _mm256_broadcast_sd(row1 + 1));
    alignas(32) double rows2[2][2][4];
    {
        __m256d const nz = _mm256_cmp_pd(i1, zero, _CMP_NEQ_UQ);
        for (int n = 2; n < 4; ++n) {
            double const * const rn = rows1[p[n] - 1][0];
            __m256d r = _mm256_load_pd(rn), i = _mm256_load_pd(rows1[p[n] - 1][1]);
            eliminate(_mm256_mul_pd(_mm256_broadcast_sd(rn + 1), k1), r1, i1, nz, r, i);
            _mm256_store_pd(rows2[n - 2][0], r);
            _mm256_store_pd(rows2[n - 2][1], i);
        }
    }

    // Column 2, between rows 2 and 3.
    bool const exchange =
        greaterMagnitude(magnitudeBits(&rows2[1][0][2]), magnitudeBits(&rows2[0][0][2]));
    double const * const row2 = rows2[exchange ? 1 : 0][0];
    double const * const row3 = rows2[exchange ? 0 : 1][0];
    if (row2[2] == 0.0)
        return false;
    // f3 = R3[2] / R2[2], a true division, and k2 = 1 / R2[2], in one instruction.
    __m128d const q = _mm_div_pd(_mm_setr_pd(row3[2], 1.0), _mm_set1_pd(row2[2]));
    __m256d const f3 = _mm256_broadcastsd_pd(q);
    __m256d const k2 = _mm256_broadcastsd_pd(_mm_unpackhi_pd(q, q));
    __m256d const r3 = _mm256_sub_pd(_mm256_load_pd(row3), _mm256_mul_pd(f3, _mm256_load_pd(row2)));
    __m256d const i2 = _mm256_load_pd(rows2[exchange ? 1 : 0][1]);
    __m256d const i3 =
        _mm256_sub_pd(_mm256_load_pd(rows2[exchange ? 0 : 1][1]), _mm256_mul_pd(f3, i2));
    __m256d const p3 = lane<3>(r3);
    if (_mm256_cvtsd_f64(p3) == 0.0)
        return false;

    // Back substitution, the four columns of I at once.
    __m256d const x3 = _mm256_mul_pd(i3, _mm256_div_pd(one, p3));
    __m256d const x2 =
        _mm256_mul_pd(k2, _mm256_sub_pd(i2, _mm256_mul_pd(x3, _mm256_broadcast_sd(row2 + 3))));
    __m256d const y1 = _mm256_sub_pd(i1, _mm256_mul_pd(x3, lane<3>(r1)));
    __m256d y0 = _mm256_sub_pd(i0, _mm256_mul_pd(x3, lane<3>(r0)));
    __m256d const x1 = _mm256_mul_pd(k1, _mm256_sub_pd(y1, _mm256_mul_pd(x2, lane<2>(r1))));
    y0 = _mm256_sub_pd(y0, _mm256_mul_pd(x2, lane<2>(r0)));
    __m256d const x0 = _mm256_mul_pd(k0, _mm256_sub_pd(y0, _mm256_mul_pd(x1, lane<1>(r0))));

    _mm_storeu_ps(dst, _mm256_cvtpd_ps(x0));
    _mm_storeu_ps(dst + 4, _mm256_cvtpd_ps(x1));
    _mm_storeu_ps(dst + 8, _mm256_cvtpd_ps(x2));
    _mm_storeu_ps(dst + 12, _mm256_cvtpd_ps(x3));
    return true;
}

#endif // KDRCORE_SIMD_X86

} // namespace kdrkernel

#endif // KDRCORE_KERNEL_MATRIXKERNELS_H
