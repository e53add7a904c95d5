// Tolerance comparisons, the finite test, the constants and the float elementary functions.
#include "kdrcore/types/Scalar.h"

#include "kdrcore/types/Vector.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {
float const kNaN = std::numeric_limits<float>::quiet_NaN();
float const kInf = std::numeric_limits<float>::infinity();
} // namespace

TEST(Scalar, ConstantsHaveTheirBitPatterns) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(TOLERANCE), 0x3F1A36E2EB1C432Du);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(BOX_TOLERANCE), 0x33D6BF95u);
    EXPECT_EQ(FLOAT_EPSILON, 0x1p-23f);
    EXPECT_TRUE(FLOAT_MAX == std::numeric_limits<float>::max() && FLOAT_LOWEST == -FLOAT_MAX);
    // The double constants are not floats widened.
    EXPECT_TRUE(PI_D == M_PI && HALF_PI_D == M_PI / 2 && TWO_PI_D == 2 * M_PI);
    EXPECT_TRUE(PI_F == float(M_PI) && HALF_PI_F == float(M_PI / 2) && TWO_PI_F == float(2 * M_PI));
}

TEST(Scalar, ComparisonsAreInclusiveAtDoubleWidthAndFalseOnNaN) {
    // The float nearest 0.0001 lies below the double TOLERANCE; the next float above does not.
    EXPECT_TRUE(isZero(0.0001f) && isZero(-0.0001f) && isZero(0.25f, 0.25f));
    EXPECT_FALSE(isZero(std::nextafter(0.0001f, 1.0f)) || isZero(0.0f, -1.0f));
    EXPECT_TRUE(areEqual(1.0f, 1.25f, 0.25f));
    // 1 - (-2^-25) exceeds 1; a difference rounded to float would be 1 and pass.
    EXPECT_FALSE(areEqual(1.0f, -0x1p-25f, 1.0f));
    // Vectors: each component against the tolerance, never the length.
    EXPECT_TRUE(isZero(Vector3f(0.00009f, 0.00009f, 0.00009f)));
    EXPECT_FALSE(isZero(Vector3f(0.0001001f, 0, 0)) || isZero(Vector3f(0, 0.5f, 0.25f), 0.25f));
    EXPECT_TRUE(areEqual(Vector3f(1, 2, 3), Vector3f(1.00005f, 2, 2.99995f)));
    EXPECT_FALSE(areEqual(Vector3f(1, 2, 3), Vector3f(1, 2.0002f, 3)));
    EXPECT_FALSE(isZero(kNaN) || isZero(kNaN, 1.0f) || isZero(Vector3f(0, kNaN, 0)));
    EXPECT_FALSE(areEqual(kNaN, 0.0f) || areEqual(0.0f, kNaN, 1.0f) || areEqual(kInf, kInf));

    EXPECT_FALSE(testFiniteAndNAN(kNaN) || testFiniteAndNAN(kInf) || testFiniteAndNAN(-kInf));
    EXPECT_FALSE(testFiniteAndNAN(std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(testFiniteAndNAN(FLOAT_MAX) &&
                testFiniteAndNAN(std::numeric_limits<float>::denorm_min()));
}

TEST(Scalar, SignsOfZeroAndTheFloatFunctions) {
    EXPECT_TRUE(std::signbit(absDouble(-0.0)));
    EXPECT_FALSE(std::signbit(fabs(-0.0f)));
    EXPECT_EQ(atan2(0.0f, -1.0f), PI_F);
    EXPECT_EQ(atan2(-0.0f, -1.0f), -PI_F);
    EXPECT_EQ(sqrt(2.0f), static_cast<float>(std::sqrt(2.0))); // exact, not the kernel's msqrt
    // (1 + 2^-12)^2 - 1 at double width keeps the 2^-24 that a float product loses.
    float const x = 1.0f + 0x1p-12f;
    EXPECT_EQ(det2(x, 1.0f, 1.0f, x), 0x1p-11f + 0x1p-24f);
}
