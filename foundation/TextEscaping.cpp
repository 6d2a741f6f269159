#include "foundation/TextEscaping.hpp"

#include "base/PercentEncoding.hpp"

namespace tav {

std::string escapeQuotesForCSV(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char character : text) {
        if (character == '"') {
            escaped += "\"\"";
        } else {
            escaped += character == '\n' || character == '\r' ? ' ' : character;
        }
    }
    return escaped;
}

std::string stringForFilterPredicate(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char character : text) {
        switch (character) {
        case '\'':
            escaped += "\\x27";
            break;
        case '"':
            escaped += "\\x22";
            break;
        case '(':
            escaped += "\\x28";
            break;
        case ')':
            escaped += "\\x29";
            break;
        case '?':
            escaped += "\\x3F";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

std::string urlEncodedString(std::string_view text) {
    return percentEncoded(text, "-_.!~*();:@=$,/?");
}

} // namespace tav
