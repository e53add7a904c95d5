// VectorTest.cpp - Vector3f arithmetic, angles and orthogonality; Vector2f angles
#include "kdrcore/types/Vector.h"

#include "support/TestSupport.h"

#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace kdrtest;

static_assert(sizeof(Vector3f) == 12 && sizeof(Vector4f) == 16 && sizeof(Vector2s) == 4,
              "packed elements and nothing else");

TEST(Vector3f, ConstructionAndConstants) {
    EXPECT_TRUE(elems(Vector3f(), {0, 0, 0}) && Vector2f().y() == 0.0f);
    // The two-point constructor is the second point minus the first.
    EXPECT_TRUE(elems(Vector3f(Vector3f(1, 2, 3), Vector3f(4, 0, 3.5f)), {3, -2, 0.5}));
    EXPECT_TRUE(elems(Vector3f::m_axis[2], {0, 0, 1}));
    EXPECT_TRUE(elems(Vector3f::m_axis[4], {0, -1, 0}));
}

TEST(Vector3f, ProductsRoundOnceAtDoubleWidth) {
    // x * x = 1 + 2^-11 + 2^-24 is a tie in float. Added to z's 2^-25 before rounding it rounds
    // up; rounded first (float arithmetic), the sum would fall back to 1 + 2^-11.
    float const x = 1.0f + 0x1p-12f;
    Vector3f const a(x, 0.0f, 0x1p-25f), b(x, 0.0f, 1.0f), c(x, 0.0f, 0x1p-13f);
    EXPECT_EQ(Vector3f::dotD(a, b), 1.0 + 0x1p-11 + 0x1p-24 + 0x1p-25);
    EXPECT_EQ(a.dot(b), 1.0f + 0x1p-11f + 0x1p-23f);
    // The grouping (z z' + y y') + x x', with the terms 1, 2^-53 + 2^-60 and -1: 1 + y y' lies
    // above the tie 1 + 2^-53 and rounds to 1 + 2^-52, so the sum is 2^-52. Grouped
    // (z z' + x x') + y y' it would be 2^-53 + 2^-60; grouped z z' + (y y' + x x') it would be
    // 2^-53, as -1 + 2^-53 + 2^-60 rounds to -1 + 2^-53.
    Vector3f const d(-1.0f, 0x1.02p0f, 1.0f), e(1.0f, 0x1p-53f, 1.0f);
    EXPECT_EQ(Vector3f::dotD(d, e), 0x1p-52);
    // The same tie in the squared length, broken upwards by z * z = 2^-26.
    EXPECT_EQ(c.norm2D(), 1.0 + 0x1p-11 + 0x1p-24 + 0x1p-26);
    EXPECT_EQ(c.norm2(), 1.0f + 0x1p-11f + 0x1p-23f);
}

TEST(Vector3f, NormalizeAndDivisionTestExactZeroOnly) {
    Vector3f v(3, 0, 4), zero, tiny(0, 0x1p-100f, 0);
    EXPECT_TRUE(v.normalize() == 5.0f && elems(v, {0.6f, 0, 0.8f}));
    EXPECT_TRUE(zero.normalize() == 0.0f && elems(zero, {0, 0, 0}));
    EXPECT_TRUE(tiny.normalize() == 0x1p-100f && elems(tiny, {0, 1, 0})); // not zero
    // An exact 0 divisor: a zero result, an unchanged object, an untouched `out`.
    Vector3f const p(1, 2, 3);
    Vector3f w = p, out(7, 8, 9);
    w /= 0.0f;
    Vector3f::div(out, p, 0.0f);
    EXPECT_TRUE(elems(p / 0.0f, {0, 0, 0}) && elems(w, {1, 2, 3}));
    EXPECT_TRUE(elems(out, {7, 8, 9}));
    // The static forms may alias; inverse is the opposite vector, not a reciprocal.
    Vector3f::div(w, w, 4.0f); // through the reciprocal 1/4 (exact)
    Vector3f::inverse(w, w);
    Vector3f::add(w, w, p);
    EXPECT_TRUE(elems(w, {0.75, 1.5, 2.25}));
}

TEST(Vector3f, CosAndAnglesClampAndHandleZero) {
    Vector3f const zero, x(1, 0, 0), y(0, 2, 0), z(0, 0, 3), ones(1, 1, 1);
    EXPECT_TRUE(zero.cos(x) == 1.0 && x.cos(zero) == 1.0 && zero.angleD(x) == 0.0);
    EXPECT_TRUE(x.angleD(-x) == PI_D && x.cos(-x) == -1.0 && x.angleD(y) == HALF_PI_D);
    // |(1,1,1)|^2 rounds above 3, so dot / (|v| |v|) is 1 + 2^-52: clamped to exactly 1 and 0.
    EXPECT_TRUE(ones.cos(ones) == 1.0 && ones.angleD(ones) == 0.0);
    Vector3f const nan(std::numeric_limits<float>::quiet_NaN(), 0, 0); // NaN passes both clamps
    EXPECT_TRUE(std::isnan(nan.cos(x)) && std::isnan(x.angleD(nan)));
    // Turning around the reference: parallel vectors have a zero cross product, the full turn.
    EXPECT_TRUE(x.angleOrientD(y, z) == HALF_PI_D && x.angleOrientD(-x, z) == PI_D);
    EXPECT_EQ(x.angleOrientD(x, z), TWO_PI_D);
    EXPECT_NEAR(x.angleOrientD(y, -z), 1.5 * PI_D, 1e-15);
}

TEST(Vector3f, OrthogonalityHelpers) {
    // A non-unit direction is not divided by its squared length: t = 10, w - 10 (2, 1, 2).
    Vector3f w(1, 2, 3);
    EXPECT_TRUE(w.makeOrthogonalTo(Vector3f(2, 1, 2)) && elems(w, {-19, -8, -17}));
    // The axis furthest from v, crossed with v; ties go to x, then y.
    Vector3f const v[] = {{1, 1, 1}, {0, 0, 1}, {1, 0, 0}, {3, -2, 1}, {2, 2, 1}};
    std::vector<double> const expected[] = {
        {0, -1, 1}, {0, -1, 0}, {0, 0, -1}, {2, 3, 0}, {-2, 2, 0}};
    for (int i = 0; i < 5; ++i) {
        v[i].findOrthogonalVector(w);
        EXPECT_TRUE(elems(w, expected[i])) << "case " << i;
    }
}

TEST(Vector2f, PolarAngleQuadrantsAndAngleBetween) {
    EXPECT_TRUE(Vector2f(0, -1).angle() == -HALF_PI_F && Vector2f(0, 0).angle() == HALF_PI_F);
    EXPECT_EQ(Vector2f(2, 0).angle(), 0.0f);
    EXPECT_NEAR(Vector2f(-1, -1).angle(), 1.25 * PI_D, 1e-6);
    EXPECT_NEAR(Vector2f(1, -1).angle(), 1.75 * PI_D, 1e-6);
    Vector2f a(3, 4), opposite(-3, -4), zero;
    EXPECT_TRUE(Vector2f::dot(a, Vector2f(-1, 2)) == 5.0f && a.dot(Vector2f(2, -1)) == 2.0f);
    EXPECT_NEAR(a.angle(Vector2f(-4, 3)), PI_D / 2.0, 1e-6);
    EXPECT_TRUE(a.angle(opposite) == PI_F && a.angle(a) == 0.0f && a.angle(zero) == 0.0f);
}
