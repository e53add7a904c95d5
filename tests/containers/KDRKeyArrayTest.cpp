// Tests of KDRKeyArray: renumbering and shared objects, by hand. The model of its operations
// lives in fuzz/keyarray_fuzzer.cpp.
#include "kdrcore/containers/KDRKeyArray.h"

#include <gtest/gtest.h>

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
