// Fuzz target: swprintf on 16-bit text, on formats and arguments within its documented
// conversions.
//
// The format is built from the input: literal 16-bit text (any unit but 0 and '%') and up to four
// directives with any flags, a width and a precision (numbers or '*'), a length modifier valid for
// the conversion, and one of d i u x X o c s f F e E g G p %. The arguments have the types the
// directives read. The buffer is filled with a sentinel before the call; afterwards the result
// must be the position of the terminator, nothing after it may have been written, and the
// literal text of the format must appear in order in the output.
#include "FuzzCheck.h"

#include "kdrcore/runtime/KDRString.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <string>
#include <vector>

// g++ 12 at -O3 reports impossible overlaps in std::string assignments (its bug 105329).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wrestrict"
#endif

namespace {

constexpr unsigned short SENTINEL = 0xA5A5;
constexpr std::size_t ROOM = 16384; // more than any format built here can produce

using Text16 = std::basic_string<unsigned short>;

// The argument classes a directive reads, in the order it reads them.
enum class Arg { Int, Long, Double, LongDouble, Pointer };

struct Value {
    Arg kind;
    long long i = 0;
    double d = 0.0;
    long double ld = 0.0L;
    const void * p = nullptr;
};

struct Directive {
    std::string flags;
    int width = -1; // -1: none
    bool widthStar = false;
    int precision = -2; // -2: none, -1 ... : given
    bool precisionStar = false;
    std::string length;
    char conversion = 'd';
    std::vector<Value> values; // the '*' arguments, then the converted one (none for %%)
};

// Strings the %s directives point at, kept alive for the call.
struct Pools {
    std::vector<Text16> wide;
    std::vector<std::string> narrow;
};

// Each argument is passed with a type of its class, recursively, then the call is made.
template <class... A>
int call(unsigned short * buffer, const unsigned short * format, const std::vector<Value> & args,
         std::size_t next, A... passed) {
    if constexpr (sizeof...(A) >= 6) {
        (void)args;
        (void)next;
        return swprintf(buffer, format, passed...);
    } else {
        if (next == args.size())
            return swprintf(buffer, format, passed...);
        const Value & v = args[next];
        switch (v.kind) {
        case Arg::Int:
            return call(buffer, format, args, next + 1, passed..., static_cast<int>(v.i));
        case Arg::Long:
            return call(buffer, format, args, next + 1, passed..., v.i);
        case Arg::Double:
            return call(buffer, format, args, next + 1, passed..., v.d);
        case Arg::LongDouble:
            return call(buffer, format, args, next + 1, passed..., v.ld);
        default:
            return call(buffer, format, args, next + 1, passed..., v.p);
        }
    }
}

double consumeDouble(FuzzedDataProvider & in) {
    static const double special[] = {0.0,   -0.0,    1.0,      -1.5, 0.1, 123456789.0,
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

Directive consumeDirective(FuzzedDataProvider & in, Pools & pools) {
    Directive d;
    static const char convs[] = "diuxXocsfFeEgGp%";
    d.conversion = convs[in.ConsumeIntegralInRange<std::size_t>(0, sizeof convs - 2)];
    if (d.conversion == '%')
        return d;
    for (int n = in.ConsumeIntegralInRange(0, 3); n > 0; --n)
        d.flags += "-+ #0"[in.ConsumeIntegralInRange(0, 4)];
    switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0:
        break;
    case 1:
        d.width = in.ConsumeIntegralInRange(0, 80);
        break;
    default:
        d.widthStar = true;
        d.values.push_back({Arg::Int, in.ConsumeIntegralInRange(-80, 80)});
        break;
    }
    switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
        break;
    case 1:
        d.precision = in.ConsumeIntegralInRange(0, 80);
        break;
    case 2:
        d.precision = -1; // "." alone: precision 0
        break;
    default:
        d.precisionStar = true;
        d.values.push_back({Arg::Int, in.ConsumeIntegralInRange(-5, 80)});
        break;
    }
    Value v{Arg::Int};
    switch (d.conversion) {
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o': {
        static const char * lengths[] = {"", "hh", "h", "l", "ll", "j", "z", "t"};
        d.length = lengths[in.ConsumeIntegralInRange(0, 7)];
        v.kind = d.length.empty() || d.length[0] == 'h' ? Arg::Int : Arg::Long;
        v.i = consumeInteger(in);
        if (v.kind == Arg::Int)
            v.i = static_cast<int>(v.i);
        break;
    }
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G': {
        const int l = in.ConsumeIntegralInRange(0, 2);
        d.length = l == 0 ? "" : l == 1 ? "l" : "L";
        const double x = consumeDouble(in);
        // %f of a huge value prints all its digits: keep the text within the buffer.
        if (d.length == "L") {
            v.kind = Arg::LongDouble;
            v.ld = static_cast<long double>(x);
        } else {
            v.kind = Arg::Double;
            v.d = x;
        }
        break;
    }
    case 'c':
        d.length = in.ConsumeBool() ? "h" : "";
        v.i = d.length.empty() ? in.ConsumeIntegralInRange(1, 0xFFFF)
                               : in.ConsumeIntegralInRange(1, 255);
        break;
    case 's': {
        d.length = in.ConsumeBool() ? "h" : "";
        v.kind = Arg::Pointer;
        const bool null = in.ConsumeIntegralInRange(0, 7) == 0;
        if (!null && d.length.empty()) {
            Text16 t;
            for (int n = in.ConsumeIntegralInRange(0, 20); n > 0; --n)
                t.push_back(in.ConsumeIntegralInRange<unsigned short>(1, 0xFFFF));
            pools.wide.push_back(t);
            v.p = pools.wide.back().c_str();
        } else if (!null) {
            std::string t;
            for (int n = in.ConsumeIntegralInRange(0, 20); n > 0; --n)
                t.push_back(static_cast<char>(in.ConsumeIntegralInRange(1, 255)));
            pools.narrow.push_back(t);
            v.p = pools.narrow.back().c_str();
        }
        break;
    }
    default: // 'p'
        v.kind = Arg::Pointer;
        v.p = reinterpret_cast<const void *>(
            static_cast<std::uintptr_t>(in.ConsumeIntegral<std::uint32_t>()));
        break;
    }
    d.values.push_back(v);
    return d;
}

// The directive as it stands in the format.
std::string spelling(const Directive & d) {
    std::string s = "%" + d.flags;
    if (d.widthStar)
        s += '*';
    else if (d.width >= 0)
        s += std::to_string(d.width);
    if (d.precisionStar)
        s += ".*";
    else if (d.precision == -1)
        s += '.';
    else if (d.precision >= 0)
        s += "." + std::to_string(d.precision);
    return s + d.length + d.conversion;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    Pools pools;
    pools.wide.reserve(8); // the directives point into the pools: they must not move
    pools.narrow.reserve(8);

    Text16 format, literal; // literal: the format's text outside directives
    std::vector<Value> args;
    const int directives = in.ConsumeIntegralInRange(0, 4);
    for (int k = 0; k <= directives; ++k) {
        // Literal text: any 16-bit unit but the terminator and '%'.
        for (int n = in.ConsumeIntegralInRange(0, 6); n > 0; --n) {
            unsigned short c = in.ConsumeIntegral<unsigned short>();
            if (c == 0 || c == '%')
                c = 'a';
            format.push_back(c);
            literal.push_back(c);
        }
        if (k == directives)
            break;
        const Directive d = consumeDirective(in, pools);
        if (args.size() + d.values.size() > 6)
            break; // the caller passes six arguments at most
        for (char c : spelling(d))
            format.push_back(static_cast<unsigned char>(c));
        args.insert(args.end(), d.values.begin(), d.values.end());
    }

    std::vector<unsigned short> buffer(ROOM, SENTINEL);
    const int n = call(buffer.data(), format.c_str(), args, 0);
    FUZZ_CHECK(n >= 0 && static_cast<std::size_t>(n) < ROOM, "swprintf returned %d", n);
    FUZZ_CHECK(buffer[static_cast<std::size_t>(n)] == 0,
               "no terminator at the position %d returned", n);
    for (std::size_t i = static_cast<std::size_t>(n) + 1; i < ROOM; ++i)
        FUZZ_CHECK(buffer[i] == SENTINEL, "swprintf returned %d but wrote unit %zu", n, i);
    // The literal units come out in order (a subsequence of the output).
    std::size_t at = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(n) && at < literal.size(); ++i)
        at += buffer[i] == literal[at] ? 1 : 0;
    FUZZ_CHECK(at == literal.size(), "literal unit %zu of %zu missing from the output", at,
               literal.size());

    // Null buffer or format: -1, nothing written.
    std::vector<unsigned short> untouched(4, SENTINEL);
    FUZZ_CHECK(swprintf(nullptr, format.c_str()) == -1, "swprintf(null buffer) not -1");
    FUZZ_CHECK(swprintf(untouched.data(), nullptr) == -1 && untouched[0] == SENTINEL,
               "swprintf(null format) not -1 or wrote");
    return 0;
}
