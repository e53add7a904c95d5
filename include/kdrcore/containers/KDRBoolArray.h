// kdrcore/containers/KDRBoolArray.h - resizable bit array with guard bytes
#ifndef KDRCORE_CONTAINERS_KDRBOOLARRAY_H
#define KDRCORE_CONTAINERS_KDRBOOLARRAY_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/containers/BitMgr.h"
#include "kdrcore/containers/KDRArray.h"

/// Resizable array of bits; bit i is bit (i mod 8) of byte i / 8 (e_lowBitFirst).
///
/// Storage of c bytes is one block of c + 2 bytes from new[]: m_bytes points to its second byte,
/// and a guard byte holding 1 stands before (m_bytes[-1]) and after (m_bytesEnd[0]) the storage,
/// from allocation to release. An array without storage allocates nothing: both pointers address
/// the second byte of the shared s_emptyBytes {1, 1}. Allocation is exact, (n + 7) / 8 bytes for
/// n bits with no growth factor, and capacity shrinks only by clearArray() and the destructor.
/// Bits from size() up to capacity() are spare: their content is not an invariant, and operations
/// that read whole bytes mask the last partial byte.
///
/// Indexes passed to members without a size test must lie in [0, size()).
class KDRCORE_API KDRBoolArray {
public:
    /// The byte queries of BitMgr under their array names.
    static int getNumBitsAt1(unsigned char v) { return BitMgr::getNumBits1(v); }
    static int getNumBitsAt0(unsigned char v) { return BitMgr::getNumBits0(v); }
    static int getFirstBitAt1(unsigned char v) { return BitMgr::getFirstBit1(v); }
    static int getFirstBitAt0(unsigned char v) { return BitMgr::getFirstBit0(v); }
    static int getLastBitAt1(unsigned char v) { return BitMgr::getLastBit1(v); }
    static int getLastBitAt0(unsigned char v) { return BitMgr::getLastBit0(v); }

    /// @{ @name Construction, storage and whole-array copy
    /// Empty, without storage.
    KDRBoolArray() : m_bytes(s_emptyBytes + 1), m_bytesEnd(s_emptyBytes + 1), m_size(0) {}
    /// assign(n, value) on an empty array.
    KDRBoolArray(int n, bool value);
    /// copy(other, false) on an empty array: exact storage, spare bits clear.
    KDRBoolArray(KDRBoolArray const & other);
    ~KDRBoolArray();
    /// copy(other, false), then a new array built from *this is returned by value.
    const KDRBoolArray operator=(KDRBoolArray const & other);

    /// Releases the storage, if any: size 0, capacity 0.
    void clearArray();
    /// Exchanges the three fields.
    void swap(KDRBoolArray & other);
    /// Takes other's size and bits; reallocates (keeping nothing) only when other's size exceeds
    /// the capacity. Every bit from the size up to the capacity is then set to `spareValue`.
    void copy(KDRBoolArray const & other, bool spareValue);
    /// Size := n (n < 0 counts as 0), every byte of the capacity filled with `value`.
    /// Reallocates, keeping nothing, when n exceeds the capacity.
    void assign(int n, bool value);
    /// Size := n; (n + 7) / 8 bytes are copied from `bytes`, packed as this array is. The rest of
    /// the storage is not touched. Same growth as assign(n, value).
    void assign(int n, char const * bytes);
    /// size -1: set(count, indexes), keeping the bits already set. Otherwise assign(size, false),
    /// then the bits indexes[0 .. count) are set; each must lie in [0, size).
    void assign(int count, int const * indexes, int size);
    /// Size := n. Bits below both sizes keep their values; bits from the old size up to n take
    /// `value`; storage bytes from (n + 7) / 8 up are filled with `value`. Grows exactly when n
    /// exceeds the capacity. n <= 0 on an array without storage does nothing.
    void resize(int n, bool value);
    /// @}

    /// Number of bits in the array.
    int size() const { return m_size; }
    /// Number of bits of storage.
    int capacity() const { return static_cast<int>(m_bytesEnd - m_bytes) * 8; }

    /// @{ @name Single bits
    /// The bit; false for an index outside [0, size()).
    bool get(int i) const {
        return static_cast<unsigned>(i) < static_cast<unsigned>(m_size) && getNoSizeTest(i);
    }
    bool operator[](int i) const { return get(i); }
    /// The bit, for i in [0, capacity()); spare bits read as they are.
    bool getNoSizeTest(int i) const { return ((m_bytes[i >> 3] >> (i & 7)) & 1) != 0; }
    /// 1 << (i mod 8) when the bit is set, else 0.
    int getAsMask(int i) const { return m_bytes[i >> 3] & (1 << (i & 7)); }
    void set(int i) { m_bytes[i >> 3] = static_cast<unsigned char>(m_bytes[i >> 3] | bit(i)); }
    void clear(int i) { m_bytes[i >> 3] = static_cast<unsigned char>(m_bytes[i >> 3] & ~bit(i)); }
    void toggle(int i) { m_bytes[i >> 3] = static_cast<unsigned char>(m_bytes[i >> 3] ^ bit(i)); }
    /// As set, clear, toggle, after resize(i + 1, false) when i >= size(): clearing or flipping
    /// beyond the size grows the array too. A negative index does nothing.
    void setAutoResize(int i);
    void clearAutoResize(int i);
    void toggleAutoResize(int i);
    /// @}

    /// @{ @name Ranges and index lists
    /// Sets exactly the bits [start, start + count), growing with resize(start + count, false)
    /// when needed. start < 0: nothing. count < 1 counts as 1.
    void set(int start, int count);
    /// As set(start, count), clearing: the array grows also when it only clears.
    void clear(int start, int count);
    /// Sets the bits indexes[0 .. count), skipping negative ones; grows to the largest index + 1
    /// when that is beyond the size. count < 1: nothing.
    void set(int count, int const * indexes);
    /// As set(count, indexes), clearing, the growth included.
    void clear(int count, int const * indexes);
    /// set(count, data) of the array.
    void set(KDRArray<int> const & indexes);
    /// Set, clear or flip the bits [0, size()); spare bits keep their content.
    void setAll();
    void clearAll();
    void inverse();
    /// Flips every byte of the storage, spare bits included; nothing when size() is 0.
    void toggleAll();
    /// @}

    /// @{ @name Operations between arrays
    /// Union. The size becomes the larger size; bits beyond the shorter array come from the
    /// longer one. Nothing when `other` is empty. Reallocates exactly when other's size exceeds
    /// the capacity.
    void set(KDRBoolArray const & other);
    void merge(KDRBoolArray const & other) { set(other); }
    /// Exclusive or, with the size rule, growth and empty case of the union.
    void toggle(KDRBoolArray const & other);
    /// Intersection: the size becomes the smaller size (0 when `other` is empty), bits above it
    /// in the last partial byte are cleared. Nothing when this is empty. Storage stays.
    void inter(KDRBoolArray const & other);
    /// Clears every bit set in `other`, below the smaller size. Sizes do not change.
    void clear(KDRBoolArray const & other);
    /// True when some index below both sizes is set in both.
    bool hasInter(KDRBoolArray const & other) const;
    /// True when every bit set in `other` is set in this; true when `other` has no set bit,
    /// false when other's highest set bit is at or beyond size(). Other's size plays no part.
    bool bitTest(KDRBoolArray const & other) const;
    /// Same size and the same bits below it; spare bits are not compared.
    bool operator==(KDRBoolArray const & other) const;
    /// @}

    /// @{ @name Queries
    /// Set bits below the size.
    int getNumberOfBitSet() const;
    int getNumberOfBitCleared() const { return m_size - getNumberOfBitSet(); }
    /// First bit equal to `value` at or after `start` (a negative start counts as 0); -1 for none.
    int findFirst(bool value, int start) const;
    int findFirst(bool value) const { return findFirst(value, 0); }
    /// Last bit equal to `value` at or before `start` (a start beyond the array counts as
    /// size() - 1); -1 for none and for a negative start.
    int findLast(bool value, int start) const;
    int findLast(bool value) const { return findLast(value, m_size - 1); }
    /// Fills `out` with exactly the indexes of the set bits, ascending. None: `out` is emptied
    /// and the result is false.
    bool getIndexesSet(KDRArray<int> & out) const;
    /// The same for the clear bits below the size.
    bool getIndexesCleared(KDRArray<int> & out) const;
    /// @}

    /// @{ @name Insertion and removal
    /// For 0 <= i < size() only (never at the end, never into an empty array): grows by one bit,
    /// moves bits [i, size) up by one and writes `value` at i.
    void insert(int i, bool value);
    /// For 0 <= i < size() only: bits above i move down by one, the size falls by one.
    void erase(int i);
    /// @}

protected:
    /// Releases the storage, if any: size 0, capacity 0.
    void freeData();

private:
    static int bit(int i) { return 1 << (i & 7); }
    int storageBytes() const { return static_cast<int>(m_bytesEnd - m_bytes); }

    static unsigned char s_emptyBytes[2]; // {1, 1}: the guards of every array without storage

    unsigned char * m_bytes;    // first storage byte; m_bytes[-1] is the front guard
    unsigned char * m_bytesEnd; // one past the last storage byte: the back guard
    int m_size;                 // bits in the array
};

#endif // KDRCORE_CONTAINERS_KDRBOOLARRAY_H
