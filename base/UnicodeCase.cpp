// Upper and lower case. Apart from UnicodeForms.cpp: these operations of ICU know locales and refer
// to its data tables.
#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <algorithm>

#include <unicode/ustring.h>

namespace tav {

namespace {

constexpr const char* rootLocale = "";

using Mapping = std::int32_t (*)(char16_t*, std::int32_t, const char16_t*, std::int32_t,
                                 const char*, UErrorCode*);

std::string mapped(std::string_view text, Mapping mapping) {
    const std::u16string units = utf16FromBytes(text);
    return bytesFromUTF16(internal::icuResult(
        units.size(), [&](char16_t* buffer, std::int32_t capacity, UErrorCode& error) {
            return mapping(buffer, capacity, units.data(), internal::icuLength(units.size()),
                           rootLocale, &error);
        }));
}

} // namespace

std::string uppercaseString(std::string_view text) {
    if (!isASCII(text)) {
        return mapped(text, &u_strToUpper);
    }
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char character) {
        return character >= 'a' && character <= 'z' ? static_cast<char>(character - ('a' - 'A'))
                                                    : character;
    });
    return upper;
}

std::string lowercaseString(std::string_view text) {
    // For ASCII the lower case is the caseless form.
    return isASCII(text) ? caselessForm(text) : mapped(text, &u_strToLower);
}

} // namespace tav
