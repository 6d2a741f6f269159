// Case folding and normal forms: what ICU does here needs none of its data tables, so that a
// program may link it statically and stay small. Operations with a locale do not belong into this
// file.
#include "base/UnicodeForms.hpp"

#include "base/CombiningMarks.hpp"
#include "base/Normalizer.hpp"
#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include <unicode/unorm2.h>
#include <unicode/ustring.h>

namespace tav {

namespace {

constexpr char asciiLower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A'))
                                                : character;
}

constexpr bool isASCIICharacter(char character) {
    return static_cast<unsigned char>(character) < 0x80;
}

std::u16string normalized(const UNormalizer2* form, std::u16string units) {
    std::int32_t size = internal::icuLength(units.size());
    UErrorCode error = U_ZERO_ERROR;
    if (unorm2_spanQuickCheckYes(form, units.data(), size, &error) == size) {
        return units;
    }
    units = internal::withMarksInOrder(std::move(units));
    size = internal::icuLength(units.size());
    return internal::icuResult(units.size() + units.size() / 2,
                               [&](char16_t* buffer, std::int32_t capacity, UErrorCode& status) {
                                   return unorm2_normalize(form, units.data(), size, buffer,
                                                           capacity, &status);
                               });
}

constexpr std::uint64_t inEveryByte(std::uint64_t byte) { return byte * 0x0101010101010101; }

// Eight ASCII characters in lower case at once.
constexpr std::uint64_t asciiLower(std::uint64_t characters) {
    // The top bit of each byte: set from "A" on, set behind "Z".
    const std::uint64_t fromA = characters + inEveryByte(0x80 - 'A');
    const std::uint64_t behindZ = characters + inEveryByte(0x7F - 'Z');
    return characters | ((fromA ^ behindZ) & inEveryByte(0x80)) >> 2;
}

// How long both texts are ASCII and agree but for case. ASCII characters never join or change order
// with what follows, so the caseless forms agree as far, and the rests may be compared alone.
std::size_t commonASCIIPrefix(std::string_view a, std::string_view b) {
    const std::size_t size = std::min(a.size(), b.size());
    std::size_t at = 0;
    while (size - at >= sizeof(std::uint64_t)) {
        std::uint64_t wordA = 0;
        std::uint64_t wordB = 0;
        std::memcpy(&wordA, a.data() + at, sizeof wordA);
        std::memcpy(&wordB, b.data() + at, sizeof wordB);
        const bool areASCII = ((wordA | wordB) & inEveryByte(0x80)) == 0;
        if (!areASCII || asciiLower(wordA) != asciiLower(wordB)) {
            break;
        }
        at += sizeof wordA;
    }
    while (at < size && isASCIICharacter(a[at]) && asciiLower(a[at]) == asciiLower(b[at])) {
        ++at;
    }
    return at;
}

std::u16string caselessUnits(std::string_view text) {
    return internal::caselessUnits(utf16FromBytes(text));
}

} // namespace

std::u16string internal::decomposedUnits(std::u16string units) {
    static const UNormalizer2* const decomposition = internal::normalizer(&unorm2_getNFDInstance);
    return normalized(decomposition, std::move(units));
}

// Decomposed before the folding as well: some characters fold to what must then be put in order.
std::u16string internal::caselessUnits(std::u16string units) {
    units = decomposedUnits(std::move(units));
    return decomposedUnits(
        icuResult(units.size(), [&](char16_t* buffer, std::int32_t capacity, UErrorCode& error) {
            return u_strFoldCase(buffer, capacity, units.data(), icuLength(units.size()),
                                 U_FOLD_CASE_DEFAULT, &error);
        }));
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    const std::size_t common = commonASCIIPrefix(a, b);
    a.remove_prefix(common);
    b.remove_prefix(common);
    if (a.empty() || b.empty()) {
        return a.size() == b.size();
    }
    if (isASCIICharacter(a.front()) && isASCIICharacter(b.front())) {
        return false;
    }
    return a == b || caselessUnits(a) == caselessUnits(b);
}

int caseInsensitiveCompare(std::string_view a, std::string_view b) {
    const std::size_t common = commonASCIIPrefix(a, b);
    a.remove_prefix(common);
    b.remove_prefix(common);
    if (a.empty() || b.empty()) {
        return int{!a.empty()} - int{!b.empty()};
    }
    if (isASCIICharacter(a.front()) && isASCIICharacter(b.front())) {
        return asciiLower(a.front()) < asciiLower(b.front()) ? -1 : 1;
    }
    const int order = caselessUnits(a).compare(caselessUnits(b));
    return int{order > 0} - int{order < 0};
}

std::string caselessForm(std::string_view text) {
    if (isASCII(text)) {
        std::string form(text);
        std::transform(form.begin(), form.end(), form.begin(),
                       [](char character) { return asciiLower(character); });
        return form;
    }
    return bytesFromUTF16(caselessUnits(text));
}

std::string decomposedString(std::string_view text) {
    if (isASCII(text)) {
        return std::string(text);
    }
    return bytesFromUTF16(internal::decomposedUnits(utf16FromBytes(text)));
}

std::string precomposedString(std::string_view text) {
    if (isASCII(text)) {
        return std::string(text);
    }
    return bytesFromUTF16(
        normalized(internal::normalizer(&unorm2_getNFCInstance), utf16FromBytes(text)));
}

} // namespace tav
