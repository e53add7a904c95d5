// Lines and planes: building and keeping a valid primitive.
#include "kdrcore/geometry/Primitives.h"

#include "geometry/GeomWide.h"

#include "kdrcore/types/Scalar.h"

#include <cmath>

using namespace kdrcore::detail;

namespace {
// The one rule of KDRLine::setDir and Plane::setNormal: `target` takes `v` scaled to unit length
// unless |v| <= TOLERANCE (then it keeps what it had). A NaN length fails the test and is stored.
void setUnit(Vector3f & target, Vector3f const & v) {
    V3d const w = wide(v);
    double const l = std::sqrt((w.x * w.x + w.y * w.y) + w.z * w.z);
    if (l <= TOLERANCE)
        return;
    double const s = 1.0 / l;
    target = narrow(w * s);
}

// The point of the plane nearest the origin: n * ((-1 / (n . n)) * d), unrounded until stored.
Vector3f nearestToOrigin(Plane const & plane) {
    V3d const n = wide(plane.m_normal);
    double const s = (-1.0 / dot(n, n)) * wide(plane.m_d);
    return narrow(n * s);
}
} // namespace

KDRLine::KDRLine(Vector3f const & point, Vector3f const & second, bool isDirection)
    : m_point(point), m_dir() {
    if (isDirection)
        setDir(second);
    else
        setDir(second - point);
}

void KDRLine::setDir(Vector3f const & dir) {
    setUnit(m_dir, dir);
}

void Plane::setNormal(Vector3f const & normal) {
    setUnit(m_normal, normal);
}

void Plane::setFromNormalPoint(Vector3f const & normal, Vector3f const & point) {
    setNormal(normal);
    m_d = narrow(-Vector3f::dotD(point, m_normal));
}

void Plane::setMediator(Vector3f const & a, Vector3f const & b) {
    Vector3f const mid = narrow((wide(a) + wide(b)) * 0.5);
    setNormal(b - a);
    m_d = narrow(-Vector3f::dotD(m_normal, mid));
}

void Plane::findPoint(Vector3f & out) const {
    out = nearestToOrigin(*this);
}

void Plane::findUVAxis(KDRLine & lineU, KDRLine & lineV) const {
    // The coordinate axis along which the normal is smallest; the comparisons settle ties as
    // x before y before z.
    double const ax = std::fabs(wide(m_normal.x()));
    double const ay = std::fabs(wide(m_normal.y()));
    double const az = std::fabs(wide(m_normal.z()));
    int axis;
    if (ay >= ax)
        axis = az < ax ? 2 : 0;
    else
        axis = az < ay ? 2 : 1;
    Vector3f const e = Vector3f::m_axis[axis];
    Vector3f const & n = m_normal;
    Vector3f const p = nearestToOrigin(*this);

    Vector3f const w = kernelCross(e, n);
    lineU.m_point = p;
    lineU.setDir(w);
    // Built from the unnormalised w: n x (e x n) lies in the plane of e and n.
    Vector3f const u = kernelCross(n, w);
    lineV.m_point = p;
    lineV.setDir(u);
}
