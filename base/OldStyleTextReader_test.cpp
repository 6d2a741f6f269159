#include "base/OldStyleText.hpp"
#include "testing/Golden.hpp"

#include <array>
#include <bit>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

using namespace std::string_literals;

std::optional<Value> read(std::string_view text) { return OldStyleText::read(text, nullptr); }

Value dictionary(std::string key, Value value) {
    return Value::Dictionary{{std::move(key), std::move(value)}};
}

void expectRefused(std::string_view text, std::size_t line, std::size_t offset) {
    PropertyList::Error error;
    EXPECT_EQ(OldStyleText::read(text, &error), std::nullopt) << text;
    EXPECT_FALSE(error.reason.empty()) << text;
    EXPECT_EQ(error.line, line) << text;
    EXPECT_EQ(error.offset, offset) << text;
}

/// What text makes of a value: numbers and dates come back as their descriptions.
Value asTexts(const Value& value) {
    if (const Value::Array* array = value.asArray()) {
        Value::Array texts;
        for (const Value& element : *array) {
            texts.push_back(asTexts(element));
        }
        return texts;
    }
    if (const Value::Dictionary* entries = value.asDictionary()) {
        Value::Dictionary texts;
        for (const auto& [key, entry] : *entries) {
            texts.set(key, asTexts(entry));
        }
        return texts;
    }
    return value.type() == Value::Type::Bytes ? value : Value(value.description());
}

class RandomValues {
  public:
    explicit RandomValues(unsigned seed) : random_(seed) {}

    Value tree(int depth) {
        switch (random_() % (depth > 0 ? 9 : 7)) {
        case 0:
            return random_() % 2 == 0;
        case 1:
            return static_cast<std::int64_t>(random_() >> random_() % 64);
        case 2:
            return std::bit_cast<double>(random_());
        case 3:
            return Date(double(random_() % 2000000000) - 1e9);
        case 4:
            return dataFromText(text());
        case 5:
        case 6:
            return text();
        case 7: {
            Value::Array array;
            for (auto i = random_() % 8; i > 0; --i) {
                array.push_back(tree(depth - 1));
            }
            return array;
        }
        default: {
            Value::Dictionary entries;
            for (auto i = random_() % (random_() % 10 == 0 ? 60 : 12); i > 0; --i) {
                entries.set(text(), tree(depth - 1));
            }
            return entries;
        }
        }
    }

  private:
    /// Bytes of every kind, well-formed or not.
    std::string text() {
        static const std::array<std::string, 20> pieces = {
            "a",        "key",     "\"",           "'",
            "\\",       "\\U00e9", "\n",           "\t\r",
            "\xC3\xA9", "\xFF",    "\xED\xA0\xBD", "\0"s,
            "\x7F",     "/*",      "//",           "\xE2\x80\xA8",
            "\xC3",     "\xA9",    "; }",          "\xF0\x9F\x98\x80"};
        std::string text;
        for (auto i = random_() % 12; i > 0; --i) {
            text += random_() % 4 == 0 ? std::string(1, static_cast<char>(random_()))
                                       : pieces[random_() % pieces.size()];
        }
        return text;
    }

    std::mt19937_64 random_;
};

TEST(OldStyleTextReader, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("oldstyle_plist.json", "parse")) {
        PropertyList::Error error;
        const auto value = OldStyleText::read(golden.in.get<std::string>(), &error);
        EXPECT_EQ(value, valueFromJSON(golden.out)) << golden.description();
        EXPECT_EQ(error.reason.empty(), value.has_value()) << golden.description();
    }
}

TEST(OldStyleTextReader, WhatIsWrittenInTheGoldenCasesParsesBack) {
    for (const GoldenCase& golden : goldenCases("oldstyle_plist.json", "serialise")) {
        EXPECT_EQ(read(golden.out.get<std::string>()),
                  valueFromJSON(golden.whole.at("parsesBackTo")))
            << golden.description();
    }
}

TEST(OldStyleTextReader, RandomTreesComeBackAsTheirTexts) {
    for (unsigned seed = 0; seed < 2000; ++seed) {
        const Value value = RandomValues(seed).tree(5);
        const std::string text = OldStyleText::write(value);
        PropertyList::Error error;
        const auto back = OldStyleText::read(text, &error);
        ASSERT_TRUE(back) << seed << ": " << error.reason;
        ASSERT_EQ(*back, asTexts(value)) << seed;
        ASSERT_EQ(OldStyleText::write(*back), text) << seed;
    }
}

TEST(OldStyleTextReader, EveryByteComesBackAtEveryPlaceOfAText) {
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t at = 0; at < 20; ++at) {
            std::string text(20, 'x');
            text[at] = static_cast<char>(byte);
            ASSERT_EQ(read(OldStyleText::write(text)), Value(text)) << byte << " at " << at;
        }
    }
}

TEST(OldStyleTextReader, NamedEscapes) {
    EXPECT_EQ(read(R"("\a\b\t\n\v\f\r\\\"\'")"), Value("\a\b\t\n\v\f\r\\\"'"));
    // Every other character stands for itself, a line feed too.
    EXPECT_EQ(read("\"\\q\\8\\\n\\\xC3\xA9\""), Value("q8\n\xC3\xA9"));
}

TEST(OldStyleTextReader, OctalEscapes) {
    EXPECT_EQ(read(R"("\0\1019\7x\18")"), Value("\0A9\7x\1"s + "8"));
    EXPECT_EQ(read(R"("\0001")"), Value("\0"s + "1"));
    // Beyond ASCII the number is a character of NEXTSTEP; only its low eight bits count.
    EXPECT_EQ(read(R"("\200\341\350\373")"), Value("\xC2\xA0\xC3\x86\xC5\x81\xC3\x9F"));
    EXPECT_EQ(read(R"("\376\377")"), Value("\xEF\xBF\xBD\xEF\xBF\xBD"));
    EXPECT_EQ(read(R"("\501")"), Value("A"));
}

TEST(OldStyleTextReader, UnitsOfUTF16) {
    EXPECT_EQ(read(R"("\U00e9\u00E9")"), Value("\xC3\xA9\xC3\xA9"));
    EXPECT_EQ(read(R"("\Ud83d\Ude00")"), Value("\xF0\x9F\x98\x80"));
    EXPECT_EQ(read(R"("\ud83d\uDE00")"), Value("\xF0\x9F\x98\x80"));
    // Up to four digits count; without any the letter stands for itself.
    EXPECT_EQ(read(R"("\Ue9z\U00e91\Ug\u")"), Value("\xC3\xA9z\xC3\xA9"
                                                    "1Ugu"));
    // Halves of pairs are no characters.
    EXPECT_EQ(read(R"("\Ud83dx\Ude00")"), Value("\xEF\xBF\xBDx\xEF\xBF\xBD"));
    EXPECT_EQ(read(R"("\Ud83d\Ud83d\Ude00")"), Value("\xEF\xBF\xBD\xF0\x9F\x98\x80"));
    EXPECT_EQ(read(R"("\Ud83d\U0041")"), Value("\xEF\xBF\xBD"
                                               "A"));
}

TEST(OldStyleTextReader, BytesThatAreNoUTF8) {
    EXPECT_EQ(read(R"("a\Udcff\Udc80")"), Value("a\xFF\x80"));
    EXPECT_EQ(read("\"a\xFF\x80\""), Value("a\xFF\x80"));
}

TEST(OldStyleTextReader, BothQuotes) {
    EXPECT_EQ(read(R"('say "hi"')"), Value("say \"hi\""));
    EXPECT_EQ(read(R"("it's")"), Value("it's"));
    EXPECT_EQ(read(R"('it\'s')"), Value("it's"));
    EXPECT_EQ(read("\"two\nlines\""), Value("two\nlines"));
    for (std::size_t size = 0; size < 40; ++size) {
        const std::string text(size, 'x');
        EXPECT_EQ(read('"' + text + '"'), Value(text));
        EXPECT_EQ(read('"' + text + "\\\"" + text + '"'), Value(text + '"' + text));
    }
}

TEST(OldStyleTextReader, CharactersThatNeedNoQuotes) {
    const std::string word = "azAZ09_$/:.-";
    EXPECT_EQ(read(word), Value(word));
    EXPECT_EQ(read("http://host/a//b"), Value("http://host/a//b"));
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const bool isWord = word.find(c) != std::string::npos || (c >= '0' && c <= '9') ||
                            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const std::string list = "(x"s + c + "y)";
        if (c != ',' && c != ')') {
            EXPECT_EQ(read(list).has_value(), isWord) << byte;
        }
    }
}

TEST(OldStyleTextReader, SpaceAndComments) {
    EXPECT_EQ(read(" \t\r\n\v\f\xE2\x80\xA8\xE2\x80\xA9(a)\xE2\x80\xA8"), Value(Value::Array{"a"}));
    EXPECT_EQ(read("/**/(/* , ) */ a /*//*/ , //x)\nb //\r, c //\xE2\x80\xA9)//"),
              Value(Value::Array{"a", "b", "c"}));
    EXPECT_EQ(read("(/usr, /)"), Value(Value::Array{"/usr", "/"}));
    expectRefused("(a) /* no end", 1, 4);
    expectRefused("(a /", 1, 3);
    expectRefused("/*/ (a)", 1, 0);
}

TEST(OldStyleTextReader, Data) {
    EXPECT_EQ(read("< 0F bd\n77>"), Value(dataFromText("\x0F\xBD\x77")));
    EXPECT_EQ(read("< >"), Value(Data()));
    expectRefused("<0 f>", 1, 1);
    expectRefused("<0", 1, 0);
    expectRefused("<", 1, 0);
    expectRefused("(<00>,\n<0>)", 2, 8);
}

TEST(OldStyleTextReader, Arrays) {
    EXPECT_EQ(read("(a,b,)"), Value(Value::Array{"a", "b"}));
    EXPECT_EQ(read("((),{},<>,\"\")"),
              Value(Value::Array{Value::Array{}, Value::Dictionary{}, Data(), ""}));
    expectRefused("(,)", 1, 1);
    expectRefused("(a,,b)", 1, 3);
    expectRefused("(a;)", 1, 2);
    expectRefused("(a}", 1, 2);
    expectRefused("(", 1, 0);
}

TEST(OldStyleTextReader, Dictionaries) {
    EXPECT_EQ(read("{b=1;a=2;}")->description(), "{\n    a = 2;\n    b = 1;\n}");
    EXPECT_EQ(read("{a;b=c;}"), Value(Value::Dictionary{{"a", "a"}, {"b", "c"}}));
    // The last of equal keys counts.
    EXPECT_EQ(read("{a=1;\"a\"=2;a=(3);}"), dictionary("a", Value::Array{"3"}));
    EXPECT_EQ(read("{'a b'='c d';}"), dictionary("a b", "c d"));
    expectRefused("{a=b}", 1, 4);
    expectRefused("{a=b;;}", 1, 5);
    expectRefused("{a}", 1, 2);
    expectRefused("{(a)=b;}", 1, 1);
    expectRefused("{\n a = b;\n c d;\n}", 3, 13);
    expectRefused("{a", 1, 2);
    expectRefused("{a=", 1, 3);
    expectRefused("{a=b", 1, 4);
    expectRefused("{a=b;", 1, 0);
}

TEST(OldStyleTextReader, ManyEntries) {
    std::string text = "{";
    Value::Dictionary expected;
    for (int i = 0; i < 1000; ++i) {
        text += "k" + std::to_string(i % 700) + "=" + std::to_string(i) + ";";
        expected.set("k" + std::to_string(i % 700), std::to_string(i));
    }
    EXPECT_EQ(read(text + "}"), Value(expected));
}

TEST(OldStyleTextReader, StringsFiles) {
    EXPECT_EQ(read("/* c */\n\"a b\" = \"c\";\n// d\ne = { f = g; };\nh;\n"),
              Value(Value::Dictionary{{"a b", "c"}, {"e", dictionary("f", "g")}, {"h", "h"}}));
    EXPECT_EQ(read("\"a\" ;"), dictionary("a", "a"));
    expectRefused("a=b; }", 1, 5);
    expectRefused("a=b; c", 1, 6);
    expectRefused("a=", 1, 2);
    expectRefused("a b", 1, 2);
    expectRefused("(a) b", 1, 4);
    expectRefused("{} {}", 1, 3);
}

TEST(OldStyleTextReader, NothingButSpaceIsAnEmptyStringsFile) {
    EXPECT_EQ(read(" \n"), Value(Value::Dictionary()));
    EXPECT_EQ(read("// nothing yet"), Value(Value::Dictionary()));
    expectRefused("", 1, 0);
    expectRefused("\xEF\xBB\xBF", 1, 3);
}

TEST(OldStyleTextReader, ByteOrderMarks) {
    EXPECT_EQ(read("\xEF\xBB\xBF{a=b;}"), dictionary("a", "b"));
    EXPECT_EQ(read("\xFE\xFF\0{\0a\0=\0\"\x20\xAC\xDC\xFF\0\"\0;\0}"s),
              dictionary("a", "\xE2\x82\xAC\xFF"));
    EXPECT_EQ(read("\xFF\xFE(\0\"\0\x3D\xD8\0\xDE\"\0)\0"s),
              Value(Value::Array{"\xF0\x9F\x98\x80"}));
    expectRefused("\xEF\xBB\xBF(\n}", 2, 5);
    expectRefused("\xFF\xFE(\0\n\0}\0"s, 2, 6);
    expectRefused("\xFF\xFE(\0)"s, 0, 4);
}

TEST(OldStyleTextReader, DepthIsLimited) {
    const auto nested = [](std::size_t depth) {
        return std::string(depth, '(') + std::string(depth, ')');
    };
    EXPECT_TRUE(read(nested(PropertyList::maximumDepth)));
    expectRefused(nested(PropertyList::maximumDepth + 1), 1, PropertyList::maximumDepth);
    std::string dictionaries;
    for (std::size_t i = 0; i <= PropertyList::maximumDepth; ++i) {
        dictionaries += "{a=";
    }
    expectRefused(dictionaries, 1, 3 * PropertyList::maximumDepth);
    expectRefused(std::string(1000000, '('), 1, PropertyList::maximumDepth);
    // Neighbours are not deep.
    std::string neighbours = "(";
    for (std::size_t i = 0; i <= PropertyList::maximumDepth; ++i) {
        neighbours += "(), {}, ";
    }
    EXPECT_TRUE(read(neighbours + ")"));
}

TEST(OldStyleTextReader, TruncationsAndFlippedBitsEndInAValueOrAnError) {
    std::string text = OldStyleText::write(Value::Dictionary{
        {"array", Value::Array{1, "two words", Value::Dictionary{{"k", "\xC3\xA9\xFF"}}}},
        {"data", dataFromText("some bytes")},
        {"date", Date(5)},
        {"empty", Value::Array{}}});
    for (std::size_t size = 0; size < text.size(); ++size) {
        // A copy of just the size, so that a read past the end is seen.
        const std::vector<char> cut(text.begin(), text.begin() + std::ptrdiff_t(size));
        EXPECT_EQ(read({cut.data(), cut.size()}), std::nullopt) << size;
    }
    std::size_t values = 0;
    for (std::size_t bit = 0; bit < text.size() * 8; ++bit) {
        const std::string original = text;
        text[bit / 8] = static_cast<char>(text[bit / 8] ^ (1 << bit % 8));
        PropertyList::Error error;
        const auto value = OldStyleText::read(text, &error);
        values += value ? 1 : 0;
        EXPECT_NE(value.has_value(), !error.reason.empty());
        text = original;
    }
    EXPECT_GT(values, 100U);
}

} // namespace
} // namespace tav
