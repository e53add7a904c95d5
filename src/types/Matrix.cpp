// The matrix family: construction, forwarding members, comparisons and the free products.
#include "kdrcore/types/Matrix.h"

#include "detail/CurrentKernel.h"
#include "detail/Wide.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"
#include "kdrcore/types/Scalar.h"

#include <cmath>

using kdrcore::detail::kernel;
using kdrcore::detail::wide;

// Constant data: constinit, through the constexpr constructor, so no code
// run at load time.
constinit const Mat4fBase Mat4fBase::m_identity(1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f,
                                                0.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f);

// ---- Mat4fBase ----

void Mat4fBase::getValue(float & a0, float & a1, float & a2, float & a3, float & a4, float & a5,
                         float & a6, float & a7, float & a8, float & a9, float & a10, float & a11,
                         float & a12, float & a13, float & a14, float & a15) const {
    a0 = m_mat[0];
    a1 = m_mat[1];
    a2 = m_mat[2];
    a3 = m_mat[3];
    a4 = m_mat[4];
    a5 = m_mat[5];
    a6 = m_mat[6];
    a7 = m_mat[7];
    a8 = m_mat[8];
    a9 = m_mat[9];
    a10 = m_mat[10];
    a11 = m_mat[11];
    a12 = m_mat[12];
    a13 = m_mat[13];
    a14 = m_mat[14];
    a15 = m_mat[15];
}

void Mat4fBase::setValue(float a0, float a1, float a2, float a3, float a4, float a5, float a6,
                         float a7, float a8, float a9, float a10, float a11, float a12, float a13,
                         float a14, float a15) {
    m_mat[0] = a0;
    m_mat[1] = a1;
    m_mat[2] = a2;
    m_mat[3] = a3;
    m_mat[4] = a4;
    m_mat[5] = a5;
    m_mat[6] = a6;
    m_mat[7] = a7;
    m_mat[8] = a8;
    m_mat[9] = a9;
    m_mat[10] = a10;
    m_mat[11] = a11;
    m_mat[12] = a12;
    m_mat[13] = a13;
    m_mat[14] = a14;
    m_mat[15] = a15;
}

void Mat4fBase::getCopy(float * out) const {
    kernel()->copyMat4fTo(out, m_mat);
}

void Mat4fBase::multRightVec3f(Vector3f & out, Vector3f const & in) const {
    kernel()->multMatrixVec3f(out.getValue(), m_mat, in.getValue());
}

void Mat4fBase::multRightVec4f(Vector4f & out, Vector4f const & in) const {
    kernel()->multMatrixVec4f(out.getValue(), m_mat, in.getValue());
}

bool Mat4fBase::equals(Mat4fBase const & other, float tolerance) const {
    // Looks only for a difference known to be too large: NaN passes.
    double const tol = wide(tolerance);
    for (int i = 0; i < 16; ++i) {
        double const d = wide(m_mat[i]) - wide(other.m_mat[i]);
        if (std::fabs(d) > tol)
            return false;
    }
    return true;
}

// ---- Matrix4f ----

Matrix4f::Matrix4f() {
    kernel()->setIdentity(m_mat);
}

Matrix4f::Matrix4f(int init) {
    if (init == 1)
        kernel()->setIdentity(m_mat);
    else if (init == 0)
        kernel()->setZero(m_mat);
}

Matrix4f::Matrix4f(Mat4fBase const & other) {
    kernel()->copyMat4fTo(m_mat, other.getValue());
}

Matrix4f::Matrix4f(float const * values) {
    kernel()->copyMat4fTo(m_mat, values);
}

void Matrix4f::setValue(Mat4fBase const & other) {
    kernel()->copyMat4fTo(m_mat, other.getValue());
}

void Matrix4f::setZero() {
    kernel()->setZero(m_mat);
}

void Matrix4f::setIdentity() {
    kernel()->setIdentity(m_mat);
}

void Matrix4f::getTranspose(Matrix4f & out) const {
    kernel()->transpose(out.m_mat, m_mat);
}

Matrix4f const & Matrix4f::transpose() {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->transpose(m_mat, copy);
    return *this;
}

Matrix4f const & Matrix4f::negate() {
    kernel()->neg(m_mat, m_mat); // the operation allows dst == src
    return *this;
}

Matrix4f const & Matrix4f::abs() {
    kernel()->abs(m_mat, m_mat); // the operation allows dst == src
    return *this;
}

Matrix4f const & Matrix4f::inverse(bool & ok) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    ok = kernel()->inverseMatrix(m_mat, copy);
    return *this;
}

void Matrix4f::multLeftBy(Mat4fBase const & other) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multMatrices(m_mat, other.getValue(), copy);
}

void Matrix4f::multRightBy(Mat4fBase const & other) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multMatrices(m_mat, copy, other.getValue());
}

Matrix4f & Matrix4f::operator*=(Mat4fBase const & other) {
    multRightBy(other);
    return *this;
}

// ---- MatAff4fBase ----

MatAff4fBase::MatAff4fBase() {
    kernel()->setIdentity(m_mat);
}

MatAff4fBase::MatAff4fBase(MatAff4fBase const & other) : Mat4fBase() {
    kernel()->copyMat4fTo(m_mat, other.m_mat);
}

void MatAff4fBase::multRightVec3f(Vector3f & out, Vector3f const & in) const {
    kernel()->multAffineMatrixVec3f(out.getValue(), m_mat, in.getValue());
}

bool MatAff4fBase::equalsAff(MatAff4fBase const & other, float tolerance) const {
    static constexpr int affine[12] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14};
    double const tol = wide(tolerance);
    for (int i : affine) {
        double const d = wide(m_mat[i]) - wide(other.m_mat[i]);
        if (d > tol || d < -tol)
            return false;
    }
    return true;
}

bool MatAff4fBase::testFiniteAndNAN() const {
    for (float const v : m_mat)
        if (!::testFiniteAndNAN(wide(v)))
            return false;
    return true;
}

// ---- MatAff4f ----

MatAff4f::MatAff4f() = default;

MatAff4f::MatAff4f(MatAff4f const & other) : MatAff4fBase(other) {}

MatAff4f::MatAff4f(MatAff4fBase const & other) : MatAff4fBase(other) {}

MatAff4f const & MatAff4f::inverse(bool & ok) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    ok = kernel()->inverseAffine(m_mat, copy);
    return *this;
}

MatAff4f const & MatAff4f::transpose3() {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->transposeAffine(m_mat, copy);
    return *this;
}

void MatAff4f::multLeftBy(MatAff4fBase const & other) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multAffineMatrices(m_mat, other.getValue(), copy);
}

void MatAff4f::multRightBy(MatAff4fBase const & other) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multAffineMatrices(m_mat, copy, other.getValue());
}

MatAff4f & MatAff4f::operator*=(MatAff4fBase const & other) {
    multRightBy(other);
    return *this;
}

MatAff4f & MatAff4f::operator*=(float s) {
    float const v[3] = {s, s, s};
    kernel()->multLeftByScale(m_mat, v);
    return *this;
}

void MatAff4f::multLeftByRotate(Vector3f const & axis, float angle) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multLeftByRotate(m_mat, copy, axis.getValue(), angle);
}

void MatAff4f::multRightByRotate(Vector3f const & axis, float angle) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multRightByRotate(m_mat, copy, axis.getValue(), angle);
}

void MatAff4f::multLeftByScale(Vector3f const & s) {
    kernel()->multLeftByScale(m_mat, s.getValue());
}

void MatAff4f::multLeftByTranslate(Vector3f const & t) {
    kernel()->multLeftByTranslate(m_mat, t.getValue());
}

void MatAff4f::setTranslate(Vector3f const & t) {
    kernel()->setTranslate(m_mat, t.getValue());
}

void MatAff4f::setScale(Vector3f const & s) {
    kernel()->setScale(m_mat, s.getValue());
}

// ---- MatRot4f: construction and forwarding (the builders are in MatrixFrames.cpp) ----

MatRot4f::MatRot4f() = default;

MatRot4f::MatRot4f(MatRot4f const & other) : MatAff4fBase(other) {}

MatRot4f::MatRot4f(Vector3f const & axis, float angle, Vector3f const & origin) {
    setValue(axis, angle, origin);
}

MatRot4f::MatRot4f(float e0, float e1, float e2, Vector3f const & origin) {
    setValue(e0, e1, e2, origin);
}

MatRot4f::MatRot4f(Vector3f const & from, Vector3f const & to, Vector3f const & origin) {
    setValue(from, to, origin);
}

MatRot4f const & MatRot4f::inverse() {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->inverseRotateAndTr(m_mat, copy);
    return *this;
}

MatRot4f const & MatRot4f::transpose3() {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->transposeAffine(m_mat, copy);
    return *this;
}

void MatRot4f::multLeftBy(MatRot4f const & other) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multAffineMatrices(m_mat, other.m_mat, copy);
}

void MatRot4f::multRightBy(MatRot4f const & other) {
    float copy[16];
    kernel()->copyMat4fTo(copy, m_mat);
    kernel()->multAffineMatrices(m_mat, copy, other.m_mat);
}

MatRot4f & MatRot4f::operator*=(MatRot4f const & other) {
    multRightBy(other);
    return *this;
}

void MatRot4f::multLeftByTranslate(Vector3f const & t) {
    kernel()->multLeftByTranslate(m_mat, t.getValue());
}

void MatRot4f::multRightByTranslate(Vector3f const & t) {
    kernel()->multRightByTranslate(m_mat, t.getValue());
}

// ---- Free products: each result starts as the identity (a vector as zero) ----

Matrix4f operator*(Mat4fBase const & a, Mat4fBase const & b) {
    Matrix4f result;
    kernel()->multMatrices(result.getValue(), a.getValue(), b.getValue());
    return result;
}

Matrix4f operator+(Mat4fBase const & a, Mat4fBase const & b) {
    Matrix4f result;
    kernel()->addMatrices(result.getValue(), a.getValue(), b.getValue());
    return result;
}

Matrix4f operator-(Mat4fBase const & a, Mat4fBase const & b) {
    Matrix4f result;
    kernel()->subMatrices(result.getValue(), a.getValue(), b.getValue());
    return result;
}

Matrix4f operator*(float s, Mat4fBase const & m) {
    Matrix4f result;
    kernel()->multMatrixScalar(result.getValue(), m.getValue(), s);
    return result;
}

MatAff4fBase operator*(MatAff4fBase const & a, MatAff4fBase const & b) {
    MatAff4fBase result;
    kernel()->multAffineMatrices(result.getValue(), a.getValue(), b.getValue());
    return result;
}

MatAff4fBase operator*(float s, MatAff4fBase const & m) {
    MatAff4fBase result;
    kernel()->multMatrixScalar(result.getValue(), m.getValue(), s);
    return result;
}

MatRot4f operator*(MatRot4f const & a, MatRot4f const & b) {
    MatRot4f result;
    kernel()->multAffineMatrices(result.getValue(), a.getValue(), b.getValue());
    return result;
}

Vector3f operator*(Mat4fBase const & m, Vector3f const & v) {
    Vector3f result;
    kernel()->multMatrixVec3f(result.getValue(), m.getValue(), v.getValue());
    return result;
}

Vector3f operator*(MatAff4fBase const & m, Vector3f const & v) {
    Vector3f result;
    kernel()->multAffineMatrixVec3f(result.getValue(), m.getValue(), v.getValue());
    return result;
}
