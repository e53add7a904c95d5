// Fuzz target: KDRKeyArray against a model of its contract.
//
// A pool of keyed objects (several per key value, negative keys included) goes in and out of two
// arrays; the model keeps the objects in order of addition. After every operation each array is
// compared with its model: the count, every position, and findKey over all key values, those
// beyond the table and negative ones included.
#include "Fuzz.h"

#include "kdrcore/containers/KDRKeyArray.h"

#include <algorithm>
#include <fuzzer/FuzzedDataProvider.h>
#include <utility>
#include <vector>

namespace {

constexpr int MAX_KEY = 80;

using Model = std::vector<KDRKey *>; // the objects in order of addition

KDRKey * modelFind(Model const & m, int key) {
    for (KDRKey * k : m)
        if (k->getKey() == key)
            return k;
    return nullptr;
}

bool modelAdd(Model & m, KDRKey * object) {
    if (object == nullptr || object->getKey() < 0)
        return false;
    for (KDRKey *& k : m)
        if (k->getKey() == object->getKey()) {
            k = object; // a key in use: the new object takes the held one's place
            return true;
        }
    m.push_back(object);
    return true;
}

bool modelRemove(Model & m, KDRKey * object) {
    if (object == nullptr)
        return false;
    for (auto it = m.begin(); it != m.end(); ++it)
        if ((*it)->getKey() == object->getKey()) {
            m.erase(it);
            return true;
        }
    return false;
}

void checkSame(KDRKeyArray const & a, Model const & m) {
    FUZZ_CHECK(a.getNumKeys() == static_cast<int>(m.size()), "getNumKeys %d, expected %zu",
               a.getNumKeys(), m.size());
    for (int i = -2; i < static_cast<int>(m.size()) + 2; ++i) {
        KDRKey * const expected =
            i >= 0 && i < static_cast<int>(m.size()) ? m[static_cast<std::size_t>(i)] : nullptr;
        FUZZ_CHECK(a.getKey(i) == expected, "getKey(%d)", i);
    }
    for (int key = -3; key <= MAX_KEY + 3; ++key)
        FUZZ_CHECK(a.findKey(key) == modelFind(m, key), "findKey(%d)", key);
    FUZZ_CHECK(a.findKey(1 << 30) == nullptr && a.findKey(-(1 << 30)) == nullptr,
               "findKey far out");
}

struct State {
    std::vector<KDRKey> pool;
    KDRKeyArray arrays[2];
    Model models[2];
    int which = 0;

    KDRKeyArray & a() { return arrays[which]; }
    Model & m() { return models[which]; }
    KDRKey * consumeObject(FuzzedDataProvider & in) { // null included
        std::size_t const pick = in.ConsumeIntegralInRange<std::size_t>(0, pool.size());
        return pick == pool.size() ? nullptr : &pool[pick];
    }
    void check() const {
        checkSame(arrays[0], models[0]);
        checkSame(arrays[1], models[1]);
    }
};

using In = FuzzedDataProvider;

fuzz::Operation<State> const OPS[] = {
    {"switch arrays", [](State & s, In &) { s.which = 1 - s.which; }},
    {"addKey",
     [](State & s, In & in) {
         KDRKey * const object = s.consumeObject(in);
         bool const expected = modelAdd(s.m(), object);
         FUZZ_CHECK(s.a().addKey(object) == expected, "addKey should be %d", expected);
     }},
    {"removeKey",
     [](State & s, In & in) {
         KDRKey * const object = s.consumeObject(in);
         bool const expected = modelRemove(s.m(), object);
         FUZZ_CHECK(s.a().removeKey(object) == expected, "removeKey should be %d", expected);
     }},
    {"swap",
     [](State & s, In &) {
         s.a().swap(s.arrays[1 - s.which]);
         std::swap(s.m(), s.models[1 - s.which]);
     }},
    {"operator=",
     [](State & s, In &) {
         s.a() = s.arrays[1 - s.which];
         s.m() = s.models[1 - s.which];
     }},
    {"copy construction", // copies, as operator= does
     [](State & s, In &) {
         KDRKeyArray copy(s.arrays[1 - s.which]);
         s.a().swap(copy);
         s.m() = s.models[1 - s.which];
     }},
    {"self-assignment",
     [](State & s, In &) {
         KDRKeyArray & self = s.a();
         s.a() = self;
     }},
    {"clear",
     [](State & s, In &) {
         s.a().clear();
         s.m().clear();
     }},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    State state;
    state.pool.reserve(64); // the arrays hold pointers into the pool: it must not move
    while (state.pool.size() < 64 && in.remaining_bytes() > 0 && in.ConsumeBool())
        state.pool.emplace_back(in.ConsumeIntegralInRange(-3, MAX_KEY));
    state.pool.emplace_back(0);
    state.pool.emplace_back(); // two key-0 objects: they collide
    fuzz::runModel(state, in, OPS, 300);
    return 0;
}
