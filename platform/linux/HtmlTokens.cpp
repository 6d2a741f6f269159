#include "platform/linux/HtmlTokens.hpp"

#include <algorithm>

namespace tav::internal {
namespace {

constexpr std::string_view blanks = " \t\n\f\r";

bool isBlank(char c) { return blanks.find(c) != std::string_view::npos; }

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Whether the text begins with a name, which is in lower case, whatever its own case.
bool beginsWith(std::string_view text, std::string_view name) {
    return text.size() >= name.size() && std::equal(name.begin(), name.end(), text.begin(),
                                                    [](char a, char b) { return a == lower(b); });
}

void removeUntil(std::string_view& text, std::string_view any) {
    text.remove_prefix(std::min(text.find_first_of(any), text.size()));
}

void removeBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
}

/// The beginning of `text` up to where `rest` begins.
std::string_view before(std::string_view text, std::string_view rest) {
    return text.substr(0, text.size() - rest.size());
}

} // namespace

std::optional<HtmlAttributes::Attribute> HtmlAttributes::next() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\n\f\r/"), rest_.size()));
    if (rest_.empty() || rest_.front() == '>') {
        return std::nullopt;
    }
    Attribute attribute;
    std::string_view begin = rest_;
    // An equals sign in front belongs to the name.
    rest_.remove_prefix(1);
    removeUntil(rest_, " \t\n\f\r/>=");
    attribute.name = before(begin, rest_);
    std::string_view value = rest_;
    removeBlanks(value);
    if (value.empty() || value.front() != '=') {
        return attribute;
    }
    value.remove_prefix(1);
    removeBlanks(value);
    rest_ = value;
    if (!rest_.empty() && (rest_.front() == '"' || rest_.front() == '\'')) {
        const char quote = rest_.front();
        rest_.remove_prefix(1);
        begin = rest_;
        removeUntil(rest_, {&quote, 1});
        attribute.value = before(begin, rest_);
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
    } else {
        begin = rest_;
        removeUntil(rest_, " \t\n\f\r>");
        attribute.value = before(begin, rest_);
    }
    return attribute;
}

std::optional<std::string> HtmlAttributes::find(std::string_view name) const {
    HtmlAttributes each = *this;
    while (const auto attribute = each.next()) {
        if (attribute->name.size() == name.size() && beginsWith(attribute->name, name)) {
            return htmlAttributeValue(attribute->value);
        }
    }
    return std::nullopt;
}

bool HtmlTokens::next(HtmlToken& token) {
    while (!rest_.empty()) {
        if (rest_.front() == '<' && rest_.size() > 1) {
            const char kind = rest_[1];
            if (isLetter(kind) || kind == '/' || kind == '!' || kind == '?') {
                if (markup(token)) {
                    return true;
                }
                continue;
            }
        }
        // The first character is text in any case, also a "<" that begins nothing.
        const std::string_view begin = rest_;
        rest_.remove_prefix(1);
        removeUntil(rest_, "<");
        token.kind = HtmlToken::Kind::Text;
        token.text = before(begin, rest_);
        return true;
    }
    return false;
}

/// Reads past what a "<" begins; whether that is a tag.
bool HtmlTokens::markup(HtmlToken& token) {
    if (isLetter(rest_[1])) {
        rest_.remove_prefix(1);
        return tag(token, false);
    }
    if (rest_[1] != '/') {
        if (rest_.starts_with("<!--")) {
            rest_.remove_prefix(4);
            skipComment();
        } else {
            skipPast(">");
        }
        return false;
    }
    if (rest_.size() == 2) {
        token.kind = HtmlToken::Kind::Text;
        token.text = everything();
        return true;
    }
    if (!isLetter(rest_[2])) {
        rest_.remove_prefix(2);
        skipPast(">");
        return false;
    }
    rest_.remove_prefix(2);
    return tag(token, true);
}

bool HtmlTokens::tag(HtmlToken& token, bool isEnd) {
    const std::string_view begin = rest_;
    removeUntil(rest_, " \t\n\f\r/>");
    token.kind = isEnd ? HtmlToken::Kind::EndTag : HtmlToken::Kind::StartTag;
    token.name = before(begin, rest_);
    std::transform(token.name.begin(), token.name.end(), token.name.begin(), lower);
    const std::string_view attributes = rest_;
    HtmlAttributes each(rest_);
    while (each.next()) {
    }
    rest_ = each.rest();
    if (rest_.empty()) {
        return false;
    }
    rest_.remove_prefix(1);
    token.attributes = HtmlAttributes(before(attributes, rest_));
    return true;
}

void HtmlTokens::skipPast(std::string_view end) {
    const std::size_t at = rest_.find(end);
    rest_.remove_prefix(at == std::string_view::npos ? rest_.size() : at + end.size());
}

void HtmlTokens::skipComment() {
    for (const std::string_view empty : {">", "->"}) {
        if (rest_.starts_with(empty)) {
            rest_.remove_prefix(empty.size());
            return;
        }
    }
    while (!rest_.empty()) {
        skipPast("--");
        // More dashes may stand before the end.
        std::string_view after = rest_;
        after.remove_prefix(std::min(after.find_first_not_of('-'), after.size()));
        if (after.starts_with('>') || after.starts_with("!>")) {
            rest_ = after;
            skipPast(">");
            return;
        }
        rest_ = after;
    }
}

std::string_view HtmlTokens::rawText(std::string_view name) {
    const std::string_view begin = rest_;
    while (!rest_.empty()) {
        removeUntil(rest_, "<");
        if (rest_.size() > 2 && rest_[1] == '/' && beginsWith(rest_.substr(2), name)) {
            const std::string_view after = rest_.substr(2 + name.size());
            if (!after.empty() && (isBlank(after[0]) || after[0] == '/' || after[0] == '>')) {
                break;
            }
        }
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
    }
    return before(begin, rest_);
}

void HtmlTokens::skipLineFeed() {
    if (rest_.starts_with('\r') || rest_.starts_with('\n')) {
        rest_.remove_prefix(rest_.starts_with("\r\n") ? 2 : 1);
    }
}

std::string_view HtmlTokens::everything() {
    const std::string_view all = rest_;
    rest_ = {};
    return all;
}

} // namespace tav::internal
