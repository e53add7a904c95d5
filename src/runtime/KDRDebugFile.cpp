// KDRDebugFile.cpp - the debug log: opened once, then appended, one flushed line per call
#include "kdrcore/runtime/KDRDebugFile.h"

#include <cstddef>
#include <cstring>

namespace {

constexpr std::size_t bufferSize = 4096;
constexpr std::size_t longestLine = bufferSize - 1; // bytes kept of one text

FILE * stream = nullptr;
char line[bufferSize];

} // namespace

FILE * KDRDebugFile::getDebugFile() {
    // "w": the first successful open in the process empties an old file.
    if (stream == nullptr)
        stream = std::fopen("debug-file.txt", "w");
    return stream;
}

void KDRDebugFile::writeDebugFile(char const * text) {
    FILE * const file = getDebugFile();
    if (file == nullptr || text == nullptr)
        return; // no file: the text is dropped, and the next call tries to open it again
    std::size_t n = 0;
    while (n < longestLine && text[n] != 0)
        ++n;
    if (n == 0)
        return;
    std::memcpy(line, text, n);
    // The line feed takes the place of the last byte, so the line never grows.
    if (line[n - 1] != '\n')
        line[n - 1] = '\n';
    std::fwrite(line, 1, n, file);
    // Flushed at once: the file is complete up to its last line even if the process dies.
    std::fflush(file);
}
