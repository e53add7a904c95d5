// The order of the kernel's virtual table. Replacement kernels compiled against the library index
// this table directly, so moving an entry is a break of the binary interface.
//
// In the Itanium C++ ABI a pointer to a virtual member function holds its vtable slot: the `ptr`
// word is 1 + the byte offset of the slot (ARM variants store the plain offset and flag virtual
// pointers in bit 0 of `adj`).
#include "support/KernelOperations.h"

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

TEST(KernelTable, OperationsKeepTheirPublishedOrder) {
    // The shared list is in slot order; overloads are picked by their signature.
    struct Entry {
        char const * name;
        long slot;
    };
#define KDR_SLOT(Ret, name, params, args)                                                          \
    {#name, slotOf(static_cast<Ret(K::*) params const>(&K::name))},
    Entry const table[] = {KDR_KERNEL_OPERATIONS(KDR_SLOT){"ref", slotOf(&Probe::ref)},
                           {"unref", slotOf(&Probe::unref)}};
#undef KDR_SLOT
    long const count = static_cast<long>(sizeof table / sizeof table[0]);
    ASSERT_EQ(count, 77);
    for (long i = 0; i < count; ++i)
        EXPECT_EQ(table[i].slot, i) << table[i].name;
    // The virtual destructor comes last, in its two slots (complete and deleting): no other
    // virtual member, det2, dot3, det3 of three vectors or factor among them, follows.
    EXPECT_EQ(slotOf(&Probe::appended), count + 2);
}

} // namespace
