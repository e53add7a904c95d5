// kdrcore/KDRCore.h - umbrella header: includes every public header of the library
#ifndef KDRCORE_KDRCORE_H
#define KDRCORE_KDRCORE_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/containers/BinarySort.h"
#include "kdrcore/containers/BitMgr.h"
#include "kdrcore/containers/IDGenerator.h"
#include "kdrcore/containers/KDRArray.h"
#include "kdrcore/containers/KDRBoolArray.h"
#include "kdrcore/containers/KDRKeyArray.h"
#include "kdrcore/containers/KDRPtrList.h"
#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/geometry/Geom2D.h"
#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/runtime/KDRActivityMgr.h"
#include "kdrcore/runtime/KDRDebugFile.h"
#include "kdrcore/runtime/KDRExit.h"
#include "kdrcore/runtime/KDROSVersion.h"
#include "kdrcore/runtime/KDRString.h"
#include "kdrcore/runtime/KDRTimer.h"
#include "kdrcore/runtime/MultiRefObject.h"
#include "kdrcore/runtime/VersionForOrvane.h"
#include "kdrcore/solver/LUDecomp.h"
#include "kdrcore/types/Color.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Quaternion.h"
#include "kdrcore/types/Scalar.h"
#include "kdrcore/types/Vector.h"

#endif // KDRCORE_KDRCORE_H
