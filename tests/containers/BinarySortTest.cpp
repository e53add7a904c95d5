// Tests of BinarySort: byte significance and the flag layout on small cases worked out by hand.
// Random tables against std::stable_sort live in fuzz/binarysort_fuzzer.cpp.
#include "kdrcore/containers/BinarySort.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<int> sorted(BinarySort & s, int n) {
    std::vector<int> result(static_cast<size_t>(n) + 1, -7);
    s.sort(n, result.data());
    EXPECT_EQ(result.back(), -7) << "wrote past numRows";
    result.pop_back();
    return result;
}

TEST(BinarySort, FirstColumnWeighsMostAndFlagsArePackedLowBitFirst) {
    // Records (0, 0, 1, 0) and (0, 0, 0, 1): the first byte of a record weighs most.
    unsigned char const records[8] = {0, 0, 1, 0, 0, 0, 0, 1};
    BinarySort r;
    r.addItem(records, 4);
    EXPECT_EQ(sorted(r, 2), (std::vector<int>{1, 0}));

    // Nine rows in groups starting at positions 0, 3, 5 and 8: bit 8 is bit 0 of byte 1, and
    // only the bytes up to the last row's are written.
    unsigned char const key[9] = {7, 7, 3, 3, 3, 9, 9, 9, 9}, tie[9] = {0, 0, 1, 1, 1, 0, 0, 0, 4};
    int const rows[9] = {2, 3, 4, 0, 1, 5, 6, 7, 8};
    BinarySort s;
    s.addColumn(key);
    s.addColumn(tie);
    unsigned char flags[3] = {0xAA, 0xFF, 0x5C};
    EXPECT_EQ(s.getUniqueRows(9, rows, flags), 4);
    EXPECT_TRUE(flags[0] == 0x29 && flags[1] == 0x01 && flags[2] == 0x5C);
    EXPECT_EQ(s.getUniqueRows(8, rows, flags), 3);
    EXPECT_TRUE(flags[0] == 0x29 && flags[1] == 0x01);
}

TEST(BinarySort, RowsBeyondTheCachesStayStable) {
    // 2^17 records of 4 bytes (512 kB, read at random after the first pass): record r holds
    // (N - 1 - r) / 2 big-endian, so the rows come out in descending pairs, each pair in
    // ascending order: N - 2, N - 1, N - 4, N - 3, ...
    constexpr int N = 1 << 17;
    std::vector<unsigned char> records(4 * static_cast<size_t>(N));
    for (int r = 0; r < N; ++r) {
        unsigned const v = static_cast<unsigned>(N - 1 - r) / 2;
        for (int b = 0; b < 4; ++b)
            records[4 * static_cast<size_t>(r) + static_cast<size_t>(b)] =
                static_cast<unsigned char>(v >> (24 - 8 * b));
    }
    BinarySort s;
    s.addItem(records.data(), 4);
    std::vector<int> const result = sorted(s, N);
    for (int i = 0; i < N; ++i)
        ASSERT_EQ(result[static_cast<size_t>(i)], N - 2 - 2 * (i / 2) + i % 2) << "position " << i;
}

} // namespace
