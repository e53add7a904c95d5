// Intersections, distances and point-in-polygon in the plane.
#include "kdrcore/geometry/Geom2D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {
constexpr float S = -77.0f; // sentinel: proves an out-parameter was left alone
constexpr _e_geomInfo NO = e_geomNoIntersection, YES = e_geomIntersection;
} // namespace

TEST(Inter2d, LinesAndSegmentsWithParameters) {
    float out[2] = {S, S}, t1 = S, t2 = S;
    float const o[2] = {0, 0}, ex[2] = {1, 0}, d1[2] = {2, 0}, d2[2] = {0, 2};
    // The float nearest 0.0001 lies below the double TOLERANCE: parallel; the next one is not.
    float const par[2] = {1, 0.0001f}, notPar[2] = {1, std::nextafter(0.0001f, 1.0f)};
    EXPECT_EQ(inter2dLineLine(out, t1, t2, o, ex, o, par), e_geomParallel);
    EXPECT_EQ(inter2dLineLine(out, t1, t2, o, ex, o, notPar), YES);
    // The diagonal through 0 meets the vertical through (2, 0) at (2, 2): t1 = t2 = 2.
    float const diagonal[2] = {1, 1}, x2[2] = {2, 0}, up[2] = {0, 1};
    EXPECT_EQ(inter2dLineLine(out, t1, t2, o, diagonal, x2, up), YES);
    EXPECT_TRUE(t1 == 2.0f && t2 == 2.0f && out[0] == 2.0f && out[1] == 2.0f);
    // They meet at (2, 0): t1 = 1, the end of the first segment, and t2 = 1/2.
    float const o2[2] = {2, -1}, o3[2] = {2.5f, -1};
    EXPECT_EQ(inter2dSegmentSegment(out, t1, t2, o, d1, o2, d2), YES);
    EXPECT_TRUE(t1 == 1.0f && t2 == 0.5f && out[0] == 2.0f && out[1] == 0.0f);
    EXPECT_EQ(inter2dSegmentSegment(out, t1, t2, o, d1, o3, d2), NO);
    EXPECT_TRUE(t1 == 1.25f && out[0] == 2.5f); // written for a miss as well
    // The side test against (0, 0)-(1, 0): collinear segments always touch, and so does an end
    // on the line, first or second, the other end above or below.
    float const q[7][4] = {{2, 0, 3, 0},        {0.5f, 0, 0.5f, 1},  {0.5f, 1, 0.5f, 0},
                           {0.5f, 0, 0.5f, -1}, {0.5f, -1, 0.5f, 0}, {0.5f, 0.1f, 0.5f, 1},
                           {2, -1, 2, 1}};
    _e_geomInfo const expected[7] = {YES, YES, YES, YES, YES, NO, NO};
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(inter2dSegmentSegment(o, ex, q[i], q[i] + 2), expected[i]) << "case " << i;
    // Away from the origin, each end of q close to the line of p: (-2, 2)-(0, 4) meets
    // (-2, 4)-(-1, 2), and (2, -2)-(4, 0) meets (2, -1)-(4, -3).
    float const p[2][4] = {{-2, 2, 0, 4}, {2, -2, 4, 0}},
                r[2][4] = {{-2, 4, -1, 2}, {2, -1, 4, -3}};
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(inter2dSegmentSegment(p[i], p[i] + 2, r[i], r[i] + 2), YES) << "case " << i;
}

TEST(Inter2d, AxisLinesAndSegments) {
    float const a[2] = {0, 0}, b[2] = {2, 2}, c[2] = {4, 2}, up[2] = {1, 0}, upEnd[2] = {1, 2};
    float y = S, x = S;
    for (float at : {0.0f, 1.0f, 2.0f}) // given right to left; both ends included
        EXPECT_TRUE(inter2dSegmentVerticalLine(b, a, at, y) == YES && y == at) << at;
    EXPECT_EQ(inter2dSegmentVerticalLine(a, b, 2.5f, y), NO);
    EXPECT_EQ(inter2dSegmentVerticalLine(up, upEnd, 1, y), e_geomCoincident);
    EXPECT_EQ(inter2dSegmentVerticalLine(up, upEnd, 1.5f, y), NO);
    EXPECT_TRUE(inter2dSegmentHorizontalLine(a, c, 1, x) == YES && x == 2.0f);
    // Limited ranges: a hit outside is written but refused; the bounds are included.
    EXPECT_TRUE(inter2dSegmentVerticalSegment(a, b, 1.5f, 0, 1, y) == NO && y == 1.5f);
    EXPECT_EQ(inter2dSegmentVerticalSegment(a, b, 1, 1, 3, y), YES);
    EXPECT_EQ(inter2dSegmentHorizontalSegment(a, c, 1, 0, 2, x), YES);
    EXPECT_EQ(inter2dSegmentHorizontalSegment(a, c, 1, 2.5f, 3, x), NO);
    EXPECT_EQ(inter2dSegmentVerticalSegment(up, upEnd, 1, 5, 6, y), e_geomCoincident);
}

TEST(Inter2d, SegmentAgainstBoxOutline) {
    BoundingBox box; // the rectangle (0, 0)-(2, 1); z is not read
    box.m_min = Vector3f(0, 0, 5);
    box.m_max = Vector3f(2, 1, -5);
    struct {
        float a[2], b[2];
        _e_geomInfo result;
        bool aIn, bIn;
    } const cases[] = {
        {{2, 0.5f}, {3, 0.5f}, YES, true, false},     // an end on the outline is inside
        {{-1, 0.5f}, {3, 0.5f}, YES, false, false},   // crossing
        {{-1, 0}, {-2, 1}, NO, false, false},         // both left
        {{1.5f, -1}, {3, 0.5f}, NO, false, false},    // beside the corner (2, 0)
        {{0.5f, 0.5f}, {1.5f, 0.5f}, NO, true, true}, // within
        {{0.5f, 0.5f}, {1.5f, 1}, YES, true, true},   // within, touching the top
        {{0.5f, 1}, {1.5f, 1}, NO, true, true},       // along a side: coincident
    };
    for (int i = 0; i < 7; ++i) {
        bool aIn = !cases[i].aIn, bIn = !cases[i].bIn;
        EXPECT_EQ(inter2dSegmentBBox(cases[i].a, cases[i].b, box, aIn, bIn), cases[i].result)
            << "case " << i;
        EXPECT_TRUE(aIn == cases[i].aIn && bIn == cases[i].bIn) << "case " << i;
    }
}

TEST(Distance2PointSegment2D, ClampsToTheEnds) {
    float const a[2] = {0, 0}, b[2] = {4, 0}, beyond[2] = {5, 3}, above[2] = {1, 2};
    float t = S;
    Vector2f n;
    EXPECT_EQ(distance2PointSegment2D(t, n, a, b, beyond), 10.0f);
    EXPECT_TRUE(t == 1.0f && n.x() == 4.0f);
    EXPECT_EQ(distance2PointSegment2D(t, n, a, b, above), 4.0f);
    EXPECT_TRUE(t == 0.25f && n.x() == 1.0f);
    EXPECT_EQ(distance2PointSegment2D(t, n, b, a, beyond), 10.0f); // before the start
    EXPECT_TRUE(t == 0.0f && n.x() == 4.0f);
    EXPECT_EQ(distance2PointSegment2D(t, n, b, b, above), 13.0f); // a point-like segment
    EXPECT_TRUE(t == 0.0f && n.x() == 4.0f);
}

TEST(PointIn2DPolygon, EvenOddOnAnUpwardRay) {
    // The fuzz target holds the four forms (by value, by index, 2D and 3D) to agreeing; here the
    // square in both orientations.
    std::vector<Vector3f> const ccw = {{0, 0, 9}, {1, 0, 9}, {1, 1, 9}, {0, 1, 9}};
    std::vector<Vector2f> const cw = {{0, 1}, {1, 1}, {1, 0}, {0, 0}};
    float const points[7][2] = {{0.5f, 0.5f}, {0.5f, 1}, {0, 0.5f}, // centre, top, left side
                                {0.5f, 0},    {1, 0.5f}, {2, 0.5f}, {0.5f, 2}};
    for (int i = 0; i < 7; ++i) {
        float const * p = points[i];
        bool const inside = i < 3; // a vertex at the ray's x counts as left of it
        EXPECT_EQ(pointIn2DPolygon(p, ccw.data(), ccw.data() + 4), inside) << "point " << i;
        EXPECT_EQ(pointIn2DPolygon(p, cw.data(), cw.data() + 4), inside) << "point " << i;
    }
    float const p[2] = {1, 0.5f};
    std::vector<Vector2f> const two = {{0, 0}, {2, 1}}, tri = {{0, 0}, {2, 0}, {1, 2}};
    EXPECT_FALSE(pointIn2DPolygon(p, ccw.data(), ccw.data() + 1)); // one vertex
    EXPECT_FALSE(pointIn2DPolygon(p, two.data(), two.data() + 2)); // the two edges cancel
    // Directly below a triangle's apex, at the apex's x: the apex must count once.
    EXPECT_TRUE(pointIn2DPolygon(p, tri.data(), tri.data() + 3));
    // The square traversed twice is doubly wound: outside.
    std::vector<Vector3f> twice(ccw);
    twice.insert(twice.end(), ccw.begin(), ccw.end());
    EXPECT_FALSE(pointIn2DPolygon(points[0], twice.data(), twice.data() + 8));
    EXPECT_FALSE(pointInTriangle({0.5f, 0.5f, 0}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}));
}
