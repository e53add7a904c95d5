// Checks shared by the tests of the primitives, distances and 3D intersections.
#ifndef KDRCORE_TESTS_GEOMETRY_PRIMITIVETESTSUPPORT_H
#define KDRCORE_TESTS_GEOMETRY_PRIMITIVETESTSUPPORT_H

#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Vector.h"

#include <gtest/gtest.h>

#include <limits>

namespace primtest {

/// An out-parameter value no query computes in these tests: a write shows as a change.
constexpr float SENTINEL = -12345.0f;
inline Vector3f sentinelVector() {
    return Vector3f(SENTINEL, SENTINEL, SENTINEL);
}
inline float nan() {
    return std::numeric_limits<float>::quiet_NaN();
}

/// Component-wise closeness; tolerance 0 asks for exact equality.
inline ::testing::AssertionResult near(Vector3f const & v, float x, float y, float z,
                                       double tolerance = 0.0) {
    double const d[3] = {static_cast<double>(v.x()) - static_cast<double>(x),
                         static_cast<double>(v.y()) - static_cast<double>(y),
                         static_cast<double>(v.z()) - static_cast<double>(z)};
    for (double c : d)
        if (!(c <= tolerance && -c <= tolerance))
            return ::testing::AssertionFailure()
                   << "(" << v.x() << ", " << v.y() << ", " << v.z() << ") is not (" << x << ", "
                   << y << ", " << z << ") within " << tolerance;
    return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult isSentinel(Vector3f const & v) {
    return near(v, SENTINEL, SENTINEL, SENTINEL);
}

/// A plane from its four numbers, stored as given (no normalisation).
inline Plane makePlane(float nx, float ny, float nz, float d) {
    Plane p;
    p.m_normal = Vector3f(nx, ny, nz);
    p.m_d = d;
    return p;
}
/// A line from its point and direction, both stored as given.
inline KDRLine makeLine(Vector3f const & point, Vector3f const & dir) {
    KDRLine l;
    l.m_point = point;
    l.m_dir = dir;
    return l;
}

/// Counts the kernel's cross products and computes them as the default kernel does.
class CountingCrossKernel : public EnhancedMathFunctions {
public:
    explicit CountingCrossKernel(int * count) : m_count(count) {}
    void cross(float * const dst, float const * a, float const * b) const override {
        ++*m_count;
        EnhancedMathFunctions::cross(dst, a, b);
    }

private:
    int * m_count;
};

/// Restores the default kernel after a test that installs its own.
class KernelRestore : public ::testing::Test {
protected:
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
};

} // namespace primtest

#endif // KDRCORE_TESTS_GEOMETRY_PRIMITIVETESTSUPPORT_H
