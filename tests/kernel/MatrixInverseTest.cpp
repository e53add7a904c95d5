// Inversion kernels: Gauss-Jordan at double width, its failures, the cheap inverses of known forms,
// and the composites that must reach inverseMatrix and transposeAffine through the table.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

EnhancedMathFunctions * kernel() {
    return EnhancedMathFunctions::getCurrent();
}

constexpr float kSentinel = -12345.0f;
constexpr float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

void fill(float * m, float v) {
    for (int i = 0; i < 16; ++i)
        m[i] = v;
}

void expectUntouched(float const * m, float v) {
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], v) << i;
}

// Records what the composites hand to the overridden operations.
struct Calls {
    int inverseMatrix = 0;
    int transposeAffine = 0;
    float const * src = nullptr;
    float * dst = nullptr;
    float dst12AtCall = 0.0f;
};

class SpyKernel : public EnhancedMathFunctions {
public:
    explicit SpyKernel(Calls & calls) : m_calls(calls) {}
    bool inverseMatrix(float * const dst, float const * const src) const override {
        ++m_calls.inverseMatrix;
        m_calls.dst = dst;
        m_calls.src = src;
        return false; // the default would succeed on the matrices used below
    }
    void transposeAffine(float * const dst, float const * const src) const override {
        ++m_calls.transposeAffine;
        m_calls.dst = dst;
        m_calls.src = src;
        m_calls.dst12AtCall = dst[12];
    }

private:
    Calls & m_calls;
};

class MatrixInverse : public ::testing::Test {
protected:
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
};

} // namespace

TEST_F(MatrixInverse, GaussJordanWorkedValues) {
    float d[16];
    EXPECT_TRUE(kernel()->inverseMatrix(d, kIdentity));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(d[i], kIdentity[i]) << i;

    // m[0] = 0: regular only with the row exchange. Columns (0, 2, 0, 0) and (4, 0, 0, 0) swap
    // and scale x and y; the inverse has columns (0, 1/4, 0, 0) and (1/2, 0, 0, 0).
    float const swapXY[16] = {0, 2, 0, 0, 4, 0, 0, 0, 0, 0, 1, 0, 4, 2, 0, 1};
    EXPECT_TRUE(kernel()->inverseMatrix(d, swapXY));
    // Translation: -(inverse block) (4, 2) = -(1, 1). All pivots are powers of two: exact.
    float const swapWant[16] = {0, 0.25f, 0, 0, 0.5f, 0, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(d[i], swapWant[i]) << i;

    // A perspective matrix (non-trivial bottom row): m * inverse is the identity, and the same
    // inverse comes back in place.
    float p[16] = {1.5f, 0, 0, 0, 0, 2, 0, 0, 0.25f, 0.5f, -1.2f, -1, 0, 0, -2.2f, 0};
    EXPECT_TRUE(kernel()->inverseMatrix(d, p));
    float prod[16];
    kernel()->multMatrices(prod, p, d);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(prod[i], kIdentity[i], 1e-6f) << i;
    EXPECT_TRUE(kernel()->inverseMatrix(p, p));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(p[i], d[i]) << i;

    // A NaN is no zero pivot: the elimination runs on.
    float n[16] = {NAN, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_TRUE(kernel()->inverseMatrix(d, n));
    EXPECT_TRUE(std::isnan(d[0]));
}

TEST_F(MatrixInverse, GaussJordanRoundsOnlyTheResult) {
    // A shear with 7 above the diagonal inverts to -7 exactly. The pivot search puts 7 first and
    // works with 1/7, whose float rounding error survives into the result (-0x1.bffffep+2) when
    // the elimination runs in float; at double width the error stays far below a float ulp.
    float const shear[16] = {1, 0, 0, 0, 7, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    float d[16];
    EXPECT_TRUE(kernel()->inverseMatrix(d, shear));
    EXPECT_EQ(d[4], -7.0f);
    EXPECT_EQ(d[0], 1.0f);
    EXPECT_EQ(d[5], 1.0f);
    EXPECT_EQ(d[1], 0.0f);
}

TEST_F(MatrixInverse, SingularMatrixLeavesDstUntouched) {
    // Each zero-pivot test in turn: a zero group fails the first pivot, proportional groups the
    // second, diag(1, 1, 0, 1) the third; equal groups and diag(1, 1, 1, 0) the last.
    float const singular[5][16] = {
        {0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
        {1, 2, 0, 0, 2, 4, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
        {1, 0, 0, 0, 0, 1, 0, 0, 3, 1, 4, 2, 3, 1, 4, 2},
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0},
    };
    for (auto const & m : singular) {
        float d[16];
        fill(d, kSentinel);
        EXPECT_FALSE(kernel()->inverseMatrix(d, m));
        expectUntouched(d, kSentinel);
        float inPlace[16];
        for (int i = 0; i < 16; ++i)
            inPlace[i] = m[i];
        EXPECT_FALSE(kernel()->inverseMatrix(inPlace, inPlace));
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(inPlace[i], m[i]) << i;
    }
}

TEST_F(MatrixInverse, CheapInversesOfKnownForms) {
    // Scale (2, 4, 2^-100) with translation (1, 2, 3): only an exact zero fails.
    float const s[16] = {2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0x1p-100f, 0, 1, 2, 3, 1};
    float d[16];
    fill(d, kSentinel);
    EXPECT_TRUE(kernel()->inverseScale(d, s));
    float const sWant[16] = {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0x1p100f, 0, 0, 0, 0, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(d[i], sWant[i]) << i;
    float m[16];
    for (int i = 0; i < 16; ++i)
        m[i] = s[i];
    EXPECT_TRUE(kernel()->inverseScale(m)); // the translation stays, unnegated and unscaled
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], i < 12 ? sWant[i] : s[i]) << i;
    m[5] = 0.0f;
    fill(d, kSentinel);
    EXPECT_FALSE(kernel()->inverseScale(d, m));
    expectUntouched(d, kSentinel);
    float const before[4] = {m[0], m[10], m[12], m[15]};
    EXPECT_FALSE(kernel()->inverseScale(m));
    EXPECT_EQ(m[0], before[0]);
    EXPECT_EQ(m[10], before[1]);
    EXPECT_EQ(m[12], before[2]);
    EXPECT_EQ(m[15], before[3]);

    // A rotation about z by 90 degrees with translation (1, 2, 3).
    float const rt[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1};
    fill(d, kSentinel);
    EXPECT_TRUE(kernel()->inverseTranslate(d, rt)); // the rotation part is ignored
    float const tWant[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(d[i], tWant[i]) << i;
    for (int i = 0; i < 16; ++i)
        m[i] = rt[i];
    EXPECT_TRUE(kernel()->inverseTranslate(m));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], i >= 12 && i < 15 ? -rt[i] : rt[i]) << i;

    // Rigid inverse: block transposed, translation turned back, bottom row not written.
    fill(d, kSentinel);
    EXPECT_TRUE(kernel()->inverseRotateAndTr(d, rt));
    float const rWant[16] = {0, -1, 0, kSentinel, 1,  0, 0,  kSentinel,
                             0, 0,  1, kSentinel, -2, 1, -3, kSentinel};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(d[i], rWant[i]) << i;
    float prod[16];
    kernel()->multAffineMatrices(prod, d, rt); // d's sentinel bottom row is not read
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(prod[i], kIdentity[i]) << i;
    fill(d, kSentinel);
    EXPECT_TRUE(kernel()->inverseRotate(d, rt));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(d[i], i < 12 && i % 4 != 3 ? rWant[i] : kSentinel) << i;
}

TEST_F(MatrixInverse, CompositesReachTheCurrentOperationsThroughTheTable) {
    Calls calls;
    (new SpyKernel(calls))->setDefault();
    float d[16];
    fill(d, kSentinel);
    EXPECT_FALSE(kernel()->inverse3(d, kIdentity)); // the override's result comes back
    EXPECT_FALSE(kernel()->inverseAffine(d, kIdentity));
    EXPECT_EQ(calls.inverseMatrix, 2);
    EXPECT_EQ(calls.dst, d);
    EXPECT_EQ(calls.src, kIdentity);
    expectUntouched(d, kSentinel);

    float const rt[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1};
    EXPECT_TRUE(kernel()->inverseRotate(d, rt));
    EXPECT_EQ(calls.transposeAffine, 1);
    expectUntouched(d, kSentinel); // the spy wrote nothing
    EXPECT_TRUE(kernel()->inverseRotateAndTr(d, rt));
    EXPECT_EQ(calls.transposeAffine, 2);
    EXPECT_EQ(calls.dst, d);
    EXPECT_EQ(calls.src, rt);
    EXPECT_EQ(calls.dst12AtCall, -2.0f); // the translation is written before the transpose
    EXPECT_EQ(d[0], kSentinel);
}
