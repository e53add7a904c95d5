// Tests of the 3D intersections and PlaneProjector. Each lambda gives the code, then the
// out-parameters, which start as sentinels (K); which ones a query writes for each code is the
// geometry fuzz target's check.
#include "geometry/GeometryTestSupport.h"

#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/types/Scalar.h"

using namespace geomtest;

namespace {
float const S = 0.70710677f; // sqrt(1/2) in float
double const NO = e_geomNoIntersection, YES = e_geomIntersection, PAR = e_geomParallel;
double const IN = e_geomContained, K = SENTINEL;
} // namespace

TEST(InterLinePlane, ParallelBranchIsInclusiveAndWritesNothing) {
    auto hit = [](KDRLine const & line, Plane const & plane = Plane()) {
        V out = SENTINEL_V;
        float t = SENTINEL;
        double const r = interLinePlane(out, t, line, plane);
        return std::vector<double>{r, t, out.x(), out.y(), out.z()};
    };
    EXPECT_TRUE(elems(hit(L(Z, V(0, 0, 0.0001f))), {PAR, K, K, K, K})); // |dn| at TOLERANCE
    EXPECT_TRUE(elems(hit(L(V(3, 0, 0.0002f), X)), {PAR, K, K, K, K}));
    EXPECT_TRUE(elems(hit(L(V(3, 0, 0.00005f), X)), {IN, K, K, K, K}));
    EXPECT_TRUE(elems(hit(L(X, O)), {IN, K, K, K, K}));                 // a zero direction
    EXPECT_TRUE(elems(hit(L(O, Z), P(0, 0, 0, 1)), {PAR, K, K, K, K})); // a zero normal
    EXPECT_TRUE(elems(hit(L(V(1, 2, 3), -Z), P(0, 0, 1, -1)), {YES, 2, 1, 2, 1}));
    // The axis-aligned forms take the caller's tolerance, strict on the direction.
    float t = SENTINEL;
    KDRLine const steep = L(V(0, 0, 5), V(0, 0.5f, 1e-8f));
    EXPECT_EQ(interLinePlaneXY(t, steep, 2.0f, 1e-7f), e_geomParallel);
    EXPECT_EQ(interLinePlaneXY(t, steep, 5.0f, 1e-7f), e_geomContained);
    EXPECT_EQ(interLinePlaneYZ(t, L(Z, V(0.5f, 0, 1)), 2.0f, 0.0f), e_geomIntersection);
    EXPECT_EQ(t, 4.0f);
}

TEST(InterLineLine, ParallelSkewAndTheDominantAxis) {
    auto hit = [](KDRLine const & l1, KDRLine const & l2) {
        V out = SENTINEL_V;
        float t1 = SENTINEL, t2 = SENTINEL;
        double const r = interLineLine(out, t1, t2, l1, l2);
        return std::vector<double>{r, t1, t2, out.x(), out.y(), out.z()};
    };
    EXPECT_TRUE(elems(hit(L(O, X), L(O, X)), {PAR, K, K, K, K, K})); // identical lines
    EXPECT_TRUE(elems(hit(L(O, X), L(Y, O)), {PAR, K, K, K, K, K})); // a zero direction
    // 0.001 apart: no intersection, but everything is written; 0.00005 is within TOLERANCE.
    EXPECT_TRUE(elems(hit(L(O, X), L(V(2, -3, 0.001f), Y)), {NO, 2, 3, 2, 0, 0}));
    EXPECT_TRUE(elems(hit(L(O, X), L(V(2, -3, 0.00005f), Y)), {YES, 2, 3, 2, 0, 0}));
    // Skew, c = (-S, 0, -S): z goes before x on the tie (x would give t2 = sqrt(2)).
    EXPECT_EQ(hit(L(O, Y), L(V(0, 2, 1), V(S, 0, -S)))[2], 0.0);
    // c = (0, -1, 0): solved across y. (5, 0, 0) and (2, 1, -3) + 3 (1, 0, 1) are 1 apart.
    EXPECT_TRUE(elems(hit(L(O, X), L(V(2, 1, -3), V(1, 0, 1))), {NO, 5, 3, 5, 0, 0}));
    // c = (0, -1.75, 0): across y again, with no factor of 1 or 0 to hide a wrong operation.
    // (2, 0, 2) + 2 (1, 0, 0.5) = (3.25, 0, 0) + 1.5 (0.5, 0, 2).
    EXPECT_TRUE(elems(hit(L(V(2, 0, 2), V(1, 0, 0.5f)), L(V(3.25f, 0, 0), V(0.5f, 0, 2))),
                      {YES, 2, 1.5, 4, 0, 3}, 1e-6));
    // c = (1.5, 0, 0): solved across x. (0, 2, 2) + 2 (0, 1, 0.5) = (0, 2.5, 0) + 1.5 (0, 1, 2).
    EXPECT_TRUE(elems(hit(L(V(0, 2, 2), V(0, 1, 0.5f)), L(V(0, 2.5f, 0), V(0, 1, 2))),
                      {YES, 2, 1.5, 0, 4, 3}, 1e-6));
    // Coplanar lines are solved in x and y only: parallel there, not in space.
    V out;
    float t = 0;
    EXPECT_EQ(interTwoCoplanarLines(out, t, L(O, X), L(Y, V(0.6f, 0, 0.8f))), e_geomParallel);
    EXPECT_EQ(interTwoCoplanarLines(out, t, L(O, X), L(V(3, -1, 5), Y)), e_geomIntersection);
    EXPECT_TRUE(t == 3.0f && near(out, 3, 0, 0));
}

TEST(InterSegmentPlane, ExclusiveLowerBoundInclusiveUpperBoundAndSnapping) {
    auto hit = [](KDRSegment const & seg, float z, float tol) {
        V out = SENTINEL_V;
        float t = SENTINEL;
        double const r = interSegmentPlane(out, t, seg, P(0, 0, 1, -z), tol);
        return std::vector<double>{r, t, out.x(), out.y(), out.z()};
    };
    KDRSegment const seg(V(1, 1, 0), V(1, 1, 2));
    // Tolerance 0: a hit exactly at m_start is refused (the hit is written), one at m_end taken.
    EXPECT_TRUE(elems(hit(seg, 0, 0), {NO, 0, 1, 1, 0}));
    EXPECT_TRUE(elems(hit(seg, 2, 0), {YES, 1, 1, 1, 2}));
    // Tolerance 0.01: t = -0.005 and 1.005 snap to the ends; -0.05 keeps the carrier's hit.
    EXPECT_TRUE(elems(hit(seg, -0.01f, 0.01f), {YES, 0, 1, 1, 0}));
    EXPECT_TRUE(elems(hit(seg, 2.01f, 0.01f), {YES, 1, 1, 1, 2}));
    EXPECT_TRUE(elems(hit(seg, -0.1f, 0.01f), {NO, -0.05, 1, 1, -0.1}, 1e-7));
    // Zero length: nothing written. Parallel: the code as it is, out untouched, and t scaled by
    // 1 / len, which runs for every code.
    EXPECT_TRUE(elems(hit(KDRSegment(X, X), 0, 0.01f), {NO, K, K, K, K}));
    EXPECT_TRUE(elems(hit(KDRSegment(Z, V(2, 0, 1)), 0, 0.01f), {PAR, K / 2, K, K, K}));
}

TEST(InterSegmentSegment, ParametersWithinTheToleranceAreNotSnapped) {
    auto hit = [](float x, float y0, float y1) {
        V out = SENTINEL_V;
        float t = SENTINEL;
        KDRSegment const s2(V(x, y0, 0), V(x, y1, 0));
        double const r = interSegmentSegment(out, t, KDRSegment(O, V(4, 0, 0)), s2);
        return std::vector<double>{r, t, out.x()};
    };
    EXPECT_TRUE(elems(hit(1, 0, 0), {PAR, K, K})); // zero length: zero direction
    EXPECT_TRUE(elems(hit(4.00005f, -1, 3), {YES, 4.00005f, 4.00005f}));
    EXPECT_TRUE(elems(hit(5, -1, 3), {NO, 5, 5}));
    EXPECT_TRUE(elems(hit(1, 0.5f, 3), {NO, 1, 1})); // before s2's start
    // Away from the origin: s1's line runs from its start along its end minus its start.
    V out;
    float t = 0;
    EXPECT_EQ(interSegmentSegment(out, t, KDRSegment(V(1, 1, 0), V(3, 1, 0)),
                                  KDRSegment(V(2, 0, 0), V(2, 2, 0))),
              e_geomIntersection);
    EXPECT_TRUE(t == 1.0f && near(out, 2, 1, 0));
}

TEST(InterLineTriangle, EdgesCountAsInsideAndAZeroDeterminantWritesOnlyInside) {
    // The code, inside, u, v and out's x and y. In this triangle (x, y) has u = x, v = y.
    auto hit = [](KDRLine const & line, V const & p2) {
        V out = SENTINEL_V;
        float u = SENTINEL, v = SENTINEL;
        bool in = true;
        double const r = interLineTriangle(out, u, v, in, line, O, X, p2);
        return std::vector<double>{r, double(in), u, v, out.x(), out.y()};
    };
    EXPECT_TRUE(elems(hit(L(Z, X), Y), {NO, 0, K, K, K, K})); // parallel
    EXPECT_TRUE(elems(hit(L(Z, Z), X), {NO, 0, K, K, K, K})); // degenerate
    // Inside, a corner, the edges p1 p2 and p0 p2 (u = 0); past the first and the edge p0 p2. No
    // forward direction.
    float const xs[] = {0.25f, 1, 0.5f, 0, 0.5f, -0.0001f},
                ys[] = {0.5f, 0, 0.5f, 0.5f, 0.5001f, 0.5f};
    for (int i = 0; i < 6; ++i)
        EXPECT_TRUE(elems(hit(L(V(xs[i], ys[i], -2), -Z), Y),
                          {YES, i < 4 ? 1.0 : 0.0, xs[i], ys[i], xs[i], ys[i]}))
            << "case " << i;
    // p2 = (0, 2, 0): the determinant is -2, so v is half of y.
    EXPECT_TRUE(elems(hit(L(V(0.25f, 0.5f, -2), -Z), V(0, 2, 0)), {YES, 1, 0.25, 0.25, 0.25, 0.5}));
}

TEST(InterPlanePlane, OppositeNormalsNearlyParallelPlanesAndTheLine) {
    KDRLine out;
    Plane const z1 = P(0, 0, 1, -1);
    // The constants are compared as they stand: z = 1 with the opposite normal has d = 1,
    // parallel; z = -1 with the opposite normal has d = -1, coincident.
    EXPECT_EQ(interPlanePlane(out, z1, P(0, 0, -1, 1)), e_geomParallel);
    EXPECT_EQ(interPlanePlane(out, z1, P(0, 0, -1, -1)), e_geomCoincident);
    EXPECT_EQ(interPlanePlane(out, z1, P(0, 0, 0, 0)), e_geomParallel); // zero normal
    // 0.5 degree apart: |c|^2 = 7.6e-5 <= TOLERANCE, parallel. 1 degree: 3.05e-4, a line.
    auto tilted = [](double a) { return P(float(std::sin(a)), 0, float(std::cos(a)), -1); };
    EXPECT_EQ(interPlanePlane(out, Plane(), tilted(0.5 * PI_D / 180)), e_geomParallel);
    EXPECT_EQ(interPlanePlane(out, Plane(), tilted(PI_D / 180)), e_geomIntersection);
    EXPECT_TRUE(near(out.m_dir, 0, float(std::sin(PI_D / 180)), 0, 1e-7)); // not normalised
    // z = 1 and y + z = 2 meet along (0, 0, 1) x (0, 1, 1) = -x through (0, 1, 1), the point
    // of the line nearest the origin: 0 (0, 0, 1) + 1 (0, 1, 1) in the normals' span.
    EXPECT_EQ(interPlanePlane(out, z1, P(0, 1, 1, -2)), e_geomIntersection);
    EXPECT_TRUE(near(out.m_point, 0, 1, 1) && near(out.m_dir, -1, 0, 0));
    // 2x - 2 = 0 and x + y - 3 = 0, normals neither unit nor orthogonal: aa = 4, bb = 2, ab = 2,
    // so the point is -0.5 (2, 0, 0) + 2 (1, 1, 0) = (1, 2, 0), on the direction (0, 0, 2).
    EXPECT_EQ(interPlanePlane(out, P(2, 0, 0, -2), P(1, 1, 0, -3)), e_geomIntersection);
    EXPECT_TRUE(near(out.m_point, 1, 2, 0) && near(out.m_dir, 0, 0, 2));
}

TEST(InterLineViewingVolume, ParallelPairsSetNoLimit) {
    // The cube [-1, 1]^3, both planes of a pair with the same normal.
    Plane const c[6] = {P(1, 0, 0, 1),  P(1, 0, 0, -1), P(0, 1, 0, 1),
                        P(0, 1, 0, -1), P(0, 0, 1, 1),  P(0, 0, 1, -1)};
    V o1, o2;
    float lo, hi;
    interLineViewingVolume(o1, o2, lo, hi, L(V(0, 5, 0), -X), c[0], c[1], c[2], c[3], c[4], c[5]);
    EXPECT_TRUE(lo == -1.0f && hi == 1.0f && near(o1, 1, 5, 0) && near(o2, -1, 5, 0));
    interLineViewingVolume(o1, o2, lo, hi, L(V(1, 2, 3), O), c[0], c[1], c[2], c[3], c[4], c[5]);
    EXPECT_TRUE(lo == FLOAT_LOWEST && hi == FLOAT_MAX); // a zero direction: parallel to all
}

TEST(PlaneProjector, StartsOnZ0) {
    PlaneProjector projector;
    V out;
    EXPECT_FALSE(projector.project(out, L(Z, X)) || projector.project(out, L(X, Y)));
    projector.setPlane(P(0, 0, 1, -5));
    EXPECT_TRUE(projector.project(out, L(V(1, 2, 3), Z)) && near(out, 1, 2, 5));
}
