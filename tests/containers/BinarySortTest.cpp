// Tests of BinarySort on more rows than its fuzz target's inputs reach. Random tables against
// std::stable_sort live in fuzz/binarysort_fuzzer.cpp.
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
