// Vector.cpp - the computed members of the vector classes
#include "kdrcore/types/Vector.h"

#include "detail/Wide.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Scalar.h"

#include <cmath>

using kdrcore::detail::wide;

namespace {

// Both the table and the pointer to it are constant data: no code runs at load time for them.
constinit const Vector3f axisTable[6] = {Vector3f(1.0f, 0.0f, 0.0f),  Vector3f(0.0f, 1.0f, 0.0f),
                                         Vector3f(0.0f, 0.0f, 1.0f),  Vector3f(-1.0f, 0.0f, 0.0f),
                                         Vector3f(0.0f, -1.0f, 0.0f), Vector3f(0.0f, 0.0f, -1.0f)};

// The product of the two lengths, unrounded; the shared first step of cos and the angles.
double normProduct(Vector3f const & a, Vector3f const & b) {
    return a.normD() * b.normD();
}

} // namespace

constinit const Vector3f Vector3f::m_zero(0.0f, 0.0f, 0.0f);
constinit Vector3f const * const Vector3f::m_axis = axisTable;
constinit const Vector2f Vector2f::m_zero(0.0f, 0.0f);
constinit const Vector4f Vector4f::m_zero(0.0f, 0.0f, 0.0f, 0.0f);
constinit const Vector2i Vector2i::m_zero(0, 0);
constinit const Vector2ui Vector2ui::m_zero(0u, 0u);
constinit const Vector2s Vector2s::m_zero(0, 0);

// ---- Vector3f: division ----
// The divisor is compared with 0 exactly; otherwise every component is multiplied by the
// reciprocal, which is formed once and never rounded to float.

Vector3f Vector3f::operator/(float s) const {
    Vector3f r;
    div(r, *this, s);
    return r; // stays the zero vector for an exact 0 divisor
}

Vector3f & Vector3f::operator/=(float s) {
    div(*this, *this, s);
    return *this;
}

void Vector3f::div(Vector3f & out, Vector3f const & v, float s) {
    if (s == 0.0f)
        return;
    double const r = 1.0 / wide(s);
    out.m_v[0] = static_cast<float>(wide(v.m_v[0]) * r);
    out.m_v[1] = static_cast<float>(wide(v.m_v[1]) * r);
    out.m_v[2] = static_cast<float>(wide(v.m_v[2]) * r);
}

// ---- Vector3f: cross product, through the current kernel ----

Vector3f Vector3f::cross(Vector3f const & b) const {
    Vector3f r;
    EnhancedMathFunctions::getCurrent()->cross(r.m_v, m_v, b.m_v);
    return r;
}

void Vector3f::cross(Vector3f & out, Vector3f const & a, Vector3f const & b) {
    EnhancedMathFunctions::getCurrent()->cross(out.m_v, a.m_v, b.m_v);
}

// ---- Vector3f: products and lengths ----

double Vector3f::dotD(Vector3f const & a, Vector3f const & b) {
    // The grouping is part of the result: z and y first, then x.
    return (wide(a.m_v[2]) * wide(b.m_v[2]) + wide(a.m_v[1]) * wide(b.m_v[1])) +
           wide(a.m_v[0]) * wide(b.m_v[0]);
}
float Vector3f::dot(Vector3f const & a, Vector3f const & b) {
    return static_cast<float>(dotD(a, b));
}
double Vector3f::dotD(Vector3f const & b) const {
    return dotD(*this, b);
}
float Vector3f::dot(Vector3f const & b) const {
    return static_cast<float>(dotD(*this, b));
}

double Vector3f::norm2D() const {
    return (wide(m_v[0]) * wide(m_v[0]) + wide(m_v[1]) * wide(m_v[1])) +
           wide(m_v[2]) * wide(m_v[2]);
}
float Vector3f::norm2() const {
    return static_cast<float>(norm2D());
}
double Vector3f::normD() const {
    return std::sqrt(norm2D());
}
float Vector3f::norm() const {
    return static_cast<float>(normD());
}

float Vector3f::normalize() {
    double const len = normD();
    if (len == 0.0)
        return 0.0f;
    double const r = 1.0 / len;
    m_v[0] = static_cast<float>(wide(m_v[0]) * r);
    m_v[1] = static_cast<float>(wide(m_v[1]) * r);
    m_v[2] = static_cast<float>(wide(m_v[2]) * r);
    return static_cast<float>(len);
}

// ---- Vector3f: angles ----

double Vector3f::cos(Vector3f const & b) const {
    double const p = normProduct(*this, b);
    if (p == 0.0)
        return 1.0; // a zero vector counts as parallel to everything
    double const d = (wide(b.m_v[1]) * wide(m_v[1]) + wide(b.m_v[0]) * wide(m_v[0])) +
                     wide(b.m_v[2]) * wide(m_v[2]);
    double const c = d / p;
    if (c > 1.0)
        return 1.0;
    if (c < -1.0)
        return -1.0;
    return c; // NaN passes both clamps
}

double Vector3f::angleD(Vector3f const & b) const {
    if (normProduct(*this, b) == 0.0)
        return 0.0;
    double const c = cos(b);
    // Rounding can put the quotient a hair beyond +-1; the clamped ends are exact.
    if (c <= -1.0)
        return PI_D;
    if (c >= 1.0)
        return 0.0;
    return std::acos(c);
}
float Vector3f::angle(Vector3f const & b) const {
    return static_cast<float>(angleD(b));
}

double Vector3f::angleOrientD(Vector3f const & b, Vector3f const & reference) const {
    Vector3f const c = cross(b);
    double const a = angleD(b);
    double const d =
        (wide(reference.m_v[1]) * wide(c.m_v[1]) + wide(reference.m_v[2]) * wide(c.m_v[2])) +
        wide(reference.m_v[0]) * wide(c.m_v[0]);
    // d == 0 (parallel vectors) takes the second branch: equal vectors give a full turn.
    return d > 0.0 ? a : TWO_PI_D - a;
}
float Vector3f::angleOrient(Vector3f const & b, Vector3f const & reference) const {
    return static_cast<float>(angleOrientD(b, reference));
}

// ---- Vector3f: orthogonality ----

bool Vector3f::makeOrthogonalTo(Vector3f const & unit) {
    double const t = dotD(*this, unit);
    m_v[0] = static_cast<float>(wide(m_v[0]) - wide(unit.m_v[0]) * t);
    m_v[1] = static_cast<float>(wide(m_v[1]) - wide(unit.m_v[1]) * t);
    m_v[2] = static_cast<float>(wide(m_v[2]) - wide(unit.m_v[2]) * t);
    return true;
}

void Vector3f::findOrthogonalVector(Vector3f & out) const {
    float const ax = std::fabs(m_v[0]);
    float const ay = std::fabs(m_v[1]);
    float const az = std::fabs(m_v[2]);
    // The smallest magnitude picks the axis; the order of the tests settles ties.
    int axis;
    if (ay < ax)
        axis = az < ay ? 2 : 1;
    else
        axis = az < ax ? 2 : 0;
    cross(out, m_axis[axis], *this);
}

// ---- Vector3f: tolerance tests ----

bool isZero(Vector3f const & v) {
    return isZero(v.x()) && isZero(v.y()) && isZero(v.z());
}
bool isZero(Vector3f const & v, float tolerance) {
    return isZero(v.x(), tolerance) && isZero(v.y(), tolerance) && isZero(v.z(), tolerance);
}
bool areEqual(Vector3f const & a, Vector3f const & b) {
    return isZero(a - b);
}

// ---- Vector2f ----

float Vector2f::dot(Vector2f const & a, Vector2f const & b) {
    return static_cast<float>(wide(a.m_v[1]) * wide(b.m_v[1]) + wide(a.m_v[0]) * wide(b.m_v[0]));
}
float Vector2f::dot(Vector2f const & b) const {
    return dot(*this, b);
}

namespace {
double norm2D(float x, float y) {
    return wide(x) * wide(x) + wide(y) * wide(y);
}
} // namespace

float Vector2f::norm2() const {
    return static_cast<float>(norm2D(m_v[0], m_v[1]));
}
float Vector2f::norm() const {
    return static_cast<float>(std::sqrt(norm2D(m_v[0], m_v[1])));
}

float Vector2f::angle() {
    double const x = wide(m_v[0]);
    double const y = wide(m_v[1]);
    if (x == 0.0)
        return y >= 0.0 ? HALF_PI_F : -HALF_PI_F;
    double const t = std::atan(y / x);
    if (x < 0.0)
        return static_cast<float>(t + wide(PI_F));
    if (y >= 0.0)
        return static_cast<float>(t);
    return static_cast<float>(t + wide(TWO_PI_F));
}

float Vector2f::angle(Vector2f const & b) {
    double const p = std::sqrt(norm2D(m_v[0], m_v[1])) * std::sqrt(norm2D(b.m_v[0], b.m_v[1]));
    if (p == 0.0)
        return 0.0f;
    double const c = (wide(b.m_v[0]) * wide(m_v[0]) + wide(b.m_v[1]) * wide(m_v[1])) / p;
    if (c <= -1.0)
        return PI_F;
    if (c >= 1.0)
        return 0.0f;
    return static_cast<float>(std::acos(c));
}
