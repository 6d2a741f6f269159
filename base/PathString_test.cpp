#include "base/PathString.hpp"
#include "testing/Golden.hpp"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {

namespace {

const std::string home = "/home/user";

nlohmann::json result(const GoldenCase& golden) {
    using Strings = std::vector<std::string>;
    if (golden.op == "pathWithComponents") {
        return pathWithComponents(golden.in.get<Strings>());
    }
    if (golden.in.is_object()) {
        const auto self = golden.in.at("self").get<std::string>();
        const auto argument = golden.in.at("arg").get<std::string>();
        if (golden.op == "stringByAppendingPathComponent") {
            return stringByAppendingPathComponent(self, argument);
        }
        if (golden.op == "stringByAppendingPathExtension") {
            return stringByAppendingPathExtension(self, argument);
        }
        return nullptr;
    }
    const auto path = golden.in.get<std::string>();
    if (golden.op == "lastPathComponent") {
        return std::string(lastPathComponent(path));
    }
    if (golden.op == "pathExtension") {
        return std::string(pathExtension(path));
    }
    if (golden.op == "stringByDeletingPathExtension") {
        return stringByDeletingPathExtension(path);
    }
    if (golden.op == "stringByDeletingLastPathComponent") {
        return stringByDeletingLastPathComponent(path);
    }
    if (golden.op == "pathComponents") {
        return pathComponents(path);
    }
    if (golden.op == "isAbsolutePath") {
        return isAbsolutePath(path);
    }
    if (golden.op == "stringByExpandingTildeInPath") {
        return stringByExpandingTildeInPath(path, home);
    }
    if (golden.op == "stringByAbbreviatingWithTildeInPath") {
        return stringByAbbreviatingWithTildeInPath(path, home);
    }
    if (golden.op == "stringByStandardizingPath") {
        return stringByStandardizingPath(path, home);
    }
    return nullptr;
}

TEST(PathString, GoldenCases) {
    const std::vector<GoldenCase> cases = goldenCases("paths.json");
    EXPECT_GE(cases.size(), 268U);
    for (const GoldenCase& golden : cases) {
        EXPECT_EQ(result(golden), golden.out) << golden.description();
    }
}

TEST(PathString, NamesWithoutAnExtensionStay) {
    for (const char* path : {"a.", ".", "..", "/a/..", ".a", "a.b/c"}) {
        EXPECT_EQ(pathExtension(path), "") << path;
        EXPECT_EQ(stringByDeletingPathExtension(path), path);
    }
    EXPECT_EQ(pathExtension("..a"), "a");
    EXPECT_EQ(stringByDeletingPathExtension("..a"), ".");
}

TEST(PathString, RebuiltPathsHaveSingleSlashes) {
    EXPECT_EQ(stringByDeletingPathExtension("//a//b.c//"), "/a/b");
    EXPECT_EQ(stringByAppendingPathExtension("//a//b//", "c"), "/a/b.c");
    EXPECT_EQ(stringByAppendingPathComponent("/", "//a//"), "/a");
    EXPECT_EQ(stringByAppendingPathComponent("//", ""), "/");
    EXPECT_EQ(stringByAppendingPathComponent("", "/a"), "/a");
    EXPECT_EQ(pathWithComponents(std::vector<std::string>{"", "a", "", "b/", "/"}), "a/b");
}

TEST(PathString, WhatHasNoNameHasNoExtensionEither) {
    EXPECT_EQ(stringByAppendingPathExtension("", "a"), "");
    EXPECT_EQ(stringByAppendingPathExtension("//", "a"), "/");
    EXPECT_EQ(stringByAppendingPathExtension("a", ""), "a.");
}

TEST(PathString, OnlyTheOwnTildeIsKnown) {
    EXPECT_EQ(stringByExpandingTildeInPath("~other/a", home), "~other/a");
    EXPECT_EQ(stringByExpandingTildeInPath("a/~", home), "a/~");
    EXPECT_EQ(stringByExpandingTildeInPath("~//a/", home + "/"), "/home/user/a");
    EXPECT_EQ(stringByExpandingTildeInPath("~/a", "/"), "/a");
    EXPECT_EQ(stringByExpandingTildeInPath("~/a", ""), "~/a");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("/home//user/a/", home + "/"), "~/a");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("/a", "/"), "~/a");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("/a", ""), "/a");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("home/user", home), "home/user");
}

TEST(PathString, StandardizingNeverLeavesTheRoot) {
    EXPECT_EQ(stringByStandardizingPath("/..", home), "/");
    EXPECT_EQ(stringByStandardizingPath("/../../a/../b/.", home), "/b");
    EXPECT_EQ(stringByStandardizingPath("~/../..//..", home), "/");
    EXPECT_EQ(stringByStandardizingPath("~other/../a", home), "~other/../a");
    EXPECT_EQ(stringByStandardizingPath("./a/.", home), "a");
    EXPECT_EQ(stringByStandardizingPath("./.", home), ".");
}

// Paths of few characters, so that slashes, dots and tildes meet in every way, and bytes that are
// no UTF-8.
TEST(PathString, OperationsFitTogether) {
    constexpr std::string_view alphabet = "//..~ab\xC3\xFF";
    std::mt19937 random(20091231);
    for (int round = 0; round < 20000; ++round) {
        std::string path;
        for (auto length = random() % 9; length > 0; --length) {
            path += alphabet[random() % alphabet.size()];
        }
        const std::string whole = pathWithComponents(pathComponents(path));
        EXPECT_EQ(whole.find("//"), std::string::npos);
        EXPECT_EQ(lastPathComponent(whole), lastPathComponent(path));
        if (whole != "/") {
            EXPECT_EQ(stringByAppendingPathComponent(stringByDeletingLastPathComponent(path),
                                                     lastPathComponent(path)),
                      whole);
        }
        const std::string_view extension = pathExtension(path);
        const std::string stem = stringByDeletingPathExtension(path);
        EXPECT_EQ(extension.empty() ? stem : stringByAppendingPathExtension(stem, extension),
                  whole);
        const std::string inHome = stringByAppendingPathComponent(home, path);
        const std::string abbreviated = stringByAbbreviatingWithTildeInPath(inHome, home);
        EXPECT_TRUE(abbreviated.starts_with('~'));
        EXPECT_EQ(stringByExpandingTildeInPath(abbreviated, home), inHome);
        const std::string standard = stringByStandardizingPath(path, home);
        // A tilde that came to the front would be expanded.
        if (path.starts_with('~') || !standard.starts_with('~')) {
            EXPECT_EQ(stringByStandardizingPath(standard, home), standard) << path;
        }
    }
}

} // namespace

} // namespace tav
