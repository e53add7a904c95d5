// Quaternion algebra on arrays w, x, y, z: sum, difference, Hamilton product, conjugate, inverse,
// dot product, rotation of a vector, and the two interpolations.
//
// Each result is formed at double width and rounded once, where it is stored. Operations that may
// write over an input read every element they need before the first store (the products), or
// work strictly element by element (the sums, the conjugate, the interpolations).
#include "detail/Wide.h"
#include "kernel/SimdKernels.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>

using kdrcore::detail::wide;

void EnhancedMathFunctions::addQuaternions(float * const dst, float const * const a,
                                           float const * const b) const {
    for (int i = 0; i < 4; ++i)
        dst[i] = static_cast<float>(wide(a[i]) + wide(b[i]));
}

void EnhancedMathFunctions::subQuaternions(float * const dst, float const * const a,
                                           float const * const b) const {
    for (int i = 0; i < 4; ++i)
        dst[i] = static_cast<float>(wide(a[i]) - wide(b[i]));
}

// The products live in SimdKernels.h, in a baseline and an AVX2 version with the same bits.
void EnhancedMathFunctions::multQuaternions(float * const dst, float const * const a,
                                            float const * const b) const {
#if KDRCORE_SIMD_X86
    if (kdrcore::detail::simdLevel() >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::multQuaternionsAvx2(dst, a, b);
#endif
    kdrcore::detail::multQuaternionsPlain(dst, a, b);
}

// The product with the conjugate of b, which stands for its inverse when b has length 1.
void EnhancedMathFunctions::divQuaternionsU(float * const dst, float const * const a,
                                            float const * const b) const {
#if KDRCORE_SIMD_X86
    if (kdrcore::detail::simdLevel() >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::divQuaternionsUAvx2(dst, a, b);
#endif
    kdrcore::detail::divQuaternionsUPlain(dst, a, b);
}

void EnhancedMathFunctions::conjugateQuaternion(float * const dst, float const * const q) const {
    dst[0] = q[0];
    dst[1] = -q[1];
    dst[2] = -q[2];
    dst[3] = -q[3];
}

void EnhancedMathFunctions::inverseQuaternion(float * const dst, float const * const q) const {
    double const n = wide(q[0]) * wide(q[0]) + wide(q[1]) * wide(q[1]) + wide(q[2]) * wide(q[2]) +
                     wide(q[3]) * wide(q[3]);
    if (n == 0.0) {
        dst[0] = dst[1] = dst[2] = dst[3] = 0.0f;
        return;
    }
    float const k = static_cast<float>(1.0 / n);
    this->conjugateQuaternion(dst, q);
    for (int i = 0; i < 4; ++i)
        dst[i] = static_cast<float>(wide(dst[i]) * wide(k));
}

void EnhancedMathFunctions::inverseQuaternionU(float * const dst, float const * const q) const {
    this->conjugateQuaternion(dst, q);
}

void EnhancedMathFunctions::applyQuatOn(float * const dst, float const * const q,
                                        float const * const v) const {
    // Expanded q v q*: (w^2 - |u|^2) v + 2w (u x v) + 2(u . v) u, with u the vector part of q.
    float const * const u = q + 1;
    float const B = static_cast<float>(wide(q[0]) * wide(q[0]) - wide(q[1]) * wide(q[1]) -
                                       wide(q[2]) * wide(q[2]) - wide(q[3]) * wide(q[3]));
    float const E = static_cast<float>(
        2.0 * (wide(q[1]) * wide(v[0]) + wide(q[2]) * wide(v[1]) + wide(q[3]) * wide(v[2])));
    float const F = static_cast<float>(2.0 * wide(q[0]));
    float G[3];
    this->cross(G, u, v);
    // Element i reads v[i] before it stores dst[i], so dst may be v.
    for (int i = 0; i < 3; ++i)
        dst[i] =
            static_cast<float>(wide(B) * wide(v[i]) + wide(F) * wide(G[i]) + wide(E) * wide(u[i]));
}

void EnhancedMathFunctions::dotQuaternions(float * dst, float const * const a,
                                           float const * const b) const {
    // The running sum is a float: it is rounded after each product is added.
    float sum = static_cast<float>(wide(a[0]) * wide(b[0]));
    sum = static_cast<float>(wide(sum) + wide(a[1]) * wide(b[1]));
    sum = static_cast<float>(wide(sum) + wide(a[2]) * wide(b[2]));
    sum = static_cast<float>(wide(sum) + wide(a[3]) * wide(b[3]));
    dst[0] = sum;
}

void EnhancedMathFunctions::quaternionSLERP(float * const dst, float const * const a,
                                            float const * const b, float t) const {
    // Not divided by sin(h), not normalised, t not clamped: for unit a and b the result has the
    // direction of the interpolated rotation and the length sin(h). A |c| above 1 gives NaN.
    float c;
    this->dotQuaternions(&c, a, b);
    double const h = std::acos(std::fabs(wide(c)));
    double const p = std::sin((1.0 - wide(t)) * h);
    double const r = std::sin(wide(t) * h);
    if (c >= 0.0f) {
        for (int i = 0; i < 4; ++i)
            dst[i] = static_cast<float>(wide(a[i]) * p + wide(b[i]) * r);
    } else {
        // Towards the negated b: the shorter way round.
        for (int i = 0; i < 4; ++i)
            dst[i] = static_cast<float>(wide(a[i]) * p - wide(b[i]) * r);
    }
}

void EnhancedMathFunctions::quaternionLERP(float * const dst, float const * const a,
                                           float const * const b, float t) const {
    float c;
    this->dotQuaternions(&c, a, b);
    double const s = 1.0 - wide(t);
    double const tw = wide(t);
    if (c >= 0.0f) {
        for (int i = 0; i < 4; ++i)
            dst[i] = static_cast<float>(wide(a[i]) * s + wide(b[i]) * tw);
    } else {
        for (int i = 0; i < 4; ++i)
            dst[i] = static_cast<float>(wide(a[i]) * s - wide(b[i]) * tw);
    }
}
