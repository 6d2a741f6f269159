#include "base/OldStyleText.hpp"

#include "base/Unicode.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#if defined(__SSE2__)
#include <bit>

#include <emmintrin.h>
#endif

namespace tav::OldStyleText {
namespace {

constexpr std::size_t indentation = 4;
constexpr char hexDigits[] = "0123456789abcdef";
/// Dictionaries of no more entries are sorted on the stack.
constexpr std::size_t smallDictionary = 32;

/// How a text stands in the form.
enum class Quoting : std::uint8_t {
    Bare,    ///< As it is.
    Quoted,  ///< As it is, between two quotes.
    Escaped, ///< Between quotes, some of its characters as others.
};

constexpr bool standsInQuotes(char c) { return c >= ' ' && c < 0x7f && c != '"' && c != '\\'; }

/// For every byte whether the function holds for it.
template <bool (*holds)(char)>
constexpr std::array<bool, 256> tableOf() {
    std::array<bool, 256> table = {};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = holds(static_cast<char>(i));
    }
    return table;
}

constexpr std::array<bool, 256> plainCharacters = tableOf<standsInQuotes>();

#if defined(__SSE2__)

constexpr unsigned allBytes = 0xffff;

template <class Word>
Word wordAt(const char* at) {
    Word word{};
    std::memcpy(&word, at, sizeof word);
    return word;
}

__m128i bytesAt(const char* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }

/// The bytes of a text of 1 to 15, in any order and as often as it takes to make sixteen.
__m128i bytesOfShort(std::string_view text) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    if (text.size() >= 8) {
        return _mm_set_epi64x(wordAt<std::int64_t>(begin), wordAt<std::int64_t>(end - 8));
    }
    if (text.size() >= 4) {
        const auto first = wordAt<std::int32_t>(begin);
        const auto last = wordAt<std::int32_t>(end - 4);
        return _mm_set_epi32(first, last, first, last);
    }
    const char middle = begin[text.size() / 2];
    const char last = end[-1];
    return _mm_unpacklo_epi8(_mm_set1_epi8(*begin),
                             _mm_unpacklo_epi8(_mm_set1_epi8(middle), _mm_set1_epi8(last)));
}

/// The bytes that stand in quotes as they are.
__m128i plainAmong(__m128i bytes) {
    // Signed: bytes from 0x80 on are below every control character.
    const __m128i plain = _mm_cmpgt_epi8(bytes, _mm_set1_epi8(0x1f));
    const __m128i special = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(0x7f)),
                                         _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')),
                                                      _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'))));
    return _mm_andnot_si128(special, plain);
}

/// The bytes that are at least the first of a range and less than so many behind it.
__m128i inRange(__m128i bytes, char first, char count) {
    const __m128i offset = _mm_sub_epi8(bytes, _mm_set1_epi8(first));
    return _mm_cmpeq_epi8(_mm_min_epu8(offset, _mm_set1_epi8(static_cast<char>(count - 1))),
                          offset);
}

__m128i lettersAndDigitsAmong(__m128i bytes) {
    const __m128i lowercase = _mm_or_si128(bytes, _mm_set1_epi8('a' - 'A'));
    return _mm_or_si128(inRange(lowercase, 'a', 26), inRange(bytes, '0', 10));
}

bool areAll(__m128i flags) { return static_cast<unsigned>(_mm_movemask_epi8(flags)) == allBytes; }

template <class Word>
void copyEnds(char* at, std::string_view text) {
    const auto first = wordAt<Word>(text.data());
    const auto last = wordAt<Word>(text.data() + text.size() - sizeof(Word));
    std::memcpy(at, &first, sizeof first);
    std::memcpy(at + text.size() - sizeof last, &last, sizeof last);
}

/// `std::copy` without a call, for texts that are short more often than not.
char* copyText(char* at, std::string_view text) {
    const std::size_t size = text.size();
    if (size >= 16) {
        for (std::size_t done = 0; size - done > 16; done += 16) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(at + done), bytesAt(text.data() + done));
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(at + size - 16),
                         bytesAt(text.data() + size - 16));
    } else if (size >= 8) {
        copyEnds<std::uint64_t>(at, text);
    } else if (size >= 4) {
        copyEnds<std::uint32_t>(at, text);
    } else if (size != 0) {
        at[0] = text[0];
        at[size / 2] = text[size / 2];
        at[size - 1] = text[size - 1];
    }
    return at + size;
}

Quoting quotingOfCharacters(std::string_view text) {
    if (text.size() < 16) {
        const __m128i bytes = bytesOfShort(text);
        return areAll(lettersAndDigitsAmong(bytes)) ? Quoting::Bare
               : areAll(plainAmong(bytes))          ? Quoting::Quoted
                                                    : Quoting::Escaped;
    }
    const char* const begin = text.data();
    const char* const last = begin + text.size() - 16;
    // Most texts have a blank or a dot at one of their ends.
    bool isBare = areAll(
        _mm_and_si128(lettersAndDigitsAmong(bytesAt(begin)), lettersAndDigitsAmong(bytesAt(last))));
    for (const char* at = begin + 16; isBare && at < last; at += 16) {
        isBare = areAll(lettersAndDigitsAmong(bytesAt(at)));
    }
    if (isBare) {
        return Quoting::Bare;
    }
    __m128i plain = plainAmong(bytesAt(last));
    for (const char* at = begin; at < last; at += 16) {
        plain = _mm_and_si128(plain, plainAmong(bytesAt(at)));
    }
    return areAll(plain) ? Quoting::Quoted : Quoting::Escaped;
}

#else

constexpr bool isLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr std::array<bool, 256> lettersAndDigits = tableOf<isLetterOrDigit>();

template <const std::array<bool, 256>& table>
bool areAll(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return table[static_cast<unsigned char>(c)]; });
}

char* copyText(char* at, std::string_view text) { return std::copy(text.begin(), text.end(), at); }

Quoting quotingOfCharacters(std::string_view text) {
    if (areAll<lettersAndDigits>(text)) {
        return Quoting::Bare;
    }
    return areAll<plainCharacters>(text) ? Quoting::Quoted : Quoting::Escaped;
}

#endif

Quoting quotingOf(std::string_view text) {
    return text.empty() ? Quoting::Quoted : quotingOfCharacters(text);
}

/// How many characters at the beginning stand in quotes as they are.
std::size_t plainLength(std::string_view text) {
    std::size_t at = 0;
#if defined(__SSE2__)
    for (; text.size() - at >= 16; at += 16) {
        const auto mask =
            static_cast<unsigned>(_mm_movemask_epi8(plainAmong(bytesAt(text.data() + at))));
        if (mask != allBytes) {
            return at + static_cast<std::size_t>(std::countr_one(mask));
        }
    }
#endif
    while (at < text.size() && plainCharacters[static_cast<unsigned char>(text[at])]) {
        ++at;
    }
    return at;
}

/// An ASCII character that does not stand in quotes as it is.
void appendEscaped(std::string& out, char c) {
    constexpr std::string_view named = "\a\b\t\n\v\f\r";
    constexpr std::string_view names = "abtnvfr";
    out += '\\';
    if (c == '"' || c == '\\') {
        out += c;
    } else if (const std::size_t at = named.find(c); at != std::string_view::npos) {
        out += names[at];
    } else {
        for (int shift = 6; shift >= 0; shift -= 3) {
            out += hexDigits[c >> shift & 7];
        }
    }
}

void appendUnits(std::string& out, std::string_view text) {
    for (const char16_t unit : utf16FromBytes(text)) {
        const char escape[] = {'\\',
                               'U',
                               hexDigits[unit >> 12],
                               hexDigits[unit >> 8 & 15],
                               hexDigits[unit >> 4 & 15],
                               hexDigits[unit & 15]};
        out.append(escape, sizeof escape);
    }
}

/// The bytes from 0x80 on at the beginning. Characters of more than one byte have no others.
std::string_view leadingBytesBeyondASCII(std::string_view text) {
    const auto* end =
        std::find_if(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
    return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

template <class Integer>
void appendInteger(std::string& out, Integer value) {
    std::array<char, std::numeric_limits<Integer>::digits10 + 3> digits = {};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    appendText(out, {digits.data(), static_cast<std::size_t>(end - digits.data())});
}

void indent(std::string& out, std::size_t level) { out.append(level * indentation, ' '); }

void appendValue(std::string& out, const Value& value, std::size_t level);

void appendArray(std::string& out, const Value::Array& array, std::size_t level) {
    out += "(\n";
    for (std::size_t i = 0; i < array.size(); ++i) {
        indent(out, level + 1);
        appendValue(out, array[i], level + 1);
        out += i + 1 < array.size() ? ",\n" : "\n";
    }
    indent(out, level);
    out += ')';
}

void appendEntries(std::string& out, std::span<const Value::Dictionary::Entry* const> entries,
                   std::size_t level) {
    out += "{\n";
    for (const Value::Dictionary::Entry* entry : entries) {
        indent(out, level + 1);
        appendText(out, entry->first);
        out += " = ";
        appendValue(out, entry->second, level + 1);
        out += ";\n";
    }
    indent(out, level);
    out += '}';
}

void appendDictionary(std::string& out, const Value::Dictionary& dictionary, std::size_t level) {
    const std::size_t count = dictionary.size();
    if (count > smallDictionary) {
        appendEntries(out, dictionary.sorted(), level);
        return;
    }
    std::array<const Value::Dictionary::Entry*, smallDictionary> entries = {};
    std::size_t sorted = 0;
    for (const Value::Dictionary::Entry& entry : dictionary) {
        std::size_t at = sorted++;
        for (; at > 0 && entry.first < entries[at - 1]->first; --at) {
            entries[at] = entries[at - 1];
        }
        entries[at] = &entry;
    }
    appendEntries(out, std::span(entries).first(count), level);
}

// A container inside another is indented twice, by its holder and here: the form has always been
// written so.
void appendValue(std::string& out, const Value& value, std::size_t level) {
    switch (value.type()) {
    case Value::Type::String:
        appendText(out, *value.asString());
        break;
    case Value::Type::Boolean:
        out += value.boolValue() ? '1' : '0';
        break;
    case Value::Type::Integer:
        if (const auto number = value.asSigned()) {
            appendInteger(out, *number);
        } else {
            appendInteger(out, value.unsignedLongLongValue());
        }
        break;
    case Value::Type::Bytes:
        appendBytes(out, *value.asData());
        break;
    case Value::Type::Array:
        indent(out, level);
        appendArray(out, *value.asArray(), level);
        break;
    case Value::Type::Dictionary:
        indent(out, level);
        appendDictionary(out, *value.asDictionary(), level);
        break;
    default:
        appendText(out, value.description());
        break;
    }
}

} // namespace

void appendText(std::string& out, std::string_view text) {
    const Quoting quoting = quotingOf(text);
    if (quoting == Quoting::Bare) {
        out += text;
        return;
    }
    out += '"';
    if (quoting == Quoting::Quoted) {
        out += text;
        out += '"';
        return;
    }
    while (!text.empty()) {
        const std::size_t plain = plainLength(text);
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        if (const std::string_view beyond = leadingBytesBeyondASCII(text); !beyond.empty()) {
            appendUnits(out, beyond);
            text.remove_prefix(beyond.size());
        } else {
            appendEscaped(out, text.front());
            text.remove_prefix(1);
        }
    }
    out += '"';
}

char* putText(char* at, std::string_view text) {
    const Quoting quoting = quotingOf(text);
    if (quoting == Quoting::Escaped) {
        return nullptr;
    }
    const std::size_t quote = quoting == Quoting::Quoted ? 1 : 0;
    *at = '"';
    at = copyText(at + quote, text);
    if (quote != 0) {
        *at++ = '"';
    }
    return at;
}

char* putBytes(char* at, BytesView bytes) {
    *at++ = '<';
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i != 0 && i % 4 == 0) {
            *at++ = ' ';
        }
        const auto byte = std::to_integer<unsigned>(bytes[i]);
        *at++ = hexDigits[byte >> 4];
        *at++ = hexDigits[byte & 15];
    }
    *at++ = '>';
    return at;
}

void appendBytes(std::string& out, BytesView bytes) {
    const std::size_t begin = out.size();
    out.resize(begin + lengthOfBytes(bytes.size()));
    putBytes(out.data() + begin, bytes);
}

void append(std::string& out, const Value& value) { appendValue(out, value, 0); }

std::string write(const Value& value) {
    std::string text;
    append(text, value);
    return text;
}

} // namespace tav::OldStyleText
