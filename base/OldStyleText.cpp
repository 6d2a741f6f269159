#include "base/OldStyleText.hpp"

#include "base/Unicode.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
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

constexpr bool isLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

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

constexpr std::array<bool, 256> lettersAndDigits = tableOf<isLetterOrDigit>();
constexpr std::array<bool, 256> plainCharacters = tableOf<standsInQuotes>();

bool standsAlone(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return lettersAndDigits[static_cast<unsigned char>(c)];
    });
}

/// How many characters at the beginning stand in quotes as they are.
std::size_t plainLength(std::string_view text) {
    std::size_t at = 0;
#if defined(__SSE2__)
    const __m128i lastControl = _mm_set1_epi8(0x1f);
    const __m128i deletion = _mm_set1_epi8(0x7f);
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i backslash = _mm_set1_epi8('\\');
    for (; text.size() - at >= 16; at += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
        // Signed: bytes from 0x80 on are below every control character.
        const __m128i plain = _mm_cmpgt_epi8(bytes, lastControl);
        const __m128i special = _mm_or_si128(
            _mm_cmpeq_epi8(bytes, deletion),
            _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash)));
        const auto mask =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_andnot_si128(special, plain)));
        if (mask != 0xffff) {
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
    if (standsAlone(text)) {
        out += text;
        return;
    }
    out += '"';
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

void appendBytes(std::string& out, BytesView bytes) {
    const std::size_t begin = out.size();
    const std::size_t blanks = bytes.empty() ? 0 : (bytes.size() - 1) / 4;
    out.resize(begin + 2 * bytes.size() + blanks + 2);
    char* at = out.data() + begin;
    *at++ = '<';
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i != 0 && i % 4 == 0) {
            *at++ = ' ';
        }
        const auto byte = std::to_integer<unsigned>(bytes[i]);
        *at++ = hexDigits[byte >> 4];
        *at++ = hexDigits[byte & 15];
    }
    *at = '>';
}

void append(std::string& out, const Value& value) { appendValue(out, value, 0); }

std::string write(const Value& value) {
    std::string text;
    append(text, value);
    return text;
}

} // namespace tav::OldStyleText
