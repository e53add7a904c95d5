// The current-kernel mechanism and the simplest operations of the kernel.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> g_events;

// A kernel that reports its reference hooks and its destruction.
class TracingKernel : public EnhancedMathFunctions {
public:
    explicit TracingKernel(std::string name) : m_name(std::move(name)) {}

protected:
    void ref() override { g_events.push_back(m_name + ".ref"); }
    void unref() override {
        g_events.push_back(m_name + ".unref");
        EnhancedMathFunctions::unref();
    }
    ~TracingKernel() override { g_events.push_back(m_name + ".destroyed"); }

private:
    std::string m_name;
};

class KernelFrame : public ::testing::Test {
protected:
    void TearDown() override {
        (new EnhancedMathFunctions())->setDefault();
        g_events.clear();
    }
};

TEST_F(KernelFrame, CurrentKernelExistsAndIsStable) {
    EnhancedMathFunctions * first = EnhancedMathFunctions::getCurrent();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(EnhancedMathFunctions::getCurrent(), first);
}

TEST_F(KernelFrame, SetDefaultRefsTheNewKernelBeforeReleasingTheOld) {
    auto * a = new TracingKernel("a");
    a->setDefault();
    EXPECT_EQ(EnhancedMathFunctions::getCurrent(), a);
    g_events.clear();

    auto * b = new TracingKernel("b");
    b->setDefault();
    EXPECT_EQ(EnhancedMathFunctions::getCurrent(), b);
    EXPECT_EQ(g_events, (std::vector<std::string>{"b.ref", "a.unref", "a.destroyed"}));
}

TEST_F(KernelFrame, SetDefaultOnTheCurrentKernelKeepsItAlive) {
    auto * a = new TracingKernel("a");
    a->setDefault();
    g_events.clear();
    a->setDefault();
    EXPECT_TRUE(g_events.empty());
    EXPECT_EQ(EnhancedMathFunctions::getCurrent(), a);
    float m[16];
    a->setIdentity(m); // still a live object (AddressSanitizer would say otherwise)
    EXPECT_EQ(m[15], 1.0f);
}

TEST_F(KernelFrame, NonVirtualArithmeticRunsAtDoubleWidth) {
    EnhancedMathFunctions const & k = *EnhancedMathFunctions::getCurrent();
    // (1 + 2^-12)^2 - 1 = 2^-11 + 2^-24: in float the square would lose its last term.
    float const x = 1.0f + 0x1p-12f;
    EXPECT_EQ(k.det2(x, 1.0f, 1.0f, x), 0x1p-11f + 0x1p-24f);

    float const a[3] = {1.0f, 2.0f, 3.0f}, b[3] = {4.0f, 5.0f, 6.0f}, c[3] = {7.0f, 8.0f, 10.0f};
    EXPECT_EQ(k.det3(a, b, c), -3.0);
    EXPECT_EQ(k.det3(a, b, a), 0.0);
    EXPECT_EQ(k.dot3(a, b), 32.0f);
}

TEST_F(KernelFrame, SimplestOperationsWriteWhatTheySay) {
    EnhancedMathFunctions const & k = *EnhancedMathFunctions::getCurrent();
    float m[16];
    for (float & v : m)
        v = 7.0f;
    k.setIdentity(m);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], (i == 0 || i == 5 || i == 10 || i == 15) ? 1.0f : 0.0f) << "index " << i;
    k.setZero(m);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(m[i], 0.0f) << "index " << i;

    float src[16];
    for (int i = 0; i < 16; ++i)
        src[i] = static_cast<float>(i) - 4.5f;
    float * copy = k.getMat4fCopy(src);
    k.copyMat4fTo(m, src);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(copy[i], src[i]);
        EXPECT_EQ(m[i], src[i]);
    }
    delete[] copy;

    float const x[3] = {1.0f, 0.0f, 0.0f}, y[3] = {0.0f, 1.0f, 0.0f};
    float v[4] = {9.0f, 9.0f, 9.0f, 9.0f};
    k.cross(v, x, y);
    EXPECT_EQ(v[0], 0.0f);
    EXPECT_EQ(v[1], 0.0f);
    EXPECT_EQ(v[2], 1.0f);
    EXPECT_EQ(v[3], 9.0f);
    k.cross(v, src, src);
    EXPECT_EQ(v[0], 0.0f);
    EXPECT_EQ(v[1], 0.0f);
    EXPECT_EQ(v[2], 0.0f);
    k.copyVec3fTo(v, x);
    EXPECT_EQ(v[0], 1.0f);
    EXPECT_EQ(v[3], 9.0f);
}

} // namespace
