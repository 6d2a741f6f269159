#pragma once

#include "base/AttributedString.hpp"
#include "platform/linux/HtmlElements.hpp"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace tav::internal {

/// How characters look: what is set counts how many elements ask for it.
struct HtmlStyle {
    unsigned bold = 0;
    unsigned italic = 0;
    unsigned underline = 0;
    /// The elements that keep their blank space.
    unsigned literal = 0;
    /// The URL, empty without a link. Numbered, so that one link's characters share attributes.
    std::string_view link;
    std::size_t linkNumber = 0;

    void add(HtmlElement element);
    void take(HtmlElement element);
};

/// Makes the text of a document out of its characters and the boundaries between them, as they come
/// in the document's order. In linear time.
class HtmlTextBuilder {
  public:
    /// What characters look like from now on. The link has to live until the next call.
    void setStyle(const HtmlStyle& style);

    void characters(std::string_view text);
    /// `br`.
    void lineFeed();

    /// Before and after the content of an element: blocks end a line, cells stand apart.
    void elementBegins(HtmlElement element);
    void elementEnds(HtmlElement element);

    /// The text so far; the builder is not used afterwards.
    [[nodiscard]] AttributedString take() { return std::move(out_); }

  private:
    using SharedAttributes = AttributedString::SharedAttributes;

    void endLine();
    void endRow();
    void space();
    void content(std::string_view text);
    void literalCharacters(std::string_view text);

    AttributedString out_;
    SharedAttributes current_;
    bool literal_ = false;

    std::size_t linkNumber_ = 0;
    std::array<SharedAttributes, 8> byLook_;

    bool lineIsEmpty_ = true;
    bool rowHasCell_ = false;
    bool rowBeginsWithLineFeed_ = false;
    // What is written only before more content comes.
    bool pendingSpace_ = false;
    bool pendingLineFeed_ = false;
    std::size_t pendingTabs_ = 0;
    SharedAttributes spaceAttributes_;
};

} // namespace tav::internal
