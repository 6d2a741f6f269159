#include "foundation/Collation.hpp"

#include <array>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

int order(std::string_view a, std::string_view b) {
    const int result = compareStringsIgnoringDiacritical(a, b);
    EXPECT_EQ(compareStringsIgnoringDiacritical(b, a), -result) << a << " and " << b;
    return result;
}

bool equal(std::string_view a, std::string_view b) {
    const bool result = equalStringsIgnoringDiacritical(a, b);
    EXPECT_EQ(equalStringsIgnoringDiacritical(b, a), result) << a << " and " << b;
    return result;
}

TEST(Collation, OrdersLetters) {
    EXPECT_EQ(order("a", "b"), -1);
    EXPECT_EQ(order("a", "B"), -1);
    EXPECT_EQ(order("A", "b"), -1);
    EXPECT_EQ(order("é", "f"), -1);
    EXPECT_EQ(order("é", "d"), 1);
    EXPECT_EQ(order("", ""), 0);
    EXPECT_EQ(order("", "a"), -1);
    EXPECT_EQ(order("a", "ab"), -1);
}

TEST(Collation, OrderIgnoresCaseAccentsWidthAndComposition) {
    for (const char* text : {"E", "é", "e\u0301", "É", "\uFF25", "\uFF45"}) {
        EXPECT_EQ(order("e", text), 0) << text;
    }
    EXPECT_EQ(order("ﬁ", "fi"), 0);
    EXPECT_EQ(order("Straße", "STRASSE"), 0);
    EXPECT_EQ(order("ø", "o"), 0);
    EXPECT_EQ(order("æ", "ae"), 0);
    EXPECT_EQ(order("e\u0301\u0323", "e\u0323\u0301"), 0);
    EXPECT_EQ(order("a\u0F71\u0F73", "a\u0F71\u0F71\u0F72"), 0);
    EXPECT_EQ(order("a\u0F72\u0F71", "a\u0F71\u0F72"), 0);
    // Katakana and hiragana, superscripts.
    EXPECT_EQ(order("カ", "か"), 0);
    EXPECT_EQ(order("²", "2"), 0);
}

TEST(Collation, OrderMindsBlanksPunctuationAndTheDotOfI) {
    EXPECT_NE(order("a b", "ab"), 0);
    EXPECT_NE(order("a-b", "ab"), 0);
    EXPECT_NE(order("a-b", "a b"), 0);
    EXPECT_NE(order("i", "ı"), 0);
}

TEST(Collation, ASCIIIsOrderedAsTheCollatorDoes) {
    const auto check = [](const std::string& a, const std::string& b) {
        // Behind what is not ASCII the collator itself compares.
        const int expected = compareStringsIgnoringDiacritical("é" + a, "é" + b);
        EXPECT_EQ(order(a, b), expected) << testing::PrintToString(a) << testing::PrintToString(b);
    };
    for (int first = 0; first < 128; ++first) {
        check(std::string(1, static_cast<char>(first)), "");
        for (int second = first; second < 128; ++second) {
            check(std::string(1, static_cast<char>(first)),
                  std::string(1, static_cast<char>(second)));
        }
    }
    std::mt19937 random(11);
    const auto text = [&random] {
        constexpr std::string_view characters("aAbz09 -_.'\0\x01\x7F\n", 14);
        std::string result;
        for (auto count = random() % 6; count > 0; --count) {
            result += characters[random() % characters.size()];
        }
        return result;
    };
    for (int round = 0; round < 20000; ++round) {
        check(text(), text());
    }
    // What does not count is left out, and other control characters are blanks.
    EXPECT_EQ(order("a\x01"
                    "b",
                    "ab\x7F"),
              0);
    EXPECT_EQ(order("\x01", ""), 0);
    EXPECT_EQ(order("\n", ""), 1);
}

TEST(Collation, EqualityIgnoresCaseAndAccents) {
    for (const char* text : {"E", "é", "e\u0301", "É"}) {
        EXPECT_TRUE(equal("e", text)) << text;
    }
    EXPECT_TRUE(equal("é", "e\u0301"));
    EXPECT_TRUE(equal("é", "è"));
    EXPECT_TRUE(equal("Straße", "STRASSE"));
    EXPECT_TRUE(equal("", ""));
    EXPECT_FALSE(equal("a", "b"));
    EXPECT_FALSE(equal("a", ""));
    EXPECT_FALSE(equal("a-b", "ab"));
}

TEST(Collation, EqualityMindsWidthWhereTheOrderDoesNot) {
    EXPECT_FALSE(equal("e", "\uFF45"));
    EXPECT_EQ(order("e", "\uFF45"), 0);
    EXPECT_FALSE(equal("カ", "ｶ"));
    EXPECT_EQ(order("カ", "ｶ"), 0);
    EXPECT_FALSE(equal("ﬁ", "fx"));
    EXPECT_FALSE(equal("ø", "o"));
    EXPECT_FALSE(equal("²", "2"));
}

TEST(Collation, BytesThatAreNoUTF8) {
    EXPECT_EQ(order("a\xE9", "a\xE9"), 0);
    EXPECT_NE(order("a\xE9", "a\xE8"), 0);
    EXPECT_TRUE(equal("A\xE9", "a\xE9"));
    EXPECT_FALSE(equal("a\xE9", "a\xE8"));
    EXPECT_FALSE(equal("a\xE9", "aé"));
}

TEST(Collation, WithoutACollatorAllAreEqual) {
    EXPECT_EQ(internal::compareByCollator(nullptr, "a", "b"), 0);
    EXPECT_EQ(internal::compareByCollator(nullptr, "ä", "b"), 0);
}

TEST(Collation, HostileTextsEnd) {
    std::string marks = "e";
    std::string vowels = "\u0FB2";
    for (int count = 0; count < 250'000; ++count) {
        marks += "\u0301\u0323";
        vowels += "\u0F71\u0F80";
    }
    EXPECT_EQ(order(marks, "e"), 0);
    EXPECT_EQ(order(marks + "a", marks + "b"), -1);
    EXPECT_TRUE(equal(marks, "E"));
    EXPECT_EQ(order(vowels, vowels), 0);
    EXPECT_EQ(order(vowels + "a", vowels + "b"), -1);
}

TEST(Collation, ManyThreads) {
    std::vector<std::thread> threads;
    std::array<int, 4> wrong{};
    for (int& count : wrong) {
        threads.emplace_back([&count] {
            for (int round = 0; round < 2000; ++round) {
                count += compareStringsIgnoringDiacritical("é", "E") == 0 ? 0 : 1;
                count += compareStringsIgnoringDiacritical("ab", "B") == -1 ? 0 : 1;
                count += equalStringsIgnoringDiacritical("é", "E") ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, (std::array<int, 4>{}));
}

} // namespace
} // namespace tav
