// Tests of KDRArray's int face and fillArithmeticalSuite.
#include "kdrcore/containers/KDRArray.h"

#include <gtest/gtest.h>

namespace {
struct Point3 { // the shape of Vector3f: the read-only face must work on a plain aggregate
    float x, y, z;
};
} // namespace

TEST(KDRArray, IntFaceAssignAndErase) {
    KDRArray<int> a;
    EXPECT_EQ(a.size(), 0);
    EXPECT_EQ(a.begin(), nullptr);
    EXPECT_EQ(a.erase(0), nullptr);
    for (int i = 0; i < 5; ++i)
        a.push_back(i * 10);
    int * p = a.erase(1); // later elements move down; the result points to the one now at 1
    EXPECT_EQ(p, a.begin() + 1);
    EXPECT_EQ(*p, 20);
    p = a.erase(a.size() - 1); // the last one: the end pointer of the shorter array
    EXPECT_EQ(p, a.end());
    EXPECT_EQ(a.erase(a.end()), nullptr); // outside [begin, end)
    EXPECT_EQ(a.erase(a.begin() - 1), nullptr);
    EXPECT_EQ(a.erase(3), nullptr);
    EXPECT_EQ(a.erase(-1), nullptr);
    EXPECT_EQ(a.erase(a.begin()), a.begin());
    ASSERT_EQ(a.size(), 2);
    EXPECT_EQ(a[0] + a[1], 50);
    a.assign(3); // value-made elements only
    ASSERT_EQ(a.size(), 3);
    for (int v : a)
        EXPECT_EQ(v, 0);

    KDRArray<Point3> pts;
    pts.push_back({1.0f, 2.0f, 3.0f});
    pts.push_back({4.0f, 5.0f, 6.0f});
    const KDRArray<Point3> & c = pts;
    EXPECT_EQ(c.end() - c.begin(), c.size());
    EXPECT_EQ(c.begin()[1].z, 6.0f);
}

TEST(FillArithmeticalSuite, WritesTheProgressionInOrder) {
    int v[4] = {-1, -1, -1, -1};
    fillArithmeticalSuite(v, v + 3, 5, 2);
    EXPECT_EQ(v[0], 5);
    EXPECT_EQ(v[1], 7);
    EXPECT_EQ(v[2], 9);
    EXPECT_EQ(v[3], -1); // last is exclusive
    fillArithmeticalSuite(v, v + 4, 3, 0);
    fillArithmeticalSuite(v + 2, v + 2, 100, 1); // empty range
    fillArithmeticalSuite(v + 3, v + 1, 100, 1); // first beyond last
    for (int x : v)
        EXPECT_EQ(x, 3);
}
