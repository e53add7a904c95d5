// src/kernel/SimdKernelsAvx512.cpp - the AVX-512 versions of the kernel's hot operations
//
// Compiled for AVX-512 (with AVX2 and FMA), and called only on processors that have it. As in
// SimdKernelsAvx2.cpp, everything here is file-local but the versions SimdKernels.h declares, and
// the bits and flags are the baseline's for the same reasons (that file says how): inputs that
// hold a NaN go to the baseline version, a fused product of two widened floats rounds and raises
// as the separate product and sum do, every sum keeps the baseline's grouping, one lane per
// element, and what the baseline never reads (the bottom rows of the affine product) is never
// loaded: masked loads leave 0 in those lanes.
//
// Only the two 4x4 products and quaternionToMatrix have a version here: holding two columns of the
// result per register halves their instructions, and they were measured faster than their AVX2
// versions on the AMD EPYC the benchmarks run on. The other operations run their AVX2 versions
// at this level.

#include "kernel/SimdKernels.h"

#if KDRCORE_SIMD_X86

#include <immintrin.h>

namespace kdrcore::detail {

// GCC 12's AVX-512 headers start some results from an undefined register, which
// -Wuninitialized and -Wmaybe-uninitialized report wherever they are inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace {

/// Whether one of the 16 floats of m or of n is a NaN (quiet comparisons).
inline bool anyNaN(float const * m, float const * n) {
    __mmask8 const mm =
        _mm256_cmp_ps_mask(_mm256_loadu_ps(m), _mm256_loadu_ps(m + 8), _CMP_UNORD_Q);
    __mmask8 const nn =
        _mm256_cmp_ps_mask(_mm256_loadu_ps(n), _mm256_loadu_ps(n + 8), _CMP_UNORD_Q);
    return !_kortestz_mask8_u8(mm, nn);
}

inline __m512d loadWide8(float const * p) {
    return _mm512_cvtps_pd(_mm256_loadu_ps(p));
}

/// Column k of the 4x4 matrix whose first eight elements (as doubles) are lo and last eight hi,
/// in both halves.
template <int k> inline __m512d column(__m512d lo, __m512d hi) {
    return _mm512_shuffle_f64x2(k < 2 ? lo : hi, k < 2 ? lo : hi, k % 2 ? 0xEE : 0x44);
}

/// Lane k of each half of v, in all four lanes of that half.
template <int k> inline __m512d lane(__m512d v) {
    return _mm512_permutex_pd(v, k * 0x55);
}

/// Lane k of each half of v in lanes 0 to 2 of that half, lane 3 of the half in lane 3.
template <int k> inline __m512d lane3(__m512d v) {
    return _mm512_permutex_pd(v, k * 0x15 + 0xC0);
}

/// Two columns of a b: a0 to a3 the columns of a (in both halves), bc two columns of b.
inline __m256 twoColumns(__m512d a0, __m512d a1, __m512d a2, __m512d a3, __m512d bc) {
    __m512d s = _mm512_mul_pd(a0, lane<0>(bc));
    s = _mm512_fmadd_pd(a1, lane<1>(bc), s);
    s = _mm512_fmadd_pd(a2, lane<2>(bc), s);
    s = _mm512_fmadd_pd(a3, lane<3>(bc), s);
    return _mm512_cvtpd_ps(s);
}

} // namespace

/// dst = a b, 16 elements; dst overlaps neither input. Two columns of the result per register.
void multMatricesAvx512(float * dst, float const * a, float const * b) {
    if (anyNaN(a, b))
        return multMatricesPlain(dst, a, b);
    __m512d const alo = loadWide8(a), ahi = loadWide8(a + 8);
    __m512d const a0 = column<0>(alo, ahi), a1 = column<1>(alo, ahi), a2 = column<2>(alo, ahi),
                  a3 = column<3>(alo, ahi);
    __m512d const blo = loadWide8(b), bhi = loadWide8(b + 8);
    _mm256_storeu_ps(dst, twoColumns(a0, a1, a2, a3, blo));
    _mm256_storeu_ps(dst + 8, twoColumns(a0, a1, a2, a3, bhi));
}

/// The affine product: bottom rows of a and b not read, dst's written 0, 0, 0, 1.
void multAffineMatricesAvx512(float * dst, float const * a, float const * b) {
    // Masked loads: the bottom rows are not read, and their lanes hold 0.
    __mmask8 const top = 0x77;
    __m256 const fa0 = _mm256_maskz_loadu_ps(top, a), fa1 = _mm256_maskz_loadu_ps(top, a + 8);
    __m256 const fb0 = _mm256_maskz_loadu_ps(top, b), fb1 = _mm256_maskz_loadu_ps(top, b + 8);
    if (!_kortestz_mask8_u8(_mm256_cmp_ps_mask(fa0, fa1, _CMP_UNORD_Q),
                            _mm256_cmp_ps_mask(fb0, fb1, _CMP_UNORD_Q)))
        return multAffineMatricesPlain(dst, a, b);
    __m512d const alo = _mm512_cvtps_pd(fa0), ahi = _mm512_cvtps_pd(fa1);
    __m512d const a0 = column<0>(alo, ahi), a1 = column<1>(alo, ahi), a2 = column<2>(alo, ahi);
    __m512d const blo = _mm512_cvtps_pd(fb0), bhi = _mm512_cvtps_pd(fb1);
    // (a0 b[0] + a1 b[1]) + a2 b[2] in lanes 0 to 2 of each half; lane 3 is 0 times 0 plus 0
    // times 0, the 0 of the bottom row.
    __m512d s01 = _mm512_mul_pd(a0, lane3<0>(blo));
    s01 = _mm512_fmadd_pd(a1, lane3<1>(blo), s01);
    s01 = _mm512_fmadd_pd(a2, lane3<2>(blo), s01);
    __m512d s23 = _mm512_mul_pd(a0, lane3<0>(bhi));
    s23 = _mm512_fmadd_pd(a1, lane3<1>(bhi), s23);
    s23 = _mm512_fmadd_pd(a2, lane3<2>(bhi), s23);
    // Column 3 adds a's translation; column 2 adds -0, which changes no value, no sign of a zero
    // and raises nothing.
    s23 = _mm512_add_pd(s23, _mm512_mask_blend_pd(0xF0, _mm512_set1_pd(-0.0), ahi));
    _mm256_storeu_ps(dst, _mm512_cvtpd_ps(s01));
    _mm256_storeu_ps(dst + 8, _mm256_blend_ps(_mm512_cvtpd_ps(s23), _mm256_set1_ps(1.0f), 0x80));
}

namespace {

/// The lanes of q named by the eight indices (0 to 3 for w, x, y, z).
inline __m512d pick(__m512d q, __m512i indices) {
    return _mm512_permutexvar_pd(indices, q);
}

/// Lanes k of 2 (p1 p2 + q1 q2) - diagonal, the lanes not in k taken from `rest`. A difference
/// comes as a negated factor in q1. The lanes not in k compute 4 w w from w in all four factors,
/// which is exact and cannot overflow in double: they raise nothing, and are dropped.
inline __m256 rotationColumns(__m512d p1, __m512d p2, __m512d q1, __m512d q2, __m512d diagonal,
                              __mmask8 k, __m512d rest) {
    __m512d const s = _mm512_fmadd_pd(p1, p2, _mm512_mul_pd(q1, q2));
    return _mm512_cvtpd_ps(_mm512_mask_sub_pd(rest, k, _mm512_add_pd(s, s), diagonal));
}

} // namespace

/// Columns 0 and 1 in one register, column 2 and the constant column 3 in the other; lane for
/// lane the operations of the AVX2 version.
void quaternionToMatrixAvx512(float * dst, float const * q) {
    __m128 const fq = _mm_loadu_ps(q);
    if (_mm_movemask_ps(_mm_cmpunord_ps(fq, fq)) != 0)
        return quaternionToMatrixPlain(dst, q);
    __m512d const Q = _mm512_castpd256_pd512(_mm256_cvtps_pd(fq)); // w, x, y, z
    // Columns 0 and 1: ww + xx, xy + wz, xz - wy; xy - wz, ww + yy, yz + wx.
    __m512d const n01 = _mm512_setr_pd(0.0, 0.0, -0.0, 0.0, -0.0, 0.0, 0.0, 0.0);
    _mm256_storeu_ps(
        dst, rotationColumns(pick(Q, _mm512_setr_epi64(0, 1, 1, 0, 1, 0, 2, 0)),
                             pick(Q, _mm512_setr_epi64(0, 2, 3, 0, 2, 0, 3, 0)),
                             _mm512_xor_pd(pick(Q, _mm512_setr_epi64(1, 0, 0, 0, 0, 2, 0, 0)), n01),
                             pick(Q, _mm512_setr_epi64(1, 3, 2, 0, 3, 2, 1, 0)),
                             _mm512_setr_pd(1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0), 0x77,
                             _mm512_setzero_pd()));
    // Column 2: xz + wy, yz - wx, ww + zz; column 3: 0, 0, 0, 1.
    __m512d const n2 = _mm512_setr_pd(0.0, -0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
    _mm256_storeu_ps(
        dst + 8,
        rotationColumns(pick(Q, _mm512_setr_epi64(1, 2, 0, 0, 0, 0, 0, 0)),
                        pick(Q, _mm512_setr_epi64(3, 3, 0, 0, 0, 0, 0, 0)),
                        _mm512_xor_pd(pick(Q, _mm512_setr_epi64(0, 0, 3, 0, 0, 0, 0, 0)), n2),
                        pick(Q, _mm512_setr_epi64(2, 1, 3, 0, 0, 0, 0, 0)),
                        _mm512_setr_pd(0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 0.0), 0x07,
                        _mm512_setr_pd(0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1.0)));
}

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

} // namespace kdrcore::detail

#endif // KDRCORE_SIMD_X86
