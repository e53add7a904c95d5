// Shared by the box tests: builders, a real perspective matrix, and a kernel that records every
// point it transforms.
#ifndef KDRCORE_TESTS_GEOMETRY_PROJECTIONTESTSUPPORT_H
#define KDRCORE_TESTS_GEOMETRY_PROJECTIONTESTSUPPORT_H

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>
#include <vector>

namespace projtest {

// Focal length 1, near plane 1, far plane 3, looking down -z: w = -z, x' = x / -z, y' = y / -z
// and depth (2z + 3) / z: -1 at the near plane, 1 at the far one, above 1 behind the viewer.
// With z in {-1, -2, 1, 2} every result is exact.
inline Matrix4f perspective() {
    return Matrix4f(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0);
}
constexpr float DEPTH_LIMIT = 1.0f;

inline BoundingBox box(Vector3f const & lo, Vector3f const & hi) {
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
inline void expectBox(BoundingBox const & b, Vector3f const & lo, Vector3f const & hi) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(b.m_min[i], lo[i]) << "min axis " << i;
        EXPECT_EQ(b.m_max[i], hi[i]) << "max axis " << i;
    }
}
inline void expectRect(BoundingBox2D const & r, float x0, float y0, float x1, float y1) {
    EXPECT_EQ(r.getMin().x(), x0);
    EXPECT_EQ(r.getMin().y(), y0);
    EXPECT_EQ(r.getMax().x(), x1);
    EXPECT_EQ(r.getMax().y(), y1);
}

struct Call {
    int kernel;
    float x, y, z;
};
inline std::vector<Call> & calls() {
    static std::vector<Call> log;
    return log;
}

// Logs each point given to multMatrixVec3f or multAffineMatrixVec3f, then runs the default
// operation. After `switchAfter` logged calls it makes `next` current from inside the call, so a
// caller that kept the kernel pointer shows in the log. unref does nothing: the fixture owns it.
class RecordingKernel : public EnhancedMathFunctions {
public:
    explicit RecordingKernel(int id) : m_id(id) {}
    ~RecordingKernel() override = default;
    void multMatrixVec3f(float * const dst, float const * const m,
                         float const * const v) const override {
        log(v);
        EnhancedMathFunctions::multMatrixVec3f(dst, m, v);
        if (m_next != nullptr && static_cast<int>(calls().size()) == m_switchAfter)
            m_next->setDefault();
    }
    void multAffineMatrixVec3f(float * const dst, float const * const m,
                               float const * const v) const override {
        log(v);
        EnhancedMathFunctions::multAffineMatrixVec3f(dst, m, v);
    }
    RecordingKernel * m_next = nullptr;
    int m_switchAfter = 0;

protected:
    void unref() override {}

private:
    void log(float const * v) const { calls().push_back({m_id, v[0], v[1], v[2]}); }
    int m_id;
};

class ProjectionKernel : public ::testing::Test {
protected:
    void SetUp() override {
        calls().clear();
        m_first.setDefault();
    }
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
    RecordingKernel m_first{1}, m_second{2};
};

} // namespace projtest

#endif // KDRCORE_TESTS_GEOMETRY_PROJECTIONTESTSUPPORT_H
