#pragma once

#include <array>
#include <cstddef>
#include <new>

namespace tav::internal {

/// One instance of a class for the whole life of the process: made at the first call, from any
/// thread, and never destroyed, so that it may also be used while the program ends.
template <class T>
[[nodiscard]] T& neverDestroyed() {
    alignas(T) static std::array<std::byte, sizeof(T)> storage;
    static T& instance = *new (storage.data()) T;
    return instance;
}

} // namespace tav::internal
