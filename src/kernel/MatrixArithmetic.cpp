// PLACEHOLDER: to be replaced by the real implementation.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

void EnhancedMathFunctions::addMatrices(float * const, float const * const,
                                        float const * const) const {}
void EnhancedMathFunctions::subMatrices(float * const, float const * const,
                                        float const * const) const {}
void EnhancedMathFunctions::multMatrices(float * const, float const * const,
                                         float const * const) const {}
void EnhancedMathFunctions::multMatrixVec3f(float * const, float const * const,
                                            float const * const) const {}
void EnhancedMathFunctions::multMatrixVec4f(float * const, float const * const,
                                            float const * const) const {}
void EnhancedMathFunctions::multMatrixScalar(float * const, float const * const, float) const {}
void EnhancedMathFunctions::neg(float * const, float const * const) const {}
void EnhancedMathFunctions::transpose(float * const, float const * const) const {}
void EnhancedMathFunctions::abs(float * const, float const * const) const {}
float EnhancedMathFunctions::det4(float const * const) const {
    return 0.0f;
}
float EnhancedMathFunctions::det3(float const * const) const {
    return 0.0f;
}
void EnhancedMathFunctions::multAffineMatrices(float * const, float const * const,
                                               float const * const) const {}
void EnhancedMathFunctions::multAffineMatrixVec3f(float * const, float const * const,
                                                  float const * const) const {}
void EnhancedMathFunctions::multAffineMatrixVec3fAsDir(float * const, float const * const,
                                                       float const * const) const {}
void EnhancedMathFunctions::multAffineColRow(float * const, float const * const,
                                             float const * const) const {}
void EnhancedMathFunctions::transposeAffine(float * const, float const * const) const {}
