// src/containers/BitCount.h - the number of set bits in a run of bytes, in a baseline version
// and one with the POPCNT instruction (private)
//
// Bytes are read eight at a time as one 64-bit word; the count does not depend on how the bits
// are grouped, so both versions give the same number. The POPCNT version (BitCountPopcnt.cpp,
// compiled for that instruction) is taken at the AVX2 level, whose processors all have it.
#ifndef KDRCORE_SRC_CONTAINERS_BITCOUNT_H
#define KDRCORE_SRC_CONTAINERS_BITCOUNT_H

#include "detail/SimdLevel.h"

namespace kdrcore::detail {

/// Number of bits set in bytes [0, count).
int countBitsPlain(unsigned char const * p, int count);
#if KDRCORE_SIMD_X86
int countBitsPopcnt(unsigned char const * p, int count);
#endif

/// countBitsPlain, by the fastest version this processor runs.
int countBits(unsigned char const * p, int count);

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_CONTAINERS_BITCOUNT_H
