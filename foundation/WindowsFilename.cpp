#include "foundation/WindowsFilename.hpp"

#include "base/DecodedCharacter.hpp"
#include "base/Transliteration.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tav {

namespace {

constexpr char substitute = '_';

// Whether U+0000 is replaced as other control characters are.
enum class Null { Stays, IsReplaced };

constexpr bool isReserved(unsigned char c) {
    return c == '\\' || c == '/' || c == ':' || c == '*' || c == '?' || c == '"' || c == '<' ||
           c == '>' || c == '|';
}

template <Null null>
constexpr bool isReplaced(unsigned char c) {
    return isReserved(c) || (c < 32 && (null == Null::IsReplaced || c != 0));
}

template <Null null>
constexpr char replacedCharacter(unsigned char c) {
    return isReplaced<null>(c) ? substitute : static_cast<char>(c);
}

constexpr bool agreesWithTheSet() {
    for (unsigned c = 0; c < 128; ++c) {
        if (illegalFilenameCharset.contains(static_cast<char16_t>(c)) !=
            isReplaced<Null::Stays>(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return illegalFilenameCharset.isASCII() && illegalPathnameCharset.isASCII();
}
static_assert(agreesWithTheSet());

#ifdef __SSE2__

// 16 bytes at once, or 8 or 4 of a shorter name.
template <std::size_t Size>
__m128i load(const char* from) {
    if constexpr (Size == sizeof(__m128i)) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    } else {
        std::int64_t bytes = 0;
        std::memcpy(&bytes, from, Size);
        return _mm_cvtsi64_si128(bytes);
    }
}

template <std::size_t Size>
void store(char* to, __m128i block) {
    if constexpr (Size == sizeof(__m128i)) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), block);
    } else {
        const std::int64_t bytes = _mm_cvtsi128_si64(block);
        std::memcpy(to, &bytes, Size);
    }
}

template <Null null>
__m128i replacedBlock(__m128i block) {
    const auto is = [&](char c) { return _mm_cmpeq_epi8(block, _mm_set1_epi8(c)); };
    __m128i found = _mm_cmpeq_epi8(_mm_min_epu8(block, _mm_set1_epi8(31)), block);
    if constexpr (null == Null::Stays) {
        found = _mm_andnot_si128(is('\0'), found);
    }
    for (const char c : {'\\', '/', ':', '*', '?', '"', '<', '>', '|'}) {
        found = _mm_or_si128(found, is(c));
    }
    return _mm_or_si128(_mm_andnot_si128(found, block),
                        _mm_and_si128(found, _mm_set1_epi8(substitute)));
}

// Calls `visit` with blocks that cover the text, the last one over bytes that were seen before.
template <std::size_t Size, class Visit>
void forEachBlock(std::string_view text, const Visit& visit) {
    for (std::size_t at = 0; at + Size < text.size(); at += Size) {
        visit(std::integral_constant<std::size_t, Size>(), at);
    }
    visit(std::integral_constant<std::size_t, Size>(), text.size() - Size);
}

template <class Visit>
void forEachBlock(std::string_view text, const Visit& visit) {
    if (text.size() >= 16) {
        forEachBlock<16>(text, visit);
    } else if (text.size() >= 8) {
        forEachBlock<8>(text, visit);
    } else if (text.size() >= 4) {
        forEachBlock<4>(text, visit);
    } else {
        for (std::size_t at = 0; at < text.size(); ++at) {
            visit(std::integral_constant<std::size_t, 1>(), at);
        }
    }
}

// Reads the name and writes the copy, so that no load waits for a store.
template <Null null>
std::string replacedName(std::string_view name) {
    std::string result(name);
    forEachBlock(name, [&](auto size, std::size_t at) {
        store<size>(result.data() + at, replacedBlock<null>(load<size>(name.data() + at)));
    });
    return result;
}

#else

template <Null null>
std::string replacedName(std::string_view name) {
    std::string result(name);
    std::transform(result.begin(), result.end(), result.begin(), [](char character) {
        return replacedCharacter<null>(static_cast<unsigned char>(character));
    });
    return result;
}

#endif

// Whether all bytes are from `least` to 126. Eight at a time: a byte outside leaves its top bit,
// and carries and borrows go only from bytes that do.
bool hasOnlyBytesFrom(std::uint64_t least, std::string_view text) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    const auto outside = [&](std::uint64_t word) {
        return word | (word + ones) | (word - ones * least);
    };
    const auto wordAt = [&](std::size_t at) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, sizeof word);
        return word;
    };
    constexpr std::size_t size = sizeof(std::uint64_t);
    std::uint64_t found = 0;
    for (std::size_t at = 0; at + size <= text.size(); at += size) {
        found |= outside(wordAt(at));
    }
    if (text.size() >= size) {
        found |= outside(wordAt(text.size() - size));
    } else {
        for (const char character : text) {
            found |= outside(ones * static_cast<unsigned char>(character));
        }
    }
    return (found & ones * 0x80) == 0;
}

struct TwoDigits {
    char digits[2];
};

constexpr std::array<TwoDigits, 256> twoDigits = [] {
    std::array<TwoDigits, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = {{"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]}};
    }
    return table;
}();

constexpr std::size_t spelledLength = 5;

char* spell(char* out, char32_t unit) {
    *out = 'U';
    std::memcpy(out + 1, &twoDigits[unit >> 8], 2);
    std::memcpy(out + 3, &twoDigits[unit & 0xFF], 2);
    return out + spelledLength;
}

// What is written for a byte: a character, or 0 where a unit is spelled.
using ByteMap = std::array<char, 256>;

template <class Map>
constexpr ByteMap byteMap(unsigned least, const Map& map) {
    ByteMap table{};
    for (unsigned c = least; c <= 126; ++c) {
        table[c] = map(static_cast<unsigned char>(c));
    }
    return table;
}

constexpr ByteMap forNames = byteMap(0, &replacedCharacter<Null::IsReplaced>);
constexpr ByteMap forTexts = byteMap(' ', [](unsigned char c) { return static_cast<char>(c); });

// Answers the end of what was written.
char* writeSpelled(std::string_view text, const ByteMap& map, char* out) {
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        if (map[first] != '\0') {
            *out++ = map[first];
            text.remove_prefix(1);
            continue;
        }
        const auto [character, length] = internal::decodedCharacter(text);
        if (length == 0) {
            out = spell(out, char32_t{internal::escapeBase} + first);
        } else if (character < 0x10000) {
            out = spell(out, character);
        } else {
            out = spell(out, 0xD800 + ((character - 0x10000) >> 10));
            out = spell(out, 0xDC00 + (character & 0x3FF));
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

// The text with units spelled in hexadecimal. A unit takes at least one byte of the text. Names go
// by way of the stack, so that the result is allocated once and as long as it is.
std::string spelled(std::string_view text, const ByteMap& map) {
    constexpr std::size_t longestName = 256;
    if (text.size() <= longestName) {
        char buffer[spelledLength * longestName];
        return {buffer, writeSpelled(text, map, buffer)};
    }
    std::string result(spelledLength * text.size(), '\0');
    const char* const end = writeSpelled(text, map, result.data());
    result.resize(static_cast<std::size_t>(end - result.data()));
    result.shrink_to_fit();
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
    std::string result = replacedName<Null::Stays>(name);
    if (!result.empty() && (result.back() == '.' || result.back() == ' ')) {
        result.back() = substitute;
    }
    return result;
}

std::string windowsValidFilenameByTranscodingNonASCIIChars(std::string_view name) {
    std::string result = hasOnlyBytesFrom('\0', name) ? replacedName<Null::IsReplaced>(name)
                                                      : spelled(name, forNames);
    if (!result.empty() && result.back() == '.') {
        result.back() = substitute;
    }
    return result;
}

std::string stringByTranscodingNonASCIIChars(std::string_view text) {
    return hasOnlyBytesFrom(' ', text) ? std::string(text) : spelled(text, forTexts);
}

} // namespace tav
