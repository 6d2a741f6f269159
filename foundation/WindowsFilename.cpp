#include "foundation/WindowsFilename.hpp"

#include "base/Transliteration.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace tav {

namespace {

constexpr char substitute = '_';

// Comparisons without a table or a branch, which the compiler makes for 16 bytes at once.
constexpr bool isReserved(unsigned char c) {
    return (c == '\\') | (c == '/') | (c == ':') | (c == '*') | (c == '?') | (c == '"') |
           (c == '<') | (c == '>') | (c == '|');
}

constexpr bool isIllegalInFilename(unsigned char c) {
    return isReserved(c) | (static_cast<unsigned char>(c - 1) < 31);
}

constexpr bool isReplacedWhenTranscoding(unsigned char c) { return isReserved(c) | (c < 32); }

constexpr bool isPlain(char16_t unit) { return unit >= 32 && unit <= 126; }

constexpr bool agreesWithTheSet() {
    for (unsigned c = 0; c < 128; ++c) {
        if (illegalFilenameCharset.contains(static_cast<char16_t>(c)) !=
            isIllegalInFilename(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return illegalFilenameCharset.isASCII() && illegalPathnameCharset.isASCII();
}
static_assert(agreesWithTheSet());

// Writes `map` of so many bytes. Loops of a known length become a few vector instructions.
template <std::size_t Size, class Map>
void mapBlock(const char* from, char* to, const Map& map) {
    std::array<unsigned char, Size> block;
    std::memcpy(block.data(), from, Size);
    for (unsigned char& byte : block) {
        byte = map(byte);
    }
    std::memcpy(to, block.data(), Size);
}

// The last block reaches back over bytes that were done already, so `from` must not be `to`.
template <std::size_t Size, class Map>
void mapBlocks(const char* from, char* to, std::size_t size, const Map& map) {
    for (std::size_t at = 0; at + Size <= size; at += Size) {
        mapBlock<Size>(from + at, to + at, map);
    }
    if (size % Size != 0) {
        mapBlock<Size>(from + size - Size, to + size - Size, map);
    }
}

template <class Map>
std::string mapped(std::string_view text, const Map& map) {
    std::string result(text.size(), '\0');
    if (text.size() >= 16) {
        mapBlocks<16>(text.data(), result.data(), text.size(), map);
    } else if (text.size() >= 8) {
        mapBlocks<8>(text.data(), result.data(), text.size(), map);
    } else if (text.size() >= 4) {
        mapBlocks<4>(text.data(), result.data(), text.size(), map);
    } else {
        for (std::size_t at = 0; at < text.size(); ++at) {
            mapBlock<1>(text.data() + at, result.data() + at, map);
        }
    }
    return result;
}

bool hasOnlyPlainCharacters(std::string_view text) {
    bool isPlainText = true;
    for (const char character : text) {
        isPlainText &= isPlain(static_cast<unsigned char>(character));
    }
    return isPlainText;
}

bool hasUnitsToSpell(std::string_view text) {
    bool found = false;
    for (const char character : text) {
        found |= static_cast<unsigned char>(character) > 126;
    }
    return found;
}

// The text with units spelled in hexadecimal where `isSpelled` says so; `map` is for the others,
// which are ASCII.
template <class IsSpelled, class Map>
std::string spelled(std::string_view text, const IsSpelled& isSpelled, const Map& map) {
    const std::u16string units = utf16FromBytes(text);
    const auto count =
        static_cast<std::size_t>(std::count_if(units.begin(), units.end(), isSpelled));
    std::string result(units.size() + 4 * count, '\0');
    char* out = result.data();
    for (const char16_t unit : units) {
        if (isSpelled(unit)) {
            constexpr std::string_view digits = "0123456789ABCDEF";
            *out++ = 'U';
            *out++ = digits[unit >> 12];
            *out++ = digits[unit >> 8 & 15];
            *out++ = digits[unit >> 4 & 15];
            *out++ = digits[unit & 15];
        } else {
            *out++ = static_cast<char>(map(static_cast<unsigned char>(unit)));
        }
    }
    return result;
}

} // namespace

std::string replaceInvalidChars(std::string_view text, const CharacterSet& set,
                                std::string_view replacement) {
    if (set.isASCII()) {
        std::string result;
        result.reserve(text.size());
        for (const char character : text) {
            if (set.contains(static_cast<unsigned char>(character))) {
                result += replacement;
            } else {
                result += character;
            }
        }
        return result;
    }
    const std::u16string substitutes = utf16FromBytes(replacement);
    std::u16string result;
    for (const char16_t unit : utf16FromBytes(text)) {
        if (set.contains(unit)) {
            result += substitutes;
        } else {
            result += unit;
        }
    }
    return bytesFromUTF16(result);
}

std::string windowsValidFilenameUsingASCIIOnly(std::string_view name, bool asciiOnly) {
    return asciiOnly ? windowsValidFilename(lossyASCII(name)) : windowsValidFilename(name);
}

std::string windowsValidFilename(std::string_view name) {
    // Illegal characters are ASCII, and so never a part of what is none.
    std::string result =
        mapped(name, [](unsigned char c) { return isIllegalInFilename(c) ? substitute : char(c); });
    if (!result.empty() && (result.back() == '.' || result.back() == ' ')) {
        result.back() = substitute;
    }
    return result;
}

std::string windowsValidFilenameByTranscodingNonASCIIChars(std::string_view name) {
    const auto map = [](unsigned char c) {
        return isReplacedWhenTranscoding(c) ? substitute : char(c);
    };
    std::string result = hasUnitsToSpell(name)
                             ? spelled(
                                   name, [](char16_t unit) { return unit > 126; }, map)
                             : mapped(name, map);
    if (!result.empty() && result.back() == '.') {
        result.back() = substitute;
    }
    return result;
}

std::string stringByTranscodingNonASCIIChars(std::string_view text) {
    if (hasOnlyPlainCharacters(text)) {
        return std::string(text);
    }
    return spelled(
        text, [](char16_t unit) { return !isPlain(unit); }, [](unsigned char c) { return c; });
}

} // namespace tav
