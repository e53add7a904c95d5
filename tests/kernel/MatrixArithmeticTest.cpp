// Plain 4x4 arithmetic of the default kernel: worked values of the products, determinants and the
// affine family. Which elements each operation writes and where dst may be an input is the kernel
// fuzz target's check.
#include "support/TestSupport.h"

using namespace kdrtest;

TEST(MatrixArithmetic, ElementWiseOperationsAllowDstToBeAnInput) {
    float a[16], b[16];
    for (int i = 0; i < 16; ++i)
        a[i] = static_cast<float>(i), b[i] = static_cast<float>(16 - 2 * i);
    kernel().subMatrices(b, a, b);
    kernel().neg(b, b);
    kernel().multMatrixScalar(b, b, 0.5f);
    kernel().addMatrices(a, a, a);
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(b[i] == static_cast<float>(16 - 3 * i) * 0.5f &&
                    a[i] == 2.0f * static_cast<float>(i))
            << i;
    float c[16] = {-0.0f, -1.5f, -INFINITY, -NAN};
    kernel().abs(c, c);
    EXPECT_TRUE(!std::signbit(c[0]) && c[1] == 1.5f && c[2] == INFINITY);
    EXPECT_TRUE(std::isnan(c[3]) && !std::signbit(c[3]));
}

TEST(MatrixArithmetic, MultMatricesAppliesTheRightFactorFirst) {
    float const t[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}; // translate (1, 2, 3)
    float const s[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}; // scale (2, 3, 4)
    float d[16];
    kernel().multMatrices(d, t, s); // scale, then translate by the unscaled amount
    EXPECT_TRUE(elems(d, {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 1, 2, 3, 1}));
    // Bottom rows take part: the perspective row (0, 0, -1, 0) after t gives (0, 0, -1, -3).
    float const p[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 0};
    kernel().multMatrices(d, p, t);
    EXPECT_TRUE(elems(d, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 1, 2, 3, -3}));
}

TEST(MatrixArithmetic, ProductsRoundOnceAtDoubleWidth) {
    // x * x = 1 + 2^-11 + 2^-24 is a tie in float. Rounded on its own it falls to 1 + 2^-11 and
    // a further 2^-25 is lost; carried at double width with it, it rounds up to 1 + 2^-11 + 2^-23.
    float const x = 1.0f + 0x1p-12f, small = 0x1p-25f, once = 1.0f + 0x1p-11f + 0x1p-23f;
    // Row 0 of m is (x, 0, 0, small): applied to (x, 0, 0, 1) it gives x * x + small.
    float const m[16] = {x, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, small, 0, 0, 1};
    float const b[16] = {x, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    float const bAffine[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, 0, 0, 1};
    float d[16], v4[4] = {x, 0, 0, 1}, va[3] = {x, 0, 0}, vh[3] = {x, 0, 0};
    kernel().multMatrices(d, m, b);
    EXPECT_EQ(d[0], once);
    kernel().multAffineMatrices(d, m, bAffine);
    EXPECT_EQ(d[12], once);
    kernel().multMatrixVec4f(v4, m, v4);
    kernel().multAffineMatrixVec3f(va, m, va);
    kernel().multMatrixVec3f(vh, m, vh);
    EXPECT_TRUE(v4[0] == once && va[0] == once && vh[0] == once);
    float const n[16] = {x, -1, 0, 0, small, x, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}; // x * x + small
    EXPECT_EQ(kernel().det3(n), once);
    EXPECT_EQ(kernel().det4(n), once);
}

TEST(MatrixArithmetic, VectorProductsAndTheHomogeneousDivision) {
    // Translation (2, 4, 6) with bottom row (0, 0, 0, 2): the point is halved, the affine product
    // ignores that row, a direction is never moved. dst is v throughout.
    float const m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 4, 6, 2};
    float h[3] = {1, 2, 3}, a[3] = {1, 2, 3}, d[3] = {1, 2, 3};
    kernel().multMatrixVec3f(h, m, h);
    kernel().multAffineMatrixVec3f(a, m, a);
    kernel().multAffineMatrixVec3fAsDir(d, m, d);
    EXPECT_TRUE(elems(h, {1.5, 3, 4.5}));
    EXPECT_TRUE(elems(a, {3, 6, 9}));
    EXPECT_TRUE(elems(d, {1, 2, 3}));
    // Bottom row (1, 0, 0, -1): W = x - 1 vanishes at x = 1 and gives the zero vector; a NaN W
    // is no zero.
    float const w[16] = {1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 5, 5, 5, -1};
    float z[3] = {1, 7, 7};
    kernel().multMatrixVec3f(z, w, z);
    EXPECT_TRUE(elems(z, {0, 0, 0}));
    z[0] = NAN;
    kernel().multMatrixVec3f(z, w, z);
    EXPECT_TRUE(std::isnan(z[0]) && std::isnan(z[1]) && std::isnan(z[2]));
}

TEST(MatrixArithmetic, HomogeneousDivisionMultipliesByTheDoubleReciprocal) {
    // W = 3 at the point (1, 1, 0). The numerators are n0 = 3 + 3*2^-24 + 2^-51 (exact in
    // double: the sum of the elements 3, 0x1.8p-23 and 0x1p-51), n1 = 1 and n2 = 2.
    // k = 1/3 rounded to double is (1/3)(1 - 2^-54), so n0 * k = 1 + 2^-24 + (2/3 - 1/4 - e) 2^-52
    // with e > 0 tiny; that rounds to the double 1 + 2^-24, the tie between the floats 1 and
    // 1 + 2^-23, which goes to the even 1. The true quotient n0 / 3 = 1 + 2^-24 + (2/3) 2^-52
    // lies above the tie: dividing (in double or in float), or multiplying by the float 1/3
    // (0x1.555556p-2, above 1/3), gives 1 + 2^-23 instead. n1 and n2 give 1/3 and 2/3 rounded
    // to float: 0x1.555556p-2 and 0x1.555556p-1.
    float const m[16] = {3, 0, 0, 0, 0x1.8p-23f, 0, 0, 0, 0, 0, 0, 0, 0x1p-51f, 1, 2, 3};
    float v[3] = {1, 1, 0};
    kernel().multMatrixVec3f(v, m, v);
    EXPECT_EQ(v[0], 1.0f);
    EXPECT_EQ(v[1], 0x1.555556p-2f);
    EXPECT_EQ(v[2], 0x1.555556p-1f);
}

TEST(MatrixArithmetic, AffineOperationsIgnoreTheBottomRowAndWriteTheirElementsOnly) {
    // A quarter turn about z with translation (1, 2, 3); bottom rows hold garbage.
    float const a[16] = {0, 1, 0, NAN, -1, 0, 0, NAN, 0, 0, 1, NAN, 1, 2, 3, NAN};
    float const b[16] = {2, 0, 0, 7, 0, 2, 0, 7, 0, 0, 2, 7, 4, 5, 6, 7};
    float d[16], t[16], o[16];
    std::fill(t, t + 16, S), std::fill(o, o + 16, S);
    kernel().multAffineMatrices(d, a, b); // a after scaling by 2 and moving by (4, 5, 6)
    EXPECT_TRUE(elems(d, {0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, -4, 6, 9, 1}));
    kernel().transposeAffine(t, a);
    EXPECT_TRUE(elems(t, {0, -1, 0, S, 1, 0, 0, S, 0, 0, 1, S, S, S, S, S}));
    float const col[3] = {1, 2, 3}, row[3] = {4, 5, 6};
    kernel().multAffineColRow(o, col, row);
    EXPECT_TRUE(elems(o, {4, 8, 12, 0, 5, 10, 15, 0, 6, 12, 18, 0, S, S, S, S}));
}

TEST(MatrixArithmetic, Determinants) {
    // I + u v^T with u = (1, 1, 1, 1), v = (1, 2, 3, 4) has determinant 1 + v.u = 11; its
    // upper-left block, by the same lemma, 1 + 1 + 2 + 3 = 7. Row 0 is full, so every term of
    // the expansion counts.
    float m[16] = {2, 1, 1, 1, 2, 3, 2, 2, 3, 3, 4, 3, 4, 4, 4, 5};
    EXPECT_EQ(kernel().det4(m), 11.0f);
    m[3] = m[7] = m[11] = m[12] = m[13] = m[14] = m[15] = NAN; // not read by det3
    EXPECT_EQ(kernel().det3(m), 7.0f);
}
