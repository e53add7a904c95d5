// The kernel frame: the current-kernel mechanism and the simplest operations.
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include "detail/Wide.h"

using kdrcore::detail::wide;

// Load-time initialisers, in this order within this file: first the default kernel, then the seed
// table of the fast square roots (which the kernel's constructor has already built). getCurrent()
// reached earlier, from another static object, creates the kernel itself; the initialiser then
// finds it in place.
EnhancedMathFunctions * EnhancedMathFunctions::m_current =
    EnhancedMathFunctions::initDefaultMathFunctions();
unsigned char * EnhancedMathFunctions::m_invSqrtTable = EnhancedMathFunctions::initInvSqrtTable();

EnhancedMathFunctions::EnhancedMathFunctions() {
    initInvSqrtTable();
}

// The seed table outlives every kernel: the destructor leaves it alone.
EnhancedMathFunctions::~EnhancedMathFunctions() = default;

void EnhancedMathFunctions::ref() {}

void EnhancedMathFunctions::unref() {
    delete this;
}

EnhancedMathFunctions * EnhancedMathFunctions::initDefaultMathFunctions() {
    if (m_current == nullptr)
        (new EnhancedMathFunctions())->setDefault();
    return m_current;
}

void EnhancedMathFunctions::setDefault() const {
    // ref() then unref() would delete the current kernel and leave it current.
    if (m_current == this)
        return;
    auto * self = const_cast<EnhancedMathFunctions *>(this);
    self->ref();
    if (m_current != nullptr)
        m_current->unref();
    m_current = self;
}

float EnhancedMathFunctions::det2(float a, float b, float c, float d) const {
    return static_cast<float>(wide(a) * wide(d) - wide(b) * wide(c));
}

double EnhancedMathFunctions::det3(float const * a, float const * b, float const * c) const {
    return wide(a[0]) * (wide(b[1]) * wide(c[2]) - wide(b[2]) * wide(c[1])) -
           wide(a[1]) * (wide(b[0]) * wide(c[2]) - wide(b[2]) * wide(c[0])) +
           wide(a[2]) * (wide(b[0]) * wide(c[1]) - wide(b[1]) * wide(c[0]));
}

float EnhancedMathFunctions::dot3(float const * const a, float const * const b) const {
    return static_cast<float>(wide(a[0]) * wide(b[0]) + wide(a[1]) * wide(b[1]) +
                              wide(a[2]) * wide(b[2]));
}

float * EnhancedMathFunctions::getMat4fCopy(float const * const src) const {
    // A leaf: the copy is plain, not a call of copyMat4fTo through the table.
    float * copy = new float[16];
    for (int i = 0; i < 16; ++i)
        copy[i] = src[i];
    return copy;
}

void EnhancedMathFunctions::copyMat4fTo(float * const dst, float const * const src) const {
    for (int i = 0; i < 16; ++i)
        dst[i] = src[i];
}

void EnhancedMathFunctions::copyVec3fTo(float * const dst, float const * const src) const {
    dst[0] = src[0];
    dst[1] = src[1];
    dst[2] = src[2];
}

void EnhancedMathFunctions::cross(float * const dst, float const * a, float const * b) const {
    dst[0] = static_cast<float>(wide(a[1]) * wide(b[2]) - wide(a[2]) * wide(b[1]));
    dst[1] = static_cast<float>(wide(a[2]) * wide(b[0]) - wide(a[0]) * wide(b[2]));
    dst[2] = static_cast<float>(wide(a[0]) * wide(b[1]) - wide(a[1]) * wide(b[0]));
}

void EnhancedMathFunctions::setIdentity(float * const dst) const {
    for (int i = 0; i < 16; ++i)
        dst[i] = (i % 5 == 0) ? 1.0f : 0.0f;
}

void EnhancedMathFunctions::setZero(float * const dst) const {
    for (int i = 0; i < 16; ++i)
        dst[i] = 0.0f;
}
