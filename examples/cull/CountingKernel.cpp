// examples/cull/CountingKernel.cpp - a host kernel that counts the operations the library asks
// of it
#include "CountingKernel.h"

namespace {

char const * const opName[] = {"copyMat4fTo",
                               "copyVec3fTo",
                               "cross",
                               "setIdentity",
                               "setZero",
                               "addMatrices",
                               "subMatrices",
                               "multMatrices",
                               "multMatrixVec3f",
                               "multMatrixVec4f",
                               "multMatrixScalar",
                               "inverseMatrix",
                               "transpose",
                               "multAffineMatrices",
                               "multAffineMatrixVec3f",
                               "multAffineMatrixVec3fAsDir",
                               "transposeAffine",
                               "inverseAffine"};
static_assert(sizeof(opName) / sizeof(opName[0]) == static_cast<std::size_t>(KernelOp::count_),
              "one name per counted operation");

} // namespace

std::string KernelCounts::describe() const {
    std::string out;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        if (calls[i] == 0)
            continue;
        if (!out.empty())
            out += ", ";
        out += std::string(opName[i]) + " x" + std::to_string(calls[i]);
    }
    return out.empty() ? "none" : out;
}

// Each override counts, then runs the default operation: a host kernel may also replace the
// arithmetic, as long as it keeps the array conventions and the aliasing rules.

void CountingKernel::copyMat4fTo(float * const dst, float const * const src) const {
    hit(KernelOp::copyMat4fTo);
    EnhancedMathFunctions::copyMat4fTo(dst, src);
}
void CountingKernel::copyVec3fTo(float * const dst, float const * const src) const {
    hit(KernelOp::copyVec3fTo);
    EnhancedMathFunctions::copyVec3fTo(dst, src);
}
void CountingKernel::cross(float * const dst, float const * a, float const * b) const {
    hit(KernelOp::cross);
    EnhancedMathFunctions::cross(dst, a, b);
}
void CountingKernel::setIdentity(float * const dst) const {
    hit(KernelOp::setIdentity);
    EnhancedMathFunctions::setIdentity(dst);
}
void CountingKernel::setZero(float * const dst) const {
    hit(KernelOp::setZero);
    EnhancedMathFunctions::setZero(dst);
}
void CountingKernel::addMatrices(float * const dst, float const * const a,
                                 float const * const b) const {
    hit(KernelOp::addMatrices);
    EnhancedMathFunctions::addMatrices(dst, a, b);
}
void CountingKernel::subMatrices(float * const dst, float const * const a,
                                 float const * const b) const {
    hit(KernelOp::subMatrices);
    EnhancedMathFunctions::subMatrices(dst, a, b);
}
void CountingKernel::multMatrices(float * const dst, float const * const a,
                                  float const * const b) const {
    hit(KernelOp::multMatrices);
    EnhancedMathFunctions::multMatrices(dst, a, b);
}
void CountingKernel::multMatrixVec3f(float * const dst, float const * const m,
                                     float const * const v) const {
    hit(KernelOp::multMatrixVec3f);
    EnhancedMathFunctions::multMatrixVec3f(dst, m, v);
}
void CountingKernel::multMatrixVec4f(float * const dst, float const * const m,
                                     float const * const v) const {
    hit(KernelOp::multMatrixVec4f);
    EnhancedMathFunctions::multMatrixVec4f(dst, m, v);
}
void CountingKernel::multMatrixScalar(float * const dst, float const * const m, float s) const {
    hit(KernelOp::multMatrixScalar);
    EnhancedMathFunctions::multMatrixScalar(dst, m, s);
}
bool CountingKernel::inverseMatrix(float * const dst, float const * const src) const {
    hit(KernelOp::inverseMatrix);
    return EnhancedMathFunctions::inverseMatrix(dst, src);
}
void CountingKernel::transpose(float * const dst, float const * const src) const {
    hit(KernelOp::transpose);
    EnhancedMathFunctions::transpose(dst, src);
}
void CountingKernel::multAffineMatrices(float * const dst, float const * const a,
                                        float const * const b) const {
    hit(KernelOp::multAffineMatrices);
    EnhancedMathFunctions::multAffineMatrices(dst, a, b);
}
void CountingKernel::multAffineMatrixVec3f(float * const dst, float const * const m,
                                           float const * const v) const {
    hit(KernelOp::multAffineMatrixVec3f);
    EnhancedMathFunctions::multAffineMatrixVec3f(dst, m, v);
}
void CountingKernel::multAffineMatrixVec3fAsDir(float * const dst, float const * const m,
                                                float const * const v) const {
    hit(KernelOp::multAffineMatrixVec3fAsDir);
    EnhancedMathFunctions::multAffineMatrixVec3fAsDir(dst, m, v);
}
void CountingKernel::transposeAffine(float * const dst, float const * const src) const {
    hit(KernelOp::transposeAffine);
    EnhancedMathFunctions::transposeAffine(dst, src);
}
bool CountingKernel::inverseAffine(float * const dst, float const * const src) const {
    hit(KernelOp::inverseAffine);
    return EnhancedMathFunctions::inverseAffine(dst, src);
}
