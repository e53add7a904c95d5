// Fuzz target: KDRKeyArray against a model of its contract.
//
// A pool of keyed objects (several per key value, negative keys included) goes in and out of two
// arrays; the model keeps the objects in order of addition. After every operation each array is
// compared with its model: the count, every position, and findKey over all key values, those
// beyond the table and negative ones included.
#include "FuzzCheck.h"

#include "kdrcore/containers/KDRKeyArray.h"

#include <algorithm>
#include <fuzzer/FuzzedDataProvider.h>
#include <utility>
#include <vector>

namespace {

constexpr int MAX_KEY = 80;

using Model = std::vector<KDRKey *>; // the objects in order of addition

KDRKey * modelFind(const Model & m, int key) {
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

void checkSame(const KDRKeyArray & a, const Model & m, int step) {
    FUZZ_CHECK(a.getNumKeys() == static_cast<int>(m.size()), "step %d: getNumKeys %d, expected %zu",
               step, a.getNumKeys(), m.size());
    for (int i = -2; i < static_cast<int>(m.size()) + 2; ++i) {
        KDRKey * const expected =
            i >= 0 && i < static_cast<int>(m.size()) ? m[static_cast<std::size_t>(i)] : nullptr;
        FUZZ_CHECK(a.getKey(i) == expected, "step %d: getKey(%d)", step, i);
    }
    for (int key = -3; key <= MAX_KEY + 3; ++key)
        FUZZ_CHECK(a.findKey(key) == modelFind(m, key), "step %d: findKey(%d)", step, key);
    FUZZ_CHECK(a.findKey(1 << 30) == nullptr && a.findKey(-(1 << 30)) == nullptr,
               "step %d: findKey far out", step);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t * data, std::size_t size) {
    FuzzedDataProvider in(data, size);
    std::vector<KDRKey> pool;
    pool.reserve(64); // the arrays hold pointers into the pool: it must not move
    while (pool.size() < 64 && in.remaining_bytes() > 0 && in.ConsumeBool())
        pool.emplace_back(in.ConsumeIntegralInRange(-3, MAX_KEY));
    pool.emplace_back(0);
    pool.emplace_back(); // two key-0 objects: they collide

    KDRKeyArray arrays[2];
    Model models[2];
    for (int step = 0; in.remaining_bytes() > 0 && step < 300; ++step) {
        const int which = in.ConsumeBool() ? 1 : 0;
        KDRKeyArray & a = arrays[which];
        Model & m = models[which];
        const std::size_t pick = in.ConsumeIntegralInRange<std::size_t>(0, pool.size());
        KDRKey * const object = pick == pool.size() ? nullptr : &pool[pick];
        switch (in.ConsumeIntegralInRange(0, 7)) {
        case 0:
        case 1:
        case 2: {
            const bool expected = modelAdd(m, object);
            FUZZ_CHECK(a.addKey(object) == expected, "step %d: addKey should be %d", step,
                       expected);
            break;
        }
        case 3:
        case 4: {
            const bool expected = modelRemove(m, object);
            FUZZ_CHECK(a.removeKey(object) == expected, "step %d: removeKey should be %d", step,
                       expected);
            break;
        }
        case 5:
            a.swap(arrays[1 - which]);
            std::swap(m, models[1 - which]);
            break;
        case 6: {
            const int kind = in.ConsumeIntegralInRange(0, 2);
            if (kind == 0) {
                a = arrays[1 - which];
            } else if (kind == 1) {
                KDRKeyArray copy(arrays[1 - which]); // copies, as operator= does
                a.swap(copy);
            } else {
                KDRKeyArray & self = a;
                a = self;
                break;
            }
            m = models[1 - which];
            break;
        }
        default:
            a.clear();
            m.clear();
            break;
        }
        checkSame(arrays[0], models[0], step);
        checkSame(arrays[1], models[1], step);
    }
    return 0;
}
