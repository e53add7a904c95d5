// Tests of KDRBoolArray: its storage layout and guards, and agreement with std::vector<bool>
// over long random runs of mixed operations.
#include "kdrcore/containers/KDRBoolArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Bits = std::vector<bool>;

// An array holding `bits` whose spare bits are all set, so that a spare bit leaking into a
// result shows.
KDRBoolArray makeDirty(const Bits & bits) {
    KDRBoolArray a(static_cast<int>(bits.size()), true);
    for (std::size_t i = 0; i < bits.size(); ++i)
        if (!bits[i])
            a.clear(static_cast<int>(i));
    return a;
}

// Writes bit i of the model, growing it with clear bits as the array grows.
void put(Bits & m, int i, bool v) {
    if (i >= static_cast<int>(m.size()))
        m.resize(static_cast<std::size_t>(i) + 1, false);
    m[static_cast<std::size_t>(i)] = v;
}

using A = KDRBoolArray;
void (A::*const bitOps[])(int) = {&A::set,           &A::clear,           &A::toggle,
                                  &A::setAutoResize, &A::clearAutoResize, &A::toggleAutoResize};
void (A::*const wholeOps[])() = {&A::setAll, &A::clearAll, &A::inverse, &A::toggleAll};
void (A::*const pairOps[])(const A &) = {&A::merge, &A::toggle, &A::inter, &A::clear};

} // namespace

TEST(KDRBoolArray, StorageIsExactAndGuarded) {
    KDRBoolArray a;
    // getNoSizeTest peeks at the guards: byte -1 and the byte at capacity / 8 hold 1, also in
    // the shared bytes of an array without storage.
    EXPECT_TRUE(a.capacity() == 0 && a.getNoSizeTest(0) && a.getNoSizeTest(-8));
    a.resize(9, true); // (9 + 7) / 8 bytes, no growth factor
    EXPECT_EQ(a.capacity(), 16);
    a.resize(0, false); // size 0 keeps the storage
    a.toggleAll();      // size 0: nothing
    a.resize(3, true);
    a.toggleAll(); // the whole storage flips, the guards do not
    EXPECT_TRUE(a.getNoSizeTest(16) && a.getNoSizeTest(-8) && a.getNoSizeTest(3));
    EXPECT_FALSE(a.getNoSizeTest(17) || a.getNoSizeTest(-1) || a.getNoSizeTest(15) || a.get(3));
    a.assign(16, false); // the scans stop on the guard behind a full last byte
    EXPECT_EQ(a.findFirst(true, 4), -1);

    // A copy is exact too; every bit from its size up to the capacity takes the spare value.
    KDRBoolArray wide(40, false);
    wide.copy(KDRBoolArray(3, true), true);
    EXPECT_TRUE(wide.size() == 3 && wide.capacity() == 40);
    for (int i = 3; i < 40; ++i)
        ASSERT_TRUE(wide.getNoSizeTest(i)) << "spare bit " << i;
    const KDRBoolArray copied(wide); // spare bits clear
    EXPECT_TRUE(copied.capacity() == 8 && !copied.getNoSizeTest(3) && !copied.getNoSizeTest(7));
    // The intersection clears the bits above its new size in the last partial byte and writes
    // 1 into the byte behind; with an empty argument the size falls to 0, the storage stays.
    KDRBoolArray p(24, true);
    p.inter(KDRBoolArray(13, true));
    for (int i = 13; i < 24; ++i)
        EXPECT_EQ(p.getNoSizeTest(i), i == 16) << "spare bit " << i;
    p.inter(KDRBoolArray());
    EXPECT_TRUE(p.size() == 0 && p.capacity() == 24);
}

TEST(KDRBoolArray, AgreesWithVectorBoolOverRandomOperations) {
    std::mt19937 rng(12345);
    auto U = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    auto randomBits = [&](int n) { // all clear, sparse, half, dense or all set
        Bits m(static_cast<std::size_t>(n));
        const int density = U(0, 4);
        for (std::size_t i = 0; i < m.size(); ++i)
            m[i] = density == 4 || (density > 0 && U(0, 3) < density);
        return m;
    };
    for (int run = 0; run < 40; ++run) {
        KDRBoolArray a;
        Bits m;
        for (int step = 0; step < 400; ++step) {
            const int n = static_cast<int>(m.size()), op = U(0, 12), kind = U(0, 3);
            const int to = U(0, U(0, 3) == 0 ? 300 : 40); // mostly small, sometimes many words
            const bool v = U(0, 1) == 1;
            std::vector<int> idx(static_cast<std::size_t>(U(0, 5)));
            if (op == 0) { // resize and assign: no stale bit may come back
                kind < 2 ? a.resize(to, v) : a.assign(to, v);
                m.resize(kind < 2 ? m.size() : 0);
                m.resize(static_cast<std::size_t>(to), v);
            } else if (op == 1) { // single bits; the auto-resizing forms reach 20 beyond the size
                const int which = kind % 3, grow = n == 0 || v ? 3 : 0; // bitOps[3..5] resize
                const int i = grow ? U(0, n + 20) : U(0, n - 1);
                put(m, i, which == 0 || (which == 2 && !(i < n && m[i])));
                (a.*bitOps[which + grow])(i);
            } else if (op == 2) { // ranges: a count below 1 counts as 1, a negative start: nothing
                const int start = U(-2, n + 10), count = U(-2, 30);
                v ? a.set(start, count) : a.clear(start, count);
                for (int i = start; start >= 0 && i < start + std::max(count, 1); ++i)
                    put(m, i, v);
            } else if (op == 3) { // index lists, negative ones skipped; assign(.., -1) is set
                for (int & i : idx)
                    i = U(-3, n + 12);
                !v          ? a.clear(static_cast<int>(idx.size()), idx.data())
                : kind == 0 ? a.assign(static_cast<int>(idx.size()), idx.data(), -1)
                            : a.set(static_cast<int>(idx.size()), idx.data());
                for (int i : idx)
                    if (i >= 0)
                        put(m, i, v);
            } else if (op == 4) { // whole array
                (a.*wholeOps[kind])();
                for (std::size_t i = 0; i < m.size(); ++i)
                    m[i] = kind == 0 || (kind >= 2 && !m[i]);
            } else if (op == 5) { // between arrays, against an argument with dirty spare bits
                const Bits om = randomBits(to);
                (a.*pairOps[kind])(makeDirty(om));
                const std::size_t common = std::min(m.size(), om.size());
                Bits r = kind <= 1 && om.size() > m.size() ? om : m;
                r.resize(kind == 2 ? common : r.size());
                for (std::size_t i = 0; i < common; ++i)
                    r[i] = kind == 0   ? m[i] || om[i]
                           : kind == 1 ? m[i] != om[i]
                                       : m[i] && (kind == 2) == om[i];
                m = r;
            } else if (op == 6) { // queries between arrays, also against a near copy of this one
                Bits om = v ? randomBits(to) : m;
                if (!om.empty() && kind < 2)
                    om[static_cast<std::size_t>(U(0, static_cast<int>(om.size()) - 1))].flip();
                bool inter = false, covered = true;
                for (std::size_t i = 0; i < om.size(); ++i) {
                    inter = inter || (om[i] && i < m.size() && m[i]);
                    covered = covered && (!om[i] || (i < m.size() && m[i]));
                }
                const KDRBoolArray other = makeDirty(om);
                EXPECT_EQ(a.hasInter(other), inter);
                EXPECT_EQ(a.bitTest(other), covered);
                EXPECT_EQ(a == other, m == om);
            } else if (op == 7) { // searches from anywhere, also outside the array
                const int start = U(-3, n + 3);
                int first = -1, last = -1;
                for (int i = n - 1; i >= std::max(start, 0); --i)
                    first = m[static_cast<std::size_t>(i)] == v ? i : first;
                for (int i = 0; i <= std::min(start, n - 1); ++i)
                    last = m[static_cast<std::size_t>(i)] == v ? i : last;
                EXPECT_EQ(a.findFirst(v, start), first) << v << " from " << start;
                EXPECT_EQ(a.findLast(v, start), last) << v << " from " << start;
            } else if (op == 8) { // index lists out, replacing what the output held
                KDRArray<int> out;
                out.push_back(-7);
                std::vector<int> expected;
                for (int i = 0; i < n; ++i)
                    if (m[static_cast<std::size_t>(i)] == v)
                        expected.push_back(i);
                EXPECT_EQ(v ? a.getIndexesSet(out) : a.getIndexesCleared(out), !expected.empty());
                EXPECT_EQ(std::vector<int>(out.begin(), out.end()), expected);
            } else if (op == 9) { // insert and erase, also at the end and before the start
                const int i = U(-1, n);
                kind < 2 ? a.insert(i, v) : a.erase(i);
                if (i >= 0 && i < n)
                    kind < 2 ? (void)m.insert(m.begin() + i, v) : (void)m.erase(m.begin() + i);
            } else if (op == 10) { // copies, swaps, assignment
                KDRBoolArray c = makeDirty(randomBits(to));
                if (kind == 0)
                    c = a, a.clearArray(), a = c;
                else if (kind == 1)
                    c.copy(a, v), a.swap(c);
                else
                    m = randomBits(to), a = makeDirty(m);
            } else if (op == 11) { // packed bytes; indexes with a size start from all clear
                std::vector<char> bytes(static_cast<std::size_t>(to / 8 + 1));
                for (char & ch : bytes)
                    ch = static_cast<char>(U(0, 255));
                for (int & i : idx)
                    i = U(0, to);
                v ? a.assign(to + 1, bytes.data())
                  : a.assign(static_cast<int>(idx.size()), idx.data(), to + 1);
                m.assign(static_cast<std::size_t>(to) + 1, false);
                for (int i = 0; i <= to && v; ++i)
                    put(m, i, ((static_cast<unsigned char>(bytes[i / 8]) >> (i % 8)) & 1u) != 0);
                for (int i : idx)
                    put(m, i, m[static_cast<std::size_t>(i)] || !v);
            } else if (kind == 0) {
                a.clearArray(), m.clear();
            }
            Bits got(static_cast<std::size_t>(a.size()));
            for (int i = 0; i < a.size(); ++i)
                got[static_cast<std::size_t>(i)] = a.get(i);
            ASSERT_EQ(got, m) << "run " << run << " step " << step << " op " << op;
            ASSERT_TRUE(a.capacity() >= a.size() && !a.get(a.size()));
            ASSERT_EQ(a.getNumberOfBitSet(), std::count(m.begin(), m.end(), true));
            ASSERT_FALSE(::testing::Test::HasFailure()) << "run " << run << " step " << step;
        }
    }
}
