// kdrcore/runtime/KDRExit.h - functions to run at an orderly exit
#ifndef KDRCORE_RUNTIME_KDREXIT_H
#define KDRCORE_RUNTIME_KDREXIT_H

#include "kdrcore/KDRExport.h"

/// A process-wide registry of functions that exit() runs, last added first. Meant for the end of
/// the process, on one thread.
class KDRCORE_API KDRExit {
public:
    /// Appends `function`; duplicates are allowed. After exit() has run, the first call starts a
    /// new registry, which a later exit() runs.
    static void addExitFun(void (*function)());
    /// Runs the registered functions, each once, in the reverse order of their addition, then
    /// empties the registry; it does not end the process. A function added by a running exit
    /// function runs next. A call of exit() from inside an exit function does nothing.
    static void exit();

private:
    static void (**m_exitFunctions)(); // exactly m_numExitFunctions entries
    static int m_numExitFunctions;     // -1 once exit() has run the functions
};

#endif // KDRCORE_RUNTIME_KDREXIT_H
