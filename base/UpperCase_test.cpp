#include "base/Unicode.hpp"
#include "base/UnicodeBuffer.hpp"

#include <random>
#include <string>

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

namespace tav {
namespace {

std::u16string unitsOf(UChar32 character) {
    std::u16string units(U16_MAX_LENGTH, u'\0');
    std::size_t size = 0;
    U16_APPEND_UNSAFE(units, size, character);
    units.resize(size);
    return units;
}

/// What ICU makes of a whole text by its tables.
std::string upperByTables(const std::u16string& units) {
    return bytesFromUTF16(internal::icuResult(
        units.size() * 3, [&](char16_t* buffer, std::int32_t capacity, UErrorCode& error) {
            return u_strToUpper(buffer, capacity, units.data(), internal::icuLength(units.size()),
                                "", &error);
        }));
}

TEST(UpperCase, OfEveryCharacterIsThatOfTheTables) {
    int several = 0;
    for (UChar32 character = 0; character <= UCHAR_MAX_VALUE; ++character) {
        if (U_IS_SURROGATE(character)) {
            continue;
        }
        const std::u16string units = unitsOf(character);
        const std::string upper = uppercaseString(bytesFromUTF16(units));
        ASSERT_EQ(upper, upperByTables(units)) << std::hex << character;
        several += utf16Length(upper) > units.size() ? 1 : 0;
    }
    EXPECT_GE(several, 102) << "characters that become more than one";
}

TEST(UpperCase, OfTextsIsThatOfTheTables) {
    // Sigmas, dots and marks, whose lower case goes by what stands around them.
    const std::u16string characters = u"aßŉǰΐΰᾳᾼẚẞİıiςσ\u0345\u0307\u0301ﬃև ";
    std::mt19937 random(3);
    for (int round = 0; round < 5000; ++round) {
        std::u16string units;
        for (int i = 0; i < 6; ++i) {
            units += characters[random() % characters.size()];
        }
        ASSERT_EQ(uppercaseString(bytesFromUTF16(units)), upperByTables(units));
    }
}

TEST(UpperCase, OfCharactersThatBecomeMore) {
    EXPECT_EQ(uppercaseString("straße"), "STRASSE");
    EXPECT_EQ(uppercaseString("ﬃ"), "FFI");
    EXPECT_EQ(uppercaseString("ᾳ"), "ΑΙ");
    EXPECT_EQ(uppercaseString("ᾼ"), "ΑΙ") << "title case";
    EXPECT_EQ(uppercaseString("ẞİ"), "ẞİ") << "upper case already";
    EXPECT_EQ(uppercaseString("𐐨"), "𐐀") << "beyond the basic plane";
}

} // namespace
} // namespace tav
