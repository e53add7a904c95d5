// Camera projection of points and boxes through a real perspective matrix.
#include "geometry/GeometryTestSupport.h"

#include "kdrcore/types/Scalar.h"

#include <cmath>
#include <cstring>

using namespace geomtest;

TEST(CameraProjPoint, NegatesXAndYBeyondTheDepthLimitOnly) {
    Matrix4f const proj = perspective();
    Vector3f out;
    Vector2f flat;
    cameraProjPoint(out, Vector3f(1, 2, -2), proj, 0.5f); // w = 2, depth exactly the limit
    EXPECT_TRUE(near(out, 0.5f, 1, 0.5f));
    cameraProjPoint(out, Vector3f(1, 2, -2), proj, 0.25f);
    EXPECT_TRUE(near(out, -0.5f, -1, 0.5f));
    // Behind the viewer w = -1 mirrors the point to (-1, -2); the fold puts it back.
    Vector3f p(1, 2, 1);
    cameraProjPoint(p, p, proj, DEPTH_LIMIT);
    cameraProjPoint(flat, Vector3f(1, 2, 1), proj, DEPTH_LIMIT);
    EXPECT_TRUE(near(p, 1, 2, 5) && flat.x() == 1.0f && flat.y() == 2.0f);
    // A NaN depth fails the comparison: no negation, whatever the limit.
    Matrix4f const nanDepth(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, NAN, 1);
    cameraProjPoint(out, Vector3f(1, 2, 3), nanDepth, -100.0f);
    EXPECT_TRUE(out.x() == 1.0f && std::isnan(out.z()));
}

TEST(CameraProjBBox, CodesAndExtentsInFrontBehindAndStraddling) {
    Matrix4f const proj = perspective();
    BoundingBox out;
    BoundingBox2D flat;
    // In front: the near face (z = -1) projects unscaled, the far one (z = -2) halved.
    BoundingBox const front = box({-1, -1, -2}, {3, 2, -1});
    EXPECT_EQ(BoundingBoxAlgo::cameraProjBBox(out, front, proj, DEPTH_LIMIT), 1);
    EXPECT_EQ(BoundingBoxAlgo::cameraProjBBox(flat, front, proj, DEPTH_LIMIT), 1);
    EXPECT_TRUE(boxIs(out, {-1, -1, -1, 3, 2, 0.5f}) && rectIs(flat, {-1, -1, 3, 2}));
    // Behind: folded back; a fresh `out` takes nothing, the rectangle the uninitialised values,
    // an initialised `out` the two folded points at FLOAT_EPSILON.
    BoundingBox const behind = box({-1, -1, 1}, {3, 2, 2});
    out.clear();
    EXPECT_EQ(BoundingBoxAlgo::cameraProjBBox(out, behind, proj, DEPTH_LIMIT), 2);
    EXPECT_EQ(BoundingBoxAlgo::cameraProjBBox(flat, behind, proj, DEPTH_LIMIT), 2);
    EXPECT_TRUE(!out.isInitialized() && rectIs(flat, {1, 0, 0, 0}));
    out.set(Vector3f(0, 0, 0.25f));
    BoundingBoxAlgo::cameraProjBBox(out, behind, proj, DEPTH_LIMIT);
    EXPECT_TRUE(boxIs(out, {-1, -1, FLOAT_EPSILON, 3, 2, 0.25f}));
    // Straddling: front corners at z = -2, those behind at z = 1 folded in at FLOAT_EPSILON.
    // Unfolded, x would reach -3 and y -2.
    BoundingBox const straddling = box({-1, -1, -2}, {3, 2, 1});
    out.clear();
    EXPECT_EQ(BoundingBoxAlgo::cameraProjBBox(out, straddling, proj, DEPTH_LIMIT), 3);
    EXPECT_EQ(BoundingBoxAlgo::cameraProjBBox(flat, straddling, proj, DEPTH_LIMIT), 3);
    EXPECT_TRUE(boxIs(out, {-1, -1, FLOAT_EPSILON, 3, 2, 0.5f}) && rectIs(flat, {-1, -1, 3, 2}));
}

TEST(CameraProjBBox, BoxFormMergesIntoOutWhileRectFormReplacesIt) {
    Matrix4f const proj = perspective();
    BoundingBox out;
    BoundingBox2D flat;
    for (BoundingBox const & x : {box({0, 0, -1}, {1, 1, -1}), box({4, 4, -1}, {6, 5, -1})}) {
        BoundingBoxAlgo::cameraProjBBox(out, x, proj, DEPTH_LIMIT);
        BoundingBoxAlgo::cameraProjBBox(flat, x, proj, DEPTH_LIMIT);
    }
    EXPECT_TRUE(boxIs(out, {0, 0, -1, 6, 5, -1}) && rectIs(flat, {4, 4, 6, 5}));
}

/// Records its calls; after `after` calls of multMatrixVec3f makes a new default kernel current.
/// Owned by the test: unref leaves it alone.
class SwappingKernel : public kdrtest::RecordingKernel {
public:
    explicit SwappingKernel(int after) : m_after(after) {}
    void multMatrixVec3f(float * const d, float const * const m,
                         float const * const v) const override {
        RecordingKernel::multMatrixVec3f(d, m, v);
        if (++m_seen == m_after)
            (new EnhancedMathFunctions())->setDefault();
    }

protected:
    void unref() override {}

private:
    int m_after;
    mutable int m_seen = 0;
};

TEST(ScreenTestKernel, DefaultKernelSwappedInMidBoxGivesTheBitsOfItsTable) {
    // The default kernel's projection runs inline; a host kernel gets every corner through its
    // table, and one swapped in at corner 4 gets no more. First inexact results, W = x / 2 + y / 4
    // - z + 1 / 2 being exactly 0 at corner 5 (1, -2, 0.5), which projects to (0, 0, 0). Then
    // x' = x + y + z with x = 2^60, y = -2^60 and z = 1 or 2: only the grouping ((x + y) + z)
    // gives 1 and 2; any other gives 0.
    struct Case {
        Matrix4f cam;
        BoundingBox b;
    } const cases[] = {{Matrix4f(0.7f, 0.1f, -0.3f, 0.5f, -0.1f, 1.3f, 0.2f, 0.25f, 0.3f, -0.2f,
                                 -1.1f, -1, 0.1f, 0.2f, -0.7f, 0.5f),
                        box({-1.3f, -2, -1.9f}, {1, 0.7f, 0.5f})},
                       {Matrix4f(1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, -1, 1),
                        box({0x1p60f, -0x1p60f, 1}, {0x1p60f, -0x1p60f, 2})}};
    auto & calls = kdrtest::RecordingKernel::calls();
    for (Case const & c : cases) {
        BoundingBox viaTable, inlined, mixed;
        SwappingKernel all(-1), three(3);
        calls.clear();
        all.setDefault();
        int const code = BoundingBoxAlgo::cameraProjBBox(viaTable, c.b, c.cam, DEPTH_LIMIT);
        EXPECT_EQ(calls.size(), 8u);
        (new EnhancedMathFunctions())->setDefault();
        EXPECT_EQ(BoundingBoxAlgo::cameraProjBBox(inlined, c.b, c.cam, DEPTH_LIMIT), code);
        calls.clear();
        three.setDefault();
        EXPECT_EQ(BoundingBoxAlgo::cameraProjBBox(mixed, c.b, c.cam, DEPTH_LIMIT), code);
        EXPECT_EQ(calls.size(), 3u);
        EXPECT_EQ(std::memcmp(&viaTable, &inlined, sizeof viaTable), 0);
        EXPECT_EQ(std::memcmp(&viaTable, &mixed, sizeof viaTable), 0);
    }
}
