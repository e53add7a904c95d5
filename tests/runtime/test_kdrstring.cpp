// Tests of KDRString, the 16-bit swprintf and the small text helpers.
#include "Text16Helpers.h"

#include "kdrcore/runtime/KDRString.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr unsigned short kSentinel = 0xBEEF;

struct Formatted {
    int count;
    std::string text;                // the first `count` units, narrowed
    std::vector<unsigned short> raw; // the first `count` units as written
};

// Runs swprintf into a sentinel-filled buffer and checks the contract on every call: the count
// equals the position of the terminator, and no unit behind the terminator was touched.
template <class... Args> Formatted format16(const std::string & format, Args... args) {
    std::vector<unsigned short> const f = text16::make(format);
    std::vector<unsigned short> buffer(8192, kSentinel);
    int const n = swprintf(buffer.data(), f.data(), args...);
    Formatted out{n, "", {}};
    EXPECT_GE(n, 0) << format;
    if (n < 0 || n >= static_cast<int>(buffer.size()) - 1)
        return out;
    EXPECT_EQ(buffer[static_cast<std::size_t>(n)], 0) << "terminator of " << format;
    for (std::size_t i = static_cast<std::size_t>(n) + 1; i < buffer.size(); ++i) {
        if (buffer[i] != kSentinel) {
            ADD_FAILURE() << "unit " << i << " written behind the terminator of " << format;
            break;
        }
    }
    out.text = text16::narrow(buffer.data(), static_cast<std::size_t>(n));
    out.raw.assign(buffer.begin(), buffer.begin() + n);
    return out;
}

} // namespace

TEST(KDRString, NullObjectIsKnownByAddressOnly) {
    EXPECT_TRUE(KDRString::m_null.isNull());
    EXPECT_FALSE(KDRString().isNull());
    KDRString const copy(KDRString::m_null);
    EXPECT_EQ(copy, KDRString::m_null); // same text, another object
    EXPECT_FALSE(copy.isNull());
    EXPECT_EQ(KDRString(3, 'x'), "xxx");
    EXPECT_EQ(KDRString(std::string("hello"), 1, -1), "ello"); // a negative count takes the rest
}

TEST(TextHelpers, CheckDataLossAndSwapPointers) {
    EXPECT_EQ(KDRCheck64bDataLoss(-1), 0xFFFFFFFFu);
    EXPECT_EQ(KDRCheck64bDataLoss(INT_MIN), 0x80000000u);
    double a = 1.0, b = 2.0;
    double *p = &a, *q = &b;
    swapPDouble(p, q);
    EXPECT_TRUE(p == &b && q == &a);
    swapPDouble(p, p);
    EXPECT_EQ(p, &b);
}

TEST(Swprintf, EmptyFormatPlainTextAndPercent) {
    Formatted const empty = format16("");
    EXPECT_EQ(empty.count, 0);
    Formatted const plain = format16("100%% sure");
    EXPECT_EQ(plain.count, 9);
    EXPECT_EQ(plain.text, "100% sure");
    // A directive the formatter does not know, and a lone '%' at the end, stand as written.
    EXPECT_EQ(format16("%k and %").text, "%k and %");
    EXPECT_EQ(format16("%n", 0).text, "%n"); // never writes through an argument
    // Non-ASCII units of the format pass through unchanged.
    std::vector<unsigned short> const f = {0x263A, '%', 'd', 0};
    unsigned short buffer[4];
    EXPECT_EQ(swprintf(buffer, f.data(), 5), 2);
    EXPECT_TRUE(buffer[0] == 0x263A && buffer[1] == '5' && buffer[2] == 0);
    EXPECT_EQ(swprintf(nullptr, f.data()), -1);
}

TEST(Swprintf, IntegersWithFlagsWidthPrecisionAndLengths) {
    EXPECT_EQ(format16("%d|%i|%u|%x|%X|%o", -42, 7, 4294967295u, 255, 255, 8).text,
              "-42|7|4294967295|ff|FF|10");
    EXPECT_EQ(
        format16("[%5d][%-5d][%05d][%+d][% d][%.3d][%#x][%#o]", 42, 42, 42, 42, 42, 7, 255, 8).text,
        "[   42][42   ][00042][+42][ 42][007][0xff][010]");
    // '*' takes the width from the arguments; a negative one means '-' and its magnitude.
    EXPECT_EQ(format16("[%*d][%-*d][%*d]", 4, 7, 3, 7, -3, 7).text, "[   7][7  ][7  ]");
    // Each length modifier reads an argument of its own type and narrows as printf does:
    // (signed char)300 = 44, (short)70000 = 4464, (unsigned char)257 = 1.
    EXPECT_EQ(format16("%hhd %hd %ld %lld %zu %hhu %llx", 300, 70000, -5L, -9000000000LL,
                       std::size_t{12}, 257, 0x123456789ULL)
                  .text,
              "44 4464 -5 -9000000000 12 1 123456789");
}

TEST(Swprintf, FloatingPointConversions) {
    EXPECT_EQ(format16("%f|%.2f|%8.3f|%-8.1f|%+.0f", 1.5, 2.3456, 3.14159, 2.25, 2.0).text,
              "1.500000|2.35|   3.142|2.2     |+2");
    EXPECT_EQ(format16("%e|%.1E|%g|%g|%G|%g", 1234.5, 0.00025, 0.0001, 1e-5, 1e20, 1e6).text,
              "1.234500e+03|2.5E-04|0.0001|1e-05|1E+20|1e+06");
    EXPECT_EQ(format16("%#.0f|%#g|%F|%f", 3.0, 1.5, HUGE_VAL, -HUGE_VAL).text,
              "3.|1.50000|INF|-inf");
    // '*' precision; a negative one counts as none given (six decimals).
    EXPECT_EQ(format16("%.*f|%.*f", 2, 3.14159, -1, 1.5).text, "3.14|1.500000");
    // 1e300 in fixed notation with 300 decimals: far longer than any small local buffer.
    char expected[1024];
    int const n = std::snprintf(expected, sizeof expected, "%.300f", 1e300);
    Formatted const big = format16("%.300f", 1e300);
    EXPECT_EQ(big.count, n);
    EXPECT_EQ(big.text, expected);
}

TEST(Swprintf, TextAndCharactersAreSixteenBit) {
    std::vector<unsigned short> const abc = text16::make("abc");
    std::vector<unsigned short> const smile = {0x263A, 'x', 0};
    EXPECT_EQ(format16("%s|%6s|%-6s|%.2s|%.0s|", abc.data(), abc.data(), abc.data(), abc.data(),
                       abc.data())
                  .text,
              "abc|   abc|abc   |ab||");
    Formatted const wide = format16("<%s%c%3c>", smile.data(), 0x2603, 'q');
    std::vector<unsigned short> const expectedWide = {'<', 0x263A, 'x', 0x2603, ' ', ' ', 'q', '>'};
    EXPECT_EQ(wide.raw, expectedWide);
    // 'h' selects 8-bit text and characters.
    EXPECT_EQ(format16("%hs-%hc-%-3hc|", "narrow", 'n', 'm').text, "narrow-n-m  |");
    // Precision bounds the reading: the text need not be terminated within it.
    unsigned short const unterminated[2] = {'o', 'k'};
    EXPECT_EQ(format16("%.2s", unterminated).text, "ok");
    EXPECT_EQ(format16("%s", static_cast<const unsigned short *>(nullptr)).text, "(null)");
}

TEST(Swprintf, PointersInLowercaseHex) {
    int object = 0;
    char expected[64];
    std::snprintf(expected, sizeof expected, "0x%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&object)));
    EXPECT_EQ(format16("%p", static_cast<void *>(&object)).text, expected);
    EXPECT_EQ(format16("[%5p][%-5p]", nullptr, nullptr).text, "[  0x0][0x0  ]");
}
