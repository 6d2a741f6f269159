#include "foundation/AttributedText.hpp"

#include "platform/HtmlImporter.hpp"
#include "platform/MainThread.hpp"

#include <utility>

namespace tav {

AttributedString hyperlinkFromString(std::string_view string, const Url& withURL,
                                     const std::optional<Color>& withTextColor) {
    const Color color = withTextColor.value_or(Color::blueColor());
    AttributedString link(string);
    const AttributedString::Range all = link.wholeRange();
    link.beginEditing();
    link.addAttribute(NSLinkAttributeName, Value(withURL.absoluteString()), all);
    link.addAttribute(NSForegroundColorAttributeName, color, all);
    link.addAttribute(NSUnderlineColorAttributeName, color, all);
    link.addAttribute(NSStrokeColorAttributeName, color, all);
    link.addAttribute(NSUnderlineStyleAttributeName, Value(1), all);
    link.endEditing();
    return link;
}

std::optional<AttributedString>
attributedStringWithHTMLData(const std::optional<BytesView>& data,
                             std::optional<Value::Dictionary>* documentAttributes) {
    if (!data) {
        return std::nullopt;
    }
    HtmlExchange exchange;
    exchange.data = data;
    MainThread::current().runAndWait([&exchange] { _attributedStringWithHTML(exchange); });
    if (documentAttributes != nullptr) {
        *documentAttributes = std::move(exchange.docAttributes);
    }
    return std::move(exchange.attrStr);
}

void _attributedStringWithHTML(HtmlExchange& exchange) {
    if (!exchange.data) {
        return;
    }
    auto document = HtmlImporter::current().importHTML(*exchange.data);
    if (!document) {
        return;
    }
    exchange.attrStr = std::move(document->text);
    if (document->documentAttributes) {
        exchange.docAttributes = std::move(document->documentAttributes);
    }
}

} // namespace tav
