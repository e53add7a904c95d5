// Plain 4x4 arithmetic of the default kernel: products, determinants, the affine family, which
// elements each operation writes and where dst may be an input.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

EnhancedMathFunctions * kernel() {
    return EnhancedMathFunctions::getCurrent();
}

constexpr float S = -12345.0f; // sentinel: an element the operation must not write

void expectMat(float const * got, float const * want) {
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(got[i], want[i]) << "element " << i;
}

// x * x = 1 + 2^-11 + 2^-24 is a tie in float. Rounded on its own it falls to 1 + 2^-11 and a
// further 2^-25 is lost; carried at double width with the 2^-25 it rounds up to 1 + 2^-11 + 2^-23.
constexpr float kX = 1.0f + 0x1p-12f;
constexpr float kSmall = 0x1p-25f;
constexpr float kOnceRounded = 1.0f + 0x1p-11f + 0x1p-23f;

} // namespace

TEST(MatrixArithmetic, ElementWiseOperationsAllowDstToBeAnInput) {
    float a[16], b[16], want[16];
    for (int i = 0; i < 16; ++i) {
        a[i] = static_cast<float>(i);
        b[i] = static_cast<float>(16 - 2 * i);
        want[i] = static_cast<float>(16 - 3 * i) * 0.5f; // -(i - (16 - 2i)) / 2
    }
    kernel()->subMatrices(b, a, b);
    kernel()->neg(b, b);
    kernel()->multMatrixScalar(b, b, 0.5f);
    kernel()->addMatrices(a, a, a);
    expectMat(b, want);
    EXPECT_EQ(a[15], 30.0f);
    float c[16] = {-0.0f, -1.5f, -INFINITY, -NAN};
    kernel()->abs(c, c);
    EXPECT_FALSE(std::signbit(c[0])); // -0 becomes +0
    EXPECT_EQ(c[1], 1.5f);
    EXPECT_EQ(c[2], INFINITY);
    EXPECT_TRUE(std::isnan(c[3]) && !std::signbit(c[3]));
}

TEST(MatrixArithmetic, MultMatricesAppliesTheRightFactorFirst) {
    float const t[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}; // translate (1, 2, 3)
    float const s[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}; // scale (2, 3, 4)
    float d[16];
    kernel()->multMatrices(d, t, s); // scale, then translate by the unscaled amount
    float const tsWant[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 1, 2, 3, 1};
    expectMat(d, tsWant);
    kernel()->multMatrices(d, s, t); // translate, then scale the translation too
    float const stWant[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 2, 6, 12, 1};
    expectMat(d, stWant);
    // Bottom rows take part: the perspective row (0, 0, -1, 0) after t gives (0, 0, -1, -3).
    float const p[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 0};
    kernel()->multMatrices(d, p, t);
    float const ptWant[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 1, 2, 3, -3};
    expectMat(d, ptWant);
}

TEST(MatrixArithmetic, ProductsRoundOnceAtDoubleWidth) {
    // Row 0 of m is (kX, 0, 0, kSmall): applied to (kX, 0, 0, 1) it gives kX * kX + kSmall.
    float const m[16] = {kX, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, kSmall, 0, 0, 1};
    float const b[16] = {kX, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    float const bAffine[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, kX, 0, 0, 1};
    float d[16];
    kernel()->multMatrices(d, m, b);
    EXPECT_EQ(d[0], kOnceRounded);
    kernel()->multAffineMatrices(d, m, bAffine);
    EXPECT_EQ(d[12], kOnceRounded);
    float v[4] = {kX, 0, 0, 1};
    kernel()->multMatrixVec4f(v, m, v);
    EXPECT_EQ(v[0], kOnceRounded);
    v[0] = kX;
    kernel()->multAffineMatrixVec3f(v, m, v);
    EXPECT_EQ(v[0], kOnceRounded);
    v[0] = kX;
    kernel()->multMatrixVec3f(v, m, v);
    EXPECT_EQ(v[0], kOnceRounded);
    // Determinants: kX * kX - kSmall * -1.
    float const n[16] = {kX, -1, 0, 0, kSmall, kX, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(kernel()->det3(n), kOnceRounded);
    EXPECT_EQ(kernel()->det4(n), kOnceRounded);
}

TEST(MatrixArithmetic, VectorProductsAndTheHomogeneousDivision) {
    // Translation (2, 4, 6) with bottom row (0, 0, 0, 2): the point is halved, the affine product
    // ignores that row, a direction is never moved. dst is v throughout.
    float const m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 4, 6, 2};
    float h[3] = {1, 2, 3}, a[3] = {1, 2, 3}, d[3] = {1, 2, 3};
    kernel()->multMatrixVec3f(h, m, h);
    kernel()->multAffineMatrixVec3f(a, m, a);
    kernel()->multAffineMatrixVec3fAsDir(d, m, d);
    for (int r = 0; r < 3; ++r) {
        EXPECT_EQ(h[r], 1.5f * static_cast<float>(r + 1)) << r;
        EXPECT_EQ(a[r], 3.0f * static_cast<float>(r + 1)) << r;
        EXPECT_EQ(d[r], static_cast<float>(r + 1)) << r;
    }
    // Bottom row (1, 0, 0, -1): W = x - 1 vanishes at x = 1 and gives the zero vector.
    float const w[16] = {1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 5, 5, 5, -1};
    float z[3] = {1, 7, 7};
    kernel()->multMatrixVec3f(z, w, z);
    EXPECT_TRUE(z[0] == 0.0f && z[1] == 0.0f && z[2] == 0.0f);
    z[0] = NAN; // a NaN W is no zero
    kernel()->multMatrixVec3f(z, w, z);
    EXPECT_TRUE(std::isnan(z[0]) && std::isnan(z[1]) && std::isnan(z[2]));
}

TEST(MatrixArithmetic, AffineOperationsIgnoreTheBottomRowAndWriteTheirElementsOnly) {
    // A rotation by 90 degrees about z with translation (1, 2, 3); bottom rows hold garbage.
    float const a[16] = {0, 1, 0, NAN, -1, 0, 0, NAN, 0, 0, 1, NAN, 1, 2, 3, NAN};
    float const b[16] = {2, 0, 0, 7, 0, 2, 0, 7, 0, 0, 2, 7, 4, 5, 6, 7};
    float d[16] = {S, S, S, S, S, S, S, S, S, S, S, S, S, S, S, S};
    kernel()->multAffineMatrices(d, a, b); // a after scaling by 2 and moving by (4, 5, 6)
    float const want[16] = {0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, -4, 6, 9, 1};
    expectMat(d, want);

    float t[16] = {S, S, S, S, S, S, S, S, S, S, S, S, S, S, S, S};
    kernel()->transposeAffine(t, a);
    float const tWant[16] = {0, -1, 0, S, 1, 0, 0, S, 0, 0, 1, S, S, S, S, S};
    expectMat(t, tWant);

    float const col[3] = {1, 2, 3}, row[3] = {4, 5, 6};
    float o[16] = {S, S, S, S, S, S, S, S, S, S, S, S, S, S, S, S};
    kernel()->multAffineColRow(o, col, row);
    float const oWant[16] = {4, 8, 12, 0, 5, 10, 15, 0, 6, 12, 18, 0, S, S, S, S};
    expectMat(o, oWant);

    float u[16], ut[16];
    for (int i = 0; i < 16; ++i)
        u[i] = static_cast<float>(i);
    kernel()->transpose(ut, u);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(ut[i], static_cast<float>(4 * (i % 4) + i / 4)) << i;
}

TEST(MatrixArithmetic, Determinants) {
    // I + u v^T with u = (1, 1, 1, 1), v = (1, 2, 3, 4) has determinant 1 + v.u = 11; its
    // upper-left block, by the same lemma, 1 + 1 + 2 + 3 = 7. Row 0 is full, so every term of
    // the expansion counts.
    float m[16] = {2, 1, 1, 1, 2, 3, 2, 2, 3, 3, 4, 3, 4, 4, 4, 5};
    EXPECT_EQ(kernel()->det4(m), 11.0f);
    m[3] = m[7] = m[11] = m[12] = m[13] = m[14] = m[15] = NAN; // not read by det3
    EXPECT_EQ(kernel()->det3(m), 7.0f);
    // Exchanging columns 0 and 2 of diag(2, 3, 4, 5) gives -120.
    float const swapped[16] = {0, 0, 4, 0, 0, 3, 0, 0, 2, 0, 0, 0, 0, 0, 0, 5};
    EXPECT_EQ(kernel()->det4(swapped), -120.0f);
    float const twin[16] = {1, 2, 3, 4, 5, 6, 7, 8, 1, 2, 3, 4, 9, 1, 3, 2}; // columns 0, 2 equal
    EXPECT_NEAR(kernel()->det4(twin), 0.0f, 1e-5f);
}
