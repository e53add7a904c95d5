// Plain 4x4 arithmetic of the default kernel: products, determinants, the affine family, which
// elements each operation writes and where dst may be an input.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

EnhancedMathFunctions * kernel() {
    return EnhancedMathFunctions::getCurrent();
}

constexpr float kSentinel = -12345.0f;

void fill(float * m, float v) {
    for (int i = 0; i < 16; ++i)
        m[i] = v;
}

// x * x = 1 + 2^-11 + 2^-24 is a tie in float. Rounded on its own it falls to 1 + 2^-11 and a
// further 2^-25 is lost; carried at double width with the 2^-25 it rounds up to 1 + 2^-11 + 2^-23.
constexpr float kX = 1.0f + 0x1p-12f;
constexpr float kSmall = 0x1p-25f;
constexpr float kOnceRounded = 1.0f + 0x1p-11f + 0x1p-23f;

} // namespace

TEST(MatrixArithmetic, ElementWiseOperationsAllowDstToBeAnInput) {
    float a[16], b[16], s[16];
    for (int i = 0; i < 16; ++i) {
        a[i] = static_cast<float>(i);
        b[i] = static_cast<float>(16 - 2 * i);
    }
    kernel()->addMatrices(s, a, b); // s = 16 - i
    kernel()->subMatrices(b, a, b); // b = 3i - 16, dst is b
    kernel()->addMatrices(a, a, a); // a = 2i, dst is both inputs
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(s[i], static_cast<float>(16 - i)) << i;
        EXPECT_EQ(b[i], static_cast<float>(3 * i - 16)) << i;
        EXPECT_EQ(a[i], static_cast<float>(2 * i)) << i;
    }
    kernel()->multMatrixScalar(s, s, -0.5f); // s = i/2 - 8, in place
    kernel()->neg(b, b);                     // b = 16 - 3i, in place
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(s[i], 0.5f * static_cast<float>(i) - 8.0f) << i;
        EXPECT_EQ(b[i], static_cast<float>(16 - 3 * i)) << i;
    }
    float c[16] = {-0.0f, -1.5f, 2.0f, -INFINITY, -NAN};
    kernel()->abs(c, c);
    EXPECT_EQ(c[1], 1.5f);
    EXPECT_EQ(c[2], 2.0f);
    EXPECT_EQ(c[3], INFINITY);
    EXPECT_FALSE(std::signbit(c[0])); // -0 becomes +0
    EXPECT_TRUE(std::isnan(c[4]) && !std::signbit(c[4]));
}

TEST(MatrixArithmetic, MultMatricesAppliesTheRightFactorFirst) {
    // Translation (1, 2, 3) and scale (2, 3, 4).
    float const t[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1};
    float const s[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1};
    float ts[16], st[16];
    kernel()->multMatrices(ts, t, s); // scale, then translate by the unscaled amount
    kernel()->multMatrices(st, s, t); // translate, then scale the translation too
    float const tsWant[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 1, 2, 3, 1};
    float const stWant[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 2, 6, 12, 1};
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(ts[i], tsWant[i]) << i;
        EXPECT_EQ(st[i], stWant[i]) << i;
    }
    // Bottom rows take part: a perspective row (0, 0, -1, 0) times the translation gives
    // W row (0, 0, -1, -3).
    float p[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 0}, pt[16];
    kernel()->multMatrices(pt, p, t);
    EXPECT_EQ(pt[3], 0.0f);
    EXPECT_EQ(pt[11], -1.0f);
    EXPECT_EQ(pt[15], -3.0f);
    EXPECT_EQ(pt[14], 3.0f);
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
    float p[3] = {kX, 0, 0};
    kernel()->multAffineMatrixVec3f(p, m, p);
    EXPECT_EQ(p[0], kOnceRounded);
    p[0] = kX;
    kernel()->multMatrixVec3f(p, m, p);
    EXPECT_EQ(p[0], kOnceRounded);
    // Determinants: kX * kX - kSmall * -1.
    float const n[16] = {kX, -1, 0, 0, kSmall, kX, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(kernel()->det3(n), kOnceRounded);
    EXPECT_EQ(kernel()->det4(n), kOnceRounded);
}

TEST(MatrixArithmetic, MultMatrixVec3fDividesByTheHomogeneousCoordinate) {
    float const id[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    float p[3] = {1.5f, -2.0f, 3.25f};
    kernel()->multMatrixVec3f(p, id, p);
    EXPECT_EQ(p[0], 1.5f);
    EXPECT_EQ(p[1], -2.0f);
    EXPECT_EQ(p[2], 3.25f);

    // Translation (2, 4, 6) with bottom row (0, 0, 0, 2): half the affine result.
    float const m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 4, 6, 2};
    float const v[3] = {1, 2, 3};
    float h[3], a[3], d[3];
    kernel()->multMatrixVec3f(h, m, v);
    kernel()->multAffineMatrixVec3f(a, m, v);
    kernel()->multAffineMatrixVec3fAsDir(d, m, v);
    for (int r = 0; r < 3; ++r) {
        EXPECT_EQ(a[r], 3.0f * v[r]) << r;
        EXPECT_EQ(h[r], 1.5f * v[r]) << r;
        EXPECT_EQ(d[r], v[r]) << r; // a direction is never moved
    }

    // Bottom row (1, 0, 0, -1): W = x - 1 vanishes at x = 1 and gives the zero vector.
    float const w[16] = {1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 5, 5, 5, -1};
    float z[3] = {1, 7, 7};
    kernel()->multMatrixVec3f(z, w, z);
    EXPECT_EQ(z[0], 0.0f);
    EXPECT_EQ(z[1], 0.0f);
    EXPECT_EQ(z[2], 0.0f);
    z[0] = NAN; // a NaN W is no zero
    kernel()->multMatrixVec3f(z, w, z);
    EXPECT_TRUE(std::isnan(z[0]) && std::isnan(z[1]) && std::isnan(z[2]));
}

TEST(MatrixArithmetic, AffineOperationsIgnoreTheBottomRowAndWriteTheirElementsOnly) {
    // A rotation by 90 degrees about z with translation (1, 2, 3); bottom rows hold garbage.
    float const a[16] = {0, 1, 0, NAN, -1, 0, 0, NAN, 0, 0, 1, NAN, 1, 2, 3, NAN};
    float const b[16] = {2, 0, 0, 7, 0, 2, 0, 7, 0, 0, 2, 7, 4, 5, 6, 7};
    float d[16];
    fill(d, kSentinel);
    kernel()->multAffineMatrices(d, a, b); // a after scaling by 2 and moving by (4, 5, 6)
    float const want[16] = {0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, -4, 6, 9, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(d[i], want[i]) << i;

    fill(d, kSentinel);
    kernel()->transposeAffine(d, a);
    float const tWant[9] = {0, -1, 0, 1, 0, 0, 0, 0, 1};
    for (int i = 0; i < 16; ++i) {
        bool const block = i % 4 != 3 && i < 12;
        EXPECT_EQ(d[i], block ? tWant[3 * (i / 4) + i % 4] : kSentinel) << i;
    }

    float const col[3] = {1, 2, 3}, row[3] = {4, 5, 6};
    fill(d, kSentinel);
    kernel()->multAffineColRow(d, col, row);
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r) {
            float const want2 = c == 3 ? kSentinel : r == 3 ? 0.0f : col[r] * row[c];
            EXPECT_EQ(d[4 * c + r], want2) << c << "," << r;
        }

    float u[16], t[16];
    for (int i = 0; i < 16; ++i)
        u[i] = static_cast<float>(i);
    kernel()->transpose(t, u);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(t[4 * c + r], u[4 * r + c]) << r << "," << c;
}

TEST(MatrixArithmetic, Determinants) {
    float id[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_EQ(kernel()->det4(id), 1.0f);
    // Exchanging columns 0 and 2 of diag(2, 3, 4, 5) gives -120.
    float const swapped[16] = {0, 0, 4, 0, 0, 3, 0, 0, 2, 0, 0, 0, 0, 0, 0, 5};
    EXPECT_EQ(kernel()->det4(swapped), -120.0f);
    float const m[16] = {1, 2, 3, 4, 5, 6, 7, 8, 1, 2, 3, 4, 9, 1, 3, 2}; // columns 0, 2 equal
    EXPECT_NEAR(kernel()->det4(m), 0.0f, 1e-5f);
    float const general[16] = {2, 1, 0, 0, 1, 3, 1, 0, 0, 1, 4, 1, 0, 0, 1, 5};
    EXPECT_EQ(kernel()->det4(general), 85.0f); // tridiagonal minors 2, 5, 18: 5 * 18 - 5
    // det3 reads only the upper-left block.
    float const b[16] = {2, 1, 0, NAN, 1, 3, 1, NAN, 0, 1, 4, NAN, NAN, NAN, NAN, NAN};
    EXPECT_EQ(kernel()->det3(b), 18.0f);
}
