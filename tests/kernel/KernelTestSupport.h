// Shared by the kernel tests: element checks, a double-width 4x4 reference written independently
// of the kernel, and a kernel that logs the operations its composites reach through the table.
#ifndef KDRCORE_TESTS_KERNEL_KERNELTESTSUPPORT_H
#define KDRCORE_TESTS_KERNEL_KERNELTESTSUPPORT_H

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <initializer_list>
#include <limits>
#include <string>

inline EnhancedMathFunctions const & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

constexpr float S = -12345.0f; // sentinel: an element the operation must not write

// got[i] within `tol` of the i-th listed value; with tol 0 an exact comparison that NaN fails.
inline void expectNear(float const * got, std::initializer_list<double> want, double tol = 0.0) {
    for (int i = 0; i < static_cast<int>(want.size()); ++i)
        EXPECT_NEAR(got[i], want.begin()[i], tol) << "element " << i;
}

using Mat = std::array<double, 16>; // m[4*c + r], as the kernel stores it
using FMat = std::array<float, 16>;

inline Mat product(Mat const & a, Mat const & b) {
    Mat out{};
    for (int i = 0; i < 64; ++i) // i = 16k + 4c + r
        out[i % 16] += a[4 * (i / 16) + i % 4] * b[(i % 16) / 4 * 4 + i / 16];
    return out;
}
inline Mat transposed(Mat const & m) {
    Mat t;
    for (int i = 0; i < 16; ++i)
        t[i] = m[4 * (i % 4) + i / 4];
    return t;
}
inline Mat diagonal(double a, double b, double c) {
    return {a, 0, 0, 0, 0, b, 0, 0, 0, 0, c, 0, 0, 0, 0, 1};
}
// Rotation by `angle` about coordinate axis 0, 1 or 2; a positive angle turns y towards z about x.
inline Mat rotation(int axis, double angle) {
    Mat m = diagonal(1, 1, 1);
    int const i = (axis + 1) % 3, j = (axis + 2) % 3;
    m[5 * i] = m[5 * j] = std::cos(angle);
    m[4 * i + j] = std::sin(angle);
    m[4 * j + i] = -std::sin(angle);
    return m;
}
inline FMat toFloats(Mat const & m) {
    FMat f;
    for (int i = 0; i < 16; ++i)
        f[i] = static_cast<float>(m[i]);
    return f;
}
inline Mat toDoubles(float const * m) {
    Mat d;
    for (int i = 0; i < 16; ++i)
        d[i] = static_cast<double>(m[i]);
    return d;
}

// Logs the name of each operation that a composite reaches and forwards it to the default code: a
// composite that calls the default directly, past the table, leaves no trace.
class RecordingKernel : public EnhancedMathFunctions {
public:
    mutable std::string log;
    ~RecordingKernel() override = default;
#define KTEST_LOG(Ret, name, params, args)                                                         \
    Ret name params const override {                                                               \
        log += #name " ";                                                                          \
        return EnhancedMathFunctions::name args;                                                   \
    }
    using F = float * const;
    using C = float const * const;
    KTEST_LOG(void, copyMat4fTo, (F d, C s), (d, s))
    KTEST_LOG(void, cross, (F d, float const * a, float const * b), (d, a, b))
    KTEST_LOG(void, setIdentity, (F d), (d))
    KTEST_LOG(void, multMatrices, (F d, C a, C b), (d, a, b))
    KTEST_LOG(bool, inverseMatrix, (F d, C s), (d, s))
    KTEST_LOG(void, transpose, (F d, C s), (d, s))
    KTEST_LOG(float, det3, (C m), (m))
    KTEST_LOG(void, multAffineMatrices, (F d, C a, C b), (d, a, b))
    KTEST_LOG(void, multAffineColRow, (F d, C c, C r), (d, c, r))
    KTEST_LOG(void, transposeAffine, (F d, C s), (d, s))
    KTEST_LOG(void, conjugateQuaternion, (F d, C q), (d, q))
    KTEST_LOG(void, dotQuaternions, (float * d, C a, C b), (d, a, b))
    KTEST_LOG(void, axisToQuaternion, (F d, C a, float t), (d, a, t))
    KTEST_LOG(void, axisToQuaternionU, (F d, C a, float t), (d, a, t))
    KTEST_LOG(void, quaternionToAxis, (F a, float * t, C q), (a, t, q))
    KTEST_LOG(void, quaternionToMatrix, (F d, C q), (d, q))
    KTEST_LOG(void, eulerToMatrix, (F d, C e), (d, e))
    KTEST_LOG(int, matrixToEuler, (float * e, C m), (e, m))
    KTEST_LOG(void, jacobi3, (float * const v, float (*const w)[3], int & n, C m), (v, w, n, m))
#undef KTEST_LOG
    using EnhancedMathFunctions::det3;
    // Not 0, so that a composite handing on the inner result is caught.
    int RotMatrixToQuaternion(F d, C m) const override {
        log += "RotMatrixToQuaternion ";
        return EnhancedMathFunctions::RotMatrixToQuaternion(d, m) + 5;
    }
};

#endif // KDRCORE_TESTS_KERNEL_KERNELTESTSUPPORT_H
