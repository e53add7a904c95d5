// Tests of IDGenerator: the documented sequences, then long random runs against a model that
// keeps the free ids as a set.
#include "kdrcore/containers/IDGenerator.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <set>

namespace {

// One call on a generator: 'n' generateID(), 'r' generateID(arg), 'f' freeID(arg) (0 or 1),
// 'c' clear(), 'k' keep a copy, 'o' swap the generator with the copy kept.
struct Step {
    char op;
    int arg, expected;
};

TEST(IDGenerator, DocumentedSequences) {
    // clang-format off
    const Step steps[] = {
        {'n', 0, 1}, {'n', 0, 2}, {'n', 0, 3}, {'f', 2, 1}, {'f', 2, 0}, {'n', 0, 2}, {'n', 0, 4},
        {'f', 4, 1}, {'f', 1, 1}, {'n', 0, 1}, {'n', 0, 4}, {'n', 0, 5}, // 4 grows [5, ...) down
        // Ranges grow without merging: [3, 6) touches [6, ...), where 6 is free already.
        {'f', 3, 1}, {'f', 4, 1}, {'f', 5, 1}, {'f', 6, 0}, {'n', 0, 3}, {'r', 6, 6}, {'n', 0, 4},
        {'n', 0, 5}, {'n', 0, 7}, {'f', -1, 0},
        {'k', 0, 0}, {'f', 2, 1}, {'o', 0, 0}, {'n', 0, 8}, {'o', 0, 0}, {'n', 0, 2}, // copies
        {'c', 0, 0}, {'f', 5, 0}, {'f', 0, 1}, {'n', 0, 0}, {'n', 0, 1}, // clear: all free again
        // Requested ids: a split, a taken id gives the lowest instead, as do 0 and -5; then the
        // last id of [6, 10), a split of [6, 9) and the first id of the piece [8, 9).
        {'r', 10, 10}, {'r', 10, 2}, {'r', 0, 3}, {'r', -5, 4}, {'n', 0, 5}, {'r', 9, 9},
        {'r', 7, 7}, {'r', 8, 8}, {'n', 0, 6}, {'n', 0, 11},
        {'r', INT_MAX - 1, INT_MAX - 1}, {'f', INT_MAX - 1, 1}, {'r', INT_MAX - 1, INT_MAX - 1},
        {'r', INT_MAX, 12}};
    // clang-format on
    IDGenerator g, other;
    for (std::size_t i = 0; i < sizeof steps / sizeof steps[0]; ++i) {
        const Step & s = steps[i];
        if (s.op == 'k') {
            other = g;
        } else if (s.op == 'o') {
            IDGenerator kept(g);
            g = other;
            other = kept;
        } else if (s.op == 'c') {
            g.clear();
        } else {
            const int got = s.op == 'n'   ? g.generateID()
                            : s.op == 'r' ? g.generateID(s.arg)
                                          : static_cast<int>(g.freeID(s.arg));
            EXPECT_EQ(got, s.expected) << "step " << i;
        }
    }
}

TEST(IDGenerator, TheIdAboveTheFullRangeJoinsItsTop) {
    // A new generator's range is [1, 2147483647): 2147483647 = 1 + 0x7FFFFFFE is its end, so
    // freeing it grows the range at the top. It is then given out on request, and once only.
    IDGenerator fresh;
    EXPECT_TRUE(fresh.freeID(INT_MAX));
    EXPECT_FALSE(fresh.freeID(INT_MAX)); // free already
    EXPECT_EQ(fresh.generateID(INT_MAX), INT_MAX);
    EXPECT_EQ(fresh.generateID(INT_MAX), 1);

    // Exhausted: all of 1 to 2147483646 given out in order, the empty range left at the end.
    IDGenerator all;
    int last = 0;
    for (int k = 0; k < 0x7FFFFFFE; ++k)
        last = all.generateID();
    ASSERT_EQ(last, INT_MAX - 1);
    ASSERT_EQ(all.generateID(), -1);
    EXPECT_TRUE(all.freeID(INT_MAX));
    EXPECT_EQ(all.generateID(), INT_MAX);
    EXPECT_EQ(all.generateID(), -1);
    // 2147483647 is the last id there is; the empty range still takes it and the one below.
    EXPECT_TRUE(all.freeID(INT_MAX - 1) && all.freeID(INT_MAX));
    EXPECT_EQ(all.generateID(), INT_MAX - 1);
    EXPECT_EQ(all.generateID(), INT_MAX);
    EXPECT_EQ(all.generateID(), -1);
}

// The free ids: below m_top those in m_freeBelow, from m_top on all but those in m_takenAbove,
// and INT_MAX when m_maxFree. Negative ids are never free; 0 and INT_MAX are not free at the start.
class IdModel {
public:
    bool isFree(int id) const {
        if (id < 0)
            return false;
        if (id == INT_MAX)
            return m_maxFree;
        return id < m_top ? m_freeBelow.count(id) != 0 : m_takenAbove.count(id) == 0;
    }
    int take(int requested) {
        const int id = isFree(requested)     ? requested
                       : m_freeBelow.empty() ? m_top
                                             : *m_freeBelow.begin();
        if (id == INT_MAX)
            m_maxFree = false;
        else if (id < m_top)
            m_freeBelow.erase(id);
        else if (id > m_top)
            m_takenAbove.insert(id);
        else
            while (m_takenAbove.erase(++m_top) != 0) {
            }
        return id;
    }
    bool give(int id) {
        // INT_MAX joins a range only at its top, so only while INT_MAX - 1 is free. (The runs free
        // no other id near the top, where the same would hold.)
        if (id < 0 || isFree(id) || (id == INT_MAX && !isFree(INT_MAX - 1)))
            return false;
        if (id == INT_MAX)
            m_maxFree = true;
        else
            id < m_top ? (void)m_freeBelow.insert(id) : (void)m_takenAbove.erase(id);
        return true;
    }

private:
    std::set<int> m_freeBelow, m_takenAbove;
    int m_top = 1;
    bool m_maxFree = false;
};

TEST(IDGenerator, AgreesWithASetModelOverLongRandomRuns) {
    std::mt19937 rng(2024);
    for (int run = 0; run < 8; ++run) {
        const int window = 8 << run; // from crowded to sparse
        std::uniform_int_distribution<int> op(0, 99), id(-2, window);
        IDGenerator g;
        IdModel model;
        for (int step = 0; step < 20000; ++step) {
            const int o = op(rng);
            if (o < 40) {
                ASSERT_EQ(g.generateID(), model.take(-1)) << "run " << run << " step " << step;
            } else if (o < 60) {
                const int r = o == 59 ? INT_MAX - step % 3 : id(rng);
                ASSERT_EQ(g.generateID(r), model.take(r)) << "run " << run << " step " << step;
            } else {
                const int f = o == 99 ? INT_MAX : id(rng);
                ASSERT_EQ(g.freeID(f), model.give(f)) << "run " << run << " step " << step;
            }
        }
        for (int k = 0; k < 3 * window; ++k)
            ASSERT_EQ(g.generateID(), model.take(-1)) << "run " << run << " drain " << k;
    }
}

} // namespace
