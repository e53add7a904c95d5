// Tests of KDRBoolArray: its storage layout, the quirks of its contract, and agreement with
// std::vector<bool> over long random runs of mixed operations.
#include "kdrcore/containers/KDRBoolArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Bits = std::vector<bool>;

Bits bitsOf(const KDRBoolArray & a) {
    Bits b(a.size());
    for (int i = 0; i < a.size(); ++i)
        b[i] = a.get(i);
    return b;
}

// An array holding `bits` whose spare bits are all set, so that a spare bit leaking into a
// result shows.
KDRBoolArray makeDirty(const Bits & bits) {
    KDRBoolArray a(static_cast<int>(bits.size()), true);
    for (std::size_t i = 0; i < bits.size(); ++i)
        if (!bits[i])
            a.clear(static_cast<int>(i));
    return a;
}

int modelFind(const Bits & m, bool value, int start, bool last) {
    const int n = static_cast<int>(m.size());
    if (last) {
        for (int i = std::min(start, n - 1); i >= 0; --i)
            if (m[i] == value)
                return i;
    } else {
        for (int i = std::max(start, 0); i < n; ++i)
            if (m[i] == value)
                return i;
    }
    return -1;
}

} // namespace

TEST(KDRBoolArray, StorageIsExactAndGuarded) {
    KDRBoolArray a;
    EXPECT_EQ(a.capacity(), 0);
    // getNoSizeTest peeks at the guards: byte -1 and the byte at capacity / 8 hold 1, also in
    // the shared bytes of an array without storage.
    EXPECT_TRUE(a.getNoSizeTest(0));
    EXPECT_TRUE(a.getNoSizeTest(-8));
    EXPECT_FALSE(a.getNoSizeTest(-7));
    a.resize(9, true); // (9 + 7) / 8 bytes, no growth factor
    EXPECT_EQ(a.capacity(), 16);
    a.resize(17, false);
    EXPECT_EQ(a.capacity(), 24);
    a.resize(0, false); // size 0 keeps the storage
    EXPECT_EQ(a.capacity(), 24);
    a.toggleAll(); // size 0: nothing
    a.resize(3, true);
    a.toggleAll(); // the whole storage flips, the guards do not
    EXPECT_TRUE(a.getNoSizeTest(24));
    EXPECT_FALSE(a.getNoSizeTest(25));
    EXPECT_TRUE(a.getNoSizeTest(-8));
    EXPECT_FALSE(a.getNoSizeTest(-1));
    a.clearArray();
    a.resize(-4, true); // without storage and n <= 0: nothing
    EXPECT_EQ(a.capacity(), 0);

    // A copy is exact too; every bit from its size up to the capacity takes the spare value.
    KDRBoolArray wide(40, false);
    wide.copy(KDRBoolArray(3, true), true);
    EXPECT_EQ(wide.size(), 3);
    EXPECT_EQ(wide.capacity(), 40);
    for (int i = 3; i < 40; ++i)
        ASSERT_TRUE(wide.getNoSizeTest(i)) << "spare bit " << i;
    KDRBoolArray copy(wide);
    EXPECT_EQ(copy.capacity(), 8);
    EXPECT_FALSE(copy.getNoSizeTest(3));
    // The intersection clears the bits above its new size in the last partial byte and writes
    // 1 into the byte behind.
    KDRBoolArray p(24, true);
    p.inter(KDRBoolArray(13, true));
    for (int i = 13; i < 24; ++i)
        EXPECT_EQ(p.getNoSizeTest(i), i == 16) << "spare bit " << i;
    p.inter(KDRBoolArray());
    EXPECT_EQ(p.size(), 0);
    EXPECT_EQ(p.capacity(), 24);
}

TEST(KDRBoolArray, StatedQuirks) {
    KDRBoolArray a;
    a.set(5, 0); // a count below 1 counts as 1
    a.set(-1, 4);
    EXPECT_EQ(a.size(), 6);
    EXPECT_EQ(a.findFirst(true), 5);
    EXPECT_FALSE(a.get(6));
    EXPECT_EQ(a.size(), 6);
    a.clear(100, 1); // grows also when it only clears
    EXPECT_EQ(a.size(), 101);
    EXPECT_EQ(a.getNumberOfBitSet(), 1);

    KDRBoolArray b(16, true);
    b.clear(4, 12);
    EXPECT_EQ(b.findFirst(false), 4);
    EXPECT_EQ(b.findLast(false), 15);
    EXPECT_EQ(b.findFirst(true, 4), -1); // all clear up to a full last byte: the guard stops it
    b.insert(16, true);                  // at the end: nothing
    EXPECT_EQ(b.size(), 16);
    b.insert(0, false); // bits 0..3 move up by one, across no border; the rest stays clear
    EXPECT_EQ(b.findLast(true), 4);
    b.erase(16); // the last bit: only the size falls
    EXPECT_EQ(b.size(), 16);
    EXPECT_EQ(b.findFirst(true, -5), 1);
    EXPECT_EQ(b.findFirst(true, 16), -1);
    EXPECT_EQ(b.findLast(true, 1000), 4);
    EXPECT_EQ(b.findLast(true, -1), -1);
    EXPECT_EQ(KDRBoolArray().findLast(false, 3), -1);

    EXPECT_TRUE(KDRBoolArray(8, true) == KDRBoolArray(8, true));
    EXPECT_FALSE(KDRBoolArray(8, true) == KDRBoolArray(9, true));
    KDRBoolArray small(3, false), big(10, true);
    small.merge(big);
    EXPECT_EQ(small.size(), 10);
    KDRBoolArray three(3, true);
    three.inter(big);
    EXPECT_EQ(three.size(), 3);

    const int more[] = {7, 9};
    KDRBoolArray e(12, false);
    e.set(2);
    e.assign(2, more, -1); // acts as set: bit 2 stays
    EXPECT_EQ(e.getNumberOfBitSet(), 3);
    e.assign(2, more, 10); // starts from all clear
    EXPECT_EQ(e.getNumberOfBitSet(), 2);
    EXPECT_FALSE(e.get(2));

    // bitTest compares up to the argument's highest set bit, whatever the argument's size.
    KDRBoolArray t(10, false), arg(40, false);
    t.set(3);
    t.set(9);
    EXPECT_TRUE(t.bitTest(KDRBoolArray()));
    EXPECT_TRUE(KDRBoolArray().bitTest(arg));
    arg.set(9);
    EXPECT_TRUE(t.bitTest(arg));
    arg.set(8); // in the argument's top partial byte
    EXPECT_FALSE(t.bitTest(arg));
    arg.clear(8);
    arg.set(10); // beyond this array's size
    EXPECT_FALSE(t.bitTest(arg));

    KDRArray<int> out;
    out.push_back(99);
    EXPECT_FALSE(KDRBoolArray(20, false).getIndexesSet(out));
    EXPECT_EQ(out.size(), 0);
}

TEST(KDRBoolArray, AgreesWithVectorBoolOverRandomOperations) {
    std::mt19937 rng(12345);
    auto U = [&rng](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    auto randomBits = [&](int n) {
        Bits m(n);
        const int density = U(0, 4); // all clear, sparse, half, dense, all set
        for (std::size_t i = 0; i < m.size(); ++i)
            m[i] = density == 4 || (density > 0 && U(0, 3) < density);
        return m;
    };

    for (int run = 0; run < 40; ++run) {
        KDRBoolArray a;
        Bits m;
        for (int step = 0; step < 400; ++step) {
            const int n = static_cast<int>(m.size());
            const int op = U(0, 15);
            const int limit = U(0, 3) == 0 ? 300 : 40; // mostly small, sometimes many words
            const bool v = U(0, 1) == 1;
            switch (op) {
            case 0: { // resize and assign: no stale bit may come back
                const int to = U(0, limit);
                if (U(0, 1))
                    a.resize(to, v), m.resize(to, v);
                else
                    a.assign(to, v), m.assign(to, v);
                break;
            }
            case 1: { // single bits, auto-resizing up to 20 beyond the size
                const bool grow = U(0, 1) == 1;
                if (!grow && n == 0)
                    break;
                const int i = grow ? U(0, n + 20) : U(0, n - 1);
                if (i >= n)
                    m.resize(i + 1, false);
                const int kind = U(0, 2);
                if (kind == 0)
                    grow ? a.setAutoResize(i) : a.set(i), m[i] = true;
                else if (kind == 1)
                    grow ? a.clearAutoResize(i) : a.clear(i), m[i] = false;
                else
                    grow ? a.toggleAutoResize(i) : a.toggle(i), m[i].flip();
                break;
            }
            case 2: { // ranges
                const int start = U(-2, n + 10), count = U(-2, 30);
                v ? a.set(start, count) : a.clear(start, count);
                const int end = start + std::max(count, 1);
                if (start >= 0 && n < end)
                    m.resize(end, false);
                for (int i = std::max(start, 0); i < end && start >= 0; ++i)
                    m[i] = v;
                break;
            }
            case 3: { // index lists
                std::vector<int> idx(U(0, 5));
                for (int & i : idx)
                    i = U(-3, n + 12);
                const int count = static_cast<int>(idx.size());
                v ? a.set(count, idx.data()) : a.clear(count, idx.data());
                if (count > 0 && *std::max_element(idx.begin(), idx.end()) >= n)
                    m.resize(*std::max_element(idx.begin(), idx.end()) + 1, false);
                for (int i : idx)
                    if (i >= 0)
                        m[i] = v;
                break;
            }
            case 4: { // whole array
                const int kind = U(0, 3);
                if (kind == 0)
                    a.setAll(), m.assign(n, true);
                else if (kind == 1)
                    a.clearAll(), m.assign(n, false);
                else
                    kind == 2 ? a.inverse() : a.toggleAll(), m.flip();
                break;
            }
            case 5:
            case 6: { // between arrays, against an argument with dirty spare bits
                const Bits om = randomBits(U(0, limit));
                const KDRBoolArray other = makeDirty(om);
                const std::size_t common = std::min(m.size(), om.size());
                const int kind = U(0, 3);
                if (kind <= 1 && !om.empty()) { // union, exclusive or
                    Bits r = om.size() > m.size() ? om : m;
                    for (std::size_t i = 0; i < common; ++i)
                        r[i] = kind == 0 ? (m[i] || om[i]) : (m[i] != om[i]);
                    m = r;
                } else if (kind == 2 && !m.empty()) {
                    for (std::size_t i = 0; i < common; ++i)
                        m[i] = m[i] && om[i];
                    m.resize(common);
                } else if (kind == 3 && !om.empty()) {
                    for (std::size_t i = 0; i < common; ++i)
                        m[i] = m[i] && !om[i];
                }
                kind == 0   ? a.merge(other)
                : kind == 1 ? a.toggle(other)
                : kind == 2 ? a.inter(other)
                            : a.clear(other);
                break;
            }
            case 7: { // queries between arrays, also against a near copy of this one
                Bits om = U(0, 1) ? randomBits(U(0, limit)) : m;
                if (!om.empty() && U(0, 1))
                    om[U(0, static_cast<int>(om.size()) - 1)].flip();
                const KDRBoolArray other = makeDirty(om);
                bool inter = false, covered = true;
                for (std::size_t i = 0; i < om.size(); ++i) {
                    inter = inter || (om[i] && i < m.size() && m[i]);
                    covered = covered && (!om[i] || (i < m.size() && m[i]));
                }
                EXPECT_EQ(a.hasInter(other), inter) << "step " << step;
                EXPECT_EQ(a.bitTest(other), covered) << "step " << step;
                EXPECT_EQ(a == other, m == om) << "step " << step;
                break;
            }
            case 8: // searches
                for (int k = 0; k < 6; ++k) {
                    const int start = U(-3, n + 3);
                    EXPECT_EQ(a.findFirst(v, start), modelFind(m, v, start, false))
                        << "findFirst(" << v << ", " << start << ") step " << step;
                    EXPECT_EQ(a.findLast(v, start), modelFind(m, v, start, true))
                        << "findLast(" << v << ", " << start << ") step " << step;
                }
                break;
            case 9: { // index lists out
                KDRArray<int> set, cleared;
                set.push_back(-7);
                std::vector<int> ms, mc;
                for (int i = 0; i < n; ++i)
                    (m[i] ? ms : mc).push_back(i);
                EXPECT_EQ(a.getIndexesSet(set), !ms.empty());
                EXPECT_EQ(a.getIndexesCleared(cleared), !mc.empty());
                EXPECT_EQ(std::vector<int>(set.begin(), set.end()), ms) << "step " << step;
                EXPECT_EQ(std::vector<int>(cleared.begin(), cleared.end()), mc);
                break;
            }
            case 10: { // insert, also at the end and before the start (refused)
                const int i = U(-1, n);
                a.insert(i, v);
                if (i >= 0 && i < n)
                    m.insert(m.begin() + i, v);
                break;
            }
            case 11: {
                const int i = U(-1, n);
                a.erase(i);
                if (i >= 0 && i < n)
                    m.erase(m.begin() + i);
                break;
            }
            case 12: { // copies, swaps, assignment
                const int kind = U(0, 2);
                if (kind == 0) {
                    KDRBoolArray c(a);
                    a.clearArray();
                    a = c;
                } else if (kind == 1) {
                    KDRBoolArray c = makeDirty(randomBits(U(0, limit)));
                    c.copy(a, v);
                    a.swap(c);
                } else {
                    m = randomBits(U(0, limit));
                    a = makeDirty(m);
                }
                break;
            }
            case 13: { // packed bytes
                const int to = U(0, limit);
                std::vector<char> bytes((to + 7) / 8 + 1);
                for (char & ch : bytes)
                    ch = static_cast<char>(U(0, 255));
                a.assign(to, bytes.data());
                m.assign(to, false);
                for (int i = 0; i < to; ++i)
                    m[i] = ((static_cast<unsigned char>(bytes[i / 8]) >> (i % 8)) & 1u) != 0;
                break;
            }
            case 14: { // indexes with a size
                const int size = U(0, limit);
                std::vector<int> idx(size == 0 ? 0 : U(0, 6));
                for (int & i : idx)
                    i = U(0, size - 1);
                a.assign(static_cast<int>(idx.size()), idx.data(), size);
                m.assign(size, false);
                for (int i : idx)
                    m[i] = true;
                break;
            }
            default:
                if (U(0, 4) == 0)
                    a.clearArray(), m.clear();
                break;
            }
            ASSERT_EQ(bitsOf(a), m) << "run " << run << " step " << step << " op " << op;
            ASSERT_GE(a.capacity(), a.size());
            ASSERT_FALSE(a.get(a.size()));
            ASSERT_EQ(a.getNumberOfBitSet(), std::count(m.begin(), m.end(), true))
                << "run " << run << " step " << step << " op " << op;
            ASSERT_FALSE(::testing::Test::HasFailure()) << "run " << run << " step " << step;
        }
    }
}
