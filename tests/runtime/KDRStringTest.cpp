// Tests of KDRString, the 16-bit swprintf and the small text helpers.
#include "kdrcore/runtime/KDRString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr unsigned short kSentinel = 0xBEEF;

// Runs swprintf into a sentinel-filled buffer and checks the contract on every call: the count
// is the position of the terminator, and no unit behind the terminator was touched.
template <class... Args> std::u16string format16(std::u16string const & format, Args... args) {
    std::vector<unsigned short> f(format.begin(), format.end()), buffer(8192, kSentinel);
    f.push_back(0);
    int const n = swprintf(buffer.data(), f.data(), args...);
    if (n < 0 || n >= 8191) {
        ADD_FAILURE() << "count " << n;
        return u"";
    }
    EXPECT_EQ(buffer[static_cast<std::size_t>(n)], 0) << "terminator";
    EXPECT_EQ(std::count(buffer.begin() + n + 1, buffer.end(), kSentinel), 8191 - n)
        << "units written behind the terminator";
    return std::u16string(buffer.begin(), buffer.begin() + n);
}

std::u16string widen(std::string const & s) {
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
    EXPECT_EQ(KDRString(std::string("hello"), 1, 0), "");      // a count of 0 takes nothing

    EXPECT_EQ(KDRCheck64bDataLoss(-1), 0xFFFFFFFFu);
    EXPECT_EQ(KDRCheck64bDataLoss(INT_MIN), 0x80000000u);
    double a = 1.0, b = 2.0;
    double *p = &a, *q = &b;
    swapPDouble(p, q);
    EXPECT_TRUE(p == &b && q == &a);
    swapPDouble(p, p);
    EXPECT_EQ(p, &b);
}

// Numbers, flags, widths, precisions and length modifiers are compared with the C library's
// snprintf in fuzz/swprintf_fuzzer.cpp; here is what differs from a narrow printf by design.
TEST(Swprintf, SixteenBitTextAndTheDirectivesPrintfLacks) {
    EXPECT_EQ(format16(u""), u"");
    // '%%'; an unknown directive, a lone '%' at the end and '%n' stand as written.
    EXPECT_EQ(format16(u"100%% sure|%k|%n|%", 0), u"100% sure|%k|%n|%");
    // %s and %c take 16-bit text, 'h' selects 8-bit; a precision bounds the reading, so the text
    // need not be terminated within it.
    unsigned short const abc[4] = {'a', 'b', 'c', 0}, smile[3] = {0x263A, 'x', 0},
                         ok[2] = {'o', 'k'};
    EXPECT_EQ(format16(u"%s|%6s|%-6s|%.2s|%.0s|", abc, abc, abc, abc, abc),
              u"abc|   abc|abc   |ab||");
    EXPECT_EQ(format16(u"\u2603<%s%c%3c>", smile, 0x2603, 'q'), u"\u2603<\u263Ax\u2603  q>");
    EXPECT_EQ(format16(u"%hs-%hc-%-3hc|%.2s", "narrow", 'n', 'm', ok), u"narrow-n-m  |ok");
    EXPECT_EQ(format16(u"%s", static_cast<unsigned short const *>(nullptr)), u"(null)");
    // %p: "0x" and the lowercase hex digits, also for null (where glibc prints "(nil)").
    int object = 0;
    char hex[64];
    std::snprintf(hex, sizeof hex, "0x%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&object)));
    EXPECT_EQ(format16(u"%p", static_cast<void *>(&object)), widen(hex));
    EXPECT_EQ(format16(u"[%5p][%-5p]", nullptr, nullptr), u"[  0x0][0x0  ]");
    // A null buffer or format: -1, nothing written.
    std::vector<unsigned short> untouched(2, kSentinel);
    EXPECT_EQ(swprintf(nullptr, abc), -1);
    EXPECT_EQ(swprintf(untouched.data(), nullptr), -1);
    EXPECT_EQ(untouched[0], kSentinel);
}
