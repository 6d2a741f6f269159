#include "foundation/FileManager.hpp"
#include "foundation/FileManager_test.hpp"
#include "foundation/FolderTree.hpp"
#include "testing/Golden.hpp"

#include <sys/stat.h>

namespace tav {
namespace {

class RemoveDirectoryIfEmpty : public FileManagerTest {
  protected:
    /// Whether the folder "top" goes.
    bool goes(const Names& namesToIgnore = {}) {
        removeDirectoryIfEmpty(path("top"), namesToIgnore);
        return !stands("top");
    }
    void SetUp() override { makeFolder("top"); }
};
class RemoveEmptyDirectories : public FileManagerTest {
  protected:
    bool goes() {
        removeEmptyDirectoriesFromPath(path("top"));
        return !stands("top");
    }
    void SetUp() override { makeFolder("top"); }
};

INSTANTIATE_TEST_SUITE_P(Worlds, RemoveDirectoryIfEmpty, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);
INSTANTIATE_TEST_SUITE_P(Worlds, RemoveEmptyDirectories, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST(RemoveDirectoryIfEmptyVectors, GoldenCases) {
    for (const GoldenCase& golden : goldenCases("edges.json", "removeDirectoryIfEmpty")) {
        MemoryFileSystem memory;
        memory.addFolder("/top");
        for (const auto& [name, content] : golden.in["tree"].items()) {
            ASSERT_TRUE(content.is_null()) << golden.description();
            memory.addFile("/top/" + name, "");
        }
        const FileSystem::Replacement replacement(memory);
        removeDirectoryIfEmpty("/top", golden.in["namesToIgnore"].get<Names>());
        EXPECT_EQ(!memory.attributes("/top").ok(), golden.out["removed"].get<bool>())
            << golden.description();
    }
}

TEST(CompareDirectories, LaterAndDeeperPathsComeFirst) {
    EXPECT_GT(CompareDirectoriesForEmpty("/a", "/b"), 0);
    EXPECT_LT(CompareDirectoriesForEmpty("/B", "/a"), 0);
    EXPECT_EQ(CompareDirectoriesForEmpty("/\xC3\xA9", "/E\xCC\x81"), 0);
    EXPECT_LT(CompareDirectoriesForEmpty("/a/b", "/A"), 0);
    EXPECT_GT(CompareDirectoriesForEmpty("", "a"), 0);
}

TEST_P(RemoveDirectoryIfEmpty, AnEmptyFolderGoes) { EXPECT_TRUE(goes()); }

TEST_P(RemoveDirectoryIfEmpty, HiddenAndIgnoredFilesGoWithIt) {
    makeFile("top/.DS_Store", "x");
    makeFile("top/Thumbs.db", "x");
    EXPECT_FALSE(goes());
    EXPECT_EQ(namesIn("top"), (Names{".DS_Store", "Thumbs.db"}));
    EXPECT_FALSE(goes({"Thumbs", "humbs.db", ""}));
    EXPECT_TRUE(goes({"other", "THUMBS.DB"}));
}

TEST_P(RemoveDirectoryIfEmpty, AnyOtherFileKeepsEverything) {
    makeFile("top/.DS_Store", "x");
    makeFile("top/a.txt");
    EXPECT_FALSE(goes({"Thumbs.db"}));
    EXPECT_EQ(namesIn("top"), (Names{".DS_Store", "a.txt"}));
}

TEST_P(RemoveDirectoryIfEmpty, AFileInAnyDepthKeepsIt) {
    makeFolder("top/.a");
    makeFolder("top/.a/.b");
    EXPECT_TRUE(goes());
    makeFolder("top");
    makeFolder("top/.a");
    makeFolder("top/.a/.b");
    makeFile("top/.a/.b/c");
    EXPECT_FALSE(goes());
}

TEST_P(RemoveDirectoryIfEmpty, OneLevelOfEmptyFoldersGoesTwoStay) {
    makeFolder("top/a");
    makeFile("top/a/.hidden");
    makeFolder("top/b");
    EXPECT_TRUE(goes());
    makeFolder("top");
    makeFolder("top/a");
    makeFolder("top/a/b");
    EXPECT_FALSE(goes());
    EXPECT_TRUE(goes({"B"}));
}

TEST_P(RemoveDirectoryIfEmpty, AFolderOfAnIgnoredNameIsLookedInto) {
    makeFolder("top/ignored");
    makeFile("top/ignored/file");
    EXPECT_FALSE(goes({"ignored"}));
    EXPECT_TRUE(goes({"ignored", "file"}));
}

TEST_P(RemoveDirectoryIfEmpty, LinksCountAsWhatTheyLeadToAndGoAlone) {
    makeFolder("outside");
    makeFolder("outside/empty");
    makeFile("outside/file", "x");
    makeLink("top/nothing", "missing");
    makeLink("top/loop", "loop");
    makeLink("top/emptyFolder", "../outside/empty");
    makeLink("top/.file", "../outside/file");
    EXPECT_TRUE(goes());
    EXPECT_EQ(namesIn("outside"), (Names{"empty", "file"}));

    makeFolder("top");
    makeLink("top/file", "../outside/file");
    EXPECT_FALSE(goes());
    ASSERT_TRUE(files.removeFile(path("top/file")).isNone());
    makeLink("top/.folder", "../outside");
    EXPECT_FALSE(goes());
    EXPECT_TRUE(goes({"empty", "file"}));
    EXPECT_EQ(namesIn("outside"), (Names{"empty", "file"}));
}

TEST_P(RemoveDirectoryIfEmpty, ALinkToAnEmptyFolderGoesTheFolderStays) {
    makeLink("link", "top");
    removeDirectoryIfEmpty(path("link"), {});
    EXPECT_FALSE(stands("link"));
    EXPECT_TRUE(stands("top"));
    makeFile("top/file");
    makeLink("link", "top");
    removeDirectoryIfEmpty(path("link"), {});
    EXPECT_TRUE(stands("link"));
}

TEST_P(RemoveDirectoryIfEmpty, WhatIsNoFolderStays) {
    makeFile("file", "x");
    makeLink("nothing", "missing");
    for (const char* name : {"file", "nothing", "missing"}) {
        removeDirectoryIfEmpty(path(name), {"file"});
    }
    removeDirectoryIfEmpty("", {});
    EXPECT_TRUE(stands("file") && stands("nothing"));
}

TEST_P(RemoveDirectoryIfEmpty, NamesThatAreNoUTF8AreNames) {
    makeFile("top/a\xFF");
    EXPECT_FALSE(goes({"a\xFE"}));
    EXPECT_TRUE(goes({"A\xFF"}));
}

TEST_P(RemoveDirectoryIfEmpty, PipesAreFiles) {
    if (GetParam() == Kind::Real) { // in memory there are none
        ASSERT_EQ(::mkfifo(path("top/pipe").c_str(), 0600), 0);
        EXPECT_FALSE(goes());
        EXPECT_TRUE(goes({"pipe"}));
    }
}

TEST_P(RemoveDirectoryIfEmpty, AFaultBeforeTheRemovalKeepsEverything) {
    for (const int error : sweptErrors) {
        for (std::size_t call = 1;; ++call) {
            if (!stands("top")) {
                makeFolder("top");
            }
            makeFolder("top/inner");
            makeFile("top/inner/.hidden", "x");
            makeFile("top/ignored", "x");
            faulty.restartCount();
            faulty.failCall(call, error);
            faulty.failOperation("OpenFolder.removeFile",
                                 EPERM); // marks the beginning of the removal
            removeDirectoryIfEmpty(path("top"), {"ignored"});
            const bool isDone = faulty.callCount() < call;
            faulty.failOperation("OpenFolder.removeFile", 0);
            EXPECT_EQ(read("top/inner/.hidden"), "x") << call;
            EXPECT_EQ(read("top/ignored"), "x") << call;

            faulty.restartCount();
            removeDirectoryIfEmpty(path("top"), {"ignored"});
            const bool isRemovalDone = faulty.callCount() < call;
            EXPECT_EQ(!stands("top"), isRemovalDone) << call;
            faulty.failCall(0, 0);
            if (!isRemovalDone) {
                EXPECT_TRUE(removeItem(path("top")).isNone());
            } else {
                EXPECT_TRUE(isDone);
                break;
            }
        }
    }
}

TEST_P(RemoveDirectoryIfEmpty, AFileThatComesBeforeTheRemovalStays) {
    makeFile("top/.hidden");
    faulty.restartCount();
    removeDirectoryIfEmpty(path("top"), {});
    const std::size_t calls = faulty.callCount();
    for (std::size_t call = 1; call <= calls; ++call) {
        makeFolder("top");
        makeFile("top/.hidden");
        faulty.restartCount();
        faulty.atCall(call, [&] { makeFile("top/new", "x"); });
        EXPECT_FALSE(goes()) << call;
        EXPECT_EQ(read("top/new"), "x") << call;
        ASSERT_TRUE(removeItem(path("top")).isNone());
    }
}

TEST_P(RemoveDirectoryIfEmpty, AFolderThatCannotBeListedIsNotEmpty) {
    makeFolder("top/.inner");
    faulty.failOperation("OpenFolder.entries", EACCES);
    EXPECT_FALSE(goes());
    faulty.failOperation("OpenFolder.entries", 0);
    EXPECT_TRUE(isFolder("top/.inner"));
    EXPECT_TRUE(goes());
}

TEST_P(RemoveEmptyDirectories, AnEmptyFolderInsideTakesTheStartingFolderWithIt) {
    makeFile("top/file", "x");
    makeFolder("top/a");
    makeFile("top/a/file", "x");
    EXPECT_FALSE(goes());
    makeFolder("top/a/empty");
    EXPECT_TRUE(goes());
}

TEST_P(RemoveEmptyDirectories, OnlyHiddenNamesAreEmpty) {
    makeFolder("top/a");
    makeFile("top/a/.hidden");
    makeFile("top/a/file");
    EXPECT_FALSE(goes());
    ASSERT_TRUE(files.removeFile(path("top/a/file")).isNone());
    EXPECT_TRUE(goes());
}

TEST_P(RemoveEmptyDirectories, TheStartingFolderItselfIsNotLookedAt) {
    EXPECT_FALSE(goes());
    makeFile("top/.hidden");
    EXPECT_FALSE(goes());
    removeEmptyDirectoriesFromPath(path("missing"));
    removeEmptyDirectoriesFromPath(path("top/.hidden"));
    EXPECT_TRUE(stands("top/.hidden"));
}

TEST_P(RemoveEmptyDirectories, ALinkToAnEmptyFolderIsOne) {
    makeFolder("outside");
    makeFile("top/file");
    makeLink("top/link", "../outside");
    EXPECT_TRUE(goes());
    EXPECT_TRUE(isFolder("outside"));
}

TEST_P(RemoveEmptyDirectories, AFaultBeforeTheRemovalKeepsEverything) {
    for (const int error : sweptErrors) {
        for (const char* operation : {"attributes", "openFolder", "OpenFolder.openFolder",
                                      "OpenFolder.attributes", "OpenFolder.entries"}) {
            makeFolder("top/empty");
            makeFile("top/file", "x");
            faulty.failOperation(operation, error);
            EXPECT_FALSE(goes());
            faulty.failOperation(operation, 0);
            EXPECT_EQ(namesIn("top"), (Names{"empty", "file"}));
            EXPECT_TRUE(goes());
            makeFolder("top");
        }
    }
}

TEST_P(RemoveEmptyDirectories, ManyEmptyFoldersThatCannotBeRemovedTakeNoLongerThanOne) {
    for (int i = 0; i < 200; ++i) {
        makeFolder("top/" + std::to_string(i));
    }
    faulty.failOperation("OpenFolder.removeFolder", EACCES);
    faulty.restartCount();
    EXPECT_FALSE(goes());
    EXPECT_LT(faulty.callCount(), 1000U);
}

} // namespace
} // namespace tav
