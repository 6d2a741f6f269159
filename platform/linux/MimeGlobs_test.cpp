#include "platform/linux/MimeGlobs.hpp"

#include <string>

#include <gtest/gtest.h>

namespace tav::internal {
namespace {

MimeGlobs globsOf(std::string_view text) {
    MimeGlobs globs;
    globs.add(text);
    return globs;
}

TEST(MimeGlobs, TheHeaviestPatternHolds) {
    const MimeGlobs globs = globsOf("10:a/long:readme*\n80:a/heavy:*.h\n50:a/middle:*me.h\n");
    EXPECT_EQ(globs.typeOfName("readme.h"), "a/heavy");
    EXPECT_EQ(globs.typeOfName("readme.x"), "a/long");
}

TEST(MimeGlobs, ThenTheLongestThenTheFirst) {
    const MimeGlobs globs = globsOf("50:a/gz:*.gz\n50:a/tar:*.tar.gz\n50:a/other:*.tar.gz\n");
    EXPECT_EQ(globs.typeOfName("x.tar.gz"), "a/tar");
    EXPECT_EQ(globs.typeOfName("x.gz"), "a/gz");
    EXPECT_EQ(globs.typeOfName("gz"), "");
    EXPECT_EQ(globsOf("50:a/name:x.gz\n50:a/star:*x.gz\n").typeOfName("x.gz"), "a/star");
}

TEST(MimeGlobs, CaseCountsOnlyWhereItIsAskedFor) {
    const MimeGlobs globs = globsOf("50:a/jpeg:*.JpG\n50:a/c:*.c:cs\n50:a/cpp:*.C:x,cs\n");
    EXPECT_EQ(globs.typeOfName("A.jpg"), "a/jpeg");
    EXPECT_EQ(globs.typeOfName("a.JPG"), "a/jpeg");
    EXPECT_EQ(globs.typeOfName("a.c"), "a/c");
    EXPECT_EQ(globs.typeOfName("a.C"), "a/cpp");
}

TEST(MimeGlobs, WholeNamesAndPatterns) {
    const MimeGlobs globs = globsOf("50:a/make:makefile\n50:a/anim:*.anim[1-9j]\n50:a/v:*,v\n");
    EXPECT_EQ(globs.typeOfName("Makefile"), "a/make");
    EXPECT_EQ(globs.typeOfName("xmakefile"), "");
    EXPECT_EQ(globs.typeOfName("x.anim7"), "a/anim");
    EXPECT_EQ(globs.typeOfName("x.anim0"), "");
    EXPECT_EQ(globs.typeOfName("x,v"), "a/v");
}

TEST(MimeGlobs, AMoreImportantFileKeepsAwayTheOthersPatterns) {
    MimeGlobs globs;
    globs.add("0:a/b:__NOGLOBS__\n50:a/b:*.new\n");
    globs.add("90:a/b:*.old\n50:a/c:*.c\n");
    EXPECT_EQ(globs.typeOfName("x.old"), "");
    EXPECT_EQ(globs.typeOfName("x.new"), "a/b");
    EXPECT_EQ(globs.typeOfName("x.c"), "a/c");
    EXPECT_EQ(globs.typeOfName("__NOGLOBS__"), "");
}

TEST(MimeGlobs, LinesThatAreNoRulesArePassedOver) {
    const MimeGlobs globs = globsOf("# comment\n\n:\n::\n50\n50:\n50:a/b\n50:a/b:\nx:a/b:*.x\n"
                                    "-1:a/b:*.y\n99999999999:a/b:*.z\n50::*.w\n50:a/ok:*.ok:");
    for (const char* const name : {"a.x", "a.y", "a.z", "a.w", "", "*", "a"}) {
        EXPECT_EQ(globs.typeOfName(name), "") << name;
    }
    EXPECT_EQ(globs.typeOfName("a.ok"), "a/ok");
}

TEST(MimeGlobs, NamesThatNoFileCanHaveHaveNoType) {
    const MimeGlobs globs = globsOf("50:a/all:*\n");
    EXPECT_EQ(globs.typeOfName("x"), "a/all");
    EXPECT_EQ(globs.typeOfName(std::string(255, 'x')), "a/all");
    EXPECT_EQ(globs.typeOfName(std::string(256, 'x')), "");
}

TEST(MimeGlobs, HostilePatternsEnd) {
    std::string text;
    for (int i = 0; i < 5000; ++i) {
        text += "50:a/b:*a*a*a*a*a*a*a*a*a*a*a*a*a*a*" + std::to_string(i) + "b\n";
    }
    EXPECT_EQ(globsOf(text).typeOfName(std::string(255, 'a')), "");
}

TEST(MatchesGlob, StarsMarksAndSets) {
    EXPECT_TRUE(matchesGlob("", ""));
    EXPECT_TRUE(matchesGlob("*", ""));
    EXPECT_TRUE(matchesGlob("a*b*c", "a-b-b-c"));
    EXPECT_FALSE(matchesGlob("a*b*c", "a-c-b"));
    EXPECT_TRUE(matchesGlob("*.so.[0-9]*", "lib.so.6.1"));
    EXPECT_FALSE(matchesGlob("*.so.[0-9]*", "lib.so.x"));
    EXPECT_TRUE(matchesGlob("?", "x"));
    EXPECT_FALSE(matchesGlob("?", ""));
    EXPECT_TRUE(matchesGlob("[!a-c]", "d"));
    EXPECT_FALSE(matchesGlob("[!a-c]", "b"));
    EXPECT_TRUE(matchesGlob("[]x]", "]"));
    EXPECT_TRUE(matchesGlob("[a-]", "-"));
    EXPECT_TRUE(matchesGlob("[a", "[a"));
    EXPECT_TRUE(matchesGlob("[", "["));
    EXPECT_FALSE(matchesGlob("a", "ab"));
    EXPECT_FALSE(matchesGlob("ab", "a"));
}

} // namespace
} // namespace tav::internal
