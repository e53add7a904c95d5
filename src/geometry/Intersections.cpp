// 3D intersections of lines, segments, planes and triangles, and PlaneProjector.
#include "geometry/GeomWide.h"

#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/types/Scalar.h"

#include <cmath>

using namespace kdrcore::detail;

_e_geomInfo interLinePlane(Vector3f & out, float & t, KDRLine const & line, Plane const & plane) {
    double const dn = Vector3f::dotD(line.m_dir, plane.m_normal);
    if (std::fabs(dn) > TOLERANCE) {
        float const hit =
            narrow((-1.0 / dn) * (Vector3f::dotD(line.m_point, plane.m_normal) + wide(plane.m_d)));
        Vector3f const point = narrow(wide(line.m_point) + wide(line.m_dir) * wide(hit));
        t = hit;
        out = point;
        return e_geomIntersection;
    }
    double const v = Vector3f::dotD(line.m_point, plane.m_normal) + wide(plane.m_d);
    return std::fabs(v) <= TOLERANCE ? e_geomContained : e_geomParallel;
}

namespace {
// The plane where coordinate `axis` equals `value`.
_e_geomInfo interLineAxisPlane(float & t, KDRLine const & line, int axis, float value,
                               float tolerance) {
    double const dir = wide(line.m_dir[axis]);
    double const point = wide(line.m_point[axis]);
    if (std::fabs(dir) > wide(tolerance)) {
        t = narrow((wide(value) - point) / dir);
        return e_geomIntersection;
    }
    return std::fabs(point - wide(value)) <= wide(tolerance) ? e_geomContained : e_geomParallel;
}
} // namespace

_e_geomInfo interLinePlaneYZ(float & t, KDRLine const & line, float value, float tolerance) {
    return interLineAxisPlane(t, line, 0, value, tolerance);
}
_e_geomInfo interLinePlaneXZ(float & t, KDRLine const & line, float value, float tolerance) {
    return interLineAxisPlane(t, line, 1, value, tolerance);
}
_e_geomInfo interLinePlaneXY(float & t, KDRLine const & line, float value, float tolerance) {
    return interLineAxisPlane(t, line, 2, value, tolerance);
}

_e_geomInfo interLineLine(Vector3f & out, float & t1, float & t2, KDRLine const & l1,
                          KDRLine const & l2) {
    V3d const d1 = wide(l1.m_dir);
    V3d const d2 = wide(l2.m_dir);
    V3d const c = crossWide(d1, d2);
    double const acx = std::fabs(c.x), acy = std::fabs(c.y), acz = std::fabs(c.z);
    if (acz <= TOLERANCE && acx <= TOLERANCE && acy <= TOLERANCE)
        return e_geomParallel;

    // Solve in the plane of the two axes across the largest component of c (ties: z, then x).
    V3d const r = wide(l1.m_point) - wide(l2.m_point);
    double p1, p2;
    if (acz >= acx && acz >= acy) {
        double const k = 1.0 / c.z;
        p1 = (d2.x * r.y - d2.y * r.x) * k;
        p2 = (d1.x * r.y - d1.y * r.x) * k;
    } else if (acz > acx || acx < acy) {
        double const k = 1.0 / c.y;
        p1 = (d2.z * r.x - d2.x * r.z) * k;
        p2 = (d1.z * r.x - d1.x * r.z) * k;
    } else {
        double const k = 1.0 / c.x;
        p1 = (d2.y * r.z - d2.z * r.y) * k;
        p2 = (d1.y * r.z - d1.z * r.y) * k;
    }
    float const s1 = narrow(p1);
    float const s2 = narrow(p2);
    Vector3f const point = narrow(wide(l1.m_point) + d1 * wide(s1));
    // The point on l2 at its parameter; the lines meet when both points agree.
    Vector3f const e = narrow((wide(l2.m_point) + d2 * wide(s2)) - wide(point));
    t1 = s1;
    t2 = s2;
    out = point;
    return isZero(e) ? e_geomIntersection : e_geomNoIntersection;
}

_e_geomInfo interTwoCoplanarLines(Vector3f & out, float & t, KDRLine const & l1,
                                  KDRLine const & l2) {
    V3d const d1 = wide(l1.m_dir);
    V3d const d2 = wide(l2.m_dir);
    double const den = d1.x * d2.y - d2.x * d1.y;
    if (std::fabs(den) <= TOLERANCE)
        return e_geomParallel;
    V3d const o = wide(l2.m_point) - wide(l1.m_point);
    float const s = narrow((o.x * d2.y - o.y * d2.x) / den);
    Vector3f const point = narrow(wide(l1.m_point) + d1 * wide(s));
    t = s;
    out = point;
    return e_geomIntersection;
}

_e_geomInfo interSegmentPlane(Vector3f & out, float & t, KDRSegment const & segment,
                              Plane const & plane, float tolerance) {
    V3d const s = wide(segment.m_end) - wide(segment.m_start);
    double const len = std::sqrt(dot(s, s));
    if (len == 0.0)
        return e_geomNoIntersection;
    KDRLine line;
    line.m_point = segment.m_start;
    line.m_dir = narrow(V3d{s.x / len, s.y / len, s.z / len});

    _e_geomInfo const r = interLinePlane(out, t, line, plane);
    // The length parameter becomes a fraction of the segment. This runs for every code, so a
    // parallel or contained segment also scales the caller's t.
    float const toFraction = narrow(1.0 / len);
    t = narrow(wide(t) * wide(toFraction));
    if (r != e_geomIntersection)
        return r;

    if (wide(t) <= -wide(tolerance))
        return e_geomNoIntersection;
    if (wide(t) > 1.0 + wide(tolerance))
        return e_geomNoIntersection;
    // Within the tolerance beyond an end: snap to that end.
    if (t < 0.0f) {
        t = 0.0f;
        out = segment.m_start;
        return e_geomIntersection;
    }
    if (t > 1.0f) {
        t = 1.0f;
        out = segment.m_end;
        return e_geomIntersection;
    }
    return e_geomIntersection;
}

_e_geomInfo interSegmentSegment(Vector3f & out, float & t, KDRSegment const & s1,
                                KDRSegment const & s2) {
    KDRLine line1(s1.m_start, s1.m_end - s1.m_start, true);
    KDRLine line2(s2.m_start, s2.m_end - s2.m_start, true);
    // Lengths first: `out` may be an end point of a segment.
    V3d const v1 = wide(s1.m_end) - wide(s1.m_start);
    V3d const v2 = wide(s2.m_end) - wide(s2.m_start);
    double const len1 = std::sqrt(dot(v1, v1));
    double const len2 = std::sqrt(dot(v2, v2));

    float t2 = 0.0f;
    _e_geomInfo const r = interLineLine(out, t, t2, line1, line2);
    if (r != e_geomIntersection)
        return r;
    if (wide(t) < -TOLERANCE)
        return e_geomNoIntersection;
    if (wide(t) > len1 + TOLERANCE)
        return e_geomNoIntersection;
    if (wide(t2) < -TOLERANCE)
        return e_geomNoIntersection;
    if (wide(t2) > len2 + TOLERANCE)
        return e_geomNoIntersection;
    return e_geomIntersection;
}

_e_geomInfo interLineTriangle(Vector3f & out, float & u, float & v, bool & inside,
                              KDRLine const & line, Vector3f const & p0, Vector3f const & p1,
                              Vector3f const & p2) {
    V3d const d = wide(line.m_dir);
    V3d const e1 = wide(p1 - p0);
    V3d const e2 = wide(p2 - p0);
    V3d const w = wide(line.m_point - p0);

    V3d const e2xd = crossWide(e2, d);
    double const det = dot(e1, e2xd);
    if (det == 0.0) {
        inside = false;
        return e_geomNoIntersection;
    }
    double const k = 1.0 / det;
    float const su = narrow(dot(w, e2xd) * k);
    float const sv = narrow(dot(e1, crossWide(w, d)) * k);
    Vector3f const point = narrow((wide(p0) + e1 * wide(su)) + e2 * wide(sv));
    u = su;
    v = sv;
    out = point;
    inside = !(su < 0.0f || sv < 0.0f || wide(su) + wide(sv) > 1.0);
    return e_geomIntersection;
}

_e_geomInfo interPlanePlane(KDRLine & out, Plane const & plane1, Plane const & plane2) {
    Vector3f const c = kernelCross(plane1.m_normal, plane2.m_normal);
    double const da = wide(plane1.m_d);
    double const db = wide(plane2.m_d);
    if (std::fabs(Vector3f::dotD(c, c)) <= TOLERANCE)
        return std::fabs(da - db) > TOLERANCE ? e_geomParallel : e_geomCoincident;

    V3d const na = wide(plane1.m_normal);
    V3d const nb = wide(plane2.m_normal);
    double const aa = dot(na, na), bb = dot(nb, nb), ab = dot(na, nb);
    double const k = 1.0 / (aa * bb - ab * ab);
    double const fa = (db * ab - bb * da) * k;
    double const fb = (da * ab - aa * db) * k;
    out.m_point = narrow(na * fa + nb * fb);
    out.m_dir = c;
    return e_geomIntersection;
}

namespace {
// The parameter range of `line` between two opposite planes, or the whole line when it runs
// parallel to either of them.
void slab(float & low, float & high, KDRLine const & line, Plane const & a, Plane const & b) {
    Vector3f unused;
    float ta = 0.0f, tb = 0.0f;
    if (interLinePlane(unused, ta, line, a) == e_geomIntersection &&
        interLinePlane(unused, tb, line, b) == e_geomIntersection) {
        low = ta < tb ? ta : tb;
        high = ta < tb ? tb : ta;
    } else {
        low = FLOAT_LOWEST;
        high = FLOAT_MAX;
    }
}
} // namespace

void interLineViewingVolume(Vector3f & out1, Vector3f & out2, float & tMin, float & tMax,
                            KDRLine const & line, Plane const & plane1, Plane const & plane2,
                            Plane const & plane3, Plane const & plane4, Plane const & plane5,
                            Plane const & plane6) {
    float low[3], high[3];
    slab(low[0], high[0], line, plane1, plane2);
    slab(low[1], high[1], line, plane3, plane4);
    slab(low[2], high[2], line, plane5, plane6);
    float lo = low[0], hi = high[0];
    for (int i = 1; i < 3; ++i) {
        if (low[i] > lo)
            lo = low[i];
        if (high[i] < hi)
            hi = high[i];
    }
    V3d const p = wide(line.m_point);
    V3d const d = wide(line.m_dir);
    Vector3f const a = narrow(p + d * wide(lo));
    Vector3f const b = narrow(p + d * wide(hi));
    tMin = lo;
    tMax = hi;
    out1 = a;
    out2 = b;
}

PlaneProjector::PlaneProjector() : m_plane() {}

PlaneProjector::~PlaneProjector() = default;

void PlaneProjector::setPlane(Plane const & plane) {
    m_plane = plane;
}

bool PlaneProjector::project(Vector3f & out, KDRLine const & line) {
    float t = 0.0f;
    return interLinePlane(out, t, line, m_plane) == e_geomIntersection;
}
