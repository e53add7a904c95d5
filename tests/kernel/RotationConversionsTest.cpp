// Rotation conversions: hand-checked rotations, half turns and poles, round trips up to rounding,
// and the composites' steps reached through the table.
#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>

namespace {
EnhancedMathFunctions * kernel() {
    return EnhancedMathFunctions::getCurrent();
}

float const NaN = std::numeric_limits<float>::quiet_NaN();

void expectNear(float const * got, std::initializer_list<float> want, float tol) {
    for (int i = 0; i < static_cast<int>(want.size()); ++i)
        EXPECT_NEAR(got[i], want.begin()[i], tol) << "element " << i;
}

// Matrix outputs write the whole array: no translation, bottom row 0, 0, 0, 1.
void expectAffinePartCleared(float const * m) {
    for (int i : {3, 7, 11, 12, 13, 14})
        EXPECT_EQ(m[i], 0.0f) << "element " << i;
    EXPECT_EQ(m[15], 1.0f);
}
} // namespace

TEST(RotationConversions, QuaternionToMatrixFollowsTheProductAndKeepsTheWwDiagonal) {
    float m[16], ma[16], mb[16], ab[4];
    float const a[4] = {0.5f, 0.5f, 0.5f, 0.5f}, b[4] = {0.6f, 0, 0.8f, 0}, two[4] = {2, 0, 0, 0};
    std::fill(m, m + 16, NaN);
    kernel()->quaternionToMatrix(m, two); // 2(w*w + x*x) - 1, not 1 - 2(y*y + z*z)
    expectNear(m, {7, 0, 0, 0, 0, 7, 0, 0, 0, 0, 7, 0, 0, 0, 0, 1}, 0.0f);
    kernel()->quaternionToMatrix(ma, a); // a third of a turn about (1,1,1): x -> y -> z -> x
    expectNear(ma, {0, 1, 0}, 0.0f);
    kernel()->quaternionToMatrix(mb, b);
    kernel()->multQuaternions(ab, a, b);
    kernel()->quaternionToMatrix(m, ab); // matrix of a b is matrix of a times matrix of b
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(m[4 * c + r],
                        ma[r] * mb[4 * c] + ma[r + 4] * mb[4 * c + 1] + ma[r + 8] * mb[4 * c + 2],
                        1e-6f);
}

TEST(RotationConversions, MatrixToQuaternionHalfTurnsPivotAndRoundTrip) {
    float q[4], m[16];
    float const quarterZ[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 9, 9, 9, 5};
    EXPECT_EQ(kernel()->RotMatrixToQuaternion(q, quarterZ), 0); // translation and row 3 ignored
    expectNear(q, {0.7071068f, 0, 0, 0.7071068f}, 1e-7f);
    // Half turns about x, y, z: the trace term is exactly 0 and the pivot's element is positive.
    for (int axis = 0; axis < 3; ++axis) {
        float h[16] = {-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1};
        h[5 * axis] = 1;
        kernel()->RotMatrixToQuaternion(q, h);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(q[i], i == axis + 1 ? 1.0f : 0.0f) << "axis " << axis << " element " << i;
    }
    // Half turn about (sqrt3/2, 0, -1/2): m[0] is the largest diagonal element, but m[10] > m[5]
    // makes z the pivot, so z comes out positive and x negative.
    float const c = -0.8660254f, tilted[16] = {0.5f, 0, c, 0, 0, -1, 0, 0, c, 0, -0.5f, 0};
    kernel()->RotMatrixToQuaternion(q, tilted);
    expectNear(q, {0, c, 0, 0.5f}, 0.0f);
    float const below[16] = {1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1.0f - 0x1p-23f}; // sum -2^-23
    kernel()->RotMatrixToQuaternion(q, below);
    EXPECT_TRUE(std::isnan(q[0]) && std::isnan(q[1]) && std::isnan(q[3]));

    float const samples[][4] = {
        {0.5f, 0.5f, 0.5f, 0.5f}, {-0.6f, 0, 0.8f, 0}, {0.36f, 0.48f, 0.8f, 0}};
    for (auto const & s : samples) {
        kernel()->quaternionToMatrix(m, s);
        kernel()->RotMatrixToQuaternion(q, m);
        float const sign = s[0] < 0 ? -1.0f : 1.0f;
        expectNear(q, {sign * s[0], sign * s[1], sign * s[2], sign * s[3]}, 1e-6f);
    }
}

TEST(RotationConversions, AxisAngleConversions) {
    float q[4], axis[3], angle, m[16];
    float const a122[3] = {1, 2, 2}, sh = std::sin(0.5f), ch = std::cos(0.5f);
    kernel()->axisToQuaternion(q, a122, 1.0f); // axis used as it stands
    expectNear(q, {ch, sh, 2 * sh, 2 * sh}, 1e-7f);
    kernel()->axisToQuaternionU(q, a122, 1.0f); // axis of length 3 normalised
    expectNear(q, {ch, sh / 3, 2 * sh / 3, 2 * sh / 3}, 1e-7f);
    float const atTol[3] = {1e-4f, 0, 0},
                above[3] = {1e-4f, 2.5e-8f, 0};  // |above| = 1.0000000006e-4
    kernel()->axisToQuaternionU(q, atTol, 2.0f); // the float 1e-4f is below 1e-4: the identity
    expectNear(q, {1, 0, 0, 0}, 0.0f);
    kernel()->axisToQuaternionU(q, above, PI_F); // compared unrounded: not the identity
    expectNear(q, {0, 1, 2.5e-4f, 0}, 1e-6f);

    float const id[4] = {1, 0, 0, 0}, minusId[4] = {-1, 0, 0, 0}, pastOne[4] = {1.5f, 0, 0, 1};
    for (float const * s : {id, minusId}) {
        axis[0] = axis[1] = axis[2] = angle = NaN;
        kernel()->quaternionToAxis(axis, &angle, s); // no turn: zero axis, angle 0
        expectNear(axis, {0, 0, 0}, 0.0f);
        EXPECT_EQ(angle, 0.0f);
    }
    float const q34[4] = {0, 0, 3, 4}, pastPi[4] = {-0.7071068f, 0, 0, 0.7071068f};
    kernel()->quaternionToAxis(axis, &angle, q34);
    expectNear(axis, {0, 0.6f, 0.8f}, 1e-7f);
    EXPECT_EQ(angle, PI_F);
    kernel()->quaternionToAxis(axis, &angle, pastPi); // negative w: angle above pi
    expectNear(axis, {0, 0, 1}, 0.0f);
    EXPECT_NEAR(angle, 1.5 * PI_D, 1e-6);
    kernel()->quaternionToAxis(axis, &angle, pastOne);
    EXPECT_TRUE(std::isnan(angle));

    float const identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(kernel()->matrixToAxis(axis, &angle, identity), 0);
    expectNear(axis, {0, 0, 0}, 0.0f);
    EXPECT_EQ(angle, 0.0f);
    float const unit[3] = {0.6f, 0, 0.8f}, z2[3] = {0, 0, 2};
    std::fill(m, m + 16, NaN);
    kernel()->axisToMatrix(m, unit, 2.0f);
    expectAffinePartCleared(m);
    kernel()->matrixToAxis(axis, &angle, m);
    expectNear(axis, {0.6f, 0, 0.8f}, 1e-6f);
    EXPECT_NEAR(angle, 2.0f, 1e-6f);
    kernel()->axisToMatrix(m, z2, HALF_PI_F); // not normalised: 2(1/2 + 2) - 1, no rotation
    EXPECT_NEAR(m[10], 4.0f, 1e-6f);
}

TEST(RotationConversions, EulerTriplesAndThePoles) {
    float m[16], n[16], q[4], e[3];
    // Rz Ry Rx: y goes to z under Rx(pi/2), then z to x under Ry(pi/2).
    float const xy[3] = {HALF_PI_F, HALF_PI_F, 0};
    std::fill(m, m + 16, NaN);
    kernel()->eulerToMatrix(m, xy);
    expectNear(m + 4, {1, 0, 0}, 1e-7f);
    expectAffinePartCleared(m);
    float const triples[][3] = {{0.4f, -0.3f, 2.5f}, {-2.9f, 1.2f, -0.7f}, {3.0f, -1.5f, 1.0f}};
    for (auto const & t : triples) {
        kernel()->eulerToMatrix(m, t);
        kernel()->eulerToQuaternion(q, t);
        kernel()->quaternionToMatrix(n, q);
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(n[i], m[i], 1e-6f) << "element " << i;
        EXPECT_EQ(kernel()->matrixToEuler(e, m), 0);
        expectNear(e, {t[0], t[1], t[2]}, 1e-5f);
    }
    // At the poles the whole turn about the common axis goes to e[2]: 0.3 - 0.4 and 0.3 + 0.4.
    float const up[3] = {0.4f, HALF_PI_F, 0.3f}, down[3] = {0.4f, -HALF_PI_F, 0.3f};
    for (auto const * t : {up, down}) {
        kernel()->eulerToMatrix(m, t);
        kernel()->matrixToEuler(e, m);
        EXPECT_EQ(e[0], 0.0f);
        EXPECT_EQ(e[1], t[1]);
        EXPECT_NEAR(e[2], t == up ? -0.1f : 0.7f, 1e-6f);
        kernel()->eulerToMatrix(n, e);
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(n[i], m[i], 1e-6f) << "element " << i;
    }
    // |m[2]| above 1: a NaN e[1], and the upper pole's branch (the lower one would give -pi).
    for (float m2 : {1.5f, -1.5f}) {
        float const bad[16] = {0, 1, m2, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1};
        kernel()->matrixToEuler(e, bad);
        EXPECT_TRUE(std::isnan(e[1]) && e[0] == 0.0f && e[2] == 0.0f) << m2;
    }
}

namespace {
// Inner operations that leave a trace and record what they received.
class TracingRotKernel : public EnhancedMathFunctions {
public:
    static inline std::string trace;
    static inline float seen[16];
    static inline float const * seenPtr;
    void axisToQuaternion(float * const dst, float const * const axis, float a) const override {
        trace += 'A';
        EnhancedMathFunctions::axisToQuaternion(dst, axis, a);
        for (int i = 0; i < 4; ++i)
            dst[i] = -dst[i]; // same rotation, other sign
    }
    void quaternionToMatrix(float * const dst, float const * const q) const override {
        trace += 'M';
        std::copy(q, q + 4, seen);
        float const quarterZ[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        std::copy(quarterZ, quarterZ + 16, dst);
    }
    int RotMatrixToQuaternion(float * const dst, float const * const m) const override {
        trace += 'R';
        seenPtr = m;
        dst[0] = 0, dst[1] = 0, dst[2] = 0, dst[3] = 1; // half turn about z
        return 5;
    }
    void quaternionToAxis(float * const axis, float * angle, float const * const q) const override {
        trace += 'X';
        std::copy(q, q + 4, seen);
        EnhancedMathFunctions::quaternionToAxis(axis, angle, q);
    }
    int matrixToEuler(float * euler, float const * const m) const override {
        trace += 'E';
        std::copy(m, m + 16, seen);
        EnhancedMathFunctions::matrixToEuler(euler, m);
        return 7;
    }
};

class RotationConversionsDerived : public ::testing::Test {
protected:
    void SetUp() override { (new TracingRotKernel())->setDefault(); }
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
};
} // namespace

TEST_F(RotationConversionsDerived, CompositesReachTheirStepsThroughTheTableInOrder) {
    float m[16], axis[3], angle, e[3];
    float const z[3] = {0, 0, 1}, q[4] = {0.6f, 0.8f, 0, 0};
    TracingRotKernel::trace.clear();
    kernel()->axisToMatrix(m, z, HALF_PI_F);
    expectNear(TracingRotKernel::seen, {-0.7071068f, 0, 0, -0.7071068f}, 1e-7f);
    expectNear(m, {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1}, 0.0f);
    EXPECT_EQ(kernel()->matrixToAxis(axis, &angle, m), 0);
    EXPECT_EQ(TracingRotKernel::seenPtr, m);
    expectNear(TracingRotKernel::seen, {0, 0, 0, 1}, 0.0f);
    expectNear(axis, {0, 0, 1}, 0.0f);
    EXPECT_EQ(angle, PI_F);
    kernel()->quaternionToEuler(e, q); // the override's quarter turn about z
    expectNear(TracingRotKernel::seen, {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1}, 0.0f);
    expectNear(e, {0, 0, HALF_PI_F}, 0.0f);
    EXPECT_EQ(TracingRotKernel::trace, "AMRXME");
}
