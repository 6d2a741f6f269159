#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// The text without its HTML markup, as `HtmlImporter` reads it; nothing when the import fails. The
/// empty text stays.
///
/// A text of fewer than 4 units of UTF-16 is handed to the importer in Mac OS Roman, a longer one
/// in UTF-16 with a byte-order mark, and one that its encoding does not have comes back as it is.
/// The importer is not told which: it finds out by itself, so of short texts only ASCII is sure to
/// be read as it was meant ("é" alone comes back as "Ž").
///
/// The importer runs on the calling thread.
[[nodiscard]] std::optional<std::string> flattenHTML(std::string_view text);

} // namespace tav
