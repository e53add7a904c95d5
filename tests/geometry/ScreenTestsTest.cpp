// Box and quad screen tests through a real perspective matrix.
#include "geometry/GeometryTestSupport.h"

using namespace geomtest;

namespace {

// Runs BBox3DIntersectBBox2D with both flags preset to true, so that each is seen written, and
// gives the result, boxInsideRect and the number of corners projected before the answer.
std::vector<double> boxTest(BoundingBox const & b, BoundingBox2D const & r,
                            Matrix4f const & proj = perspective(), float depthLimit = DEPTH_LIMIT) {
    bool spare = true, in = true;
    RecordingKernel::calls().clear();
    bool const hit = BoundingBoxAlgo::BBox3DIntersectBBox2D(b, r, proj, depthLimit, spare, in);
    return {double(hit), double(in), double(RecordingKernel::count("multMatrixVec3f")),
            double(spare)};
}

} // namespace

TEST_F(RecordingKernelTest, BoxScreenTestBranchesOnTheRectangleWidthOnly) {
    // Projects to x in [0.01, 0.04], y in [0.1, 0.4]: wholly inside both rectangles.
    BoundingBox const small = box({0.02f, 0.2f, -2}, {0.04f, 0.4f, -1});
    EXPECT_TRUE(elems(boxTest(small, rect(0, 0, 0.05f, 1)), {1, 0, 1, 0})); // width 0.05f: narrow
    EXPECT_TRUE(elems(boxTest(small, rect(0, 0, 1, 1)), {1, 1, 8, 0}));
    EXPECT_TRUE(elems(boxTest(box({0.2f, 0.002f, -2}, {0.4f, 0.004f, -1}), rect(0, 0, 1, 0.01f)),
                      {1, 1, 8, 0})); // height 0.01: wide
    // Corners 1 to 5 inside, corner 6 at (0.4, 0.2) outside: the first difference ends it.
    EXPECT_TRUE(
        elems(boxTest(box({0.2f, 0.2f, -2}, {0.4f, 0.4f, -1}), rect(0, 0, 0.3f, 1)), {1, 0, 6, 0}));
    // W = 1 and depth x + y + z: corner 1 alone in front, and inside.
    Matrix4f const depthIsSum(1, 0, 1, 0, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    EXPECT_TRUE(
        elems(boxTest(box({0, 0, 0}, {1, 1, 1}), rect(-0.5f, -0.5f, 0.5f, 0.5f), depthIsSum, 0.5f),
              {1, 1, 8, 0}));
}

TEST_F(RecordingKernelTest, BoxScreenTestFallsBackOnBoundingRectangles) {
    // Projects to [-1, 1]^2 around the centre, with [-0.5, 0.5]^2 as its far face.
    BoundingBox const centred = box({-1, -1, -2}, {1, 1, -1});
    EXPECT_TRUE(elems(boxTest(centred, rect(-0.1f, -0.1f, 0.1f, 0.1f)), {1, 0, 8, 0})); // enclosing
    EXPECT_TRUE(elems(boxTest(centred, rect(2, 2, 3, 3)), {0, 0, 8, 0}));               // beside
    EXPECT_TRUE(elems(boxTest(centred, BoundingBox2D()), {0, 0, 8, 0}));
    // Far face [0.5, 1]^2, near face [1, 2]^2: the corner (2, 0.5) of the bounding rectangle lies
    // outside the silhouette, yet the bounding rectangles are what is compared.
    EXPECT_TRUE(
        elems(boxTest(box({1, 1, -2}, {2, 2, -1}), rect(1.8f, 0.5f, 1.95f, 0.6f)), {1, 0, 8, 0}));
    // Front corners in [0.5, 1]^2, those behind folded back to [1, 2]^2 (unfolded: [-2, -1]^2).
    BoundingBox const straddling = box({1, 1, -2}, {2, 2, 1});
    EXPECT_TRUE(elems(boxTest(straddling, rect(1.5f, 1.5f, 1.8f, 1.8f)), {1, 0, 8, 0}));
    EXPECT_TRUE(elems(boxTest(straddling, rect(-1.8f, -1.8f, -1.5f, -1.5f)), {0, 0, 8, 0}));
    EXPECT_TRUE(elems(boxTest(box({-1, -1, 1}, {1, 1, 2}), rect(-0.1f, -0.1f, 0.1f, 0.1f)),
                      {0, 0, 8, 0})); // all behind
}

TEST_F(RecordingKernelTest, QuadScreenTestUsesItsBoundingRectangle) {
    // On the near plane (z = -1) points project unscaled. Gives the result, then the number of
    // points projected, then `spare`.
    auto quad = [](V const & a, V const & b, V const & c, V const & d) {
        bool spare = true;
        RecordingKernel::calls().clear();
        bool const hit = BoundingBoxAlgo::QuadIntersectBBox2D(a, b, c, d, rect(0, 0, 1, 1),
                                                              perspective(), DEPTH_LIMIT, spare);
        return std::vector<double>{double(hit), double(RecordingKernel::count("multMatrixVec3f")),
                                   double(spare)};
    };
    EXPECT_TRUE(
        elems(quad({1, 0.5f, -1}, {5, 5, -1}, {6, 5, -1}, {6, 6, -1}), {1, 1, 0})); // on a side
    EXPECT_TRUE(
        elems(quad({-1, -1, -1}, {2, -1, -1}, {2, 2, -1}, {-1, 2, -1}), {1, 4, 0})); // enclosing
    EXPECT_TRUE(elems(quad({2, 2, -1}, {3, 2, -1}, {3, 3, -1}, {2, 3, -1}), {0, 4, 0}));
    EXPECT_TRUE(elems(quad({0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}),
                      {0, 4, 0})); // behind, folded onto r
}
