// Tests of BinarySort: byte significance and the flag layout on small cases, then random tables
// against std::stable_sort on the same keys, and getUniqueRows against adjacent comparison.
#include "kdrcore/containers/BinarySort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
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
    const unsigned char records[8] = {0, 0, 1, 0, 0, 0, 0, 1};
    BinarySort r;
    r.addItem(records, 4);
    EXPECT_EQ(sorted(r, 2), (std::vector<int>{1, 0}));

    // Nine rows in groups starting at positions 0, 3, 5 and 8: bit 8 is bit 0 of byte 1, and
    // only the bytes up to the last row's are written.
    const unsigned char key[9] = {7, 7, 3, 3, 3, 9, 9, 9, 9}, tie[9] = {0, 0, 1, 1, 1, 0, 0, 0, 4};
    const int rows[9] = {2, 3, 4, 0, 1, 5, 6, 7, 8};
    BinarySort s;
    s.addColumn(key);
    s.addColumn(tie);
    unsigned char flags[3] = {0xAA, 0xFF, 0x5C};
    EXPECT_EQ(s.getUniqueRows(9, rows, flags), 4);
    EXPECT_TRUE(flags[0] == 0x29 && flags[1] == 0x01 && flags[2] == 0x5C);
    EXPECT_EQ(s.getUniqueRows(8, rows, flags), 3);
    EXPECT_TRUE(flags[0] == 0x29 && flags[1] == 0x01);
}

// Random tables: records of 0 to 4 bytes through addItem, then 0 to 3 plain columns, so that
// both parities and the case without columns come up, over alphabets from 1 to 256 values
// (small ones give many ties); some columns are constant.
TEST(BinarySort, AgreesWithStableSortOnRandomTables) {
    std::mt19937 rng(31337);
    for (int round = 0; round < 120; ++round) {
        const int recordSize = round % 5, extra = (round / 5) % 4;
        const int n = (round % 7 == 0) ? round % 3 : 1 + static_cast<int>(rng() % 3000);
        const unsigned int alphabet = (round % 3 == 0) ? 256 : 1 + rng() % 4;
        std::vector<unsigned char> records(static_cast<size_t>(n) * recordSize + 1);
        std::vector<std::vector<unsigned char>> plain(extra, std::vector<unsigned char>(n + 1));
        std::vector<std::vector<unsigned char>> keys(n);
        for (int r = 0; r < n; ++r) {
            for (int c = 0; c < recordSize + extra; ++c) {
                const unsigned int v =
                    static_cast<unsigned>(alphabet == 256 ? rng() & 255u : rng() % alphabet * 85u);
                const auto byte = static_cast<unsigned char>((round + c) % 4 == 3 ? 200 : v);
                (c < recordSize ? records[static_cast<size_t>(r) * recordSize + c]
                                : plain[c - recordSize][r]) = byte;
                keys[r].push_back(byte);
            }
        }
        BinarySort s;
        s.addItem(records.data(), static_cast<unsigned int>(recordSize));
        for (int c = 0; c < extra; ++c)
            s.addColumn(plain[c].data());

        std::vector<int> expected(n);
        std::iota(expected.begin(), expected.end(), 0);
        std::stable_sort(expected.begin(), expected.end(), [&](int a, int b) {
            // std::lexicographical_compare: g++ 12 misreports vector's <=> at -O3
            return std::lexicographical_compare(keys[a].begin(), keys[a].end(), keys[b].begin(),
                                                keys[b].end());
        });
        const std::vector<int> got = sorted(s, n);
        ASSERT_EQ(got, expected) << "round " << round << ", " << n << " rows";

        std::vector<unsigned char> flags(static_cast<size_t>(n) / 8 + 2, 0xEE);
        const int distinct = s.getUniqueRows(n, got.data(), flags.data());
        int groups = 0;
        for (int j = 0; j < (n + 7) / 8 * 8; ++j) {
            const bool first = j < n && (j == 0 || keys[got[j]] != keys[got[j - 1]]);
            groups += first;
            ASSERT_EQ((flags[j / 8] >> (j % 8)) & 1, first) << "round " << round << " bit " << j;
        }
        EXPECT_EQ(distinct, groups);
        EXPECT_EQ(flags[(n + 7) / 8], 0xEE) << "round " << round << ": written past the flags";
    }
}

} // namespace
