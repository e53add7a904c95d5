// RecordingKernel.h - a test kernel that logs which operations the value classes call
#ifndef KDRCORE_TESTS_TYPES_RECORDINGKERNEL_H
#define KDRCORE_TESTS_TYPES_RECORDINGKERNEL_H

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// One call of the kernel made from outside the kernel: the operation's name, its array
/// arguments in order (null where the operation has fewer), and the tag of the kernel object
/// that received it.
struct KernelCall {
    std::string op;
    void const * arg0;
    void const * arg1;
    void const * arg2;
    char kernel;
};

/// Logs the outermost calls only (the default composite operations reach others through the
/// table; those inner calls are not the value classes' doing), then runs the default operation.
class RecordingKernel : public EnhancedMathFunctions {
public:
    explicit RecordingKernel(char tag = 'R') : m_tag(tag) {}

    static std::vector<KernelCall> & calls() {
        static std::vector<KernelCall> log;
        return log;
    }
    /// The names of the logged operations, in order.
    static std::vector<std::string> ops() {
        std::vector<std::string> names;
        for (KernelCall const & c : calls())
            names.push_back(c.op);
        return names;
    }

#define KDR_REC(name, a0, a1, a2) Scope scope(this, #name, a0, a1, a2)
    void copyMat4fTo(float * const dst, float const * const src) const override {
        KDR_REC(copyMat4fTo, dst, src, nullptr);
        EnhancedMathFunctions::copyMat4fTo(dst, src);
    }
    void copyVec3fTo(float * const dst, float const * const src) const override {
        KDR_REC(copyVec3fTo, dst, src, nullptr);
        EnhancedMathFunctions::copyVec3fTo(dst, src);
    }
    void cross(float * const dst, float const * a, float const * b) const override {
        KDR_REC(cross, dst, a, b);
        EnhancedMathFunctions::cross(dst, a, b);
    }
    void setIdentity(float * const dst) const override {
        KDR_REC(setIdentity, dst, nullptr, nullptr);
        EnhancedMathFunctions::setIdentity(dst);
    }
    void setZero(float * const dst) const override {
        KDR_REC(setZero, dst, nullptr, nullptr);
        EnhancedMathFunctions::setZero(dst);
    }
    void addMatrices(float * const dst, float const * const a,
                     float const * const b) const override {
        KDR_REC(addMatrices, dst, a, b);
        EnhancedMathFunctions::addMatrices(dst, a, b);
    }
    void subMatrices(float * const dst, float const * const a,
                     float const * const b) const override {
        KDR_REC(subMatrices, dst, a, b);
        EnhancedMathFunctions::subMatrices(dst, a, b);
    }
    void multMatrices(float * const dst, float const * const a,
                      float const * const b) const override {
        KDR_REC(multMatrices, dst, a, b);
        EnhancedMathFunctions::multMatrices(dst, a, b);
    }
    void multMatrixVec3f(float * const dst, float const * const m,
                         float const * const v) const override {
        KDR_REC(multMatrixVec3f, dst, m, v);
        EnhancedMathFunctions::multMatrixVec3f(dst, m, v);
    }
    void multMatrixVec4f(float * const dst, float const * const m,
                         float const * const v) const override {
        KDR_REC(multMatrixVec4f, dst, m, v);
        EnhancedMathFunctions::multMatrixVec4f(dst, m, v);
    }
    void multMatrixScalar(float * const dst, float const * const m, float s) const override {
        KDR_REC(multMatrixScalar, dst, m, nullptr);
        EnhancedMathFunctions::multMatrixScalar(dst, m, s);
    }
    bool inverseMatrix(float * const dst, float const * const src) const override {
        KDR_REC(inverseMatrix, dst, src, nullptr);
        return EnhancedMathFunctions::inverseMatrix(dst, src);
    }
    void neg(float * const dst, float const * const src) const override {
        KDR_REC(neg, dst, src, nullptr);
        EnhancedMathFunctions::neg(dst, src);
    }
    void transpose(float * const dst, float const * const src) const override {
        KDR_REC(transpose, dst, src, nullptr);
        EnhancedMathFunctions::transpose(dst, src);
    }
    void abs(float * const dst, float const * const src) const override {
        KDR_REC(abs, dst, src, nullptr);
        EnhancedMathFunctions::abs(dst, src);
    }
    void setScale(float * const dst, float const * const s) const override {
        KDR_REC(setScale, dst, s, nullptr);
        EnhancedMathFunctions::setScale(dst, s);
    }
    void setTranslate(float * const dst, float const * const t) const override {
        KDR_REC(setTranslate, dst, t, nullptr);
        EnhancedMathFunctions::setTranslate(dst, t);
    }
    void multAffineMatrices(float * const dst, float const * const a,
                            float const * const b) const override {
        KDR_REC(multAffineMatrices, dst, a, b);
        EnhancedMathFunctions::multAffineMatrices(dst, a, b);
    }
    void multAffineMatrixVec3f(float * const dst, float const * const m,
                               float const * const v) const override {
        KDR_REC(multAffineMatrixVec3f, dst, m, v);
        EnhancedMathFunctions::multAffineMatrixVec3f(dst, m, v);
    }
    void transposeAffine(float * const dst, float const * const src) const override {
        KDR_REC(transposeAffine, dst, src, nullptr);
        EnhancedMathFunctions::transposeAffine(dst, src);
    }
    void multLeftByRotate(float * const dst, float const * const src, float const * axis,
                          float angle) const override {
        KDR_REC(multLeftByRotate, dst, src, axis);
        EnhancedMathFunctions::multLeftByRotate(dst, src, axis, angle);
    }
    void multRightByRotate(float * const dst, float const * const src, float const * axis,
                           float angle) const override {
        KDR_REC(multRightByRotate, dst, src, axis);
        EnhancedMathFunctions::multRightByRotate(dst, src, axis, angle);
    }
    void multLeftByTranslate(float * const m, float const * t) const override {
        KDR_REC(multLeftByTranslate, m, t, nullptr);
        EnhancedMathFunctions::multLeftByTranslate(m, t);
    }
    void multRightByTranslate(float * const m, float const * t) const override {
        KDR_REC(multRightByTranslate, m, t, nullptr);
        EnhancedMathFunctions::multRightByTranslate(m, t);
    }
    void multLeftByScale(float * const m, float const * s) const override {
        KDR_REC(multLeftByScale, m, s, nullptr);
        EnhancedMathFunctions::multLeftByScale(m, s);
    }
    bool inverseAffine(float * const dst, float const * const src) const override {
        KDR_REC(inverseAffine, dst, src, nullptr);
        return EnhancedMathFunctions::inverseAffine(dst, src);
    }
    bool inverseRotateAndTr(float * const dst, float const * const src) const override {
        KDR_REC(inverseRotateAndTr, dst, src, nullptr);
        return EnhancedMathFunctions::inverseRotateAndTr(dst, src);
    }
    void addQuaternions(float * const dst, float const * const a,
                        float const * const b) const override {
        KDR_REC(addQuaternions, dst, a, b);
        EnhancedMathFunctions::addQuaternions(dst, a, b);
    }
    void subQuaternions(float * const dst, float const * const a,
                        float const * const b) const override {
        KDR_REC(subQuaternions, dst, a, b);
        EnhancedMathFunctions::subQuaternions(dst, a, b);
    }
    void multQuaternions(float * const dst, float const * const a,
                         float const * const b) const override {
        KDR_REC(multQuaternions, dst, a, b);
        EnhancedMathFunctions::multQuaternions(dst, a, b);
    }
    void divQuaternionsU(float * const dst, float const * const a,
                         float const * const b) const override {
        KDR_REC(divQuaternionsU, dst, a, b);
        EnhancedMathFunctions::divQuaternionsU(dst, a, b);
    }
    void dotQuaternions(float * dst, float const * const a, float const * const b) const override {
        KDR_REC(dotQuaternions, dst, a, b);
        EnhancedMathFunctions::dotQuaternions(dst, a, b);
    }
    void axisToQuaternionU(float * const dst, float const * const axis,
                           float angle) const override {
        KDR_REC(axisToQuaternionU, dst, axis, nullptr);
        EnhancedMathFunctions::axisToQuaternionU(dst, axis, angle);
    }
    void quaternionToMatrix(float * const dst, float const * const q) const override {
        KDR_REC(quaternionToMatrix, dst, q, nullptr);
        EnhancedMathFunctions::quaternionToMatrix(dst, q);
    }
    int RotMatrixToQuaternion(float * const dst, float const * const m) const override {
        KDR_REC(RotMatrixToQuaternion, dst, m, nullptr);
        return EnhancedMathFunctions::RotMatrixToQuaternion(dst, m);
    }
    void eulerToQuaternion(float * const dst, float const * const euler) const override {
        KDR_REC(eulerToQuaternion, dst, euler, nullptr);
        EnhancedMathFunctions::eulerToQuaternion(dst, euler);
    }
    void quaternionToEuler(float * euler, float const * const q) const override {
        KDR_REC(quaternionToEuler, euler, q, nullptr);
        EnhancedMathFunctions::quaternionToEuler(euler, q);
    }
    void eulerToMatrix(float * const dst, float const * const euler) const override {
        KDR_REC(eulerToMatrix, dst, euler, nullptr);
        EnhancedMathFunctions::eulerToMatrix(dst, euler);
    }
    int matrixToEuler(float * euler, float const * const m) const override {
        KDR_REC(matrixToEuler, euler, m, nullptr);
        return EnhancedMathFunctions::matrixToEuler(euler, m);
    }
#undef KDR_REC

protected:
    ~RecordingKernel() override = default;

private:
    // Counts the nesting of calls through the table, so that only the outermost is logged.
    static int & depth() {
        static int d = 0;
        return d;
    }
    struct Scope {
        Scope(RecordingKernel const * k, char const * op, void const * a0, void const * a1,
              void const * a2) {
            if (depth()++ == 0)
                calls().push_back(KernelCall{op, a0, a1, a2, k->m_tag});
        }
        ~Scope() { --depth(); }
        Scope(Scope const &) = delete;
        Scope & operator=(Scope const &) = delete;
    };

    char m_tag;
};

/// Installs a fresh RecordingKernel with an empty log, and the default kernel again afterwards.
class RecordingKernelTest : public ::testing::Test {
protected:
    void SetUp() override {
        RecordingKernel::calls().clear();
        (new RecordingKernel())->setDefault();
    }
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
    /// Starts a new log, after the objects under test have been set up.
    static void clearLog() { RecordingKernel::calls().clear(); }
    static std::vector<std::string> ops() { return RecordingKernel::ops(); }
    static KernelCall const & call(std::size_t i) { return RecordingKernel::calls().at(i); }
};

#endif // KDRCORE_TESTS_TYPES_RECORDINGKERNEL_H
