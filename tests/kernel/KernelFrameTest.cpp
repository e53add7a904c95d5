// The current-kernel mechanism and the simplest operations.
#include "support/TestSupport.h"

using namespace kdrtest;

namespace {

std::string g_events;

// A kernel that reports its reference hooks and its destruction.
struct TracingKernel : EnhancedMathFunctions {
    std::string name;
    explicit TracingKernel(char const * n) : name(n) {}
    void ref() override { g_events += name + ".ref "; }
    void unref() override { g_events += name + ".unref ", EnhancedMathFunctions::unref(); }
    ~TracingKernel() override { g_events += name + ".destroyed "; }
};

class KernelFrame : public ::testing::Test {
protected:
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
};

TEST_F(KernelFrame, SetDefaultRefsTheNewKernelBeforeReleasingTheOld) {
    EnhancedMathFunctions * first = EnhancedMathFunctions::getCurrent();
    EXPECT_TRUE(first != nullptr && EnhancedMathFunctions::getCurrent() == first);
    (new TracingKernel("a"))->setDefault();
    auto * b = new TracingKernel("b");
    g_events.clear();
    b->setDefault();
    // Installing the current kernel again must not let it die (AddressSanitizer would see it).
    b->setDefault();
    EXPECT_EQ(g_events, "b.ref a.unref a.destroyed ");
    EXPECT_EQ(EnhancedMathFunctions::getCurrent(), b);
    EXPECT_EQ(b->det2(1, 2, 3, 4), -2.0f);
}

TEST(KernelFrameOps, SimplestOperationsWriteWhatTheySay) {
    // (1 + 2^-12)^2 - 1 = 2^-11 + 2^-24: in float the square would lose its last term.
    float const x = 1.0f + 0x1p-12f, a[3] = {1, 2, 3}, b[3] = {4, 5, 6}, c[3] = {7, 8, 10};
    EXPECT_EQ(kernel().det2(x, 1.0f, 1.0f, x), 0x1p-11f + 0x1p-24f);
    EXPECT_TRUE(kernel().det3(a, b, c) == -3.0 && kernel().det3(a, b, a) == 0.0);
    EXPECT_EQ(kernel().dot3(a, b), 32.0f);

    // setIdentity and setZero are exact results of the kernel fuzz target.
    float m[16], src[16], v[3];
    for (int i = 0; i < 16; ++i)
        src[i] = static_cast<float>(i) - 4.5f;
    std::vector<double> const want(src, src + 16);
    float * copy = kernel().getMat4fCopy(src);
    kernel().copyMat4fTo(m, src);
    EXPECT_TRUE(elems(copy, want) && elems(m, want));
    delete[] copy;
    kernel().cross(v, a, b); // (2*6 - 3*5, 3*4 - 1*6, 1*5 - 2*4)
    EXPECT_TRUE(elems(v, {-3, 6, -3}));
    kernel().copyVec3fTo(v, a);
    EXPECT_TRUE(elems(v, {1, 2, 3}));
}

} // namespace
