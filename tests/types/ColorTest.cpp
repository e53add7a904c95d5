// ColorTest.cpp - Color construction, HSL conversions and blends
#include "kdrcore/types/Color.h"

#include <gtest/gtest.h>

namespace {

void expectRGBA(Color const & c, float r, float g, float b, float a) {
    EXPECT_EQ(c.getColor3f().x(), r);
    EXPECT_EQ(c.getColor3f().y(), g);
    EXPECT_EQ(c.getColor3f().z(), b);
    EXPECT_EQ(c.getAlpha(), a);
}

void toHSL(float (&hsl)[3], float r, float g, float b) {
    float const rgb[3] = {r, g, b};
    Color::RGBtoHSL(hsl, rgb);
}

float const SIXTH = 1.0f / 6.0f; // the float the conversion multiplies the sector by

} // namespace

TEST(Color, ConstructionConstantsAndLayout) {
    expectRGBA(Color(), 1.0f, 1.0f, 1.0f, 1.0f);
    expectRGBA(Color::NULL_COLOR, -1.0f, -1.0f, -1.0f, -1.0f);
    expectRGBA(Color(Color::MAGENTA, 0.5f), 1.0f, 0.0f, 1.0f, 0.5f);
    static_assert(sizeof(Color) == 4 * sizeof(float), "r, g, b, a and nothing else");
    Color c(0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_EQ(reinterpret_cast<float const *>(&c)[3], 0.4f);
    // getColor3f hands out the object's own storage.
    Vector3f const & rgb = c.getColor3f();
    c.setColor3f(Color::YELLOW);
    EXPECT_EQ(&rgb, &c.getColor3f());
    EXPECT_EQ(rgb.y(), 1.0f);
    EXPECT_EQ(rgb.z(), 0.0f);
    EXPECT_EQ(c.getAlpha(), 0.4f);
}

TEST(Color, RGBtoHSLSectorsAndGrays) {
    float hsl[3];
    toHSL(hsl, 1.0f, 0.0f, 0.0f);
    EXPECT_EQ(hsl[0], 0.0f);
    EXPECT_EQ(hsl[1], 1.0f);
    EXPECT_EQ(hsl[2], 0.5f);
    toHSL(hsl, 0.0f, 1.0f, 0.0f);
    EXPECT_EQ(hsl[0], 2.0f * SIXTH); // doubling a float is exact
    toHSL(hsl, 0.0f, 0.0f, 1.0f);
    EXPECT_EQ(hsl[0], 4.0f * SIXTH);
    toHSL(hsl, 1.0f, 1.0f, 0.0f); // r and g tie: the red test comes first, h = (1 - 0) / 1
    EXPECT_EQ(hsl[0], SIXTH);
    // Lightness above one half takes delta / (2 - max - min): (1, 0.5, 0.5) gives 0.5 / 0.5.
    toHSL(hsl, 1.0f, 0.5f, 0.5f);
    EXPECT_EQ(hsl[1], 1.0f);
    EXPECT_EQ(hsl[2], 0.75f);
    // Below one half, delta / (max + min): (0.5, 0.25, 0.25) gives 0.25 / 0.75.
    toHSL(hsl, 0.5f, 0.25f, 0.25f);
    EXPECT_NEAR(hsl[1], 1.0 / 3.0, 1e-7);
    for (float level : {0.0f, 0.5f, 1.0f}) { // grays: lightness is the level
        toHSL(hsl, level, level, level);
        EXPECT_TRUE(hsl[0] == 0.0f && hsl[1] == 0.0f && hsl[2] == level) << "gray " << level;
    }
}

TEST(Color, NegativeHueIsKeptAndConvertsBack) {
    // A red leaning to blue: h = (0 - 0.5) / 1, not wrapped into 0..1.
    float hsl[3];
    toHSL(hsl, 1.0f, 0.0f, 0.5f);
    EXPECT_EQ(hsl[0], -0.5f * SIXTH);
    EXPECT_EQ(hsl[1], 1.0f);
    EXPECT_EQ(hsl[2], 0.5f);
    float rgb[3];
    Color::HSLtoRGB(rgb, hsl);
    EXPECT_EQ(rgb[0], 1.0f);
    EXPECT_EQ(rgb[1], 0.0f);
    EXPECT_NEAR(rgb[2], 0.5f, 1e-6);
}

TEST(Color, HSLtoRGBBordersAndGray) {
    float rgb[3];
    float const gray[3] = {0.7f, 0.0f, 0.3f}; // saturation 0: the hue is not read
    Color::HSLtoRGB(rgb, gray);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(rgb[i], 0.3f) << "channel " << i;
    // Cyan at hue 0.5, m1 = 0, m2 = 1. Green sits on the border 2h = 1, so the strict test
    // sends it to the falling ramp: 6 * (0.6666667f - 0.5) = 1 + 2^-23 rather than m2 = 1.
    // Blue at h = 0.5 - 0.33333334f (exact) is on the rising ramp: 6h = 1 - 2^-24.
    float const cyan[3] = {0.5f, 1.0f, 0.5f};
    Color::HSLtoRGB(rgb, cyan);
    EXPECT_EQ(rgb[0], 0.0f);
    EXPECT_EQ(rgb[1], 1.0f + 0x1p-23f);
    EXPECT_EQ(rgb[2], 1.0f - 0x1p-24f);
    // Lightness below one half: m2 = L (1 + S) = 0.375, m1 = 0.125; green's hue 0 gives m1.
    float const dark[3] = {0.0f, 0.5f, 0.25f};
    Color::HSLtoRGB(rgb, dark);
    EXPECT_EQ(rgb[0], 0.375f);
    EXPECT_EQ(rgb[1], 0.125f);
    // At L = 0.5 the second formula L + S - L S gives the same m2 = 0.75: red is 0.75.
    float const mid[3] = {0.0f, 0.5f, 0.5f};
    Color::HSLtoRGB(rgb, mid);
    EXPECT_EQ(rgb[0], 0.75f);
    EXPECT_EQ(rgb[1], 0.25f);
}

TEST(Color, Blends) {
    Color const a(1.0f, 0.0f, 0.5f, 1.0f), b(0.0f, 1.0f, 0.25f, 0.5f);
    expectRGBA(Color::getMixedColor(a, b, 0.5f, 0.5f), 0.5f, 0.5f, 0.375f, 0.75f);
    expectRGBA(Color::getMixedColor(a, b, 2.0f, 2.0f), 2.0f, 2.0f, 1.5f, 3.0f); // no clamp
    expectRGBA(Color::getScaledTranspaColor(a, 0.0f), 1.0f, 0.0f, 0.5f, 0.0f);
    expectRGBA(Color::getScaledTranspaColor(b, 0.5f), 0.0f, 1.0f, 0.25f, 0.25f);
    // Red is (0, 1, 0.5) in HSL. No saturation with full lightness: gray 0.5, alpha kept.
    Color const red(Color::RED, 0.25f);
    expectRGBA(Color::getScaledSL(red, 0.0f, 1.0f), 0.5f, 0.5f, 0.5f, 0.25f);
    // Full saturation at half the lightness: m2 = 0.25 (1 + 1) = 0.5, m1 = 0: dark red.
    Color const dark = Color::getScaledSL(red, 1.0f, 0.5f);
    EXPECT_EQ(dark.getColor3f().x(), 0.5f);
    EXPECT_EQ(dark.getColor3f().y(), 0.0f);
    EXPECT_NEAR(dark.getColor3f().z(), 0.0f, 1e-6);
    EXPECT_EQ(dark.getAlpha(), 0.25f);
}
