// fuzz/FuzzFloats.h - floats for the fuzz targets of the mathematics, and the out-parameter
// sentinel
#ifndef KDRCORE_FUZZ_FUZZFLOATS_H
#define KDRCORE_FUZZ_FUZZFLOATS_H

#include "FuzzCheck.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>

namespace fuzz {

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
    float v;
    switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
        v = floatOf(in.ConsumeIntegral<std::uint32_t>());
        break;
    case 1:
        v = special[in.ConsumeIntegralInRange<std::size_t>(0, std::size(special) - 1)];
        break;
    default:
        v = static_cast<float>(in.ConsumeIntegralInRange(-64, 64)) / 16.0f;
        break;
    }
    if (v != v) {
        // A few NaN patterns, quiet and signalling, of both signs; never the sentinel.
        static const std::uint32_t nans[] = {0x7FC00000u, 0xFFC00000u, 0x7F800001u, 0xFF812345u};
        v = floatOf(nans[bitsOf(v) & 3u]);
    }
    return v;
}

} // namespace fuzz

#endif // KDRCORE_FUZZ_FUZZFLOATS_H
