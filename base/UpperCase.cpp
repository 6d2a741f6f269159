// Upper case. Apart from UnicodeCase.cpp and without ICU's operation for whole texts, which knows
// locales: a program that links this statically stays without ICU's data tables.
#include "base/Unicode.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

namespace tav {

namespace {

/// Where the first character whose upper case is several lies.
constexpr UChar32 sharpS = 0xDF;

void appendUpper(std::u16string& upper, UChar32 character) {
    std::array<char16_t, U16_MAX_LENGTH> units = {};
    std::size_t size = 0;
    U16_APPEND_UNSAFE(units, size, u_toupper(character));
    upper.append(units.data(), size);
}

/// A character that folds to several has the upper case of each of them, unless it is upper case
/// itself. (Tests compare this with ICU's tables for every character.)
void appendFullUpper(std::u16string& upper, UChar32 character) {
    constexpr std::size_t longestFolding = 3;
    std::array<char16_t, U16_MAX_LENGTH> units = {};
    std::size_t size = 0;
    U16_APPEND_UNSAFE(units, size, character);
    std::array<char16_t, longestFolding + 1> folded = {};
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t foldedSize =
        u_strFoldCase(folded.data(), static_cast<std::int32_t>(folded.size()), units.data(),
                      static_cast<std::int32_t>(size), U_FOLD_CASE_DEFAULT, &error);
    if (U_FAILURE(error) || foldedSize <= static_cast<std::int32_t>(size) ||
        u_charType(character) == U_UPPERCASE_LETTER) {
        appendUpper(upper, character);
        return;
    }
    // Foldings to several lie in the basic plane.
    for (std::size_t i = 0; i < static_cast<std::size_t>(foldedSize); ++i) {
        appendUpper(upper, folded[i]);
    }
}

} // namespace

std::string uppercaseString(std::string_view text) {
    if (isASCII(text)) {
        std::string upper(text);
        std::transform(upper.begin(), upper.end(), upper.begin(), [](char character) {
            return character >= 'a' && character <= 'z' ? static_cast<char>(character - ('a' - 'A'))
                                                        : character;
        });
        return upper;
    }
    const std::u16string units = utf16FromBytes(text);
    std::u16string upper;
    upper.reserve(units.size());
    for (std::size_t at = 0; at < units.size();) {
        UChar32 character = 0;
        U16_NEXT(units, at, units.size(), character);
        if (character < sharpS) {
            appendUpper(upper, character);
        } else {
            appendFullUpper(upper, character);
        }
    }
    return bytesFromUTF16(upper);
}

} // namespace tav
