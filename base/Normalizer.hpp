#pragma once

#include <stdexcept>

#include <unicode/unorm2.h>
#include <unicode/utypes.h>

namespace tav::internal {

/// One of ICU's normalizers by the function that hands it out (`unorm2_getNFCInstance`, ...). It
/// lives as long as the process. Throws `std::runtime_error` where ICU has none.
[[nodiscard]] inline const UNormalizer2* normalizer(const UNormalizer2* (*instance)(UErrorCode*)) {
    UErrorCode error = U_ZERO_ERROR;
    const UNormalizer2* const found = instance(&error);
    if (U_FAILURE(error)) {
        throw std::runtime_error(u_errorName(error));
    }
    return found;
}

} // namespace tav::internal
