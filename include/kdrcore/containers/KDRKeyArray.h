// kdrcore/containers/KDRKeyArray.h - objects bearing a small integer key, found by key in O(1)
#ifndef KDRCORE_CONTAINERS_KDRKEYARRAY_H
#define KDRCORE_CONTAINERS_KDRKEYARRAY_H

#include "kdrcore/KDRExport.h"
#include "kdrcore/containers/KDRArray.h"

/// Base of objects that bear a signed integer key. A default-made object has key 0, so two of
/// them collide in a KDRKeyArray. The destructor is neither virtual nor does it do anything.
class KDRCORE_API KDRKey {
public:
    KDRKey() : m_key(0) {}
    /// The key as given, with no test.
    KDRKey(int key) : m_key(key) {}
    KDRKey(KDRKey const & other) = default;
    KDRKey & operator=(KDRKey const & other) = default;
    ~KDRKey() = default;

    int getKey() const { return m_key; }

protected:
    /// Must not be called while the object is held by a KDRKeyArray: the array reads the key
    /// only in addKey and removeKey.
    void setKey(int key) { m_key = key; }

private:
    int m_key;
};

/// Pointers to KDRKey objects in order of addition, found by key through a table indexed by key
/// value. Invariant: for each key k in use, m_keys[m_keyIndexes[k]] is the object added under k,
/// and every position of m_keys is named by exactly one table entry. The table holds one int per
/// key value up to the largest key ever added and shrinks only by clear(). Never owns the objects.
class KDRCORE_API KDRKeyArray {
public:
    KDRKeyArray() = default;
    /// Copies both arrays; the objects are shared with `other`.
    KDRKeyArray(KDRKeyArray const & other) = default;
    /// Releases the arrays, never the objects.
    ~KDRKeyArray() = default;
    /// Copies both arrays; the objects are shared with `other`.
    KDRKeyArray const & operator=(KDRKeyArray const & other);

    /// Exchanges the contents in constant time.
    void swap(KDRKeyArray & other);
    /// Empties both arrays (the table included); the objects stay alive.
    void clear();

    int getNumKeys() const { return m_keys.size(); }
    /// The object at `index` in order of addition; null when index is outside [0, getNumKeys()).
    KDRKey * getKey(int index) const;
    /// The object held under `key`, by table look-up; null when none is. Never grows the table.
    KDRKey * findKey(int key) const;
    /// Adds `key` under its key value. When that value is in use, the new object takes the held
    /// one's place (count and positions stay) and the result is true. False, with nothing changed,
    /// for a null pointer or a negative key.
    bool addKey(KDRKey * key);
    /// Removes the object held under the key value of `key` (any object with that value will do);
    /// later objects move down one position. False when the value is not in use.
    bool removeKey(KDRKey * key);

private:
    KDRArray<KDRKey *> m_keys;  // objects in order of addition, dense
    KDRArray<int> m_keyIndexes; // by key value: position in m_keys, or -1
};

#endif // KDRCORE_CONTAINERS_KDRKEYARRAY_H
