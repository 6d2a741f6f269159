#include "platform/linux/PlainHtmlImporter.hpp"

#include "platform/linux/HtmlElements.hpp"
#include "platform/linux/HtmlTextBuilder.hpp"
#include "platform/linux/HtmlTokens.hpp"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace tav::internal {
namespace {

class Reader {
  public:
    explicit Reader(std::string_view html) : tokens_(html) {}

    void read();
    [[nodiscard]] AttributedString takeText() { return builder_.take(); }
    [[nodiscard]] const std::string& title() const { return title_; }

  private:
    void startTag(const HtmlToken& token);
    void endTag(const HtmlToken& token);
    void rawText(const std::string& name, HtmlElement element);
    void setLink(std::string link);

    HtmlTokens tokens_;
    HtmlTextBuilder builder_;
    HtmlStyle style_;
    std::string link_;
    std::size_t links_ = 0;
    std::string title_;
    bool hasTitle_ = false;
    /// Open elements whose content is not shown. An end tag without its beginning does not count.
    std::size_t hidden_ = 0;
};

void Reader::read() {
    HtmlToken token;
    while (tokens_.next(token)) {
        switch (token.kind) {
        case HtmlToken::Kind::Text:
            if (hidden_ == 0) {
                builder_.characters(htmlCharacters(token.text));
            }
            break;
        case HtmlToken::Kind::StartTag:
            startTag(token);
            break;
        case HtmlToken::Kind::EndTag:
            endTag(token);
            break;
        }
    }
}

void Reader::setLink(std::string link) {
    link_ = std::move(link);
    style_.link = link_;
    style_.linkNumber = link_.empty() ? 0 : ++links_;
}

void Reader::startTag(const HtmlToken& token) {
    const HtmlElement element = htmlElement(token.name);
    if (element.has(HtmlElement::RawText)) {
        rawText(token.name, element);
        return;
    }
    if (element.has(HtmlElement::Hidden)) {
        ++hidden_;
    }
    if (hidden_ != 0) {
        return;
    }
    if (token.name == "br") {
        builder_.lineFeed();
        return;
    }
    builder_.elementBegins(element);
    if (!element.has(HtmlElement::Void)) {
        style_.add(element);
    }
    if (token.name == "a") {
        setLink(token.attributes.find("href").value_or(std::string()));
    }
    builder_.setStyle(style_);
    if (token.name == "plaintext") {
        builder_.characters(htmlRawCharacters(tokens_.everything()));
    } else if (token.name == "pre" || token.name == "listing") {
        tokens_.skipLineFeed();
    }
}

void Reader::rawText(const std::string& name, HtmlElement element) {
    if (name == "textarea") {
        tokens_.skipLineFeed();
    }
    const std::string_view text = tokens_.rawText(name);
    if (name == "title" && !hasTitle_) {
        hasTitle_ = true;
        title_ = htmlCharacters(text);
    }
    if (hidden_ != 0 || element.has(HtmlElement::Hidden)) {
        return;
    }
    builder_.elementBegins(element);
    HtmlStyle style = style_;
    style.add(element);
    builder_.setStyle(style);
    builder_.characters(name == "textarea" ? htmlCharacters(text) : htmlRawCharacters(text));
    builder_.elementEnds(element);
    builder_.setStyle(style_);
}

void Reader::endTag(const HtmlToken& token) {
    const HtmlElement element = htmlElement(token.name);
    if (element.has(HtmlElement::RawText)) {
        return;
    }
    if (element.has(HtmlElement::Hidden)) {
        hidden_ -= hidden_ == 0 ? 0 : 1;
        return;
    }
    if (hidden_ != 0) {
        return;
    }
    if (token.name == "br") {
        builder_.lineFeed();
        return;
    }
    builder_.elementEnds(element);
    style_.take(element);
    if (token.name == "a") {
        setLink({});
    }
    builder_.setStyle(style_);
}

} // namespace

Value::Dictionary htmlDocumentAttributes(std::string_view title, std::uint32_t encoding) {
    Value::Dictionary attributes;
    std::string collapsed;
    constexpr std::string_view blanks = " \t\n\f\r";
    for (std::size_t begin = title.find_first_not_of(blanks); begin != std::string_view::npos;) {
        const std::size_t end = std::min(title.find_first_of(blanks, begin), title.size());
        collapsed += collapsed.empty() ? "" : " ";
        collapsed += title.substr(begin, end - begin);
        begin = title.find_first_not_of(blanks, end);
    }
    if (!collapsed.empty()) {
        attributes.set(std::string(NSTitleDocumentAttribute), std::move(collapsed));
    }
    attributes.set(std::string(NSCharacterEncodingDocumentAttribute), encoding);
    return attributes;
}

HtmlDocument plainHtmlDocument(const DecodedHtml& html) {
    Reader reader(html.text);
    reader.read();
    return {reader.takeText(), htmlDocumentAttributes(reader.title(), html.encoding)};
}

std::optional<HtmlDocument> PlainHtmlImporter::importHTML(BytesView html) {
    return plainHtmlDocument(decodeHtml(html));
}

} // namespace tav::internal
