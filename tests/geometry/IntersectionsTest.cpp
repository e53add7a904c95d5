// Tests of the 3D intersections and PlaneProjector. Out-parameters start as sentinels, so that a
// check also proves what a query left alone.
#include "geometry/PrimitiveTestSupport.h"

#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace primtest;

namespace {
Vector3f const X(1.0f, 0.0f, 0.0f), Y(0.0f, 1.0f, 0.0f), Z(0.0f, 0.0f, 1.0f);
float const S = 0.70710677f; // sqrt(1/2) in float
} // namespace

TEST(InterLinePlane, HitsAndTheParallelBranch) {
    Vector3f out = sentinelVector();
    float t = SENTINEL;
    KDRLine const down = makeLine(Vector3f(1.0f, 2.0f, 3.0f), -Z);
    EXPECT_EQ(interLinePlane(out, t, down, makePlane(0.0f, 0.0f, 1.0f, -1.0f)), e_geomIntersection);
    EXPECT_EQ(t, 2.0f);
    EXPECT_TRUE(near(out, 1.0f, 2.0f, 1.0f));
    // Plane at distance 2 from the origin with normal (0, 0.6, 0.8): along z the hit is at 2/0.8.
    EXPECT_EQ(interLinePlane(out, t, makeLine(Vector3f(), Z), makePlane(0.0f, 0.6f, 0.8f, -2.0f)),
              e_geomIntersection);
    EXPECT_NEAR(t, 2.5f, 1e-6);
    EXPECT_TRUE(near(out, 0.0f, 0.0f, 2.5f, 1e-6));

    // |m_dir . n| exactly at the float 0.0001f (below the double TOLERANCE) is parallel; the next
    // float up gives a hit.
    Plane const z0;
    out = sentinelVector();
    t = SENTINEL;
    KDRLine steep = makeLine(Vector3f(0.0f, 0.0f, 1.0f), Vector3f(0.0f, 0.0f, 0.0001f));
    EXPECT_EQ(interLinePlane(out, t, steep, z0), e_geomParallel);
    EXPECT_TRUE(isSentinel(out));
    EXPECT_EQ(t, SENTINEL);
    steep.m_dir.z() = std::nextafter(0.0001f, 1.0f);
    EXPECT_EQ(interLinePlane(out, t, steep, z0), e_geomIntersection);
    EXPECT_NEAR(t, -1.0 / 0.0001, 0.01);

    // A line in the plane, and parallel ones at 0.0002 and 0.00005 (within TOLERANCE).
    float const heights[] = {0.0f, 0.0002f, 0.00005f, -0.00005f};
    _e_geomInfo const expected[] = {e_geomContained, e_geomParallel, e_geomContained,
                                    e_geomContained};
    for (int i = 0; i < 4; ++i) {
        out = sentinelVector();
        t = SENTINEL;
        EXPECT_EQ(interLinePlane(out, t, makeLine(Vector3f(3.0f, 0.0f, heights[i]), X), z0),
                  expected[i])
            << "height " << heights[i];
        EXPECT_TRUE(isSentinel(out));
        EXPECT_EQ(t, SENTINEL);
    }
}

TEST(InterLinePlane, DegenerateInputGivesCodesNotWrites) {
    Vector3f out = sentinelVector();
    float t = SENTINEL;
    Plane const z0;
    // A zero direction never meets: contained or parallel by where its point is.
    EXPECT_EQ(interLinePlane(out, t, makeLine(Vector3f(1.0f, 1.0f, 0.0f), Vector3f()), z0),
              e_geomContained);
    EXPECT_EQ(interLinePlane(out, t, makeLine(Vector3f(1.0f, 1.0f, 1.0f), Vector3f()), z0),
              e_geomParallel);
    // NaN fails every comparison: a NaN direction takes the parallel branch, and a NaN point
    // there is not within the tolerance.
    EXPECT_EQ(interLinePlane(out, t, makeLine(Vector3f(), Vector3f(0.0f, 0.0f, nan())), z0),
              e_geomContained);
    EXPECT_EQ(interLinePlane(out, t, makeLine(Vector3f(0.0f, 0.0f, nan()), X), z0), e_geomParallel);
    // A zero normal is parallel to everything.
    EXPECT_EQ(interLinePlane(out, t, makeLine(Vector3f(), Z), makePlane(0.0f, 0.0f, 0.0f, 1.0f)),
              e_geomParallel);
    EXPECT_TRUE(isSentinel(out));
    EXPECT_EQ(t, SENTINEL);
}

TEST(InterLinePlaneAxis, CallerToleranceOnTheDirectionAndThePoint) {
    float t = SENTINEL;
    KDRLine line = makeLine(Vector3f(0.0f, 0.0f, 5.0f), Vector3f(0.0f, 0.0f, 1e-8f));
    EXPECT_EQ(interLinePlaneXY(t, line, 2.0f, 1e-7f), e_geomParallel);
    EXPECT_EQ(interLinePlaneXY(t, line, 5.0f, 1e-7f), e_geomContained);
    EXPECT_EQ(t, SENTINEL);
    line.m_dir.z() = 1e-6f;
    EXPECT_EQ(interLinePlaneXY(t, line, 2.0f, 1e-7f), e_geomIntersection);
    EXPECT_NEAR(t, -3.0 / 1e-6, 0.5); // (value - z) / dir.z

    KDRLine const slanted = makeLine(Vector3f(1.0f, 2.0f, 3.0f), Vector3f(0.6f, 0.8f, 0.0f));
    EXPECT_EQ(interLinePlaneYZ(t, slanted, 4.0f, 1e-7f), e_geomIntersection); // x = 4
    EXPECT_NEAR(t, 5.0f, 1e-5);
    EXPECT_EQ(interLinePlaneXZ(t, slanted, 6.0f, 1e-7f), e_geomIntersection); // y = 6
    EXPECT_NEAR(t, 5.0f, 1e-5);
    t = SENTINEL;
    EXPECT_EQ(interLinePlaneXY(t, slanted, 3.0f, 1e-7f), e_geomContained);
    EXPECT_EQ(interLinePlaneXY(t, slanted, 3.5f, 0.5f), e_geomContained); // inclusive
    EXPECT_EQ(interLinePlaneXY(t, slanted, 3.5f, 0.25f), e_geomParallel);
    EXPECT_EQ(t, SENTINEL);
    // The direction test is strict: |dir| equal to the tolerance is parallel.
    EXPECT_EQ(interLinePlaneXZ(t, slanted, 0.0f, 0.8f), e_geomParallel);
    EXPECT_EQ(t, SENTINEL);
}

TEST(InterLineLine, MeetingSkewAndParallelLines) {
    Vector3f out = sentinelVector();
    float t1 = SENTINEL, t2 = SENTINEL;
    KDRLine const l1 = makeLine(Vector3f(), X);
    // Meeting at (2, 0, 0): 2 along l1, 3 along l2.
    EXPECT_EQ(interLineLine(out, t1, t2, l1, makeLine(Vector3f(2.0f, -3.0f, 0.0f), Y)),
              e_geomIntersection);
    EXPECT_EQ(t1, 2.0f);
    EXPECT_EQ(t2, 3.0f);
    EXPECT_TRUE(near(out, 2.0f, 0.0f, 0.0f));

    // Passing 0.001 apart: no intersection, but the outputs are written all the same.
    out = sentinelVector();
    t1 = t2 = SENTINEL;
    EXPECT_EQ(interLineLine(out, t1, t2, l1, makeLine(Vector3f(2.0f, -3.0f, 0.001f), Y)),
              e_geomNoIntersection);
    EXPECT_EQ(t1, 2.0f);
    EXPECT_EQ(t2, 3.0f);
    EXPECT_TRUE(near(out, 2.0f, 0.0f, 0.0f));
    // 0.00005 apart along one axis is within TOLERANCE.
    EXPECT_EQ(interLineLine(out, t1, t2, l1, makeLine(Vector3f(2.0f, -3.0f, 0.00005f), Y)),
              e_geomIntersection);

    // Identical lines, parallel ones, and a zero direction: parallel, nothing written.
    out = sentinelVector();
    t1 = t2 = SENTINEL;
    EXPECT_EQ(interLineLine(out, t1, t2, l1, l1), e_geomParallel);
    EXPECT_EQ(interLineLine(out, t1, t2, l1, makeLine(Vector3f(0.0f, 1.0f, 0.0f), -X)),
              e_geomParallel);
    EXPECT_EQ(interLineLine(out, t1, t2, l1, makeLine(Vector3f(0.0f, 1.0f, 0.0f), Vector3f())),
              e_geomParallel);
    EXPECT_TRUE(isSentinel(out));
    EXPECT_EQ(t1, SENTINEL);
    EXPECT_EQ(t2, SENTINEL);

    // A NaN point flows through to a failed closeness test: no crash, no intersection.
    EXPECT_EQ(interLineLine(out, t1, t2, l1, makeLine(Vector3f(nan(), 0.0f, 0.0f), Y)),
              e_geomNoIntersection);
}

TEST(InterLineLine, SolvesAcrossEachDominantAxis) {
    Vector3f out;
    float t1 = SENTINEL, t2 = SENTINEL;
    // c = y x z = x: solved in y and z. They meet at (5, 1, 0).
    EXPECT_EQ(interLineLine(out, t1, t2, makeLine(Vector3f(5.0f, 0.0f, 0.0f), Y),
                            makeLine(Vector3f(5.0f, 1.0f, -2.0f), Z)),
              e_geomIntersection);
    EXPECT_EQ(t1, 1.0f);
    EXPECT_EQ(t2, 2.0f);
    EXPECT_TRUE(near(out, 5.0f, 1.0f, 0.0f));
    // c = z x x = y: solved in z and x. They meet at (0, 7, 3).
    EXPECT_EQ(interLineLine(out, t1, t2, makeLine(Vector3f(0.0f, 7.0f, 0.0f), Z),
                            makeLine(Vector3f(-4.0f, 7.0f, 3.0f), X)),
              e_geomIntersection);
    EXPECT_EQ(t1, 3.0f);
    EXPECT_EQ(t2, 4.0f);
    EXPECT_TRUE(near(out, 0.0f, 7.0f, 3.0f));

    // Skew lines show the axis chosen on ties. c = (-S, 0, -S): z wins over x. Along z, l2's
    // parameter is -p.x / S = 0; along x it would be p.z / S = sqrt(2).
    EXPECT_EQ(interLineLine(out, t1, t2, makeLine(Vector3f(), Y),
                            makeLine(Vector3f(0.0f, 2.0f, 1.0f), Vector3f(S, 0.0f, -S))),
              e_geomNoIntersection);
    EXPECT_EQ(t1, 2.0f);
    EXPECT_EQ(t2, 0.0f);
    // c = (S, S, 0): x wins over y. Along x, t2 = p.y / S = 0; along y it would be -p.x / S.
    EXPECT_EQ(interLineLine(out, t1, t2, makeLine(Vector3f(), Z),
                            makeLine(Vector3f(1.0f, 0.0f, 2.0f), Vector3f(S, -S, 0.0f))),
              e_geomNoIntersection);
    EXPECT_EQ(t1, 2.0f);
    EXPECT_EQ(t2, 0.0f);
}

TEST(InterTwoCoplanarLines, SolvesInXYOnly) {
    Vector3f out = sentinelVector();
    float t = SENTINEL;
    // The caller is trusted: l2 lies 5 above, and out stays on l1.
    EXPECT_EQ(interTwoCoplanarLines(out, t, makeLine(Vector3f(), X),
                                    makeLine(Vector3f(3.0f, -1.0f, 5.0f), Y)),
              e_geomIntersection);
    EXPECT_EQ(t, 3.0f);
    EXPECT_TRUE(near(out, 3.0f, 0.0f, 0.0f));
    EXPECT_EQ(interTwoCoplanarLines(out, t,
                                    makeLine(Vector3f(0.0f, 0.0f, 1.0f), Vector3f(S, S, 0.0f)),
                                    makeLine(Vector3f(4.0f, 0.0f, 0.0f), -Y)),
              e_geomIntersection);
    EXPECT_NEAR(t, 4.0 / S, 1e-5);
    EXPECT_TRUE(near(out, 4.0f, 4.0f, 1.0f, 2e-6));

    // Parallel seen along z but not in space, and lines in a vertical plane: parallel.
    out = sentinelVector();
    t = SENTINEL;
    EXPECT_EQ(
        interTwoCoplanarLines(out, t, makeLine(Vector3f(), X),
                              makeLine(Vector3f(0.0f, 1.0f, 0.0f), Vector3f(0.6f, 0.0f, 0.8f))),
        e_geomParallel);
    EXPECT_EQ(
        interTwoCoplanarLines(out, t, makeLine(Vector3f(), Z),
                              makeLine(Vector3f(0.0f, 1.0f, 0.0f), Vector3f(0.0f, 0.6f, 0.8f))),
        e_geomParallel);
    EXPECT_TRUE(isSentinel(out));
    EXPECT_EQ(t, SENTINEL);
}

TEST(InterSegmentPlane, BoundsAreExclusiveBelowAndInclusiveAbove) {
    KDRSegment const seg(Vector3f(0.0f, 0.0f, 0.0f), Vector3f(0.0f, 0.0f, 2.0f));
    Vector3f out = sentinelVector();
    float t = SENTINEL;
    // Tolerance 0: a hit exactly at m_start is refused (the hit stays in the outputs) ...
    EXPECT_EQ(interSegmentPlane(out, t, seg, Plane(), 0.0f), e_geomNoIntersection);
    EXPECT_EQ(t, 0.0f);
    EXPECT_TRUE(near(out, 0.0f, 0.0f, 0.0f));
    // ... and one exactly at m_end is taken.
    out = sentinelVector();
    EXPECT_EQ(interSegmentPlane(out, t, seg, makePlane(0.0f, 0.0f, 1.0f, -2.0f), 0.0f),
              e_geomIntersection);
    EXPECT_EQ(t, 1.0f);
    EXPECT_TRUE(near(out, 0.0f, 0.0f, 2.0f));
    // Inside: t is a fraction of the segment.
    EXPECT_EQ(interSegmentPlane(out, t, seg, makePlane(0.0f, 0.0f, -1.0f, 0.5f), 0.0f),
              e_geomIntersection);
    EXPECT_EQ(t, 0.25f);
    EXPECT_TRUE(near(out, 0.0f, 0.0f, 0.5f));
}

TEST(InterSegmentPlane, SnapsWithinTheToleranceAndKeepsTheHitBeyondIt) {
    KDRSegment const seg(Vector3f(1.0f, 1.0f, 0.0f), Vector3f(1.0f, 1.0f, 2.0f));
    Vector3f out = sentinelVector();
    float t = SENTINEL;
    // z = -0.01 is t = -0.005 of the segment, within tolerance 0.01: snapped to m_start.
    EXPECT_EQ(interSegmentPlane(out, t, seg, makePlane(0.0f, 0.0f, 1.0f, 0.01f), 0.01f),
              e_geomIntersection);
    EXPECT_EQ(t, 0.0f);
    EXPECT_TRUE(near(out, 1.0f, 1.0f, 0.0f));
    // z = 2.01 is t = 1.005: snapped to m_end.
    out = sentinelVector();
    EXPECT_EQ(interSegmentPlane(out, t, seg, makePlane(0.0f, 0.0f, 1.0f, -2.01f), 0.01f),
              e_geomIntersection);
    EXPECT_EQ(t, 1.0f);
    EXPECT_TRUE(near(out, 1.0f, 1.0f, 2.0f));
    // Beyond the tolerance: no intersection, the carrier's hit stays in the outputs.
    EXPECT_EQ(interSegmentPlane(out, t, seg, makePlane(0.0f, 0.0f, 1.0f, 0.1f), 0.01f),
              e_geomNoIntersection);
    EXPECT_NEAR(t, -0.05f, 1e-7);
    EXPECT_TRUE(near(out, 1.0f, 1.0f, -0.1f, 1e-7));
    EXPECT_EQ(interSegmentPlane(out, t, seg, makePlane(0.0f, 0.0f, 1.0f, -2.1f), 0.01f),
              e_geomNoIntersection);
    EXPECT_NEAR(t, 1.05f, 1e-6);
    EXPECT_TRUE(near(out, 1.0f, 1.0f, 2.1f, 1e-6));
}

TEST(InterSegmentPlane, DegenerateAndParallelSegments) {
    Vector3f out = sentinelVector();
    float t = SENTINEL;
    Vector3f const p(1.0f, 2.0f, 0.0f);
    EXPECT_EQ(interSegmentPlane(out, t, KDRSegment(p, p), Plane(), 0.01f), e_geomNoIntersection);
    EXPECT_TRUE(isSentinel(out));
    EXPECT_EQ(t, SENTINEL);

    // The carrier's code is returned as it is; out stays, and t is scaled by 1/len (here 1/2)
    // whatever the code.
    KDRSegment const flat(Vector3f(0.0f, 0.0f, 1.0f), Vector3f(2.0f, 0.0f, 1.0f));
    EXPECT_EQ(interSegmentPlane(out, t, flat, Plane(), 0.01f), e_geomParallel);
    EXPECT_TRUE(isSentinel(out));
    EXPECT_EQ(t, SENTINEL / 2.0f);
    t = 8.0f;
    EXPECT_EQ(interSegmentPlane(out, t, flat, makePlane(0.0f, 0.0f, 1.0f, -1.0f), 0.01f),
              e_geomContained);
    EXPECT_TRUE(isSentinel(out));
    EXPECT_EQ(t, 4.0f);
}

TEST(InterSegmentSegment, LengthsAlongTheFirstSegmentWithoutSnapping) {
    KDRSegment const s1(Vector3f(0.0f, 0.0f, 0.0f), Vector3f(4.0f, 0.0f, 0.0f));
    Vector3f out = sentinelVector();
    float t = SENTINEL;
    EXPECT_EQ(interSegmentSegment(
                  out, t, s1, KDRSegment(Vector3f(1.0f, -1.0f, 0.0f), Vector3f(1.0f, 3.0f, 0.0f))),
              e_geomIntersection);
    EXPECT_EQ(t, 1.0f);
    EXPECT_TRUE(near(out, 1.0f, 0.0f, 0.0f));

    // Just past s1's end, within TOLERANCE: taken, and t stays past the end.
    float const past = 4.00005f;
    EXPECT_EQ(interSegmentSegment(
                  out, t, s1, KDRSegment(Vector3f(past, -1.0f, 0.0f), Vector3f(past, 3.0f, 0.0f))),
              e_geomIntersection);
    EXPECT_EQ(t, past);
    // Beyond s1's end: refused, with the carrier's crossing written.
    EXPECT_EQ(interSegmentSegment(
                  out, t, s1, KDRSegment(Vector3f(5.0f, -1.0f, 0.0f), Vector3f(5.0f, 3.0f, 0.0f))),
              e_geomNoIntersection);
    EXPECT_EQ(t, 5.0f);
    EXPECT_TRUE(near(out, 5.0f, 0.0f, 0.0f));
    // Before s2's start (its parameter -0.5) and beyond its end (parameter 3 > length 2).
    EXPECT_EQ(interSegmentSegment(
                  out, t, s1, KDRSegment(Vector3f(1.0f, 0.5f, 0.0f), Vector3f(1.0f, 3.0f, 0.0f))),
              e_geomNoIntersection);
    EXPECT_EQ(interSegmentSegment(
                  out, t, s1, KDRSegment(Vector3f(1.0f, -3.0f, 0.0f), Vector3f(1.0f, -1.0f, 0.0f))),
              e_geomNoIntersection);
    // Skew segments.
    EXPECT_EQ(interSegmentSegment(
                  out, t, s1, KDRSegment(Vector3f(1.0f, -1.0f, 1.0f), Vector3f(1.0f, 3.0f, 1.0f))),
              e_geomNoIntersection);

    // A zero-length segment has a zero direction: parallel, nothing written.
    out = sentinelVector();
    t = SENTINEL;
    Vector3f const p(1.0f, 0.0f, 0.0f);
    EXPECT_EQ(interSegmentSegment(out, t, s1, KDRSegment(p, p)), e_geomParallel);
    EXPECT_EQ(interSegmentSegment(out, t, KDRSegment(p, p), s1), e_geomParallel);
    EXPECT_TRUE(isSentinel(out));
    EXPECT_EQ(t, SENTINEL);
}

TEST(InterLineTriangle, CoordinatesInsideOnTheEdgesAndOutside) {
    Vector3f const p0(0.0f, 0.0f, 0.0f), p1(1.0f, 0.0f, 0.0f), p2(0.0f, 1.0f, 0.0f);
    Vector3f out = sentinelVector();
    float u = SENTINEL, v = SENTINEL;
    bool inside = false;
    EXPECT_EQ(
        interLineTriangle(out, u, v, inside, makeLine(Vector3f(0.25f, 0.5f, 5.0f), -Z), p0, p1, p2),
        e_geomIntersection);
    EXPECT_EQ(u, 0.25f);
    EXPECT_EQ(v, 0.5f);
    EXPECT_TRUE(inside);
    EXPECT_TRUE(near(out, 0.25f, 0.5f, 0.0f));

    // The line has no forward direction: from below, pointing away, it still meets the plane.
    EXPECT_EQ(interLineTriangle(out, u, v, inside, makeLine(Vector3f(0.25f, 0.5f, -5.0f), -Z), p0,
                                p1, p2),
              e_geomIntersection);
    EXPECT_TRUE(inside);

    // Corner p1, the middle of edge p1 p2 (u + v = 1 exactly), and just outside that edge.
    struct Case {
        float x, y;
        bool inside;
    } const cases[] = {{1.0f, 0.0f, true},       {0.5f, 0.5f, true},
                       {0.0f, 0.0f, true},       {0.5f, 0.5f + 0x1p-20f, false},
                       {-0x1p-20f, 0.5f, false}, {0.5f, -0x1p-20f, false},
                       {1.0f, 1.0f, false}};
    for (Case const & c : cases) {
        inside = !c.inside;
        EXPECT_EQ(
            interLineTriangle(out, u, v, inside, makeLine(Vector3f(c.x, c.y, 2.0f), Z), p0, p1, p2),
            e_geomIntersection);
        EXPECT_EQ(inside, c.inside) << c.x << ", " << c.y;
        EXPECT_EQ(u, c.x);
        EXPECT_EQ(v, c.y);
    }

    // A tilted triangle, hit from the origin through its centroid: u = v = 1/3.
    Vector3f const q0(1.0f, 0.0f, 0.0f), q1(0.0f, 2.0f, 0.0f), q2(0.0f, 0.0f, 3.0f);
    EXPECT_EQ(interLineTriangle(out, u, v, inside,
                                KDRLine(Vector3f(), Vector3f(1.0f, 2.0f, 3.0f), true), q0, q1, q2),
              e_geomIntersection);
    EXPECT_NEAR(u, 1.0 / 3.0, 1e-6);
    EXPECT_NEAR(v, 1.0 / 3.0, 1e-6);
    EXPECT_TRUE(near(out, 1.0f / 3.0f, 2.0f / 3.0f, 1.0f, 1e-6));
    EXPECT_TRUE(inside);
}

TEST(InterLineTriangle, ZeroDeterminantWritesOnlyInside) {
    Vector3f const p0(0.0f, 0.0f, 0.0f), p1(1.0f, 0.0f, 0.0f), p2(0.0f, 1.0f, 0.0f);
    KDRLine const lines[] = {makeLine(Vector3f(0.0f, 0.0f, 1.0f), X), // parallel to the plane
                             makeLine(Vector3f(0.2f, 0.2f, 0.0f), Y), // in the plane
                             makeLine(Vector3f(0.2f, 0.2f, 1.0f), Vector3f())};
    for (KDRLine const & line : lines) {
        Vector3f out = sentinelVector();
        float u = SENTINEL, v = SENTINEL;
        bool inside = true;
        EXPECT_EQ(interLineTriangle(out, u, v, inside, line, p0, p1, p2), e_geomNoIntersection);
        EXPECT_FALSE(inside);
        EXPECT_TRUE(isSentinel(out));
        EXPECT_EQ(u, SENTINEL);
        EXPECT_EQ(v, SENTINEL);
    }
    // A degenerate triangle: its three corners on one line.
    Vector3f out = sentinelVector();
    float u = SENTINEL, v = SENTINEL;
    bool inside = true;
    EXPECT_EQ(interLineTriangle(out, u, v, inside, makeLine(Vector3f(0.5f, 0.0f, 1.0f), -Z), p0, p1,
                                Vector3f(2.0f, 0.0f, 0.0f)),
              e_geomNoIntersection);
    EXPECT_FALSE(inside);
    EXPECT_TRUE(isSentinel(out));
}

TEST(InterPlanePlane, ParallelPlanesCompareTheirConstantsAsTheyStand) {
    KDRLine out;
    out.m_point = out.m_dir = sentinelVector();
    Plane const zUp = makePlane(0.0f, 0.0f, 1.0f, -1.0f); // z = 1
    EXPECT_EQ(interPlanePlane(out, zUp, zUp), e_geomCoincident);
    // The same plane z = 1 with the opposite normal: the constants differ by 2.
    EXPECT_EQ(interPlanePlane(out, zUp, makePlane(0.0f, 0.0f, -1.0f, 1.0f)), e_geomParallel);
    // z = -1 with the opposite normal has the same constant: counted as coincident.
    EXPECT_EQ(interPlanePlane(out, zUp, makePlane(0.0f, 0.0f, -1.0f, -1.0f)), e_geomCoincident);
    EXPECT_EQ(interPlanePlane(out, zUp, makePlane(0.0f, 0.0f, 1.0f, -3.0f)), e_geomParallel);
    // A zero normal is parallel to every plane.
    EXPECT_EQ(interPlanePlane(out, zUp, makePlane(0.0f, 0.0f, 0.0f, -1.0f)), e_geomCoincident);
    EXPECT_EQ(interPlanePlane(out, makePlane(0.0f, 0.0f, 0.0f, 0.0f), zUp), e_geomParallel);
    EXPECT_TRUE(isSentinel(out.m_point));
    EXPECT_TRUE(isSentinel(out.m_dir));
}

TEST(InterPlanePlane, NearlyParallelNormalsAndTheLineOfTwoPlanes) {
    KDRLine out;
    out.m_point = out.m_dir = sentinelVector();
    Plane const z0;
    // 0.5 degree: |c|^2 = sin^2 = 7.6e-5 <= TOLERANCE, the planes count as parallel.
    double const half = 0.5 * PI_D / 180.0;
    Plane tilted = makePlane(static_cast<float>(std::sin(half)), 0.0f,
                             static_cast<float>(std::cos(half)), 0.0f);
    EXPECT_EQ(interPlanePlane(out, z0, tilted), e_geomCoincident);
    tilted.m_d = -1.0f;
    EXPECT_EQ(interPlanePlane(out, z0, tilted), e_geomParallel);
    EXPECT_TRUE(isSentinel(out.m_point));
    // 1 degree: |c|^2 = 3.05e-4, a line. Its direction is c itself, of length sin(1 degree).
    double const one = PI_D / 180.0;
    tilted = makePlane(static_cast<float>(std::sin(one)), 0.0f, static_cast<float>(std::cos(one)),
                       -1.0f);
    EXPECT_EQ(interPlanePlane(out, z0, tilted), e_geomIntersection);
    EXPECT_TRUE(near(out.m_dir, 0.0f, static_cast<float>(std::sin(one)), 0.0f, 1e-7));
    EXPECT_NEAR(Vector3f::dotD(out.m_point, z0.m_normal) + z0.m_d, 0.0, 1e-5);
    EXPECT_NEAR(Vector3f::dotD(out.m_point, tilted.m_normal) + tilted.m_d, 0.0, 1e-5);

    // z = 1 and x = 2 meet on the line through (2, 0, 1) along z x x = y.
    EXPECT_EQ(interPlanePlane(out, makePlane(0.0f, 0.0f, 1.0f, -1.0f),
                              makePlane(1.0f, 0.0f, 0.0f, -2.0f)),
              e_geomIntersection);
    EXPECT_TRUE(near(out.m_point, 2.0f, 0.0f, 1.0f));
    EXPECT_TRUE(near(out.m_dir, 0.0f, 1.0f, 0.0f));
    // Normals of other lengths: the point still lies on both planes, m_dir is not normalised.
    Plane const a = makePlane(0.0f, 0.0f, 2.0f, -2.0f), b = makePlane(0.0f, 3.0f, 3.0f, 3.0f);
    EXPECT_EQ(interPlanePlane(out, a, b), e_geomIntersection);
    EXPECT_TRUE(near(out.m_dir, -6.0f, 0.0f, 0.0f));
    EXPECT_TRUE(near(out.m_point, 0.0f, -2.0f, 1.0f, 1e-6));
}

namespace {
// The cube [-1, 1]^3, each pair of planes with the same normal.
struct Cube {
    Plane p[6] = {makePlane(1.0f, 0.0f, 0.0f, 1.0f), makePlane(1.0f, 0.0f, 0.0f, -1.0f),
                  makePlane(0.0f, 1.0f, 0.0f, 1.0f), makePlane(0.0f, 1.0f, 0.0f, -1.0f),
                  makePlane(0.0f, 0.0f, 1.0f, 1.0f), makePlane(0.0f, 0.0f, 1.0f, -1.0f)};
};
} // namespace

TEST(InterLineViewingVolume, SlabsClipTheLine) {
    Cube const c;
    Vector3f out1 = sentinelVector(), out2 = sentinelVector();
    float tMin = SENTINEL, tMax = SENTINEL;
    // Along x: the y and z pairs are parallel and set no limit.
    interLineViewingVolume(out1, out2, tMin, tMax, makeLine(Vector3f(0.0f, 0.5f, 0.0f), X), c.p[0],
                           c.p[1], c.p[2], c.p[3], c.p[4], c.p[5]);
    EXPECT_EQ(tMin, -1.0f);
    EXPECT_EQ(tMax, 1.0f);
    EXPECT_TRUE(near(out1, -1.0f, 0.5f, 0.0f));
    EXPECT_TRUE(near(out2, 1.0f, 0.5f, 0.0f));
    // A pair is ignored also when the line runs outside it; planes of a pair in either order.
    interLineViewingVolume(out1, out2, tMin, tMax, makeLine(Vector3f(0.0f, 5.0f, 0.0f), -X), c.p[1],
                           c.p[0], c.p[2], c.p[3], c.p[4], c.p[5]);
    EXPECT_EQ(tMin, -1.0f);
    EXPECT_EQ(tMax, 1.0f);
    EXPECT_TRUE(near(out1, 1.0f, 5.0f, 0.0f));
    // Diagonal through the centre: limited by the x and y pairs at +-sqrt(2).
    interLineViewingVolume(out1, out2, tMin, tMax, makeLine(Vector3f(), Vector3f(S, S, 0.0f)),
                           c.p[0], c.p[1], c.p[2], c.p[3], c.p[4], c.p[5]);
    EXPECT_NEAR(tMin, -1.0 / S, 1e-6);
    EXPECT_NEAR(tMax, 1.0 / S, 1e-6);
    EXPECT_TRUE(near(out2, 1.0f, 1.0f, 0.0f, 1e-6));
    // Missing the cube: the x range [-4/S, -2/S] and the y range [-1/S, 1/S] do not overlap.
    interLineViewingVolume(out1, out2, tMin, tMax,
                           makeLine(Vector3f(3.0f, 0.0f, 0.0f), Vector3f(S, S, 0.0f)), c.p[0],
                           c.p[1], c.p[2], c.p[3], c.p[4], c.p[5]);
    EXPECT_NEAR(tMin, -1.0 / S, 1e-5);
    EXPECT_NEAR(tMax, -2.0 / S, 1e-5);
    EXPECT_GT(tMin, tMax);
    // A zero direction is parallel to every pair: no limit at all, both points at m_point.
    interLineViewingVolume(out1, out2, tMin, tMax, makeLine(Vector3f(1.0f, 2.0f, 3.0f), Vector3f()),
                           c.p[0], c.p[1], c.p[2], c.p[3], c.p[4], c.p[5]);
    EXPECT_EQ(tMin, FLOAT_LOWEST);
    EXPECT_EQ(tMax, FLOAT_MAX);
    EXPECT_TRUE(near(out1, 1.0f, 2.0f, 3.0f));
    EXPECT_TRUE(near(out2, 1.0f, 2.0f, 3.0f));
}

namespace {
// Replaces the projection: a host's projector, used and deleted through the base.
class CountingProjector : public PlaneProjector {
public:
    explicit CountingProjector(int * destroyed) : m_destroyed(destroyed) {}
    ~CountingProjector() override { ++*m_destroyed; }
    bool project(Vector3f & out, KDRLine const & line) override {
        out = line.m_point;
        return false;
    }

private:
    int * m_destroyed;
};
} // namespace

TEST(PlaneProjector, ProjectsOnItsPlaneAndLeavesOutOnFailure) {
    PlaneProjector projector; // starts with the plane z = 0
    Vector3f out = sentinelVector();
    EXPECT_TRUE(projector.project(out, makeLine(Vector3f(1.0f, 2.0f, 3.0f), -Z)));
    EXPECT_TRUE(near(out, 1.0f, 2.0f, 0.0f));
    out = sentinelVector();
    EXPECT_FALSE(projector.project(out, makeLine(Vector3f(0.0f, 0.0f, 1.0f), X))); // parallel
    EXPECT_FALSE(projector.project(out, makeLine(Vector3f(), X)));                 // contained
    EXPECT_TRUE(isSentinel(out));

    projector.setPlane(makePlane(0.0f, 0.0f, 1.0f, -5.0f));
    EXPECT_EQ(projector.getPlane().m_d, -5.0f);
    EXPECT_TRUE(projector.project(out, makeLine(Vector3f(1.0f, 2.0f, 3.0f), Z)));
    EXPECT_TRUE(near(out, 1.0f, 2.0f, 5.0f));

    int destroyed = 0;
    std::unique_ptr<PlaneProjector> host(new CountingProjector(&destroyed));
    EXPECT_FALSE(host->project(out, makeLine(Vector3f(7.0f, 8.0f, 9.0f), Z)));
    EXPECT_TRUE(near(out, 7.0f, 8.0f, 9.0f));
    host.reset();
    EXPECT_EQ(destroyed, 1);
}

using IntersectionKernel = KernelRestore;

TEST_F(IntersectionKernel, OnlyThePlanePlaneCrossGoesThroughTheKernel) {
    int count = 0;
    (new CountingCrossKernel(&count))->setDefault();
    KDRLine line;
    EXPECT_EQ(interPlanePlane(line, makePlane(0.0f, 0.0f, 1.0f, -1.0f),
                              makePlane(1.0f, 0.0f, 0.0f, -2.0f)),
              e_geomIntersection);
    EXPECT_EQ(count, 1);
    // interLineLine and interLineTriangle write their products out in place.
    Vector3f out;
    float t1, t2;
    bool inside;
    interLineLine(out, t1, t2, makeLine(Vector3f(), X), makeLine(Vector3f(2.0f, -3.0f, 0.0f), Y));
    interLineTriangle(out, t1, t2, inside, makeLine(Vector3f(0.1f, 0.1f, 1.0f), Z), Vector3f(), X,
                      Y);
    EXPECT_EQ(count, 1);
}
