// kdrcore/types/Quaternion.h - the quaternion value class over the kernel's quaternion operations
#ifndef KDRCORE_TYPES_QUATERNION_H
#define KDRCORE_TYPES_QUATERNION_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/types/Matrix.h"
#include "kdrcore/types/Vector.h"

/// Four floats w, x, y, z (element 0 the scalar part); unit length is the caller's matter. Starts
/// as the identity rotation (1, 0, 0, 0). norm and normalize are computed here; everything else
/// goes to EnhancedMathFunctions::getCurrent(), asked afresh for each call. Angles in radians.
class KDRCORE_API Quaternion {
public:
    /// (1, 0, 0, 0), the identity rotation.
    constexpr Quaternion() : m_q{1.0f, 0.0f, 0.0f, 0.0f} {}
    Quaternion(Quaternion const &) = default;
    /// The rotation of the 3x3 block of `m` (kernel RotMatrixToQuaternion).
    Quaternion(MatRot4f const & m);
    /// Rotation about `axis` (any length; shorter than TOLERANCE: the identity) by `angle`.
    Quaternion(Vector3f const & axis, float angle);
    /// Rotation of the Euler triple (radians about x, y, z, composed Rz Ry Rx).
    Quaternion(float e0, float e1, float e2);
    /// As setValue(from, to).
    Quaternion(Vector3f const & from, Vector3f const & to);
    Quaternion & operator=(Quaternion const &) = default;

    void setValue(MatRot4f const & m);           ///< as the constructor from a MatRot4f
    void setValue(float e0, float e1, float e2); ///< as the constructor from an Euler triple
    /// The rotation taking the direction `from` to the direction `to` (any lengths), about their
    /// cross product. Parallel and opposite directions (cross product shorter than TOLERANCE)
    /// both give the identity.
    void setValue(Vector3f const & from, Vector3f const & to);

    /// The four elements, w first.
    float const * getValue() const { return m_q; }
    /// The Euler triple (kernel quaternionToEuler).
    void getValue(float & e0, float & e1, float & e2) const;
    /// Writes the rotation to `out` with zero translation, whatever translation it held.
    void getValue(MatRot4f & out) const;
    /// Exact length, computed here.
    float norm() const;
    /// Kernel dotQuaternions.
    float dot(Quaternion const & other) const;
    /// Scales to unit length and returns the length before. No zero test: the zero quaternion
    /// becomes NaN in all four elements and 0 is returned.
    float normalize();

    /// @{ @name Algebra
    /// In-place members work from a copy, so `other` may be this object.
    void multLeftBy(Quaternion const & other);  ///< this = other * this
    void multRightBy(Quaternion const & other); ///< this = this * other
    /// this = this * conjugate(other): this / other for a unit `other`.
    void div(Quaternion const & other);
    Quaternion & operator*=(Quaternion const & other); ///< as multRightBy
    Quaternion & operator/=(Quaternion const & other); ///< as div
    Quaternion operator*(Quaternion const & other) const;
    Quaternion operator/(Quaternion const & other) const; ///< this * conjugate(other)
    Quaternion operator+(Quaternion const & other) const; ///< by components
    Quaternion operator-(Quaternion const & other) const; ///< by components
    /// @}

private:
    float m_q[4];
};

#endif // KDRCORE_TYPES_QUATERNION_H
