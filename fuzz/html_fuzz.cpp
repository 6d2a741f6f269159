// Any bytes end in a text that is well-formed and can be rendered; what was rendered is read again.

#include "base/AttributedStringHTML.hpp"
#include "base/Unicode.hpp"
#include "foundation/HtmlText.hpp"
#include "platform/linux/PlainHtmlImporter.hpp"

#include <cstdint>
#include <cstdlib>
#include <span>

namespace {

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// What is sure to come through: blank space is rendered differently, and some characters that a
/// reference may stand for are none where they stand for themselves.
std::string visibleASCII(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c > ' ' && c < 0x7f) {
            out += c;
        }
    }
    return out;
}

void check(tav::HtmlImporter& importer, tav::BytesView bytes) {
    using namespace tav;
    const auto document = importer.importHTML(bytes);
    expect(document && document->documentAttributes);
    const AttributedString& text = document->text;
    expect(isValidUTF8(text.string()));
    AttributedString::Range range;
    for (std::size_t place = 0; place < text.length(); place = range.end()) {
        static_cast<void>(text.attributesAt(place, &range));
        expect(range.location == place && range.length > 0 && range.end() <= text.length());
    }
    expect(text.substring(text.wholeRange()) == text);

    const std::string html = htmlFromAttributedString(text);
    expect(isValidUTF8(html));
    // Short texts might look like UTF-16.
    const auto again = importer.importHTML(bytesOf("\xEF\xBB\xBF" + html));
    expect(again && visibleASCII(again->text.string()) == visibleASCII(text.string()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace tav;
    const BytesView html = std::as_bytes(std::span(bytes, size));
    internal::PlainHtmlImporter plain;
    check(plain, html);
    check(HtmlImporter::current(), html);

    const std::string_view text = textOf(html);
    const auto flat = flattenHTML(text);
    expect(flat.has_value());
    return 0;
}
