// Tolerance comparisons, the finite test, the constants and the float elementary functions.
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

float const kNaN = std::numeric_limits<float>::quiet_NaN();
float const kInf = std::numeric_limits<float>::infinity();

TEST(Scalar, ConstantsHaveTheirBitPatterns) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(TOLERANCE), 0x3F1A36E2EB1C432Du);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(BOX_TOLERANCE), 0x33D6BF95u);
    EXPECT_EQ(FLOAT_EPSILON, 0x1p-23f);
    EXPECT_EQ(FLOAT_MAX, std::numeric_limits<float>::max());
    EXPECT_EQ(FLOAT_LOWEST, std::numeric_limits<float>::lowest());
    EXPECT_EQ(PI_F, static_cast<float>(M_PI));
    EXPECT_EQ(HALF_PI_F, static_cast<float>(M_PI / 2));
    EXPECT_EQ(TWO_PI_F, static_cast<float>(2 * M_PI));
    EXPECT_EQ(PI_D, M_PI);
    EXPECT_EQ(HALF_PI_D, M_PI / 2);
    EXPECT_EQ(TWO_PI_D, 2 * M_PI);
}

TEST(Scalar, ComparisonsAreInclusiveAtDoubleWidth) {
    // The float nearest 0.0001 lies below the double TOLERANCE; the next float above does not.
    EXPECT_TRUE(isZero(0.0001f));
    EXPECT_FALSE(isZero(std::nextafter(0.0001f, 1.0f)));
    EXPECT_TRUE(isZero(-0.0001f));
    EXPECT_TRUE(isZero(0.25f, 0.25f));
    EXPECT_FALSE(isZero(0.0f, -1.0f));
    EXPECT_TRUE(areEqual(1.0f, 1.25f, 0.25f));
    // 1 - (1 - 2^-24) = 2^-24 exactly: unrounded it is below a tolerance of 2^-24 + ...
    EXPECT_TRUE(areEqual(1.0f, 1.0f - 0x1p-24f, 0x1p-24f));
    EXPECT_FALSE(areEqual(1.0f, 1.0f - 0x1p-24f, 0x1p-25f));
    // A difference rounded to float would exceed the tolerance here: 2^-24 + 2^-49 is not a float.
    EXPECT_TRUE(areEqual(0x1p-24f + 0x1p-47f, 0x1p-49f, 0x1p-24f + 0x1p-47f));
}

TEST(Scalar, NaNAndInfinitiesCompareFalse) {
    EXPECT_FALSE(isZero(kNaN));
    EXPECT_FALSE(isZero(kNaN, 1.0f));
    EXPECT_FALSE(areEqual(kNaN, 0.0f));
    EXPECT_FALSE(areEqual(0.0f, kNaN, 1.0f));
    EXPECT_FALSE(areEqual(kInf, kInf));
    EXPECT_FALSE(isZero(kInf, 1e30f));

    EXPECT_FALSE(testFiniteAndNAN(kNaN));
    EXPECT_FALSE(testFiniteAndNAN(kInf));
    EXPECT_FALSE(testFiniteAndNAN(-kInf));
    EXPECT_FALSE(testFiniteAndNAN(std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(testFiniteAndNAN(FLOAT_MAX));
    EXPECT_TRUE(testFiniteAndNAN(std::numeric_limits<float>::denorm_min()));
    EXPECT_TRUE(testFiniteAndNAN(std::numeric_limits<double>::max()));
}

TEST(Scalar, SignsOfZeroAndTheFloatFunctions) {
    EXPECT_TRUE(std::signbit(absDouble(-0.0)));
    EXPECT_EQ(absDouble(-2.5), 2.5);
    EXPECT_TRUE(std::isnan(absDouble(std::nan(""))));
    EXPECT_FALSE(std::signbit(fabs(-0.0f)));
    EXPECT_EQ(fabs(-3.0f), 3.0f);

    EXPECT_EQ(atan2(0.0f, -1.0f), PI_F);
    EXPECT_EQ(atan2(-0.0f, -1.0f), -PI_F);
    EXPECT_EQ(atan(1.0f), static_cast<float>(M_PI / 4));
    EXPECT_TRUE(std::isnan(acos(2.0f)));
    EXPECT_EQ(sqrt(2.0f), static_cast<float>(std::sqrt(2.0)));
    EXPECT_EQ(pow(2.0f, 10.0f), 1024.0f);
    // (1 + 2^-12)^2 - 1 at double width keeps the 2^-24 that a float product loses.
    float const x = 1.0f + 0x1p-12f;
    EXPECT_EQ(det2(x, 1.0f, 1.0f, x), 0x1p-11f + 0x1p-24f);
}

} // namespace
