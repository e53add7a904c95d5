// Fuzz target: the default kernel's operations on arbitrary floats.
//
// Every operation runs on arrays of exactly the size it may touch (AddressSanitizer sees any
// access beyond them), with its out-parameters filled with a sentinel first. The checks:
// - the elements the operation is documented to write are written, the others keep the sentinel
//   (multAffineColRow, transposeAffine, the in-place products, dotQuaternions, the inverses on
//   failure, setProjection with no projection direction, factor on a singular block);
// - an operation documented to allow `dst` to be an input gives, with that overlap, the very
//   results it gives without it (NaN matching NaN);
// - results fixed exactly by the documentation: the bottom row of rotation builders, the
//   always-0 int results, the refusal rule of inverseScale (the exact values of copies, neg,
//   transpose and identity are the unit tests');
// - every level of the vector versions gives the baseline's bits, NaNs compared by their bits,
//   and raises the same floating-point exceptions, operation by operation; also with infinities
//   and NaNs in the bottom rows, which the affine operations never read.
// The operations sit in tables by signature; each input runs a few of them, then all of them at
// every level for the comparison.
// No result may depend on NaN, infinity, denormal or huge input in a way that crashes or hangs.
#include "Fuzz.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cfenv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <vector>

namespace {

using fuzz::bitsOf;
using fuzz::isSentinel;
using fuzz::same;
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
        bool const w = (written >> i) & 1u;
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
        FUZZ_CHECK(same(got[i], expected[i]), "%s %s: element %zu is %a, expected %a", op, how, i,
                   static_cast<double>(got[i]), static_cast<double>(expected[i]));
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

using K = EnhancedMathFunctions;
enum Alias { NONE, A_OR_B, B_ONLY };

// dst = f(a, b): a, b and dst of exact sizes; `alias` says which inputs dst may be.
struct Binary {
    char const * name;
    void (K::*f)(float *, float const *, float const *) const;
    std::size_t na, nb, nd;
    std::uint32_t mask;
    Alias alias;
};
const Binary BINARY[] = {
    {"cross", &K::cross, 3, 3, 3, 7u, NONE},
    {"addMatrices", &K::addMatrices, 16, 16, 16, ALL16, A_OR_B},
    {"subMatrices", &K::subMatrices, 16, 16, 16, ALL16, A_OR_B},
    {"multMatrices", &K::multMatrices, 16, 16, 16, ALL16, NONE},
    {"multAffineMatrices", &K::multAffineMatrices, 16, 16, 16, ALL16, NONE},
    {"multMatrixVec3f", &K::multMatrixVec3f, 16, 3, 3, 7u, B_ONLY},
    {"multAffineMatrixVec3f", &K::multAffineMatrixVec3f, 16, 3, 3, 7u, B_ONLY},
    {"multAffineMatrixVec3fAsDir", &K::multAffineMatrixVec3fAsDir, 16, 3, 3, 7u, B_ONLY},
    {"multMatrixVec4f", &K::multMatrixVec4f, 16, 4, 4, 0xFu, B_ONLY},
    {"multAffineColRow", &K::multAffineColRow, 3, 3, 16, 0x0FFFu, NONE},
    {"addQuaternions", &K::addQuaternions, 4, 4, 4, 0xFu, A_OR_B},
    {"subQuaternions", &K::subQuaternions, 4, 4, 4, 0xFu, A_OR_B},
    {"multQuaternions", &K::multQuaternions, 4, 4, 4, 0xFu, A_OR_B},
    {"divQuaternionsU", &K::divQuaternionsU, 4, 4, 4, 0xFu, A_OR_B},
    {"applyQuatOn", &K::applyQuatOn, 4, 3, 3, 7u, B_ONLY},
    {"dotQuaternions", &K::dotQuaternions, 4, 4, 4, 1u, NONE},
};

// dst = f(src) or f(src, s); `frame`: a rotation matrix with the fixed bottom row and translation.
struct Unary {
    char const * name;
    void (K::*f)(float *, float const *) const;
    void (K::*fs)(float *, float const *, float) const;
    std::size_t ns, nd;
    std::uint32_t mask;
    bool alias, frame;
};
const Unary UNARY[] = {
    {"copyMat4fTo", &K::copyMat4fTo, nullptr, 16, 16, ALL16, false, false},
    {"copyVec3fTo", &K::copyVec3fTo, nullptr, 3, 3, 7u, false, false},
    {"neg", &K::neg, nullptr, 16, 16, ALL16, true, false},
    {"abs", &K::abs, nullptr, 16, 16, ALL16, true, false},
    {"transpose", &K::transpose, nullptr, 16, 16, ALL16, false, false},
    {"transposeAffine", &K::transposeAffine, nullptr, 16, 16, ROTATION_BLOCK, false, false},
    {"setScale", &K::setScale, nullptr, 3, 16, ALL16, false, false},
    {"setTranslate", &K::setTranslate, nullptr, 3, 16, ALL16, false, false},
    {"setRotate(euler)", &K::setRotate, nullptr, 3, 16, ALL16, false, false},
    {"conjugateQuaternion", &K::conjugateQuaternion, nullptr, 4, 4, 0xFu, true, false},
    {"inverseQuaternion", &K::inverseQuaternion, nullptr, 4, 4, 0xFu, true, false},
    {"inverseQuaternionU", &K::inverseQuaternionU, nullptr, 4, 4, 0xFu, true, false},
    {"eulerToQuaternion", &K::eulerToQuaternion, nullptr, 3, 4, 0xFu, false, false},
    {"quaternionToEuler", &K::quaternionToEuler, nullptr, 4, 3, 7u, false, false},
    {"quaternionToMatrix", &K::quaternionToMatrix, nullptr, 4, 16, ALL16, false, true},
    {"eulerToMatrix", &K::eulerToMatrix, nullptr, 3, 16, ALL16, false, true},
    {"multMatrixScalar", nullptr, &K::multMatrixScalar, 16, 16, ALL16, true, false},
    {"setRotate(axis, angle)", nullptr, &K::setRotate, 3, 16, ALL16, false, false},
    {"axisToQuaternion", nullptr, &K::axisToQuaternion, 3, 4, 0xFu, false, false},
    {"axisToQuaternionU", nullptr, &K::axisToQuaternionU, 3, 4, 0xFu, false, false},
    {"axisToMatrix", nullptr, &K::axisToMatrix, 3, 16, ALL16, false, true},
};

// The inverses with a bool result: all of `mask` or nothing; with `alias`, the same with
// dst = src, and src untouched on failure.
struct Inverse {
    char const * name;
    bool (K::*f)(float *, float const *) const;
    std::uint32_t mask;
    bool alias, alwaysOk;
};
const Inverse INVERSE[] = {
    {"inverseMatrix", &K::inverseMatrix, ALL16, true, false},
    {"inverse3", &K::inverse3, ALL16, true, false},
    {"inverseAffine", &K::inverseAffine, ALL16, true, false},
    {"inverseScale", &K::inverseScale, ALL16, true, false},
    {"inverseTranslate", &K::inverseTranslate, ALL16, true, true},
    {"inverseRotate", &K::inverseRotate, ROTATION_BLOCK, false, true},
    {"inverseRotateAndTr", &K::inverseRotateAndTr, ROTATION_BLOCK | TRANSLATION, false, true},
};

// Masks of elements (column-major: element 4 c + r) by rows and by columns.
constexpr std::uint32_t ROWS_12 = 0x6666u, ROWS_02 = 0x5555u, ROWS_01 = 0x3333u, ROWS_012 = 0x7777u;
constexpr std::uint32_t COLUMNS_12 = 0x0FF0u, COLUMNS_02 = 0x0F0Fu, COLUMNS_01 = 0x00FFu;

// The in-place products f(m, angle) or f(m, v): only the elements of `mask` may change.
struct InPlace {
    char const * name;
    void (K::*fs)(float *, float) const;
    void (K::*fv)(float *, float const *) const;
    std::uint32_t mask;
};
const InPlace IN_PLACE[] = {
    {"multLeftByRotateX", &K::multLeftByRotateX, nullptr, ROWS_12},
    {"multRightByRotateX", &K::multRightByRotateX, nullptr, COLUMNS_12},
    {"multLeftByRotateY", &K::multLeftByRotateY, nullptr, ROWS_02},
    {"multRightByRotateY", &K::multRightByRotateY, nullptr, COLUMNS_02},
    {"multLeftByRotateZ", &K::multLeftByRotateZ, nullptr, ROWS_01},
    {"multRightByRotateZ", &K::multRightByRotateZ, nullptr, COLUMNS_01},
    {"multLeftByTranslate", nullptr, &K::multLeftByTranslate, TRANSLATION},
    {"multRightByTranslate", nullptr, &K::multRightByTranslate, TRANSLATION},
    {"multLeftByScale", nullptr, &K::multLeftByScale, ROWS_012},
    {"multRightByScale", nullptr, &K::multRightByScale, ROTATION_BLOCK},
};

Arr head(Arr const & a, std::size_t n) {
    return Arr(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(n));
}

Arr runBinary(Binary const & op, Arr const & a, Arr const & b) {
    const Arr x = head(a, op.na), y = head(b, op.nb);
    Arr out = filled(op.nd);
    (kernel().*op.f)(out.data(), x.data(), y.data());
    checkWritten(out, op.mask, op.name);
    if (op.alias == A_OR_B) {
        Arr d = x;
        (kernel().*op.f)(d.data(), d.data(), y.data());
        checkSame(d, out, op.name, "with dst = a");
    }
    if (op.alias != NONE) {
        Arr d = y;
        (kernel().*op.f)(d.data(), x.data(), d.data());
        checkSame(d, out, op.name, "with dst = b");
    }
    return out;
}

Arr runUnary(Unary const & op, Arr const & a, float s) {
    const Arr src = head(a, op.ns);
    auto call = [&](float * d, float const * x) {
        if (op.f)
            (kernel().*op.f)(d, x);
        else
            (kernel().*op.fs)(d, x, s);
    };
    Arr out = filled(op.nd);
    call(out.data(), src.data());
    checkWritten(out, op.mask, op.name);
    if (op.frame)
        checkRotationFrame(out, op.name);
    if (op.alias) {
        Arr x = src;
        call(x.data(), x.data());
        checkSame(x, out, op.name, "with dst = src");
    }
    return out;
}

Arr runInverse(Inverse const & op, Arr const & src) {
    Arr out = filled(16);
    bool const ok = (kernel().*op.f)(out.data(), src.data());
    FUZZ_CHECK(ok || !op.alwaysOk, "%s: false", op.name);
    checkWritten(out, ok ? op.mask : 0u, op.name);
    if (op.alias) {
        Arr x = src;
        FUZZ_CHECK((kernel().*op.f)(x.data(), x.data()) == ok, "%s: result with dst = src",
                   op.name);
        for (std::size_t i = 0; i < 16; ++i)
            FUZZ_CHECK(same(x[i], ok && ((op.mask >> i) & 1u) ? out[i] : src[i]),
                       "%s with dst = src: element %zu", op.name, i);
    }
    out.push_back(ok ? 1.0f : 0.0f);
    return out;
}

Arr runInPlace(InPlace const & op, Arr const & a, Arr const & b, float s) {
    Arr x = a;
    const Arr v = head(b, 3);
    if (op.fs)
        (kernel().*op.fs)(x.data(), s);
    else
        (kernel().*op.fv)(x.data(), v.data());
    checkKept(x, a, op.mask, op.name);
    return x;
}

// The operations outside the tables, with their documented exact results.
void special(int which, FuzzedDataProvider & in, Arr const & a, Arr const & b, float s) {
    const Arr a3 = head(a, 3), b3 = head(b, 3), a4 = head(a, 4);
    switch (which) {
    case 0:
        (void)kernel().det2(a[0], a[1], a[2], a[3]);
        (void)kernel().det3(a3.data(), b3.data(), head(a, 6).data() + 3);
        (void)kernel().dot3(a3.data(), b3.data());
        break;
    case 1: {
        // Refused exactly when a diagonal element of the block is exactly 0.
        bool const refuse = a[0] == 0.0f || a[5] == 0.0f || a[10] == 0.0f;
        FUZZ_CHECK(runInverse(INVERSE[3], a)[16] == (refuse ? 0.0f : 1.0f), "inverseScale");
        Arr m = a;
        FUZZ_CHECK(kernel().inverseScale(m.data()) == !refuse, "inverseScale(m)");
        checkKept(m, a, refuse ? 0u : 0x421u, "inverseScale(m)");
        m = a;
        FUZZ_CHECK(kernel().inverseTranslate(m.data()), "inverseTranslate(m): false");
        checkKept(m, a, TRANSLATION, "inverseTranslate(m)");
        const Arr inv = runUnary(UNARY[10], a, s);
        if (a[0] == 0.0f && a[1] == 0.0f && a[2] == 0.0f && a[3] == 0.0f)
            for (std::size_t i = 0; i < 4; ++i)
                FUZZ_CHECK(inv[i] == 0.0f, "inverseQuaternion of zero: element %zu", i);
        break;
    }
    case 2: {
        // No projection when normal . dir is exactly 0 (summed as the kernel sums it).
        Arr out = filled(16);
        kernel().setProjection(out.data(), a3.data(), s, b3.data());
        double const dn = static_cast<double>(a[0]) * static_cast<double>(b[0]) +
                          static_cast<double>(a[1]) * static_cast<double>(b[1]) +
                          static_cast<double>(a[2]) * static_cast<double>(b[2]);
        checkWritten(out, dn == 0.0 ? 0u : ALL16, "setProjection");
        for (int left = 0; left < 2; ++left) {
            out = filled(16);
            if (left)
                kernel().multLeftByRotate(out.data(), a.data(), b3.data(), s);
            else
                kernel().multRightByRotate(out.data(), a.data(), b3.data(), s);
            checkWritten(out, ALL16, "multLeft/RightByRotate");
            FUZZ_CHECK(out[3] == 0.0f && out[7] == 0.0f && out[11] == 0.0f && out[15] == 1.0f,
                       "multLeft/RightByRotate: bottom row not 0, 0, 0, 1");
        }
        break;
    }
    case 3: {
        Arr q = filled(4), e = filled(3), axis = filled(3), angle = filled(1);
        FUZZ_CHECK(kernel().RotMatrixToQuaternion(q.data(), a.data()) == 0 &&
                       kernel().matrixToEuler(e.data(), a.data()) == 0 &&
                       kernel().matrixToAxis(axis.data(), angle.data(), a.data()) == 0,
                   "RotMatrixToQuaternion / matrixToEuler / matrixToAxis: result not 0");
        checkWritten(q, 0xFu, "RotMatrixToQuaternion");
        checkWritten(e, 7u, "matrixToEuler");
        checkWritten(axis, 7u, "matrixToAxis axis");
        checkWritten(angle, 1u, "matrixToAxis angle");
        axis = filled(3);
        angle = filled(1);
        kernel().quaternionToAxis(axis.data(), angle.data(), a4.data());
        checkWritten(axis, 7u, "quaternionToAxis axis");
        checkWritten(angle, 1u, "quaternionToAxis angle");
        break;
    }
    case 4: {
        // The seed table is indexed by the bits of x: any x, any iteration count.
        int const iterations = in.ConsumeIntegralInRange(-3, 6);
        for (float x : {s, a[0], a[1], -s, 0.0f, -0.0f}) {
            (void)kernel().invSqrt(x);
            (void)kernel().invSqrt(x, iterations);
            (void)kernel().msqrt(x);
            (void)kernel().msqrt(x, iterations);
        }
        break;
    }
    case 5: {
        Arr values = filled(3);
        float vectors[3][3];
        std::fill(&vectors[0][0], &vectors[0][0] + 9, sentinel());
        int rotations = -12345;
        kernel().jacobi3(values.data(), vectors, rotations, a.data());
        checkWritten(values, 7u, "jacobi3 values");
        checkWritten(Arr(&vectors[0][0], &vectors[0][0] + 9), 0x1FFu, "jacobi3 vectors");
        FUZZ_CHECK(rotations >= 0, "jacobi3: rotations %d", rotations);
        break;
    }
    default: {
        Arr r = filled(16), sc = filled(3), u = filled(16), t = filled(3), p = filled(16);
        bool const ok =
            kernel().factor(r.data(), sc.data(), u.data(), t.data(), p.data(), a.data());
        for (std::size_t i = 0; i < 3; ++i)
            FUZZ_CHECK(bitsOf(t[i]) == bitsOf(a[12 + i]), "factor: t[%zu] not the translation", i);
        for (std::size_t i = 0; i < 16; ++i)
            FUZZ_CHECK(p[i] == (i % 5 == 0 ? 1.0f : 0.0f), "factor: p not the identity");
        checkWritten(r, ok ? ALL16 : 0u, "factor r");
        checkWritten(sc, ok ? 7u : 0u, "factor s");
        checkWritten(u, ok ? ALL16 : 0u, "factor u");
        if (ok)
            checkRotationFrame(r, "factor r");
        break;
    }
    }
}

constexpr int NB = std::size(BINARY), NU = std::size(UNARY), NI = std::size(INVERSE),
              NP = std::size(IN_PLACE), NS = 7;

// One operation decoded from the input; with `all`, every operation in a fixed order, their
// results, each followed by the exceptions it raised, appended to `results`. With `poison`, the
// bottom rows of a and b hold infinities and NaNs.
void run(FuzzedDataProvider & in, bool all, std::vector<float> & results, bool poison = false) {
    Arr a = consumeArray(in, 16), b = consumeArray(in, 16);
    for (std::uint32_t i = 3; poison && i < 16; i += 4)
        a[i] = -(b[i] = i % 8 == 3 ? INFINITY : fuzz::floatOf(0x7F800001u + i));
    float const s = fuzz::consumeFloat(in);
    int const pick = all ? -1 : in.ConsumeIntegralInRange(0, NB + NU + NI + NP + NS - 1);
    int const flags = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW | FE_INEXACT;
    std::feclearexcept(flags);
    auto keep = [&](Arr const & x) {
        results.insert(results.end(), x.begin(), x.end());
        results.push_back(static_cast<float>(std::fetestexcept(flags)));
        std::feclearexcept(flags);
    };
    for (int k = 0; k < NB; ++k)
        if (all || pick == k)
            keep(runBinary(BINARY[k], a, b));
    for (int k = 0; k < NU; ++k)
        if (all || pick == NB + k)
            keep(runUnary(UNARY[k], a, s));
    for (int k = 0; k < NI; ++k)
        if (all || pick == NB + NU + k)
            keep(runInverse(INVERSE[k], a));
    for (int k = 0; k < NP; ++k)
        if (all || pick == NB + NU + NI + k)
            keep(runInPlace(IN_PLACE[k], a, b, s));
    if (!all && pick >= NB + NU + NI + NP)
        special(pick - (NB + NU + NI + NP), in, a, b, s);
    if (!all)
        return;
    float values[3], vectors[3][3];
    int rotations = 0;
    kernel().jacobi3(values, vectors, rotations, a.data());
    keep(Arr(values, values + 3));
    keep(Arr(&vectors[0][0], &vectors[0][0] + 9));
    Arr fr(16, 0.0f), fs(3, 0.0f), fu(16, 0.0f), ft(3), fp(16);
    bool const ok =
        kernel().factor(fr.data(), fs.data(), fu.data(), ft.data(), fp.data(), a.data());
    keep({static_cast<float>(rotations), ok ? 1.0f : 0.0f, kernel().det4(a.data()),
          kernel().det3(a.data()), kernel().invSqrt(s), kernel().msqrt(s, 2)});
    keep(fr);
    keep(fs);
    keep(fu);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    std::vector<float> lowest;
    fuzz::forEachLevel([&](int level) {
        FuzzedDataProvider in(data, size);
        std::vector<float> ignored, results;
        for (int k = 0; k < 8 && (k == 0 || in.remaining_bytes() > 0); ++k)
            run(in, false, ignored);
        // The vector versions promise the bits of the baseline one, NaN sign and payload included.
        for (bool poison : {false, true}) {
            FuzzedDataProvider again(data, size);
            run(again, true, results, poison);
        }
        if (level == 0) {
            lowest = results;
            return;
        }
        for (std::size_t i = 0; i < results.size(); ++i)
            FUZZ_CHECK(bitsOf(results[i]) == bitsOf(lowest[i]),
                       "level %d: result %zu is %a, the baseline gives %a", level, i,
                       static_cast<double>(results[i]), static_cast<double>(lowest[i]));
    });
    return 0;
}
