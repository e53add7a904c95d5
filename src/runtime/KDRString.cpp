// KDRString.cpp - the null string and the small text helpers
#include "kdrcore/runtime/KDRString.h"

#include "WideFormat.h"

#include <cstdarg>
#include <cstdint>

namespace {

// The object behind KDRString::m_null: one of the library's three load-time initialisers. It needs
// nothing else of the library. Built after the kernel's two in practice, since this source
// follows the kernel's on the link line; destroyed when the library unloads.
const KDRString nullString("!!! NULL String !!!");

} // namespace

// A reference bound to an object of static storage: fixed before any code runs, so the address is
// right even for a caller that runs ahead of the object's construction.
KDRString const & KDRString::m_null = nullString;

KDRString::KDRString(std::string const & other, int position, int count)
    : std::string(other, static_cast<std::size_t>(position),
                  count < 0 ? std::string::npos : static_cast<std::size_t>(count)) {}

KDRString::KDRString(char const * text, int count)
    : std::string(text, static_cast<std::size_t>(count)) {}

KDRString::KDRString(int count, char character)
    : std::string(static_cast<std::size_t>(count), character) {}

KDRString::~KDRString() = default;

int swprintf(unsigned short * buffer, unsigned short const * format, ...) {
    if (buffer == nullptr || format == nullptr)
        return -1;
    std::va_list args;
    va_start(args, format);
    // No size is given: the caller guarantees the room, so the largest one stands in for it.
    int const n = kdrcore::detail::vformatWide(buffer, SIZE_MAX, format, args);
    va_end(args);
    return n;
}

unsigned int KDRCheck64bDataLoss(int value) {
    return static_cast<unsigned int>(value);
}

unsigned int KDRCheck64bDataLoss(unsigned int value) {
    return value;
}

void swapPDouble(double *& first, double *& second) {
    double * const kept = first;
    first = second;
    second = kept;
}
