// KDRKeyArray.cpp - the keyed array: position table maintenance
#include "kdrcore/containers/KDRKeyArray.h"

namespace {

// The position-table entry for `key`: -1 for a negative key or one beyond the table.
int getKeyIndex(KDRArray<int> const & keyIndexes, int key) {
    if (key < 0 || key >= keyIndexes.size())
        return -1;
    return keyIndexes[static_cast<std::size_t>(key)];
}

// Writes the table entry for `key`, growing the table with -1 entries to reach it. False, with
// nothing changed, for a negative key.
bool setKeyIndex(KDRArray<int> & keyIndexes, int key, int index) {
    if (key < 0)
        return false;
    if (key >= keyIndexes.size())
        keyIndexes.resize(static_cast<std::size_t>(key) + 1, -1);
    keyIndexes[static_cast<std::size_t>(key)] = index;
    return true;
}

} // namespace

KDRKeyArray const & KDRKeyArray::operator=(KDRKeyArray const & other) {
    if (this != &other) {
        m_keys = other.m_keys;
        m_keyIndexes = other.m_keyIndexes;
    }
    return *this;
}

void KDRKeyArray::swap(KDRKeyArray & other) {
    m_keys.swap(other.m_keys);
    m_keyIndexes.swap(other.m_keyIndexes);
}

void KDRKeyArray::clear() {
    m_keys.clear();
    m_keyIndexes.clear();
}

KDRKey * KDRKeyArray::getKey(int index) const {
    if (index < 0 || index >= m_keys.size())
        return nullptr;
    return m_keys[static_cast<std::size_t>(index)];
}

KDRKey * KDRKeyArray::findKey(int key) const {
    int const i = getKeyIndex(m_keyIndexes, key);
    if (i < 0 || i >= m_keys.size())
        return nullptr;
    return m_keys[static_cast<std::size_t>(i)];
}

bool KDRKeyArray::addKey(KDRKey * key) {
    int const k = key != nullptr ? key->getKey() : -1;
    int const i = getKeyIndex(m_keyIndexes, k);
    if (i != -1) {
        // The key is in use: the former object just leaves the array.
        m_keys[static_cast<std::size_t>(i)] = key;
        return true;
    }
    if (!setKeyIndex(m_keyIndexes, k, m_keys.size()))
        return false;
    m_keys.push_back(key);
    return true;
}

bool KDRKeyArray::removeKey(KDRKey * key) {
    int const k = key != nullptr ? key->getKey() : -1;
    int const i = getKeyIndex(m_keyIndexes, k);
    if (i == -1)
        return false;
    m_keyIndexes[static_cast<std::size_t>(k)] = -1;
    m_keys.erase(i);
    // Every table entry naming a later position follows its object down by one.
    for (int & index : m_keyIndexes)
        if (index > i)
            --index;
    return true;
}
