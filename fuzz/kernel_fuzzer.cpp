// Fuzz target: the default kernel's operations on arbitrary floats.
//
// Every operation runs on arrays of exactly the size it may touch (AddressSanitizer sees any
// access beyond them), with its out-parameters filled with a sentinel first. The checks:
// - the elements the operation is documented to write are written, the others keep the sentinel
//   (multAffineColRow, transposeAffine, the in-place products, dotQuaternions, the inverses on
//   failure, setProjection with no projection direction, factor on a singular block);
// - an operation documented to allow `dst` to be an input gives, with that overlap, the very
//   results it gives without it (NaN matching NaN);
// - results fixed exactly by the documentation: neg, abs, transpose, copies, setScale,
//   setTranslate, the bottom row of rotation builders and conversions, the always-0 int results,
//   the written elements of the cheap inverses, the refusal rule of inverseScale.
// No result may depend on NaN, infinity, denormal or huge input in a way that crashes or hangs.
#include "FuzzFloats.h"
#include "FuzzLevels.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <memory>
#include <vector>

namespace {

using fuzz::bitsOf;
using fuzz::floatOf;
using fuzz::isSentinel;
using fuzz::sameFloat;
using fuzz::sentinel;

using Arr = std::vector<float>;

EnhancedMathFunctions const & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

constexpr std::uint32_t ALL16 = 0xFFFFu;
constexpr std::uint32_t ROTATION_BLOCK = 0x0777u; // elements 0-2, 4-6, 8-10
constexpr std::uint32_t TRANSLATION = 0x7000u;    // elements 12-14

Arr filled(std::size_t n) {
    return Arr(n, sentinel());
}

// Bit i of `written` set: element i must have been written; clear: it must hold the sentinel.
void checkWritten(Arr const & out, std::uint32_t written, char const * op) {
    for (std::size_t i = 0; i < out.size(); ++i) {
        const bool w = (written >> i) & 1u;
        FUZZ_CHECK(isSentinel(out[i]) != w, "%s: element %zu %s", op, i,
                   w ? "not written" : "written but documented as untouched");
    }
}

// Elements outside `written` keep the values they had (for in-place operations).
void checkKept(Arr const & out, Arr const & before, std::uint32_t written, char const * op) {
    for (std::size_t i = 0; i < out.size(); ++i)
        if (!((written >> i) & 1u))
            FUZZ_CHECK(bitsOf(out[i]) == bitsOf(before[i]), "%s: element %zu changed", op, i);
}

void checkSame(Arr const & got, Arr const & expected, char const * op, char const * how) {
    FUZZ_CHECK(got.size() == expected.size(), "%s", op);
    for (std::size_t i = 0; i < got.size(); ++i)
        FUZZ_CHECK(sameFloat(got[i], expected[i]), "%s %s: element %zu is %a, expected %a", op, how,
                   i, static_cast<double>(got[i]), static_cast<double>(expected[i]));
}

// The bottom row and translation every rotation matrix output carries.
void checkRotationFrame(Arr const & m, char const * op) {
    for (int i : {3, 7, 11, 12, 13, 14})
        FUZZ_CHECK(bitsOf(m[static_cast<std::size_t>(i)]) == 0u, "%s: element %d is not +0", op, i);
    FUZZ_CHECK(m[15] == 1.0f, "%s: element 15 is not 1", op);
}

Arr consumeArray(FuzzedDataProvider & in, std::size_t n) {
    Arr a(n);
    for (float & v : a)
        v = fuzz::consumeFloat(in);
    return a;
}

// A binary operation on 16 (or 4) elements whose `dst` may be `a` or `b`.
template <class Op>
void binaryWithAliases(Arr const & a, Arr const & b, std::uint32_t written, char const * name,
                       Op op) {
    Arr out = filled(a.size());
    op(out.data(), a.data(), b.data());
    checkWritten(out, written, name);
    Arr x = a;
    op(x.data(), x.data(), b.data());
    checkSame(x, out, name, "with dst = a");
    Arr y = b;
    op(y.data(), a.data(), y.data());
    checkSame(y, out, name, "with dst = b");
}

// A unary operation whose `dst` may be `src`; returns the result for further checks.
template <class Op>
Arr unaryWithAlias(Arr const & src, std::size_t dstSize, std::uint32_t written, char const * name,
                   Op op) {
    Arr out = filled(dstSize);
    op(out.data(), src.data());
    checkWritten(out, written, name);
    if (dstSize == src.size()) {
        Arr x = src;
        op(x.data(), x.data());
        // Unwritten elements keep src's values in the overlapping call.
        for (std::size_t i = 0; i < x.size(); ++i)
            FUZZ_CHECK(sameFloat(x[i], ((written >> i) & 1u) ? out[i] : src[i]),
                       "%s with dst = src: element %zu", name, i);
    }
    return out;
}

// The inverses with a bool result: all of `written` or nothing, the same with dst = src, and on
// failure src untouched in the overlapping call.
template <class Op>
void inverseLike(Arr const & src, std::uint32_t written, char const * name, Op op,
                 bool mayOverlap = true) {
    Arr out = filled(16);
    const bool ok = op(out.data(), src.data());
    checkWritten(out, ok ? written : 0u, name);
    if (!mayOverlap)
        return;
    Arr x = src;
    const bool okAliased = op(x.data(), x.data());
    FUZZ_CHECK(okAliased == ok, "%s: result %d with dst = src, %d without", name, okAliased, ok);
    for (std::size_t i = 0; i < 16; ++i)
        FUZZ_CHECK(sameFloat(x[i], ok && ((written >> i) & 1u) ? out[i] : src[i]),
                   "%s with dst = src: element %zu", name, i);
}

// The in-place products: only the documented elements may change.
template <class Op> void inPlace(Arr const & m, std::uint32_t written, char const * name, Op op) {
    Arr x = m;
    op(x.data());
    checkKept(x, m, written, name);
}

std::uint32_t rows(std::initializer_list<int> rs, int columns) {
    std::uint32_t mask = 0;
    for (int c = 0; c < columns; ++c)
        for (int r : rs)
            mask |= 1u << (4 * c + r);
    return mask;
}
std::uint32_t columns(std::initializer_list<int> cs) {
    std::uint32_t mask = 0;
    for (int c : cs)
        mask |= 0xFu << (4 * c);
    return mask;
}

void runOne(FuzzedDataProvider & in) {
    const Arr a = consumeArray(in, 16);
    const Arr b = consumeArray(in, 16);
    const float s = fuzz::consumeFloat(in);
    const Arr a3(a.begin(), a.begin() + 3), b3(b.begin(), b.begin() + 3);
    const Arr a4(a.begin(), a.begin() + 4), b4(b.begin(), b.begin() + 4);

    switch (in.ConsumeIntegralInRange(0, 47)) {
    case 0: {
        std::unique_ptr<float[]> copy(kernel().getMat4fCopy(a.data())); // new[]: delete[]
        for (std::size_t i = 0; i < 16; ++i)
            FUZZ_CHECK(bitsOf(copy[i]) == bitsOf(a[i]), "getMat4fCopy: element %zu", i);
        Arr out = filled(16);
        kernel().copyMat4fTo(out.data(), a.data());
        checkSame(out, a, "copyMat4fTo", "");
        Arr v = filled(3);
        kernel().copyVec3fTo(v.data(), a3.data());
        checkSame(v, a3, "copyVec3fTo", "");
        break;
    }
    case 1: {
        Arr out = filled(3);
        kernel().cross(out.data(), a3.data(), b3.data());
        checkWritten(out, 7u, "cross");
        break;
    }
    case 2: {
        Arr out = filled(16);
        kernel().setIdentity(out.data());
        for (std::size_t i = 0; i < 16; ++i)
            FUZZ_CHECK(out[i] == (i % 5 == 0 ? 1.0f : 0.0f), "setIdentity: element %zu", i);
        kernel().setZero(out.data());
        for (std::size_t i = 0; i < 16; ++i)
            FUZZ_CHECK(out[i] == 0.0f, "setZero: element %zu", i);
        break;
    }
    case 3:
        binaryWithAliases(
            a, b, ALL16, "addMatrices",
            [](float * d, float const * x, float const * y) { kernel().addMatrices(d, x, y); });
        break;
    case 4:
        binaryWithAliases(
            a, b, ALL16, "subMatrices",
            [](float * d, float const * x, float const * y) { kernel().subMatrices(d, x, y); });
        break;
    case 5: {
        Arr out = filled(16);
        kernel().multMatrices(out.data(), a.data(), b.data());
        checkWritten(out, ALL16, "multMatrices");
        Arr aff = filled(16);
        kernel().multAffineMatrices(aff.data(), a.data(), b.data());
        checkWritten(aff, ALL16, "multAffineMatrices");
        break;
    }
    case 6:
        unaryWithAlias(b3, 3, 7u, "multMatrixVec3f", [&a](float * d, float const * v) {
            kernel().multMatrixVec3f(d, a.data(), v);
        });
        unaryWithAlias(b3, 3, 7u, "multAffineMatrixVec3f", [&a](float * d, float const * v) {
            kernel().multAffineMatrixVec3f(d, a.data(), v);
        });
        unaryWithAlias(b3, 3, 7u, "multAffineMatrixVec3fAsDir", [&a](float * d, float const * v) {
            kernel().multAffineMatrixVec3fAsDir(d, a.data(), v);
        });
        break;
    case 7:
        unaryWithAlias(b4, 4, 0xFu, "multMatrixVec4f", [&a](float * d, float const * v) {
            kernel().multMatrixVec4f(d, a.data(), v);
        });
        break;
    case 8:
        unaryWithAlias(a, 16, ALL16, "multMatrixScalar",
                       [s](float * d, float const * m) { kernel().multMatrixScalar(d, m, s); });
        break;
    case 9: {
        const Arr n = unaryWithAlias(a, 16, ALL16, "neg",
                                     [](float * d, float const * m) { kernel().neg(d, m); });
        const Arr m = unaryWithAlias(a, 16, ALL16, "abs",
                                     [](float * d, float const * x) { kernel().abs(d, x); });
        Arr t = filled(16);
        kernel().transpose(t.data(), a.data());
        for (std::size_t i = 0; i < 16; ++i) {
            FUZZ_CHECK(sameFloat(n[i], -a[i]), "neg: element %zu", i);
            FUZZ_CHECK(sameFloat(m[i], std::fabs(a[i])), "abs: element %zu", i);
            FUZZ_CHECK(bitsOf(t[i]) == bitsOf(a[(i % 4) * 4 + i / 4]), "transpose: element %zu", i);
        }
        break;
    }
    case 10:
        inverseLike(a, ALL16, "inverseMatrix",
                    [](float * d, float const * m) { return kernel().inverseMatrix(d, m); });
        break;
    case 11:
        inverseLike(a, ALL16, "inverse3",
                    [](float * d, float const * m) { return kernel().inverse3(d, m); });
        break;
    case 12:
        inverseLike(a, ALL16, "inverseAffine",
                    [](float * d, float const * m) { return kernel().inverseAffine(d, m); });
        break;
    case 13: {
        // Refused exactly when a diagonal element of the block is exactly 0.
        const bool refuse = a[0] == 0.0f || a[5] == 0.0f || a[10] == 0.0f;
        Arr out = filled(16);
        FUZZ_CHECK(kernel().inverseScale(out.data(), a.data()) == !refuse,
                   "inverseScale(dst, src)");
        inverseLike(a, ALL16, "inverseScale(dst, src)",
                    [](float * d, float const * m) { return kernel().inverseScale(d, m); });
        Arr m = a;
        FUZZ_CHECK(kernel().inverseScale(m.data()) == !refuse, "inverseScale(m)");
        checkKept(m, a, refuse ? 0u : 0x421u, "inverseScale(m)");
        break;
    }
    case 14: {
        inverseLike(a, ALL16, "inverseTranslate(dst, src)",
                    [](float * d, float const * m) { return kernel().inverseTranslate(d, m); });
        Arr out = filled(16);
        FUZZ_CHECK(kernel().inverseTranslate(out.data(), a.data()), "inverseTranslate: false");
        Arr m = a;
        FUZZ_CHECK(kernel().inverseTranslate(m.data()), "inverseTranslate(m): false");
        checkKept(m, a, TRANSLATION, "inverseTranslate(m)");
        break;
    }
    case 15: {
        Arr out = filled(16);
        FUZZ_CHECK(kernel().inverseRotate(out.data(), a.data()), "inverseRotate: false");
        checkWritten(out, ROTATION_BLOCK, "inverseRotate");
        Arr tr = filled(16);
        FUZZ_CHECK(kernel().inverseRotateAndTr(tr.data(), a.data()), "inverseRotateAndTr: false");
        checkWritten(tr, ROTATION_BLOCK | TRANSLATION, "inverseRotateAndTr");
        break;
    }
    case 16: {
        Arr out = filled(16);
        (void)kernel().det4(a.data());
        (void)kernel().det3(a.data());
        (void)kernel().det2(a[0], a[1], a[2], a[3]);
        (void)kernel().det3(a3.data(), b3.data(), Arr(b.begin() + 3, b.begin() + 6).data());
        (void)kernel().dot3(a3.data(), b3.data());
        kernel().setScale(out.data(), a3.data());
        for (std::size_t i = 0; i < 16; ++i) {
            const float expected = i == 15 ? 1.0f : i % 5 == 0 ? a[i / 5] : 0.0f;
            FUZZ_CHECK(bitsOf(out[i]) == bitsOf(expected), "setScale: element %zu", i);
        }
        kernel().setTranslate(out.data(), a3.data());
        for (std::size_t i = 0; i < 16; ++i) {
            const float expected = i >= 12 && i < 15 ? a[i - 12] : i % 5 == 0 ? 1.0f : 0.0f;
            FUZZ_CHECK(bitsOf(out[i]) == bitsOf(expected), "setTranslate: element %zu", i);
        }
        break;
    }
    case 17: {
        Arr out = filled(16);
        kernel().setRotate(out.data(), a3.data());
        checkWritten(out, ALL16, "setRotate(euler)");
        Arr axis = filled(16);
        kernel().setRotate(axis.data(), a3.data(), s);
        checkWritten(axis, ALL16, "setRotate(axis, angle)");
        break;
    }
    case 18: {
        // No projection when normal . dir is exactly 0 (summed as the kernel sums it).
        Arr out = filled(16);
        kernel().setProjection(out.data(), a3.data(), s, b3.data());
        const double dn = static_cast<double>(a[0]) * static_cast<double>(b[0]) +
                          static_cast<double>(a[1]) * static_cast<double>(b[1]) +
                          static_cast<double>(a[2]) * static_cast<double>(b[2]);
        checkWritten(out, dn == 0.0 ? 0u : ALL16, "setProjection");
        break;
    }
    case 19: {
        Arr out = filled(16);
        kernel().multAffineColRow(out.data(), a3.data(), b3.data());
        checkWritten(out, 0x0FFFu, "multAffineColRow");
        Arr t = filled(16);
        kernel().transposeAffine(t.data(), a.data());
        checkWritten(t, ROTATION_BLOCK, "transposeAffine");
        break;
    }
    case 20:
    case 21: {
        Arr out = filled(16);
        const bool left = in.ConsumeBool();
        if (left)
            kernel().multLeftByRotate(out.data(), a.data(), b3.data(), s);
        else
            kernel().multRightByRotate(out.data(), a.data(), b3.data(), s);
        const char * name = left ? "multLeftByRotate" : "multRightByRotate";
        checkWritten(out, ALL16, name);
        FUZZ_CHECK(out[3] == 0.0f && out[7] == 0.0f && out[11] == 0.0f && out[15] == 1.0f,
                   "%s: bottom row not 0, 0, 0, 1", name);
        break;
    }
    case 22:
        inPlace(a, rows({1, 2}, 4), "multLeftByRotateX",
                [s](float * m) { kernel().multLeftByRotateX(m, s); });
        inPlace(a, columns({1, 2}), "multRightByRotateX",
                [s](float * m) { kernel().multRightByRotateX(m, s); });
        break;
    case 23:
        inPlace(a, rows({0, 2}, 4), "multLeftByRotateY",
                [s](float * m) { kernel().multLeftByRotateY(m, s); });
        inPlace(a, columns({0, 2}), "multRightByRotateY",
                [s](float * m) { kernel().multRightByRotateY(m, s); });
        break;
    case 24:
        inPlace(a, rows({0, 1}, 4), "multLeftByRotateZ",
                [s](float * m) { kernel().multLeftByRotateZ(m, s); });
        inPlace(a, columns({0, 1}), "multRightByRotateZ",
                [s](float * m) { kernel().multRightByRotateZ(m, s); });
        break;
    case 25:
        inPlace(a, TRANSLATION, "multLeftByTranslate",
                [&b3](float * m) { kernel().multLeftByTranslate(m, b3.data()); });
        inPlace(a, TRANSLATION, "multRightByTranslate",
                [&b3](float * m) { kernel().multRightByTranslate(m, b3.data()); });
        inPlace(a, rows({0, 1, 2}, 4), "multLeftByScale",
                [&b3](float * m) { kernel().multLeftByScale(m, b3.data()); });
        inPlace(a, ROTATION_BLOCK, "multRightByScale",
                [&b3](float * m) { kernel().multRightByScale(m, b3.data()); });
        break;
    case 26:
        binaryWithAliases(
            a4, b4, 0xFu, "addQuaternions",
            [](float * d, float const * x, float const * y) { kernel().addQuaternions(d, x, y); });
        binaryWithAliases(
            a4, b4, 0xFu, "subQuaternions",
            [](float * d, float const * x, float const * y) { kernel().subQuaternions(d, x, y); });
        break;
    case 27:
        binaryWithAliases(
            a4, b4, 0xFu, "multQuaternions",
            [](float * d, float const * x, float const * y) { kernel().multQuaternions(d, x, y); });
        binaryWithAliases(
            a4, b4, 0xFu, "divQuaternionsU",
            [](float * d, float const * x, float const * y) { kernel().divQuaternionsU(d, x, y); });
        break;
    case 28: {
        unaryWithAlias(a4, 4, 0xFu, "conjugateQuaternion",
                       [](float * d, float const * q) { kernel().conjugateQuaternion(d, q); });
        const Arr inv =
            unaryWithAlias(a4, 4, 0xFu, "inverseQuaternion",
                           [](float * d, float const * q) { kernel().inverseQuaternion(d, q); });
        unaryWithAlias(a4, 4, 0xFu, "inverseQuaternionU",
                       [](float * d, float const * q) { kernel().inverseQuaternionU(d, q); });
        if (a[0] == 0.0f && a[1] == 0.0f && a[2] == 0.0f && a[3] == 0.0f)
            for (std::size_t i = 0; i < 4; ++i)
                FUZZ_CHECK(inv[i] == 0.0f, "inverseQuaternion of zero: element %zu", i);
        break;
    }
    case 29: {
        unaryWithAlias(b3, 3, 7u, "applyQuatOn", [&a4](float * d, float const * v) {
            kernel().applyQuatOn(d, a4.data(), v);
        });
        Arr dot = filled(4);
        kernel().dotQuaternions(dot.data(), a4.data(), b4.data());
        checkWritten(dot, 1u, "dotQuaternions");
        break;
    }
    case 30:
        binaryWithAliases(a4, b4, 0xFu, "quaternionSLERP",
                          [s](float * d, float const * x, float const * y) {
                              kernel().quaternionSLERP(d, x, y, s);
                          });
        binaryWithAliases(a4, b4, 0xFu, "quaternionLERP",
                          [s](float * d, float const * x, float const * y) {
                              kernel().quaternionLERP(d, x, y, s);
                          });
        break;
    case 31: {
        Arr q = filled(4), u = filled(4);
        kernel().axisToQuaternion(q.data(), a3.data(), s);
        kernel().axisToQuaternionU(u.data(), a3.data(), s);
        checkWritten(q, 0xFu, "axisToQuaternion");
        checkWritten(u, 0xFu, "axisToQuaternionU");
        Arr axis = filled(3), angle = filled(1);
        kernel().quaternionToAxis(axis.data(), angle.data(), a4.data());
        checkWritten(axis, 7u, "quaternionToAxis axis");
        checkWritten(angle, 1u, "quaternionToAxis angle");
        break;
    }
    case 32: {
        Arr m = filled(16);
        kernel().quaternionToMatrix(m.data(), a4.data());
        checkWritten(m, ALL16, "quaternionToMatrix");
        checkRotationFrame(m, "quaternionToMatrix");
        Arr e = filled(16);
        kernel().eulerToMatrix(e.data(), a3.data());
        checkWritten(e, ALL16, "eulerToMatrix");
        checkRotationFrame(e, "eulerToMatrix");
        Arr x = filled(16);
        kernel().axisToMatrix(x.data(), a3.data(), s);
        checkWritten(x, ALL16, "axisToMatrix");
        checkRotationFrame(x, "axisToMatrix");
        break;
    }
    case 33: {
        Arr q = filled(4);
        FUZZ_CHECK(kernel().RotMatrixToQuaternion(q.data(), a.data()) == 0,
                   "RotMatrixToQuaternion: result not 0");
        checkWritten(q, 0xFu, "RotMatrixToQuaternion");
        Arr e = filled(3);
        FUZZ_CHECK(kernel().matrixToEuler(e.data(), a.data()) == 0, "matrixToEuler: result not 0");
        checkWritten(e, 7u, "matrixToEuler");
        Arr axis = filled(3), angle = filled(1);
        FUZZ_CHECK(kernel().matrixToAxis(axis.data(), angle.data(), a.data()) == 0,
                   "matrixToAxis: result not 0");
        checkWritten(axis, 7u, "matrixToAxis axis");
        checkWritten(angle, 1u, "matrixToAxis angle");
        break;
    }
    case 34: {
        Arr q = filled(4), e = filled(3);
        kernel().eulerToQuaternion(q.data(), a3.data());
        checkWritten(q, 0xFu, "eulerToQuaternion");
        kernel().quaternionToEuler(e.data(), a4.data());
        checkWritten(e, 7u, "quaternionToEuler");
        break;
    }
    case 35:
    case 36: {
        // The seed table is indexed by the bits of x: any x, any iteration count.
        const int iterations = in.ConsumeIntegralInRange(-3, 6);
        for (float x : {s, a[0], a[1], -s, 0.0f, -0.0f}) {
            (void)kernel().invSqrt(x);
            (void)kernel().invSqrt(x, iterations);
            (void)kernel().msqrt(x);
            (void)kernel().msqrt(x, iterations);
        }
        break;
    }
    case 37:
    case 38: {
        Arr values = filled(3);
        float vectors[3][3];
        for (auto & row : vectors)
            for (float & v : row)
                v = sentinel();
        int rotations = -12345;
        kernel().jacobi3(values.data(), vectors, rotations, a.data());
        checkWritten(values, 7u, "jacobi3 values");
        for (auto & row : vectors)
            for (float v : row)
                FUZZ_CHECK(!isSentinel(v), "jacobi3: an element of vectors not written");
        FUZZ_CHECK(rotations >= 0, "jacobi3: rotations %d", rotations);
        break;
    }
    case 39:
    case 40: {
        Arr r = filled(16), sc = filled(3), u = filled(16), t = filled(3), p = filled(16);
        const bool ok =
            kernel().factor(r.data(), sc.data(), u.data(), t.data(), p.data(), a.data());
        checkWritten(t, 7u, "factor t");
        for (std::size_t i = 0; i < 3; ++i)
            FUZZ_CHECK(bitsOf(t[i]) == bitsOf(a[12 + i]), "factor: t[%zu] is not the translation",
                       i);
        for (std::size_t i = 0; i < 16; ++i)
            FUZZ_CHECK(p[i] == (i % 5 == 0 ? 1.0f : 0.0f), "factor: p not the identity");
        checkWritten(r, ok ? ALL16 : 0u, "factor r");
        checkWritten(sc, ok ? 7u : 0u, "factor s");
        checkWritten(u, ok ? ALL16 : 0u, "factor u");
        if (ok)
            checkRotationFrame(r, "factor r");
        break;
    }
    default: {
        // A replacement of the row-major view: the same operations on a transposed input must
        // not read beyond 16 floats either (AddressSanitizer watches the exact arrays).
        Arr t = filled(16);
        kernel().transpose(t.data(), a.data());
        Arr out = filled(16);
        kernel().multMatrices(out.data(), t.data(), a.data());
        checkWritten(out, ALL16, "multMatrices (transposed input)");
        break;
    }
    }
}

// Every result of the arithmetic operations on one input, in a fixed order: compared bit for bit
// between the instruction-set levels (NaN matching NaN).
std::vector<float> allResults(FuzzedDataProvider & in) {
    const Arr a = consumeArray(in, 16);
    const Arr b = consumeArray(in, 16);
    const float s = fuzz::consumeFloat(in);
    std::vector<float> r;
    Arr m(16), v(4);
    auto keep = [&r](Arr const & x) { r.insert(r.end(), x.begin(), x.end()); };
    EnhancedMathFunctions const & k = kernel();
    k.multMatrices(m.data(), a.data(), b.data());
    keep(m);
    k.multAffineMatrices(m.data(), a.data(), b.data());
    keep(m);
    k.addMatrices(m.data(), a.data(), b.data());
    keep(m);
    k.subMatrices(m.data(), a.data(), b.data());
    keep(m);
    k.multMatrixScalar(m.data(), a.data(), s);
    keep(m);
    k.transpose(m.data(), a.data());
    keep(m);
    k.multMatrixVec3f(v.data(), a.data(), b.data());
    keep(v);
    k.multMatrixVec4f(v.data(), a.data(), b.data());
    keep(v);
    k.multAffineMatrixVec3f(v.data(), a.data(), b.data());
    keep(v);
    k.multAffineMatrixVec3fAsDir(v.data(), a.data(), b.data());
    keep(v);
    std::fill(m.begin(), m.end(), 0.0f);
    r.push_back(k.inverseMatrix(m.data(), a.data()) ? 1.0f : 0.0f);
    keep(m);
    r.push_back(k.inverse3(m.data(), a.data()) ? 1.0f : 0.0f);
    keep(m);
    r.push_back(k.inverseAffine(m.data(), a.data()) ? 1.0f : 0.0f);
    keep(m);
    r.push_back(k.det4(a.data()));
    r.push_back(k.det3(a.data()));
    k.multQuaternions(v.data(), a.data(), b.data());
    keep(v);
    k.divQuaternionsU(v.data(), a.data(), b.data());
    keep(v);
    k.inverseQuaternion(v.data(), a.data());
    keep(v);
    k.applyQuatOn(v.data(), a.data(), b.data());
    keep(v);
    k.quaternionSLERP(v.data(), a.data(), b.data(), s);
    keep(v);
    k.quaternionLERP(v.data(), a.data(), b.data(), s);
    keep(v);
    k.quaternionToMatrix(m.data(), a.data());
    keep(m);
    (void)k.RotMatrixToQuaternion(v.data(), a.data());
    keep(v);
    k.eulerToMatrix(m.data(), a.data());
    keep(m);
    k.axisToMatrix(m.data(), a.data(), s);
    keep(m);
    k.multLeftByRotate(m.data(), a.data(), b.data(), s);
    keep(m);
    k.multRightByRotate(m.data(), a.data(), b.data(), s);
    keep(m);
    float values[3], vectors[3][3];
    int rotations = 0;
    k.jacobi3(values, vectors, rotations, a.data());
    r.insert(r.end(), values, values + 3);
    r.insert(r.end(), &vectors[0][0], &vectors[0][0] + 9);
    r.push_back(static_cast<float>(rotations));
    Arr fr(16, 0.0f), fs(3, 0.0f), fu(16, 0.0f), ft(3), fp(16);
    r.push_back(k.factor(fr.data(), fs.data(), fu.data(), ft.data(), fp.data(), a.data()) ? 1.0f
                                                                                          : 0.0f);
    keep(fr);
    keep(fs);
    keep(fu);
    r.push_back(k.invSqrt(s));
    r.push_back(k.msqrt(s, 2));
    return r;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size) {
    std::vector<float> lowest;
    fuzz::forEachLevel([&](int level) {
        FuzzedDataProvider in(data, size);
        for (int k = 0; k < 8 && (k == 0 || in.remaining_bytes() > 0); ++k)
            runOne(in);
        // The vector versions promise the bits of the baseline one.
        FuzzedDataProvider again(data, size);
        const std::vector<float> results = allResults(again);
        if (level == 0) {
            lowest = results;
            return;
        }
        for (std::size_t i = 0; i < results.size(); ++i)
            FUZZ_CHECK(sameFloat(results[i], lowest[i]),
                       "level %d: result %zu is %a, the baseline gives %a", level, i,
                       static_cast<double>(results[i]), static_cast<double>(lowest[i]));
    });
    return 0;
}
