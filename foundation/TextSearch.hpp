#pragma once

#include "base/OptionalText.hpp"

#include <string_view>

namespace tav {

// Texts are searched and compared as base/TextSearch.hpp does it. Any thread.

/// Whether the text is found, with the options of `SearchOption` or none. False for nil and for the
/// empty text.
[[nodiscard]] bool containsString(std::string_view text, OptionalText string);
[[nodiscard]] bool containsString(std::string_view text, OptionalText string, unsigned options);

/// How often the text is found; occurrences that overlap count each ("aa" is in "aaa" twice). 0 for
/// nil.
[[nodiscard]] int countOfString(std::string_view text, OptionalText string);

/// Whether the text's first or last units of UTF-16, as many as the argument has, are canonically
/// equivalent to the argument. False for nil, true for the empty text.
///
/// In spite of the names the case does make a difference: "Hello" begins with "He" and not with
/// "he". Callers rely on it.
[[nodiscard]] bool hasPrefixCaseInsensitive(std::string_view text, OptionalText prefix);
[[nodiscard]] bool hasSuffixCaseInsensitive(std::string_view text, OptionalText suffix);

} // namespace tav
