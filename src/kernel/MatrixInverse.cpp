// PLACEHOLDER: to be replaced by the real implementation.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

bool EnhancedMathFunctions::inverseMatrix(float * const, float const * const) const {
    return false;
}
bool EnhancedMathFunctions::inverse3(float * const, float const * const) const {
    return false;
}
bool EnhancedMathFunctions::inverseAffine(float * const, float const * const) const {
    return false;
}
bool EnhancedMathFunctions::inverseScale(float * const) const {
    return false;
}
bool EnhancedMathFunctions::inverseScale(float * const, float const * const) const {
    return false;
}
bool EnhancedMathFunctions::inverseTranslate(float * const) const {
    return false;
}
bool EnhancedMathFunctions::inverseTranslate(float * const, float const * const) const {
    return false;
}
bool EnhancedMathFunctions::inverseRotate(float * const, float const * const) const {
    return false;
}
bool EnhancedMathFunctions::inverseRotateAndTr(float * const, float const * const) const {
    return false;
}
