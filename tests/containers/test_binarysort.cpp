// Tests of BinarySort: byte significance and stability on small cases, then random tables
// against std::stable_sort on the same keys, and getUniqueRows against adjacent comparison.
#include "kdrcore/containers/BinarySort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <random>
#include <type_traits>
#include <vector>

namespace {

static_assert(!std::is_copy_constructible<BinarySort>::value, "the column array has one owner");
static_assert(!std::is_copy_assignable<BinarySort>::value, "the column array has one owner");

std::vector<int> sorted(BinarySort & s, int n) {
    std::vector<int> result(static_cast<size_t>(n) + 1, -7);
    s.sort(n, result.data());
    EXPECT_EQ(result[static_cast<size_t>(n)], -7) << "wrote past numRows";
    result.pop_back();
    return result;
}

TEST(BinarySort, FirstColumnWeighsMostAndBytesAreUnsigned) {
    // Records (0,0,0,1) and (0,0,1,0): the first byte is the most significant, so the first
    // record sorts first.
    const unsigned char records[8] = {0, 0, 1, 0, 0, 0, 0, 1};
    BinarySort s;
    s.addItem(records, 4);
    EXPECT_EQ(sorted(s, 2), (std::vector<int>{1, 0}));

    // Little-endian integers fed as they lie sort by their low byte: 256 before 1. Fed in
    // reverse they sort by value.
    const std::uint32_t values[3] = {1, 256, 2};
    unsigned char le[12], be[12];
    std::memcpy(le, values, sizeof values);
    for (int i = 0; i < 3; ++i)
        for (int b = 0; b < 4; ++b)
            be[4 * i + b] = le[4 * i + 3 - b];
    BinarySort little, big;
    little.addItem(le, 4);
    big.addItem(be, 4);
    EXPECT_EQ(sorted(little, 3), (std::vector<int>{1, 0, 2}));
    EXPECT_EQ(sorted(big, 3), (std::vector<int>{0, 2, 1}));

    // Two columns: the first decides, the second breaks ties; 255 sorts after 1.
    const unsigned char a[5] = {2, 1, 2, 1, 255};
    const unsigned char b[5] = {0, 9, 0, 3, 0};
    BinarySort two;
    two.addColumn(a);
    two.addColumn(b);
    EXPECT_EQ(sorted(two, 5), (std::vector<int>{3, 1, 0, 2, 4})); // rows 0 and 2 tie: stable
    // The sorter can be reused; it reads the data afresh.
    EXPECT_EQ(sorted(two, 5), (std::vector<int>{3, 1, 0, 2, 4}));
    const unsigned char c[5] = {5, 4, 3, 2, 1};
    BinarySort three;
    three.addColumn(a);
    three.addColumn(b);
    three.addColumn(c); // odd number of columns
    EXPECT_EQ(sorted(three, 5), (std::vector<int>{3, 1, 2, 0, 4}));

    // No columns: the identity. No rows: nothing written.
    BinarySort none;
    EXPECT_EQ(sorted(none, 4), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(sorted(two, 0), std::vector<int>{});
    none.addItem(a, 0); // adds no column
    EXPECT_EQ(sorted(none, 3), (std::vector<int>{0, 1, 2}));
}

TEST(BinarySort, UniqueRowsMarkTheFirstOfEachGroup) {
    // Nine rows in three groups: bit 8 lives in bit 0 of the second byte.
    const unsigned char key[9] = {7, 7, 3, 3, 3, 9, 9, 9, 9};
    const unsigned char tie[9] = {0, 0, 1, 1, 1, 0, 0, 0, 0};
    BinarySort s;
    s.addColumn(key);
    s.addColumn(tie);
    const std::vector<int> rows = {2, 3, 4, 0, 1, 5, 6, 7, 8};
    unsigned char flags[3] = {0xAA, 0xFF, 0x5C};
    EXPECT_EQ(s.getUniqueRows(9, rows.data(), flags), 3);
    EXPECT_EQ(flags[0], 0x29); // positions 0, 3 and 5
    EXPECT_EQ(flags[1], 0x00);
    EXPECT_EQ(flags[2], 0x5C); // beyond (9 - 1) / 8: untouched

    // A ninth row that differs only in the second column starts a group of its own.
    const unsigned char tie2[9] = {0, 0, 1, 1, 1, 0, 0, 0, 4};
    BinarySort t;
    t.addColumn(key);
    t.addColumn(tie2);
    EXPECT_EQ(t.getUniqueRows(9, rows.data(), flags), 4);
    EXPECT_EQ(flags[0], 0x29);
    EXPECT_EQ(flags[1], 0x01);

    // One row; no rows; no columns at all.
    flags[0] = 0xF0;
    EXPECT_EQ(s.getUniqueRows(1, rows.data(), flags), 1);
    EXPECT_EQ(flags[0], 1);
    flags[0] = 0xF0;
    EXPECT_EQ(s.getUniqueRows(0, rows.data(), flags), 0);
    EXPECT_EQ(flags[0], 0xF0);
    BinarySort none;
    flags[1] = 0xFF;
    EXPECT_EQ(none.getUniqueRows(9, rows.data(), flags), 1);
    EXPECT_EQ(flags[0], 1);
    EXPECT_EQ(flags[1], 0);

    // All rows different: every bit below numRows is set.
    const unsigned char distinct[10] = {9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
    BinarySort d;
    d.addColumn(distinct);
    const std::vector<int> order = sorted(d, 10);
    EXPECT_EQ(d.getUniqueRows(10, order.data(), flags), 10);
    EXPECT_EQ(flags[0], 0xFF);
    EXPECT_EQ(flags[1], 0x03);
}

// One random table: records of `recordSize` bytes added with addItem, and `extra` plain columns
// added after them, over an alphabet of `alphabet` byte values (small ones spread out to 255: many
// ties). Some columns are constant, so that passes which change nothing occur.
TEST(BinarySort, AgreesWithStableSortOnRandomTables) {
    std::mt19937 rng(31337);
    for (int round = 0; round < 120; ++round) {
        const int recordSize = round % 5;  // 0 to 4 columns from addItem
        const int extra = (round / 5) % 4; // 0 to 3 plain columns
        const int columns = recordSize + extra;
        const int n = (round % 7 == 0) ? round % 3 : 1 + static_cast<int>(rng() % 3000);
        const int alphabet = (round % 3 == 0) ? 256 : 1 + static_cast<int>(rng() % 4);
        std::vector<unsigned char> records(static_cast<size_t>(n) * recordSize + 1);
        std::vector<std::vector<unsigned char>> plain(extra, std::vector<unsigned char>(n + 1));
        auto fill = [&](unsigned char & byte, int column) {
            const bool constant = (round + column) % 4 == 3;
            const unsigned int v = alphabet == 256 ? rng() & 255u : rng() % alphabet * 85u;
            byte = constant ? 200 : static_cast<unsigned char>(v);
        };
        for (int r = 0; r < n; ++r) {
            for (int c = 0; c < recordSize; ++c)
                fill(records[static_cast<size_t>(r) * recordSize + c], c);
            for (int c = 0; c < extra; ++c)
                fill(plain[c][r], recordSize + c);
        }
        BinarySort s;
        s.addItem(records.data(), static_cast<unsigned int>(recordSize));
        for (int c = 0; c < extra; ++c)
            s.addColumn(plain[c].data());

        std::vector<std::vector<unsigned char>> keys(n);
        for (int row = 0; row < n; ++row) {
            for (int c = 0; c < recordSize; ++c)
                keys[row].push_back(records[static_cast<size_t>(row) * recordSize + c]);
            for (int c = 0; c < extra; ++c)
                keys[row].push_back(plain[c][row]);
        }
        auto keyOf = [&](int row) -> const std::vector<unsigned char> & { return keys[row]; };
        std::vector<int> expected(n);
        std::iota(expected.begin(), expected.end(), 0);
        std::stable_sort(expected.begin(), expected.end(),
                         [&](int a, int b) { return keyOf(a) < keyOf(b); });
        const std::vector<int> got = sorted(s, n);
        ASSERT_EQ(got, expected) << "round " << round << ", " << columns << " columns, " << n
                                 << " rows";

        std::vector<unsigned char> flags(static_cast<size_t>(n) / 8 + 2, 0xEE);
        int distinct = 0;
        for (int j = 0; j < n; ++j) {
            if (j == 0 || keyOf(got[j]) != keyOf(got[j - 1]))
                ++distinct;
        }
        ASSERT_EQ(s.getUniqueRows(n, got.data(), flags.data()), distinct) << "round " << round;
        for (int j = 0; j < n; ++j) {
            const bool first = j == 0 || keyOf(got[j]) != keyOf(got[j - 1]);
            ASSERT_EQ((flags[j / 8] >> (j % 8)) & 1, first ? 1 : 0)
                << "round " << round << " position " << j;
        }
        // Padding bits of the last byte are clear; the byte after it is untouched.
        if (n > 0) {
            for (int j = n; j < ((n - 1) / 8 + 1) * 8; ++j)
                EXPECT_EQ((flags[j / 8] >> (j % 8)) & 1, 0) << "round " << round;
            EXPECT_EQ(flags[(n - 1) / 8 + 1], 0xEE) << "round " << round;
        }
    }
}

} // namespace
