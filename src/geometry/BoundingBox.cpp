// BoundingBox.cpp - box transformation, camera projection of points and boxes, screen tests
#include "kdrcore/geometry/BoundingBox.h"

#include "detail/Wide.h"

#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Scalar.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <typeinfo>

using kdrcore::detail::wide;

namespace {

/// Writes corner `i` (0 to 7) of the box [lo, hi]: z is the fastest digit, then y, then x, digit 0
/// taking `lo` and digit 1 `hi`.
inline void corner(float * c, int i, float const * lo, float const * hi) {
    c[0] = (i & 4) ? hi[0] : lo[0];
    c[1] = (i & 2) ? hi[1] : lo[1];
    c[2] = (i & 1) ? hi[2] : lo[2];
}

/// Projects `p` through the current kernel's multMatrixVec3f, asked afresh at each call. A point
/// whose depth exceeds `depthLimit` lies behind the viewer: its x and y are negated back and true
/// is returned. A NaN depth counts as in front.
inline bool projectBehind(float * q, float const * m, float const * p, float depthLimit) {
    EnhancedMathFunctions::getCurrent()->multMatrixVec3f(q, m, p);
    if (depthLimit < q[2]) {
        q[0] = -q[0];
        q[1] = -q[1];
        return true;
    }
    return false;
}

/// projectBehind for the eight corners of one box, corner by corner. Each corner asks
/// getCurrent() afresh. A kernel of another type gets the call through its table, as projectBehind
/// makes it. When the kernel is exactly EnhancedMathFunctions, its multMatrixVec3f runs here
/// inline with the same bits: a product of two floats is exact in double, so the products of each
/// coordinate of `lo` and `hi` with its column of `m` are formed once, and each corner adds them
/// in the kernel's grouping ((x + y) + z) + t, takes W first, tests it for 0, multiplies by 1 / W
/// and rounds where the kernel rounds. On finite floats the products raise no exception flag and
/// every other operation is the kernel's own, flags included; with an infinity or a NaN in `m` or
/// the box the kernel is called, so that its NaN bits stay its own.
class CornerProjector {
public:
    CornerProjector(float const * m, float const * lo, float const * hi)
        : m_m(m), m_lo(lo), m_hi(hi) {}

    /// As projectBehind(q, m, corner i).
    bool projectBehind(float * q, int i, float depthLimit) {
        EnhancedMathFunctions * const k = EnhancedMathFunctions::getCurrent();
        if (typeid(*k) != typeid(EnhancedMathFunctions)) {
            m_state = UNKNOWN; // the host's code ran: it may have changed anything
            project(k, q, i);
        } else {
            if (m_state == UNKNOWN)
                prepare();
            if (m_state == INLINE)
                projectInline(q, i);
            else
                project(k, q, i);
        }
        if (depthLimit < q[2]) {
            q[0] = -q[0];
            q[1] = -q[1];
            return true;
        }
        return false;
    }

private:
    enum State { UNKNOWN, INLINE, KERNEL };

    void project(EnhancedMathFunctions const * k, float * q, int i) const {
        float c[3];
        corner(c, i, m_lo, m_hi);
        k->multMatrixVec3f(q, m_m, c);
    }

    void prepare() {
        // On the bits, so that no comparison can raise a flag (a signalling NaN would): the
        // exponent field plus one carries into the top bit for an infinity or a NaN only.
        std::uint32_t bits[22];
        std::memcpy(bits, m_m, 16 * sizeof(float));
        std::memcpy(bits + 16, m_lo, 3 * sizeof(float));
        std::memcpy(bits + 19, m_hi, 3 * sizeof(float));
        std::uint32_t carry = 0;
        for (std::uint32_t b : bits)
            carry |= (b & 0x7F800000u) + 0x00800000u;
        bool const finite = (carry & 0x80000000u) == 0;
        m_state = finite ? INLINE : KERNEL;
        if (!finite)
            return;
        for (int a = 0; a < 3; ++a)
            for (int r = 0; r < 4; ++r) {
                m_p[a][0][r] = wide(m_m[4 * a + r]) * wide(m_lo[a]);
                m_p[a][1][r] = wide(m_m[4 * a + r]) * wide(m_hi[a]);
            }
    }

    void projectInline(float * q, int i) const {
        double const(&x)[4] = m_p[0][(i >> 2) & 1];
        double const(&y)[4] = m_p[1][(i >> 1) & 1];
        double const(&z)[4] = m_p[2][i & 1];
        double const w = x[3] + y[3] + z[3] + wide(m_m[15]);
        if (w == 0.0) {
            q[0] = q[1] = q[2] = 0.0f;
            return;
        }
        double const k = 1.0 / w;
        for (int r = 0; r < 3; ++r)
            q[r] = static_cast<float>((x[r] + y[r] + z[r] + wide(m_m[12 + r])) * k);
    }

    float const * m_m;
    float const * m_lo;
    float const * m_hi;
    State m_state = UNKNOWN;
    double m_p[3][2][4]; // [axis][lo, hi][row]: m's column `axis` times that coordinate
};

/// The x-y part of a BoundingBox under construction, with the same add rules and the same
/// uninitialised state: the screen functions never read the depth of their local boxes, and each
/// axis of BoundingBox::add runs on its own.
struct ScreenRect {
    float minX = 1.0f, minY = 0.0f, maxX = 0.0f, maxY = 0.0f;

    bool initialized() const { return maxX >= minX; }
    void addInitialized(float x, float y) {
        if (minX > x)
            minX = x;
        else if (maxX < x)
            maxX = x;
        if (minY > y)
            minY = y;
        else if (maxY < y)
            maxY = y;
    }
    void add(float x, float y) {
        if (initialized()) {
            addInitialized(x, y);
        } else {
            minX = maxX = x;
            minY = maxY = y;
        }
    }
};

/// The merging step shared by the screen functions: `merged` takes the corners in front and, when
/// there are some, the x-y extent of the corners behind. Returns 1, 2 or 3 as cameraProjBBox.
inline int mergeFrontBehind(ScreenRect & merged, ScreenRect const & front,
                            ScreenRect const & behind) {
    int code = 0;
    if (front.initialized()) {
        code = 1;
        merged = front;
    }
    if (behind.initialized()) {
        if (merged.initialized()) {
            merged.addInitialized(behind.minX, behind.minY);
            merged.addInitialized(behind.maxX, behind.maxY);
        }
        code += 2;
    }
    return code;
}

/// End of the screen tests: false when every corner lay behind, else whether `rect` meets the
/// merged rectangle.
inline bool intersectMerged(BoundingBox2D const & rect, ScreenRect const & front,
                            ScreenRect const & behind) {
    ScreenRect merged;
    if (mergeFrontBehind(merged, front, behind) == 2)
        return false;
    BoundingBox2D r;
    r.m_min = Vector2f(merged.minX, merged.minY);
    r.m_max = Vector2f(merged.maxX, merged.maxY);
    return rect.intersect(r);
}

/// The rectangle's test on a projected point: x and y within it, edges included.
struct RectTest {
    float minX, minY, maxX, maxY;

    explicit RectTest(BoundingBox2D const & rect)
        : minX(rect.m_min.x()), minY(rect.m_min.y()), maxX(rect.m_max.x()), maxY(rect.m_max.y()) {}
    bool contains(float const * q) const {
        return minX <= q[0] && q[0] <= maxX && minY <= q[1] && q[1] <= maxY;
    }
};

/// The slabs of the box for the line: for each axis the parameters at the `m_min` and `m_max`
/// planes, whether each plane was hit, and the range the axis allows.
struct Slabs {
    float t[3][2];
    bool hit[3][2];
    float tMin, tMax;
};

inline void clipSlabs(Slabs & s, KDRLine const & line, BoundingBox const & box) {
    using AxisPlane = _e_geomInfo (*)(float &, KDRLine const &, float, float);
    static constexpr AxisPlane planeOf[3] = {interLinePlaneYZ, interLinePlaneXZ, interLinePlaneXY};
    float low[3], high[3];
    for (int a = 0; a < 3; ++a) {
        s.t[a][0] = s.t[a][1] = 0.0f;
        s.hit[a][0] =
            planeOf[a](s.t[a][0], line, box.m_min[a], BOX_TOLERANCE) == e_geomIntersection;
        s.hit[a][1] =
            planeOf[a](s.t[a][1], line, box.m_max[a], BOX_TOLERANCE) == e_geomIntersection;
        if (s.hit[a][0] && s.hit[a][1]) {
            bool const minFirst = s.t[a][0] < s.t[a][1];
            low[a] = minFirst ? s.t[a][0] : s.t[a][1];
            high[a] = minFirst ? s.t[a][1] : s.t[a][0];
        } else {
            // A slab the line runs parallel to sets no limit, whether the line is in it or not.
            low[a] = FLOAT_LOWEST;
            high[a] = FLOAT_MAX;
        }
    }
    s.tMin = low[0];
    s.tMax = high[0];
    for (int a = 1; a < 3; ++a) {
        if (low[a] > s.tMin)
            s.tMin = low[a];
        if (high[a] < s.tMax)
            s.tMax = high[a];
    }
}

/// A rectangle wider than this (the float 0.05f, compared unrounded) is tested corner by corner
/// for being wholly inside.
constexpr float WIDE_RECT_WIDTH = 0.05f;

} // namespace

void interLineBoundingBox(float & tMin, float & tMax, KDRLine const & line,
                          BoundingBox const & box) {
    Slabs s;
    clipSlabs(s, line, box);
    tMin = s.tMin;
    tMax = s.tMax;
    if (tMax < tMin)
        tMin = tMax = 0.0f;
}

bool interLineBoundingBox(float & tMin, float & tMax, int & faceX, int & faceY, int & faceZ,
                          KDRLine const & line, BoundingBox const & box) {
    Slabs s;
    clipSlabs(s, line, box);
    tMin = s.tMin;
    tMax = s.tMax;
    int * const face[3] = {&faceX, &faceY, &faceZ};
    faceX = faceY = faceZ = 0;
    // The entry face: the first plane hit at exactly tMin; x before y before z, m_min first.
    bool found = false;
    for (int a = 0; a < 3 && !found; ++a) {
        for (int side = 0; side < 2 && !found; ++side) {
            if (s.hit[a][side] && s.t[a][side] == tMin) {
                *face[a] = side == 0 ? -1 : 1;
                found = true;
            }
        }
    }
    if (tMax < tMin)
        tMin = tMax = 0.0f;
    return std::fabs(wide(tMax) - wide(tMin)) >= wide(BOX_TOLERANCE);
}

void BoundingBoxAlgo::transformBBox(BoundingBox & out, BoundingBox const & box,
                                    MatAff4fBase const & m) {
    // Local copies: `out` may be `box`.
    float const lo[3] = {box.m_min.x(), box.m_min.y(), box.m_min.z()};
    float const hi[3] = {box.m_max.x(), box.m_max.y(), box.m_max.z()};
    float c[3];
    Vector3f q;
    corner(c, 0, lo, hi);
    EnhancedMathFunctions::getCurrent()->multAffineMatrixVec3f(q.getValue(), m.getValue(), c);
    out.set(q);
    for (int i = 1; i < 8; ++i) {
        corner(c, i, lo, hi);
        EnhancedMathFunctions::getCurrent()->multAffineMatrixVec3f(q.getValue(), m.getValue(), c);
        out.addInitialized(q);
    }
}

void cameraProjPoint(Vector3f & out, Vector3f const & p, Matrix4f const & proj, float depthLimit) {
    float q[3];
    projectBehind(q, proj.getValue(), p.getValue(), depthLimit);
    out.setValue(q);
}

void cameraProjPoint(Vector2f & out, Vector3f const & p, Matrix4f const & proj, float depthLimit) {
    float q[3];
    projectBehind(q, proj.getValue(), p.getValue(), depthLimit);
    out = Vector2f(q[0], q[1]);
}

int BoundingBoxAlgo::cameraProjBBox(BoundingBox & out, BoundingBox const & box,
                                    Matrix4f const & proj, float depthLimit) {
    float const lo[3] = {box.m_min.x(), box.m_min.y(), box.m_min.z()};
    float const hi[3] = {box.m_max.x(), box.m_max.y(), box.m_max.z()};
    float const * const m = proj.getValue();
    BoundingBox front;
    ScreenRect behind; // only its x-y extent is used
    CornerProjector corners(m, lo, hi);
    for (int i = 0; i < 8; ++i) {
        Vector3f q;
        if (corners.projectBehind(q.getValue(), i, depthLimit))
            behind.add(q.x(), q.y());
        else
            front.add(q);
    }
    // `out` is written only from here on, after every corner of `box` was read.
    int code = 0;
    if (front.isInitialized()) {
        code = 1;
        out.add(front);
    }
    if (behind.initialized()) {
        if (out.isInitialized()) {
            out.add(Vector3f(behind.minX, behind.minY, FLOAT_EPSILON));
            out.add(Vector3f(behind.maxX, behind.maxY, FLOAT_EPSILON));
        }
        code += 2;
    }
    return code;
}

int BoundingBoxAlgo::cameraProjBBox(BoundingBox2D & out, BoundingBox const & box,
                                    Matrix4f const & proj, float depthLimit) {
    float const lo[3] = {box.m_min.x(), box.m_min.y(), box.m_min.z()};
    float const hi[3] = {box.m_max.x(), box.m_max.y(), box.m_max.z()};
    float const * const m = proj.getValue();
    ScreenRect front, behind;
    CornerProjector corners(m, lo, hi);
    for (int i = 0; i < 8; ++i) {
        float q[3];
        if (corners.projectBehind(q, i, depthLimit))
            behind.add(q[0], q[1]);
        else
            front.add(q[0], q[1]);
    }
    ScreenRect merged;
    int const code = mergeFrontBehind(merged, front, behind);
    // Written in every case: with no corner in front these are the uninitialised values.
    out.m_min = Vector2f(merged.minX, merged.minY);
    out.m_max = Vector2f(merged.maxX, merged.maxY);
    return code;
}

bool BoundingBoxAlgo::BBox3DIntersectBBox2D(BoundingBox const & box, BoundingBox2D const & rect,
                                            Matrix4f const & proj, float depthLimit, bool & spare,
                                            bool & boxInsideRect) {
    spare = false;
    boxInsideRect = false;
    RectTest const inRect(rect);
    // Only the width decides; an uninitialised rectangle has a negative one and goes narrow.
    bool const wideRect = wide(inRect.maxX) - wide(inRect.minX) > wide(WIDE_RECT_WIDTH);
    float const lo[3] = {box.m_min.x(), box.m_min.y(), box.m_min.z()};
    float const hi[3] = {box.m_max.x(), box.m_max.y(), box.m_max.z()};
    float const * const m = proj.getValue();
    ScreenRect front, behind;
    bool allInside = false;
    CornerProjector corners(m, lo, hi);
    for (int i = 0; i < 8; ++i) {
        float q[3];
        if (corners.projectBehind(q, i, depthLimit)) {
            behind.add(q[0], q[1]);
            continue;
        }
        bool const inside = inRect.contains(q);
        if (wideRect) {
            // Corner 1 alone sets the reference; when it is behind the reference stays false.
            if (i == 0)
                allInside = inside;
            else if (inside != allInside)
                return true; // corners in front on both sides of the outline
        } else if (inside) {
            return true;
        }
        front.add(q[0], q[1]);
    }
    if (wideRect && allInside) {
        boxInsideRect = true;
        return true;
    }
    // No corner in front lies inside: the bounding rectangles decide, which also finds a box
    // whose projection encloses the rectangle.
    return intersectMerged(rect, front, behind);
}

bool BoundingBoxAlgo::QuadIntersectBBox2D(Vector3f const & vertex0, Vector3f const & vertex1,
                                          Vector3f const & vertex2, Vector3f const & vertex3,
                                          BoundingBox2D const & rect, Matrix4f const & proj,
                                          float depthLimit, bool & spare) {
    spare = false;
    RectTest const inRect(rect);
    Vector3f const * const vertices[4] = {&vertex0, &vertex1, &vertex2, &vertex3};
    float const * const m = proj.getValue();
    ScreenRect front, behind;
    for (Vector3f const * v : vertices) {
        float q[3];
        if (projectBehind(q, m, v->getValue(), depthLimit)) {
            behind.add(q[0], q[1]);
            continue;
        }
        if (inRect.contains(q))
            return true;
        front.add(q[0], q[1]);
    }
    return intersectMerged(rect, front, behind);
}

float BoundingBoxAlgo::BBox3DDistance2(BoundingBox const & box, MatAff4f const & m,
                                       Vector3f const & p) {
    BoundingBox t;
    transformBBox(t, box, m);
    if (t.contains(p))
        return 0.0f;
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) {
        double const a = wide(t.m_min[i]) - wide(p[i]);
        double const b = wide(t.m_max[i]) - wide(p[i]);
        double const a2 = a * a, b2 = b * b;
        sum += b2 <= a2 ? b2 : a2;
    }
    return static_cast<float>(sum);
}

float BoundingBoxAlgo::QuadDistance2(Vector3f const & vertex0, Vector3f const & vertex1,
                                     Vector3f const & vertex2, Vector3f const & vertex3,
                                     MatAff4f const & m, Vector3f const & p) {
    Vector3f const * const vertices[4] = {&vertex0, &vertex1, &vertex2, &vertex3};
    float best = 0.0f;
    for (int i = 0; i < 4; ++i) {
        float q[3];
        EnhancedMathFunctions::getCurrent()->multAffineMatrixVec3f(q, m.getValue(),
                                                                   vertices[i]->getValue());
        double const ex = wide(p.x()) - wide(q[0]);
        double const ey = wide(p.y()) - wide(q[1]);
        double const ez = wide(p.z()) - wide(q[2]);
        double const d = (ez * ez + ey * ey) + ex * ex;
        // The running best is a float: each candidate is compared with its rounded value.
        if (i == 0 || d < wide(best))
            best = static_cast<float>(d);
    }
    return best;
}
