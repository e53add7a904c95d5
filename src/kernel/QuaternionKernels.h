// QuaternionKernels.h - the Hamilton product and the rotation matrix of a quaternion, in a
// baseline and an AVX2 version (private)
//
// The members multQuaternions, divQuaternionsU and quaternionToMatrix only choose between the
// versions here, as MatrixKernels.h describes; the AVX2 versions keep the baseline's bits and
// exception flags as the AVX2 section there explains.
#ifndef KDRCORE_KERNEL_QUATERNIONKERNELS_H
#define KDRCORE_KERNEL_QUATERNIONKERNELS_H

#include "MatrixKernels.h" // same folder: the header is also compiled into the tests

#if KDRCORE_SIMD_X86
#include <immintrin.h>
#endif

namespace kdrkernel {

// ---- Baseline

/// dst = a b (Hamilton product), or a times the conjugate of b; all inputs read before the first
/// store, so dst may be a or b.
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
[[gnu::noinline]] inline void multQuaternionsPlain(float * const dst, float const * const a,
                                                   float const * const b) {
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

/// The rotation matrix of q, with the diagonal in the w*w form (equal to 1 - 2(y*y + z*z) for
/// unit quaternions only); no translation, bottom row 0, 0, 0, 1.
[[gnu::noinline]] inline void quaternionToMatrixPlain(float * const dst, float const * const q) {
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

// ---- AVX2

#if KDRCORE_SIMD_X86

/// Lanes a, b, c, d of v (indices 0 to 3).
template <int a, int b, int c, int d> KDRCORE_TARGET_AVX2 inline __m256d pick(__m256d v) {
    return _mm256_permute4x64_pd(v, a | (b << 2) | (c << 4) | (d << 6));
}

template <bool conjugateB>
KDRCORE_TARGET_AVX2 inline void multQuaternionsAvx2(float * const dst, float const * const a,
                                                    float const * const b) {
    __m128 const fa = _mm_loadu_ps(a), fb = _mm_loadu_ps(b);
    if (_mm_movemask_ps(_mm_cmpunord_ps(fa, fb)) != 0)
        return multQuaternionsPlain<conjugateB>(dst, a, b);
    __m256d const A = widen(fa);
    __m256d B = widen(fb);
    if (conjugateB)
        B = _mm256_xor_pd(B, _mm256_setr_pd(0.0, -0.0, -0.0, -0.0));
    // Lane 0 subtracts where the others add: it adds the product of the negated factor, which
    // rounds and raises as the subtraction does (no input is a NaN here).
    __m256d const negFirst = _mm256_setr_pd(-0.0, 0.0, 0.0, 0.0);
    // Lane r is dst[r]: a0 b, then the three further terms of each line in their order.
    __m256d s = mul(pick<0, 0, 0, 0>(A), B);
    s = addProduct(s, _mm256_xor_pd(pick<1, 1, 2, 3>(A), negFirst), pick<1, 0, 0, 0>(B));
    s = addProduct(s, _mm256_xor_pd(pick<2, 2, 3, 1>(A), negFirst), pick<2, 3, 1, 2>(B));
    s = subProduct(s, pick<3, 3, 1, 2>(A), pick<3, 2, 3, 1>(B));
    _mm_storeu_ps(dst, _mm256_cvtpd_ps(s));
}

/// One column of the rotation: 2 (p1 p2 + q1 q2) - diagonal in lanes 0 to 2 (a difference comes
/// as a negated factor in q1), 0 in lane 3. Lane 3 computes 4 w w - 0 from w in all four
/// factors, which is exact and cannot overflow in double: it raises nothing, and is cleared.
KDRCORE_TARGET_AVX2 inline __m128 rotationColumn(__m256d p1, __m256d p2, __m256d q1, __m256d q2,
                                                 __m256d diagonal) {
    __m256d const s = addProduct(mul(q1, q2), p1, p2);
    __m256d const c = sub(add(s, s), diagonal);
    return _mm256_cvtpd_ps(_mm256_blend_pd(c, _mm256_setzero_pd(), 0x8));
}

KDRCORE_TARGET_AVX2 inline void quaternionToMatrixAvx2(float * const dst, float const * const q) {
    __m128 const fq = _mm_loadu_ps(q);
    if (_mm_movemask_ps(_mm_cmpunord_ps(fq, fq)) != 0)
        return quaternionToMatrixPlain(dst, q);
    __m256d const Q = widen(fq); // w, x, y, z
    __m256d const neg0 = _mm256_setr_pd(-0.0, 0.0, 0.0, 0.0);
    __m256d const neg1 = _mm256_setr_pd(0.0, -0.0, 0.0, 0.0);
    __m256d const neg2 = _mm256_setr_pd(0.0, 0.0, -0.0, 0.0);
    // Column 0: ww + xx, xy + wz, xz - wy.
    _mm_storeu_ps(dst, rotationColumn(pick<0, 1, 1, 0>(Q), pick<0, 2, 3, 0>(Q),
                                      _mm256_xor_pd(pick<1, 0, 0, 0>(Q), neg2), pick<1, 3, 2, 0>(Q),
                                      _mm256_setr_pd(1.0, 0.0, 0.0, 0.0)));
    // Column 1: xy - wz, ww + yy, yz + wx.
    _mm_storeu_ps(dst + 4, rotationColumn(pick<1, 0, 2, 0>(Q), pick<2, 0, 3, 0>(Q),
                                          _mm256_xor_pd(pick<0, 2, 0, 0>(Q), neg0),
                                          pick<3, 2, 1, 0>(Q), _mm256_setr_pd(0.0, 1.0, 0.0, 0.0)));
    // Column 2: xz + wy, yz - wx, ww + zz.
    _mm_storeu_ps(dst + 8, rotationColumn(pick<1, 2, 0, 0>(Q), pick<3, 3, 0, 0>(Q),
                                          _mm256_xor_pd(pick<0, 0, 3, 0>(Q), neg1),
                                          pick<2, 1, 3, 0>(Q), _mm256_setr_pd(0.0, 0.0, 1.0, 0.0)));
    _mm_storeu_ps(dst + 12, _mm_setr_ps(0.0f, 0.0f, 0.0f, 1.0f));
}

#endif // KDRCORE_SIMD_X86

} // namespace kdrkernel

#endif // KDRCORE_KERNEL_QUATERNIONKERNELS_H
