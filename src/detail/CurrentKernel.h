// src/detail/CurrentKernel.h - the kernel an operation runs on (private)
#ifndef KDRCORE_SRC_DETAIL_CURRENTKERNEL_H
#define KDRCORE_SRC_DETAIL_CURRENTKERNEL_H

#include "kdrcore/kernel/EnhancedMathFunctions.h"

namespace kdrcore::detail {

/// The current kernel, asked afresh for each operation: never kept, since installing another
/// kernel deletes it.
inline EnhancedMathFunctions * kernel() {
    return EnhancedMathFunctions::getCurrent();
}

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_DETAIL_CURRENTKERNEL_H
