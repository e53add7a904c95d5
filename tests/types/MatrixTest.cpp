// MatrixTest.cpp - the matrix family: new objects, comparisons, scalings and inverses
#include "kdrcore/types/Matrix.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

using namespace kdrtest;

static_assert(sizeof(Mat4fBase) == 64 && sizeof(MatRot4f) == 64 &&
                  !std::is_polymorphic<MatRot4f>::value &&
                  !std::is_base_of<MatAff4f, MatRot4f>::value,
              "16 floats and nothing else; MatRot4f is a sibling of MatAff4f");

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
    MatAff4f singular;
    singular.setBase({1, 2, 3}, {}, {0, 0, 1}, {5, 6, 7});
    MatAff4f a = MatAff4f::scale(Vector3f(2, 4, 8)), s(singular);
    Matrix4f g(a), n(singular);
    bool ok[4] = {false, false, true, true};
    a.inverse(ok[0]), g.inverse(ok[1]), s.inverse(ok[2]), n.inverse(ok[3]);
    EXPECT_TRUE(ok[0] && ok[1] && !ok[2] && !ok[3]);
    EXPECT_TRUE(g.equals(a, 0.0f) && elems(a * Vector3f(2, 4, 8), {1, 1, 1}));
    EXPECT_TRUE(s.equals(singular, 0.0f) && n.equals(singular, 0.0f));
}
