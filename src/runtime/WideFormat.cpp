// WideFormat.cpp - formatted print on 16-bit text
//
// The directives are parsed here; numbers are rendered by the C library's snprintf from a narrow
// directive rebuilt with the same flags, so that their digits, rounding and flags are exactly
// those of printf. Text and characters are copied here, as 16-bit units.
#include "WideFormat.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>

namespace kdrcore::detail {

namespace {

// The output: keeps `limit` units at most and drops the rest.
struct Sink {
    unsigned short * buffer;
    std::size_t limit; // room - 1: the terminator always has its place
    std::size_t count;

    void put(unsigned short c) {
        if (count < limit)
            buffer[count++] = c;
    }
    void put(unsigned short c, std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            put(c);
    }
};

struct Directive {
    bool left = false;  // '-'
    bool plus = false;  // '+'
    bool space = false; // ' '
    bool alt = false;   // '#'
    bool zero = false;  // '0'
    int width = -1;     // -1: none
    int precision = -1; // -1: none
    char length[3] = {0, 0, 0};
};

// The narrow directive for snprintf: flags, "*" and ".*" when given, `length`, `conv`.
std::string narrowSpec(Directive const & d, char const * length, char conv) {
    std::string spec = "%";
    if (d.left)
        spec += '-';
    if (d.plus)
        spec += '+';
    if (d.space)
        spec += ' ';
    if (d.alt)
        spec += '#';
    if (d.zero)
        spec += '0';
    spec += "*.*";
    spec += length;
    spec += conv;
    return spec;
}

// The narrow directive is not a literal, but it is rebuilt here from the parsed flags, "*.*", a
// length from a fixed set and a numeric conversion, and `value` has the type that length reads.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
// Renders one number through snprintf and copies it out. The width and precision always go as
// "*" arguments; a negative precision means "none" to printf, as -1 means here.
template <class T>
void putNumber(Sink & out, Directive const & d, char const * length, char conv, T value) {
    std::string const spec = narrowSpec(d, length, conv);
    int const width = d.width < 0 ? 0 : d.width;
    char local[128];
    int const n = std::snprintf(local, sizeof local, spec.c_str(), width, d.precision, value);
    if (n < 0)
        return;
    std::string large;
    char const * text = local;
    if (static_cast<std::size_t>(n) >= sizeof local) {
        large.resize(static_cast<std::size_t>(n) + 1);
        std::snprintf(large.data(), large.size(), spec.c_str(), width, d.precision, value);
        text = large.data();
    }
    for (int i = 0; i < n; ++i)
        out.put(static_cast<unsigned char>(text[i]));
}
#pragma GCC diagnostic pop

// Copies `count` units of text with the padding of `d` (spaces; '0' is not used for text).
template <class C>
void putText(Sink & out, Directive const & d, const C * text, std::size_t count) {
    std::size_t const width = d.width < 0 ? 0 : static_cast<std::size_t>(d.width);
    std::size_t const pad = width > count ? width - count : 0;
    if (!d.left)
        out.put(' ', pad);
    for (std::size_t i = 0; i < count; ++i)
        out.put(static_cast<unsigned short>(static_cast<std::make_unsigned_t<C>>(text[i])));
    if (d.left)
        out.put(' ', pad);
}

// Length of zero-terminated text, reading no further than `max` units.
template <class C> std::size_t boundedLength(const C * text, int max) {
    std::size_t n = 0;
    while ((max < 0 || n < static_cast<std::size_t>(max)) && text[n] != 0)
        ++n;
    return n;
}

bool isDigit(unsigned short c) {
    return c >= '0' && c <= '9';
}

// Reads a decimal number; saturates at INT_MAX.
int readNumber(unsigned short const *& p) {
    int value = 0;
    for (; isDigit(*p); ++p) {
        int const digit = *p - '0';
        value = value > (INT_MAX - digit) / 10 ? INT_MAX : value * 10 + digit;
    }
    return value;
}

} // namespace

int vformatWide(unsigned short * buffer, std::size_t room, unsigned short const * format,
                std::va_list args) {
    Sink out{buffer, room - 1, 0};
    unsigned short const * p = format;
    while (*p != 0) {
        if (*p != '%') {
            out.put(*p++);
            continue;
        }
        unsigned short const * const start = p++;
        Directive d;
        for (bool more = true; more;) {
            switch (*p) {
            case '-':
                d.left = true;
                break;
            case '+':
                d.plus = true;
                break;
            case ' ':
                d.space = true;
                break;
            case '#':
                d.alt = true;
                break;
            case '0':
                d.zero = true;
                break;
            default:
                more = false;
                continue;
            }
            ++p;
        }
        if (*p == '*') {
            ++p;
            int const w = va_arg(args, int);
            if (w < 0) { // a negative width is the '-' flag and its magnitude
                d.left = true;
                d.width = w == INT_MIN ? INT_MAX : -w;
            } else {
                d.width = w;
            }
        } else if (isDigit(*p)) {
            d.width = readNumber(p);
        }
        if (*p == '.') {
            ++p;
            if (*p == '*') {
                ++p;
                int const prec = va_arg(args, int);
                d.precision = prec < 0 ? -1 : prec; // negative: as if none was given
            } else {
                d.precision = readNumber(p);
            }
        }
        if (*p == 'h' || *p == 'l') {
            d.length[0] = static_cast<char>(*p++);
            if (*p == d.length[0])
                d.length[1] = static_cast<char>(*p++);
        } else if (*p == 'j' || *p == 'z' || *p == 't' || *p == 'L') {
            d.length[0] = static_cast<char>(*p++);
        }
        std::string const length = d.length;
        unsigned short const conv = *p;
        if (conv != 0)
            ++p;

        switch (conv) {
        case 'd':
        case 'i': {
            long long v;
            if (length == "hh")
                v = static_cast<signed char>(va_arg(args, int));
            else if (length == "h")
                v = static_cast<short>(va_arg(args, int));
            else if (length == "l")
                v = va_arg(args, long);
            else if (length == "ll")
                v = va_arg(args, long long);
            else if (length == "j")
                v = static_cast<long long>(va_arg(args, std::intmax_t));
            else if (length == "z")
                v = static_cast<long long>(va_arg(args, std::make_signed_t<std::size_t>));
            else if (length == "t")
                v = static_cast<long long>(va_arg(args, std::ptrdiff_t));
            else
                v = va_arg(args, int);
            putNumber(out, d, "ll", static_cast<char>(conv), v);
            break;
        }
        case 'u':
        case 'x':
        case 'X':
        case 'o': {
            unsigned long long v;
            if (length == "hh")
                v = static_cast<unsigned char>(va_arg(args, unsigned int));
            else if (length == "h")
                v = static_cast<unsigned short>(va_arg(args, unsigned int));
            else if (length == "l")
                v = va_arg(args, unsigned long);
            else if (length == "ll")
                v = va_arg(args, unsigned long long);
            else if (length == "j")
                v = static_cast<unsigned long long>(va_arg(args, std::uintmax_t));
            else if (length == "z")
                v = static_cast<unsigned long long>(va_arg(args, std::size_t));
            else if (length == "t")
                v = static_cast<unsigned long long>(
                    va_arg(args, std::make_unsigned_t<std::ptrdiff_t>));
            else
                v = va_arg(args, unsigned int);
            putNumber(out, d, "ll", static_cast<char>(conv), v);
            break;
        }
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
            if (length == "L")
                putNumber(out, d, "L", static_cast<char>(conv), va_arg(args, long double));
            else
                putNumber(out, d, "", static_cast<char>(conv), va_arg(args, double));
            break;
        case 'c':
            if (length == "h") {
                char const c = static_cast<char>(va_arg(args, int));
                putText(out, d, &c, 1);
            } else {
                unsigned short const c = static_cast<unsigned short>(va_arg(args, int));
                putText(out, d, &c, 1);
            }
            break;
        case 's':
            if (length == "h") {
                char const * text = va_arg(args, char const *);
                if (text == nullptr)
                    text = "(null)";
                putText(out, d, text, boundedLength(text, d.precision));
            } else {
                static unsigned short const nullText[] = {'(', 'n', 'u', 'l', 'l', ')', 0};
                unsigned short const * text = va_arg(args, unsigned short const *);
                if (text == nullptr)
                    text = nullText;
                putText(out, d, text, boundedLength(text, d.precision));
            }
            break;
        case 'p': {
            auto const address = reinterpret_cast<std::uintptr_t>(va_arg(args, void *));
            char digits[2 + 2 * sizeof(std::uintptr_t) + 1];
            int const n = std::snprintf(digits, sizeof digits, "0x%llx",
                                        static_cast<unsigned long long>(address));
            putText(out, d, digits, static_cast<std::size_t>(n));
            break;
        }
        case '%':
            out.put('%');
            break;
        default: // unknown or missing conversion: the directive stands as it was written
            for (unsigned short const * q = start; q < p; ++q)
                out.put(*q);
            break;
        }
    }
    buffer[out.count] = 0;
    return out.count > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(out.count);
}

int formatWide(unsigned short * buffer, std::size_t room, unsigned short const * format, ...) {
    std::va_list args;
    va_start(args, format);
    int const n = vformatWide(buffer, room, format, args);
    va_end(args);
    return n;
}

} // namespace kdrcore::detail
