// kdrcore/runtime/VersionForOrvane.h - the flag of an open in progress
#ifndef KDRCORE_RUNTIME_VERSIONFORORVANE_H
#define KDRCORE_RUNTIME_VERSIONFORORVANE_H

#include "kdrcore/KDRExport.h"

/// Marks an open in progress. The flag is only written: nothing in the library reads it.
class KDRCORE_API VersionForOrvane {
public:
    /// The flag := true.
    static void beforeOpen();
    /// The flag := false.
    static void afterOpen();
    /// Always true, whatever the flag holds.
    static bool canChangeView();

private:
    static bool m_inOpen;
};

#endif // KDRCORE_RUNTIME_VERSIONFORORVANE_H
