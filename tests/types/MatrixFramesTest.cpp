// MatrixFramesTest.cpp - rotation and frame builders of MatRot4f and MatAff4f
#include "types/RecordingKernel.h"

#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Quaternion.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

void expectNear(Vector3f const & v, float x, float y, float z, float tol = 1e-6f) {
    EXPECT_NEAR(v.x(), x, tol);
    EXPECT_NEAR(v.y(), y, tol);
    EXPECT_NEAR(v.z(), z, tol);
}

MatRot4f frame(Vector3f const & x, Vector3f const & y, Vector3f const & z, Vector3f const & o) {
    MatRot4f m;
    m.setFromXYZ2Axis(x, y, z, o);
    return m;
}

MatRot4f translation(Vector3f const & o) {
    return frame(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(0, 0, 1), o);
}

} // namespace

TEST(MatRot4fFrames, FromToRotationAndItsParallelCases) {
    Vector3f const o(1, 2, 3), none;
    MatRot4f m;
    m.setValue(Vector3f(1, 2, 2), Vector3f(2, 4, 4), o); // same way: a pure translation
    EXPECT_TRUE(m.equals(translation(o), 0.0f));
    // Opposite: a half turn about (0,1,0) x (1,0,0) = (0,0,-1).
    m.setValue(Vector3f(1, 0, 0), Vector3f(-1, 0, 0), o);
    expectNear(m * Vector3f(1, 0, 0), 0, 2, 3);
    expectNear(m * Vector3f(0, 1, 0), 1, 1, 3);
    expectNear(m * Vector3f(0, 0, 1), 1, 2, 4);
    MatRot4f const q(Vector3f(3, 0, 0), Vector3f(0, 0.5f, 0), none); // any lengths
    expectNear(q * Vector3f(1, 0, 0), 0, 1, 0);
    // The threshold is on the raw cross product: lengths 0.001 give |c|^2 = 1e-12, parallel at
    // pi/2, so no rotation; lengths 0.01 and 0.1 give 1e-6 and a real quarter turn.
    m.setValue(Vector3f(0.001f, 0, 0), Vector3f(0, 0.001f, 0), o);
    EXPECT_TRUE(m.equals(translation(o), 0.0f));
    m.setValue(Vector3f(0.01f, 0, 0), Vector3f(0, 0.1f, 0), none);
    expectNear(m * Vector3f(1, 0, 0), 0, 1, 0);
    m.setValue(Vector3f(0.001f, 0, 0), Vector3f(-0.001f, 0.00001f, 0), none); // nearly opposite
    expectNear(m * Vector3f(1, 0, 0), -1, 0, 0);

    // The other forms agree on a quarter turn about z; a zero axis is no rotation.
    MatRot4f byQuat;
    byQuat.setValue(Quaternion(Vector3f(0, 0, 1), HALF_PI_F), o);
    for (MatRot4f const & r :
         {MatRot4f(Vector3f(0, 0, 5), HALF_PI_F, o), MatRot4f(0, 0, HALF_PI_F, o), byQuat})
        expectNear(r * Vector3f(1, 0, 0), 1, 3, 3);
    EXPECT_TRUE(MatRot4f(Vector3f(), 1.0f, o).equals(translation(o), 0.0f));
    float e[3], e0, e1, e2;
    MatRot4f const euler(0.3f, -0.2f, 0.1f, o);
    euler.getEuler(e);
    euler.getEuler(e0, e1, e2);
    expectNear(Vector3f(e), 0.3f, -0.2f, 0.1f);
    expectNear(Vector3f(e0, e1, e2), 0.3f, -0.2f, 0.1f);
}

using MatRot4fFramesKernel = RecordingKernelTest;

TEST_F(MatRot4fFramesKernel, FromToRotationCallsPerCase) {
    MatRot4f m;
    Vector3f const x(1, 0, 0), o(1, 2, 3);
    EXPECT_EQ(trace([&] { m.setValue(x, Vector3f(2, 0, 0), o); }), "cross setTranslate");
    // Opposite: findOrthogonalVector's cross, then the axis-angle form.
    EXPECT_EQ(trace([&] { m.setValue(x, Vector3f(-2, 0, 0), o); }),
              "cross cross axisToQuaternionU quaternionToMatrix copyVec3fTo");
    EXPECT_EQ(trace([&] { m.setValue(x, Vector3f(0, 2, 0), o); }),
              "cross axisToQuaternionU quaternionToMatrix copyVec3fTo");
    EXPECT_EQ(call(0).args[1], x.getValue());
    EXPECT_EQ(call(3).args[0], m.getValue() + 12);
}

TEST(MatRot4fFrames, FramesAndRotationsAroundAPoint) {
    // An orthonormal frame with exact components.
    Vector3f const x(0.6f, 0.8f, 0), y(-0.8f, 0.6f, 0), z(0, 0, 1), o(1, 2, 3);
    MatRot4f const to = frame(x, y, z, o);
    MatRot4f from;
    from.setFromAxis2XYZ(x, y, z, o);
    EXPECT_TRUE((from * to).equals(Mat4fBase::m_identity, 1e-6f));
    expectNear(from * Vector3f(1.6f, 2.8f, 3), 1, 0, 0); // o + x
    // Frame 1 to frame 2: coordinates in frame 1's axes land on the same ones in frame 2's.
    MatRot4f both;
    both.setFromAxis2Axis(x, y, z, Vector3f(0, 1, 0), Vector3f(0, 0, 1), Vector3f(1, 0, 0), o,
                          Vector3f(-1, 0, 5));
    expectNear(both * o, -1, 0, 5);
    expectNear(both * Vector3f(1.6f, 2.8f, 3), -1, 1, 5);
    expectNear(both * Vector3f(0.2f, 2.6f, 3), -1, 0, 6);
    MatRot4f ft;
    ft.setFromTo(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(1, 1, 1), Vector3f(4, 5, 6));
    expectNear(ft * Vector3f(1, 1, 1), 4, 5, 6);
    expectNear(ft * Vector3f(2, 1, 1), 4, 6, 6);

    // Every form of rotation around c keeps c and turns c + x to c + y.
    Vector3f const c(1, 1, 0);
    MatRot4f r1, r2, r3;
    MatAff4f r4;
    r1.setRotateAround(Vector3f(0, 0, 1), HALF_PI_F, c);
    r2.setRotateAround(0, 0, HALF_PI_F, c);
    r3.setRotateAround(Vector3f(1, 0, 0), Vector3f(0, 1, 0), c);
    r4.setRotateAround(Vector3f(0, 0, 2), HALF_PI_F, c);
    for (MatAff4f const & r : {MatAff4f(r1), MatAff4f(r2), MatAff4f(r3), r4}) {
        expectNear(r * c, 1, 1, 0);
        expectNear(r * Vector3f(2, 1, 0), 1, 2, 0);
    }
    MatAff4f s;
    s.setScaleAround(Vector3f(2, 3, 4), Vector3f(1, 1, 1));
    expectNear(s * Vector3f(1, 1, 1), 1, 1, 1, 0);
    expectNear(s * Vector3f(2, 2, 2), 3, 4, 5, 0);
}

TEST(MatRot4fFrames, SetFromMatrix4fTestsTheRotationBlock) {
    MatRot4f const before =
        frame(Vector3f(0, 1, 0), Vector3f(-1, 0, 0), Vector3f(0, 0, 1), Vector3f(7, 8, 9));
    auto take = [&](Matrix4f const & m) {
        MatRot4f r(before);
        bool const ok = r.setFromMatrix4f(m);
        EXPECT_TRUE(r.equals(ok ? m : before, 0.0f)) << "all of m on success, nothing on failure";
        return ok;
    };
    EXPECT_TRUE(take(Matrix4f(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 4, 5, 6, 1))); // translation
    EXPECT_FALSE(take(Matrix4f(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1)));
    // m m' is compared within the float 1e-4: 1.00004^2 passes, 1.00006^2 does not.
    EXPECT_TRUE(take(Matrix4f(1.00004f, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)));
    EXPECT_FALSE(take(Matrix4f(1.00006f, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)));
    EXPECT_TRUE(take(Matrix4f(-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1))); // reflection
    EXPECT_FALSE(take(Matrix4f(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0)));
    // m[15] = 2 and a projective term pass the test and are taken as they are.
    EXPECT_TRUE(take(Matrix4f(0, 1, 0, 0.5f, -1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 2)));
}

TEST(MatAff4fBuilders, ScalingsViewportAndFactories) {
    MatAff4f m = MatAff4f::translate(Vector3f(5, 5, 5)); // overwritten whole
    m.setScale(Vector3f(2, 0, 0), 3.0f);
    EXPECT_TRUE(m.equals(MatAff4f::scale(Vector3f(3, 1, 1)), 0.0f));
    m.setScale(Vector3f(0, 1, 0), 3.0f);
    EXPECT_TRUE(m.equals(MatAff4f::scale(Vector3f(1, 3, 1)), 1e-6f));
    m.setScale(Vector3f(), 3.0f); // a zero direction scales along x
    EXPECT_TRUE(m.equals(MatAff4f::scale(Vector3f(3, 1, 1)), 0.0f));
    m.setScale(Vector3f(1, 1, 0), 3.0f);
    expectNear(m * Vector3f(1, 1, 0), 3, 3, 0, 1e-5f);
    expectNear(m * Vector3f(1, -1, 1), 1, -1, 1, 1e-5f);

    m.setNormalized2Viewport(Vector2s(640, 480));
    expectNear(m * Vector3f(-1, -1, -1), 0, 0, 0, 0);
    expectNear(m * Vector3f(1, 1, 1), 640, 480, 1, 0);
    expectNear(m * Vector3f(), 320, 240, 0.5f, 0);
    m.setRotate(0, 0, HALF_PI_F);
    expectNear(m * Vector3f(1, 0, 0), 0, 1, 0);
    m.setBase(Vector3f(1, 2, 3), Vector3f(4, 5, 6), Vector3f(7, 8, 9), Vector3f(1, 1, 1));
    expectNear(m * Vector3f(1, 1, 1), 13, 16, 19, 0);
    EXPECT_TRUE(MatAff4f::identity().equals(Mat4fBase::m_identity, 0.0f));
}
