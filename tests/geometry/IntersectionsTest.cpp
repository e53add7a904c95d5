// Tests of the 3D intersections and PlaneProjector. Out-parameters start as sentinels, so a check
// also proves what a query left alone.
#include "geometry/PrimitiveTestSupport.h"

#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

using namespace primtest;

namespace {
float const S = 0.70710677f; // sqrt(1/2) in float
}

TEST(InterLinePlane, ParallelBranchIsInclusiveAndWritesNothing) {
    V out = SENTINEL_V;
    float t = SENTINEL;
    KDRLine const lines[] = {L(Z, V(0, 0, 0.0001f)), // |dn| = 0.0001f <= TOLERANCE
                             L(V(3, 0, 0.0002f), X), L(V(3, 0, 0.00005f), X), L(X, O), L(Z, O),
                             L(V(0, 0, NaN), X)};
    _e_geomInfo const codes[] = {e_geomParallel,  e_geomParallel, e_geomContained,
                                 e_geomContained, e_geomParallel, e_geomParallel};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(interLinePlane(out, t, lines[i], Plane()), codes[i]) << i;
    EXPECT_EQ(interLinePlane(out, t, L(O, Z), P(0, 0, 0, 1)), e_geomParallel); // zero normal
    EXPECT_TRUE(untouched(out) && t == SENTINEL);
    EXPECT_EQ(interLinePlane(out, t, L(V(1, 2, 3), -Z), P(0, 0, 1, -1)), e_geomIntersection);
    EXPECT_TRUE(t == 2.0f && near(out, 1, 2, 1));

    // The axis-aligned forms take the caller's tolerance, strict on the direction.
    t = SENTINEL;
    KDRLine const steep = L(V(0, 0, 5), V(0, 0.5f, 1e-8f));
    EXPECT_EQ(interLinePlaneXY(t, steep, 2.0f, 1e-7f), e_geomParallel);
    EXPECT_EQ(interLinePlaneXY(t, steep, 5.0f, 1e-7f), e_geomContained);
    EXPECT_EQ(interLinePlaneXZ(t, steep, 1.0f, 0.5f), e_geomParallel);
    EXPECT_EQ(t, SENTINEL);
    EXPECT_EQ(interLinePlaneYZ(t, L(Z, V(0.5f, 0, 1)), 2.0f, 0.0f), e_geomIntersection);
    EXPECT_EQ(t, 4.0f);
}

TEST(InterLineLine, ParallelSkewAndTheDominantAxis) {
    V out = SENTINEL_V;
    float t1 = SENTINEL, t2 = SENTINEL;
    // Identical lines and a zero direction: parallel, nothing written.
    EXPECT_EQ(interLineLine(out, t1, t2, L(O, X), L(O, X)), e_geomParallel);
    EXPECT_EQ(interLineLine(out, t1, t2, L(O, X), L(Y, O)), e_geomParallel);
    EXPECT_TRUE(untouched(out) && t1 == SENTINEL && t2 == SENTINEL);
    // 0.001 apart: no intersection, but everything is written; 0.00005 apart is within TOLERANCE.
    EXPECT_EQ(interLineLine(out, t1, t2, L(O, X), L(V(2, -3, 0.001f), Y)), e_geomNoIntersection);
    EXPECT_TRUE(t1 == 2.0f && t2 == 3.0f && near(out, 2, 0, 0));
    EXPECT_EQ(interLineLine(out, t1, t2, L(O, X), L(V(2, -3, 0.00005f), Y)), e_geomIntersection);
    // Skew lines show the ties: c = (-S, 0, -S) takes z over x (x would give t2 = sqrt(2)),
    // c = (S, S, 0) takes x over y (y would give t2 = -sqrt(2)).
    interLineLine(out, t1, t2, L(O, Y), L(V(0, 2, 1), V(S, 0, -S)));
    EXPECT_EQ(t2, 0.0f);
    interLineLine(out, t1, t2, L(O, Z), L(V(1, 0, 2), V(S, -S, 0)));
    EXPECT_EQ(t2, 0.0f);
    // Coplanar lines are solved in x and y only; parallel there (not in space) writes nothing.
    out = SENTINEL_V;
    EXPECT_EQ(interTwoCoplanarLines(out, t1, L(O, X), L(Y, V(0.6f, 0, 0.8f))), e_geomParallel);
    EXPECT_TRUE(untouched(out));
    EXPECT_EQ(interTwoCoplanarLines(out, t1, L(O, X), L(V(3, -1, 5), Y)), e_geomIntersection);
    EXPECT_TRUE(t1 == 3.0f && near(out, 3, 0, 0));
}

TEST(InterSegmentPlane, ExclusiveLowerBoundInclusiveUpperBoundAndSnapping) {
    KDRSegment const seg(V(1, 1, 0), V(1, 1, 2));
    V out = SENTINEL_V;
    float t = SENTINEL;
    auto at = [&](float z, float tol) {
        return interSegmentPlane(out, t, seg, P(0, 0, 1, -z), tol);
    };
    // Tolerance 0: a hit exactly at m_start is refused (the hit is written), one at m_end taken.
    EXPECT_EQ(at(0, 0), e_geomNoIntersection);
    EXPECT_TRUE(t == 0.0f && near(out, 1, 1, 0));
    EXPECT_EQ(at(2, 0), e_geomIntersection);
    EXPECT_TRUE(t == 1.0f && near(out, 1, 1, 2));
    // Tolerance 0.01: t = -0.005 and 1.005 snap to the ends; -0.05 keeps the carrier's hit.
    EXPECT_EQ(at(-0.01f, 0.01f), e_geomIntersection);
    EXPECT_TRUE(t == 0.0f && near(out, 1, 1, 0));
    EXPECT_EQ(at(2.01f, 0.01f), e_geomIntersection);
    EXPECT_TRUE(t == 1.0f && near(out, 1, 1, 2));
    EXPECT_EQ(at(-0.1f, 0.01f), e_geomNoIntersection);
    EXPECT_TRUE(std::fabs(t + 0.05f) < 1e-7f && near(out, 1, 1, -0.1f, 1e-7));
    // Zero length: nothing written. Parallel or contained: the code as it is, out untouched, and
    // t scaled by 1 / len, which runs for every code.
    out = SENTINEL_V;
    t = SENTINEL;
    EXPECT_EQ(interSegmentPlane(out, t, KDRSegment(X, X), Plane(), 0.01f), e_geomNoIntersection);
    EXPECT_EQ(t, SENTINEL);
    EXPECT_EQ(interSegmentPlane(out, t, KDRSegment(Z, V(2, 0, 1)), Plane(), 0.01f), e_geomParallel);
    EXPECT_TRUE(t == SENTINEL / 2 && untouched(out));
}

TEST(InterSegmentSegment, ParametersWithinTheToleranceAreNotSnapped) {
    V out = SENTINEL_V;
    float t = SENTINEL;
    auto across = [&](float x, float y0, float y1) {
        return interSegmentSegment(out, t, KDRSegment(O, V(4, 0, 0)),
                                   KDRSegment(V(x, y0, 0), V(x, y1, 0)));
    };
    EXPECT_EQ(across(1, 0, 0), e_geomParallel); // zero length: zero direction
    EXPECT_TRUE(t == SENTINEL && untouched(out));
    EXPECT_EQ(across(4.00005f, -1, 3), e_geomIntersection);
    EXPECT_TRUE(t == 4.00005f && near(out, 4.00005f, 0, 0));
    EXPECT_EQ(across(5, -1, 3), e_geomNoIntersection);
    EXPECT_EQ(t, 5.0f);                                  // the carriers' crossing stays written
    EXPECT_EQ(across(1, 0.5f, 3), e_geomNoIntersection); // before s2's start
    EXPECT_EQ(across(1, -3, -1), e_geomNoIntersection);  // beyond s2's end
}

TEST(InterLineTriangle, EdgesCountAsInsideAndAZeroDeterminantWritesOnlyInside) {
    V out = SENTINEL_V;
    float u = SENTINEL, v = SENTINEL;
    bool in = true;
    // Parallel line, zero direction, degenerate triangle.
    EXPECT_EQ(interLineTriangle(out, u, v, in, L(Z, X), O, X, Y), e_geomNoIntersection);
    EXPECT_FALSE(in);
    in = true;
    EXPECT_EQ(interLineTriangle(out, u, v, in, L(Z, O), O, X, Y), e_geomNoIntersection);
    EXPECT_EQ(interLineTriangle(out, u, v, in, L(Z, Z), O, X, X), e_geomNoIntersection);
    EXPECT_TRUE(!in && u == SENTINEL && v == SENTINEL && untouched(out));
    // In this triangle (x, y) has u = x, v = y; the line has no forward direction.
    float const xs[] = {0.25f, 1, 0.5f, 0.5f, -0.0001f}, ys[] = {0.5f, 0, 0.5f, 0.5001f, 0.5f};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(interLineTriangle(out, u, v, in, L(V(xs[i], ys[i], -2), -Z), O, X, Y),
                  e_geomIntersection);
        EXPECT_TRUE(in == (i < 3) && u == xs[i] && v == ys[i] && near(out, xs[i], ys[i], 0)) << i;
    }
}

TEST(InterPlanePlane, OppositeNormalsNearlyParallelPlanesAndTheLine) {
    KDRLine out;
    out.m_point = out.m_dir = SENTINEL_V;
    Plane const z1 = P(0, 0, 1, -1);
    EXPECT_EQ(interPlanePlane(out, z1, z1), e_geomCoincident);
    // The constants are compared as they stand: z = 1 with the opposite normal has d = 1,
    // parallel; z = -1 with the opposite normal has d = -1, coincident.
    EXPECT_EQ(interPlanePlane(out, z1, P(0, 0, -1, 1)), e_geomParallel);
    EXPECT_EQ(interPlanePlane(out, z1, P(0, 0, -1, -1)), e_geomCoincident);
    EXPECT_EQ(interPlanePlane(out, z1, P(0, 0, 0, 0)), e_geomParallel); // zero normal
    // 0.5 degree apart: |c|^2 = 7.6e-5 <= TOLERANCE, parallel. 1 degree: 3.05e-4, a line.
    auto tilted = [](double a) { return P(float(std::sin(a)), 0, float(std::cos(a)), -1); };
    EXPECT_EQ(interPlanePlane(out, Plane(), tilted(0.5 * PI_D / 180)), e_geomParallel);
    EXPECT_TRUE(untouched(out.m_point) && untouched(out.m_dir));
    EXPECT_EQ(interPlanePlane(out, Plane(), tilted(PI_D / 180)), e_geomIntersection);
    EXPECT_TRUE(near(out.m_dir, 0, float(std::sin(PI_D / 180)), 0, 1e-7)); // not normalised
}

TEST(InterLineViewingVolume, ParallelPairsSetNoLimit) {
    // The cube [-1, 1]^3, both planes of a pair with the same normal.
    Plane const c[6] = {P(1, 0, 0, 1),  P(1, 0, 0, -1), P(0, 1, 0, 1),
                        P(0, 1, 0, -1), P(0, 0, 1, 1),  P(0, 0, 1, -1)};
    V o1, o2;
    float lo, hi;
    auto clip = [&](V const & p, V const & d) {
        interLineViewingVolume(o1, o2, lo, hi, L(p, d), c[0], c[1], c[2], c[3], c[4], c[5]);
    };
    clip(V(0, 5, 0), -X); // outside the y pair, which it runs parallel to: ignored
    EXPECT_TRUE(lo == -1.0f && hi == 1.0f && near(o1, 1, 5, 0) && near(o2, -1, 5, 0));
    clip(V(3, 0, 0), V(S, S, 0)); // x gives [-4/S, -2/S], y [-1/S, 1/S]: a miss
    EXPECT_TRUE(std::fabs(lo + 1 / S) < 1e-5f && std::fabs(hi + 2 / S) < 1e-5f);
    clip(V(1, 2, 3), O); // a zero direction is parallel to every pair
    EXPECT_TRUE(lo == FLOAT_LOWEST && hi == FLOAT_MAX && near(o1, 1, 2, 3) && near(o2, 1, 2, 3));
}

TEST(PlaneProjector, StartsOnZ0AndLeavesOutOnFailure) {
    PlaneProjector projector;
    V out = SENTINEL_V;
    EXPECT_FALSE(projector.project(out, L(Z, X)) || projector.project(out, L(X, Y)));
    EXPECT_TRUE(untouched(out)); // parallel, then contained
    projector.setPlane(P(0, 0, 1, -5));
    EXPECT_TRUE(projector.project(out, L(V(1, 2, 3), Z)) && near(out, 1, 2, 5));
}

using GeometryKernel = CountingKernel;

TEST_F(GeometryKernel, CrossProductsGoThroughTheCurrentKernelExceptWhereWrittenOut) {
    KDRLine u, v;
    Plane().findUVAxis(u, v);
    interPlanePlane(u, P(0, 0, 1, -1), P(1, 0, 0, -2));
    EXPECT_EQ(crosses, 3);
    V out;
    float t1, t2;
    bool in;
    interLineLine(out, t1, t2, L(O, X), L(V(2, -3, 0), Y));
    interLineTriangle(out, t1, t2, in, L(V(0.1f, 0.1f, 1), Z), O, X, Y);
    EXPECT_EQ(crosses, 3);
    pointOnLine(V(2, 0, 0), L(O, X), 0.0f);
    distanceLineLine(L(O, X), L(Z, X)); // parallel: two products
    areCoplanar(L(O, X), L(Y, Y), 0.0f);
    EXPECT_EQ(crosses, 9);
}
