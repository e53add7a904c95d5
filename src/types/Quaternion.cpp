// The quaternion value class: conversions and algebra through the current kernel.
#include "kdrcore/types/Quaternion.h"

#include "detail/CurrentKernel.h"
#include "detail/Wide.h"

#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <cmath>

using kdrcore::detail::kernel;
using kdrcore::detail::wide;

Quaternion::Quaternion(MatRot4f const & m) : Quaternion() {
    setValue(m);
}

Quaternion::Quaternion(Vector3f const & axis, float angle) : Quaternion() {
    kernel()->axisToQuaternionU(m_q, axis.getValue(), angle);
}

Quaternion::Quaternion(float e0, float e1, float e2) : Quaternion() {
    setValue(e0, e1, e2);
}

Quaternion::Quaternion(Vector3f const & from, Vector3f const & to) : Quaternion() {
    setValue(from, to);
}

void Quaternion::setValue(MatRot4f const & m) {
    kernel()->RotMatrixToQuaternion(m_q, m.getValue()); // its result is always 0
}

void Quaternion::setValue(float e0, float e1, float e2) {
    float const euler[3] = {e0, e1, e2};
    kernel()->eulerToQuaternion(m_q, euler);
}

void Quaternion::setValue(Vector3f const & from, Vector3f const & to) {
    // No parallel case here: a cross product shorter than TOLERANCE gives the identity in
    // axisToQuaternionU, for opposite directions too.
    Vector3f c;
    kernel()->cross(c.getValue(), from.getValue(), to.getValue());
    float const a = static_cast<float>(from.angleD(to));
    kernel()->axisToQuaternionU(m_q, c.getValue(), a);
}

void Quaternion::getValue(float & e0, float & e1, float & e2) const {
    float euler[3];
    kernel()->quaternionToEuler(euler, m_q);
    e0 = euler[0];
    e1 = euler[1];
    e2 = euler[2];
}

void Quaternion::getValue(MatRot4f & out) const {
    kernel()->quaternionToMatrix(out.getValue(), m_q);
    kernel()->copyVec3fTo(out.getValue() + 12, Vector3f::m_zero.getValue());
}

float Quaternion::norm() const {
    return static_cast<float>(
        std::sqrt(((wide(m_q[0]) * wide(m_q[0]) + wide(m_q[1]) * wide(m_q[1])) +
                   wide(m_q[2]) * wide(m_q[2])) +
                  wide(m_q[3]) * wide(m_q[3])));
}

float Quaternion::dot(Quaternion const & other) const {
    float result = 0.0f;
    kernel()->dotQuaternions(&result, m_q, other.m_q);
    return result;
}

float Quaternion::normalize() {
    double const len = std::sqrt(((wide(m_q[0]) * wide(m_q[0]) + wide(m_q[1]) * wide(m_q[1])) +
                                  wide(m_q[2]) * wide(m_q[2])) +
                                 wide(m_q[3]) * wide(m_q[3]));
    double const r = 1.0 / len; // no zero test: a zero quaternion becomes NaN
    for (float & e : m_q)
        e = static_cast<float>(wide(e) * r);
    return static_cast<float>(len);
}

// The in-place members hand the kernel a copy; multQuaternions and divQuaternionsU read all
// their inputs before the first store, so `other` may be this object.
void Quaternion::multLeftBy(Quaternion const & other) {
    float const copy[4] = {m_q[0], m_q[1], m_q[2], m_q[3]};
    kernel()->multQuaternions(m_q, other.m_q, copy);
}

void Quaternion::multRightBy(Quaternion const & other) {
    float const copy[4] = {m_q[0], m_q[1], m_q[2], m_q[3]};
    kernel()->multQuaternions(m_q, copy, other.m_q);
}

void Quaternion::div(Quaternion const & other) {
    float const copy[4] = {m_q[0], m_q[1], m_q[2], m_q[3]};
    kernel()->divQuaternionsU(m_q, copy, other.m_q);
}

Quaternion & Quaternion::operator*=(Quaternion const & other) {
    float const copy[4] = {m_q[0], m_q[1], m_q[2], m_q[3]};
    kernel()->multQuaternions(m_q, copy, other.m_q);
    return *this;
}

Quaternion & Quaternion::operator/=(Quaternion const & other) {
    float const copy[4] = {m_q[0], m_q[1], m_q[2], m_q[3]};
    kernel()->divQuaternionsU(m_q, copy, other.m_q);
    return *this;
}

Quaternion Quaternion::operator*(Quaternion const & other) const {
    Quaternion result;
    kernel()->multQuaternions(result.m_q, m_q, other.m_q);
    return result;
}

Quaternion Quaternion::operator/(Quaternion const & other) const {
    Quaternion result;
    kernel()->divQuaternionsU(result.m_q, m_q, other.m_q);
    return result;
}

Quaternion Quaternion::operator+(Quaternion const & other) const {
    Quaternion result;
    kernel()->addQuaternions(result.m_q, m_q, other.m_q);
    return result;
}

Quaternion Quaternion::operator-(Quaternion const & other) const {
    Quaternion result;
    kernel()->subQuaternions(result.m_q, m_q, other.m_q);
    return result;
}
