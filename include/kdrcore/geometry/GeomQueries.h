// kdrcore/geometry/GeomQueries.h - distances, point tests, projections and 3D intersections
#ifndef KDRCORE_GEOMETRY_GEOMQUERIES_H
#define KDRCORE_GEOMETRY_GEOMQUERIES_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/containers/KDRArray.h"
#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/types/Vector.h"

// Conventions of these functions: arithmetic runs at double width and each out-parameter is
// rounded to float when stored. A line's parameter counts along m_dir (a length for a unit
// direction); lines are trusted to have unit directions unless a comment says otherwise. Out-
// parameters are written only where a comment says so. Cross products go through the current
// kernel unless a comment says they are written out in place. TOLERANCE is the shared 0.0001.

/// @{ @name Distances
/// A name with `2` gives a squared distance.
KDRCORE_API float distancePointPoint(Vector3f const & a, Vector3f const & b);

/// Distance from `point` to `line`; `foot` is the nearest point of the line. A zero direction
/// gives foot = m_point.
KDRCORE_API float distancePointLine(Vector3f const & point, KDRLine const & line, Vector3f & foot);
/// Squared distance to `line`, `foot` the nearest point. The one form that scales m_dir to unit
/// length first (when it is not zero), so it is right for any direction.
KDRCORE_API float distance2PointLine(Vector3f const & point, KDRLine const & line, Vector3f & foot);
/// Distance to `line`; `param` is the parameter of the nearest point.
KDRCORE_API float distancePointLine(Vector3f const & point, KDRLine const & line, float & param);
/// Squared distance to `line`; `param` is the parameter of the nearest point.
KDRCORE_API float distance2PointLine(Vector3f const & point, KDRLine const & line, float & param);

/// |n . point + d| / |n|: never negative, right for a normal of any nonzero length.
KDRCORE_API float distancePointPlane(Vector3f const & point, Plane const & plane);

/// Distance from `point` to the segment a b; `foot` is always written. With s = b - a, foot is
/// `a` when (point - a) . s < TOLERANCE and else `b` when (b - point) . s < TOLERANCE: absolute
/// bounds on dot products, so on a segment shorter than 0.01 foot is `a` for most points.
/// `foot` may be `point`.
KDRCORE_API float distancePointSegment(Vector3f const & point, Vector3f const & a,
                                       Vector3f const & b, Vector3f & foot);
/// distancePointSegment with a = m_start, b = m_end.
KDRCORE_API float distancePointSegment(Vector3f const & point, KDRSegment const & segment,
                                       Vector3f & foot);

/// Distance between two lines. Lines whose directions' cross product is not longer than
/// TOLERANCE count as parallel: the result is then |l1.m_dir x (l2.m_point - l1.m_point)|.
KDRCORE_API float distanceLineLine(KDRLine const & l1, KDRLine const & l2);
/// distanceLineLine, also writing the parameters of the nearest points, `param1` on `l1` and
/// `param2` on `l2`. Parallel lines give param2 = 0 and param1 = the projection of l2.m_point.
KDRCORE_API float distanceLineLine(KDRLine const & l1, KDRLine const & l2, float & param1,
                                   float & param2);
/// Distance between `line` and `segment`. `lineParam` is the nearest point's parameter on the
/// line, `segmentParam` the fraction of the segment (0 at m_start, 1 at m_end), clamped to
/// [0, 1]. Both are always written; for a zero-length segment segmentParam is NaN (0 / 0).
KDRCORE_API float distanceLineSegment(KDRLine const & line, KDRSegment const & segment,
                                      float & lineParam, float & segmentParam);

/// Distance to the nearest element of `set`, whose position goes to `index` (the first of
/// equally near ones). An empty set gives 0 and leaves `index` alone.
KDRCORE_API float distancePointPointSet(Vector3f const & point, KDRArray<Vector3f> const & set,
                                        int & index);
/// @}

/// @{ @name Point tests
/// True when the squared distance to the line, |(m_point - point) x m_dir|^2, is <= `tolerance`.
KDRCORE_API bool pointOnLine(Vector3f const & point, KDRLine const & line, float tolerance);
/// True when |n . point + d| <= `tolerance` (the plane's value at the point, not divided by |n|).
KDRCORE_API bool pointOnPlane(Vector3f const & point, Plane const & plane, float tolerance);
/// With s = m_end - m_start and dot = (point - m_start) . s: false when dot < -tolerance or
/// dot > s . s (the lower bound is widened, the upper is not); otherwise true when the squared
/// distance from the carrier line is <= `tolerance`, as pointOnLine measures it. A zero-length
/// segment: true when the squared distance to m_start is <= `tolerance`.
KDRCORE_API bool pointOnSegment(Vector3f const & point, KDRSegment const & segment,
                                float tolerance);
/// With w = l1.m_point - l2.m_point: whether each component of (w x l2.m_dir) x (w x l1.m_dir)
/// is within `tolerance`. Parallel lines, and lines through one common m_point, are coplanar.
KDRCORE_API bool areCoplanar(KDRLine const & l1, KDRLine const & l2, float tolerance);
/// @}

/// @{ @name Projections
/// Orthogonal projection on `line`: `param` = (point - m_point) . m_dir, `out` its point.
/// Always e_geomProjected.
KDRCORE_API _e_geomInfo projectionOrtho(Vector3f & out, float & param, Vector3f const & point,
                                        KDRLine const & line);
/// Projects `point` on `plane` along `dir` (any length; setDir normalises it) by interLinePlane
/// and returns its code; `out` is written only on e_geomIntersection. A `dir` no longer than
/// TOLERANCE stays zero: e_geomContained or e_geomParallel by whether `point` is on the plane.
KDRCORE_API _e_geomInfo projection(Vector3f & out, Vector3f const & point, Plane const & plane,
                                   Vector3f const & dir);
/// projection along the plane's own normal: the foot of the perpendicular.
KDRCORE_API _e_geomInfo projectionOrtho(Vector3f & out, Vector3f const & point,
                                        Plane const & plane);
/// @}

/// @{ @name Small derived quantities
/// out = in * radius / |in|. No guard: a zero `in` gives NaN components.
KDRCORE_API void spherisePoint(Vector3f & out, Vector3f const & in, float radius);
/// out = in * radius / S^(1/e), S = x^e + y^e + z^e with the signed components (x^e and the
/// partial sum with y^e rounded to float). Powers are std::pow's at double width.
KDRCORE_API void spherisePoint(Vector3f & out, Vector3f const & in, float radius, float exponent);
/// out = in * radius / S, S = |z|^e.z + |y|^e.y + |x|^e.x summed in double; no root is taken.
KDRCORE_API void spherisePoint(Vector3f & out, Vector3f const & in, float radius,
                               Vector3f const & exponents);

/// out = (b - a) + (c - b): the sum of the two consecutive edges, not a cross product. With
/// `normalizeEdges` each nonzero edge is scaled to unit length first; with `normalizeResult` a
/// nonzero `out` is scaled to unit length. `out` may be one of the points.
KDRCORE_API void normal3Pts(Vector3f & out, Vector3f const & a, Vector3f const & b,
                            Vector3f const & c, bool normalizeEdges, bool normalizeResult);
/// normal3Pts on points[i], points[j], points[k].
KDRCORE_API void normal3Pts(Vector3f & out, Vector3f const * points, int i, int j, int k,
                            bool normalizeEdges, bool normalizeResult);

/// `offset / tan(h)` with h half the angle between `a` and `b` (radians, written to `halfAngle`
/// always). 0 when |h - pi/2| <= 0.01f (opposite directions) or |tan(h)| <= 0.01f (nearly equal).
KDRCORE_API float Cote(Vector3f const & a, Vector3f const & b, float offset, float & halfAngle);
/// @}

/// @{ @name 3D intersections
/// Line and plane. Parallel means |m_dir . n| <= TOLERANCE: then e_geomContained when
/// |m_point . n + d| <= TOLERANCE, else e_geomParallel, and `out`, `t` are not written.
/// Otherwise `t` is the hit's parameter, `out` the point, and the result e_geomIntersection.
KDRCORE_API _e_geomInfo interLinePlane(Vector3f & out, float & t, KDRLine const & line,
                                       Plane const & plane);
/// Line and the plane x = `value`. A hit when |m_dir.x| > `tolerance`: `t` = its parameter.
/// Else e_geomContained when |m_point.x - value| <= `tolerance`, e_geomParallel otherwise, and
/// `t` is not written.
KDRCORE_API _e_geomInfo interLinePlaneYZ(float & t, KDRLine const & line, float value,
                                         float tolerance);
/// interLinePlaneYZ for the plane y = `value`.
KDRCORE_API _e_geomInfo interLinePlaneXZ(float & t, KDRLine const & line, float value,
                                         float tolerance);
/// interLinePlaneYZ for the plane z = `value`.
KDRCORE_API _e_geomInfo interLinePlaneXY(float & t, KDRLine const & line, float value,
                                         float tolerance);

/// Two lines. The cross product c of the directions is written out in place; every |component|
/// <= TOLERANCE means e_geomParallel (also for coincident lines), with nothing written. Else the
/// lines are solved in the plane across c's largest component: `t1`, `t2` (parameters on l1,
/// l2) and `out` (on l1) are always written, and the result is e_geomIntersection when the two
/// points agree within TOLERANCE per component, e_geomNoIntersection otherwise. For skew lines
/// they describe the crossing seen along that axis, not the nearest points.
KDRCORE_API _e_geomInfo interLineLine(Vector3f & out, float & t1, float & t2, KDRLine const & l1,
                                      KDRLine const & l2);
/// Two lines the caller knows to be coplanar, solved in x and y only. e_geomParallel, nothing
/// written, when their x-y determinant is within TOLERANCE; else `t` on l1 and `out` are written.
KDRCORE_API _e_geomInfo interTwoCoplanarLines(Vector3f & out, float & t, KDRLine const & l1,
                                              KDRLine const & l2);

/// Segment and plane; `t` is a fraction of the segment, 0 at m_start, 1 at m_end. A zero-length
/// segment gives e_geomNoIntersection with nothing written. Otherwise the carrier line goes to
/// interLinePlane (which writes `out` and the hit's length parameter only on a hit) and `t` is
/// then multiplied by 1/len in every case, also when the code is e_geomParallel or
/// e_geomContained, which are returned as they are. A hit with t <= -tolerance or
/// t > 1 + tolerance gives e_geomNoIntersection, `out` and `t` keeping the hit on the carrier; a
/// hit within `tolerance` beyond an end is snapped to it (t = 0, out = m_start or t = 1,
/// out = m_end). So at tolerance 0 the lower end is excluded and the upper one included.
KDRCORE_API _e_geomInfo interSegmentPlane(Vector3f & out, float & t, KDRSegment const & segment,
                                          Plane const & plane, float tolerance);
/// Two segments, through interLineLine of their carriers (so `out` and `t` are written as it
/// writes them; a zero-length segment gives e_geomParallel). `t` is a length along s1 from its
/// m_start. e_geomNoIntersection when either parameter lies more than TOLERANCE outside its
/// segment; nothing is snapped.
KDRCORE_API _e_geomInfo interSegmentSegment(Vector3f & out, float & t, KDRSegment const & s1,
                                            KDRSegment const & s2);
/// A line and the triangle's plane, with no tolerance. A zero determinant (line parallel to the
/// plane, degenerate triangle, zero direction): e_geomNoIntersection, inside = false, `out`,
/// `u`, `v` not written. Else e_geomIntersection with out = p0 + (p1 - p0) u + (p2 - p0) v, and
/// `inside` false when u < 0, v < 0 or u + v > 1, else true (edges and corners included;
/// NaN u and v therefore give true).
KDRCORE_API _e_geomInfo interLineTriangle(Vector3f & out, float & u, float & v, bool & inside,
                                          KDRLine const & line, Vector3f const & p0,
                                          Vector3f const & p1, Vector3f const & p2);
/// Two planes. With c = na x nb (kernel): when c . c <= TOLERANCE they count as parallel and
/// the result is e_geomParallel if |da - db| > TOLERANCE, else e_geomCoincident, `out` not
/// written. The constants are compared as they stand, whatever the normals' signs. Otherwise
/// e_geomIntersection; out.m_dir = c is stored as it is, not normalised (its length is the sine
/// of the angle between unit normals).
KDRCORE_API _e_geomInfo interPlanePlane(KDRLine & out, Plane const & plane1, Plane const & plane2);
/// Clips `line` by three slabs (plane1, plane2), (plane3, plane4), (plane5, plane6): [tMin, tMax]
/// is the intersection of the parameter ranges between each pair, out1 and out2 their points.
/// A pair the line runs parallel to sets no limit (FLOAT_LOWEST, FLOAT_MAX). All four outputs
/// are always written; a line that misses the volume gives tMin > tMax.
KDRCORE_API void interLineViewingVolume(Vector3f & out1, Vector3f & out2, float & tMin,
                                        float & tMax, KDRLine const & line, Plane const & plane1,
                                        Plane const & plane2, Plane const & plane3,
                                        Plane const & plane4, Plane const & plane5,
                                        Plane const & plane6);
/// @}

/// Projects lines on one plane, kept by value. A new object holds Plane() (z = 0). Hosts may
/// derive and replace project.
class KDRCORE_API PlaneProjector {
public:
    PlaneProjector();
    virtual ~PlaneProjector();

    /// Copies `plane`.
    void setPlane(Plane const & plane);
    Plane const & getPlane() const { return m_plane; }

    /// True exactly when interLinePlane finds a hit, written to `out`; `out` is unchanged
    /// otherwise (a parallel or contained line).
    virtual bool project(Vector3f & out, KDRLine const & line);

protected:
    Plane m_plane;
};

#endif // KDRCORE_GEOMETRY_GEOMQUERIES_H
