// BoundingBox and BoundingBox2D state rules, line clipping and box transformation.
#include "geometry/ProjectionTestSupport.h"

#include "kdrcore/types/Scalar.h"

#include <cmath>

using projtest::box;
using projtest::expectBox;
using projtest::rect;

TEST(BoundingBox, OnlyXDecidesTheStateAndClearWritesOnlyX) {
    BoundingBox b = box({2, 3, 4}, {5, 6, 7});
    b.clear();
    expectBox(b, {1, 3, 4}, {0, 6, 7});
    EXPECT_FALSE(b.isInitialized());
    EXPECT_FALSE(b.contains({0.5f, 4, 5}));                 // the inverted x range contains nothing
    EXPECT_TRUE(box({0, 5, 5}, {1, 0, 0}).isInitialized()); // inverted in y and z only
    b.set(Vector3f(1, 2, 3));
    EXPECT_TRUE(b.isInitialized() && b.contains({1, 2, 3}));
    BoundingBox empty; // adding it changes nothing, also on an uninitialised receiver
    b.add(empty);
    expectBox(b, {1, 2, 3}, {1, 2, 3});
    empty.add(BoundingBox());
    expectBox(empty, {1, 0, 0}, {0, 0, 0});
    empty.add(b); // an uninitialised receiver takes a copy
    expectBox(empty, {1, 2, 3}, {1, 2, 3});
    b.add(Vector3f(0, 5, 3));
    b.add(box({2, -1, 3}, {2, 0, 9}));
    expectBox(b, {0, -1, 3}, {2, 5, 9});
    EXPECT_TRUE(b.contains({0, -1, 3}) && b.contains({2, 5, 9}) && b.contains({1, 5, 4}));
    EXPECT_FALSE(b.contains({1, 5.5f, 4}));

    BoundingBox2D r;
    EXPECT_FALSE(r.isInitialized() || r.intersect(r));
    r.set(box({0, 0, 9}, {1, 1, -9}));
    EXPECT_TRUE(r.contains({1, 0.5f, 100}));       // z is not read
    EXPECT_TRUE(r.intersect(rect(1, 0.5f, 2, 3))); // a common edge
    EXPECT_TRUE(rect(1, 1, 2, 2).intersect(r));    // a common corner
    EXPECT_FALSE(rect(1.5f, 1, 2, 2).intersect(r));
    EXPECT_FALSE(r.intersect(BoundingBox2D()));
}

TEST(InterLineBoundingBox, SlabsEntryFaceTiesAndMisses) {
    BoundingBox const unit = box({0, 0, 0}, {1, 1, 1});
    float tMin = -9, tMax = -9;
    int f[3] = {7, 7, 7};
    auto clip = [&](Vector3f const & point, Vector3f const & dir) {
        return interLineBoundingBox(tMin, tMax, f[0], f[1], f[2], KDRLine(point, dir, true), unit);
    };
    auto expectRange = [&](float lo, float hi, int x, int y, int z) {
        EXPECT_TRUE(tMin == lo && tMax == hi) << tMin << " " << tMax;
        EXPECT_TRUE(f[0] == x && f[1] == y && f[2] == z) << f[0] << " " << f[1] << " " << f[2];
    };
    EXPECT_TRUE(clip({-1, 0.5f, 0.5f}, {1, 0, 0}));
    expectRange(1, 2, -1, 0, 0);
    EXPECT_TRUE(clip({2, 0.5f, 0.5f}, {-1, 0, 0}));
    expectRange(1, 2, 1, 0, 0);
    EXPECT_TRUE(clip({-1, 5, 0.5f}, {1, 0, 0})); // a parallel slab sets no limit
    expectRange(1, 2, -1, 0, 0);
    EXPECT_TRUE(clip({0.5f, 0, 0.5f}, {0, 1, 0})); // tMin = 0 from y, not from an unhit plane
    expectRange(0, 1, 0, -1, 0);
    float const s = 1.0f / std::sqrt(3.0f); // through the corner (0, 0, 0): x wins the tie
    EXPECT_TRUE(clip({-s, -s, -s}, {1, 1, 1}));
    EXPECT_TRUE(f[0] == -1 && f[1] == 0 && f[2] == 0);
    // Grazing the edge x = y = 0: in and out at one point, y's plane tied with x's.
    EXPECT_FALSE(clip({-1, 1, 0.5f}, {1, -1, 0}));
    EXPECT_TRUE(tMin == tMax && tMin > 1.0f && f[0] == -1 && f[1] == 0);
    EXPECT_FALSE(clip({-3, 0.5f, 0.5f}, {1, 1, 0})); // a miss still reports its entry face
    expectRange(0, 0, -1, 0, 0);
    interLineBoundingBox(tMin, tMax, KDRLine({-3, 0.5f, 0.5f}, {1, 1, 0}, true), unit);
    EXPECT_TRUE(tMin == 0 && tMax == 0);
    EXPECT_FALSE(interLineBoundingBox(tMin, tMax, f[0], f[1], f[2],
                                      KDRLine({0, 0.5f, 0.5f}, {1, 0, 0}, true),
                                      box({0, 0, 0}, {5e-8f, 1, 1}))); // shorter than BOX_TOLERANCE
    EXPECT_EQ(tMax, 5e-8f);
    interLineBoundingBox(tMin, tMax, KDRLine({5, 5, 5}, {0, 0, 0}, true), unit);
    EXPECT_TRUE(tMin == FLOAT_LOWEST && tMax == FLOAT_MAX); // no slab limits it
}

TEST(BoundingBoxAlgo, TransformBBoxBoundsTheEightCorners) {
    BoundingBox b = box({1, 2, 3}, {4, 5, 6});
    BoundingBoxAlgo::transformBBox(b, b, MatAff4f::identity()); // `out` may be `box`
    expectBox(b, {1, 2, 3}, {4, 5, 6});
    BoundingBox out = box({-100, -100, -100}, {100, 100, 100}); // what it held is lost
    BoundingBoxAlgo::transformBBox(out, b, MatAff4f::scale({-1, 2, 1}));
    expectBox(out, {-4, 4, 3}, {-1, 10, 6});
    BoundingBoxAlgo::transformBBox(out, BoundingBox(), MatAff4f::identity());
    expectBox(out, {0, 0, 0}, {1, 0, 0}); // the held values, now the right way round
}
