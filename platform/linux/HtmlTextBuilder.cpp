#include "platform/linux/HtmlTextBuilder.hpp"

#include <algorithm>
#include <memory>
#include <utility>

namespace tav::internal {
namespace {

constexpr std::string_view blanks = " \t\n\f\r";

AttributedString::SharedAttributes attributesOf(const HtmlStyle& style) {
    Attributes attributes;
    if (!style.link.empty()) {
        attributes.emplace(NSLinkAttributeName, Value(style.link));
    }
    if (style.bold != 0 || style.italic != 0) {
        attributes.emplace(NSFontAttributeName, FontTraits{style.bold != 0, style.italic != 0});
    }
    if (style.underline != 0) {
        attributes.emplace(NSUnderlineStyleAttributeName, Value(1));
    }
    return std::make_shared<const Attributes>(std::move(attributes));
}

void less(unsigned& count) { count -= count == 0 ? 0 : 1; }

} // namespace

void HtmlStyle::add(HtmlElement element) {
    bold += element.has(HtmlElement::Bold) ? 1 : 0;
    italic += element.has(HtmlElement::Italic) ? 1 : 0;
    underline += element.has(HtmlElement::Underline) ? 1 : 0;
    literal += element.has(HtmlElement::Literal) ? 1 : 0;
}

void HtmlStyle::take(HtmlElement element) {
    if (element.has(HtmlElement::Bold)) {
        less(bold);
    }
    if (element.has(HtmlElement::Italic)) {
        less(italic);
    }
    if (element.has(HtmlElement::Underline)) {
        less(underline);
    }
    if (element.has(HtmlElement::Literal)) {
        less(literal);
    }
}

void HtmlTextBuilder::setStyle(const HtmlStyle& style) {
    literal_ = style.literal != 0;
    const std::size_t look = (style.bold != 0 ? 1U : 0U) | (style.italic != 0 ? 2U : 0U) |
                             (style.underline != 0 ? 4U : 0U);
    if (style.linkNumber != linkNumber_) {
        linkNumber_ = style.linkNumber;
        byLook_ = {};
    }
    if (look == 0 && style.link.empty()) {
        current_ = nullptr;
        return;
    }
    if (!byLook_[look]) {
        byLook_[look] = attributesOf(style);
    }
    current_ = byLook_[look];
}

void HtmlTextBuilder::characters(std::string_view text) {
    if (literal_) {
        literalCharacters(text);
        return;
    }
    while (!text.empty()) {
        std::size_t word = text.find_first_of(blanks);
        if (word == 0) {
            space();
            word = std::min(text.find_first_not_of(blanks), text.size());
        } else {
            word = std::min(word, text.size());
            content(text.substr(0, word));
        }
        text.remove_prefix(word);
    }
}

void HtmlTextBuilder::literalCharacters(std::string_view text) {
    if (!text.empty()) {
        content(text);
        lineIsEmpty_ = text.back() == '\n';
    }
}

void HtmlTextBuilder::space() {
    if (!lineIsEmpty_ && !pendingLineFeed_ && pendingTabs_ == 0 && !pendingSpace_) {
        pendingSpace_ = true;
        spaceAttributes_ = current_;
    }
}

/// Something to be seen, with what is due before it.
void HtmlTextBuilder::content(std::string_view text) {
    if (pendingLineFeed_) {
        out_.append("\n", nullptr);
    }
    if (pendingTabs_ != 0) {
        out_.append(std::string(pendingTabs_, '\t'), nullptr);
    }
    if (pendingSpace_) {
        out_.append(" ", spaceAttributes_);
    }
    pendingLineFeed_ = false;
    pendingTabs_ = 0;
    pendingSpace_ = false;
    rowBeginsWithLineFeed_ = false;
    lineIsEmpty_ = false;
    out_.append(text, current_);
}

void HtmlTextBuilder::lineFeed() {
    pendingSpace_ = false;
    content("\n");
    lineIsEmpty_ = true;
}

/// Not where a cell has begun and shows nothing yet.
void HtmlTextBuilder::endLine() {
    pendingSpace_ = false;
    pendingLineFeed_ = pendingLineFeed_ || (!lineIsEmpty_ && pendingTabs_ == 0);
}

void HtmlTextBuilder::endRow() {
    pendingTabs_ = 0;
    rowHasCell_ = false;
}

void HtmlTextBuilder::elementBegins(HtmlElement element) {
    if (element.has(HtmlElement::Row)) {
        endRow();
    }
    if (element.has(HtmlElement::Block)) {
        endLine();
    }
    if (!element.has(HtmlElement::Cell)) {
        return;
    }
    if (rowHasCell_) {
        // The blocks of the cell before end no line of the row.
        pendingLineFeed_ = rowBeginsWithLineFeed_;
        pendingSpace_ = false;
        ++pendingTabs_;
    } else {
        rowBeginsWithLineFeed_ = pendingLineFeed_;
    }
    rowHasCell_ = true;
}

void HtmlTextBuilder::elementEnds(HtmlElement element) {
    // Without a tree a row's end tag may be missing; then the table's ends it.
    const bool isTable = element.has(HtmlElement::Block) && element.has(HtmlElement::Scope);
    if (element.has(HtmlElement::Row) || isTable) {
        endRow();
    }
    if (element.has(HtmlElement::Block)) {
        endLine();
    }
}

} // namespace tav::internal
