// WideFormat.h - the formatter behind swprintf and KDRTimer::print (private to the library)
#ifndef KDRCORE_SRC_RUNTIME_WIDEFORMAT_H
#define KDRCORE_SRC_RUNTIME_WIDEFORMAT_H

#include <cstdarg>
#include <cstddef>

namespace kdrcore::detail {

/// Formats `format` with `args` into `buffer`, which holds `room` 16-bit characters (room >= 1):
/// at most room - 1 characters are written, then a terminator; the rest of a longer result is
/// dropped. Returns the number of characters written, the terminator not counted. The rules of
/// the conversions are those of swprintf.
int vformatWide(unsigned short * buffer, std::size_t room, unsigned short const * format,
                std::va_list args);

/// vformatWide with the arguments given in place.
int formatWide(unsigned short * buffer, std::size_t room, unsigned short const * format, ...);

/// A 16-bit copy of a narrow literal, made at compile time: Text16 t("abc"); t.text.
template <std::size_t N> struct Text16 {
    unsigned short text[N];
    constexpr Text16(char const (&narrow)[N]) : text{} {
        for (std::size_t i = 0; i < N; ++i)
            text[i] = static_cast<unsigned char>(narrow[i]);
    }
};

} // namespace kdrcore::detail

#endif // KDRCORE_SRC_RUNTIME_WIDEFORMAT_H
