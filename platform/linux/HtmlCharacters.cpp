#include "base/DecodedCharacter.hpp"
#include "platform/linux/HtmlTokens.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tav::internal {
namespace {

struct Name {
    std::string_view name;
    char32_t character;
    /// Whether the semicolon may be missing.
    bool standsAlone;
};

// Ordered by name: Latin-1, the basic ones, common punctuation.
constexpr std::array names = {
    Name{"AElig", 0xC6, true},     Name{"AMP", 0x26, true},       Name{"Aacute", 0xC1, true},
    Name{"Acirc", 0xC2, true},     Name{"Agrave", 0xC0, true},    Name{"Aring", 0xC5, true},
    Name{"Atilde", 0xC3, true},    Name{"Auml", 0xC4, true},      Name{"COPY", 0xA9, true},
    Name{"Ccedil", 0xC7, true},    Name{"Dagger", 0x2021, false}, Name{"ETH", 0xD0, true},
    Name{"Eacute", 0xC9, true},    Name{"Ecirc", 0xCA, true},     Name{"Egrave", 0xC8, true},
    Name{"Euml", 0xCB, true},      Name{"GT", 0x3E, true},        Name{"Iacute", 0xCD, true},
    Name{"Icirc", 0xCE, true},     Name{"Igrave", 0xCC, true},    Name{"Iuml", 0xCF, true},
    Name{"LT", 0x3C, true},        Name{"Ntilde", 0xD1, true},    Name{"OElig", 0x152, false},
    Name{"Oacute", 0xD3, true},    Name{"Ocirc", 0xD4, true},     Name{"Ograve", 0xD2, true},
    Name{"Oslash", 0xD8, true},    Name{"Otilde", 0xD5, true},    Name{"Ouml", 0xD6, true},
    Name{"QUOT", 0x22, true},      Name{"REG", 0xAE, true},       Name{"Scaron", 0x160, false},
    Name{"THORN", 0xDE, true},     Name{"Uacute", 0xDA, true},    Name{"Ucirc", 0xDB, true},
    Name{"Ugrave", 0xD9, true},    Name{"Uuml", 0xDC, true},      Name{"Yacute", 0xDD, true},
    Name{"Yuml", 0x178, false},    Name{"aacute", 0xE1, true},    Name{"acirc", 0xE2, true},
    Name{"acute", 0xB4, true},     Name{"aelig", 0xE6, true},     Name{"agrave", 0xE0, true},
    Name{"amp", 0x26, true},       Name{"apos", 0x27, false},     Name{"aring", 0xE5, true},
    Name{"asymp", 0x2248, false},  Name{"atilde", 0xE3, true},    Name{"auml", 0xE4, true},
    Name{"bdquo", 0x201E, false},  Name{"brvbar", 0xA6, true},    Name{"bull", 0x2022, false},
    Name{"ccedil", 0xE7, true},    Name{"cedil", 0xB8, true},     Name{"cent", 0xA2, true},
    Name{"circ", 0x2C6, false},    Name{"copy", 0xA9, true},      Name{"curren", 0xA4, true},
    Name{"dagger", 0x2020, false}, Name{"darr", 0x2193, false},   Name{"deg", 0xB0, true},
    Name{"divide", 0xF7, true},    Name{"eacute", 0xE9, true},    Name{"ecirc", 0xEA, true},
    Name{"egrave", 0xE8, true},    Name{"emsp", 0x2003, false},   Name{"ensp", 0x2002, false},
    Name{"eth", 0xF0, true},       Name{"euml", 0xEB, true},      Name{"euro", 0x20AC, false},
    Name{"fnof", 0x192, false},    Name{"frac12", 0xBD, true},    Name{"frac14", 0xBC, true},
    Name{"frac34", 0xBE, true},    Name{"ge", 0x2265, false},     Name{"gt", 0x3E, true},
    Name{"harr", 0x2194, false},   Name{"hellip", 0x2026, false}, Name{"iacute", 0xED, true},
    Name{"icirc", 0xEE, true},     Name{"iexcl", 0xA1, true},     Name{"igrave", 0xEC, true},
    Name{"infin", 0x221E, false},  Name{"iquest", 0xBF, true},    Name{"iuml", 0xEF, true},
    Name{"laquo", 0xAB, true},     Name{"larr", 0x2190, false},   Name{"ldquo", 0x201C, false},
    Name{"le", 0x2264, false},     Name{"lrm", 0x200E, false},    Name{"lsaquo", 0x2039, false},
    Name{"lsquo", 0x2018, false},  Name{"lt", 0x3C, true},        Name{"macr", 0xAF, true},
    Name{"mdash", 0x2014, false},  Name{"micro", 0xB5, true},     Name{"middot", 0xB7, true},
    Name{"minus", 0x2212, false},  Name{"nbsp", 0xA0, true},      Name{"ndash", 0x2013, false},
    Name{"ne", 0x2260, false},     Name{"not", 0xAC, true},       Name{"ntilde", 0xF1, true},
    Name{"oacute", 0xF3, true},    Name{"ocirc", 0xF4, true},     Name{"oelig", 0x153, false},
    Name{"ograve", 0xF2, true},    Name{"ordf", 0xAA, true},      Name{"ordm", 0xBA, true},
    Name{"oslash", 0xF8, true},    Name{"otilde", 0xF5, true},    Name{"ouml", 0xF6, true},
    Name{"para", 0xB6, true},      Name{"permil", 0x2030, false}, Name{"plusmn", 0xB1, true},
    Name{"pound", 0xA3, true},     Name{"quot", 0x22, true},      Name{"raquo", 0xBB, true},
    Name{"rarr", 0x2192, false},   Name{"rdquo", 0x201D, false},  Name{"reg", 0xAE, true},
    Name{"rlm", 0x200F, false},    Name{"rsaquo", 0x203A, false}, Name{"rsquo", 0x2019, false},
    Name{"sbquo", 0x201A, false},  Name{"scaron", 0x161, false},  Name{"sect", 0xA7, true},
    Name{"shy", 0xAD, true},       Name{"sup1", 0xB9, true},      Name{"sup2", 0xB2, true},
    Name{"sup3", 0xB3, true},      Name{"szlig", 0xDF, true},     Name{"thinsp", 0x2009, false},
    Name{"thorn", 0xFE, true},     Name{"tilde", 0x2DC, false},   Name{"times", 0xD7, true},
    Name{"trade", 0x2122, false},  Name{"uacute", 0xFA, true},    Name{"uarr", 0x2191, false},
    Name{"ucirc", 0xFB, true},     Name{"ugrave", 0xF9, true},    Name{"uml", 0xA8, true},
    Name{"uuml", 0xFC, true},      Name{"yacute", 0xFD, true},    Name{"yen", 0xA5, true},
    Name{"yuml", 0xFF, true},      Name{"zwj", 0x200D, false},    Name{"zwnj", 0x200C, false},
};

static_assert(std::is_sorted(names.begin(), names.end(),
                             [](const Name& a, const Name& b) { return a.name < b.name; }));

constexpr std::size_t longestName = 6;

// What the numbers 128 to 159 mean: Windows-1252, since that is what authors meant.
constexpr std::array<char16_t, 32> windows1252 = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t lastCharacter = 0x10FFFF;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isLetterOrDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

int digitValue(char c, int base) {
    if (isDigit(c)) {
        return c - '0';
    }
    if (base == 16 && c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return base == 16 && c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

const Name* find(std::string_view name) {
    const auto* const found =
        std::lower_bound(names.begin(), names.end(), name,
                         [](const Name& a, std::string_view b) { return a.name < b; });
    return found != names.end() && found->name == name ? found : nullptr;
}

enum class Place { Text, Attribute, Raw };

/// The length of the reference "&#..." at the beginning of a text, 0 when there is none.
std::size_t numericReference(std::string_view text, std::string& out) {
    std::size_t at = 2;
    const bool isHex = text.size() > 2 && (text[2] == 'x' || text[2] == 'X');
    const int base = isHex ? 16 : 10;
    at += isHex ? 1 : 0;
    const std::size_t firstDigit = at;
    char32_t number = 0;
    for (; at < text.size() && digitValue(text[at], base) >= 0; ++at) {
        if (number <= lastCharacter) {
            number = number * static_cast<char32_t>(base) +
                     static_cast<char32_t>(digitValue(text[at], base));
        }
    }
    if (at == firstDigit) {
        return 0;
    }
    if (number >= 0x80 && number < 0xA0) {
        number = windows1252[number - 0x80];
    }
    const bool isCharacter =
        number != 0 && number <= lastCharacter && !(number >= 0xD800 && number < 0xE000);
    appendUTF8(out, isCharacter ? number : replacement);
    return at < text.size() && text[at] == ';' ? at + 1 : at;
}

/// The same for "&name": the whole name when it ends in a semicolon, else the longest that may
/// stand alone.
std::size_t namedReference(std::string_view text, Place place, std::string& out) {
    std::size_t length = 0;
    while (length <= longestName && length + 1 < text.size() && isLetterOrDigit(text[length + 1])) {
        ++length;
    }
    const char after = length + 1 < text.size() ? text[length + 1] : '\0';
    if (after == ';') {
        if (const Name* name = find(text.substr(1, length))) {
            appendUTF8(out, name->character);
            return length + 2;
        }
    }
    for (std::size_t part = std::min(length, longestName); part >= 2; --part) {
        const Name* name = find(text.substr(1, part));
        if (name == nullptr || !name->standsAlone) {
            continue;
        }
        const char next = part + 1 < text.size() ? text[part + 1] : '\0';
        if (place == Place::Attribute && (next == '=' || isLetterOrDigit(next))) {
            return 0;
        }
        appendUTF8(out, name->character);
        return part + 1;
    }
    return 0;
}

std::string resolved(std::string_view text, Place place) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        constexpr std::string_view special("&\r\0", 3);
        const std::size_t plain = std::min(text.find_first_of(special), text.size());
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        std::size_t length = 0;
        if (place != Place::Raw && text.starts_with("&#")) {
            length = numericReference(text, out);
        } else if (text.front() == '&' && place != Place::Raw) {
            length = namedReference(text, place, out);
        } else if (text.front() == '\r') {
            length = text.starts_with("\r\n") ? 2 : 1;
            out += '\n';
        } else if (text.front() == '\0') {
            length = 1;
            out += place == Place::Raw ? "\xEF\xBF\xBD" : "";
        }
        if (length == 0) {
            out += '&';
            length = 1;
        }
        text.remove_prefix(length);
    }
    return out;
}

} // namespace

std::string htmlCharacters(std::string_view text) { return resolved(text, Place::Text); }

std::string htmlRawCharacters(std::string_view text) { return resolved(text, Place::Raw); }

std::string htmlAttributeValue(std::string_view text) { return resolved(text, Place::Attribute); }

} // namespace tav::internal
