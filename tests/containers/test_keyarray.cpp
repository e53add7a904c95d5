// Tests of KDRKey and KDRKeyArray, against an ordered model.
#include "kdrcore/containers/KDRKeyArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {
class Renamable : public KDRKey {
public:
    using KDRKey::KDRKey;
    using KDRKey::setKey;
};
} // namespace

TEST(KDRKeyArray, StatedCases) {
    KDRKey negative(-3), zero, otherZero, k5(5), k7(7), k9(9), again5(5), k3(3), k50(50);
    Renamable renamed(3);
    renamed.setKey(12);
    EXPECT_EQ(renamed.getKey(), 12);
    EXPECT_EQ(KDRKey(k7).getKey(), 7);

    KDRKeyArray a;
    EXPECT_FALSE(a.addKey(nullptr));
    EXPECT_FALSE(a.addKey(&negative));
    EXPECT_TRUE(a.addKey(&zero));
    EXPECT_TRUE(a.addKey(&otherZero)); // two default keys collide: the second replaces the first
    EXPECT_EQ(a.getNumKeys(), 1);
    EXPECT_EQ(a.findKey(0), &otherZero);
    a.clear();
    a.addKey(&k5);
    a.addKey(&k7);
    a.addKey(&k9);
    EXPECT_TRUE(a.removeKey(&again5)); // only the key value counts
    EXPECT_EQ(a.getNumKeys(), 2);
    EXPECT_EQ(a.findKey(5), nullptr);
    EXPECT_EQ(a.findKey(9), &k9);
    EXPECT_EQ(a.getKey(0), &k7); // renumbered into 5's place
    EXPECT_FALSE(a.removeKey(&k5) || a.removeKey(&k3) || a.removeKey(&k50) || a.removeKey(nullptr));
    EXPECT_EQ(a.findKey(1000), nullptr); // looking beyond the table does not grow it
    EXPECT_EQ(a.findKey(-1), nullptr);
    EXPECT_EQ(a.getKey(2), nullptr);
    EXPECT_EQ(a.getKey(-1), nullptr);

    KDRKeyArray copy(a); // the copy constructor copies, as operator= does
    EXPECT_EQ(copy.findKey(9), &k9);
    KDRKeyArray other;
    other.swap(copy);
    EXPECT_EQ(copy.getNumKeys(), 0);
    EXPECT_EQ(other.getKey(1), &k9);
    EXPECT_TRUE(copy.addKey(&k3)); // the swapped-in empty array works
}

TEST(KDRKeyArray, AgreesWithAModelOverRandomOperations) {
    constexpr int maxKey = 40;
    std::mt19937 rng(20240611);
    std::vector<std::unique_ptr<KDRKey>> pool; // three objects per key value, some negative
    for (int k = -3; k <= maxKey; ++k)
        for (int twin = 0; twin < 3; ++twin)
            pool.push_back(std::make_unique<KDRKey>(k));
    KDRKeyArray a;
    std::vector<std::pair<int, KDRKey *>> model; // (key, object) in order of addition
    for (int step = 0; step < 4000; ++step) {
        KDRKey * obj = pool[rng() % pool.size()].get();
        const int k = obj->getKey();
        auto held =
            std::find_if(model.begin(), model.end(), [k](auto & e) { return e.first == k; });
        const unsigned op = rng() % 10;
        if (op < 5) {
            if (held != model.end())
                held->second = obj;
            else if (k >= 0)
                model.emplace_back(k, obj);
            EXPECT_EQ(a.addKey(obj), k >= 0);
        } else if (op < 9) {
            const bool expected = held != model.end();
            if (expected)
                model.erase(held);
            EXPECT_EQ(a.removeKey(obj), expected);
        } else if (step % 7 == 0) {
            KDRKeyArray copy;
            copy = a;
            copy.swap(a);
        } else if (step % 97 == 0) {
            a.clear();
            model.clear();
        }
        ASSERT_EQ(a.getNumKeys(), static_cast<int>(model.size())) << "step " << step;
        for (int i = 0; i < a.getNumKeys(); ++i)
            ASSERT_EQ(a.getKey(i), model[i].second) << "position " << i << " step " << step;
        for (int key = -1; key <= maxKey + 1; ++key) {
            auto it = std::find_if(model.begin(), model.end(),
                                   [key](auto & e) { return e.first == key; });
            ASSERT_EQ(a.findKey(key), it != model.end() ? it->second : nullptr)
                << "key " << key << " step " << step;
        }
    }
}
