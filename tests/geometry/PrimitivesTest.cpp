// Tests of the result codes, KDRLine and Plane.
#include "kdrcore/geometry/Primitives.h"

#include "geometry/GeometryTestSupport.h"

using namespace geomtest;

TEST(GeomInfo, NumericValuesArePartOfTheInterface) {
    EXPECT_EQ(e_geomNoIntersection * 100000 + e_geomIntersection * 10000 + e_geomParallel * 1000 +
                  e_geomCoincident * 100 + e_geomContained * 10 + e_geomProjected,
              123456);
}

TEST(KDRLine, TooShortDirectionsNeverReplaceTheStoredOne) {
    V const p(1, 2, 3);
    EXPECT_TRUE(near(KDRLine(p, V(4, 2, 7), false).m_dir, 0.6f, 0, 0.8f, 1e-7));
    EXPECT_TRUE(near(KDRLine(p, p, false).m_dir, 0, 0, 0)); // starts from a zero direction
    KDRLine line;
    line.setDir(V(0, 0.0001f, 0)); // the float lies below the double TOLERANCE: inclusive
    EXPECT_TRUE(near(line.m_dir, 0, 0, 1));
    line.setDir(V(0, 0.00011f, 0));
    EXPECT_TRUE(near(line.m_dir, 0, 1, 0, 1e-7));
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
    V out;
    P(0, 3, 4, 10).findPoint(out); // |n| = 5: distance 2 on the side of -n
    EXPECT_TRUE(near(out, 0, -1.2f, -1.6f, 1e-6));
}

TEST(Plane, FindUVAxisTakesTheSmallestNormalAxisXThenYThenZ) {
    KDRLine u, v;
    Plane().findUVAxis(u, v); // all tie: x, so U = x X z, V = z x U
    EXPECT_TRUE(near(u.m_dir, 0, -1, 0) && near(v.m_dir, 1, 0, 0) && near(v.m_point, 0, 0, 0));
    // U = e x n has an exact 0 along the chosen axis e, and lies in the plane.
    V const normals[] = {V(1, 1, 2), V(2, 1, 1), V(3, 2, 1)};
    for (int i = 0; i < 3; ++i) {
        Plane plane;
        plane.setFromNormalPoint(normals[i], V(1, 1, 1));
        plane.findUVAxis(u, v);
        EXPECT_EQ(u.m_dir[i], 0.0f) << "case " << i;
        EXPECT_NEAR(Vector3f::dot(u.m_dir, plane.m_normal) + Vector3f::dot(v.m_dir, u.m_dir), 0,
                    1e-6);
    }
}
