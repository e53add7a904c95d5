// Rotation and frame construction of MatRot4f and MatAff4f, and the static factories of MatAff4f.
#include "detail/CurrentKernel.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Quaternion.h"
#include "kdrcore/types/Scalar.h"

using kdrcore::detail::kernel;

namespace {
// The raw cross product of two directions counts as zero below this squared length. It is not
// scaled by the lengths of the directions.
constexpr double PARALLEL_CROSS2 = 1e-8;
} // namespace

// ---- MatRot4f ----

void MatRot4f::setValue(Vector3f const & axis, float angle, Vector3f const & origin) {
    float q[4];
    kernel()->axisToQuaternionU(q, axis.getValue(), angle);
    kernel()->quaternionToMatrix(m_mat, q);
    kernel()->copyVec3fTo(m_mat + 12, origin.getValue());
}

void MatRot4f::setValue(float e0, float e1, float e2, Vector3f const & origin) {
    float const euler[3] = {e0, e1, e2};
    kernel()->eulerToMatrix(m_mat, euler);
    kernel()->copyVec3fTo(m_mat + 12, origin.getValue());
}

void MatRot4f::setValue(Quaternion const & q, Vector3f const & origin) {
    kernel()->quaternionToMatrix(m_mat, q.getValue());
    kernel()->copyVec3fTo(m_mat + 12, origin.getValue());
}

void MatRot4f::setValue(Vector3f const & from, Vector3f const & to, Vector3f const & origin) {
    Vector3f c;
    kernel()->cross(c.getValue(), from.getValue(), to.getValue());
    double const a = from.angleD(to);
    if (!(Vector3f::dotD(c, c) < PARALLEL_CROSS2)) {
        setValue(c, static_cast<float>(a), origin);
    } else if (a <= HALF_PI_D) {
        // Parallel, the same way: no rotation.
        kernel()->setTranslate(m_mat, origin.getValue());
    } else {
        // Opposite: a half turn about some axis orthogonal to `from`.
        Vector3f w;
        from.findOrthogonalVector(w);
        setValue(w, PI_F, origin);
    }
}

void MatRot4f::setFromXYZ2Axis(Vector3f const & x, Vector3f const & y, Vector3f const & z,
                               Vector3f const & origin) {
    Mat4fBase::setValue(x.x(), x.y(), x.z(), 0.0f, y.x(), y.y(), y.z(), 0.0f, z.x(), z.y(), z.z(),
                        0.0f, origin.x(), origin.y(), origin.z(), 1.0f);
}

void MatRot4f::setFromAxis2XYZ(Vector3f const & x, Vector3f const & y, Vector3f const & z,
                               Vector3f const & origin) {
    // The transpose of the frame, and the origin turned back by it.
    Mat4fBase::setValue(x.x(), y.x(), z.x(), 0.0f, x.y(), y.y(), z.y(), 0.0f, x.z(), y.z(), z.z(),
                        0.0f, static_cast<float>(-Vector3f::dotD(x, origin)),
                        static_cast<float>(-Vector3f::dotD(y, origin)),
                        static_cast<float>(-Vector3f::dotD(z, origin)), 1.0f);
}

void MatRot4f::setFromAxis2Axis(Vector3f const & x1, Vector3f const & y1, Vector3f const & z1,
                                Vector3f const & x2, Vector3f const & y2, Vector3f const & z2,
                                Vector3f const & origin1, Vector3f const & origin2) {
    setFromAxis2XYZ(x1, y1, z1, origin1);
    MatRot4f b;
    b.setFromXYZ2Axis(x2, y2, z2, origin2);
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multAffineMatrices(m_mat, b.m_mat, copy);
}

void MatRot4f::setFromTo(Vector3f const & fromDir, Vector3f const & toDir,
                         Vector3f const & fromPoint, Vector3f const & toPoint) {
    Vector3f const zero;
    setValue(fromDir, toDir, zero);
    Vector3f const back = -fromPoint;
    kernel()->multRightByTranslate(m_mat, back.getValue());
    kernel()->multLeftByTranslate(m_mat, toPoint.getValue());
}

bool MatRot4f::setFromMatrix4f(Mat4fBase const & m) {
    float c[16];
    kernel()->copyMat4fTo(c, m.getValue());
    // Translation and projective terms play no part in the test; a zero m[15] makes it fail.
    c[3] = c[7] = c[11] = 0.0f;
    c[12] = c[13] = c[14] = 0.0f;
    if (c[15] != 0.0f)
        c[15] = 1.0f;
    float t[16];
    kernel()->transpose(t, c);
    Mat4fBase p;
    kernel()->multMatrices(p.getValue(), c, t);
    if (!p.equals(Mat4fBase::m_identity, 1e-4f))
        return false;
    kernel()->copyMat4fTo(m_mat, m.getValue());
    return true;
}

void MatRot4f::setRotateAround(Vector3f const & axis, float angle, Vector3f const & center) {
    setValue(axis, angle, center);
    Vector3f const back = -center;
    kernel()->multRightByTranslate(m_mat, back.getValue());
}

void MatRot4f::setRotateAround(float e0, float e1, float e2, Vector3f const & center) {
    setValue(e0, e1, e2, center);
    Vector3f const back = -center;
    kernel()->multRightByTranslate(m_mat, back.getValue());
}

void MatRot4f::setRotateAround(Vector3f const & from, Vector3f const & to,
                               Vector3f const & center) {
    setValue(from, to, center);
    Vector3f const back = -center;
    kernel()->multRightByTranslate(m_mat, back.getValue());
}

void MatRot4f::getEuler(float & e0, float & e1, float & e2) const {
    float euler[3];
    kernel()->matrixToEuler(euler, m_mat);
    e0 = euler[0];
    e1 = euler[1];
    e2 = euler[2];
}

void MatRot4f::getEuler(float * const out) const {
    kernel()->matrixToEuler(out, m_mat);
}

// ---- MatAff4f ----

void MatAff4f::setRotate(float e0, float e1, float e2) {
    float const euler[3] = {e0, e1, e2};
    kernel()->eulerToMatrix(m_mat, euler);
}

void MatAff4f::setRotateAround(Vector3f const & axis, float angle, Vector3f const & center) {
    Vector3f const back = -center;
    kernel()->setTranslate(m_mat, back.getValue());
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multLeftByRotate(m_mat, copy, axis.getValue(), angle);
    kernel()->multLeftByTranslate(m_mat, center.getValue());
}

void MatAff4f::setScaleAround(Vector3f const & s, Vector3f const & center) {
    Vector3f const back = -center;
    kernel()->setTranslate(m_mat, back.getValue());
    kernel()->multLeftByScale(m_mat, s.getValue());
    kernel()->multLeftByTranslate(m_mat, center.getValue());
}

void MatAff4f::setScale(Vector3f const & dir, float factor) {
    // r takes dir to the x axis; the result is r^-1 S r with S scaling x alone.
    MatRot4f r;
    r.setValue(dir, Vector3f(1.0f, 0.0f, 0.0f), Vector3f::m_zero);
    kernel()->copyMat4fTo(m_mat, r.getValue());
    float const s[3] = {factor, 1.0f, 1.0f};
    kernel()->multLeftByScale(m_mat, s);
    r.inverse();
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multAffineMatrices(m_mat, r.getValue(), copy);
}

void MatAff4f::setBase(Vector3f const & x, Vector3f const & y, Vector3f const & z,
                       Vector3f const & origin) {
    Mat4fBase::setValue(x.x(), x.y(), x.z(), 0.0f, y.x(), y.y(), y.z(), 0.0f, z.x(), z.y(), z.z(),
                        0.0f, origin.x(), origin.y(), origin.z(), 1.0f);
}

void MatAff4f::setNormalized2Viewport(Vector2s const & size) {
    float const w = static_cast<float>(static_cast<double>(size.x()) * 0.5);
    float const h = static_cast<float>(static_cast<double>(size.y()) * 0.5);
    Mat4fBase::setValue(w, 0.0f, 0.0f, 0.0f, 0.0f, h, 0.0f, 0.0f, 0.0f, 0.0f, 0.5f, 0.0f, w, h,
                        0.5f, 1.0f);
}

MatAff4f MatAff4f::translate(Vector3f const & t) {
    MatAff4f result;
    kernel()->setTranslate(result.m_mat, t.getValue());
    return result;
}

MatAff4f MatAff4f::scale(Vector3f const & s) {
    MatAff4f result;
    kernel()->setScale(result.m_mat, s.getValue());
    return result;
}

MatAff4f MatAff4f::identity() {
    return MatAff4f();
}
