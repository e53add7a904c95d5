// Matrix inversion in the kernel: the general Gauss-Jordan inverse and the cheap inverses of
// matrices whose form the caller knows (scale, translation, rotation, rigid motion).
#include "detail/Wide.h"
#include "kernel/SimdKernels.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>

using kdrcore::detail::narrow;
using kdrcore::detail::wide;

bool EnhancedMathFunctions::inverseMatrix(float * const dst, float const * const src) const {
#if KDRCORE_SIMD_X86
    if (kdrcore::detail::simdLevel() >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::inverseMatrixAvx2(dst, src);
#endif
    return kdrcore::detail::inverseMatrixPlain(dst, src);
}

// Both go through the table, so that a replacement of inverseMatrix serves them too.
bool EnhancedMathFunctions::inverse3(float * const dst, float const * const src) const {
    return inverseMatrix(dst, src);
}

bool EnhancedMathFunctions::inverseAffine(float * const dst, float const * const src) const {
    return inverseMatrix(dst, src);
}

bool EnhancedMathFunctions::inverseScale(float * const m) const {
    if (m[0] == 0.0f || m[5] == 0.0f || m[10] == 0.0f)
        return false;
    m[0] = narrow(1.0 / wide(m[0]));
    m[5] = narrow(1.0 / wide(m[5]));
    m[10] = narrow(1.0 / wide(m[10]));
    return true;
}

bool EnhancedMathFunctions::inverseScale(float * const dst, float const * const src) const {
    double const s0 = wide(src[0]), s1 = wide(src[5]), s2 = wide(src[10]);
    if (s0 == 0.0 || s1 == 0.0 || s2 == 0.0)
        return false;
    // The diagonal is read before dst is written: dst may be src.
    for (int i = 0; i < 16; ++i)
        dst[i] = 0.0f;
    dst[0] = narrow(1.0 / s0);
    dst[5] = narrow(1.0 / s1);
    dst[10] = narrow(1.0 / s2);
    dst[15] = 1.0f;
    return true;
}

bool EnhancedMathFunctions::inverseTranslate(float * const m) const {
    m[12] = -m[12];
    m[13] = -m[13];
    m[14] = -m[14];
    return true;
}

bool EnhancedMathFunctions::inverseTranslate(float * const dst, float const * const src) const {
    float const t0 = src[12], t1 = src[13], t2 = src[14];
    for (int i = 0; i < 16; ++i)
        dst[i] = 0.0f;
    dst[0] = 1.0f;
    dst[5] = 1.0f;
    dst[10] = 1.0f;
    dst[15] = 1.0f;
    dst[12] = -t0;
    dst[13] = -t1;
    dst[14] = -t2;
    return true;
}

bool EnhancedMathFunctions::inverseRotate(float * const dst, float const * const src) const {
    // The inverse of a rotation is its transpose; translation and bottom row of dst stay.
    transposeAffine(dst, src);
    return true;
}

bool EnhancedMathFunctions::inverseRotateAndTr(float * const dst, float const * const src) const {
    // (R, t) inverts to (R', -R' t). The translation is computed first, from src, and the block
    // transposed after through the table; dst[3], dst[7], dst[11], dst[15] are not written.
    double const t0 = wide(src[12]), t1 = wide(src[13]), t2 = wide(src[14]);
    dst[12] = narrow(-(wide(src[0]) * t0 + wide(src[1]) * t1 + wide(src[2]) * t2));
    dst[13] = narrow(-(wide(src[4]) * t0 + wide(src[5]) * t1 + wide(src[6]) * t2));
    dst[14] = narrow(-(wide(src[8]) * t0 + wide(src[9]) * t1 + wide(src[10]) * t2));
    transposeAffine(dst, src);
    return true;
}
