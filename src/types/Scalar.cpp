// Shared constants, tolerance comparisons and float elementary functions.
#include "kdrcore/types/Scalar.h"

#include "detail/Wide.h"

#include <bit>
#include <cstdint>

using kdrcore::detail::wide;

// The constants are given by their bit patterns, so that no decimal rounding can move them.
double const TOLERANCE = std::bit_cast<double>(std::uint64_t{0x3F1A36E2EB1C432D});
float const BOX_TOLERANCE = std::bit_cast<float>(std::uint32_t{0x33D6BF95});
float const FLOAT_EPSILON = std::bit_cast<float>(std::uint32_t{0x34000000});
float const FLOAT_MAX = std::bit_cast<float>(std::uint32_t{0x7F7FFFFF});
float const FLOAT_LOWEST = std::bit_cast<float>(std::uint32_t{0xFF7FFFFF});
float const PI_F = std::bit_cast<float>(std::uint32_t{0x40490FDB});
float const HALF_PI_F = std::bit_cast<float>(std::uint32_t{0x3FC90FDB});
float const TWO_PI_F = std::bit_cast<float>(std::uint32_t{0x40C90FDB});
double const PI_D = std::bit_cast<double>(std::uint64_t{0x400921FB54442D18});
double const HALF_PI_D = std::bit_cast<double>(std::uint64_t{0x3FF921FB54442D18});
double const TWO_PI_D = std::bit_cast<double>(std::uint64_t{0x401921FB54442D18});

namespace {

// The magnitude as the comparisons take it: negated when on the negative side, so the sign of a
// zero plays no part and NaN stays NaN (every later `<=` is then false).
inline double magnitude(double v) {
    return v < 0.0 ? -v : v;
}
} // namespace

bool isZero(float x) {
    return magnitude(wide(x)) <= TOLERANCE;
}
bool isZero(float x, float tolerance) {
    return magnitude(wide(x)) <= wide(tolerance);
}
bool areEqual(float a, float b) {
    return magnitude(wide(a) - wide(b)) <= TOLERANCE;
}
bool areEqual(float a, float b, float tolerance) {
    return magnitude(wide(a) - wide(b)) <= wide(tolerance);
}

bool testFiniteAndNAN(float x) {
    return testFiniteAndNAN(wide(x));
}
bool testFiniteAndNAN(double x) {
    if (std::isnan(x))
        return false;
    return std::isfinite(x);
}

double absDouble(double x) {
    return x < 0.0 ? -x : x;
}

float det2(float a, float b, float c, float d) {
    return static_cast<float>(wide(a) * wide(d) - wide(b) * wide(c));
}

float acos(float x) {
    return static_cast<float>(std::acos(wide(x)));
}
float asin(float x) {
    return static_cast<float>(std::asin(wide(x)));
}
float atan(float x) {
    return static_cast<float>(std::atan2(wide(x), 1.0));
}
float atan2(float y, float x) {
    return static_cast<float>(std::atan2(wide(y), wide(x)));
}
float cos(float x) {
    return static_cast<float>(std::cos(wide(x)));
}
float fabs(float x) {
    return static_cast<float>(std::fabs(wide(x)));
}
float pow(float x, float y) {
    return static_cast<float>(std::pow(wide(x), wide(y)));
}
float sin(float x) {
    return static_cast<float>(std::sin(wide(x)));
}
float sqrt(float x) {
    return static_cast<float>(std::sqrt(wide(x)));
}
float tan(float x) {
    return static_cast<float>(std::tan(wide(x)));
}
