#pragma once

#include "base/Data.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace tav {

// A line ends with a line feed (LF), a carriage return (CR) or both (CR LF). Bytes that are no
// UTF-8 stay as they are. Any thread.

/// Each CR LF becomes LF, which is what lines end with on this system; a lone CR stays.
[[nodiscard]] std::string stringWithMacLineEndings(std::string_view text);

/// Each LF becomes CR LF, also one behind a CR: CR LF becomes CR CR LF. Give it texts that have LF
/// alone.
[[nodiscard]] std::string stringWithWindowsLineEndings(std::string_view text);

/// Each LF becomes CR, each CR becomes LF; of CR LF they change one half.
[[nodiscard]] std::string convertNewlinesToReturns(std::string_view text);
[[nodiscard]] std::string convertReturnsToNewlines(std::string_view text);

/// Each line ending, of whichever kind, becomes one paragraph separator (U+2029).
[[nodiscard]] std::string convertLineEndingsToParagraphSeparator(std::string_view text);

/// Each paragraph separator becomes LF.
[[nodiscard]] std::string convertParagraphSeparatorToLineEndings(std::string_view text);

/// `stringWithWindowsLineEndings` in UTF-16 with a byte-order mark. Nothing when it cannot be
/// encoded, which does not happen: what has no place there is replaced.
[[nodiscard]] std::optional<Data> dataWithWindowsLineEndings(std::string_view text);

} // namespace tav
