// Fuzz target: KDRBoolArray against a model of its contract.
//
// Two arrays and their models (the bits below the size, and the capacity, whose growth rule is
// exact) go through the operations of the table; after each one both arrays are compared bit by
// bit with their models, and the queries between them with the models' answers. Indexes stay
// below a few hundred, negative ones and ones beyond the size included wherever the contract
// says what happens. The counts and scans have vector versions: every level runs the input.
#include "Fuzz.h"

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
    bool get(int i) const { return i >= 0 && i < size() && bits[static_cast<std::size_t>(i)]; }
    void reserveExact(int n) { // (n + 7) / 8 bytes when n exceeds the capacity
        if (n > capacity)
            capacity = (n + 7) / 8 * 8;
    }
    void resize(int n, bool value) {
        reserveExact(n);
        bits.resize(static_cast<std::size_t>(std::max(n, 0)), value);
    }
    void assign(int n, bool value) {
        reserveExact(n);
        bits.assign(static_cast<std::size_t>(std::max(n, 0)), value);
    }
    // The index forms: grow to the largest index, then set the non-negative ones to `value`.
    void setIndexes(std::vector<int> const & indexes, bool value) {
        if (!indexes.empty() && *std::max_element(indexes.begin(), indexes.end()) >= size())
            resize(*std::max_element(indexes.begin(), indexes.end()) + 1, false);
        for (int i : indexes)
            if (i >= 0)
                bits[static_cast<std::size_t>(i)] = value;
    }
    // Union or exclusive or of `other`, with the growth rule of the array.
    void combine(Model const & other, bool exclusive) {
        if (other.size() == 0)
            return;
        reserveExact(other.size());
        if (other.size() > size())
            bits.resize(other.bits.size(), false);
        for (std::size_t i = 0; i < other.bits.size(); ++i)
            bits[i] = exclusive ? bits[i] != other.bits[i] : bits[i] || other.bits[i];
    }
    int find(bool value, int from, int to, int by) const { // from `from` towards `to`, inclusive
        for (int i = from; by > 0 ? i <= to : i >= to; i += by)
            if (i >= 0 && i < size() && bits[static_cast<std::size_t>(i)] == value)
                return i;
        return -1;
    }
};

struct State {
    KDRBoolArray arrays[2];
    Model models[2];
    int which = 0; // the array the operation works on; the other is its argument

    KDRBoolArray & a() { return arrays[which]; }
    Model & m() { return models[which]; }
    KDRBoolArray & b() { return arrays[1 - which]; }
    Model & mb() { return models[1 - which]; }

    void check() const {
        for (int k = 0; k < 2; ++k) {
            KDRBoolArray const & x = arrays[k];
            Model const & mx = models[k];
            FUZZ_CHECK(x.size() == mx.size() && x.capacity() == mx.capacity,
                       "size %d capacity %d, expected %d %d", x.size(), x.capacity(), mx.size(),
                       mx.capacity);
            int set = 0;
            for (int i = -2; i < mx.size() + 10; ++i) {
                bool const e = mx.get(i);
                FUZZ_CHECK(x.get(i) == e && x[i] == e, "bit %d of array %d", i, k);
                if (i >= 0 && i < mx.size())
                    FUZZ_CHECK(x.getNoSizeTest(i) == e && x.getAsMask(i) == (e ? 1 << (i & 7) : 0),
                               "getNoSizeTest/getAsMask(%d)", i);
                set += i >= 0 && e ? 1 : 0;
            }
            FUZZ_CHECK(x.getNumberOfBitSet() == set && x.getNumberOfBitCleared() == mx.size() - set,
                       "%d bits set, expected %d", x.getNumberOfBitSet(), set);
            // Between the arrays: hasInter over the common range; bitTest, every bit set in the
            // argument set here, false when its top bit lies beyond this array; equality.
            Model const & mo = models[1 - k];
            bool inter = false, covers = true;
            for (int i = 0; i < mo.size(); ++i) {
                inter = inter || (mo.get(i) && mx.get(i));
                covers = covers && (!mo.get(i) || mx.get(i));
            }
            KDRBoolArray const & o = arrays[1 - k];
            FUZZ_CHECK(x.hasInter(o) == inter && x.bitTest(o) == covers &&
                           (x == o) == (mx.bits == mo.bits),
                       "hasInter %d bitTest %d ==, expected %d %d", x.hasInter(o), x.bitTest(o),
                       inter, covers);
        }
    }
};

std::vector<int> consumeIndexes(FuzzedDataProvider & in, int low) {
    std::vector<int> indexes(in.ConsumeIntegralInRange<std::size_t>(0, 12));
    for (int & i : indexes)
        i = in.ConsumeIntegralInRange(low, MAX_INDEX);
    return indexes;
}

using Op = fuzz::Operation<State>;
using In = FuzzedDataProvider;

// set, clear or toggle of one bit; the AutoResize forms take any index, the others one inside.
void singleBit(State & s, In & in) {
    bool const grow = in.ConsumeBool();
    int const op = in.ConsumeIntegralInRange(0, 2);
    if (!grow && s.m().size() == 0)
        return;
    int const i = grow ? in.ConsumeIntegralInRange(-3, MAX_INDEX)
                       : in.ConsumeIntegralInRange(0, s.m().size() - 1);
    KDRBoolArray & a = s.a();
    if (op == 0)
        grow ? a.setAutoResize(i) : a.set(i);
    else if (op == 1)
        grow ? a.clearAutoResize(i) : a.clear(i);
    else
        grow ? a.toggleAutoResize(i) : a.toggle(i);
    if (i >= 0)
        s.m().setIndexes({i}, op == 0 || (op == 2 && !s.m().get(i)));
}

// assign(count, indexes, -1), set(count, indexes), clear(count, indexes), set(KDRArray).
void indexList(State & s, In & in) {
    int const kind = in.ConsumeIntegralInRange(0, 3);
    std::vector<int> const indexes = consumeIndexes(in, -3);
    int const count = static_cast<int>(indexes.size());
    KDRArray<int> list;
    for (int i : indexes)
        list.push_back(i);
    kind == 0   ? s.a().assign(count, indexes.data(), -1)
    : kind == 1 ? s.a().set(count, indexes.data())
    : kind == 2 ? s.a().clear(count, indexes.data())
                : s.a().set(list);
    s.m().setIndexes(indexes, kind != 2);
}

void range(State & s, In & in) { // start < 0: nothing; count < 1 counts as 1
    bool const value = in.ConsumeBool();
    int const start = in.ConsumeIntegralInRange(-3, MAX_INDEX - 40);
    int const count = in.ConsumeIntegralInRange(-3, 40);
    value ? s.a().set(start, count) : s.a().clear(start, count);
    std::vector<int> r;
    for (int i = start; start >= 0 && i < start + std::max(count, 1); ++i)
        r.push_back(i);
    s.m().setIndexes(r, value);
}

void queries(State & s, In & in) {
    KDRBoolArray const & a = s.a();
    Model const & m = s.m();
    for (bool v : {false, true}) {
        int const start = in.ConsumeIntegralInRange(-3, m.size() + 3);
        int const last = m.size() - 1;
        FUZZ_CHECK(a.findFirst(v, start) == m.find(v, std::max(start, 0), last, 1) &&
                       a.findLast(v, start) == (start < 0 ? -1 : m.find(v, start, 0, -1)) &&
                       a.findFirst(v) == m.find(v, 0, last, 1) &&
                       a.findLast(v) == m.find(v, last, 0, -1) &&
                       a.findLast(v, 1000000) == m.find(v, last, 0, -1),
                   "findFirst/findLast(%d, %d)", v, start);
        KDRArray<int> out;
        out.push_back(-7); // must go: the result holds exactly the indexes
        bool const any = v ? a.getIndexesSet(out) : a.getIndexesCleared(out);
        std::vector<int> expected;
        for (int i = 0; i < m.size(); ++i)
            if (m.get(i) == v)
                expected.push_back(i);
        FUZZ_CHECK(any == !expected.empty() && std::vector<int>(out.begin(), out.end()) == expected,
                   "getIndexes%s", v ? "Set" : "Cleared");
    }
}

Op const OPS[] = {
    {"swap roles", [](State & s, In &) { s.which = 1 - s.which; }},
    {"assign(n, value)",
     [](State & s, In & in) {
         int const n = in.ConsumeIntegralInRange(-2, MAX_INDEX);
         bool const v = in.ConsumeBool();
         s.a().assign(n, v);
         s.m().assign(n, v);
     }},
    {"assign(n, bytes)",
     [](State & s, In & in) {
         int const n = in.ConsumeIntegralInRange(0, MAX_INDEX);
         std::vector<char> bytes = in.ConsumeBytes<char>(static_cast<std::size_t>((n + 7) / 8));
         bytes.resize(static_cast<std::size_t>((n + 7) / 8), 0);
         s.a().assign(n, bytes.data());
         s.m().assign(n, false);
         for (int i = 0; i < n; ++i)
             s.m().bits[static_cast<std::size_t>(i)] =
                 (bytes[static_cast<std::size_t>(i / 8)] >> (i % 8)) & 1;
     }},
    {"assign(count, indexes, size)", // with a size: starts from all clear
     [](State & s, In & in) {
         int const size = in.ConsumeIntegralInRange(1, MAX_INDEX);
         std::vector<int> indexes = consumeIndexes(in, 0);
         for (int & i : indexes)
             i %= size;
         s.a().assign(static_cast<int>(indexes.size()), indexes.data(), size);
         s.m().assign(size, false);
         s.m().setIndexes(indexes, true);
     }},
    {"index list", indexList},
    {"resize",
     [](State & s, In & in) {
         int const n = in.ConsumeIntegralInRange(0, MAX_INDEX);
         bool const v = in.ConsumeBool();
         s.a().resize(n, v);
         s.m().resize(n, v);
     }},
    {"one bit", singleBit},
    {"set / clear(start, count)", range},
    {"setAll / clearAll",
     [](State & s, In & in) {
         bool const v = in.ConsumeBool();
         v ? s.a().setAll() : s.a().clearAll();
         s.m().bits.assign(s.m().bits.size(), v);
     }},
    {"inverse / toggleAll", // toggleAll flips the spare bits too: no later operation may show them
     [](State & s, In & in) {
         in.ConsumeBool() ? s.a().inverse() : s.a().toggleAll();
         s.m().bits.flip();
     }},
    {"set(other) / merge",
     [](State & s, In & in) {
         in.ConsumeBool() ? s.a().set(s.b()) : s.a().merge(s.b());
         s.m().combine(s.mb(), false);
     }},
    {"toggle(other)",
     [](State & s, In &) {
         s.a().toggle(s.b());
         s.m().combine(s.mb(), true);
     }},
    {"inter", // the size falls to the common one, except from 0
     [](State & s, In &) {
         s.a().inter(s.b());
         Model & m = s.m();
         if (m.size() > 0)
             m.bits.resize(std::min(m.bits.size(), s.mb().bits.size()));
         for (std::size_t i = 0; i < m.bits.size(); ++i)
             m.bits[i] = m.bits[i] && s.mb().bits[i];
     }},
    {"clear(other)", // over the common range, sizes unchanged
     [](State & s, In &) {
         s.a().clear(s.b());
         for (std::size_t i = 0; i < std::min(s.m().bits.size(), s.mb().bits.size()); ++i)
             s.m().bits[i] = s.m().bits[i] && !s.mb().bits[i];
     }},
    {"copy(other, spare) / operator=", // operator= returns a copy, equal to the assigned array
     [](State & s, In & in) {
         int const how = in.ConsumeIntegralInRange(0, 2);
         if (how < 2)
             s.a().copy(s.b(), how == 1);
         else
             FUZZ_CHECK((s.a() = s.b()) == s.b());
         s.m().reserveExact(s.mb().size());
         s.m().bits = s.mb().bits;
     }},
    {"copy construction", // exact storage for the size
     [](State & s, In &) {
         KDRBoolArray c(s.b());
         s.a().swap(c);
         s.m().bits = s.mb().bits;
         s.m().capacity = (s.mb().size() + 7) / 8 * 8;
     }},
    {"construction(n, value)",
     [](State & s, In & in) {
         int const n = in.ConsumeIntegralInRange(-2, MAX_INDEX);
         bool const v = in.ConsumeBool();
         KDRBoolArray c(n, v);
         s.a().swap(c);
         s.m() = Model();
         s.m().assign(n, v);
     }},
    {"swap",
     [](State & s, In &) {
         s.a().swap(s.b());
         std::swap(s.m(), s.mb());
     }},
    {"clearArray",
     [](State & s, In &) {
         s.a().clearArray();
         s.m() = Model();
     }},
    {"insert", // only strictly inside the array
     [](State & s, In & in) {
         int const i = in.ConsumeIntegralInRange(-2, s.m().size() + 2);
         bool const v = in.ConsumeBool();
         s.a().insert(i, v);
         if (i >= 0 && i < s.m().size()) {
             s.m().reserveExact(s.m().size() + 1);
             s.m().bits.insert(s.m().bits.begin() + i, v);
         }
     }},
    {"erase",
     [](State & s, In & in) {
         int const i = in.ConsumeIntegralInRange(-2, s.m().size() + 2);
         s.a().erase(i);
         if (i >= 0 && i < s.m().size())
             s.m().bits.erase(s.m().bits.begin() + i);
     }},
    {"queries", queries},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    fuzz::forEachLevel([data, size](int) {
        FuzzedDataProvider in(data, size);
        State state;
        fuzz::runModel(state, in, OPS, 200);
    });
    return 0;
}
