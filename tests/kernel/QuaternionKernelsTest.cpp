// Quaternion kernels: worked values by hand, the allowed overlaps, the roundings, and the inner
// operations reached through the table.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {
EnhancedMathFunctions * kernel() {
    return EnhancedMathFunctions::getCurrent();
}

void expectQuat(float const * q, float w, float x, float y, float z, float tol = 0.0f) {
    float const want[4] = {w, x, y, z};
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(q[i], want[i], tol) << "element " << i;
}
} // namespace

TEST(QuaternionKernels, ProductsAreHamiltonAtDoubleWidthAndMayOverwriteAnInput) {
    // (1,2,3,4)(5,6,7,8) and (1,2,3,4)(5,-6,-7,-8), expanded by hand.
    float a[4] = {1, 2, 3, 4}, b[4] = {5, 6, 7, 8};
    float const c[4] = {1, 2, 3, 4};
    kernel()->multQuaternions(a, a, b);
    expectQuat(a, -60, 12, 30, 24);
    kernel()->divQuaternionsU(b, c, b); // no division by |b|^2 = 174
    expectQuat(b, 70, 8, 0, 16);
    float i[4] = {0, 1, 0, 0}, j[4] = {0, 0, 1, 0};
    kernel()->multQuaternions(i, i, j);
    expectQuat(i, 0, 0, 0, 1);
    // x*x = 1 + 2^-11 + 2^-24 rounds to 1 + 2^-11 in float; at double width w = x*x - 1 is exact.
    float const x = 1.0f + 0x1p-12f;
    float p[4] = {x, 1, 0, 0};
    kernel()->multQuaternions(p, p, p);
    EXPECT_EQ(p[0], 0x1p-11f + 0x1p-24f);
}

TEST(QuaternionKernels, InversesAndRotationOfAVector) {
    float q[4] = {2, 0, 0, 0}, r[4] = {1, 1, 1, 1}, z[4] = {0, 0, 0, 0};
    kernel()->inverseQuaternionU(q, q); // a plain conjugate
    expectQuat(q, 2, 0, 0, 0);
    kernel()->inverseQuaternion(r, r);
    expectQuat(r, 0.25f, -0.25f, -0.25f, -0.25f);
    kernel()->inverseQuaternion(r, z);
    expectQuat(r, 0, 0, 0, 0);

    float const third[4] = {0.5f, 0.5f, 0.5f, 0.5f}, scale2[4] = {2, 0, 0, 0};
    float w[3] = {1, 2, 3}; // a third of a turn about (1,1,1): x -> y -> z -> x, exact
    kernel()->applyQuatOn(w, third, w);
    EXPECT_TRUE(w[0] == 3 && w[1] == 1 && w[2] == 2);
    kernel()->applyQuatOn(w, scale2, w); // a quaternion of length 2 scales by 4
    EXPECT_TRUE(w[0] == 12 && w[1] == 4 && w[2] == 8);
}

TEST(QuaternionKernels, DotRoundsTheRunningSumAfterEachTerm) {
    // 1 + 2^-24 is a tie that rounds back to 1, twice; summed at once it would be 1 + 2^-23.
    float const a[4] = {1, 0x1p-24f, 0x1p-24f, 0}, b[4] = {1, 1, 1, 1};
    float out[2] = {-7, -7};
    kernel()->dotQuaternions(out, a, b);
    EXPECT_EQ(out[0], 1.0f);
    EXPECT_EQ(out[1], -7.0f);
}

TEST(QuaternionKernels, InterpolationsAreUnnormalisedAndTakeTheShorterWay) {
    float const a[4] = {1, 0, 0, 0}, b[4] = {0.6f, 0.8f, 0, 0}, nb[4] = {-0.6f, -0.8f, 0, 0};
    float const na[4] = {-1, 0, 0, 0}, j[4] = {0, 0, 1, 0};
    float d[4], e[4];
    kernel()->quaternionLERP(d, a, nb, 1.0f); // negative dot: towards -nb
    expectQuat(d, 0.6f, 0.8f, 0, 0);
    kernel()->quaternionLERP(d, a, na, 0.7f);
    expectQuat(d, 1, 0, 0, 0);
    kernel()->quaternionLERP(d, a, j, 2.0f); // a zero dot counts as positive; t is not clamped
    expectQuat(d, -1, 0, 2, 0);

    // cos h = 0.6, so sin(h/2) = sqrt(0.2) at t = 0.5, and the length is sin h = 0.8.
    kernel()->quaternionSLERP(d, a, b, 0.5f);
    float const s = static_cast<float>(std::sqrt(0.2));
    expectQuat(d, 1.6f * s, 0.8f * s, 0, 0, 1e-6f);
    kernel()->quaternionSLERP(e, a, nb, 0.5f);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(d[i], e[i]) << "element " << i;
    kernel()->quaternionSLERP(d, a, a, 0.3f);
    expectQuat(d, 0, 0, 0, 0);
    float const past[4] = {1.0f + 0x1p-23f, 0, 0, 0}; // dot above 1: acos gives NaN
    kernel()->quaternionSLERP(d, a, past, 0.5f);
    EXPECT_TRUE(std::isnan(d[0]));
}

namespace {
// Inner operations that leave a trace and a recognisable result.
class TracingQuatKernel : public EnhancedMathFunctions {
public:
    static inline std::string trace;
    void conjugateQuaternion(float * const dst, float const * const) const override {
        trace += 'C';
        dst[0] = 1, dst[1] = 2, dst[2] = 3, dst[3] = 4;
    }
    void cross(float * const dst, float const *, float const *) const override {
        trace += 'X';
        dst[0] = 1, dst[1] = 0, dst[2] = 0;
    }
    void dotQuaternions(float * dst, float const * const, float const * const) const override {
        trace += 'D';
        dst[0] = -0.5f; // h = pi/3, negative branch
    }
};

class QuaternionKernelsDerived : public ::testing::Test {
protected:
    void SetUp() override { (new TracingQuatKernel())->setDefault(); }
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
};
} // namespace

TEST_F(QuaternionKernelsDerived, CompositesReachInnerOperationsThroughTheTable) {
    float const zero[4] = {0, 0, 0, 0}, two[4] = {2, 0, 0, 0}, id[4] = {1, 0, 0, 0};
    float const i[4] = {0, 1, 0, 0};
    float d[4];
    TracingQuatKernel::trace.clear();
    kernel()->inverseQuaternion(d, zero); // the zero quaternion never reaches the conjugate
    EXPECT_EQ(TracingQuatKernel::trace, "");
    kernel()->inverseQuaternion(d, two); // the override's conjugate times 1/4
    expectQuat(d, 0.25f, 0.5f, 0.75f, 1);
    kernel()->inverseQuaternionU(d, two);
    expectQuat(d, 1, 2, 3, 4);
    float v[3] = {0, 0, 1};
    kernel()->applyQuatOn(v, id, v); // v + 2 * (overridden cross)
    EXPECT_TRUE(v[0] == 2 && v[1] == 0 && v[2] == 1);
    kernel()->quaternionLERP(d, id, id, 0.25f);
    expectQuat(d, 0.5f, 0, 0, 0);
    kernel()->quaternionSLERP(d, id, i, 1.0f); // -i * sin(pi/3)
    expectQuat(d, 0, -0.8660254f, 0, 0, 1e-6f);
    EXPECT_EQ(TracingQuatKernel::trace, "CCXDD");
}
