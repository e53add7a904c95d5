// Tests of the result codes, KDRLine, KDRSegment and Plane.
#include "kdrcore/geometry/Primitives.h"

#include "geometry/PrimitiveTestSupport.h"

#include "kdrcore/types/Scalar.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace primtest;

TEST(GeomInfo, NumericValuesArePartOfTheInterface) {
    EXPECT_EQ(static_cast<int>(e_geomNoIntersection), 1);
    EXPECT_EQ(static_cast<int>(e_geomIntersection), 2);
    EXPECT_EQ(static_cast<int>(e_geomParallel), 3);
    EXPECT_EQ(static_cast<int>(e_geomCoincident), 4);
    EXPECT_EQ(static_cast<int>(e_geomContained), 5);
    EXPECT_EQ(static_cast<int>(e_geomProjected), 6);
}

TEST(KDRLine, ConstructorsNormaliseOrKeepAZeroDirection) {
    KDRLine const z;
    EXPECT_TRUE(near(z.m_point, 0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(near(z.m_dir, 0.0f, 0.0f, 1.0f));

    Vector3f const p(1.0f, 2.0f, 3.0f);
    KDRLine const twoPoints(p, Vector3f(4.0f, 2.0f, 7.0f), false); // difference (3, 0, 4)
    EXPECT_TRUE(near(twoPoints.m_point, 1.0f, 2.0f, 3.0f));
    EXPECT_TRUE(near(twoPoints.m_dir, 0.6f, 0.0f, 0.8f, 1e-7));
    KDRLine const direction(p, Vector3f(0.0f, -5.0f, 0.0f), true);
    EXPECT_TRUE(near(direction.m_dir, 0.0f, -1.0f, 0.0f));

    // The direction starts at zero, and a too-short one does not replace it.
    EXPECT_TRUE(near(KDRLine(p, p, false).m_dir, 0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(near(KDRLine(p, Vector3f(), true).m_dir, 0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(near(KDRLine(p, Vector3f(0.00005f, 0.0f, 0.0f), true).m_dir, 0.0f, 0.0f, 0.0f));
}

TEST(KDRLine, SetDirIgnoresVectorsUpToTheTolerance) {
    KDRLine line;
    line.setDir(Vector3f(0.00005f, 0.0f, 0.0f));
    EXPECT_TRUE(near(line.m_dir, 0.0f, 0.0f, 1.0f));
    // The float 0.0001f lies just below the double TOLERANCE: inclusive, so still ignored.
    line.setDir(Vector3f(0.0f, 0.0001f, 0.0f));
    EXPECT_TRUE(near(line.m_dir, 0.0f, 0.0f, 1.0f));
    // Three components of 0.00006 make a length of 0.000104 > TOLERANCE, although each is below.
    line.setDir(Vector3f(0.00006f, 0.00006f, -0.00006f));
    float const third = static_cast<float>(1.0 / std::sqrt(3.0));
    EXPECT_TRUE(near(line.m_dir, third, third, -third, 1e-7));
    line.setDir(Vector3f(0.0f, 0.00011f, 0.0f));
    EXPECT_TRUE(near(line.m_dir, 0.0f, 1.0f, 0.0f, 1e-7));
    line.setDir(Vector3f());
    EXPECT_TRUE(near(line.m_dir, 0.0f, 1.0f, 0.0f, 1e-7));
    // A NaN length passes the guard (the test is `length <= TOLERANCE`) and is stored as such.
    line.setDir(Vector3f(nan(), 0.0f, 0.0f));
    EXPECT_TRUE(std::isnan(line.m_dir.x()));
}

TEST(Plane, SetNormalKeepsDAndRefusesShortNormals) {
    Plane plane;
    EXPECT_TRUE(near(plane.m_normal, 0.0f, 0.0f, 1.0f));
    EXPECT_EQ(plane.m_d, 0.0f);

    plane.m_d = -2.0f;
    plane.setNormal(Vector3f(0.0f, 3.0f, 0.0f));
    EXPECT_TRUE(near(plane.m_normal, 0.0f, 1.0f, 0.0f));
    EXPECT_EQ(plane.m_d, -2.0f); // now y = 2: turned about its point nearest the origin
    plane.setNormal(Vector3f(0.00005f, 0.0f, 0.0f));
    EXPECT_TRUE(near(plane.m_normal, 0.0f, 1.0f, 0.0f));

    // A zero normal keeps the orientation; d is recomputed so the plane passes through the point.
    plane.setFromNormalPoint(Vector3f(), Vector3f(7.0f, 5.0f, -1.0f));
    EXPECT_TRUE(near(plane.m_normal, 0.0f, 1.0f, 0.0f));
    EXPECT_EQ(plane.m_d, -5.0f);
    plane.setFromNormalPoint(Vector3f(0.0f, 0.0f, -2.0f), Vector3f(7.0f, 5.0f, -1.0f));
    EXPECT_TRUE(near(plane.m_normal, 0.0f, 0.0f, -1.0f));
    EXPECT_EQ(plane.m_d, -1.0f); // -z - 1 = 0 at z = -1
}

TEST(Plane, MediatorPointsFromAToB) {
    Plane plane;
    plane.setMediator(Vector3f(1.0f, 2.0f, 3.0f), Vector3f(5.0f, 2.0f, 3.0f));
    EXPECT_TRUE(near(plane.m_normal, 1.0f, 0.0f, 0.0f));
    EXPECT_EQ(plane.m_d, -3.0f); // x = 3, half way
    plane.setMediator(Vector3f(0.0f, 4.0f, 0.0f), Vector3f(0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(near(plane.m_normal, 0.0f, -1.0f, 0.0f));
    EXPECT_EQ(plane.m_d, 2.0f); // -y + 2 = 0
    // Equal points: the old normal stays and the plane goes through the point.
    plane.setMediator(Vector3f(1.0f, 6.0f, 9.0f), Vector3f(1.0f, 6.0f, 9.0f));
    EXPECT_TRUE(near(plane.m_normal, 0.0f, -1.0f, 0.0f));
    EXPECT_EQ(plane.m_d, 6.0f);
}

TEST(Plane, FindPointIsNearestTheOriginForAnyNormalLength) {
    Vector3f out = sentinelVector();
    makePlane(0.0f, 0.0f, 2.0f, -4.0f).findPoint(out); // 2z - 4 = 0: z = 2
    EXPECT_TRUE(near(out, 0.0f, 0.0f, 2.0f));
    makePlane(0.0f, 3.0f, 4.0f, 10.0f).findPoint(out); // distance 2 on the side of -n
    EXPECT_TRUE(near(out, 0.0f, -1.2f, -1.6f, 1e-6));
    Plane().findPoint(out);
    EXPECT_TRUE(near(out, 0.0f, 0.0f, 0.0f));
}

TEST(Plane, FindUVAxisOfTheDefaultPlaneAndOfATiltedOne) {
    KDRLine u, v;
    u.m_point = v.m_point = sentinelVector();
    Plane().findUVAxis(u, v); // all components tie below 1: the x axis is chosen
    EXPECT_TRUE(near(u.m_point, 0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(near(u.m_dir, 0.0f, -1.0f, 0.0f));
    EXPECT_TRUE(near(v.m_point, 0.0f, 0.0f, 0.0f));
    EXPECT_TRUE(near(v.m_dir, 1.0f, 0.0f, 0.0f));

    // n = (1, 2, 3) / sqrt(14) through (1, 1, 1): e = x, so U ~ x X n ~ (0, -3, 2) and
    // V ~ n x (x X n) ~ (13, -2, -3); the point nearest the origin is (1, 2, 3) * 6 / 14.
    Plane tilted;
    tilted.setFromNormalPoint(Vector3f(1.0f, 2.0f, 3.0f), Vector3f(1.0f, 1.0f, 1.0f));
    tilted.findUVAxis(u, v);
    double const r13 = std::sqrt(13.0), r182 = std::sqrt(182.0);
    EXPECT_TRUE(
        near(u.m_dir, 0.0f, static_cast<float>(-3.0 / r13), static_cast<float>(2.0 / r13), 2e-7));
    EXPECT_TRUE(near(v.m_dir, static_cast<float>(13.0 / r182), static_cast<float>(-2.0 / r182),
                     static_cast<float>(-3.0 / r182), 2e-7));
    EXPECT_TRUE(near(u.m_point, 3.0f / 7.0f, 6.0f / 7.0f, 9.0f / 7.0f, 2e-7));
    EXPECT_TRUE(near(v.m_point, 3.0f / 7.0f, 6.0f / 7.0f, 9.0f / 7.0f, 2e-7));
}

TEST(Plane, FindUVAxisBreaksTiesXThenYThenZ) {
    // lineU's direction is e x n, so its component along the chosen axis e is exactly 0.
    struct Case {
        Vector3f normal;
        int axis;
    } const cases[] = {
        {Vector3f(1.0f, 1.0f, 2.0f), 0}, // x and y tie: x
        {Vector3f(1.0f, 2.0f, 1.0f), 0}, // x and z tie: x
        {Vector3f(2.0f, 1.0f, 1.0f), 1}, // y and z tie: y
        {Vector3f(1.0f, 0.0f, 0.0f), 1}, {Vector3f(0.0f, 1.0f, 0.0f), 0},
        {Vector3f(0.6f, 0.8f, 0.0f), 2}, {Vector3f(3.0f, 2.0f, 1.0f), 2},
    };
    for (Case const & c : cases) {
        Plane plane;
        plane.setNormal(c.normal);
        KDRLine u, v;
        plane.findUVAxis(u, v);
        EXPECT_EQ(u.m_dir[c.axis], 0.0f)
            << "normal " << c.normal.x() << c.normal.y() << c.normal.z();
        EXPECT_NEAR(u.m_dir.norm(), 1.0f, 1e-6);
        EXPECT_NEAR(v.m_dir.norm(), 1.0f, 1e-6);
        EXPECT_NEAR(Vector3f::dot(u.m_dir, v.m_dir), 0.0f, 1e-6);
        EXPECT_NEAR(Vector3f::dot(u.m_dir, plane.m_normal), 0.0f, 1e-6);
        EXPECT_NEAR(Vector3f::dot(v.m_dir, plane.m_normal), 0.0f, 1e-6);
    }
    // For (0.6, 0.8, 0) the second direction is exactly the z axis: n x (z x n) with |n| = 1.
    Plane plane;
    plane.setNormal(Vector3f(0.6f, 0.8f, 0.0f));
    KDRLine u, v;
    plane.findUVAxis(u, v);
    EXPECT_TRUE(near(v.m_dir, 0.0f, 0.0f, 1.0f, 1e-7));
}

using PlaneKernel = KernelRestore;

TEST_F(PlaneKernel, FindUVAxisAsksTheCurrentKernelForBothCrossProducts) {
    int count = 0;
    (new CountingCrossKernel(&count))->setDefault();
    KDRLine u, v;
    Plane().findUVAxis(u, v);
    EXPECT_EQ(count, 2);
    EXPECT_TRUE(near(v.m_dir, 1.0f, 0.0f, 0.0f));
}
