#include "base/Unicode.hpp"

#include "base/DecodedCharacter.hpp"

#include <cstdint>
#include <cstring>

namespace tav {

namespace {

using internal::escapeBase;

constexpr char16_t replacement = 0xFFFD;

constexpr bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }
constexpr bool isEscape(char16_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

// How many bytes at the front are ASCII.
std::size_t asciiPrefixLength(const char* bytes, std::size_t size) {
    constexpr std::uint64_t highBits = 0x8080808080808080;
    std::size_t at = 0;
    std::uint64_t word = 0;
    while (size - at >= sizeof word) {
        std::memcpy(&word, bytes + at, sizeof word);
        if ((word & highBits) != 0) {
            break;
        }
        at += sizeof word;
    }
    while (at < size && static_cast<unsigned char>(bytes[at]) < 0x80) {
        ++at;
    }
    return at;
}

// Calls `ascii(view)` for runs of ASCII, `other(character)` for every other character and
// `wrong(byte)` for every byte that belongs to none.
template <class ASCII, class Other, class Wrong>
void walk(std::string_view bytes, ASCII ascii, Other other, Wrong wrong) {
    while (!bytes.empty()) {
        if (const std::size_t run = asciiPrefixLength(bytes.data(), bytes.size()); run > 0) {
            ascii(bytes.substr(0, run));
            bytes.remove_prefix(run);
            continue;
        }
        const internal::DecodedCharacter decoded = internal::decodedCharacter(bytes);
        if (decoded.length == 0) {
            wrong(static_cast<unsigned char>(bytes.front()));
            bytes.remove_prefix(1);
        } else {
            other(decoded.character);
            bytes.remove_prefix(decoded.length);
        }
    }
}

enum class ByteOrder { Big, Little };

Data utf16Data(std::string_view bytes, ByteOrder order) {
    const std::u16string units = utf16FromBytes(bytes);
    Data data(units.size() * 2);
    std::size_t at = 0;
    for (const char16_t unit : units) {
        const auto high = static_cast<std::byte>(unit >> 8);
        const auto low = static_cast<std::byte>(unit & 0xFF);
        data[at] = order == ByteOrder::Big ? high : low;
        data[at + 1] = order == ByteOrder::Big ? low : high;
        at += 2;
    }
    return data;
}

} // namespace

bool isASCII(std::string_view bytes) {
    return asciiPrefixLength(bytes.data(), bytes.size()) == bytes.size();
}

bool isValidUTF8(std::string_view bytes) {
    for (;;) {
        bytes.remove_prefix(asciiPrefixLength(bytes.data(), bytes.size()));
        if (bytes.empty()) {
            return true;
        }
        const std::size_t length = internal::decodedCharacter(bytes).length;
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
}

std::u16string utf16FromBytes(std::string_view bytes) {
    // Never more units than bytes.
    std::u16string units(bytes.size(), u'\0');
    char16_t* out = units.data();
    walk(
        bytes,
        [&](std::string_view run) {
            for (const char character : run) {
                *out++ = static_cast<unsigned char>(character);
            }
        },
        [&](char32_t character) {
            if (character >= 0x10000) {
                *out++ = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
                *out++ = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
            } else {
                *out++ = static_cast<char16_t>(character);
            }
        },
        [&](unsigned char byte) { *out++ = static_cast<char16_t>(escapeBase + byte); });
    units.resize(static_cast<std::size_t>(out - units.data()));
    return units;
}

std::string bytesFromUTF16(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    for (std::size_t at = 0; at < units.size(); ++at) {
        const char16_t unit = units[at];
        if (unit < 0x80) {
            text += static_cast<char>(unit);
        } else if (isHighSurrogate(unit) && at + 1 < units.size() &&
                   isLowSurrogate(units[at + 1])) {
            ++at;
            internal::appendUTF8(text, 0x10000 + ((unit & 0x3FFU) << 10 | (units[at] & 0x3FFU)));
        } else if (isEscape(unit)) {
            text += static_cast<char>(unit - escapeBase);
        } else {
            internal::appendUTF8(text, isHighSurrogate(unit) || isLowSurrogate(unit) ? replacement
                                                                                     : unit);
        }
    }
    return text;
}

std::size_t utf16Length(std::string_view bytes) {
    std::size_t length = 0;
    walk(
        bytes, [&](std::string_view run) { length += run.size(); },
        [&](char32_t character) { length += character >= 0x10000 ? 2 : 1; },
        [&](unsigned char) { ++length; });
    return length;
}

Data utf16BigEndian(std::string_view bytes) { return utf16Data(bytes, ByteOrder::Big); }

Data utf16LittleEndian(std::string_view bytes) { return utf16Data(bytes, ByteOrder::Little); }

std::string bytesFromUTF16BigEndian(BytesView units) {
    std::u16string text(units.size() / 2, u'\0');
    for (std::size_t at = 0; at < text.size(); ++at) {
        text[at] = static_cast<char16_t>(std::to_integer<unsigned>(units[at * 2]) << 8 |
                                         std::to_integer<unsigned>(units[at * 2 + 1]));
    }
    return bytesFromUTF16(text);
}

} // namespace tav
