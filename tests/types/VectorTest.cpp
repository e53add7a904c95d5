// VectorTest.cpp - Vector3f arithmetic, angles and orthogonality; Vector2f angles
#include "kdrcore/types/Vector.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

void expectVec(Vector3f const & v, float x, float y, float z) {
    EXPECT_EQ(v.x(), x);
    EXPECT_EQ(v.y(), y);
    EXPECT_EQ(v.z(), z);
}

} // namespace

TEST(Vector3f, LayoutDefaultsAndConstants) {
    static_assert(sizeof(Vector3f) == 12, "three packed floats");
    static_assert(sizeof(Vector4f) == 16 && sizeof(Vector2s) == 4, "packed elements");
    expectVec(Vector3f(), 0.0f, 0.0f, 0.0f);
    EXPECT_EQ(Vector2f().x(), 0.0f);
    EXPECT_EQ(Vector2f().y(), 0.0f);
    EXPECT_EQ(Vector4f().getValue()[3], 0.0f);
    // The two-point constructor is the second point minus the first.
    expectVec(Vector3f(Vector3f(1.0f, 2.0f, 3.0f), Vector3f(4.0f, 0.0f, 3.5f)), 3.0f, -2.0f, 0.5f);
    expectVec(Vector3f::m_axis[2], 0.0f, 0.0f, 1.0f);
    expectVec(Vector3f::m_axis[4], 0.0f, -1.0f, 0.0f);
    expectVec(Vector3f::m_axis[5], 0.0f, 0.0f, -1.0f);
}

TEST(Vector3f, ProductsRoundOnceAtDoubleWidth) {
    // x * x = 1 + 2^-11 + 2^-24 is a tie in float. Added to z's 2^-25 before rounding it rounds
    // up; rounded first (float arithmetic), the sum would fall back to 1 + 2^-11.
    float const x = 1.0f + 0x1p-12f;
    Vector3f const a(x, 0.0f, 0x1p-25f), b(x, 0.0f, 1.0f);
    EXPECT_EQ(Vector3f::dotD(a, b), 1.0 + 0x1p-11 + 0x1p-24 + 0x1p-25);
    EXPECT_EQ(Vector3f::dot(a, b), 1.0f + 0x1p-11f + 0x1p-23f);
    EXPECT_EQ(a.dot(b), 1.0f + 0x1p-11f + 0x1p-23f);
    // The same tie in the squared length, broken upwards by z * z = 2^-26.
    Vector3f const c(x, 0.0f, 0x1p-13f);
    EXPECT_EQ(c.norm2D(), 1.0 + 0x1p-11 + 0x1p-24 + 0x1p-26);
    EXPECT_EQ(c.norm2(), 1.0f + 0x1p-11f + 0x1p-23f);
    EXPECT_EQ(Vector3f(3.0f, 0.0f, 4.0f).norm(), 5.0f);
}

TEST(Vector3f, NormalizeReturnsTheOldLength) {
    Vector3f v(3.0f, 0.0f, 4.0f);
    EXPECT_EQ(v.normalize(), 5.0f);
    expectVec(v, 0.6f, 0.0f, 0.8f);
    Vector3f zero;
    EXPECT_EQ(zero.normalize(), 0.0f);
    expectVec(zero, 0.0f, 0.0f, 0.0f);
    // Tiny is not zero: 2^-100 squared is still a double, so the vector becomes a unit one.
    Vector3f tiny(0.0f, 0x1p-100f, 0.0f);
    EXPECT_EQ(tiny.normalize(), 0x1p-100f);
    expectVec(tiny, 0.0f, 1.0f, 0.0f);
}

TEST(Vector3f, DivisionByExactZeroAndByNaN) {
    Vector3f const v(1.0f, 2.0f, 3.0f);
    expectVec(v / 0.0f, 0.0f, 0.0f, 0.0f);
    Vector3f w = v;
    w /= 0.0f;
    expectVec(w, 1.0f, 2.0f, 3.0f);
    Vector3f out(7.0f, 8.0f, 9.0f);
    Vector3f::div(out, v, 0.0f);
    expectVec(out, 7.0f, 8.0f, 9.0f);
    // A NaN divisor is not zero: it reaches every component.
    Vector3f const n = v / std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(n.x()) && std::isnan(n.y()) && std::isnan(n.z()));
    // In place, through the reciprocal 1/4 (exact).
    Vector3f::div(w, w, 4.0f);
    expectVec(w, 0.25f, 0.5f, 0.75f);
}

TEST(Vector3f, ArithmeticAndAliasing) {
    Vector3f a(1.0f, -2.0f, 0.5f);
    Vector3f const b(0.5f, 4.0f, -1.0f);
    expectVec(2.0f * a - b, 1.5f, -8.0f, 2.0f);
    Vector3f::inverse(a, a); // the opposite vector, in place
    expectVec(a, -1.0f, 2.0f, -0.5f);
    Vector3f::add(a, a, b);
    expectVec(a, -0.5f, 6.0f, -1.5f);
    Vector3f::sub(a, b, a);
    expectVec(a, 1.0f, -2.0f, 0.5f);
    a *= -4.0f;
    expectVec(a, -4.0f, 8.0f, -2.0f);
}

TEST(Vector3f, CosAndAngleClampAndZeroCases) {
    Vector3f const zero, x(1.0f, 0.0f, 0.0f), y(0.0f, 2.0f, 0.0f);
    EXPECT_EQ(zero.cos(x), 1.0);
    EXPECT_EQ(x.cos(zero), 1.0);
    EXPECT_EQ(zero.angleD(x), 0.0);
    EXPECT_EQ(x.angleD(-x), PI_D);
    EXPECT_EQ(x.cos(-x), -1.0);
    EXPECT_EQ(x.angleD(y), HALF_PI_D);
    // |(1,1,1)|^2 rounds above 3, so dot / (|v| |v|) is 1 + 2^-52: clamped to exactly 1 and 0.
    Vector3f const ones(1.0f, 1.0f, 1.0f);
    EXPECT_EQ(ones.cos(ones), 1.0);
    EXPECT_EQ(ones.angleD(ones), 0.0);
    // 45 degrees, and NaN passing both clamps.
    EXPECT_NEAR(x.angleD(Vector3f(1.0f, 1.0f, 0.0f)), PI_D / 4.0, 1e-15);
    Vector3f const nan(std::numeric_limits<float>::quiet_NaN(), 0.0f, 0.0f);
    EXPECT_TRUE(std::isnan(nan.cos(x)));
    EXPECT_TRUE(std::isnan(x.angleD(nan)));
}

TEST(Vector3f, AngleOrientTurnsAroundTheReference) {
    Vector3f const x(1.0f, 0.0f, 0.0f), y(0.0f, 1.0f, 0.0f), z(0.0f, 0.0f, 3.0f);
    EXPECT_EQ(x.angleOrientD(y, z), HALF_PI_D);
    EXPECT_NEAR(x.angleOrientD(y, -z), 1.5 * PI_D, 1e-15);
    EXPECT_EQ(y.angleOrient(x, -z), HALF_PI_F);
    EXPECT_EQ(x.angleOrientD(x, z), TWO_PI_D); // parallel: cross is zero, the full turn
    EXPECT_EQ(x.angleOrientD(-x, z), PI_D);
}

TEST(Vector3f, MakeOrthogonalToDoesNotNormalise) {
    Vector3f v(1.0f, 2.0f, 3.0f);
    EXPECT_TRUE(v.makeOrthogonalTo(Vector3f(0.0f, 0.0f, 1.0f)));
    expectVec(v, 1.0f, 2.0f, 0.0f);
    // A non-unit direction is not divided by its squared length: t = 6, z = 3 - 2 * 6.
    Vector3f w(1.0f, 2.0f, 3.0f);
    EXPECT_TRUE(w.makeOrthogonalTo(Vector3f(0.0f, 0.0f, 2.0f)));
    expectVec(w, 1.0f, 2.0f, -9.0f);
}

TEST(Vector3f, FindOrthogonalVectorUsesTheFurthestAxis) {
    Vector3f out;
    Vector3f(1.0f, 1.0f, 1.0f).findOrthogonalVector(out); // tie: x, and x cross v
    expectVec(out, 0.0f, -1.0f, 1.0f);
    Vector3f(0.0f, 0.0f, 1.0f).findOrthogonalVector(out);
    expectVec(out, 0.0f, -1.0f, 0.0f);
    Vector3f(1.0f, 0.0f, 0.0f).findOrthogonalVector(out);
    expectVec(out, 0.0f, 0.0f, -1.0f);
    Vector3f(3.0f, -2.0f, 1.0f).findOrthogonalVector(out); // z smallest: (0,0,1) x v
    expectVec(out, 2.0f, 3.0f, 0.0f);
    Vector3f(2.0f, 2.0f, 1.0f).findOrthogonalVector(out); // y not below x: z against x
    expectVec(out, -2.0f, 2.0f, 0.0f);
}

namespace {

// Gives a fixed answer, so that every route to the cross product can be seen to use it.
class FixedCrossKernel : public EnhancedMathFunctions {
public:
    void cross(float * const dst, float const *, float const *) const override {
        dst[0] = 0.0f;
        dst[1] = 0.0f;
        dst[2] = -1.0f;
    }
};

class VectorKernel : public ::testing::Test {
protected:
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
};

} // namespace

TEST_F(VectorKernel, CrossProductGoesThroughTheCurrentKernel) {
    Vector3f const x(1.0f, 0.0f, 0.0f), y(0.0f, 1.0f, 0.0f);
    expectVec(x ^ y, 0.0f, 0.0f, 1.0f); // the default kernel
    (new FixedCrossKernel())->setDefault();
    expectVec(x ^ y, 0.0f, 0.0f, -1.0f);
    expectVec(x.cross(y), 0.0f, 0.0f, -1.0f);
    Vector3f out;
    Vector3f::cross(out, x, y);
    expectVec(out, 0.0f, 0.0f, -1.0f);
    Vector3f(1.0f, 1.0f, 1.0f).findOrthogonalVector(out);
    expectVec(out, 0.0f, 0.0f, -1.0f);
    // The orientation follows the kernel's sign: reference z now sees the long way round.
    EXPECT_NEAR(x.angleOrientD(y, Vector3f(0.0f, 0.0f, 1.0f)), 1.5 * PI_D, 1e-15);
    // Everything else stays in the class.
    expectVec(x + y, 1.0f, 1.0f, 0.0f);
    EXPECT_EQ(x.angleD(y), HALF_PI_D);
}

TEST(Vector3f, ToleranceTestsPerComponent) {
    EXPECT_TRUE(isZero(Vector3f(0.00009f, 0.00009f, 0.00009f))); // length exceeds the tolerance
    EXPECT_FALSE(isZero(Vector3f(0.0001001f, 0.0f, 0.0f)));
    EXPECT_FALSE(isZero(Vector3f(0.0f, std::numeric_limits<float>::quiet_NaN(), 0.0f)));
    EXPECT_TRUE(isZero(Vector3f(0.5f, -0.5f, 0.25f), 0.5f)); // inclusive
    EXPECT_FALSE(isZero(Vector3f(0.5f, -0.5f, 0.25f), 0.25f));
    EXPECT_TRUE(areEqual(Vector3f(1.0f, 2.0f, 3.0f), Vector3f(1.00005f, 2.0f, 2.99995f)));
    EXPECT_FALSE(areEqual(Vector3f(1.0f, 2.0f, 3.0f), Vector3f(1.0f, 2.0002f, 3.0f)));
}

TEST(Vector2f, PolarAngleQuadrantsAndAngleBetween) {
    EXPECT_EQ(Vector2f(0.0f, -1.0f).angle(), -HALF_PI_F);
    EXPECT_EQ(Vector2f(0.0f, 0.0f).angle(), HALF_PI_F);
    EXPECT_EQ(Vector2f(2.0f, 0.0f).angle(), 0.0f);
    EXPECT_NEAR(Vector2f(1.0f, 1.0f).angle(), PI_D / 4.0, 1e-6);
    EXPECT_NEAR(Vector2f(-1.0f, -1.0f).angle(), 1.25 * PI_D, 1e-6);
    EXPECT_NEAR(Vector2f(1.0f, -1.0f).angle(), 1.75 * PI_D, 1e-6);
    // The angle between two vectors, clamped at both ends.
    Vector2f a(3.0f, 4.0f), b(-4.0f, 3.0f);
    EXPECT_EQ(a.norm(), 5.0f);
    EXPECT_EQ(a.dot(Vector2f(1.0f, 2.0f)), 11.0f);
    EXPECT_NEAR(a.angle(b), PI_D / 2.0, 1e-6);
    Vector2f opposite(-3.0f, -4.0f), zero;
    EXPECT_EQ(a.angle(opposite), PI_F);
    EXPECT_EQ(a.angle(a), 0.0f);
    EXPECT_EQ(a.angle(zero), 0.0f);
}
