// Quaternion kernels: worked values by hand, the allowed overlaps and the roundings.
#include "support/TestSupport.h"

using namespace kdrtest;

TEST(QuaternionKernels, ProductsAreHamiltonAtDoubleWidthAndMayOverwriteAnInput) {
    // (1,2,3,4)(5,6,7,8) and (1,2,3,4)(5,-6,-7,-8), expanded by hand.
    float a[4] = {1, 2, 3, 4}, b[4] = {5, 6, 7, 8}, i[4] = {0, 1, 0, 0};
    float const c[4] = {1, 2, 3, 4}, j[4] = {0, 0, 1, 0};
    kernel().multQuaternions(a, a, b);
    EXPECT_TRUE(elems(a, {-60, 12, 30, 24}));
    kernel().divQuaternionsU(b, c, b); // no division by |b|^2 = 174
    EXPECT_TRUE(elems(b, {70, 8, 0, 16}));
    kernel().multQuaternions(i, i, j);
    EXPECT_TRUE(elems(i, {0, 0, 0, 1}));
    // x*x = 1 + 2^-11 + 2^-24 rounds to 1 + 2^-11 in float; at double width w = x*x - 1 is exact.
    float const x = 1.0f + 0x1p-12f;
    float p[4] = {x, 1, 0, 0};
    kernel().multQuaternions(p, p, p);
    EXPECT_EQ(p[0], 0x1p-11f + 0x1p-24f);
}

TEST(QuaternionKernels, InversesDotAndRotationOfAVector) {
    float q[4] = {2, 0, 0, 0}, r[4] = {1, 1, 1, 1}, z[4] = {0, 0, 0, 0};
    kernel().inverseQuaternionU(q, q); // a plain conjugate
    EXPECT_TRUE(elems(q, {2, 0, 0, 0}));
    kernel().inverseQuaternion(r, r);
    EXPECT_TRUE(elems(r, {0.25, -0.25, -0.25, -0.25}));
    kernel().inverseQuaternion(r, z);
    EXPECT_TRUE(elems(r, {0, 0, 0, 0}));

    float const third[4] = {0.5f, 0.5f, 0.5f, 0.5f}, scale2[4] = {2, 0, 0, 0};
    float w[3] = {1, 2, 3}; // a third of a turn about (1,1,1): x -> y -> z -> x, exact
    kernel().applyQuatOn(w, third, w);
    EXPECT_TRUE(elems(w, {3, 1, 2}));
    kernel().applyQuatOn(w, scale2, w); // a quaternion of length 2 scales by 4
    EXPECT_TRUE(elems(w, {12, 4, 8}));

    // 1 + 2^-24 is a tie that rounds back to 1, twice; summed at once it would be 1 + 2^-23.
    float const a[4] = {1, 0x1p-24f, 0x1p-24f, 0}, b[4] = {1, 1, 1, 1};
    float out[2] = {S, S};
    kernel().dotQuaternions(out, a, b);
    EXPECT_TRUE(elems(out, {1, S}));
}

TEST(QuaternionKernels, InterpolationsAreUnnormalisedAndTakeTheShorterWay) {
    float const a[4] = {1, 0, 0, 0}, b[4] = {0.6f, 0.8f, 0, 0}, nb[4] = {-0.6f, -0.8f, 0, 0};
    float const na[4] = {-1, 0, 0, 0}, j[4] = {0, 0, 1, 0};
    float d[4], e[4];
    kernel().quaternionLERP(d, a, nb, 1.0f); // negative dot: towards -nb
    EXPECT_TRUE(elems(d, {0.6f, 0.8f, 0, 0}));
    kernel().quaternionLERP(d, a, na, 0.7f);
    EXPECT_TRUE(elems(d, {1, 0, 0, 0}));
    kernel().quaternionLERP(d, a, j, 2.0f); // a zero dot counts as positive; t is not clamped
    EXPECT_TRUE(elems(d, {-1, 0, 2, 0}));

    // cos h = 0.6, so sin(h/2) = sqrt(0.2) at t = 0.5, and the length is sin h = 0.8.
    kernel().quaternionSLERP(d, a, b, 0.5f);
    double const s = std::sqrt(0.2);
    EXPECT_TRUE(elems(d, {1.6 * s, 0.8 * s, 0, 0}, 1e-6));
    kernel().quaternionSLERP(e, a, nb, 0.5f);
    EXPECT_TRUE(elems(e, {d[0], d[1], d[2], d[3]}));
    kernel().quaternionSLERP(d, a, j, 0.5f); // zero dot: h = pi/2, towards j, not -j
    EXPECT_TRUE(elems(d, {0.7071068, 0, 0.7071068, 0}, 1e-7));
    kernel().quaternionSLERP(d, a, a, 0.3f);
    EXPECT_TRUE(elems(d, {0, 0, 0, 0}));
    float const past[4] = {1.0f + 0x1p-23f, 0, 0, 0}; // dot above 1: acos gives NaN
    kernel().quaternionSLERP(d, a, past, 0.5f);
    EXPECT_TRUE(std::isnan(d[0]));
}
