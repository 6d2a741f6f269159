#include "foundation/FileManager.hpp"
#include "foundation/FileManager_test.hpp"
#include "testing/Golden.hpp"

namespace tav {
namespace {

class UniqueFilePath : public FileManagerTest {
  protected:
    std::string unique(std::string_view name) {
        const std::string found = uniqueFilePath(path(name));
        EXPECT_TRUE(found.starts_with(root + '/')) << found;
        return found.substr(root.size() + 1);
    }
};

INSTANTIATE_TEST_SUITE_P(Worlds, UniqueFilePath, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST(UniqueFilePathVectors, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "uniqueFilePath")) {
        MemoryFileSystem memory;
        for (const auto& folder : golden.in["folders"]) {
            memory.addFolder(folder.get<std::string>());
        }
        for (const auto& file : golden.in["files"]) {
            memory.addFile(file.get<std::string>(), "");
        }
        const FileSystem::Replacement replacement(memory);
        EXPECT_EQ(uniqueFilePath(golden.in["path"].get<std::string>()),
                  golden.out.get<std::string>())
            << golden.description();
    }
}

TEST_P(UniqueFilePath, AFreePathIsAnsweredAsItIs) {
    EXPECT_EQ(unique("a.txt"), "a.txt");
    EXPECT_EQ(unique("missing/a.tar.gz"), "missing/a.tar.gz");
    EXPECT_EQ(unique("README"), "README");
    EXPECT_EQ(unique(".hidden"), ".hidden");
    EXPECT_EQ(unique("folder/"), "folder/");
}

TEST_P(UniqueFilePath, NumbersStandBeforeTheExtension) {
    makeFile("a.tar.gz");
    EXPECT_EQ(unique("a.tar.gz"), "a.tar 1.gz");
    for (int number = 1; number < 12; ++number) {
        makeFile("a.tar " + std::to_string(number) + ".gz");
    }
    EXPECT_EQ(unique("a.tar.gz"), "a.tar 12.gz");
}

TEST_P(UniqueFilePath, BehindAFolderTheNumberFollowsTheWholeName) {
    makeFolder("a.txt");
    EXPECT_EQ(unique("a.txt"), "a.txt 1");
    makeFolder("a.txt 1");
    EXPECT_EQ(unique("a.txt"), "a.txt 2");
    // A file there: back to the other form.
    makeFile("a.txt 2");
    EXPECT_EQ(unique("a.txt"), "a 3.txt");
}

TEST_P(UniqueFilePath, ATakenNameWithoutExtensionHasTheEmptyOne) {
    makeFile("README");
    EXPECT_EQ(unique("README"), "README.");
    makeFile("README.");
    EXPECT_EQ(unique("README"), "README 1.");
    makeFolder("README 1.");
    EXPECT_EQ(unique("README"), "README 2");
    makeFile(".hidden");
    EXPECT_EQ(unique(".hidden"), ".hidden.");
}

TEST_P(UniqueFilePath, LinksAreFollowed) {
    makeFile("target");
    makeFolder("folder");
    makeLink("file.txt", "target");
    makeLink("folder.txt", "folder");
    makeLink("nothing.txt", "missing");
    makeLink("loop.txt", "loop.txt");
    EXPECT_EQ(unique("file.txt"), "file 1.txt");
    EXPECT_EQ(unique("folder.txt"), "folder.txt 1");
    EXPECT_EQ(unique("nothing.txt"), "nothing.txt");
    EXPECT_EQ(unique("loop.txt"), "loop.txt");
}

TEST_P(UniqueFilePath, NamesThatAreNoUTF8Survive) {
    makeFile("a\xFF%@.t\xFExt");
    EXPECT_EQ(unique("a\xFF%@.t\xFExt"), "a\xFF%@ 1.t\xFExt");
}

TEST_P(UniqueFilePath, ATrailingSlashGoesWithATakenName) {
    makeFile("a.txt");
    EXPECT_EQ(unique("a.txt/"), "a 1.txt");
}

TEST_P(UniqueFilePath, WhatCannotBeLookedAtIsFree) {
    makeFile("a.txt");
    faulty.failCall(1, EACCES);
    EXPECT_EQ(unique("a.txt"), "a.txt");
    faulty.failCall(faulty.callCount() + 2, EACCES);
    EXPECT_EQ(unique("a.txt"), "a.txt");
    const std::string tooLong(300, 'x');
    EXPECT_EQ(unique(tooLong + ".txt"), tooLong + ".txt");
}

TEST_P(UniqueFilePath, OddPathsEnd) {
    EXPECT_EQ(uniqueFilePath(""), "");
    EXPECT_EQ(uniqueFilePath("/"), "/ 1");
}

TEST(UniqueFilePathRelative, IsRelativeToo) {
    MemoryFileSystem memory;
    memory.addFile("/a.txt", "");
    const FileSystem::Replacement replacement(memory);
    EXPECT_EQ(uniqueFilePath("a.txt"), "a 1.txt");
}

} // namespace
} // namespace tav
