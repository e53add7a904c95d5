// Tests of KDRString, the 16-bit swprintf and the small text helpers.
#include "kdrcore/runtime/KDRString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr unsigned short kSentinel = 0xBEEF;

// Runs swprintf into a sentinel-filled buffer and checks the contract on every call: the count
// is the position of the terminator, and no unit behind the terminator was touched.
template <class... Args> std::u16string format16(const std::u16string & format, Args... args) {
    std::vector<unsigned short> f(format.begin(), format.end()), buffer(8192, kSentinel);
    f.push_back(0);
    const int n = swprintf(buffer.data(), f.data(), args...);
    if (n < 0 || n >= 8191) {
        ADD_FAILURE() << "count " << n;
        return u"";
    }
    EXPECT_EQ(buffer[static_cast<std::size_t>(n)], 0) << "terminator";
    EXPECT_EQ(std::count(buffer.begin() + n + 1, buffer.end(), kSentinel), 8191 - n)
        << "units written behind the terminator";
    return std::u16string(buffer.begin(), buffer.begin() + n);
}

std::u16string widen(const std::string & s) {
    return std::u16string(s.begin(), s.end());
}

} // namespace

TEST(KDRString, NullObjectIsKnownByAddressOnlyAndSmallHelpers) {
    EXPECT_TRUE(KDRString::m_null.isNull());
    EXPECT_FALSE(KDRString().isNull());
    const KDRString copy(KDRString::m_null);
    EXPECT_TRUE(copy == KDRString::m_null && !copy.isNull()); // same text, another object
    EXPECT_EQ(KDRString(3, 'x'), "xxx");
    EXPECT_EQ(KDRString(std::string("hello"), 1, -1), "ello"); // a negative count takes the rest

    EXPECT_EQ(KDRCheck64bDataLoss(-1), 0xFFFFFFFFu);
    EXPECT_EQ(KDRCheck64bDataLoss(INT_MIN), 0x80000000u);
    double a = 1.0, b = 2.0;
    double *p = &a, *q = &b;
    swapPDouble(p, q);
    EXPECT_TRUE(p == &b && q == &a);
    swapPDouble(p, p);
    EXPECT_EQ(p, &b);
}

TEST(Swprintf, ConversionsOnSixteenBitText) {
    EXPECT_EQ(format16(u""), u"");
    // '%%'; an unknown directive, a lone '%' at the end and '%n' stand as written.
    EXPECT_EQ(format16(u"100%% sure|%k|%n|%", 0), u"100% sure|%k|%n|%");
    EXPECT_EQ(format16(u"[%5d][%-5i][%05u][%+d][% d][%.3d][%#x][%#X][%#o]|%d|%u|%o", 42, 42, 42u,
                       42, 42, 7, 255, 255, 8, -42, 4294967295u, 8),
              u"[   42][42   ][00042][+42][ 42][007][0xff][0XFF][010]|-42|4294967295|10");
    // '*' takes the width from the arguments; a negative one means '-' and its magnitude.
    EXPECT_EQ(format16(u"[%*d][%-*d][%*d]", 4, 7, 3, 7, -3, 7), u"[   7][7  ][7  ]");
    // Each length modifier reads an argument of its own type and narrows as printf does.
    EXPECT_EQ(format16(u"%hhd %hd %ld %lld %zu %hhu %llx", 300, 70000, -5L, -9000000000LL,
                       std::size_t{12}, 257, 0x123456789ULL),
              u"44 4464 -5 -9000000000 12 1 123456789");
    // Numbers go out with their flags, width and precision; a negative '*' precision is none.
    EXPECT_EQ(format16(u"%f|%8.3f|%-8.1f|%+.0f|%.1E|%g|%G|%#g|%F|%.*f|%.*f", 1.5, 3.14159, 2.25,
                       2.0, 0.00025, 1e-5, 1e20, 1.5, -HUGE_VAL, 2, 3.14159, -1, 1.5),
              u"1.500000|   3.142|2.2     |+2|2.5E-04|1e-05|1E+20|1.50000|-INF|3.14|1.500000");
    // 1e300 in fixed notation with 300 decimals: far longer than any small local buffer.
    char big[1024];
    std::snprintf(big, sizeof big, "%.300f", 1e300);
    EXPECT_EQ(format16(u"%.300f", 1e300), widen(big));

    // %s and %c take 16-bit text, 'h' selects 8-bit; a precision bounds the reading, so the text
    // need not be terminated within it.
    const unsigned short abc[4] = {'a', 'b', 'c', 0}, smile[3] = {0x263A, 'x', 0},
                         ok[2] = {'o', 'k'};
    EXPECT_EQ(format16(u"%s|%6s|%-6s|%.2s|%.0s|", abc, abc, abc, abc, abc),
              u"abc|   abc|abc   |ab||");
    EXPECT_EQ(format16(u"\u2603<%s%c%3c>", smile, 0x2603, 'q'), u"\u2603<\u263Ax\u2603  q>");
    EXPECT_EQ(format16(u"%hs-%hc-%-3hc|%.2s", "narrow", 'n', 'm', ok), u"narrow-n-m  |ok");
    EXPECT_EQ(format16(u"%s", static_cast<const unsigned short *>(nullptr)), u"(null)");
    int object = 0;
    std::snprintf(big, sizeof big, "0x%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&object)));
    EXPECT_EQ(format16(u"%p", static_cast<void *>(&object)), widen(big));
    EXPECT_EQ(format16(u"[%5p][%-5p]", nullptr, nullptr), u"[  0x0][0x0  ]");
    EXPECT_EQ(swprintf(nullptr, abc), -1);
}
