// QuaternionTest.cpp - the Quaternion value class: construction, conversions and algebra
#include "kdrcore/types/Quaternion.h"

#include "types/RecordingKernel.h"

#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace {

using Ops = std::vector<std::string>;

// The class has no constructor from four elements; tests write the storage that getValue()
// points to.
Quaternion make(float w, float x, float y, float z) {
    Quaternion q;
    float * e = const_cast<float *>(q.getValue());
    e[0] = w;
    e[1] = x;
    e[2] = y;
    e[3] = z;
    return q;
}

void expectQuat(Quaternion const & q, float w, float x, float y, float z) {
    EXPECT_EQ(q.getValue()[0], w);
    EXPECT_EQ(q.getValue()[1], x);
    EXPECT_EQ(q.getValue()[2], y);
    EXPECT_EQ(q.getValue()[3], z);
}

void expectQuatNear(Quaternion const & q, Quaternion const & r, float tol = 1e-6f) {
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(q.getValue()[i], r.getValue()[i], tol) << "element " << i;
}

} // namespace

static_assert(sizeof(Quaternion) == 16, "four floats and nothing else");

TEST(Quaternion, StartsAsTheIdentityAndNormalizesInTheClass) {
    Quaternion const q;
    expectQuat(q, 1, 0, 0, 0);
    EXPECT_EQ(q.norm(), 1.0f);

    Quaternion v = make(0, 3, 0, 4);
    EXPECT_EQ(v.norm(), 5.0f);
    EXPECT_EQ(v.normalize(), 5.0f);
    expectQuat(v, 0, 0.6f, 0, 0.8f);
    // No zero test: the zero quaternion becomes NaN and its length 0 is returned.
    Quaternion zero = make(0, 0, 0, 0);
    EXPECT_EQ(zero.normalize(), 0.0f);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(std::isnan(zero.getValue()[i])) << "element " << i;
}

TEST(Quaternion, AxisAngleEulerAndMatrixForms) {
    float const h = std::sqrt(0.5f);
    // The axis is normalised; a zero axis is the identity at any angle.
    expectQuatNear(Quaternion(Vector3f(0, 0, 2), HALF_PI_F),
                   Quaternion(Vector3f(0, 0, 1), HALF_PI_F));
    expectQuatNear(Quaternion(Vector3f(0, 0, 1), HALF_PI_F), make(h, 0, 0, h));
    expectQuat(Quaternion(Vector3f(0, 0, 0), 1.0f), 1, 0, 0, 0);
    expectQuat(Quaternion(Vector3f(0, 0, 0), -3.0f), 1, 0, 0, 0);

    // Euler (0, 0, pi/2) is the same quarter turn about z, and comes back.
    Quaternion const e(0, 0, HALF_PI_F);
    expectQuatNear(e, make(h, 0, 0, h));
    float e0 = 1, e1 = 1, e2 = 1;
    e.getValue(e0, e1, e2);
    EXPECT_NEAR(e0, 0.0f, 1e-6f);
    EXPECT_NEAR(e1, 0.0f, 1e-6f);
    EXPECT_NEAR(e2, HALF_PI_F, 1e-6f);
    Quaternion f;
    f.setValue(0.3f, -0.2f, 0.1f);
    f.getValue(e0, e1, e2);
    EXPECT_NEAR(e0, 0.3f, 1e-6f);
    EXPECT_NEAR(e1, -0.2f, 1e-6f);
    EXPECT_NEAR(e2, 0.1f, 1e-6f);

    // To and from a rigid matrix; getValue clears the matrix's translation.
    MatRot4f m(Vector3f(0, 0, 1), HALF_PI_F, Vector3f(1, 2, 3));
    expectQuatNear(Quaternion(m), make(h, 0, 0, h));
    Quaternion g;
    g.setValue(m);
    expectQuatNear(g, make(h, 0, 0, h));
    g.getValue(m);
    EXPECT_EQ(m.getValue()[12], 0.0f);
    EXPECT_EQ(m.getValue()[13], 0.0f);
    EXPECT_EQ(m.getValue()[14], 0.0f);
    Vector3f const y = m * Vector3f(1, 0, 0);
    EXPECT_NEAR(y.x(), 0.0f, 1e-6f);
    EXPECT_NEAR(y.y(), 1.0f, 1e-6f);
}

TEST(Quaternion, FromToHasNoParallelCase) {
    float const h = std::sqrt(0.5f);
    expectQuatNear(Quaternion(Vector3f(1, 0, 0), Vector3f(0, 1, 0)), make(h, 0, 0, h));
    expectQuatNear(Quaternion(Vector3f(2, 0, 0), Vector3f(0, 0.5f, 0)), make(h, 0, 0, h));
    Vector3f const v(1, 2, 3);
    expectQuat(Quaternion(v, v), 1, 0, 0, 0);
    // Opposite directions are the identity too, unlike MatRot4f's half turn.
    expectQuat(Quaternion(v, -v), 1, 0, 0, 0);
}

TEST(Quaternion, AlgebraMembersAndOperatorsAgree) {
    Quaternion const a(Vector3f(1, 2, 2), 0.7f);
    Quaternion const b(Vector3f(0, 1, 0), -1.1f);

    Quaternion byOp = a * b, byAssign(a), byMember(a), left(b);
    byAssign *= b;
    byMember.multRightBy(b);
    left.multLeftBy(a);
    expectQuat(byAssign, byOp.getValue()[0], byOp.getValue()[1], byOp.getValue()[2],
               byOp.getValue()[3]);
    expectQuatNear(byMember, byOp, 0.0f);
    expectQuatNear(left, byOp, 0.0f); // a.multLeftBy(b) is b * a
    // The Hamilton product of two turns about different axes does not commute.
    Quaternion const ba = b * a;
    EXPECT_GT(std::fabs(ba.getValue()[1] - byOp.getValue()[1]), 1e-3f);

    Quaternion divOp = a / b, divAssign(a), divMember(a);
    divAssign /= b;
    divMember.div(b);
    expectQuatNear(divAssign, divOp, 0.0f);
    expectQuatNear(divMember, divOp, 0.0f);
    expectQuatNear(divOp * b, a); // (a b*) b = a for a unit b
    expectQuatNear(a / a, Quaternion());

    // The argument may be the object itself.
    Quaternion self(a), selfDiv(a);
    self *= self;
    selfDiv /= selfDiv;
    expectQuatNear(self, a * a, 0.0f);
    expectQuatNear(selfDiv, Quaternion());

    expectQuat(make(1, 2, 3, 4) + make(0.5f, -1, 1, 2), 1.5f, 1, 4, 6);
    expectQuat(make(1, 2, 3, 4) - make(0.5f, -1, 1, 2), 0.5f, 3, 2, 2);
    EXPECT_EQ(make(1, 2, 3, 4).dot(make(0.5f, -1, 1, 2)), 9.5f);
}

using QuaternionKernel = RecordingKernelTest;

TEST_F(QuaternionKernel, MembersReachTheirKernelOperation) {
    Quaternion q(Vector3f(0, 0, 1), 1.0f);
    Quaternion const other(Vector3f(1, 0, 0), 0.5f);
    MatRot4f m;
    Vector3f const axis(0, 1, 0);

    // In-place members: the object is the destination, a copy of it the operand at `copyArg`.
    struct InPlace {
        char const * what;
        std::function<void()> run;
        std::string op;
        int copyArg;
    };
    InPlace const inPlace[] = {
        {"multLeftBy", [&] { q.multLeftBy(other); }, "multQuaternions", 2},
        {"multRightBy", [&] { q.multRightBy(other); }, "multQuaternions", 1},
        {"operator*=", [&] { q *= other; }, "multQuaternions", 1},
        {"div", [&] { q.div(other); }, "divQuaternionsU", 1},
        {"operator/=", [&] { q /= other; }, "divQuaternionsU", 1},
    };
    for (InPlace const & c : inPlace) {
        clearLog();
        c.run();
        ASSERT_EQ(ops(), Ops{c.op}) << c.what;
        EXPECT_EQ(call(0).arg0, q.getValue()) << c.what;
        void const * copy = c.copyArg == 1 ? call(0).arg1 : call(0).arg2;
        void const * rest = c.copyArg == 1 ? call(0).arg2 : call(0).arg1;
        EXPECT_NE(copy, q.getValue()) << c.what;
        EXPECT_EQ(rest, other.getValue()) << c.what;
    }

    struct Case {
        char const * what;
        std::function<void()> run;
        Ops expected;
    };
    Case const cases[] = {
        {"Quaternion(MatRot4f)", [&] { Quaternion r(m); }, {"RotMatrixToQuaternion"}},
        {"Quaternion(axis, angle)", [&] { Quaternion r(axis, 1.0f); }, {"axisToQuaternionU"}},
        {"Quaternion(euler)", [] { Quaternion r(0.1f, 0.2f, 0.3f); }, {"eulerToQuaternion"}},
        {"Quaternion(from, to)",
         [&] { Quaternion r(axis, Vector3f(1, 0, 0)); },
         {"cross", "axisToQuaternionU"}},
        {"Quaternion(copy)", [&] { Quaternion r(q); }, {}},
        {"getValue(euler)",
         [&] {
             float e0, e1, e2;
             q.getValue(e0, e1, e2);
         },
         {"quaternionToEuler"}},
        {"getValue(MatRot4f)", [&] { q.getValue(m); }, {"quaternionToMatrix", "copyVec3fTo"}},
        {"norm and normalize",
         [&] {
             q.normalize();
             static_cast<void>(q.norm());
         },
         {}},
        {"dot", [&] { static_cast<void>(q.dot(other)); }, {"dotQuaternions"}},
        {"operator*", [&] { static_cast<void>(q * other); }, {"multQuaternions"}},
        {"operator/", [&] { static_cast<void>(q / other); }, {"divQuaternionsU"}},
        {"operator+", [&] { static_cast<void>(q + other); }, {"addQuaternions"}},
        {"operator-", [&] { static_cast<void>(q - other); }, {"subQuaternions"}},
    };
    for (Case const & c : cases) {
        clearLog();
        c.run();
        EXPECT_EQ(ops(), c.expected) << c.what;
    }

    // getValue(MatRot4f) writes the rotation into the matrix, then zero into its translation.
    clearLog();
    q.getValue(m);
    ASSERT_EQ(ops().size(), 2u);
    EXPECT_EQ(call(0).arg0, m.getValue());
    EXPECT_EQ(call(1).arg0, m.getValue() + 12);
    EXPECT_EQ(call(1).arg1, Vector3f::m_zero.getValue());
}
