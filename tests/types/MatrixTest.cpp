// MatrixTest.cpp - the matrix family: layout, kernel forwarding, static dispatch, comparisons and
// the arithmetic members
#include "kdrcore/types/Matrix.h"

#include "types/RecordingKernel.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Ops = std::vector<std::string>;

void expectMatrix(Mat4fBase const & m, std::vector<float> const & expected) {
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.getValue()[i], expected[static_cast<std::size_t>(i)]) << "element " << i;
}

void expectIdentity(Mat4fBase const & m) {
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.getValue()[i], i % 5 == 0 ? 1.0f : 0.0f) << "element " << i;
}

void expectVec(Vector3f const & v, float x, float y, float z) {
    EXPECT_EQ(v.x(), x);
    EXPECT_EQ(v.y(), y);
    EXPECT_EQ(v.z(), z);
}

// An affine matrix in array order from its three columns and translation.
MatAff4f affine(Vector3f const & c0, Vector3f const & c1, Vector3f const & c2, Vector3f const & t) {
    MatAff4f m;
    m.setBase(c0, c1, c2, t);
    return m;
}

} // namespace

static_assert(sizeof(Mat4fBase) == 64 && sizeof(Matrix4f) == 64 && sizeof(MatAff4fBase) == 64 &&
                  sizeof(MatAff4f) == 64 && sizeof(MatRot4f) == 64,
              "a matrix is its 16 floats and nothing else");
static_assert(!std::is_polymorphic<MatRot4f>::value && !std::is_polymorphic<Matrix4f>::value,
              "no table pointer");
static_assert(std::is_base_of<MatAff4fBase, MatRot4f>::value &&
                  !std::is_base_of<MatAff4f, MatRot4f>::value,
              "MatRot4f is a sibling of MatAff4f");

// ---- Kernel forwarding, seen through a recording kernel ----

using MatrixKernelCalls = RecordingKernelTest;

TEST_F(MatrixKernelCalls, ConstructorsCallTheKernelAsTheirRowSays) {
    Matrix4f const src;
    MatAff4f const aff;
    MatRot4f const rot;
    float const raw[16] = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 1, 2, 3, 1};

    clearLog();
    {
        Mat4fBase const a;
        Mat4fBase const b(a);
        Matrix4f const c(src);
        Matrix4f const d(7); // neither 0 nor 1: the copy of m_identity only
        expectIdentity(a);
        expectIdentity(d);
    }
    EXPECT_EQ(ops(), Ops{}) << "plain copies make no kernel call";

    struct Case {
        char const * what;
        std::function<void()> make;
        Ops expected;
    };
    Case const cases[] = {
        {"Matrix4f()", [] { Matrix4f m; }, {"setIdentity"}},
        {"Matrix4f(1)", [] { Matrix4f m(1); }, {"setIdentity"}},
        {"Matrix4f(0)", [] { Matrix4f m(0); }, {"setZero"}},
        {"Matrix4f(Mat4fBase)",
         [&] { Matrix4f m(static_cast<Mat4fBase const &>(aff)); },
         {"copyMat4fTo"}},
        {"Matrix4f(float *)", [&] { Matrix4f m(raw); }, {"copyMat4fTo"}},
        {"MatAff4fBase()", [] { MatAff4fBase m; }, {"setIdentity"}},
        {"MatAff4fBase(copy)", [&] { MatAff4fBase m(aff); }, {"copyMat4fTo"}},
        {"MatAff4f()", [] { MatAff4f m; }, {"setIdentity"}},
        {"MatAff4f(copy)", [&] { MatAff4f m(aff); }, {"copyMat4fTo"}},
        {"MatAff4f(MatAff4fBase)",
         [&] { MatAff4f m(static_cast<MatAff4fBase const &>(rot)); },
         {"copyMat4fTo"}},
        {"MatRot4f()", [] { MatRot4f m; }, {"setIdentity"}},
        {"MatRot4f(copy)", [&] { MatRot4f m(rot); }, {"copyMat4fTo"}},
        {"MatRot4f(axis, angle, origin)",
         [] { MatRot4f m(Vector3f(0, 0, 1), 1.0f, Vector3f(1, 2, 3)); },
         {"setIdentity", "axisToQuaternionU", "quaternionToMatrix", "copyVec3fTo"}},
        {"MatRot4f(euler, origin)",
         [] { MatRot4f m(0.1f, 0.2f, 0.3f, Vector3f()); },
         {"setIdentity", "eulerToMatrix", "copyVec3fTo"}},
        {"MatRot4f(from, to, origin)",
         [] { MatRot4f m(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f()); },
         {"setIdentity", "cross", "axisToQuaternionU", "quaternionToMatrix", "copyVec3fTo"}},
    };
    for (Case const & c : cases) {
        clearLog();
        c.make();
        EXPECT_EQ(ops(), c.expected) << c.what;
    }

    // The kernel copy reads the argument and writes the new object.
    clearLog();
    Matrix4f const fromRaw(raw);
    ASSERT_EQ(ops(), Ops{"copyMat4fTo"});
    EXPECT_EQ(call(0).arg0, fromRaw.getValue());
    EXPECT_EQ(call(0).arg1, raw);
    expectMatrix(fromRaw, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 1, 2, 3, 1});
}

TEST_F(MatrixKernelCalls, InPlaceMembersHandTheKernelACopyOfTheObject) {
    Matrix4f m;
    Matrix4f const other;
    MatAff4f aff;
    MatAff4f const affOther;
    MatRot4f rot;
    MatRot4f const rotOther;
    Vector3f const axis(0, 0, 1);

    // `self` must be the destination; the copy taken first must be the operand at `copyArg`
    // (1 or 2) and `other` the remaining one (null when there is none).
    struct Case {
        char const * what;
        std::function<void()> run;
        std::string op;
        float const * self;
        int copyArg;
        void const * other;
    };
    Case const cases[] = {
        {"Matrix4f::transpose", [&] { m.transpose(); }, "transpose", m.getValue(), 1, nullptr},
        {"Matrix4f::inverse",
         [&] {
             bool ok = false;
             m.inverse(ok);
         },
         "inverseMatrix", m.getValue(), 1, nullptr},
        {"Matrix4f::multLeftBy", [&] { m.multLeftBy(other); }, "multMatrices", m.getValue(), 2,
         other.getValue()},
        {"Matrix4f::multRightBy", [&] { m.multRightBy(other); }, "multMatrices", m.getValue(), 1,
         other.getValue()},
        {"Matrix4f::operator*=", [&] { m *= other; }, "multMatrices", m.getValue(), 1,
         other.getValue()},
        {"MatAff4f::inverse",
         [&] {
             bool ok = false;
             aff.inverse(ok);
         },
         "inverseAffine", aff.getValue(), 1, nullptr},
        {"MatAff4f::transpose3", [&] { aff.transpose3(); }, "transposeAffine", aff.getValue(), 1,
         nullptr},
        {"MatAff4f::multLeftBy", [&] { aff.multLeftBy(affOther); }, "multAffineMatrices",
         aff.getValue(), 2, affOther.getValue()},
        {"MatAff4f::multRightBy", [&] { aff.multRightBy(rotOther); }, "multAffineMatrices",
         aff.getValue(), 1, rotOther.getValue()},
        {"MatAff4f::operator*=", [&] { aff *= affOther; }, "multAffineMatrices", aff.getValue(), 1,
         affOther.getValue()},
        {"MatAff4f::multLeftByRotate", [&] { aff.multLeftByRotate(axis, 1.0f); },
         "multLeftByRotate", aff.getValue(), 1, axis.getValue()},
        {"MatAff4f::multRightByRotate", [&] { aff.multRightByRotate(axis, 1.0f); },
         "multRightByRotate", aff.getValue(), 1, axis.getValue()},
        {"MatRot4f::inverse", [&] { rot.inverse(); }, "inverseRotateAndTr", rot.getValue(), 1,
         nullptr},
        {"MatRot4f::transpose3", [&] { rot.transpose3(); }, "transposeAffine", rot.getValue(), 1,
         nullptr},
        {"MatRot4f::multLeftBy", [&] { rot.multLeftBy(rotOther); }, "multAffineMatrices",
         rot.getValue(), 2, rotOther.getValue()},
        {"MatRot4f::multRightBy", [&] { rot.multRightBy(rotOther); }, "multAffineMatrices",
         rot.getValue(), 1, rotOther.getValue()},
        {"MatRot4f::operator*=", [&] { rot *= rotOther; }, "multAffineMatrices", rot.getValue(), 1,
         rotOther.getValue()},
    };
    for (Case const & c : cases) {
        clearLog();
        c.run();
        ASSERT_EQ(ops(), (Ops{"copyMat4fTo", c.op})) << c.what;
        void const * copy = call(0).arg0;
        EXPECT_EQ(call(0).arg1, c.self) << c.what << ": the copy is of the object";
        EXPECT_NE(copy, c.self) << c.what;
        EXPECT_EQ(call(1).arg0, c.self) << c.what << ": the object is the destination";
        EXPECT_EQ(c.copyArg == 1 ? call(1).arg1 : call(1).arg2, copy) << c.what;
        EXPECT_EQ(c.copyArg == 1 ? call(1).arg2 : call(1).arg1, c.other) << c.what;
    }
}

TEST_F(MatrixKernelCalls, DirectMembersAndFreeOperatorsPickTheirOperation) {
    Matrix4f m;
    Matrix4f out;
    MatAff4f aff;
    MatRot4f rot;
    Vector3f v(1, 2, 3), w;
    Vector4f v4(1, 2, 3, 1), w4;
    float raw[16];
    Mat4fBase const & affAsBase = aff;
    MatAff4fBase const & rotAsAff = rot;

    struct Case {
        char const * what;
        std::function<void()> run;
        Ops expected;
        void const * dst; // the destination expected in the last call, null: not checked
    };
    Case const cases[] = {
        {"setValue(Mat4fBase)", [&] { m.setValue(aff); }, {"copyMat4fTo"}, m.getValue()},
        {"setZero", [&] { m.setZero(); }, {"setZero"}, m.getValue()},
        {"setIdentity", [&] { m.setIdentity(); }, {"setIdentity"}, m.getValue()},
        {"getTranspose", [&] { m.getTranspose(out); }, {"transpose"}, out.getValue()},
        {"negate", [&] { m.negate(); }, {"neg"}, m.getValue()},
        {"abs", [&] { m.abs(); }, {"abs"}, m.getValue()},
        {"getCopy", [&] { m.getCopy(raw); }, {"copyMat4fTo"}, raw},
        {"Mat4fBase::multRightVec3f",
         [&] { affAsBase.multRightVec3f(w, v); },
         {"multMatrixVec3f"},
         w.getValue()},
        {"MatAff4fBase::multRightVec3f",
         [&] { rot.multRightVec3f(w, v); },
         {"multAffineMatrixVec3f"},
         w.getValue()},
        {"multRightVec4f", [&] { m.multRightVec4f(w4, v4); }, {"multMatrixVec4f"}, w4.getValue()},
        {"MatAff4f *= float", [&] { aff *= 2.0f; }, {"multLeftByScale"}, aff.getValue()},
        {"MatAff4f::multLeftByScale",
         [&] { aff.multLeftByScale(v); },
         {"multLeftByScale"},
         aff.getValue()},
        {"MatAff4f::multLeftByTranslate",
         [&] { aff.multLeftByTranslate(v); },
         {"multLeftByTranslate"},
         aff.getValue()},
        {"MatAff4f::setTranslate", [&] { aff.setTranslate(v); }, {"setTranslate"}, aff.getValue()},
        {"MatAff4f::setScale", [&] { aff.setScale(v); }, {"setScale"}, aff.getValue()},
        {"MatRot4f::multLeftByTranslate",
         [&] { rot.multLeftByTranslate(v); },
         {"multLeftByTranslate"},
         rot.getValue()},
        {"MatRot4f::multRightByTranslate",
         [&] { rot.multRightByTranslate(v); },
         {"multRightByTranslate"},
         rot.getValue()},
        // Free operators: a fresh identity result, then the operation picked by static type.
        {"Mat4fBase * Mat4fBase",
         [&] { static_cast<void>(affAsBase * affAsBase); },
         {"setIdentity", "multMatrices"},
         nullptr},
        {"Mat4fBase + Mat4fBase",
         [&] { static_cast<void>(m + aff); },
         {"setIdentity", "addMatrices"},
         nullptr},
        {"Mat4fBase - Mat4fBase",
         [&] { static_cast<void>(m - aff); },
         {"setIdentity", "subMatrices"},
         nullptr},
        {"float * Mat4fBase",
         [&] { static_cast<void>(2.0f * m); },
         {"setIdentity", "multMatrixScalar"},
         nullptr},
        {"MatAff4fBase * MatAff4fBase",
         [&] { static_cast<void>(aff * rot); },
         {"setIdentity", "multAffineMatrices"},
         nullptr},
        {"float * MatAff4fBase",
         [&] { static_cast<void>(2.0f * aff); },
         {"setIdentity", "multMatrixScalar"},
         nullptr},
        {"MatRot4f * MatRot4f",
         [&] { static_cast<void>(rot * rot); },
         {"setIdentity", "multAffineMatrices"},
         nullptr},
        {"Mat4fBase * Vector3f", [&] { w = affAsBase * v; }, {"multMatrixVec3f"}, nullptr},
        {"MatAff4fBase * Vector3f", [&] { w = rotAsAff * v; }, {"multAffineMatrixVec3f"}, nullptr},
    };
    for (Case const & c : cases) {
        clearLog();
        c.run();
        ASSERT_EQ(ops(), c.expected) << c.what;
        if (c.dst != nullptr) {
            EXPECT_EQ(RecordingKernel::calls().back().arg0, c.dst) << c.what;
        }
    }

    // The product's operands reach the kernel in order: a, then b.
    clearLog();
    static_cast<void>(m * aff);
    ASSERT_EQ(ops(), (Ops{"setIdentity", "multMatrices"}));
    EXPECT_EQ(call(1).arg1, m.getValue());
    EXPECT_EQ(call(1).arg2, aff.getValue());
}

// A kernel that replaces itself by a recording one during its first copy: a member that kept the
// kernel pointer between its two calls would reach the deleted object.
class SelfReplacingKernel : public RecordingKernel {
public:
    SelfReplacingKernel() : RecordingKernel('A') {}
    void copyMat4fTo(float * const dst, float const * const src) const override {
        RecordingKernel::copyMat4fTo(dst, src);
        (new RecordingKernel('B'))->setDefault(); // deletes this object: touch nothing after
    }
};

TEST_F(MatrixKernelCalls, EveryKernelCallAsksForTheCurrentKernelAgain) {
    Matrix4f m(2.0f, 0, 0, 0, 0, 4.0f, 0, 0, 0, 0, 8.0f, 0, 0, 0, 0, 1.0f);
    (new SelfReplacingKernel())->setDefault();
    clearLog();
    bool ok = false;
    m.inverse(ok);
    ASSERT_EQ(ops(), (Ops{"copyMat4fTo", "inverseMatrix"}));
    EXPECT_EQ(call(0).kernel, 'A');
    EXPECT_EQ(call(1).kernel, 'B');
}

// ---- Behaviour with the default kernel ----

TEST(MatrixFamily, NewObjectsAreTheIdentityAndZeroOnRequest) {
    expectIdentity(Mat4fBase::m_identity);
    expectIdentity(Mat4fBase());
    expectIdentity(Matrix4f());
    expectIdentity(Matrix4f(1));
    expectIdentity(Matrix4f(7));
    expectIdentity(MatAff4fBase());
    expectIdentity(MatAff4f());
    expectIdentity(MatRot4f());
    expectMatrix(Matrix4f(0), std::vector<float>(16, 0.0f));
    // The 16-float constructor and the getters keep array order: column 0 first.
    Matrix4f const m(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    float e[16];
    m.getValue(e[0], e[1], e[2], e[3], e[4], e[5], e[6], e[7], e[8], e[9], e[10], e[11], e[12],
               e[13], e[14], e[15]);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(e[i], static_cast<float>(i + 1));
    Matrix4f copied;
    m.getCopy(copied.getValue());
    EXPECT_TRUE(copied.equals(m, 0.0f));
}

TEST(MatrixFamily, EqualsAllowsTheToleranceAndLetsNaNPass) {
    Matrix4f a(1), b(1);
    // 1.25 - 1 is exactly the tolerance 0.25; either sign passes.
    b.getValue()[15] = 1.25f;
    EXPECT_TRUE(a.equals(b, 0.25f));
    EXPECT_TRUE(b.equals(a, 0.25f));
    EXPECT_FALSE(a.equals(b, std::nextafter(0.25f, 0.0f)));
    // The difference is taken unrounded: 1 - (-2^-25) is above the tolerance 1, though in float
    // arithmetic it would round to 1 and pass.
    Matrix4f c(1), e(1);
    c.getValue()[14] = 1.0f;
    e.getValue()[14] = -0x1p-25f;
    EXPECT_FALSE(c.equals(e, 1.0f));
    EXPECT_TRUE(c.equals(e, 1.0f + 0x1p-23f));

    // A NaN difference is not known to be too large.
    Matrix4f n(1);
    n.getValue()[4] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(n.equals(a, 0.0f));
    EXPECT_FALSE(areEqual(n.getValue()[4], a.getValue()[4]));

    // equalsAff ignores the bottom row, equals does not.
    MatAff4f p, q;
    q.getValue()[3] = 5.0f;
    q.getValue()[15] = -1.0f;
    EXPECT_TRUE(p.equalsAff(q, 0.0f));
    EXPECT_FALSE(p.equals(q, 0.0f));
    for (int i : {0, 5, 10, 12, 13, 14}) {
        MatAff4f r;
        r.getValue()[i] -= 0.5f;
        EXPECT_TRUE(p.equalsAff(r, 0.5f)) << "element " << i;
        EXPECT_FALSE(p.equalsAff(r, 0.4f)) << "element " << i;
    }
}

TEST(MatrixFamily, TestFiniteAndNANLooksAtAll16Elements) {
    EXPECT_TRUE(MatAff4f().testFiniteAndNAN());
    for (int i : {0, 3, 12, 15}) {
        MatAff4f m;
        m.getValue()[i] = std::numeric_limits<float>::infinity();
        EXPECT_FALSE(m.testFiniteAndNAN()) << "element " << i;
        m.getValue()[i] = std::numeric_limits<float>::quiet_NaN();
        EXPECT_FALSE(m.testFiniteAndNAN()) << "element " << i;
    }
    MatRot4f big;
    big.getValue()[13] = std::numeric_limits<float>::max();
    EXPECT_TRUE(big.testFiniteAndNAN());
}

TEST(MatrixFamily, StaticTypeDecidesTheDivisionByW) {
    // Translation (2, 4, 6) and a bottom row 0, 0, 0, 2.
    MatAff4f m = affine(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(0, 0, 1), Vector3f(2, 4, 6));
    m.getValue()[15] = 2.0f;
    Mat4fBase const & asBase = m;
    MatAff4fBase const & asAff = m;
    Vector3f const p(2, 4, 6);
    Vector3f out;
    asBase.multRightVec3f(out, p);
    expectVec(out, 2, 4, 6); // (4, 8, 12) / 2
    asAff.multRightVec3f(out, p);
    expectVec(out, 4, 8, 12);
    m.multRightVec3f(out, p); // MatAff4f finds the affine form
    expectVec(out, 4, 8, 12);
    expectVec(asBase * p, 2, 4, 6);
    expectVec(asAff * p, 4, 8, 12);
    expectVec(m * p, 4, 8, 12);
    // The same through Matrix4f.
    Matrix4f const g(m);
    expectVec(g * p, 2, 4, 6);
    Vector4f h;
    g.multRightVec4f(h, Vector4f(2, 4, 6, 1));
    EXPECT_EQ(h.x(), 4.0f);
    EXPECT_EQ(h.w(), 2.0f);
}

TEST(MatrixFamily, TheTwoScalingsOfAnAffineMatrixDifferInTheBottomRow) {
    MatAff4f m = MatAff4f::translate(Vector3f(1, 2, 3));
    MatAff4fBase const scaled = 2.0f * m;
    m *= 2.0f;
    expectMatrix(m, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 2, 4, 6, 1});
    expectMatrix(scaled, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 2, 4, 6, 2});
    // The general scalar product scales all 16 too.
    Matrix4f const g = 0.5f * Matrix4f(1);
    EXPECT_EQ(g.getValue()[15], 0.5f);
}

TEST(MatrixFamily, InverseReportsASingularMatrixAndKeepsIt) {
    // Scale (2, 4, 8) and translation (2, 4, 8): the inverse has powers of two only.
    MatAff4f a = affine(Vector3f(2, 0, 0), Vector3f(0, 4, 0), Vector3f(0, 0, 8), Vector3f(2, 4, 8));
    Matrix4f g(a);
    bool ok = false;
    a.inverse(ok);
    EXPECT_TRUE(ok);
    expectMatrix(a, {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0.125f, 0, -1, -1, -1, 1});
    ok = false;
    g.inverse(ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(g.equals(a, 0.0f));

    // A zero column in the 3x3 block: exactly singular.
    MatAff4f const singular =
        affine(Vector3f(1, 2, 3), Vector3f(0, 0, 0), Vector3f(0, 0, 1), Vector3f(5, 6, 7));
    MatAff4f s(singular);
    Matrix4f t(singular);
    ok = true;
    s.inverse(ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(s.equals(singular, 0.0f));
    ok = true;
    t.inverse(ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(t.equals(singular, 0.0f));
}

TEST(MatrixFamily, InPlaceMembersUseTheOldValue) {
    Matrix4f const t(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1); // translation (1, 2, 3)
    Matrix4f const s(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1); // scale 2
    Matrix4f const n(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    Vector3f const p(1, 1, 1);

    Matrix4f m;
    m *= n; // from the identity: the other matrix
    EXPECT_TRUE(m.equals(n, 0.0f));

    Matrix4f right(t), left(t);
    right.multRightBy(s); // T S: scale first, p -> 2p + t
    left.multLeftBy(s);   // S T: translate first, p -> 2(p + t)
    expectVec(right * p, 3, 4, 5);
    expectVec(left * p, 4, 6, 8);
    Matrix4f op(t);
    op *= s;
    EXPECT_TRUE(op.equals(right, 0.0f));

    Matrix4f tr(n);
    tr.transpose();
    Matrix4f trOut;
    n.getTranspose(trOut);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            EXPECT_EQ(tr.getValue()[4 * c + r], n.getValue()[4 * r + c]);
            EXPECT_EQ(trOut.getValue()[4 * c + r], n.getValue()[4 * r + c]);
        }

    Matrix4f neg(n);
    neg.negate();
    Matrix4f back(neg);
    back.abs();
    EXPECT_EQ(neg.getValue()[6], -7.0f);
    EXPECT_TRUE(back.equals(n, 0.0f));
    EXPECT_TRUE((n + neg).equals(Matrix4f(0), 0.0f));
    EXPECT_TRUE((n - neg).equals(2.0f * n, 0.0f));
}

TEST(MatrixFamily, AffineProductsAndSetters) {
    // setTranslate and setScale overwrite every element.
    MatAff4f m = affine(Vector3f(3, 4, 5), Vector3f(6, 7, 8), Vector3f(9, 1, 2), Vector3f(1, 1, 1));
    m.getValue()[3] = 9.0f;
    m.setTranslate(Vector3f(1, 2, 3));
    expectMatrix(m, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
    m.getValue()[7] = 9.0f;
    m.setScale(Vector3f(2, 3, 4));
    expectMatrix(m, {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1});

    // Left scale scales the translation, left translate adds to it.
    MatAff4f a = MatAff4f::translate(Vector3f(1, 1, 1));
    a.multLeftByScale(Vector3f(2, 3, 4));
    a.multLeftByTranslate(Vector3f(1, 0, 0));
    expectMatrix(a, {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 3, 3, 4, 1});

    // Order of the affine products: the right operand acts first.
    MatAff4f const t = MatAff4f::translate(Vector3f(1, 2, 3));
    MatAff4f const s = MatAff4f::scale(Vector3f(2, 2, 2));
    MatAff4f ts(t), st(t);
    ts.multRightBy(s);
    st.multLeftBy(s);
    expectVec(ts * Vector3f(1, 1, 1), 3, 4, 5);
    expectVec(st * Vector3f(1, 1, 1), 4, 6, 8);
    MatAff4f op(t);
    op *= s;
    EXPECT_TRUE(op.equals(ts, 0.0f));
    EXPECT_TRUE((t * s).equals(ts, 0.0f));

    // The affine product writes the bottom row whatever the operands hold.
    MatAff4f odd(t);
    odd.getValue()[3] = 4.0f;
    odd.getValue()[15] = 3.0f;
    MatAff4fBase const prod = odd * s;
    EXPECT_EQ(prod.getValue()[3], 0.0f);
    EXPECT_EQ(prod.getValue()[15], 1.0f);

    // Rotations: a quarter turn about z.
    MatAff4f rl = MatAff4f::translate(Vector3f(1, 0, 0));
    MatAff4f rr(rl);
    rl.multLeftByRotate(Vector3f(0, 0, 2), HALF_PI_F); // turns the translation too
    rr.multRightByRotate(Vector3f(0, 0, 2), HALF_PI_F);
    Vector3f const pl = rl * Vector3f(0, 0, 0), pr = rr * Vector3f(1, 0, 0);
    EXPECT_NEAR(pl.x(), 0.0f, 1e-6f);
    EXPECT_NEAR(pl.y(), 1.0f, 1e-6f);
    EXPECT_NEAR(pr.x(), 1.0f, 1e-6f);
    EXPECT_NEAR(pr.y(), 1.0f, 1e-6f);

    // transpose3 leaves the translation and the bottom row.
    MatAff4f tt =
        affine(Vector3f(1, 2, 3), Vector3f(4, 5, 6), Vector3f(7, 8, 9), Vector3f(10, 11, 12));
    tt.transpose3();
    expectMatrix(tt, {1, 4, 7, 0, 2, 5, 8, 0, 3, 6, 9, 0, 10, 11, 12, 1});
}

TEST(MatrixFamily, RigidInverseAndTranspose) {
    // A quarter turn about z (exact elements) with translation t = (1, 2, 3).
    MatRot4f r;
    r.setFromXYZ2Axis(Vector3f(0, 1, 0), Vector3f(-1, 0, 0), Vector3f(0, 0, 1), Vector3f(1, 2, 3));
    MatRot4f const original(r);
    MatRot4f tr(r);
    tr.transpose3();
    expectMatrix(tr, {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
    r.inverse(); // R' and -(R' t) = -(2, -1, 3)
    expectMatrix(r, {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, -2, 1, -3, 1});
    EXPECT_TRUE((r * original).equals(Mat4fBase::m_identity, 0.0f));
    MatRot4f both(original);
    both.multLeftBy(r);
    EXPECT_TRUE(both.equals(Mat4fBase::m_identity, 0.0f));
    MatRot4f after(original);
    after *= r;
    EXPECT_TRUE(after.equals(Mat4fBase::m_identity, 0.0f));
    after.multRightBy(original);
    EXPECT_TRUE(after.equals(original, 0.0f));
    after.multLeftByTranslate(Vector3f(1, 0, 0));  // t + (1, 0, 0)
    after.multRightByTranslate(Vector3f(1, 0, 0)); // + R (1, 0, 0) = (0, 1, 0)
    expectVec(Vector3f(after.getValue() + 12), 2, 3, 3);
}
