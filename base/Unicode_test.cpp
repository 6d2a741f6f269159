#include "base/Transliteration.hpp"
#include "base/Unicode.hpp"
#include "testing/Golden.hpp"

#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

namespace {

int sign(int order) { return (order > 0 ? 1 : 0) - (order < 0 ? 1 : 0); }

void expectPair(const GoldenCase& golden) {
    const auto self = golden.in.at("self").get<std::string>();
    const auto argument = golden.in.at("arg").get<std::string>();
    if (golden.op == "caseInsensitiveCompare") {
        EXPECT_EQ(caseInsensitiveCompare(self, argument), golden.out) << golden.description();
        EXPECT_EQ(equalsIgnoringCase(self, argument), golden.out == 0) << golden.description();
    } else if (golden.op == "isEqualToString") {
        EXPECT_EQ(self == argument, golden.out.get<bool>()) << golden.description();
    } else {
        ADD_FAILURE() << "unknown: " << golden.description();
    }
}

nlohmann::json textResult(const std::string& op, const std::string& text) {
    if (op == "lossyASCII") {
        return lossyASCII(text);
    }
    if (op == "nfd") {
        return decomposedString(text);
    }
    if (op == "nfc") {
        return precomposedString(text);
    }
    if (op == "uppercaseString") {
        return uppercaseString(text);
    }
    if (op == "lowercaseString") {
        return lowercaseString(text);
    }
    if (op == "length") {
        return utf16Length(text);
    }
    return nullptr;
}

TEST(Unicode, GoldenCases) {
    const std::vector<GoldenCase> cases = goldenCases("unicode.json");
    EXPECT_GE(cases.size(), 84U);
    for (const GoldenCase& golden : cases) {
        if (golden.in.is_object()) {
            expectPair(golden);
            continue;
        }
        const auto text = golden.in.get<std::string>();
        if (golden.op == "utf16be") {
            EXPECT_EQ(utf16BigEndian(text), dataFromJSON(golden.out)) << golden.description();
        } else if (golden.op == "utf16le") {
            EXPECT_EQ(utf16LittleEndian(text), dataFromJSON(golden.out)) << golden.description();
        } else if (golden.op == "utf8") {
            EXPECT_EQ(dataFromText(text), dataFromJSON(golden.out)) << golden.description();
        } else {
            EXPECT_EQ(textResult(golden.op, text), golden.out) << golden.description();
        }
    }
}

TEST(Unicode, WellFormedIsStrict) {
    for (const char* text : {"", "a", "é", "\u07FF", "\u0800", "\uD7FF", "\uE000", "\uFFFF",
                             "\U00010000", "\U0010FFFF", "0123456789é0123456789"}) {
        EXPECT_TRUE(isValidUTF8(text)) << text;
    }
    for (const char* text :
         {"\x80", "\xC3", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xE2\x82", "\xED\xA0\x80",
          "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF",
          "\xF0\x9F\x98", "0123456789\xE9", "\xC3\xA9\xA9"}) {
        EXPECT_FALSE(isValidUTF8(text)) << testing::PrintToString(text);
    }
    EXPECT_TRUE(isValidUTF8(std::string_view("\0", 1)));
    EXPECT_TRUE(isASCII("0123456789abcdef\x7F"));
    EXPECT_FALSE(isASCII("01234567\x80"));
}

TEST(Unicode, EveryCharacterComesBack) {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        std::u16string units;
        if (character >= 0x10000) {
            units += static_cast<char16_t>(0xD7C0 + (character >> 10));
            units += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
        } else if (character >= 0xD800 && character <= 0xDFFF) {
            continue;
        } else {
            units += static_cast<char16_t>(character);
        }
        const std::string text = bytesFromUTF16(units);
        ASSERT_TRUE(isValidUTF8(text)) << std::hex << std::uint32_t{character};
        ASSERT_EQ(utf16FromBytes(text), units) << std::hex << std::uint32_t{character};
    }
}

TEST(Unicode, BytesThatAreNoUTF8AreEscaped) {
    EXPECT_EQ(utf16FromBytes("a\xE9z"), (std::u16string{u'a', 0xDCE9, u'z'}));
    EXPECT_EQ(utf16FromBytes("\xED\xA0\x80"), (std::u16string{0xDCED, 0xDCA0, 0xDC80}));
    EXPECT_EQ(utf16Length("\xED\xA0\x80é😀"), 6U);
    EXPECT_EQ(bytesFromUTF16(std::u16string{0xDC80, 0xDCFF}), "\x80\xFF");
    // Alone, and no escape.
    for (const char16_t unit : std::u16string{0xD800, 0xDBFF, 0xDC00, 0xDC7F, 0xDD00, 0xDFFF}) {
        EXPECT_EQ(bytesFromUTF16(std::u16string(1, unit)), "\uFFFD");
    }
    // After its first half an escape's unit is a second half like any other.
    EXPECT_EQ(bytesFromUTF16(std::u16string{0xD83D, 0xDC80}), "\U0001F480");
    EXPECT_EQ(bytesFromUTF16(std::u16string{0xDC80, 0xD83D}), "\x80\uFFFD");
    EXPECT_EQ(bytesFromUTF16BigEndian(
                  Data{std::byte{0}, std::byte{'a'}, std::byte{0}, std::byte{'b'}, std::byte{0}}),
              "ab");
}

std::string randomText(std::mt19937& random) {
    static const std::vector<std::string> pieces = {
        "a",      "A",        "ss",       "k",      "I",          "\0",     "é",         "e\u0301",
        "É",      "ß",        "\u212A",   "\u0130", "\u0345",     "\u03B1", "\u0323",    "\u0307",
        "\u1E69", "ς",        "Σ",        "ﬁ",      "\U00010400", "😀",      "\uAC01",    "\x80",
        "\xC3",   "\xED\xA0", "\xF0\x9F", "\xFF",   "\u1F80",     "\u0390", "0123456789"};
    std::string text;
    for (auto count = random() % 6; count > 0; --count) {
        text += pieces[random() % pieces.size()];
    }
    return text;
}

TEST(Unicode, AnyBytesComeBack) {
    std::mt19937 random(1);
    for (int round = 0; round < 50000; ++round) {
        std::string bytes;
        for (auto count = random() % 24; count > 0; --count) {
            const std::uint32_t kind = random() % 4;
            bytes += static_cast<char>(kind == 0 ? random() % 128 : 0x80 + random() % 128);
        }
        bytes += randomText(random);
        const std::u16string units = utf16FromBytes(bytes);
        EXPECT_EQ(bytesFromUTF16(units), bytes);
        EXPECT_EQ(utf16Length(bytes), units.size());
        EXPECT_EQ(bytesFromUTF16BigEndian(utf16BigEndian(bytes)), bytes);
        const bool hasEscape = !isValidUTF8(bytes);
        bool loneUnit = false;
        for (std::size_t at = 0; at < units.size(); ++at) {
            const bool pair = (units[at] & 0xFC00) == 0xD800;
            loneUnit = loneUnit || (units[at] & 0xFC00) == 0xDC00;
            at += pair ? 1 : 0;
        }
        EXPECT_EQ(loneUnit, hasEscape);
    }
}

TEST(Unicode, CaselessMatchingIsCanonical) {
    EXPECT_TRUE(equalsIgnoringCase("STRASSE", "straße"));
    EXPECT_TRUE(equalsIgnoringCase("\u212Aelvin", "kELVIN"));
    EXPECT_TRUE(equalsIgnoringCase("E\u0301t\u00C9", "\u00E9te\u0301"));
    EXPECT_TRUE(equalsIgnoringCase("ΣΑΣ", "σας"));
    EXPECT_TRUE(equalsIgnoringCase("s\u0307\u0323", "\u1E69"));
    // The mark of ᾳ folds to a letter, which stays behind the accent.
    EXPECT_TRUE(equalsIgnoringCase("\u1FB3\u0301", "\u03B1\u0301\u0345"));
    EXPECT_TRUE(equalsIgnoringCase("a\xFF", "A\xFF"));
    EXPECT_FALSE(equalsIgnoringCase("a\xFF", "a\xFE"));
    EXPECT_FALSE(equalsIgnoringCase("\xC3", "é"));
    EXPECT_FALSE(equalsIgnoringCase("e", "e\u0301"));
    EXPECT_FALSE(equalsIgnoringCase("I", "ı")); // the root locale is not Turkish
    EXPECT_FALSE(equalsIgnoringCase("@", "`"));
    EXPECT_FALSE(equalsIgnoringCase("[", "{"));
    EXPECT_TRUE(equalsIgnoringCase("", ""));
    EXPECT_FALSE(equalsIgnoringCase("", std::string_view("\0", 1)));
}

TEST(Unicode, EveryPairOfASCIICharactersAtEveryPlace) {
    const auto lower = [](int character) {
        return character >= 'A' && character <= 'Z' ? character + 32 : character;
    };
    for (int a = 0; a < 128; ++a) {
        for (int b = 0; b < 128; ++b) {
            for (const std::size_t place : {0U, 3U, 7U, 8U, 16U}) {
                std::string textA = "ABCDEFGHIJKLMNOPQ";
                std::string textB = "abcdefghijklmnopq";
                textA[place] = static_cast<char>(a);
                textB[place] = static_cast<char>(b);
                EXPECT_EQ(equalsIgnoringCase(textA, textB), lower(a) == lower(b)) << a << " " << b;
                EXPECT_EQ(caseInsensitiveCompare(textA, textB), sign(lower(a) - lower(b)));
            }
        }
    }
}

TEST(Unicode, OrderIsByUnitsOfTheCaselessForms) {
    EXPECT_EQ(caseInsensitiveCompare("_", "A"), -1);     // "a" is above "_", "A" below
    EXPECT_EQ(caseInsensitiveCompare("\uFFFD", "😀"), 1); // U+D83D is below
    EXPECT_EQ(caseInsensitiveCompare("eA", "éA"), -1);
    EXPECT_EQ(caseInsensitiveCompare("e", "e\u0301"), -1);
    EXPECT_EQ(caseInsensitiveCompare("straßf", "STRASSE"), 1);
}

TEST(Unicode, CaselessOperationsAgree) {
    std::mt19937 random(2);
    int equalTexts = 0;
    for (int round = 0; round < 50000; ++round) {
        const std::string a = randomText(random);
        const std::string b = round % 4 == 0 ? uppercaseString(a) : randomText(random);
        const std::string formA = caselessForm(a);
        const std::string formB = caselessForm(b);
        const bool equal = equalsIgnoringCase(a, b);
        equalTexts += equal && a != b ? 1 : 0;
        EXPECT_EQ(equal, formA == formB) << a << " | " << b;
        const int order = sign(utf16FromBytes(formA).compare(utf16FromBytes(formB)));
        EXPECT_EQ(caseInsensitiveCompare(a, b), order) << a << " | " << b;
        EXPECT_EQ(caseInsensitiveCompare(b, a), -order) << a << " | " << b;
        EXPECT_EQ(caselessForm(formA), formA) << a;
        EXPECT_TRUE(equalsIgnoringCase(a, decomposedString(a))) << a;
        EXPECT_TRUE(equalsIgnoringCase(a, precomposedString(a))) << a;
    }
    EXPECT_GT(equalTexts, 1000);
}

TEST(Unicode, CaseMappingKeepsWhatIsNoUTF8) {
    EXPECT_EQ(uppercaseString("é\xE9ß"), "É\xE9SS");
    EXPECT_EQ(lowercaseString("\xFFΑΣ"), "\xFFας");
    EXPECT_EQ(uppercaseString("i"), "I");
    EXPECT_EQ(lowercaseString("ABC@[\x7F"), "abc@[\x7F");
    EXPECT_EQ(uppercaseString("abc`{\x7F"), "ABC`{\x7F");
    EXPECT_EQ(decomposedString("\xC3é"), "\xC3"
                                         "e\u0301");
    EXPECT_EQ(precomposedString("e\u0301\xFF"), "é\xFF");
    EXPECT_EQ(decomposedString("\uAC01"), "\u1100\u1161\u11A8");
}

TEST(Transliteration, LossyASCII) {
    EXPECT_EQ(lossyASCII("Łódź “ß” ½"), "Lodz \"ss\"  1/2");
    EXPECT_EQ(lossyASCII("日本"), "??");
    EXPECT_EQ(lossyASCII("a😀b"), "a??b");
    EXPECT_EQ(lossyASCII("a\xFF\xC3z"), "a??z");
    EXPECT_EQ(lossyASCII("\x7F\n"), "\x7F\n");
    EXPECT_EQ(lossyASCII("é\x7F"), "e\x7F");
}

TEST(Transliteration, PiecesDoNotChangeTheResult) {
    std::mt19937 random(4);
    static const std::vector<std::string> pieces = {
        "\u0301",     "\u0323",     "\u0344", "\u0F73",       "½",      "“", "Ł",      "ǆ",
        "\U0001D165", "\U0001D15E", "\u302E", "\u09C7\u09BE", "\u3007", "Ǖ", "\u0149", "…",
        "\u212B",     "\u2126",     "＜",     "\u00A0"};
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (auto count = random() % 12; count > 0; --count) {
            text += random() % 2 == 0 ? pieces[random() % pieces.size()] : randomText(random);
        }
        const std::string whole = internal::lossyASCIIInPieces(text, text.size() + 1);
        EXPECT_EQ(internal::lossyASCIIInPieces(text, 1 + random() % 5), whole) << text;
    }
}

TEST(Transliteration, LongTexts) {
    std::string text;
    std::string ascii;
    for (int round = 0; round < 30000; ++round) {
        text += "éß😀";
        ascii += "ess??";
    }
    EXPECT_EQ(lossyASCII(text), ascii);
}

TEST(Transliteration, ThreadsMayCallAtOnce) {
    std::vector<std::thread> threads;
    std::vector<std::string> results(4);
    threads.reserve(results.size());
    for (std::string& result : results) {
        threads.emplace_back([&result] {
            for (int round = 0; round < 50; ++round) {
                result += lossyASCII("é");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::string& result : results) {
        EXPECT_EQ(result, std::string(50, 'e'));
    }
}

} // namespace

} // namespace tav
