// MatrixTest.cpp - the matrix family: kernel forwarding, static dispatch, comparisons, in place
#include "kdrcore/types/Matrix.h"

#include "types/TypesTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

static_assert(sizeof(Mat4fBase) == 64 && sizeof(MatRot4f) == 64 &&
                  !std::is_polymorphic<MatRot4f>::value &&
                  !std::is_base_of<MatAff4f, MatRot4f>::value,
              "16 floats and nothing else; MatRot4f is a sibling of MatAff4f");

class MatrixKernelCalls : public RecordingKernelTest {
protected:
    // `f` must copy `self` through the kernel, then call one operation with `self` as the
    // destination and the copy as argument number `copyArg`. Gives that operation's name.
    static std::string inPlace(std::function<void()> const & f, Mat4fBase const & self,
                               int copyArg) {
        std::string const ops = trace(f);
        auto const & c = RecordingKernel::calls();
        bool const ok = c.size() == 2 && c[0].op == "copyMat4fTo" &&
                        c[0].args[1] == self.getValue() && c[1].args[0] == self.getValue() &&
                        c[1].args[copyArg] == c[0].args[0] && c[0].args[0] != self.getValue();
        return ok ? c[1].op : "not in place: " + ops;
    }
};

TEST_F(MatrixKernelCalls, ConstructorsCallTheKernelAsDocumented) {
    Matrix4f const g;
    MatAff4f const a;
    MatRot4f const r;
    Mat4fBase const & aBase = a;
    MatAff4fBase const & rAff = r;
    float const raw[16] = {};
    EXPECT_EQ(trace([&] { Mat4fBase b, c(b); }), "");
    EXPECT_EQ(trace([&] { Matrix4f d(g), e(7); }), "");
    EXPECT_EQ(trace([] { Matrix4f m, n(1), o(0); }), "setIdentity setIdentity setZero");
    EXPECT_EQ(trace([&] { Matrix4f m(aBase), n(raw); }), "copyMat4fTo copyMat4fTo");
    EXPECT_EQ(call(1).args[1], raw);
    EXPECT_EQ(trace([&] { MatAff4fBase m, n(a); }), "setIdentity copyMat4fTo");
    EXPECT_EQ(trace([&] { MatAff4f m, n(a), o(rAff); }), "setIdentity copyMat4fTo copyMat4fTo");
    EXPECT_EQ(trace([&] { MatRot4f m, n(r); }), "setIdentity copyMat4fTo");
    EXPECT_EQ(trace([] { MatRot4f m(Vector3f(0, 0, 1), 1.0f, Vector3f()); }),
              "setIdentity axisToQuaternionU quaternionToMatrix copyVec3fTo");
    EXPECT_EQ(trace([] { MatRot4f m(0.1f, 0.2f, 0.3f, Vector3f()); }),
              "setIdentity eulerToMatrix copyVec3fTo");
}

TEST_F(MatrixKernelCalls, InPlaceMembersHandTheKernelACopy) {
    Matrix4f m;
    MatAff4f a;
    MatRot4f r;
    MatRot4f const o;
    bool ok = false;
    Vector3f const axis(0, 0, 1);
    EXPECT_EQ(inPlace([&] { m.transpose(); }, m, 1), "transpose");
    EXPECT_EQ(inPlace([&] { m.inverse(ok); }, m, 1), "inverseMatrix");
    EXPECT_EQ(inPlace([&] { m.multLeftBy(o); }, m, 2), "multMatrices");
    EXPECT_EQ(inPlace([&] { m.multRightBy(o); }, m, 1), "multMatrices");
    EXPECT_EQ(inPlace([&] { m *= o; }, m, 1), "multMatrices");
    EXPECT_EQ(inPlace([&] { a.inverse(ok); }, a, 1), "inverseAffine");
    EXPECT_EQ(inPlace([&] { a.transpose3(); }, a, 1), "transposeAffine");
    EXPECT_EQ(inPlace([&] { a.multLeftBy(o); }, a, 2), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { a.multRightBy(o); }, a, 1), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { a *= o; }, a, 1), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { a.multLeftByRotate(axis, 1.0f); }, a, 1), "multLeftByRotate");
    EXPECT_EQ(inPlace([&] { a.multRightByRotate(axis, 1.0f); }, a, 1), "multRightByRotate");
    EXPECT_EQ(inPlace([&] { r.inverse(); }, r, 1), "inverseRotateAndTr");
    EXPECT_EQ(inPlace([&] { r.transpose3(); }, r, 1), "transposeAffine");
    EXPECT_EQ(inPlace([&] { r.multLeftBy(o); }, r, 2), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { r.multRightBy(o); }, r, 1), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { r *= o; }, r, 1), "multAffineMatrices");
}

TEST_F(MatrixKernelCalls, StaticTypePicksTheOperation) {
    Matrix4f m;
    MatAff4f a;
    MatRot4f r;
    Vector3f v(1, 2, 3), w;
    Mat4fBase const & aBase = a;
    MatAff4fBase const & rAff = r;
    EXPECT_EQ(trace([&] { aBase.multRightVec3f(w, v), a.multRightVec3f(w, v), a *= 2.0f; }),
              "multMatrixVec3f multAffineMatrixVec3f multLeftByScale");
    // Free operators: a new identity result, then the operation of the operands' static type.
    EXPECT_EQ(trace([&] { w = aBase * v, w = rAff * v; }), "multMatrixVec3f multAffineMatrixVec3f");
    EXPECT_EQ(trace([&] { m = aBase * aBase, m = m + a, m = m - a, m = 2.0f * aBase; }),
              "setIdentity multMatrices setIdentity addMatrices setIdentity subMatrices "
              "setIdentity multMatrixScalar");
    EXPECT_EQ(trace([&] { static_cast<void>(a * r), static_cast<void>(2.0f * a), r = r * r; }),
              "setIdentity multAffineMatrices setIdentity multMatrixScalar setIdentity "
              "multAffineMatrices");
}

TEST_F(MatrixKernelCalls, FromToRotationCallsPerCase) {
    MatRot4f m;
    Vector3f const X(1, 0, 0), Y(0, 1, 0), O(1, 2, 3);
    EXPECT_EQ(trace([&] { m.setValue(X, 2.0f * X, O); }), "cross setTranslate");
    // Opposite: findOrthogonalVector's cross, then the axis-angle form.
    EXPECT_EQ(trace([&] { m.setValue(X, -X, O); }),
              "cross cross axisToQuaternionU quaternionToMatrix copyVec3fTo");
    EXPECT_EQ(trace([&] { m.setValue(X, Y, O); }),
              "cross axisToQuaternionU quaternionToMatrix copyVec3fTo");
}

// Replaces itself by kernel 'B' during its first copy: a member that kept the kernel pointer
// for its second call would reach the deleted object.
class SelfReplacingKernel : public RecordingKernel {
public:
    SelfReplacingKernel() : RecordingKernel('A') {}
    void copyMat4fTo(float * const dst, float const * const src) const override {
        RecordingKernel::copyMat4fTo(dst, src);
        (new RecordingKernel('B'))->setDefault(); // deletes this object: touch nothing after
    }
};

TEST_F(MatrixKernelCalls, EveryKernelCallAsksForTheCurrentKernelAgain) {
    Matrix4f m(2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 8, 0, 0, 0, 0, 1);
    (new SelfReplacingKernel())->setDefault();
    bool ok = false;
    EXPECT_EQ(trace([&] { m.inverse(ok); }), "copyMat4fTo inverseMatrix");
    EXPECT_TRUE(call(0).kernel == 'A' && call(1).kernel == 'B');
}

TEST(MatrixFamily, NewObjectsAndComparisons) {
    EXPECT_TRUE(elems(Mat4fBase::m_identity, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    EXPECT_TRUE(elems(Matrix4f(0), std::vector<double>(16, 0.0)));
    EXPECT_TRUE(Matrix4f(7).equals(Mat4fBase::m_identity, 0.0f)); // neither 0 nor 1: identity
    // equals: a difference exactly at the tolerance passes, unrounded (1 - (-2^-25) is above
    // 1), and NaN is not known to be too large.
    Matrix4f a(1), b(1), c(1);
    b.getValue()[15] = 1.25f;
    c.getValue()[14] = -0x1p-25f;
    EXPECT_TRUE(a.equals(b, 0.25f) && b.equals(a, 0.25f));
    EXPECT_FALSE(a.equals(b, std::nextafter(0.25f, 0.0f)));
    a.getValue()[14] = 1.0f;
    EXPECT_FALSE(a.equals(c, 1.0f));
    b.getValue()[4] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(b.equals(Matrix4f(1), 0.25f));
    // equalsAff skips the bottom row and checks the other 12, with differences of both signs.
    MatAff4f p, q;
    q.getValue()[3] = 5.0f;
    q.getValue()[15] = -1.0f;
    EXPECT_TRUE(p.equalsAff(q, 0.0f) && !p.equals(q, 0.0f));
    for (int i : {0, 6, 9, 12, 14}) {
        MatAff4f e;
        e.getValue()[i] += i % 2 == 0 ? 0.5f : -0.5f;
        EXPECT_TRUE(p.equalsAff(e, 0.5f) && !p.equalsAff(e, 0.4f)) << "element " << i;
    }
    // testFiniteAndNAN looks at all 16 elements.
    EXPECT_TRUE(p.testFiniteAndNAN());
    p.getValue()[15] = std::numeric_limits<float>::infinity();
    q.getValue()[3] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(p.testFiniteAndNAN() || q.testFiniteAndNAN());
}

TEST(MatrixFamily, ScalingsAndInverses) {
    // The in-place float scaling keeps the bottom row, the free one scales it.
    MatAff4f t = MatAff4f::translate(Vector3f(1, 2, 3));
    MatAff4fBase const free = 2.0f * t;
    t *= 2.0f;
    EXPECT_TRUE(elems(t, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 2, 4, 6, 1}));
    EXPECT_TRUE(elems(free, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 2, 4, 6, 2}));
    // `ok` tells an inverse from a singular matrix, which stays as it was.
    MatAff4f const singular = affine({1, 2, 3}, {}, {0, 0, 1}, {5, 6, 7});
    MatAff4f a = MatAff4f::scale(Vector3f(2, 4, 8)), s(singular);
    Matrix4f g(a), n(singular);
    bool ok[4] = {false, false, true, true};
    a.inverse(ok[0]), g.inverse(ok[1]), s.inverse(ok[2]), n.inverse(ok[3]);
    EXPECT_TRUE(ok[0] && ok[1] && !ok[2] && !ok[3]);
    EXPECT_TRUE(g.equals(a, 0.0f) && elems(a * Vector3f(2, 4, 8), {1, 1, 1}));
    EXPECT_TRUE(s.equals(singular, 0.0f) && n.equals(singular, 0.0f));
}
