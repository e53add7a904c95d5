// RecordingKernel.h - a test kernel that logs which operations the value classes call
#ifndef KDRCORE_TESTS_TYPES_RECORDINGKERNEL_H
#define KDRCORE_TESTS_TYPES_RECORDINGKERNEL_H

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/// One kernel call: the operation, its first three array arguments (null where there are fewer)
/// and the tag of the kernel object that received it.
struct KernelCall {
    std::string op;
    void const * args[3];
    char kernel;
};

/// Logs the operations that the tests look for, outermost calls only (default composite operations
/// reach others through the table; those are not the caller's doing), then runs the default
/// operation.
class RecordingKernel : public EnhancedMathFunctions {
public:
    explicit RecordingKernel(char tag = 'R') : m_tag(tag) {}

    static std::vector<KernelCall> & calls() {
        static std::vector<KernelCall> log;
        return log;
    }

// Overrides for the signatures (dst), (dst, a), (dst, a, b), (dst, a, float), (dst, a, b, float).
#define KDR_REC(R, name, params, args, a1, a2)                                                     \
    R name params const override {                                                                 \
        Scope scope(this, #name, d, a1, a2);                                                       \
        return EnhancedMathFunctions::name args;                                                   \
    }
#define KDR_REC1(R, name) KDR_REC(R, name, (float * const d), (d), nullptr, nullptr)
#define KDR_REC2(R, name)                                                                          \
    KDR_REC(R, name, (float * const d, float const * const a), (d, a), a, nullptr)
#define KDR_REC3(R, name)                                                                          \
    KDR_REC(R, name, (float * const d, float const * const a, float const * const b), (d, a, b),   \
            a, b)
#define KDR_REC2F(name)                                                                            \
    KDR_REC(void, name, (float * const d, float const * const a, float f), (d, a, f), a, nullptr)
#define KDR_REC3F(name)                                                                            \
    KDR_REC(void, name, (float * const d, float const * const a, float const * b, float f),        \
            (d, a, b, f), a, b)
    KDR_REC2(void, copyMat4fTo)
    KDR_REC2(void, copyVec3fTo)
    KDR_REC3(void, cross)
    KDR_REC1(void, setIdentity)
    KDR_REC1(void, setZero)
    KDR_REC3(void, addMatrices)
    KDR_REC3(void, subMatrices)
    KDR_REC3(void, multMatrices)
    KDR_REC3(void, multMatrixVec3f)
    KDR_REC2F(multMatrixScalar)
    KDR_REC2(bool, inverseMatrix)
    KDR_REC2(void, transpose)
    KDR_REC2(void, setTranslate)
    KDR_REC3(void, multAffineMatrices)
    KDR_REC3(void, multAffineMatrixVec3f)
    KDR_REC2(void, transposeAffine)
    KDR_REC3F(multLeftByRotate)
    KDR_REC3F(multRightByRotate)
    KDR_REC2(void, multLeftByScale)
    KDR_REC2(bool, inverseAffine)
    KDR_REC2(bool, inverseRotateAndTr)
    KDR_REC3(void, multQuaternions)
    KDR_REC3(void, divQuaternionsU)
    KDR_REC2F(axisToQuaternionU)
    KDR_REC2(void, quaternionToMatrix)
    KDR_REC2(int, RotMatrixToQuaternion)
    KDR_REC2(void, eulerToQuaternion)
    KDR_REC2(void, eulerToMatrix)
#undef KDR_REC3F
#undef KDR_REC2F
#undef KDR_REC3
#undef KDR_REC2
#undef KDR_REC1
#undef KDR_REC

protected:
    ~RecordingKernel() override = default;

private:
    struct Scope { // counts the nesting of calls through the table
        Scope(RecordingKernel const * k, char const * op, void const * a0, void const * a1,
              void const * a2) {
            if (depth()++ == 0)
                calls().push_back(KernelCall{op, {a0, a1, a2}, k->m_tag});
        }
        ~Scope() { --depth(); }
        Scope(Scope const &) = delete;
        Scope & operator=(Scope const &) = delete;
        static int & depth() {
            static int d = 0;
            return d;
        }
    };
    char m_tag;
};

/// Installs a RecordingKernel with an empty log, and a default kernel again afterwards.
class RecordingKernelTest : public ::testing::Test {
protected:
    void SetUp() override {
        RecordingKernel::calls().clear();
        (new RecordingKernel())->setDefault();
    }
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
    static KernelCall const & call(std::size_t i) { return RecordingKernel::calls().at(i); }
    /// Runs `f` on an empty log and gives the operations it called, separated by spaces.
    static std::string trace(std::function<void()> const & f) {
        RecordingKernel::calls().clear();
        f();
        std::string names;
        for (KernelCall const & c : RecordingKernel::calls())
            names += (names.empty() ? "" : " ") + c.op;
        return names;
    }
};

#endif // KDRCORE_TESTS_TYPES_RECORDINGKERNEL_H
