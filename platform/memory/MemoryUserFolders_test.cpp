#include "platform/memory/MemoryUserFolders.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(MemoryUserFolders, AnswersWhatIsSet) {
    MemoryUserFolders folders;
    const UserFolders::Replacement replacement(folders);
    EXPECT_EQ(UserFolders::current().home(), "/home/user");
    EXPECT_EQ(UserFolders::current().data(), "/home/user/.local/share");
    EXPECT_EQ(UserFolders::current().globalData(), "/usr/local/share");
    EXPECT_EQ(UserFolders::current().configuration(), "/home/user/.config");
    EXPECT_EQ(UserFolders::current().caches(), "/home/user/.cache");
    EXPECT_EQ(UserFolders::current().temporary(), "/tmp/tav-1000");
    folders.homeFolder = "";
    folders.temporaryFolder = "/tmp/other";
    EXPECT_EQ(UserFolders::current().home(), "");
    EXPECT_EQ(UserFolders::current().temporary(), "/tmp/other");
}

} // namespace
} // namespace tav
