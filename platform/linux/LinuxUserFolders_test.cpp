#include "platform/FileSystem.hpp"
#include "platform/linux/LinuxUserFolders.hpp"
#include "testing/TemporaryFolder.hpp"

#include <map>
#include <string>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tav {
namespace {

class LinuxUserFoldersTest : public ::testing::Test {
  protected:
    TemporaryFolder folder;
    std::map<std::string, std::string> environment{{"HOME", "/home/u"}};
    std::string accountHome = "/account/u";
    std::uint32_t user = ::geteuid();
    LinuxUserFolders folders{internal::UserFolderSources{
        [this](const char* name) {
            const auto found = environment.find(name);
            return found == environment.end() ? std::nullopt : std::optional(found->second);
        },
        [this] { return user; }, [this] { return accountHome; }, folder.path()}};

    std::string made(std::string_view name, ::mode_t permissions) {
        std::string path = folder.path(name);
        EXPECT_EQ(::mkdir(path.c_str(), 0700), 0);
        EXPECT_EQ(::chmod(path.c_str(), permissions), 0);
        return path;
    }
    std::string ownTemporary() { return folder.path("tav-" + std::to_string(user)); }
    static ::mode_t permissionsOf(const std::string& path) {
        struct ::stat status {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0);
        return status.st_mode & 07777U;
    }
};

TEST_F(LinuxUserFoldersTest, IsWhatCurrentBeginsWith) {
    EXPECT_EQ(&UserFolders::current(), &internal::realUserFolders());
    EXPECT_NE(dynamic_cast<LinuxUserFolders*>(&UserFolders::current()), nullptr);
}

TEST_F(LinuxUserFoldersTest, TheHostsOwnAnswersAreAbsolute) {
    UserFolders& host = UserFolders::current();
    for (const std::string& path :
         {host.home(), host.data(), host.globalData(), host.configuration(), host.caches()}) {
        EXPECT_TRUE(path.starts_with('/')) << path;
        EXPECT_TRUE(path == "/" || !path.ends_with('/')) << path;
    }
    const std::string temporary = host.temporary();
    ASSERT_NE(temporary, "");
    struct ::stat status {};
    ASSERT_EQ(::lstat(temporary.c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(status.st_uid, ::geteuid());
    EXPECT_EQ(status.st_mode & 022U, 0U);
}

TEST_F(LinuxUserFoldersTest, TheDefaultsLieInTheHomeFolder) {
    EXPECT_EQ(folders.home(), "/home/u");
    EXPECT_EQ(folders.data(), "/home/u/.local/share");
    EXPECT_EQ(folders.configuration(), "/home/u/.config");
    EXPECT_EQ(folders.caches(), "/home/u/.cache");
    EXPECT_EQ(folders.globalData(), "/usr/local/share");
}

TEST_F(LinuxUserFoldersTest, TheHomeFolderIsTheAccountsWhereTheEnvironmentHasNone) {
    environment.clear();
    EXPECT_EQ(folders.home(), "/account/u");
    EXPECT_EQ(folders.data(), "/account/u/.local/share");
    environment["HOME"] = "";
    EXPECT_EQ(folders.home(), "/account/u");
    environment["HOME"] = "relative/u";
    EXPECT_EQ(folders.home(), "/account/u");
}

TEST_F(LinuxUserFoldersTest, WithoutAHomeFolderOnlyVariablesTell) {
    environment.clear();
    accountHome = "";
    EXPECT_EQ(folders.home(), "");
    EXPECT_EQ(folders.data(), "");
    EXPECT_EQ(folders.configuration(), "");
    EXPECT_EQ(folders.caches(), "");
    environment["XDG_CACHE_HOME"] = "/c";
    EXPECT_EQ(folders.caches(), "/c");
    accountHome = "nowhere";
    EXPECT_EQ(folders.home(), "");
}

TEST_F(LinuxUserFoldersTest, VariablesGoBeforeTheDefaults) {
    environment["XDG_DATA_HOME"] = "/x/data";
    environment["XDG_CONFIG_HOME"] = "/x/configuration";
    environment["XDG_CACHE_HOME"] = "/x/caches";
    EXPECT_EQ(folders.home(), "/home/u");
    EXPECT_EQ(folders.data(), "/x/data");
    EXPECT_EQ(folders.configuration(), "/x/configuration");
    EXPECT_EQ(folders.caches(), "/x/caches");
}

TEST_F(LinuxUserFoldersTest, VariablesThatAreNotAbsoluteAreIgnored) {
    for (const char* const text : {"", "data", "./data", "~/data", " /data"}) {
        environment["XDG_DATA_HOME"] = text;
        environment["XDG_CONFIG_HOME"] = text;
        environment["XDG_CACHE_HOME"] = text;
        EXPECT_EQ(folders.data(), "/home/u/.local/share");
        EXPECT_EQ(folders.configuration(), "/home/u/.config");
        EXPECT_EQ(folders.caches(), "/home/u/.cache");
    }
}

TEST_F(LinuxUserFoldersTest, SlashesAtTheEndGo) {
    environment["HOME"] = "/home/u//";
    environment["XDG_CACHE_HOME"] = "/c/";
    EXPECT_EQ(folders.home(), "/home/u");
    EXPECT_EQ(folders.data(), "/home/u/.local/share");
    EXPECT_EQ(folders.caches(), "/c");
    environment["HOME"] = "///";
    EXPECT_EQ(folders.home(), "/");
    EXPECT_EQ(folders.data(), "/.local/share");
}

TEST_F(LinuxUserFoldersTest, NamesAreBytes) {
    environment["HOME"] = "/home/\xFF\xC3";
    EXPECT_EQ(folders.home(), "/home/\xFF\xC3");
    EXPECT_EQ(folders.configuration(), "/home/\xFF\xC3/.config");
}

TEST_F(LinuxUserFoldersTest, GlobalDataIsTheFirstFolderOfTheList) {
    const std::string first = made("first", 0755);
    const std::string second = made("second", 0755);
    environment["XDG_DATA_DIRS"] =
        ":relative:" + folder.path("missing") + ":" + first + "/:" + second;
    EXPECT_EQ(folders.globalData(), first);
    environment["XDG_DATA_DIRS"] = second + ":" + first;
    EXPECT_EQ(folders.globalData(), second);
    for (const std::string& list :
         {std::string(), std::string(":"), std::string("a:b:"), folder.path("missing")}) {
        environment["XDG_DATA_DIRS"] = list;
        EXPECT_EQ(folders.globalData(), "/usr/local/share") << list;
    }
}

TEST_F(LinuxUserFoldersTest, TemporaryIsThePrivateFolderThatTheEnvironmentNames) {
    for (const ::mode_t permissions : {0700U, 0755U}) {
        const std::string own = made("own" + std::to_string(permissions), permissions);
        environment["TMPDIR"] = own + "/";
        EXPECT_EQ(folders.temporary(), own);
    }
    EXPECT_NE(::access(ownTemporary().c_str(), F_OK), 0);
}

TEST_F(LinuxUserFoldersTest, TemporaryIsNotWhereOthersMayWriteOrALinkLeads) {
    const std::string own = made("own", 0700);
    ASSERT_EQ(::symlink(own.c_str(), folder.path("link").c_str()), 0);
    ASSERT_TRUE(FileSystem::current().writeFile(folder.path("file"), {}, 0600).isNone());
    made("group", 0770);
    made("others", 0702);
    made("all", 01777);
    made("unusable", 0500);
    for (const char* const name :
         {"group", "others", "all", "unusable", "link", "file", "missing"}) {
        environment["TMPDIR"] = folder.path(name);
        EXPECT_EQ(folders.temporary(), ownTemporary()) << name;
    }
    environment["TMPDIR"] = "relative";
    EXPECT_EQ(folders.temporary(), ownTemporary());
    environment["TMPDIR"] = own;
    EXPECT_EQ(folders.temporary(), own);
}

TEST_F(LinuxUserFoldersTest, TemporaryIsNotAnotherUsersFolder) {
    environment["TMPDIR"] = made("own", 0700);
    ++user;
    EXPECT_EQ(folders.temporary(), ""); // the one that was made is not that user's
    EXPECT_EQ(permissionsOf(ownTemporary()), 0700U);
}

TEST_F(LinuxUserFoldersTest, TemporaryIsMadeForTheUserAlone) {
    EXPECT_EQ(folders.temporary(), ownTemporary());
    EXPECT_EQ(permissionsOf(ownTemporary()), 0700U);
    EXPECT_EQ(folders.temporary(), ownTemporary());
}

TEST_F(LinuxUserFoldersTest, TemporaryIsNotBelievedWhenSomebodyPlantedIt) {
    const std::string own = made("own", 0700);
    ASSERT_EQ(::symlink(own.c_str(), ownTemporary().c_str()), 0);
    EXPECT_EQ(folders.temporary(), "");
    ASSERT_EQ(::unlink(ownTemporary().c_str()), 0);
    ASSERT_TRUE(FileSystem::current().writeFile(ownTemporary(), {}, 0700).isNone());
    EXPECT_EQ(folders.temporary(), "");
    ASSERT_EQ(::unlink(ownTemporary().c_str()), 0);
    for (const ::mode_t permissions : {0777U, 0755U, 0701U, 0500U}) {
        ASSERT_EQ(::mkdir(ownTemporary().c_str(), 0700), 0);
        ASSERT_EQ(::chmod(ownTemporary().c_str(), permissions), 0);
        EXPECT_EQ(folders.temporary(), "") << permissions;
        ASSERT_EQ(::rmdir(ownTemporary().c_str()), 0);
    }
    EXPECT_EQ(folders.temporary(), ownTemporary());
}

TEST_F(LinuxUserFoldersTest, TemporaryIsEmptyWhereNoneCanBeMade) {
    LinuxUserFolders missing{internal::UserFolderSources{
        [](const char*) { return std::optional<std::string>(); }, [] { return 0U; },
        [] { return std::string(); }, folder.path("missing")}};
    EXPECT_EQ(missing.temporary(), "");
}

} // namespace
} // namespace tav
