#include "platform/linux/IconTheme.hpp"
#include "platform/linux/KeyFile.hpp"
#include "testing/TemporaryFolder.hpp"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav::internal {
namespace {

using Names = std::vector<std::string>;

const std::string own = TAV_TESTDATA "/filekinds/user/icons";
const std::string shared = TAV_TESTDATA "/filekinds/system/icons";

std::string find(std::string_view theme, const Names& names) {
    return IconTheme({own, TAV_TESTDATA "/missing", shared}, theme).pathOfIcon(names);
}

TEST(IconTheme, FortyEightPixelsFirstThenLargerThenSmaller) {
    EXPECT_EQ(find("Parrot", {"image-jpeg"}), shared + "/Parrot/48x48/mimetypes/image-jpeg.png");
    EXPECT_EQ(find("Parrot", {"text-html"}), shared + "/Parrot/64x64/mimetypes/text-html.png");
    EXPECT_EQ(find("Parrot", {"image-x-generic"}),
              shared + "/Parrot/16x16/mimetypes/image-x-generic.png");
    EXPECT_EQ(find("Perch", {"inode-directory"}),
              shared + "/Perch/64/mimetypes/inode-directory.png");
}

TEST(IconTheme, TheThemeGoesBeforeTheMoreFittingName) {
    EXPECT_EQ(find("Parrot", {"image-png", "image-x-generic"}),
              shared + "/Parrot/16x16/mimetypes/image-x-generic.png");
    EXPECT_EQ(find("Parrot", {"nothing", "image-jpeg"}),
              shared + "/Parrot/48x48/mimetypes/image-jpeg.png");
}

TEST(IconTheme, InheritedThemesAndTheLastResortFollow) {
    EXPECT_EQ(find("Parrot", {"image-png"}), shared + "/Perch/32/mimetypes/image-png.png");
    EXPECT_EQ(find("Parrot", {"package-x-generic"}),
              shared + "/hicolor/16/mimetypes/package-x-generic.png");
    EXPECT_EQ(find("no-such-theme", {"package-x-generic"}),
              shared + "/hicolor/16/mimetypes/package-x-generic.png");
    EXPECT_EQ(find("", {"package-x-generic"}),
              shared + "/hicolor/16/mimetypes/package-x-generic.png");
}

TEST(IconTheme, TheUsersFolderAddsToATheme) {
    EXPECT_EQ(find("Parrot", {"sheet"}), own + "/Parrot/48x48/mimetypes/sheet.png");
}

TEST(IconTheme, DrawingsAndPathsAreNotFound) {
    EXPECT_EQ(find("Parrot", {"text-x-readme"}), "");
    EXPECT_EQ(find("Parrot", {"../mimetypes/image-jpeg", "", ".", "a/b"}), "");
    EXPECT_EQ(find("../icons/Parrot", {"image-jpeg"}), "");
    EXPECT_EQ(find("Parrot", {}), "");
}

TEST(IconTheme, HostileDescriptionsEnd) {
    const TemporaryFolder folder;
    for (int i = 0; i < 40; ++i) {
        const std::string theme = folder.path("t" + std::to_string(i));
        std::filesystem::create_directories(theme + "/d");
        std::ofstream description(theme + "/index.theme");
        description << "[Icon Theme]\nInherits=";
        for (int j = 0; j < 40; ++j) {
            description << "t" << j << ",";
        }
        description << "\nDirectories=../../d,/d,d";
        for (int j = 0; j < 20000; ++j) {
            description << ",d";
        }
        description << "\n[d]\nSize=48\n[/d]\nSize=48\n[../../d]\nSize=48\n";
    }
    std::filesystem::create_directory(folder.path("d"));
    std::ofstream(folder.path("d/outside.png")) << "x";
    EXPECT_EQ(IconTheme({folder.path()}, "t1").pathOfIcon(Names{"outside"}), "");
    std::filesystem::create_directories(folder.path("t3"));
    std::ofstream(folder.path("t3/d/found.png")) << "x";
    EXPECT_EQ(IconTheme({folder.path()}, "t1").pathOfIcon(Names{"found"}),
              folder.path("t3/d/found.png"));
}

TEST(KeyFile, GroupsKeysAndValues) {
    const KeyFile file("stray=1\n# [a]\n[a]\r\n key = value = more \nkey=second\n#x=1\nnone\n"
                       "[b]\nlist=x, y,,z ,\nnumber=12\n[a]\nother=2\n[]\nx=3");
    EXPECT_EQ(file.value("a", "key"), "value = more");
    EXPECT_EQ(file.value("a", "other"), "2");
    EXPECT_EQ(file.value("a", "stray"), "");
    EXPECT_EQ(file.value("a", "#x"), "");
    EXPECT_EQ(file.value("c", "key"), "");
    EXPECT_EQ(file.list("b", "list"), (Names{"x", "y", "z"}));
    EXPECT_EQ(file.list("b", "none"), Names());
    EXPECT_EQ(file.number("b", "number", 7), 12U);
    EXPECT_EQ(file.number("b", "list", 7), 7U);
    EXPECT_EQ(file.number("b", "none", 7), 7U);
    EXPECT_EQ(KeyFile("[a]\nn=1000001\nm=-1\nk=1 x").number("a", "n", 7), 7U);
    EXPECT_EQ(KeyFile("[a]\nn=1000001\nm=-1\nk=1 x").number("a", "m", 7), 7U);
    EXPECT_EQ(KeyFile("[a]\nn=1000001\nm=-1\nk=1 x").number("a", "k", 7), 7U);
}

} // namespace
} // namespace tav::internal
