// Helpers for tests on 16-bit text: building it from ASCII and reading it back.
#ifndef KDRCORE_TESTS_RUNTIME_TEXT16HELPERS_H
#define KDRCORE_TESTS_RUNTIME_TEXT16HELPERS_H

#include <string>
#include <vector>

namespace text16 {

// Zero-terminated 16-bit copy of `ascii`; pass `.data()` where the library takes text.
inline std::vector<unsigned short> make(const std::string & ascii) {
    std::vector<unsigned short> out(ascii.begin(), ascii.end());
    for (unsigned short & c : out)
        c = static_cast<unsigned char>(c);
    out.push_back(0);
    return out;
}

// The first `count` units of `text` as 8-bit characters; units above 255 become '?'.
inline std::string narrow(const unsigned short * text, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i)
        out += text[i] < 256 ? static_cast<char>(text[i]) : '?';
    return out;
}

// Zero-terminated 16-bit text as 8-bit characters.
inline std::string narrow(const unsigned short * text) {
    std::size_t n = 0;
    while (text[n] != 0)
        ++n;
    return narrow(text, n);
}

} // namespace text16

#endif // KDRCORE_TESTS_RUNTIME_TEXT16HELPERS_H
