// Fuzz target: KDRBoolArray against a model of its contract.
//
// Two arrays and their models (the bits below the size and the capacity, whose growth rule is
// exact) go through a run of operations decoded from the input; after every operation each
// array is compared bit by bit with its model, and the queries with the model's answers.
// Indexes stay below a few hundred so that the allocations stay small; they include negative
// ones and ones beyond the size wherever the contract defines what happens.
#include "FuzzCheck.h"
#include "FuzzLevels.h"

#include "kdrcore/containers/KDRBoolArray.h"

#include <algorithm>
#include <fuzzer/FuzzedDataProvider.h>
#include <utility>
#include <vector>

namespace {

constexpr int MAX_INDEX = 300;

struct Model {
    std::vector<bool> bits; // bits [0, size)
    int capacity = 0;       // bits of storage

    int size() const { return static_cast<int>(bits.size()); }
    // Exact growth: (n + 7) / 8 bytes when n exceeds the capacity.
    void reserveExact(int n) {
        if (n > capacity)
            capacity = (n + 7) / 8 * 8;
    }
    void resize(int n, bool value) {
        if (n < 0)
            n = 0;
        reserveExact(n);
        bits.resize(static_cast<std::size_t>(n), value);
    }
    // The index forms: grow to the largest index, then set the non-negative ones to `value`.
    void setIndexes(const std::vector<int> & indexes, bool value) {
        if (indexes.empty())
            return;
        const int largest = *std::max_element(indexes.begin(), indexes.end());
        if (largest >= size())
            resize(largest + 1, false);
        for (int i : indexes)
            if (i >= 0)
                bits[static_cast<std::size_t>(i)] = value;
    }
    void copyFrom(const Model & other) {
        reserveExact(other.size());
        bits = other.bits;
    }
    int highestSet() const {
        for (int i = size() - 1; i >= 0; --i)
            if (bits[static_cast<std::size_t>(i)])
                return i;
        return -1;
    }
};

bool modelGet(const Model & m, int i) {
    return i >= 0 && i < m.size() && m.bits[static_cast<std::size_t>(i)];
}

void checkSame(const KDRBoolArray & a, const Model & m, int step) {
    FUZZ_CHECK(a.size() == m.size(), "step %d: size %d, expected %d", step, a.size(), m.size());
    FUZZ_CHECK(a.capacity() == m.capacity, "step %d: capacity %d, expected %d", step, a.capacity(),
               m.capacity);
    int set = 0;
    for (int i = -2; i < m.size() + 10; ++i) {
        const bool expected = modelGet(m, i);
        FUZZ_CHECK(a.get(i) == expected, "step %d: get(%d) %d, expected %d", step, i, a.get(i),
                   expected);
        FUZZ_CHECK(a[i] == expected, "step %d: operator[](%d) differs from get", step, i);
        if (i >= 0 && i < m.size()) {
            FUZZ_CHECK(a.getNoSizeTest(i) == expected, "step %d: getNoSizeTest(%d)", step, i);
            FUZZ_CHECK(a.getAsMask(i) == (expected ? 1 << (i & 7) : 0), "step %d: getAsMask(%d)",
                       step, i);
            set += expected ? 1 : 0;
        }
    }
    FUZZ_CHECK(a.getNumberOfBitSet() == set, "step %d: getNumberOfBitSet %d, expected %d", step,
               a.getNumberOfBitSet(), set);
    FUZZ_CHECK(a.getNumberOfBitCleared() == m.size() - set, "step %d: getNumberOfBitCleared", step);
}

// findFirst / findLast as the contract gives them, on the model.
int modelFindFirst(const Model & m, bool value, int start) {
    for (int i = std::max(start, 0); i < m.size(); ++i)
        if (m.bits[static_cast<std::size_t>(i)] == value)
            return i;
    return -1;
}

int modelFindLast(const Model & m, bool value, int start) {
    if (start < 0)
        return -1;
    for (int i = std::min(start, m.size() - 1); i >= 0; --i)
        if (m.bits[static_cast<std::size_t>(i)] == value)
            return i;
    return -1;
}

void checkQueries(const KDRBoolArray & a, const Model & m, FuzzedDataProvider & in, int step) {
    for (int value = 0; value < 2; ++value) {
        const bool v = value != 0;
        const int start = in.ConsumeIntegralInRange(-3, m.size() + 3);
        FUZZ_CHECK(a.findFirst(v, start) == modelFindFirst(m, v, start),
                   "step %d: findFirst(%d, %d) %d, expected %d", step, value, start,
                   a.findFirst(v, start), modelFindFirst(m, v, start));
        FUZZ_CHECK(a.findLast(v, start) == modelFindLast(m, v, start),
                   "step %d: findLast(%d, %d) %d, expected %d", step, value, start,
                   a.findLast(v, start), modelFindLast(m, v, start));
        FUZZ_CHECK(a.findFirst(v) == modelFindFirst(m, v, 0), "step %d: findFirst(%d)", step,
                   value);
        FUZZ_CHECK(a.findLast(v) == modelFindLast(m, v, m.size() - 1), "step %d: findLast(%d)",
                   step, value);
        FUZZ_CHECK(a.findLast(v, 1000000) == modelFindLast(m, v, m.size() - 1),
                   "step %d: findLast(%d, beyond)", step, value);

        KDRArray<int> out;
        out.push_back(-7); // must go: the result holds exactly the indexes
        const bool any = v ? a.getIndexesSet(out) : a.getIndexesCleared(out);
        std::vector<int> expected;
        for (int i = 0; i < m.size(); ++i)
            if (m.bits[static_cast<std::size_t>(i)] == v)
                expected.push_back(i);
        FUZZ_CHECK(any == !expected.empty(), "step %d: getIndexes%s result", step,
                   v ? "Set" : "Cleared");
        FUZZ_CHECK(std::vector<int>(out.begin(), out.end()) == expected,
                   "step %d: getIndexes%s gave %d entries, expected %zu", step,
                   v ? "Set" : "Cleared", out.size(), expected.size());
    }
}

void checkPair(const KDRBoolArray & a, const Model & ma, const KDRBoolArray & b, const Model & mb,
               int step) {
    const int common = std::min(ma.size(), mb.size());
    bool inter = false;
    for (int i = 0; i < common; ++i)
        inter =
            inter || (ma.bits[static_cast<std::size_t>(i)] && mb.bits[static_cast<std::size_t>(i)]);
    FUZZ_CHECK(a.hasInter(b) == inter, "step %d: hasInter %d, expected %d", step, a.hasInter(b),
               inter);

    // bitTest: every bit set in b set in a; false when b's top bit lies beyond a.
    const int top = mb.highestSet();
    bool covers = top < ma.size();
    for (int i = 0; covers && i <= top; ++i)
        covers = !mb.bits[static_cast<std::size_t>(i)] || ma.bits[static_cast<std::size_t>(i)];
    FUZZ_CHECK(a.bitTest(b) == covers, "step %d: bitTest %d, expected %d (top %d, size %d)", step,
               a.bitTest(b), covers, top, ma.size());

    FUZZ_CHECK((a == b) == (ma.bits == mb.bits), "step %d: operator== %d, expected %d", step,
               a == b, ma.bits == mb.bits);
}

// Union or exclusive or of `other` into `m`, with the growth rule of the array.
void modelCombine(Model & m, const Model & other, bool exclusive) {
    if (other.size() == 0)
        return;
    if (other.size() > m.capacity)
        m.capacity = (other.size() + 7) / 8 * 8;
    if (other.size() > m.size())
        m.bits.resize(other.bits.size(), false);
    for (int i = 0; i < other.size(); ++i) {
        const auto k = static_cast<std::size_t>(i);
        m.bits[k] = exclusive ? m.bits[k] != other.bits[k] : m.bits[k] || other.bits[k];
    }
}

void modelInter(Model & m, const Model & other) {
    if (m.size() == 0)
        return;
    const std::size_t common = std::min(m.bits.size(), other.bits.size());
    m.bits.resize(common);
    for (std::size_t i = 0; i < common; ++i)
        m.bits[i] = m.bits[i] && other.bits[i];
}

std::vector<int> consumeIndexes(FuzzedDataProvider & in, int low) {
    std::vector<int> indexes(in.ConsumeIntegralInRange<std::size_t>(0, 12));
    for (int & i : indexes)
        i = in.ConsumeIntegralInRange(low, MAX_INDEX);
    return indexes;
}

void step(FuzzedDataProvider & in, KDRBoolArray * arrays, Model * models, int stepNumber) {
    const int which = in.ConsumeBool() ? 1 : 0;
    KDRBoolArray & a = arrays[which];
    Model & m = models[which];
    KDRBoolArray & b = arrays[1 - which];
    Model & mb = models[1 - which];
    const bool value = in.ConsumeBool();

    switch (in.ConsumeIntegralInRange(0, 31)) {
    case 0: {
        const int n = in.ConsumeIntegralInRange(-2, MAX_INDEX);
        a.assign(n, value);
        m.reserveExact(n);
        m.bits.assign(static_cast<std::size_t>(std::max(n, 0)), value);
        break;
    }
    case 1: {
        const int n = in.ConsumeIntegralInRange(0, MAX_INDEX);
        std::vector<char> bytes = in.ConsumeBytes<char>(static_cast<std::size_t>((n + 7) / 8));
        bytes.resize(static_cast<std::size_t>((n + 7) / 8), 0);
        a.assign(n, bytes.data());
        m.reserveExact(n);
        m.bits.assign(static_cast<std::size_t>(n), false);
        for (int i = 0; i < n; ++i)
            m.bits[static_cast<std::size_t>(i)] =
                (bytes[static_cast<std::size_t>(i / 8)] >> (i % 8)) & 1;
        break;
    }
    case 2: { // assign(count, indexes, size) with a size: starts from all clear
        const int size = in.ConsumeIntegralInRange(1, MAX_INDEX);
        std::vector<int> indexes = consumeIndexes(in, 0);
        for (int & i : indexes)
            i %= size;
        a.assign(static_cast<int>(indexes.size()), indexes.data(), size);
        m.reserveExact(size);
        m.bits.assign(static_cast<std::size_t>(size), false);
        for (int i : indexes)
            m.bits[static_cast<std::size_t>(i)] = true;
        break;
    }
    case 3:   // assign(count, indexes, -1): set(count, indexes)
    case 4:   // set(count, indexes)
    case 5:   // clear(count, indexes)
    case 6: { // set(KDRArray<int>)
        const int kind = in.ConsumeIntegralInRange(0, 3);
        std::vector<int> indexes = consumeIndexes(in, -3);
        const int count = static_cast<int>(indexes.size());
        KDRArray<int> list;
        for (int i : indexes)
            list.push_back(i);
        if (kind == 0)
            a.assign(count, indexes.data(), -1);
        else if (kind == 1)
            a.set(count, indexes.data());
        else if (kind == 2)
            a.clear(count, indexes.data());
        else
            a.set(list);
        m.setIndexes(indexes, kind != 2);
        break;
    }
    case 7: {
        const int n = in.ConsumeIntegralInRange(0, MAX_INDEX);
        a.resize(n, value);
        m.resize(n, value);
        break;
    }
    case 8:
    case 9:
    case 10:
    case 11: { // single bits: within the size, or the auto-resizing forms (negative included)
        const bool grow = in.ConsumeBool();
        if (!grow && m.size() == 0)
            break;
        const int i = grow ? in.ConsumeIntegralInRange(-3, MAX_INDEX)
                           : in.ConsumeIntegralInRange(0, m.size() - 1);
        static void (KDRBoolArray::*const plain[])(int) = {&KDRBoolArray::set, &KDRBoolArray::clear,
                                                           &KDRBoolArray::toggle};
        static void (KDRBoolArray::*const growing[])(int) = {&KDRBoolArray::setAutoResize,
                                                             &KDRBoolArray::clearAutoResize,
                                                             &KDRBoolArray::toggleAutoResize};
        const int op = in.ConsumeIntegralInRange(0, 2);
        (a.*(grow ? growing : plain)[op])(i);
        if (i >= 0) {
            if (m.size() <= i)
                m.resize(i + 1, false);
            auto bit = m.bits[static_cast<std::size_t>(i)];
            bit = op == 0 ? true : op == 1 ? false : !bit;
        }
        break;
    }
    case 12:
    case 13: { // ranges: start < 0 does nothing, count < 1 counts as 1, the array grows
        const int start = in.ConsumeIntegralInRange(-3, MAX_INDEX - 40);
        const int count = in.ConsumeIntegralInRange(-3, 40);
        if (value)
            a.set(start, count);
        else
            a.clear(start, count);
        std::vector<int> range;
        for (int i = start; start >= 0 && i < start + std::max(count, 1); ++i)
            range.push_back(i);
        m.setIndexes(range, value);
        break;
    }
    case 14:
        a.setAll();
        m.bits.assign(m.bits.size(), true);
        break;
    case 15:
        a.clearAll();
        m.bits.assign(m.bits.size(), false);
        break;
    case 16:
    case 17:
        if (in.ConsumeBool())
            a.inverse();
        else
            a.toggleAll(); // spare bits flip too: no later operation may show them
        m.bits.flip();
        break;
    case 18:
        if (in.ConsumeBool())
            a.set(b);
        else
            a.merge(b);
        modelCombine(m, mb, false);
        break;
    case 19:
        a.toggle(b);
        modelCombine(m, mb, true);
        break;
    case 20:
        a.inter(b);
        modelInter(m, mb);
        break;
    case 21: { // clear(other): over the common range, sizes unchanged
        a.clear(b);
        const std::size_t common = std::min(m.bits.size(), mb.bits.size());
        for (std::size_t i = 0; i < common; ++i)
            if (mb.bits[i])
                m.bits[i] = false;
        break;
    }
    case 22:
    case 23: {
        const int kind = in.ConsumeIntegralInRange(0, 2);
        if (kind == 0)
            a.copy(b, value);
        else if (kind == 1)
            a = b;
        else // operator= returns a copy by value, equal to the assigned array
            FUZZ_CHECK((a = b) == b, "step %d: operator= result", stepNumber);
        m.copyFrom(mb);
        break;
    }
    case 24: { // copy construction: exact storage for the size
        KDRBoolArray c(b);
        a.swap(c);
        m.bits = mb.bits;
        m.capacity = (mb.size() + 7) / 8 * 8;
        break;
    }
    case 25: {
        const int n = in.ConsumeIntegralInRange(-2, MAX_INDEX);
        KDRBoolArray c(n, value);
        a.swap(c);
        m.bits.assign(static_cast<std::size_t>(std::max(n, 0)), value);
        m.capacity = (std::max(n, 0) + 7) / 8 * 8;
        break;
    }
    case 26:
        a.swap(b);
        std::swap(m, mb);
        break;
    case 27:
        a.clearArray();
        m = Model();
        break;
    case 28: { // insert: only strictly inside the array
        const int i = in.ConsumeIntegralInRange(-2, m.size() + 2);
        a.insert(i, value);
        if (i >= 0 && i < m.size()) {
            m.reserveExact(m.size() + 1);
            m.bits.insert(m.bits.begin() + i, value);
        }
        break;
    }
    case 29: {
        const int i = in.ConsumeIntegralInRange(-2, m.size() + 2);
        a.erase(i);
        if (i >= 0 && i < m.size())
            m.bits.erase(m.bits.begin() + i);
        break;
    }
    default:
        checkQueries(a, m, in, stepNumber);
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size) {
    // The counts and scans have vector versions: every instruction-set level runs the sequence.
    fuzz::forEachLevel([data, size](int) {
        FuzzedDataProvider in(data, size);
        KDRBoolArray arrays[2];
        Model models[2];
        for (int stepNumber = 0; in.remaining_bytes() > 0 && stepNumber < 200; ++stepNumber) {
            step(in, arrays, models, stepNumber);
            checkSame(arrays[0], models[0], stepNumber);
            checkSame(arrays[1], models[1], stepNumber);
            checkPair(arrays[0], models[0], arrays[1], models[1], stepNumber);
            checkPair(arrays[1], models[1], arrays[0], models[0], stepNumber);
        }
    });
    return 0;
}
