// kdrcore/runtime/KDROSVersion.h - the host system's version, as the host application sets it
#ifndef KDRCORE_RUNTIME_KDROSVERSION_H
#define KDRCORE_RUNTIME_KDROSVERSION_H

#include "kdrcore/KDRExport.h"

/// Host system versions; stored as a 32-bit integer.
enum eKDROSVersion : int {
    eKDROSUnknown = 0,  ///< not set
    eKDROS9 = 1,        ///< Mac OS 9
    eKDROSX = 2,        ///< Mac OS X
    eKDROSXJaguar = 3,  ///< Mac OS X Jaguar
    eKDROSXPanther = 4, ///< Mac OS X Panther
};

/// The process-wide record of the host version: eKDROSUnknown until the host calls init(). The
/// library never finds the version out by itself. Instances hold no data.
class KDRCORE_API KDROSVersion {
public:
    KDROSVersion();
    virtual ~KDROSVersion();

    /// Records `version`; may be called again.
    static void init(eKDROSVersion version);
    static eKDROSVersion getOSVersion();
    /// Exact tests of the recorded value: isOSX() is false for Jaguar and Panther.
    static bool isOS9();
    static bool isOSX();
    static bool isOSXJaguar();
    static bool isOSXPanther();

protected:
    static eKDROSVersion m_osVersion;
};

#endif // KDRCORE_RUNTIME_KDROSVERSION_H
