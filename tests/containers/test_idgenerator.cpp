// Tests of IDGenerator: the documented sequences, then long random runs against a model that
// keeps the free ids as a set.
#include "kdrcore/containers/IDGenerator.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <set>
#include <vector>

namespace {

std::vector<int> next(IDGenerator & g, int count) {
    std::vector<int> ids;
    for (int i = 0; i < count; ++i)
        ids.push_back(g.generateID());
    return ids;
}

TEST(IDGenerator, FreedIdsAreReusedLowestFirst) {
    IDGenerator g;
    EXPECT_EQ(next(g, 3), (std::vector<int>{1, 2, 3}));
    EXPECT_TRUE(g.freeID(2));
    EXPECT_FALSE(g.freeID(2)); // free already
    EXPECT_EQ(next(g, 2), (std::vector<int>{2, 4}));
    EXPECT_TRUE(g.freeID(4)); // grows the range that starts at 5 downward
    EXPECT_TRUE(g.freeID(1));
    EXPECT_EQ(next(g, 3), (std::vector<int>{1, 4, 5}));

    // Ranges grow without merging: after 3, 4, 5 come back, [3, 6) touches [6, ...), where 6
    // is free already and must not be counted twice.
    EXPECT_TRUE(g.freeID(3) && g.freeID(4) && g.freeID(5));
    EXPECT_FALSE(g.freeID(6));
    EXPECT_EQ(next(g, 5), (std::vector<int>{3, 4, 5, 6, 7}));

    // Negative ids and 2147483647 are refused; 0 is accepted and then handed out.
    IDGenerator z;
    EXPECT_FALSE(z.freeID(-1) || z.freeID(INT_MAX));
    EXPECT_TRUE(z.freeID(0));
    EXPECT_EQ(next(z, 2), (std::vector<int>{0, 1}));
}

TEST(IDGenerator, RequestedIdsSplitAndShrinkRanges) {
    IDGenerator g;
    EXPECT_EQ(g.generateID(10), 10); // splits the full range
    EXPECT_EQ(g.generateID(10), 1);  // taken: the lowest free id instead
    EXPECT_EQ(g.generateID(0), 2);
    EXPECT_EQ(g.generateID(-5), 3);
    EXPECT_EQ(next(g, 7), (std::vector<int>{4, 5, 6, 7, 8, 9, 11}));
    next(g, 19); // up to 30

    // The first and the last id of a range [20, 25), then a split and an emptied piece.
    for (int id = 20; id < 25; ++id)
        ASSERT_TRUE(g.freeID(id));
    EXPECT_EQ(g.generateID(20), 20);
    EXPECT_EQ(g.generateID(24), 24);
    EXPECT_EQ(g.generateID(22), 22); // [21, 22) and [23, 24)
    EXPECT_EQ(g.generateID(23), 23);
    EXPECT_EQ(next(g, 2), (std::vector<int>{21, 31}));

    // The top id can be taken and given back; 2147483647 is never free.
    EXPECT_EQ(g.generateID(INT_MAX - 1), INT_MAX - 1);
    EXPECT_TRUE(g.freeID(INT_MAX - 1));
    EXPECT_EQ(g.generateID(INT_MAX - 1), INT_MAX - 1);
    EXPECT_EQ(g.generateID(INT_MAX), 32);
}

TEST(IDGenerator, CopiesAreIndependentAndClearStartsOver) {
    IDGenerator a;
    next(a, 6);
    a.freeID(2);
    a.freeID(4);
    IDGenerator b(a), c;
    c = a;
    c = c; // self-assignment changes nothing
    EXPECT_TRUE(b.freeID(1));
    EXPECT_EQ(next(a, 3), (std::vector<int>{2, 4, 7}));
    EXPECT_EQ(next(b, 4), (std::vector<int>{1, 2, 4, 7}));
    EXPECT_EQ(next(c, 3), (std::vector<int>{2, 4, 7}));
    c.clear(); // every id free again
    EXPECT_FALSE(c.freeID(5));
    EXPECT_EQ(next(c, 2), (std::vector<int>{1, 2}));
}

// The free ids: below m_top those in m_freeBelow, from m_top on all but those in m_takenAbove.
// Negative ids and INT_MAX are never free; 0 is not free at the start.
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
            while (m_takenAbove.erase(++m_top) != 0) {
            }
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
        for (int step = 0; step < 20000; ++step) {
            const int o = op(rng);
            if (o < 40) {
                ASSERT_EQ(g.generateID(), model.take(-1)) << "run " << run << " step " << step;
            } else if (o < 60) {
                const int r = o == 59 ? INT_MAX - 1 - (step & 1) : id(rng);
                ASSERT_EQ(g.generateID(r), model.take(r)) << "run " << run << " step " << step;
            } else if (o < 98) {
                const int f = o == 97 ? INT_MAX : id(rng);
                ASSERT_EQ(g.freeID(f), model.give(f)) << "run " << run << " step " << step;
            } else if (o == 98) {
                copy = g;
                copyModel = model;
            } else {
                // The copy went its own way since it was taken: drive it and compare.
                for (int k = 0; k < 50; ++k)
                    ASSERT_EQ(copy.generateID(), copyModel.take(-1));
                const int f = id(rng);
                ASSERT_EQ(copy.freeID(f), copyModel.give(f));
            }
        }
        for (int k = 0; k < 3 * window; ++k)
            ASSERT_EQ(g.generateID(), model.take(-1)) << "run " << run << " drain " << k;
    }
}

} // namespace
