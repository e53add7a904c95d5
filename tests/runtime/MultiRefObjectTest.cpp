// Tests of MultiRefObject, the scope guards and CountedPtrBase.
#include "kdrcore/runtime/MultiRefObject.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

// Counts its destructions, so that a test sees whether and how often the count ended it.
class Probe : public MultiRefObject {
public:
    explicit Probe(int * deaths) : m_deaths(deaths) {}
    ~Probe() override { ++*m_deaths; }

private:
    int * m_deaths;
};

// What a client's smart pointer reaches of CountedPtrBase.
struct Counted : CountedPtrBase {
    using CountedPtrBase::ref;
    using CountedPtrBase::unref;
};

// Hosts may copy the guards, as the interface declares no copy operations of its own.
static_assert(std::is_copy_constructible_v<AutoRefUnref> && std::is_copy_assignable_v<AutoUnref> &&
                  std::is_copy_constructible_v<MultiRefObject::AutoRefUnref>,
              "the scope guards are copyable");

} // namespace

TEST(MultiRefObject, UnrefDeletesOnlyOnTheStepToZero) {
    int deaths = 0;
    Probe const * p = new Probe(&deaths);
    EXPECT_EQ(p->getRefCount(), 0);
    p->ref();
    p->unref(); // 1 -> 0: the derived destructor runs, once
    EXPECT_EQ(deaths, 1);

    Probe * q = new Probe(&deaths);
    q->unref(); // 0 -> -1 deletes nothing
    EXPECT_EQ(q->getRefCount(), -1);
    q->ref(); // -1 -> 0 is an increment: no delete either
    q->ref();
    q->unrefNoDelete(); // 1 -> 0 without delete: the object is handed on alive
    EXPECT_TRUE(q->getRefCount() == 0 && deaths == 1);
    delete q; // deaths: 2

    Counted c;
    c.ref(nullptr); // null: nothing
    c.unref(nullptr);
    c.ref(q = new Probe(&deaths));
    EXPECT_EQ(q->getRefCount(), 1);
    c.unref(q); // the step to zero ends the object
    EXPECT_EQ(deaths, 3);
}

// AutoRefUnref (both classes) counts a reference of its own; AutoUnref takes over one that the
// caller counted. Mode 2 is resolved at construction from the count before any increment.
template <class Guard> class Guards : public ::testing::Test {};
using GuardTypes = ::testing::Types<AutoRefUnref, MultiRefObject::AutoRefUnref, AutoUnref>;
TYPED_TEST_SUITE(Guards, GuardTypes);

TYPED_TEST(Guards, ModesAreResolvedAtConstruction) {
    using Guard = TypeParam;
    using Mode = typename Guard::e_deleteMode;
    int const own = std::is_same_v<Guard, AutoUnref> ? 0 : 1; // the guard's own reference
    int deaths = 0;
    Probe * p = new Probe(&deaths);
    auto setCount = [p](int count) { // as if other owners came or went
        while (p->getRefCount() != count)
            p->getRefCount() < count ? p->ref() : p->unrefNoDelete();
    };
    {
        Guard g(p, Guard::e_deleteIfReferenced); // count 0: resolves to e_noDelete
        EXPECT_EQ(p->getRefCount(), own);
    }
    EXPECT_EQ(p->getRefCount(), own - 1); // alive; -1 after AutoUnref
    setCount(1);                          // one owner besides the guard
    {
        Guard g(p, Guard::e_noDelete);
        p->ref(); // references taken meanwhile change nothing of the resolved mode
        p->unref();
    }
    EXPECT_EQ(p->getRefCount(), own);
    setCount(1);
    {
        Guard g(p, static_cast<Mode>(7)); // outside the table: the guard ends doing nothing
    }
    EXPECT_EQ(p->getRefCount(), 1 + own);
    setCount(1);
    {
        Guard g(p, Guard::e_deleteIfReferenced); // count 1 (with AutoRefUnref's own 2)
        EXPECT_EQ(p->getRefCount(), 1 + own);
        for (int i = own; i > 0; --i)
            p->unref(); // the other owner goes: the guard holds the last reference
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
    for (int mode = 0; mode < 4; ++mode)
        Guard g(nullptr, static_cast<Mode>(mode)); // does nothing
}
