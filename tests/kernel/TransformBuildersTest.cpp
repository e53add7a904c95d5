// The transform builders: which elements each one writes, the worked values, and the products
// against a double-width reference.
#include "kernel/KernelTestSupport.h"

using namespace ktest;

namespace {

// A general matrix, small dyadic values, with a bottom row that is not 0, 0, 0, 1, and its affine
// part.
Mat const kGeneral = {1.5, -2, 0.25, 0.5, 3, 1, -1, -0.75, -0.5, 2.5, 4, 1.25, 7, -3, 2, 2};
Mat const kAffine = {1.5, -2, 0.25, 0, 3, 1, -1, 0, -0.5, 2.5, 4, 0, 7, -3, 2, 1};

TEST(TransformBuilders, SetScaleSetTranslateAndSetProjectionWriteEveryElement) {
    float const s[3] = {2, 3, 4};
    FMat m;
    m.fill(S);
    kernel().setScale(m.data(), s);
    EXPECT_EQ(m, toFloats(diagonal(2, 3, 4)));
    m.fill(S);
    kernel().setTranslate(m.data(), s);
    EXPECT_EQ(m, (FMat{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 3, 4, 1}));

    // The plane z = 2, as normal 0, 0, 1 with d = -2 and as normal 0, 0, 2 with d = -4: the same
    // map p' = p - dir (n . p + d) / (n . dir), so the same matrix. All values are exact.
    float const dir[3] = {0.5f, 0.0f, 1.0f}, unitNormal[3] = {0, 0, 1}, longNormal[3] = {0, 0, 2};
    for (float const * n : {unitNormal, longNormal}) {
        m.fill(S);
        kernel().setProjection(m.data(), n, -2.0f * n[2], dir);
        EXPECT_EQ(m, (FMat{1, 0, 0, 0, 0, 1, 0, 0, -0.5f, 0, 0, 0, 1, 0, 2, 1})) << n[2];
    }
    float p[3] = {3, 4, 9};
    kernel().multAffineMatrixVec3f(p, m.data(), p);
    expectNear(p, {-0.5, 4, 2});
    // A dir parallel to the plane, or a zero normal, has no projection: dst stays as it was.
    float const inPlane[3] = {1.0f, -1.0f, 0.0f}, zero[3] = {0, 0, 0};
    m.fill(S);
    kernel().setProjection(m.data(), unitNormal, -2.0f, inPlane);
    kernel().setProjection(m.data(), zero, -2.0f, dir);
    EXPECT_EQ(m, toFloats(Mat{S, S, S, S, S, S, S, S, S, S, S, S, S, S, S, S}));
}

TEST(TransformBuilders, RotationsAboutAnAxisOfAnyLength) {
    // Left: R src, right: src R, src taken as affine. The axis of length 10 acts as its unit.
    float const axis[3] = {0, 0, 10}, zero[3] = {0, 0, 0};
    for (bool left : {true, false}) {
        FMat const src = toFloats(kGeneral);
        FMat m;
        if (left)
            kernel().multLeftByRotate(m.data(), src.data(), axis, 0.625f);
        else
            kernel().multRightByRotate(m.data(), src.data(), axis, 0.625f);
        Mat const want =
            left ? product(rotation(2, 0.625), kAffine) : product(kAffine, rotation(2, 0.625));
        for (int i = 0; i < 16; ++i)
            EXPECT_NEAR(m[i], want[i], 4e-6) << (left ? "left " : "right ") << i;
    }
    FMat m;
    kernel().setRotate(m.data(), zero, 1.0f); // no axis: the identity
    EXPECT_EQ(m, toFloats(diagonal(1, 1, 1)));
}

TEST(TransformBuilders, InPlaceAxisRotationsAreTheElementaryProducts) {
    using Op = void (EnhancedMathFunctions::*)(float * const, float) const;
    Op const ops[2][3] = {
        {&EnhancedMathFunctions::multLeftByRotateX, &EnhancedMathFunctions::multLeftByRotateY,
         &EnhancedMathFunctions::multLeftByRotateZ},
        {&EnhancedMathFunctions::multRightByRotateX, &EnhancedMathFunctions::multRightByRotateY,
         &EnhancedMathFunctions::multRightByRotateZ}};
    for (int side = 0; side < 2; ++side)
        for (int axis = 0; axis < 3; ++axis) {
            FMat m = toFloats(kGeneral);
            Op const op = ops[side][axis]; // a named copy: GCC 12's UBSan miscompiles the call
            (kernel().*op)(m.data(), 0.625f);
            Mat const r = rotation(axis, 0.625);
            Mat const want = side == 0 ? product(r, kGeneral) : product(kGeneral, r);
            // Left products write the two rows of the plane, in all four columns (so the
            // translation turns); right products its two columns, in all four rows.
            for (int i = 0; i < 16; ++i) {
                int const line = side == 0 ? i % 4 : i / 4;
                bool const turned = line != axis && line != 3; // the others stay bit for bit
                EXPECT_NEAR(m[i], turned ? want[i] : kGeneral[i], turned ? 4e-6 : 0.0)
                    << side << axis << " element " << i;
            }
        }
}

TEST(TransformBuilders, InPlaceTranslatesAndScalesKeepTheBottomRow) {
    // Against full products with the affine part; all values are exact in float. The bottom row
    // is neither read nor written. Left scales scale the translation, right ones do not; right
    // translations go through the matrix, left ones do not.
    float const s[3] = {2, 3, 4};
    Mat const t = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 3, 4, 1}, sc = diagonal(2, 3, 4);
    using Op = void (EnhancedMathFunctions::*)(float * const, float const *) const;
    struct Case {
        Op op;
        Mat want;
    } const cases[] = {
        {&EnhancedMathFunctions::multLeftByTranslate, product(t, kAffine)},
        {&EnhancedMathFunctions::multRightByTranslate, product(kAffine, t)},
        {&EnhancedMathFunctions::multLeftByScale, product(sc, kAffine)},
        {&EnhancedMathFunctions::multRightByScale, product(kAffine, sc)},
    };
    for (int c = 0; c < 4; ++c) {
        FMat a = toFloats(kGeneral);
        Op const op = cases[c].op;
        (kernel().*op)(a.data(), s);
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(a[i], static_cast<float>(i % 4 == 3 ? kGeneral[i] : cases[c].want[i]))
                << "case " << c << " element " << i;
    }
}

} // namespace
