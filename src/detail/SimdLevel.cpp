#include "detail/SimdLevel.h"

namespace kdrcore::detail {

std::atomic<int> g_simdLevel{-1};

SimdLevel detectSimdLevel() {
#if KDRCORE_SIMD_X86
    __builtin_cpu_init();
    if (!(__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
          __builtin_cpu_supports("popcnt")))
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

[[gnu::noinline, gnu::cold]] SimdLevel initSimdLevel() {
    SimdLevel const l = detectSimdLevel();
    g_simdLevel.store(l, std::memory_order_relaxed);
    return l;
}

void setSimdLevel(SimdLevel level) {
    g_simdLevel.store(level, std::memory_order_relaxed);
}

} // namespace kdrcore::detail
