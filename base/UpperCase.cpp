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

void append(std::u16string& text, UChar32 character) {
    if (U_IS_BMP(character)) {
        text += static_cast<char16_t>(character);
    } else {
        text += static_cast<char16_t>(U16_LEAD(character));
        text += static_cast<char16_t>(U16_TRAIL(character));
    }
}

/// What a character of the basic plane folds to, each in upper case. Characters fold to three at
/// most, which are of that plane as well.
void appendUpperOfFolding(std::u16string& upper, char16_t character) {
    std::array<char16_t, 4> folded = {};
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t size = u_strFoldCase(folded.data(), static_cast<std::int32_t>(folded.size()),
                                            &character, 1, U_FOLD_CASE_DEFAULT, &error);
    for (std::size_t i = 0; i < std::min(static_cast<std::size_t>(size), folded.size()); ++i) {
        append(upper, u_toupper(folded[i]));
    }
}

/// A letter with case for which there is no single upper case may have several: those of what it
/// folds to. (Tests compare this with ICU's tables for every character.)
void appendUpper(std::u16string& upper, UChar32 character) {
    const UChar32 single = u_toupper(character);
    const std::int8_t kind = u_charType(single);
    if ((kind == U_LOWERCASE_LETTER || kind == U_TITLECASE_LETTER) && U_IS_BMP(character)) {
        appendUpperOfFolding(upper, static_cast<char16_t>(character));
    } else {
        append(upper, single);
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
        appendUpper(upper, character);
    }
    return bytesFromUTF16(upper);
}

} // namespace tav
