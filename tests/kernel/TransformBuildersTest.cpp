// The transform builders: which elements each one writes, the worked values, and the inner
// operations the composite builders reach through the table.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace {

using Mat = std::array<double, 16>; // m[4*c + r], as the kernel stores it

constexpr float kSentinel = -77.25f;
constexpr double kPi = 3.14159265358979323846;

EnhancedMathFunctions const & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

Mat product(Mat const & a, Mat const & b) {
    Mat out{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            for (int k = 0; k < 4; ++k)
                out[4 * c + r] += a[4 * k + r] * b[4 * c + k];
    return out;
}

Mat identity() {
    Mat m{};
    m[0] = m[5] = m[10] = m[15] = 1.0;
    return m;
}

// The elementary rotation about axis 0 (x), 1 (y) or 2 (z), from its upper-left block by rows.
Mat elementaryRotation(int axis, double angle) {
    double const c = std::cos(angle), s = std::sin(angle);
    double const rows[3][3][3] = {{{1, 0, 0}, {0, c, -s}, {0, s, c}},
                                  {{c, 0, s}, {0, 1, 0}, {-s, 0, c}},
                                  {{c, -s, 0}, {s, c, 0}, {0, 0, 1}}};
    Mat m = identity();
    for (int r = 0; r < 3; ++r)
        for (int col = 0; col < 3; ++col)
            m[4 * col + r] = rows[axis][r][col];
    return m;
}

std::array<float, 16> toFloats(Mat const & m) {
    std::array<float, 16> f;
    for (int i = 0; i < 16; ++i)
        f[i] = static_cast<float>(m[i]);
    return f;
}

Mat toDoubles(float const * m) {
    Mat d;
    for (int i = 0; i < 16; ++i)
        d[i] = static_cast<double>(m[i]);
    return d;
}

// A general matrix, with a bottom row that is not 0, 0, 0, 1.
Mat const kGeneral = {1.5, -2, 0.25, 0.5, 3, 1, -1, -0.75, -0.5, 2.5, 4, 1.25, 7, -3, 2, 2};

// A kernel that logs the calls of the inner operations of the composite builders and forwards
// them to the default code.
class RecordingKernel : public EnhancedMathFunctions {
public:
    struct Call {
        std::string name;
        void const * dst;
        void const * a;
        void const * b;
    };
    mutable std::vector<Call> calls;
    mutable float lastColumn[3] = {0, 0, 0}; // the `col` handed to multAffineColRow

    ~RecordingKernel() override = default;

    std::vector<std::string> names() const {
        std::vector<std::string> out;
        for (Call const & c : calls)
            out.push_back(c.name);
        return out;
    }

    void axisToQuaternionU(float * const dst, float const * const axis,
                           float angle) const override {
        calls.push_back({"axisToQuaternionU", dst, axis, nullptr});
        EnhancedMathFunctions::axisToQuaternionU(dst, axis, angle);
    }
    void quaternionToMatrix(float * const dst, float const * const q) const override {
        calls.push_back({"quaternionToMatrix", dst, q, nullptr});
        EnhancedMathFunctions::quaternionToMatrix(dst, q);
    }
    void eulerToMatrix(float * const dst, float const * const euler) const override {
        calls.push_back({"eulerToMatrix", dst, euler, nullptr});
        EnhancedMathFunctions::eulerToMatrix(dst, euler);
    }
    void multAffineColRow(float * const dst, float const * const col,
                          float const * const row) const override {
        calls.push_back({"multAffineColRow", dst, col, row});
        for (int i = 0; i < 3; ++i)
            lastColumn[i] = col[i];
        EnhancedMathFunctions::multAffineColRow(dst, col, row);
    }
    void multAffineMatrices(float * const dst, float const * const a,
                            float const * const b) const override {
        calls.push_back({"multAffineMatrices", dst, a, b});
        EnhancedMathFunctions::multAffineMatrices(dst, a, b);
    }
};

TEST(TransformBuilders, SetScaleAndSetTranslateWriteEveryElement) {
    float const s[3] = {2.0f, 3.0f, 4.0f};
    float m[16];
    std::fill(m, m + 16, kSentinel);
    kernel().setScale(m, s);
    float const scale[16] = {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], scale[i]) << "setScale element " << i;

    std::fill(m, m + 16, kSentinel);
    kernel().setTranslate(m, s);
    float const translate[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 2, 3, 4, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], translate[i]) << "setTranslate element " << i;
}

TEST(TransformBuilders, SetProjectionSendsPointsAlongDirOntoThePlane) {
    // The plane z = 2, once with a unit normal and once with normal 0, 0, 2 and d = -4, which
    // must give the same matrix: p' = p - dir (n . p + d) / (n . dir). All values are exact.
    float const dir[3] = {0.5f, 0.0f, 1.0f};
    float const unitNormal[3] = {0, 0, 1}, longNormal[3] = {0, 0, 2};
    float const expected[16] = {1, 0, 0, 0, 0, 1, 0, 0, -0.5f, 0, 0, 0, 1, 0, 2, 1};
    for (float const * n : {unitNormal, longNormal}) {
        float m[16];
        std::fill(m, m + 16, kSentinel);
        kernel().setProjection(m, n, -2.0f * n[2], dir);
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(m[i], expected[i]) << "normal z " << n[2] << ", element " << i;
    }
    // The worked point: 3, 4, 9 goes to -0.5, 4, 2; a point of the plane stays where it is.
    Mat const proj = toDoubles(expected);
    Mat const points = {3, 4, 9, 1, -6, 1.5, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0};
    Mat const image = product(proj, points);
    EXPECT_EQ(image[0], -0.5);
    EXPECT_EQ(image[1], 4.0);
    EXPECT_EQ(image[2], 2.0);
    for (int i = 4; i < 7; ++i)
        EXPECT_EQ(image[i], points[i]);

    // A dir parallel to the plane, or a zero normal, has no projection: dst stays as it was.
    float const inPlane[3] = {1.0f, -1.0f, 0.0f}, zero[3] = {0, 0, 0};
    float m[16];
    std::fill(m, m + 16, kSentinel);
    kernel().setProjection(m, unitNormal, -2.0f, inPlane);
    kernel().setProjection(m, zero, -2.0f, dir);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], kSentinel) << "element " << i;
}

TEST(TransformBuilders, CompositesReachTheirInnerOperationsThroughTheTable) {
    RecordingKernel k;
    float const axis[3] = {0, 0, 10}, euler[3] = {0.1f, 0.2f, 0.3f};
    float dst[16];
    float src[16];
    k.setIdentity(src);

    k.setRotate(dst, axis, 0.5f);
    ASSERT_EQ(k.names(), (std::vector<std::string>{"axisToQuaternionU", "quaternionToMatrix"}));
    EXPECT_EQ(k.calls[0].a, axis);
    EXPECT_EQ(k.calls[1].a, k.calls[0].dst); // the local quaternion
    EXPECT_EQ(k.calls[1].dst, dst);

    k.calls.clear();
    k.setRotate(dst, euler);
    ASSERT_EQ(k.names(), std::vector<std::string>{"eulerToMatrix"});
    EXPECT_EQ(k.calls[0].dst, dst);
    EXPECT_EQ(k.calls[0].a, euler);

    // Left: R src; right: src R; R is the local matrix built from the local quaternion.
    for (bool left : {true, false}) {
        k.calls.clear();
        if (left)
            k.multLeftByRotate(dst, src, axis, 0.5f);
        else
            k.multRightByRotate(dst, src, axis, 0.5f);
        ASSERT_EQ(k.names(), (std::vector<std::string>{"axisToQuaternionU", "quaternionToMatrix",
                                                       "multAffineMatrices"}));
        void const * rot = k.calls[1].dst;
        EXPECT_EQ(k.calls[1].a, k.calls[0].dst);
        EXPECT_EQ(k.calls[2].dst, dst);
        EXPECT_EQ(k.calls[2].a, left ? rot : src);
        EXPECT_EQ(k.calls[2].b, left ? src : rot);
    }

    // setProjection hands -dir / (n . dir) as the column and the normal as the row.
    k.calls.clear();
    float const normal[3] = {0, 0, 2}, dir[3] = {0.5f, 0, 1};
    k.setProjection(dst, normal, -4.0f, dir);
    ASSERT_EQ(k.names(), std::vector<std::string>{"multAffineColRow"});
    EXPECT_EQ(k.calls[0].dst, dst);
    EXPECT_EQ(k.calls[0].b, normal);
    EXPECT_EQ(k.lastColumn[0], -0.25f);
    EXPECT_EQ(k.lastColumn[1], 0.0f);
    EXPECT_EQ(k.lastColumn[2], -0.5f);

    // The leaves call nothing.
    k.calls.clear();
    k.setScale(dst, dir);
    k.setTranslate(dst, dir);
    k.multLeftByRotateX(dst, 0.5f);
    k.multRightByRotateZ(dst, 0.5f);
    k.multRightByTranslate(dst, dir);
    k.multLeftByScale(dst, dir);
    float const parallel[3] = {1, 0, 0};
    k.setProjection(dst, normal, -4.0f, parallel); // returns before the product
    EXPECT_TRUE(k.calls.empty());
}

TEST(TransformBuilders, SetRotateAndRotateProductsTurnAboutTheAxis) {
    float const longAxis[3] = {0, 0, 10}, unitAxis[3] = {0, 0, 1}, zeroAxis[3] = {0, 0, 0};
    float const quarter = static_cast<float>(kPi / 2);
    float a[16], b[16];
    kernel().setRotate(a, longAxis, quarter);
    kernel().setRotate(b, unitAxis, quarter);
    Mat const rz = elementaryRotation(2, kPi / 2);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(a[i], b[i]) << "element " << i;
        EXPECT_NEAR(a[i], rz[i], 1e-6) << "element " << i;
    }
    std::fill(a, a + 16, kSentinel);
    kernel().setRotate(a, zeroAxis, 1.0f);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(a[i], identity()[i]) << "element " << i;

    // Translation 1, 0, 0 and a bottom row that is not read: left by the quarter turn moves the
    // translation to 0, 1, 0, right keeps it; both leave the affine bottom row.
    float src[16];
    kernel().setIdentity(src);
    src[12] = 1.0f;
    src[3] = src[7] = src[11] = kSentinel;
    kernel().multLeftByRotate(a, src, longAxis, quarter);
    kernel().multRightByRotate(b, src, longAxis, quarter);
    EXPECT_NEAR(a[12], 0.0, 1e-6);
    EXPECT_NEAR(a[13], 1.0, 1e-6);
    EXPECT_EQ(b[12], 1.0f);
    EXPECT_EQ(b[13], 0.0f);
    for (int i : {1, 4})
        EXPECT_NEAR(a[i], rz[i], 1e-6) << "element " << i;
    for (int i : {3, 7, 11, 15}) {
        EXPECT_EQ(a[i], i == 15 ? 1.0f : 0.0f) << "element " << i;
        EXPECT_EQ(b[i], i == 15 ? 1.0f : 0.0f) << "element " << i;
    }
}

TEST(TransformBuilders, InPlaceAxisRotationsAreTheElementaryProducts) {
    using Op = void (EnhancedMathFunctions::*)(float * const, float) const;
    struct Case {
        char const * name;
        Op op;
        int axis;
        bool left;
    };
    Case const cases[] = {
        {"multLeftByRotateX", &EnhancedMathFunctions::multLeftByRotateX, 0, true},
        {"multLeftByRotateY", &EnhancedMathFunctions::multLeftByRotateY, 1, true},
        {"multLeftByRotateZ", &EnhancedMathFunctions::multLeftByRotateZ, 2, true},
        {"multRightByRotateX", &EnhancedMathFunctions::multRightByRotateX, 0, false},
        {"multRightByRotateY", &EnhancedMathFunctions::multRightByRotateY, 1, false},
        {"multRightByRotateZ", &EnhancedMathFunctions::multRightByRotateZ, 2, false},
    };
    float const angle = 0.625f;
    for (Case const & c : cases) {
        std::array<float, 16> m = toFloats(kGeneral);
        (kernel().*c.op)(m.data(), angle);
        Mat const r = elementaryRotation(c.axis, angle);
        Mat const expected = c.left ? product(r, kGeneral) : product(kGeneral, r);
        // Left products touch the two rows of the plane, right products its two columns.
        for (int i = 0; i < 16; ++i) {
            int const index = c.left ? i % 4 : i / 4;
            bool const written = index != c.axis && index != 3;
            if (written)
                EXPECT_NEAR(m[i], expected[i], 4e-6) << c.name << " element " << i;
            else
                EXPECT_EQ(m[i], static_cast<float>(kGeneral[i])) << c.name << " element " << i;
        }
    }

    // The identity moved by 1, 0, 0: a quarter turn on the left turns the translation, on the
    // right it does not.
    float m[16];
    kernel().setIdentity(m);
    m[12] = 1.0f;
    kernel().multLeftByRotateZ(m, static_cast<float>(kPi / 2));
    EXPECT_NEAR(m[12], 0.0, 1e-7);
    EXPECT_EQ(m[13], 1.0f);
    kernel().setIdentity(m);
    m[12] = 1.0f;
    kernel().multRightByRotateZ(m, static_cast<float>(kPi / 2));
    EXPECT_EQ(m[12], 1.0f);
    EXPECT_EQ(m[13], 0.0f);
}

TEST(TransformBuilders, InPlaceTranslatesAndScalesKeepTheBottomRow) {
    float const ones[3] = {1, 1, 1}, s[3] = {2, 3, 4};
    // A scale by 2: translating on the right scales the step, on the left it does not.
    float m[16];
    kernel().setIdentity(m);
    m[0] = m[5] = m[10] = 2.0f;
    kernel().multRightByTranslate(m, ones);
    EXPECT_EQ(m[12], 2.0f);
    EXPECT_EQ(m[13], 2.0f);
    EXPECT_EQ(m[14], 2.0f);
    m[12] = m[13] = m[14] = 0.0f;
    kernel().multLeftByTranslate(m, ones);
    EXPECT_EQ(m[12], 1.0f);
    EXPECT_EQ(m[13], 1.0f);
    EXPECT_EQ(m[14], 1.0f);

    // Against the full products with the affine part of kGeneral (all values exact in float);
    // the bottom row is neither read nor written.
    Mat affine = kGeneral;
    affine[3] = affine[7] = affine[11] = 0.0;
    affine[15] = 1.0;
    Mat t = identity(), sc = identity();
    for (int i = 0; i < 3; ++i) {
        t[12 + i] = s[i];
        sc[5 * i] = s[i];
    }
    using Op = void (EnhancedMathFunctions::*)(float * const, float const *) const;
    struct Case {
        char const * name;
        Op op;
        Mat expected;
    };
    Case const cases[] = {
        {"multLeftByTranslate", &EnhancedMathFunctions::multLeftByTranslate, product(t, affine)},
        {"multRightByTranslate", &EnhancedMathFunctions::multRightByTranslate, product(affine, t)},
        {"multLeftByScale", &EnhancedMathFunctions::multLeftByScale, product(sc, affine)},
        {"multRightByScale", &EnhancedMathFunctions::multRightByScale, product(affine, sc)},
    };
    for (Case const & c : cases) {
        std::array<float, 16> a = toFloats(kGeneral);
        (kernel().*c.op)(a.data(), s);
        for (int i = 0; i < 16; ++i) {
            double const want = (i % 4 == 3) ? kGeneral[i] : c.expected[i];
            EXPECT_EQ(a[i], static_cast<float>(want)) << c.name << " element " << i;
        }
    }
}

} // namespace
