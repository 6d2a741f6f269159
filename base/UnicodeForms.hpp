#pragma once

#include <string>

namespace tav::internal {

/// The canonical decomposition (NFD) of units of UTF-16. Linear for any text.
[[nodiscard]] std::u16string decomposedUnits(std::u16string units);

/// The canonical caseless form of units of UTF-16, itself decomposed.
[[nodiscard]] std::u16string caselessUnits(std::u16string units);

} // namespace tav::internal
