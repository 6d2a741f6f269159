#include "base/TextSearch.hpp"
#include "foundation/TextSearch.hpp"
#include "testing/Golden.hpp"

#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

std::optional<std::string> argumentOf(const GoldenCase& golden) {
    const auto& argument = golden.in.at("arg");
    return argument.is_null() ? std::nullopt : std::optional(argument.get<std::string>());
}

TEST(FoundationTextSearch, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "containsString")) {
        EXPECT_EQ(containsString(golden.in.at("self").get<std::string>(), argumentOf(golden)),
                  golden.out.get<bool>())
            << golden.description();
    }
    for (const GoldenCase& golden : goldenCases("edges.json", "hasPrefixCaseInsensitive")) {
        EXPECT_EQ(
            hasPrefixCaseInsensitive(golden.in.at("self").get<std::string>(), argumentOf(golden)),
            golden.out.get<bool>())
            << golden.description();
    }
    for (const char* file : {"edges.json", "rangeofstring.json"}) {
        for (const GoldenCase& golden : goldenCases(file, "countOfString")) {
            EXPECT_EQ(countOfString(golden.in.at("self").get<std::string>(), argumentOf(golden)),
                      golden.out)
                << golden.description();
        }
    }
}

TEST(FoundationTextSearch, Contains) {
    EXPECT_TRUE(containsString("hello", "ell"));
    EXPECT_FALSE(containsString("hello", "ELL"));
    EXPECT_TRUE(containsString("hello", "ELL", SearchOption::IgnoreCase));
    EXPECT_FALSE(containsString("hello", "ell", SearchOption::Anchored));
    EXPECT_TRUE(containsString("hello", "hell", SearchOption::Anchored));
    EXPECT_FALSE(containsString("hello", nullptr));
    EXPECT_FALSE(containsString("hello", nullptr, SearchOption::IgnoreCase));
    EXPECT_FALSE(containsString("hello", ""));
    EXPECT_FALSE(containsString("", "a"));
    EXPECT_TRUE(containsString("cafe\u0301", "é"));
    EXPECT_FALSE(containsString("cafe\u0301", "e"));
    EXPECT_TRUE(containsString("cafe\u0301", "e", SearchOption::Literal));
}

TEST(FoundationTextSearch, Counts) {
    EXPECT_EQ(countOfString("aaa", "aa"), 2);
    EXPECT_EQ(countOfString("abc", nullptr), 0);
    EXPECT_EQ(countOfString("abc", ""), 0);
    EXPECT_EQ(countOfString("", ""), 0);
    EXPECT_EQ(countOfString("", "a"), 0);
    EXPECT_EQ(countOfString("abc", "c"), 1);
    EXPECT_EQ(countOfString("éée\u0301", "é"), 3);
    EXPECT_EQ(countOfString("😀😀😀", "😀😀"), 2);
}

// How the count is described: search again one unit behind where the last place began.
TEST(FoundationTextSearch, CountsAsManySearchesDo) {
    const std::vector<std::string> characters = {"a", "b", "e", "é", "\u0301", "😀", "\xE9"};
    std::mt19937 random(7);
    const auto text = [&](std::size_t most) {
        std::string result;
        for (std::size_t count = random() % (most + 1); count > 0; --count) {
            result += characters[random() % characters.size()];
        }
        return result;
    };
    for (int round = 0; round < 5000; ++round) {
        const std::string self = text(12);
        const std::string pattern = text(2);
        int count = 0;
        for (auto place = rangeOfString(self, pattern, 0); place;) {
            ++count;
            place = rangeOfString(self, pattern, 0, {place->location + 1, self.size()});
        }
        ASSERT_EQ(countOfString(self, pattern), count) << self << " / " << pattern;
    }
}

TEST(FoundationTextSearch, PrefixesAndSuffixesMindTheCase) {
    EXPECT_TRUE(hasPrefixCaseInsensitive("Hello", "He"));
    EXPECT_FALSE(hasPrefixCaseInsensitive("Hello", "he"));
    EXPECT_FALSE(hasPrefixCaseInsensitive("Hello", nullptr));
    EXPECT_TRUE(hasPrefixCaseInsensitive("Hello", "Hello"));
    EXPECT_FALSE(hasPrefixCaseInsensitive("Hello", "Hello!"));
    EXPECT_TRUE(hasPrefixCaseInsensitive("Hello", ""));
    EXPECT_TRUE(hasPrefixCaseInsensitive("", ""));
    EXPECT_FALSE(hasPrefixCaseInsensitive("", "a"));
    EXPECT_TRUE(hasSuffixCaseInsensitive("x.mp3", ".mp3"));
    EXPECT_FALSE(hasSuffixCaseInsensitive("x.MP3", ".mp3"));
    EXPECT_FALSE(hasSuffixCaseInsensitive("x.mp3", nullptr));
    EXPECT_TRUE(hasSuffixCaseInsensitive("x.mp3", "x.mp3"));
    EXPECT_FALSE(hasSuffixCaseInsensitive("mp3", ".mp3"));
    EXPECT_TRUE(hasSuffixCaseInsensitive("x", ""));
    EXPECT_TRUE(hasSuffixCaseInsensitive("", ""));
}

TEST(FoundationTextSearch, PrefixesAndSuffixesHaveAsManyUnitsAsTheArgument) {
    // Equivalent, and of one unit each.
    EXPECT_TRUE(hasPrefixCaseInsensitive("\u212Bx", "\u00C5"));
    EXPECT_TRUE(hasSuffixCaseInsensitive("x\u212B", "\u00C5"));
    // Equivalent, but one is longer.
    EXPECT_FALSE(hasPrefixCaseInsensitive("e\u0301x", "é"));
    EXPECT_FALSE(hasPrefixCaseInsensitive("éx", "e\u0301"));
    EXPECT_FALSE(hasSuffixCaseInsensitive("xe\u0301", "é"));
    EXPECT_FALSE(hasPrefixCaseInsensitive("é", "e\u0301"));
    // The marks behind the range are not asked.
    EXPECT_TRUE(hasPrefixCaseInsensitive("e\u0301", "e"));
    EXPECT_TRUE(hasSuffixCaseInsensitive("e\u0301", "\u0301"));
    EXPECT_TRUE(hasPrefixCaseInsensitive("e\u0301\u0323x", "e\u0323\u0301"));
    EXPECT_TRUE(hasSuffixCaseInsensitive("a😀", "😀"));
    EXPECT_TRUE(hasPrefixCaseInsensitive("é\xFF!", "é\xFF"));
    EXPECT_TRUE(hasSuffixCaseInsensitive("é\xFF!", "\xFF!"));
    EXPECT_FALSE(hasSuffixCaseInsensitive("\U0001F480", "\x80"));
}

} // namespace
} // namespace tav
