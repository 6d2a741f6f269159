#pragma once

#include <string>
#include <string_view>

namespace tav {

// Bytes that are no UTF-8 stay as they are, but in `urlEncodedString`. Any thread.

/// For a quoted field of comma-separated values: each double quote is doubled, each line feed and
/// each carriage return becomes a blank (so both together become two). The quotes around the field
/// are the caller's.
[[nodiscard]] std::string escapeQuotesForCSV(std::string_view text);

/// For a text inside a filter predicate: each of ' " ( ) ? as the four characters "\x27" and so on.
/// A backslash is not escaped.
[[nodiscard]] std::string stringForFilterPredicate(std::string_view text);

/// For a value in a URL: every byte of the text percent-escaped but ASCII letters and digits and
/// -_.!~*();:@=$,/? (so "&", "+", quotes, "#", "%" and what is not ASCII are escaped).
[[nodiscard]] std::string urlEncodedString(std::string_view text);

} // namespace tav
