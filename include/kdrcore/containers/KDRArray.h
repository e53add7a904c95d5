// kdrcore/containers/KDRArray.h - the library's array: std::vector with an int face
#ifndef KDRCORE_CONTAINERS_KDRARRAY_H
#define KDRCORE_CONTAINERS_KDRARRAY_H

#include <cstddef>
#include <vector>

/// The standard vector with `int` sizes and indexes and plain-pointer iterators. Adds no field
/// and no virtual operation; storage and growth are the vector's. The vector's own members stay
/// reachable (push_back, resize, operator[], data, ...); the ones below hide theirs.
template <class T> class KDRArray : public std::vector<T> {
public:
    using Base = std::vector<T>;
    using Base::assign;
    using Base::Base;
    using Base::erase;

    KDRArray() = default;

    /// Number of elements; 0 for an array that never had storage.
    int size() const { return static_cast<int>(Base::size()); }

    /// Plain pointer to the first element; null for an array that never had storage.
    T * begin() { return Base::data(); }
    const T * begin() const { return Base::data(); }
    /// Plain pointer one past the last element.
    T * end() { return Base::data() + Base::size(); }
    const T * end() const { return Base::data() + Base::size(); }

    /// Makes the array hold `n` value-made elements (0 for numbers, null for pointers).
    void assign(int n) { Base::assign(static_cast<std::size_t>(n < 0 ? 0 : n), T()); }

    /// Removes the element at `index`; later ones move down by one. Returns a pointer to the
    /// element now at `index` (the end pointer when the last one went), or null, with nothing
    /// changed, when `index` is outside [0, size()).
    T * erase(int index) {
        if (index < 0 || index >= size())
            return nullptr;
        Base::erase(Base::begin() + index);
        return Base::data() + index;
    }

    /// `erase` of the index of `element`; null, with nothing changed, for a pointer outside
    /// [begin(), end()).
    T * erase(T * element) {
        T * const first = begin();
        if (element == nullptr || first == nullptr || element < first || element >= end())
            return nullptr;
        return erase(static_cast<int>(element - first));
    }
};

/// Writes start, start + step, start + 2 * step, ... to [first, last), in ascending order; each
/// value is the previous one plus `step`. Nothing is written when first >= last.
template <class T>
void fillArithmeticalSuite(T * first, T * last, const T & start, const T & step) {
    T value = start;
    for (T * p = first; p < last; ++p) {
        *p = value;
        value = value + step;
    }
}

#endif // KDRCORE_CONTAINERS_KDRARRAY_H
