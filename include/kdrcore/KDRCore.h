// kdrcore/KDRCore.h - umbrella header: includes every public header of the library
#ifndef KDRCORE_KDRCORE_H
#define KDRCORE_KDRCORE_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Scalar.h"

#endif // KDRCORE_KDRCORE_H
