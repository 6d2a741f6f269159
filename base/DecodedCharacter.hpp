#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tav::internal {

/// What the unit that stands for a byte that is no UTF-8 is above the byte.
inline constexpr char16_t escapeBase = 0xDC00;

struct DecodedCharacter {
    char32_t character;
    /// In bytes; 0 when the first byte begins no well-formed sequence.
    std::size_t length;
};

/// The character at the front of bytes that are not empty.
[[nodiscard]] constexpr DecodedCharacter decodedCharacter(std::string_view bytes) {
    const auto byteAt = [&](std::size_t at) {
        return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U;
    };
    const auto continues = [&](std::size_t at) { return (byteAt(at) & 0xC0U) == 0x80U; };
    const unsigned first = byteAt(0);
    const unsigned second = byteAt(1);
    if (first < 0x80) {
        return {first, 1};
    }
    if (first >= 0xC2 && first <= 0xDF && continues(1)) {
        return {(first & 0x1FU) << 6 | (second & 0x3FU), 2};
    }
    if ((first & 0xF0U) == 0xE0 && continues(1) && continues(2)) {
        const char32_t character =
            (first & 0x0FU) << 12 | (second & 0x3FU) << 6 | (byteAt(2) & 0x3FU);
        const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
        return {character, character >= 0x800 && !isSurrogate ? 3U : 0U};
    }
    if (first >= 0xF0 && first <= 0xF4 && continues(1) && continues(2) && continues(3)) {
        const char32_t character = (first & 0x07U) << 18 | (second & 0x3FU) << 12 |
                                   (byteAt(2) & 0x3FU) << 6 | (byteAt(3) & 0x3FU);
        return {character, character >= 0x10000 && character <= 0x10FFFF ? 4U : 0U};
    }
    return {0, 0};
}

/// Appends a character in UTF-8; one of at most U+10FFFF.
inline void appendUTF8(std::string& text, char32_t character) {
    const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xC0 | character >> 6);
        append(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
        append(0x80 | (character & 0x3F));
    }
}

} // namespace tav::internal
