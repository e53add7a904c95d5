// SimdLevel.h - which vector instruction set the hot paths of the library may use (private)
//
// The library is built for baseline x86-64. Hot operations carry extra versions compiled for
// AVX2 with FMA and for AVX-512, chosen at run time from the CPU's features. Every version gives
// the bits of the baseline code: products of two floats are exact in double, and every sum keeps
// its grouping and its rounding at each step. The kernel's versions also read only what the
// baseline reads and raise the same floating-point exception flags (MatrixKernels.h says how).
#ifndef KDRCORE_KERNEL_SIMDLEVEL_H
#define KDRCORE_KERNEL_SIMDLEVEL_H

#include <atomic>

#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#define KDRCORE_SIMD_X86 1
#define KDRCORE_TARGET_AVX2 __attribute__((target("avx2,fma")))
#define KDRCORE_TARGET_AVX512                                                                      \
    __attribute__((target("avx2,fma,avx512f,avx512vl,avx512dq,avx512bw,avx512cd")))
#else
#define KDRCORE_SIMD_X86 0
#endif

namespace kdrsimd {

/// The instruction sets, each including the ones before.
enum Level : int {
    LEVEL_BASELINE = 0, ///< x86-64 (SSE2), or any other processor
    LEVEL_AVX2 = 1,     ///< AVX2 and FMA
    LEVEL_AVX512 = 2,   ///< AVX-512 F, VL, DQ, BW, CD (x86-64-v4)
};

/// What this processor and its operating system support; asks the CPU each time.
inline Level detectLevel() {
#if KDRCORE_SIMD_X86
    __builtin_cpu_init();
    if (!(__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")))
        return LEVEL_BASELINE;
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512cd"))
        return LEVEL_AVX512;
    return LEVEL_AVX2;
#else
    return LEVEL_BASELINE;
#endif
}

// -1 until the first question. Constant-initialised: no load-time code.
inline std::atomic<int> g_level{-1};

// First use: out of line, so that the callers' fast path saves no registers.
[[gnu::noinline, gnu::cold]] inline int initLevel() {
    int const l = detectLevel();
    g_level.store(l, std::memory_order_relaxed);
    return l;
}

/// The level the library uses, found on first use. Racing first calls store the same value.
inline Level level() {
    int const l = g_level.load(std::memory_order_relaxed);
    return static_cast<Level>(__builtin_expect(l < 0, 0) ? initLevel() : l);
}

} // namespace kdrsimd

#endif // KDRCORE_KERNEL_SIMDLEVEL_H
