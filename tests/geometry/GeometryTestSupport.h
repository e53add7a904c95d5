// GeometryTestSupport.h - builders and comparisons shared by the geometry tests
#ifndef KDRCORE_TESTS_GEOMETRY_GEOMETRYTESTSUPPORT_H
#define KDRCORE_TESTS_GEOMETRY_GEOMETRYTESTSUPPORT_H

#include "support/TestSupport.h"

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/geometry/Primitives.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace geomtest {

/// An out-parameter value no query computes here: a write shows as a change.
constexpr float SENTINEL = -12345.0f;
inline Vector3f const SENTINEL_V(SENTINEL, SENTINEL, SENTINEL);
inline float const NaN = std::numeric_limits<float>::quiet_NaN();
using V = Vector3f;
inline V const O, X(1, 0, 0), Y(0, 1, 0), Z(0, 0, 1);

using kdrtest::elems;
using kdrtest::RecordingKernel;
using kdrtest::RecordingKernelTest;
inline ::testing::AssertionResult near(V const & v, double x, double y, double z, double tol = 0) {
    return elems({v.x(), v.y(), v.z()}, {x, y, z}, tol);
}
/// Low corner then high corner.
inline ::testing::AssertionResult boxIs(BoundingBox const & b, std::vector<double> const & e) {
    return elems({b.m_min.x(), b.m_min.y(), b.m_min.z(), b.m_max.x(), b.m_max.y(), b.m_max.z()}, e);
}
inline ::testing::AssertionResult rectIs(BoundingBox2D const & r, std::vector<double> const & e) {
    return elems({r.m_min.x(), r.m_min.y(), r.m_max.x(), r.m_max.y()}, e);
}

/// Primitives stored as given, without normalisation.
inline Plane P(float nx, float ny, float nz, float d) {
    Plane p;
    p.m_normal = V(nx, ny, nz);
    p.m_d = d;
    return p;
}
inline KDRLine L(V const & point, V const & dir) {
    KDRLine l;
    l.m_point = point;
    l.m_dir = dir;
    return l;
}
inline BoundingBox box(V const & lo, V const & hi) {
    BoundingBox b;
    b.m_min = lo;
    b.m_max = hi;
    return b;
}
inline BoundingBox2D rect(float x0, float y0, float x1, float y1) {
    BoundingBox2D r;
    r.m_min = Vector2f(x0, y0);
    r.m_max = Vector2f(x1, y1);
    return r;
}

// Focal length 1, near plane 1, far plane 3, looking down -z: w = -z, x' = x / -z, y' = y / -z
// and depth (2z + 3) / z: -1 at the near plane, 1 at the far one, above 1 behind the viewer.
// With z in {-1, -2, 1, 2} every result is exact.
inline Matrix4f perspective() {
    return Matrix4f(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0);
}
constexpr float DEPTH_LIMIT = 1.0f;

} // namespace geomtest

#endif // KDRCORE_TESTS_GEOMETRY_GEOMETRYTESTSUPPORT_H
