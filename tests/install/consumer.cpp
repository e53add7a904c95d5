// A host program built against the installed library: it reaches the kernel through the umbrella
// header, replaces it, and checks that the library runs on the replacement.
#include "kdrcore/KDRCore.h"

#include <cstdio>

namespace {
int g_crossCalls = 0;

class HostKernel : public EnhancedMathFunctions {
public:
    void cross(float * const dst, float const * a, float const * b) const override {
        ++g_crossCalls;
        EnhancedMathFunctions::cross(dst, a, b);
    }
};
} // namespace

int main() {
    float m[16];
    EnhancedMathFunctions::getCurrent()->setIdentity(m);
    (new HostKernel())->setDefault();
    float const x[3] = {1.0f, 0.0f, 0.0f}, y[3] = {0.0f, 1.0f, 0.0f};
    float z[3];
    EnhancedMathFunctions::getCurrent()->cross(z, x, y);
    bool const ok = m[15] == 1.0f && z[2] == 1.0f && g_crossCalls == 1 && isZero(0.0001f);
    std::printf("consumer: %s\n", ok ? "ok" : "FAILED");
    return ok ? 0 : 1;
}
