// Distances, point tests, projections and small quantities derived from points and directions.
#include "geometry/GeomWide.h"

#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/types/Scalar.h"

#include <cmath>

using namespace kdrcore::detail;

float distancePointPoint(Vector3f const & a, Vector3f const & b) {
    V3d const d = wide(a) - wide(b);
    return narrow(std::sqrt((d.x * d.x + d.y * d.y) + d.z * d.z));
}

namespace {
// The part of point - m_point orthogonal to the direction `u`: r = w - u (u . w), t = u . w.
struct Orthogonal {
    V3d r;
    double t;
};
Orthogonal orthogonalPart(Vector3f const & point, Vector3f const & origin, V3d const & u) {
    V3d const w = wide(point) - wide(origin);
    double const t = dot(u, w);
    return {w - u * t, t};
}
} // namespace

float distancePointLine(Vector3f const & point, KDRLine const & line, Vector3f & foot) {
    Orthogonal const o = orthogonalPart(point, line.m_point, wide(line.m_dir));
    foot = narrow(wide(point) - o.r);
    return narrow(std::sqrt(dot(o.r, o.r)));
}

float distance2PointLine(Vector3f const & point, KDRLine const & line, Vector3f & foot) {
    V3d u = wide(line.m_dir);
    double const len = std::sqrt(dot(u, u));
    if (len != 0.0)
        u = u * (1.0 / len);
    Orthogonal const o = orthogonalPart(point, line.m_point, u);
    foot = narrow(wide(point) - o.r);
    return narrow(dot(o.r, o.r));
}

float distancePointLine(Vector3f const & point, KDRLine const & line, float & param) {
    Orthogonal const o = orthogonalPart(point, line.m_point, wide(line.m_dir));
    param = narrow(o.t);
    return narrow(std::sqrt(dot(o.r, o.r)));
}

float distance2PointLine(Vector3f const & point, KDRLine const & line, float & param) {
    Orthogonal const o = orthogonalPart(point, line.m_point, wide(line.m_dir));
    param = narrow(o.t);
    return narrow(dot(o.r, o.r));
}

float distancePointPlane(Vector3f const & point, Plane const & plane) {
    double const v = Vector3f::dotD(plane.m_normal, point) + wide(plane.m_d);
    return narrow(std::fabs(v) / plane.m_normal.normD());
}

float distancePointSegment(Vector3f const & point, Vector3f const & a, Vector3f const & b,
                           Vector3f & foot) {
    Vector3f const s = b - a;
    V3d const ws = wide(s);
    // Absolute bounds on dot products: they do not scale with the segment.
    // The distance is taken before `foot` is written, which may be `point` itself.
    if (dot(wide(point) - wide(a), ws) < TOLERANCE) {
        Vector3f const end = a;
        float const d = distancePointPoint(point, end);
        foot = end;
        return d;
    }
    if (-dot(wide(point) - wide(b), ws) < TOLERANCE) {
        Vector3f const end = b;
        float const d = distancePointPoint(point, end);
        foot = end;
        return d;
    }
    KDRLine line(a, s, true);
    return distancePointLine(point, line, foot);
}

float distancePointSegment(Vector3f const & point, KDRSegment const & segment, Vector3f & foot) {
    return distancePointSegment(point, segment.m_start, segment.m_end, foot);
}

namespace {
struct LineLine {
    double distance;
    bool parallel;
    Vector3f w; // l2.m_point - l1.m_point
};
LineLine lineLine(KDRLine const & l1, KDRLine const & l2) {
    Vector3f const c = kernelCross(l1.m_dir, l2.m_dir);
    double const n = std::sqrt(Vector3f::dotD(c, c));
    Vector3f const w = l2.m_point - l1.m_point;
    if (n <= TOLERANCE)
        return {kernelCross(l1.m_dir, w).normD(), true, w};
    double const s = Vector3f::dotD(w, c);
    double const q = s / n;
    return {q > 0.0 ? q : (-1.0 / n) * s, false, w};
}
} // namespace

float distanceLineLine(KDRLine const & l1, KDRLine const & l2) {
    return narrow(lineLine(l1, l2).distance);
}

float distanceLineLine(KDRLine const & l1, KDRLine const & l2, float & param1, float & param2) {
    LineLine const ll = lineLine(l1, l2);
    if (ll.parallel) {
        float const p1 = Vector3f::dot(ll.w, l1.m_dir);
        param2 = 0.0f;
        param1 = p1;
        return narrow(ll.distance);
    }
    // Nearest points of two lines with unit directions d1, d2.
    float const dd = Vector3f::dot(l1.m_dir, l2.m_dir);
    float const a = Vector3f::dot(l1.m_dir, ll.w);
    float const b = Vector3f::dot(l2.m_dir, ll.w);
    float const k = narrow(1.0 / (wide(dd) * wide(dd) - 1.0));
    float const p1 = narrow((wide(b) * wide(dd) - wide(a)) * wide(k));
    float const p2 = narrow((wide(b) - wide(dd) * wide(a)) * wide(k));
    param1 = p1;
    param2 = p2;
    return narrow(ll.distance);
}

float distanceLineSegment(KDRLine const & line, KDRSegment const & segment, float & lineParam,
                          float & segmentParam) {
    Vector3f const s = segment.m_end - segment.m_start;
    float const len = s.norm();
    KDRLine carrier;
    carrier.m_point = segment.m_start;
    carrier.m_dir =
        len != 0.0f
            ? narrow(V3d{wide(s.x()) / wide(len), wide(s.y()) / wide(len), wide(s.z()) / wide(len)})
            : Vector3f();
    // Copies: the out-parameters may not be written before both ends have been read.
    Vector3f const start = segment.m_start;
    Vector3f const end = segment.m_end;
    float const d = distanceLineLine(line, carrier, lineParam, segmentParam);
    // A fraction of the segment; NaN (0 / 0) for a zero-length one.
    segmentParam = narrow(wide(segmentParam) / wide(len));
    if (segmentParam < 0.0f) {
        segmentParam = 0.0f;
        return distancePointLine(start, line, lineParam);
    }
    if (segmentParam > 1.0f) {
        segmentParam = 1.0f;
        return distancePointLine(end, line, lineParam);
    }
    return d;
}

float distancePointPointSet(Vector3f const & point, KDRArray<Vector3f> const & set, int & index) {
    int const count = set.size();
    if (count == 0)
        return 0.0f;
    int best = 0;
    float bestDistance = distancePointPoint(point, set[0]);
    for (int i = 1; i < count; ++i) {
        float const d = distancePointPoint(point, set.begin()[i]);
        if (d < bestDistance) { // strictly: of equally near elements the first one stays
            bestDistance = d;
            best = i;
        }
    }
    index = best;
    return bestDistance;
}

bool pointOnLine(Vector3f const & point, KDRLine const & line, float tolerance) {
    Vector3f const c = kernelCross(line.m_point - point, line.m_dir);
    return Vector3f::dotD(c, c) <= wide(tolerance);
}

bool pointOnPlane(Vector3f const & point, Plane const & plane, float tolerance) {
    double const v = Vector3f::dotD(plane.m_normal, point) + wide(plane.m_d);
    return std::fabs(v) <= wide(tolerance);
}

bool pointOnSegment(Vector3f const & point, KDRSegment const & segment, float tolerance) {
    Vector3f const s = segment.m_end - segment.m_start;
    Vector3f const w = point - segment.m_start;
    double const dotWS = Vector3f::dotD(w, s);
    double const l2 = Vector3f::dotD(s, s);
    if (dotWS < -wide(tolerance))
        return false;
    if (dotWS > l2)
        return false;
    if (l2 == 0.0)
        return Vector3f::dotD(w, w) <= wide(tolerance);
    // The squared distance from the carrier line, |w x s|^2 / |s|^2: pointOnLine's measure
    // without normalising s, so that no short segment loses its direction.
    Vector3f const c = kernelCross(w, s);
    return Vector3f::dotD(c, c) / l2 <= wide(tolerance);
}

bool areCoplanar(KDRLine const & l1, KDRLine const & l2, float tolerance) {
    Vector3f const w = l1.m_point - l2.m_point;
    Vector3f const p = kernelCross(w, l1.m_dir);
    Vector3f const q = kernelCross(w, l2.m_dir);
    return isZero(kernelCross(q, p), tolerance);
}

_e_geomInfo projectionOrtho(Vector3f & out, float & param, Vector3f const & point,
                            KDRLine const & line) {
    float const t = narrow(dot(wide(point) - wide(line.m_point), wide(line.m_dir)));
    Vector3f const foot = narrow(wide(line.m_point) + wide(line.m_dir) * wide(t));
    param = t;
    out = foot;
    return e_geomProjected;
}

_e_geomInfo projection(Vector3f & out, Vector3f const & point, Plane const & plane,
                       Vector3f const & dir) {
    KDRLine line(point, dir, true);
    float t = 0.0f;
    return interLinePlane(out, t, line, plane);
}

_e_geomInfo projectionOrtho(Vector3f & out, Vector3f const & point, Plane const & plane) {
    return projection(out, point, plane, plane.m_normal);
}

void spherisePoint(Vector3f & out, Vector3f const & in, float radius) {
    V3d const v = wide(in);
    double const scale = wide(radius) / std::sqrt((v.x * v.x + v.y * v.y) + v.z * v.z);
    out = narrow(v * scale);
}

void spherisePoint(Vector3f & out, Vector3f const & in, float radius, float exponent) {
    V3d const v = wide(in);
    double const e = wide(exponent);
    float const a = narrow(std::pow(v.x, e));
    float const b = narrow(std::pow(v.y, e) + wide(a));
    double const sum = std::pow(v.z, e) + wide(b);
    double const scale = wide(radius) / std::pow(sum, 1.0 / e);
    out = narrow(v * scale);
}

void spherisePoint(Vector3f & out, Vector3f const & in, float radius, Vector3f const & exponents) {
    V3d const v = wide(in);
    V3d const e = wide(exponents);
    double const sum = (std::pow(std::fabs(v.z), e.z) + std::pow(std::fabs(v.y), e.y)) +
                       std::pow(std::fabs(v.x), e.x);
    double const scale = wide(radius) / sum;
    out = narrow(v * scale);
}

namespace {
// v scaled to unit length, or v itself when its length is exactly 0.
V3d unitOrZero(V3d const & v) {
    double const len = std::sqrt(dot(v, v));
    return len != 0.0 ? v * (1.0 / len) : v;
}
} // namespace

void normal3Pts(Vector3f & out, Vector3f const & a, Vector3f const & b, Vector3f const & c,
                bool normalizeEdges, bool normalizeResult) {
    V3d e1 = wide(b) - wide(a);
    V3d e2 = wide(c) - wide(b);
    if (normalizeEdges) {
        e1 = unitOrZero(e1);
        e2 = unitOrZero(e2);
    }
    Vector3f sum = narrow(e1 + e2);
    if (normalizeResult)
        sum = narrow(unitOrZero(wide(sum)));
    out = sum;
}

void normal3Pts(Vector3f & out, Vector3f const * points, int i, int j, int k, bool normalizeEdges,
                bool normalizeResult) {
    normal3Pts(out, points[i], points[j], points[k], normalizeEdges, normalizeResult);
}

float Cote(Vector3f const & a, Vector3f const & b, float offset, float & halfAngle) {
    double const h = a.angleD(b) * 0.5;
    halfAngle = narrow(h);
    double const limit = wide(0.01f); // the float constant, 0.00999999978
    if (std::fabs(h - HALF_PI_D) <= limit)
        return 0.0f;
    double const tangent = std::tan(h);
    if (std::fabs(tangent) <= limit)
        return 0.0f;
    return narrow(wide(offset) / tangent);
}
