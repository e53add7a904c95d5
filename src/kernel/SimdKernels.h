// src/kernel/SimdKernels.h - the kernel's hot operations in a baseline version and vector
// versions (private)
//
// The members multMatrices, multAffineMatrices, multMatrixVec3f, multAffineMatrixVec3f,
// inverseMatrix, multQuaternions, divQuaternionsU and quaternionToMatrix only choose between the
// versions declared here, by the level the processor offers (detail/SimdLevel.h). Each takes the
// member's arguments and keeps its contract: what is read, what is written, which overlaps of
// `dst` with an input are allowed.
//
// The baseline versions (SimdKernelsPlain.cpp) are the reference: every element at double width,
// rounded to float once, where it is stored. The AVX2 versions (SimdKernelsAvx2.cpp, compiled
// for AVX2 and FMA) give the same bits, NaNs included, read the same elements and raise the same
// floating-point exception flags, and so do the AVX-512 versions (SimdKernelsAvx512.cpp). An
// operation has an AVX-512 version only where one was measured faster than its AVX2 version;
// the others use the AVX2 version at the AVX-512 level.
#ifndef KDRCORE_SRC_KERNEL_SIMDKERNELS_H
#define KDRCORE_SRC_KERNEL_SIMDKERNELS_H

#include "detail/SimdLevel.h"

namespace kdrcore::detail {

void multMatricesPlain(float * dst, float const * a, float const * b);
void multAffineMatricesPlain(float * dst, float const * a, float const * b);
void multMatrixVec3fPlain(float * dst, float const * m, float const * v);
void multAffineMatrixVec3fPlain(float * dst, float const * m, float const * v);
bool inverseMatrixPlain(float * dst, float const * src);
/// dst = a b (Hamilton product); all inputs are read before the first store.
void multQuaternionsPlain(float * dst, float const * a, float const * b);
/// dst = a times the conjugate of b; all inputs are read before the first store.
void divQuaternionsUPlain(float * dst, float const * a, float const * b);
void quaternionToMatrixPlain(float * dst, float const * q);

#if KDRCORE_SIMD_X86
void multMatricesAvx2(float * dst, float const * a, float const * b);
void multAffineMatricesAvx2(float * dst, float const * a, float const * b);
void multMatrixVec3fAvx2(float * dst, float const * m, float const * v);
void multAffineMatrixVec3fAvx2(float * dst, float const * m, float const * v);
bool inverseMatrixAvx2(float * dst, float const * src);
void multQuaternionsAvx2(float * dst, float const * a, float const * b);
void divQuaternionsUAvx2(float * dst, float const * a, float const * b);
void quaternionToMatrixAvx2(float * dst, float const * q);

void multMatricesAvx512(float * dst, float const * a, float const * b);
void multAffineMatricesAvx512(float * dst, float const * a, float const * b);
void quaternionToMatrixAvx512(float * dst, float const * q);
#endif

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_KERNEL_SIMDKERNELS_H
