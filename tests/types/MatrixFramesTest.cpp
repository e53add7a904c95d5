// MatrixFramesTest.cpp - rotation and frame builders of MatRot4f and MatAff4f
#include "types/RecordingKernel.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Quaternion.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

using Ops = std::vector<std::string>;

void expectNear(Vector3f const & v, float x, float y, float z, float tol = 1e-6f) {
    EXPECT_NEAR(v.x(), x, tol);
    EXPECT_NEAR(v.y(), y, tol);
    EXPECT_NEAR(v.z(), z, tol);
}

void expectMatrix(Mat4fBase const & m, std::vector<float> const & expected) {
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.getValue()[i], expected[static_cast<std::size_t>(i)]) << "element " << i;
}

// A recognisable matrix to prove that a failing call leaves its object alone.
MatRot4f sentinel() {
    MatRot4f m;
    m.setFromXYZ2Axis(Vector3f(0, 1, 0), Vector3f(-1, 0, 0), Vector3f(0, 0, 1), Vector3f(7, 8, 9));
    return m;
}

} // namespace

TEST(MatRot4fFrames, FromToRotationAndItsParallelCases) {
    Vector3f const origin(1, 2, 3);
    MatRot4f const translation = [&] {
        MatRot4f t;
        t.setFromXYZ2Axis(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(0, 0, 1), origin);
        return t;
    }();

    // Equal directions: a pure translation, exactly.
    MatRot4f same;
    same.setValue(Vector3f(1, 2, 2), Vector3f(2, 4, 4), origin);
    EXPECT_TRUE(same.equals(translation, 0.0f));

    // Opposite: a half turn about (0,1,0) x (1,0,0) = (0,0,-1), translation kept.
    MatRot4f opposite(Vector3f(1, 0, 0), Vector3f(-1, 0, 0), origin);
    expectNear(opposite * Vector3f(1, 0, 0), 0, 2, 3);
    expectNear(opposite * Vector3f(0, 1, 0), 1, 1, 3);
    expectNear(opposite * Vector3f(0, 0, 1), 1, 2, 4);

    // The general case, with directions of any length.
    MatRot4f quarter(Vector3f(3, 0, 0), Vector3f(0, 0.5f, 0), Vector3f());
    expectNear(quarter * Vector3f(1, 0, 0), 0, 1, 0);
    expectNear(quarter * Vector3f(0, 0, 1), 0, 0, 1);

    // The threshold is on the raw cross product: orthogonal vectors of length 0.001 give
    // |c|^2 = 1e-12 and count as parallel at pi/2, which is no rotation.
    MatRot4f tiny;
    tiny.setValue(Vector3f(0.001f, 0, 0), Vector3f(0, 0.001f, 0), origin);
    EXPECT_TRUE(tiny.equals(translation, 0.0f));
    // Lengths 0.01 and 0.1 give |c|^2 = 1e-6, above it: a real quarter turn.
    MatRot4f small;
    small.setValue(Vector3f(0.01f, 0, 0), Vector3f(0, 0.1f, 0), Vector3f());
    expectNear(small * Vector3f(1, 0, 0), 0, 1, 0);
    // Nearly opposite short vectors: a half turn, whatever their small cross product.
    MatRot4f flip;
    flip.setValue(Vector3f(0.001f, 0, 0), Vector3f(-0.001f, 0.00001f, 0), Vector3f());
    expectNear(flip * Vector3f(1, 0, 0), -1, 0, 0);

    // The other builders agree on a quarter turn about z.
    MatRot4f byAxis(Vector3f(0, 0, 5), HALF_PI_F, Vector3f(1, 2, 3));
    MatRot4f byEuler(0, 0, HALF_PI_F, Vector3f(1, 2, 3));
    MatRot4f byQuat;
    byQuat.setValue(Quaternion(Vector3f(0, 0, 1), HALF_PI_F), Vector3f(1, 2, 3));
    for (MatRot4f const * m : {&byAxis, &byEuler, &byQuat}) {
        expectNear(*m * Vector3f(1, 0, 0), 1, 3, 3);
        expectNear(*m * Vector3f(0, 0, 0), 1, 2, 3);
    }
    // A zero axis gives no rotation.
    MatRot4f none(Vector3f(0, 0, 0), 1.0f, Vector3f(1, 2, 3));
    EXPECT_TRUE(none.equals(translation, 0.0f));

    float e[3];
    MatRot4f(0.3f, -0.2f, 0.1f, Vector3f()).getEuler(e);
    EXPECT_NEAR(e[0], 0.3f, 1e-6f);
    EXPECT_NEAR(e[1], -0.2f, 1e-6f);
    EXPECT_NEAR(e[2], 0.1f, 1e-6f);
    float e0 = 0, e1 = 0, e2 = 0;
    byEuler.getEuler(e0, e1, e2);
    EXPECT_EQ(e0, 0.0f);
    EXPECT_NEAR(e2, HALF_PI_F, 1e-6f);
}

using MatRot4fFramesKernel = RecordingKernelTest;

TEST_F(MatRot4fFramesKernel, FromToRotationCallsPerCase) {
    MatRot4f m;
    clearLog();
    m.setValue(Vector3f(1, 0, 0), Vector3f(2, 0, 0), Vector3f(1, 2, 3));
    EXPECT_EQ(ops(), (Ops{"cross", "setTranslate"}));
    clearLog();
    m.setValue(Vector3f(1, 0, 0), Vector3f(-2, 0, 0), Vector3f(1, 2, 3));
    // findOrthogonalVector's cross, then the axis-angle form.
    EXPECT_EQ(ops(),
              (Ops{"cross", "cross", "axisToQuaternionU", "quaternionToMatrix", "copyVec3fTo"}));
    clearLog();
    m.setValue(Vector3f(1, 0, 0), Vector3f(0, 2, 0), Vector3f(1, 2, 3));
    EXPECT_EQ(ops(), (Ops{"cross", "axisToQuaternionU", "quaternionToMatrix", "copyVec3fTo"}));
    EXPECT_EQ(call(3).arg0, m.getValue() + 12);
}

TEST(MatRot4fFrames, FramesAndTheirInverses) {
    // An orthonormal frame with exact components, and an origin.
    Vector3f const x(0.6f, 0.8f, 0), y(-0.8f, 0.6f, 0), z(0, 0, 1), o(1, 2, 3);
    MatRot4f toFrame, fromFrame;
    toFrame.setFromXYZ2Axis(x, y, z, o);
    fromFrame.setFromAxis2XYZ(x, y, z, o);
    // Columns stored unchanged.
    expectMatrix(toFrame, {0.6f, 0.8f, 0, 0, -0.8f, 0.6f, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
    EXPECT_TRUE((fromFrame * toFrame).equals(Mat4fBase::m_identity, 1e-6f));
    EXPECT_TRUE((toFrame * fromFrame).equals(Mat4fBase::m_identity, 1e-6f));
    // The origin goes to zero, origin + x to the first axis.
    expectNear(fromFrame * o, 0, 0, 0);
    expectNear(fromFrame * Vector3f(1.6f, 2.8f, 3), 1, 0, 0);

    // From frame 1 to frame 2: a point given in frame 1's axes lands on the same coordinates in
    // frame 2's axes.
    Vector3f const x2(0, 1, 0), y2(0, 0, 1), z2(1, 0, 0), o2(-1, 0, 5);
    MatRot4f both;
    both.setFromAxis2Axis(x, y, z, x2, y2, z2, o, o2);
    expectNear(both * o, -1, 0, 5);
    expectNear(both * Vector3f(1.6f, 2.8f, 3), -1, 1, 5); // o + x -> o2 + x2
    expectNear(both * Vector3f(0.2f, 2.6f, 3), -1, 0, 6); // o + y -> o2 + y2

    // setFromTo: fromPoint goes to toPoint, and directions turn about it.
    MatRot4f ft;
    Vector3f const fromPoint(1, 1, 1), toPoint(4, 5, 6);
    ft.setFromTo(Vector3f(1, 0, 0), Vector3f(0, 1, 0), fromPoint, toPoint);
    expectNear(ft * fromPoint, 4, 5, 6);
    expectNear(ft * Vector3f(2, 1, 1), 4, 6, 6);
}

TEST(MatRot4fFrames, RotationsAroundACenterKeepItFixed) {
    Vector3f const c(1, 1, 0);
    MatRot4f byAxis, byEuler, byDirs;
    byAxis.setRotateAround(Vector3f(0, 0, 1), HALF_PI_F, c);
    byEuler.setRotateAround(0, 0, HALF_PI_F, c);
    byDirs.setRotateAround(Vector3f(1, 0, 0), Vector3f(0, 1, 0), c);
    MatAff4f aff;
    aff.setRotateAround(Vector3f(0, 0, 2), HALF_PI_F, c);
    for (MatAff4fBase const * m :
         {static_cast<MatAff4fBase const *>(&byAxis), static_cast<MatAff4fBase const *>(&byEuler),
          static_cast<MatAff4fBase const *>(&byDirs), static_cast<MatAff4fBase const *>(&aff)}) {
        expectNear(*m * c, 1, 1, 0);
        expectNear(*m * Vector3f(2, 1, 0), 1, 2, 0); // c + x -> c + y
    }

    MatAff4f s;
    s.setScaleAround(Vector3f(2, 3, 4), Vector3f(1, 1, 1));
    expectMatrix(s, {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, -1, -2, -3, 1});
}

TEST(MatRot4fFrames, SetFromMatrix4fTestsTheRotationBlock) {
    // An identity with a translation: taken over whole.
    Matrix4f moved(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 4, 5, 6, 1);
    MatRot4f r = sentinel();
    EXPECT_TRUE(r.setFromMatrix4f(moved));
    EXPECT_TRUE(r.equals(moved, 0.0f));

    // A uniform scale by 2 is no rotation: object unchanged.
    r = sentinel();
    EXPECT_FALSE(r.setFromMatrix4f(Matrix4f(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1)));
    EXPECT_TRUE(r.equals(sentinel(), 0.0f));

    // The test is on m m' within the float 1e-4: 1.00004^2 passes, 1.00006^2 does not.
    EXPECT_TRUE(r.setFromMatrix4f(Matrix4f(1.00004f, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)));
    EXPECT_EQ(r.getValue()[0], 1.00004f);
    r = sentinel();
    EXPECT_FALSE(
        r.setFromMatrix4f(Matrix4f(1.00006f, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)));
    EXPECT_TRUE(r.equals(sentinel(), 0.0f));

    // A reflection passes: the determinant's sign is not looked at.
    EXPECT_TRUE(r.setFromMatrix4f(Matrix4f(-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)));
    EXPECT_EQ(r.getValue()[0], -1.0f);

    // m[15] = 0 fails; m[15] = 2 with an orthonormal block passes and lands as it is, as does a
    // projective term in the bottom row.
    r = sentinel();
    EXPECT_FALSE(r.setFromMatrix4f(Matrix4f(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0)));
    EXPECT_TRUE(r.equals(sentinel(), 0.0f));
    EXPECT_TRUE(r.setFromMatrix4f(Matrix4f(0, 1, 0, 0.5f, -1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 2)));
    expectMatrix(r, {0, 1, 0, 0.5f, -1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 2});
}

TEST(MatAff4fBuilders, ScaleAlongADirection) {
    MatAff4f m;
    m.getValue()[12] = 5.0f; // overwritten with the rest
    m.setScale(Vector3f(2, 0, 0), 3.0f);
    expectMatrix(m, {3, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    m.setScale(Vector3f(0, 1, 0), 3.0f);
    EXPECT_TRUE(m.equals(MatAff4f::scale(Vector3f(1, 3, 1)), 1e-6f));
    m.setScale(Vector3f(0, 0, 0), 3.0f); // a zero direction scales along x
    EXPECT_TRUE(m.equals(MatAff4f::scale(Vector3f(3, 1, 1)), 0.0f));
    // Along the diagonal (1, 1, 0): that direction is tripled, (1, -1, 0) and z are kept.
    m.setScale(Vector3f(1, 1, 0), 3.0f);
    expectNear(m * Vector3f(1, 1, 0), 3, 3, 0, 1e-5f);
    expectNear(m * Vector3f(1, -1, 0), 1, -1, 0, 1e-5f);
    expectNear(m * Vector3f(0, 0, 1), 0, 0, 1, 1e-5f);
}

TEST(MatAff4fBuilders, BasesViewportsAndFactories) {
    MatAff4f b;
    b.setBase(Vector3f(1, 2, 3), Vector3f(4, 5, 6), Vector3f(7, 8, 9), Vector3f(10, 11, 12));
    expectMatrix(b, {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 1});

    MatAff4f v;
    v.setNormalized2Viewport(Vector2s(640, 480));
    expectNear(v * Vector3f(-1, -1, -1), 0, 0, 0, 0);
    expectNear(v * Vector3f(1, 1, 1), 640, 480, 1, 0);
    expectNear(v * Vector3f(0, 0, 0), 320, 240, 0.5f, 0);
    EXPECT_EQ(v.getValue()[15], 1.0f);

    MatAff4f r;
    r.setRotate(0, 0, HALF_PI_F);
    expectNear(r * Vector3f(1, 0, 0), 0, 1, 0);
    EXPECT_EQ(r.getValue()[12], 0.0f);

    expectMatrix(MatAff4f::translate(Vector3f(1, 2, 3)),
                 {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
    expectMatrix(MatAff4f::scale(Vector3f(1, 2, 3)),
                 {1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 1});
    EXPECT_TRUE(MatAff4f::identity().equals(Mat4fBase::m_identity, 0.0f));
}
