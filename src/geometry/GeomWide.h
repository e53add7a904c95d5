// GeomWide.h - double-width vector arithmetic shared by the geometry sources (private)
#ifndef KDRCORE_SRC_GEOMETRY_GEOMWIDE_H
#define KDRCORE_SRC_GEOMETRY_GEOMWIDE_H

#include "detail/Wide.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Vector.h"

#include <cmath>

namespace kdrcore::detail {

/// An intermediate vector of the geometry code, held unrounded. Only values the text of a query
/// calls rounded (out-parameters, fields, kernel operands) become Vector3f.
struct V3d {
    double x, y, z;
};

inline V3d wide(Vector3f const & v) {
    return {wide(v.x()), wide(v.y()), wide(v.z())};
}
/// Through roundedFloat: a vector rounded here is often widened again in the same query
/// (normal3Pts normalises its rounded sum), and g++ 12 at -O2 would go on from the unrounded
/// doubles in x and y.
inline Vector3f narrow(V3d const & v) {
    return Vector3f(roundedFloat(v.x), roundedFloat(v.y), roundedFloat(v.z));
}
inline V3d operator+(V3d const & a, V3d const & b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline V3d operator-(V3d const & a, V3d const & b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline V3d operator*(V3d const & a, double s) {
    return {a.x * s, a.y * s, a.z * s};
}
/// The library's dot product grouping, as Vector3f::dotD: z and y first, then x.
inline double dot(V3d const & a, V3d const & b) {
    return (a.z * b.z + a.y * b.y) + a.x * b.x;
}
/// a x b, written out at double width (for the queries that do not use the kernel).
inline V3d crossWide(V3d const & a, V3d const & b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
/// The kernel's cross product, asked of the current kernel at each call: a x b.
inline Vector3f kernelCross(Vector3f const & a, Vector3f const & b) {
    Vector3f out;
    EnhancedMathFunctions::getCurrent()->cross(out.getValue(), a.getValue(), b.getValue());
    return out;
}

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_GEOMETRY_GEOMWIDE_H
