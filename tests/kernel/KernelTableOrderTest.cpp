// The order of the kernel's virtual table. Replacement kernels compiled against the library index
// this table directly, so moving an entry is a break of the binary interface.
//
// In the Itanium C++ ABI a pointer to a virtual member function holds its vtable slot: the `ptr`
// word is 1 + the byte offset of the slot (ARM variants store the plain offset and flag virtual
// pointers in bit 0 of `adj`).
#include "kdrcore/kernel/EnhancedMathFunctions.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

namespace {

using K = EnhancedMathFunctions;

// The vtable slot of a virtual member function, or -1 if `f` is not virtual.
template <typename F> long slotOf(F f) {
    static_assert(sizeof(F) == 2 * sizeof(std::ptrdiff_t), "not an Itanium member pointer");
    std::ptrdiff_t words[2];
    std::memcpy(words, &f, sizeof words);
    long const slotSize = static_cast<long>(sizeof(void *));
#if defined(__arm__) || defined(__aarch64__)
    if ((words[1] & 1) == 0)
        return -1;
    return static_cast<long>(words[0]) / slotSize;
#else
    if ((words[0] & 1) == 0)
        return -1;
    return static_cast<long>(words[0] - 1) / slotSize;
#endif
}

// Reaches the protected hooks, and appends one virtual operation: the first slot after the base
// table, which shows where the destructor's entries end.
class Probe : public EnhancedMathFunctions {
public:
    static long refSlot() { return slotOf(&Probe::ref); }
    static long unrefSlot() { return slotOf(&Probe::unref); }
    static long appendedSlot() { return slotOf(&Probe::appended); }
    virtual void appended() const {}
};

struct Entry {
    char const * name;
    long slot;
};

#define KDR_SLOT(name, type)                                                                       \
    { #name, slotOf(static_cast <type>(&K::name)) }

TEST(KernelTable, OperationsKeepTheirPublishedOrder) {
    Entry const table[] = {
        KDR_SLOT(getMat4fCopy, float * (K::*)(float const *) const),
        KDR_SLOT(copyMat4fTo, void(K::*)(float *, float const *) const),
        KDR_SLOT(copyVec3fTo, void(K::*)(float *, float const *) const),
        KDR_SLOT(cross, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(setIdentity, void(K::*)(float *) const),
        KDR_SLOT(setZero, void(K::*)(float *) const),
        KDR_SLOT(addMatrices, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(subMatrices, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(multMatrices, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(multMatrixVec3f, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(multMatrixVec4f, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(multMatrixScalar, void(K::*)(float *, float const *, float) const),
        KDR_SLOT(inverseMatrix, bool(K::*)(float *, float const *) const),
        KDR_SLOT(neg, void(K::*)(float *, float const *) const),
        KDR_SLOT(transpose, void(K::*)(float *, float const *) const),
        KDR_SLOT(abs, void(K::*)(float *, float const *) const),
        KDR_SLOT(det4, float(K::*)(float const *) const),
        KDR_SLOT(setScale, void(K::*)(float *, float const *) const),
        KDR_SLOT(setTranslate, void(K::*)(float *, float const *) const),
        KDR_SLOT(setRotate, void(K::*)(float *, float const *) const),
        KDR_SLOT(setRotate, void(K::*)(float *, float const *, float) const),
        KDR_SLOT(setProjection, void(K::*)(float *, float const *, float, float const *) const),
        KDR_SLOT(det3, float(K::*)(float const *) const),
        KDR_SLOT(multAffineMatrices, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(multAffineMatrixVec3f, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(multAffineMatrixVec3fAsDir,
                 void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(multAffineColRow, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(transposeAffine, void(K::*)(float *, float const *) const),
        KDR_SLOT(multLeftByRotate, void(K::*)(float *, float const *, float const *, float) const),
        KDR_SLOT(multRightByRotate, void(K::*)(float *, float const *, float const *, float) const),
        KDR_SLOT(multLeftByRotateX, void(K::*)(float *, float) const),
        KDR_SLOT(multRightByRotateX, void(K::*)(float *, float) const),
        KDR_SLOT(multLeftByRotateY, void(K::*)(float *, float) const),
        KDR_SLOT(multRightByRotateY, void(K::*)(float *, float) const),
        KDR_SLOT(multLeftByRotateZ, void(K::*)(float *, float) const),
        KDR_SLOT(multRightByRotateZ, void(K::*)(float *, float) const),
        KDR_SLOT(multLeftByTranslate, void(K::*)(float *, float const *) const),
        KDR_SLOT(multRightByTranslate, void(K::*)(float *, float const *) const),
        KDR_SLOT(multLeftByScale, void(K::*)(float *, float const *) const),
        KDR_SLOT(multRightByScale, void(K::*)(float *, float const *) const),
        KDR_SLOT(inverse3, bool(K::*)(float *, float const *) const),
        KDR_SLOT(inverseAffine, bool(K::*)(float *, float const *) const),
        KDR_SLOT(inverseScale, bool(K::*)(float *) const),
        KDR_SLOT(inverseScale, bool(K::*)(float *, float const *) const),
        KDR_SLOT(inverseTranslate, bool(K::*)(float *) const),
        KDR_SLOT(inverseTranslate, bool(K::*)(float *, float const *) const),
        KDR_SLOT(inverseRotate, bool(K::*)(float *, float const *) const),
        KDR_SLOT(inverseRotateAndTr, bool(K::*)(float *, float const *) const),
        KDR_SLOT(addQuaternions, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(subQuaternions, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(multQuaternions, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(divQuaternionsU, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(conjugateQuaternion, void(K::*)(float *, float const *) const),
        KDR_SLOT(inverseQuaternion, void(K::*)(float *, float const *) const),
        KDR_SLOT(inverseQuaternionU, void(K::*)(float *, float const *) const),
        KDR_SLOT(applyQuatOn, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(dotQuaternions, void(K::*)(float *, float const *, float const *) const),
        KDR_SLOT(quaternionSLERP, void(K::*)(float *, float const *, float const *, float) const),
        KDR_SLOT(quaternionLERP, void(K::*)(float *, float const *, float const *, float) const),
        KDR_SLOT(axisToQuaternion, void(K::*)(float *, float const *, float) const),
        KDR_SLOT(axisToQuaternionU, void(K::*)(float *, float const *, float) const),
        KDR_SLOT(quaternionToAxis, void(K::*)(float *, float *, float const *) const),
        KDR_SLOT(quaternionToMatrix, void(K::*)(float *, float const *) const),
        KDR_SLOT(RotMatrixToQuaternion, int(K::*)(float *, float const *) const),
        KDR_SLOT(eulerToQuaternion, void(K::*)(float *, float const *) const),
        KDR_SLOT(quaternionToEuler, void(K::*)(float *, float const *) const),
        KDR_SLOT(eulerToMatrix, void(K::*)(float *, float const *) const),
        KDR_SLOT(matrixToEuler, int(K::*)(float *, float const *) const),
        KDR_SLOT(axisToMatrix, void(K::*)(float *, float const *, float) const),
        KDR_SLOT(matrixToAxis, int(K::*)(float *, float *, float const *) const),
        KDR_SLOT(invSqrt, float(K::*)(float, int) const),
        KDR_SLOT(invSqrt, float(K::*)(float) const),
        KDR_SLOT(msqrt, float(K::*)(float, int) const),
        KDR_SLOT(msqrt, float(K::*)(float) const),
        KDR_SLOT(jacobi3, void(K::*)(float *, float(*)[3], int &, float const *) const),
        {"ref", Probe::refSlot()},
        {"unref", Probe::unrefSlot()},
    };
    long const count = static_cast<long>(sizeof table / sizeof table[0]);
    ASSERT_EQ(count, 77);
    for (long i = 0; i < count; ++i)
        EXPECT_EQ(table[i].slot, i) << table[i].name;

    // The virtual destructor comes last, in its two slots (complete and deleting): nothing of the
    // base table follows it.
    EXPECT_EQ(Probe::appendedSlot(), count + 2);

    // The arithmetic outside the table stays non-virtual.
    EXPECT_EQ(slotOf(&K::det2), -1);
    EXPECT_EQ(slotOf(static_cast<double (K::*)(float const *, float const *, float const *) const>(
                  &K::det3)),
              -1);
    EXPECT_EQ(slotOf(&K::dot3), -1);
    EXPECT_EQ(slotOf(&K::factor), -1);
}

#undef KDR_SLOT

} // namespace
