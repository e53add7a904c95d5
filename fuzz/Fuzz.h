// fuzz/Fuzz.h - what the fuzz targets share: the check, bit views of floats, the float source
// with its out-parameter sentinel, the run at every instruction-set level, and the model runner
#ifndef KDRCORE_FUZZ_FUZZ_H
#define KDRCORE_FUZZ_FUZZ_H

#include "detail/SimdLevel.h"

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>

namespace fuzz {
// The operation of a model-based target under way, for the report of a failed check.
inline char const * g_operation = "";
inline int g_step = -1;
} // namespace fuzz

// A failed check is a finding: print where, what and the optional message, then abort so that
// libFuzzer keeps the input.
#define FUZZ_CHECK(cond, ...)                                                                      \
    do {                                                                                           \
        if (!(cond)) {                                                                             \
            std::fprintf(stderr, "%s:%d: check failed at step %d (%s): %s\n  ", __FILE__,          \
                         __LINE__, fuzz::g_step, fuzz::g_operation, #cond);                        \
            __VA_OPT__(std::fprintf(stderr, __VA_ARGS__);)                                         \
            std::fprintf(stderr, "\n");                                                            \
            std::abort();                                                                          \
        }                                                                                          \
    } while (0)

namespace fuzz {

// The bits of a float or double, and back (From is the other type of the same size).
template <class To, class From> To bitCast(From v) {
    static_assert(sizeof(To) == sizeof(From));
    To u;
    std::memcpy(&u, &v, sizeof u);
    return u;
}
inline std::uint32_t bitsOf(float v) {
    return bitCast<std::uint32_t>(v);
}
inline float floatOf(std::uint32_t u) {
    return bitCast<float>(u);
}
inline double doubleOf(std::uint64_t u) {
    return bitCast<double>(u);
}

// Same value bit for bit, or both NaN (whatever the payload).
template <class T> bool same(T a, T b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
}

// Out-parameters are filled with this signalling NaN before a call: no arithmetic produces a
// signalling NaN, and the inputs never hold this one (consumeFloat maps every NaN to one of a few
// other patterns), so an out-parameter that still holds it was not written, and one that holds
// anything else was.
constexpr std::uint32_t SENTINEL_BITS = 0x7FA5A5A5u;
inline float sentinel() {
    return floatOf(SENTINEL_BITS);
}
inline bool isSentinel(float v) {
    return bitsOf(v) == SENTINEL_BITS;
}

// Any float, with the troublesome ones often: zeros, NaNs, infinities, denormals, the extremes,
// values beside the library's tolerances, and small exact values that make degenerate shapes.
inline float consumeFloat(FuzzedDataProvider & in) {
    static float const special[] = {0.0f,     -0.0f,     1.0f,     -1.0f,        0.5f,
                                    2.0f,     1e-4f,     -1e-4f,   1.0001e-4f,   9.999e-5f,
                                    1e-7f,    0.05f,     0.01f,    1.5707964f,   3.1415927f,
                                    INFINITY, -INFINITY, NAN,      FLT_TRUE_MIN, -FLT_TRUE_MIN,
                                    FLT_MIN,  FLT_MAX,   -FLT_MAX, FLT_EPSILON,  1e30f,
                                    -1e30f,   1e-30f,    1e19f,    1e-19f};
    int const kind = in.ConsumeIntegralInRange(0, 3);
    float const v = kind == 0 ? floatOf(in.ConsumeIntegral<std::uint32_t>())
                    : kind == 1
                        ? special[in.ConsumeIntegralInRange<std::size_t>(0, std::size(special) - 1)]
                        : static_cast<float>(in.ConsumeIntegralInRange(-64, 64)) / 16.0f;
    // A few NaN patterns, quiet and signalling, of both signs; never the sentinel.
    static std::uint32_t const nans[] = {0x7FC00000u, 0xFFC00000u, 0x7F800001u, 0xFF812345u};
    return v != v ? floatOf(nans[bitsOf(v) & 3u]) : v;
}

/// Calls `body(level)` once per instruction-set level the processor supports, lowest first, with
/// the library set to that level (every vector version meets the same inputs, not only the one
/// this machine would choose); afterwards the library is back at the level it detects.
template <class Body> void forEachLevel(Body body) {
    using namespace kdrcore::detail;
    SimdLevel const top = detectSimdLevel();
    for (int level = 0; level <= top; ++level) {
        setSimdLevel(static_cast<SimdLevel>(level));
        body(level);
    }
    setSimdLevel(top);
}

// The model-based targets keep their real objects and models in a State and list their
// operations in a table: a name, and a function that decodes the operation's arguments, applies
// it to the real object and to the model, and checks what the call returned. The runner decodes
// the index of an operation, applies it, then has the State compare everything observable with
// its model (State::check), until the input runs out.
template <class State> struct Operation {
    char const * name;
    void (*apply)(State & state, FuzzedDataProvider & in);
};

template <class State, std::size_t N>
void runModel(State & state, FuzzedDataProvider & in, Operation<State> const (&ops)[N],
              int maxSteps) {
    for (g_step = 0; g_step < maxSteps && in.remaining_bytes() > 0; ++g_step) {
        Operation<State> const & op = ops[in.ConsumeIntegralInRange<std::size_t>(0, N - 1)];
        g_operation = op.name;
        op.apply(state, in);
        state.check();
    }
}

} // namespace fuzz

#endif // KDRCORE_FUZZ_FUZZ_H
