// The transform builders: which elements each one writes, the worked values, and the inner
// operations the composite builders reach through the table.
#include "kernel/DoubleMatrix.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace dmat;

namespace {

constexpr float kSentinel = -77.25f;

EnhancedMathFunctions const & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

// A general matrix, small dyadic values, with a bottom row that is not 0, 0, 0, 1.
Mat const kGeneral = {1.5, -2, 0.25, 0.5, 3, 1, -1, -0.75, -0.5, 2.5, 4, 1.25, 7, -3, 2, 2};

// Logs the inner operations of the composite builders with their array arguments. It computes
// nothing: the test looks at the calls only.
class RecordingKernel : public EnhancedMathFunctions {
public:
    struct Call {
        std::string name;
        void const *dst, *a, *b;
    };
    mutable std::vector<Call> calls;
    mutable float column[3] = {}; // the `col` handed to multAffineColRow
    ~RecordingKernel() override = default;

    std::vector<std::string> names() const {
        std::vector<std::string> out;
        for (Call const & c : calls)
            out.push_back(c.name);
        return out;
    }
    void axisToQuaternionU(float * const dst, float const * const axis, float) const override {
        calls.push_back({"axisToQuaternionU", dst, axis, nullptr});
    }
    void quaternionToMatrix(float * const dst, float const * const q) const override {
        calls.push_back({"quaternionToMatrix", dst, q, nullptr});
    }
    void eulerToMatrix(float * const dst, float const * const euler) const override {
        calls.push_back({"eulerToMatrix", dst, euler, nullptr});
    }
    void multAffineColRow(float * const dst, float const * const col,
                          float const * const row) const override {
        calls.push_back({"multAffineColRow", dst, col, row});
        std::copy(col, col + 3, column);
    }
    void multAffineMatrices(float * const dst, float const * const a,
                            float const * const b) const override {
        calls.push_back({"multAffineMatrices", dst, a, b});
    }
};

TEST(TransformBuilders, SetScaleAndSetTranslateWriteEveryElement) {
    float const s[3] = {2.0f, 3.0f, 4.0f};
    FMat m;
    m.fill(kSentinel);
    kernel().setScale(m.data(), s);
    EXPECT_EQ(m, toFloats(diagonal(2, 3, 4)));
    m.fill(kSentinel);
    kernel().setTranslate(m.data(), s);
    EXPECT_EQ(m, (FMat{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 3, 4, 1}));
}

TEST(TransformBuilders, SetProjectionSendsPointsAlongDirOntoThePlane) {
    // The plane z = 2, as normal 0, 0, 1 with d = -2 and as normal 0, 0, 2 with d = -4: the same
    // map p' = p - dir (n . p + d) / (n . dir), so the same matrix. All values are exact.
    float const dir[3] = {0.5f, 0.0f, 1.0f};
    float const unitNormal[3] = {0, 0, 1}, longNormal[3] = {0, 0, 2};
    FMat const expected = {1, 0, 0, 0, 0, 1, 0, 0, -0.5f, 0, 0, 0, 1, 0, 2, 1};
    for (float const * n : {unitNormal, longNormal}) {
        FMat m;
        m.fill(kSentinel);
        kernel().setProjection(m.data(), n, -2.0f * n[2], dir);
        EXPECT_EQ(m, expected) << "normal z " << n[2];
    }
    // The worked point 3, 4, 9 goes to -0.5, 4, 2; the point -6, 1.5, 2 of the plane stays.
    Mat const image =
        product(toDoubles(expected.data()), {3, 4, 9, 1, -6, 1.5, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ((std::vector<double>(image.begin(), image.begin() + 7)),
              (std::vector<double>{-0.5, 4, 2, 1, -6, 1.5, 2}));

    // A dir parallel to the plane, or a zero normal, has no projection: dst stays as it was.
    float const inPlane[3] = {1.0f, -1.0f, 0.0f}, zero[3] = {0, 0, 0};
    FMat m;
    m.fill(kSentinel);
    kernel().setProjection(m.data(), unitNormal, -2.0f, inPlane);
    kernel().setProjection(m.data(), zero, -2.0f, dir);
    FMat untouched;
    untouched.fill(kSentinel);
    EXPECT_EQ(m, untouched);
}

TEST(TransformBuilders, CompositesReachTheirInnerOperationsThroughTheTable) {
    RecordingKernel k;
    float const axis[3] = {0, 0, 10}, euler[3] = {0.1f, 0.2f, 0.3f};
    float dst[16], src[16];

    k.setRotate(dst, axis, 0.5f);
    ASSERT_EQ(k.names(), (std::vector<std::string>{"axisToQuaternionU", "quaternionToMatrix"}));
    EXPECT_EQ(k.calls[0].a, axis);
    EXPECT_EQ(k.calls[1].a, k.calls[0].dst); // the local quaternion
    EXPECT_EQ(k.calls[1].dst, dst);

    k.calls.clear();
    k.setRotate(dst, euler);
    ASSERT_EQ(k.names(), std::vector<std::string>{"eulerToMatrix"});
    EXPECT_TRUE(k.calls[0].dst == dst && k.calls[0].a == euler);

    // Left: R src, right: src R, with R the local matrix made from the local quaternion.
    for (bool left : {true, false}) {
        k.calls.clear();
        (k.*(left ? &EnhancedMathFunctions::multLeftByRotate
                  : &EnhancedMathFunctions::multRightByRotate))(dst, src, axis, 0.5f);
        ASSERT_EQ(k.names(), (std::vector<std::string>{"axisToQuaternionU", "quaternionToMatrix",
                                                       "multAffineMatrices"}));
        void const * rot = k.calls[1].dst;
        EXPECT_EQ(k.calls[1].a, k.calls[0].dst);
        EXPECT_EQ(k.calls[2].dst, dst);
        EXPECT_EQ(k.calls[2].a, left ? rot : src);
        EXPECT_EQ(k.calls[2].b, left ? src : rot);
    }

    // setProjection hands -dir / (n . dir), rounded to float, as the column and n as the row.
    k.calls.clear();
    float const normal[3] = {0, 0, 2}, dir[3] = {0.5f, 0, 1.5f};
    k.setProjection(dst, normal, -4.0f, dir);
    ASSERT_EQ(k.names(), std::vector<std::string>{"multAffineColRow"});
    EXPECT_TRUE(k.calls[0].dst == dst && k.calls[0].b == normal);
    EXPECT_EQ(k.column[0], static_cast<float>(-1.0 / 6.0));
    EXPECT_EQ(k.column[1], 0.0f);
    EXPECT_EQ(k.column[2], -0.5f);

    // The leaves call nothing.
    k.calls.clear();
    k.setScale(dst, dir);
    k.setTranslate(dst, dir);
    k.multLeftByRotateX(dst, 0.5f);
    k.multRightByRotateZ(dst, 0.5f);
    k.multRightByTranslate(dst, dir);
    k.multLeftByScale(dst, dir);
    EXPECT_TRUE(k.calls.empty());
}

TEST(TransformBuilders, InPlaceAxisRotationsAreTheElementaryProducts) {
    using Op = void (EnhancedMathFunctions::*)(float * const, float) const;
    Op const ops[2][3] = {
        {&EnhancedMathFunctions::multLeftByRotateX, &EnhancedMathFunctions::multLeftByRotateY,
         &EnhancedMathFunctions::multLeftByRotateZ},
        {&EnhancedMathFunctions::multRightByRotateX, &EnhancedMathFunctions::multRightByRotateY,
         &EnhancedMathFunctions::multRightByRotateZ}};
    float const angle = 0.625f;
    for (int side = 0; side < 2; ++side)
        for (int axis = 0; axis < 3; ++axis) {
            FMat m = toFloats(kGeneral);
            Op const op = ops[side][axis]; // a named copy: GCC 12's UBSan miscompiles the call
            (kernel().*op)(m.data(), angle);
            Mat const r = rotation(axis, angle);
            Mat const want = side == 0 ? product(r, kGeneral) : product(kGeneral, r);
            // Left products write the two rows of the plane, in all four columns (so the
            // translation turns); right products its two columns, in all four rows.
            for (int i = 0; i < 16; ++i) {
                int const line = side == 0 ? i % 4 : i / 4;
                if (line != axis && line != 3)
                    EXPECT_NEAR(m[i], want[i], 4e-6) << side << axis << " element " << i;
                else
                    EXPECT_EQ(m[i], static_cast<float>(kGeneral[i])) << side << axis << " " << i;
            }
        }
}

TEST(TransformBuilders, InPlaceTranslatesAndScalesKeepTheBottomRow) {
    // Against full products with the affine part of kGeneral; all values are exact in float. The
    // bottom row is neither read nor written. Left scales scale the translation, right ones do
    // not; right translations go through the matrix, left ones do not.
    float const s[3] = {2, 3, 4};
    Mat affine = kGeneral;
    affine[3] = affine[7] = affine[11] = 0.0;
    affine[15] = 1.0;
    Mat t = identity();
    std::copy(s, s + 3, t.begin() + 12);
    Mat const sc = diagonal(2, 3, 4);
    using Op = void (EnhancedMathFunctions::*)(float * const, float const *) const;
    struct Case {
        Op op;
        Mat want;
    } const cases[] = {
        {&EnhancedMathFunctions::multLeftByTranslate, product(t, affine)},
        {&EnhancedMathFunctions::multRightByTranslate, product(affine, t)},
        {&EnhancedMathFunctions::multLeftByScale, product(sc, affine)},
        {&EnhancedMathFunctions::multRightByScale, product(affine, sc)},
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
