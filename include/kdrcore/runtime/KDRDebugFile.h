// kdrcore/runtime/KDRDebugFile.h - the process's debug log, "debug-file.txt"
#ifndef KDRCORE_RUNTIME_KDRDEBUGFILE_H
#define KDRCORE_RUNTIME_KDRDEBUGFILE_H

#include "kdrcore/KDRExport.h"

#include <cstdio>

/// A text log of whole lines in "debug-file.txt" of the current directory. The file is opened on
/// first use with mode "w", so an old one is emptied once per process; it then stays open, and
/// later lines are appended. The library has no close: the runtime closes it at process end.
/// One thread at a time: the line is built in one static buffer.
class KDRCORE_API KDRDebugFile {
public:
    /// The stream, opened on first use; null when the open failed, and the next call tries again.
    static FILE * getDebugFile();
    /// Writes `text` as one line and flushes it: at most 4095 bytes are kept, and when the last
    /// kept byte is not a line feed it is replaced by one (not added behind it). An empty or null
    /// text writes nothing; when the file cannot be opened the text is dropped.
    static void writeDebugFile(char const * text);
};

#endif // KDRCORE_RUNTIME_KDRDEBUGFILE_H
