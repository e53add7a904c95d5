// Fuzz target: the geometric primitives, queries, intersections and box algorithms on arbitrary
// floats (NaN, infinities, denormals, huge and tiny values, degenerate shapes).
//
// Out-parameters are filled with a signalling-NaN sentinel before each call; afterwards each must
// be written or untouched exactly as documented for the code the call returned (interLinePlane
// writes only on a hit, interSegmentPlane writes `t` in every case but a zero-length segment,
// interLineTriangle leaves u, v, out alone on a zero determinant, and so on). Result codes must
// lie in the set the function documents. Calls documented to allow an out-parameter to be an
// input give the same results with that overlap. The four forms of pointIn2DPolygon must agree
// with each other and ignore z. Nothing may crash, read out of bounds or hit undefined behaviour.
#include "FuzzFloats.h"

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/geometry/Geom2D.h"
#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Scalar.h"
#include "kdrcore/types/Vector.h"

#include <cmath>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <initializer_list>
#include <memory>
#include <vector>

namespace {

using fuzz::bitsOf;
using fuzz::isSentinel;
using fuzz::sameFloat;
using fuzz::sentinel;

float F(FuzzedDataProvider & in) {
    return fuzz::consumeFloat(in);
}
Vector3f V(FuzzedDataProvider & in) {
    const float x = F(in), y = F(in);
    return {x, y, F(in)};
}
Vector3f sentinelVector() {
    return {sentinel(), sentinel(), sentinel()};
}
KDRLine line(FuzzedDataProvider & in) {
    KDRLine l;
    if (in.ConsumeBool()) {
        l.m_point = V(in);
        l.m_dir = V(in); // stored directly: any direction
    } else {
        const Vector3f p = V(in), q = V(in);
        l = KDRLine(p, q, in.ConsumeBool());
    }
    return l;
}
Plane plane(FuzzedDataProvider & in) {
    Plane p;
    switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0:
        p.m_normal = V(in);
        p.m_d = F(in);
        break;
    case 1: {
        const Vector3f n = V(in);
        p.setFromNormalPoint(n, V(in));
        break;
    }
    default: {
        const Vector3f a = V(in);
        p.setMediator(a, V(in));
        break;
    }
    }
    return p;
}
BoundingBox box(FuzzedDataProvider & in) {
    BoundingBox b;
    b.m_min = V(in);
    b.m_max = V(in);
    return b;
}
void fill(FuzzedDataProvider & in, float * m, int n) {
    for (int i = 0; i < n; ++i)
        m[i] = F(in);
}

// --- Out-parameter checks --------------------------------------------------------------------

void written(float v, char const * what) {
    FUZZ_CHECK(!isSentinel(v), "%s not written", what);
}
void untouched(float v, char const * what) {
    FUZZ_CHECK(isSentinel(v), "%s written (%a) though documented as untouched", what,
               static_cast<double>(v));
}
void written(Vector3f const & v, char const * what) {
    for (int i = 0; i < 3; ++i)
        FUZZ_CHECK(!isSentinel(v[i]), "%s: component %d not written", what, i);
}
void untouched(Vector3f const & v, char const * what) {
    for (int i = 0; i < 3; ++i)
        FUZZ_CHECK(isSentinel(v[i]), "%s: component %d written though documented as untouched",
                   what, i);
}
void sameVector(Vector3f const & a, Vector3f const & b, char const * what) {
    for (int i = 0; i < 3; ++i)
        FUZZ_CHECK(sameFloat(a[i], b[i]), "%s: component %d is %a, expected %a", what, i,
                   static_cast<double>(a[i]), static_cast<double>(b[i]));
}
void identical(Vector3f const & a, Vector3f const & b, char const * what) {
    for (int i = 0; i < 3; ++i)
        FUZZ_CHECK(bitsOf(a[i]) == bitsOf(b[i]), "%s: component %d changed", what, i);
}
void codeIn(int code, std::initializer_list<int> allowed, char const * what) {
    for (int a : allowed)
        if (code == a)
            return;
    FUZZ_CHECK(false, "%s returned %d, not a documented code", what, code);
}
bool hasNaN(std::initializer_list<float> values) {
    for (float v : values)
        if (v != v)
            return true;
    return false;
}

// --- Primitives ------------------------------------------------------------------------------

void primitives(FuzzedDataProvider & in) {
    const Vector3f p = V(in), q = V(in);
    const bool isDirection = in.ConsumeBool();
    const KDRLine l(p, q, isDirection);
    identical(l.m_point, p, "KDRLine m_point");
    // A direction too short for setDir leaves the zeroed one.
    const Vector3f d = isDirection ? q : Vector3f(p, q);
    const double length = std::sqrt(static_cast<double>(d.x()) * static_cast<double>(d.x()) +
                                    static_cast<double>(d.y()) * static_cast<double>(d.y()) +
                                    static_cast<double>(d.z()) * static_cast<double>(d.z()));
    if (length <= TOLERANCE)
        identical(l.m_dir, Vector3f(), "KDRLine with a too-short direction");

    KDRLine m = line(in);
    const Vector3f before = m.m_dir;
    const Vector3f dir = V(in);
    m.setDir(dir);
    const double dl = std::sqrt(static_cast<double>(dir.x()) * static_cast<double>(dir.x()) +
                                static_cast<double>(dir.y()) * static_cast<double>(dir.y()) +
                                static_cast<double>(dir.z()) * static_cast<double>(dir.z()));
    if (dl <= TOLERANCE)
        identical(m.m_dir, before, "setDir of a too-short vector");

    Plane pl = plane(in);
    const Vector3f oldNormal = pl.m_normal;
    const float oldD = pl.m_d;
    const Vector3f n = V(in);
    pl.setNormal(n);
    FUZZ_CHECK(bitsOf(pl.m_d) == bitsOf(oldD), "setNormal changed m_d");
    const double nl = std::sqrt(static_cast<double>(n.x()) * static_cast<double>(n.x()) +
                                static_cast<double>(n.y()) * static_cast<double>(n.y()) +
                                static_cast<double>(n.z()) * static_cast<double>(n.z()));
    if (nl <= TOLERANCE)
        identical(pl.m_normal, oldNormal, "setNormal of a too-short vector");

    Vector3f point = sentinelVector();
    pl.findPoint(point);
    written(point, "findPoint");
    KDRLine u, v;
    u.m_point = sentinelVector();
    v.m_point = sentinelVector();
    pl.findUVAxis(u, v);
    sameVector(u.m_point, point, "findUVAxis lineU.m_point");
    sameVector(v.m_point, point, "findUVAxis lineV.m_point");
}

// --- Distances and point queries ---------------------------------------------------------------

void distances(FuzzedDataProvider & in) {
    const Vector3f p = V(in);
    const KDRLine l = line(in), l2 = line(in);
    Vector3f foot = sentinelVector();
    (void)distancePointLine(p, l, foot);
    written(foot, "distancePointLine foot");
    foot = sentinelVector();
    (void)distance2PointLine(p, l, foot);
    written(foot, "distance2PointLine foot");
    float param = sentinel();
    (void)distancePointLine(p, l, param);
    written(param, "distancePointLine param");
    param = sentinel();
    (void)distance2PointLine(p, l, param);
    written(param, "distance2PointLine param");

    const KDRSegment s(V(in), V(in));
    foot = sentinelVector();
    const float ds = distancePointSegment(p, s, foot);
    written(foot, "distancePointSegment foot");
    Vector3f aliased = p; // foot may be point
    const float dsAliased = distancePointSegment(aliased, s.m_start, s.m_end, aliased);
    FUZZ_CHECK(sameFloat(ds, dsAliased), "distancePointSegment with foot = point: result");
    sameVector(aliased, foot, "distancePointSegment with foot = point");

    float p1 = sentinel(), p2 = sentinel();
    const float dll = distanceLineLine(l, l2, p1, p2);
    written(p1, "distanceLineLine param1");
    written(p2, "distanceLineLine param2");
    FUZZ_CHECK(sameFloat(dll, distanceLineLine(l, l2)), "distanceLineLine: the two forms differ");
    p1 = sentinel();
    p2 = sentinel();
    (void)distanceLineSegment(l, s, p1, p2);
    written(p1, "distanceLineSegment lineParam");
    written(p2, "distanceLineSegment segmentParam");

    KDRArray<Vector3f> set;
    const int count = in.ConsumeIntegralInRange(0, 6);
    for (int i = 0; i < count; ++i)
        set.push_back(V(in));
    int index = -12345;
    const float dset = distancePointPointSet(p, set, index);
    if (count == 0) {
        FUZZ_CHECK(index == -12345 && dset == 0.0f, "distancePointPointSet of an empty set");
    } else {
        FUZZ_CHECK(index >= 0 && index < count, "distancePointPointSet: index %d of %d", index,
                   count);
    }

    (void)distancePointPlane(p, plane(in));
    const float tolerance = F(in);
    (void)pointOnLine(p, l, tolerance);
    (void)pointOnPlane(p, plane(in), tolerance);
    (void)pointOnSegment(p, s, tolerance);
    (void)areCoplanar(l, l2, tolerance);
    (void)distancePointPoint(p, V(in));
}

void projectionsAndDerived(FuzzedDataProvider & in) {
    const Vector3f p = V(in);
    const KDRLine l = line(in);
    Vector3f out = sentinelVector();
    float param = sentinel();
    FUZZ_CHECK(projectionOrtho(out, param, p, l) == e_geomProjected,
               "projectionOrtho on a line: not e_geomProjected");
    written(out, "projectionOrtho out");
    written(param, "projectionOrtho param");

    const Plane pl = plane(in);
    const Vector3f dir = V(in);
    out = sentinelVector();
    const _e_geomInfo code = projection(out, p, pl, dir);
    codeIn(code, {e_geomIntersection, e_geomParallel, e_geomContained}, "projection");
    if (code == e_geomIntersection)
        written(out, "projection out");
    else
        untouched(out, "projection out");
    out = sentinelVector();
    const _e_geomInfo ortho = projectionOrtho(out, p, pl);
    codeIn(ortho, {e_geomIntersection, e_geomParallel, e_geomContained}, "projectionOrtho");
    if (ortho == e_geomIntersection)
        written(out, "projectionOrtho(plane) out");
    else
        untouched(out, "projectionOrtho(plane) out");

    const float radius = F(in);
    out = sentinelVector();
    spherisePoint(out, p, radius);
    written(out, "spherisePoint");
    out = sentinelVector();
    spherisePoint(out, p, radius, F(in));
    written(out, "spherisePoint(exponent)");
    out = sentinelVector();
    spherisePoint(out, p, radius, V(in));
    written(out, "spherisePoint(exponents)");

    Vector3f points[3] = {V(in), V(in), V(in)};
    const bool edges = in.ConsumeBool(), result = in.ConsumeBool();
    out = sentinelVector();
    normal3Pts(out, points[0], points[1], points[2], edges, result);
    written(out, "normal3Pts");
    const int which = in.ConsumeIntegralInRange(0, 2);
    Vector3f copy[3] = {points[0], points[1], points[2]};
    normal3Pts(copy[which], copy[0], copy[1], copy[2], edges, result); // out may be a point
    sameVector(copy[which], out, "normal3Pts with out = a point");
    Vector3f viaIndexes = sentinelVector();
    normal3Pts(viaIndexes, points, 0, 1, 2, edges, result);
    sameVector(viaIndexes, out, "normal3Pts by indexes");

    float half = sentinel();
    (void)Cote(V(in), V(in), F(in), half);
    written(half, "Cote halfAngle");
}

// --- 3D intersections ------------------------------------------------------------------------

void intersections(FuzzedDataProvider & in) {
    const KDRLine l = line(in), l2 = line(in);
    const Plane pl = plane(in);
    Vector3f out = sentinelVector();
    float t = sentinel();
    const _e_geomInfo lp = interLinePlane(out, t, l, pl);
    codeIn(lp, {e_geomIntersection, e_geomParallel, e_geomContained}, "interLinePlane");
    if (lp == e_geomIntersection) {
        written(out, "interLinePlane out");
        written(t, "interLinePlane t");
    } else {
        untouched(out, "interLinePlane out");
        untouched(t, "interLinePlane t");
    }
    PlaneProjector projector;
    projector.setPlane(pl);
    Vector3f projected = sentinelVector();
    FUZZ_CHECK(projector.project(projected, l) == (lp == e_geomIntersection),
               "PlaneProjector::project disagrees with interLinePlane");
    if (lp == e_geomIntersection)
        sameVector(projected, out, "PlaneProjector::project");
    else
        untouched(projected, "PlaneProjector::project out");

    const float value = F(in), tolerance = F(in);
    for (int axis = 0; axis < 3; ++axis) {
        t = sentinel();
        const _e_geomInfo c = axis == 0   ? interLinePlaneYZ(t, l, value, tolerance)
                              : axis == 1 ? interLinePlaneXZ(t, l, value, tolerance)
                                          : interLinePlaneXY(t, l, value, tolerance);
        codeIn(c, {e_geomIntersection, e_geomParallel, e_geomContained}, "interLinePlaneXY/XZ/YZ");
        if (c == e_geomIntersection)
            written(t, "interLinePlaneXY/XZ/YZ t");
        else
            untouched(t, "interLinePlaneXY/XZ/YZ t");
    }

    out = sentinelVector();
    float t1 = sentinel(), t2 = sentinel();
    const _e_geomInfo ll = interLineLine(out, t1, t2, l, l2);
    codeIn(ll, {e_geomNoIntersection, e_geomIntersection, e_geomParallel}, "interLineLine");
    if (ll == e_geomParallel) {
        untouched(out, "interLineLine out");
        untouched(t1, "interLineLine t1");
        untouched(t2, "interLineLine t2");
    } else {
        written(out, "interLineLine out");
        written(t1, "interLineLine t1");
        written(t2, "interLineLine t2");
    }

    out = sentinelVector();
    t = sentinel();
    const _e_geomInfo cl = interTwoCoplanarLines(out, t, l, l2);
    codeIn(cl, {e_geomIntersection, e_geomParallel}, "interTwoCoplanarLines");
    if (cl == e_geomParallel) {
        untouched(out, "interTwoCoplanarLines out");
        untouched(t, "interTwoCoplanarLines t");
    } else {
        written(out, "interTwoCoplanarLines out");
        written(t, "interTwoCoplanarLines t");
    }

    const KDRSegment s(V(in), V(in)), s2(V(in), V(in));
    out = sentinelVector();
    t = sentinel();
    const _e_geomInfo sp = interSegmentPlane(out, t, s, pl, F(in));
    codeIn(sp, {e_geomNoIntersection, e_geomIntersection, e_geomParallel, e_geomContained},
           "interSegmentPlane");
    // Exactly zero length: every difference 0 (infinite equal ends give NaN, not 0).
    const Vector3f span(s.m_start, s.m_end);
    const bool zeroLength = span.x() == 0.0f && span.y() == 0.0f && span.z() == 0.0f;
    if (zeroLength) {
        FUZZ_CHECK(sp == e_geomNoIntersection, "interSegmentPlane, zero length: code %d", sp);
        untouched(out, "interSegmentPlane out, zero length");
        untouched(t, "interSegmentPlane t, zero length");
    } else {
        written(t, "interSegmentPlane t"); // scaled in every case
        if (sp == e_geomIntersection || sp == e_geomNoIntersection)
            written(out, "interSegmentPlane out");
        else
            untouched(out, "interSegmentPlane out");
    }

    out = sentinelVector();
    t = sentinel();
    const _e_geomInfo ss = interSegmentSegment(out, t, s, s2);
    codeIn(ss, {e_geomNoIntersection, e_geomIntersection, e_geomParallel}, "interSegmentSegment");
    if (ss == e_geomParallel) {
        untouched(out, "interSegmentSegment out");
        untouched(t, "interSegmentSegment t");
    } else {
        written(out, "interSegmentSegment out");
        written(t, "interSegmentSegment t");
    }

    out = sentinelVector();
    float u = sentinel(), v = sentinel();
    bool inside = in.ConsumeBool();
    const Vector3f p0 = V(in), p1 = V(in), p2 = V(in);
    const _e_geomInfo lt = interLineTriangle(out, u, v, inside, l, p0, p1, p2);
    codeIn(lt, {e_geomNoIntersection, e_geomIntersection}, "interLineTriangle");
    if (lt == e_geomNoIntersection) {
        FUZZ_CHECK(!inside, "interLineTriangle: inside on a zero determinant");
        untouched(out, "interLineTriangle out");
        untouched(u, "interLineTriangle u");
        untouched(v, "interLineTriangle v");
    } else {
        written(out, "interLineTriangle out");
        written(u, "interLineTriangle u");
        written(v, "interLineTriangle v");
        // Documented as "false if u < 0, or v < 0, or u + v > 1; true otherwise": a NaN hit is
        // inside.
        FUZZ_CHECK(!inside || !(u < 0.0f || v < 0.0f), "interLineTriangle: inside with u %a, v %a",
                   static_cast<double>(u), static_cast<double>(v));
    }

    KDRLine cut;
    cut.m_point = sentinelVector();
    cut.m_dir = sentinelVector();
    const _e_geomInfo pp = interPlanePlane(cut, pl, plane(in));
    codeIn(pp, {e_geomIntersection, e_geomParallel, e_geomCoincident}, "interPlanePlane");
    if (pp == e_geomIntersection) {
        written(cut.m_point, "interPlanePlane m_point");
        written(cut.m_dir, "interPlanePlane m_dir");
    } else {
        untouched(cut.m_point, "interPlanePlane m_point");
        untouched(cut.m_dir, "interPlanePlane m_dir");
    }

    Plane planes[6];
    for (Plane & p : planes)
        p = plane(in);
    Vector3f o1 = sentinelVector(), o2 = sentinelVector();
    float tMin = sentinel(), tMax = sentinel();
    interLineViewingVolume(o1, o2, tMin, tMax, l, planes[0], planes[1], planes[2], planes[3],
                           planes[4], planes[5]);
    written(o1, "interLineViewingVolume out1");
    written(o2, "interLineViewingVolume out2");
    written(tMin, "interLineViewingVolume tMin");
    written(tMax, "interLineViewingVolume tMax");
}

// --- 2D ----------------------------------------------------------------------------------------

void twoD(FuzzedDataProvider & in) {
    float o1[2], d1[2], o2[2], d2[2];
    fill(in, o1, 2);
    fill(in, d1, 2);
    fill(in, o2, 2);
    fill(in, d2, 2);
    for (int form = 0; form < 2; ++form) {
        float out[2] = {sentinel(), sentinel()};
        float t1 = sentinel(), t2 = sentinel();
        const _e_geomInfo c = form == 0 ? inter2dLineLine(out, t1, t2, o1, d1, o2, d2)
                                        : inter2dSegmentSegment(out, t1, t2, o1, d1, o2, d2);
        if (form == 0)
            codeIn(c, {e_geomIntersection, e_geomParallel}, "inter2dLineLine");
        else
            codeIn(c, {e_geomNoIntersection, e_geomIntersection, e_geomParallel},
                   "inter2dSegmentSegment");
        for (float w : {out[0], out[1], t1, t2}) {
            if (c == e_geomParallel)
                untouched(w, "inter2dLineLine / inter2dSegmentSegment output");
            else
                written(w, "inter2dLineLine / inter2dSegmentSegment output");
        }
    }
    codeIn(inter2dSegmentSegment(o1, d1, o2, d2), {e_geomNoIntersection, e_geomIntersection},
           "inter2dSegmentSegment(p1, p2, q1, q2)");

    // Segment a b against axis-parallel lines and segments.
    const float * a = o1;
    const float * b = o2;
    const float at = F(in), lo = F(in), hi = F(in);
    for (int vertical = 0; vertical < 2; ++vertical) {
        const int k = vertical ? 0 : 1; // the axis the line is fixed in
        float r = sentinel();
        const _e_geomInfo line = vertical ? inter2dSegmentVerticalLine(a, b, at, r)
                                          : inter2dSegmentHorizontalLine(a, b, at, r);
        codeIn(line, {e_geomNoIntersection, e_geomIntersection, e_geomCoincident},
               "inter2dSegmentVertical/HorizontalLine");
        if (line == e_geomIntersection)
            written(r, "inter2dSegmentVertical/HorizontalLine coordinate");
        else
            untouched(r, "inter2dSegmentVertical/HorizontalLine coordinate");
        if (std::isfinite(a[k]) && a[k] == b[k] && line != e_geomCoincident)
            FUZZ_CHECK(a[k] != at, "segment on the line: code %d, not e_geomCoincident", line);

        float rs = sentinel();
        const _e_geomInfo seg = vertical ? inter2dSegmentVerticalSegment(a, b, at, lo, hi, rs)
                                         : inter2dSegmentHorizontalSegment(a, b, at, lo, hi, rs);
        codeIn(seg, {e_geomNoIntersection, e_geomIntersection, e_geomCoincident},
               "inter2dSegmentVertical/HorizontalSegment");
        // The segment form is the line form plus a range test after the coordinate is written.
        if (line == e_geomIntersection) {
            written(rs, "inter2dSegmentVertical/HorizontalSegment coordinate");
            FUZZ_CHECK(sameFloat(rs, r),
                       "inter2dSegment*Segment: coordinate differs from the line form");
            FUZZ_CHECK(seg != e_geomCoincident, "inter2dSegment*Segment: coincident on a crossing");
        } else {
            FUZZ_CHECK(seg == line, "inter2dSegment*Segment: code %d, the line form gave %d", seg,
                       line);
            untouched(rs, "inter2dSegmentVertical/HorizontalSegment coordinate");
        }
    }

    BoundingBox bb = box(in);
    bool aInside = false, bInside = false;
    const _e_geomInfo sb = inter2dSegmentBBox(a, b, bb, aInside, bInside);
    codeIn(sb, {e_geomNoIntersection, e_geomIntersection}, "inter2dSegmentBBox");
    auto within = [&bb](float const * p) {
        return bb.m_min.x() <= p[0] && p[0] <= bb.m_max.x() && bb.m_min.y() <= p[1] &&
               p[1] <= bb.m_max.y();
    };
    if (!hasNaN({a[0], a[1], b[0], b[1], bb.m_min.x(), bb.m_min.y(), bb.m_max.x(), bb.m_max.y()}))
        FUZZ_CHECK(aInside == within(a) && bInside == within(b),
                   "inter2dSegmentBBox: inside flags");
    FUZZ_CHECK(aInside == bInside || sb == e_geomIntersection,
               "inter2dSegmentBBox: one end inside, one outside, and no intersection");

    float t = sentinel();
    Vector2f nearest(sentinel(), sentinel());
    float p[2];
    fill(in, p, 2);
    (void)distance2PointSegment2D(t, nearest, a, b, p);
    written(t, "distance2PointSegment2D t");
    written(nearest.x(), "distance2PointSegment2D nearest.x");
    written(nearest.y(), "distance2PointSegment2D nearest.y");
    float same[2] = {a[0], a[1]};
    t = sentinel();
    (void)distance2PointSegment2D(t, nearest, a, same, p);
    if (std::isfinite(a[0]) && std::isfinite(a[1]))
        FUZZ_CHECK(t == 0.0f && bitsOf(nearest.x()) == bitsOf(a[0]) &&
                       bitsOf(nearest.y()) == bitsOf(a[1]),
                   "distance2PointSegment2D with a == b: t %a", static_cast<double>(t));

    // The four forms of pointIn2DPolygon on the same vertices agree; z is never read.
    const int n = in.ConsumeIntegralInRange(0, 8);
    std::vector<Vector3f> v3, v3z;
    std::vector<Vector2f> v2;
    for (int i = 0; i < n; ++i) {
        const float x = F(in), y = F(in);
        v3.emplace_back(x, y, F(in));
        v3z.emplace_back(x, y, sentinel());
        v2.emplace_back(x, y);
    }
    // Index forms over a shuffled copy, indexes restoring the order.
    std::vector<int> order(static_cast<std::size_t>(n));
    std::vector<Vector3f> shuffled3(static_cast<std::size_t>(n));
    std::vector<Vector2f> shuffled2(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const auto j = static_cast<std::size_t>(n - 1 - i); // reversed storage
        order[static_cast<std::size_t>(i)] = static_cast<int>(j);
        shuffled3[j] = v3[static_cast<std::size_t>(i)];
        shuffled2[j] = v2[static_cast<std::size_t>(i)];
    }
    const bool r3 = pointIn2DPolygon(p, v3.data(), v3.data() + n);
    FUZZ_CHECK(n >= 2 || !r3, "pointIn2DPolygon with %d vertices gave true", n);
    FUZZ_CHECK(pointIn2DPolygon(p, v3z.data(), v3z.data() + n) == r3,
               "pointIn2DPolygon depends on z");
    FUZZ_CHECK(pointIn2DPolygon(p, v2.data(), v2.data() + n) == r3,
               "pointIn2DPolygon: Vector2f form differs");
    FUZZ_CHECK(pointIn2DPolygon(p, shuffled3.data(), order.data(), order.data() + n) == r3,
               "pointIn2DPolygon: indexed Vector3f form differs");
    FUZZ_CHECK(pointIn2DPolygon(p, shuffled2.data(), order.data(), order.data() + n) == r3,
               "pointIn2DPolygon: indexed Vector2f form differs");
    FUZZ_CHECK(!pointInTriangle(V(in), V(in), V(in), V(in)), "pointInTriangle gave true");
}

// --- Boxes and cameras -------------------------------------------------------------------------

void boxes(FuzzedDataProvider & in) {
    const KDRLine l = line(in);
    const BoundingBox bb = box(in);
    float tMin = sentinel(), tMax = sentinel();
    interLineBoundingBox(tMin, tMax, l, bb);
    written(tMin, "interLineBoundingBox tMin");
    written(tMax, "interLineBoundingBox tMax");
    FUZZ_CHECK(!(tMax < tMin), "interLineBoundingBox: an empty range was not reset to 0");
    float tMin2 = sentinel(), tMax2 = sentinel();
    int fx = 99, fy = 99, fz = 99;
    const bool hit = interLineBoundingBox(tMin2, tMax2, fx, fy, fz, l, bb);
    FUZZ_CHECK(sameFloat(tMin2, tMin) && sameFloat(tMax2, tMax),
               "interLineBoundingBox: the two forms give different ranges");
    FUZZ_CHECK(fx >= -1 && fx <= 1 && fy >= -1 && fy <= 1 && fz >= -1 && fz <= 1,
               "interLineBoundingBox: faces %d %d %d", fx, fy, fz);
    FUZZ_CHECK((fx != 0) + (fy != 0) + (fz != 0) <= 1, "interLineBoundingBox: two entry faces");
    FUZZ_CHECK(!hit || tMin2 != tMax2, "interLineBoundingBox: true for an empty range");

    MatAff4f m;
    fill(in, m.getValue(), 16);
    BoundingBox out;
    out.m_min = sentinelVector();
    out.m_max = sentinelVector();
    BoundingBoxAlgo::transformBBox(out, bb, m);
    written(out.m_min, "transformBBox m_min");
    written(out.m_max, "transformBBox m_max");
    BoundingBox self = bb; // out may be box
    BoundingBoxAlgo::transformBBox(self, self, m);
    sameVector(self.m_min, out.m_min, "transformBBox with out = box, m_min");
    sameVector(self.m_max, out.m_max, "transformBBox with out = box, m_max");

    Matrix4f proj;
    fill(in, proj.getValue(), 16);
    const float depth = F(in);
    BoundingBox acc = box(in);
    const BoundingBox accBefore = acc;
    const int code = BoundingBoxAlgo::cameraProjBBox(acc, bb, proj, depth);
    // 1 front, 2 behind, 3 both; 0 when no projected corner gives an initialised box (NaN x).
    codeIn(code, {0, 1, 2, 3}, "cameraProjBBox(BoundingBox)");
    if (code == 2 && !accBefore.isInitialized()) {
        identical(acc.m_min, accBefore.m_min, "cameraProjBBox, all behind: uninitialised out");
        identical(acc.m_max, accBefore.m_max, "cameraProjBBox, all behind: uninitialised out");
    }
    BoundingBox selfAcc = bb; // out may be box
    BoundingBox plain = bb;
    const int selfCode = BoundingBoxAlgo::cameraProjBBox(selfAcc, selfAcc, proj, depth);
    const int plainCode = BoundingBoxAlgo::cameraProjBBox(plain, bb, proj, depth);
    FUZZ_CHECK(selfCode == plainCode, "cameraProjBBox with out = box: code differs");
    sameVector(selfAcc.m_min, plain.m_min, "cameraProjBBox with out = box, m_min");
    sameVector(selfAcc.m_max, plain.m_max, "cameraProjBBox with out = box, m_max");

    BoundingBox2D screen;
    screen.m_min = Vector2f(sentinel(), sentinel());
    screen.m_max = Vector2f(sentinel(), sentinel());
    const int code2 = BoundingBoxAlgo::cameraProjBBox(screen, bb, proj, depth);
    FUZZ_CHECK(code2 == plainCode, "cameraProjBBox: the 2D form's code %d differs from %d", code2,
               plainCode);
    for (float w : {screen.m_min.x(), screen.m_min.y(), screen.m_max.x(), screen.m_max.y()})
        written(w, "cameraProjBBox(BoundingBox2D) out");
    if (code2 == 2)
        FUZZ_CHECK(screen.m_min.x() == 1.0f && screen.m_min.y() == 0.0f &&
                       screen.m_max.x() == 0.0f && screen.m_max.y() == 0.0f,
                   "cameraProjBBox(BoundingBox2D), all behind: not (1, 0) - (0, 0)");

    BoundingBox2D rect;
    fill(in, &rect.m_min.x(), 1);
    fill(in, &rect.m_min.y(), 1);
    fill(in, &rect.m_max.x(), 1);
    fill(in, &rect.m_max.y(), 1);
    bool spare = true, inside = in.ConsumeBool();
    const bool meets = BoundingBoxAlgo::BBox3DIntersectBBox2D(bb, rect, proj, depth, spare, inside);
    FUZZ_CHECK(!spare, "BBox3DIntersectBBox2D: spare set");
    FUZZ_CHECK(!inside || meets, "BBox3DIntersectBBox2D: boxInsideRect without a hit");
    if (code2 == 2)
        FUZZ_CHECK(!meets && !inside, "BBox3DIntersectBBox2D: all corners behind, yet a hit");
    const Vector3f q0 = V(in), q1 = V(in), q2 = V(in), q3 = V(in);
    spare = true;
    (void)BoundingBoxAlgo::QuadIntersectBBox2D(q0, q1, q2, q3, rect, proj, depth, spare);
    FUZZ_CHECK(!spare, "QuadIntersectBBox2D: spare set");

    MatAff4f place;
    fill(in, place.getValue(), 16);
    const Vector3f p = V(in);
    const float d2 = BoundingBoxAlgo::BBox3DDistance2(bb, place, p);
    FUZZ_CHECK(!(d2 < 0.0f), "BBox3DDistance2 negative");
    const float q2d = BoundingBoxAlgo::QuadDistance2(q0, q1, q2, q3, place, p);
    FUZZ_CHECK(!(q2d < 0.0f), "QuadDistance2 negative");

    Vector3f projected = sentinelVector();
    cameraProjPoint(projected, p, proj, depth);
    written(projected, "cameraProjPoint");
    Vector3f selfPoint = p; // out may be p
    cameraProjPoint(selfPoint, selfPoint, proj, depth);
    sameVector(selfPoint, projected, "cameraProjPoint with out = p");
    Vector2f flat(sentinel(), sentinel());
    cameraProjPoint(flat, p, proj, depth);
    FUZZ_CHECK(sameFloat(flat.x(), projected.x()) && sameFloat(flat.y(), projected.y()),
               "cameraProjPoint: the Vector2f form differs");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    for (int k = 0; k < 4 && (k == 0 || in.remaining_bytes() > 0); ++k) {
        switch (in.ConsumeIntegralInRange(0, 5)) {
        case 0:
            primitives(in);
            break;
        case 1:
            distances(in);
            break;
        case 2:
            projectionsAndDerived(in);
            break;
        case 3:
            intersections(in);
            break;
        case 4:
            twoD(in);
            break;
        default:
            boxes(in);
            break;
        }
    }
    return 0;
}
