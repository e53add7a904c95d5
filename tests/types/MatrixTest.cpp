// MatrixTest.cpp - the matrix family: kernel forwarding, static dispatch, comparisons, in place
#include "kdrcore/types/Matrix.h"

#include "types/RecordingKernel.h"

#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

void expectMatrix(Mat4fBase const & m, std::vector<float> const & e) {
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.getValue()[i], e[static_cast<std::size_t>(i)]) << "element " << i;
}

void expectVec(Vector3f const & v, float x, float y, float z) {
    EXPECT_TRUE(v.x() == x && v.y() == y && v.z() == z) << v.x() << " " << v.y() << " " << v.z();
}

MatAff4f affine(Vector3f const & c0, Vector3f const & c1, Vector3f const & c2, Vector3f const & t) {
    MatAff4f m;
    m.setBase(c0, c1, c2, t);
    return m;
}

} // namespace

static_assert(sizeof(Mat4fBase) == 64 && sizeof(Matrix4f) == 64 && sizeof(MatAff4f) == 64 &&
                  sizeof(MatRot4f) == 64 && !std::is_polymorphic<MatRot4f>::value,
              "a matrix is its 16 floats and nothing else");
static_assert(!std::is_base_of<MatAff4f, MatRot4f>::value, "MatRot4f is a sibling of MatAff4f");

class MatrixKernelCalls : public RecordingKernelTest {
protected:
    // `f` must copy `self` through the kernel, then call one operation with `self` as the
    // destination and the copy as argument number `copyArg`. Gives that operation's name.
    static std::string inPlace(std::function<void()> const & f, Mat4fBase const & self,
                               int copyArg) {
        std::string const ops = trace(f);
        auto const & c = RecordingKernel::calls();
        if (c.size() != 2 || c[0].op != "copyMat4fTo")
            return "not in place: " + ops;
        bool const ok = c[0].args[1] == self.getValue() && c[0].args[0] != self.getValue() &&
                        c[1].args[0] == self.getValue() && c[1].args[copyArg] == c[0].args[0];
        return ok ? c[1].op : "wrong arguments: " + ops;
    }
};

TEST_F(MatrixKernelCalls, ConstructorsCallTheKernelAsDocumented) {
    Matrix4f const g;
    MatAff4f const a;
    MatRot4f const r;
    float const raw[16] = {};
    EXPECT_EQ(trace([&] {
                  Mat4fBase b, c(b);
                  Matrix4f d(g), e(7);
              }),
              "");
    EXPECT_EQ(trace([] { Matrix4f m, n(1), o(0); }), "setIdentity setIdentity setZero");
    EXPECT_EQ(trace([&] { Matrix4f m(static_cast<Mat4fBase const &>(a)), n(raw); }),
              "copyMat4fTo copyMat4fTo");
    EXPECT_EQ(call(1).args[1], raw);
    EXPECT_EQ(trace([] {
                  MatAff4fBase m;
                  MatAff4f n;
                  MatRot4f o;
              }),
              "setIdentity setIdentity setIdentity");
    EXPECT_EQ(trace([&] {
                  MatAff4fBase m(a);
                  MatAff4f n(a), o(static_cast<MatAff4fBase const &>(r));
                  MatRot4f p(r);
              }),
              "copyMat4fTo copyMat4fTo copyMat4fTo copyMat4fTo");
    EXPECT_EQ(trace([] { MatRot4f m(Vector3f(0, 0, 1), 1.0f, Vector3f()); }),
              "setIdentity axisToQuaternionU quaternionToMatrix copyVec3fTo");
    EXPECT_EQ(trace([] { MatRot4f m(0.1f, 0.2f, 0.3f, Vector3f()); }),
              "setIdentity eulerToMatrix copyVec3fTo");
}

TEST_F(MatrixKernelCalls, InPlaceMembersHandTheKernelACopy) {
    Matrix4f m;
    Matrix4f const o;
    MatAff4f a;
    MatRot4f r;
    MatRot4f const ro;
    bool ok = false;
    Vector3f const axis(0, 0, 1);
    EXPECT_EQ(inPlace([&] { m.transpose(); }, m, 1), "transpose");
    EXPECT_EQ(inPlace([&] { m.inverse(ok); }, m, 1), "inverseMatrix");
    EXPECT_EQ(inPlace([&] { m.multLeftBy(o); }, m, 2), "multMatrices");
    EXPECT_EQ(inPlace([&] { m.multRightBy(o); }, m, 1), "multMatrices");
    EXPECT_EQ(inPlace([&] { m *= o; }, m, 1), "multMatrices");
    EXPECT_EQ(inPlace([&] { a.inverse(ok); }, a, 1), "inverseAffine");
    EXPECT_EQ(inPlace([&] { a.transpose3(); }, a, 1), "transposeAffine");
    EXPECT_EQ(inPlace([&] { a.multLeftBy(ro); }, a, 2), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { a.multRightBy(ro); }, a, 1), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { a *= ro; }, a, 1), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { a.multLeftByRotate(axis, 1.0f); }, a, 1), "multLeftByRotate");
    EXPECT_EQ(inPlace([&] { a.multRightByRotate(axis, 1.0f); }, a, 1), "multRightByRotate");
    EXPECT_EQ(inPlace([&] { r.inverse(); }, r, 1), "inverseRotateAndTr");
    EXPECT_EQ(inPlace([&] { r.transpose3(); }, r, 1), "transposeAffine");
    EXPECT_EQ(inPlace([&] { r.multLeftBy(ro); }, r, 2), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { r.multRightBy(ro); }, r, 1), "multAffineMatrices");
    EXPECT_EQ(inPlace([&] { r *= ro; }, r, 1), "multAffineMatrices");
}

TEST_F(MatrixKernelCalls, StaticTypePicksTheOperation) {
    Matrix4f m;
    MatAff4f a;
    MatRot4f r;
    Vector3f v(1, 2, 3), w;
    Mat4fBase const & aBase = a;
    MatAff4fBase const & rAff = r;
    EXPECT_EQ(trace([&] {
                  aBase.multRightVec3f(w, v);
                  a.multRightVec3f(w, v);
                  a *= 2.0f;
              }),
              "multMatrixVec3f multAffineMatrixVec3f multLeftByScale");
    // Free operators: a new identity result, then the operation of the operands' static type.
    EXPECT_EQ(trace([&] { static_cast<void>(aBase * aBase); }), "setIdentity multMatrices");
    EXPECT_EQ(call(1).args[1], a.getValue());
    EXPECT_EQ(trace([&] { static_cast<void>(m + a); }), "setIdentity addMatrices");
    EXPECT_EQ(trace([&] { static_cast<void>(m - a); }), "setIdentity subMatrices");
    EXPECT_EQ(trace([&] { static_cast<void>(2.0f * aBase); }), "setIdentity multMatrixScalar");
    EXPECT_EQ(trace([&] { static_cast<void>(a * r); }), "setIdentity multAffineMatrices");
    EXPECT_EQ(trace([&] { static_cast<void>(2.0f * a); }), "setIdentity multMatrixScalar");
    EXPECT_EQ(trace([&] { static_cast<void>(r * r); }), "setIdentity multAffineMatrices");
    EXPECT_EQ(trace([&] { w = aBase * v; }), "multMatrixVec3f");
    EXPECT_EQ(trace([&] { w = rAff * v; }), "multAffineMatrixVec3f");
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
    EXPECT_EQ(call(0).kernel, 'A');
    EXPECT_EQ(call(1).kernel, 'B');
}

TEST(MatrixFamily, NewObjectsAndElementOrder) {
    std::vector<float> const id = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    for (Mat4fBase const & m : std::initializer_list<Mat4fBase>{
             Mat4fBase::m_identity, Mat4fBase(), Matrix4f(), Matrix4f(1), Matrix4f(7),
             MatAff4fBase(), MatAff4f(), MatRot4f()})
        expectMatrix(m, id);
    expectMatrix(Matrix4f(0), std::vector<float>(16, 0.0f));
}

TEST(MatrixFamily, EqualsTestsAKnownTooLargeDifference) {
    Matrix4f a(1), b(1), c(1), n(1);
    b.getValue()[15] = 1.25f; // the difference is exactly the tolerance, of either sign
    EXPECT_TRUE(a.equals(b, 0.25f) && b.equals(a, 0.25f));
    EXPECT_FALSE(a.equals(b, std::nextafter(0.25f, 0.0f)));
    // Unrounded: 1 - (-2^-25) is above 1, though float arithmetic would round it to 1.
    a.getValue()[14] = 1.0f;
    c.getValue()[14] = -0x1p-25f;
    EXPECT_FALSE(a.equals(c, 1.0f));
    a.getValue()[14] = 0.0f;
    // NaN is not known to be too large, unlike areEqual.
    n.getValue()[4] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(n.equals(a, 0.0f));
    EXPECT_FALSE(areEqual(n.getValue()[4], 0.0f));

    // equalsAff skips the bottom row and checks the other 12.
    MatAff4f p, q;
    q.getValue()[3] = 5.0f;
    q.getValue()[15] = -1.0f;
    EXPECT_TRUE(p.equalsAff(q, 0.0f));
    EXPECT_FALSE(p.equals(q, 0.0f));
    for (int i : {0, 6, 9, 12, 14}) {
        MatAff4f r;
        r.getValue()[i] += i % 2 == 0 ? 0.5f : -0.5f; // differences of both signs
        EXPECT_TRUE(p.equalsAff(r, 0.5f) && !p.equalsAff(r, 0.4f)) << "element " << i;
    }
    // testFiniteAndNAN looks at all 16 elements.
    EXPECT_TRUE(p.testFiniteAndNAN());
    p.getValue()[15] = std::numeric_limits<float>::infinity();
    q.getValue()[3] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(p.testFiniteAndNAN() || q.testFiniteAndNAN());
}

TEST(MatrixFamily, StaticTypePicksDivisionByWAndTheScaling) {
    MatAff4f m = affine(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(0, 0, 1), Vector3f(2, 4, 6));
    m.getValue()[15] = 2.0f;
    Mat4fBase const & asBase = m;
    MatAff4fBase const & asAff = m;
    Vector3f const p(2, 4, 6);
    Vector3f out;
    asBase.multRightVec3f(out, p);
    expectVec(out, 2, 4, 6); // (4, 8, 12) / 2
    m.multRightVec3f(out, p);
    expectVec(out, 4, 8, 12);
    expectVec(asBase * p, 2, 4, 6);
    expectVec(asAff * p, 4, 8, 12);

    // The in-place float scaling keeps the bottom row, the free one scales it.
    MatAff4f t = MatAff4f::translate(Vector3f(1, 2, 3));
    MatAff4fBase const free = 2.0f * t;
    t *= 2.0f;
    expectMatrix(t, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 2, 4, 6, 1});
    expectMatrix(free, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 2, 4, 6, 2});
}

TEST(MatrixFamily, InverseReportsASingularMatrixAndKeepsIt) {
    // Scale and translation by (2, 4, 8): an inverse of powers of two.
    MatAff4f a = affine(Vector3f(2, 0, 0), Vector3f(0, 4, 0), Vector3f(0, 0, 8), Vector3f(2, 4, 8));
    Matrix4f g(a);
    bool ok = false;
    a.inverse(ok);
    EXPECT_TRUE(ok);
    expectMatrix(a, {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0.125f, 0, -1, -1, -1, 1});
    g.inverse(ok = false);
    EXPECT_TRUE(ok && g.equals(a, 0.0f));

    MatAff4f const singular =
        affine(Vector3f(1, 2, 3), Vector3f(0, 0, 0), Vector3f(0, 0, 1), Vector3f(5, 6, 7));
    MatAff4f s(singular);
    Matrix4f t(singular);
    bool tOk = true;
    s.inverse(ok = true);
    t.inverse(tOk);
    EXPECT_FALSE(ok || tOk);
    EXPECT_TRUE(s.equals(singular, 0.0f) && t.equals(singular, 0.0f));
}

TEST(MatrixFamily, InPlaceProductsAndRigidInverse) {
    Matrix4f const t(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1); // translation (1, 2, 3)
    Matrix4f const s(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1); // scale 2
    Matrix4f m;
    m *= t; // from the identity: the other matrix
    EXPECT_TRUE(m.equals(t, 0.0f));
    Matrix4f right(t), left(t);
    right.multRightBy(s); // T S: p -> 2p + t
    left.multLeftBy(s);   // S T: p -> 2(p + t)
    expectVec(right * Vector3f(1, 1, 1), 3, 4, 5);
    expectVec(left * Vector3f(1, 1, 1), 4, 6, 8);

    // A quarter turn about z with translation t: transpose3 keeps t, inverse is -(R' t).
    MatRot4f r;
    r.setFromXYZ2Axis(Vector3f(0, 1, 0), Vector3f(-1, 0, 0), Vector3f(0, 0, 1), Vector3f(1, 2, 3));
    MatRot4f const original(r);
    MatRot4f tr3(r);
    tr3.transpose3();
    expectMatrix(tr3, {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
    r.inverse();
    expectMatrix(r, {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, -2, 1, -3, 1});
    EXPECT_TRUE((r * original).equals(Mat4fBase::m_identity, 0.0f));
}
