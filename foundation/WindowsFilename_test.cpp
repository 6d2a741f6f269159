#include "base/Transliteration.hpp"
#include "base/Unicode.hpp"
#include "foundation/LocalFilename.hpp"
#include "foundation/WindowsFilename.hpp"
#include "foundation/WindowsReference_test.hpp"
#include "testing/Golden.hpp"

#include <iterator>
#include <random>
#include <set>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tav {

namespace {

using namespace std::string_literals;

TEST(WindowsFilename, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "windowsValidFilename")) {
        EXPECT_EQ(windowsValidFilename(golden.in.get<std::string>()), golden.out)
            << golden.description();
    }
    for (const GoldenCase& golden :
         goldenCases("edges.json", "windowsValidFilenameByTranscodingNonASCIIChars")) {
        EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars(golden.in.get<std::string>()),
                  golden.out)
            << golden.description();
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "stringByTranscodingNonASCIIChars")) {
        EXPECT_EQ(stringByTranscodingNonASCIIChars(golden.in.get<std::string>()), golden.out)
            << golden.description();
    }
}

TEST(WindowsFilename, TheIllegalSets) {
    std::string inNames;
    std::string inPaths;
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        if (illegalFilenameCharset.contains(static_cast<char16_t>(unit))) {
            inNames += static_cast<char>(unit);
        }
        if (illegalPathnameCharset.contains(static_cast<char16_t>(unit))) {
            inPaths += static_cast<char>(unit);
        }
    }
    const std::string controls = "\x01\x02\x03\x04\x05\x06\x07\x08\t\n\x0B\x0C\r\x0E\x0F"
                                 "\x10\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F";
    EXPECT_EQ(inNames, controls + "\"*/:<>?\\|");
    EXPECT_EQ(inPaths, controls + "\"*/:<>?|");
}

TEST(WindowsFilename, EveryByteAtEveryPlace) {
    for (std::size_t size = 1; size <= 40; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string name(size, 'x');
                name[place] = static_cast<char>(byte);
                std::string expected = name;
                const bool isIllegal = byte >= 1 && byte < 32;
                if (isIllegal || (byte != 0 && "\\/:*?\"<>|"s.find(name[place]) != "x"s.npos)) {
                    expected[place] = '_';
                }
                if (place == size - 1 && (byte == '.' || byte == ' ')) {
                    expected[place] = '_';
                }
                ASSERT_EQ(windowsValidFilename(name), expected) << size << " " << place;
                const std::u16string units = utf16FromBytes(name);
                ASSERT_EQ(windowsValidFilenameByTranscodingNonASCIIChars(name),
                          bytesFromUTF16(reference::validFilenameByTranscoding(units)));
                ASSERT_EQ(stringByTranscodingNonASCIIChars(name),
                          bytesFromUTF16(reference::byTranscoding(units)));
            }
        }
    }
}

TEST(WindowsFilename, TheEndIsReplacedOnce) {
    EXPECT_EQ(windowsValidFilename("a:b?."), "a_b__");
    EXPECT_EQ(windowsValidFilename("name "), "name_");
    EXPECT_EQ(windowsValidFilename("name.."), "name._");
    EXPECT_EQ(windowsValidFilename("name. "), "name._");
    EXPECT_EQ(windowsValidFilename("."), "_");
    EXPECT_EQ(windowsValidFilename(""), "");
    EXPECT_EQ(windowsValidFilename(". name"), ". name");
    EXPECT_EQ(windowsValidFilename("é "), "é_");
    // A mark on the dot is the end.
    EXPECT_EQ(windowsValidFilename("a.\u0301"), "a.\u0301");
}

TEST(WindowsFilename, WhatIsNotTreated) {
    EXPECT_EQ(windowsValidFilename("NUL"), "NUL");
    EXPECT_EQ(windowsValidFilename("com1.txt"), "com1.txt");
    EXPECT_EQ(windowsValidFilename("a\x7Fz"), "a\x7Fz");
    EXPECT_EQ(windowsValidFilename("\0"s), "\0"s);
    EXPECT_EQ(windowsValidFilename("a\0:"s), "a\0_"s);
    EXPECT_EQ(windowsValidFilename(std::string(5000, 'a')), std::string(5000, 'a'));
    EXPECT_EQ(windowsValidFilename("\xFFé\xC3:\xE2\x82"), "\xFFé\xC3_\xE2\x82");
}

TEST(WindowsFilename, ASCIIOnlyIsLossy) {
    EXPECT_EQ(windowsValidFilenameUsingASCIIOnly("Café.", true), "Cafe_");
    EXPECT_EQ(windowsValidFilenameUsingASCIIOnly("Café.", false), "Café_");
    // The question mark of what has no ASCII form is illegal as well.
    EXPECT_EQ(windowsValidFilenameUsingASCIIOnly("日本.mp3", true), "__.mp3");
    EXPECT_EQ(windowsValidFilenameUsingASCIIOnly("a\xFF", true), "a_");
    EXPECT_EQ(windowsValidFilenameUsingASCIIOnly("“a”", true), "_a_");
    EXPECT_EQ(windowsValidFilenameUsingASCIIOnly("a:b?.", true), "a_b__");
    EXPECT_EQ(windowsValidFilenameUsingASCIIOnly("", true), "");
}

TEST(WindowsFilename, TranscodingHasRulesOfItsOwn) {
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("Café."), "CafU00E9_");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("a "), "a ");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("é "), "U00E9 ");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("a.."), "a._");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("\0\n\x1F"s), "___");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("\\/:*?\"<>|"), "_________");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("é\\/:*?\"<>|\n"s), "U00E9__________");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("~\x7F"), "~U007F");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("😀"), "UD83DUDE00");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("\uFFFF"), "UFFFF");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars("\xFF\x80"), "UDCFFUDC80");
    EXPECT_EQ(windowsValidFilenameByTranscodingNonASCIIChars(""), "");
}

TEST(WindowsFilename, TranscodingAloneKeepsIllegalCharacters) {
    EXPECT_EQ(stringByTranscodingNonASCIIChars("a/é"), "a/U00E9");
    EXPECT_EQ(stringByTranscodingNonASCIIChars("\\/:*?\"<>| ~."), "\\/:*?\"<>| ~.");
    EXPECT_EQ(stringByTranscodingNonASCIIChars("\0\n\x1F\x7F"s), "U0000U000AU001FU007F");
    EXPECT_EQ(stringByTranscodingNonASCIIChars("日😀\xFF"), "U65E5UD83DUDE00UDCFF");
    EXPECT_EQ(stringByTranscodingNonASCIIChars(""), "");
}

TEST(WindowsFilename, ReplacingLooksAtUnits) {
    const auto inSet = [](std::string_view characters) {
        return CharacterSet::withCharactersInString(characters);
    };
    EXPECT_EQ(replaceInvalidChars("a:b/c", inSet(":/"), "--"), "a--b--c");
    EXPECT_EQ(replaceInvalidChars("a:b", inSet(":"), ""), "ab");
    EXPECT_EQ(replaceInvalidChars("a:b", CharacterSet(), "-"), "a:b");
    EXPECT_EQ(replaceInvalidChars("aéb\xE9", inSet("é"), "日"), "a日b\xE9");
    EXPECT_EQ(replaceInvalidChars("aéb\xE9", inSet("\xE9"), "_"), "aéb_");
    EXPECT_EQ(replaceInvalidChars("e\u0301", inSet("e"), "_"), "_\u0301");
    EXPECT_EQ(replaceInvalidChars("e\u0301", inSet("\u00E9"), "_"), "e\u0301");
    // A character of two units is in no set, though its halves may be.
    EXPECT_EQ(replaceInvalidChars("a😀", inSet("😀é"), "_"), "a😀");
    EXPECT_EQ(replaceInvalidChars("a😀", CharacterSet::withRange(0xDE00, 1), "_"), "a\uFFFD_");
    EXPECT_EQ(replaceInvalidChars("😀", CharacterSet::withRange(0xD800, 0x800), "_"), "__");
    EXPECT_EQ(replaceInvalidChars("\0a"s, CharacterSet::withRange(0, 1), "_"), "_a");
}

std::string randomBytes(std::mt19937& random, std::string_view alphabet) {
    static const std::string_view pieces[] = {"é", "日", "😀", "\xFF", "\xC3", "\xA9", "\xE2\x82"};
    std::string text;
    for (auto count = random() % 40; count > 0; --count) {
        switch (random() % 8) {
        case 0:
            text += pieces[random() % std::size(pieces)];
            break;
        case 1:
            text += static_cast<char>(random() % 256);
            break;
        default:
            text += alphabet[random() % alphabet.size()];
        }
    }
    return text;
}

TEST(WindowsFilename, AgreesWithTheReference) {
    std::mt19937 random(20091121);
    for (int round = 0; round < 50000; ++round) {
        const std::string name =
            randomBytes(random, round % 2 == 0 ? "abcdefgh 123." : "abc:*?<>|\\/\". \n");
        const std::u16string units = utf16FromBytes(name);
        ASSERT_EQ(windowsValidFilename(name), bytesFromUTF16(reference::validFilename(units)));
        ASSERT_EQ(windowsValidFilename(name), [&] {
            std::string expected = replaceInvalidChars(name, illegalFilenameCharset, "_");
            if (expected.ends_with('.') || expected.ends_with(' ')) {
                expected.back() = '_';
            }
            return expected;
        }());
        ASSERT_EQ(windowsValidFilenameByTranscodingNonASCIIChars(name),
                  bytesFromUTF16(reference::validFilenameByTranscoding(units)));
        ASSERT_EQ(stringByTranscodingNonASCIIChars(name),
                  bytesFromUTF16(reference::byTranscoding(units)));
        if (round % 100 != 0) {
            continue;
        }
        const CharacterSet set = CharacterSet::withCharactersInString(randomBytes(random, "abc:"));
        const std::string replacement = randomBytes(random, "_");
        std::set<char16_t> members;
        for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
            if (set.contains(static_cast<char16_t>(unit))) {
                members.insert(static_cast<char16_t>(unit));
            }
        }
        const auto replaced = [&](std::string_view with) {
            return bytesFromUTF16(
                reference::replaceInvalidChars(units, members, utf16FromBytes(with)));
        };
        ASSERT_EQ(replaceInvalidChars(name, set, replacement), replaced(replacement));
        ASSERT_EQ(stringByRemovingCharactersFromSet(name, &set), replaced(""));
    }
}

TEST(LocalFilename, GoldenCases) {
    for (const GoldenCase& golden :
         goldenCases("edges.json", "stringByRemovingCharactersFromSet")) {
        const auto self = golden.in.at("self").get<std::string>();
        const nlohmann::json& members = golden.in.at("set");
        const CharacterSet set = CharacterSet::withCharactersInString(
            members.is_null() ? "" : members.get<std::string>());
        EXPECT_EQ(stringByRemovingCharactersFromSet(self, members.is_null() ? nullptr : &set),
                  golden.out)
            << golden.description();
    }
}

TEST(LocalFilename, NamesAreDecomposedAndLoseTheirSeparators) {
    EXPECT_EQ(stringByMakingValidFilename("a:b/c"), "abc");
    EXPECT_EQ(stringByMakingValidFilename("é:ü"), "e\u0301u\u0308");
    EXPECT_EQ(stringByMakingValidFilename("e\u0301"), "e\u0301");
    EXPECT_EQ(stringByMakingValidFilename("\u1E69\u212B"), "s\u0323\u0307A\u030A");
    EXPECT_EQ(stringByMakingValidFilename("\uAC00"), "\u1100\u1161");
    EXPECT_EQ(stringByMakingValidFilename("a\\*?."), "a\\*?.");
    EXPECT_EQ(stringByMakingValidFilename(":/"), "");
    EXPECT_EQ(stringByMakingValidFilename(""), "");
    EXPECT_EQ(stringByMakingValidFilename("\xFFé:\xC3"), "\xFF"
                                                         "e\u0301\xC3");
    EXPECT_EQ(stringByMakingValidFilename("é\0:"s), "é\0:"s);
}

TEST(LocalFilename, RemovesUnits) {
    const CharacterSet set = CharacterSet::withCharactersInString("a:é\xFF");
    EXPECT_EQ(stringByRemovingCharactersFromSet("banana:é\xFF\xFE😀", &set), "bnn\xFE😀");
    EXPECT_EQ(stringByRemovingCharactersFromSet("", &set), "");
    EXPECT_EQ(stringByRemovingCharactersFromSet("aaa", &set), "");
    EXPECT_EQ(stringByRemovingCharactersFromSet("a:é\xFF", nullptr), "a:é\xFF");
    const CharacterSet halves = CharacterSet::withRange(0xD800, 0x400);
    EXPECT_EQ(stringByRemovingCharactersFromSet("a😀", &halves), "a\uFFFD");
}

} // namespace

} // namespace tav
