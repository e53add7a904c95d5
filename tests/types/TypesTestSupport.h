// TypesTestSupport.h - comparisons shared by the value-class tests, and a kernel that logs the
// operations the value classes call
#ifndef KDRCORE_TESTS_TYPES_TYPESTESTSUPPORT_H
#define KDRCORE_TESTS_TYPES_TYPESTESTSUPPORT_H

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

/// The floats from `p` on are `e`, each within `tol` (0 asks for equality; NaN never passes).
inline ::testing::AssertionResult elems(float const * p, std::vector<double> const & e,
                                        double tol = 0.0) {
    for (std::size_t i = 0; i < e.size(); ++i)
        if (!(std::fabs(double(p[i]) - e[i]) <= tol))
            return ::testing::AssertionFailure() << "element " << i << " is " << p[i];
    return ::testing::AssertionSuccess();
}

/// The same for a vector, matrix or quaternion.
template <class T>
auto elems(T const & v, std::vector<double> const & e, double tol = 0.0)
    -> decltype(elems(v.getValue(), e, tol)) {
    return elems(v.getValue(), e, tol);
}

inline MatAff4f affine(Vector3f const & c0, Vector3f const & c1, Vector3f const & c2,
                       Vector3f const & t) {
    MatAff4f m;
    m.setBase(c0, c1, c2, t);
    return m;
}

/// One kernel call: the operation, its first three pointer arguments and the receiving kernel.
struct KernelCall {
    std::string op;
    void const * args[3];
    char kernel;
};

/// Logs the outermost calls of the operations below (a default composite operation reaching
/// another through the table is not the caller's doing), then runs the default operation.
class RecordingKernel : public EnhancedMathFunctions {
public:
    explicit RecordingKernel(char tag = 'R') : m_tag(tag) {}
    static std::vector<KernelCall> & calls() {
        static std::vector<KernelCall> log;
        return log;
    }

#define KDR_REC(R, name, params, args, a1, a2)                                                     \
    R name params const override {                                                                 \
        Nest nest(this, #name, d, a1, a2);                                                         \
        return EnhancedMathFunctions::name args;                                                   \
    }
#define KDR_REC1(name) KDR_REC(void, name, (float * const d), (d), nullptr, nullptr)
#define KDR_REC2(R, name)                                                                          \
    KDR_REC(R, name, (float * const d, float const * const a), (d, a), a, nullptr)
#define KDR_REC3(name)                                                                             \
    KDR_REC(void, name, (float * const d, float const * const a, float const * const b),           \
            (d, a, b), a, b)
#define KDR_REC2F(name)                                                                            \
    KDR_REC(void, name, (float * const d, float const * const a, float f), (d, a, f), a, nullptr)
#define KDR_REC3F(name)                                                                            \
    KDR_REC(void, name, (float * const d, float const * const a, float const * b, float f),        \
            (d, a, b, f), a, b)
    KDR_REC1(setIdentity)
    KDR_REC1(setZero)
    KDR_REC2(void, copyMat4fTo)
    KDR_REC2(void, copyVec3fTo)
    KDR_REC3(cross)
    KDR_REC3(addMatrices)
    KDR_REC3(subMatrices)
    KDR_REC3(multMatrices)
    KDR_REC3(multMatrixVec3f)
    KDR_REC2F(multMatrixScalar)
    KDR_REC2(bool, inverseMatrix)
    KDR_REC2(void, transpose)
    KDR_REC2(void, setTranslate)
    KDR_REC3(multAffineMatrices)
    KDR_REC3(multAffineMatrixVec3f)
    KDR_REC2(void, transposeAffine)
    KDR_REC3F(multLeftByRotate)
    KDR_REC3F(multRightByRotate)
    KDR_REC2(void, multLeftByScale)
    KDR_REC2(bool, inverseAffine)
    KDR_REC2(bool, inverseRotateAndTr)
    KDR_REC3(multQuaternions)
    KDR_REC3(divQuaternionsU)
    KDR_REC2F(axisToQuaternionU)
    KDR_REC2(void, quaternionToMatrix)
    KDR_REC2(int, RotMatrixToQuaternion)
    KDR_REC2(void, eulerToQuaternion)
    KDR_REC2(void, eulerToMatrix)

protected:
    ~RecordingKernel() override = default;

private:
    struct Nest { // logs only at depth 0 of the calls through the table
        Nest(RecordingKernel const * k, char const * op, void const * a0, void const * a1,
             void const * a2) {
            if (depth++ == 0)
                calls().push_back(KernelCall{op, {a0, a1, a2}, k->m_tag});
        }
        ~Nest() { --depth; }
        static inline int depth = 0;
    };
    char m_tag;
};

/// Installs a RecordingKernel, and a default kernel again afterwards.
class RecordingKernelTest : public ::testing::Test {
protected:
    void SetUp() override { (new RecordingKernel())->setDefault(); }
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

#endif // KDRCORE_TESTS_TYPES_TYPESTESTSUPPORT_H
