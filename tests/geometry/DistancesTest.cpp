// Tests of the distances, point tests, projections and small derived quantities.
#include "geometry/PrimitiveTestSupport.h"

#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace primtest;

namespace {
Vector3f const X(1.0f, 0.0f, 0.0f), Y(0.0f, 1.0f, 0.0f), Z(0.0f, 0.0f, 1.0f);
float const S = 0.70710677f; // sqrt(1/2) in float
} // namespace

TEST(DistancePointLine, FourFormsAndWhichOneNormalises) {
    KDRLine const xAxis = makeLine(Vector3f(), X);
    Vector3f const p(3.0f, 4.0f, 0.0f);
    Vector3f foot = sentinelVector();
    float param = SENTINEL;
    EXPECT_EQ(distancePointPoint(Vector3f(1.0f, 2.0f, 3.0f), Vector3f(4.0f, 6.0f, 15.0f)), 13.0f);
    EXPECT_EQ(distancePointLine(p, xAxis, foot), 4.0f);
    EXPECT_TRUE(near(foot, 3.0f, 0.0f, 0.0f));
    EXPECT_EQ(distance2PointLine(p, xAxis, param), 16.0f);
    EXPECT_EQ(param, 3.0f);

    // A direction of length 2 stored by hand: only the squared foot form scales it.
    KDRLine const longDir = makeLine(Vector3f(), Vector3f(2.0f, 0.0f, 0.0f));
    foot = sentinelVector();
    EXPECT_EQ(distance2PointLine(p, longDir, foot), 16.0f);
    EXPECT_TRUE(near(foot, 3.0f, 0.0f, 0.0f));
    // The others take t = u . w = 6, so r = (3, 4, 0) - 6 (2, 0, 0) = (-9, 4, 0).
    EXPECT_EQ(distancePointLine(p, longDir, foot), std::sqrt(97.0f));
    EXPECT_TRUE(near(foot, 12.0f, 0.0f, 0.0f));
    EXPECT_EQ(distance2PointLine(p, longDir, param), 97.0f);
    EXPECT_EQ(param, 6.0f);
    EXPECT_EQ(distancePointLine(p, longDir, param), std::sqrt(97.0f));

    // A zero direction: t = 0, the foot is m_point.
    KDRLine const still = makeLine(Vector3f(1.0f, 1.0f, 1.0f), Vector3f());
    Vector3f const q(4.0f, 5.0f, 1.0f);
    EXPECT_EQ(distancePointLine(q, still, foot), 5.0f);
    EXPECT_TRUE(near(foot, 1.0f, 1.0f, 1.0f));
    foot = sentinelVector();
    EXPECT_EQ(distance2PointLine(q, still, foot), 25.0f);
    EXPECT_TRUE(near(foot, 1.0f, 1.0f, 1.0f));
    EXPECT_EQ(distancePointLine(q, still, param), 5.0f);
    EXPECT_EQ(param, 0.0f);
}

TEST(DistancePointPlane, UnsignedAndScaledByTheNormal) {
    Plane const z5 = makePlane(0.0f, 0.0f, 1.0f, -5.0f);
    EXPECT_EQ(distancePointPlane(Vector3f(0.0f, 0.0f, 3.0f), z5), 2.0f);
    EXPECT_EQ(distancePointPlane(Vector3f(9.0f, -4.0f, 7.0f), z5), 2.0f);
    EXPECT_EQ(distancePointPlane(Vector3f(0.0f, 0.0f, 3.0f), makePlane(0.0f, 0.0f, 2.0f, -10.0f)),
              2.0f);
    EXPECT_EQ(distancePointPlane(Vector3f(), makePlane(0.0f, 3.0f, 4.0f, -5.0f)), 1.0f);
}

TEST(DistancePointSegment, EndsAndTheAbsoluteBounds) {
    Vector3f const a(0.0f, 0.0f, 0.0f), b(10.0f, 0.0f, 0.0f);
    Vector3f foot = sentinelVector();
    EXPECT_EQ(distancePointSegment(Vector3f(5.0f, 3.0f, 0.0f), a, b, foot), 3.0f);
    EXPECT_TRUE(near(foot, 5.0f, 0.0f, 0.0f));
    EXPECT_EQ(distancePointSegment(Vector3f(-2.0f, 3.0f, 0.0f), a, b, foot), std::sqrt(13.0f));
    EXPECT_TRUE(near(foot, 0.0f, 0.0f, 0.0f));
    EXPECT_EQ(distancePointSegment(Vector3f(13.0f, 4.0f, 0.0f), KDRSegment(a, b), foot), 5.0f);
    EXPECT_TRUE(near(foot, 10.0f, 0.0f, 0.0f));
    // The segment has length 10: projecting 0.000011 past the start gives (point - a) . s =
    // 0.00011, not below TOLERANCE, so the line case; 0.000009 gives 0.00009 and snaps to a.
    EXPECT_EQ(distancePointSegment(Vector3f(0.000011f, 1.0f, 0.0f), a, b, foot), 1.0f);
    EXPECT_TRUE(near(foot, 0.000011f, 0.0f, 0.0f, 1e-11));
    distancePointSegment(Vector3f(0.000009f, 1.0f, 0.0f), a, b, foot);
    EXPECT_TRUE(near(foot, 0.0f, 0.0f, 0.0f));

    // A zero-length segment: foot = a.
    Vector3f const c(1.0f, 2.0f, 2.0f);
    foot = sentinelVector();
    EXPECT_EQ(distancePointSegment(Vector3f(), c, c, foot), 3.0f);
    EXPECT_TRUE(near(foot, 1.0f, 2.0f, 2.0f));

    // Length 0.005: s . s = 2.5e-5 is below TOLERANCE, so every point whose projection falls on
    // the segment, and some beyond it, snap to a. Only 0.02 past a does b take over.
    Vector3f const e(0.005f, 0.0f, 0.0f);
    EXPECT_NEAR(distancePointSegment(Vector3f(0.004f, 1.0f, 0.0f), a, e, foot),
                std::sqrt(0.004 * 0.004 + 1.0), 1e-7);
    EXPECT_TRUE(near(foot, 0.0f, 0.0f, 0.0f));
    distancePointSegment(Vector3f(0.01f, 1.0f, 0.0f), a, e, foot);
    EXPECT_TRUE(near(foot, 0.0f, 0.0f, 0.0f));
    distancePointSegment(Vector3f(0.03f, 1.0f, 0.0f), a, e, foot);
    EXPECT_TRUE(near(foot, 0.005f, 0.0f, 0.0f));

    // foot may be the point itself.
    Vector3f p(-3.0f, 4.0f, 0.0f);
    EXPECT_EQ(distancePointSegment(p, a, b, p), 5.0f);
    EXPECT_TRUE(near(p, 0.0f, 0.0f, 0.0f));
}

TEST(DistanceLineLine, SkewParallelAndIdenticalLines) {
    KDRLine const xAxis = makeLine(Vector3f(), X);
    float p1 = SENTINEL, p2 = SENTINEL;
    // Skew, on either side: the distance is never negative.
    KDRLine const above = makeLine(Vector3f(2.0f, 5.0f, 3.0f), Y);
    EXPECT_EQ(distanceLineLine(xAxis, above), 3.0f);
    EXPECT_EQ(distanceLineLine(xAxis, makeLine(Vector3f(2.0f, 5.0f, -3.0f), Y)), 3.0f);
    EXPECT_EQ(distanceLineLine(xAxis, above, p1, p2), 3.0f);
    EXPECT_EQ(p1, 2.0f); // (2, 0, 0) on the x axis
    EXPECT_EQ(p2, -5.0f);
    // Not perpendicular: l2 = (1, -1, 2) + t (S, S, 0) passes (2, 0, 2) at t = sqrt(2).
    EXPECT_NEAR(distanceLineLine(xAxis, makeLine(Vector3f(1.0f, -1.0f, 2.0f), Vector3f(S, S, 0.0f)),
                                 p1, p2),
                2.0f, 1e-6);
    EXPECT_NEAR(p1, 2.0f, 1e-6);
    EXPECT_NEAR(p2, std::sqrt(2.0), 1e-6);

    // Parallel: the separation, param2 = 0 and param1 the projection of l2's point.
    KDRLine const parallel = makeLine(Vector3f(7.0f, 0.0f, 4.0f), -X);
    EXPECT_EQ(distanceLineLine(xAxis, parallel), 4.0f);
    EXPECT_EQ(distanceLineLine(xAxis, parallel, p1, p2), 4.0f);
    EXPECT_EQ(p1, 7.0f);
    EXPECT_EQ(p2, 0.0f);
    p1 = p2 = SENTINEL;
    EXPECT_EQ(distanceLineLine(xAxis, xAxis, p1, p2), 0.0f);
    EXPECT_EQ(p1, 0.0f);
    EXPECT_EQ(p2, 0.0f);
    // Directions 0.00005 rad apart have |c| <= TOLERANCE: measured as parallel lines.
    KDRLine const nearly = makeLine(Vector3f(0.0f, 0.0f, 1.0f), Vector3f(1.0f, 0.00005f, 0.0f));
    EXPECT_EQ(distanceLineLine(xAxis, nearly), 1.0f);
}

TEST(DistanceLineSegment, ClampsTheFractionToTheEnds) {
    KDRLine const xAxis = makeLine(Vector3f(), X);
    float lineParam = SENTINEL, segParam = SENTINEL;
    EXPECT_EQ(distanceLineSegment(
                  xAxis, KDRSegment(Vector3f(2.0f, -1.0f, 3.0f), Vector3f(2.0f, 1.0f, 3.0f)),
                  lineParam, segParam),
              3.0f);
    EXPECT_EQ(lineParam, 2.0f);
    EXPECT_EQ(segParam, 0.5f);
    // The carrier's nearest point lies before m_start, then beyond m_end: the end's distance.
    EXPECT_EQ(distanceLineSegment(
                  xAxis, KDRSegment(Vector3f(2.0f, 1.0f, 3.0f), Vector3f(2.0f, 3.0f, 3.0f)),
                  lineParam, segParam),
              std::sqrt(10.0f));
    EXPECT_EQ(segParam, 0.0f);
    EXPECT_EQ(lineParam, 2.0f);
    lineParam = SENTINEL;
    EXPECT_EQ(distanceLineSegment(
                  xAxis, KDRSegment(Vector3f(5.0f, -3.0f, 3.0f), Vector3f(2.0f, -1.0f, 3.0f)),
                  lineParam, segParam),
              std::sqrt(10.0f));
    EXPECT_EQ(segParam, 1.0f);
    EXPECT_EQ(lineParam, 2.0f);
    // Parallel to the line: the separation, fraction 0.
    EXPECT_EQ(distanceLineSegment(
                  xAxis, KDRSegment(Vector3f(0.0f, 1.0f, 0.0f), Vector3f(4.0f, 1.0f, 0.0f)),
                  lineParam, segParam),
              1.0f);
    EXPECT_EQ(segParam, 0.0f);
    // Zero length: the distance of its point; the fraction is 0 / 0.
    Vector3f const p(2.0f, 1.0f, 3.0f);
    EXPECT_EQ(distanceLineSegment(xAxis, KDRSegment(p, p), lineParam, segParam), std::sqrt(10.0f));
    EXPECT_EQ(lineParam, 2.0f);
    EXPECT_TRUE(std::isnan(segParam));
}

TEST(DistancePointPointSet, NearestFirstAndEmpty) {
    KDRArray<Vector3f> set;
    int index = -7;
    EXPECT_EQ(distancePointPointSet(Vector3f(), set, index), 0.0f);
    EXPECT_EQ(index, -7);
    set.push_back(Vector3f(5.0f, 0.0f, 0.0f));
    EXPECT_EQ(distancePointPointSet(Vector3f(), set, index), 5.0f);
    EXPECT_EQ(index, 0);
    set.push_back(Vector3f(0.0f, 3.0f, 0.0f));
    set.push_back(Vector3f(0.0f, 0.0f, -1.0f)); // position 2
    set.push_back(Vector3f(2.0f, 0.0f, 0.0f));
    set.push_back(Vector3f(0.0f, 4.0f, 0.0f));
    set.push_back(Vector3f(0.0f, 1.0f, 0.0f)); // position 5: as near as position 2
    EXPECT_EQ(distancePointPointSet(Vector3f(), set, index), 1.0f);
    EXPECT_EQ(index, 2);
}

TEST(PointTests, LinePlaneAndSegmentTolerances) {
    // pointOnLine compares the squared distance: 0.1 away is on for 0.011, off for 0.009.
    KDRLine const xAxis = makeLine(Vector3f(), X);
    EXPECT_TRUE(pointOnLine(Vector3f(5.0f, 0.1f, 0.0f), xAxis, 0.011f));
    EXPECT_FALSE(pointOnLine(Vector3f(5.0f, 0.1f, 0.0f), xAxis, 0.009f));

    // pointOnPlane compares |n . p + d| with its argument, inclusive, not divided by |n|.
    Vector3f const above(3.0f, 4.0f, 0.001f);
    EXPECT_TRUE(pointOnPlane(above, Plane(), 0.001f));
    EXPECT_FALSE(pointOnPlane(above, Plane(), 0.0009f));
    EXPECT_FALSE(pointOnPlane(above, makePlane(0.0f, 0.0f, 2.0f, 0.0f), 0.0015f));
    EXPECT_TRUE(pointOnPlane(above, makePlane(0.0f, 0.0f, 2.0f, 0.0f), 0.0025f));
    EXPECT_FALSE(pointOnPlane(Vector3f(nan(), 0.0f, 0.0f), Plane(), 1.0f));
}

TEST(PointTests, SegmentBoundsAndCarrierDistance) {
    KDRSegment const seg(Vector3f(), Vector3f(10.0f, 0.0f, 0.0f));
    // The carrier test is pointOnLine's squared distance.
    EXPECT_TRUE(pointOnSegment(Vector3f(5.0f, 0.1f, 0.0f), seg, 0.011f));
    EXPECT_FALSE(pointOnSegment(Vector3f(5.0f, 0.1f, 0.0f), seg, 0.009f));
    // The ends, at tolerance 0.
    EXPECT_TRUE(pointOnSegment(Vector3f(), seg, 0.0f));
    EXPECT_TRUE(pointOnSegment(Vector3f(10.0f, 0.0f, 0.0f), seg, 0.0f));
    // The bounds are on dot = (p - start) . s: below, widened by the tolerance (here 0.5, so
    // 0.05 before the start); above, not widened at all.
    EXPECT_TRUE(pointOnSegment(Vector3f(-0.04f, 0.0f, 0.0f), seg, 0.5f));
    EXPECT_FALSE(pointOnSegment(Vector3f(-0.06f, 0.0f, 0.0f), seg, 0.5f));
    EXPECT_FALSE(pointOnSegment(Vector3f(10.01f, 0.0f, 0.0f), seg, 0.5f));

    // A segment shorter than TOLERANCE keeps its direction: 0.01 off it is a squared 0.0001.
    KDRSegment const tiny(Vector3f(), Vector3f(0.00005f, 0.0f, 0.0f));
    EXPECT_TRUE(pointOnSegment(Vector3f(0.00002f, 0.01f, 0.0f), tiny, 0.0002f));
    EXPECT_FALSE(pointOnSegment(Vector3f(0.00002f, 0.01f, 0.0f), tiny, 0.00005f));
    // Zero length: the squared distance to the point.
    Vector3f const c(1.0f, 1.0f, 1.0f);
    EXPECT_TRUE(pointOnSegment(Vector3f(1.0f, 1.1f, 1.0f), KDRSegment(c, c), 0.011f));
    EXPECT_FALSE(pointOnSegment(Vector3f(1.0f, 1.1f, 1.0f), KDRSegment(c, c), 0.009f));
    EXPECT_FALSE(pointOnSegment(Vector3f(nan(), 0.0f, 0.0f), seg, 1.0f));
}

TEST(AreCoplanar, ParallelCrossingAndSkewLines) {
    KDRLine const xAxis = makeLine(Vector3f(), X);
    EXPECT_TRUE(areCoplanar(xAxis, makeLine(Vector3f(0.0f, 3.0f, 5.0f), X), 0.0f));
    EXPECT_TRUE(areCoplanar(xAxis, makeLine(Vector3f(), Vector3f(0.0f, S, S)), 0.0f));
    EXPECT_TRUE(areCoplanar(xAxis, makeLine(Vector3f(1.0f, 1.0f, 0.0f), Y), 0.0f));
    // Skew by 1: c = (0, 0, -1), coplanar only for a tolerance of 1 (inclusive).
    KDRLine const skew = makeLine(Vector3f(0.0f, 0.0f, 1.0f), Y);
    EXPECT_FALSE(areCoplanar(xAxis, skew, 0.01f));
    EXPECT_FALSE(areCoplanar(xAxis, skew, 0.99f));
    EXPECT_TRUE(areCoplanar(xAxis, skew, 1.0f));
}

TEST(Projection, OnALineAndOnAPlane) {
    Vector3f out = sentinelVector();
    float param = SENTINEL;
    EXPECT_EQ(projectionOrtho(out, param, Vector3f(4.0f, 5.0f, 6.0f),
                              makeLine(Vector3f(1.0f, 1.0f, 0.0f), X)),
              e_geomProjected);
    EXPECT_EQ(param, 3.0f);
    EXPECT_TRUE(near(out, 4.0f, 1.0f, 0.0f));

    // Along a direction of any length.
    Plane const z0;
    EXPECT_EQ(projection(out, Vector3f(1.0f, 2.0f, 3.0f), z0, Vector3f(0.0f, 0.0f, -2.0f)),
              e_geomIntersection);
    EXPECT_TRUE(near(out, 1.0f, 2.0f, 0.0f));
    EXPECT_EQ(projection(out, Vector3f(0.0f, 0.0f, 2.0f), z0, Vector3f(1.0f, 0.0f, -1.0f)),
              e_geomIntersection);
    EXPECT_TRUE(near(out, 2.0f, 0.0f, 0.0f, 1e-6));
    // A direction too short for setDir stays zero; one along the plane is parallel.
    out = sentinelVector();
    Vector3f const tiny(0.0f, 0.0f, 0.00005f);
    EXPECT_EQ(projection(out, Vector3f(1.0f, 2.0f, 0.0f), z0, tiny), e_geomContained);
    EXPECT_EQ(projection(out, Vector3f(1.0f, 2.0f, 3.0f), z0, tiny), e_geomParallel);
    EXPECT_EQ(projection(out, Vector3f(1.0f, 2.0f, 3.0f), z0, X), e_geomParallel);
    EXPECT_TRUE(isSentinel(out));

    // The foot of the perpendicular: (1, 0, 0) is 2 below the plane 0.6 y + 0.8 z = 2.
    EXPECT_EQ(projectionOrtho(out, Vector3f(1.0f, 0.0f, 0.0f), makePlane(0.0f, 0.6f, 0.8f, -2.0f)),
              e_geomIntersection);
    EXPECT_TRUE(near(out, 1.0f, 1.2f, 1.6f, 1e-6));
    // A normal of length 2 is normalised by the projection's setDir.
    EXPECT_EQ(projectionOrtho(out, Vector3f(5.0f, 6.0f, 7.0f), makePlane(0.0f, 0.0f, 2.0f, -4.0f)),
              e_geomIntersection);
    EXPECT_TRUE(near(out, 5.0f, 6.0f, 2.0f));
}

TEST(SpherisePoint, ThreeNormsOfTheInput) {
    Vector3f out = sentinelVector();
    spherisePoint(out, Vector3f(3.0f, 0.0f, 4.0f), 10.0f);
    EXPECT_TRUE(near(out, 6.0f, 0.0f, 8.0f));
    spherisePoint(out, Vector3f(3.0f, 0.0f, 4.0f), 10.0f, 2.0f); // the same norm
    EXPECT_TRUE(near(out, 6.0f, 0.0f, 8.0f, 1e-6));
    // Signed components: with e = 1, S = 1 - 1 + 3.
    spherisePoint(out, Vector3f(1.0f, -1.0f, 3.0f), 6.0f, 1.0f);
    EXPECT_TRUE(near(out, 2.0f, -2.0f, 6.0f, 1e-6));
    // e = 3: S = -1 + 8 + 8 = 15, scale = 1 / cbrt(15).
    float const k = static_cast<float>(1.0 / std::cbrt(15.0));
    spherisePoint(out, Vector3f(-1.0f, 2.0f, 2.0f), 1.0f, 3.0f);
    EXPECT_TRUE(near(out, -k, 2.0f * k, 2.0f * k, 1e-6));
    // Per-axis exponents on absolute values, and no root: S = |1|^3 + |3|^2 + |2|^1 = 12.
    spherisePoint(out, Vector3f(-3.0f, 0.0f, 4.0f), 10.0f, Vector3f(2.0f, 2.0f, 2.0f));
    EXPECT_TRUE(near(out, -1.2f, 0.0f, 1.6f, 1e-6));
    spherisePoint(out, Vector3f(2.0f, -3.0f, 1.0f), 12.0f, Vector3f(1.0f, 2.0f, 3.0f));
    EXPECT_TRUE(near(out, 2.0f, -3.0f, 1.0f, 1e-6));
    // No guard against a zero input.
    spherisePoint(out, Vector3f(), 1.0f);
    EXPECT_TRUE(std::isnan(out.x()));
}

TEST(Normal3Pts, SumOfConsecutiveEdges) {
    Vector3f const a(0.0f, 0.0f, 0.0f), b(1.0f, 0.0f, 0.0f), c(1.0f, 2.0f, 0.0f);
    Vector3f out = sentinelVector();
    normal3Pts(out, a, b, c, false, false); // c - a
    EXPECT_TRUE(near(out, 1.0f, 2.0f, 0.0f));
    normal3Pts(out, a, b, c, false, true);
    float const r5 = static_cast<float>(1.0 / std::sqrt(5.0));
    EXPECT_TRUE(near(out, r5, 2.0f * r5, 0.0f, 1e-7));
    normal3Pts(out, a, b, c, true, false); // (1, 0, 0) + (0, 1, 0)
    EXPECT_TRUE(near(out, 1.0f, 1.0f, 0.0f));
    normal3Pts(out, a, b, c, true, true);
    EXPECT_TRUE(near(out, S, S, 0.0f, 1e-7));
    // A back-tracking path sums to zero, which normalisation leaves alone.
    normal3Pts(out, a, Vector3f(3.0f, 0.0f, 0.0f), a, false, true);
    EXPECT_TRUE(near(out, 0.0f, 0.0f, 0.0f));
    normal3Pts(out, a, Vector3f(3.0f, 0.0f, 0.0f), a, true, true);
    EXPECT_TRUE(near(out, 0.0f, 0.0f, 0.0f));
    // A zero edge stays zero under normalizeEdges.
    normal3Pts(out, a, a, c, true, false);
    EXPECT_TRUE(near(out, r5, 2.0f * r5, 0.0f, 1e-7));

    Vector3f points[4] = {Vector3f(9.0f, 9.0f, 9.0f), c, b, a};
    normal3Pts(out, points, 3, 2, 1, false, false);
    EXPECT_TRUE(near(out, 1.0f, 2.0f, 0.0f));
    normal3Pts(points[0], points, 1, 2, 0, false, false); // into a point of the array: 9,9,9 - c
    EXPECT_TRUE(near(points[0], 8.0f, 7.0f, 9.0f));
}

TEST(Cote, OffsetOverTheHalfAngleTangent) {
    Vector3f const x(1.0f, 0.0f, 0.0f);
    float half = SENTINEL;
    EXPECT_EQ(Cote(x, Vector3f(-1.0f, 0.0f, 0.0f), 5.0f, half), 0.0f); // opposite
    EXPECT_EQ(half, static_cast<float>(HALF_PI_D));
    half = SENTINEL;
    EXPECT_EQ(Cote(x, Vector3f(2.0f, 0.0f, 0.0f), 5.0f, half), 0.0f); // equal
    EXPECT_EQ(half, 0.0f);
    EXPECT_NEAR(Cote(x, Vector3f(0.0f, 3.0f, 0.0f), 5.0f, half), 5.0f, 1e-6); // tan(pi/4) = 1
    EXPECT_EQ(half, static_cast<float>(PI_D / 4.0));
    Vector3f const at120(-0.5f, static_cast<float>(std::sqrt(0.75)), 0.0f);
    EXPECT_NEAR(Cote(x, at120, 3.0f, half), 3.0 / std::sqrt(3.0), 1e-6);

    // The limits are 0.01 on the half angle from pi/2 and on the tangent.
    auto at = [](double angle) {
        return Vector3f(static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)),
                        0.0f);
    };
    EXPECT_EQ(Cote(x, at(PI_D - 0.019), 1.0f, half), 0.0f);
    EXPECT_NEAR(Cote(x, at(PI_D - 0.021), 1.0f, half), std::tan(0.0105), 1e-5);
    EXPECT_EQ(Cote(x, at(0.0198), 1.0f, half), 0.0f);
    EXPECT_NEAR(Cote(x, at(0.0202), 1.0f, half), 1.0 / std::tan(0.0101), 1e-2);
}

using DistanceKernel = KernelRestore;

TEST_F(DistanceKernel, CrossProductsGoThroughTheCurrentKernel) {
    int count = 0;
    (new CountingCrossKernel(&count))->setDefault();
    KDRLine const xAxis = makeLine(Vector3f(), X);
    EXPECT_TRUE(pointOnLine(Vector3f(2.0f, 0.0f, 0.0f), xAxis, 0.0f));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(distanceLineLine(xAxis, makeLine(Vector3f(0.0f, 0.0f, 2.0f), Y)), 2.0f);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(distanceLineLine(xAxis, makeLine(Vector3f(0.0f, 0.0f, 2.0f), X)), 2.0f);
    EXPECT_EQ(count, 4); // parallel: a second product for the separation
    EXPECT_TRUE(areCoplanar(xAxis, makeLine(Vector3f(0.0f, 1.0f, 0.0f), Y), 0.0f));
    EXPECT_EQ(count, 7);
    Vector3f foot;
    distancePointLine(Vector3f(1.0f, 1.0f, 1.0f), xAxis, foot);
    EXPECT_EQ(count, 7);
}
