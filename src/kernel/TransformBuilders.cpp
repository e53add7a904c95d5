// The transform builders: elementary scales, translations, rotations and oblique projections as
// matrices, and their in-place application to an existing matrix without a full product.
#include "detail/Wide.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>

using kdrcore::detail::narrow;
using kdrcore::detail::wide;

namespace {

// Replaces m[a], m[b] by (p*c - q*s, p*s + q*c): the plane turn by the angle of (c, s).
inline void turnPair(float * const m, int a, int b, double c, double s) {
    double const p = wide(m[a]);
    double const q = wide(m[b]);
    m[a] = narrow(p * c - q * s);
    m[b] = narrow(p * s + q * c);
}

// Replaces m[a], m[b] by (p*c + q*s, q*c - p*s): the same turn by the opposite angle.
inline void turnPairBack(float * const m, int a, int b, double c, double s) {
    double const p = wide(m[a]);
    double const q = wide(m[b]);
    m[a] = narrow(p * c + q * s);
    m[b] = narrow(q * c - p * s);
}
} // namespace

void EnhancedMathFunctions::setScale(float * const dst, float const * const s) const {
    for (int i = 0; i < 16; ++i)
        dst[i] = 0.0f;
    dst[0] = s[0];
    dst[5] = s[1];
    dst[10] = s[2];
    dst[15] = 1.0f;
}

void EnhancedMathFunctions::setTranslate(float * const dst, float const * const t) const {
    for (int i = 0; i < 16; ++i)
        dst[i] = (i % 5 == 0) ? 1.0f : 0.0f;
    dst[12] = t[0];
    dst[13] = t[1];
    dst[14] = t[2];
}

void EnhancedMathFunctions::setRotate(float * const dst, float const * const euler) const {
    eulerToMatrix(dst, euler);
}

void EnhancedMathFunctions::setRotate(float * const dst, float const * const axis,
                                      float angle) const {
    float q[4];
    axisToQuaternionU(q, axis, angle);
    quaternionToMatrix(dst, q);
}

void EnhancedMathFunctions::setProjection(float * const dst, float const * const normal, float d,
                                          float const * const dir) const {
    double const D = wide(normal[0]) * wide(dir[0]) + wide(normal[1]) * wide(dir[1]) +
                     wide(normal[2]) * wide(dir[2]);
    // dir parallel to the plane: no projection exists, and dst keeps what it held.
    if (D == 0.0)
        return;
    double const k = 1.0 / D;
    float const v[3] = {narrow(-wide(dir[0]) * k), narrow(-wide(dir[1]) * k),
                        narrow(-wide(dir[2]) * k)};
    multAffineColRow(dst, v, normal);
    dst[0] = narrow(wide(dst[0]) + 1.0);
    dst[5] = narrow(wide(dst[5]) + 1.0);
    dst[10] = narrow(wide(dst[10]) + 1.0);
    for (int i = 0; i < 3; ++i)
        dst[12 + i] = narrow(-wide(dir[i]) * wide(d) * k);
    dst[15] = 1.0f;
}

void EnhancedMathFunctions::multLeftByRotate(float * const dst, float const * const src,
                                             float const * axis, float angle) const {
    float q[4];
    float rot[16];
    axisToQuaternionU(q, axis, angle);
    quaternionToMatrix(rot, q);
    multAffineMatrices(dst, rot, src);
}

void EnhancedMathFunctions::multRightByRotate(float * const dst, float const * const src,
                                              float const * axis, float angle) const {
    float q[4];
    float rot[16];
    axisToQuaternionU(q, axis, angle);
    quaternionToMatrix(rot, q);
    multAffineMatrices(dst, src, rot);
}

// Left products mix two rows in all four columns, so the translation turns too. Right products
// mix two columns in all four rows: the translation stays, and the bottom row takes part.

void EnhancedMathFunctions::multLeftByRotateX(float * const m, float angle) const {
    double const c = std::cos(wide(angle));
    double const s = std::sin(wide(angle));
    for (int col = 0; col < 4; ++col)
        turnPair(m, 4 * col + 1, 4 * col + 2, c, s);
}

void EnhancedMathFunctions::multRightByRotateX(float * const m, float angle) const {
    double const c = std::cos(wide(angle));
    double const s = std::sin(wide(angle));
    for (int row = 0; row < 4; ++row)
        turnPairBack(m, 4 + row, 8 + row, c, s);
}

void EnhancedMathFunctions::multLeftByRotateY(float * const m, float angle) const {
    double const c = std::cos(wide(angle));
    double const s = std::sin(wide(angle));
    for (int col = 0; col < 4; ++col)
        turnPairBack(m, 4 * col, 4 * col + 2, c, s);
}

void EnhancedMathFunctions::multRightByRotateY(float * const m, float angle) const {
    double const c = std::cos(wide(angle));
    double const s = std::sin(wide(angle));
    for (int row = 0; row < 4; ++row)
        turnPair(m, row, 8 + row, c, s);
}

void EnhancedMathFunctions::multLeftByRotateZ(float * const m, float angle) const {
    double const c = std::cos(wide(angle));
    double const s = std::sin(wide(angle));
    for (int col = 0; col < 4; ++col)
        turnPair(m, 4 * col, 4 * col + 1, c, s);
}

void EnhancedMathFunctions::multRightByRotateZ(float * const m, float angle) const {
    double const c = std::cos(wide(angle));
    double const s = std::sin(wide(angle));
    for (int row = 0; row < 4; ++row)
        turnPairBack(m, row, 4 + row, c, s);
}

// The translations and scales below take the bottom row to be 0, 0, 0, 1 and never touch it.

void EnhancedMathFunctions::multLeftByTranslate(float * const m, float const * t) const {
    for (int r = 0; r < 3; ++r)
        m[12 + r] = narrow(wide(m[12 + r]) + wide(t[r]));
}

void EnhancedMathFunctions::multRightByTranslate(float * const m, float const * t) const {
    for (int r = 0; r < 3; ++r)
        m[12 + r] =
            narrow(wide(m[12 + r]) + (wide(m[r]) * wide(t[0]) + wide(m[4 + r]) * wide(t[1]) +
                                      wide(m[8 + r]) * wide(t[2])));
}

void EnhancedMathFunctions::multLeftByScale(float * const m, float const * s) const {
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 3; ++r)
            m[4 * c + r] = narrow(wide(m[4 * c + r]) * wide(s[r]));
}

void EnhancedMathFunctions::multRightByScale(float * const m, float const * s) const {
    for (int c = 0; c < 3; ++c)
        for (int r = 0; r < 3; ++r)
            m[4 * c + r] = narrow(wide(m[4 * c + r]) * wide(s[c]));
}
