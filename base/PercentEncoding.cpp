#include "base/PercentEncoding.hpp"

#include <cstddef>

namespace tav {

namespace {

constexpr bool isLetterOrDigit(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
}

// -1 for what is no hexadecimal digit.
constexpr int digitValue(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'a' && character <= 'f') {
        return character - 'a' + 10;
    }
    return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

} // namespace

std::string percentEncoded(std::string_view text, std::string_view kept) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char character : text) {
        if (isLetterOrDigit(character) || kept.find(character) != std::string_view::npos) {
            encoded += character;
            continue;
        }
        const unsigned byte = static_cast<unsigned char>(character);
        encoded += '%';
        encoded += digits[byte >> 4];
        encoded += digits[byte & 0xFU];
    }
    return encoded;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            decoded += text[at];
            continue;
        }
        if (text.size() - at < 3) {
            return std::nullopt;
        }
        const int high = digitValue(text[at + 1]);
        const int low = digitValue(text[at + 2]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        decoded += static_cast<char>(high * 16 + low);
        at += 2;
    }
    return decoded;
}

} // namespace tav
