// Fuzz target: BinarySort against std::stable_sort.
//
// Random columns (records of 1 to 6 bytes through addItem, plain byte arrays through addColumn)
// over random rows; each data array is allocated to its exact size, so that a read past the last
// row shows under AddressSanitizer. The sorted row numbers must equal std::stable_sort of the
// identity by the rows' bytes read column after column, and getUniqueRows must mark exactly the
// positions whose row differs from the one before, writing only its (numRows - 1) / 8 + 1 bytes.
#include "Fuzz.h"

#include "kdrcore/containers/BinarySort.h"

#include <algorithm>
#include <fuzzer/FuzzedDataProvider.h>
#include <memory>
#include <numeric>
#include <vector>

namespace {

struct ModelColumn {
    unsigned char const * data;
    unsigned int stride;
    unsigned char at(int row) const { return data[static_cast<std::size_t>(row) * stride]; }
};

int compareRows(std::vector<ModelColumn> const & columns, int a, int b) {
    for (ModelColumn const & c : columns)
        if (c.at(a) != c.at(b))
            return c.at(a) < c.at(b) ? -1 : 1;
    return 0;
}

// The flags of getUniqueRows: a bit per position whose row differs from the one before, bits
// beyond the rows clear, and a guard byte behind the (numRows - 1) / 8 + 1 bytes it may write.
void checkUnique(BinarySort const & sorter, std::vector<ModelColumn> const & columns,
                 std::vector<int> const & rows) {
    std::size_t const n = rows.size(), flagBytes = n == 0 ? 0 : (n - 1) / 8 + 1;
    std::vector<unsigned char> flags(flagBytes + 1, 0xA5), expected(flagBytes, 0);
    int count = 0;
    for (std::size_t j = 0; j < n; ++j)
        if (j == 0 || compareRows(columns, rows[j - 1], rows[j]) != 0) {
            expected[j / 8] = static_cast<unsigned char>(expected[j / 8] | 1u << (j % 8));
            ++count;
        }
    expected.push_back(0xA5);
    int const got = sorter.getUniqueRows(static_cast<int>(n), rows.data(), flags.data());
    FUZZ_CHECK(got == count && flags == expected, "%zu rows: %d unique, expected %d", n, got,
               count);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    int const maxRows = in.ConsumeIntegralInRange(0, 300);
    // A narrow byte alphabet makes ties, and so stability, matter.
    int const alphabet = in.ConsumeIntegralInRange(1, 256);

    BinarySort sorter;
    std::vector<ModelColumn> columns;
    std::vector<std::unique_ptr<unsigned char[]>> storage;
    int const groups = in.ConsumeIntegralInRange(0, 6);
    for (int g = 0; g < groups; ++g) {
        bool const item = in.ConsumeBool();
        unsigned int const width = item ? in.ConsumeIntegralInRange(0u, 6u) : 1u;
        const std::size_t bytes = static_cast<std::size_t>(maxRows) * width;
        // Exact size (at least one byte, so that the pointer is a real allocation).
        storage.emplace_back(new unsigned char[std::max<std::size_t>(bytes, 1)]);
        unsigned char * const p = storage.back().get();
        for (std::size_t k = 0; k < bytes; ++k)
            p[k] = static_cast<unsigned char>(in.ConsumeIntegral<unsigned char>() % alphabet);
        if (item) {
            sorter.addItem(p, width);
            for (unsigned int i = 0; i < width; ++i)
                columns.push_back({p + i, width});
        } else {
            sorter.addColumn(p);
            columns.push_back({p, 1});
        }
    }

    // Sort several row counts with the same sorter: it must be reusable.
    for (int pass = 0; pass < 3; ++pass) {
        int const numRows = pass == 0 ? maxRows : in.ConsumeIntegralInRange(0, maxRows);
        std::vector<int> expected(static_cast<std::size_t>(numRows));
        std::iota(expected.begin(), expected.end(), 0);
        std::stable_sort(expected.begin(), expected.end(),
                         [&](int a, int b) { return compareRows(columns, a, b) < 0; });

        // Exact room for numRows ints, and a guard behind it.
        std::vector<int> result(static_cast<std::size_t>(numRows) + 1, -12345);
        sorter.sort(numRows, result.data());
        expected.push_back(-12345);
        FUZZ_CHECK(result == expected, "pass %d: %zu columns, %d rows", pass, columns.size(),
                   numRows);
        result.pop_back();
        checkUnique(sorter, columns, result);
        // getUniqueRows compares whatever order it is given, sorted or not.
        std::vector<int> shuffled = result;
        for (std::size_t i = 1; i < shuffled.size() && in.remaining_bytes() > 0; ++i)
            std::swap(shuffled[i], shuffled[in.ConsumeIntegralInRange<std::size_t>(0, i)]);
        checkUnique(sorter, columns, shuffled);
    }
    return 0;
}
