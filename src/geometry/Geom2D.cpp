// Geom2D.cpp - intersections, distances and point-in-polygon in the plane
#include "kdrcore/geometry/Geom2D.h"

#include "detail/Wide.h"

#include "kdrcore/types/Scalar.h"

#include <cmath>

using kdrcore::detail::wide;

namespace {

/// u x v of the 2D vectors (ux, uy) and (vx, vy), unrounded.
inline double cross2(double ux, double uy, double vx, double vy) {
    return ux * vy - uy * vx;
}

/// Both strictly above 0 or both strictly below 0: a zero on either side is a touch.
inline bool sameStrictSide(double s1, double s2) {
    return (s1 > 0.0 && s2 > 0.0) || (s1 < 0.0 && s2 < 0.0);
}

struct XY {
    float x, y;
};

/// Crossing count on the vertical ray up from `p`, for n vertices reached through `vertex(i)`,
/// which gives x and y of vertex i. The closing edge, from the last vertex to the first, comes
/// first. An end is "right" when its x is greater than p[0]; an edge is taken when its ends
/// differ, so its x difference is never 0.
template <class VertexAt> bool crossingParity(float const * p, long n, VertexAt vertex) {
    if (n < 2)
        return false;
    double const px = wide(p[0]);
    double const py = wide(p[1]);
    XY prev = vertex(n - 1);
    bool prevRight = px < wide(prev.x);
    int count = 0;
    for (long i = 0; i < n; ++i) {
        XY const v = vertex(i);
        bool const right = px < wide(v.x);
        if (right != prevRight) {
            double const h =
                ((wide(v.y) - wide(prev.y)) * (px - wide(prev.x))) / (wide(v.x) - wide(prev.x)) +
                wide(prev.y);
            if (h >= py)
                ++count;
        }
        prev = v;
        prevRight = right;
    }
    return (count & 1) != 0;
}

} // namespace

_e_geomInfo inter2dLineLine(float * out, float & t1, float & t2, float const * o1, float const * d1,
                            float const * o2, float const * d2) {
    double const den = cross2(wide(d1[0]), wide(d1[1]), wide(d2[0]), wide(d2[1]));
    if (std::fabs(den) <= TOLERANCE)
        return e_geomParallel;
    double const wx = wide(o2[0]) - wide(o1[0]);
    double const wy = wide(o2[1]) - wide(o1[1]);
    double const k = 1.0 / den;
    t1 = static_cast<float>((wx * wide(d2[1]) - wide(d2[0]) * wy) * k);
    t2 = static_cast<float>(-((wy * wide(d1[0]) - wx * wide(d1[1])) * k));
    // The point is taken from the rounded parameter, as a caller recomputing it would.
    out[0] = static_cast<float>(wide(o1[0]) + wide(t1) * wide(d1[0]));
    out[1] = static_cast<float>(wide(o1[1]) + wide(t1) * wide(d1[1]));
    return e_geomIntersection;
}

_e_geomInfo inter2dSegmentSegment(float * out, float & t1, float & t2, float const * o1,
                                  float const * d1, float const * o2, float const * d2) {
    _e_geomInfo const r = inter2dLineLine(out, t1, t2, o1, d1, o2, d2);
    if (r != e_geomIntersection)
        return r;
    if (t1 < 0.0f || t1 > 1.0f || t2 < 0.0f || t2 > 1.0f)
        return e_geomNoIntersection;
    return e_geomIntersection;
}

_e_geomInfo inter2dSegmentSegment(float const * p1, float const * p2, float const * q1,
                                  float const * q2) {
    double const px = wide(p2[0]) - wide(p1[0]), py = wide(p2[1]) - wide(p1[1]);
    double const s1 = cross2(px, py, wide(q1[0]) - wide(p1[0]), wide(q1[1]) - wide(p1[1]));
    double const s2 = cross2(px, py, wide(q2[0]) - wide(p1[0]), wide(q2[1]) - wide(p1[1]));
    if (sameStrictSide(s1, s2))
        return e_geomNoIntersection;
    double const qx = wide(q2[0]) - wide(q1[0]), qy = wide(q2[1]) - wide(q1[1]);
    double const s3 = cross2(wide(q1[0]) - wide(p1[0]), wide(q1[1]) - wide(p1[1]), qx, qy);
    double const s4 = cross2(qx, qy, wide(p2[0]) - wide(q1[0]), wide(p2[1]) - wide(q1[1]));
    if (sameStrictSide(s3, s4))
        return e_geomNoIntersection;
    return e_geomIntersection;
}

_e_geomInfo inter2dSegmentVerticalLine(float const * a, float const * b, float x, float & y) {
    double const dx = wide(b[0]) - wide(a[0]);
    if (dx == 0.0)
        return a[0] == x ? e_geomCoincident : e_geomNoIntersection;
    float const lo = a[0] < b[0] ? a[0] : b[0];
    float const hi = a[0] < b[0] ? b[0] : a[0];
    if (!(lo <= x && x <= hi))
        return e_geomNoIntersection;
    y = static_cast<float>(((wide(x) - wide(a[0])) / dx) * (wide(b[1]) - wide(a[1])) + wide(a[1]));
    return e_geomIntersection;
}

_e_geomInfo inter2dSegmentHorizontalLine(float const * a, float const * b, float y, float & x) {
    double const dy = wide(b[1]) - wide(a[1]);
    if (dy == 0.0)
        return a[1] == y ? e_geomCoincident : e_geomNoIntersection;
    float const lo = a[1] < b[1] ? a[1] : b[1];
    float const hi = a[1] < b[1] ? b[1] : a[1];
    if (!(lo <= y && y <= hi))
        return e_geomNoIntersection;
    // The factors stand in another order than in the vertical form; the rounding follows it.
    x = static_cast<float>(((wide(b[0]) - wide(a[0])) / dy) * (wide(y) - wide(a[1])) + wide(a[0]));
    return e_geomIntersection;
}

_e_geomInfo inter2dSegmentVerticalSegment(float const * a, float const * b, float x, float yMin,
                                          float yMax, float & y) {
    _e_geomInfo const r = inter2dSegmentVerticalLine(a, b, x, y);
    if (r != e_geomIntersection)
        return r;
    if (yMin > y || y > yMax)
        return e_geomNoIntersection;
    return e_geomIntersection;
}

_e_geomInfo inter2dSegmentHorizontalSegment(float const * a, float const * b, float y, float xMin,
                                            float xMax, float & x) {
    _e_geomInfo const r = inter2dSegmentHorizontalLine(a, b, y, x);
    if (r != e_geomIntersection)
        return r;
    if (xMin > x || x > xMax)
        return e_geomNoIntersection;
    return e_geomIntersection;
}

_e_geomInfo inter2dSegmentBBox(float const * a, float const * b, BoundingBox const & box,
                               bool & aInside, bool & bInside) {
    float const xMin = box.m_min.x(), yMin = box.m_min.y();
    float const xMax = box.m_max.x(), yMax = box.m_max.y();
    aInside = xMin <= a[0] && a[0] <= xMax && yMin <= a[1] && a[1] <= yMax;
    bInside = xMin <= b[0] && b[0] <= xMax && yMin <= b[1] && b[1] <= yMax;
    if (aInside != bInside)
        return e_geomIntersection;
    if ((a[0] < xMin && b[0] < xMin) || (a[0] > xMax && b[0] > xMax) ||
        (a[1] < yMin && b[1] < yMin) || (a[1] > yMax && b[1] > yMax))
        return e_geomNoIntersection;
    // A segment along a side gives e_geomCoincident there, which does not count as a touch.
    float found = 0.0f;
    if (inter2dSegmentVerticalSegment(a, b, xMin, yMin, yMax, found) == e_geomIntersection ||
        inter2dSegmentVerticalSegment(a, b, xMax, yMin, yMax, found) == e_geomIntersection ||
        inter2dSegmentHorizontalSegment(a, b, yMin, xMin, xMax, found) == e_geomIntersection ||
        inter2dSegmentHorizontalSegment(a, b, yMax, xMin, xMax, found) == e_geomIntersection)
        return e_geomIntersection;
    return e_geomNoIntersection;
}

float distance2PointSegment2D(float & t, Vector2f & nearest, float const * a, float const * b,
                              float const * p) {
    double const dx = wide(b[0]) - wide(a[0]);
    double const dy = wide(b[1]) - wide(a[1]);
    double const dd = dy * dy + dx * dx;
    if (dd == 0.0) {
        // A point-like segment: its one point is the nearest.
        t = 0.0f;
        nearest = Vector2f(a[0], a[1]);
    } else {
        t = static_cast<float>(((wide(p[1]) - wide(a[1])) * dy + (wide(p[0]) - wide(a[0])) * dx) /
                               dd);
        if (t > 1.0f) {
            t = 1.0f;
            nearest = Vector2f(b[0], b[1]);
        } else if (t < 0.0f) {
            t = 0.0f;
            nearest = Vector2f(a[0], a[1]);
        } else {
            nearest = Vector2f(static_cast<float>(wide(a[0]) + dx * wide(t)),
                               static_cast<float>(wide(a[1]) + dy * wide(t)));
        }
    }
    double const ex = wide(p[0]) - wide(nearest.x());
    double const ey = wide(p[1]) - wide(nearest.y());
    return static_cast<float>(ey * ey + ex * ex);
}

bool pointIn2DPolygon(float const * p, Vector3f const * begin, Vector3f const * end) {
    return crossingParity(p, end - begin, [begin](long i) {
        return XY{begin[i].x(), begin[i].y()};
    });
}

bool pointIn2DPolygon(float const * p, Vector3f const * vertices, int const * begin,
                      int const * end) {
    return crossingParity(p, end - begin, [vertices, begin](long i) {
        Vector3f const & v = vertices[begin[i]];
        return XY{v.x(), v.y()};
    });
}

bool pointIn2DPolygon(float const * p, Vector2f const * begin, Vector2f const * end) {
    return crossingParity(p, end - begin, [begin](long i) {
        return XY{begin[i].x(), begin[i].y()};
    });
}

bool pointIn2DPolygon(float const * p, Vector2f const * vertices, int const * begin,
                      int const * end) {
    return crossingParity(p, end - begin, [vertices, begin](long i) {
        Vector2f const & v = vertices[begin[i]];
        return XY{v.x(), v.y()};
    });
}

bool pointInTriangle(Vector3f const &, Vector3f const &, Vector3f const &, Vector3f const &) {
    // There is no real test behind this entry point; nothing in the library calls it.
    return false;
}
