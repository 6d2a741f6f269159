#pragma once

#include "base/Data.hpp"

#include <cstdint>
#include <new>
#include <optional>
#include <stdexcept>

namespace tav {

/// So many zeros; nothing when there is no room for them.
[[nodiscard]] inline std::optional<Data> dataOfSize(std::uint64_t size) {
    try {
        return Data(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    } catch (const std::length_error&) {
        return std::nullopt;
    }
}

} // namespace tav
