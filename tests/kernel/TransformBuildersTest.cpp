// The transform builders: the worked values, and the products against a double-width reference.
#include "support/TestSupport.h"

using namespace kdrtest;

// A general matrix, small dyadic values, with a bottom row that is not 0, 0, 0, 1, and its affine
// part.
Mat const kGeneral = {1.5, -2, 0.25, 0.5, 3, 1, -1, -0.75, -0.5, 2.5, 4, 1.25, 7, -3, 2, 2};
Mat const kAffine = {1.5, -2, 0.25, 0, 3, 1, -1, 0, -0.5, 2.5, 4, 0, 7, -3, 2, 1};

TEST(TransformBuilders, BuildersWorkedValues) {
    float const s[3] = {2, 3, 4};
    FMat m;
    kernel().setScale(m.data(), s);
    EXPECT_EQ(m, toFloats(diagonal(2, 3, 4)));
    kernel().setTranslate(m.data(), s);
    EXPECT_EQ(m, (FMat{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 3, 4, 1}));

    // The plane z = 2, as normal 0, 0, 1 with d = -2 and as normal 0, 0, 2 with d = -4: the same
    // map p' = p - dir (n . p + d) / (n . dir), so the same matrix, which sends 3, 4, 9 to
    // -0.5, 4, 2. All values are exact.
    float const dir[3] = {0.5f, 0.0f, 1.0f}, unitNormal[3] = {0, 0, 1}, longNormal[3] = {0, 0, 2};
    for (float const * n : {unitNormal, longNormal}) {
        kernel().setProjection(m.data(), n, -2.0f * n[2], dir);
        EXPECT_EQ(m, (FMat{1, 0, 0, 0, 0, 1, 0, 0, -0.5f, 0, 0, 0, 1, 0, 2, 1})) << n[2];
    }
    // A dir parallel to the plane, or a zero normal, has no projection: dst keeps what it held.
    float const inPlane[3] = {1.0f, -1.0f, 0.0f}, zero[3] = {0, 0, 0};
    kernel().setProjection(m.data(), unitNormal, -2.0f, inPlane);
    kernel().setProjection(m.data(), zero, -2.0f, dir);
    EXPECT_EQ(m, (FMat{1, 0, 0, 0, 0, 1, 0, 0, -0.5f, 0, 0, 0, 1, 0, 2, 1}));
    kernel().setRotate(m.data(), zero, 1.0f); // no axis: the identity
    EXPECT_EQ(m, toFloats(diagonal(1, 1, 1)));
}

TEST(TransformBuilders, ProductsMatchTheDoubleWidthReference) {
    // Left products write rows, in all four columns (so the translation turns), right products
    // columns, in all four rows; what they do not write stays bit for bit. Translations and
    // scales take the bottom row for 0, 0, 0, 1 and leave it; the two about an axis (of any
    // length) take src as affine and write 0, 0, 0, 1.
    float const s[3] = {2, 3, 4}, z10[3] = {0, 0, 10}, a = 0.625f;
    Mat const t = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 3, 4, 1}, sc = diagonal(2, 3, 4);
    auto keepRow3 = [](Mat w) {
        for (int i = 3; i < 16; i += 4)
            w[i] = kGeneral[i];
        return w;
    };
    FMat const src = toFloats(kGeneral);
    EnhancedMathFunctions const & k = kernel();
    struct Case {
        std::function<void(float *)> op;
        Mat want;
        double tol;
    } const cases[] = {
        {[&](float * m) { k.multLeftByRotateX(m, a); }, product(rotation(0, a), kGeneral), 4e-6},
        {[&](float * m) { k.multLeftByRotateY(m, a); }, product(rotation(1, a), kGeneral), 4e-6},
        {[&](float * m) { k.multLeftByRotateZ(m, a); }, product(rotation(2, a), kGeneral), 4e-6},
        {[&](float * m) { k.multRightByRotateX(m, a); }, product(kGeneral, rotation(0, a)), 4e-6},
        {[&](float * m) { k.multRightByRotateY(m, a); }, product(kGeneral, rotation(1, a)), 4e-6},
        {[&](float * m) { k.multRightByRotateZ(m, a); }, product(kGeneral, rotation(2, a)), 4e-6},
        {[&](float * m) { k.multLeftByTranslate(m, s); }, keepRow3(product(t, kAffine)), 0.0},
        {[&](float * m) { k.multRightByTranslate(m, s); }, keepRow3(product(kAffine, t)), 0.0},
        {[&](float * m) { k.multLeftByScale(m, s); }, keepRow3(product(sc, kAffine)), 0.0},
        {[&](float * m) { k.multRightByScale(m, s); }, keepRow3(product(kAffine, sc)), 0.0},
        {[&](float * m) { k.multLeftByRotate(m, src.data(), z10, a); },
         product(rotation(2, a), kAffine), 4e-6},
        {[&](float * m) { k.multRightByRotate(m, src.data(), z10, a); },
         product(kAffine, rotation(2, a)), 4e-6},
    };
    for (int c = 0; c < 12; ++c) {
        FMat m = src;
        cases[c].op(m.data());
        for (int i = 0; i < 16; ++i) {
            double const w = cases[c].want[i];
            EXPECT_NEAR(m[i], w, w == kGeneral[i] ? 0.0 : cases[c].tol) << "case " << c << " " << i;
        }
    }
}
