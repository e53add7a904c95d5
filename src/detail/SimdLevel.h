// src/detail/SimdLevel.h - which vector instruction set the hot paths of the library may use
// (private)
//
// The library is built for baseline x86-64. Hot operations carry extra versions, each in a
// source compiled for its instruction set (AVX2 with FMA, AVX-512, POPCNT), chosen at run time
// from the processor's features. Every version gives the bits of the baseline code: products of
// two floats are exact in double, and every sum keeps its grouping and its rounding at each step.
// The kernel's versions also read only what the baseline reads and raise the same floating-point
// exception flags (src/kernel/SimdKernelsAvx2.cpp says how).
#ifndef KDRCORE_SRC_DETAIL_SIMDLEVEL_H
#define KDRCORE_SRC_DETAIL_SIMDLEVEL_H

#include <atomic>

#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#define KDRCORE_SIMD_X86 1
#else
#define KDRCORE_SIMD_X86 0
#endif

namespace kdrcore::detail {

/// The instruction sets, each including the ones before.
enum SimdLevel : int {
    LEVEL_BASELINE = 0, ///< x86-64 (SSE2), or any other processor
    LEVEL_AVX2 = 1,     ///< AVX2, FMA and POPCNT
    LEVEL_AVX512 = 2,   ///< AVX-512 F, VL, DQ, BW, CD (x86-64-v4)
};

/// What this processor and its operating system support; asks the processor each time.
SimdLevel detectSimdLevel();

/// The level in use: -1 until the first question. Constant-initialised, no load-time code.
extern std::atomic<int> g_simdLevel;

/// First use: out of line and cold, so that the callers' fast path saves no registers.
SimdLevel initSimdLevel();

/// The level the library uses, found on first use. Racing first calls store the same value.
/// A member of the kernel pays this load and a predicted branch before a direct call; a table of
/// function pointers filled when the level is found or set, one indirect jump per call, was
/// measured no faster (within 0.05 ns of a 2 to 20 ns call) and was not kept.
inline SimdLevel simdLevel() {
    int const l = g_simdLevel.load(std::memory_order_relaxed);
    return __builtin_expect(l < 0, 0) ? initSimdLevel() : static_cast<SimdLevel>(l);
}

/// Makes the library use `level` from now on, which must not exceed detectSimdLevel(): for the
/// tests and fuzz targets that run every version on the same inputs.
void setSimdLevel(SimdLevel level);

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_DETAIL_SIMDLEVEL_H
