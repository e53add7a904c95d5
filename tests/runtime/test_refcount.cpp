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
template <class T> class CountedPtr : public CountedPtrBase {
public:
    explicit CountedPtr(T * object) : m_object(object) { ref(m_object); }
    CountedPtr(const CountedPtr & other) : CountedPtrBase(), m_object(other.m_object) {
        ref(m_object);
    }
    CountedPtr & operator=(const CountedPtr &) = delete;
    ~CountedPtr() { unref(m_object); }

private:
    T * m_object;
};

} // namespace

TEST(MultiRefObject, CountStartsAtZeroAndUnrefDeletesOnlyOnTheStepToZero) {
    int deaths = 0;
    const Probe * p = new Probe(&deaths);
    EXPECT_EQ(p->getRefCount(), 0);
    p->ref();
    p->ref();
    EXPECT_EQ(p->getRefCount(), 2);
    p->unref();
    EXPECT_EQ(deaths, 0);
    p->unref(); // 1 -> 0: the derived destructor runs, once
    EXPECT_EQ(deaths, 1);

    deaths = 0;
    Probe * q = new Probe(&deaths);
    q->unref(); // 0 -> -1 deletes nothing
    EXPECT_EQ(q->getRefCount(), -1);
    q->ref(); // -1 -> 0 is an increment: no delete either
    EXPECT_EQ(q->getRefCount(), 0);
    q->ref();
    q->unrefNoDelete(); // 1 -> 0 without delete: the object is handed on alive
    EXPECT_EQ(q->getRefCount(), 0);
    EXPECT_EQ(deaths, 0);
    delete q;
    EXPECT_EQ(deaths, 1);
}

template <class Guard> class RefUnrefGuards : public ::testing::Test {};
using RefUnrefGuardTypes = ::testing::Types<AutoRefUnref, MultiRefObject::AutoRefUnref>;
TYPED_TEST_SUITE(RefUnrefGuards, RefUnrefGuardTypes);

TYPED_TEST(RefUnrefGuards, IfReferencedDecidesByTheCountBeforeTheIncrement) {
    using Guard = TypeParam;
    int deaths = 0;
    Probe * p = new Probe(&deaths);
    {
        // Count 0 resolves to e_noDelete: the scope borrows the object and leaves it alive.
        Guard g(p, Guard::e_deleteIfReferenced);
        EXPECT_EQ(p->getRefCount(), 1);
    }
    EXPECT_EQ(p->getRefCount(), 0);
    EXPECT_EQ(deaths, 0);

    p->ref();
    {
        Guard g(p, Guard::e_deleteIfReferenced); // count 1 resolves to e_delete
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
}

TYPED_TEST(RefUnrefGuards, ExplicitModesNullAndModesOutsideTheTable) {
    using Guard = TypeParam;
    int deaths = 0;
    Probe * p = new Probe(&deaths);
    { Guard g(p, Guard::e_noDelete); }
    EXPECT_EQ(p->getRefCount(), 0);
    {
        // A resolved mode is fixed: a reference taken meanwhile does not turn e_noDelete into
        // a delete, nor does the count reaching 0 at the end.
        Guard g(p, Guard::e_noDelete);
        p->ref();
        p->unrefNoDelete();
    }
    EXPECT_EQ(deaths, 0);
    {
        // A mode outside the table takes a reference and never gives it back.
        Guard g(p, static_cast<typename Guard::e_deleteMode>(7));
    }
    EXPECT_EQ(p->getRefCount(), 1);
    EXPECT_EQ(deaths, 0);
    p->unrefNoDelete();
    {
        Guard g(p, Guard::e_delete); // 0 -> 1 -> 0: this scope ends the object
    }
    EXPECT_EQ(deaths, 1);

    for (int mode = 0; mode < 4; ++mode) {
        Guard g(nullptr, static_cast<typename Guard::e_deleteMode>(mode)); // must not crash
    }
}

TEST(AutoUnref, TakesOverACountedReference) {
    int deaths = 0;
    Probe * p = new Probe(&deaths);
    {
        AutoUnref g(p, AutoUnref::e_deleteIfReferenced); // count 0: resolves to e_noDelete
        EXPECT_EQ(p->getRefCount(), 0);
    }
    EXPECT_EQ(p->getRefCount(), -1);
    EXPECT_EQ(deaths, 0);

    p->ref();
    p->ref(); // count 1
    { AutoUnref g(p, AutoUnref::e_noDelete); }
    EXPECT_EQ(p->getRefCount(), 0);
    EXPECT_EQ(deaths, 0);

    p->ref();
    {
        AutoUnref g(p, AutoUnref::e_deleteIfReferenced); // count 1: resolves to e_delete
        p->ref(); // fixed at construction: the later count does not matter
    }
    EXPECT_EQ(p->getRefCount(), 1);
    EXPECT_EQ(deaths, 0);
    { AutoUnref g(p, AutoUnref::e_deleteIfReferenced); }
    EXPECT_EQ(deaths, 1);

    deaths = 0;
    Probe * q = new Probe(&deaths);
    q->ref();
    { AutoUnref g(q, AutoUnref::e_delete); }
    EXPECT_EQ(deaths, 1);

    deaths = 0;
    Probe * r = new Probe(&deaths);
    r->ref();
    {
        AutoUnref g(r, static_cast<AutoUnref::e_deleteMode>(9)); // outside the table: nothing
    }
    EXPECT_EQ(r->getRefCount(), 1);
    for (int mode = 0; mode < 4; ++mode) {
        AutoUnref g(nullptr, static_cast<AutoUnref::e_deleteMode>(mode));
    }
    delete r;
    EXPECT_EQ(deaths, 1);
}

TEST(CountedPtrBase, CountsOwnersAndToleratesNull) {
    int deaths = 0;
    {
        CountedPtr<Probe> a(new Probe(&deaths));
        { CountedPtr<Probe> b(a); }
        EXPECT_EQ(deaths, 0); // a still holds its reference
    }
    EXPECT_EQ(deaths, 1); // the last owner ended the object
    {
        CountedPtr<Probe> n(nullptr);
        CountedPtr<Probe> m(n);
    }
    EXPECT_EQ(deaths, 1);
}
