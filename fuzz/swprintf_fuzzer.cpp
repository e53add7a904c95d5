// Fuzz target: the 16-bit swprintf against the C library's narrow snprintf.
//
// The format is built from the input: literal 16-bit text (any unit but 0 and '%') and up to four
// directives with flags, a width and a precision (numbers or '*'), a length modifier valid for
// the conversion, and one of d i u x X o c s f F e E g G %. Each directive is also printed alone
// by snprintf with the same arguments; the 16-bit result must be the literal text and those
// narrow results, widened unit by unit. %s and %c take 16-bit text by design (%hs and %hc 8-bit
// text): the 16-bit text here stays in the ASCII range, where the narrow directive prints the
// same units, and their flags are the ones C defines for them ('-'). What differs by design
// (text beyond ASCII, %p, a null %s, unknown directives) is in the unit test. The buffer is filled
// with a sentinel: nothing may be written behind the terminator.
#include "Fuzz.h"

#include "kdrcore/runtime/KDRString.h"

#include <cstdint>
#include <cstdio>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <string>
#include <vector>

// The directives printed by snprintf are built at run time, as the formatter's own are.
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
// g++ 12 at -O3 reports impossible overlaps in std::string assignments (its bug 105329).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wrestrict"
#endif

namespace {

constexpr unsigned short SENTINEL = 0xA5A5;
constexpr std::size_t ROOM = 16384; // more than any format built here can produce

using Text16 = std::basic_string<unsigned short>;

// An argument: its class and value; `narrow` is what snprintf gets for a %s argument.
enum class Arg { Int, Long, Double, LongDouble, Pointer };
struct Value {
    Arg kind;
    long long i = 0;
    double d = 0.0;
    void const * p = nullptr;
    void const * narrow = nullptr;
};

// Passes each argument with the type of its class, then calls `print` with them all (MAX at
// most).
template <std::size_t MAX, class Print, class... A>
int call(Print print, std::vector<Value> const & args, std::size_t next, bool narrow, A... passed) {
    if constexpr (sizeof...(A) >= MAX) {
        return print(passed...);
    } else {
        if (next == args.size())
            return print(passed...);
        Value const & v = args[next];
        switch (v.kind) {
        case Arg::Int:
            return call<MAX>(print, args, next + 1, narrow, passed..., static_cast<int>(v.i));
        case Arg::Long:
            return call<MAX>(print, args, next + 1, narrow, passed..., v.i);
        case Arg::Double:
            return call<MAX>(print, args, next + 1, narrow, passed..., v.d);
        case Arg::LongDouble:
            return call<MAX>(print, args, next + 1, narrow, passed...,
                             static_cast<long double>(v.d));
        default:
            return call<MAX>(print, args, next + 1, narrow, passed..., narrow ? v.narrow : v.p);
        }
    }
}

double consumeDouble(FuzzedDataProvider & in) {
    static double const special[] = {0.0,   -0.0,    1.0,      -1.5, 0.1, 123456789.0,
                                     1e300, -1e-300, 4.9e-324, 1e15, 9.5, -0.5};
    switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0:
        return fuzz::doubleOf(in.ConsumeIntegral<std::uint64_t>()); // NaN and infinities included
    case 1:
        return special[in.ConsumeIntegralInRange<std::size_t>(0, std::size(special) - 1)];
    default:
        return static_cast<double>(in.ConsumeIntegralInRange(-100000, 100000)) / 64.0;
    }
}

long long consumeInteger(FuzzedDataProvider & in) {
    switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0:
        return in.ConsumeIntegral<long long>();
    case 1:
        return in.ConsumeIntegral<int>();
    default:
        return in.ConsumeIntegralInRange(-300, 300);
    }
}

struct Directive {
    std::string spelling;      // as it stands in the 16-bit format
    std::string narrow;        // the same directive for snprintf
    std::vector<Value> values; // the '*' arguments, then the converted one (none for %%)
};

// Strings the %s directives point at, kept alive for the calls.
struct Pools {
    std::vector<Text16> wide;
    std::vector<std::string> narrow;
};

Directive consumeDirective(FuzzedDataProvider & in, Pools & pools) {
    static char const convs[] = "diuxXocsfFeEgG%";
    char const conversion = convs[in.ConsumeIntegralInRange<std::size_t>(0, sizeof convs - 2)];
    Directive d;
    if (conversion == '%') {
        d.spelling = d.narrow = "%%";
        return d;
    }
    bool const text = conversion == 'c' || conversion == 's';
    std::string s = "%";
    for (int n = in.ConsumeIntegralInRange(0, 3); n > 0; --n)
        s += text ? '-' : "-+ #0"[in.ConsumeIntegralInRange(0, 4)];
    switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0:
        break;
    case 1:
        s += std::to_string(in.ConsumeIntegralInRange(0, 80));
        break;
    default:
        s += '*';
        d.values.push_back({Arg::Int, in.ConsumeIntegralInRange(-80, 80)});
        break;
    }
    switch (conversion == 'c' ? 0 : in.ConsumeIntegralInRange(0, 3)) {
    case 0:
        break;
    case 1: // up to 320: 1e300 in fixed notation then runs to some 620 characters
        s += "." + std::to_string(in.ConsumeIntegralInRange(0, 320));
        break;
    case 2:
        s += '.'; // "." alone: precision 0
        break;
    default:
        s += ".*";
        d.values.push_back({Arg::Int, in.ConsumeIntegralInRange(-5, 80)});
        break;
    }
    Value v{Arg::Int};
    std::string length;
    if (text) {
        // 'h': 8-bit text, any unit; none: 16-bit text, ASCII here; the narrow directive has
        // no 'h' and gets the same units as 8-bit text.
        bool const eight = in.ConsumeBool();
        d.narrow = s + conversion;
        length = eight ? "h" : "";
        int const top = eight ? 255 : 127;
        if (conversion == 'c') {
            v.i = in.ConsumeIntegralInRange(1, top);
        } else {
            std::string t;
            for (int n = in.ConsumeIntegralInRange(0, 20); n > 0; --n)
                t.push_back(static_cast<char>(in.ConsumeIntegralInRange(1, top)));
            pools.narrow.push_back(t);
            pools.wide.push_back(Text16(t.begin(), t.end()));
            v.kind = Arg::Pointer;
            v.narrow = pools.narrow.back().c_str();
            v.p = eight ? v.narrow : pools.wide.back().c_str();
        }
    } else if (conversion == 'f' || conversion == 'F' || conversion == 'e' || conversion == 'E' ||
               conversion == 'g' || conversion == 'G') {
        int const l = in.ConsumeIntegralInRange(0, 2);
        length = l == 0 ? "" : l == 1 ? "l" : "L";
        v.kind = l == 2 ? Arg::LongDouble : Arg::Double;
        v.d = consumeDouble(in);
    } else {
        static char const * lengths[] = {"", "hh", "h", "l", "ll", "j", "z", "t"};
        length = lengths[in.ConsumeIntegralInRange(0, 7)];
        v.kind = length.empty() || length[0] == 'h' ? Arg::Int : Arg::Long;
        v.i = consumeInteger(in);
    }
    d.spelling = s + length + conversion;
    if (d.narrow.empty())
        d.narrow = d.spelling;
    d.values.push_back(v);
    return d;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    Pools pools;
    pools.wide.reserve(8); // the directives point into the pools: they must not move
    pools.narrow.reserve(8);

    Text16 format, expected;
    std::vector<Value> args;
    int const directives = in.ConsumeIntegralInRange(0, 4);
    for (int k = 0; k <= directives; ++k) {
        for (int n = in.ConsumeIntegralInRange(0, 6); n > 0; --n) {
            unsigned short c = in.ConsumeIntegral<unsigned short>();
            if (c == 0 || c == '%')
                c = 'a';
            format.push_back(c);
            expected.push_back(c);
        }
        if (k == directives)
            break;
        Directive const d = consumeDirective(in, pools);
        if (args.size() + d.values.size() > 6)
            break; // six arguments at most are passed
        format.append(d.spelling.begin(), d.spelling.end());
        args.insert(args.end(), d.values.begin(), d.values.end());
        std::vector<char> narrow(ROOM);
        int const n = call<3>(
            [&](auto... a) { return std::snprintf(narrow.data(), ROOM, d.narrow.c_str(), a...); },
            d.values, 0, true);
        FUZZ_CHECK(n >= 0 && static_cast<std::size_t>(n) < ROOM, "snprintf(%s) gave %d",
                   d.narrow.c_str(), n);
        for (int i = 0; i < n; ++i)
            expected.push_back(static_cast<unsigned char>(narrow[static_cast<std::size_t>(i)]));
    }

    std::vector<unsigned short> buffer(ROOM, SENTINEL);
    int const n = call<6>([&](auto... a) { return swprintf(buffer.data(), format.c_str(), a...); },
                          args, 0, false);
    FUZZ_CHECK(n == static_cast<int>(expected.size()), "swprintf returned %d, expected %zu", n,
               expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        FUZZ_CHECK(buffer[i] == expected[i], "unit %zu is %u, expected %u", i, buffer[i],
                   expected[i]);
    FUZZ_CHECK(buffer[expected.size()] == 0, "no terminator at %zu", expected.size());
    for (std::size_t i = expected.size() + 1; i < ROOM; ++i)
        FUZZ_CHECK(buffer[i] == SENTINEL, "swprintf returned %d but wrote unit %zu", n, i);
    return 0;
}
