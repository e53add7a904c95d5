// kdrcore/kernel/EnhancedMathFunctions.h - the replaceable kernel of matrix and quaternion
// arithmetic
#ifndef KDRCORE_KERNEL_ENHANCEDMATHFUNCTIONS_H
#define KDRCORE_KERNEL_ENHANCEDMATHFUNCTIONS_H

#include "kdrcore/KDRExport.h"

/// The kernel: one process-wide object of virtual operations on plain float arrays, through which
/// every vector-product, matrix and quaternion operation of the library passes.
///
/// Conventions shared by every operation and every caller:
/// - a vector is 3 consecutive floats (x, y, z), a 4-vector adds w;
/// - a matrix is 16 floats, column-major for column vectors: row r, column c at m[4*c + r],
///   translation in m[12], m[13], m[14]; multMatrices(dst, a, b) is `a b`, so b acts first;
/// - a quaternion is w, x, y, z; an Euler triple is radians about x, y, z composed Rz Ry Rx;
/// - all angles are radians, positive counter-clockwise seen from the tip of the axis.
/// Arithmetic inside an operation runs at double width; results are rounded when stored.
///
/// Aliasing: the default operations store each element as soon as it is computed, so `dst` must not
/// overlap an input unless the operation's comment says it may.
///
/// Replacing the kernel: derive, override what you want (every operation has a working default),
/// create the object with `new` and call setDefault() on it. Ownership passes to the library: the
/// object is unref'd (by default deleted) when the next kernel replaces it. Callers never keep the
/// result of getCurrent(): they ask again for each operation.
class KDRCORE_API EnhancedMathFunctions {
public:
    EnhancedMathFunctions();

    /// The current kernel, never null; created on first demand.
    static EnhancedMathFunctions * getCurrent() {
        return m_current != nullptr ? m_current : initDefaultMathFunctions();
    }

    /// Makes this object the current kernel: ref() on it, then unref() on the previous kernel
    /// (by default deleting it), then store. Does nothing when this object is already current.
    void setDefault() const;

    /// @{ @name Non-virtual arithmetic
    float det2(float a, float b, float c, float d) const; ///< a*d - b*c
    /// Determinant of the three vectors a, b, c, unrounded at double width.
    double det3(float const * a, float const * b, float const * c) const;
    float dot3(float const * const a, float const * const b) const;
    /// @}

    // ---- The table of virtual operations. Its order is part of the binary interface. ----

    /// A new array of 16 floats (new[]) holding a copy of `src`; the caller frees it with delete[].
    virtual float * getMat4fCopy(float const * const src) const;
    /// @{ Plain copies of 16 and of 3 floats; `dst` must not overlap `src`.
    virtual void copyMat4fTo(float * const dst, float const * const src) const;
    virtual void copyVec3fTo(float * const dst, float const * const src) const;
    /// @}
    /// dst = a x b. `dst` must not overlap `a` or `b`.
    virtual void cross(float * const dst, float const * a, float const * b) const;
    /// @{ Write all 16 elements of `dst`, their only argument: nothing to overlap.
    virtual void setIdentity(float * const dst) const;
    virtual void setZero(float * const dst) const;
    /// @}

    /// @{ Element-wise on all 16 elements; `dst` may be `a` or `b`.
    virtual void addMatrices(float * const dst, float const * const a, float const * const b) const;
    virtual void subMatrices(float * const dst, float const * const a, float const * const b) const;
    /// @}
    /// dst = a b (b acts first). `dst` must not overlap `a` or `b`.
    virtual void multMatrices(float * const dst, float const * const a,
                              float const * const b) const;
    /// dst = (m v) divided by its homogeneous coordinate (v has w = 1); 0, 0, 0 when that
    /// coordinate is exactly 0. `dst` may be `v` (read whole before the first store), not `m`.
    virtual void multMatrixVec3f(float * const dst, float const * const m,
                                 float const * const v) const;
    /// dst = m v on four floats, no division. `dst` may be `v`, not `m`.
    virtual void multMatrixVec4f(float * const dst, float const * const m,
                                 float const * const v) const;
    /// Element-wise on all 16 elements; `dst` may be `m`.
    virtual void multMatrixScalar(float * const dst, float const * const m, float s) const;
    /// Gauss-Jordan inverse with partial pivoting at double width. False on a singular matrix,
    /// `dst` then untouched. `dst` may be `src` (read whole before the first store).
    virtual bool inverseMatrix(float * const dst, float const * const src) const;
    /// Element-wise on all 16 elements; `dst` may be `src`.
    virtual void neg(float * const dst, float const * const src) const;
    /// `dst` must not overlap `src`.
    virtual void transpose(float * const dst, float const * const src) const;
    /// Element-wise on all 16 elements; `dst` may be `src`.
    virtual void abs(float * const dst, float const * const src) const;
    virtual float det4(float const * const m) const;
    /// @{ Builders: write all 16 elements of `dst` (setProjection all or none); `dst` must not
    /// overlap an input.
    virtual void setScale(float * const dst, float const * const s) const;
    virtual void setTranslate(float * const dst, float const * const t) const;
    /// Rotation matrix of an Euler triple (through eulerToMatrix).
    virtual void setRotate(float * const dst, float const * const euler) const;
    /// Rotation matrix about `axis` (normalised on the way) by `angle` radians.
    virtual void setRotate(float * const dst, float const * const axis, float angle) const;
    /// Projection along `dir` onto the plane normal . p + d = 0; `dst` untouched when
    /// normal . dir is exactly 0.
    virtual void setProjection(float * const dst, float const * const normal, float d,
                               float const * const dir) const;
    /// @}
    /// Determinant of the upper-left 3x3 block (reads m[0..2], m[4..6], m[8..10]).
    virtual float det3(float const * const m) const;
    /// Affine operations take the bottom row 0, 0, 0, 1 for granted and do not read it.
    /// dst = a b with the bottom row 0, 0, 0, 1; `dst` must not overlap `a` or `b`.
    virtual void multAffineMatrices(float * const dst, float const * const a,
                                    float const * const b) const;
    /// @{ Point and direction (no translation) through the affine `m`; `dst` may be `v`, not `m`.
    virtual void multAffineMatrixVec3f(float * const dst, float const * const m,
                                       float const * const v) const;
    virtual void multAffineMatrixVec3fAsDir(float * const dst, float const * const m,
                                            float const * const v) const;
    /// @}
    /// Writes dst[0..11] = col row'; dst[12..15] stay as they were. `dst` must not overlap `col`
    /// or `row`.
    virtual void multAffineColRow(float * const dst, float const * const col,
                                  float const * const row) const;
    /// Writes only the upper-left 3x3 block; the other seven elements stay as they were. `dst`
    /// must not overlap `src`.
    virtual void transposeAffine(float * const dst, float const * const src) const;
    /// @{ dst = R src (Left) or src R (Right), `src` taken as affine; `dst` gets the bottom row
    /// 0, 0, 0, 1 and must not overlap `src` or `axis`.
    virtual void multLeftByRotate(float * const dst, float const * const src, float const * axis,
                                  float angle) const;
    virtual void multRightByRotate(float * const dst, float const * const src, float const * axis,
                                   float angle) const;
    /// @}
    /// @{ In place: `m` is read and written; `t` and `s` must not overlap it. Left products turn
    /// the translation, right products keep it; the translate and scale forms read and write
    /// rows 0 to 2 only.
    virtual void multLeftByRotateX(float * const m, float angle) const;
    virtual void multRightByRotateX(float * const m, float angle) const;
    virtual void multLeftByRotateY(float * const m, float angle) const;
    virtual void multRightByRotateY(float * const m, float angle) const;
    virtual void multLeftByRotateZ(float * const m, float angle) const;
    virtual void multRightByRotateZ(float * const m, float angle) const;
    virtual void multLeftByTranslate(float * const m, float const * t) const;
    virtual void multRightByTranslate(float * const m, float const * t) const;
    virtual void multLeftByScale(float * const m, float const * s) const;
    virtual void multRightByScale(float * const m, float const * s) const;
    /// @}
    /// @{ Inverses: the result says whether `dst` (or `m`) now holds the inverse; on failure
    /// nothing is written. `dst` may be `src`; the one-argument forms work in place on `m`.
    virtual bool inverse3(float * const dst, float const * const src) const;
    virtual bool inverseAffine(float * const dst, float const * const src) const;
    virtual bool inverseScale(float * const m) const;
    virtual bool inverseScale(float * const dst, float const * const src) const;
    virtual bool inverseTranslate(float * const m) const;
    virtual bool inverseTranslate(float * const dst, float const * const src) const;
    /// @}
    /// @{ Always true. They write only the upper-left 3x3 block through transposeAffine,
    /// inverseRotateAndTr the translation too; `dst` must not overlap `src`.
    virtual bool inverseRotate(float * const dst, float const * const src) const;
    virtual bool inverseRotateAndTr(float * const dst, float const * const src) const;
    /// @}
    /// @{ Quaternion sum, difference, Hamilton product and quotient: `dst` may be `a` or `b`.
    virtual void addQuaternions(float * const dst, float const * const a,
                                float const * const b) const;
    virtual void subQuaternions(float * const dst, float const * const a,
                                float const * const b) const;
    virtual void multQuaternions(float * const dst, float const * const a,
                                 float const * const b) const;
    virtual void divQuaternionsU(float * const dst, float const * const a,
                                 float const * const b) const;
    /// @}
    /// @{ Conjugate and inverses: `dst` may be `q`; the inverse of the zero quaternion is
    /// 0, 0, 0, 0.
    virtual void conjugateQuaternion(float * const dst, float const * const q) const;
    virtual void inverseQuaternion(float * const dst, float const * const q) const;
    virtual void inverseQuaternionU(float * const dst, float const * const q) const;
    /// @}
    /// Turns `v` by `q`; the result is scaled by |q|^2. `dst` may be `v`, not `q`.
    virtual void applyQuatOn(float * const dst, float const * const q, float const * const v) const;
    /// Writes only dst[0]; the running sum is rounded to float after each term. `dst` must not
    /// overlap `a` or `b`.
    virtual void dotQuaternions(float * dst, float const * const a, float const * const b) const;
    /// @{ Interpolations: not divided by sin h, not normalised, `t` not clamped; `dst` may be `a`
    /// or `b`.
    virtual void quaternionSLERP(float * const dst, float const * const a, float const * const b,
                                 float t) const;
    virtual void quaternionLERP(float * const dst, float const * const a, float const * const b,
                                float t) const;
    /// @}
    /// @{ Conversions: outputs must not overlap inputs; matrix outputs write all 16 elements; the
    /// `int` results are always 0. The plain forms (axisToQuaternion, axisToMatrix) use the axis
    /// as given, the U forms normalise it.
    virtual void axisToQuaternion(float * const dst, float const * const axis, float angle) const;
    virtual void axisToQuaternionU(float * const dst, float const * const axis, float angle) const;
    virtual void quaternionToAxis(float * const axis, float * angle, float const * const q) const;
    virtual void quaternionToMatrix(float * const dst, float const * const q) const;
    virtual int RotMatrixToQuaternion(float * const dst, float const * const m) const;
    virtual void eulerToQuaternion(float * const dst, float const * const euler) const;
    virtual void quaternionToEuler(float * euler, float const * const q) const;
    virtual void eulerToMatrix(float * const dst, float const * const euler) const;
    virtual int matrixToEuler(float * euler, float const * const m) const;
    virtual void axisToMatrix(float * const dst, float const * const axis, float angle) const;
    virtual int matrixToAxis(float * const axis, float * angle, float const * const m) const;
    /// @}
    /// About 1/sqrt(x) from a table seed and `iterations` Newton steps (0 or less: the seed).
    virtual float invSqrt(float x, int iterations) const;
    /// About 1/sqrt(x): seed and one Newton step.
    virtual float invSqrt(float x) const;
    /// About sqrt(x), as 1/invSqrt(x, iterations).
    virtual float msqrt(float x, int iterations) const;
    virtual float msqrt(float x) const;
    /// Eigenvalues and unit eigenvectors (columns of `vectors`) of the symmetric upper-left block
    /// of `m`, by cyclic Jacobi rotations. `rotations` receives the number of index pairs visited.
    /// `values` and `vectors` must not overlap `m`.
    virtual void jacobi3(float * const values, float (*const vectors)[3], int & rotations,
                         float const * const m) const;

    /// Splits the affine matrix `m` (bottom row not read) into T u transpose(r) S r: rotation
    /// frame `r`, stretches `s` (3 floats, all negative for a mirror), rotation `u`, translation
    /// `t` (3 floats), `p` the identity. False when the upper-left block is singular (absolute
    /// determinant below 1e-12): then only `t` and `p` are written. No output may overlap `m`.
    bool factor(float * const r, float * const s, float * const u, float * const t, float * const p,
                float const * const m) const;

protected:
    virtual void ref();   ///< does nothing by default
    virtual void unref(); ///< deletes the object by default
    virtual ~EnhancedMathFunctions();

private:
    static EnhancedMathFunctions * initDefaultMathFunctions();
    static unsigned char * initInvSqrtTable();

    static EnhancedMathFunctions * m_current;
    static unsigned char * m_invSqrtTable;
};

#endif // KDRCORE_KERNEL_ENHANCEDMATHFUNCTIONS_H
