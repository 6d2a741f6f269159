#include "base/Transliteration.hpp"
#include "base/Unicode.hpp"
#include "foundation/TextEncoding.hpp"
#include "foundation/TextEncodingTable.hpp"
#include "foundation/UnicodeConverter.hpp"

#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

namespace {

using namespace std::string_literals;

const std::vector<std::uint32_t> withOneByteACharacter = {1,  2,  5,  6,  9,          11,        12,
                                                          13, 14, 15, 30, 0x8000000F, 0x80000A02};

std::optional<std::string> encoded(std::string_view text, std::uint32_t encoding,
                                   bool allowLossy = false) {
    const std::optional<Data> data = dataUsingEncoding(text, encoding, allowLossy);
    return data ? std::optional(std::string(textOf(*data))) : std::nullopt;
}

std::optional<std::string> decoded(std::string_view bytes, std::uint32_t encoding) {
    return stringWithData(bytesOf(bytes), encoding);
}

void expectPair(std::string_view text, std::uint32_t encoding, std::string_view bytes) {
    EXPECT_EQ(encoded(text, encoding), bytes) << encoding;
    EXPECT_EQ(encoded(text, encoding, true), bytes) << encoding;
    EXPECT_EQ(decoded(bytes, encoding), text) << encoding;
    EXPECT_EQ(convertToEncoding(text, encoding), text) << encoding;
}

TEST(TextEncoding, EveryNumberHasItsEncoding) {
    expectPair("az~\x7F\n", TextEncoding::ASCII, "az~\x7F\n");
    expectPair("aÀŁÿﬁ", TextEncoding::NEXTSTEP, "a\x81\xE8\xFD\xAE");
    expectPair("a日本", TextEncoding::JapaneseEUC, "a\xC6\xFC\xCB\xDC");
    expectPair("aé😀", TextEncoding::UTF8, "aé😀");
    expectPair("aéÿ", TextEncoding::ISOLatin1, "a\xE9\xFF");
    expectPair("αβ∀3", TextEncoding::Symbol, "\x61\x62\x22\x33");
    expectPair("aé€\\😀\u0100\n", TextEncoding::NonLossyASCII,
               "a\\351\\u20ac\\\\\\ud83d\\ude00\\u0100\n");
    expectPair("a日本ｱ\\~", TextEncoding::ShiftJIS, "a\x93\xFA\x96\x7B\xB1\\~");
    expectPair("ałő", TextEncoding::ISOLatin2, "a\xB3\xF5");
    expectPair("aé😀", TextEncoding::Unicode, "\xFF\xFE"s + "a\0\xE9\0\x3D\xD8\0\xDE"s);
    expectPair("жЯ", TextEncoding::WindowsCP1251, "\xE6\xDF");
    expectPair("é€", TextEncoding::WindowsCP1252, "\xE9\x80");
    expectPair("αΩ", TextEncoding::WindowsCP1253, "\xE1\xD9");
    expectPair("ışğ", TextEncoding::WindowsCP1254, "\xFD\xFE\xF0");
    expectPair("łő", TextEncoding::WindowsCP1250, "\xB3\xF5");
    expectPair("a日b", TextEncoding::ISO2022JP, "a\x1B$BF|\x1B(Bb");
    expectPair("é√", TextEncoding::MacOSRoman, "\x8E\xC3");
    expectPair("aé😀", TextEncoding::UTF16BigEndian, "\0a\0\xE9\xD8\x3D\xDE\0"s);
    expectPair("aé😀", TextEncoding::UTF16LittleEndian, "a\0\xE9\0\x3D\xD8\0\xDE"s);
    expectPair("a😀", TextEncoding::UTF32, "\xFF\xFE\0\0"s + "a\0\0\0\0\xF6\x01\0"s);
    expectPair("a😀", TextEncoding::UTF32BigEndian, "\0\0\0a\0\x01\xF6\0"s);
    expectPair("a😀", TextEncoding::UTF32LittleEndian, "a\0\0\0\0\xF6\x01\0"s);
    expectPair("жЯ", 0x80000A02, "\xD6\xF1");
    expectPair("中", 0x80000632, "\xD6\xD0");
}

TEST(TextEncoding, NumbersAreThePlatforms) {
    EXPECT_EQ(TextEncoding::ASCII, 1U);
    EXPECT_EQ(TextEncoding::NEXTSTEP, 2U);
    EXPECT_EQ(TextEncoding::JapaneseEUC, 3U);
    EXPECT_EQ(TextEncoding::UTF8, 4U);
    EXPECT_EQ(TextEncoding::ISOLatin1, 5U);
    EXPECT_EQ(TextEncoding::Symbol, 6U);
    EXPECT_EQ(TextEncoding::NonLossyASCII, 7U);
    EXPECT_EQ(TextEncoding::ShiftJIS, 8U);
    EXPECT_EQ(TextEncoding::ISOLatin2, 9U);
    EXPECT_EQ(TextEncoding::Unicode, 10U);
    EXPECT_EQ(TextEncoding::WindowsCP1251, 11U);
    EXPECT_EQ(TextEncoding::WindowsCP1252, 12U);
    EXPECT_EQ(TextEncoding::WindowsCP1253, 13U);
    EXPECT_EQ(TextEncoding::WindowsCP1254, 14U);
    EXPECT_EQ(TextEncoding::WindowsCP1250, 15U);
    EXPECT_EQ(TextEncoding::ISO2022JP, 21U);
    EXPECT_EQ(TextEncoding::MacOSRoman, 30U);
    EXPECT_EQ(TextEncoding::UTF32, 0x8C000100U);
    EXPECT_EQ(TextEncoding::UTF16BigEndian, 0x90000100U);
    EXPECT_EQ(TextEncoding::UTF16LittleEndian, 0x94000100U);
    EXPECT_EQ(TextEncoding::UTF32BigEndian, 0x98000100U);
    EXPECT_EQ(TextEncoding::UTF32LittleEndian, 0x9C000100U);
}

TEST(TextEncoding, AnUnknownNumberRepresentsNothing) {
    for (const std::uint32_t encoding : {0U, 16U, 20U, 22U, 31U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(encoded("a", encoding), std::nullopt) << encoding;
        EXPECT_EQ(encoded("", encoding, true), std::nullopt) << encoding;
        EXPECT_EQ(decoded("a", encoding), std::nullopt) << encoding;
        EXPECT_EQ(convertToEncoding("a\xFF", encoding), "a\xFF") << encoding;
    }
}

TEST(TextEncoding, EmptyTextsAndMarks) {
    expectPair("", TextEncoding::ISOLatin1, "");
    expectPair("", TextEncoding::UTF16BigEndian, "");
    expectPair("", TextEncoding::Unicode, "\xFF\xFE");
    EXPECT_EQ(decoded("", TextEncoding::Unicode), "");
    EXPECT_EQ(decoded("", TextEncoding::UTF32), "");
    EXPECT_EQ(decoded("\xFE\xFF\0a"s, TextEncoding::Unicode), "a");
    EXPECT_EQ(decoded("\xFF\xFE"s + "a\0"s, TextEncoding::Unicode), "a");
    EXPECT_EQ(decoded("\0a"s, TextEncoding::Unicode), "a");
    EXPECT_EQ(decoded("\0a\0"s, TextEncoding::Unicode), "a");
    EXPECT_EQ(decoded("\xFE\xFF\xFE\xFF", TextEncoding::Unicode), "\uFEFF");
    EXPECT_EQ(decoded("\0\0\xFE\xFF\0\0\0a"s, TextEncoding::UTF32), "a");
    EXPECT_EQ(decoded("\0\0\0a"s, TextEncoding::UTF32), "a");
    EXPECT_EQ(decoded("\xFE\xFF\0a"s, TextEncoding::UTF16BigEndian), "\uFEFFa");
    EXPECT_EQ(decoded("a\0b"s, TextEncoding::UTF16LittleEndian), "a");
    expectPair("\uFEFFa", TextEncoding::UTF8, "\uFEFFa");
}

TEST(TextEncoding, WhatCannotBeRepresentedFails) {
    for (const std::uint32_t encoding : withOneByteACharacter) {
        EXPECT_EQ(encoded("日", encoding), std::nullopt) << encoding;
        EXPECT_EQ(encoded("a\xFF", encoding), std::nullopt) << encoding;
        EXPECT_EQ(convertToEncoding("a\xFF日", encoding), "a\xFF日") << encoding;
    }
    EXPECT_EQ(encoded("é", TextEncoding::ASCII), std::nullopt);
    EXPECT_EQ(encoded("€", TextEncoding::ISOLatin1), std::nullopt);
    EXPECT_EQ(encoded("a", TextEncoding::Symbol), std::nullopt);
    EXPECT_EQ(encoded("\xFF", TextEncoding::UTF8), std::nullopt);
    EXPECT_EQ(encoded("\xFF", TextEncoding::UTF32LittleEndian), std::nullopt);
    // Characters that show nothing are characters.
    EXPECT_EQ(encoded("a\u200Bb", TextEncoding::ISOLatin1), std::nullopt);
    EXPECT_EQ(encoded("a\u200Db", TextEncoding::JapaneseEUC), std::nullopt);
    EXPECT_EQ(encoded("a\u00ADb", TextEncoding::ShiftJIS), std::nullopt);
}

TEST(TextEncoding, WhatIsNoTextIsNotRead) {
    EXPECT_EQ(decoded("\x80", TextEncoding::ASCII), std::nullopt);
    EXPECT_EQ(decoded("\xFF", TextEncoding::UTF8), std::nullopt);
    EXPECT_EQ(decoded("\xED\xA0\x80", TextEncoding::UTF8), std::nullopt);
    EXPECT_EQ(decoded("\xFE", TextEncoding::NEXTSTEP), std::nullopt);
    EXPECT_EQ(decoded("\x80", TextEncoding::Symbol), std::nullopt);
    EXPECT_EQ(decoded("\xC6", TextEncoding::JapaneseEUC), std::nullopt);
    EXPECT_EQ(decoded("\x93", TextEncoding::ShiftJIS), std::nullopt);
    EXPECT_EQ(decoded("a\x1B$BF", TextEncoding::ISO2022JP), std::nullopt);
    EXPECT_EQ(decoded("\0\0\0"s, TextEncoding::UTF32), std::nullopt);
    EXPECT_EQ(decoded("\0\x11\0\0"s, TextEncoding::UTF32BigEndian), std::nullopt);
    for (const char* text : {"\\", "\\1", "\\12", "\\12x", "\\8", "\\400", "\\777", "\\u", "\\u12",
                             "\\u123g", "\\u123:", "\\u@123", "\\n", "\\U0041", "\x80"}) {
        EXPECT_EQ(decoded(text, TextEncoding::NonLossyASCII), std::nullopt) << text;
    }
    EXPECT_EQ(decoded("\\101\\u00C9\\u00e9\\377", TextEncoding::NonLossyASCII), "AÉéÿ");
}

TEST(TextEncoding, DecomposedTextGoesAsItsPrecomposedForm) {
    EXPECT_EQ(encoded("e\u0301", TextEncoding::ISOLatin1), "\xE9");
    EXPECT_EQ(convertToEncoding("e\u0301", TextEncoding::ISOLatin1), "é");
    EXPECT_EQ(convertToEncoding("e\u0301", TextEncoding::UTF8), "e\u0301");
    EXPECT_EQ(encoded("x\u0301", TextEncoding::ISOLatin1), std::nullopt);
}

TEST(TextEncoding, LossyConversionAlwaysSucceeds) {
    const std::string text = "é日😀\xFFŁ“x\u0301";
    EXPECT_EQ(encoded(text, TextEncoding::ASCII, true), "e????L\"x");
    EXPECT_EQ(encoded(text, TextEncoding::ISOLatin1, true), "\xE9????L\"x");
    EXPECT_EQ(encoded(text, TextEncoding::NEXTSTEP, true), "\xDD????\xE8\xAAx");
    EXPECT_EQ(encoded("αaé3", TextEncoding::Symbol, true), "a??3");
    EXPECT_EQ(encoded("a\xFFé😀", TextEncoding::UTF8, true), "a?é😀");
    EXPECT_EQ(encoded("a\xFF", TextEncoding::UTF32BigEndian, true), "\0\0\0a\0\0\0?"s);
    EXPECT_EQ(encoded("a\u200Bb", TextEncoding::ISOLatin1, true), lossyASCII("a\u200Bb"));
    for (std::uint32_t encoding = 0; encoding < 40; ++encoding) {
        const bool isKnown = internal::findEncoding(encoding) != nullptr;
        EXPECT_EQ(encoded(text, encoding, true).has_value(), isKnown) << encoding;
    }
}

TEST(TextEncoding, BytesThatAreNoUTF8SurviveAsUnits) {
    expectPair("a\xFF\x80z", TextEncoding::UTF16BigEndian, "\0a\xDC\xFF\xDC\x80\0z"s);
    expectPair("a\xFF", TextEncoding::NonLossyASCII, "a\\udcff");
    EXPECT_EQ(convertToEncoding("\xC3\xE9", TextEncoding::Unicode), "\xC3\xE9");
}

TEST(TextEncoding, ASCIIIsKeptWhereTheTableSaysSo) {
    std::string ascii;
    for (int character = 0; character < 128; ++character) {
        ascii += static_cast<char>(character);
    }
    int tables = 0;
    for (const std::uint32_t base : {0U, 0x80000000U, 0x80000200U, 0x80000500U, 0x80000600U,
                                     0x80000900U, 0x80000A00U, 0x98000100U, 0x9C000100U}) {
        for (std::uint32_t number = base; number < base + 0x100; ++number) {
            const internal::EncodingEntry* const entry = internal::findEncoding(number);
            if (entry == nullptr) {
                continue;
            }
            EXPECT_EQ(entry->number, number);
            if (entry->converter == nullptr) {
                continue;
            }
            ++tables;
            const internal::UnicodeConverter converter(entry->converter);
            ASSERT_TRUE(converter.encode(u"a")) << entry->converter;
            if (entry->keepsASCII && entry->kind == internal::EncodingKind::Converter) {
                EXPECT_EQ(converter.encode(utf16FromBytes(ascii)), dataFromText(ascii))
                    << entry->converter;
                EXPECT_EQ(converter.decode(bytesOf(ascii)), utf16FromBytes(ascii))
                    << entry->converter;
            }
        }
    }
    EXPECT_EQ(tables, 36);
    const internal::UnicodeConverter none("no such table");
    EXPECT_EQ(none.encode(u"a"), std::nullopt);
    EXPECT_EQ(none.decode(bytesOf("a")), std::nullopt);
}

TEST(TextEncoding, ControlCharactersOfShiftJISStayInTheirPlaces) {
    expectPair("日\x1A\x1C\x7F", TextEncoding::ShiftJIS, "\x93\xFA\x1A\x1C\x7F");
}

TEST(TextEncoding, BytesThatAreReadAreWrittenAgain) {
    std::mt19937 random(1);
    for (const std::uint32_t encoding : withOneByteACharacter) {
        for (int round = 0; round < 300; ++round) {
            std::string bytes;
            for (auto count = random() % 20; count > 0; --count) {
                bytes += static_cast<char>(random() % 256);
            }
            if (const auto text = decoded(bytes, encoding)) {
                EXPECT_TRUE(isValidUTF8(*text));
                EXPECT_EQ(encoded(*text, encoding), bytes) << encoding;
                EXPECT_EQ(convertToEncoding(*text, encoding), *text) << encoding;
            }
        }
    }
}

TEST(TextEncoding, LongTextsOutgrowTheFirstGuess) {
    std::string text;
    std::string bytes;
    for (int round = 0; round < 10000; ++round) {
        text += "a日";
        bytes += "a\x1B$BF|\x1B(B";
    }
    EXPECT_EQ(encoded(text, TextEncoding::ISO2022JP), bytes);
    EXPECT_EQ(decoded(bytes, TextEncoding::ISO2022JP), text);
    const std::string ideographs(30000, '\xB0');
    EXPECT_EQ(encoded(decoded(ideographs, 0x80000940).value_or(""), 0x80000940), ideographs);
    EXPECT_EQ(encoded(text, TextEncoding::UTF32BigEndian).value_or("").size(), 80000U);
    EXPECT_EQ(encoded(text, TextEncoding::ISOLatin1, true).value_or("").size(), 20000U);
}

TEST(TextEncoding, ThreadsMayCallAtOnce) {
    std::vector<std::thread> threads;
    for (int count = 0; count < 4; ++count) {
        threads.emplace_back([] {
            for (int round = 0; round < 200; ++round) {
                EXPECT_EQ(encoded("日é", TextEncoding::ShiftJIS, true), "\x93\xFA"
                                                                        "e");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace

} // namespace tav
