#include "platform/Bundle.hpp"
#include "platform/LibraryResources.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "testing/TemporaryFolder.hpp"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Names = std::vector<std::string>;

TEST(ResourceFolders, BundleThenInstalledThenSource) {
    EXPECT_EQ(
        internal::resourceFolders("/b/X.app/Contents/MacOS/X", "/usr/share/tav", "/src", "/b"),
        (Names{"/b/X.app/Contents/Resources", "/b/X.app/Resources", "/b/X.app", "/usr/share/tav",
               "/src"}));
    EXPECT_EQ(
        internal::resourceFolders("/usr/bin/x", "/usr/share/tav", "/src", "/b"),
        (Names{"/usr/bin/Contents/Resources", "/usr/bin/Resources", "/usr/bin", "/usr/share/tav"}));
}

TEST(ResourceFolders, TheSourceTreeIsForProgramsInTheBuildFolderAlone) {
    const auto hasSource = [](const std::string& executable) {
        return internal::resourceFolders(executable, "/i", "/src", "/b").back() == "/src";
    };
    EXPECT_TRUE(hasSource("/b/bin/x"));
    EXPECT_FALSE(hasSource("/bb/bin/x"));
    EXPECT_FALSE(hasSource("/opt/b/x"));
}

TEST(ResourceFolders, AProgramThatCannotBeToldHasTheInstalledOnes) {
    EXPECT_EQ(internal::resourceFolders(std::nullopt, "/i", "/src", "/b"), Names{"/i"});
}

TEST(ResourceIn, TheFirstFolderThatHasTheFile) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path("a/sub"));
    std::filesystem::create_directories(folder.path("b/sub"));
    std::filesystem::create_directories(folder.path("a/folder.txt"));
    for (const char* const name :
         {"a/one.txt", "b/one.txt", "b/sub/two.txt", "b/plain", "out.txt", "b/folder.txt"}) {
        std::ofstream(folder.path(name)) << name;
    }
    const Names folders = {folder.path("missing"), folder.path("a"), folder.path("b")};
    EXPECT_EQ(internal::resourceIn(folders, "one", "txt"), folder.path("a/one.txt"));
    EXPECT_EQ(internal::resourceIn(folders, "sub/two", "txt"), folder.path("b/sub/two.txt"));
    EXPECT_EQ(internal::resourceIn(folders, "plain", ""), folder.path("b/plain"));
    EXPECT_EQ(internal::resourceIn(folders, "folder", "txt"), folder.path("b/folder.txt"));
    EXPECT_EQ(internal::resourceIn(folders, "none", "txt"), std::nullopt);
    EXPECT_EQ(internal::resourceIn(folders, "../out", "txt"), std::nullopt);
    EXPECT_EQ(internal::resourceIn(folders, "sub/../../out", "txt"), std::nullopt);
    EXPECT_EQ(internal::resourceIn(folders, "", ""), std::nullopt);
    EXPECT_EQ(internal::resourceIn(folders, folder.path("out"), "txt"), std::nullopt);
    EXPECT_EQ(internal::resourceIn(folders, std::string_view("plain\0x", 7), ""), std::nullopt);
}

TEST(LibraryResources, TheSourceTreeServesAnUninstalledProgram) {
    const auto path = libraryResource("icons/genericfolder", "png");
    ASSERT_TRUE(path);
    EXPECT_TRUE(path->ends_with("/icons/genericfolder.png"));
    EXPECT_EQ(libraryResource("icons/none", "png"), std::nullopt);
}

TEST(LibraryResources, AreOfTheHostWhateverStandsInForIt) {
    MemoryFileSystem files;
    const FileSystem::Replacement replacement(files);
    EXPECT_TRUE(libraryResource("icons/genericfolder", "png"));
}

TEST(LibraryResources, ThePicturesAreDrawnAndReadable) {
    if (!libraryImage("icons/genericfolder")) {
        GTEST_SKIP() << "built without libpng, or it is missing here";
    }
    for (const char* const name : {"icons/genericfolder", "icons/genericfile"}) {
        const std::shared_ptr<Image> image = libraryImage(name);
        ASSERT_NE(image, nullptr) << name;
        EXPECT_EQ(image->size(), (Image::Size{128, 128}));
        // A corner of nothing, a middle of something.
        EXPECT_EQ(image->rgba()[3], 0);
        EXPECT_EQ(image->rgba()[(std::size_t{64} * 128 + 64) * 4 + 3], 255);
    }
    EXPECT_EQ(libraryImage("icons/none"), nullptr);
    EXPECT_EQ(libraryImage("icons/genericfolder.svg"), nullptr);
}

TEST(BundlePathOfExecutable, TheFolderAroundContentsOrTheFolderItself) {
    EXPECT_EQ(bundlePathOfExecutable("/a/X.app/Contents/MacOS/X"), "/a/X.app");
    EXPECT_EQ(bundlePathOfExecutable("/a/Contents/X"), "/a/Contents");
    EXPECT_EQ(bundlePathOfExecutable("/a/MacOS/X"), "/a/MacOS");
    EXPECT_EQ(bundlePathOfExecutable("/usr/bin/x"), "/usr/bin");
}

} // namespace
} // namespace tav
