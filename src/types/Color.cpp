// Color.cpp - HSL conversions and blends of Color
#include "kdrcore/types/Color.h"

#include "detail/Wide.h"

using kdrcore::detail::wide;

namespace {

// The conversions' constants, as the floats they are stored in.
constexpr float ONE_THIRD = 1.0f / 3.0f;  // 0.33333334
constexpr float TWO_THIRDS = 2.0f / 3.0f; // 0.6666667
constexpr float ONE_SIXTH = 1.0f / 6.0f;  // 0.16666667

// One RGB channel from its hue position `h`. The tests are strict: on a border the next case
// applies.
float channel(float h, float m1, float m2) {
    if (h < 0.0f)
        h = static_cast<float>(wide(h) + 1.0);
    else if (h > 1.0f)
        h = static_cast<float>(wide(h) - 1.0);
    double const d = wide(h);
    double const spread = wide(m2) - wide(m1);
    if (6.0 * d < 1.0)
        return static_cast<float>(wide(m1) + 6.0 * d * spread);
    if (2.0 * d < 1.0)
        return m2;
    if (3.0 * d < 2.0)
        return static_cast<float>(wide(m1) + 6.0 * (wide(TWO_THIRDS) - d) * spread);
    return m1;
}

} // namespace

constinit const Vector3f Color::WHITE(1.0f, 1.0f, 1.0f);
constinit const Vector3f Color::BLACK(0.0f, 0.0f, 0.0f);
constinit const Vector3f Color::RED(1.0f, 0.0f, 0.0f);
constinit const Vector3f Color::GREEN(0.0f, 1.0f, 0.0f);
constinit const Vector3f Color::BLUE(0.0f, 0.0f, 1.0f);
constinit const Vector3f Color::MAGENTA(1.0f, 0.0f, 1.0f);
constinit const Vector3f Color::YELLOW(1.0f, 1.0f, 0.0f);
constinit const Vector3f Color::CYAN(0.0f, 1.0f, 1.0f);
constinit const Vector3f Color::GRAY(0.5f, 0.5f, 0.5f);
constinit const Color Color::NULL_COLOR(-1.0f, -1.0f, -1.0f, -1.0f);

void Color::HSLtoRGB(float * rgb, float const * hsl) {
    float const h = hsl[0];
    float const s = hsl[1];
    float const l = hsl[2];
    if (s == 0.0f) {
        rgb[0] = rgb[1] = rgb[2] = l;
        return;
    }
    double const dl = wide(l);
    double const ds = wide(s);
    // At L = 0.5 both formulas agree; the second one is taken.
    float const m2 = static_cast<float>(l < 0.5f ? dl * (1.0 + ds) : (dl + ds) - dl * ds);
    float const m1 = static_cast<float>(2.0 * dl - wide(m2));
    rgb[0] = channel(static_cast<float>(wide(h) + wide(ONE_THIRD)), m1, m2);
    rgb[1] = channel(h, m1, m2);
    rgb[2] = channel(static_cast<float>(wide(h) - wide(ONE_THIRD)), m1, m2);
}

void Color::RGBtoHSL(float * hsl, float const * rgb) {
    float const r = rgb[0];
    float const g = rgb[1];
    float const b = rgb[2];
    float max = r > g ? r : g;
    max = b > max ? b : max;
    float min = r < g ? r : g;
    min = b < min ? b : min;

    float const l = static_cast<float>((wide(max) + wide(min)) * 0.5);
    hsl[2] = l;
    if (max == min) {
        hsl[0] = 0.0f;
        hsl[1] = 0.0f;
        return;
    }
    double const delta = wide(max) - wide(min);
    hsl[1] = static_cast<float>(l <= 0.5f ? delta / (wide(max) + wide(min))
                                          : delta / ((2.0 - wide(max)) - wide(min)));
    // Exact tests in the order r, g, b: the first maximum found gives the sector.
    double h;
    if (max == r)
        h = (wide(g) - wide(b)) / delta;
    else if (max == g)
        h = 2.0 + (wide(b) - wide(r)) / delta;
    else
        h = 4.0 + (wide(r) - wide(g)) / delta;
    // Not wrapped: a red leaning to blue keeps its small negative hue.
    hsl[0] = static_cast<float>(wide(static_cast<float>(h)) * wide(ONE_SIXTH));
}

Color Color::getMixedColor(Color const & first, Color const & second, float firstWeight,
                           float secondWeight) {
    double const w1 = wide(firstWeight);
    double const w2 = wide(secondWeight);
    auto mix = [w1, w2](float a, float b) {
        return static_cast<float>(wide(a) * w1 + wide(b) * w2);
    };
    Vector3f const & c1 = first.m_color;
    Vector3f const & c2 = second.m_color;
    return Color(mix(c1.x(), c2.x()), mix(c1.y(), c2.y()), mix(c1.z(), c2.z()),
                 mix(first.m_alpha, second.m_alpha));
}

Color Color::getScaledTranspaColor(Color const & color, float factor) {
    return Color(color.m_color, static_cast<float>(wide(color.m_alpha) * wide(factor)));
}

Color Color::getScaledSL(Color const & color, float saturationFactor, float lightnessFactor) {
    float hsl[3];
    RGBtoHSL(hsl, color.m_color.getValue());
    hsl[1] = static_cast<float>(wide(hsl[1]) * wide(saturationFactor));
    hsl[2] = static_cast<float>(wide(hsl[2]) * wide(lightnessFactor));
    Color result(0.0f, 0.0f, 0.0f, color.m_alpha);
    HSLtoRGB(result.m_color.getValue(), hsl);
    return result;
}
