#pragma once

#include "base/AttributedString.hpp"
#include "base/Data.hpp"
#include "base/Value.hpp"
#include "platform/Seam.hpp"

#include <optional>
#include <string_view>

namespace tav {

class HtmlImporter;

namespace internal {
/// The HTML reader that was built in (platform/linux).
HtmlImporter& realHtmlImporter();
} // namespace internal

// The document attributes that an import tells of; both may be missing.
inline constexpr std::string_view NSTitleDocumentAttribute = "NSTitleDocumentAttribute";
/// The platform's number of the encoding that the bytes were read in.
inline constexpr std::string_view NSCharacterEncodingDocumentAttribute = "CharacterEncoding";

/// An HTML document as a person reads it.
struct HtmlDocument {
    AttributedString text;
    std::optional<Value::Dictionary> documentAttributes;
};

/// The seam to the platform's HTML importer.
///
/// What comes out is the text of the body without markup: scripts, styles and comments are gone,
/// blank space is collapsed outside `pre` and `textarea`, a block ends its line, `br` is a line
/// feed, the cells of a row stand apart by tabs; nothing is added behind the last line. The text is
/// well-formed UTF-8. `NSLinkAttributeName`, `NSFontAttributeName` and
/// `NSUnderlineStyleAttributeName` are set.
class HtmlImporter : public Seam<HtmlImporter, internal::realHtmlImporter> {
  public:
    virtual ~HtmlImporter() = default;

    /// Nothing when the import failed. The importer finds out the encoding by itself; any bytes are
    /// some document, and end in bounded time. Ours may be called on any thread.
    virtual std::optional<HtmlDocument> importHTML(BytesView html) = 0;
};

} // namespace tav
