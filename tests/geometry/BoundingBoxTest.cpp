// BoundingBox and BoundingBox2D state rules, line clipping and box transformation.
#include "geometry/GeometryTestSupport.h"

#include "kdrcore/types/Scalar.h"

#include <cmath>

using namespace geomtest;

TEST(BoundingBox, OnlyXDecidesTheStateAndClearWritesOnlyX) {
    BoundingBox b = box({2, 3, 4}, {5, 6, 7}), empty;
    b.clear();
    EXPECT_TRUE(boxIs(b, {1, 3, 4, 0, 6, 7}) && !b.isInitialized());
    EXPECT_FALSE(b.contains({0.5f, 4, 5}));                 // the inverted x range contains nothing
    EXPECT_TRUE(box({0, 5, 5}, {1, 0, 0}).isInitialized()); // inverted in y and z only
    b.set(Vector3f(1, 2, 3));
    EXPECT_TRUE(b.isInitialized() && b.contains({1, 2, 3}));
    b.add(empty); // adding an uninitialised box changes nothing, also on an uninitialised receiver
    empty.add(BoundingBox());
    EXPECT_TRUE(boxIs(b, {1, 2, 3, 1, 2, 3}) && boxIs(empty, {1, 0, 0, 0, 0, 0}));
    empty.add(b); // an uninitialised receiver takes a copy
    EXPECT_TRUE(boxIs(empty, {1, 2, 3, 1, 2, 3}));
    b.add(Vector3f(0, 5, 3));
    b.add(box({2, -1, 3}, {2, 0, 9}));
    EXPECT_TRUE(boxIs(b, {0, -1, 3, 2, 5, 9}));
    EXPECT_TRUE(b.contains({0, -1, 3}) && b.contains({2, 5, 9}) && !b.contains({1, 5.5f, 4}));
    BoundingBox2D r;
    EXPECT_FALSE(r.isInitialized() || r.intersect(r));
    r.set(box({0, 0, 9}, {1, 1, -9}));
    EXPECT_TRUE(r.contains({1, 0.5f, 100}));       // z is not read
    EXPECT_TRUE(r.intersect(rect(1, 0.5f, 2, 3))); // a common edge
    EXPECT_TRUE(rect(1, 1, 2, 2).intersect(r));    // a common corner
    EXPECT_FALSE(rect(1.5f, 1, 2, 2).intersect(r) || r.intersect(BoundingBox2D()));
}

TEST(InterLineBoundingBox, SlabsEntryFaceTiesAndMisses) {
    BoundingBox const unit = box({0, 0, 0}, {1, 1, 1});
    float tMin = -9, tMax = -9;
    int f[3] = {7, 7, 7};
    // The result, tMin, tMax and the three face ints.
    auto clip = [&](V const & point, V const & dir,
                    BoundingBox const & b = box({0, 0, 0}, {1, 1, 1})) {
        bool const hit =
            interLineBoundingBox(tMin, tMax, f[0], f[1], f[2], KDRLine(point, dir, true), b);
        return std::vector<double>{double(hit),  tMin,         tMax,
                                   double(f[0]), double(f[1]), double(f[2])};
    };
    EXPECT_TRUE(elems(clip({-1, 0.5f, 0.5f}, X), {1, 1, 2, -1, 0, 0}));
    EXPECT_TRUE(elems(clip({2, 0.5f, 0.5f}, -X), {1, 1, 2, 1, 0, 0}));
    EXPECT_TRUE(
        elems(clip({-1, 5, 0.5f}, X), {1, 1, 2, -1, 0, 0})); // a parallel slab sets no limit
    EXPECT_TRUE(elems(clip({0.5f, 0, 0.5f}, Y), {1, 0, 1, 0, -1, 0})); // not from an unhit plane
    float const s = 1.0f / std::sqrt(3.0f); // through the corner (0, 0, 0): x wins the tie
    std::vector<double> const corner = clip({-s, -s, -s}, {1, 1, 1});
    EXPECT_TRUE(elems({corner[0], corner[3], corner[4], corner[5]}, {1, -1, 0, 0}));
    // Grazing the edge x = y = 0: in and out at one point, y's plane tied with x's.
    std::vector<double> const graze = clip({-1, 1, 0.5f}, {1, -1, 0});
    EXPECT_TRUE(elems(graze, {0, graze[2], graze[1], -1, 0, 0}) && graze[1] > 1.0);
    EXPECT_TRUE(
        elems(clip({-3, 0.5f, 0.5f}, {1, 1, 0}), {0, 0, 0, -1, 0, 0})); // a miss keeps its face
    EXPECT_TRUE(elems(clip({0, 0.5f, 0.5f}, X, box({0, 0, 0}, {5e-8f, 1, 1})),
                      {0, 0, 5e-8f})); // < BOX_TOLERANCE
    EXPECT_TRUE(elems(clip({0, 0.5f, 0.5f}, X, box({0, 0, 0}, {BOX_TOLERANCE, 1, 1})),
                      {1, 0, BOX_TOLERANCE})); // = BOX_TOLERANCE
    // The form without faces: a zero direction that no slab limits.
    interLineBoundingBox(tMin, tMax, KDRLine({5, 5, 5}, {0, 0, 0}, true), unit);
    EXPECT_TRUE(tMin == FLOAT_LOWEST && tMax == FLOAT_MAX);
}

TEST(BoundingBoxAlgo, TransformBBoxBoundsTheEightCornersAndItsDistances) {
    BoundingBox b = box({1, 2, 3}, {4, 5, 6}), out = box({-100, -100, -100}, {100, 100, 100});
    BoundingBoxAlgo::transformBBox(b, b, MatAff4f::identity()); // `out` may be `box`
    EXPECT_TRUE(boxIs(b, {1, 2, 3, 4, 5, 6}));
    BoundingBoxAlgo::transformBBox(out, b, MatAff4f::scale({-1, 2, 1})); // what it held is lost
    EXPECT_TRUE(boxIs(out, {-4, 4, 3, -1, 10, 6}));
    BoundingBoxAlgo::transformBBox(out, BoundingBox(), MatAff4f::identity());
    EXPECT_TRUE(boxIs(out, {0, 0, 0, 1, 0, 0})); // the held values, now the right way round
    // Every axis contributes its nearer face, also where p lies between the faces.
    BoundingBox const c = box({0, 0, 0}, {2, 2, 2});
    MatAff4f const shift = MatAff4f::translate({10, 0, 0});
    EXPECT_EQ(BoundingBoxAlgo::BBox3DDistance2(c, MatAff4f::identity(), {1, 1, 3}), 3.0f);
    EXPECT_EQ(BoundingBoxAlgo::BBox3DDistance2(c, MatAff4f::identity(), {2, 1, 1}), 0.0f);
    EXPECT_EQ(BoundingBoxAlgo::BBox3DDistance2(c, shift, {13, 0.5f, 1}), 2.25f); // 1 + 0.25 + 1
    EXPECT_EQ(BoundingBoxAlgo::BBox3DDistance2(c, shift, {9, 1, 1}), 3.0f); // the low face in x
    EXPECT_EQ(BoundingBoxAlgo::QuadDistance2(O, X, {1, 1, 0}, Y, shift, {11, 1, 0}), 0.0f);
    EXPECT_EQ(BoundingBoxAlgo::QuadDistance2(O, X, {1, 1, 0}, Y, shift, {13, 3, 1}), 9.0f);
}
