// Fast reciprocal square root and square root: a seed of eight mantissa bits from a 128-byte table,
// refined by Newton steps.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <bit>
#include <cmath>
#include <cstdint>

unsigned char * EnhancedMathFunctions::initInvSqrtTable() {
    if (m_invSqrtTable != nullptr)
        return m_invSqrtTable;
    m_invSqrtTable = new unsigned char[0x80];
    for (std::uint32_t i = 0; i < 0x80; ++i) {
        // The lower end of the interval of index i: bit 6 is the exponent's lowest bit, bits 0-5
        // the top six mantissa bits.
        float const g = std::bit_cast<float>((i | 0x1F80u) << 17);
        float const r = static_cast<float>(1.0 / std::sqrt(static_cast<double>(g)));
        m_invSqrtTable[i] =
            static_cast<unsigned char>((std::bit_cast<std::uint32_t>(r) + 0x2000u) >> 15);
    }
    // 1/sqrt(1) = 1 has a zero mantissa; 255 keeps the seed just below 1 instead of at 0.5.
    m_invSqrtTable[0x40] = 0xFF;
    return m_invSqrtTable;
}

namespace {
// The seed: exponent field (380 - e) / 2, mantissa's top eight bits from the table, sign 0.
inline double seed(unsigned char const * table, float x) {
    std::uint32_t const b = std::bit_cast<std::uint32_t>(x);
    std::uint32_t const e = (b >> 23) & 0xFFu;
    std::uint32_t const i = (b >> 17) & 0x7Fu;
    std::uint32_t const bits =
        (((0x17Cu - e) << 22) & 0xFF800000u) | (std::uint32_t{table[i]} << 15);
    return static_cast<double>(std::bit_cast<float>(bits));
}

// Newton steps at double width; the estimate is not rounded between steps.
inline double refine(double y, float x, int iterations) {
    double const wx = static_cast<double>(x);
    for (int k = 0; k < iterations; ++k)
        y = y * (static_cast<double>(3.0f) - (y * y) * wx) * 0.5;
    return y;
}
} // namespace

float EnhancedMathFunctions::invSqrt(float x, int iterations) const {
    unsigned char const * table = initInvSqrtTable();
    return static_cast<float>(refine(seed(table, x), x, iterations));
}

float EnhancedMathFunctions::invSqrt(float x) const {
    unsigned char const * table = initInvSqrtTable();
    return static_cast<float>(refine(seed(table, x), x, 1));
}

float EnhancedMathFunctions::msqrt(float x, int iterations) const {
    unsigned char const * table = initInvSqrtTable();
    return static_cast<float>(1.0 / refine(seed(table, x), x, iterations));
}

float EnhancedMathFunctions::msqrt(float x) const {
    unsigned char const * table = initInvSqrtTable();
    return static_cast<float>(1.0 / refine(seed(table, x), x, 1));
}
