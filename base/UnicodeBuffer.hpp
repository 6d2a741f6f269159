#pragma once

#include "base/Unicode.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include <unicode/utypes.h>

namespace tav::internal {

/// A length as ICU takes it. Throws `std::length_error` for what it cannot count.
[[nodiscard]] inline std::int32_t icuLength(std::size_t length) {
    if (length > std::size_t{std::numeric_limits<std::int32_t>::max()}) {
        throw std::length_error("a text longer than ICU can take");
    }
    return static_cast<std::int32_t>(length);
}

/// What an ICU operation writes: `operation(buffer, capacity, error)` answers the length that it
/// needs, and is asked again when the first guess (a length) was too small.
template <class Operation>
[[nodiscard]] std::u16string icuResult(std::size_t guess, Operation operation) {
    std::u16string units(guess, u'\0');
    UErrorCode error = U_ZERO_ERROR;
    std::int32_t length = operation(units.data(), icuLength(units.size()), error);
    if (error == U_BUFFER_OVERFLOW_ERROR && length > 0) {
        units.resize(static_cast<std::size_t>(length));
        error = U_ZERO_ERROR;
        length = operation(units.data(), length, error);
    }
    if (U_FAILURE(error)) {
        throw std::length_error(u_errorName(error));
    }
    units.resize(static_cast<std::size_t>(length));
    return units;
}

} // namespace tav::internal
