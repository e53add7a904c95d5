// Tests of the result codes, KDRLine and Plane.
#include "kdrcore/geometry/Primitives.h"

#include "geometry/PrimitiveTestSupport.h"

#include <gtest/gtest.h>

using namespace primtest;

TEST(GeomInfo, NumericValuesArePartOfTheInterface) {
    EXPECT_EQ(e_geomNoIntersection * 100000 + e_geomIntersection * 10000 + e_geomParallel * 1000 +
                  e_geomCoincident * 100 + e_geomContained * 10 + e_geomProjected,
              123456);
}

TEST(KDRLine, TooShortDirectionsNeverReplaceTheStoredOne) {
    V const p(1, 2, 3);
    EXPECT_TRUE(near(KDRLine(p, V(4, 2, 7), false).m_dir, 0.6f, 0, 0.8f, 1e-7));
    // The constructors start from a zero direction, which a zero one leaves in place.
    EXPECT_TRUE(near(KDRLine(p, p, false).m_dir, 0, 0, 0) &&
                near(KDRLine(p, O, true).m_dir, 0, 0, 0));
    KDRLine line;
    line.setDir(V(0.00005f, 0, 0));
    line.setDir(V(0, 0.0001f, 0)); // the float lies below the double TOLERANCE: inclusive
    EXPECT_TRUE(near(line.m_dir, 0, 0, 1));
    line.setDir(V(0, 0.00011f, 0));
    EXPECT_TRUE(near(line.m_dir, 0, 1, 0, 1e-7));
    line.setDir(V(NaN, 0, 0)); // a NaN length fails `l <= TOLERANCE` and is stored
    EXPECT_TRUE(std::isnan(line.m_dir.x()));
}

TEST(Plane, SettersKeepTheOldNormalForDegenerateInput) {
    Plane plane;
    plane.m_d = -2.0f;
    plane.setNormal(V(0, 3, 0));
    EXPECT_TRUE(near(plane.m_normal, 0, 1, 0) && plane.m_d == -2.0f); // d stays
    plane.setFromNormalPoint(O, V(7, 5, -1)); // old orientation, through the point
    EXPECT_TRUE(near(plane.m_normal, 0, 1, 0) && plane.m_d == -5.0f);
    plane.setMediator(V(0, 4, 0), O); // normal from a to b, through y = 2
    EXPECT_TRUE(near(plane.m_normal, 0, -1, 0) && plane.m_d == 2.0f);
    plane.setMediator(V(1, 6, 9), V(1, 6, 9));
    EXPECT_TRUE(near(plane.m_normal, 0, -1, 0) && plane.m_d == 6.0f);
    V out;
    P(0, 3, 4, 10).findPoint(out); // |n| = 5: distance 2 on the side of -n
    EXPECT_TRUE(near(out, 0, -1.2f, -1.6f, 1e-6));
}

TEST(Plane, FindUVAxisTakesTheSmallestNormalAxisXThenYThenZ) {
    KDRLine u, v;
    Plane().findUVAxis(u, v); // all tie: x, so U = x X z, V = z x U
    EXPECT_TRUE(near(u.m_dir, 0, -1, 0) && near(v.m_dir, 1, 0, 0) && near(v.m_point, 0, 0, 0));
    // U = e x n has an exact 0 along the chosen axis e.
    V const normals[] = {V(1, 1, 2), V(1, 2, 1), V(2, 1, 1), V(3, 2, 1)};
    int const axes[] = {0, 0, 1, 2};
    for (int i = 0; i < 4; ++i) {
        Plane plane;
        plane.setFromNormalPoint(normals[i], V(1, 1, 1));
        plane.findUVAxis(u, v);
        EXPECT_EQ(u.m_dir[axes[i]], 0.0f) << i;
        EXPECT_NEAR(Vector3f::dot(u.m_dir, v.m_dir) + Vector3f::dot(v.m_dir, plane.m_normal), 0,
                    1e-6);
        EXPECT_NEAR(Vector3f::dot(u.m_point, plane.m_normal) + plane.m_d, 0, 1e-6);
    }
}
