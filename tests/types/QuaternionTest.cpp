// QuaternionTest.cpp - the Quaternion value class: construction, conversions and algebra
#include "kdrcore/types/Quaternion.h"

#include "types/RecordingKernel.h"

#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

// The class has no constructor from four elements: write the storage getValue() points to.
Quaternion make(float w, float x, float y, float z) {
    Quaternion q;
    float * e = const_cast<float *>(q.getValue());
    e[0] = w;
    e[1] = x;
    e[2] = y;
    e[3] = z;
    return q;
}

void expectQuat(Quaternion const & q, Quaternion const & r, float tol = 1e-6f) {
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(q.getValue()[i], r.getValue()[i], tol) << "element " << i;
}

float const H = 0.70710678f; // cos and sin of pi/4: a quarter turn about z is (H, 0, 0, H)

} // namespace

static_assert(sizeof(Quaternion) == 16, "four floats and nothing else");

TEST(Quaternion, IdentityStartAndNormalize) {
    expectQuat(Quaternion(), make(1, 0, 0, 0), 0);
    EXPECT_EQ(Quaternion().norm(), 1.0f);
    Quaternion v = make(0, 3, 0, 4);
    EXPECT_EQ(v.normalize(), 5.0f);
    expectQuat(v, make(0, 0.6f, 0, 0.8f), 0);
    Quaternion zero = make(0, 0, 0, 0); // no zero test: NaN, and the length 0
    EXPECT_EQ(zero.normalize(), 0.0f);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(std::isnan(zero.getValue()[i])) << "element " << i;
}

TEST(Quaternion, AxisEulerMatrixAndFromToForms) {
    Quaternion const quarter = make(H, 0, 0, H);
    expectQuat(Quaternion(Vector3f(0, 0, 2), HALF_PI_F), quarter);
    expectQuat(Quaternion(Vector3f(), -3.0f), Quaternion(), 0); // a zero axis: the identity
    Quaternion const e(0, 0, HALF_PI_F);
    expectQuat(e, quarter);
    float e0, e1, e2;
    Quaternion(0.3f, -0.2f, 0.1f).getValue(e0, e1, e2);
    EXPECT_NEAR(e0, 0.3f, 1e-6f);
    EXPECT_NEAR(e1, -0.2f, 1e-6f);
    EXPECT_NEAR(e2, 0.1f, 1e-6f);

    MatRot4f m(Vector3f(0, 0, 1), HALF_PI_F, Vector3f(1, 2, 3));
    expectQuat(Quaternion(m), quarter);
    Quaternion g;
    g.setValue(m);
    expectQuat(g, quarter);
    make(H, H, 0, 0).getValue(m); // a quarter turn about x, and no translation any more
    Vector3f const y = m * Vector3f(0, 1, 0);
    EXPECT_NEAR(y.y(), 0.0f, 1e-6f);
    EXPECT_NEAR(y.z(), 1.0f, 1e-6f);
    EXPECT_EQ(m.getValue()[12], 0.0f);
    EXPECT_EQ(m.getValue()[14], 0.0f);

    expectQuat(Quaternion(Vector3f(2, 0, 0), Vector3f(0, 0.5f, 0)), quarter);
    Vector3f const v(1, 2, 3);
    expectQuat(Quaternion(v, v), Quaternion(), 0);
    expectQuat(Quaternion(v, -v), Quaternion(), 0); // opposite: no half turn here
}

TEST(Quaternion, AlgebraMembersAndOperatorsAgree) {
    Quaternion const a(Vector3f(1, 2, 2), 0.7f), b(Vector3f(0, 1, 0), -1.1f);
    Quaternion const ab = a * b, ba = b * a;
    ASSERT_GT(std::fabs(ab.getValue()[1] - ba.getValue()[1]), 1e-3f) << "a and b must not commute";
    Quaternion op(a), right(a), left(b), self(a);
    op *= b;
    right.multRightBy(b);
    left.multLeftBy(a);
    self *= self; // the argument may be the object itself
    expectQuat(op, ab, 0);
    expectQuat(right, ab, 0);
    expectQuat(left, ab, 0);
    expectQuat(self, a * a, 0);

    Quaternion const q = a / b;
    Quaternion d(a), dm(a), ds(a);
    d /= b;
    dm.div(b);
    ds /= ds;
    expectQuat(d, q, 0);
    expectQuat(dm, q, 0);
    expectQuat(ds, Quaternion());
    expectQuat(q * b, a); // (a b*) b = a for a unit b

    expectQuat(make(1, 2, 3, 4) + make(0.5f, -1, 1, 2), make(1.5f, 1, 4, 6), 0);
    expectQuat(make(1, 2, 3, 4) - make(0.5f, -1, 1, 2), make(0.5f, 3, 2, 2), 0);
    EXPECT_EQ(make(1, 2, 3, 4).dot(make(0.5f, -1, 1, 2)), 9.5f);
}

using QuaternionKernel = RecordingKernelTest;

TEST_F(QuaternionKernel, MembersReachTheirKernelOperation) {
    Quaternion q, r;
    MatRot4f m;
    Vector3f const v(0, 1, 0);
    // In-place members: the object is the destination, a plain copy of it one operand, the
    // argument the other.
    struct InPlace {
        void (*run)(Quaternion &, Quaternion const &);
        char const * op;
        int copyArg;
    };
    for (InPlace const &c : {
             InPlace{[](Quaternion &x, Quaternion const &y) { x.multLeftBy(y); }, "multQuaternions",
                     2},
             InPlace{[](Quaternion &x, Quaternion const &y) { x.multRightBy(y); },
                     "multQuaternions", 1},
             InPlace{[](Quaternion &x, Quaternion const &y) { x *= y; }, "multQuaternions", 1},
             InPlace{[](Quaternion &x, Quaternion const &y) { x.div(y); }, "divQuaternionsU", 1},
             InPlace{[](Quaternion &x, Quaternion const &y) { x /= y; }, "divQuaternionsU", 1},
         }) {
        EXPECT_EQ(trace([&] { c.run(q, r); }), c.op);
        EXPECT_EQ(call(0).args[0], q.getValue());
        EXPECT_NE(call(0).args[c.copyArg], q.getValue());
        EXPECT_EQ(call(0).args[3 - c.copyArg], r.getValue());
    }
    EXPECT_EQ(trace([&] { Quaternion a(m), b(v, 1.0f), c(0.1f, 0.2f, 0.3f), d(q); }),
              "RotMatrixToQuaternion axisToQuaternionU eulerToQuaternion");
    EXPECT_EQ(trace([&] { q.setValue(v, Vector3f(1, 0, 0)); }), "cross axisToQuaternionU");
    EXPECT_EQ(trace([&] { static_cast<void>(q.norm() + q.normalize()); }), "");
    EXPECT_EQ(trace([&] { q.getValue(m); }), "quaternionToMatrix copyVec3fTo");
    EXPECT_EQ(call(1).args[0], m.getValue() + 12);
    EXPECT_EQ(call(1).args[1], Vector3f::m_zero.getValue());
    EXPECT_EQ(trace([&] { static_cast<void>(q * r), static_cast<void>(q / r); }),
              "multQuaternions divQuaternionsU");
}
