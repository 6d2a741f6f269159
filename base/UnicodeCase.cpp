// Lower case. Apart from UnicodeForms.cpp: this operation of ICU knows locales and refers to its
// data tables.
#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <unicode/ustring.h>

namespace tav {

std::string lowercaseString(std::string_view text) {
    // For ASCII the lower case is the caseless form.
    if (isASCII(text)) {
        return caselessForm(text);
    }
    constexpr const char* rootLocale = "";
    const std::u16string units = utf16FromBytes(text);
    return bytesFromUTF16(internal::icuResult(
        units.size(), [&](char16_t* buffer, std::int32_t capacity, UErrorCode& error) {
            return u_strToLower(buffer, capacity, units.data(), internal::icuLength(units.size()),
                                rootLocale, &error);
        }));
}

} // namespace tav
