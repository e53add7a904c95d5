// Conversions between the four forms of a rotation: axis and angle, quaternion (w, x, y, z), Euler
// triple (radians about x, y, z, composed Rz Ry Rx) and the upper-left block of a 4x4 matrix.
//
// Each value is formed at double width and rounded once, where it is stored. No output may overlap
// an input. The composite conversions reach their steps through the table, so that a replacement
// kernel overriding a step changes the composite too.
#include "detail/Wide.h"
#include "kernel/SimdKernels.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Scalar.h"

#include <cmath>

using kdrcore::detail::wide;

namespace {

// The rest of a rotation matrix: no translation, bottom row 0, 0, 0, 1.
inline void clearAffinePart(float * const dst) {
    dst[3] = dst[7] = dst[11] = 0.0f;
    dst[12] = dst[13] = dst[14] = 0.0f;
    dst[15] = 1.0f;
}
} // namespace

void EnhancedMathFunctions::axisToQuaternion(float * const dst, float const * const axis,
                                             float angle) const {
    // The axis is used as it stands: only a unit axis gives a unit quaternion.
    double const h = wide(angle) * 0.5;
    double const sh = std::sin(h);
    dst[0] = static_cast<float>(std::cos(h));
    dst[1] = static_cast<float>(wide(axis[0]) * sh);
    dst[2] = static_cast<float>(wide(axis[1]) * sh);
    dst[3] = static_cast<float>(wide(axis[2]) * sh);
}

void EnhancedMathFunctions::axisToQuaternionU(float * const dst, float const * const axis,
                                              float angle) const {
    double const n = std::sqrt(wide(axis[0]) * wide(axis[0]) + wide(axis[1]) * wide(axis[1]) +
                               wide(axis[2]) * wide(axis[2]));
    if (n < TOLERANCE) {
        // No usable direction: the identity, whatever the angle.
        dst[0] = 1.0f;
        dst[1] = dst[2] = dst[3] = 0.0f;
        return;
    }
    double const h = wide(angle) * 0.5;
    double const k = std::sin(h) / n;
    dst[0] = static_cast<float>(std::cos(h));
    dst[1] = static_cast<float>(wide(axis[0]) * k);
    dst[2] = static_cast<float>(wide(axis[1]) * k);
    dst[3] = static_cast<float>(wide(axis[2]) * k);
}

void EnhancedMathFunctions::quaternionToAxis(float * const axis, float * angle,
                                             float const * const q) const {
    angle[0] = static_cast<float>(2.0 * std::acos(wide(q[0])));
    double const n =
        std::sqrt(wide(q[1]) * wide(q[1]) + wide(q[2]) * wide(q[2]) + wide(q[3]) * wide(q[3]));
    if (n == 0.0) {
        // No turn (or a scalar part of -1, a whole turn): the zero axis and the angle 0.
        angle[0] = 0.0f;
        axis[0] = axis[1] = axis[2] = 0.0f;
        return;
    }
    double const k = 1.0 / n;
    axis[0] = static_cast<float>(wide(q[1]) * k);
    axis[1] = static_cast<float>(wide(q[2]) * k);
    axis[2] = static_cast<float>(wide(q[3]) * k);
}

// In SimdKernels.h, in a baseline and an AVX2 version with the same bits.
void EnhancedMathFunctions::quaternionToMatrix(float * const dst, float const * const q) const {
#if KDRCORE_SIMD_X86
    kdrcore::detail::SimdLevel const level = kdrcore::detail::simdLevel();
    if (level >= kdrcore::detail::LEVEL_AVX512)
        return kdrcore::detail::quaternionToMatrixAvx512(dst, q);
    if (level >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::quaternionToMatrixAvx2(dst, q);
#endif
    kdrcore::detail::quaternionToMatrixPlain(dst, q);
}

int EnhancedMathFunctions::RotMatrixToQuaternion(float * const dst, float const * const m) const {
    double s = std::sqrt(wide(m[0]) + wide(m[5]) + wide(m[10]) + 1.0);
    // Only an exact 0 is a half turn. A slightly negative sum gives a NaN s, which takes this
    // branch and fills dst with NaNs.
    if (s != 0.0) {
        double const k = 0.5 / s;
        dst[0] = static_cast<float>(0.5 * s);
        dst[1] = static_cast<float>((wide(m[6]) - wide(m[9])) * k);
        dst[2] = static_cast<float>((wide(m[8]) - wide(m[2])) * k);
        dst[3] = static_cast<float>((wide(m[1]) - wide(m[4])) * k);
        return 0;
    }
    // Half turn: the scalar part is 0 and the vector part is rebuilt from the largest-looking
    // diagonal element, which is made positive. m[10] is compared with m[5] whatever the first
    // comparison gave.
    dst[0] = 0.0f;
    int pivot = 1;
    if (m[5] > m[0])
        pivot = 2;
    if (m[10] > m[5])
        pivot = 3;
    float const d = pivot == 1 ? m[0] : pivot == 2 ? m[5] : m[10];
    s = std::sqrt(2.0 * (1.0 + wide(d)));
    double const k = 0.5 / s;
    double const xy = (wide(m[4]) + wide(m[1])) * k;
    double const xz = (wide(m[8]) + wide(m[2])) * k;
    double const yz = (wide(m[9]) + wide(m[6])) * k;
    switch (pivot) {
    case 1:
        dst[1] = static_cast<float>(0.5 * s);
        dst[2] = static_cast<float>(xy);
        dst[3] = static_cast<float>(xz);
        break;
    case 2:
        dst[1] = static_cast<float>(xy);
        dst[2] = static_cast<float>(0.5 * s);
        dst[3] = static_cast<float>(yz);
        break;
    default:
        dst[1] = static_cast<float>(xz);
        dst[2] = static_cast<float>(yz);
        dst[3] = static_cast<float>(0.5 * s);
        break;
    }
    return 0;
}

void EnhancedMathFunctions::eulerToQuaternion(float * const dst, float const * const euler) const {
    double const h0 = wide(euler[0]) * 0.5, h1 = wide(euler[1]) * 0.5, h2 = wide(euler[2]) * 0.5;
    double const c0 = std::cos(h0), c1 = std::cos(h1), c2 = std::cos(h2);
    double const s0 = std::sin(h0), s1 = std::sin(h1), s2 = std::sin(h2);
    dst[0] = static_cast<float>(c0 * c1 * c2 + s0 * s1 * s2);
    dst[1] = static_cast<float>(s0 * c1 * c2 - c0 * s1 * s2);
    dst[2] = static_cast<float>(c0 * s1 * c2 + s0 * c1 * s2);
    dst[3] = static_cast<float>(c0 * c1 * s2 - s0 * s1 * c2);
}

void EnhancedMathFunctions::quaternionToEuler(float * euler, float const * const q) const {
    float m[16];
    this->quaternionToMatrix(m, q);
    static_cast<void>(this->matrixToEuler(euler, m));
}

void EnhancedMathFunctions::eulerToMatrix(float * const dst, float const * const euler) const {
    // Rz(e2) Ry(e1) Rx(e0): about x first, then y, then z, all about fixed axes.
    double const e0 = wide(euler[0]), e1 = wide(euler[1]), e2 = wide(euler[2]);
    double const c0 = std::cos(e0), c1 = std::cos(e1), c2 = std::cos(e2);
    double const s0 = std::sin(e0), s1 = std::sin(e1), s2 = std::sin(e2);
    dst[0] = static_cast<float>(c1 * c2);
    dst[1] = static_cast<float>(c1 * s2);
    dst[2] = static_cast<float>(-s1);
    dst[4] = static_cast<float>(s0 * s1 * c2 - c0 * s2);
    dst[5] = static_cast<float>(s0 * s1 * s2 + c0 * c2);
    dst[6] = static_cast<float>(s0 * c1);
    dst[8] = static_cast<float>(c0 * s1 * c2 + s0 * s2);
    dst[9] = static_cast<float>(c0 * s1 * s2 - s0 * c2);
    dst[10] = static_cast<float>(c0 * c1);
    clearAffinePart(dst);
}

int EnhancedMathFunctions::matrixToEuler(float * euler, float const * const m) const {
    double const a = std::asin(-wide(m[2]));
    euler[1] = static_cast<float>(a);
    // The poles are reached only by an m[2] of exactly -1 or 1. A NaN a (|m[2]| above 1) fails
    // both interior tests and ends at the upper pole.
    if (a < HALF_PI_D) {
        if (a > -HALF_PI_D) {
            euler[2] = static_cast<float>(std::atan2(wide(m[1]), wide(m[0])));
            euler[0] = static_cast<float>(std::atan2(wide(m[6]), wide(m[10])));
            return 0;
        }
        // Lower pole: the whole turn about the common axis goes to euler[2].
        euler[0] = 0.0f;
        euler[2] = static_cast<float>(std::atan2(-wide(m[4]), -wide(m[8])));
        return 0;
    }
    // Upper pole.
    euler[0] = 0.0f;
    euler[2] = static_cast<float>(std::atan2(-wide(m[4]), wide(m[8])));
    return 0;
}

void EnhancedMathFunctions::axisToMatrix(float * const dst, float const * const axis,
                                         float angle) const {
    // Through axisToQuaternion, which does not normalise: a non-unit axis gives no rotation.
    float q[4];
    this->axisToQuaternion(q, axis, angle);
    this->quaternionToMatrix(dst, q);
}

int EnhancedMathFunctions::matrixToAxis(float * const axis, float * angle,
                                        float const * const m) const {
    float q[4];
    static_cast<void>(this->RotMatrixToQuaternion(q, m));
    this->quaternionToAxis(axis, angle, q);
    return 0;
}
