// Rotation conversions: hand-checked rotations, half turns and poles, round trips up to rounding.
#include "support/TestSupport.h"

#include "kdrcore/types/Scalar.h"

using namespace kdrtest;

TEST(RotationConversions, QuaternionToMatrixFollowsTheProductAndKeepsTheWwDiagonal) {
    float m[16], ma[16], mb[16], ab[4];
    float const a[4] = {0.5f, 0.5f, 0.5f, 0.5f}, b[4] = {0.6f, 0, 0.8f, 0}, two[4] = {2, 0, 0, 0};
    kernel().quaternionToMatrix(m, two); // 2(w*w + x*x) - 1, not 1 - 2(y*y + z*z)
    EXPECT_TRUE(elems(m, {7, 0, 0, 0, 0, 7, 0, 0, 0, 0, 7, 0, 0, 0, 0, 1}));
    kernel().quaternionToMatrix(ma, a); // a third of a turn about (1,1,1): x -> y -> z -> x
    EXPECT_TRUE(elems(ma, {0, 1, 0}));
    kernel().quaternionToMatrix(mb, b);
    kernel().multQuaternions(ab, a, b);
    kernel().quaternionToMatrix(m, ab); // matrix of a b is matrix of a times matrix of b
    Mat const want = product(toDoubles(ma), toDoubles(mb));
    for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10})
        EXPECT_NEAR(m[i], want[i], 1e-6) << i;
}

TEST(RotationConversions, MatrixToQuaternionHalfTurnsPivotAndRoundTrip) {
    float q[4], m[16];
    float const quarterZ[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 9, 9, 9, 5};
    EXPECT_EQ(kernel().RotMatrixToQuaternion(q, quarterZ), 0); // translation and row 3 ignored
    EXPECT_TRUE(elems(q, {0.7071068, 0, 0, 0.7071068}, 1e-7));
    // Half turns about x, y, z: the trace term is exactly 0 and the pivot's element is positive.
    for (int axis = 0; axis < 3; ++axis) {
        float h[16] = {-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1};
        h[5 * axis] = 1;
        kernel().RotMatrixToQuaternion(q, h);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(q[i], i == axis + 1 ? 1.0f : 0.0f) << "axis " << axis << " element " << i;
    }
    // Half turn about (sqrt3/2, 0, -1/2): m[0] is the largest diagonal element, but m[10] > m[5]
    // makes z the pivot, so z comes out positive and x negative.
    float const c = -0.8660254f, tilted[16] = {0.5f, 0, c, 0, 0, -1, 0, 0, c, 0, -0.5f, 0};
    kernel().RotMatrixToQuaternion(q, tilted);
    EXPECT_TRUE(elems(q, {0, c, 0, 0.5}));
    // Half turn about (1, 1, 0) / sqrt2: x is the pivot and y comes from m[1] + m[4].
    float const diagonal[16] = {0, 1, 0, 0, 1, 0, 0, 0, 0, 0, -1, 0};
    kernel().RotMatrixToQuaternion(q, diagonal);
    EXPECT_TRUE(elems(q, {0, 0.7071068, 0.7071068, 0}, 1e-7));
    float const below[16] = {1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1.0f - 0x1p-23f}; // sum -2^-23
    kernel().RotMatrixToQuaternion(q, below);
    EXPECT_TRUE(std::isnan(q[0]) && std::isnan(q[1]) && std::isnan(q[3]));

    // A round trip comes back up to the sign, which the positive scalar part fixes; exact here.
    float const third[4] = {-0.5f, 0.5f, -0.5f, 0.5f};
    kernel().quaternionToMatrix(m, third);
    kernel().RotMatrixToQuaternion(q, m);
    EXPECT_TRUE(elems(q, {0.5, -0.5, 0.5, -0.5}));
}

TEST(RotationConversions, AxisAngleConversions) {
    float q[4], axis[3], angle, m[16];
    float const a122[3] = {1, 2, 2}, sh = std::sin(0.5f), ch = std::cos(0.5f);
    kernel().axisToQuaternion(q, a122, 1.0f); // axis used as it stands
    EXPECT_TRUE(elems(q, {ch, sh, 2 * sh, 2 * sh}, 1e-7));
    kernel().axisToQuaternionU(q, a122, 1.0f); // axis of length 3 normalised
    EXPECT_TRUE(elems(q, {ch, sh / 3, 2 * sh / 3, 2 * sh / 3}, 1e-7));
    // The float 1e-4f is below the double 1e-4: the identity. |above| = 1.0000000006e-4 is not.
    float const atTol[3] = {1e-4f, 0, 0}, above[3] = {1e-4f, 2.5e-8f, 0};
    kernel().axisToQuaternionU(q, atTol, 2.0f);
    EXPECT_TRUE(elems(q, {1, 0, 0, 0}));
    kernel().axisToQuaternionU(q, above, PI_F);
    EXPECT_TRUE(elems(q, {0, 1, 2.5e-4, 0}, 1e-6));

    // No turn gives the zero axis and angle 0, also for w = -1, whose acos would give 2 pi.
    float const id[4] = {1, 0, 0, 0}, minusId[4] = {-1, 0, 0, 0};
    for (float const * s : {id, minusId}) {
        axis[0] = axis[1] = axis[2] = angle = NAN;
        kernel().quaternionToAxis(axis, &angle, s);
        EXPECT_TRUE(elems(axis, {0, 0, 0}));
        EXPECT_EQ(angle, 0.0f);
    }
    float const pastPi[4] = {-0.7071068f, 0, 0, 0.7071068f}, pastOne[4] = {1.5f, 0, 0, 1};
    kernel().quaternionToAxis(axis, &angle, pastPi); // negative w: angle above pi
    EXPECT_TRUE(elems(axis, {0, 0, 1}));
    EXPECT_NEAR(angle, 1.5 * PI_D, 1e-6);
    kernel().quaternionToAxis(axis, &angle, pastOne);
    EXPECT_TRUE(std::isnan(angle));

    float const unit[3] = {0.6f, 0, 0.8f}, z2[3] = {0, 0, 2};
    kernel().axisToMatrix(m, unit, 2.0f);
    EXPECT_EQ(kernel().matrixToAxis(axis, &angle, m), 0);
    EXPECT_TRUE(elems(axis, {0.6, 0, 0.8}, 1e-6));
    EXPECT_NEAR(angle, 2.0f, 1e-6f);
    kernel().axisToMatrix(m, z2, HALF_PI_F); // not normalised: 2(1/2 + 2) - 1, no rotation
    EXPECT_NEAR(m[10], 4.0f, 1e-6f);
}

TEST(RotationConversions, EulerTriplesAndThePoles) {
    float m[16], n[16], q[4], e[3];
    // Rz Ry Rx: y goes to z under Rx(pi/2), then z to x under Ry(pi/2); x goes to -z, z to -y.
    float const xy[3] = {HALF_PI_F, HALF_PI_F, 0};
    kernel().eulerToMatrix(m, xy);
    EXPECT_TRUE(elems(m, {0, 0, -1, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 0, 1}, 1e-7));
    float const triples[][3] = {{0.4f, -0.3f, 2.5f}, {-2.9f, 1.2f, -0.7f}, {3.0f, -1.5f, 1.0f}};
    for (auto const & t : triples) {
        kernel().eulerToMatrix(m, t);
        kernel().eulerToQuaternion(q, t);
        kernel().quaternionToMatrix(n, q);
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(n[i], m[i], 1e-6f) << "element " << i;
        EXPECT_EQ(kernel().matrixToEuler(e, m), 0);
        EXPECT_TRUE(elems(e, {t[0], t[1], t[2]}, 1e-5));
    }
    // At the poles the whole turn about the common axis goes to e[2]: 0.3 - 0.4 and 0.3 + 0.4.
    float const up[3] = {0.4f, HALF_PI_F, 0.3f}, down[3] = {0.4f, -HALF_PI_F, 0.3f};
    for (auto const * t : {up, down}) {
        kernel().eulerToMatrix(m, t);
        kernel().matrixToEuler(e, m);
        EXPECT_TRUE(elems(e, {0, t[1], t == up ? -0.1 : 0.7}, 1e-6));
        EXPECT_TRUE(e[0] == 0.0f && e[1] == t[1]);
        kernel().eulerToMatrix(n, e);
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(n[i], m[i], 1e-6f) << "element " << i;
    }
    // |m[2]| above 1: a NaN e[1], and the upper pole's branch (the lower one would give -pi).
    for (float m2 : {1.5f, -1.5f}) {
        float const bad[16] = {0, 1, m2, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1};
        kernel().matrixToEuler(e, bad);
        EXPECT_TRUE(std::isnan(e[1]) && e[0] == 0.0f && e[2] == 0.0f) << m2;
    }
}
