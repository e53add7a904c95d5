// fuzz/FuzzLevels.h - run a check under every instruction-set level the library can use here
//
// The library picks vector versions of its hot operations at run time (baseline, AVX2,
// AVX-512) and promises the same bits from each. A fuzz target compiled with the library's
// sources can set the level the library uses, so that every version meets the same inputs and
// not only the one this machine would choose. Without that private header the check runs once,
// at whatever level the library picks.
#ifndef KDRCORE_FUZZ_FUZZLEVELS_H
#define KDRCORE_FUZZ_FUZZLEVELS_H

#if __has_include("kernel/SimdLevel.h")
#include "kernel/SimdLevel.h"
#define KDRCORE_FUZZ_LEVELS 1
#else
#define KDRCORE_FUZZ_LEVELS 0
#endif

namespace fuzz {

/// Calls `body(level)` once per level the processor supports, lowest first, with the library set
/// to that level; afterwards the library is back at the level it detects.
template <class Body> void forEachLevel(Body body) {
#if KDRCORE_FUZZ_LEVELS
    int const top = kdrsimd::detectLevel();
    for (int level = 0; level <= top; ++level) {
        kdrsimd::g_level.store(level);
        body(level);
    }
    kdrsimd::g_level.store(top);
#else
    body(0);
#endif
}

} // namespace fuzz

#endif // KDRCORE_FUZZ_FUZZLEVELS_H
