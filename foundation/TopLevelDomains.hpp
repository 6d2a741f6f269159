#pragma once

#include <span>
#include <string_view>

namespace tav {

/// Whether the text, in lower case, is one of the top-level domains of the list below. The list is
/// closed: it has retired country codes ("cs", "fx", "su", "tp", "yu", "zr") and "uk", and lacks
/// "eu", "gg", "im", "je", "me", "rs" and all that came after it was written. Any thread.
[[nodiscard]] bool isTLD(std::string_view text);

namespace internal {
/// 246 two-letter codes in alphabetical order, then 15 longer names.
[[nodiscard]] std::span<const std::string_view> topLevelDomains();
} // namespace internal

} // namespace tav
