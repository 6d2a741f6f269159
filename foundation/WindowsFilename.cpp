#include "foundation/WindowsFilename.hpp"

#include "base/Transliteration.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
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

constexpr bool isSpelled(char16_t unit) { return unit > 126; }
constexpr bool isPlain(char16_t unit) { return unit >= 32 && !isSpelled(unit); }

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

// Whether all bytes are from `least` to 126.
bool hasOnlyBytesFrom(char least, std::string_view text) {
    // As signed numbers bytes above 127 are below all others.
    __m128i outside = _mm_setzero_si128();
    forEachBlock(text, [&](auto size, std::size_t at) {
        __m128i block = load<size>(text.data() + at);
        if constexpr (size < sizeof block) {
            block = _mm_unpacklo_epi64(block, block);
        }
        if constexpr (size < sizeof block / 2) {
            block = _mm_shuffle_epi32(block, 0);
        }
        if constexpr (size == 1) {
            block = _mm_set1_epi8(text[at]);
        }
        outside = _mm_or_si128(outside, _mm_cmplt_epi8(block, _mm_set1_epi8(least)));
        outside = _mm_or_si128(outside, _mm_cmpgt_epi8(block, _mm_set1_epi8(126)));
    });
    return _mm_movemask_epi8(outside) == 0;
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

// Whether all bytes are from `least` to 126.
bool hasOnlyBytesFrom(char least, std::string_view text) {
    return std::all_of(text.begin(), text.end(), [&](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte >= static_cast<unsigned char>(least) && byte <= 126;
    });
}

#endif

// The text with units spelled in hexadecimal where `spells` says so; `map` is for the others, which
// are ASCII.
template <class Spells, class Map>
std::string spelled(std::string_view text, const Spells& spells, const Map& map) {
    const std::u16string units = utf16FromBytes(text);
    const auto count = static_cast<std::size_t>(std::count_if(units.begin(), units.end(), spells));
    std::string result(units.size() + 4 * count, '\0');
    char* out = result.data();
    for (const char16_t unit : units) {
        if (spells(unit)) {
            constexpr std::string_view digits = "0123456789ABCDEF";
            *out++ = 'U';
            *out++ = digits[unit >> 12];
            *out++ = digits[unit >> 8 & 15];
            *out++ = digits[unit >> 4 & 15];
            *out++ = digits[unit & 15];
        } else {
            *out++ = map(static_cast<unsigned char>(unit));
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
    std::string result = replacedName<Null::Stays>(name);
    if (!result.empty() && (result.back() == '.' || result.back() == ' ')) {
        result.back() = substitute;
    }
    return result;
}

std::string windowsValidFilenameByTranscodingNonASCIIChars(std::string_view name) {
    std::string result = hasOnlyBytesFrom('\0', name)
                             ? replacedName<Null::IsReplaced>(name)
                             : spelled(name, &isSpelled, &replacedCharacter<Null::IsReplaced>);
    if (!result.empty() && result.back() == '.') {
        result.back() = substitute;
    }
    return result;
}

std::string stringByTranscodingNonASCIIChars(std::string_view text) {
    if (hasOnlyBytesFrom(' ', text)) {
        return std::string(text);
    }
    return spelled(
        text, [](char16_t unit) { return !isPlain(unit); },
        [](unsigned char c) { return static_cast<char>(c); });
}

} // namespace tav
