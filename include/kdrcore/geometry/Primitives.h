// kdrcore/geometry/Primitives.h - result codes of geometric queries, lines, segments and planes
#ifndef KDRCORE_GEOMETRY_PRIMITIVES_H
#define KDRCORE_GEOMETRY_PRIMITIVES_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/types/Vector.h"

/// Result of a geometric query. The numeric values are part of the interface: callers compare
/// against the numbers. No operation of the library returns 0.
enum _e_geomInfo {
    e_geomNoIntersection = 1, ///< well posed, and the objects do not meet
    e_geomIntersection = 2,   ///< one intersection (a line for two planes), held by the outputs
    e_geomParallel = 3,       ///< parallel carriers, no single point (apart, for a plane)
    e_geomCoincident = 4,     ///< two carriers of one kind lie on each other
    e_geomContained = 5,      ///< the line lies in the plane
    e_geomProjected = 6       ///< an orthogonal projection on a line was made
};

/// An infinite line: the point at parameter t is m_point + t * m_dir. m_dir is a unit vector,
/// so parameters are lengths, except when a zero direction was given to the constructor (it then
/// stays zero) or a direction was stored into the field directly.
class KDRCORE_API KDRLine {
public:
    /// The z axis: m_point (0, 0, 0), m_dir (0, 0, 1).
    KDRLine() : m_point(), m_dir(0.0f, 0.0f, 1.0f) {}
    /// Through `point`, along `second` if `isDirection`, else towards the point `second`. The
    /// direction starts as zero and goes through setDir, so a too-short one leaves it zero.
    KDRLine(Vector3f const & point, Vector3f const & second, bool isDirection);

    /// Stores `dir` scaled to unit length. When |dir| <= TOLERANCE (compared unrounded) nothing
    /// changes: a too-short vector never replaces the stored one, and nothing reports it.
    void setDir(Vector3f const & dir);

    Vector3f m_point; ///< a point of the line, the origin of its parameter
    Vector3f m_dir;   ///< the direction, normally of unit length
};

/// A segment between two end points; any two points, equal ones included, make a valid segment.
/// Its direction is m_end - m_start.
class KDRCORE_API KDRSegment {
public:
    KDRSegment() = default;
    KDRSegment(Vector3f const & start, Vector3f const & end) : m_start(start), m_end(end) {}

    Vector3f m_start;
    Vector3f m_end;
};

/// The plane n . x + d = 0. The normal is of unit length by default and after setNormal, but
/// functions taking a Plane state where they also accept another length.
class KDRCORE_API Plane {
public:
    /// The plane z = 0: normal (0, 0, 1), d = 0.
    Plane() : m_normal(0.0f, 0.0f, 1.0f), m_d(0.0f) {}

    /// The rule of KDRLine::setDir on m_normal: a normal of length <= TOLERANCE keeps the old
    /// one. m_d does not change, so the plane turns about the point of it nearest the origin.
    void setNormal(Vector3f const & normal);
    /// setNormal(normal), then m_d = -(point . m_normal) with the normal as it now stands: a
    /// too-short `normal` keeps the old orientation, but the plane still passes through `point`.
    void setFromNormalPoint(Vector3f const & normal, Vector3f const & point);
    /// The plane of the points equidistant from `a` and `b`, normal pointing from `a` to `b`.
    /// For a == b the old normal stays and the plane goes through `a`.
    void setMediator(Vector3f const & a, Vector3f const & b);

    /// Writes the point of the plane nearest the origin; right for a normal of any nonzero length.
    void findPoint(Vector3f & out) const;
    /// Two lines in the plane through findPoint's point, with directions perpendicular to each
    /// other and to the normal. lineU's is e x n and lineV's n x (e x n), e being the coordinate
    /// axis along which the normal is smallest (ties go to x, then y). Uses the kernel's cross.
    void findUVAxis(KDRLine & lineU, KDRLine & lineV) const;

    Vector3f m_normal; ///< the normal n
    float m_d;         ///< the constant d = -(n . p) for a point p of the plane
};

#endif // KDRCORE_GEOMETRY_PRIMITIVES_H
