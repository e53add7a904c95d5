// PLACEHOLDER: to be replaced by the real implementation.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

void EnhancedMathFunctions::addQuaternions(float * const, float const * const,
                                           float const * const) const {}
void EnhancedMathFunctions::subQuaternions(float * const, float const * const,
                                           float const * const) const {}
void EnhancedMathFunctions::multQuaternions(float * const, float const * const,
                                            float const * const) const {}
void EnhancedMathFunctions::divQuaternionsU(float * const, float const * const,
                                            float const * const) const {}
void EnhancedMathFunctions::conjugateQuaternion(float * const, float const * const) const {}
void EnhancedMathFunctions::inverseQuaternion(float * const, float const * const) const {}
void EnhancedMathFunctions::inverseQuaternionU(float * const, float const * const) const {}
void EnhancedMathFunctions::applyQuatOn(float * const, float const * const,
                                        float const * const) const {}
void EnhancedMathFunctions::dotQuaternions(float *, float const * const,
                                           float const * const) const {}
void EnhancedMathFunctions::quaternionSLERP(float * const, float const * const, float const * const,
                                            float) const {}
void EnhancedMathFunctions::quaternionLERP(float * const, float const * const, float const * const,
                                           float) const {}
