// examples/custom_kernel/main.cpp - the smallest host kernel: derive, override, install
//
// Every matrix and quaternion operation of KDRCore goes through one process-wide kernel object,
// EnhancedMathFunctions::getCurrent(). A host derives its own kernel, overrides what it wants
// (here one operation), installs it with setDefault(), and from then on the value classes and
// the geometry of the whole process run on it.
#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Vector.h"

#include <cstdio>

namespace {

int g_projections = 0; // kept outside the kernel: kernel operations are const

/// Projects points as the default kernel does, and says so each time.
class TracingKernel : public EnhancedMathFunctions {
public:
    void multMatrixVec3f(float * const dst, float const * const m,
                         float const * const v) const override {
        ++g_projections;
        std::printf("    TracingKernel::multMatrixVec3f(%g, %g, %g)\n", static_cast<double>(v[0]),
                    static_cast<double>(v[1]), static_cast<double>(v[2]));
        EnhancedMathFunctions::multMatrixVec3f(dst, m, v); // the default arithmetic
    }

protected:
    // The library deletes the kernel (through unref) when another one replaces it.
    ~TracingKernel() override { std::printf("TracingKernel deleted by the library\n"); }
};

} // namespace

int main() {
    // Install: create with new and hand it over. The library owns the object from here on.
    (new TracingKernel())->setDefault();

    // A translation by (5, 0, 0), written in array order: four floats per column, the
    // translation in elements 12, 13, 14.
    Matrix4f const m(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 0, 0, 1);
    Vector3f const p(1, 2, 3);

    std::printf("value class: Matrix4f::multRightVec3f\n");
    Vector3f q;
    m.multRightVec3f(q, p);
    std::printf("  -> (%g, %g, %g)\n", static_cast<double>(q.x()), static_cast<double>(q.y()),
                static_cast<double>(q.z()));
    int const byValueClass = g_projections;

    std::printf("geometry: cameraProjPoint\n");
    Vector3f r;
    cameraProjPoint(r, p, m, 1000.0f);
    std::printf("  -> (%g, %g, %g)\n", static_cast<double>(r.x()), static_cast<double>(r.y()),
                static_cast<double>(r.z()));
    int const byGeometry = g_projections - byValueClass;

    // Back to a plain default kernel; setDefault releases ours.
    (new EnhancedMathFunctions())->setDefault();

    bool const ok = byValueClass == 1 && byGeometry == 1 && q.x() == 6.0f && r.x() == 6.0f;
    std::printf("%s: the override ran %d time(s) for the value class, %d for the geometry\n",
                ok ? "ok" : "FAILED", byValueClass, byGeometry);
    return ok ? 0 : 1;
}
