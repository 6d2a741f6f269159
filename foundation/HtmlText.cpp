#include "foundation/HtmlText.hpp"

#include "base/Unicode.hpp"
#include "foundation/TextEncoding.hpp"
#include "platform/HtmlImporter.hpp"

#include <utility>

namespace tav {

std::optional<std::string> flattenHTML(std::string_view text) {
    if (text.empty()) {
        return std::string();
    }
    constexpr std::size_t shortest = 4;
    const std::uint32_t encoding =
        utf16Length(text) < shortest ? TextEncoding::MacOSRoman : TextEncoding::Unicode;
    const auto bytes = dataUsingEncoding(text, encoding);
    if (!bytes) {
        return std::string(text);
    }
    auto document = HtmlImporter::current().importHTML(*bytes);
    if (!document) {
        return std::nullopt;
    }
    return document->text.string();
}

} // namespace tav
