// Tests of the distances, point tests, projections and small derived quantities.
#include "geometry/GeometryTestSupport.h"

#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/types/Scalar.h"

using namespace geomtest;

TEST(DistancePointLine, OnlyTheSquaredFootFormNormalises) {
    KDRLine const longDir = L(O, V(2, 0, 0)); // stored by hand
    V const p(3, 4, 0);
    V foot;
    float param;
    EXPECT_TRUE(distance2PointLine(p, longDir, foot) == 16.0f && near(foot, 3, 0, 0));
    // The others take t = u . w = 6, so r = (3, 4, 0) - 6 (2, 0, 0) = (-9, 4, 0).
    EXPECT_TRUE(distancePointLine(p, longDir, foot) == std::sqrt(97.0f) && near(foot, 12, 0, 0));
    EXPECT_TRUE(distance2PointLine(p, longDir, param) == 97.0f && param == 6.0f);
    EXPECT_EQ(distancePointPlane(O, P(0, 3, 4, -5)), 1.0f); // divided by |n| = 5
}

TEST(DistancePointSegment, AbsoluteBoundsOnTheDotProducts) {
    // Length 0.005: s . s = 2.5e-5 < TOLERANCE, so points projecting on the segment, and some
    // beyond it, snap to a; only 0.02 past a does b take over.
    V foot;
    for (float x : {0.004f, 0.01f, 0.03f}) {
        distancePointSegment(V(x, 1, 0), O, V(0.005f, 0, 0), foot);
        EXPECT_TRUE(near(foot, x < 0.02f ? 0.0f : 0.005f, 0, 0)) << x;
    }
    // Projecting inside: the foot on the segment's own direction (2, 0, 0) + u (0, 1, 0).
    EXPECT_TRUE(distancePointSegment(V(5, 1, 0), V(2, 0, 0), V(2, 4, 0), foot) == 3.0f &&
                near(foot, 2, 1, 0));
    V p(-3, 4, 0); // zero length, foot written into the point itself
    EXPECT_TRUE(distancePointSegment(p, O, O, p) == 5.0f && near(p, 0, 0, 0));
}

TEST(DistanceLineLine, ParametersOfSkewAndParallelLinesAndSegments) {
    float p1, p2;
    // l2 = (1, -1, 2) + t (s, s, 0) passes over (2, 0, 0) at t = sqrt(2), 2 above.
    float const s = 0.70710677f;
    EXPECT_NEAR(distanceLineLine(L(O, X), L(V(1, -1, 2), V(s, s, 0)), p1, p2), 2.0f, 1e-6);
    EXPECT_TRUE(elems({p1, p2}, {2, 1 / s}, 1e-6));
    // Parallel: the separation, param2 = 0, param1 = the projection of l2's point.
    EXPECT_EQ(distanceLineLine(L(O, X), L(V(7, 0, 4), -X), p1, p2), 4.0f);
    EXPECT_TRUE(elems({p1, p2}, {7, 0}));
    // A segment along (2, 2, 1) from (0, -1, 0.5): the nearest points are (0.6, -0.4, 0.8), at
    // u = 0.9 of the length 3 along it, and (0.6, 0, 0): distance sqrt(0.8), parameters 0.6, 0.3.
    EXPECT_NEAR(distanceLineSegment(L(O, X), KDRSegment(V(0, -1, 0.5f), V(2, 1, 1.5f)), p1, p2),
                std::sqrt(0.8), 1e-6);
    EXPECT_TRUE(elems({p1, p2}, {0.6, 0.3}, 1e-6));
    // Clamped past m_end to the distance from the end; zero length gives 0 / 0.
    KDRSegment const past(V(5, -3, 3), V(2, -1, 3)), point(V(2, 1, 3), V(2, 1, 3));
    EXPECT_EQ(distanceLineSegment(L(O, X), past, p1, p2), std::sqrt(10.0f));
    EXPECT_TRUE(elems({p1, p2}, {2, 1}));
    EXPECT_EQ(distanceLineSegment(L(O, X), point, p1, p2), std::sqrt(10.0f));
    EXPECT_TRUE(std::isnan(p2));
    KDRArray<Vector3f> set;
    int index = -7;
    for (float x : {5.0f, 3.0f, -1.0f, 2.0f, 1.0f}) // positions 2 and 4 are equally near
        set.push_back(V(x, 0, 0));
    EXPECT_TRUE(distancePointPointSet(O, set, index) == 1.0f && index == 2);
}

TEST(PointTests, TolerancesOfLinePlaneSegmentAndCoplanarity) {
    // Squared distances: 0.1 away is on for 0.011, off for 0.009.
    KDRSegment const seg(O, V(10, 0, 0));
    V const off(5, 0.1f, 0);
    EXPECT_TRUE(pointOnLine(off, L(O, X), 0.011f) && pointOnSegment(off, seg, 0.011f));
    EXPECT_FALSE(pointOnLine(off, L(O, X), 0.009f) || pointOnSegment(off, seg, 0.009f));
    EXPECT_TRUE(pointOnLine(V(1, 1, 0), L(X, Y), 0)); // a line away from the origin
    EXPECT_TRUE(pointOnSegment(V(1, 0.1f, 0), KDRSegment(X, X), 0.011f)); // zero length
    // pointOnPlane: |n . p + d| against the argument, inclusive, not divided by |n|.
    EXPECT_TRUE(pointOnPlane(V(3, 4, 0.001f), Plane(), 0.001f));
    EXPECT_FALSE(pointOnPlane(V(3, 4, 0.001f), P(0, 0, 2, 0), 0.0015f));
    EXPECT_TRUE(pointOnPlane(V(3, 4, 1), P(0, 0, 1, -1), 0)); // z = 1: n . p + d is 0
    // Segment bounds on (p - start) . s: below widened by the tolerance (0.5 here, i.e. 0.05
    // before the start), above not widened.
    EXPECT_TRUE(pointOnSegment(V(-0.04f, 0, 0), seg, 0.5f));
    EXPECT_FALSE(pointOnSegment(V(-0.06f, 0, 0), seg, 0.5f));
    EXPECT_FALSE(pointOnSegment(V(10.01f, 0, 0), seg, 0.5f));
    // Coplanar: parallel lines; skew by 1 gives c = -z, each component against the tolerance.
    EXPECT_TRUE(areCoplanar(L(O, X), L(V(0, 3, 5), X), 0.0f));
    EXPECT_FALSE(areCoplanar(L(O, X), L(Z, Y), 0.99f));
}

TEST(Projection, OnALineAndAlongADirectionOnAPlane) {
    V out;
    float param;
    // A direction too short for setDir stays zero; one along the plane is parallel.
    EXPECT_EQ(projection(out, X, Plane(), V(0, 0, 0.00005f)), e_geomContained);
    EXPECT_EQ(projection(out, Z, Plane(), X), e_geomParallel);
    EXPECT_EQ(projectionOrtho(out, param, V(4, 5, 6), L(V(1, 1, 0), X)), e_geomProjected);
    EXPECT_TRUE(param == 3.0f && near(out, 4, 1, 0));
    // The foot of the perpendicular: (1, 0, 0) is 2 below 0.6 y + 0.8 z = 2.
    EXPECT_EQ(projectionOrtho(out, X, P(0, 0.6f, 0.8f, -2)), e_geomIntersection);
    EXPECT_TRUE(near(out, 1, 1.2f, 1.6f, 1e-6));
}

TEST(SmallQuantities, SpherisePointNormal3PtsAndCote) {
    V out;
    // Per-axis exponents on absolute values, no root: S = |1|^3 + |-3|^2 + |2|^1 = 12.
    spherisePoint(out, V(2, -3, 1), 12.0f, V(1, 2, 3));
    EXPECT_TRUE(near(out, 2, -3, 1, 1e-6));
    spherisePoint(out, V(2, -3, 6), 14.0f); // |(2, -3, 6)| = 7: scaled by exactly 2
    EXPECT_TRUE(near(out, 4, -6, 12));
    V const pts[3] = {O, X, V(1, 2, 0)};
    normal3Pts(out, pts, 0, 1, 2, false, false); // a sum of edges (1, 0, 0) + (0, 2, 0)
    EXPECT_TRUE(near(out, 1, 2, 0));
    normal3Pts(out, O, X, O, true, true); // back-tracking: the zero sum stays zero
    EXPECT_TRUE(near(out, 0, 0, 0));
    // The sum is rounded to float before it is normalised: (1 + d, 2 + d, 2) with d = 2^-24 - 2^-30
    // rounds to (1, 2, 2), length 3, so the result is exactly (1/3, 2/3, 2/3) in float. From the
    // unrounded sum it would be (0x1.555556p-2, 0x1.555556p-1, 0x1.555554p-1).
    float const d = 0x1.f8p-25f;
    normal3Pts(out, V(-d, -d, 0), O, V(1, 2, 2), false, true);
    EXPECT_TRUE(out.x() == 0x1.555556p-2f && out.y() == 0x1.555556p-1f && out.z() == 0x1.555556p-1f)
        << out.x() << " " << out.y() << " " << out.z();
    float half = SENTINEL;
    EXPECT_TRUE(Cote(X, -X, 5.0f, half) == 0.0f && half == HALF_PI_F); // opposite
    EXPECT_NEAR(Cote(X, Y, 5.0f, half), 5.0f, 1e-6);                   // tan(pi/4) = 1
    // Within 0.01 of pi/2 for the half angle, or of 0 for its tangent, the result is 0.
    auto at = [](double a) { return V(float(std::cos(a)), float(std::sin(a)), 0); };
    EXPECT_EQ(Cote(X, at(PI_D - 0.019), 1.0f, half), 0.0f);
    EXPECT_EQ(Cote(X, at(0.0198), 1.0f, half), 0.0f);
    EXPECT_NEAR(Cote(X, at(0.0202), 1.0f, half), 1.0 / std::tan(0.0101), 1e-2);
}
