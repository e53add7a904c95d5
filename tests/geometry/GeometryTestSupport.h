// GeometryTestSupport.h - builders and comparisons shared by the geometry tests, and a kernel
// that logs the operations geometry reaches through it
#ifndef KDRCORE_TESTS_GEOMETRY_GEOMETRYTESTSUPPORT_H
#define KDRCORE_TESTS_GEOMETRY_GEOMETRYTESTSUPPORT_H

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"

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

/// `got` equals `want` element by element within `tol` (0 asks for equality; NaN never passes).
inline ::testing::AssertionResult are(std::vector<double> const & got,
                                      std::vector<double> const & want, double tol = 0.0) {
    for (std::size_t i = 0; i < want.size(); ++i)
        if (!(std::fabs(got[i] - want[i]) <= tol))
            return ::testing::AssertionFailure() << "element " << i << " is " << got[i];
    return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult near(V const & v, double x, double y, double z, double tol = 0) {
    return are({v.x(), v.y(), v.z()}, {x, y, z}, tol);
}
inline ::testing::AssertionResult untouched(V const & v) {
    return near(v, SENTINEL, SENTINEL, SENTINEL);
}
/// Low corner then high corner.
inline ::testing::AssertionResult boxIs(BoundingBox const & b, std::vector<double> const & e) {
    return are({b.m_min.x(), b.m_min.y(), b.m_min.z(), b.m_max.x(), b.m_max.y(), b.m_max.z()}, e);
}
inline ::testing::AssertionResult rectIs(BoundingBox2D const & r, std::vector<double> const & e) {
    return are({r.m_min.x(), r.m_min.y(), r.m_max.x(), r.m_max.y()}, e);
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

/// One kernel call: 'c' cross (its first operand), 'm' multMatrixVec3f or 'a'
/// multAffineMatrixVec3f (the point), and the kernel that received it.
struct Call {
    char op;
    int kernel;
    float x, y, z;
};
inline std::vector<Call> & calls() {
    static std::vector<Call> log;
    return log;
}

/// Logs, then runs the default operation. When the log reaches `m_switchAfter` calls it makes
/// `m_next` current, so a caller that kept the kernel pointer shows in the log. unref does
/// nothing: the fixture owns both kernels.
class LoggingKernel : public EnhancedMathFunctions {
public:
    explicit LoggingKernel(int id) : m_id(id) {}
    void cross(float * const d, float const * a, float const * b) const override {
        log('c', a);
        EnhancedMathFunctions::cross(d, a, b);
    }
    void multMatrixVec3f(float * const d, float const * const m,
                         float const * const v) const override {
        log('m', v);
        EnhancedMathFunctions::multMatrixVec3f(d, m, v);
    }
    void multAffineMatrixVec3f(float * const d, float const * const m,
                               float const * const v) const override {
        log('a', v);
        EnhancedMathFunctions::multAffineMatrixVec3f(d, m, v);
    }
    EnhancedMathFunctions * m_next = nullptr;
    int m_switchAfter = 0;

protected:
    void unref() override {}

private:
    void log(char op, float const * v) const {
        calls().push_back({op, m_id, v[0], v[1], v[2]});
        if (m_next != nullptr && static_cast<int>(calls().size()) == m_switchAfter)
            m_next->setDefault();
    }
    int m_id;
};

class GeometryKernel : public ::testing::Test {
protected:
    void SetUp() override {
        calls().clear();
        m_first.setDefault();
    }
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
    static int count(char op) {
        int n = 0;
        for (Call const & c : calls())
            n += c.op == op;
        return n;
    }
    LoggingKernel m_first{1}, m_second{2};
};

} // namespace geomtest

#endif // KDRCORE_TESTS_GEOMETRY_GEOMETRYTESTSUPPORT_H
