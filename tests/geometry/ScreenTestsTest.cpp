// Box and quad screen tests through a real perspective matrix, and the box and quad distances.
#include "geometry/ProjectionTestSupport.h"

using namespace projtest;

namespace {

// Runs BBox3DIntersectBBox2D with both flags preset to true, so that each is seen written, and
// checks the result, boxInsideRect and the number of corners projected before the answer.
void expectBoxTest(char const * what, BoundingBox const & b, BoundingBox2D const & r, bool result,
                   bool inside, size_t corners, Matrix4f const & proj = perspective(),
                   float depthLimit = DEPTH_LIMIT) {
    bool spare = true, in = true;
    calls().clear();
    EXPECT_EQ(BoundingBoxAlgo::BBox3DIntersectBBox2D(b, r, proj, depthLimit, spare, in), result)
        << what;
    EXPECT_FALSE(spare) << what;
    EXPECT_EQ(in, inside) << what;
    EXPECT_EQ(calls().size(), corners) << what;
}

} // namespace

TEST_F(ProjectionKernel, BoxScreenTestBranchesOnTheRectangleWidthOnly) {
    // Projects to x in [0.01, 0.04], y in [0.1, 0.4]: wholly inside both rectangles.
    BoundingBox const small = box({0.02f, 0.2f, -2}, {0.04f, 0.4f, -1});
    expectBoxTest("width 0.05f: narrow", small, rect(0, 0, 0.05f, 1), true, false, 1);
    expectBoxTest("wide", small, rect(0, 0, 1, 1), true, true, 8);
    expectBoxTest("height 0.01, wide", box({0.2f, 0.002f, -2}, {0.4f, 0.004f, -1}),
                  rect(0, 0, 1, 0.01f), true, true, 8);
    // Corners 1 to 5 inside, corner 6 at (0.4, 0.2) outside: the first difference ends it.
    expectBoxTest("mixed", box({0.2f, 0.2f, -2}, {0.4f, 0.4f, -1}), rect(0, 0, 0.3f, 1), true,
                  false, 6);
    // W = 1 and depth x + y + z: corner 1 alone in front, and inside.
    Matrix4f const depthIsSum(1, 0, 1, 0, 0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    expectBoxTest("corner 1 alone in front", box({0, 0, 0}, {1, 1, 1}),
                  rect(-0.5f, -0.5f, 0.5f, 0.5f), true, true, 8, depthIsSum, 0.5f);
}

TEST_F(ProjectionKernel, BoxScreenTestFallsBackOnBoundingRectangles) {
    // Projects to [-1, 1]^2 around the centre, with [-0.5, 0.5]^2 as its far face.
    BoundingBox const centred = box({-1, -1, -2}, {1, 1, -1});
    expectBoxTest("enclosing", centred, rect(-0.1f, -0.1f, 0.1f, 0.1f), true, false, 8);
    expectBoxTest("beside", centred, rect(2, 2, 3, 3), false, false, 8);
    expectBoxTest("uninitialised rect", centred, BoundingBox2D(), false, false, 8);
    // Far face [0.5, 1]^2, near face [1, 2]^2: the corner (2, 0.5) of the bounding rectangle lies
    // outside the silhouette, yet the bounding rectangles are what is compared.
    expectBoxTest("bounds only", box({1, 1, -2}, {2, 2, -1}), rect(1.8f, 0.5f, 1.95f, 0.6f), true,
                  false, 8);
    // Front corners in [0.5, 1]^2, those behind folded back to [1, 2]^2 (unfolded: [-2, -1]^2).
    BoundingBox const straddling = box({1, 1, -2}, {2, 2, 1});
    expectBoxTest("folded", straddling, rect(1.5f, 1.5f, 1.8f, 1.8f), true, false, 8);
    expectBoxTest("unfolded", straddling, rect(-1.8f, -1.8f, -1.5f, -1.5f), false, false, 8);
    expectBoxTest("all behind", box({-1, -1, 1}, {1, 1, 2}), rect(-0.1f, -0.1f, 0.1f, 0.1f), false,
                  false, 8);
}

TEST_F(ProjectionKernel, QuadScreenTestUsesItsBoundingRectangle) {
    BoundingBox2D const r = rect(0, 0, 1, 1);
    bool spare = true;
    auto quad = [&](Vector3f const & a, Vector3f const & b, Vector3f const & c,
                    Vector3f const & d) {
        calls().clear();
        bool const hit =
            BoundingBoxAlgo::QuadIntersectBBox2D(a, b, c, d, r, perspective(), DEPTH_LIMIT, spare);
        EXPECT_FALSE(spare);
        return hit;
    };
    // On the near plane (z = -1) points project unscaled; vertex0 lies on the right side.
    EXPECT_TRUE(quad({1, 0.5f, -1}, {5, 5, -1}, {6, 5, -1}, {6, 6, -1}));
    EXPECT_EQ(calls().size(), 1u);
    EXPECT_TRUE(quad({-1, -1, -1}, {2, -1, -1}, {2, 2, -1}, {-1, 2, -1})); // enclosing
    EXPECT_FALSE(quad({2, 2, -1}, {3, 2, -1}, {3, 3, -1}, {2, 3, -1}));
    EXPECT_FALSE(quad({0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1})); // behind, folded onto r
}

TEST(BoundingBoxAlgo, DistancesToPlacedBoxAndQuad) {
    BoundingBox const b = box({0, 0, 0}, {2, 2, 2});
    // Every axis contributes its nearer face, also where p lies between the faces.
    EXPECT_EQ(BoundingBoxAlgo::BBox3DDistance2(b, MatAff4f::identity(), {1, 1, 3}), 3.0f);
    EXPECT_EQ(BoundingBoxAlgo::BBox3DDistance2(b, MatAff4f::identity(), {2, 1, 1}), 0.0f);
    // Placed at x 10..12: from (13, 0.5, 1) the axes give 1, 0.25 and 1.
    MatAff4f const shift = MatAff4f::translate({10, 0, 0});
    EXPECT_EQ(BoundingBoxAlgo::BBox3DDistance2(b, shift, {13, 0.5f, 1}), 2.25f);
    Vector3f const v0(0, 0, 0), v1(1, 0, 0), v2(1, 1, 0), v3(0, 1, 0);
    EXPECT_EQ(BoundingBoxAlgo::QuadDistance2(v0, v1, v2, v3, shift, {11, 1, 0}), 0.0f);
    EXPECT_EQ(BoundingBoxAlgo::QuadDistance2(v0, v1, v2, v3, shift, {13, 3, 1}), 9.0f);
}
