// QuaternionTest.cpp - the Quaternion value class: construction, conversions and algebra
#include "kdrcore/types/Quaternion.h"

#include "support/TestSupport.h"

#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>

using namespace kdrtest;

namespace {

// The class has no constructor from four elements: write the storage getValue() points to.
Quaternion make(float w, float x, float y, float z) {
    Quaternion q;
    float * e = const_cast<float *>(q.getValue());
    e[0] = w, e[1] = x, e[2] = y, e[3] = z;
    return q;
}

::testing::AssertionResult same(Quaternion const & q, Quaternion const & r, double tol = 0.0) {
    float const * e = r.getValue();
    return elems(q, {e[0], e[1], e[2], e[3]}, tol);
}

float const H = 0.70710678f; // cos and sin of pi/4: a quarter turn about z is (H, 0, 0, H)

} // namespace

static_assert(sizeof(Quaternion) == 16, "four floats and nothing else");

TEST(Quaternion, IdentityNormalizeAndTheForms) {
    EXPECT_TRUE(elems(Quaternion(), {1, 0, 0, 0}) && Quaternion().norm() == 1.0f);
    Quaternion v = make(0, 3, 0, 4), zero = make(0, 0, 0, 0);
    EXPECT_TRUE(v.normalize() == 5.0f && elems(v, {0, 0.6f, 0, 0.8f}));
    EXPECT_EQ(zero.normalize(), 0.0f); // no zero test: NaN, and the length 0
    EXPECT_TRUE(std::isnan(zero.getValue()[0]) && std::isnan(zero.getValue()[3]));
    // A quarter turn about z in every form; a zero axis and parallel vectors either way (no
    // half turn here) give the identity.
    MatRot4f m(Vector3f(0, 0, 1), HALF_PI_F, Vector3f(1, 2, 3));
    Quaternion g;
    g.setValue(m);
    Vector3f const w(1, 2, 3);
    for (Quaternion const & q :
         {Quaternion(Vector3f(0, 0, 2), HALF_PI_F), Quaternion(0, 0, HALF_PI_F), Quaternion(m), g,
          Quaternion(Vector3f(2, 0, 0), Vector3f(0, 0.5f, 0))})
        EXPECT_TRUE(elems(q, {H, 0, 0, H}, 1e-6));
    for (Quaternion const & q :
         {Quaternion(Vector3f(), -3.0f), Quaternion(w, w), Quaternion(w, -w)})
        EXPECT_TRUE(elems(q, {1, 0, 0, 0}));
    make(H, H, 0, 0).getValue(m); // a quarter turn about x, and no translation any more
    EXPECT_TRUE(elems(m.getValue() + 4, {0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1}, 1e-6));
}

TEST(Quaternion, AlgebraAliasingAndSums) {
    Quaternion const a(Vector3f(1, 2, 2), 0.7f), b(Vector3f(0, 1, 0), -1.1f);
    ASSERT_FALSE(same(a * b, b * a, 1e-3)) << "a and b must not commute";
    Quaternion self(a), ds(a), left(b);
    self *= self;                    // the argument may be the object itself
    Quaternion const & divisor = ds; // the argument may be the object itself
    ds /= divisor;
    left.multLeftBy(a);
    EXPECT_TRUE(same(self, a * a) && same(ds, Quaternion(), 1e-6) && same(left, a * b));
    EXPECT_TRUE(same((a / b) * b, a, 1e-6)); // (a b*) b = a for a unit b
    EXPECT_TRUE(same(make(1, 2, 3, 4) + make(0.5f, -1, 1, 2), make(1.5f, 1, 4, 6)));
    EXPECT_TRUE(same(make(1, 2, 3, 4) - make(0.5f, -1, 1, 2), make(0.5f, 3, 2, 2)));
    EXPECT_EQ(make(1, 2, 3, 4).dot(make(0.5f, -1, 1, 2)), 9.5f);
}

// Host code converts implicitly through the four converting constructors: none is explicit.
static_assert(std::is_convertible_v<int, Matrix4f> &&
                  std::is_convertible_v<float const *, Matrix4f> &&
                  std::is_convertible_v<MatRot4f, Quaternion> &&
                  std::is_convertible_v<float *, Vector3f const &>,
              "converting constructors are not explicit");
