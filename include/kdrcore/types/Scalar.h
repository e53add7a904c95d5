// kdrcore/types/Scalar.h - shared constants, tolerance comparisons and float elementary functions
#ifndef KDRCORE_TYPES_SCALAR_H
#define KDRCORE_TYPES_SCALAR_H

#include "kdrcore/KDRExport.h"

#include <cmath>

/// @{ @name Shared read-only constants
/// A double constant is compared as a double: a float operand is widened, the constant is never
/// rounded to float.
KDRCORE_API extern double const TOLERANCE;    ///< 0.0001, the default tolerance of the library
KDRCORE_API extern float const BOX_TOLERANCE; ///< 1e-7, used by the line-box intersection
KDRCORE_API extern float const FLOAT_EPSILON; ///< 2^-23
KDRCORE_API extern float const FLOAT_MAX;     ///< largest finite float
KDRCORE_API extern float const FLOAT_LOWEST;  ///< most negative finite float
KDRCORE_API extern float const PI_F;
KDRCORE_API extern float const HALF_PI_F;
KDRCORE_API extern float const TWO_PI_F;
KDRCORE_API extern double const PI_D;
KDRCORE_API extern double const HALF_PI_D;
KDRCORE_API extern double const TWO_PI_D;
/// @}

/// @{ @name Tolerance comparisons
/// All tests are inclusive (a value exactly at the tolerance counts as zero or equal) and false
/// when an operand is NaN. Differences are compared unrounded, at double width. A negative
/// tolerance makes every test false.
KDRCORE_API bool isZero(float x); ///< |x| <= TOLERANCE, compared as doubles
KDRCORE_API bool isZero(float x, float tolerance);
KDRCORE_API bool areEqual(float a, float b); ///< |a - b| <= TOLERANCE
KDRCORE_API bool areEqual(float a, float b, float tolerance);
/// @}

/// True when `x` is neither NaN nor infinite (`x` is widened to double first).
KDRCORE_API bool testFiniteAndNAN(float x);
/// True when `x` is neither NaN nor infinite.
KDRCORE_API bool testFiniteAndNAN(double x);

/// `-x` when `x < 0`, else `x` unchanged: unlike fabs, -0.0 keeps its sign and NaN passes as is.
KDRCORE_API double absDouble(double x);
/// Determinant of the 2x2 matrix with rows (a, b) and (c, d): `a*d - b*c` at double width.
KDRCORE_API float det2(float a, float b, float c, float d);

/// @{ @name Float forms of the elementary functions
/// Each widens its arguments, calls the run-time library at double width and returns the result
/// rounded to float. Nothing is clamped: an argument outside the domain gives what the run-time
/// library gives (NaN for acos(2.0f)). `sqrt` is the exact square root, not the kernel's msqrt.
KDRCORE_API float acos(float x);
KDRCORE_API float asin(float x);
KDRCORE_API float atan(float x); ///< atan2(x, 1)
KDRCORE_API float atan2(float y, float x);
KDRCORE_API float cos(float x);
KDRCORE_API float fabs(float x); ///< clears the sign: fabs(-0.0f) is +0.0f
KDRCORE_API float pow(float x, float y);
KDRCORE_API float sin(float x);
KDRCORE_API float sqrt(float x);
KDRCORE_API float tan(float x);
/// @}

#endif // KDRCORE_TYPES_SCALAR_H
