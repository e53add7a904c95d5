// ColorTest.cpp - Color construction, HSL conversions and blends
#include "kdrcore/types/Color.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace kdrtest;

namespace {

float const * rgba(Color const & c) { // r, g, b, a are the object's four floats
    return reinterpret_cast<float const *>(&c);
}

float const SIXTH = 1.0f / 6.0f; // the float the conversion multiplies the sector by

} // namespace

TEST(Color, ConstructionAndTheColorReference) {
    static_assert(sizeof(Color) == 4 * sizeof(float), "r, g, b, a and nothing else");
    EXPECT_TRUE(elems(rgba(Color()), {1, 1, 1, 1}) &&
                elems(rgba(Color::NULL_COLOR), {-1, -1, -1, -1}));
    Color c(Color::MAGENTA, 0.5f);
    EXPECT_TRUE(elems(rgba(c), {1, 0, 1, 0.5}));
    Vector3f const & rgb = c.getColor3f(); // the object's own storage
    c.setColor3f(Color::YELLOW);
    EXPECT_TRUE(&rgb == &c.getColor3f() && elems(rgba(c), {1, 1, 0, 0.5}));
}

TEST(Color, RGBtoHSLSectorsGraysAndTheNegativeHue) {
    struct {
        float rgb[3];
        std::vector<double> hsl;
    } const cases[] = {
        {{1, 0, 0}, {0, 1, 0.5}},
        {{0, 1, 0}, {2 * SIXTH, 1, 0.5}}, // doubling a float is exact
        {{0, 0, 1}, {4 * SIXTH, 1, 0.5}},
        {{1, 1, 0}, {SIXTH, 1, 0.5}},            // r and g tie: the red test comes first
        {{1, 0, 0.5f}, {-0.5f * SIXTH, 1, 0.5}}, // leaning to blue: not wrapped into 0..1
        {{1, 0.5f, 0.5f}, {0, 1, 0.75}},         // lightness above 1/2: delta / (2 - max - min)
        {{0.5f, 0.25f, 0.25f}, {0, float(1.0 / 3.0), 0.375}}, // below: delta / (max + min)
        {{0, 0, 0}, {0, 0, 0}},
        {{0.5f, 0.5f, 0.5f}, {0, 0, 0.5}},
        {{1, 1, 1}, {0, 0, 1}},
    };
    for (int i = 0; i < 10; ++i) {
        float hsl[3];
        Color::RGBtoHSL(hsl, cases[i].rgb);
        EXPECT_TRUE(elems(hsl, cases[i].hsl)) << "case " << i;
    }
}

TEST(Color, HSLtoRGBBordersGrayAndBothFormulas) {
    struct {
        float hsl[3];
        std::vector<double> rgb;
        double tol;
    } const cases[] = {
        {{0.7f, 0, 0.3f}, {0.3f, 0.3f, 0.3f}, 0}, // saturation 0: the hue is not read
        // Cyan, m1 = 0, m2 = 1. Green sits on the border 2h = 1, so the strict test sends it to
        // the falling ramp: 6 (0.6666667f - 0.5) = 1 + 2^-23. Blue: 6 (0.5 - 0.33333334f).
        {{0.5f, 1, 0.5f}, {0, 1 + 0x1p-23, 1 - 0x1p-24}, 0},
        {{0, 0.5f, 0.25f}, {0.375, 0.125, 0.125}, 1e-6},    // L < 1/2: m2 = L (1 + S)
        {{0, 0.5f, 0.5f}, {0.75, 0.25, 0.25}, 1e-6},        // L = 1/2: L + S - L S, the same m2
        {{0.1f, 0.5f, 0.25f}, {0.375, 0.275, 0.125}, 1e-6}, // green rises: m1 + 6 h (m2 - m1)
        {{-0.5f * SIXTH, 1, 0.5f}, {1, 0, 0.5}, 1e-6},      // the negative hue converts back
    };
    for (int i = 0; i < 6; ++i) {
        float rgb[3];
        Color::HSLtoRGB(rgb, cases[i].hsl);
        EXPECT_TRUE(elems(rgb, cases[i].rgb, cases[i].tol)) << "case " << i;
    }
}

TEST(Color, Blends) {
    Color const a(1, 0, 0.5f, 1), b(0, 1, 0.25f, 0.5f), red(Color::RED, 0.25f);
    EXPECT_TRUE(elems(rgba(Color::getMixedColor(a, b, 0.5f, 0.5f)), {0.5, 0.5, 0.375, 0.75}));
    EXPECT_TRUE(elems(rgba(Color::getMixedColor(a, b, 2, 2)), {2, 2, 1.5, 3})); // no clamp
    EXPECT_TRUE(elems(rgba(Color::getScaledTranspaColor(b, 0.5f)), {0, 1, 0.25, 0.25}));
    // Red is (0, 1, 0.5) in HSL. No saturation with full lightness: gray 0.5, alpha kept.
    EXPECT_TRUE(elems(rgba(Color::getScaledSL(red, 0, 1)), {0.5, 0.5, 0.5, 0.25}));
    // Full saturation at half the lightness: m2 = 0.25 (1 + 1) = 0.5, m1 = 0: dark red.
    EXPECT_TRUE(elems(rgba(Color::getScaledSL(red, 1, 0.5f)), {0.5, 0, 0, 0.25}, 1e-6));
}
