// kdrcore/KDRExport.h - the one export macro of the library
#ifndef KDRCORE_KDREXPORT_H
#define KDRCORE_KDREXPORT_H

/// Marks each exported class, function and datum. The library is built with hidden visibility, so
/// whatever is not marked stays inside it; a host sees the same default visibility.
#define KDRCORE_API __attribute__((visibility("default")))

#endif // KDRCORE_KDREXPORT_H
