// src/kernel/SimdKernelsAvx2.cpp - the AVX2 and FMA versions of the kernel's hot operations
//
// Compiled for AVX2 and FMA, and called only on processors that have them. Everything here is
// file-local but the versions SimdKernels.h declares: an inline function shared with other
// sources and compiled here could be the copy the linker keeps for all of them. For the same
// reason the few scalar widenings are written out here rather than taken from a shared header.
//
// How these versions keep the baseline's bits and its floating-point exception flags:
// - Which NaN an operation on two NaNs returns depends on the order of its operands, which the
//   compiler chooses for the baseline code, differently at each optimisation level. Inputs that
//   hold a NaN therefore go to the baseline version. The test is a quiet comparison, which
//   raises FE_INVALID for a signalling NaN only, as the baseline's widening of that element
//   does. The matrix-vector products test their result instead, before storing it: a NaN in v
//   or in the bottom row reaches every row of it, a NaN elsewhere in m its own row. They widen
//   no element the baseline would not, and their arithmetic raises no flag the baseline's does
//   not, so the baseline's call after it gives the baseline's bits and flags. Without NaN inputs
//   every NaN is the processor's default NaN, made by an invalid operation, whichever operand it
//   comes from and whatever the signs of the factors that made it. A subtraction may add the
//   product of a negated factor, never a negated NaN.
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

#include "kernel/SimdKernels.h"

#if KDRCORE_SIMD_X86

#include <cstdint>
#include <cstring>
#include <immintrin.h>

namespace kdrcore::detail {
namespace {

inline double wide(float v) {
    return static_cast<double>(v);
}

/// Whether one of the floats of x, y, z, w is a NaN.
inline bool anyNaN(__m128 x, __m128 y, __m128 z, __m128 w) {
    return _mm_movemask_ps(_mm_or_ps(_mm_cmpunord_ps(x, y), _mm_cmpunord_ps(z, w))) != 0;
}

inline __m256d widen(__m128 v) {
    return _mm256_cvtps_pd(v);
}

inline __m256d loadWide4(float const * p) {
    return widen(_mm_loadu_ps(p));
}

/// p[0..2], lane 3 = 0; p[3] is not read.
inline __m128 load3(float const * p) {
    __m128 const xy = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<__m64 const *>(p));
    return _mm_insert_ps(xy, _mm_load_ss(p + 2), 0x20);
}

/// Lane `j` of `v` in all four lanes.
template <int j> inline __m256d lane(__m256d v) {
    return _mm256_permute4x64_pd(v, j * 0x55);
}

/// Lane `j` of `v` in lanes 0 to 2, lane 3 of `v` (0 from load3) in lane 3.
template <int j> inline __m256d lane3(__m256d v) {
    return _mm256_permute4x64_pd(v, j * 0x15 + 0xC0);
}

/// Stores lanes 0 to 2 of `v`; dst[3] is not touched.
inline void store3(float * dst, __m128 v) {
    _mm_storel_pi(reinterpret_cast<__m64 *>(dst), v);
    _mm_store_ss(dst + 2, _mm_movehl_ps(v, v));
}

inline __m256d add(__m256d a, __m256d b) {
    return _mm256_add_pd(a, b);
}
inline __m256d sub(__m256d a, __m256d b) {
    return _mm256_sub_pd(a, b);
}
inline __m256d mul(__m256d a, __m256d b) {
    return _mm256_mul_pd(a, b);
}
/// s + a b, for a and b widened floats (see above).
inline __m256d addProduct(__m256d s, __m256d a, __m256d b) {
    return _mm256_fmadd_pd(a, b, s);
}
/// s - a b, for a and b widened floats.
inline __m256d subProduct(__m256d s, __m256d a, __m256d b) {
    return _mm256_fnmadd_pd(a, b, s);
}

/// Whether one of the 16 floats of m or of n is a NaN.
inline bool anyNaN(float const * m, float const * n) {
    __m256 const mm = _mm256_cmp_ps(_mm256_loadu_ps(m), _mm256_loadu_ps(m + 8), _CMP_UNORD_Q);
    __m256 const nn = _mm256_cmp_ps(_mm256_loadu_ps(n), _mm256_loadu_ps(n + 8), _CMP_UNORD_Q);
    return _mm256_movemask_ps(_mm256_or_ps(mm, nn)) != 0;
}

} // namespace

/// dst = a b, 16 elements; dst overlaps neither input.
void multMatricesAvx2(float * dst, float const * a, float const * b) {
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

namespace {

/// (a0 b[0] + a1 b[1]) + a2 b[2] in lanes 0 to 2; lane 3 = 0 when a0 to a2 and b have 0 there.
inline __m256d threeTerms(__m256d a0, __m256d a1, __m256d a2, __m256d b) {
    __m256d const s = addProduct(mul(a0, lane3<0>(b)), a1, lane3<1>(b));
    return addProduct(s, a2, lane3<2>(b));
}

} // namespace

/// The affine product: bottom rows of a and b not read, dst's written 0, 0, 0, 1.
void multAffineMatricesAvx2(float * dst, float const * a, float const * b) {
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

namespace {

/// ((m0 x + m1 y) + m2 z) + m3 for rows 0 to 2, m_k being column k (lane 3 = 0 in each) and v
/// holding x, y, z, 0.
inline __m256d affinePoint(__m256d m0, __m256d m1, __m256d m2, __m256d m3, __m256d v) {
    __m256d s = mul(m0, lane3<0>(v));
    s = addProduct(s, m1, lane3<1>(v));
    s = addProduct(s, m2, lane3<2>(v));
    return add(s, m3);
}

} // namespace

/// m v divided by the homogeneous coordinate; 0, 0, 0 when it is exactly 0. dst may be v.
void multMatrixVec3fAvx2(float * dst, float const * m, float const * v) {
    // W first and alone, as the baseline: nothing else is widened when it is 0.
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
    __m256d s = mul(loadWide4(m), _mm256_cvtps_pd(_mm_broadcast_ss(v)));
    s = addProduct(s, loadWide4(m + 4), _mm256_cvtps_pd(_mm_broadcast_ss(v + 1)));
    s = addProduct(s, loadWide4(m + 8), _mm256_cvtps_pd(_mm_broadcast_ss(v + 2)));
    s = _mm256_blend_pd(add(s, loadWide4(m + 12)), _mm256_setzero_pd(), 0x8);
    __m256d const r = mul(s, _mm256_set1_pd(k));
    // A NaN in v or in the bottom row makes W, and so every row, NaN; one elsewhere its own row.
    if (_mm256_movemask_pd(_mm256_cmp_pd(r, r, _CMP_UNORD_Q)) != 0)
        return multMatrixVec3fPlain(dst, m, v);
    store3(dst, _mm256_cvtpd_ps(r));
}

/// m v with the bottom row taken as 0, 0, 0, 1 and not read. dst may be v.
void multAffineMatrixVec3fAvx2(float * dst, float const * m, float const * v) {
    // Masked loads: the bottom row and v[3] are not read, and lane 3 holds 0.
    __m128i const top = _mm_setr_epi32(-1, -1, -1, 0);
    __m256d const r =
        affinePoint(widen(_mm_maskload_ps(m, top)), widen(_mm_maskload_ps(m + 4, top)),
                    widen(_mm_maskload_ps(m + 8, top)), widen(_mm_maskload_ps(m + 12, top)),
                    widen(_mm_maskload_ps(v, top)));
    if (_mm256_movemask_pd(_mm256_cmp_pd(r, r, _CMP_UNORD_Q)) != 0)
        return multAffineMatrixVec3fPlain(dst, m, v);
    store3(dst, _mm256_cvtpd_ps(r));
}

namespace {

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

template <int j> inline double element(__m256d v) {
    return _mm256_cvtsd_f64(lane<j>(v));
}

struct VecRow {
    __m256d r, i;
};

inline void swapVecRows(VecRow & p, VecRow & q) {
    VecRow const t = p;
    p = q;
    q = t;
}

/// Makes the row computed here, on every path, as the baseline's stored rows are: the flags of
/// an elimination step are raised even when a later zero pivot ends the inversion.
inline void computedHere(VecRow & n) {
    __asm__ volatile("" : "+x"(n.r), "+x"(n.i));
}

/// Row n -= f * pivot row: in R only the lanes in `later` (the columns after the pivot's), in I
/// only where the pivot row's element is not 0 (a NaN is not 0); the other lanes subtract 0 * 0.
/// The masked factors pass through an empty statement, so that no optimiser turns the product
/// of two masked values into a masked product, computed in every lane.
inline void eliminate(VecRow & n, __m256d f, VecRow const & pivot, __m256d later, __m256d nonZero) {
    __m256d fr = _mm256_and_pd(f, later), pr = _mm256_and_pd(pivot.r, later);
    __m256d fi = _mm256_and_pd(f, nonZero), pi = _mm256_and_pd(pivot.i, nonZero);
    __asm__("" : "+x"(fr), "+x"(pr), "+x"(fi), "+x"(pi));
    n.r = sub(n.r, mul(fr, pr));
    n.i = sub(n.i, mul(fi, pi));
    computedHere(n);
}

/// Element j of `row` times k, in every lane. The broadcast passes through an empty statement, so
/// that no optimiser multiplies the whole row first and broadcasts after.
template <int j> inline __m256d factor(__m256d row, __m256d k) {
    __m256d e = lane<j>(row);
    __asm__("" : "+x"(e));
    return mul(e, k);
}

/// Element j of `row`, the pivot just tested against 0, in every lane. It passes through an empty
/// volatile statement, which stays after the test: no optimiser computes the division by a zero
/// pivot, and its flag, before the test that returns instead.
template <int j> inline __m256d testedPivot(__m256d row) {
    __m256d p = lane<j>(row);
    __asm__ volatile("" : "+x"(p));
    return p;
}

inline __m256d nonZeroLanes(__m256d v) {
    return _mm256_cmp_pd(v, _mm256_setzero_pd(), _CMP_NEQ_UQ);
}

} // namespace

/// The general inverse; false, dst untouched, on an exactly zero pivot. dst may be src.
bool inverseMatrixAvx2(float * dst, float const * src) {
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
    // Each quotient is formed in all four lanes from the broadcast pivot, the same division in
    // each: the inversion is a chain of dependent steps, and a broadcast after the division
    // would lengthen it.
    __m256d const k0 = _mm256_div_pd(_mm256_set1_pd(1.0), testedPivot<0>(r0.r));
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
    __m256d const k1 = _mm256_div_pd(_mm256_set1_pd(1.0), testedPivot<1>(r1.r));
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
        __m256d const f3 = _mm256_div_pd(lane<2>(r3.r), testedPivot<2>(r2.r));
        __m256d const last = _mm256_castsi256_pd(_mm256_setr_epi64x(0, 0, 0, -1));
        eliminate(r3, f3, r2, last, _mm256_castsi256_pd(ones));
    }
    if (element<3>(r3.r) == 0.0)
        return false;

    // Back substitution, the four columns of I at once.
    __m256d const k3 = _mm256_div_pd(_mm256_set1_pd(1.0), testedPivot<3>(r3.r));
    __m256d const k2 = _mm256_div_pd(_mm256_set1_pd(1.0), testedPivot<2>(r2.r));
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

namespace {

/// Lanes a, b, c, d of v (indices 0 to 3).
template <int a, int b, int c, int d> inline __m256d pick(__m256d v) {
    return _mm256_permute4x64_pd(v, a | (b << 2) | (c << 4) | (d << 6));
}

template <bool conjugateB>
inline void hamiltonAvx2(float * const dst, float const * const a, float const * const b) {
    __m128 const fa = _mm_loadu_ps(a), fb = _mm_loadu_ps(b);
    if (_mm_movemask_ps(_mm_cmpunord_ps(fa, fb)) != 0)
        return conjugateB ? divQuaternionsUPlain(dst, a, b) : multQuaternionsPlain(dst, a, b);
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
inline __m128 rotationColumn(__m256d p1, __m256d p2, __m256d q1, __m256d q2, __m256d diagonal) {
    __m256d const s = addProduct(mul(q1, q2), p1, p2);
    __m256d const c = sub(add(s, s), diagonal);
    return _mm256_cvtpd_ps(_mm256_blend_pd(c, _mm256_setzero_pd(), 0x8));
}

} // namespace

void quaternionToMatrixAvx2(float * const dst, float const * const q) {
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

void multQuaternionsAvx2(float * const dst, float const * const a, float const * const b) {
    hamiltonAvx2<false>(dst, a, b);
}

void divQuaternionsUAvx2(float * const dst, float const * const a, float const * const b) {
    hamiltonAvx2<true>(dst, a, b);
}

} // namespace kdrcore::detail

#endif // KDRCORE_SIMD_X86
