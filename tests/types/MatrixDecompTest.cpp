// MatrixDecompTest.cpp - decompositions of the matrix family and the facing test
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

MatAff4f affine(Vector3f const & c0, Vector3f const & c1, Vector3f const & c2, Vector3f const & t) {
    MatAff4f m;
    m.setBase(c0, c1, c2, t);
    return m;
}

void expectNear(Vector3f const & v, float x, float y, float z, float tol = 1e-6f) {
    EXPECT_NEAR(v.x(), x, tol);
    EXPECT_NEAR(v.y(), y, tol);
    EXPECT_NEAR(v.z(), z, tol);
}

Vector3f column(Mat4fBase const & m, int j) {
    return Vector3f(m.getValue() + 4 * j);
}

// A recognisable rigid matrix, to prove that an output was left alone.
MatRot4f const SENTINEL(Vector3f(0, 0, 1), 1.0f, Vector3f(7, 8, 9));

} // namespace

TEST(MatrixDecomp, NormalizeMatrixScalesTheColumnsOnly) {
    MatAff4f out;
    out.getValue()[3] = 9.0f; // the bottom row of `out` is not written
    Vector3f scale;
    EXPECT_TRUE(affine(Vector3f(2, 0, 0), Vector3f(0, 3, 0), Vector3f(0, 0, 4), Vector3f(5, 6, 7))
                    .normalizeMatrix(out, scale));
    expectNear(scale, 2, 3, 4, 0);
    MatAff4f expected = MatAff4f::translate(Vector3f(5, 6, 7));
    expected.getValue()[3] = 9.0f;
    EXPECT_TRUE(out.equals(expected, 0.0f));
    // No orthogonality asked for; a zero column stays zero; in place works.
    MatAff4f s = affine(Vector3f(3, 4, 0), Vector3f(), Vector3f(0, 5, 12), Vector3f());
    EXPECT_TRUE(s.normalizeMatrix(s, scale));
    expectNear(scale, 5, 0, 13, 0);
    expectNear(column(s, 0), 0.6f, 0.8f, 0);
    expectNear(column(s, 1), 0, 0, 0, 0);
    // orthoNormalizeMatrix touches nothing and says true.
    MatRot4f target(SENTINEL);
    EXPECT_TRUE(s.orthoNormalizeMatrix(target));
    EXPECT_TRUE(target.equals(SENTINEL, 0.0f));
}

TEST(MatrixDecomp, RotationScaleSplitTestsOrthogonality) {
    // R S, R turning x to (0.6, 0.8, 0), S = (2, 3, 4), translation (1, 2, 3).
    MatAff4f const rs = affine(Vector3f(1.2f, 1.6f, 0), Vector3f(-2.4f, 1.8f, 0), Vector3f(0, 0, 4),
                               Vector3f(1, 2, 3));
    MatRot4f rotation;
    Vector3f scale, translation;
    ASSERT_TRUE(rs.getRSDecomp(rotation, scale));
    expectNear(scale, 2, 3, 4);
    expectNear(column(rotation, 1), -0.8f, 0.6f, 0);
    expectNear(column(rotation, 3), 1, 2, 3, 0); // the translation stays in the rotation
    ASSERT_TRUE(rs.getTRSDecomp(translation, rotation, scale));
    expectNear(translation, 1, 2, 3, 0);
    expectNear(column(rotation, 3), 0, 0, 0, 0);

    // A shear in each pair of columns fails, with `scale` written and the rest untouched.
    for (MatAff4f const & shear :
         {affine(Vector3f(1, 0, 0), Vector3f(0.001f, 1, 0), Vector3f(0, 0, 2), Vector3f()),
          affine(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(0.01f, 0, 2), Vector3f()),
          affine(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(0, 0.01f, 2), Vector3f())}) {
        rotation = SENTINEL;
        scale = translation = Vector3f(-1, -1, -1);
        EXPECT_FALSE(shear.getTRSDecomp(translation, rotation, scale));
        EXPECT_NEAR(scale.z(), 2.0f, 1e-4f);
        expectNear(translation, -1, -1, -1, 0);
        EXPECT_FALSE(shear.getRSDecomp(rotation, scale));
        EXPECT_TRUE(rotation.equals(SENTINEL, 0.0f));
    }
    // A mirror passes with unsigned scales; a zero column and NaN pass too.
    ASSERT_TRUE(MatAff4f::scale(Vector3f(-1, 1, 1)).getRSDecomp(rotation, scale));
    expectNear(scale, 1, 1, 1, 0);
    EXPECT_EQ(rotation.getValue()[0], -1.0f);
    EXPECT_TRUE(affine(Vector3f(2, 0, 0), Vector3f(), Vector3f(0, 0, 3), Vector3f())
                    .getRSDecomp(rotation, scale));
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(affine(Vector3f(1, 0, 0), Vector3f(nan, 1, 0), Vector3f(0, 0, 1), Vector3f())
                    .getRSDecomp(rotation, scale));
}

TEST(MatrixDecomp, TranslationRestScaleSplitKeepsSigns) {
    Vector3f translation, scale;
    MatAff4f rest = MatAff4f::translate(Vector3f(5, 5, 5));
    MatAff4f::scale(Vector3f(-1, 1, 1)).getTMSDecomp(translation, rest, scale);
    expectNear(scale, -1, 1, 1, 0);
    EXPECT_TRUE(rest.equals(Mat4fBase::m_identity, 0.0f));
    // m[0] = 0 counts as positive; each column is divided by its scale; in place works.
    MatAff4f m =
        affine(Vector3f(0, -2, 0), Vector3f(3, 0, 4), Vector3f(0, 0, -8), Vector3f(1, 2, 3));
    m.getValue()[7] = 6.0f; // a stray bottom row does not reach rest
    m.getTMSDecomp(translation, m, scale);
    expectNear(translation, 1, 2, 3, 0);
    expectNear(scale, 2, 5, -8, 0);
    EXPECT_TRUE(m.equals(
        affine(Vector3f(0, -1, 0), Vector3f(0.6f, 0, 0.8f), Vector3f(0, 0, 1), Vector3f()), 0.0f));
    // A zero column: scale 0 and 0 / 0 in rest.
    affine(Vector3f(1, 0, 0), Vector3f(), Vector3f(0, 0, 1), Vector3f())
        .getTMSDecomp(translation, rest, scale);
    EXPECT_EQ(scale.y(), 0.0f);
    EXPECT_TRUE(std::isnan(rest.getValue()[5]));
}

TEST(MatrixDecomp, GetTransformFactorsAboutACenter) {
    // T(t) R S, R a quarter turn about z, S = (2, 3, 4): the polar factors are R and S.
    MatAff4f const m =
        affine(Vector3f(0, 2, 0), Vector3f(-3, 0, 0), Vector3f(0, 0, 4), Vector3f(1, 2, 3));
    Vector3f t, s, t0, s0;
    MatRot4f r, o, r0, o0;
    m.getTransform(t, r, s, o, nullptr);
    expectNear(t, 1, 2, 3, 0);
    expectNear(r * Vector3f(1, 0, 0), 0, 1, 0, 1e-5f);
    for (int j = 0; j < 3; ++j) { // o' S(s) o is the stretch (2, 3, 4)
        Vector3f e;
        e[j] = 1.0f;
        Vector3f f = o * e;
        f.setValue(f.x() * s.x(), f.y() * s.y(), f.z() * s.z());
        MatRot4f back(o);
        EXPECT_NEAR(Vector3f::dot(back.transpose3() * f, e), static_cast<float>(j + 2), 1e-5f);
    }
    // A null center and the origin as center give the same factors.
    Vector3f const origin;
    m.getTransform(t0, r0, s0, o0, &origin);
    EXPECT_TRUE(r0.equals(r, 0.0f) && o0.equals(o, 0.0f) && s0.x() == s.x() && t0.z() == t.z());

    // A rotation about c seen from c has no translation.
    Vector3f const c(1, 1, 0);
    MatRot4f about;
    about.setRotateAround(Vector3f(0, 0, 1), HALF_PI_F, c);
    about.getTransform(t, r, s, o, &c);
    expectNear(t, 0, 0, 0);
    expectNear(s, 1, 1, 1, 1e-5f);
    about.getTransform(t, r, s, o, nullptr);
    expectNear(t, 2, 0, 0); // c - R c

    // A mirror makes every scale negative. A singular block writes only the translation.
    MatAff4f::scale(Vector3f(-2, 2, 2)).getTransform(t, r, s, o, nullptr);
    EXPECT_TRUE(s.x() < 0 && s.y() < 0 && s.z() < 0);
    r = o = SENTINEL;
    s = Vector3f(-1, -1, -1);
    affine(Vector3f(1, 0, 0), Vector3f(), Vector3f(0, 0, 1), Vector3f(4, 5, 6))
        .getTransform(t, r, s, o, nullptr);
    expectNear(t, 4, 5, 6, 0);
    expectNear(s, -1, -1, -1, 0);
    EXPECT_TRUE(r.equals(SENTINEL, 0.0f) && o.equals(SENTINEL, 0.0f));
}

TEST(MatrixDecomp, IsFrontIsTheOrientationOfTheProjectedElement) {
    Matrix4f const id;
    Vector3f const p;
    EXPECT_FALSE(id.isFront(p, Vector3f(0, 0, 1)));
    EXPECT_TRUE(id.isFront(Vector3f(3, -2, 7), Vector3f(0, 0, -1)));
    EXPECT_TRUE(id.isFront(p, Vector3f(-0.8f, 0, -0.6f))); // second pair of tangents
    // Perspective with w = -z: the same element in front of and behind the eye flips.
    Matrix4f const persp(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 0);
    EXPECT_FALSE(persp.isFront(Vector3f(0, 0, -5), Vector3f(0, 0, 1)));
    EXPECT_TRUE(persp.isFront(Vector3f(0, 0, 5), Vector3f(0, 0, 1)));
    // n.x = +-0.5 takes the first pair, whose tangent is zero for the normal (+-0.5, 0, 0):
    // D = 0, false. The second pair gives D < 0 through these maps of z to x and to -x.
    Matrix4f const zToX(0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1);
    Matrix4f const zToMinusX(0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1);
    EXPECT_FALSE(zToX.isFront(p, Vector3f(0.5f, 0, 0)));
    EXPECT_TRUE(zToX.isFront(p, Vector3f(std::nextafter(0.5f, 1.0f), 0, 0)));
    EXPECT_FALSE(zToMinusX.isFront(p, Vector3f(-0.5f, 0, 0)));
    EXPECT_TRUE(zToMinusX.isFront(p, Vector3f(std::nextafter(-0.5f, -1.0f), 0, 0)));
}
