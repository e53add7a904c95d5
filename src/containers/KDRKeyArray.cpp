// KDRKeyArray.cpp - the keyed array: position table maintenance
#include "kdrcore/containers/KDRKeyArray.h"

const KDRKeyArray & KDRKeyArray::operator=(const KDRKeyArray & other) {
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
    const int i = getKeyIndex(key);
    if (i < 0 || i >= m_keys.size())
        return nullptr;
    return m_keys[static_cast<std::size_t>(i)];
}

bool KDRKeyArray::addKey(KDRKey * key) {
    const int k = key != nullptr ? key->getKey() : -1;
    const int i = getKeyIndex(k);
    if (i != -1) {
        // The key is in use: the former object just leaves the array.
        m_keys[static_cast<std::size_t>(i)] = key;
        return true;
    }
    if (!setKeyIndex(k, m_keys.size()))
        return false;
    m_keys.push_back(key);
    return true;
}

bool KDRKeyArray::removeKey(KDRKey * key) {
    const int k = key != nullptr ? key->getKey() : -1;
    const int i = getKeyIndex(k);
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

int KDRKeyArray::getKeyIndex(int key) const {
    if (key < 0 || key >= m_keyIndexes.size())
        return -1;
    return m_keyIndexes[static_cast<std::size_t>(key)];
}

bool KDRKeyArray::setKeyIndex(int key, int index) {
    if (key < 0)
        return false;
    if (key >= m_keyIndexes.size())
        m_keyIndexes.resize(static_cast<std::size_t>(key) + 1, -1);
    m_keyIndexes[static_cast<std::size_t>(key)] = index;
    return true;
}
