// src/containers/ByteCombine.h - the union and exclusive or of two runs of bytes, in a version
// for AVX2 (private)
//
// KDRBoolArray's storage starts one byte after its allocation, so both versions first step byte
// by byte to an aligned address in `dst`: wide stores that straddle cache lines would cost a
// quarter of the time.
#ifndef KDRCORE_SRC_CONTAINERS_BYTECOMBINE_H
#define KDRCORE_SRC_CONTAINERS_BYTECOMBINE_H

#include "detail/SimdLevel.h"

namespace kdrcore::detail {

#if KDRCORE_SIMD_X86
/// dst[j] = a[j] | b[j] (or a[j] ^ b[j], `exclusive`) for j in [0, count). `dst` may be `a` or
/// `b`, and `a` may be `b`; no other overlap.
void combineBytesAvx2(unsigned char * dst, unsigned char const * a, unsigned char const * b,
                      int count, bool exclusive);
#endif

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_CONTAINERS_BYTECOMBINE_H
