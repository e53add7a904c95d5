// kdrcore/runtime/KDRString.h - 8-bit string with a null object, and small text helpers
#ifndef KDRCORE_RUNTIME_KDRSTRING_H
#define KDRCORE_RUNTIME_KDRSTRING_H

#include "kdrcore/KDRExport.h"

#include <string>

/// The standard 8-bit string, plus one distinguished object, `m_null`, that tells "no string"
/// from an empty one. Adds no field and no virtual operation; every string operation is the
/// standard string's. Each constructor passes its arguments to the like standard constructor.
class KDRCORE_API KDRString : public std::string {
public:
    KDRString() = default;
    KDRString(std::string const & other) : std::string(other) {}
    /// At most `count` characters of `other` from `position`; a negative count takes the rest.
    KDRString(std::string const & other, int position, int count);
    KDRString(char const * text, int count);
    KDRString(char const * text) : std::string(text) {}
    KDRString(int count, char character);
    KDRString(char const * first, char const * last) : std::string(first, last) {}
    KDRString(KDRString const &) = default;
    KDRString(KDRString &&) = default;
    KDRString & operator=(KDRString const &) = default;
    KDRString & operator=(KDRString &&) = default;
    ~KDRString();

    /// True exactly when this is the very object behind `m_null`, by address: a copy of it, a
    /// string with the same text and an empty string all give false.
    bool isNull() const { return this == &m_null; }

    /// The process-wide null string, built while the library loads and destroyed at unload.
    /// Known by its address only; its text means nothing.
    static KDRString const & m_null;
};

/// Formatted print on zero-terminated 16-bit text, without a size limit: the caller guarantees the
/// room. Flags `- + space # 0`, width and precision (numbers or `*`), length modifiers
/// `hh h l ll j z t L`, and the conversions `d i u x X o c s f F e E g G p %`. `%s` and `%c` take
/// 16-bit text (an `unsigned short *`, an `unsigned short` passed as int); `%hs` and `%hc` take
/// 8-bit text. `%s` of a null pointer prints "(null)"; `%p` prints "0x" and the lowercase hex
/// digits of the address. An unknown conversion is copied as it stands. Returns the number of
/// characters written, the terminator not counted, and writes nothing past that terminator;
/// -1, with nothing written, when `buffer` or `format` is null.
KDRCORE_API int swprintf(unsigned short * buffer, unsigned short const * format, ...);

/// `value` as an unsigned 32-bit number, bit for bit; no check is made.
KDRCORE_API unsigned int KDRCheck64bDataLoss(int value);
/// `value` unchanged; no check is made.
KDRCORE_API unsigned int KDRCheck64bDataLoss(unsigned int value);

/// Exchanges the two pointers; the doubles they point to are not touched.
KDRCORE_API void swapPDouble(double *& first, double *& second);

#endif // KDRCORE_RUNTIME_KDRSTRING_H
