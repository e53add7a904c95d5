// MatrixFramesTest.cpp - rotation and frame builders, decompositions and the facing test
#include "support/TestSupport.h"

#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>

using namespace kdrtest;

namespace {
MatAff4f affine(Vector3f const & c0, Vector3f const & c1, Vector3f const & c2, Vector3f const & t) {
    MatAff4f m;
    m.setBase(c0, c1, c2, t);
    return m;
}
Vector3f const X(1, 0, 0), Y(0, 1, 0), Z(0, 0, 1), O(1, 2, 3);
// A recognisable rigid matrix, to prove that an output was left alone.
MatRot4f const SENTINEL(Z, 1.0f, Vector3f(7, 8, 9));
} // namespace

TEST(MatRot4fFrames, FromToRotationAndItsParallelCases) {
    // The expected turn about z (a half turn about -z is one about z), translation O.
    struct {
        Vector3f from, to;
        float turn;
    } const cases[] = {
        {{1, 2, 2}, {2, 4, 4}, 0},            // the same way: no rotation
        {X, -X, PI_F},                        // opposite: a half turn about y x x = -z
        {{3, 0, 0}, {0, 0.5f, 0}, HALF_PI_F}, // any lengths
        // The threshold is on the raw cross product: lengths 0.001 give |c|^2 = 1e-12, parallel
        // at pi/2, so no rotation; lengths 0.01 and 0.1 give 1e-6 and a real quarter turn.
        {0.001f * X, 0.001f * Y, 0},
        {0.01f * X, 0.1f * Y, HALF_PI_F},
        {0.001f * X, {-0.001f, 0.00001f, 0}, PI_F}, // nearly opposite
    };
    for (int i = 0; i < 6; ++i) {
        MatRot4f m;
        m.setValue(cases[i].from, cases[i].to, O);
        EXPECT_TRUE(m.equals(MatRot4f(Z, cases[i].turn, O), 1e-6f)) << "case " << i;
    }
    // The other forms agree on a quarter turn about z; a zero axis is no rotation.
    EXPECT_TRUE(elems(MatRot4f(5.0f * Z, HALF_PI_F, O) * X, {1, 3, 3}, 1e-6));
    EXPECT_TRUE(elems(MatRot4f(0, 0, HALF_PI_F, O) * X, {1, 3, 3}, 1e-6));
    EXPECT_TRUE(MatRot4f(Vector3f(), 1.0f, O).equals(MatAff4f::translate(O), 0.0f));
}

TEST(MatRot4fFrames, FramesAndTransformsAroundAPoint) {
    // An orthonormal frame with exact components, to it and back; then to a second frame.
    Vector3f const x(0.6f, 0.8f, 0), y(-0.8f, 0.6f, 0), c(1, 1, 0);
    MatRot4f to, from, both, ft, r1, r2, r3;
    to.setFromXYZ2Axis(x, y, Z, O);
    from.setFromAxis2XYZ(x, y, Z, O);
    both.setFromAxis2Axis(x, y, Z, Y, Z, X, O, Vector3f(-1, 0, 5));
    EXPECT_TRUE((from * to).equals(Mat4fBase::m_identity, 1e-6f));
    EXPECT_TRUE(elems(from * Vector3f(1.6f, 2.8f, 3), {1, 0, 0}, 1e-6)); // O + x
    EXPECT_TRUE(elems(both * Vector3f(1.6f, 2.8f, 3), {-1, 1, 5}, 1e-6));
    ft.setFromTo(X, Y, Vector3f(1, 1, 1), Vector3f(4, 5, 6));
    EXPECT_TRUE(elems(ft * Vector3f(2, 1, 1), {4, 6, 6}, 1e-6));
    // Every rotation around c keeps c and turns c + x to c + y; the scaling keeps c too.
    MatAff4f r4, s;
    r1.setRotateAround(Z, HALF_PI_F, c);
    r2.setRotateAround(0, 0, HALF_PI_F, c);
    r3.setRotateAround(X, Y, c);
    r4.setRotateAround(2.0f * Z, HALF_PI_F, c);
    for (MatAff4f const & r : {MatAff4f(r1), MatAff4f(r2), MatAff4f(r3), r4})
        EXPECT_TRUE(elems(r * c, {1, 1, 0}, 1e-6) && elems(r * (c + X), {1, 2, 0}, 1e-6));
    s.setScaleAround(Vector3f(2, 3, 4), c);
    EXPECT_TRUE(elems(s * c, {1, 1, 0}) && elems(s * Vector3f(2, 2, 1), {3, 4, 4}));
}

TEST(MatRot4fFrames, SetFromMatrix4fTestsTheRotationBlock) {
    MatRot4f const before(Z, HALF_PI_F, Vector3f(7, 8, 9));
    struct {
        float m0, m15, m3;
        bool ok;
    } const cases[] = {
        {1, 1, 0, true},        {2, 1, 0, false},        // the diagonal (m0, 1, 1)
        {1.00004f, 1, 0, true}, {1.00006f, 1, 0, false}, // m m' within the float 1e-4
        {-1, 1, 0, true},       {1, 0, 0, false},        // a reflection passes
        {1, 2, 0.5f, true}, // m[15] = 2 and a projective term are taken as they are
    };
    for (int i = 0; i < 7; ++i) {
        Matrix4f const m(cases[i].m0, 0, 0, cases[i].m3, 0, 1, 0, 0, 0, 0, 1, 0, 4, 5, 6,
                         cases[i].m15);
        MatRot4f r(before);
        EXPECT_EQ(r.setFromMatrix4f(m), cases[i].ok) << "case " << i;
        EXPECT_TRUE(r.equals(cases[i].ok ? m : before, 0.0f)) << "case " << i;
    }
}

TEST(MatAff4fBuilders, ScaleAlongADirectionAndViewport) {
    MatAff4f m = MatAff4f::translate(Vector3f(5, 5, 5)); // overwritten whole
    m.setScale(2.0f * X, 3.0f);
    EXPECT_TRUE(m.equals(MatAff4f::scale(Vector3f(3, 1, 1)), 0.0f));
    m.setScale(Vector3f(), 3.0f); // a zero direction scales along x
    EXPECT_TRUE(m.equals(MatAff4f::scale(Vector3f(3, 1, 1)), 0.0f));
    m.setScale(Vector3f(1, 1, 0), 3.0f);
    EXPECT_TRUE(elems(m * Vector3f(1, 1, 0), {3, 3, 0}, 1e-5) &&
                elems(m * Vector3f(1, -1, 1), {1, -1, 1}, 1e-5));
    m.setNormalized2Viewport(Vector2s(640, 480));
    EXPECT_TRUE(elems(m, {320, 0, 0, 0, 0, 240, 0, 0, 0, 0, 0.5, 0, 320, 240, 0.5, 1}));
}

TEST(MatrixDecomp, NormalizeMatrixAndTheTranslationRestScaleSplit) {
    Vector3f scale, t;
    // No orthogonality asked for; a zero column stays zero; in place, the bottom row unwritten.
    MatAff4f s = affine({3, 4, 0}, {}, {0, 5, 12}, {1, 2, 3});
    s.getValue()[3] = 9.0f;
    EXPECT_TRUE(s.normalizeMatrix(s, scale) && elems(scale, {5, 0, 13}));
    EXPECT_TRUE(
        elems(s, {0.6, 0.8, 0, 9, 0, 0, 0, 0, 0, 5 / 13.0, 12 / 13.0, 0, 1, 2, 3, 1}, 1e-7));
    MatRot4f target(SENTINEL); // orthoNormalizeMatrix touches nothing and says true
    EXPECT_TRUE(s.orthoNormalizeMatrix(target) && target.equals(SENTINEL, 0.0f));
    // getTMSDecomp: the sign of each diagonal element goes to the scale, m[0] = 0 counts as
    // positive, a stray bottom row does not reach `rest`, and `rest` may be the object.
    MatAff4f m = affine({0, -2, 0}, {3, 0, 4}, {0, 0, -8}, {1, 2, 3});
    m.getValue()[7] = 6.0f;
    m.getTMSDecomp(t, m, scale);
    EXPECT_TRUE(elems(t, {1, 2, 3}) && elems(scale, {2, 5, -8}));
    EXPECT_TRUE(elems(m, {0, -1, 0, 0, 0.6f, 0, 0.8f, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    affine({1, 0, 0}, {}, {0, 0, 1}, {}).getTMSDecomp(t, m, scale); // a zero column: 0 / 0
    EXPECT_TRUE(scale.y() == 0.0f && std::isnan(m.getValue()[5]));
}

TEST(MatrixDecomp, RotationScaleSplitTestsOrthogonality) {
    // R S, R turning x to (0.6, 0.8, 0), S = (2, 3, 4), translation (1, 2, 3).
    MatAff4f const rs = affine({1.2f, 1.6f, 0}, {-2.4f, 1.8f, 0}, {0, 0, 4}, {1, 2, 3});
    MatRot4f rotation;
    Vector3f scale, translation;
    ASSERT_TRUE(rs.getRSDecomp(rotation, scale));
    EXPECT_TRUE(elems(scale, {2, 3, 4}, 1e-6));
    EXPECT_TRUE(elems(rotation, {0.6, 0.8, 0, 0, -0.8, 0.6, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}, 1e-6));
    ASSERT_TRUE(rs.getTRSDecomp(translation, rotation, scale));
    EXPECT_TRUE(elems(translation, {1, 2, 3}) && elems(rotation.getValue() + 12, {0, 0, 0}));
    // A shear in each pair of columns fails, with `scale` written and the rest untouched.
    for (MatAff4f const & shear : {affine({1, 0, 0}, {0.001f, 1, 0}, {0, 0, 2}, {}),
                                   affine({1, 0, 0}, {0, 1, 0}, {0.01f, 0, 2}, {}),
                                   affine({1, 0, 0}, {0, 1, 0}, {0, 0.01f, 2}, {})}) {
        rotation = SENTINEL;
        scale = translation = Vector3f(-1, -1, -1);
        EXPECT_FALSE(shear.getTRSDecomp(translation, rotation, scale));
        EXPECT_NEAR(scale.z(), 2.0f, 1e-4f);
        EXPECT_FALSE(shear.getRSDecomp(rotation, scale));
        EXPECT_TRUE(rotation.equals(SENTINEL, 0.0f) && elems(translation, {-1, -1, -1}));
    }
    // A mirror passes with unsigned scales; a zero column and NaN pass too.
    ASSERT_TRUE(MatAff4f::scale({-1, 1, 1}).getRSDecomp(rotation, scale));
    EXPECT_TRUE(elems(scale, {1, 1, 1}) && rotation.getValue()[0] == -1.0f);
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(affine({2, 0, 0}, {}, {nan, 0, 1}, {}).getRSDecomp(rotation, scale));
}

TEST(MatrixDecomp, GetTransformFactorsAboutACenterAndKeepsOutputsWhenSingular) {
    // T(t) R S, R a quarter turn about z, S = (2, 3, 4). A null center and the origin agree.
    MatAff4f const m = affine({0, 2, 0}, {-3, 0, 0}, {0, 0, 4}, {1, 2, 3});
    Vector3f t, s, t0, s0;
    Vector3f const origin, c(1, 1, 0);
    MatRot4f r, o, r0, o0, about;
    m.getTransform(t, r, s, o, nullptr);
    m.getTransform(t0, r0, s0, o0, &origin);
    EXPECT_TRUE(elems(t, {1, 2, 3}) && elems(r, {0, 1, 0}, 1e-5));
    EXPECT_TRUE(r0.equals(r, 0.0f) && o0.equals(o, 0.0f) && elems(s0, {s.x(), s.y(), s.z()}));
    // A rotation about c factored about c has no translation.
    about.setRotateAround(Vector3f(0, 0, 1), HALF_PI_F, c);
    about.getTransform(t, r, s, o, &c);
    EXPECT_TRUE(elems(t, {0, 0, 0}, 1e-6) && elems(s, {1, 1, 1}, 1e-5));
    // A singular block writes only the translation.
    r = o = SENTINEL;
    s = Vector3f(-1, -1, -1);
    affine({1, 0, 0}, {}, {0, 0, 1}, {4, 5, 6}).getTransform(t, r, s, o, nullptr);
    EXPECT_TRUE(elems(t, {4, 5, 6}) && elems(s, {-1, -1, -1}));
    EXPECT_TRUE(r.equals(SENTINEL, 0.0f) && o.equals(SENTINEL, 0.0f));
}

TEST(MatrixDecomp, IsFrontIsTheOrientationOfTheProjectedElement) {
    Matrix4f const id;
    Vector3f const p, z(0, 0, 1);
    EXPECT_FALSE(id.isFront(p, z)); // D = 1
    EXPECT_TRUE(id.isFront(Vector3f(3, -2, 7), -z) && id.isFront(p, {-0.8f, 0, -0.6f}));
    // Perspective with w = -z: the same element in front of and behind the eye flips.
    Matrix4f const persp(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 0);
    EXPECT_TRUE(persp.isFront(5.0f * z, z) && !persp.isFront(-5.0f * z, z));
    // n = (0.48, 0.6, 0.64) gives u = (0, 0.64, -0.6), v = (-0.7696, 0.288, 0.3072); at
    // (1, 1, -2) the rows (x, y, w) of p, u, v give D = 2 (0.492544) - 0.3072 (0.64)
    // - 0.6 (1.0576) = 0.15392: not in front.
    EXPECT_FALSE(persp.isFront(Vector3f(1, 1, -2), Vector3f(0.48f, 0.6f, 0.64f)));
    // The last two terms alone, each with one product inside. n = x: tangents (0, -1, 0) and
    // (0, 0, -1), rows (x, y, w) p (1, 0, 2), u (0, -1, 0), v (0, 0, 1): D = -1 (0 + 1) = -1.
    // n = y: tangents (0, 0, -1) and (-1, 0, 0), rows p (0, 1, 2), u (0, 0, 1), v (-1, 0, 0):
    // D = -1 (0 + 1) = -1. Both in front.
    EXPECT_TRUE(persp.isFront(Vector3f(1, 0, -2), Vector3f(1, 0, 0)) &&
                persp.isFront(Vector3f(0, 1, -2), Vector3f(0, 1, 0)));
    // n.x = +-0.5 takes the first pair, whose tangent is zero for the normal (+-0.5, 0, 0):
    // D = 0, false. The second pair gives D < 0 through these maps of z to x and to -x.
    Matrix4f const zToX(0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1);
    Matrix4f const zToMinusX(0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1);
    EXPECT_FALSE(zToX.isFront(p, {0.5f, 0, 0}) || zToMinusX.isFront(p, {-0.5f, 0, 0}));
    EXPECT_TRUE(zToX.isFront(p, {std::nextafter(0.5f, 1.0f), 0, 0}));
    EXPECT_TRUE(zToMinusX.isFront(p, {std::nextafter(-0.5f, -1.0f), 0, 0}));
}
