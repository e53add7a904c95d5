// The current-kernel mechanism, the simplest operations, and the calling web: which operations
// each composite reaches through the table.
#include "kernel/KernelTestSupport.h"

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

    float m[16], src[16], v[4] = {S, S, S, S};
    for (int i = 0; i < 16; ++i)
        m[i] = S, src[i] = static_cast<float>(i) - 4.5f;
    kernel().setIdentity(m);
    expectNear(m, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    std::fill(m, m + 16, S);
    kernel().setZero(m);
    expectNear(m, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    float * copy = kernel().getMat4fCopy(src);
    kernel().copyMat4fTo(m, src);
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(copy[i] == src[i] && m[i] == src[i]) << "element " << i;
    delete[] copy;
    kernel().cross(v, a, b); // (2*6 - 3*5, 3*4 - 1*6, 1*5 - 2*4)
    expectNear(v, {-3, 6, -3, S});
    kernel().cross(v, src, src);
    expectNear(v, {0, 0, 0, S});
    kernel().copyVec3fTo(v, a);
    expectNear(v, {1, 2, 3, S});
}

TEST(KernelFrameOps, CompositesReachTheirStepsThroughTheTable) {
    RecordingKernel k;
    float m[16], n[16], r[16], u[16], p[16], q[4], e[3], axis[3], angle, s[3], t[3], zero[16] = {};
    float const id[4] = {1, 0, 0, 0}, v[3] = {0, 0, 1}, euler[3] = {0.1f, 0.2f, 0.3f};
    k.setIdentity(n);
    std::string const rotate = "axisToQuaternionU quaternionToMatrix ";
    std::pair<std::function<void()>, std::string> const cases[] = {
        {[&] { k.axisToMatrix(m, v, 1.0f); }, "axisToQuaternion quaternionToMatrix "},
        {[&] { EXPECT_EQ(k.matrixToAxis(axis, &angle, n), 0); },
         "RotMatrixToQuaternion quaternionToAxis "},
        {[&] { k.setRotate(m, v, 1.0f); }, rotate},
        {[&] { k.setRotate(m, euler); }, "eulerToMatrix "},
        {[&] { k.setProjection(m, v, 1.0f, v); }, "multAffineColRow "},
        {[&] { k.multLeftByRotate(m, n, v, 1.0f); }, rotate + "multAffineMatrices "},
        {[&] { k.multRightByRotate(m, n, v, 1.0f); }, rotate + "multAffineMatrices "},
        {[&] { k.inverse3(m, n), k.inverseAffine(m, n); }, "inverseMatrix inverseMatrix "},
        {[&] { k.inverseRotate(m, n), k.inverseRotateAndTr(m, n); },
         "transposeAffine transposeAffine "},
        {[&] { k.inverseQuaternion(q, id), k.inverseQuaternionU(q, id); },
         "conjugateQuaternion conjugateQuaternion "},
        {[&] { k.inverseQuaternion(q, zero); }, ""}, // the zero quaternion stops before
        {[&] { k.applyQuatOn(axis, id, v); }, "cross "},
        {[&] { k.quaternionToEuler(e, id); }, "quaternionToMatrix matrixToEuler "},
        {[&] { k.quaternionLERP(q, id, id, 0.5f), k.quaternionSLERP(q, id, id, 0.5f); },
         "dotQuaternions dotQuaternions "},
        {[&] { EXPECT_TRUE(k.factor(r, s, u, t, p, n)); },
         "copyMat4fTo setIdentity det3 transpose multMatrices jacobi3 setIdentity transpose "
         "multMatrices multMatrices multMatrices "},
        {[&] { EXPECT_FALSE(k.factor(r, s, u, t, p, zero)); },
         "copyMat4fTo setIdentity det3 "}, // a singular block stops after the determinant
        // Leaves call nothing of the table.
        {[&] {
             k.setScale(m, v), k.setTranslate(m, v), k.inverseScale(m, n), k.inverseTranslate(m, n);
         },
         ""},
    };
    for (std::size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i) {
        k.log.clear();
        cases[i].first();
        EXPECT_EQ(k.log, cases[i].second) << "case " << i;
    }
}

} // namespace
