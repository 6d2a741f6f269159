// What a listing of a local folder answers, in which order, and what it asks of the file system.

#include "base/Exception.hpp"
#include "fileinfo/SeenLog_test.hpp"
#include "fileinfo/local/FolderWalk.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"

#include <algorithm>
#include <functional>
#include <stdexcept>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Names = std::vector<std::string>;
using Include = std::function<bool(TavBaseFileInfo&, bool*)>;

/// A filter that is a function.
class FunctionFilter final : public TavBaseFileInfoFilter {
  public:
    explicit FunctionFilter(Include include) : include_(std::move(include)) {}
    bool includeItem(TavBaseFileInfo& item, bool* stop) override { return include_(item, stop); }

  private:
    Include include_;
};

Names pathsOf(const FileInfoArray& items) {
    Names paths;
    for (const FileInfoPtr& item : items) {
        paths.push_back(item->path());
    }
    return paths;
}

class FolderWalkTest : public testing::Test {
  protected:
    MemoryFileSystem memory;
    FaultyFileSystem files{memory};
    FileSystem::Replacement replacement{files};

    void SetUp() override {
        memory.addFile("/top/b.txt", "b");
        memory.addFile("/top/inner/deep.txt", "deep");
        memory.addFile("/top/A", "a");
        memory.addFolder("/outside");
        memory.addFile("/outside/kept", "x");
    }
    static std::shared_ptr<TavMacFileInfo> item(std::string_view path) {
        return TavMacFileInfo::fileInfoWithPath(path);
    }
    static Names listed(std::string_view path, TavBaseFileInfoFilter* filter = nullptr) {
        return pathsOf(item(path)->folderContentsWithFilter(filter));
    }
    static Names listed(std::string_view path, const Include& include) {
        FunctionFilter filter(include);
        return listed(path, &filter);
    }
    static Names listedDeep(std::string_view path, TavBaseFileInfoFilter* filter = nullptr) {
        return pathsOf(item(path)->folderContentsDeepWithFilter(filter));
    }
    Names callsOf(std::string_view operation) {
        Names calls;
        for (const std::string& call : memory.calls()) {
            if (call.starts_with(operation)) {
                calls.push_back(call);
            }
        }
        return calls;
    }
};

TEST_F(FolderWalkTest, ListsInTheOrderOfTheFileSystem) {
    EXPECT_EQ(listed("/top"), (Names{"/top/A", "/top/b.txt", "/top/inner"}));
    EXPECT_EQ(listed("/"), (Names{"/outside", "/top"}));
}

TEST_F(FolderWalkTest, AppendsToWhatIsThere) {
    FileInfoArray array = {item("/outside")};
    item("/top")->folderContentsWithFilter(nullptr, &array, nullptr, "/top/");
    EXPECT_EQ(pathsOf(array), (Names{"/outside", "/top/A", "/top/b.txt", "/top/inner"}));
}

TEST_F(FolderWalkTest, AnswersNothingForAFileAMissingItemAndAnAlias) {
    memory.addLink("/alias", "/top");
    memory.addLink("/broken", "/gone");
    for (const char* path : {"/top/A", "/missing", "/alias", "/broken", ""}) {
        FileInfoArray array = {item("/outside")};
        bool stop = false;
        item(path)->folderContentsWithFilter(nullptr, &array, &stop, "/");
        EXPECT_EQ(pathsOf(array), Names{"/outside"}) << path;
        EXPECT_FALSE(stop);
    }
}

TEST_F(FolderWalkTest, DoesNothingWithoutAnArray) {
    memory.addFile("/top/QuillboxCopyFile.tmp", "");
    bool stop = false;
    item("/top")->folderContentsWithFilter(nullptr, nullptr, &stop, "/top/");
    EXPECT_TRUE(memory.attributes("/top/QuillboxCopyFile.tmp").ok());
    EXPECT_FALSE(stop);
}

TEST_F(FolderWalkTest, KindsComeWithTheNamesAndCostNoCall) {
    const auto folder = item("/top");
    ASSERT_TRUE(folder->isFolder());
    memory.clearCalls();
    FileInfoArray array;
    FunctionFilter filter([](TavBaseFileInfo& each, bool*) {
        return each.exists() && each.isFolder() != each.isFile() && !each.name().empty();
    });
    folder->folderContentsWithFilter(&filter, &array, nullptr, "/top/");
    EXPECT_EQ(array.size(), 3U);
    // The first is the folder's own path, which is looked up anew.
    EXPECT_EQ(memory.calls(), (Names{"attributes /top", "openFolder /top",
                                     "OpenFolder.attributes /top", "OpenFolder.entries /top"}));
}

TEST_F(FolderWalkTest, WhileTheFilterHasAnItemItIsAskedInTheOpenFolder) {
    memory.clearCalls();
    EXPECT_EQ(listed("/top", [](TavBaseFileInfo& each,
                                bool*) { return each.isFile() && each.size() == 1; }),
              (Names{"/top/A", "/top/b.txt"}));
    EXPECT_EQ(callsOf("OpenFolder.attributes /top/"),
              (Names{"OpenFolder.attributes /top/A", "OpenFolder.attributes /top/b.txt"}));
}

TEST_F(FolderWalkTest, WhatAFilterKeepsIsAskedByItsPathAfterwards) {
    const FileInfoArray array = item("/top")->folderContents();
    ASSERT_EQ(array.size(), 3U);
    EXPECT_EQ(array[1]->size(), 1U);
    EXPECT_TRUE(array[1]->isEqualTo(item("/top/b.txt").get()));
    ASSERT_TRUE(memory.move("/top/b.txt", "/top/c.txt", Replace::No).isNone());
    EXPECT_EQ(array[1]->path(), "/top/c.txt"); // it follows its file
    ASSERT_TRUE(memory.removeFile("/top/A").isNone());
    array[0]->refresh();
    EXPECT_FALSE(array[0]->exists());
}

TEST_F(FolderWalkTest, TheFlagEndsTheListingBehindTheItem) {
    FileInfoArray array;
    bool stop = false;
    int asked = 0;
    FunctionFilter filter([&](TavBaseFileInfo& each, bool* end) {
        EXPECT_FALSE(*end);
        ++asked;
        *end = each.name() == "b.txt";
        return true;
    });
    item("/top")->folderContentsWithFilter(&filter, &array, &stop, "/top/");
    EXPECT_TRUE(stop);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(pathsOf(array), (Names{"/top/A", "/top/b.txt"}));
}

TEST_F(FolderWalkTest, TheFlagOfTheCallerMayBeMissingAndStartsAnew) {
    FunctionFilter filter([](TavBaseFileInfo&, bool* end) {
        EXPECT_FALSE(*end);
        *end = true;
        return false;
    });
    FileInfoArray array;
    item("/top")->folderContentsWithFilter(&filter, &array, nullptr, "/top/");
    EXPECT_TRUE(array.empty());
    bool stop = true; // is not what the filter sees
    item("/top")->folderContentsWithFilter(&filter, &array, &stop, "/top/");
    EXPECT_TRUE(stop);
}

TEST_F(FolderWalkTest, RemovesTheFileOfTheCopyEngineAndLeavesItOut) {
    memory.addFile("/top/QuillboxCopyFile.tmp", "half");
    memory.addFile("/top/QUILLBOXCOPYFILE.TMP", "half");
    memory.addFile("/top/QuillboxCopyFile.tmpx", "kept");
    memory.addFile("/top/xuillboxCopyFile.tmp", "kept");
    SeenLog log;
    EXPECT_EQ(listed("/top"), (Names{"/top/A", "/top/QuillboxCopyFile.tmpx", "/top/b.txt",
                                     "/top/inner", "/top/xuillboxCopyFile.tmp"}));
    EXPECT_FALSE(memory.attributes("/top/QuillboxCopyFile.tmp").ok());
    EXPECT_FALSE(memory.attributes("/top/QUILLBOXCOPYFILE.TMP").ok());
    ASSERT_EQ(log.lines().size(), 2U);
    EXPECT_NE(log.lines()[1].find("Deleted Quillbox temporary file, "
                                  "\"/top/QuillboxCopyFile.tmp\"."),
              std::string::npos);
}

TEST_F(FolderWalkTest, TheFilterIsNotAskedAboutTheFileOfTheCopyEngineThoughItStays) {
    memory.addFile("/top/QuillboxCopyFile.tmp", "half");
    memory.setImmutable("/top/QuillboxCopyFile.tmp", true);
    SeenLog log;
    EXPECT_EQ(listed("/top",
                     [](TavBaseFileInfo& each, bool*) {
                         EXPECT_NE(each.name(), "QuillboxCopyFile.tmp");
                         return true;
                     })
                  .size(),
              3U);
    EXPECT_TRUE(memory.attributes("/top/QuillboxCopyFile.tmp").ok());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(FolderWalkTest, AFolderOfThatNameStaysAndIsLeftOutAllTheSame) {
    memory.addFile("/top/QuillboxCopyFile.tmp/precious", "x");
    EXPECT_EQ(listed("/top"), (Names{"/top/A", "/top/b.txt", "/top/inner"}));
    EXPECT_TRUE(memory.attributes("/top/QuillboxCopyFile.tmp/precious").ok());
}

TEST_F(FolderWalkTest, OfALinkOfThatNameTheLinkGoes) {
    memory.addLink("/top/quillboxcopyfile.tmp", "/outside/kept");
    EXPECT_EQ(listed("/top").size(), 3U);
    EXPECT_FALSE(memory.attributes("/top/quillboxcopyfile.tmp").ok());
    EXPECT_TRUE(memory.attributes("/outside/kept").ok());
}

TEST_F(FolderWalkTest, AliasesIntoTheTreeAreSkippedAndOthersKept) {
    memory.addLink("/top/up", "/top");
    memory.addLink("/top/down", "inner");
    memory.addLink("/top/toOutside", "/outside");
    memory.addLink("/top/toFile", "A");
    memory.addLink("/top/broken", "/gone");
    memory.addLink("/top/loop", "loop");
    memory.addFolder("/topper");
    memory.addLink("/top/neighbour", "/topper");
    SeenLog log;
    EXPECT_EQ(listed("/top"),
              (Names{"/top/A", "/top/b.txt", "/top/broken", "/top/inner", "/top/loop",
                     "/top/neighbour", "/top/toFile", "/top/toOutside"}));
    ASSERT_EQ(log.lines().size(), 2U);
    EXPECT_NE(log.lines()[0].find("Skipping item \"/top/down\" because it refers to an item "
                                  "already included."),
              std::string::npos);
    EXPECT_NE(log.lines()[1].find("\"/top/up\""), std::string::npos);
}

TEST_F(FolderWalkTest, TheRootOfTheWholeListingDecidesWhatLeadsBack) {
    memory.addLink("/top/inner/up", "/top");
    memory.addLink("/top/inner/aside", "/outside");
    EXPECT_EQ(pathsOf(item("/top/inner")->folderContentsWithFilter(nullptr, "/top/")),
              (Names{"/top/inner/aside", "/top/inner/deep.txt"}));
    EXPECT_EQ(pathsOf(item("/top/inner")->folderContentsWithFilter(nullptr, "")),
              (Names{"/top/inner/aside", "/top/inner/deep.txt", "/top/inner/up"}));
}

TEST_F(FolderWalkTest, ARootReachedThroughALinkIsTheSameTree) {
    memory.addLink("/shortcut", "/");
    memory.addLink("/top/up", "/top");
    EXPECT_EQ(listed("/shortcut/top"),
              (Names{"/shortcut/top/A", "/shortcut/top/b.txt", "/shortcut/top/inner"}));
}

TEST_F(FolderWalkTest, LinksBelowTheRootOfAllAreKept) {
    memory.addLink("/bin", "/top");
    EXPECT_EQ(listed("/"), (Names{"/bin", "/outside", "/top"}));
}

TEST_F(FolderWalkTest, ALinkThatCannotBeLookedAtIsNoFolder) {
    memory.addLink("/top/inner/strange", "/outside");
    const auto folder = item("/top/inner");
    for (const char* operation :
         {"OpenFolder.attributes", "OpenFolder.targetAttributes", "canonicalPath"}) {
        FileInfoArray array;
        FunctionFilter failing([&](TavBaseFileInfo& each, bool*) {
            files.failOperation(operation, EIO);
            return !each.isFolder();
        });
        folder->folderContentsWithFilter(&failing, &array, nullptr, "/top/inner/");
        files.failOperation(operation, 0);
        EXPECT_EQ(pathsOf(array), (Names{"/top/inner/deep.txt", "/top/inner/strange"}));
    }
}

TEST_F(FolderWalkTest, DeepListingsHaveWhatIsInAFolderBeforeIt) {
    EXPECT_EQ(listedDeep("/top"),
              (Names{"/top/A", "/top/b.txt", "/top/inner/deep.txt", "/top/inner"}));
}

TEST_F(FolderWalkTest, DeepListingsDoNotGoIntoAliases) {
    memory.addLink("/top/toOutside", "/outside");
    memory.addLink("/outside/back", "/top");
    EXPECT_EQ(listedDeep("/top"), (Names{"/top/A", "/top/b.txt", "/top/inner/deep.txt",
                                         "/top/inner", "/top/toOutside"}));
}

TEST_F(FolderWalkTest, InnerFoldersAreOpenedInTheOuterOnes) {
    memory.clearCalls();
    listedDeep("/top");
    EXPECT_EQ(callsOf("openFolder"), Names{"openFolder /top"});
    EXPECT_EQ(callsOf("OpenFolder.openFolder"), Names{"OpenFolder.openFolder /top/inner"});
}

TEST_F(FolderWalkTest, ItemsThatMayNotBeReadRaiseOrAnswerNothing) {
    files.failOperation("openFolder", EACCES);
    try {
        listed("/top");
        FAIL();
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.name(), "folderContentsWithFilter");
        EXPECT_EQ(exception.reason(), "An exception occurred while trying to get the contents of "
                                      "the folder \"/top\". (Permission denied)");
    }
    files.failOperation("openFolder", 0);
    files.failOperation("OpenFolder.entries", EIO);
    try {
        listed("/top");
        FAIL();
    } catch (const Exception& exception) {
        EXPECT_EQ(exception.reason(), "An exception occurred while trying to get the contents of "
                                      "the folder \"/top\". (Input/output error)");
    }
}

TEST_F(FolderWalkTest, WhatAFilterThrowsPassesAndWhatWasListedStays) {
    const auto folder = item("/top");
    FileInfoArray array;
    std::shared_ptr<TavBaseFileInfo> seen;
    FunctionFilter filter([&](TavBaseFileInfo& each, bool*) {
        seen = each.shared_from_this();
        if (each.name() == "b.txt") {
            throw std::runtime_error("enough");
        }
        return true;
    });
    EXPECT_THROW(folder->folderContentsWithFilter(&filter, &array, nullptr, "/top/"),
                 std::runtime_error);
    EXPECT_EQ(pathsOf(array), Names{"/top/A"});
    EXPECT_EQ(seen->size(), 1U); // by its path: the folder is closed
}

TEST_F(FolderWalkTest, FiltersMayRemoveAddRenameAndList) {
    FunctionFilter remover([&](TavBaseFileInfo& each, bool*) {
        memory.addFile("/top/zzz", "new");
        return each.remove();
    });
    EXPECT_EQ(item("/top")->folderContentsDeepWithFilter(&remover).size(), 3U);
    EXPECT_EQ(listed("/top"), Names{"/top/zzz"});

    memory.addFile("/top/inner/x", "x");
    FunctionFilter renamer([&](TavBaseFileInfo& each, bool*) {
        if (each.name() == "inner") {
            each.setName("moved");
        }
        return true;
    });
    EXPECT_EQ(pathsOf(item("/top")->folderContentsDeepWithFilter(&renamer)),
              (Names{"/top/moved/x", "/top/moved", "/top/zzz"}));

    FunctionFilter lister([&](TavBaseFileInfo&, bool*) { return listed("/top").size() == 2; });
    EXPECT_EQ(listed("/top", &lister).size(), 2U);
}

TEST_F(FolderWalkTest, TheFolderMayBeRenamedWhileItIsListed) {
    FunctionFilter filter([&](TavBaseFileInfo& each, bool*) {
        static_cast<void>(memory.move("/top", "/moved", Replace::No));
        return each.size() > 0;
    });
    EXPECT_EQ(item("/top")->folderContentsDeepWithFilter(&filter).size(), 3U);
}

TEST_F(FolderWalkTest, AFolderThatGoesBeforeItIsListedRaises) {
    FunctionFilter filter([&](TavBaseFileInfo& each, bool*) {
        if (each.name() == "inner") {
            memory.removeAll("/top/inner");
        }
        return true;
    });
    EXPECT_THROW(static_cast<void>(item("/top")->folderContentsDeepWithFilter(&filter)), Exception);
}

TEST_F(FolderWalkTest, AWalkThatComesBackOpensTheFolderAgainUnlessAnotherHasItsPlace) {
    std::string path = "/chain";
    for (int i = 0; i < 10; ++i) {
        path += "/d";
        memory.addFile(path + "/z", "z");
    }
    const auto sizes = [](TavBaseFileInfo& each, bool*) {
        return each.isFolder() || each.size() == 1;
    };
    FunctionFilter filter(sizes);
    memory.clearCalls();
    EXPECT_EQ(item("/chain")->folderContentsDeepWithFilter(&filter).size(), 20U);
    EXPECT_EQ(callsOf("openFolder").size(), 1U + 11U - internal::WalkedFolder::mostOpen - 1U);

    FunctionFilter exchanging([&](TavBaseFileInfo& each, bool*) {
        if (each.path() == path + "/z") {
            memory.removeAll("/chain");
            memory.addFile("/chain/d/z", "zz");
        }
        return each.isFile() && each.size() == 2;
    });
    EXPECT_TRUE(item("/chain")->folderContentsDeepWithFilter(&exchanging).empty());
}

TEST_F(FolderWalkTest, EachFailingCallRaisesOrIsAnsweredAndNothingIsLost) {
    memory.addLink("/top/link", "/outside");
    for (const int error : {ENOSPC, EIO, EACCES, EINTR}) {
        std::size_t call = 1;
        for (;; ++call) {
            files.restartCount();
            files.failCall(call, error);
            try {
                const Names found = pathsOf(item("/top")->folderContentsDeepWithFilter(nullptr));
                EXPECT_LE(found.size(), 5U);
            } catch (const Exception& exception) {
                EXPECT_EQ(exception.name(), "folderContentsWithFilter");
            }
            if (files.callCount() < call) {
                break;
            }
        }
        files.failCall(0, 0);
        EXPECT_GT(call, 8U);
        EXPECT_EQ(listedDeep("/top").size(), 5U);
    }
}

} // namespace
} // namespace tav
