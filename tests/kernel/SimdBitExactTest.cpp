// The vector versions of the hot kernel operations behave as the baseline versions: the same
// bits in every element of dst (NaNs by their bits, sign and payload included, elements that are
// not written included), the same result, and the same floating-point exception flags.
//
// One table-driven sweep over 10^5 random inputs mixing ordinary values, small integers (ties,
// zeros, exact cancellation), huge and tiny values, denormals, infinities, and NaNs with random
// payloads and signs, quiet and signalling. Half of the samples hold no NaN, so that NaNs arise
// inside the arithmetic (an infinity times 0, infinity minus infinity). In one sample in four the
// elements the affine operations never read (the bottom rows) hold an infinity or a NaN: they
// must change nothing. Each vector version, and the member reached through getCurrent(), is
// called on the same input as the baseline version, through a volatile pointer, between
// feclearexcept and fetestexcept.
#include "kernel/SimdKernels.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int SAMPLES = 100000;
constexpr int FLAGS = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW | FE_INEXACT;

std::uint32_t bitsOf(float v) {
    std::uint32_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

float fromBits(std::uint32_t b) {
    float f;
    std::memcpy(&f, &b, sizeof f);
    return f;
}

// Inputs that reach the corners of the arithmetic.
class Inputs {
public:
    explicit Inputs(unsigned seed) : m_rng(seed) {}

    float next(bool nanFree) {
        static float const specials[] = {0.0f,
                                         -0.0f,
                                         1.0f,
                                         -1.0f,
                                         std::numeric_limits<float>::denorm_min(),
                                         -0x1.fffffcp-127f, // largest denormal
                                         std::numeric_limits<float>::min(),
                                         std::numeric_limits<float>::max(),
                                         -std::numeric_limits<float>::max(),
                                         std::numeric_limits<float>::infinity(),
                                         -std::numeric_limits<float>::infinity(),
                                         1e30f,
                                         -1e-30f};
        int const kind = pick(100);
        if (kind < 40)
            return std::ldexp(uniform(-1.0f, 1.0f), pick(41) - 20);
        if (kind < 60)
            return static_cast<float>(pick(7) - 3); // ties, zeros, cancellation
        if (kind < 75)
            return specials[pick(static_cast<int>(std::size(specials)))];
        if (kind < 85) // huge or tiny, denormals included
            return std::ldexp(uniform(-1.0f, 1.0f),
                              pick(2) == 0 ? 100 + pick(29) : -100 - pick(49));
        if (kind < 92 && !nanFree) // a NaN with a random sign and payload, quiet or signalling
            return fromBits(0x7F800001u | (static_cast<std::uint32_t>(m_rng()) & 0x807FFFFFu));
        float const f = fromBits(static_cast<std::uint32_t>(m_rng()));
        return nanFree && std::isnan(f) ? 2.0f : f;
    }

    // A 4x4 matrix; every fourth one is mostly ordinary, so that inverses get past the pivots.
    void matrix(float * m, bool nanFree) {
        bool const tame = pick(4) == 0;
        for (int i = 0; i < 16; ++i)
            m[i] = tame ? uniform(-4.0f, 4.0f) : next(nanFree);
        if (pick(8) == 0) { // two equal groups: singular, or a tie in every pivot search
            int const a = pick(4), b = (a + 1 + pick(3)) % 4;
            for (int j = 0; j < 4; ++j)
                m[4 * b + j] = pick(2) == 0 ? m[4 * a + j] : -m[4 * a + j];
        }
        if (pick(8) == 0) // a bottom row that makes w vanish
            m[3] = m[7] = m[11] = m[15] = 0.0f;
    }

    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_rng); }
    float uniform(float lo, float hi) {
        return std::uniform_real_distribution<float>(lo, hi)(m_rng);
    }

private:
    std::mt19937 m_rng;
};

// ---- The operations, each in one signature: dst, first input, second input (ignored by the
// operations with one input); the result of inverseMatrix, true for the others.

using Op = bool (*)(float *, float const *, float const *);

template <void (*f)(float *, float const *, float const *)>
bool product(float * d, float const * a, float const * b) {
    f(d, a, b);
    return true;
}
template <void (*f)(float *, float const *)> bool unary(float * d, float const * a, float const *) {
    f(d, a);
    return true;
}

EnhancedMathFunctions & kernel() {
    return *EnhancedMathFunctions::getCurrent();
}

struct Operation {
    char const * name;
    bool inPlace;                    // dst may be the first input
    Op plain, avx2, avx512, current; // avx512 null where the AVX-512 level uses avx2
};

// The member reached through getCurrent(); `call` uses d, a and b.
#define KDR_MEMBER(call)                                                                           \
    +[](float * d, float const * a, float const * b) {                                             \
        static_cast<void>(b);                                                                      \
        return (call, true);                                                                       \
    }
// A vector version, or null where there is none.
#if KDRCORE_SIMD_X86
#define KDR_X86(version) version
#else
#define KDR_X86(version) nullptr
#endif

std::vector<Operation> const & operations() {
    using namespace kdrcore::detail;
    static std::vector<Operation> const ops = {
        {"multMatrices", false, product<multMatricesPlain>, KDR_X86(product<multMatricesAvx2>),
         KDR_X86(product<multMatricesAvx512>), KDR_MEMBER(kernel().multMatrices(d, a, b))},
        {"multAffineMatrices", false, product<multAffineMatricesPlain>,
         KDR_X86(product<multAffineMatricesAvx2>), KDR_X86(product<multAffineMatricesAvx512>),
         KDR_MEMBER(kernel().multAffineMatrices(d, a, b))},
        {"multMatrixVec3f", false, product<multMatrixVec3fPlain>,
         KDR_X86(product<multMatrixVec3fAvx2>), nullptr,
         KDR_MEMBER(kernel().multMatrixVec3f(d, a, b))},
        {"multAffineMatrixVec3f", false, product<multAffineMatrixVec3fPlain>,
         KDR_X86(product<multAffineMatrixVec3fAvx2>), nullptr,
         KDR_MEMBER(kernel().multAffineMatrixVec3f(d, a, b))},
        {"inverseMatrix", true,
         +[](float * d, float const * s, float const *) { return inverseMatrixPlain(d, s); },
         KDR_X86(
             +[](float * d, float const * s, float const *) { return inverseMatrixAvx2(d, s); }),
         nullptr,
         +[](float * d, float const * s, float const *) { return kernel().inverseMatrix(d, s); }},
        {"multQuaternions", true, product<multQuaternionsPlain>,
         KDR_X86(product<multQuaternionsAvx2>), nullptr,
         KDR_MEMBER(kernel().multQuaternions(d, a, b))},
        {"divQuaternionsU", true, product<divQuaternionsUPlain>,
         KDR_X86(product<divQuaternionsUAvx2>), nullptr,
         KDR_MEMBER(kernel().divQuaternionsU(d, a, b))},
        {"quaternionToMatrix", false, unary<quaternionToMatrixPlain>,
         KDR_X86(unary<quaternionToMatrixAvx2>), KDR_X86(unary<quaternionToMatrixAvx512>),
         KDR_MEMBER(kernel().quaternionToMatrix(d, a))}};
    return ops;
}

// What one call leaves: all 16 elements of dst, its result and the flags it raised.
struct Outcome {
    float dst[16];
    bool result;
    int flags;
};

float const SENTINEL = -0x1.234568p-77f;

Outcome run(Op op, bool inPlace, float const * a, float const * b) {
    Outcome o;
    std::fill(o.dst, o.dst + 16, SENTINEL);
    if (inPlace)
        std::memcpy(o.dst, a, sizeof o.dst);
    Op const volatile f = op; // no inlining: nothing moves across the flag calls
    std::feclearexcept(FE_ALL_EXCEPT);
    o.result = f(o.dst, inPlace ? o.dst : a, b);
    o.flags = std::fetestexcept(FLAGS);
    return o;
}

std::string hex(float const * v) {
    std::string s;
    char buf[12];
    for (int i = 0; i < 16; ++i) {
        std::snprintf(buf, sizeof buf, " %08x", static_cast<unsigned>(bitsOf(v[i])));
        s += buf;
    }
    return s;
}

} // namespace

TEST(SimdBitExact, EveryVersionGivesTheBaselinesBitsResultAndFlags) {
    struct Version {
        char const * name;
        Op Operation::*op;
    };
    std::vector<Version> versions;
#if KDRCORE_SIMD_X86
    if (kdrcore::detail::detectSimdLevel() >= kdrcore::detail::LEVEL_AVX2)
        versions.push_back({"AVX2", &Operation::avx2});
    if (kdrcore::detail::detectSimdLevel() >= kdrcore::detail::LEVEL_AVX512)
        versions.push_back({"AVX-512", &Operation::avx512});
#endif
    versions.push_back({"getCurrent()", &Operation::current});

    Inputs in(1u);
    std::vector<int> bad(operations().size() * versions.size(), 0);
    std::vector<int> nanFreeInvalid(operations().size(), 0), singular(2, 0);
    for (int s = 0; s < SAMPLES; ++s) {
        bool const nanFree = in.pick(2) == 0;
        float a[16], b[16];
        in.matrix(a, nanFree);
        in.matrix(b, nanFree);
        if (in.pick(4) == 0) { // never read by the affine operations
            static float const poison[] = {std::numeric_limits<float>::infinity(),
                                           -std::numeric_limits<float>::infinity(),
                                           fromBits(0x7F800001u), fromBits(0xFFC00123u)};
            for (int i = 3; i < 16; i += 4) {
                a[i] = poison[in.pick(4)];
                b[i] = poison[in.pick(4)];
            }
        }
        for (std::size_t k = 0; k < operations().size(); ++k) {
            Operation const & op = operations()[k];
            // Every fourth sample in place where the operation allows it.
            bool const inPlace = op.inPlace && s % 4 == 0;
            Outcome const want = run(op.plain, inPlace, a, b);
            nanFreeInvalid[k] += nanFree && (want.flags & FE_INVALID) != 0;
            if (std::string(op.name) == "inverseMatrix")
                ++singular[want.result ? 0 : 1];
            for (std::size_t v = 0; v < versions.size(); ++v) {
                if (op.*versions[v].op == nullptr)
                    continue;
                Outcome const got = run(op.*versions[v].op, inPlace, a, b);
                bool const same = std::memcmp(got.dst, want.dst, sizeof got.dst) == 0 &&
                                  got.result == want.result && got.flags == want.flags;
                if (!same && bad[k * versions.size() + v]++ == 0)
                    ADD_FAILURE() << versions[v].name << " " << op.name << ", sample " << s
                                  << (inPlace ? " (in place)" : "") << "\n  a:   " << hex(a)
                                  << "\n  b:   " << hex(b) << "\n  got: " << hex(got.dst)
                                  << " result " << got.result << " flags " << got.flags
                                  << "\n  want:" << hex(want.dst) << " result " << want.result
                                  << " flags " << want.flags;
            }
        }
    }
    for (std::size_t k = 0; k < operations().size(); ++k) {
        for (std::size_t v = 0; v < versions.size(); ++v)
            EXPECT_EQ(bad[k * versions.size() + v], 0)
                << versions[v].name << " " << operations()[k].name << " differs";
        // The vector paths run on NaN-free inputs: they must meet invalid operations there.
        EXPECT_GT(nanFreeInvalid[k], SAMPLES / 1000) << operations()[k].name;
    }
    EXPECT_GT(singular[1], SAMPLES / 100) << "the inputs should be singular now and then";
    EXPECT_GT(singular[0], SAMPLES / 2) << "most inputs should invert";
}
