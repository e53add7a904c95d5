// kdrcore/types/Matrix.h - the 4x4 matrix family: Mat4fBase, Matrix4f, MatAff4fBase, MatAff4f,
// MatRot4f
#ifndef KDRCORE_TYPES_MATRIX_H
#define KDRCORE_TYPES_MATRIX_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/types/Vector.h"

class MatAff4f;
class MatRot4f;
class Quaternion;

/// Sixteen floats in the kernel's convention: row r, column c at m[4*c + r], vectors as columns
/// on the right, translation in m[12..14]. The family has no virtual operation and no cached
/// state: an object is the 16 floats and nothing else, and every constructor starts from a copy
/// of `m_identity`. Operations forward to EnhancedMathFunctions::getCurrent(), asked afresh for
/// each kernel call. Dispatch is static: which kernel operation runs depends on the static type.
class KDRCORE_API Mat4fBase {
public:
    /// The identity, a plain copy of m_identity (no kernel call).
    Mat4fBase() : Mat4fBase(m_identity) {}
    /// The 16 values in array order: the first four are m[0..3], column 0.
    constexpr Mat4fBase(float a0, float a1, float a2, float a3, float a4, float a5, float a6,
                        float a7, float a8, float a9, float a10, float a11, float a12, float a13,
                        float a14, float a15)
        : m_mat{a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, a13, a14, a15} {}
    /// Plain copy of the 16 floats, no kernel call.
    Mat4fBase(Mat4fBase const &) = default;
    Mat4fBase & operator=(Mat4fBase const &) = default;

    /// The 16 floats in array order.
    float * getValue() { return m_mat; }
    float const * getValue() const { return m_mat; }
    /// Copies the elements out in array order.
    void getValue(float & a0, float & a1, float & a2, float & a3, float & a4, float & a5,
                  float & a6, float & a7, float & a8, float & a9, float & a10, float & a11,
                  float & a12, float & a13, float & a14, float & a15) const;
    /// Stores the elements in array order, no kernel call.
    void setValue(float a0, float a1, float a2, float a3, float a4, float a5, float a6, float a7,
                  float a8, float a9, float a10, float a11, float a12, float a13, float a14,
                  float a15);
    /// Writes the 16 floats to `out` by the kernel's copyMat4fTo.
    void getCopy(float * out) const;

    /// out = M in, the full matrix, divided by the homogeneous coordinate (kernel multMatrixVec3f:
    /// a zero coordinate gives the zero vector). `out` may be `in`.
    void multRightVec3f(Vector3f & out, Vector3f const & in) const;
    /// out = M in, no division (kernel multMatrixVec4f). `out` may be `in`.
    void multRightVec4f(Vector4f & out, Vector4f const & in) const;

    /// False as soon as one of the 16 unrounded differences has an absolute value above
    /// `tolerance`; else true. A difference exactly at the tolerance passes, and so does a NaN.
    bool equals(Mat4fBase const & other, float tolerance) const;

    /// Writes to `out` the 3x3 block with each column scaled to unit length (a column of length
    /// exactly 0 is copied as it is) and this translation; out[3], out[7], out[11], out[15] are
    /// left alone. `scale` receives the three column lengths. No orthogonality is asked for.
    /// Always true. `out` may be this object.
    bool normalizeMatrix(MatAff4f & out, Vector3f & scale) const;
    /// Does nothing and returns true: neither `out` nor this object is touched.
    bool orthoNormalizeMatrix(MatRot4f & out) const;
    /// Splits M, or T(-c) M T(c) when `center` points to c, by the kernel's polar factorisation
    /// `factor`: M = T(translation) rotation scaleOrientation' S(scale) scaleOrientation. A mirror
    /// makes all three scales negative. On a singular 3x3 block nothing is reported and only
    /// `translation` is written. The bottom row is not read.
    void getTransform(Vector3f & translation, MatRot4f & rotation, Vector3f & scale,
                      MatRot4f & scaleOrientation, Vector3f const * center) const;

    /// The identity, constant data valid from load time on.
    static const Mat4fBase m_identity;

protected:
    float m_mat[16];
};

/// A general 4x4 matrix, projective parts included. No invariant.
class KDRCORE_API Matrix4f : public Mat4fBase {
public:
    /// The identity, by the kernel's setIdentity.
    Matrix4f();
    /// 1: the identity by the kernel's setIdentity; 0: zero by the kernel's setZero; any other
    /// value: the identity without a kernel call.
    Matrix4f(int init);
    /// The 16 values in array order, no kernel call.
    constexpr Matrix4f(float a0, float a1, float a2, float a3, float a4, float a5, float a6,
                       float a7, float a8, float a9, float a10, float a11, float a12, float a13,
                       float a14, float a15)
        : Mat4fBase(a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, a13, a14, a15) {}
    /// Plain copy, no kernel call.
    Matrix4f(Matrix4f const &) = default;
    /// Copy by the kernel's copyMat4fTo.
    Matrix4f(Mat4fBase const & other);
    /// Reads 16 floats by the kernel's copyMat4fTo.
    Matrix4f(float const * values);
    Matrix4f & operator=(Matrix4f const &) = default;

    using Mat4fBase::setValue;
    /// Copies `other` by the kernel's copyMat4fTo.
    void setValue(Mat4fBase const & other);
    void setZero();     ///< kernel setZero
    void setIdentity(); ///< kernel setIdentity
    /// out = the transpose of this matrix; `out` must not be this object.
    void getTranspose(Matrix4f & out) const;
    /// Transposes in place (through a copy).
    Matrix4f const & transpose();
    Matrix4f const & negate(); ///< every element negated
    Matrix4f const & abs();    ///< every element's absolute value
    /// Inverts in place by the kernel's inverseMatrix. On a singular matrix `ok` is false and the
    /// object keeps its value.
    Matrix4f const & inverse(bool & ok);
    /// this = other * this. `other` must not be this object.
    void multLeftBy(Mat4fBase const & other);
    /// this = this * other. `other` must not be this object.
    void multRightBy(Mat4fBase const & other);
    /// As multRightBy.
    Matrix4f & operator*=(Mat4fBase const & other);

    /// True when the surface element at `point` with the unit normal `normal` shows its front
    /// through this projection: the projected tangent frame (x, y, w rows) has a negative
    /// orientation. A zero or NaN orientation gives false.
    bool isFront(Vector3f const & point, Vector3f const & normal) const;
};

/// A matrix whose bottom row is taken to be 0, 0, 0, 1 (a promise of the caller, not checked):
/// its operations never read that row, and its products write it so.
class KDRCORE_API MatAff4fBase : public Mat4fBase {
public:
    /// The identity, by the kernel's setIdentity.
    MatAff4fBase();
    /// Copy of all 16 floats by the kernel's copyMat4fTo.
    MatAff4fBase(MatAff4fBase const & other);
    MatAff4fBase & operator=(MatAff4fBase const &) = default;

    /// out = M in with no division (kernel multAffineMatrixVec3f). Hides the projective form of
    /// Mat4fBase. `out` may be `in`.
    void multRightVec3f(Vector3f & out, Vector3f const & in) const;
    /// As equals, over the 12 elements of the affine part (m[3], m[7], m[11], m[15] not looked at).
    bool equalsAff(MatAff4fBase const & other, float tolerance) const;
    /// True when all 16 elements, the bottom row included, are finite and not NaN.
    bool testFiniteAndNAN() const;
};

/// An affine transform: rotation, scale, shear and translation, bottom row 0, 0, 0, 1.
class KDRCORE_API MatAff4f : public MatAff4fBase {
public:
    MatAff4f(); ///< the identity, by the kernel's setIdentity
    /// Copy of all 16 floats by the kernel's copyMat4fTo.
    MatAff4f(MatAff4f const & other);
    MatAff4f(MatAff4fBase const & other);
    MatAff4f & operator=(MatAff4f const &) = default;

    /// Inverts in place by the kernel's inverseAffine (the general inverse). On a singular matrix
    /// `ok` is false and the object keeps its value.
    MatAff4f const & inverse(bool & ok);
    /// Transposes the 3x3 block in place; the translation and the bottom row stay.
    MatAff4f const & transpose3();
    /// this = other * this (affine product). `other` must not be this object.
    void multLeftBy(MatAff4fBase const & other);
    /// this = this * other (affine product). `other` must not be this object.
    void multRightBy(MatAff4fBase const & other);
    MatAff4f & operator*=(MatAff4fBase const & other); ///< as multRightBy
    /// Multiplies the 3x3 block and the translation by `s`; the bottom row stays 0, 0, 0, 1
    /// (unlike the free `s * m`, which scales all 16 elements).
    MatAff4f & operator*=(float s);
    /// this = R * this, R about `axis` (any length) by `angle` radians.
    void multLeftByRotate(Vector3f const & axis, float angle);
    /// this = this * R.
    void multRightByRotate(Vector3f const & axis, float angle);
    /// this = S * this: the translation is scaled too.
    void multLeftByScale(Vector3f const & s);
    /// this = T * this: `t` is added to the translation.
    void multLeftByTranslate(Vector3f const & t);
    /// Overwrites all 16 elements with a pure translation.
    void setTranslate(Vector3f const & t);
    /// Overwrites all 16 elements with a pure scale.
    void setScale(Vector3f const & s);

    /// @{ @name Builders (all overwrite the whole matrix)
    /// Rotation of the Euler triple (radians about x, y, z, composed Rz Ry Rx), translation 0.
    void setRotate(float e0, float e1, float e2);
    /// T(center) R T(-center), R about `axis` by `angle`: `center` stays fixed.
    void setRotateAround(Vector3f const & axis, float angle, Vector3f const & center);
    /// T(center) S T(-center): `center` stays fixed.
    void setScaleAround(Vector3f const & scale, Vector3f const & center);
    /// Scale by `factor` along `dir` (any length) and by 1 across it, translation 0. A zero `dir`
    /// scales along x.
    void setScale(Vector3f const & dir, float factor);
    /// Columns x, y, z, origin, bottom row 0, 0, 0, 1; any three vectors.
    void setBase(Vector3f const & x, Vector3f const & y, Vector3f const & z,
                 Vector3f const & origin);
    /// Maps the cube [-1, 1]^3 to x in [0, size.x()], y in [0, size.y()], z in [0, 1].
    void setNormalized2Viewport(Vector2s const & size);
    /// @}

    static MatAff4f translate(Vector3f const & t); ///< a new pure translation
    static MatAff4f scale(Vector3f const & s);     ///< a new pure scale
    static MatAff4f identity();                    ///< a new identity

    /// @{ @name Decompositions
    /// M = T(translation) rest S(scale). A negative diagonal element m[0], m[5], m[10] gives its
    /// column's scale the minus sign; `rest` is each column divided by its scale (a zero column
    /// gives NaN there), with zero translation. Nothing is tested. `rest` may be this object.
    void getTMSDecomp(Vector3f & translation, MatAff4f & rest, Vector3f & scale) const;
    /// M = rotation S(scale), `rotation` keeping this translation; scales are the unsigned column
    /// lengths. False, with `scale` written and `rotation` untouched, when a dot product of two
    /// normalised columns exceeds TOLERANCE in absolute value (NaN passes). A mirror is not
    /// detected: `rotation` then holds a reflection.
    bool getRSDecomp(MatRot4f & rotation, Vector3f & scale) const;
    /// M = T(translation) rotation S(scale), `rotation` with zero translation. On false, as
    /// getRSDecomp, and `translation` untouched.
    bool getTRSDecomp(Vector3f & translation, MatRot4f & rotation, Vector3f & scale) const;
    /// @}
};

/// A rigid transform: a rotation plus a translation. Beyond the affine promise, the caller
/// promises an orthonormal 3x3 block; only setFromMatrix4f tests it. No scaling member.
class KDRCORE_API MatRot4f : public MatAff4fBase {
public:
    MatRot4f(); ///< the identity, by the kernel's setIdentity
    /// Copy of all 16 floats by the kernel's copyMat4fTo.
    MatRot4f(MatRot4f const & other);
    /// As setValue(axis, angle, origin), after the kernel's setIdentity.
    MatRot4f(Vector3f const & axis, float angle, Vector3f const & origin);
    /// As setValue(e0, e1, e2, origin), after the kernel's setIdentity.
    MatRot4f(float e0, float e1, float e2, Vector3f const & origin);
    /// As setValue(from, to, origin), after the kernel's setIdentity.
    MatRot4f(Vector3f const & from, Vector3f const & to, Vector3f const & origin);
    MatRot4f & operator=(MatRot4f const &) = default;

    /// The rigid inverse in place: rotation transposed, translation -(R' t). Cannot fail.
    MatRot4f const & inverse();
    /// Transposes the 3x3 block in place; the translation stays where it is.
    MatRot4f const & transpose3();
    /// this = other * this. `other` must not be this object.
    void multLeftBy(MatRot4f const & other);
    /// this = this * other. `other` must not be this object.
    void multRightBy(MatRot4f const & other);
    MatRot4f & operator*=(MatRot4f const & other); ///< as multRightBy
    /// this = T * this: `t` is added to the translation.
    void multLeftByTranslate(Vector3f const & t);
    /// this = this * T: the translation grows by R t.
    void multRightByTranslate(Vector3f const & t);

    /// @{ @name Builders (all write the whole matrix)
    /// Rotation about `axis` (any length; shorter than TOLERANCE: no rotation) by `angle` radians,
    /// translation `origin`.
    void setValue(Vector3f const & axis, float angle, Vector3f const & origin);
    /// Rotation of the Euler triple (radians about x, y, z, composed Rz Ry Rx), translation
    /// `origin`.
    void setValue(float e0, float e1, float e2, Vector3f const & origin);
    /// Rotation of the quaternion `q` (not normalised), translation `origin`.
    void setValue(Quaternion const & q, Vector3f const & origin);
    /// The rotation taking the direction `from` to the direction `to` (any lengths), translation
    /// `origin`. When |from x to|^2 < 1e-8 (not scaled by the lengths) the directions count as
    /// parallel: no rotation at an angle up to pi/2, else a half turn about an axis orthogonal to
    /// `from`.
    void setValue(Vector3f const & from, Vector3f const & to, Vector3f const & origin);
    /// From canonical coordinates into the frame: columns x, y, z, origin, stored unchanged.
    void setFromXYZ2Axis(Vector3f const & x, Vector3f const & y, Vector3f const & z,
                         Vector3f const & origin);
    /// From the frame back to canonical coordinates, for an orthonormal frame: rows x, y, z,
    /// translation (-x.origin, -y.origin, -z.origin). Not checked.
    void setFromAxis2XYZ(Vector3f const & x, Vector3f const & y, Vector3f const & z,
                         Vector3f const & origin);
    /// From frame 1 into frame 2: XYZ2Axis(frame 2) * Axis2XYZ(frame 1).
    void setFromAxis2Axis(Vector3f const & x1, Vector3f const & y1, Vector3f const & z1,
                          Vector3f const & x2, Vector3f const & y2, Vector3f const & z2,
                          Vector3f const & origin1, Vector3f const & origin2);
    /// T(toPoint) R T(-fromPoint), R taking `fromDir` to `toDir` as setValue(from, to, origin).
    void setFromTo(Vector3f const & fromDir, Vector3f const & toDir, Vector3f const & fromPoint,
                   Vector3f const & toPoint);
    /// Takes over all 16 elements of `m` when its 3x3 block is orthonormal within the float 1e-4
    /// (by m m' against the identity; a reflection passes) and m[15] is not 0. Else false and
    /// the object is unchanged. The translation and bottom row of `m` are taken as they are.
    bool setFromMatrix4f(Mat4fBase const & m);
    /// T(center) R T(-center), R about `axis` by `angle`: `center` stays fixed.
    void setRotateAround(Vector3f const & axis, float angle, Vector3f const & center);
    /// T(center) R T(-center), R of the Euler triple.
    void setRotateAround(float e0, float e1, float e2, Vector3f const & center);
    /// T(center) R T(-center), R taking `from` to `to`.
    void setRotateAround(Vector3f const & from, Vector3f const & to, Vector3f const & center);
    /// @}

    /// The Euler triple of the 3x3 block (kernel matrixToEuler).
    void getEuler(float & e0, float & e1, float & e2) const;
    /// Writes the Euler triple to out[0..2].
    void getEuler(float * const out) const;
};

/// @{ @name Free products, picked by the static type of the operands
/// Each result starts as the identity (a vector: zero) and the kernel fills it in, so an operand
/// may be anything, the result included.
KDRCORE_API Matrix4f operator*(Mat4fBase const & a, Mat4fBase const & b); ///< multMatrices
KDRCORE_API Matrix4f operator+(Mat4fBase const & a, Mat4fBase const & b); ///< addMatrices
KDRCORE_API Matrix4f operator-(Mat4fBase const & a, Mat4fBase const & b); ///< subMatrices
KDRCORE_API Matrix4f operator*(float s, Mat4fBase const & m);             ///< all 16 elements
/// Affine product: bottom rows not read, result's bottom row 0, 0, 0, 1.
KDRCORE_API MatAff4fBase operator*(MatAff4fBase const & a, MatAff4fBase const & b);
/// All 16 elements, the bottom row too: m[15] of the result is `s`.
KDRCORE_API MatAff4fBase operator*(float s, MatAff4fBase const & m);
KDRCORE_API MatRot4f operator*(MatRot4f const & a, MatRot4f const & b); ///< affine product
/// The point through the full matrix, divided by the homogeneous coordinate.
KDRCORE_API Vector3f operator*(Mat4fBase const & m, Vector3f const & v);
/// The point through the affine part, no division.
KDRCORE_API Vector3f operator*(MatAff4fBase const & m, Vector3f const & v);
/// @}

#endif // KDRCORE_TYPES_MATRIX_H
