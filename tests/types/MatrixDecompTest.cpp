// MatrixDecompTest.cpp - decompositions of the matrix family and the facing test
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

MatAff4f affine(Vector3f const & c0, Vector3f const & c1, Vector3f const & c2, Vector3f const & t) {
    MatAff4f m;
    m.setBase(c0, c1, c2, t);
    return m;
}

void expectVec(Vector3f const & v, float x, float y, float z) {
    EXPECT_EQ(v.x(), x);
    EXPECT_EQ(v.y(), y);
    EXPECT_EQ(v.z(), z);
}

void expectNear(Vector3f const & v, float x, float y, float z, float tol = 1e-6f) {
    EXPECT_NEAR(v.x(), x, tol);
    EXPECT_NEAR(v.y(), y, tol);
    EXPECT_NEAR(v.z(), z, tol);
}

// A recognisable rigid matrix, to prove that an output was left alone.
MatRot4f sentinel() {
    MatRot4f m;
    m.setFromXYZ2Axis(Vector3f(0, 1, 0), Vector3f(-1, 0, 0), Vector3f(0, 0, 1), Vector3f(7, 8, 9));
    return m;
}

Vector3f column(Mat4fBase const & m, int j) {
    return Vector3f(m.getValue() + 4 * j);
}

} // namespace

TEST(MatrixDecomp, NormalizeMatrixScalesTheColumnsOnly) {
    MatAff4f const m =
        affine(Vector3f(2, 0, 0), Vector3f(0, 3, 0), Vector3f(0, 0, 4), Vector3f(5, 6, 7));
    MatAff4f out;
    float * o = out.getValue();
    o[3] = 9.0f; // the bottom row of `out` is not written
    o[15] = 8.0f;
    Vector3f scale;
    EXPECT_TRUE(m.normalizeMatrix(out, scale));
    expectVec(scale, 2, 3, 4);
    for (int i : {0, 5, 10})
        EXPECT_EQ(o[i], 1.0f);
    expectVec(column(out, 3), 5, 6, 7);
    EXPECT_EQ(o[3], 9.0f);
    EXPECT_EQ(o[15], 8.0f);

    // No orthogonality asked for: a shear stays, a zero column stays zero. In place works.
    MatAff4f s = affine(Vector3f(3, 4, 0), Vector3f(0, 0, 0), Vector3f(0, 5, 12), Vector3f());
    EXPECT_TRUE(s.normalizeMatrix(s, scale));
    expectVec(scale, 5, 0, 13);
    expectNear(column(s, 0), 0.6f, 0.8f, 0);
    expectVec(column(s, 1), 0, 0, 0);
    expectNear(column(s, 2), 0, 5.0f / 13.0f, 12.0f / 13.0f);

    // orthoNormalizeMatrix touches nothing and says true.
    MatRot4f target = sentinel();
    MatAff4f const shear =
        affine(Vector3f(1, 0, 0), Vector3f(3, 1, 0), Vector3f(0, 0, 2), Vector3f(1, 1, 1));
    EXPECT_TRUE(shear.orthoNormalizeMatrix(target));
    EXPECT_TRUE(target.equals(sentinel(), 0.0f));
}

TEST(MatrixDecomp, RotationScaleSplitTestsOrthogonality) {
    // R S with R turning x to (0.6, 0.8, 0) and S = (2, 3, 4), translation (1, 2, 3).
    MatAff4f const rs = affine(Vector3f(1.2f, 1.6f, 0), Vector3f(-2.4f, 1.8f, 0), Vector3f(0, 0, 4),
                               Vector3f(1, 2, 3));
    MatRot4f rotation;
    Vector3f scale;
    ASSERT_TRUE(rs.getRSDecomp(rotation, scale));
    expectNear(scale, 2, 3, 4);
    expectNear(column(rotation, 0), 0.6f, 0.8f, 0);
    expectNear(column(rotation, 1), -0.8f, 0.6f, 0);
    expectVec(column(rotation, 2), 0, 0, 1);
    expectVec(column(rotation, 3), 1, 2, 3); // the translation stays in the rotation

    Vector3f translation(-1, -1, -1);
    ASSERT_TRUE(rs.getTRSDecomp(translation, rotation, scale));
    expectVec(translation, 1, 2, 3);
    expectVec(column(rotation, 3), 0, 0, 0);
    expectNear(column(rotation, 1), -0.8f, 0.6f, 0);

    // A shear of 0.001: the normalised columns' dot product is far above 1e-4. The scale is
    // written, rotation and translation are not.
    MatAff4f const shear =
        affine(Vector3f(1, 0, 0), Vector3f(0.001f, 1, 0), Vector3f(0, 0, 2), Vector3f(1, 2, 3));
    rotation = sentinel();
    scale.setValue(-1, -1, -1);
    EXPECT_FALSE(shear.getRSDecomp(rotation, scale));
    EXPECT_TRUE(rotation.equals(sentinel(), 0.0f));
    expectNear(scale, 1, 1, 2);
    scale.setValue(-1, -1, -1);
    translation.setValue(-1, -1, -1);
    EXPECT_FALSE(shear.getTRSDecomp(translation, rotation, scale));
    expectVec(translation, -1, -1, -1);
    EXPECT_TRUE(rotation.equals(sentinel(), 0.0f));
    expectNear(scale, 1, 1, 2);

    // The other two pairs are tested too: a shear between columns 2 and 0, then 1 and 2.
    EXPECT_FALSE(affine(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(0.01f, 0, 1), Vector3f())
                     .getRSDecomp(rotation, scale));
    EXPECT_FALSE(affine(Vector3f(1, 0, 0), Vector3f(0, 1, 0), Vector3f(0, 0.01f, 1), Vector3f())
                     .getRSDecomp(rotation, scale));

    // A mirror passes with unsigned scales; the rotation holds the reflection.
    MatAff4f const mirror = MatAff4f::scale(Vector3f(-1, 1, 1));
    ASSERT_TRUE(mirror.getRSDecomp(rotation, scale));
    expectVec(scale, 1, 1, 1);
    EXPECT_EQ(rotation.getValue()[0], -1.0f);

    // A zero column passes (its dot products are 0), and so does NaN, which is not known to be
    // too large.
    ASSERT_TRUE(affine(Vector3f(2, 0, 0), Vector3f(0, 0, 0), Vector3f(0, 0, 3), Vector3f())
                    .getRSDecomp(rotation, scale));
    expectVec(scale, 2, 0, 3);
    expectVec(column(rotation, 1), 0, 0, 0);
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(affine(Vector3f(1, 0, 0), Vector3f(nan, 1, 0), Vector3f(0, 0, 1), Vector3f())
                    .getRSDecomp(rotation, scale));
}

TEST(MatrixDecomp, TranslationRestScaleSplitKeepsSigns) {
    // The sign of each diagonal element goes to the scale; rest keeps a positive diagonal.
    MatAff4f const mirror = MatAff4f::scale(Vector3f(-1, 1, 1));
    Vector3f translation, scale;
    MatAff4f rest = MatAff4f::translate(Vector3f(5, 5, 5));
    mirror.getTMSDecomp(translation, rest, scale);
    expectVec(scale, -1, 1, 1);
    EXPECT_TRUE(rest.equals(Mat4fBase::m_identity, 0.0f));

    // m[0] = 0 counts as positive; rest is each column divided by its scale; in place works.
    MatAff4f m =
        affine(Vector3f(0, -2, 0), Vector3f(3, 0, 4), Vector3f(0, 0, -8), Vector3f(1, 2, 3));
    m.getValue()[7] = 6.0f; // a stray bottom row does not reach rest
    m.getTMSDecomp(translation, m, scale);
    expectVec(translation, 1, 2, 3);
    expectVec(scale, 2, 5, -8);
    std::vector<float> const expected = {0, -1, 0, 0, 0.6f, 0, 0.8f, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m.getValue()[i], expected[static_cast<std::size_t>(i)]) << "element " << i;

    // A zero column: scale 0 and 0 / 0 in rest.
    affine(Vector3f(1, 0, 0), Vector3f(0, 0, 0), Vector3f(0, 0, 1), Vector3f())
        .getTMSDecomp(translation, rest, scale);
    EXPECT_EQ(scale.y(), 0.0f);
    EXPECT_TRUE(std::isnan(rest.getValue()[5]));
    EXPECT_EQ(rest.getValue()[0], 1.0f);
}

TEST(MatrixDecomp, GetTransformFactorsAboutACenter) {
    // M = T(t) R S, R a quarter turn about z, S = (2, 3, 4): the polar factors are R and S.
    MatAff4f const m =
        affine(Vector3f(0, 2, 0), Vector3f(-3, 0, 0), Vector3f(0, 0, 4), Vector3f(1, 2, 3));
    Vector3f translation, scale;
    MatRot4f rotation, scaleOrientation;
    m.getTransform(translation, rotation, scale, scaleOrientation, nullptr);
    expectVec(translation, 1, 2, 3);
    std::vector<float> s = {scale.x(), scale.y(), scale.z()};
    std::sort(s.begin(), s.end());
    EXPECT_NEAR(s[0], 2.0f, 1e-5f);
    EXPECT_NEAR(s[1], 3.0f, 1e-5f);
    EXPECT_NEAR(s[2], 4.0f, 1e-5f);
    expectNear(rotation * Vector3f(1, 0, 0), 0, 1, 0, 1e-5f);
    expectNear(rotation * Vector3f(0, 0, 1), 0, 0, 1, 1e-5f);
    // The stretch rebuilt from its frame: so' diag(scale) so is S.
    MatRot4f back(scaleOrientation);
    back.transpose3();
    for (int j = 0; j < 3; ++j) {
        Vector3f e;
        e[j] = 1.0f;
        Vector3f f = scaleOrientation * e;
        f.setValue(f.x() * scale.x(), f.y() * scale.y(), f.z() * scale.z());
        Vector3f const g = back * f;
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(g[i], i == j ? static_cast<float>(j + 2) : 0.0f, 1e-5f) << i << j;
    }

    // A null center and a center at the origin give the same factors.
    Vector3f t2, s2;
    MatRot4f r2, o2;
    Vector3f const origin;
    m.getTransform(t2, r2, s2, o2, &origin);
    EXPECT_TRUE(t2.x() == translation.x() && t2.y() == translation.y() &&
                t2.z() == translation.z());
    EXPECT_TRUE(s2.x() == scale.x() && s2.y() == scale.y() && s2.z() == scale.z());
    EXPECT_TRUE(r2.equals(rotation, 0.0f));
    EXPECT_TRUE(o2.equals(scaleOrientation, 0.0f));

    // A rotation about c is a pure rotation seen from c: no translation left.
    Vector3f const c(1, 1, 0);
    MatRot4f about;
    about.setRotateAround(Vector3f(0, 0, 1), HALF_PI_F, c);
    about.getTransform(translation, rotation, scale, scaleOrientation, &c);
    expectNear(translation, 0, 0, 0);
    expectNear(scale, 1, 1, 1, 1e-5f);
    expectNear(rotation * Vector3f(1, 0, 0), 0, 1, 0, 1e-5f);
    about.getTransform(translation, rotation, scale, scaleOrientation, nullptr);
    expectNear(translation, 2, 0, 0); // c - R c

    // A mirror goes into the scales, all negative, and leaves a proper rotation.
    MatAff4f::scale(Vector3f(-2, 2, 2))
        .getTransform(translation, rotation, scale, scaleOrientation, nullptr);
    EXPECT_LT(scale.x(), 0.0f);
    EXPECT_LT(scale.y(), 0.0f);
    EXPECT_LT(scale.z(), 0.0f);
    Vector3f const x = column(rotation, 0), y = column(rotation, 1), z = column(rotation, 2);
    EXPECT_NEAR(Vector3f::dot(x.cross(y), z), 1.0f, 1e-5f);

    // A singular block: only the translation is written.
    rotation = sentinel();
    scaleOrientation = sentinel();
    scale.setValue(-1, -1, -1);
    affine(Vector3f(1, 0, 0), Vector3f(0, 0, 0), Vector3f(0, 0, 1), Vector3f(4, 5, 6))
        .getTransform(translation, rotation, scale, scaleOrientation, nullptr);
    expectVec(translation, 4, 5, 6);
    expectVec(scale, -1, -1, -1);
    EXPECT_TRUE(rotation.equals(sentinel(), 0.0f));
    EXPECT_TRUE(scaleOrientation.equals(sentinel(), 0.0f));
}

TEST(MatrixDecomp, IsFrontIsTheOrientationOfTheProjectedElement) {
    Matrix4f const identity;
    Vector3f const origin;
    EXPECT_FALSE(identity.isFront(origin, Vector3f(0, 0, 1)));
    EXPECT_TRUE(identity.isFront(origin, Vector3f(0, 0, -1)));
    EXPECT_TRUE(identity.isFront(Vector3f(3, -2, 7), Vector3f(0, 0, -1)));
    // Normals with a large x take the second pair of tangents; the answer is the same.
    EXPECT_FALSE(identity.isFront(origin, Vector3f(0.8f, 0, 0.6f)));
    EXPECT_TRUE(identity.isFront(origin, Vector3f(-0.8f, 0, -0.6f)));

    // Perspective with w = -z: the same element in front of and behind the eye flips.
    Matrix4f const persp(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 0);
    EXPECT_FALSE(persp.isFront(Vector3f(0, 0, -5), Vector3f(0, 0, 1)));
    EXPECT_TRUE(persp.isFront(Vector3f(0, 0, 5), Vector3f(0, 0, 1)));
    EXPECT_TRUE(persp.isFront(Vector3f(0, 0, -5), Vector3f(0, 0, -1)));

    // n.x = +-0.5 takes the first pair. For the non-unit normal (+-0.5, 0, 0) that pair has a
    // zero tangent and gives D = 0 (false); the second pair would give a negative D through
    // these matrices, which send z to x and to -x.
    Matrix4f const zToX(0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1);
    Matrix4f const zToMinusX(0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1);
    EXPECT_FALSE(zToX.isFront(origin, Vector3f(0.5f, 0, 0)));
    EXPECT_TRUE(zToX.isFront(origin, Vector3f(std::nextafter(0.5f, 1.0f), 0, 0)));
    EXPECT_FALSE(zToMinusX.isFront(origin, Vector3f(-0.5f, 0, 0)));
    EXPECT_TRUE(zToMinusX.isFront(origin, Vector3f(std::nextafter(-0.5f, -1.0f), 0, 0)));
}
