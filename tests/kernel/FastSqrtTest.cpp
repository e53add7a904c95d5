// Seeded fast square roots: the seeds, the Newton steps and their accuracy.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>

namespace {

EnhancedMathFunctions const & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

TEST(FastSqrt, SeedsComeFromTheTable) {
    // 2^k times the lower end of an interval gives a seed whose mantissa is the table entry.
    EXPECT_EQ(kernel().invSqrt(1.0f, 0), 0.998046875f); // entry 64 (255), the exception
    EXPECT_EQ(kernel().invSqrt(2.0f, 0), 0.70703125f);  // entry 0 (106): 1.0110101b * 2^-1
    EXPECT_EQ(kernel().invSqrt(2.0f, -3), 0.70703125f);
    EXPECT_EQ(kernel().invSqrt(0.5f, 0), 1.4140625f); // entry 0 again, two octaves up
    // Odd exponent fields with empty top mantissa bits all use entry 64.
    EXPECT_EQ(kernel().invSqrt(4.0f, 0), 0.4990234375f);
    EXPECT_EQ(kernel().invSqrt(0.25f, 0), 1.99609375f);
    // The documented entries, read back through the seed of each interval's lower end.
    struct Entry {
        std::uint32_t index, value;
    };
    for (Entry const e : {Entry{0, 106},
                          {1, 103},
                          {32, 39},
                          {63, 1},
                          {64, 255},
                          {65, 252},
                          {96, 162},
                          {127, 107}}) {
        std::uint32_t const bits = (e.index | 0x1F80u) << 17;
        std::uint32_t const exponent = (bits >> 23) & 0xFFu;
        std::uint32_t const seedBits =
            (((0x17Cu - exponent) << 22) & 0xFF800000u) | (e.value << 15);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(kernel().invSqrt(std::bit_cast<float>(bits), 0)),
                  seedBits)
            << "entry " << e.index;
    }
}

TEST(FastSqrt, NewtonStepsGiveTheDocumentedValues) {
    EXPECT_NEAR(kernel().invSqrt(1.0f), 0.99999428f, 1e-8);
    EXPECT_EQ(kernel().invSqrt(1.0f), kernel().invSqrt(1.0f, 1));
    EXPECT_NEAR(kernel().invSqrt(1.0f, 2), 1.0f, 1e-7);
    EXPECT_NEAR(kernel().invSqrt(4.0f), 0.49999714f, 1e-8);
    EXPECT_NEAR(kernel().msqrt(4.0f), 2.0000114f, 1e-6);
    EXPECT_EQ(kernel().msqrt(4.0f), kernel().msqrt(4.0f, 1));
}

TEST(FastSqrt, UnguardedArgumentsGiveFiniteResults) {
    EXPECT_NEAR(kernel().invSqrt(0.0f) / 1.956e19f, 1.0f, 1e-3);
    EXPECT_NEAR(kernel().invSqrt(0.0f, 2) / kernel().invSqrt(0.0f, 1), 1.5f, 1e-6);
    EXPECT_NEAR(kernel().msqrt(0.0f) / 5.11e-20f, 1.0f, 1e-3);
    EXPECT_NEAR(kernel().invSqrt(-1.0f), 1.994f, 1e-3);
    EXPECT_EQ(kernel().invSqrt(INFINITY), -INFINITY);
}

TEST(FastSqrt, ErrorBoundsHoldOverAllNormalFloats) {
    double worst[3] = {0.0, 0.0, 0.0};
    // Every 257th bit pattern of the positive normal floats covers all table entries and exponents.
    for (std::uint32_t bits = 0x00800000u; bits < 0x7F800000u; bits += 257u) {
        float const x = std::bit_cast<float>(bits);
        double const exact = 1.0 / std::sqrt(static_cast<double>(x));
        for (int steps = 0; steps < 3; ++steps) {
            double const err = std::fabs(kernel().invSqrt(x, steps) / exact - 1.0);
            worst[steps] = std::max(worst[steps], err);
        }
    }
    EXPECT_LE(worst[0], 0.008);
    EXPECT_LE(worst[1], 1.0e-4);
    // Two steps reach float resolution; the result is rounded to float on return.
    EXPECT_LE(worst[2], 1.4e-8 + 0x1p-24);
}

} // namespace
