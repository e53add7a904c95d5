// Tests of KDRArray's int face and fillArithmeticalSuite.
#include "kdrcore/containers/KDRArray.h"

#include <gtest/gtest.h>

#include <vector>

TEST(KDRArray, EraseByIndexAndPointerAndAssign) {
    KDRArray<int> a;
    EXPECT_TRUE(a.size() == 0 && a.begin() == nullptr && a.erase(0) == nullptr);
    for (int i = 0; i < 5; ++i)
        a.push_back(i * 10);
    int * p = a.erase(1); // later elements move down; the result points to the one now at 1
    EXPECT_TRUE(p == a.begin() + 1 && *p == 20);
    p = a.erase(a.size() - 1); // the last one: the end pointer of the shorter array
    EXPECT_EQ(p, a.end());
    EXPECT_TRUE(a.erase(a.end()) == nullptr && a.erase(a.begin() - 1) == nullptr);
    EXPECT_TRUE(a.erase(3) == nullptr && a.erase(-1) == nullptr);
    EXPECT_EQ(a.erase(a.begin()), a.begin());
    EXPECT_EQ(std::vector<int>(a.begin(), a.end()), (std::vector<int>{20, 30}));
    a.push_back(7);
    a.assign(2); // value-made elements only
    EXPECT_EQ(std::vector<int>(a.begin(), a.end()), (std::vector<int>{0, 0}));
}

TEST(FillArithmeticalSuite, WritesTheProgressionInOrder) {
    int v[4] = {-1, -1, -1, -1};
    fillArithmeticalSuite(v, v + 3, 5, 2); // last is exclusive
    EXPECT_EQ(std::vector<int>(v, v + 4), (std::vector<int>{5, 7, 9, -1}));
    fillArithmeticalSuite(v, v + 4, 3, 0);
    fillArithmeticalSuite(v + 2, v + 2, 100, 1); // empty range
    fillArithmeticalSuite(v + 3, v + 1, 100, 1); // first beyond last
    EXPECT_EQ(std::vector<int>(v, v + 4), (std::vector<int>{3, 3, 3, 3}));
}
