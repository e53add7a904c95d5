// Checks shared by the tests of the primitives, distances and 3D intersections.
#ifndef KDRCORE_TESTS_GEOMETRY_PRIMITIVETESTSUPPORT_H
#define KDRCORE_TESTS_GEOMETRY_PRIMITIVETESTSUPPORT_H

#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace primtest {

/// An out-parameter value no query computes here: a write shows as a change.
constexpr float SENTINEL = -12345.0f;
inline Vector3f const SENTINEL_V(SENTINEL, SENTINEL, SENTINEL);
inline float const NaN = std::numeric_limits<float>::quiet_NaN();
using V = Vector3f;
inline V const O, X(1, 0, 0), Y(0, 1, 0), Z(0, 0, 1);

/// Component-wise closeness; tolerance 0 asks for exact equality.
inline bool near(Vector3f const & v, float x, float y, float z, double tol = 0.0) {
    return std::fabs(double(v.x()) - x) <= tol && std::fabs(double(v.y()) - y) <= tol &&
           std::fabs(double(v.z()) - z) <= tol;
}
inline bool untouched(Vector3f const & v) {
    return near(v, SENTINEL, SENTINEL, SENTINEL);
}

/// A plane and a line stored as given, without normalisation.
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

/// Installs a kernel that counts its cross products; TearDown restores the default kernel.
class CountingKernel : public ::testing::Test {
protected:
    struct Kernel : EnhancedMathFunctions {
        int * count = nullptr;
        void cross(float * const dst, float const * a, float const * b) const override {
            ++*count;
            EnhancedMathFunctions::cross(dst, a, b);
        }
    };
    void SetUp() override {
        Kernel * k = new Kernel;
        k->count = &crosses;
        k->setDefault();
    }
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
    int crosses = 0;
};

} // namespace primtest

#endif // KDRCORE_TESTS_GEOMETRY_PRIMITIVETESTSUPPORT_H
