// Tests of MultiRefObject, the scope guards and CountedPtrBase.
#include "kdrcore/runtime/MultiRefObject.h"

#include <gtest/gtest.h>

namespace {

// Counts its destructions, so that a test sees whether and how often the count ended it.
class Probe : public MultiRefObject {
public:
    explicit Probe(int * deaths) : m_deaths(deaths) {}
    ~Probe() override { ++*m_deaths; }

private:
    int * m_deaths;
};

// The smart pointer a client would build on CountedPtrBase.
class ProbePtr : public CountedPtrBase {
public:
    explicit ProbePtr(Probe * object) : m_object(object) { ref(m_object); }
    ProbePtr(const ProbePtr & other) : CountedPtrBase(), m_object(other.m_object) { ref(m_object); }
    ProbePtr & operator=(const ProbePtr &) = delete;
    ~ProbePtr() { unref(m_object); }

private:
    Probe * m_object;
};

} // namespace

TEST(MultiRefObject, UnrefDeletesOnlyOnTheStepToZero) {
    int deaths = 0;
    const Probe * p = new Probe(&deaths);
    EXPECT_EQ(p->getRefCount(), 0);
    p->ref();
    p->ref();
    p->unref();
    EXPECT_EQ(deaths, 0);
    p->unref(); // 1 -> 0: the derived destructor runs, once
    EXPECT_EQ(deaths, 1);

    Probe * q = new Probe(&deaths);
    q->unref(); // 0 -> -1 deletes nothing
    EXPECT_EQ(q->getRefCount(), -1);
    q->ref(); // -1 -> 0 is an increment: no delete either
    q->ref();
    q->unrefNoDelete(); // 1 -> 0 without delete: the object is handed on alive
    EXPECT_EQ(q->getRefCount(), 0);
    EXPECT_EQ(deaths, 1);
    delete q;

    deaths = 0;
    {
        ProbePtr a(new Probe(&deaths));
        ProbePtr b(a);
        ProbePtr none(nullptr);
        ProbePtr noneCopy(none);
    }
    EXPECT_EQ(deaths, 1); // the last owner ended the object; the null owners did nothing
}

template <class Guard> class RefUnrefGuards : public ::testing::Test {};
using RefUnrefGuardTypes = ::testing::Types<AutoRefUnref, MultiRefObject::AutoRefUnref>;
TYPED_TEST_SUITE(RefUnrefGuards, RefUnrefGuardTypes);

TYPED_TEST(RefUnrefGuards, ModesAreResolvedAtConstruction) {
    using Guard = TypeParam;
    int deaths = 0;
    Probe * p = new Probe(&deaths);
    {
        Guard g(p, Guard::e_deleteIfReferenced); // count 0 before the increment: e_noDelete
        EXPECT_EQ(p->getRefCount(), 1);
    }
    EXPECT_EQ(p->getRefCount(), 0);
    {
        Guard g(p, Guard::e_noDelete);
        p->ref(); // references taken meanwhile change nothing of the resolved mode
        p->unrefNoDelete();
    }
    {
        // A mode outside the table: the reference taken is never given back.
        Guard g(p, static_cast<typename Guard::e_deleteMode>(7));
    }
    EXPECT_EQ(p->getRefCount(), 1);
    {
        Guard g(p, Guard::e_deleteIfReferenced); // count 1: e_delete
        EXPECT_EQ(p->getRefCount(), 2);
    }
    EXPECT_EQ(p->getRefCount(), 1);
    EXPECT_EQ(deaths, 0);
    {
        Guard g(p, Guard::e_deleteIfReferenced);
        p->unref(); // the other owner goes: the guard holds the last reference
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 1);
    for (int mode = 0; mode < 4; ++mode)
        Guard g(nullptr, static_cast<typename Guard::e_deleteMode>(mode)); // does nothing
}

TEST(AutoUnref, TakesOverACountedReference) {
    int deaths = 0;
    Probe * p = new Probe(&deaths);
    {
        AutoUnref g(p, AutoUnref::e_deleteIfReferenced); // count 0: resolves to e_noDelete
        EXPECT_EQ(p->getRefCount(), 0);                  // the count is not touched
    }
    EXPECT_EQ(p->getRefCount(), -1);
    p->ref();
    p->ref();
    {
        AutoUnref g(p, AutoUnref::e_noDelete); // 1 -> 0, alive
    }
    {
        AutoUnref g(p, static_cast<AutoUnref::e_deleteMode>(9)); // outside the table: nothing
    }
    EXPECT_EQ(p->getRefCount(), 0);
    p->ref();
    {
        AutoUnref g(p, AutoUnref::e_deleteIfReferenced); // count 1: resolves to e_delete
        p->ref();
    }
    EXPECT_EQ(p->getRefCount(), 1);
    EXPECT_EQ(deaths, 0);
    { AutoUnref g(p, AutoUnref::e_delete); }
    EXPECT_EQ(deaths, 1);
    for (int mode = 0; mode < 4; ++mode)
        AutoUnref g(nullptr, static_cast<AutoUnref::e_deleteMode>(mode));
}
