// Tests of KDRBoolArray: the quirks of its contract, its storage layout, and agreement with
// std::vector<bool> over long random runs of mixed operations.
#include "kdrcore/containers/KDRBoolArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Bits = std::vector<bool>;

Bits bitsOf(const KDRBoolArray & a) {
    Bits b(static_cast<std::size_t>(a.size()));
    for (int i = 0; i < a.size(); ++i)
        b[static_cast<std::size_t>(i)] = a.get(i);
    return b;
}

// Builds an array holding `bits` whose spare bits are all set, so that an operation that lets a
// spare bit leak into the array shows it.
KDRBoolArray makeDirty(const Bits & bits) {
    KDRBoolArray a;
    a.resize(static_cast<int>(bits.size()), true);
    a.toggleAll(); // spare bits become clear...
    a.toggleAll(); // ...and set again: the toggles reach the whole storage
    for (std::size_t i = 0; i < bits.size(); ++i)
        if (!bits[i])
            a.clear(static_cast<int>(i));
    return a;
}

void expectSame(const KDRBoolArray & a, const Bits & model, const char * what) {
    ASSERT_EQ(a.size(), static_cast<int>(model.size())) << what;
    ASSERT_GE(a.capacity(), a.size()) << what;
    int set = 0;
    for (int i = 0; i < a.size(); ++i) {
        ASSERT_EQ(a.get(i), static_cast<bool>(model[static_cast<std::size_t>(i)]))
            << what << ", bit " << i;
        set += model[static_cast<std::size_t>(i)] ? 1 : 0;
    }
    EXPECT_FALSE(a.get(a.size())) << what;
    EXPECT_EQ(a.getNumberOfBitSet(), set) << what;
    EXPECT_EQ(a.getNumberOfBitCleared(), a.size() - set) << what;
}

int modelFindFirst(const Bits & m, bool value, int start) {
    for (int i = std::max(start, 0); i < static_cast<int>(m.size()); ++i)
        if (m[static_cast<std::size_t>(i)] == value)
            return i;
    return -1;
}

int modelFindLast(const Bits & m, bool value, int start) {
    if (start < 0)
        return -1;
    for (int i = std::min(start, static_cast<int>(m.size()) - 1); i >= 0; --i)
        if (m[static_cast<std::size_t>(i)] == value)
            return i;
    return -1;
}

} // namespace

TEST(KDRBoolArray, StorageIsExactAndGuarded) {
    KDRBoolArray a;
    EXPECT_EQ(a.size(), 0);
    EXPECT_EQ(a.capacity(), 0);
    // Peeks at the guards through getNoSizeTest: byte -1 and byte capacity / 8 hold 1, also for
    // the shared bytes of an array without storage.
    EXPECT_TRUE(a.getNoSizeTest(0));
    EXPECT_TRUE(a.getNoSizeTest(-8));
    EXPECT_FALSE(a.getNoSizeTest(-7));

    a.resize(9, true); // (9 + 7) / 8 = 2 bytes, no growth factor
    EXPECT_EQ(a.capacity(), 16);
    a.resize(17, false);
    EXPECT_EQ(a.capacity(), 24);
    a.resize(3, false); // capacity never shrinks by resizing
    EXPECT_EQ(a.capacity(), 24);
    a.toggleAll();
    EXPECT_TRUE(a.getNoSizeTest(24)) << "end guard";
    EXPECT_FALSE(a.getNoSizeTest(25)) << "the guard holds 1, not 255";
    EXPECT_TRUE(a.getNoSizeTest(-8)) << "front guard";
    EXPECT_FALSE(a.getNoSizeTest(-1));
    a.resize(0, true);
    EXPECT_EQ(a.capacity(), 24); // size 0 keeps the storage
    a.clearArray();
    EXPECT_EQ(a.capacity(), 0);
    a.resize(0, true); // without storage and n <= 0: nothing
    EXPECT_EQ(a.capacity(), 0);

    KDRBoolArray b(20, true);
    EXPECT_EQ(b.capacity(), 24);
    KDRBoolArray c(b); // the copy is exact too, spare bits clear
    EXPECT_EQ(c.capacity(), 24);
    EXPECT_FALSE(c.getNoSizeTest(20));
    c.copy(b, true);
    for (int i = 20; i < 24; ++i)
        EXPECT_TRUE(c.getNoSizeTest(i)) << "spare bit " << i;
    KDRBoolArray small(3, false);
    small.copy(b, false); // other's size exceeds the capacity: new exact storage
    EXPECT_EQ(small.capacity(), 24);
    EXPECT_EQ(small.getNumberOfBitSet(), 20);
}

TEST(KDRBoolArray, SingleBitsAndAutoResize) {
    KDRBoolArray a(10, false);
    a.set(3);
    a.toggle(9);
    a.toggle(3);
    a.set(8);
    a.clear(8);
    EXPECT_EQ(a.getAsMask(9), 2);
    EXPECT_EQ(a.getAsMask(8), 0);
    EXPECT_TRUE(a[9]);
    EXPECT_FALSE(a.get(3));
    EXPECT_FALSE(a.get(10)); // beyond the size: false, no growth
    EXPECT_FALSE(a.get(-1));
    EXPECT_EQ(a.size(), 10);

    a.clearAutoResize(20); // clearing beyond the size grows the array
    EXPECT_EQ(a.size(), 21);
    a.toggleAutoResize(30);
    EXPECT_EQ(a.size(), 31);
    EXPECT_TRUE(a.get(30));
    a.setAutoResize(5);
    EXPECT_EQ(a.size(), 31);
    EXPECT_EQ(a.getNumberOfBitSet(), 3); // 5, 9, 30
    a.setAutoResize(-1);
    EXPECT_EQ(a.size(), 31);
}

TEST(KDRBoolArray, RangesAndIndexLists) {
    KDRBoolArray a;
    a.set(5, 0); // a count below 1 counts as 1
    EXPECT_EQ(a.size(), 6);
    EXPECT_EQ(a.findFirst(true), 5);
    a.set(-1, 4); // nothing
    EXPECT_EQ(a.size(), 6);
    EXPECT_EQ(a.getNumberOfBitSet(), 1);

    KDRBoolArray b(24, false);
    b.set(0, 8);
    EXPECT_EQ(b.getNumberOfBitSet(), 8);
    EXPECT_EQ(b.findFirst(false), 8);
    b.setAll();
    b.clear(0, 8);
    EXPECT_EQ(b.findFirst(true), 8);
    b.setAll();
    b.clear(4, 12);
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(b.get(i), i < 4 || i >= 16) << "bit " << i;

    KDRBoolArray c(10, true);
    c.clear(100, 1); // the array grows also when it only clears
    EXPECT_EQ(c.size(), 101);
    EXPECT_EQ(c.getNumberOfBitSet(), 10);

    const int idx[] = {3, -2, 17};
    KDRBoolArray d(5, false);
    d.set(3, idx); // grows to the largest index + 1, skips the negative one
    EXPECT_EQ(d.size(), 18);
    EXPECT_EQ(d.getNumberOfBitSet(), 2);
    d.clear(3, idx);
    EXPECT_EQ(d.getNumberOfBitSet(), 0);
    d.set(0, idx); // count < 1: nothing
    EXPECT_EQ(d.getNumberOfBitSet(), 0);
    KDRArray<int> list;
    d.set(list); // an array without data counts 0
    list.push_back(40);
    d.set(list);
    EXPECT_EQ(d.size(), 41);
    EXPECT_TRUE(d.get(40));

    KDRBoolArray e(12, false);
    e.set(2);
    const int more[] = {7, 9};
    e.assign(2, more, -1); // acts as set: bit 2 stays
    EXPECT_EQ(e.getNumberOfBitSet(), 3);
    e.assign(2, more, 10); // starts from all clear
    EXPECT_EQ(e.size(), 10);
    EXPECT_EQ(e.getNumberOfBitSet(), 2);
    EXPECT_FALSE(e.get(2));

    const char packed[] = {static_cast<char>(0x81), static_cast<char>(0xFF)};
    e.assign(9, packed); // bits 0, 7 and 8
    EXPECT_EQ(e.size(), 9);
    EXPECT_EQ(e.getNumberOfBitSet(), 3);
    EXPECT_EQ(e.findLast(true), 8);
    EXPECT_EQ(e.findLast(true, 6), 0);

    KDRArray<int> out;
    out.push_back(99);
    EXPECT_TRUE(e.getIndexesSet(out));
    ASSERT_EQ(out.size(), 3);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 7);
    EXPECT_EQ(out[2], 8);
    EXPECT_TRUE(e.getIndexesCleared(out));
    EXPECT_EQ(out.size(), 6);
    e.clearAll();
    EXPECT_FALSE(e.getIndexesSet(out));
    EXPECT_EQ(out.size(), 0);
    e.setAll();
    EXPECT_FALSE(e.getIndexesCleared(out));
}

TEST(KDRBoolArray, SearchesAndSpareBits) {
    KDRBoolArray a(16, false); // size equals capacity: only the end guard stops the scan
    EXPECT_EQ(a.findFirst(true), -1);
    a.setAll();
    EXPECT_EQ(a.findFirst(false), -1);
    EXPECT_EQ(a.findLast(false), -1); // stopped by the front guard

    KDRBoolArray b(10, false);
    b.toggleAll(); // every byte of the storage flips: bits 10..15 are now set spare bits
    b.clearAll();  // spare bits keep their content
    EXPECT_EQ(b.findFirst(true), -1);
    EXPECT_EQ(b.getNumberOfBitSet(), 0);
    KDRArray<int> out;
    EXPECT_FALSE(b.getIndexesSet(out)); // the set spare bits are not reported
    EXPECT_TRUE(b.getIndexesCleared(out));
    EXPECT_EQ(out.size(), 10);
    b.set(2);
    EXPECT_EQ(b.findFirst(true, -5), 2);
    EXPECT_EQ(b.findFirst(false, 10), -1);
    EXPECT_EQ(b.findFirst(true, 3), -1);
    EXPECT_EQ(b.findLast(true, 1000), 2);
    EXPECT_EQ(b.findLast(false, 1000), 9); // starts at bit 9
    EXPECT_EQ(b.findLast(true, -1), -1);
    EXPECT_EQ(b.findLast(true, 1), -1);

    KDRBoolArray empty;
    for (int start : {-1, 0, 5})
        EXPECT_EQ(empty.findLast(false, start), -1);
    EXPECT_EQ(empty.findFirst(false), -1);
}

TEST(KDRBoolArray, InsertAndEraseAcrossBytes) {
    KDRBoolArray a(16, false);
    a.insert(16, true); // at the end: nothing
    EXPECT_EQ(a.size(), 16);
    KDRBoolArray none;
    none.insert(0, true); // into an empty array: nothing
    EXPECT_EQ(none.size(), 0);

    a.set(7);
    a.set(15);
    a.insert(0, true); // everything moves up by one, across both byte borders
    EXPECT_EQ(a.size(), 17);
    EXPECT_EQ(a.capacity(), 24);
    KDRArray<int> out;
    a.getIndexesSet(out);
    ASSERT_EQ(out.size(), 3);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 8);
    EXPECT_EQ(out[2], 16);

    a.erase(16); // the last bit: only the size falls
    EXPECT_EQ(a.size(), 16);
    EXPECT_TRUE(a.getNoSizeTest(16));
    a.erase(0);
    EXPECT_EQ(a.findFirst(true), 7);
    EXPECT_EQ(a.findLast(true), 7);
    a.erase(16);
    a.erase(-1);
    EXPECT_EQ(a.size(), 15);
}

TEST(KDRBoolArray, EqualityUnionIntersection) {
    KDRBoolArray a8(8, true), b8(8, true), a16(16, false), b16(16, false), c9(9, true);
    EXPECT_TRUE(a8 == b8);
    EXPECT_TRUE(a16 == b16);
    EXPECT_FALSE(a8 == c9);
    EXPECT_TRUE(KDRBoolArray() == KDRBoolArray(0, true));
    KDRBoolArray d(9, true), e(9, true);
    d.toggleAll(); // the spare bits of d and e now differ...
    d.inverse();   // ...while the bits below the size agree again
    EXPECT_TRUE(d == e);

    KDRBoolArray small(3, false), big(10, false);
    small.set(1);
    big.set(9);
    big.set(2);
    small.merge(big);
    EXPECT_EQ(small.size(), 10);
    EXPECT_EQ(small.capacity(), 16);
    EXPECT_EQ(small.getNumberOfBitSet(), 3);
    small.merge(KDRBoolArray()); // an empty argument changes nothing
    EXPECT_EQ(small.size(), 10);

    KDRBoolArray three(3, true);
    three.inter(big);
    EXPECT_EQ(three.size(), 3);
    EXPECT_EQ(three.getNumberOfBitSet(), 1); // bit 2
    three.inter(KDRBoolArray());
    EXPECT_EQ(three.size(), 0);
    EXPECT_EQ(three.capacity(), 8);
    KDRBoolArray empty;
    empty.inter(big);
    EXPECT_EQ(empty.size(), 0);

    // The intersection clears the bits above the new size in its last partial byte and writes
    // 1 into the byte behind the used ones.
    KDRBoolArray p(24, true);
    p.inter(KDRBoolArray(13, true));
    EXPECT_EQ(p.size(), 13);
    EXPECT_EQ(p.getNumberOfBitSet(), 13);
    for (int i = 13; i < 24; ++i)
        EXPECT_EQ(p.getNoSizeTest(i), i == 16) << "spare bit " << i;

    KDRBoolArray x(12, true);
    x.toggle(big); // exclusive or over the common range
    EXPECT_EQ(x.getNumberOfBitSet(), 10);
    EXPECT_FALSE(x.get(9));
    x.clear(small); // small holds 1, 2, 9; 2 and 9 are clear already
    EXPECT_EQ(x.getNumberOfBitSet(), 9);
    EXPECT_EQ(x.size(), 12);
    EXPECT_TRUE(x.hasInter(KDRBoolArray(12, true)));
    EXPECT_FALSE(x.hasInter(small));
    EXPECT_FALSE(x.hasInter(KDRBoolArray()));
}

TEST(KDRBoolArray, BitTestLooksUpToTheTopSetBitOfTheArgument) {
    KDRBoolArray a(10, false);
    a.set(3);
    a.set(9);
    EXPECT_TRUE(a.bitTest(KDRBoolArray()));
    EXPECT_TRUE(KDRBoolArray().bitTest(KDRBoolArray(40, false))); // no set bit: true, even empty
    KDRBoolArray b(40, false); // a longer argument is fine while its set bits are below 10
    b.set(9);
    EXPECT_TRUE(a.bitTest(b));
    b.set(3);
    EXPECT_TRUE(a.bitTest(b));
    b.set(8); // in the argument's top partial byte
    EXPECT_FALSE(a.bitTest(b));
    b.clear(8);
    b.set(10); // beyond this array's size
    EXPECT_FALSE(a.bitTest(b));
    KDRBoolArray c(2, false);
    c.set(0);
    EXPECT_FALSE(a.bitTest(c));
}

TEST(KDRBoolArray, ResizeAndAssignLeaveNoStaleBits) {
    KDRBoolArray a;
    a.assign(5, true);
    EXPECT_EQ(a.capacity(), 8);
    a.resize(8, false); // within the capacity: bits 5..7 become clear
    EXPECT_EQ(a.getNumberOfBitSet(), 5);
    a.resize(20, false); // growth: bits 8..19 clear
    EXPECT_EQ(a.getNumberOfBitSet(), 5);
    a.resize(30, true);
    EXPECT_EQ(a.getNumberOfBitSet(), 15);
    a.setAll();
    a.resize(2, true);
    a.resize(30, false); // down and up again: nothing from before in the regrown range
    EXPECT_EQ(a.getNumberOfBitSet(), 2);
    EXPECT_EQ(a.capacity(), 32);

    KDRBoolArray b(7, false);
    b.toggleAll(); // spare bit 7 set
    b.setAll();
    b.resize(3, false);
    b.resize(12, true); // growth copies the old byte and sets the bits from the old size up
    EXPECT_EQ(b.getNumberOfBitSet(), 12);
    b.resize(4, false);
    b.resize(14, false);
    EXPECT_EQ(b.getNumberOfBitSet(), 4);
}

TEST(KDRBoolArray, CopyAssignAndSwap) {
    KDRBoolArray a(13, false);
    a.set(12);
    a.set(4);
    KDRBoolArray b;
    const KDRBoolArray r = (b = a); // the result is a copy made after the assignment
    EXPECT_TRUE(b == a);
    EXPECT_TRUE(r == a);
    const KDRBoolArray & sameB = b;
    b = sameB; // self-assignment keeps the bits
    EXPECT_TRUE(b == a);
    b.copy(b, true); // self-copy only sets the spare bits
    EXPECT_TRUE(b == a);
    EXPECT_TRUE(b.getNoSizeTest(15));

    KDRBoolArray wide(40, false); // copying a short array: every spare bit takes spareValue
    wide.copy(KDRBoolArray(3, true), true);
    EXPECT_EQ(wide.size(), 3);
    EXPECT_EQ(wide.capacity(), 40);
    for (int i = 3; i < 40; ++i)
        ASSERT_TRUE(wide.getNoSizeTest(i)) << "spare bit " << i;
    wide.copy(KDRBoolArray(3, true), false);
    for (int i = 3; i < 40; ++i)
        ASSERT_FALSE(wide.getNoSizeTest(i)) << "spare bit " << i;

    KDRBoolArray c(100, true);
    c.swap(b);
    EXPECT_EQ(c.size(), 13);
    EXPECT_EQ(b.size(), 100);
    EXPECT_EQ(b.getNumberOfBitSet(), 100);
    KDRBoolArray none;
    none.swap(c); // swapping with an array without storage moves the storage over
    EXPECT_EQ(c.capacity(), 0);
    EXPECT_EQ(none.size(), 13);
    EXPECT_TRUE(none.get(12));
}

TEST(KDRBoolArray, AgreesWithVectorBoolOverRandomOperations) {
    std::mt19937 rng(12345);
    auto uniform = [&rng](int lo, int hi) { // inclusive
        return std::uniform_int_distribution<int>(lo, hi)(rng);
    };
    auto randomBits = [&](int n) {
        Bits m(static_cast<std::size_t>(n));
        const int density = uniform(0, 4); // all clear, sparse, half, dense, all set
        for (std::size_t i = 0; i < m.size(); ++i)
            m[i] = density == 0 ? false : density == 4 ? true : uniform(0, 3) < density;
        return m;
    };

    for (int run = 0; run < 40; ++run) {
        KDRBoolArray a;
        Bits m;
        for (int step = 0; step < 400; ++step) {
            const int n = static_cast<int>(m.size());
            const int op = uniform(0, 27);
            const int limit = uniform(0, 3) == 0 ? 300 : 40; // mostly small, sometimes multi-word
            const char * what = "";
            switch (op) {
            case 0: { // resize
                const int to = uniform(0, limit);
                const bool v = uniform(0, 1) == 1;
                a.resize(to, v);
                m.resize(static_cast<std::size_t>(to), v);
                what = "resize";
                break;
            }
            case 1: { // assign(n, value)
                const int to = uniform(0, limit);
                const bool v = uniform(0, 1) == 1;
                a.assign(to, v);
                m.assign(static_cast<std::size_t>(to), v);
                what = "assign";
                break;
            }
            case 2:
            case 3: { // single bits: in range, or auto-resizing up to 20 bits beyond the size
                const bool autoResize = op == 3;
                if (!autoResize && n == 0)
                    break;
                const int i = autoResize ? uniform(0, n + 20) : uniform(0, n - 1);
                if (i >= n)
                    m.resize(static_cast<std::size_t>(i) + 1, false);
                auto bit = m[static_cast<std::size_t>(i)];
                switch (uniform(0, 2)) {
                case 0:
                    autoResize ? a.setAutoResize(i) : a.set(i);
                    bit = true;
                    break;
                case 1:
                    autoResize ? a.clearAutoResize(i) : a.clear(i);
                    bit = false;
                    break;
                default:
                    autoResize ? a.toggleAutoResize(i) : a.toggle(i);
                    bit.flip();
                    break;
                }
                what = autoResize ? "auto-resize" : "single bit";
                break;
            }
            case 4:
            case 5: { // ranges
                const int start = uniform(-2, n + 10);
                const int count = uniform(-2, 30);
                const bool v = op == 4;
                v ? a.set(start, count) : a.clear(start, count);
                if (start >= 0) {
                    const int end = start + std::max(count, 1);
                    if (static_cast<int>(m.size()) < end)
                        m.resize(static_cast<std::size_t>(end), false);
                    for (int i = start; i < end; ++i)
                        m[static_cast<std::size_t>(i)] = v;
                }
                what = "range";
                break;
            }
            case 6:
            case 7: { // index lists
                std::vector<int> idx(static_cast<std::size_t>(uniform(0, 5)));
                for (int & i : idx)
                    i = uniform(-3, n + 12);
                const bool v = op == 6;
                v ? a.set(static_cast<int>(idx.size()), idx.data())
                  : a.clear(static_cast<int>(idx.size()), idx.data());
                if (!idx.empty()) {
                    const int largest = *std::max_element(idx.begin(), idx.end());
                    if (largest >= static_cast<int>(m.size()))
                        m.resize(static_cast<std::size_t>(largest) + 1, false);
                    for (int i : idx)
                        if (i >= 0)
                            m[static_cast<std::size_t>(i)] = v;
                }
                what = "index list";
                break;
            }
            case 8:
                a.setAll(), m.assign(m.size(), true), what = "setAll";
                break;
            case 9:
                a.clearAll(), m.assign(m.size(), false), what = "clearAll";
                break;
            case 10:
                a.inverse(), m.flip(), what = "inverse";
                break;
            case 11:
                a.toggleAll(), m.flip(), what = "toggleAll";
                break;
            case 12:
            case 13:
            case 14:
            case 15: { // between arrays; the argument's spare bits are dirty
                const Bits om = randomBits(uniform(0, limit));
                const KDRBoolArray other = makeDirty(om);
                const std::size_t common = std::min(m.size(), om.size());
                if (op == 12 || op == 13) { // union, exclusive or
                    if (!om.empty()) {
                        const bool longerOther = om.size() > m.size();
                        Bits r = longerOther ? om : m;
                        for (std::size_t i = 0; i < common; ++i)
                            r[i] = op == 12 ? (m[i] || om[i]) : (m[i] != om[i]);
                        m = r;
                    }
                    op == 12 ? a.merge(other) : a.toggle(other);
                    what = op == 12 ? "merge" : "toggle(other)";
                } else if (op == 14) {
                    if (!m.empty()) {
                        Bits r(common);
                        for (std::size_t i = 0; i < common; ++i)
                            r[i] = m[i] && om[i];
                        m = r;
                    }
                    a.inter(other);
                    what = "inter";
                } else {
                    if (!om.empty())
                        for (std::size_t i = 0; i < common; ++i)
                            m[i] = m[i] && !om[i];
                    a.clear(other);
                    what = "clear(other)";
                }
                break;
            }
            case 16: { // pure queries against another array
                const Bits om = uniform(0, 1) == 0 ? randomBits(uniform(0, limit)) : m;
                KDRBoolArray other = makeDirty(om);
                if (uniform(0, 1) == 1 && !om.empty())
                    other.clear(uniform(0, static_cast<int>(om.size()) - 1));
                const Bits om2 = bitsOf(other);
                bool inter = false, covered = true;
                for (std::size_t i = 0; i < om2.size(); ++i) {
                    if (om2[i] && i < m.size() && m[i])
                        inter = true;
                    if (om2[i] && (i >= m.size() || !m[i]))
                        covered = false;
                }
                EXPECT_EQ(a.hasInter(other), inter) << "hasInter at step " << step;
                EXPECT_EQ(a.bitTest(other), covered) << "bitTest at step " << step;
                EXPECT_EQ(a == other, m == om2) << "== at step " << step;
                what = "queries";
                break;
            }
            case 17:
            case 18: { // searches
                for (int k = 0; k < 6; ++k) {
                    const int start = uniform(-3, n + 3);
                    const bool v = uniform(0, 1) == 1;
                    EXPECT_EQ(a.findFirst(v, start), modelFindFirst(m, v, start))
                        << "findFirst(" << v << ", " << start << ") at step " << step;
                    EXPECT_EQ(a.findLast(v, start), modelFindLast(m, v, start))
                        << "findLast(" << v << ", " << start << ") at step " << step;
                }
                EXPECT_EQ(a.findFirst(true), modelFindFirst(m, true, 0));
                EXPECT_EQ(a.findLast(false), modelFindLast(m, false, n - 1));
                what = "searches";
                break;
            }
            case 19: { // index lists out
                KDRArray<int> set, cleared;
                set.push_back(-7);
                const bool anySet = a.getIndexesSet(set);
                const bool anyClear = a.getIndexesCleared(cleared);
                std::vector<int> ms, mc;
                for (int i = 0; i < n; ++i)
                    (m[static_cast<std::size_t>(i)] ? ms : mc).push_back(i);
                EXPECT_EQ(anySet, !ms.empty());
                EXPECT_EQ(anyClear, !mc.empty());
                EXPECT_EQ(std::vector<int>(set.begin(), set.end()), ms) << "step " << step;
                EXPECT_EQ(std::vector<int>(cleared.begin(), cleared.end()), mc) << "step " << step;
                what = "getIndexes";
                break;
            }
            case 20:
            case 21: { // insert, also at the end (refused)
                const int i = uniform(-1, n);
                const bool v = uniform(0, 1) == 1;
                a.insert(i, v);
                if (i >= 0 && i < n)
                    m.insert(m.begin() + i, v);
                what = "insert";
                break;
            }
            case 22:
            case 23: { // erase
                const int i = uniform(-1, n);
                a.erase(i);
                if (i >= 0 && i < n)
                    m.erase(m.begin() + i);
                what = "erase";
                break;
            }
            case 24: { // copies
                const int kind = uniform(0, 3);
                if (kind == 0) {
                    KDRBoolArray c(a);
                    a.clearArray();
                    a = c;
                } else if (kind == 1) {
                    KDRBoolArray c = makeDirty(randomBits(uniform(0, limit)));
                    c.copy(a, uniform(0, 1) == 1);
                    a.swap(c);
                } else if (kind == 2) {
                    const Bits om = randomBits(uniform(0, limit));
                    a = makeDirty(om);
                    m = om;
                } else {
                    KDRBoolArray c;
                    c.swap(a);
                    a.swap(c);
                }
                what = "copy";
                break;
            }
            case 25: { // assign from packed bytes
                const int to = uniform(0, limit);
                std::vector<char> bytes(static_cast<std::size_t>((to + 7) / 8) + 1);
                for (char & ch : bytes)
                    ch = static_cast<char>(uniform(0, 255));
                a.assign(to, bytes.data());
                m.assign(static_cast<std::size_t>(to), false);
                for (int i = 0; i < to; ++i)
                    m[static_cast<std::size_t>(i)] =
                        ((static_cast<unsigned char>(bytes[static_cast<std::size_t>(i / 8)]) >>
                          (i % 8)) &
                         1u) != 0;
                what = "assign bytes";
                break;
            }
            case 26: { // assign from indexes with a size
                const int size = uniform(0, limit);
                std::vector<int> idx(static_cast<std::size_t>(size == 0 ? 0 : uniform(0, 6)));
                for (int & i : idx)
                    i = uniform(0, size - 1);
                a.assign(static_cast<int>(idx.size()), idx.data(), size);
                m.assign(static_cast<std::size_t>(size), false);
                for (int i : idx)
                    m[static_cast<std::size_t>(i)] = true;
                what = "assign indexes";
                break;
            }
            default: { // the whole array went out and came back: clearArray then regrow
                if (uniform(0, 4) == 0) {
                    a.clearArray();
                    m.clear();
                }
                what = "clearArray";
                break;
            }
            }
            expectSame(a, m, what);
            if (::testing::Test::HasFailure()) {
                ADD_FAILURE() << "run " << run << " step " << step << " after " << what;
                return;
            }
        }
    }
}
