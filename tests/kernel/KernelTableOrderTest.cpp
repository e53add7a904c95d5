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
#include <utility>

namespace {

using K = EnhancedMathFunctions;

// The vtable slot of a virtual member function, or -1 if `f` is not virtual.
template <typename F> long slotOf(F f) {
    static_assert(sizeof(F) == 2 * sizeof(std::ptrdiff_t), "not an Itanium member pointer");
    std::ptrdiff_t words[2];
    std::memcpy(words, &f, sizeof words);
    long const slotSize = static_cast<long>(sizeof(void *));
#if defined(__arm__) || defined(__aarch64__)
    return (words[1] & 1) == 0 ? -1 : static_cast<long>(words[0]) / slotSize;
#else
    return (words[0] & 1) == 0 ? -1 : static_cast<long>(words[0] - 1) / slotSize;
#endif
}

// Reaches the protected hooks, and appends one virtual operation: the first slot after the base
// table, which shows where the destructor's entries end.
struct Probe : EnhancedMathFunctions {
    using EnhancedMathFunctions::ref;
    using EnhancedMathFunctions::unref;
    virtual void appended() const {}
};

// Overloaded names are picked by their signature.
// clang-format off
using Det = float (K::*)(float const *) const;
using Dst = void (K::*)(float *, float const *) const;
using Dst3 = void (K::*)(float *, float const *, float) const;
using Inv1 = bool (K::*)(float *) const;
using Inv2 = bool (K::*)(float *, float const *) const;
using Sqrt1 = float (K::*)(float) const;
using Sqrt2 = float (K::*)(float, int) const;
#define E(name) {#name, slotOf(&K::name)}
#define P(name) {#name, slotOf(&Probe::name)}
#define O(name, type) {#name " " #type, slotOf(static_cast<type>(&K::name))}
// clang-format on

TEST(KernelTable, OperationsKeepTheirPublishedOrder) {
    // In slot order.
    // clang-format off
    std::pair<char const *, long> const table[] = {
        E(getMat4fCopy), E(copyMat4fTo), E(copyVec3fTo), E(cross), E(setIdentity), E(setZero),
        E(addMatrices), E(subMatrices), E(multMatrices), E(multMatrixVec3f), E(multMatrixVec4f),
        E(multMatrixScalar), E(inverseMatrix), E(neg), E(transpose), E(abs), E(det4), E(setScale),
        E(setTranslate), O(setRotate, Dst), O(setRotate, Dst3), E(setProjection), O(det3, Det),
        E(multAffineMatrices), E(multAffineMatrixVec3f), E(multAffineMatrixVec3fAsDir),
        E(multAffineColRow), E(transposeAffine), E(multLeftByRotate), E(multRightByRotate),
        E(multLeftByRotateX), E(multRightByRotateX), E(multLeftByRotateY), E(multRightByRotateY),
        E(multLeftByRotateZ), E(multRightByRotateZ), E(multLeftByTranslate),
        E(multRightByTranslate), E(multLeftByScale), E(multRightByScale), E(inverse3),
        E(inverseAffine), O(inverseScale, Inv1), O(inverseScale, Inv2), O(inverseTranslate, Inv1),
        O(inverseTranslate, Inv2), E(inverseRotate), E(inverseRotateAndTr), E(addQuaternions),
        E(subQuaternions), E(multQuaternions), E(divQuaternionsU), E(conjugateQuaternion),
        E(inverseQuaternion), E(inverseQuaternionU), E(applyQuatOn), E(dotQuaternions),
        E(quaternionSLERP), E(quaternionLERP), E(axisToQuaternion), E(axisToQuaternionU),
        E(quaternionToAxis), E(quaternionToMatrix), E(RotMatrixToQuaternion), E(eulerToQuaternion),
        E(quaternionToEuler), E(eulerToMatrix), E(matrixToEuler), E(axisToMatrix), E(matrixToAxis),
        O(invSqrt, Sqrt2), O(invSqrt, Sqrt1), O(msqrt, Sqrt2), O(msqrt, Sqrt1), E(jacobi3), P(ref),
        P(unref),
    };
    // clang-format on
    long const count = static_cast<long>(sizeof table / sizeof table[0]);
    ASSERT_EQ(count, 77);
    for (long i = 0; i < count; ++i)
        EXPECT_EQ(table[i].second, i) << table[i].first;
    // The virtual destructor comes last, in its two slots (complete and deleting): no other
    // virtual member, det2, dot3, det3 of three vectors or factor among them, follows.
    EXPECT_EQ(slotOf(&Probe::appended), count + 2);
}

#undef E
#undef O
#undef P

} // namespace
