// examples/cull/CountingKernel.h - a host kernel that counts the operations the library asks of it
#ifndef KDRCORE_EXAMPLES_CULL_COUNTINGKERNEL_H
#define KDRCORE_EXAMPLES_CULL_COUNTINGKERNEL_H

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <array>
#include <string>

/// The counted operations: the matrix and vector operations that cameras, boxes and the matrix
/// classes reach. Quaternion, rotation and square-root operations run uncounted.
enum class KernelOp {
    copyMat4fTo,
    copyVec3fTo,
    cross,
    setIdentity,
    setZero,
    addMatrices,
    subMatrices,
    multMatrices,
    multMatrixVec3f,
    multMatrixVec4f,
    multMatrixScalar,
    inverseMatrix,
    transpose,
    multAffineMatrices,
    multAffineMatrixVec3f,
    multAffineMatrixVec3fAsDir,
    transposeAffine,
    inverseAffine,
    count_ // number of counted operations
};

/// How often each counted operation ran. The table belongs to the host, not to the kernel: kernel
/// operations are const and keep no state of their own in the object.
struct KernelCounts {
    std::array<long, static_cast<std::size_t>(KernelOp::count_)> calls{};

    void clear() { calls.fill(0); }
    /// "multMatrixVec3f x8, cross x2" in the order of KernelOp, or "none".
    std::string describe() const;
};

/// A kernel that counts each call of the operations of KernelOp into `counts`, then does what the
/// default kernel does, so every result stays the same. Create it with new and install it with
/// setDefault(); from then on the library owns it and deletes it when another kernel replaces it.
/// `counts` must outlive the kernel's use.
class CountingKernel : public EnhancedMathFunctions {
public:
    explicit CountingKernel(KernelCounts & counts) : m_counts(&counts) {}

    void copyMat4fTo(float * const dst, float const * const src) const override;
    void copyVec3fTo(float * const dst, float const * const src) const override;
    void cross(float * const dst, float const * a, float const * b) const override;
    void setIdentity(float * const dst) const override;
    void setZero(float * const dst) const override;
    void addMatrices(float * const dst, float const * const a,
                     float const * const b) const override;
    void subMatrices(float * const dst, float const * const a,
                     float const * const b) const override;
    void multMatrices(float * const dst, float const * const a,
                      float const * const b) const override;
    void multMatrixVec3f(float * const dst, float const * const m,
                         float const * const v) const override;
    void multMatrixVec4f(float * const dst, float const * const m,
                         float const * const v) const override;
    void multMatrixScalar(float * const dst, float const * const m, float s) const override;
    bool inverseMatrix(float * const dst, float const * const src) const override;
    void transpose(float * const dst, float const * const src) const override;
    void multAffineMatrices(float * const dst, float const * const a,
                            float const * const b) const override;
    void multAffineMatrixVec3f(float * const dst, float const * const m,
                               float const * const v) const override;
    void multAffineMatrixVec3fAsDir(float * const dst, float const * const m,
                                    float const * const v) const override;
    void transposeAffine(float * const dst, float const * const src) const override;
    bool inverseAffine(float * const dst, float const * const src) const override;

protected:
    ~CountingKernel() override = default; // deleted by the library, through unref()

private:
    void hit(KernelOp op) const { ++m_counts->calls[static_cast<std::size_t>(op)]; }

    KernelCounts * m_counts;
};

#endif // KDRCORE_EXAMPLES_CULL_COUNTINGKERNEL_H
