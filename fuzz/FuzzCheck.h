// fuzz/FuzzCheck.h - the checks shared by the fuzz targets
#ifndef KDRCORE_FUZZ_FUZZCHECK_H
#define KDRCORE_FUZZ_FUZZCHECK_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// A failed check is a finding: print where and what, then abort so that libFuzzer keeps the input.
#define FUZZ_CHECK(cond, ...)                                                                      \
    do {                                                                                           \
        if (!(cond)) {                                                                             \
            std::fprintf(stderr, "%s:%d: check failed: %s\n  ", __FILE__, __LINE__, #cond);        \
            std::fprintf(stderr, __VA_ARGS__);                                                     \
            std::fprintf(stderr, "\n");                                                            \
            std::abort();                                                                          \
        }                                                                                          \
    } while (0)

namespace fuzz {

inline std::uint32_t bitsOf(float v) {
    std::uint32_t u;
    std::memcpy(&u, &v, sizeof u);
    return u;
}

inline std::uint64_t bitsOf(double v) {
    std::uint64_t u;
    std::memcpy(&u, &v, sizeof u);
    return u;
}

inline float floatOf(std::uint32_t u) {
    float v;
    std::memcpy(&v, &u, sizeof v);
    return v;
}

inline double doubleOf(std::uint64_t u) {
    double v;
    std::memcpy(&v, &u, sizeof v);
    return v;
}

// Same value bit for bit, or both NaN (whatever the payload).
inline bool sameFloat(float a, float b) {
    return bitsOf(a) == bitsOf(b) || (a != a && b != b);
}
inline bool sameDouble(double a, double b) {
    return bitsOf(a) == bitsOf(b) || (a != a && b != b);
}

} // namespace fuzz

#endif // KDRCORE_FUZZ_FUZZCHECK_H
