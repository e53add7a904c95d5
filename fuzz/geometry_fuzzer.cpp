// Fuzz target: the geometric queries, intersections and box algorithms on arbitrary primitives and
// floats (NaN, infinities, denormals, huge and tiny values, degenerate shapes).
//
// Out-parameters are filled with a signalling-NaN sentinel before each call; afterwards each must
// be written or untouched exactly as documented for the code the call returned (interLinePlane
// writes only on a hit, interSegmentPlane writes `t` in every case but a zero-length segment,
// interLineTriangle leaves u, v, out alone on a zero determinant, and so on). Result codes must
// lie in the set the function documents. Calls documented to allow an out-parameter to be an
// input give the same results with that overlap. The four forms of pointIn2DPolygon must agree
// with each other and ignore z. Nothing may crash, read out of bounds or hit undefined behaviour.
#include "Fuzz.h"

#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/geometry/Geom2D.h"
#include "kdrcore/geometry/GeomQueries.h"
#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Scalar.h"
#include "kdrcore/types/Vector.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <initializer_list>
#include <memory>
#include <vector>

namespace {

using fuzz::bitsOf;
using fuzz::isSentinel;
using fuzz::same;
using fuzz::sentinel;

float F(FuzzedDataProvider & in) {
    return fuzz::consumeFloat(in);
}
Vector3f V(FuzzedDataProvider & in) {
    float const x = F(in), y = F(in);
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
        Vector3f const p = V(in), q = V(in);
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
        Vector3f const n = V(in);
        p.setFromNormalPoint(n, V(in));
        break;
    }
    default: {
        Vector3f const a = V(in);
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

void outOne(bool wrote, char const * what, float v) {
    FUZZ_CHECK(isSentinel(v) != wrote, "%s %s", what,
               wrote ? "not written" : "written though untouched");
}
void outOne(bool wrote, char const * what, Vector3f const & v) {
    for (int i = 0; i < 3; ++i)
        outOne(wrote, what, v[i]);
}
// Every output written when `wrote`, every one still the sentinel otherwise.
template <class... T>
void outputs([[maybe_unused]] bool wrote, [[maybe_unused]] char const * what, T const &... v) {
    (outOne(wrote, what, v), ...);
}
template <class... T> void written(char const * what, T const &... v) {
    outputs(true, what, v...);
}
// A code the function documents, and the outputs written exactly when `wrote`.
template <class... T>
void result(int code, std::initializer_list<int> allowed, bool wrote, char const * what,
            T const &... v) {
    FUZZ_CHECK(std::find(allowed.begin(), allowed.end(), code) != allowed.end(), "%s gave %d", what,
               code);
    outputs(wrote, what, v...);
}
// The same bits, or (unless `exact`) both NaN.
void sameVector(Vector3f const & a, Vector3f const & b, char const * what, bool exact = false) {
    for (int i = 0; i < 3; ++i)
        FUZZ_CHECK(exact ? bitsOf(a[i]) == bitsOf(b[i]) : same(a[i], b[i]),
                   "%s: component %d is %a, expected %a", what, i, static_cast<double>(a[i]),
                   static_cast<double>(b[i]));
}
void sameBox(BoundingBox const & a, BoundingBox const & b, char const * what, bool exact = false) {
    sameVector(a.m_min, b.m_min, what, exact);
    sameVector(a.m_max, b.m_max, what, exact);
}
// Where the values are finite, `got` agrees with `want` to 1e-5 of `scale`, the sum of the
// magnitudes involved (and of what a parameter rounded below the normal floats can move): the
// float roundings of the results stay far below that, a wrong formula does not.
void agrees(double got, double want, double scale, char const * what) {
    if (std::isfinite(got) && std::isfinite(want) && std::isfinite(scale))
        FUZZ_CHECK(std::fabs(got - want) <= 1e-5 * scale + 1e-30, "%s: %a, expected %a", what, got,
                   want);
}
double w(float v) {
    return static_cast<double>(v);
}

// --- Distances and point queries ---------------------------------------------------------------

void distances(FuzzedDataProvider & in) {
    Vector3f const p = V(in);
    KDRLine const l = line(in), l2 = line(in);
    Vector3f f1 = sentinelVector(), f2 = sentinelVector(), foot = sentinelVector();
    float t1 = sentinel(), t2 = sentinel();
    (void)distancePointLine(p, l, f1);
    (void)distance2PointLine(p, l, f2);
    (void)distancePointLine(p, l, t1);
    (void)distance2PointLine(p, l, t2);
    written("distance(2)PointLine foot / param", f1, f2, t1, t2);

    KDRSegment const s(V(in), V(in));
    float const ds = distancePointSegment(p, s, foot);
    written("distancePointSegment foot", foot);
    double gap = 0.0, scale = static_cast<double>(ds);
    for (int i = 0; i < 3; ++i) {
        gap += (w(p[i]) - w(foot[i])) * (w(p[i]) - w(foot[i]));
        scale += std::fabs(w(p[i])) + std::fabs(w(foot[i]));
    }
    agrees(static_cast<double>(ds), std::sqrt(gap), scale, "distancePointSegment: |point - foot|");
    Vector3f aliased = p; // foot may be point
    float const dsAliased = distancePointSegment(aliased, s.m_start, s.m_end, aliased);
    FUZZ_CHECK(same(ds, dsAliased), "distancePointSegment with foot = point: result");
    sameVector(aliased, foot, "distancePointSegment with foot = point");

    t1 = t2 = sentinel();
    float const dll = distanceLineLine(l, l2, t1, t2);
    written("distanceLineLine params", t1, t2);
    FUZZ_CHECK(same(dll, distanceLineLine(l, l2)), "distanceLineLine: the two forms differ");
    t1 = t2 = sentinel();
    (void)distanceLineSegment(l, s, t1, t2);
    written("distanceLineSegment params", t1, t2);

    KDRArray<Vector3f> set;
    int const count = in.ConsumeIntegralInRange(0, 6);
    for (int i = 0; i < count; ++i)
        set.push_back(V(in));
    int index = -12345;
    float const dset = distancePointPointSet(p, set, index);
    FUZZ_CHECK(count == 0 ? index == -12345 && dset == 0.0f : index >= 0 && index < count,
               "distancePointPointSet: index %d of %d", index, count);

    (void)distancePointPlane(p, plane(in));
    float const tolerance = F(in);
    (void)pointOnLine(p, l, tolerance);
    (void)pointOnPlane(p, plane(in), tolerance);
    (void)pointOnSegment(p, s, tolerance);
    (void)areCoplanar(l, l2, tolerance);
    (void)distancePointPoint(p, V(in));
}

void projectionsAndDerived(FuzzedDataProvider & in) {
    Vector3f const p = V(in);
    KDRLine const l = line(in);
    Vector3f out = sentinelVector();
    float param = sentinel();
    FUZZ_CHECK(projectionOrtho(out, param, p, l) == e_geomProjected,
               "projectionOrtho on a line: not e_geomProjected");
    written("projectionOrtho(line) out / param", out, param);

    Plane const pl = plane(in);
    Vector3f const dir = V(in);
    for (int ortho = 0; ortho < 2; ++ortho) {
        out = sentinelVector();
        _e_geomInfo const c = ortho ? projectionOrtho(out, p, pl) : projection(out, p, pl, dir);
        result(c, {e_geomIntersection, e_geomParallel, e_geomContained}, c == e_geomIntersection,
               "projection(Ortho)", out);
    }

    float const radius = F(in);
    Vector3f s1 = sentinelVector(), s2 = sentinelVector(), s3 = sentinelVector();
    spherisePoint(s1, p, radius);
    spherisePoint(s2, p, radius, F(in));
    spherisePoint(s3, p, radius, V(in));
    written("spherisePoint", s1, s2, s3);

    Vector3f points[3] = {V(in), V(in), V(in)};
    bool const edges = in.ConsumeBool(), result = in.ConsumeBool();
    out = sentinelVector();
    normal3Pts(out, points[0], points[1], points[2], edges, result);
    written("normal3Pts", out);
    int const which = in.ConsumeIntegralInRange(0, 2);
    Vector3f copy[3] = {points[0], points[1], points[2]};
    normal3Pts(copy[which], copy[0], copy[1], copy[2], edges, result); // out may be a point
    sameVector(copy[which], out, "normal3Pts with out = a point");
    Vector3f viaIndexes = sentinelVector();
    normal3Pts(viaIndexes, points, 0, 1, 2, edges, result);
    sameVector(viaIndexes, out, "normal3Pts by indexes");

    float half = sentinel();
    (void)Cote(V(in), V(in), F(in), half);
    written("Cote halfAngle", half);
}

// --- 3D intersections ------------------------------------------------------------------------

void intersections(FuzzedDataProvider & in) {
    KDRLine const l = line(in), l2 = line(in);
    Plane const pl = plane(in);
    Vector3f out = sentinelVector();
    float t = sentinel();
    _e_geomInfo const lp = interLinePlane(out, t, l, pl);
    result(lp, {e_geomIntersection, e_geomParallel, e_geomContained}, lp == e_geomIntersection,
           "interLinePlane", out, t);
    if (lp == e_geomIntersection) { // the point lies at t along the line
        for (int i = 0; i < 3; ++i) {
            double const along = w(t) * w(l.m_dir[i]);
            agrees(w(out[i]), w(l.m_point[i]) + along,
                   std::fabs(w(l.m_point[i])) + std::fabs(along), "interLinePlane: out - t dir");
        }
    }
    PlaneProjector projector;
    projector.setPlane(pl);
    Vector3f projected = sentinelVector();
    FUZZ_CHECK(projector.project(projected, l) == (lp == e_geomIntersection),
               "PlaneProjector::project disagrees with interLinePlane");
    if (lp == e_geomIntersection)
        sameVector(projected, out, "PlaneProjector::project");
    else
        outputs(false, "PlaneProjector::project out", projected);

    float const value = F(in), tolerance = F(in);
    for (int axis = 0; axis < 3; ++axis) {
        t = sentinel();
        _e_geomInfo const c = axis == 0   ? interLinePlaneYZ(t, l, value, tolerance)
                              : axis == 1 ? interLinePlaneXZ(t, l, value, tolerance)
                                          : interLinePlaneXY(t, l, value, tolerance);
        result(c, {e_geomIntersection, e_geomParallel, e_geomContained}, c == e_geomIntersection,
               "interLinePlaneXY/XZ/YZ", t);
    }

    out = sentinelVector();
    float t1 = sentinel(), t2 = sentinel();
    _e_geomInfo const ll = interLineLine(out, t1, t2, l, l2);
    result(ll, {e_geomNoIntersection, e_geomIntersection, e_geomParallel}, ll != e_geomParallel,
           "interLineLine", out, t1, t2);

    out = sentinelVector();
    t = sentinel();
    _e_geomInfo const cl = interTwoCoplanarLines(out, t, l, l2);
    result(cl, {e_geomIntersection, e_geomParallel}, cl != e_geomParallel, "interTwoCoplanarLines",
           out, t);

    KDRSegment const s(V(in), V(in)), s2(V(in), V(in));
    out = sentinelVector();
    t = sentinel();
    _e_geomInfo const sp = interSegmentPlane(out, t, s, pl, F(in));
    result(sp, {e_geomNoIntersection, e_geomIntersection, e_geomParallel, e_geomContained}, false,
           "interSegmentPlane");
    // Exactly zero length: every difference 0 (infinite equal ends give NaN, not 0).
    Vector3f const span(s.m_start, s.m_end);
    if (span.x() == 0.0f && span.y() == 0.0f && span.z() == 0.0f) {
        FUZZ_CHECK(sp == e_geomNoIntersection, "interSegmentPlane, zero length: code %d", sp);
        outputs(false, "interSegmentPlane out / t, zero length", out, t);
    } else {
        written("interSegmentPlane t", t); // scaled in every case
        outputs(sp == e_geomIntersection || sp == e_geomNoIntersection, "interSegmentPlane out",
                out);
    }

    out = sentinelVector();
    t = sentinel();
    _e_geomInfo const ss = interSegmentSegment(out, t, s, s2);
    result(ss, {e_geomNoIntersection, e_geomIntersection, e_geomParallel}, ss != e_geomParallel,
           "interSegmentSegment", out, t);

    out = sentinelVector();
    float u = sentinel(), v = sentinel();
    bool inside = in.ConsumeBool();
    Vector3f const p0 = V(in), p1 = V(in), p2 = V(in);
    _e_geomInfo const lt = interLineTriangle(out, u, v, inside, l, p0, p1, p2);
    result(lt, {e_geomNoIntersection, e_geomIntersection}, lt == e_geomIntersection,
           "interLineTriangle", out, u, v);
    // Documented as "false if u < 0, or v < 0, or u + v > 1": a NaN hit is inside; a zero
    // determinant is not.
    FUZZ_CHECK(!inside || (lt == e_geomIntersection && !(u < 0.0f || v < 0.0f)),
               "interLineTriangle: inside with code %d, u %a, v %a", lt, static_cast<double>(u),
               static_cast<double>(v));

    KDRLine cut;
    cut.m_point = cut.m_dir = sentinelVector();
    _e_geomInfo const pp = interPlanePlane(cut, pl, plane(in));
    result(pp, {e_geomIntersection, e_geomParallel, e_geomCoincident}, pp == e_geomIntersection,
           "interPlanePlane", cut.m_point, cut.m_dir);

    Plane pls[6];
    for (Plane & p : pls)
        p = plane(in);
    Vector3f o1 = sentinelVector(), o2 = sentinelVector();
    t1 = t2 = sentinel();
    interLineViewingVolume(o1, o2, t1, t2, l, pls[0], pls[1], pls[2], pls[3], pls[4], pls[5]);
    written("interLineViewingVolume", o1, o2, t1, t2);
}

// --- 2D ----------------------------------------------------------------------------------------

void twoD(FuzzedDataProvider & in) {
    float o1[2], d1[2], o2[2], d2[2];
    for (float * f : {o1, d1, o2, d2})
        fill(in, f, 2);
    for (int form = 0; form < 2; ++form) {
        float out[2] = {sentinel(), sentinel()};
        float t1 = sentinel(), t2 = sentinel();
        _e_geomInfo const c = form == 0 ? inter2dLineLine(out, t1, t2, o1, d1, o2, d2)
                                        : inter2dSegmentSegment(out, t1, t2, o1, d1, o2, d2);
        result(c,
               {form == 0 ? e_geomIntersection : e_geomNoIntersection, e_geomIntersection,
                e_geomParallel},
               c != e_geomParallel, "inter2dLineLine / inter2dSegmentSegment", out[0], out[1], t1,
               t2);
        for (int k = 0; c != e_geomParallel && k < 2; ++k) { // out = o1 + t1 d1 = o2 + t2 d2
            double const a1 = w(t1) * w(d1[k]), a2 = w(t2) * w(d2[k]);
            double const scale = std::fabs(w(o1[k])) + std::fabs(w(o2[k])) + std::fabs(a1) +
                                 std::fabs(a2) + std::fabs(w(out[k])) +
                                 1e-39 * (std::fabs(w(d1[k])) + std::fabs(w(d2[k])));
            agrees(w(out[k]), w(o1[k]) + a1, scale, "inter2dLineLine: out on line 1");
            agrees(w(out[k]), w(o2[k]) + a2, scale, "inter2dLineLine: out on line 2");
        }
    }
    result(inter2dSegmentSegment(o1, d1, o2, d2), {e_geomNoIntersection, e_geomIntersection}, false,
           "inter2dSegmentSegment(p1, p2, q1, q2)");

    // Segment a b against axis-parallel lines and segments.
    float const * a = o1;
    float const * b = o2;
    float const at = F(in), lo = F(in), hi = F(in);
    for (int vertical = 0; vertical < 2; ++vertical) {
        int const k = vertical ? 0 : 1; // the axis the line is fixed in
        float r = sentinel(), rs = sentinel();
        _e_geomInfo const line = vertical ? inter2dSegmentVerticalLine(a, b, at, r)
                                          : inter2dSegmentHorizontalLine(a, b, at, r);
        result(line, {e_geomNoIntersection, e_geomIntersection, e_geomCoincident},
               line == e_geomIntersection, "inter2dSegmentVertical/HorizontalLine", r);
        if (std::isfinite(a[k]) && a[k] == b[k] && line != e_geomCoincident)
            FUZZ_CHECK(a[k] != at, "segment on the line: code %d, not e_geomCoincident", line);

        _e_geomInfo const seg = vertical ? inter2dSegmentVerticalSegment(a, b, at, lo, hi, rs)
                                         : inter2dSegmentHorizontalSegment(a, b, at, lo, hi, rs);
        // The segment form is the line form plus a range test after the coordinate is written.
        result(seg, {e_geomNoIntersection, e_geomIntersection, e_geomCoincident},
               line == e_geomIntersection, "inter2dSegmentVertical/HorizontalSegment", rs);
        FUZZ_CHECK(line == e_geomIntersection ? same(rs, r) && seg != e_geomCoincident
                                              : seg == line,
                   "inter2dSegment*Segment: code %d, the line form gave %d", seg, line);
    }

    BoundingBox bb = box(in);
    bool aInside = false, bInside = false;
    _e_geomInfo const sb = inter2dSegmentBBox(a, b, bb, aInside, bInside);
    result(sb, {e_geomNoIntersection, e_geomIntersection}, false, "inter2dSegmentBBox");
    auto within = [&bb](float const * p) {
        return bb.m_min.x() <= p[0] && p[0] <= bb.m_max.x() && bb.m_min.y() <= p[1] &&
               p[1] <= bb.m_max.y();
    };
    bool nan = false;
    for (float f : {a[0], a[1], b[0], b[1], bb.m_min.x(), bb.m_min.y(), bb.m_max.x(), bb.m_max.y()})
        nan = nan || f != f;
    FUZZ_CHECK(nan || (aInside == within(a) && bInside == within(b)),
               "inter2dSegmentBBox: inside flags");
    FUZZ_CHECK(aInside == bInside || sb == e_geomIntersection,
               "inter2dSegmentBBox: one end inside, one outside, and no intersection");

    float t = sentinel();
    Vector2f nearest(sentinel(), sentinel());
    float p[2];
    fill(in, p, 2);
    (void)distance2PointSegment2D(t, nearest, a, b, p);
    written("distance2PointSegment2D", t, nearest.x(), nearest.y());
    float aCopy[2] = {a[0], a[1]};
    t = sentinel();
    (void)distance2PointSegment2D(t, nearest, a, aCopy, p);
    if (std::isfinite(a[0]) && std::isfinite(a[1]))
        FUZZ_CHECK(t == 0.0f && bitsOf(nearest.x()) == bitsOf(a[0]) &&
                       bitsOf(nearest.y()) == bitsOf(a[1]),
                   "distance2PointSegment2D with a == b: t %a", static_cast<double>(t));

    // The four forms of pointIn2DPolygon on the same vertices agree; z is never read. The index
    // forms read reversed copies through indexes restoring the order.
    int const n = in.ConsumeIntegralInRange(0, 8);
    auto const un = static_cast<std::size_t>(n);
    std::vector<Vector3f> v3, v3z, r3(un);
    std::vector<Vector2f> v2, r2(un);
    std::vector<int> order(un);
    for (std::size_t i = 0; i < un; ++i) {
        float const x = F(in), y = F(in);
        v3.emplace_back(x, y, F(in));
        v3z.emplace_back(x, y, sentinel());
        v2.emplace_back(x, y);
        order[i] = static_cast<int>(un - 1 - i);
        r3[un - 1 - i] = v3[i];
        r2[un - 1 - i] = v2[i];
    }
    bool const in3 = pointIn2DPolygon(p, v3.data(), v3.data() + n);
    FUZZ_CHECK(n >= 2 || !in3, "pointIn2DPolygon with %d vertices gave true", n);
    FUZZ_CHECK(pointIn2DPolygon(p, v3z.data(), v3z.data() + n) == in3 &&
                   pointIn2DPolygon(p, v2.data(), v2.data() + n) == in3 &&
                   pointIn2DPolygon(p, r3.data(), order.data(), order.data() + n) == in3 &&
                   pointIn2DPolygon(p, r2.data(), order.data(), order.data() + n) == in3,
               "pointIn2DPolygon: the forms differ");
    FUZZ_CHECK(!pointInTriangle(V(in), V(in), V(in), V(in)), "pointInTriangle gave true");
}

// --- Boxes and cameras -------------------------------------------------------------------------

void boxes(FuzzedDataProvider & in) {
    KDRLine const l = line(in);
    BoundingBox const bb = box(in);
    float tMin = sentinel(), tMax = sentinel(), tMin2 = sentinel(), tMax2 = sentinel();
    interLineBoundingBox(tMin, tMax, l, bb);
    written("interLineBoundingBox range", tMin, tMax);
    FUZZ_CHECK(!(tMax < tMin), "interLineBoundingBox: an empty range was not reset to 0");
    int fx = 99, fy = 99, fz = 99;
    bool const hit = interLineBoundingBox(tMin2, tMax2, fx, fy, fz, l, bb);
    FUZZ_CHECK(same(tMin2, tMin) && same(tMax2, tMax),
               "interLineBoundingBox: the two forms give different ranges");
    FUZZ_CHECK(fx >= -1 && fx <= 1 && fy >= -1 && fy <= 1 && fz >= -1 && fz <= 1 &&
                   (fx != 0) + (fy != 0) + (fz != 0) <= 1,
               "interLineBoundingBox: faces %d %d %d", fx, fy, fz);
    FUZZ_CHECK(!hit || tMin2 != tMax2, "interLineBoundingBox: true for an empty range");

    MatAff4f m;
    fill(in, m.getValue(), 16);
    BoundingBox out;
    out.m_min = out.m_max = sentinelVector();
    BoundingBoxAlgo::transformBBox(out, bb, m);
    written("transformBBox", out.m_min, out.m_max);
    BoundingBox self = bb; // out may be box
    BoundingBoxAlgo::transformBBox(self, self, m);
    sameBox(self, out, "transformBBox with out = box");

    Matrix4f proj;
    fill(in, proj.getValue(), 16);
    float const depth = F(in);
    BoundingBox acc = box(in);
    BoundingBox const accBefore = acc;
    int const code = BoundingBoxAlgo::cameraProjBBox(acc, bb, proj, depth);
    // 1 front, 2 behind, 3 both; 0 when no projected corner gives an initialised box (NaN x).
    result(code, {0, 1, 2, 3}, false, "cameraProjBBox(BoundingBox)");
    if (code == 2 && !accBefore.isInitialized())
        sameBox(acc, accBefore, "cameraProjBBox, all behind: uninitialised out", true);
    BoundingBox selfAcc = bb, plain = bb; // out may be box
    int const selfCode = BoundingBoxAlgo::cameraProjBBox(selfAcc, selfAcc, proj, depth);
    int const plainCode = BoundingBoxAlgo::cameraProjBBox(plain, bb, proj, depth);
    FUZZ_CHECK(selfCode == plainCode, "cameraProjBBox with out = box: code differs");
    sameBox(selfAcc, plain, "cameraProjBBox with out = box");

    BoundingBox2D screen;
    screen.m_min = screen.m_max = Vector2f(sentinel(), sentinel());
    int const code2 = BoundingBoxAlgo::cameraProjBBox(screen, bb, proj, depth);
    FUZZ_CHECK(code2 == plainCode, "cameraProjBBox: the 2D form's code %d differs from %d", code2,
               plainCode);
    written("cameraProjBBox(BoundingBox2D) out", screen.m_min.x(), screen.m_min.y(),
            screen.m_max.x(), screen.m_max.y());
    FUZZ_CHECK(code2 != 2 || (screen.m_min.x() == 1.0f && screen.m_min.y() == 0.0f &&
                              screen.m_max.x() == 0.0f && screen.m_max.y() == 0.0f),
               "cameraProjBBox(BoundingBox2D), all behind: not (1, 0) - (0, 0)");

    BoundingBox2D rect;
    for (float * f : {&rect.m_min.x(), &rect.m_min.y(), &rect.m_max.x(), &rect.m_max.y()})
        fill(in, f, 1);
    bool spare = true, inside = in.ConsumeBool();
    bool const meets = BoundingBoxAlgo::BBox3DIntersectBBox2D(bb, rect, proj, depth, spare, inside);
    FUZZ_CHECK(!spare, "BBox3DIntersectBBox2D: spare set");
    FUZZ_CHECK(!inside || meets, "BBox3DIntersectBBox2D: boxInsideRect without a hit");
    FUZZ_CHECK(code2 != 2 || (!meets && !inside), "BBox3DIntersectBBox2D: all behind, yet a hit");
    Vector3f const q0 = V(in), q1 = V(in), q2 = V(in), q3 = V(in);
    spare = true;
    (void)BoundingBoxAlgo::QuadIntersectBBox2D(q0, q1, q2, q3, rect, proj, depth, spare);
    FUZZ_CHECK(!spare, "QuadIntersectBBox2D: spare set");

    MatAff4f place;
    fill(in, place.getValue(), 16);
    Vector3f const p = V(in);
    FUZZ_CHECK(!(BoundingBoxAlgo::BBox3DDistance2(bb, place, p) < 0.0f) &&
                   !(BoundingBoxAlgo::QuadDistance2(q0, q1, q2, q3, place, p) < 0.0f),
               "BBox3DDistance2 / QuadDistance2 negative");

    Vector3f projected = sentinelVector();
    cameraProjPoint(projected, p, proj, depth);
    written("cameraProjPoint", projected);
    Vector3f selfPoint = p; // out may be p
    cameraProjPoint(selfPoint, selfPoint, proj, depth);
    sameVector(selfPoint, projected, "cameraProjPoint with out = p");
    Vector2f flat(sentinel(), sentinel());
    cameraProjPoint(flat, p, proj, depth);
    FUZZ_CHECK(same(flat.x(), projected.x()) && same(flat.y(), projected.y()),
               "cameraProjPoint: the Vector2f form differs");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    static void (*const parts[])(FuzzedDataProvider &) = {distances, projectionsAndDerived,
                                                          intersections, twoD, boxes};
    FuzzedDataProvider in(data, size);
    for (int k = 0; k < 4 && (k == 0 || in.remaining_bytes() > 0); ++k)
        parts[in.ConsumeIntegralInRange(0, 4)](in);
    return 0;
}
