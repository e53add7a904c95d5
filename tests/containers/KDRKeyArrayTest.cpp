// Tests of KDRKey and KDRKeyArray, against an ordered model.
#include "kdrcore/containers/KDRKeyArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <utility>
#include <vector>

TEST(KDRKeyArray, RemovalRenumbersAndCopiesShareTheObjects) {
    KDRKey k5(5), k7(7), k9(9), again5(5);
    KDRKeyArray a;
    a.addKey(&k5);
    a.addKey(&k7);
    a.addKey(&k9);
    EXPECT_TRUE(a.removeKey(&again5)); // only the key value counts
    EXPECT_TRUE(a.getNumKeys() == 2 && a.findKey(5) == nullptr && a.findKey(9) == &k9);
    EXPECT_EQ(a.getKey(0), &k7); // renumbered into 5's place
    KDRKeyArray copy(a), other;  // the copy constructor copies, as operator= does
    other.swap(copy);
    EXPECT_TRUE(copy.getNumKeys() == 0 && other.getKey(1) == &k9 && other.findKey(7) == &k7);
    EXPECT_TRUE(copy.addKey(&k5)); // the swapped-in empty array works
}

// Three objects per key value from -3 up, and null: default keys (0) collide, negative keys and
// null are refused, a key in use is replaced in place.
TEST(KDRKeyArray, AgreesWithAModelOverRandomOperations) {
    constexpr int maxKey = 40;
    std::mt19937 rng(20240611);
    std::vector<std::unique_ptr<KDRKey>> pool;
    for (int k = -3; k <= maxKey; ++k)
        for (int twin = 0; twin < 3; ++twin)
            pool.push_back(k == 0 ? std::make_unique<KDRKey>() : std::make_unique<KDRKey>(k));
    pool.push_back(nullptr);
    KDRKeyArray a;
    std::vector<std::pair<int, KDRKey *>> model; // (key, object) in order of addition
    auto held = [&model](int k) {
        return std::find_if(model.begin(), model.end(), [k](auto & e) { return e.first == k; });
    };
    for (int step = 0; step < 4000; ++step) {
        KDRKey * obj = pool[rng() % pool.size()].get();
        const int k = obj != nullptr ? obj->getKey() : -1;
        const auto it = held(k);
        const unsigned op = static_cast<unsigned>(rng() % 10);
        if (op < 5) {
            if (it != model.end())
                it->second = obj;
            else if (k >= 0)
                model.emplace_back(k, obj);
            EXPECT_EQ(a.addKey(obj), k >= 0);
        } else if (op < 9) {
            EXPECT_EQ(a.removeKey(obj), it != model.end());
            if (it != model.end())
                model.erase(it);
        } else if (step % 7 == 0) {
            KDRKeyArray copy;
            copy = a;
            copy.swap(a);
        } else if (step % 97 == 0) {
            a.clear();
            model.clear();
        }
        ASSERT_EQ(a.getNumKeys(), static_cast<int>(model.size())) << "step " << step;
        for (int i = -1; i <= a.getNumKeys(); ++i)
            ASSERT_EQ(a.getKey(i), i >= 0 && i < a.getNumKeys() ? model[i].second : nullptr)
                << "position " << i << " step " << step;
        for (int key = -1; key <= maxKey + 1; ++key)
            ASSERT_EQ(a.findKey(key), held(key) != model.end() ? held(key)->second : nullptr)
                << "key " << key << " step " << step;
    }
}
