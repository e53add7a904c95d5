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

void checkUnique(BinarySort const & sorter, std::vector<ModelColumn> const & columns,
                 std::vector<int> const & rows, int pass) {
    int const numRows = static_cast<int>(rows.size());
    const std::size_t flagBytes =
        numRows == 0 ? 0 : static_cast<std::size_t>((numRows - 1) / 8 + 1);
    // Exactly the bytes the call may write, with a guard byte behind them.
    std::unique_ptr<unsigned char[]> flags(new unsigned char[flagBytes + 1]);
    std::fill(flags.get(), flags.get() + flagBytes + 1, 0xA5);
    int const count = sorter.getUniqueRows(numRows, rows.data(), flags.get());

    int expected = numRows == 0 ? 0 : 1;
    for (int j = 0; j < numRows; ++j) {
        bool const differs = j == 0 || compareRows(columns, rows[static_cast<std::size_t>(j - 1)],
                                                   rows[static_cast<std::size_t>(j)]) != 0;
        if (j > 0 && differs)
            ++expected;
        bool const flagged = (flags[static_cast<std::size_t>(j / 8)] >> (j % 8)) & 1;
        FUZZ_CHECK(flagged == differs, "pass %d: flag of position %d is %d, expected %d", pass, j,
                   flagged, differs);
    }
    for (int j = numRows; numRows > 0 && j < static_cast<int>(flagBytes) * 8; ++j)
        FUZZ_CHECK(((flags[static_cast<std::size_t>(j / 8)] >> (j % 8)) & 1) == 0,
                   "pass %d: flag bit %d beyond the rows is set", pass, j);
    FUZZ_CHECK(flags[flagBytes] == 0xA5, "pass %d: getUniqueRows wrote past its bytes", pass);
    if (numRows == 0)
        FUZZ_CHECK(flags[0] == 0xA5, "pass %d: getUniqueRows(0) wrote a flag", pass);
    FUZZ_CHECK(count == expected, "pass %d: getUniqueRows gave %d, expected %d", pass, count,
               expected);
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
        FUZZ_CHECK(result.back() == -12345, "pass %d: sort wrote past %d rows", pass, numRows);
        result.pop_back();
        for (int i = 0; i < numRows; ++i)
            FUZZ_CHECK(result[static_cast<std::size_t>(i)] == expected[static_cast<std::size_t>(i)],
                       "pass %d: %zu columns, %d rows: position %d holds row %d, expected %d", pass,
                       columns.size(), numRows, i, result[static_cast<std::size_t>(i)],
                       expected[static_cast<std::size_t>(i)]);

        checkUnique(sorter, columns, result, pass);
        // getUniqueRows compares whatever order it is given, sorted or not.
        std::vector<int> shuffled = result;
        for (std::size_t i = 1; i < shuffled.size() && in.remaining_bytes() > 0; ++i)
            std::swap(shuffled[i], shuffled[in.ConsumeIntegralInRange<std::size_t>(0, i)]);
        checkUnique(sorter, columns, shuffled, pass);
    }
    return 0;
}
