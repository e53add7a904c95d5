// BinarySort.cpp - stable multi-column radix sort of rows of bytes
#include "kdrcore/containers/BinarySort.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace {

constexpr int RADIX = 256;
// Histograms of up to this many columns live on the stack; more go to the heap.
constexpr unsigned int STACK_COLUMNS = 16;

using Column = BinarySort::Column;

inline unsigned char const * rowByte(Column const & column, int row) {
    return column.m_data + static_cast<std::size_t>(row) * column.m_stride;
}

// counts[b] := the number of rows whose byte in `column` is b.
void countBytes(Column const & column, int numRows, unsigned int * counts) {
    std::memset(counts, 0, RADIX * sizeof(unsigned int));
    unsigned char const * p = column.m_data;
    const std::size_t stride = column.m_stride;
    for (int r = 0; r < numRows; ++r, p += stride)
        ++counts[*p];
}

// One stable counting pass: the rows of `in`, in their order, go to `out` grouped by their byte
// in `column`. `counts` is the column's histogram.
void placeRows(Column const & column, unsigned int const * counts, int const * in, int * out,
               int numRows) {
    unsigned int next[RADIX];
    unsigned int sum = 0;
    for (int b = 0; b < RADIX; ++b) {
        next[b] = sum;
        sum += counts[b];
    }
    Column const c = column; // a local copy: the stores to `out` cannot change it
    auto const place = [&](int i) {
        int const row = in[i];
        out[next[*rowByte(c, row)]++] = row;
    };
    // The rows come in the order of the previous pass, so their bytes are read at random. When
    // the rows span more than the inner caches hold, each byte is fetched a few rows ahead.
    constexpr int AHEAD = 32;
    constexpr std::size_t CACHED_SPAN = std::size_t{1} << 18;
    int i = 0;
    if (static_cast<std::size_t>(numRows) * c.m_stride > CACHED_SPAN)
        for (; i < numRows - AHEAD; ++i) {
            __builtin_prefetch(rowByte(c, in[i + AHEAD]));
            place(i);
        }
    for (; i < numRows; ++i)
        place(i);
}

// Appends `count` columns over `data`, `data + 1`, ... with the same stride to the sorter's
// array `columns` of `numColumns` entries. The array is reallocated to exactly the new size, no
// growth margin; a failed allocation leaves both unchanged.
void appendColumns(Column *& columns, unsigned int & numColumns, unsigned char const * data,
                   unsigned int count, unsigned int stride) {
    if (count == 0)
        return;
    unsigned long long const total =
        static_cast<unsigned long long>(numColumns) + static_cast<unsigned long long>(count);
    if (total > 0xFFFFFFFFull)
        throw std::bad_array_new_length(); // the count would overflow: no such array
    Column * const grown = new Column[total];
    for (unsigned int i = 0; i < numColumns; ++i)
        grown[i] = columns[i];
    for (unsigned int i = 0; i < count; ++i)
        grown[numColumns + i] = Column{data + i, stride};
    delete[] columns;
    columns = grown;
    numColumns = static_cast<unsigned int>(total);
}

} // namespace

BinarySort::BinarySort() : m_numColumns(0), m_columns(nullptr) {}

BinarySort::~BinarySort() {
    delete[] m_columns;
}

void BinarySort::addItem(unsigned char const * data, unsigned int size) {
    appendColumns(m_columns, m_numColumns, data, size, size);
}

void BinarySort::addColumn(unsigned char const * data) {
    appendColumns(m_columns, m_numColumns, data, 1, 1);
}

// Least significant column first, one stable counting pass per column. A column in which every
// row has the same byte would only copy the order: its pass is skipped, which leaves the result
// unchanged. The passes that remain alternate between `result` and one temporary array, starting
// from the one that makes the last pass write into `result`.
void BinarySort::sort(int numRows, int * result) {
    if (numRows <= 0)
        return;
    unsigned int stackCounts[STACK_COLUMNS * RADIX];
    std::unique_ptr<unsigned int[]> heapCounts;
    unsigned int * counts = stackCounts;
    if (m_numColumns > STACK_COLUMNS) {
        heapCounts.reset(new unsigned int[static_cast<std::size_t>(m_numColumns) * RADIX]);
        counts = heapCounts.get();
    }
    unsigned int const total = static_cast<unsigned int>(numRows);
    unsigned int passes = 0;
    for (unsigned int c = 0; c < m_numColumns; ++c) {
        unsigned int * const h = counts + static_cast<std::size_t>(c) * RADIX;
        countBytes(m_columns[c], numRows, h);
        if (h[*m_columns[c].m_data] != total)
            ++passes;
    }

    std::unique_ptr<int[]> temp;
    if (passes > 0)
        temp.reset(new int[static_cast<std::size_t>(numRows)]);
    int * source = (passes % 2 == 0) ? result : temp.get();
    int * target = (passes % 2 == 0) ? temp.get() : result;
    for (int r = 0; r < numRows; ++r)
        source[r] = r;
    for (unsigned int c = m_numColumns; c-- > 0;) {
        unsigned int const * const h = counts + static_cast<std::size_t>(c) * RADIX;
        if (h[*m_columns[c].m_data] == total)
            continue;
        placeRows(m_columns[c], h, source, target, numRows);
        int * const swap = source;
        source = target;
        target = swap;
    }
}

int BinarySort::getUniqueRows(int numRows, int const * sortedRows, unsigned char * flags) const {
    if (numRows <= 0)
        return 0;
    flags[0] = 1;
    std::memset(flags + 1, 0, static_cast<std::size_t>((numRows - 1) / 8));
    int count = 1;
    for (int j = 1; j < numRows; ++j) {
        int const a = sortedRows[j - 1];
        int const b = sortedRows[j];
        for (unsigned int c = 0; c < m_numColumns; ++c) {
            if (*rowByte(m_columns[c], a) != *rowByte(m_columns[c], b)) {
                flags[j >> 3] = static_cast<unsigned char>(flags[j >> 3] | (1u << (j & 7)));
                ++count;
                break;
            }
        }
    }
    return count;
}
