#pragma once

#include "base/Value.hpp"

#include <concepts>
#include <map>
#include <memory>
#include <set>
#include <type_traits>
#include <vector>

/// Deep copies of containers of objects. The containers are made anew, to be changed freely; an
/// object stands in them by its own deep copy: what its `mutableDeepCopy()` answers, or else its
/// `mutableCopy()`, or else its `copy()`, or else the object itself, shared. Null stays null. Keys
/// of maps are kept as they are.
///
/// Containers inside of containers are copied alike. A `Value` is deep and changeable by itself.
namespace tav {

namespace internal {

template <class T>
concept HasMutableDeepCopy = requires(T& object) {
    { object.mutableDeepCopy() } -> std::convertible_to<std::shared_ptr<T>>;
};
template <class T>
concept HasMutableCopy = requires(T& object) {
    { object.mutableCopy() } -> std::convertible_to<std::shared_ptr<T>>;
};
template <class T>
concept HasCopy = requires(T& object) {
    { object.copy() } -> std::convertible_to<std::shared_ptr<T>>;
};

} // namespace internal

// All are declared first, so that each finds the others, whatever is nested in what.
[[nodiscard]] inline Value mutableDeepCopy(const Value& value) { return value; }
template <class T>
[[nodiscard]] std::shared_ptr<T> mutableDeepCopy(const std::shared_ptr<T>& object);
template <class T>
[[nodiscard]] std::vector<T> mutableDeepCopy(const std::vector<T>& array);
template <class T, class Less>
[[nodiscard]] std::set<T, Less> mutableDeepCopy(const std::set<T, Less>& set);
template <class Key, class T, class Less>
[[nodiscard]] std::map<Key, T, Less> mutableDeepCopy(const std::map<Key, T, Less>& dictionary);

template <class T>
std::shared_ptr<T> mutableDeepCopy(const std::shared_ptr<T>& object) {
    if (object == nullptr) {
        return nullptr;
    }
    if constexpr (internal::HasMutableDeepCopy<T>) {
        return object->mutableDeepCopy();
    } else if constexpr (internal::HasMutableCopy<T>) {
        return object->mutableCopy();
    } else if constexpr (internal::HasCopy<T>) {
        return object->copy();
    } else {
        return object;
    }
}

template <class T>
std::vector<T> mutableDeepCopy(const std::vector<T>& array) {
    std::vector<T> copy;
    copy.reserve(array.size());
    for (const T& element : array) {
        copy.push_back(mutableDeepCopy(element));
    }
    return copy;
}

template <class T, class Less>
std::set<T, Less> mutableDeepCopy(const std::set<T, Less>& set) {
    std::set<T, Less> copy(set.key_comp());
    for (const T& element : set) {
        copy.insert(mutableDeepCopy(element));
    }
    return copy;
}

template <class Key, class T, class Less>
std::map<Key, T, Less> mutableDeepCopy(const std::map<Key, T, Less>& dictionary) {
    std::map<Key, T, Less> copy(dictionary.key_comp());
    for (const auto& [key, value] : dictionary) {
        copy.emplace_hint(copy.end(), key, mutableDeepCopy(value));
    }
    return copy;
}

} // namespace tav
