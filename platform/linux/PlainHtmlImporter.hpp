#pragma once

#include "platform/HtmlImporter.hpp"
#include "platform/linux/HtmlEncoding.hpp"

#include <string_view>

namespace tav::internal {

/// Reads HTML tag by tag and builds no tree: quick on everything, and the importer where no library
/// was built in. What needs a tree comes out as it is written: content misplaced in tables, tags
/// closed in the wrong order. Of named character references it knows Latin-1 and common
/// punctuation.
class PlainHtmlImporter final : public HtmlImporter {
  public:
    std::optional<HtmlDocument> importHTML(BytesView html) override;
};

/// The same for a document that is decoded already.
[[nodiscard]] HtmlDocument plainHtmlDocument(const DecodedHtml& html);

/// The attributes of a document; an empty title is none. Blank space in the title is collapsed.
[[nodiscard]] Value::Dictionary htmlDocumentAttributes(std::string_view title,
                                                       std::uint32_t encoding);

} // namespace tav::internal
