#include "base/Unicode.hpp"
#include "foundation/TopLevelDomains.hpp"
#include "testing/Golden.hpp"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

constexpr std::string_view wholeList =
    "ad ae af ag ai al am an ao aq ar as at au aw ax az ba bb bd be bf bg bh bi bj bm bn "
    "bo br bs bt bv bw by bz ca cc cd cf cg ch ci ck cl cm cn co cr cs cu cv cx cy cz de "
    "dj dk dm do dz ec ee eg eh er es et fi fj fk fm fo fr fx ga gb gd ge gf gh gi gl gm "
    "gn gp gq gr gs gt gu gw gy hk hm hn hr ht hu id ie il in io iq ir is it jm jo jp ke "
    "kg kh ki km kn kp kr kw ky kz la lb lc li lk lr ls lt lu lv ly ma mc md mg mh mk ml "
    "mm mn mo mp mq mr ms mt mu mv mw mx my mz na nc ne nf ng ni nl no np nr nu nz om pa "
    "pe pf pg ph pk pl pm pn pr ps pt pw py qa re ro ru rw sa sb sc sd se sg sh si sj sk "
    "sl sm sn so sr st su sv sy sz tc td tf tg th tj tk tl tm tn to tp tr tt tv tw tz ua "
    "ug uk um us uy uz va vc ve vg vi vn vu wf ws ye yt yu za zm zr zw "
    "biz com edu gov int mil net org pro aero arpa coop info name nato ";

TEST(TopLevelDomains, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "isTLD")) {
        EXPECT_EQ(isTLD(golden.in.get<std::string>()), golden.out.get<bool>())
            << golden.description();
    }
}

TEST(TopLevelDomains, TheListIsClosedAndInOrder) {
    const auto names = internal::topLevelDomains();
    EXPECT_EQ(names.size(), 261U);
    std::string list;
    for (const std::string_view name : names) {
        list += std::string(name) + ' ';
    }
    EXPECT_EQ(list, wholeList);
    const auto codes = names.first(246);
    EXPECT_TRUE(std::all_of(codes.begin(), codes.end(),
                            [](std::string_view code) { return code.size() == 2; }));
    EXPECT_TRUE(std::is_sorted(codes.begin(), codes.end()));
    EXPECT_EQ(std::set<std::string_view>(names.begin(), names.end()).size(), names.size());
}

TEST(TopLevelDomains, EveryNameAndNoOtherOfTwoLetters) {
    const auto names = internal::topLevelDomains();
    for (const std::string_view name : names) {
        EXPECT_TRUE(isTLD(name)) << name;
        EXPECT_TRUE(isTLD(uppercaseString(name))) << name;
        EXPECT_FALSE(isTLD(std::string(name) + "x")) << name;
        EXPECT_FALSE(isTLD(name.substr(0, 1))) << name;
    }
    for (char first = 'a'; first <= 'z'; ++first) {
        for (char second = 'a'; second <= 'z'; ++second) {
            const std::string code{first, second};
            EXPECT_EQ(isTLD(code), std::find(names.begin(), names.end(), code) != names.end());
        }
    }
}

TEST(TopLevelDomains, LowerCaseIsThatOfUnicode) {
    EXPECT_TRUE(isTLD("Name"));
    EXPECT_TRUE(isTLD("\u212AZ")); // the sign of the kelvin
    EXPECT_TRUE(isTLD("U\u212A"));
    EXPECT_FALSE(isTLD("\u0130N")); // the dot stays
    EXPECT_FALSE(isTLD("\uFF43om"));
}

TEST(TopLevelDomains, OthersAreNone) {
    for (const char* text : {"", " ", "com ", " com", ".com", "co.uk", "museum", "c\xFF", "\xFF",
                             "eu", "gg", "im", "je", "me", "rs", "ss", "jobs", "dev"}) {
        EXPECT_FALSE(isTLD(text)) << text;
    }
    EXPECT_FALSE(isTLD(std::string_view("uk\0", 3)));
    EXPECT_FALSE(isTLD(std::string(1'000'000, 'a')));
}

} // namespace
} // namespace tav
