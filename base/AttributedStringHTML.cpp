#include "base/AttributedStringHTML.hpp"

#include "base/WellFormedUTF8.hpp"

#include <algorithm>
#include <cmath>

namespace tav {
namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

void appendEscaped(std::string& out, char c) {
    switch (c) {
    case '&':
        out += "&amp;";
        break;
    case '<':
        out += "&lt;";
        break;
    case '>':
        out += "&gt;";
        break;
    case '"':
        out += "&quot;";
        break;
    default:
        out += c;
        break;
    }
}

/// The whole text, so that a space knows its neighbours across runs.
class Writer {
  public:
    explicit Writer(std::string_view text) : text_(text) {}

    void run(AttributedString::Range range, const Attributes& attributes);
    std::string take() { return std::move(out_); }

  private:
    void open(std::string_view tag, std::string_view name);
    void characters(std::size_t begin, std::size_t end);
    void space(std::size_t place);

    std::string_view text_;
    std::string out_;
    std::string closing_;
    bool collapses_ = true;
};

void Writer::open(std::string_view tag, std::string_view name) {
    out_ += tag;
    closing_.insert(0, "</" + std::string(name) + ">");
}

std::string hexColor(const Color& color) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text = "#";
    for (const double part : {color.red, color.green, color.blue, color.alpha}) {
        // Also what is no number ends up in the range.
        const double kept = part > 0 ? std::min(part, 1.0) : 0.0;
        const auto level = static_cast<unsigned>(std::lround(kept * 255));
        text += digits[level >> 4];
        text += digits[level & 15];
    }
    if (text.ends_with("ff")) {
        text.resize(7);
    }
    return text;
}

template <class Kind>
const Kind* attribute(const Attributes& attributes, std::string_view name) {
    const auto found = attributes.find(name);
    return found == attributes.end() ? nullptr : std::get_if<Kind>(&found->second);
}

void Writer::run(AttributedString::Range range, const Attributes& attributes) {
    const Value* link = attribute<Value>(attributes, NSLinkAttributeName);
    if (link != nullptr && link->asString() != nullptr) {
        open("<a href=\"" + htmlEscapedString(*link->asString()) + "\">", "a");
    }
    if (const auto* color = attribute<Color>(attributes, NSForegroundColorAttributeName)) {
        open("<span style=\"color:" + hexColor(*color) + "\">", "span");
    }
    const Value* underline = attribute<Value>(attributes, NSUnderlineStyleAttributeName);
    if (underline != nullptr && underline->intValue() != 0) {
        open("<u>", "u");
    }
    if (const auto* font = attribute<FontTraits>(attributes, NSFontAttributeName)) {
        if (font->bold) {
            open("<b>", "b");
        }
        if (font->italic) {
            open("<i>", "i");
        }
    }
    characters(range.location, range.end());
    out_ += closing_;
    closing_.clear();
}

void Writer::space(std::size_t place) {
    const bool isLast = place + 1 == text_.size() || text_[place + 1] == '\n';
    if (collapses_ || isLast) {
        out_ += "&nbsp;";
        collapses_ = false;
    } else {
        out_ += ' ';
        collapses_ = true;
    }
}

void Writer::characters(std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) {
        const char c = text_[i];
        if (c == ' ') {
            space(i);
            continue;
        }
        collapses_ = c == '\n';
        if (c == '\n') {
            out_ += "<br>";
        } else if (c == '\0') {
            out_ += replacementCharacter;
        } else if ((c > 0 && c < ' ') || c == 0x7f) {
            out_ += "&#" + std::to_string(static_cast<int>(c)) + ";";
        } else {
            appendEscaped(out_, c);
        }
    }
}

} // namespace

std::string htmlEscapedString(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        appendEscaped(out, c);
    }
    return out;
}

std::string htmlFromAttributedString(const AttributedString& text) {
    const std::string& bytes = text.string();
    Writer writer(bytes);
    AttributedString::Range range;
    for (std::size_t place = 0; place < bytes.size(); place = range.end()) {
        const Attributes& attributes = text.attributesAt(place, &range);
        writer.run(range, attributes);
    }
    return wellFormedUTF8(writer.take());
}

} // namespace tav
