// Tests of KDRKey and KDRKeyArray, against a simple ordered model.
#include "kdrcore/containers/KDRKeyArray.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace {

class Renamable : public KDRKey {
public:
    explicit Renamable(int key) : KDRKey(key) {}
    using KDRKey::setKey;
};

// The objects in order of addition, each with the key it was added under.
using Model = std::vector<std::pair<int, KDRKey *>>;

void expectAgrees(const KDRKeyArray & a, const Model & model, int maxKey, int step) {
    ASSERT_EQ(a.getNumKeys(), static_cast<int>(model.size())) << "step " << step;
    for (int i = 0; i < a.getNumKeys(); ++i)
        EXPECT_EQ(a.getKey(i), model[static_cast<std::size_t>(i)].second)
            << "position " << i << " step " << step;
    EXPECT_EQ(a.getKey(-1), nullptr);
    EXPECT_EQ(a.getKey(a.getNumKeys()), nullptr);
    for (int k = -2; k <= maxKey + 2; ++k) {
        KDRKey * expected = nullptr;
        for (const auto & entry : model)
            if (entry.first == k)
                expected = entry.second;
        EXPECT_EQ(a.findKey(k), expected) << "key " << k << " step " << step;
    }
}

} // namespace

TEST(KDRKey, DefaultKeyAndCopies) {
    KDRKey a;
    EXPECT_EQ(a.getKey(), 0);
    KDRKey b(-7);
    KDRKey c(b);
    EXPECT_EQ(c.getKey(), -7);
    Renamable r(3);
    r.setKey(12);
    EXPECT_EQ(r.getKey(), 12);
}

TEST(KDRKeyArray, RejectionsCollisionsAndRemoval) {
    KDRKeyArray a;
    KDRKey negative(-3), zero, otherZero, k5(5), k7(7), k9(9);
    EXPECT_FALSE(a.addKey(nullptr));
    EXPECT_FALSE(a.addKey(&negative));
    EXPECT_EQ(a.getNumKeys(), 0);
    EXPECT_TRUE(a.addKey(&zero));
    EXPECT_TRUE(a.addKey(&otherZero)); // two default keys collide: the second replaces the first
    EXPECT_EQ(a.getNumKeys(), 1);
    EXPECT_EQ(a.findKey(0), &otherZero);

    EXPECT_TRUE(a.addKey(&k5));
    EXPECT_TRUE(a.addKey(&k7));
    EXPECT_TRUE(a.addKey(&k9));
    KDRKey again5(5);
    EXPECT_TRUE(a.removeKey(&again5)); // only the key value counts
    EXPECT_EQ(a.getNumKeys(), 3);
    EXPECT_EQ(a.findKey(5), nullptr);
    EXPECT_EQ(a.findKey(7), &k7);
    EXPECT_EQ(a.findKey(9), &k9);
    EXPECT_EQ(a.getKey(1), &k7);    // renumbered: 7 moved down into 5's place
    EXPECT_FALSE(a.removeKey(&k5)); // removed twice
    KDRKey k3(3), k50(50);
    EXPECT_FALSE(a.removeKey(&k3));  // within the table, never added
    EXPECT_FALSE(a.removeKey(&k50)); // beyond the table
    EXPECT_FALSE(a.removeKey(nullptr));
    EXPECT_FALSE(a.removeKey(&negative));
    EXPECT_EQ(a.findKey(1000), nullptr); // looking beyond the table does not grow it
    EXPECT_EQ(a.findKey(-1), nullptr);
    EXPECT_EQ(a.getNumKeys(), 3);
}

TEST(KDRKeyArray, CopySwapAndClearShareButNeverOwnTheObjects) {
    auto k1 = std::make_unique<KDRKey>(1);
    auto k4 = std::make_unique<KDRKey>(4);
    KDRKeyArray a;
    a.addKey(k1.get());
    a.addKey(k4.get());

    KDRKeyArray copy(a); // the copy constructor copies, as operator= does
    EXPECT_EQ(copy.getNumKeys(), 2);
    EXPECT_EQ(copy.findKey(4), k4.get());
    KDRKeyArray assigned;
    assigned = a;
    const KDRKeyArray & same = assigned;
    assigned = same; // self-assignment keeps the contents
    EXPECT_EQ(assigned.getKey(0), k1.get());
    EXPECT_TRUE(assigned.removeKey(k1.get()));
    EXPECT_EQ(a.findKey(1), k1.get()); // the source keeps its own tables

    KDRKeyArray empty;
    a.swap(empty);
    EXPECT_EQ(a.getNumKeys(), 0);
    EXPECT_EQ(a.findKey(4), nullptr);
    EXPECT_EQ(empty.findKey(4), k4.get());
    EXPECT_TRUE(a.addKey(k4.get())); // the swapped-in empty array works
    empty.clear();
    EXPECT_EQ(empty.getNumKeys(), 0);
    EXPECT_EQ(empty.findKey(1), nullptr);
    EXPECT_EQ(k1->getKey(), 1); // objects alive (ASan would report otherwise)
}

TEST(KDRKeyArray, AgreesWithAModelOverRandomOperations) {
    constexpr int maxKey = 40;
    std::mt19937 rng(20240611);
    // Several objects per key value, so that replacing and removing by a twin are exercised.
    std::vector<std::unique_ptr<KDRKey>> pool;
    for (int k = -3; k <= maxKey; ++k)
        for (int twin = 0; twin < 3; ++twin)
            pool.push_back(std::make_unique<KDRKey>(k));
    KDRKeyArray a;
    Model model;
    for (int step = 0; step < 4000; ++step) {
        KDRKey * obj = pool[rng() % pool.size()].get();
        const int k = obj->getKey();
        const unsigned op = rng() % 10;
        if (op < 5) {
            bool expected = k >= 0;
            bool replaced = false;
            for (auto & entry : model)
                if (entry.first == k) {
                    entry.second = obj;
                    replaced = true;
                }
            if (expected && !replaced)
                model.emplace_back(k, obj);
            EXPECT_EQ(a.addKey(obj), expected) << "step " << step;
        } else if (op < 9) {
            bool expected = false;
            for (auto it = model.begin(); it != model.end(); ++it)
                if (it->first == k) {
                    model.erase(it);
                    expected = true;
                    break;
                }
            EXPECT_EQ(a.removeKey(obj), expected) << "step " << step;
        } else if (step % 7 == 0) {
            KDRKeyArray copy(a);
            copy.swap(a);
        } else if (step % 97 == 0) {
            a.clear();
            model.clear();
        }
        expectAgrees(a, model, maxKey, step);
        if (::testing::Test::HasFailure())
            break;
    }
}
