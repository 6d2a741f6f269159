#include "platform/UserLanguages.hpp"

#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Names = std::vector<std::string>;

Names languages(const std::map<std::string, std::string>& environment) {
    return internal::languagesOfEnvironment([&](const char* name) -> std::optional<std::string> {
        const auto found = environment.find(name);
        return found != environment.end() ? std::optional(found->second) : std::nullopt;
    });
}

TEST(UserLanguages, TheBareLanguageFollowsThatOfACountry) {
    EXPECT_EQ(languages({{"LANG", "de_AT.UTF-8"}}), (Names{"de_AT", "de"}));
    EXPECT_EQ(languages({{"LANG", "de"}}), (Names{"de"}));
    EXPECT_EQ(languages({{"LANG", "sr_RS.UTF-8@latin"}}),
              (Names{"sr_RS@latin", "sr@latin", "sr_RS", "sr"}));
}

TEST(UserLanguages, TheMoreSpecialVariableGoesFirst) {
    EXPECT_EQ(languages({{"LANG", "de"}, {"LC_MESSAGES", "fr"}}), Names{"fr"});
    EXPECT_EQ(languages({{"LANG", "de"}, {"LC_MESSAGES", "fr"}, {"LC_ALL", "it"}}), Names{"it"});
    EXPECT_EQ(languages({{"LANG", "de"}, {"LC_MESSAGES", ""}, {"LC_ALL", ""}}), Names{"de"});
}

TEST(UserLanguages, TheListTakesThePlaceOfTheLocale) {
    EXPECT_EQ(languages({{"LANG", "de"}, {"LANGUAGE", "fr_CH:it"}}), (Names{"fr_CH", "fr", "it"}));
    EXPECT_EQ(languages({{"LANG", "de"}, {"LANGUAGE", ""}}), Names{"de"});
    EXPECT_EQ(languages({{"LANG", "de"}, {"LANGUAGE", ":fr::fr_CH:"}}), (Names{"fr", "fr_CH"}));
}

TEST(UserLanguages, NoTranslationsWithoutALocale) {
    EXPECT_EQ(languages({}), Names());
    for (const char* const none : {"C", "POSIX", "C.UTF-8", ""}) {
        EXPECT_EQ(languages({{"LANG", none}, {"LANGUAGE", "de"}}), Names()) << none;
    }
    EXPECT_EQ(languages({{"LANG", "de"}, {"LC_ALL", "C"}}), Names());
}

TEST(UserLanguages, TheListEndsWithEnglishAndWithNoTranslation) {
    EXPECT_EQ(languages({{"LANG", "de"}, {"LANGUAGE", "fr:en_GB:de"}}),
              (Names{"fr", "en_GB", "en"}));
    EXPECT_EQ(languages({{"LANG", "de"}, {"LANGUAGE", "fr:C:de"}}), Names{"fr"});
}

TEST(UserLanguages, WhatIsNoNameOfALanguageIsPassedOver) {
    EXPECT_EQ(languages({{"LANG", "../../tmp"}}), Names());
    EXPECT_EQ(languages({{"LANG", "de"}, {"LANGUAGE", "/etc:..:d/e:4:it"}}), Names{"it"});
    EXPECT_EQ(languages({{"LANG", "de"}, {"LANGUAGE", std::string(65, 'a') + ":it"}}), Names{"it"});
    EXPECT_EQ(languages({{"LANG", ".UTF-8"}}), Names());
}

TEST(UserLanguages, AnEndlessListIsCut) {
    std::string list;
    for (int i = 0; i < 100000; ++i) {
        list += "l" + std::to_string(i) + ":";
    }
    EXPECT_LE(languages({{"LANG", "de"}, {"LANGUAGE", list}}).size(), 40U);
}

TEST(UserLanguages, EnglishIsToldWithAndWithoutACountry) {
    EXPECT_TRUE(isEnglish("en"));
    EXPECT_TRUE(isEnglish("en_GB"));
    EXPECT_TRUE(isEnglish("en@boldquot"));
    EXPECT_FALSE(isEnglish("eng"));
    EXPECT_FALSE(isEnglish("de_EN"));
    EXPECT_FALSE(isEnglish(""));
}

} // namespace
} // namespace tav
