#include "foundation/HomePath.hpp"
#include "platform/memory/MemoryUserFolders.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

class HomePath : public testing::Test {
  protected:
    HomePath() { folders_.homeFolder = "/home/user"; }

    MemoryUserFolders folders_;
    UserFolders::Replacement replacement_{folders_};
};

TEST_F(HomePath, TheTildeIsTheUsersHome) {
    EXPECT_EQ(stringByExpandingTildeInPath("~/Music"), "/home/user/Music");
    EXPECT_EQ(stringByExpandingTildeInPath("~"), "/home/user");
    EXPECT_EQ(stringByExpandingTildeInPath("/a/~"), "/a/~");
    EXPECT_EQ(stringByExpandingTildeInPath("~other/x"), "~other/x");
    EXPECT_EQ(stringByExpandingTildeInPath(""), "");
}

TEST_F(HomePath, WhatLiesInTheHomeIsWrittenWithATilde) {
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("/home/user/Music"), "~/Music");
    EXPECT_EQ(stringByAbbreviatingWithTildeInPath("/home/username"), "/home/username");
}

TEST_F(HomePath, AStandardPathHasNoTildeAndNoDots) {
    EXPECT_EQ(stringByStandardizingPath("~/a/./../b/"), "/home/user/b");
    EXPECT_EQ(stringByStandardizingPath("/a//b/../c"), "/a/c");
}

TEST_F(HomePath, WithoutAHomeNothingIsExpanded) {
    folders_.homeFolder = "";
    EXPECT_EQ(stringByExpandingTildeInPath("~/Music"), "~/Music");
}

} // namespace
} // namespace tav
