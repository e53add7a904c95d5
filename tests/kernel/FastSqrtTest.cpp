// Seeded fast square roots: the seeds, the Newton steps and their accuracy.
#include "support/TestSupport.h"

#include <bit>
#include <cstdint>

using namespace kdrtest;

TEST(FastSqrt, SeedsComeFromTheTable) {
    // The lower end of each documented interval gives a seed whose mantissa is the table entry
    // and whose exponent field is (380 - e) / 2. Entry 64 (the argument 1) is the exception 255.
    std::uint32_t const entries[][2] = {{0, 106},  {1, 103},  {32, 39},  {63, 1},
                                        {64, 255}, {65, 252}, {96, 162}, {127, 107}};
    for (auto const & e : entries) {
        std::uint32_t const bits = (e[0] | 0x1F80u) << 17;
        std::uint32_t const seed = (((0x17Cu - (bits >> 23)) << 22) & 0xFF800000u) | (e[1] << 15);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(kernel().invSqrt(std::bit_cast<float>(bits), 0)),
                  seed)
            << "entry " << e[0];
    }
    // 4 uses entry 64 too, an octave further; a negative count makes no step at all.
    EXPECT_EQ(kernel().invSqrt(4.0f, 0), 0.4990234375f);
    EXPECT_EQ(kernel().invSqrt(2.0f, -3), 0.70703125f);
}

TEST(FastSqrt, NewtonStepsAndUnguardedArguments) {
    EXPECT_NEAR(kernel().invSqrt(1.0f), 0.99999428f, 1e-8);
    EXPECT_EQ(kernel().invSqrt(1.0f), kernel().invSqrt(1.0f, 1));
    EXPECT_NEAR(kernel().invSqrt(1.0f, 2), 1.0f, 1e-7);
    EXPECT_NEAR(kernel().msqrt(4.0f), 2.0000114f, 1e-6);
    EXPECT_EQ(kernel().msqrt(4.0f), kernel().msqrt(4.0f, 1));
    // Nothing is tested: 0 gives finite values, -1 a positive one, infinity minus infinity.
    EXPECT_NEAR(kernel().invSqrt(0.0f) / 1.956e19f, 1.0f, 1e-3);
    EXPECT_NEAR(kernel().invSqrt(0.0f, 2) / kernel().invSqrt(0.0f, 1), 1.5f, 1e-6);
    EXPECT_NEAR(kernel().msqrt(0.0f) / 5.11e-20f, 1.0f, 1e-3);
    EXPECT_NEAR(kernel().invSqrt(-1.0f), 1.994f, 1e-3);
    EXPECT_EQ(kernel().invSqrt(INFINITY), -INFINITY);
}

TEST(FastSqrt, ErrorBoundsHoldForEveryEntryAndExponent) {
    // [1, 4) in steps of 2^-7 meets every table entry; the relative error of the seed and of one
    // step stays within 0.008 and 1e-4 there, and at the ends of the range of normal floats.
    auto error = [](float x, int steps) {
        return std::fabs(double{kernel().invSqrt(x, steps)} * std::sqrt(double{x}) - 1.0);
    };
    for (int k = 0; k < 384; ++k) {
        float const x = 1.0f + static_cast<float>(k) * 0x1p-7f;
        EXPECT_TRUE(error(x, 0) <= 0.008 && error(x, 1) <= 1e-4) << x;
    }
    for (float const x : {0x1p-126f, 0x1.fffffep-126f, 0x1p127f, 0x1.fffffep127f})
        EXPECT_TRUE(error(x, 0) <= 0.008 && error(x, 1) <= 1e-4) << x;
}
