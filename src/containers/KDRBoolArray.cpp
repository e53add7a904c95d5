// KDRBoolArray.cpp - storage management, ranges, set operations and word-wide scans
//
// Counting and searching read eight storage bytes at a time as one little-endian 64-bit word,
// whose bit 8 * j + k is bit k of byte j: the same bit numbering as the byte tables, so the results
// are those of a byte-by-byte scan. Word reads stay within the bytes in use; the guard bytes keep
// the layout every array shares and bound the byte steps.
#include "kdrcore/containers/KDRBoolArray.h"

#include "containers/BitCount.h"
#include "containers/ByteCombine.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

static_assert(std::endian::native == std::endian::little,
              "the word-wide scans take byte j of a word as its bits 8j .. 8j + 7");

namespace {

using byte = unsigned char;

// Bytes that hold `bits` bits; 0 for bits <= 0. Written so that it cannot overflow.
int bytesFor(int bits) {
    return bits <= 0 ? 0 : (bits >> 3) + ((bits & 7) != 0 ? 1 : 0);
}

// Bits [0, k) of a byte, k in 0 .. 8.
byte lowMask(int k) {
    return static_cast<byte>((1u << k) - 1u);
}
// Bits [k, 8) of a byte, k in 0 .. 7.
byte highMask(int k) {
    return static_cast<byte>(0xFFu << k);
}

byte fillByte(bool value) {
    return value ? byte{0xFF} : byte{0};
}

void applyMask(byte & b, byte mask, bool value) {
    b = value ? static_cast<byte>(b | mask) : static_cast<byte>(b & ~mask);
}

std::uint64_t load64(byte const * p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

void store64(byte * p, std::uint64_t w) {
    std::memcpy(p, &w, sizeof w);
}

// A block of `count` storage bytes between two guard bytes holding 1; returns the first
// storage byte.
byte * allocateStorage(int count) {
    byte * block = new byte[static_cast<std::size_t>(count) + 2];
    block[0] = 1;
    block[static_cast<std::size_t>(count) + 1] = 1;
    return block + 1;
}

// Number of bits set in bytes [0, count): BitCount.h, with POPCNT where the processor has it.
int countBytes(byte const * p, int count) {
    return kdrcore::detail::countBits(p, count);
}

// Calls f(index) for each bit equal to `value` among the first `bits` bits, ascending.
template <class F> void forEachBit(byte const * p, int bits, bool value, F f) {
    const std::uint64_t flip64 = value ? 0 : ~std::uint64_t{0};
    const byte flip = value ? byte{0} : byte{0xFF};
    int const full = bits >> 3;
    int j = 0;
    for (; j + 8 <= full; j += 8)
        for (std::uint64_t w = load64(p + j) ^ flip64; w != 0; w &= w - 1)
            f(8 * j + std::countr_zero(w));
    for (; j < full; ++j)
        for (unsigned x = static_cast<byte>(p[j] ^ flip); x != 0; x &= x - 1)
            f(8 * j + std::countr_zero(x));
    if ((bits & 7) != 0)
        for (unsigned x = static_cast<byte>((p[full] ^ flip) & lowMask(bits & 7)); x != 0;
             x &= x - 1)
            f(8 * full + std::countr_zero(x));
}

// Points an array's storage fields at `count` bytes from allocateStorage().
void setStorage(byte *& bytes, byte *& bytesEnd, byte * storage, int count) {
    bytes = storage;
    bytesEnd = storage + count;
}

// Sets or clears the bits [from, to) of the storage at `bytes`; nothing when from >= to.
void fillBits(byte * bytes, int from, int to, bool value) {
    if (from >= to)
        return;
    int const first = from >> 3;
    int const last = (to - 1) >> 3;
    const byte headMask = highMask(from & 7);
    const byte tailMask = lowMask(((to - 1) & 7) + 1);
    if (first == last) {
        applyMask(bytes[first], static_cast<byte>(headMask & tailMask), value);
        return;
    }
    applyMask(bytes[first], headMask, value);
    std::memset(bytes + first + 1, fillByte(value), static_cast<std::size_t>(last - first - 1));
    applyMask(bytes[last], tailMask, value);
}

// Set bits among the first `bits` bits of the storage at `bytes`.
int countSet(byte const * bytes, int bits) {
    if (bits <= 0)
        return 0;
    int n = countBytes(bytes, bits >> 3);
    if ((bits & 7) != 0)
        n += std::popcount(static_cast<unsigned>(bytes[bits >> 3] & lowMask(bits & 7)));
    return n;
}

// dst[j] = src[j] | o[j] (or ^, `exclusive`) for j in [0, count). `dst` may be `src` or `o`.
// The whole words start at a 16-byte boundary of `dst` (see containers/ByteCombine.h).
void combineBytes(byte * dst, byte const * src, byte const * o, int count, bool exclusive) {
#if KDRCORE_SIMD_X86
    if (kdrcore::detail::simdLevel() >= kdrcore::detail::LEVEL_AVX2)
        return kdrcore::detail::combineBytesAvx2(dst, src, o, count, exclusive);
#endif
    auto const op = [exclusive](std::uint64_t a, std::uint64_t b) {
        return exclusive ? a ^ b : a | b;
    };
    int j = 0;
    for (; j < count && (reinterpret_cast<std::uintptr_t>(dst + j) & 15) != 0; ++j)
        dst[j] = static_cast<byte>(op(src[j], o[j]));
    for (; j + 8 <= count; j += 8)
        store64(dst + j, op(load64(src + j), load64(o + j)));
    for (; j < count; ++j)
        dst[j] = static_cast<byte>(op(src[j], o[j]));
}

// Union (or, `exclusive`, exclusive or) of an array's fields `bytes`, `bytesEnd`, `size` with
// the bits of another array, as KDRBoolArray::set(other) and toggle(other) document it. The
// other array's fields are read before any is written, so it may be the same array.
void combine(byte *& bytes, byte *& bytesEnd, int & size, byte const * otherBytes, int otherSize,
             bool exclusive) {
    if (otherSize <= 0)
        return;
    bool const otherLonger = otherSize > size;
    int const longSize = otherLonger ? otherSize : size;
    int const shortSize = otherLonger ? size : otherSize;
    byte const * src = bytes;
    byte const * o = otherBytes;
    byte * dst = bytes;
    int const newCount = bytesFor(otherSize);
    bool const grow = newCount > static_cast<int>(bytesEnd - bytes);
    if (grow)
        dst = allocateStorage(newCount);

    // Whole bytes of the common range read the old storage and write the new one.
    int const full = shortSize >> 3;
    combineBytes(dst, src, o, full, exclusive);
    int next = full;
    if ((shortSize & 7) != 0) {
        // Only the shorter array's bits below the common size count in the partial byte.
        const byte mask = lowMask(shortSize & 7);
        const byte longByte = otherLonger ? o[full] : src[full];
        const byte shortByte = static_cast<byte>((otherLonger ? src[full] : o[full]) & mask);
        dst[full] = static_cast<byte>(exclusive ? longByte ^ shortByte : longByte | shortByte);
        next = full + 1;
    }
    // The rest of the longer array's used bytes, as they are (already in place when this is the
    // longer array, since then no growth happens).
    int const used = bytesFor(longSize);
    if (otherLonger && used > next)
        std::memmove(dst + next, o + next, static_cast<std::size_t>(used - next));

    if (grow) {
        if (bytesEnd > bytes)
            delete[](bytes - 1);
        setStorage(bytes, bytesEnd, dst, newCount);
    }
    size = longSize;
}

} // namespace

unsigned char KDRBoolArray::s_emptyBytes[2] = {1, 1};

KDRBoolArray::KDRBoolArray(int n, bool value) : KDRBoolArray() {
    assign(n, value);
}

KDRBoolArray::KDRBoolArray(KDRBoolArray const & other) : KDRBoolArray() {
    copy(other, false);
}

KDRBoolArray::~KDRBoolArray() {
    freeData();
}

const KDRBoolArray KDRBoolArray::operator=(KDRBoolArray const & other) {
    copy(other, false);
    return KDRBoolArray(*this);
}

void KDRBoolArray::freeData() {
    if (m_bytesEnd > m_bytes)
        delete[](m_bytes - 1);
    m_bytes = s_emptyBytes + 1;
    m_bytesEnd = s_emptyBytes + 1;
    m_size = 0;
}

void KDRBoolArray::clearArray() {
    freeData();
}

void KDRBoolArray::swap(KDRBoolArray & other) {
    std::swap(m_bytes, other.m_bytes);
    std::swap(m_bytesEnd, other.m_bytesEnd);
    std::swap(m_size, other.m_size);
}

void KDRBoolArray::copy(KDRBoolArray const & other, bool spareValue) {
    int const size = std::max(other.m_size, 0);
    int const used = bytesFor(size);
    if (used > storageBytes()) {
        freeData();
        setStorage(m_bytes, m_bytesEnd, allocateStorage(used), used);
    }
    if (m_bytes != other.m_bytes && used > 0)
        std::memcpy(m_bytes, other.m_bytes, static_cast<std::size_t>(used));
    m_size = size;
    if ((size & 7) != 0)
        applyMask(m_bytes[used - 1], highMask(size & 7), spareValue);
    std::memset(m_bytes + used, fillByte(spareValue),
                static_cast<std::size_t>(storageBytes() - used));
}

void KDRBoolArray::assign(int n, bool value) {
    n = std::max(n, 0);
    if (bytesFor(n) > storageBytes()) {
        freeData();
        setStorage(m_bytes, m_bytesEnd, allocateStorage(bytesFor(n)), bytesFor(n));
    }
    m_size = n;
    std::memset(m_bytes, fillByte(value), static_cast<std::size_t>(storageBytes()));
}

void KDRBoolArray::assign(int n, char const * bytes) {
    n = std::max(n, 0);
    if (bytesFor(n) > storageBytes()) {
        freeData();
        setStorage(m_bytes, m_bytesEnd, allocateStorage(bytesFor(n)), bytesFor(n));
    }
    m_size = n;
    if (n > 0)
        std::memcpy(m_bytes, bytes, static_cast<std::size_t>(bytesFor(n)));
}

void KDRBoolArray::assign(int count, int const * indexes, int size) {
    if (size == -1) {
        set(count, indexes);
        return;
    }
    assign(size, false);
    for (int k = 0; k < count; ++k)
        set(indexes[k]);
}

void KDRBoolArray::resize(int n, bool value) {
    int const newCount = bytesFor(n);
    if (newCount > storageBytes()) {
        byte * bytes = allocateStorage(newCount);
        int const used = bytesFor(m_size);
        if (used > 0)
            std::memcpy(bytes, m_bytes, static_cast<std::size_t>(used));
        std::memset(bytes + used, fillByte(value), static_cast<std::size_t>(newCount - used));
        if ((m_size & 7) != 0)
            applyMask(bytes[used - 1], highMask(m_size & 7), value);
        if (m_bytesEnd > m_bytes)
            delete[](m_bytes - 1);
        setStorage(m_bytes, m_bytesEnd, bytes, newCount);
        m_size = n;
        return;
    }
    if (storageBytes() == 0)
        return; // no storage and n <= 0
    n = std::max(n, 0);
    if (n > m_size)
        fillBits(m_bytes, m_size, n, value);
    std::memset(m_bytes + newCount, fillByte(value),
                static_cast<std::size_t>(storageBytes() - newCount));
    m_size = n;
}

namespace {
// The common step of the AutoResize members: false for a negative index, else grows the array
// with cleared bits until it holds bit i.
bool reach(KDRBoolArray & bits, int i) {
    if (i < 0)
        return false;
    if (bits.size() <= i)
        bits.resize(i + 1, false);
    return true;
}
} // namespace

void KDRBoolArray::setAutoResize(int i) {
    if (reach(*this, i))
        set(i);
}

void KDRBoolArray::clearAutoResize(int i) {
    if (reach(*this, i))
        clear(i);
}

void KDRBoolArray::toggleAutoResize(int i) {
    if (reach(*this, i))
        toggle(i);
}

void KDRBoolArray::set(int start, int count) {
    if (start < 0)
        return;
    int const end = start + std::max(count, 1);
    if (m_size < end)
        resize(end, false);
    fillBits(m_bytes, start, end, true);
}

void KDRBoolArray::clear(int start, int count) {
    if (start < 0)
        return;
    int const end = start + std::max(count, 1);
    if (m_size < end)
        resize(end, false);
    fillBits(m_bytes, start, end, false);
}

void KDRBoolArray::set(int count, int const * indexes) {
    if (count < 1)
        return;
    int const largest = *std::max_element(indexes, indexes + count);
    if (largest >= m_size)
        resize(largest + 1, false);
    for (int k = 0; k < count; ++k)
        if (indexes[k] >= 0)
            set(indexes[k]);
}

void KDRBoolArray::clear(int count, int const * indexes) {
    if (count < 1)
        return;
    int const largest = *std::max_element(indexes, indexes + count);
    if (largest >= m_size)
        resize(largest + 1, false);
    for (int k = 0; k < count; ++k)
        if (indexes[k] >= 0)
            clear(indexes[k]);
}

void KDRBoolArray::set(KDRArray<int> const & indexes) {
    set(indexes.size(), indexes.begin());
}

void KDRBoolArray::setAll() {
    fillBits(m_bytes, 0, m_size, true);
}

void KDRBoolArray::clearAll() {
    fillBits(m_bytes, 0, m_size, false);
}

void KDRBoolArray::inverse() {
    int const full = m_size >> 3;
    for (int j = 0; j < full; ++j)
        m_bytes[j] = static_cast<byte>(~m_bytes[j]);
    if ((m_size & 7) != 0)
        m_bytes[full] = static_cast<byte>(m_bytes[full] ^ lowMask(m_size & 7));
}

void KDRBoolArray::toggleAll() {
    if (m_size == 0)
        return;
    for (byte * p = m_bytes; p < m_bytesEnd; ++p)
        *p = static_cast<byte>(~*p);
}

void KDRBoolArray::set(KDRBoolArray const & other) {
    combine(m_bytes, m_bytesEnd, m_size, other.m_bytes, other.m_size, false);
}

void KDRBoolArray::toggle(KDRBoolArray const & other) {
    combine(m_bytes, m_bytesEnd, m_size, other.m_bytes, other.m_size, true);
}

void KDRBoolArray::inter(KDRBoolArray const & other) {
    if (m_size <= 0)
        return;
    if (other.m_size <= 0) {
        m_size = 0;
        m_bytes[0] = 1;
        return;
    }
    int const size = std::min(m_size, other.m_size);
    int const full = size >> 3;
    for (int j = 0; j < full; ++j)
        m_bytes[j] = static_cast<byte>(m_bytes[j] & other.m_bytes[j]);
    if ((size & 7) != 0)
        m_bytes[full] = static_cast<byte>(m_bytes[full] & other.m_bytes[full] & lowMask(size & 7));
    int const used = bytesFor(size);
    if (used < storageBytes())
        m_bytes[used] = 1; // the byte behind the used ones; the end guard holds 1 already
    m_size = size;
}

void KDRBoolArray::clear(KDRBoolArray const & other) {
    if (other.m_size <= 0)
        return;
    int const size = std::min(m_size, other.m_size);
    int const full = size >> 3;
    for (int j = 0; j < full; ++j)
        m_bytes[j] = static_cast<byte>(m_bytes[j] & ~other.m_bytes[j]);
    if ((size & 7) != 0)
        m_bytes[full] =
            static_cast<byte>(m_bytes[full] & ~(other.m_bytes[full] & lowMask(size & 7)));
}

bool KDRBoolArray::hasInter(KDRBoolArray const & other) const {
    // The intersection of this and `other` has a set bit; found without building it.
    int const size = std::min(m_size, other.m_size);
    if (size <= 0)
        return false;
    byte const * a = m_bytes;
    byte const * b = other.m_bytes;
    int const full = size >> 3;
    int j = 0;
    for (; j + 8 <= full; j += 8)
        if ((load64(a + j) & load64(b + j)) != 0)
            return true;
    for (; j < full; ++j)
        if ((a[j] & b[j]) != 0)
            return true;
    return (size & 7) != 0 && (a[full] & b[full] & lowMask(size & 7)) != 0;
}

bool KDRBoolArray::bitTest(KDRBoolArray const & other) const {
    int const top = other.findLast(true, other.m_size - 1);
    if (top < 0)
        return true;
    if (top >= m_size)
        return false;
    byte const * a = m_bytes;
    byte const * b = other.m_bytes;
    int const topByte = top >> 3;
    int j = 0;
    for (; j + 8 <= topByte; j += 8) {
        const std::uint64_t w = load64(b + j);
        if ((load64(a + j) & w) != w)
            return false;
    }
    for (; j < topByte; ++j)
        if ((a[j] & b[j]) != b[j])
            return false;
    const byte mask = lowMask((top & 7) + 1);
    return (a[topByte] & mask & b[topByte]) == (b[topByte] & mask);
}

bool KDRBoolArray::operator==(KDRBoolArray const & other) const {
    if (m_size != other.m_size)
        return false;
    if (m_size <= 0)
        return true;
    int const full = m_size >> 3;
    if (full > 0 && std::memcmp(m_bytes, other.m_bytes, static_cast<std::size_t>(full)) != 0)
        return false;
    if ((m_size & 7) == 0)
        return true;
    return ((m_bytes[full] ^ other.m_bytes[full]) & lowMask(m_size & 7)) == 0;
}

int KDRBoolArray::getNumberOfBitSet() const {
    return countSet(m_bytes, m_size);
}

int KDRBoolArray::findFirst(bool value, int start) const {
    if (start >= m_size)
        return -1;
    start = std::max(start, 0);
    byte const flip = value ? byte{0} : byte{0xFF};
    std::uint64_t const flip64 = value ? 0 : ~std::uint64_t{0};
    int const used = bytesFor(m_size);
    int j = start >> 3;
    // Bits below `start` are masked off in the first word or byte read, and only there.
    std::uint64_t mask = ~std::uint64_t{0} << (start & 7);
    // Four words at a time while they last: one test for 32 bytes.
    for (; j + 32 <= used; j += 32, mask = ~std::uint64_t{0}) {
        std::uint64_t const w0 = (load64(m_bytes + j) ^ flip64) & mask;
        std::uint64_t const w1 = load64(m_bytes + j + 8) ^ flip64;
        std::uint64_t const w2 = load64(m_bytes + j + 16) ^ flip64;
        std::uint64_t const w3 = load64(m_bytes + j + 24) ^ flip64;
        if ((w0 | w1 | w2 | w3) != 0) {
            int const k = w0 != 0 ? 0 : w1 != 0 ? 1 : w2 != 0 ? 2 : 3;
            std::uint64_t const w = k == 0 ? w0 : k == 1 ? w1 : k == 2 ? w2 : w3;
            int const r = 8 * (j + 8 * k) + std::countr_zero(w);
            return r < m_size ? r : -1;
        }
    }
    for (; j + 8 <= used; j += 8, mask = ~std::uint64_t{0}) {
        std::uint64_t const w = (load64(m_bytes + j) ^ flip64) & mask;
        if (w != 0) {
            int const r = 8 * j + std::countr_zero(w);
            return r < m_size ? r : -1; // a hit in a spare bit is no hit
        }
    }
    for (; j < used; ++j, mask = ~std::uint64_t{0}) {
        unsigned const x = static_cast<byte>((m_bytes[j] ^ flip) & mask);
        if (x != 0) {
            int const r = 8 * j + std::countr_zero(x);
            return r < m_size ? r : -1;
        }
    }
    return -1;
}

int KDRBoolArray::findLast(bool value, int start) const {
    if (start < 0 || m_size <= 0)
        return -1;
    start = std::min(start, m_size - 1);
    const byte flip = value ? byte{0} : byte{0xFF};
    const std::uint64_t flip64 = value ? 0 : ~std::uint64_t{0};
    int j = start >> 3;
    unsigned x = static_cast<byte>((m_bytes[j] ^ flip) & lowMask((start & 7) + 1));
    if (x == 0) {
        for (--j; j >= 7; j -= 8) {
            const std::uint64_t w = load64(m_bytes + j - 7) ^ flip64;
            if (w != 0)
                return 8 * (j - 7) + 63 - std::countl_zero(w);
        }
        for (; j >= 0; --j) {
            x = static_cast<byte>(m_bytes[j] ^ flip);
            if (x != 0)
                break;
        }
        if (j < 0)
            return -1;
    }
    return 8 * j + 31 - std::countl_zero(x);
}

bool KDRBoolArray::getIndexesSet(KDRArray<int> & out) const {
    int const n = getNumberOfBitSet();
    if (n == 0) {
        out.clear();
        return false;
    }
    out.resize(static_cast<std::size_t>(n));
    int * p = out.begin();
    forEachBit(m_bytes, m_size, true, [&p](int i) { *p++ = i; });
    return true;
}

bool KDRBoolArray::getIndexesCleared(KDRArray<int> & out) const {
    int const n = m_size - getNumberOfBitSet();
    if (n <= 0) {
        out.clear();
        return false;
    }
    out.resize(static_cast<std::size_t>(n));
    int * p = out.begin();
    forEachBit(m_bytes, m_size, false, [&p](int i) { *p++ = i; });
    return true;
}

void KDRBoolArray::insert(int i, bool value) {
    if (i < 0 || i >= m_size)
        return;
    resize(m_size + 1, false);
    int const used = bytesFor(m_size);
    int j = i >> 3;
    int const k = i & 7;
    // In the byte of i the bits from position k up move left by one, the lower bits stay.
    unsigned const first = m_bytes[j];
    unsigned carry = first >> 7u;
    m_bytes[j] = static_cast<byte>((first & lowMask(k)) | ((first & highMask(k)) << 1u) |
                                   (value ? 1u << k : 0u));
    // Every following used byte shifts left by one, taking in its predecessor's old top bit.
    for (++j; j + 8 <= used; j += 8) {
        const std::uint64_t w = load64(m_bytes + j);
        store64(m_bytes + j, (w << 1) | carry);
        carry = static_cast<unsigned>(w >> 63);
    }
    for (; j < used; ++j) {
        unsigned const old = m_bytes[j];
        m_bytes[j] = static_cast<byte>((old << 1u) | carry);
        carry = old >> 7u;
    }
}

void KDRBoolArray::erase(int i) {
    if (i < 0 || i >= m_size)
        return;
    int const newSize = m_size - 1;
    if (i < newSize) {
        // Bit j takes bit j + 1 for j in [i, newSize); every other bit, the old top one among
        // them, keeps its content. Byte j + 1 is read before it is rewritten; at the top it may
        // be a spare byte or the end guard, whose bit lands outside the mask.
        int const last = (newSize - 1) >> 3;
        int j = i >> 3;
        auto const shiftByte = [&](int at) {
            const byte cur = m_bytes[at];
            const auto shifted = static_cast<byte>((cur >> 1) | ((m_bytes[at + 1] & 1u) << 7));
            byte mask = 0xFF;
            if (at == (i >> 3))
                mask = static_cast<byte>(mask & highMask(i & 7));
            if (at == last)
                mask = static_cast<byte>(mask & lowMask(newSize - 8 * last));
            m_bytes[at] = static_cast<byte>((cur & ~mask) | (shifted & mask));
        };
        shiftByte(j);
        for (++j; j + 8 <= last; j += 8) {
            const std::uint64_t w = load64(m_bytes + j);
            store64(m_bytes + j,
                    (w >> 1) | (static_cast<std::uint64_t>(m_bytes[j + 8] & 1u) << 63));
        }
        for (; j <= last; ++j)
            shiftByte(j);
    }
    m_size = newSize;
}
