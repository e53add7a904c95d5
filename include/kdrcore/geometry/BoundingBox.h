// kdrcore/geometry/BoundingBox.h - axis-aligned boxes, line clipping and camera projection of boxes
#ifndef KDRCORE_GEOMETRY_BOUNDINGBOX_H
#define KDRCORE_GEOMETRY_BOUNDINGBOX_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/geometry/Primitives.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Vector.h"

/// Axis-aligned 3D box from `m_min` to `m_max`, faces included. There is no state flag: the box is
/// uninitialised when `m_max.x < m_min.x`, and only the x components decide (a box inverted in y or
/// z alone counts as initialised). A new box is `m_min` = (1, 0, 0), `m_max` = (0, 0, 0). Boxes
/// filled through set/add keep `m_min <= m_max` in each axis.
class KDRCORE_API BoundingBox {
public:
    BoundingBox() : m_min(1.0f, 0.0f, 0.0f), m_max(0.0f, 0.0f, 0.0f) {}

    /// Makes the box uninitialised by writing `m_min.x = 1` and `m_max.x = 0` only; the other
    /// components keep their values and mean nothing.
    void clear() {
        m_min.x() = 1.0f;
        m_max.x() = 0.0f;
    }
    /// `m_max.x >= m_min.x`; false when either is NaN.
    bool isInitialized() const { return m_max.x() >= m_min.x(); }

    Vector3f const & getMin() const { return m_min; }
    Vector3f const & getMax() const { return m_max; }

    /// The box of the single point `p`, of zero size.
    void set(Vector3f const & p) {
        m_min = p;
        m_max = p;
    }
    /// Copies all six floats, also from an uninitialised box.
    void set(BoundingBox const & other) {
        m_min = other.m_min;
        m_max = other.m_max;
    }
    /// Grows an initialised box to hold `p`; an uninitialised box becomes the box of `p`.
    void add(Vector3f const & p) {
        if (isInitialized())
            addInitialized(p);
        else
            set(p);
    }
    /// Grows to hold `other`. An uninitialised `other` changes nothing; an uninitialised receiver
    /// becomes a copy of `other`.
    void add(BoundingBox const & other) {
        if (!other.isInitialized())
            return;
        if (isInitialized())
            addInitialized(other);
        else
            set(other);
    }
    /// Grows to hold `p`; per axis, `p` lowers `m_min` or else may raise `m_max`. The box must be
    /// initialised (not checked).
    void addInitialized(Vector3f const & p) {
        for (int i = 0; i < 3; ++i) {
            if (m_min[i] > p[i])
                m_min[i] = p[i];
            else if (m_max[i] < p[i])
                m_max[i] = p[i];
        }
    }
    /// Grows to hold `other`, per axis min of the lows and max of the highs. Both boxes must be
    /// initialised (not checked).
    void addInitialized(BoundingBox const & other) {
        for (int i = 0; i < 3; ++i) {
            if (other.m_min[i] < m_min[i])
                m_min[i] = other.m_min[i];
            if (other.m_max[i] > m_max[i])
                m_max[i] = other.m_max[i];
        }
    }
    /// `m_min <= p <= m_max` in all three axes, faces included. The state is not looked at: the
    /// inverted x range of an uninitialised box contains nothing.
    bool contains(Vector3f const & p) const {
        return m_min.x() <= p.x() && p.x() <= m_max.x() && m_min.y() <= p.y() &&
               p.y() <= m_max.y() && m_min.z() <= p.z() && p.z() <= m_max.z();
    }

    Vector3f m_min; ///< low corner
    Vector3f m_max; ///< high corner
};

/// Axis-aligned rectangle from `m_min` to `m_max`, edges included, typically in screen space.
/// Uninitialised when `m_max.x < m_min.x`, as for BoundingBox; new: `m_min` = (1, 0),
/// `m_max` = (0, 0).
class KDRCORE_API BoundingBox2D {
public:
    BoundingBox2D() : m_min(1.0f, 0.0f), m_max(0.0f, 0.0f) {}

    /// Writes `m_min.x = 1` and `m_max.x = 0` only.
    void clear() {
        m_min.x() = 1.0f;
        m_max.x() = 0.0f;
    }
    bool isInitialized() const { return m_max.x() >= m_min.x(); }

    Vector2f const & getMin() const { return m_min; }
    Vector2f const & getMax() const { return m_max; }

    /// Takes x and y of both corners of `box`, whatever its state; z is dropped.
    void set(BoundingBox const & box) {
        m_min = Vector2f(box.m_min.x(), box.m_min.y());
        m_max = Vector2f(box.m_max.x(), box.m_max.y());
    }
    /// x and y of `p` within the rectangle, edges included; z is not read. False for an
    /// uninitialised rectangle.
    bool contains(Vector3f const & p) const {
        return m_min.x() <= p.x() && p.x() <= m_max.x() && m_min.y() <= p.y() && p.y() <= m_max.y();
    }
    /// True when the two rectangles overlap or touch (a common edge or corner counts); false if
    /// either is uninitialised.
    bool intersect(BoundingBox2D const & other) const {
        if (!isInitialized() || !other.isInitialized())
            return false;
        return !(other.m_max.x() < m_min.x() || m_max.x() < other.m_min.x() ||
                 other.m_max.y() < m_min.y() || m_max.y() < other.m_min.y());
    }

    Vector2f m_min; ///< low corner
    Vector2f m_max; ///< high corner
};

/// Parameter range [`tMin`, `tMax`] of `line` inside `box`, by slabs: each axis whose two planes
/// the line crosses (|m_dir| component > BOX_TOLERANCE) limits the range; an axis the line runs
/// parallel to sets no limit, even when the line lies outside that slab. When the range is empty
/// (`tMax < tMin`) both are set to 0. The state of `box` is not looked at.
KDRCORE_API void interLineBoundingBox(float & tMin, float & tMax, KDRLine const & line,
                                      BoundingBox const & box);
/// As the other form, and also the entry face: all three ints are set to 0, then the int of the
/// plane whose parameter equals `tMin` becomes -1 (the `m_min` plane) or +1 (the `m_max` plane).
/// On ties x wins over y over z, and `m_min` over `m_max`. The ints are set even for a missed box.
/// Returns true when |tMax - tMin| >= BOX_TOLERANCE (false for a miss and a grazing touch).
KDRCORE_API bool interLineBoundingBox(float & tMin, float & tMax, int & faceX, int & faceY,
                                      int & faceZ, KDRLine const & line, BoundingBox const & box);

/// Box algorithms that need a matrix. Corners are visited in the order of a count with z as the
/// fastest digit, then y, then x, digit 0 being `m_min` and 1 `m_max`; each corner goes through the
/// current kernel on its own. No function allocates, and none looks at the state of the input box:
/// an uninitialised box is processed as the values it holds.
///
/// Camera functions: a corner is projected by the kernel's multMatrixVec3f (division by w). A
/// projected corner is behind the viewer when `depthLimit < z` (a depth equal to the limit is in
/// front); its x and y are then negated back. Corners behind contribute only their x-y extent, as
/// two points at depth FLOAT_EPSILON, and only when some corner lies in front or, for the
/// BoundingBox form of cameraProjBBox, when `out` was already initialised.
class KDRCORE_API BoundingBoxAlgo {
public:
    BoundingBoxAlgo() = delete;

    /// `out` = the box around the eight corners of `box` transformed by the kernel's
    /// multAffineMatrixVec3f; what `out` held is lost. `out` may be `box`.
    static void transformBBox(BoundingBox & out, BoundingBox const & box, MatAff4fBase const & m);

    /// Adds the screen extent of `box` through `proj` to `out`, which is not cleared first (an
    /// uninitialised `out` takes the extent). Returns 1 when all corners are in front, 2 when all
    /// are behind, 3 when both occur, and 0 when no corner could be placed (every projected x
    /// is NaN). With all corners behind an uninitialised `out` stays so.
    /// `out` may be `box`.
    static int cameraProjBBox(BoundingBox & out, BoundingBox const & box, Matrix4f const & proj,
                              float depthLimit);
    /// As the BoundingBox form, but `out` is ignored on entry and replaced in every case: with all
    /// corners behind (code 2) it becomes uninitialised, (1, 0) - (0, 0).
    static int cameraProjBBox(BoundingBox2D & out, BoundingBox const & box, Matrix4f const & proj,
                              float depthLimit);

    /// Whether `box` projected through `proj` meets the screen rectangle `rect`. A projected
    /// corner in front inside `rect` may end the test early; otherwise the bounding rectangle of
    /// the projected corners (with the corners behind folded in) is tested with
    /// BoundingBox2D::intersect. A rectangle wider than 0.05f takes the wide branch, which sets
    /// `boxInsideRect` when corner 1 is in front and every corner in front lies inside `rect`.
    /// False when all corners are behind. `spare` is always set to false.
    static bool BBox3DIntersectBBox2D(BoundingBox const & box, BoundingBox2D const & rect,
                                      Matrix4f const & proj, float depthLimit, bool & spare,
                                      bool & boxInsideRect);
    /// Whether the bounding rectangle of the four projected vertices meets `rect`; the quad's
    /// shape is not used. A vertex in front inside `rect` ends the test with true; false when all
    /// four are behind. `spare` is always set to false.
    static bool QuadIntersectBBox2D(Vector3f const & vertex0, Vector3f const & vertex1,
                                    Vector3f const & vertex2, Vector3f const & vertex3,
                                    BoundingBox2D const & rect, Matrix4f const & proj,
                                    float depthLimit, bool & spare);

    /// 0 when `p` lies in `box` placed by `m` (transformBBox), else the squared distance from `p`
    /// to the nearest corner of that box: each axis contributes its nearer face, also an axis
    /// in which `p` lies between the faces.
    static float BBox3DDistance2(BoundingBox const & box, MatAff4f const & m, Vector3f const & p);
    /// The smallest squared distance from `p` to the four vertices placed by the kernel's
    /// multAffineMatrixVec3f.
    static float QuadDistance2(Vector3f const & vertex0, Vector3f const & vertex1,
                               Vector3f const & vertex2, Vector3f const & vertex3,
                               MatAff4f const & m, Vector3f const & p);
};

/// Projects `p` by the kernel's multMatrixVec3f through `proj`; when the depth exceeds `depthLimit`
/// the point is behind the viewer and its x and y are negated back. The depth is kept. `out` may
/// be `p`.
KDRCORE_API void cameraProjPoint(Vector3f & out, Vector3f const & p, Matrix4f const & proj,
                                 float depthLimit);
/// As the Vector3f form, keeping x and y.
KDRCORE_API void cameraProjPoint(Vector2f & out, Vector3f const & p, Matrix4f const & proj,
                                 float depthLimit);

#endif // KDRCORE_GEOMETRY_BOUNDINGBOX_H
