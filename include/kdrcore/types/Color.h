// kdrcore/types/Color.h - RGBA colour with HSL conversions and blends
#ifndef KDRCORE_TYPES_COLOR_H
#define KDRCORE_TYPES_COLOR_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/types/Vector.h"

/// An RGBA colour: red, green, blue in `m_color` (x, y, z), then `m_alpha`, four consecutive
/// floats, so the object's address serves as an RGB(A) float array. Components are nominally in
/// 0..1; nothing clamps them.
///
/// HSL triples are three floats hue, saturation, lightness. Hue is a fraction of the circle
/// (0, 1/3, 2/3 are red, green, blue), and may be slightly negative for reds leaning to blue.
class KDRCORE_API Color {
public:
    /// Opaque white.
    constexpr Color() : m_color(1.0f, 1.0f, 1.0f), m_alpha(1.0f) {}
    constexpr Color(Vector3f const & color, float alpha) : m_color(color), m_alpha(alpha) {}
    constexpr Color(float r, float g, float b, float a) : m_color(r, g, b), m_alpha(a) {}
    constexpr Color(Color const &) = default;
    Color & operator=(Color const &) = default;

    /// The red, green and blue components in place: a later setColor3f shows through.
    Vector3f const & getColor3f() const { return m_color; }
    /// Replaces red, green and blue; alpha stays.
    void setColor3f(Vector3f const & color) { m_color = color; }
    float getAlpha() const { return m_alpha; }
    void setAlpha(float alpha) { m_alpha = alpha; }

    /// @{ @name Conversions between three-float arrays; input and output must not overlap
    /// A saturation of exactly 0 gives the gray of level L whatever the hue.
    static void HSLtoRGB(float * rgb, float const * hsl);
    /// Hue is not wrapped into 0..1: for components in 0..1 it lies in [-1/6, 5/6]. Gray (all
    /// three equal) gives hue and saturation 0.
    static void RGBtoHSL(float * hsl, float const * rgb);
    /// @}

    /// @{ @name Blends
    /// Each of the four components is first * firstWeight + second * secondWeight; the weights are
    /// used as given (not normalised) and nothing is clamped.
    static Color getMixedColor(Color const & first, Color const & second, float firstWeight,
                               float secondWeight);
    /// The colour with alpha times `factor`.
    static Color getScaledTranspaColor(Color const & color, float factor);
    /// Through HSL: saturation times `saturationFactor`, lightness times `lightnessFactor`, hue
    /// and alpha kept.
    static Color getScaledSL(Color const & color, float saturationFactor, float lightnessFactor);
    /// @}

    /// @{ @name Named colours (RGB only, except NULL_COLOR)
    static const Vector3f WHITE;   ///< (1, 1, 1)
    static const Vector3f BLACK;   ///< (0, 0, 0)
    static const Vector3f RED;     ///< (1, 0, 0)
    static const Vector3f GREEN;   ///< (0, 1, 0)
    static const Vector3f BLUE;    ///< (0, 0, 1)
    static const Vector3f MAGENTA; ///< (1, 0, 1)
    static const Vector3f YELLOW;  ///< (1, 1, 0)
    static const Vector3f CYAN;    ///< (0, 1, 1)
    static const Vector3f GRAY;    ///< (0.5, 0.5, 0.5)
    static const Color NULL_COLOR; ///< (-1, -1, -1, -1): "no colour"
    /// @}

    Vector3f m_color; ///< red, green, blue in x, y, z
    float m_alpha;
};

#endif // KDRCORE_TYPES_COLOR_H
