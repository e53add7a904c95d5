// The kernel's virtual operations, each once, in the order of its virtual table:
// OP(result type, name, parenthesised parameters, parenthesised argument names).
// The recording kernel overrides every entry; the table-order test checks the slot of every entry.
#ifndef KDRCORE_TESTS_SUPPORT_KERNELOPERATIONS_H
#define KDRCORE_TESTS_SUPPORT_KERNELOPERATIONS_H

// clang-format off
#define KDR_KERNEL_OPERATIONS(OP)                                                                  \
    OP(float *, getMat4fCopy, (float const * const s), (s))                                       \
    OP(void, copyMat4fTo, (float * const d, float const * const s), (d, s))                       \
    OP(void, copyVec3fTo, (float * const d, float const * const s), (d, s))                       \
    OP(void, cross, (float * const d, float const * a, float const * b), (d, a, b))               \
    OP(void, setIdentity, (float * const d), (d))                                                 \
    OP(void, setZero, (float * const d), (d))                                                     \
    OP(void, addMatrices, (float * const d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, subMatrices, (float * const d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, multMatrices, (float * const d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, multMatrixVec3f, (float * const d, float const * const m, float const * const v), (d, m, v)) \
    OP(void, multMatrixVec4f, (float * const d, float const * const m, float const * const v), (d, m, v)) \
    OP(void, multMatrixScalar, (float * const d, float const * const m, float s), (d, m, s))      \
    OP(bool, inverseMatrix, (float * const d, float const * const s), (d, s))                     \
    OP(void, neg, (float * const d, float const * const s), (d, s))                               \
    OP(void, transpose, (float * const d, float const * const s), (d, s))                         \
    OP(void, abs, (float * const d, float const * const s), (d, s))                               \
    OP(float, det4, (float const * const m), (m))                                                 \
    OP(void, setScale, (float * const d, float const * const s), (d, s))                          \
    OP(void, setTranslate, (float * const d, float const * const t), (d, t))                      \
    OP(void, setRotate, (float * const d, float const * const e), (d, e))                         \
    OP(void, setRotate, (float * const d, float const * const a, float t), (d, a, t))             \
    OP(void, setProjection, (float * const d, float const * const n, float c, float const * const v), (d, n, c, v)) \
    OP(float, det3, (float const * const m), (m))                                                 \
    OP(void, multAffineMatrices, (float * const d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, multAffineMatrixVec3f, (float * const d, float const * const m, float const * const v), (d, m, v)) \
    OP(void, multAffineMatrixVec3fAsDir, (float * const d, float const * const m, float const * const v), (d, m, v)) \
    OP(void, multAffineColRow, (float * const d, float const * const c, float const * const r), (d, c, r)) \
    OP(void, transposeAffine, (float * const d, float const * const s), (d, s))                   \
    OP(void, multLeftByRotate, (float * const d, float const * const s, float const * a, float t), (d, s, a, t)) \
    OP(void, multRightByRotate, (float * const d, float const * const s, float const * a, float t), (d, s, a, t)) \
    OP(void, multLeftByRotateX, (float * const m, float t), (m, t))                               \
    OP(void, multRightByRotateX, (float * const m, float t), (m, t))                              \
    OP(void, multLeftByRotateY, (float * const m, float t), (m, t))                               \
    OP(void, multRightByRotateY, (float * const m, float t), (m, t))                              \
    OP(void, multLeftByRotateZ, (float * const m, float t), (m, t))                               \
    OP(void, multRightByRotateZ, (float * const m, float t), (m, t))                              \
    OP(void, multLeftByTranslate, (float * const m, float const * v), (m, v))                     \
    OP(void, multRightByTranslate, (float * const m, float const * v), (m, v))                    \
    OP(void, multLeftByScale, (float * const m, float const * v), (m, v))                         \
    OP(void, multRightByScale, (float * const m, float const * v), (m, v))                        \
    OP(bool, inverse3, (float * const d, float const * const s), (d, s))                          \
    OP(bool, inverseAffine, (float * const d, float const * const s), (d, s))                     \
    OP(bool, inverseScale, (float * const m), (m))                                                \
    OP(bool, inverseScale, (float * const d, float const * const s), (d, s))                      \
    OP(bool, inverseTranslate, (float * const m), (m))                                            \
    OP(bool, inverseTranslate, (float * const d, float const * const s), (d, s))                  \
    OP(bool, inverseRotate, (float * const d, float const * const s), (d, s))                     \
    OP(bool, inverseRotateAndTr, (float * const d, float const * const s), (d, s))                \
    OP(void, addQuaternions, (float * const d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, subQuaternions, (float * const d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, multQuaternions, (float * const d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, divQuaternionsU, (float * const d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, conjugateQuaternion, (float * const d, float const * const q), (d, q))               \
    OP(void, inverseQuaternion, (float * const d, float const * const q), (d, q))                 \
    OP(void, inverseQuaternionU, (float * const d, float const * const q), (d, q))                \
    OP(void, applyQuatOn, (float * const d, float const * const q, float const * const v), (d, q, v)) \
    OP(void, dotQuaternions, (float * d, float const * const a, float const * const b), (d, a, b)) \
    OP(void, quaternionSLERP, (float * const d, float const * const a, float const * const b, float t), (d, a, b, t)) \
    OP(void, quaternionLERP, (float * const d, float const * const a, float const * const b, float t), (d, a, b, t)) \
    OP(void, axisToQuaternion, (float * const d, float const * const a, float t), (d, a, t))      \
    OP(void, axisToQuaternionU, (float * const d, float const * const a, float t), (d, a, t))     \
    OP(void, quaternionToAxis, (float * const a, float * t, float const * const q), (a, t, q))    \
    OP(void, quaternionToMatrix, (float * const d, float const * const q), (d, q))                \
    OP(int, RotMatrixToQuaternion, (float * const d, float const * const m), (d, m))              \
    OP(void, eulerToQuaternion, (float * const d, float const * const e), (d, e))                 \
    OP(void, quaternionToEuler, (float * e, float const * const q), (e, q))                       \
    OP(void, eulerToMatrix, (float * const d, float const * const e), (d, e))                     \
    OP(int, matrixToEuler, (float * e, float const * const m), (e, m))                            \
    OP(void, axisToMatrix, (float * const d, float const * const a, float t), (d, a, t))          \
    OP(int, matrixToAxis, (float * const a, float * t, float const * const m), (a, t, m))         \
    OP(float, invSqrt, (float x, int n), (x, n))                                                  \
    OP(float, invSqrt, (float x), (x))                                                            \
    OP(float, msqrt, (float x, int n), (x, n))                                                    \
    OP(float, msqrt, (float x), (x))                                                              \
    OP(void, jacobi3, (float * const v, float (*const w)[3], int & n, float const * const m), (v, w, n, m))
// clang-format on

#endif // KDRCORE_TESTS_SUPPORT_KERNELOPERATIONS_H
