#include "fileinfo/local/DesktopFolders.hpp"
#include "fileinfo/local/FolderTypes.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"

namespace tav {
namespace {

using internal::desktopFolder;
using internal::FolderDomain;
using internal::FolderType;

using SpecialFoldersTest = MacFileInfoInMemory;

std::string pathOf(const FileInfoPtr& item) { return item ? item->path() : "nothing"; }

std::string found(FolderDomain domain, FolderType type, bool create) {
    return TavMacFileInfo::findFolderPath(static_cast<std::int16_t>(domain),
                                          static_cast<std::uint32_t>(type), create)
        .value_or("nothing");
}

std::string fromSettings(std::string_view settings) {
    return internal::desktopFolderFromSettings(settings, "MUSIC", "/home/user");
}

TEST_F(SpecialFoldersTest, LibrariesAndApplicationSupport) {
    EXPECT_EQ(pathOf(TavMacFileInfo::userLibraryFolder()), "/home/user/.local/share");
    EXPECT_EQ(pathOf(TavMacFileInfo::userAppSupportFolder()), "/home/user/.local/share");
    EXPECT_EQ(pathOf(TavMacFileInfo::globalLibraryFolder()), "/usr/local/share");
    EXPECT_EQ(pathOf(TavMacFileInfo::globalAppSupportFolder()), "/usr/local/share");
    folders.dataFolder = "";
    EXPECT_EQ(TavMacFileInfo::userLibraryFolder(), nullptr);
}

TEST_F(SpecialFoldersTest, DirectoriesByNumber) {
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(9, 1)), "/home/user/Documents");
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(12, 1)), "/home/user/Desktop");
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(13, 1)), "/home/user/.cache");
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(15, 1)), "/home/user/Downloads");
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(17, 1)), "/home/user/Videos");
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(18, 1)), "/home/user/Music");
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(19, 1)), "/home/user/Pictures");
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(5, 3)), "/usr/local/share") << "the last one";
    EXPECT_EQ(pathOf(TavMacFileInfo::_specialFolder(9, 3)), "/home/user/Documents");
    EXPECT_EQ(TavMacFileInfo::_specialFolder(9, 2), nullptr);
    EXPECT_EQ(TavMacFileInfo::_specialFolder(5, 8), nullptr);
    EXPECT_EQ(TavMacFileInfo::_specialFolder(77, 1), nullptr);
}

TEST_F(SpecialFoldersTest, TheTemporaryFolder) {
    EXPECT_EQ(pathOf(TavMacFileInfo::systemTempFolder()), "/tmp/tav-1000");
    EXPECT_EQ(pathOf(at("/a")->tempFolder()), "/tmp/tav-1000");
    folders.temporaryFolder = "";
    EXPECT_EQ(TavMacFileInfo::systemTempFolder(), nullptr);
}

TEST_F(SpecialFoldersTest, FoldersByTypeAndDomain) {
    memory.addFolder("/home/user/Documents");
    memory.addFolder("/usr/local/share");
    EXPECT_EQ(found(FolderDomain::User, FolderType::Documents, false), "/home/user/Documents");
    EXPECT_EQ(found(FolderDomain::OnSystemDisk, FolderType::Documents, false),
              "/home/user/Documents");
    EXPECT_EQ(found(FolderDomain::OnAppropriateDisk, FolderType::CurrentUser, false), "/home/user");
    EXPECT_EQ(found(FolderDomain::Local, FolderType::ApplicationSupport, false),
              "/usr/local/share");
    EXPECT_EQ(found(FolderDomain::Local, FolderType::Library, false), "/usr/local/share");
    EXPECT_EQ(found(FolderDomain::Local, FolderType::Documents, true), "nothing");
    EXPECT_EQ(found(FolderDomain::System, FolderType::Library, true), "nothing");
    EXPECT_EQ(found(FolderDomain::Network, FolderType::Library, true), "nothing");
    EXPECT_EQ(found(static_cast<FolderDomain>(1), FolderType::Library, true), "nothing");
    EXPECT_EQ(found(FolderDomain::User, static_cast<FolderType>(0x3F3F3F3F), true), "nothing");
    EXPECT_EQ(pathOf(TavMacFileInfo::findFolder(-32763, 0x646F6373, false)),
              "/home/user/Documents");
    EXPECT_EQ(TavMacFileInfo::findFolder(-32763, 0x6465736B, false), nullptr);
}

TEST_F(SpecialFoldersTest, AMissingFolderIsMadeWhenThatIsAskedFor) {
    const std::vector<std::pair<FolderType, std::string>> all = {
        {FolderType::Documents, "/home/user/Documents"},
        {FolderType::Desktop, "/home/user/Desktop"},
        {FolderType::Downloads, "/home/user/Downloads"},
        {FolderType::Music, "/home/user/Music"},
        {FolderType::Pictures, "/home/user/Pictures"},
        {FolderType::Movies, "/home/user/Videos"},
        {FolderType::Public, "/home/user/Public"},
        {FolderType::CurrentUser, "/home/user"},
        {FolderType::Library, "/home/user/.local/share"},
        {FolderType::ApplicationSupport, "/home/user/.local/share"},
        {FolderType::Preferences, "/home/user/.config"},
        {FolderType::CachedData, "/home/user/.cache"},
        {FolderType::Temporary, "/tmp/tav-1000"},
    };
    for (const auto& [type, path] : all) {
        memory.removeAll(path);
        EXPECT_EQ(found(FolderDomain::User, type, false), "nothing") << path;
        EXPECT_FALSE(at(path)->exists()) << path;
        EXPECT_EQ(found(FolderDomain::User, type, true), path);
        EXPECT_TRUE(at(path)->isFolder()) << path;
    }
    memory.removeAll("/home/user/Music");
    memory.addFile("/home/user/Music", "a file");
    EXPECT_EQ(found(FolderDomain::User, FolderType::Music, true), "nothing");
    EXPECT_TRUE(at("/home/user/Music")->isFile()) << "is left alone";
}

TEST_F(SpecialFoldersTest, TheUsersSettingsSayWhereFoldersAre) {
    EXPECT_EQ(desktopFolder("MUSIC"), "/home/user/Music");
    memory.addFile("/home/user/.config/user-dirs.dirs", "# made by a tool\n"
                                                        "XDG_MUSIC_DIR=\"$HOME/Musik\"\n"
                                                        "XDG_DOCUMENTS_DIR=\"/data/docs\"\n");
    EXPECT_EQ(desktopFolder("MUSIC"), "/home/user/Musik");
    EXPECT_EQ(desktopFolder("DOCUMENTS"), "/data/docs");
    EXPECT_EQ(desktopFolder("TEMPLATES"), "/home/user/Templates");
    EXPECT_EQ(desktopFolder("ELSE"), "");
    folders.homeFolder = "";
    EXPECT_EQ(desktopFolder("MUSIC"), "");
}

TEST_F(SpecialFoldersTest, LinesOfTheSettings) {
    EXPECT_EQ(fromSettings("XDG_MUSIC_DIR=\"$HOME/a\"\nXDG_MUSIC_DIR=\"$HOME/b\""), "/home/user/b");
    EXPECT_EQ(fromSettings("  XDG_MUSIC_DIR\t=  \"$HOME/a b\" # x"), "/home/user/a b");
    EXPECT_EQ(fromSettings("XDG_MUSIC_DIR=\"$HOME/\""), "/home/user");
    EXPECT_EQ(fromSettings("XDG_MUSIC_DIR=\"$HOME\""), "/home/user");
    EXPECT_EQ(fromSettings(R"(XDG_MUSIC_DIR="$HOME/\"a\\b\$c")"), R"(/home/user/"a\b$c)");
    EXPECT_EQ(fromSettings("XDG_MUSIC_DIR=\"$HOME/\xFF\""), "/home/user/\xFF");
    for (const char* line :
         {"", "\n\n", "XDG_MUSIC_DIR", "XDG_MUSIC_DIR=", "XDG_MUSIC_DIR=$HOME/a",
          "XDG_MUSIC_DIR=\"$HOME/a", "XDG_MUSIC_DIR=\"relative\"", "XDG_MUSIC_DIR=\"$HOMEX/a\"",
          "XDG_MUSIC_DIR=\"\"", "XDG_MUSICX_DIR=\"$HOME/a\"", "#XDG_MUSIC_DIR=\"$HOME/a\"",
          "XDG_MUSIC_DIR=\"\\", "MUSIC=\"$HOME/a\""}) {
        EXPECT_EQ(fromSettings(line), "") << line;
    }
}

} // namespace
} // namespace tav
