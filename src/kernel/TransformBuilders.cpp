// PLACEHOLDER: to be replaced by the real implementation.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

void EnhancedMathFunctions::setScale(float * const, float const * const) const {}
void EnhancedMathFunctions::setTranslate(float * const, float const * const) const {}
void EnhancedMathFunctions::setRotate(float * const, float const * const) const {}
void EnhancedMathFunctions::setRotate(float * const, float const * const, float) const {}
void EnhancedMathFunctions::setProjection(float * const, float const * const, float,
                                          float const * const) const {}
void EnhancedMathFunctions::multLeftByRotate(float * const, float const * const, float const *,
                                             float) const {}
void EnhancedMathFunctions::multRightByRotate(float * const, float const * const, float const *,
                                              float) const {}
void EnhancedMathFunctions::multLeftByRotateX(float * const, float) const {}
void EnhancedMathFunctions::multRightByRotateX(float * const, float) const {}
void EnhancedMathFunctions::multLeftByRotateY(float * const, float) const {}
void EnhancedMathFunctions::multRightByRotateY(float * const, float) const {}
void EnhancedMathFunctions::multLeftByRotateZ(float * const, float) const {}
void EnhancedMathFunctions::multRightByRotateZ(float * const, float) const {}
void EnhancedMathFunctions::multLeftByTranslate(float * const, float const *) const {}
void EnhancedMathFunctions::multRightByTranslate(float * const, float const *) const {}
void EnhancedMathFunctions::multLeftByScale(float * const, float const *) const {}
void EnhancedMathFunctions::multRightByScale(float * const, float const *) const {}
