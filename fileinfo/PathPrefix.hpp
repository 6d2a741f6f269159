#pragma once

#include <string_view>

namespace tav::internal {

/// Whether the upper-cased text begins with the upper-cased prefix, by units of UTF-16: a byte that
/// is no UTF-8 is not the beginning of a letter.
[[nodiscard]] bool beginsIgnoringCase(std::string_view text, std::string_view prefix);

} // namespace tav::internal
