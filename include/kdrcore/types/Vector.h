// kdrcore/types/Vector.h - small vector value types: Vector3f and its thin relatives
#ifndef KDRCORE_TYPES_VECTOR_H
#define KDRCORE_TYPES_VECTOR_H

#include "kdrcore/KDRExport.h"

/// Three floats x, y, z stored as one array, the common point and direction type. No invariant.
/// Results are computed at double width and rounded once when stored. Only the cross product goes
/// through the current kernel; everything else is computed here, whichever kernel is current. All
/// zero tests (division, normalize, cos, angles) are exact comparisons with 0, never tolerances.
class KDRCORE_API Vector3f {
public:
    /// @{ @name Construction and element access
    constexpr Vector3f() : m_v{0.0f, 0.0f, 0.0f} {}
    constexpr Vector3f(Vector3f const &) = default;
    constexpr Vector3f(float x, float y, float z) : m_v{x, y, z} {}
    /// Reads three floats from `v`.
    Vector3f(float const * v) : m_v{v[0], v[1], v[2]} {}
    /// The vector `to - from`: the second argument minus the first.
    Vector3f(Vector3f const & from, Vector3f const & to)
        : m_v{diff(to.m_v[0], from.m_v[0]), diff(to.m_v[1], from.m_v[1]),
              diff(to.m_v[2], from.m_v[2])} {}
    Vector3f & operator=(Vector3f const &) = default;

    void setValue(float x, float y, float z) {
        m_v[0] = x;
        m_v[1] = y;
        m_v[2] = z;
    }
    void setValue(float const * v) { setValue(v[0], v[1], v[2]); }
    void getValue(float * v) const {
        v[0] = m_v[0];
        v[1] = m_v[1];
        v[2] = m_v[2];
    }
    /// The three components as an array, x first.
    float * getValue() { return m_v; }
    float const * getValue() const { return m_v; }
    float & x() { return m_v[0]; }
    float & y() { return m_v[1]; }
    float & z() { return m_v[2]; }
    float x() const { return m_v[0]; }
    float y() const { return m_v[1]; }
    float z() const { return m_v[2]; }
    /// No bound check: `i` must be 0, 1 or 2.
    float & operator[](int i) { return m_v[i]; }
    float operator[](int i) const { return m_v[i]; }
    void swap(Vector3f & other) {
        Vector3f const t(*this);
        *this = other;
        other = t;
    }
    /// @}

    /// @{ @name Arithmetic
    Vector3f operator+(Vector3f const & b) const {
        return Vector3f(sum(m_v[0], b.m_v[0]), sum(m_v[1], b.m_v[1]), sum(m_v[2], b.m_v[2]));
    }
    Vector3f operator-(Vector3f const & b) const { return Vector3f(b, *this); }
    Vector3f operator*(float s) const {
        return Vector3f(prod(m_v[0], s), prod(m_v[1], s), prod(m_v[2], s));
    }
    /// Each component times the unrounded reciprocal 1/s; an exact 0 divisor gives the zero
    /// vector (a NaN divisor is not 0 and flows through).
    Vector3f operator/(float s) const;
    /// Cross product `this x b`, by the current kernel's `cross`.
    Vector3f operator^(Vector3f const & b) const { return cross(b); }
    /// Cross product `this x b`, by the current kernel's `cross`.
    Vector3f cross(Vector3f const & b) const;
    Vector3f & operator*=(float s) {
        mult(*this, *this, s);
        return *this;
    }
    /// As operator/; an exact 0 divisor leaves the vector unchanged.
    Vector3f & operator/=(float s);

    /// `out = a + b`, component by component in the order x, y, z; `out` may be an input.
    static void add(Vector3f & out, Vector3f const & a, Vector3f const & b) {
        out.m_v[0] = sum(a.m_v[0], b.m_v[0]);
        out.m_v[1] = sum(a.m_v[1], b.m_v[1]);
        out.m_v[2] = sum(a.m_v[2], b.m_v[2]);
    }
    /// `out = a - b`; `out` may be an input.
    static void sub(Vector3f & out, Vector3f const & a, Vector3f const & b) {
        out.m_v[0] = diff(a.m_v[0], b.m_v[0]);
        out.m_v[1] = diff(a.m_v[1], b.m_v[1]);
        out.m_v[2] = diff(a.m_v[2], b.m_v[2]);
    }
    /// `out = v * s`; `out` may be `v`.
    static void mult(Vector3f & out, Vector3f const & v, float s) {
        out.m_v[0] = prod(v.m_v[0], s);
        out.m_v[1] = prod(v.m_v[1], s);
        out.m_v[2] = prod(v.m_v[2], s);
    }
    /// `out = v / s` as operator/; an exact 0 divisor leaves `out` unchanged. `out` may be `v`.
    static void div(Vector3f & out, Vector3f const & v, float s);
    /// `out = -v`: the opposite vector, not a reciprocal. `out` may be `v`.
    static void inverse(Vector3f & out, Vector3f const & v) {
        out.m_v[0] = -v.m_v[0];
        out.m_v[1] = -v.m_v[1];
        out.m_v[2] = -v.m_v[2];
    }
    /// `out = a x b` by the current kernel's `cross`. `out` must be a third object.
    static void cross(Vector3f & out, Vector3f const & a, Vector3f const & b);
    /// @}

    /// @{ @name Products, lengths and angles
    /// Each plain member is its `D` member narrowed to float: one computation on the float
    /// components at double width.
    static float dot(Vector3f const & a, Vector3f const & b); ///< (a.z*b.z + a.y*b.y) + a.x*b.x
    static double dotD(Vector3f const & a, Vector3f const & b);
    float dot(Vector3f const & b) const;
    double dotD(Vector3f const & b) const;
    float norm2() const; ///< (x*x + y*y) + z*z
    double norm2D() const;
    float norm() const; ///< exact square root of norm2D, not the kernel's msqrt
    double normD() const;
    /// Scales to unit length and returns the length it had before. A vector of length exactly 0
    /// is left alone and 0 is returned.
    float normalize();
    /// Cosine of the angle to `b`, clamped to [-1, 1]; 1.0 when either vector is zero.
    double cos(Vector3f const & b) const;
    /// Unsigned angle to `b` in radians, in [0, pi]; 0 when either vector is zero.
    double angleD(Vector3f const & b) const;
    float angle(Vector3f const & b) const;
    /// Angle from this vector to `b` turning positively around `reference` (only the sign of
    /// reference . (this x b) matters), in (0, 2 pi]: equal vectors give TWO_PI_D, not 0.
    double angleOrientD(Vector3f const & b, Vector3f const & reference) const;
    float angleOrient(Vector3f const & b, Vector3f const & reference) const;
    /// Removes the part along `unit`, which must have unit length (it is not divided by its
    /// squared length); not normalised afterwards. Always returns true.
    bool makeOrthogonalTo(Vector3f const & unit);
    /// Writes to `out` the cross product e x this, e being the coordinate axis furthest from this
    /// vector (ties go to x, then y). Not normalised; `out` must not be this vector.
    void findOrthogonalVector(Vector3f & out) const;
    /// @}

    static const Vector3f m_zero; ///< (0, 0, 0)
    /// Six unit axes: +x, +y, +z, -x, -y, -z.
    static Vector3f const * const m_axis;

private:
    // One operation each, at double width, rounded once: the same bits whatever the host's flags.
    static float sum(float a, float b) {
        return static_cast<float>(static_cast<double>(a) + static_cast<double>(b));
    }
    static float diff(float a, float b) {
        return static_cast<float>(static_cast<double>(a) - static_cast<double>(b));
    }
    static float prod(float a, float b) {
        return static_cast<float>(static_cast<double>(a) * static_cast<double>(b));
    }

    float m_v[3];
};

/// The opposite vector.
inline Vector3f operator-(Vector3f const & v) {
    Vector3f r;
    Vector3f::inverse(r, v);
    return r;
}
/// The same as `v * s`.
inline Vector3f operator*(float s, Vector3f const & v) {
    return v * s;
}

/// @{ @name Tolerance tests on vectors
/// Each component is tested on its own (never the length), inclusive, false on NaN.
KDRCORE_API bool isZero(Vector3f const & v); ///< every |component| <= TOLERANCE
KDRCORE_API bool isZero(Vector3f const & v, float tolerance);
/// isZero of the difference a - b, whose components are rounded to float first.
KDRCORE_API bool areEqual(Vector3f const & a, Vector3f const & b);
/// @}

/// Two floats x, y, stored as one array.
class KDRCORE_API Vector2f {
public:
    constexpr Vector2f() : m_v{0.0f, 0.0f} {}
    constexpr Vector2f(float x, float y) : m_v{x, y} {}
    /// Reads two floats from `v`.
    void setValue(float const * v) {
        m_v[0] = v[0];
        m_v[1] = v[1];
    }
    float & x() { return m_v[0]; }
    float & y() { return m_v[1]; }
    float x() const { return m_v[0]; }
    float y() const { return m_v[1]; }
    /// No bound check: `i` must be 0 or 1.
    float & operator[](int i) { return m_v[i]; }

    static float dot(Vector2f const & a, Vector2f const & b); ///< a.y*b.y + a.x*b.x
    float dot(Vector2f const & b) const;
    float norm2() const; ///< x*x + y*y
    float norm() const;  ///< exact square root of norm2, unrounded in between
    /// Polar angle in [0, 2 pi), from atan(y / x) with the quadrant set by hand; the y axis gives
    /// HALF_PI_F (also the zero vector), the negative y axis -HALF_PI_F.
    float angle();
    /// Unsigned angle to `b` in [0, pi]; 0 when either vector is zero.
    float angle(Vector2f const & b);

    static const Vector2f m_zero; ///< (0, 0)

private:
    float m_v[2];
};

/// Four floats x, y, z, w, stored as one array; z is reached through getValue().
class KDRCORE_API Vector4f {
public:
    constexpr Vector4f() : m_v{0.0f, 0.0f, 0.0f, 0.0f} {}
    constexpr Vector4f(float x, float y, float z, float w) : m_v{x, y, z, w} {}
    void setValue(float x, float y, float z, float w) {
        m_v[0] = x;
        m_v[1] = y;
        m_v[2] = z;
        m_v[3] = w;
    }
    float * getValue() { return m_v; }
    float const * getValue() const { return m_v; }
    float & x() { return m_v[0]; }
    float & y() { return m_v[1]; }
    float & w() { return m_v[3]; }

    static const Vector4f m_zero; ///< (0, 0, 0, 0)

private:
    float m_v[4];
};

/// Two ints; no default constructor.
class KDRCORE_API Vector2i {
public:
    constexpr Vector2i(int x_, int y_) : x(x_), y(y_) {}
    int x;
    int y;

    static const Vector2i m_zero; ///< (0, 0)
};

/// Two unsigned ints; no default constructor.
class KDRCORE_API Vector2ui {
public:
    constexpr Vector2ui(unsigned int x_, unsigned int y_) : x(x_), y(y_) {}
    unsigned int x;
    unsigned int y;

    static const Vector2ui m_zero; ///< (0, 0)
};

/// Two shorts; no default constructor.
class KDRCORE_API Vector2s {
public:
    constexpr Vector2s(short x, short y) : m_v{x, y} {}
    short x() const { return m_v[0]; }
    short y() const { return m_v[1]; }

    static const Vector2s m_zero; ///< (0, 0)

private:
    short m_v[2];
};

#endif // KDRCORE_TYPES_VECTOR_H
