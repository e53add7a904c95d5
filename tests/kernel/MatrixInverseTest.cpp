// Inversion kernels: Gauss-Jordan at double width, its failures, the cheap inverses of known forms,
// and the composites that must reach inverseMatrix and transposeAffine through the table.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

EnhancedMathFunctions * kernel() {
    return EnhancedMathFunctions::getCurrent();
}

constexpr float S = -12345.0f; // sentinel: an element the operation must not write
constexpr float kIdentity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
constexpr float kSentinels[16] = {S, S, S, S, S, S, S, S, S, S, S, S, S, S, S, S};

void expectMat(float const * got, float const * want) {
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(got[i], want[i]) << "element " << i;
}

void copy(float * dst, float const * src) {
    std::copy(src, src + 16, dst);
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
    expectMat(d, kIdentity);

    // m[0] = 0: regular only with a row exchange. Columns (0, 2) and (4, 0) swap and scale x and
    // y; the inverse block has columns (0, 1/4) and (1/2, 0), its translation is -(block)(4, 2).
    // All pivots are powers of two, so the result is exact.
    float const swapXY[16] = {0, 2, 0, 0, 4, 0, 0, 0, 0, 0, 1, 0, 4, 2, 0, 1};
    EXPECT_TRUE(kernel()->inverseMatrix(d, swapXY));
    float const swapWant[16] = {0, 0.25f, 0, 0, 0.5f, 0, 0, 0, 0, 0, 1, 0, -1, -1, 0, 1};
    expectMat(d, swapWant);

    // A shear by 7 inverts to -7 exactly. The pivot search puts 7 first and the elimination works
    // with 1/7; in float that error survives into the result (-0x1.bffffep+2), at double width it
    // stays far below a float ulp.
    float const shear[16] = {1, 0, 0, 0, 7, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_TRUE(kernel()->inverseMatrix(d, shear));
    float const shearWant[16] = {1, 0, 0, 0, -7, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    expectMat(d, shearWant);

    // A perspective matrix (non-trivial bottom row): p * inverse is the identity, and the same
    // inverse comes back in place.
    float p[16] = {1.5f, 0, 0, 0, 0, 2, 0, 0, 0.25f, 0.5f, -1.2f, -1, 0, 0, -2.2f, 0};
    EXPECT_TRUE(kernel()->inverseMatrix(d, p));
    float prod[16];
    kernel()->multMatrices(prod, p, d);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(prod[i], kIdentity[i], 1e-6f) << i;
    EXPECT_TRUE(kernel()->inverseMatrix(p, p));
    expectMat(p, d);

    // A NaN is no zero pivot: the elimination runs on.
    float const n[16] = {NAN, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_TRUE(kernel()->inverseMatrix(d, n));
    EXPECT_TRUE(std::isnan(d[0]));
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
        float d[16], inPlace[16];
        copy(d, kSentinels);
        copy(inPlace, m);
        EXPECT_FALSE(kernel()->inverseMatrix(d, m));
        EXPECT_FALSE(kernel()->inverseMatrix(inPlace, inPlace));
        expectMat(d, kSentinels);
        expectMat(inPlace, m);
    }
}

TEST_F(MatrixInverse, CheapInversesOfKnownForms) {
    // Scale (2, 4, 2^-100) with translation (1, 2, 3): only an exact zero fails.
    float const s[16] = {2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0x1p-100f, 0, 1, 2, 3, 1};
    float d[16], m[16];
    copy(d, kSentinels);
    EXPECT_TRUE(kernel()->inverseScale(d, s)); // all 16 written, no translation
    float const sWant[16] = {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0x1p100f, 0, 0, 0, 0, 1};
    expectMat(d, sWant);
    copy(m, s);
    EXPECT_TRUE(kernel()->inverseScale(m)); // the translation stays, unnegated and unscaled
    float const sInPlace[16] = {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0x1p100f, 0, 1, 2, 3, 1};
    expectMat(m, sInPlace);
    m[5] = 0.0f;
    copy(d, m);
    EXPECT_FALSE(kernel()->inverseScale(m));
    expectMat(m, d);
    copy(d, kSentinels);
    EXPECT_FALSE(kernel()->inverseScale(d, m));
    expectMat(d, kSentinels);

    // A rotation about z by 90 degrees with translation (1, 2, 3).
    float const rt[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1};
    EXPECT_TRUE(kernel()->inverseTranslate(d, rt)); // the rotation part is ignored
    float const tWant[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1};
    expectMat(d, tWant);
    copy(m, rt);
    EXPECT_TRUE(kernel()->inverseTranslate(m));
    float const tInPlace[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, -1, -2, -3, 1};
    expectMat(m, tInPlace);

    // Rigid inverse: block transposed, translation -R't, bottom row not written.
    copy(d, kSentinels);
    EXPECT_TRUE(kernel()->inverseRotateAndTr(d, rt));
    float const rWant[16] = {0, -1, 0, S, 1, 0, 0, S, 0, 0, 1, S, -2, 1, -3, S};
    expectMat(d, rWant);
    float prod[16];
    kernel()->multAffineMatrices(prod, d, rt); // d's sentinel bottom row is not read
    expectMat(prod, kIdentity);
    copy(d, kSentinels);
    EXPECT_TRUE(kernel()->inverseRotate(d, rt));
    float const rotWant[16] = {0, -1, 0, S, 1, 0, 0, S, 0, 0, 1, S, S, S, S, S};
    expectMat(d, rotWant);
}

TEST_F(MatrixInverse, CompositesReachTheCurrentOperationsThroughTheTable) {
    Calls calls;
    (new SpyKernel(calls))->setDefault();
    float d[16];
    copy(d, kSentinels);
    EXPECT_FALSE(kernel()->inverse3(d, kIdentity)); // the override's result comes back
    EXPECT_FALSE(kernel()->inverseAffine(d, kIdentity));
    EXPECT_EQ(calls.inverseMatrix, 2);
    EXPECT_EQ(calls.dst, d);
    EXPECT_EQ(calls.src, kIdentity);
    expectMat(d, kSentinels);

    float const rt[16] = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1};
    EXPECT_TRUE(kernel()->inverseRotate(d, rt));
    EXPECT_EQ(calls.transposeAffine, 1);
    expectMat(d, kSentinels); // the spy wrote nothing
    EXPECT_TRUE(kernel()->inverseRotateAndTr(d, rt));
    EXPECT_EQ(calls.transposeAffine, 2);
    EXPECT_EQ(calls.dst, d);
    EXPECT_EQ(calls.src, rt);
    EXPECT_EQ(calls.dst12AtCall, -2.0f); // the translation is written before the transpose
    EXPECT_EQ(d[0], S);
}
