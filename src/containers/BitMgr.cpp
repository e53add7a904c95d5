// BitMgr.cpp - byte tables and the wider bit queries
#include "kdrcore/containers/BitMgr.h"

#include <bit>
#include <cstdint>
#include <limits>

namespace {

// The five byte tables, built at compile time from their rules: constant data, no start-up code.
struct ByteTables {
    unsigned char first0[256];
    unsigned char first1[256];
    unsigned char last0[256];
    unsigned char last1[256];
    unsigned char numberOf1[256];
};

constexpr ByteTables makeTables() {
    ByteTables t{};
    for (int v = 0; v < 256; ++v) {
        int f0 = 8, f1 = 8, l0 = 8, l1 = 8, n = 0;
        for (int bit = 7; bit >= 0; --bit) {
            if ((v >> bit) & 1) {
                f1 = bit;
                ++n;
            } else {
                f0 = bit;
            }
        }
        for (int bit = 0; bit < 8; ++bit) {
            if ((v >> bit) & 1)
                l1 = bit;
            else
                l0 = bit;
        }
        t.first0[v] = static_cast<unsigned char>(f0);
        t.first1[v] = static_cast<unsigned char>(f1);
        t.last0[v] = static_cast<unsigned char>(l0);
        t.last1[v] = static_cast<unsigned char>(l1);
        t.numberOf1[v] = static_cast<unsigned char>(n);
    }
    return t;
}

constexpr ByteTables s_tables = makeTables();

// The wider forms give what a byte-by-byte walk over the tables gives: the first-bit queries end
// at the width, the last-bit queries at the low byte's entry, 8.
template <class W> int firstBit1(W v) {
    return v == 0 ? std::numeric_limits<W>::digits : std::countr_zero(v);
}
template <class W> int lastBit1(W v) {
    return v == 0 ? 8 : std::numeric_limits<W>::digits - 1 - std::countl_zero(v);
}

std::uint32_t low32(unsigned long v) {
    return static_cast<std::uint32_t>(v & 0xFFFFFFFFul);
}

} // namespace

int BitMgr::getNumBits1(unsigned char v) {
    return s_tables.numberOf1[v];
}
int BitMgr::getNumBits1(unsigned short v) {
    return std::popcount(v);
}
int BitMgr::getNumBits1(unsigned long v) {
    return std::popcount(low32(v));
}

int BitMgr::getNumBits0(unsigned char v) {
    return 8 - s_tables.numberOf1[v];
}
int BitMgr::getNumBits0(unsigned short v) {
    return 16 - std::popcount(v);
}
int BitMgr::getNumBits0(unsigned long v) {
    return 32 - std::popcount(low32(v));
}

int BitMgr::getFirstBit1(unsigned char v) {
    return s_tables.first1[v];
}
int BitMgr::getFirstBit1(unsigned short v) {
    return firstBit1(v);
}
int BitMgr::getFirstBit1(unsigned long v) {
    return firstBit1(low32(v));
}

int BitMgr::getFirstBit0(unsigned char v) {
    return s_tables.first0[v];
}
int BitMgr::getFirstBit0(unsigned short v) {
    return firstBit1(static_cast<unsigned short>(~v));
}
int BitMgr::getFirstBit0(unsigned long v) {
    return firstBit1(~low32(v));
}

int BitMgr::getLastBit1(unsigned char v) {
    return s_tables.last1[v];
}
int BitMgr::getLastBit1(unsigned short v) {
    return lastBit1(v);
}
int BitMgr::getLastBit1(unsigned long v) {
    return lastBit1(low32(v));
}

int BitMgr::getLastBit0(unsigned char v) {
    return s_tables.last0[v];
}
int BitMgr::getLastBit0(unsigned short v) {
    return lastBit1(static_cast<unsigned short>(~v));
}
int BitMgr::getLastBit0(unsigned long v) {
    return lastBit1(~low32(v));
}

e_bitOrder BitMgr::getBitOrdering() {
    return e_lowBitFirst;
}
