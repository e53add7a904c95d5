// Shared by the tests of the kernel, the value types and geometry: the element comparison, the
// sentinel for untouched out-parameters, and a kernel that records the operations it is asked for.
#ifndef KDRCORE_TESTS_SUPPORT_TESTSUPPORT_H
#define KDRCORE_TESTS_SUPPORT_TESTSUPPORT_H

#include "support/KernelOperations.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace kdrtest {

constexpr float S = -12345.0f; // sentinel: a value no operation computes here

inline EnhancedMathFunctions const & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

/// got[i] is want[i] for every listed element: with tol 0 the same value (a zero of either sign)
/// or the same bits (NaN only matches NaN); otherwise within tol.
template <class T>
::testing::AssertionResult elems(T const * got, std::vector<double> const & want,
                                 double tol = 0.0) {
    for (std::size_t i = 0; i < want.size(); ++i) {
        double const g = static_cast<double>(got[i]), w = want[i];
        bool const ok =
            tol == 0.0
                ? g == w || std::bit_cast<std::uint64_t>(g) == std::bit_cast<std::uint64_t>(w) ||
                      (std::isnan(g) && std::isnan(w))
                : std::fabs(g - w) <= tol;
        if (!ok)
            return ::testing::AssertionFailure()
                   << "element " << i << " is " << g << " (" << std::hexfloat << g
                   << std::defaultfloat << "), expected " << w << " within " << tol;
    }
    return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult elems(std::vector<double> const & got,
                                        std::vector<double> const & want, double tol = 0.0) {
    if (got.size() < want.size())
        return ::testing::AssertionFailure() << got.size() << " elements, expected " << want.size();
    return elems(got.data(), want, tol);
}
/// The same for a vector, matrix or quaternion.
template <class V>
auto elems(V const & v, std::vector<double> const & want, double tol = 0.0)
    -> decltype(elems(v.getValue(), want, tol)) {
    return elems(v.getValue(), want, tol);
}

/// 4x4 matrices at double width for the kernel tests' products, m[4*c + r] as the kernel stores
/// them: a plain triple loop, independent of the kernel's code.
using Mat = std::array<double, 16>;
using FMat = std::array<float, 16>;
inline Mat product(Mat const & a, Mat const & b) {
    Mat out{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            for (int k = 0; k < 4; ++k)
                out[4 * c + r] += a[4 * k + r] * b[4 * c + k];
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
/// Rotation by `angle` about coordinate axis 0, 1 or 2; a positive angle turns y towards z about x.
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

/// One recorded kernel call: the operation, how deep in other recorded calls, which kernel.
struct Call {
    std::string op;
    int depth;
    char kernel;
};

/// Overrides every virtual operation: records its name, then runs the default. A default
/// composite that reaches its steps through the table shows them nested in its own call.
class RecordingKernel : public EnhancedMathFunctions {
public:
    explicit RecordingKernel(char tag = 'R') : m_tag(tag) {}
    ~RecordingKernel() override = default;
    static std::vector<Call> & calls() {
        static std::vector<Call> log;
        return log;
    }
    /// Runs `f` on an empty log and renders its calls, nested ones in parentheses:
    /// "copyMat4fTo inverseAffine(inverseMatrix)".
    static std::string trace(std::function<void()> const & f) {
        calls().clear();
        f();
        std::string out;
        int open = 0;
        for (Call const & c : calls()) {
            for (; open > c.depth; --open)
                out += ')';
            out += c.depth > open ? "(" : out.empty() ? "" : " ";
            open = c.depth;
            out += c.op;
        }
        return out + std::string(static_cast<std::size_t>(open), ')');
    }
    static int count(std::string const & op) {
        int n = 0;
        for (Call const & c : calls())
            n += c.op == op;
        return n;
    }

#define KDR_RECORD(Ret, name, params, args)                                                        \
    Ret name params const override {                                                               \
        Scope const scope(#name, m_tag);                                                           \
        return EnhancedMathFunctions::name args;                                                   \
    }
    KDR_KERNEL_OPERATIONS(KDR_RECORD)
#undef KDR_RECORD
    using EnhancedMathFunctions::det3; // the non-virtual form of three vectors

private:
    struct Scope {
        Scope(char const * op, char tag) { calls().push_back({op, depth++, tag}); }
        ~Scope() { --depth; }
        static inline int depth = 0;
    };
    char m_tag;
};

/// Installs a RecordingKernel, and a default kernel again afterwards.
class RecordingKernelTest : public ::testing::Test {
protected:
    void SetUp() override { (new RecordingKernel())->setDefault(); }
    void TearDown() override { (new EnhancedMathFunctions())->setDefault(); }
    static std::string trace(std::function<void()> const & f) { return RecordingKernel::trace(f); }
};

} // namespace kdrtest

#endif // KDRCORE_TESTS_SUPPORT_TESTSUPPORT_H
