// Decompositions of the matrix family and the facing test of Matrix4f.
#include "detail/CurrentKernel.h"
#include "detail/Wide.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Scalar.h"

#include <cmath>

using kdrcore::detail::kernel;
using kdrcore::detail::wide;

namespace {

// Length of column j of the 3x3 block, rounded once when stored.
float columnLength(float const * m, int j) {
    float const * c = m + 4 * j;
    return static_cast<float>(
        std::sqrt((wide(c[0]) * wide(c[0]) + wide(c[1]) * wide(c[1])) + wide(c[2]) * wide(c[2])));
}

// The three columns of the 3x3 block scaled to unit length, and their lengths. A column of length
// exactly 0 is taken as it is.
void unitColumns(float const * m, float (&len)[3], Vector3f (&col)[3]) {
    for (int j = 0; j < 3; ++j) {
        float const * c = m + 4 * j;
        len[j] = columnLength(m, j);
        if (len[j] == 0.0f) {
            col[j].setValue(c[0], c[1], c[2]);
        } else {
            double const r = 1.0 / wide(len[j]);
            col[j].setValue(static_cast<float>(wide(c[0]) * r), static_cast<float>(wide(c[1]) * r),
                            static_cast<float>(wide(c[2]) * r));
        }
    }
}
} // namespace

bool Mat4fBase::normalizeMatrix(MatAff4f & out, Vector3f & scale) const {
    float len[3];
    Vector3f col[3];
    unitColumns(m_mat, len, col); // everything read before `out`, which may be this object
    float const t[3] = {m_mat[12], m_mat[13], m_mat[14]};
    scale.setValue(len[0], len[1], len[2]);
    float * o = out.getValue();
    for (int j = 0; j < 3; ++j)
        col[j].getValue(o + 4 * j); // o[3], o[7], o[11] are not written
    o[12] = t[0];
    o[13] = t[1];
    o[14] = t[2];
    return true;
}

bool Mat4fBase::orthoNormalizeMatrix(MatRot4f &) const {
    return true;
}

void Mat4fBase::getTransform(Vector3f & translation, MatRot4f & rotation, Vector3f & scale,
                             MatRot4f & scaleOrientation, Vector3f const * center) const {
    Mat4fBase projection; // receives the fifth factor, which is always the identity
    if (center == nullptr) {
        // A singular block is not reported: only `translation` has been written then.
        kernel()->factor(scaleOrientation.getValue(), scale.getValue(), rotation.getValue(),
                         translation.getValue(), projection.getValue(), m_mat);
        return;
    }
    // Factor T(-c) M T(c), so that the rotation and the stretch act about c.
    Matrix4f matrix(*this);
    Matrix4f shift;
    Vector3f const back = -*center;
    kernel()->setTranslate(shift.getValue(), back.getValue());
    matrix.multLeftBy(shift);
    kernel()->setTranslate(shift.getValue(), center->getValue());
    matrix.multRightBy(shift);
    kernel()->factor(scaleOrientation.getValue(), scale.getValue(), rotation.getValue(),
                     translation.getValue(), projection.getValue(), matrix.getValue());
}

void MatAff4f::getTMSDecomp(Vector3f & translation, MatAff4f & rest, Vector3f & scale) const {
    // Everything is computed before the first store: `rest` may be this object.
    float const t[3] = {m_mat[12], m_mat[13], m_mat[14]};
    float s[3];
    for (int j = 0; j < 3; ++j) {
        // The sign of the diagonal element goes to the scale; rest keeps a positive diagonal.
        float const len = columnLength(m_mat, j);
        s[j] = m_mat[5 * j] < 0.0f ? -len : len;
    }
    float r[16];
    for (int j = 0; j < 3; ++j) {
        for (int i = 0; i < 3; ++i) // a true division by the stored scale; 0 / 0 gives NaN
            r[4 * j + i] = static_cast<float>(wide(m_mat[4 * j + i]) / wide(s[j]));
        r[4 * j + 3] = 0.0f;
    }
    r[12] = r[13] = r[14] = 0.0f;
    r[15] = 1.0f;
    translation.setValue(t[0], t[1], t[2]);
    scale.setValue(s[0], s[1], s[2]);
    float * o = rest.getValue();
    for (int i = 0; i < 16; ++i)
        o[i] = r[i];
}

bool MatAff4f::getRSDecomp(MatRot4f & rotation, Vector3f & scale) const {
    float len[3];
    Vector3f col[3];
    unitColumns(m_mat, len, col);
    scale.setValue(len[0], len[1], len[2]); // written first, kept on failure
    // Only a value known to be too large fails: one exactly at TOLERANCE passes, NaN passes.
    if (std::fabs(Vector3f::dotD(col[1], col[0])) > TOLERANCE ||
        std::fabs(Vector3f::dotD(col[2], col[0])) > TOLERANCE ||
        std::fabs(Vector3f::dotD(col[1], col[2])) > TOLERANCE)
        return false;
    rotation.setFromXYZ2Axis(col[0], col[1], col[2], Vector3f(m_mat[12], m_mat[13], m_mat[14]));
    return true;
}

bool MatAff4f::getTRSDecomp(Vector3f & translation, MatRot4f & rotation, Vector3f & scale) const {
    if (!getRSDecomp(rotation, scale))
        return false;
    float * r = rotation.getValue();
    translation.setValue(r[12], r[13], r[14]);
    r[12] = r[13] = r[14] = 0.0f;
    return true;
}

bool Matrix4f::isFront(Vector3f const & point, Vector3f const & normal) const {
    double const nx = wide(normal.x()), ny = wide(normal.y()), nz = wide(normal.z());
    Vector4f const p(point.x(), point.y(), point.z(), 1.0f);
    // Two tangents; for a unit normal v = n x u.
    Vector4f u, v;
    if (nx <= 0.5 && nx >= -0.5) {
        u.setValue(0.0f, normal.z(), -normal.y(), 0.0f);
        v.setValue(static_cast<float>(nx * nx - 1.0), static_cast<float>(nx * ny),
                   static_cast<float>(nx * nz), 0.0f);
    } else {
        u.setValue(normal.y(), -normal.x(), 0.0f, 0.0f);
        v.setValue(static_cast<float>(nx * nz), static_cast<float>(ny * nz),
                   static_cast<float>(nz * nz - 1.0), 0.0f);
    }
    Vector4f a, b, c;
    kernel()->multMatrixVec4f(a.getValue(), m_mat, p.getValue());
    kernel()->multMatrixVec4f(b.getValue(), m_mat, u.getValue());
    kernel()->multMatrixVec4f(c.getValue(), m_mat, v.getValue());
    // Orientation of the projected element: the determinant of the rows (x, y, w).
    double const ax = wide(a.x()), ay = wide(a.y()), aw = wide(a.w());
    double const bx = wide(b.x()), by = wide(b.y()), bw = wide(b.w());
    double const cx = wide(c.x()), cy = wide(c.y()), cw = wide(c.w());
    double const d = aw * (bx * cy - by * cx) - cw * (bx * ay - by * ax) - bw * (ax * cy - cx * ay);
    return d < 0.0;
}
