// PLACEHOLDER: to be replaced by the real implementation.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

void EnhancedMathFunctions::jacobi3(float * const, float (*const)[3], int &,
                                    float const * const) const {}

bool EnhancedMathFunctions::factor(float * const, float * const, float * const, float * const,
                                   float * const, float const * const) const {
    return false;
}
