// kdrcore/geometry/Geom2D.h - intersections, distances and point-in-polygon in the plane
#ifndef KDRCORE_GEOMETRY_GEOM2D_H
#define KDRCORE_GEOMETRY_GEOM2D_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/geometry/BoundingBox.h"
#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/types/Vector.h"

/// A 2D point or vector is two consecutive floats x, y: pass a Vector2f, or the first two
/// components of a Vector3f, through its float pointer. All tests are exact comparisons, except the
/// parallel test of inter2dLineLine, which uses TOLERANCE.

/// Lines `o1 + t1 d1` and `o2 + t2 d2`. When |d1 x d2| <= TOLERANCE returns e_geomParallel and
/// writes nothing; otherwise writes the parameters and the point `out` (two floats) and returns
/// e_geomIntersection.
KDRCORE_API _e_geomInfo inter2dLineLine(float * out, float & t1, float & t2, float const * o1,
                                        float const * d1, float const * o2, float const * d2);
/// Segments from `o1` to `o1 + d1` and from `o2` to `o2 + d2`. As inter2dLineLine, but a hit with a
/// parameter outside [0, 1] gives e_geomNoIntersection; `out`, `t1`, `t2` are written all the same.
KDRCORE_API _e_geomInfo inter2dSegmentSegment(float * out, float & t1, float & t2, float const * o1,
                                              float const * d1, float const * o2, float const * d2);
/// Segments `p1 p2` and `q1 q2` by a test of sides, without division: e_geomIntersection when they
/// cross or touch, e_geomNoIntersection otherwise. Collinear segments always give
/// e_geomIntersection, overlapping or not.
KDRCORE_API _e_geomInfo inter2dSegmentSegment(float const * p1, float const * p2, float const * q1,
                                              float const * q2);

/// Segment `a b` and the vertical line at `x`. A vertical segment gives e_geomCoincident when it
/// lies on the line and e_geomNoIntersection otherwise; `y` is written only for e_geomIntersection.
KDRCORE_API _e_geomInfo inter2dSegmentVerticalLine(float const * a, float const * b, float x,
                                                   float & y);
/// Segment `a b` and the horizontal line at `y`, as inter2dSegmentVerticalLine with the axes
/// exchanged.
KDRCORE_API _e_geomInfo inter2dSegmentHorizontalLine(float const * a, float const * b, float y,
                                                     float & x);
/// As inter2dSegmentVerticalLine, limited to `yMin <= y <= yMax`: a hit outside the range gives
/// e_geomNoIntersection with `y` written. A vertical segment on the line gives e_geomCoincident
/// whatever the range.
KDRCORE_API _e_geomInfo inter2dSegmentVerticalSegment(float const * a, float const * b, float x,
                                                      float yMin, float yMax, float & y);
/// As inter2dSegmentHorizontalLine, limited to `xMin <= x <= xMax`, like the vertical form.
KDRCORE_API _e_geomInfo inter2dSegmentHorizontalSegment(float const * a, float const * b, float y,
                                                        float xMin, float xMax, float & x);
/// Segment `a b` against the x-y rectangle of `box`. Always stores whether each end lies within
/// the rectangle (edges included). e_geomIntersection means the segment crosses or touches the
/// outline: a segment with both ends inside gives e_geomNoIntersection unless it touches a side,
/// and one lying along a side does not count as touching it.
KDRCORE_API _e_geomInfo inter2dSegmentBBox(float const * a, float const * b,
                                           BoundingBox const & box, bool & aInside, bool & bInside);

/// Squared distance from `p` to the segment `a b`. `t` is the fraction of the segment at the
/// nearest point (clamped to [0, 1]) and `nearest` that point. A segment with `a == b` gives
/// `t = 0`, `nearest = a`.
KDRCORE_API float distance2PointSegment2D(float & t, Vector2f & nearest, float const * a,
                                          float const * b, float const * p);

/// @{ @name Point in polygon
/// Even-odd rule on the vertical ray going up from `p`: the polygon is closed from the last
/// vertex back to the first, z is not read, and fewer than two vertices give false. A point on an
/// edge counts that edge as above it, so it is inside on an upper edge and outside on a lower one.
/// An edge is counted when one end lies right of the ray (x greater than `p[0]`) and the other
/// not: a vertex exactly at the ray's x counts as left, and a vertical edge there never counts.
/// Vertices `begin` up to, not including, `end`.
KDRCORE_API bool pointIn2DPolygon(float const * p, Vector3f const * begin, Vector3f const * end);
/// Vertices `vertices[*i]` for `i` from `begin` up to, not including, `end`.
KDRCORE_API bool pointIn2DPolygon(float const * p, Vector3f const * vertices, int const * begin,
                                  int const * end);
KDRCORE_API bool pointIn2DPolygon(float const * p, Vector2f const * begin, Vector2f const * end);
KDRCORE_API bool pointIn2DPolygon(float const * p, Vector2f const * vertices, int const * begin,
                                  int const * end);
/// @}

/// Not a real test: returns false for every input and reads none of its arguments.
KDRCORE_API bool pointInTriangle(Vector3f const &, Vector3f const &, Vector3f const &,
                                 Vector3f const &);

#endif // KDRCORE_GEOMETRY_GEOM2D_H
