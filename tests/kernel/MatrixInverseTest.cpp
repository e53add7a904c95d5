// Inversion kernels: Gauss-Jordan at double width, its failures, and the cheap inverses of known
// forms.
#include "support/TestSupport.h"

using namespace kdrtest;

TEST(MatrixInverse, GaussJordanWorkedValues) {
    // m[0] = 0: regular only with a row exchange. Columns (0, 2) and (4, 0) swap and scale x and
    // y; the inverse block has columns (0, 1/4) and (1/2, 0), its translation is -(block)(4, 2).
    // All pivots are powers of two, so the result is exact.
    float d[16], e[16], prod[16];
    float const swapXY[16] = {0, 2, 0, 0, 4, 0, 0, 0, 0, 0, 1, 0, 4, 2, 0, 1};
    EXPECT_TRUE(kernel().inverseMatrix(d, swapXY));
    EXPECT_TRUE(elems(d, {0, 0.25, 0, 0, 0.5, 0, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1}));
    // A shear by 7 inverts to -7 exactly. The pivot search puts 7 first and the elimination works
    // with 1/7; in float that error survives into the result (-0x1.bffffep+2), at double width it
    // stays far below a float ulp.
    float const shear[16] = {1, 0, 0, 0, 7, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_TRUE(kernel().inverseMatrix(d, shear));
    EXPECT_TRUE(elems(d, {1, 0, 0, 0, -7, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    // A perspective matrix: p times its inverse is the identity, inverseAffine gives the same
    // full inverse.
    float p[16] = {1.5f, 0, 0, 0, 0, 2, 0, 0, 0.25f, 0.5f, -1.2f, -1, 0, 0, -2.2f, 0};
    EXPECT_TRUE(kernel().inverseMatrix(d, p) && kernel().inverseAffine(e, p));
    kernel().multMatrices(prod, p, d);
    EXPECT_TRUE(elems(prod, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, 1e-6));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(e[i], d[i]) << i;
    // A NaN is no zero pivot: the elimination runs on.
    float const n[16] = {NAN, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_TRUE(kernel().inverseMatrix(d, n) && std::isnan(d[0]));
}

TEST(MatrixInverse, EachZeroPivotTestRefuses) {
    // Each zero-pivot test in turn: a zero group fails the first pivot, proportional groups the
    // second, diag(1, 1, 0, 1) the third; equal groups and diag(1, 1, 1, 0) the last.
    float const singular[5][16] = {
        {0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
        {1, 2, 0, 0, 2, 4, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
        {1, 0, 0, 0, 0, 1, 0, 0, 3, 1, 4, 2, 3, 1, 4, 2},
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0},
    };
    float d[16];
    for (int c = 0; c < 5; ++c)
        EXPECT_FALSE(kernel().inverseMatrix(d, singular[c])) << "case " << c;
}

TEST(MatrixInverse, CheapInversesOfKnownForms) {
    // Scale (2, 4, 2^-100) with translation (1, 2, 3). The out-of-place form drops the
    // translation; in place it stays as it was.
    float const s[16] = {2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0x1p-100f, 0, 1, 2, 3, 1};
    float d[16], m[16];
    std::copy(s, s + 16, m);
    EXPECT_TRUE(kernel().inverseScale(d, s) && kernel().inverseScale(m));
    EXPECT_TRUE(elems(d, {0.5, 0, 0, 0, 0, 0.25, 0, 0, 0, 0, 0x1p100, 0, 0, 0, 0, 1}));
    EXPECT_TRUE(elems(m, {0.5, 0, 0, 0, 0, 0.25, 0, 0, 0, 0, 0x1p100, 0, 1, 2, 3, 1}));
    m[5] = 0.0f; // only an exact zero refuses, in both forms
    EXPECT_FALSE(kernel().inverseScale(m) || kernel().inverseScale(d, m));

    // A quarter turn about z with translation (1, 2, 3).
    float const rt[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1};
    std::copy(rt, rt + 16, m);
    EXPECT_TRUE(kernel().inverseTranslate(d, rt) && kernel().inverseTranslate(m));
    EXPECT_TRUE(elems(d, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1})); // rotation ignored
    EXPECT_TRUE(elems(m, {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1}));
    // Rigid inverses: block transposed, translation -R't, bottom row not written.
    std::fill(d, d + 16, S);
    EXPECT_TRUE(kernel().inverseRotate(d, rt));
    EXPECT_TRUE(elems(d, {0, -1, 0, S, 1, 0, 0, S, 0, 0, 1, S, S, S, S, S}));
    EXPECT_TRUE(kernel().inverseRotateAndTr(d, rt));
    EXPECT_TRUE(elems(d, {0, -1, 0, S, 1, 0, 0, S, 0, 0, 1, S, -2, 1, -3, S}));
}
