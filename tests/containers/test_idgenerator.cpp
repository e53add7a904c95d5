// Tests of IDGenerator: the documented sequences, then long random runs against a model that
// keeps the set of ids that are not free.
#include "kdrcore/containers/IDGenerator.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <set>

namespace {

TEST(IDGenerator, HandsOutTheLowestFreeIdAndReusesFreedOnes) {
    IDGenerator g;
    EXPECT_EQ(g.generateID(), 1);
    EXPECT_EQ(g.generateID(), 2);
    EXPECT_EQ(g.generateID(), 3);
    EXPECT_TRUE(g.freeID(2));
    EXPECT_FALSE(g.freeID(2)); // free already
    EXPECT_EQ(g.generateID(), 2);
    EXPECT_EQ(g.generateID(), 4);

    // Freeing just below the range that starts at 5 grows it downward.
    EXPECT_TRUE(g.freeID(4));
    EXPECT_EQ(g.generateID(), 4);

    // Two holes: the lowest comes first, then the other, then the range above.
    IDGenerator h;
    for (int i = 1; i <= 4; ++i)
        h.generateID();
    EXPECT_TRUE(h.freeID(1));
    EXPECT_TRUE(h.freeID(3));
    EXPECT_EQ(h.generateID(), 1);
    EXPECT_EQ(h.generateID(), 3);
    EXPECT_EQ(h.generateID(), 5);

    // Negative ids are refused; 0 is accepted and then handed out like any other id.
    IDGenerator z;
    EXPECT_FALSE(z.freeID(-1));
    EXPECT_FALSE(z.freeID(INT_MAX)); // no range can hold it
    EXPECT_TRUE(z.freeID(0));
    EXPECT_FALSE(z.freeID(0));
    EXPECT_EQ(z.generateID(), 0);
    EXPECT_EQ(z.generateID(), 1);
}

TEST(IDGenerator, RequestedIdsSplitAndShrinkRanges) {
    IDGenerator g;
    EXPECT_EQ(g.generateID(10), 10); // splits the full range
    EXPECT_EQ(g.generateID(10), 1);  // taken: the lowest free id instead
    for (int expected = 2; expected <= 9; ++expected)
        EXPECT_EQ(g.generateID(), expected);
    EXPECT_EQ(g.generateID(), 11);
    EXPECT_EQ(g.generateID(0), 12);
    EXPECT_EQ(g.generateID(-5), 13);

    // First and last id of a range [20, 25): the rest of the range stays free either way.
    IDGenerator h;
    for (int i = 1; i <= 30; ++i)
        h.generateID();
    for (int id = 20; id < 25; ++id)
        ASSERT_TRUE(h.freeID(id));
    EXPECT_EQ(h.generateID(20), 20);
    EXPECT_EQ(h.generateID(24), 24);
    EXPECT_EQ(h.generateID(22), 22); // splits [21, 24) into [21, 22) and [23, 24)
    EXPECT_EQ(h.generateID(23), 23); // empties the upper piece
    EXPECT_EQ(h.generateID(), 21);
    EXPECT_EQ(h.generateID(), 31);

    // The top id of the full range can be taken and given back.
    IDGenerator t;
    EXPECT_EQ(t.generateID(INT_MAX - 1), INT_MAX - 1);
    EXPECT_EQ(t.generateID(INT_MAX - 1), 1);
    EXPECT_TRUE(t.freeID(INT_MAX - 1));
    EXPECT_EQ(t.generateID(INT_MAX - 1), INT_MAX - 1);
    EXPECT_EQ(t.generateID(INT_MAX), 2); // never free
}

TEST(IDGenerator, FreeingAnIdHeldByATouchingRangeIsRefused) {
    // Ranges grow without merging: after 1..5 are given out and 3, 4, 5 come back, the range
    // [3, 6) touches [6, ...). 6 is free in the second range and must not be counted twice.
    IDGenerator g;
    for (int i = 1; i <= 5; ++i)
        g.generateID();
    EXPECT_TRUE(g.freeID(3));
    EXPECT_TRUE(g.freeID(4));
    EXPECT_TRUE(g.freeID(5));
    EXPECT_FALSE(g.freeID(6));
    for (int expected = 3; expected <= 8; ++expected)
        EXPECT_EQ(g.generateID(), expected);
    EXPECT_FALSE(g.freeID(9));
    EXPECT_TRUE(g.freeID(8));
    EXPECT_EQ(g.generateID(), 8);
}

TEST(IDGenerator, CopiesAreIndependentAndClearStartsOver) {
    IDGenerator a;
    for (int i = 0; i < 6; ++i)
        a.generateID();
    a.freeID(2);
    a.freeID(4);
    IDGenerator b(a);
    EXPECT_EQ(a.generateID(), 2);
    EXPECT_EQ(b.generateID(), 2);
    EXPECT_TRUE(b.freeID(1));
    EXPECT_EQ(a.generateID(), 4);
    EXPECT_EQ(b.generateID(), 1);
    EXPECT_EQ(b.generateID(), 4);
    EXPECT_EQ(a.generateID(), 7);

    IDGenerator c;
    c = a;
    c = c; // self-assignment changes nothing
    EXPECT_EQ(c.generateID(), 8);
    EXPECT_EQ(a.generateID(), 8);
    EXPECT_TRUE(c.freeID(3));
    EXPECT_FALSE(a.freeID(9));
    EXPECT_EQ(c.generateID(), 3);
    EXPECT_EQ(a.generateID(), 9);

    // clear: every id free again, the ids in use are forgotten.
    c.clear();
    EXPECT_FALSE(c.freeID(5));
    EXPECT_EQ(c.generateID(), 1);
    EXPECT_EQ(c.generateID(), 2);
}

// The free ids as a set: below m_top those in m_freeBelow, from m_top on all but those in
// m_takenAbove. Negative ids and INT_MAX are never free; 0 is not free at the start.
class IdModel {
public:
    bool isFree(int id) const {
        if (id < 0 || id == INT_MAX)
            return false;
        return id < m_top ? m_freeBelow.count(id) != 0 : m_takenAbove.count(id) == 0;
    }
    int take(int requested) {
        const int id = isFree(requested)     ? requested
                       : m_freeBelow.empty() ? m_top
                                             : *m_freeBelow.begin();
        if (id < m_top) {
            m_freeBelow.erase(id);
        } else if (id > m_top) {
            m_takenAbove.insert(id);
        } else {
            ++m_top;
            while (m_takenAbove.erase(m_top) != 0)
                ++m_top;
        }
        return id;
    }
    bool give(int id) {
        if (id < 0 || id == INT_MAX || isFree(id))
            return false;
        if (id < m_top)
            m_freeBelow.insert(id);
        else
            m_takenAbove.erase(id);
        return true;
    }

private:
    std::set<int> m_freeBelow;
    std::set<int> m_takenAbove;
    int m_top = 1;
};

TEST(IDGenerator, AgreesWithASetModelOverLongRandomRuns) {
    std::mt19937 rng(2024);
    for (int run = 0; run < 8; ++run) {
        const int window = 8 << run; // from crowded to sparse
        std::uniform_int_distribution<int> op(0, 99), id(-2, window);
        IDGenerator g, copy;
        IdModel model, copyModel;
        bool haveCopy = false;
        for (int step = 0; step < 20000; ++step) {
            const int o = op(rng);
            if (o < 40) {
                ASSERT_EQ(g.generateID(), model.take(-1)) << "run " << run << " step " << step;
            } else if (o < 60) {
                int r = id(rng);
                if (o == 59)
                    r = INT_MAX - 1 - (step & 1);
                ASSERT_EQ(g.generateID(r), model.take(r))
                    << "run " << run << " step " << step << " requested " << r;
            } else if (o < 98) {
                const int f = o == 97 ? INT_MAX : id(rng);
                ASSERT_EQ(g.freeID(f), model.give(f))
                    << "run " << run << " step " << step << " freed " << f;
            } else if (!haveCopy) {
                copy = g;
                copyModel = model;
                haveCopy = true;
            } else {
                // The copy went its own way: drive it a little and compare.
                for (int k = 0; k < 50; ++k)
                    ASSERT_EQ(copy.generateID(), copyModel.take(-1));
                const int f = id(rng);
                ASSERT_EQ(copy.freeID(f), copyModel.give(f));
                haveCopy = false;
            }
        }
        // Drain a stretch: the generator and the model agree on the order of reuse.
        for (int k = 0; k < 3 * window; ++k)
            ASSERT_EQ(g.generateID(), model.take(-1)) << "run " << run << " drain " << k;
    }
}

} // namespace
