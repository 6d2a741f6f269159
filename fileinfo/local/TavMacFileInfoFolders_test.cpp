// Folders made, emptied and cleaned.

#include "base/Exception.hpp"
#include "fileinfo/SeenLog_test.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "fileinfo/local/TavRemoveMacGeneratedItemsFilter.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryVolumes.hpp"

#include <algorithm>

#include <gtest/gtest.h>

namespace tav {
namespace {

class LocalFoldersTest : public testing::Test {
  protected:
    MemoryFileSystem memory;
    FaultyFileSystem files{memory};
    MemoryVolumes volumes{memory};
    FileSystem::Replacement replacement{files};
    Volumes::Replacement volumesReplacement{volumes};

    void SetUp() override {
        memory.addFolder("/top");
        volumes.add(volumeAt("/"));
        memory.addVolume("/stick");
        volumes.add(volumeAt("/stick"));
    }
    static std::shared_ptr<TavMacFileInfo> item(std::string_view path) {
        return TavMacFileInfo::fileInfoWithPath(path);
    }
    static VolumeInfo volumeAt(std::string_view path) {
        VolumeInfo volume;
        volume.rootPath = path;
        return volume;
    }
    static std::string pathOf(const FileInfoPtr& made) { return made ? made->path() : "null"; }
    bool has(std::string_view path) { return memory.attributes(path).ok(); }
};

bool isLogged(SeenLog& log, std::string_view line) {
    return std::ranges::any_of(
        log.lines(), [&](const std::string& each) { return each.find(line) != std::string::npos; });
}

TEST_F(LocalFoldersTest, MakesEveryFolderOfTheWay) {
    const FileInfoPtr made = item("/top")->createFolder("a/b/");
    EXPECT_EQ(pathOf(made), "/top/a/b");
    EXPECT_TRUE(made->exists() && made->isFolder());
    EXPECT_EQ(pathOf(item("/top")->createFolder("a/b/c")), "/top/a/b/c");
    EXPECT_EQ(pathOf(item("/top")->createFolder("x")), "/top/x");
}

TEST_F(LocalFoldersTest, ALeadingSlashBeginsAtTheRoot) {
    EXPECT_EQ(pathOf(item("/top")->createFolder("/other/inner")), "/other/inner");
    EXPECT_EQ(pathOf(item("/top")->createFolder("/")), "/");
    EXPECT_FALSE(has("/top/other"));
}

TEST_F(LocalFoldersTest, WithoutComponentsTheStartIsAnswered) {
    const auto top = item("/top");
    EXPECT_EQ(top->createFolder(""), top);
    memory.addFile("/top/file", "x");
    EXPECT_EQ(pathOf(item("/top/file")->createFolder("")), "/top");
}

TEST_F(LocalFoldersTest, OneOfTwoSlashesAtTheEndIsTheRoot) {
    EXPECT_EQ(pathOf(item("/top")->createFolder("a//")), "/");
    EXPECT_TRUE(has("/top/a"));
}

TEST_F(LocalFoldersTest, AFileMakesFoldersBesideItself) {
    memory.addFile("/top/file", "x");
    EXPECT_EQ(pathOf(item("/top/file")->createFolder("beside")), "/top/beside");
}

TEST_F(LocalFoldersTest, AComponentThatIsAFileEndsIt) {
    memory.addFile("/top/a/file", "x");
    SeenLog log;
    EXPECT_EQ(item("/top")->createFolder("new/../a/file/b"), nullptr);
    EXPECT_TRUE(isLogged(log, "\"/top/a/file\" already exists and is not a folder.") ||
                isLogged(log, "\"/top/new/../a/file\" already exists and is not a folder."));
    EXPECT_TRUE(has("/top/new")); // stays
}

TEST_F(LocalFoldersTest, GoesThroughAliases) {
    memory.addFolder("/outside");
    memory.addLink("/top/alias", "/outside");
    EXPECT_EQ(pathOf(item("/top")->createFolder("alias/made")), "/outside/made");
    memory.addLink("/top/broken", "/gone");
    EXPECT_EQ(item("/top")->createFolder("broken/made"), nullptr);
}

TEST_F(LocalFoldersTest, AFolderThatCannotBeMadeIsLogged) {
    SeenLog log;
    files.failOperation("createFolder", ENOSPC);
    EXPECT_EQ(item("/top")->createFolder("a/b"), nullptr);
    EXPECT_TRUE(isLogged(log, "No space left on device"));
    const bool wasOn = LogIsEnabled(2);
    gLogEnable[2] = false;
    SeenLog quiet;
    EXPECT_EQ(item("/top")->createFolder("a/b"), nullptr);
    EXPECT_TRUE(quiet.lines().empty());
    gLogEnable[2] = wasOn;
}

TEST_F(LocalFoldersTest, UniqueFoldersTakeTheFirstFreeName) {
    EXPECT_EQ(pathOf(item("/top")->createUniqueFolder("New")), "/top/New");
    EXPECT_EQ(pathOf(item("/top")->createUniqueFolder("New")), "/top/New-1");
    EXPECT_EQ(pathOf(item("/top")->createUniqueFolder("New")), "/top/New-2");
    EXPECT_EQ(pathOf(item("/top")->createUniqueFolder("a.b")), "/top/a.b");
    EXPECT_EQ(pathOf(item("/top")->createUniqueFolder("a.b")), "/top/a-1.b");
}

TEST_F(LocalFoldersTest, ContentsAreRemovedAndTheFolderStays) {
    memory.addFile("/top/a", "x");
    memory.addFile("/top/b/c/d", "x");
    memory.addFolder("/outside");
    memory.addFile("/outside/kept", "x");
    memory.addLink("/top/link", "/outside");
    SeenLog log;
    EXPECT_TRUE(item("/top")->removeContents());
    EXPECT_TRUE(has("/top"));
    EXPECT_TRUE(memory.folderEntries("/top").value().empty());
    EXPECT_TRUE(has("/outside/kept"));
    EXPECT_TRUE(isLogged(log, "Removing contents of folder \"/top\""));
    EXPECT_TRUE(isLogged(log, "   Removed item \"a\""));
    EXPECT_TRUE(isLogged(log, "   Removed item \"b\""));
}

TEST_F(LocalFoldersTest, WhatCannotBeRemovedDoesNotKeepTheOthers) {
    memory.addFile("/top/a", "x");
    memory.addFile("/top/b", "x");
    memory.addFile("/top/c", "x");
    memory.setImmutable("/top/b", true);
    SeenLog log;
    EXPECT_FALSE(item("/top")->removeContents());
    EXPECT_TRUE(isLogged(log, "   *** Couldn't remove item \"b\""));
    EXPECT_FALSE(has("/top/a") || has("/top/c"));
    EXPECT_TRUE(has("/top/b"));
}

TEST_F(LocalFoldersTest, OnlyFoldersHaveContentsToRemove) {
    memory.addFile("/top/a", "x");
    SeenLog log;
    EXPECT_FALSE(item("/top/a")->removeContents());
    EXPECT_TRUE(isLogged(log, "***** TavMacFileInfo:removeContents for a file-NOT DONE"));
    EXPECT_FALSE(item("/top/gone")->removeContents());
    EXPECT_TRUE(isLogged(log, "The TavMacFileInfo \"/top/gone\" doesn't exist!"));
    EXPECT_TRUE(has("/top/a"));
}

TEST_F(LocalFoldersTest, AFolderThatCannotBeReadHasNothingToRemove) {
    memory.addFile("/top/a", "x");
    files.failOperation("openFolder", EACCES);
    EXPECT_TRUE(item("/top")->removeContents());
    files.failOperation("openFolder", 0);
    files.failOperation("OpenFolder.entries", EIO);
    EXPECT_TRUE(item("/top")->removeContents());
    files.failOperation("OpenFolder.entries", 0);
    EXPECT_TRUE(has("/top/a"));
}

TEST_F(LocalFoldersTest, CleaningCoversTheWholeVolumeOfThePath) {
    for (const char* path :
         {"/stick/.Trashes/501/old", "/stick/Desktop DB", "/stick/Desktop DF",
          "/stick/.com.apple.timemachine.supported", "/stick/.DS_Store", "/stick/a/.DS_STORE",
          "/stick/b/c/._companion", "/stick/._folder/inside"}) {
        memory.addFile(path, "x");
    }
    for (const char* path :
         {"/stick/.Spotlight-V100/store", "/stick/a/.-not", "/stick/a/Desktop DB", "/stick/a/x._y",
          "/stick/b/.DS_Storex", "/.DS_Store", "/top/._other"}) {
        memory.addFile(path, "x");
    }
    TavMacFileInfo::removeMacGeneratedItemsAtPath("/stick/b/c");
    for (const char* path : {"/stick/.Trashes", "/stick/Desktop DB", "/stick/Desktop DF",
                             "/stick/.com.apple.timemachine.supported", "/stick/.DS_Store",
                             "/stick/a/.DS_STORE", "/stick/b/c/._companion", "/stick/._folder"}) {
        EXPECT_FALSE(has(path)) << path;
    }
    for (const char* path :
         {"/stick/.Spotlight-V100/store", "/stick/a/.-not", "/stick/a/Desktop DB", "/stick/a/x._y",
          "/stick/b/.DS_Storex", "/.DS_Store", "/top/._other"}) {
        EXPECT_TRUE(has(path)) << path;
    }
}

TEST_F(LocalFoldersTest, CleaningTakesFilesForFilesAndFoldersForFolders) {
    memory.addFile("/stick/.Trashes", "a file stays");
    memory.addFile("/stick/Desktop DB/inside", "a folder stays");
    memory.addFile("/stick/.Spotlight-V100", "a file goes");
    TavMacFileInfo::removeMacGeneratedItemsAtPath("/stick");
    EXPECT_TRUE(has("/stick/.Trashes"));
    EXPECT_TRUE(has("/stick/Desktop DB/inside"));
    EXPECT_FALSE(has("/stick/.Spotlight-V100"));
}

TEST_F(LocalFoldersTest, WhatCannotBeRemovedDoesNotKeepTheRestFromBeingCleaned) {
    memory.addFile("/stick/Desktop DB", "x");
    memory.addFile("/stick/Desktop DF", "x");
    memory.addFile("/stick/a/._one", "x");
    memory.addFile("/stick/a/._two", "x");
    memory.setImmutable("/stick/Desktop DB", true);
    memory.setImmutable("/stick/a/._one", true);
    TavMacFileInfo::removeMacGeneratedItemsAtPath("/stick");
    EXPECT_TRUE(has("/stick/Desktop DB") && has("/stick/a/._one"));
    EXPECT_FALSE(has("/stick/Desktop DF") || has("/stick/a/._two"));
}

TEST_F(LocalFoldersTest, TheFilterLetsNothingIn) {
    memory.addFile("/top/.ds_store", "x");
    memory.addFile("/top/kept", "x");
    const auto filter = TavRemoveMacGeneratedItemsFilter::filter();
    EXPECT_NE(filter, TavRemoveMacGeneratedItemsFilter::filter());
    EXPECT_TRUE(item("/top")->folderContentsWithFilter(filter.get()).empty());
    EXPECT_FALSE(has("/top/.ds_store"));
    EXPECT_TRUE(has("/top/kept"));
    EXPECT_FALSE(filter->includeItem(*item("/top/missing"), nullptr));
}

TEST_F(LocalFoldersTest, EachFailingCallOfEachChangeIsAnswered) {
    for (const int error : {ENOSPC, EIO, EACCES, EINTR}) {
        for (std::size_t call = 1;; ++call) {
            memory.removeAll("/top");
            memory.addFile("/top/a/._b", "x");
            memory.addFile("/stick/x/.DS_Store", "x");
            memory.addFile("/stick/kept", "x");
            const auto top = item("/top");
            files.restartCount();
            files.failCall(call, error);
            const FileInfoPtr made = top->createFolder("p/q");
            const std::size_t creating = files.callCount();
            const bool isEmptied = top->removeContents();
            try {
                TavMacFileInfo::removeMacGeneratedItemsAtPath("/stick");
            } catch (const Exception& exception) {
                EXPECT_EQ(exception.name(), "folderContentsWithFilter");
            }
            const std::size_t calls = files.callCount();
            files.failCall(0, 0);
            if (call > creating) {
                EXPECT_TRUE(made && has("/stick/kept"));
            }
            EXPECT_TRUE(has("/top") && has("/stick/kept"));
            if (calls < call) {
                EXPECT_TRUE(isEmptied);
                EXPECT_FALSE(has("/stick/x/.DS_Store") || has("/top/a") || has("/top/p"));
                EXPECT_GT(call, 20U);
                break;
            }
        }
    }
}

} // namespace
} // namespace tav
