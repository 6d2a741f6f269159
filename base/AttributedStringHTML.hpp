#pragma once

#include "base/AttributedString.hpp"

#include <string>
#include <string_view>

namespace tav {

/// The text as HTML, a fragment to stand in a body: always well-formed UTF-8, every element closed.
///
/// Links become `a`, colours a `span` with a style, underlines `u`, font traits `b` and `i`; other
/// attributes leave no trace. A line feed becomes `br`. A space that would collapse (at the ends of
/// the text and of lines, behind another space) becomes a no-break space, other control characters
/// a numeric reference; NUL and bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string htmlFromAttributedString(const AttributedString& text);

/// A text with "&", "<", ">" and the double quote as entities; nothing else is changed.
[[nodiscard]] std::string htmlEscapedString(std::string_view text);

} // namespace tav
