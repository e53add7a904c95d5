// kdrcore/containers/BinarySort.h - stable multi-column radix sort of rows of bytes
#ifndef KDRCORE_CONTAINERS_BINARYSORT_H
#define KDRCORE_CONTAINERS_BINARYSORT_H

#include "kdrcore/KDRExport.h"

/// Orders rows of binary data by byte columns with a stable least-significant-digit radix sort,
/// and marks the rows of the result that differ from their predecessor.
///
/// The first column added is the most significant; bytes compare as unsigned. The sorter holds
/// only pointers and strides into the caller's data, which must outlive every call that reads
/// them and must not change between sort() and getUniqueRows(). The sorter owns its column
/// array; it is not copyable. sort() and getUniqueRows() change nothing in the sorter.
class KDRCORE_API BinarySort {
public:
    /// One sort digit: the byte of row r is m_data[r * m_stride].
    struct Column {
        unsigned char const * m_data;
        unsigned int m_stride;
    };

    BinarySort();
    ~BinarySort();
    BinarySort(BinarySort const &) = delete;
    BinarySort & operator=(BinarySort const &) = delete;

    /// Adds `size` columns for an array of records of `size` bytes, the record's first byte the
    /// most significant (feed a little-endian integer's bytes in reverse to sort by value).
    void addItem(unsigned char const * data, unsigned int size);

    /// Adds one column for a plain byte array (stride 1), less significant than those before.
    void addColumn(unsigned char const * data);

    /// Writes the row numbers 0 to numRows - 1 into `result` (room for numRows ints) in
    /// ascending order of their column bytes; equal rows keep ascending row numbers. With no
    /// columns the result is the identity. numRows <= 0 writes nothing.
    void sort(int numRows, int * result);

    /// Marks in `flags` (one bit per position of `sortedRows`: bit j is bit j % 8 of byte j / 8)
    /// the positions whose row differs in some column from the row before; position 0 is always
    /// marked, the bytes 0 to (numRows - 1) / 8 are written. Returns the number of distinct rows.
    /// numRows <= 0: returns 0 and leaves `flags` alone.
    int getUniqueRows(int numRows, int const * sortedRows, unsigned char * flags) const;

private:
    unsigned int m_numColumns;
    Column * m_columns; // m_numColumns columns in order of addition, null when there are none
};

#endif // KDRCORE_CONTAINERS_BINARYSORT_H
