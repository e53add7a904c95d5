// Tests of KDRArray's int face and fillArithmeticalSuite.
#include "kdrcore/containers/KDRArray.h"

#include <gtest/gtest.h>

namespace {
struct Point3 { // the shape of Vector3f: a read-only use must work on a plain aggregate
    float x, y, z;
};
} // namespace

TEST(KDRArray, NewArrayAndAssign) {
    KDRArray<int> a;
    EXPECT_EQ(a.size(), 0);
    EXPECT_EQ(a.begin(), nullptr);
    EXPECT_EQ(a.erase(0), nullptr);
    EXPECT_EQ(a.erase(-1), nullptr);
    EXPECT_EQ(a.size(), 0);

    a.assign(5);
    for (int i = 0; i < 5; ++i)
        a[static_cast<std::size_t>(i)] = i + 10;
    a.assign(3); // a shorter assign leaves value-made elements only
    ASSERT_EQ(a.size(), 3);
    for (int v : a)
        EXPECT_EQ(v, 0);

    KDRArray<double> d;
    d.assign(2);
    EXPECT_EQ(d.end() - d.begin(), 2);
    EXPECT_EQ(d[1], 0.0);
}

TEST(KDRArray, EraseByIndexAndByPointer) {
    KDRArray<int> a;
    for (int i = 0; i < 5; ++i)
        a.push_back(i * 10);
    int * p = a.erase(1); // the later ones move down; the result is the element now at 1
    ASSERT_EQ(a.size(), 4);
    EXPECT_EQ(p, a.begin() + 1);
    EXPECT_EQ(*p, 20);
    p = a.erase(a.size() - 1); // the last one: the end pointer of the shorter array
    EXPECT_EQ(p, a.end());
    EXPECT_EQ(a.size(), 3);
    EXPECT_EQ(a.erase(a.end()), nullptr); // end is outside [begin, end)
    EXPECT_EQ(a.erase(a.begin() - 1), nullptr);
    EXPECT_EQ(a.erase(3), nullptr);
    EXPECT_EQ(a.size(), 3);
    p = a.erase(a.begin());
    EXPECT_EQ(p, a.begin());
    ASSERT_EQ(a.size(), 2);
    EXPECT_EQ(a[0], 20);
    EXPECT_EQ(a[1], 30);

    const KDRArray<int> & c = a; // const face
    EXPECT_EQ(c.end() - c.begin(), 2);
}

TEST(KDRArray, ReadOnlyFaceOnAPlainStruct) {
    KDRArray<Point3> pts;
    EXPECT_EQ(pts.begin(), nullptr);
    pts.push_back({1.0f, 2.0f, 3.0f});
    pts.push_back({4.0f, 5.0f, 6.0f});
    const KDRArray<Point3> & c = pts;
    float sum = 0.0f;
    for (const Point3 & q : c)
        sum += q.z;
    EXPECT_EQ(c.size(), 2);
    EXPECT_EQ(sum, 9.0f);
}

TEST(FillArithmeticalSuite, WritesTheProgressionInOrder) {
    int v[4] = {-1, -1, -1, -1};
    fillArithmeticalSuite(v, v + 3, 5, 2);
    EXPECT_EQ(v[0], 5);
    EXPECT_EQ(v[1], 7);
    EXPECT_EQ(v[2], 9);
    EXPECT_EQ(v[3], -1); // last is exclusive
    fillArithmeticalSuite(v, v + 4, 3, 0);
    for (int x : v)
        EXPECT_EQ(x, 3);
    fillArithmeticalSuite(v + 2, v + 2, 100, 1); // empty range
    fillArithmeticalSuite(v + 3, v + 1, 100, 1); // first beyond last
    for (int x : v)
        EXPECT_EQ(x, 3);
    KDRArray<int> a;
    a.assign(4);
    fillArithmeticalSuite(a.begin(), a.end(), 10, -3);
    EXPECT_EQ(a[3], 1);
}
