// PLACEHOLDER: to be replaced by the real implementation.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

void EnhancedMathFunctions::axisToQuaternion(float * const, float const * const, float) const {}
void EnhancedMathFunctions::axisToQuaternionU(float * const, float const * const, float) const {}
void EnhancedMathFunctions::quaternionToAxis(float * const, float *, float const * const) const {}
void EnhancedMathFunctions::quaternionToMatrix(float * const, float const * const) const {}
int EnhancedMathFunctions::RotMatrixToQuaternion(float * const, float const * const) const {
    return 0;
}
void EnhancedMathFunctions::eulerToQuaternion(float * const, float const * const) const {}
void EnhancedMathFunctions::quaternionToEuler(float *, float const * const) const {}
void EnhancedMathFunctions::eulerToMatrix(float * const, float const * const) const {}
int EnhancedMathFunctions::matrixToEuler(float *, float const * const) const {
    return 0;
}
void EnhancedMathFunctions::axisToMatrix(float * const, float const * const, float) const {}
int EnhancedMathFunctions::matrixToAxis(float * const, float *, float const * const) const {
    return 0;
}
