// kdrcore/containers/BitMgr.h - bit queries on one byte, 16-bit or 32-bit word
#ifndef KDRCORE_CONTAINERS_BITMGR_H
#define KDRCORE_CONTAINERS_BITMGR_H

#include "kdrcore/KDRExport.h"

/// Order of the bits of an array in memory: bit i lies in byte i / 8 at position i mod 8.
enum e_bitOrder { e_lowBitFirst = 1 };

/// Bit queries by byte table. Bit 0 is the least significant bit; "first" is the lowest index,
/// "last" the highest. Each query has an 8-, 16- and 32-bit form. `unsigned long` is 64 bits wide
/// on this platform: its forms look at the low 32 bits only, as a 32-bit word.
///
/// Results when nothing matches: getFirstBit1 / getFirstBit0 give the width (8, 16, 32), while
/// getLastBit1 / getLastBit0 give 8 in every width (the low byte's table entry), so that in the
/// wider forms 8 is ambiguous: test the value for 0 (or all ones) first.
class KDRCORE_API BitMgr {
public:
    static int getNumBits1(unsigned char v);
    static int getNumBits1(unsigned short v);
    static int getNumBits1(unsigned long v);

    /// Width minus the number of set bits.
    static int getNumBits0(unsigned char v);
    static int getNumBits0(unsigned short v);
    static int getNumBits0(unsigned long v);

    /// Lowest set bit; the width when v is 0.
    static int getFirstBit1(unsigned char v);
    static int getFirstBit1(unsigned short v);
    static int getFirstBit1(unsigned long v);

    /// Lowest clear bit; the width when every bit is set.
    static int getFirstBit0(unsigned char v);
    static int getFirstBit0(unsigned short v);
    static int getFirstBit0(unsigned long v);

    /// Highest set bit; 8 when v is 0, in every width.
    static int getLastBit1(unsigned char v);
    static int getLastBit1(unsigned short v);
    static int getLastBit1(unsigned long v);

    /// Highest clear bit; 8 when every bit is set, in every width.
    static int getLastBit0(unsigned char v);
    static int getLastBit0(unsigned short v);
    static int getLastBit0(unsigned long v);

    /// Always e_lowBitFirst.
    static e_bitOrder getBitOrdering();
};

#endif // KDRCORE_CONTAINERS_BITMGR_H
