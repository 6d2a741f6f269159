#pragma once

#include "base/CharacterSet.hpp"

#include <string>
#include <string_view>

namespace tav {

/// A name that local file systems can keep: canonically decomposed, and without ":" and "/". Bytes
/// that are no UTF-8 stay. A text with U+0000, which no file system has, stays whole. Any thread.
[[nodiscard]] std::string stringByMakingValidFilename(std::string_view name);

/// The text without the UTF-16 units in the set; with null for a set, the text itself. Half of a
/// character beyond U+FFFF that is left alone becomes U+FFFD. Any thread.
[[nodiscard]] std::string stringByRemovingCharactersFromSet(std::string_view text,
                                                            const CharacterSet* set);

} // namespace tav
