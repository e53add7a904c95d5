// Kernel operations, value classes and geometry are reentrant once the library is loaded: threads
// running the same workload on the default kernel at once must each get, bit for bit, what one
// thread gets alone. Under ThreadSanitizer (the tsan preset) the run must also be free of race
// reports. The workload reads each piece of process-wide state these subsystems have: the kernel
// pointer (every call below), the square-root seed table (invSqrt, msqrt) and the constant
// tables (Vector3f::m_axis through findOrthogonalVector, Vector3f::m_zero through
// Quaternion::getValue, Mat4fBase::m_identity).
#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Quaternion.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

std::vector<std::uint32_t> workload() {
    std::vector<std::uint32_t> out;
    auto add = [&out](float const * v, int n) {
        for (int i = 0; i < n; ++i)
            out.push_back(std::bit_cast<std::uint32_t>(v[i]));
    };
    for (int round = 0; round < 2000; ++round) {
        float const x = 0.001f * static_cast<float>(round + 1);
        float const seedRead[2] = {EnhancedMathFunctions::getCurrent()->invSqrt(x),
                                   EnhancedMathFunctions::getCurrent()->msqrt(x, 2)};
        add(seedRead, 2);
        Matrix4f const unit(Mat4fBase::m_identity);
        MatAff4f m;
        add(unit.getValue(), 16);
        m.setRotate(x, 2.0f * x, -x);
        bool ok = false;
        m.inverse(ok);
        add(m.getValue(), 16);
        Vector3f axis;
        Vector3f(x, 1.0f, -x).findOrthogonalVector(axis);
        Quaternion const q(axis, x);
        MatRot4f r;
        q.getValue(r);
        add(r.getValue(), 16);
        BoundingBox box;
        box.set(Vector3f(x, -x, -2.0f));
        box.add(Vector3f(1.0f, 1.0f, -1.0f - x));
        BoundingBox2D screen;
        Matrix4f const proj(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0);
        out.push_back(
            static_cast<std::uint32_t>(BoundingBoxAlgo::cameraProjBBox(screen, box, proj, 1.0f)));
        add(&screen.m_min.x(), 1);
        add(&screen.m_max.y(), 1);
    }
    return out;
}

TEST(Concurrency, ThreadsGetWhatOneThreadGets) {
    std::vector<std::uint32_t> const expected = workload();
    std::vector<std::vector<std::uint32_t>> results(4);
    std::vector<std::thread> threads;
    for (auto & result : results)
        threads.emplace_back([&result] { result = workload(); });
    for (std::thread & thread : threads)
        thread.join();
    for (std::size_t k = 0; k < results.size(); ++k)
        EXPECT_EQ(results[k], expected) << "thread " << k;
}

} // namespace
