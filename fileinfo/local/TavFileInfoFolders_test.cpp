#include "fileinfo/local/LegacyListingFilters.hpp"
#include "fileinfo/local/TavFileInfoFixture_test.hpp"

#include <algorithm>
#include <cerrno>

namespace tav {
namespace {

using Names = std::vector<std::string>;
using OlderFolders = TavFileInfoInMemory;
using OlderFoldersOnDisk = TavFileInfoOnDisk;

/// Lets some names in, and may end a listing after one.
class SomeNames final : public TavFileInfoFilter {
  public:
    explicit SomeNames(Names included, std::string last = {})
        : included_(std::move(included)), last_(std::move(last)) {}

    bool includeItem(TavFileInfo& item, bool* stopAccumulating) override {
        if (item.name() == last_) {
            *stopAccumulating = true;
        }
        return std::ranges::find(included_, item.name()) != included_.end();
    }

  private:
    Names included_;
    std::string last_;
};

// Lookup

TEST_F(OlderFolders, FindsAChildOfAFolderAndASiblingOfAFile) {
    memory.addFile("/folder/f", "");
    memory.addLink("/folder/link", "f");
    memory.addLink("/toFolder", "/folder");
    EXPECT_EQ(older("/folder")->find("f")->path(), "/folder/f");
    EXPECT_EQ(older("/folder/f")->find("g")->path(), "/folder/g") << "it need not exist";
    EXPECT_FALSE(older("/folder/f")->find("g")->exists());
    EXPECT_EQ(older("/missing")->find("x")->path(), "/missing/x");
    EXPECT_EQ(older("/toFolder")->find("f")->path(), "/toFolder/f");
    EXPECT_EQ(older("/folder")->find("../x")->path(), "/x") << "standardised";
    EXPECT_EQ(older("/folder")->find("~")->path(), "/folder/~") << "a name";
    EXPECT_EQ(older("/folder")->find("link", true)->path(), "/folder/f");
    EXPECT_EQ(older("/folder")->find("link", false)->path(), "/folder/link");
    EXPECT_EQ(older("/folder")->find("nothing", true)->path(), "/folder/nothing");
}

TEST_F(OlderFolders, FindsAtAnyDepthIgnoringCase) {
    memory.addFile("/r/a/Name", "");
    memory.addFile("/r/a/b/nAME", "");
    memory.addFile("/r/name/x", "");
    EXPECT_EQ(pathsOf(older("/r")->findDeep("name")),
              (Names{"/r/a/b/nAME", "/r/a/Name", "/r/name"}));
    EXPECT_EQ(older("/r")->findFirstDeep("NAME")->path(), "/r/a/Name")
        << "which ended the listing of its folder";
    EXPECT_EQ(older("/r")->findFirstDeep("nobody"), nullptr);
    EXPECT_TRUE(older("/r/a/Name")->findDeep("x").empty());
}

TEST_F(OlderFolders, AUniqueName) {
    memory.addFile("/f/name.txt", "");
    memory.addFile("/f/name-1.txt", "");
    memory.addFile("/f/README", "");
    memory.addLink("/f/broken", "nowhere");
    const TavFileInfoPtr folder = older("/f");
    EXPECT_EQ(folder->uniqueFilename("free.txt"), "free.txt");
    EXPECT_EQ(folder->uniqueFilename("name.txt"), "name-2.txt");
    EXPECT_EQ(folder->uniqueFilename("README"), "README-1") << "no dot without an extension";
    EXPECT_EQ(folder->uniqueFilename("broken"), "broken-1") << "a link to nothing is there";
    EXPECT_EQ(older("/f/README")->uniqueFilename("README"), "README-1") << "a sibling";
}

// Listing

TEST_F(OlderFolders, ContentsComeInTheFileSystemsOrder) {
    memory.addFile("/f/b", "");
    memory.addFile("/f/a", "");
    memory.addFolder("/f/c");
    memory.addFile("/f/.hidden", "");
    memory.addFile("/f/QuillboxCopyFile.tmp", "");
    memory.addLink("/f/broken", "nowhere");
    EXPECT_EQ(namesOf(older("/f")->folderContents()),
              (Names{".hidden", "QuillboxCopyFile.tmp", "a", "b", "broken", "c"}))
        << "nothing is removed or left out";
    EXPECT_TRUE(older("/f/QuillboxCopyFile.tmp")->exists());
    EXPECT_TRUE(older("/f/a")->folderContents().empty());
    EXPECT_TRUE(older("/missing")->folderContents().empty());
    EXPECT_TRUE(older("/f/broken")->folderContents().empty());
}

TEST_F(OlderFolders, AnAliasOfAFolderIsListed) {
    memory.addFile("/f/a", "");
    memory.addLink("/link", "/f");
    EXPECT_EQ(pathsOf(older("/link")->folderContents()), (Names{"/link/a"}));
}

TEST_F(OlderFolders, WhatTheListingTellsIsNotAskedFor) {
    memory.addFile("/f/a", "");
    memory.addFolder("/f/b");
    const TavFileInfoArray items = older("/f")->folderContents();
    EXPECT_EQ(callsOf([&] {
                  EXPECT_TRUE(items.at(0)->isFile());
                  EXPECT_TRUE(items.at(1)->isFolder());
                  EXPECT_FALSE(items.at(1)->isAlias());
              }),
              Calls());
}

TEST_F(OlderFolders, NoArrayNoListing) {
    memory.addFile("/f/a", "");
    bool stop = false;
    older("/f")->folderContentsWithFilter(nullptr, nullptr, &stop);
    EXPECT_FALSE(stop);
    older("/f")->addFolderContentsToArray(nullptr);
}

TEST_F(OlderFolders, AListingIsAppended) {
    memory.addFile("/f/a", "");
    TavFileInfoArray array = {older("/x")};
    bool stop = true;
    older("/f")->folderContentsWithFilter(nullptr, &array, &stop);
    EXPECT_EQ(namesOf(array), (Names{"x", "a"}));
    EXPECT_TRUE(stop) << "only ever set";
    older("/f")->folderContentsWithFilter(nullptr, &array, nullptr);
    EXPECT_EQ(array.size(), 3U);
}

TEST_F(OlderFolders, AFilterChoosesAndEndsTheListing) {
    for (const char* name : {"/f/a", "/f/b", "/f/c", "/f/d"}) {
        memory.addFile(name, "");
    }
    SomeNames some({"a", "c"});
    EXPECT_EQ(namesOf(older("/f")->folderContentsWithFilter(&some)), (Names{"a", "c"}));
    SomeNames untilB({"a", "b", "c"}, "b");
    TavFileInfoArray array;
    bool stop = false;
    older("/f")->folderContentsWithFilter(&untilB, &array, &stop);
    EXPECT_EQ(namesOf(array), (Names{"a", "b"})) << "the item that ends it may be in it";
    EXPECT_TRUE(stop);
    array.clear();
    older("/f")->folderContentsWithFilter(&untilB, &array, nullptr);
    EXPECT_EQ(array.size(), 2U);
    SomeNames untilC({"a", "d"}, "c");
    EXPECT_EQ(namesOf(older("/f")->folderContentsWithFilter(&untilC)), (Names{"a"}));
}

TEST_F(OlderFolders, AFolderThatCannotBeReadListsNothing) {
    memory.addFile("/f/a", "");
    const TavFileInfoPtr folder = older("/f");
    ASSERT_TRUE(folder->isFolder());
    files.failOperation("openFolder", EACCES);
    TavFileInfoArray array;
    EXPECT_NO_THROW(folder->folderContentsWithFilter(nullptr, &array, nullptr));
    EXPECT_TRUE(array.empty());
    EXPECT_TRUE(folder->folderContentsDeepWithFilter(nullptr).empty());
    files.failOperation("openFolder", 0);
    files.failOperation("OpenFolder.entries", EIO);
    EXPECT_TRUE(folder->folderContents().empty());
}

TEST_F(OlderFolders, NamesThatAreNoUTF8Survive) {
    memory.addFile("/\xFF/\xFE\n", "1");
    const TavFileInfoArray items = older("/")->folderContentsDeepWithFilter(nullptr);
    EXPECT_EQ(pathsOf(items), (Names{"/\xFF/\xFE\n", "/\xFF"}));
    EXPECT_EQ(items.at(0)->size(), 1U);
}

// Deep listing

TEST_F(OlderFolders, WhatIsInAFolderStandsBeforeItAndOnce) {
    memory.addFile("/f/x/a", "");
    memory.addFile("/f/x/y/z", "");
    memory.addFile("/f/x/b", "");
    memory.addFile("/f/top", "");
    const TavFileInfoArray items = older("/f")->folderContentsDeepWithFilter(nullptr);
    EXPECT_EQ(namesOf(items), (Names{"top", "z", "a", "b", "y", "x"}));
    std::vector<std::string> others;
    for (const FileInfoPtr& item : at("/f")->folderContentsDeepWithFilter(nullptr)) {
        others.push_back(item->name());
    }
    EXPECT_EQ(namesOf(items), others) << "as the other item lists it";
}

TEST_F(OlderFolders, AFolderThatIsNotLetInIsSearchedAllTheSame) {
    memory.addFile("/f/x/a", "");
    SomeNames onlyA({"a"});
    EXPECT_EQ(pathsOf(older("/f")->folderContentsDeepWithFilter(&onlyA)), (Names{"/f/x/a"}));
    EXPECT_TRUE(older("/f/x/a")->folderContentsDeepWithFilter(nullptr).empty());
    EXPECT_TRUE(older("/missing")->folderContentsDeepWithFilter(nullptr).empty());
}

TEST_F(OlderFolders, AnInnerListingThatEndsDoesNotEndTheOuterOne) {
    memory.addFile("/f/x/a", "");
    memory.addFile("/f/x/b", "");
    memory.addFile("/f/y/c", "");
    SomeNames untilA({"a", "b", "c", "x", "y"}, "a");
    EXPECT_EQ(namesOf(older("/f")->folderContentsDeepWithFilter(&untilA)),
              (Names{"a", "x", "c", "y"}));
}

TEST_F(OlderFolders, LinksAreFollowed) {
    memory.addFile("/out/a", "");
    memory.addLink("/f/link", "/out");
    EXPECT_EQ(pathsOf(older("/f")->folderContentsDeepWithFilter(nullptr)),
              (Names{"/f/link/a", "/f/link"}));
}

TEST_F(OlderFolders, AFolderIsListedByItsNameAndThroughALink) {
    memory.addFile("/f/a/x", "");
    memory.addLink("/f/l", "a");
    EXPECT_EQ(pathsOf(older("/f")->folderContentsDeepWithFilter(nullptr)),
              (Names{"/f/a/x", "/f/a", "/f/l/x", "/f/l"}));
}

TEST_F(OlderFolders, ThroughLinksAFolderIsEnteredOnce) {
    memory.addFile("/out/x", "");
    memory.addLink("/f/one", "/out");
    memory.addLink("/f/two", "/out");
    memory.addLink("/f/three", "one");
    EXPECT_EQ(pathsOf(older("/f")->folderContentsDeepWithFilter(nullptr)),
              (Names{"/f/one/x", "/f/one", "/f/three", "/f/two"}));
    EXPECT_EQ(older("/f")->folderContentsDeepWithFilter(nullptr).size(), 4U) << "each time anew";
}

TEST_F(OlderFolders, ALinkToAFolderFurtherUpIsEnteredOnce) {
    memory.addFile("/f/a", "");
    memory.addLink("/f/l", "/f");
    EXPECT_EQ(pathsOf(older("/f")->folderContentsDeepWithFilter(nullptr)),
              (Names{"/f/a", "/f/l/a", "/f/l/l", "/f/l"}));
    EXPECT_EQ(pathsOf(older("/f")->findDeep("a")), (Names{"/f/a", "/f/l/a"}));
}

TEST_F(OlderFolders, AListingThatBeginsWithALinkHasEnteredIt) {
    memory.addFile("/f/a", "");
    memory.addLink("/f/l", "/f");
    EXPECT_EQ(pathsOf(older("/f/l")->folderContentsDeepWithFilter(nullptr)),
              (Names{"/f/l/a", "/f/l/l"}));
}

TEST_F(OlderFoldersOnDisk, ManyLinksToOneAnotherEnd) {
    // Without the limit these are 12 to the power of 40 ways.
    for (int each = 0; each < 12; ++each) {
        const std::string name = "d" + std::to_string(each);
        addFolder(name);
        for (int other = 0; other < 12; ++other) {
            addLink(name + "/l" + std::to_string(other), "../d" + std::to_string(other));
        }
    }
    const TavFileInfoArray items = older(folder.path())->folderContentsDeepWithFilter(nullptr);
    // Twelve folders, each listed by its name and once through a link.
    EXPECT_EQ(items.size(), 12U + 12U * 12U * 2U);
}

TEST_F(OlderFoldersOnDisk, DeepTreesAreListed) {
    constexpr std::size_t depth = 2000;
    auto at = FileSystem::current().openFolder(folder.path());
    ASSERT_TRUE(at.ok());
    std::unique_ptr<OpenFolder> inner = std::move(at).value();
    for (std::size_t level = 0; level < depth; ++level) {
        ASSERT_TRUE(inner->createFolder("d", 0755).isNone());
        auto next = inner->openFolder("d");
        ASSERT_TRUE(next.ok());
        inner = std::move(next).value();
    }
    const TavFileInfoArray items = older(folder.path())->folderContentsDeepWithFilter(nullptr);
    ASSERT_EQ(items.size(), depth);
    EXPECT_EQ(items.back()->path(), folder.path("d"));
    EXPECT_GT(items.front()->path().size(), 2 * depth);
    EXPECT_TRUE(items.front()->isFolder());
    EXPECT_TRUE(olderIn("d")->remove());
}

TEST_F(OlderFolders, NothingBelowTheDeepestLevelIsListed) {
    std::string path = "/f";
    constexpr std::size_t deepest = legacy::GoDeepFilter::deepest;
    for (std::size_t level = 0; level < deepest + 10; ++level) {
        path += "/d";
    }
    memory.addFolder(path);
    const TavFileInfoArray items = older("/f")->folderContentsDeepWithFilter(nullptr);
    EXPECT_EQ(items.size(), deepest);
    EXPECT_EQ(items.back()->path(), "/f/d");
}

TEST_F(OlderFolders, AChainOfLinksIsFollowedAsFarAsTheHostGoes) {
    constexpr std::size_t mostLinks = 40;
    for (std::size_t level = 0; level < 2 * mostLinks; ++level) {
        memory.addLink("/row/" + std::to_string(level) + "/l", "/row/" + std::to_string(level + 1));
    }
    const TavFileInfoArray items = older("/row/0")->folderContentsDeepWithFilter(nullptr);
    EXPECT_EQ(items.size(), mostLinks + 1);
    EXPECT_FALSE(items.front()->isFolder());
}

// Adding to an array

TEST_F(OlderFolders, FilesAreAddedAlwaysAndFoldersOnce) {
    memory.addFile("/f/file", "");
    memory.addFolder("/f/sub");
    memory.addLink("/f/toFile", "file");
    memory.addLink("/f/toSub", "sub");
    memory.addLink("/f/toOut", "/out");
    memory.addFolder("/out");
    memory.addLink("/f/broken", "nowhere");
    TavFileInfoArray array;
    older("/f")->addFolderContentsToArray(&array);
    EXPECT_EQ(namesOf(array), (Names{"broken", "file", "sub", "toFile", "toOut"}))
        << "what toSub leads to is there";
    older("/f")->addFolderContentsToArray(&array);
    EXPECT_EQ(namesOf(array),
              (Names{"broken", "file", "sub", "toFile", "toOut", "broken", "file", "toFile"}))
        << "a link to nothing has no resolved path, so it is never found";
    TavFileInfoArray none;
    older("/f/file")->addFolderContentsToArray(&none);
    EXPECT_TRUE(none.empty());
}

TEST_F(OlderFolders, AnArrayContainsWhatAnElementLeadsTo) {
    memory.addFolder("/Out");
    memory.addLink("/link", "/Out");
    const TavFileInfoArray array = {older("/link"), nullptr, older("/missing"), older(nullptr)};
    EXPECT_TRUE(TavFileInfo::_array(array, older("/Out").get()));
    EXPECT_TRUE(TavFileInfo::_array(array, older("/oUT").get()));
    EXPECT_FALSE(TavFileInfo::_array(array, older("/link").get()));
    EXPECT_FALSE(TavFileInfo::_array(array, older("/missing").get()));
    EXPECT_FALSE(TavFileInfo::_array(array, older(nullptr).get()));
    EXPECT_FALSE(TavFileInfo::_array(array, nullptr));
    EXPECT_FALSE(TavFileInfo::_array({}, older("/Out").get()));
}

// Changing

TEST_F(OlderFolders, MakesOneFolder) {
    memory.addFile("/f/file", "");
    memory.addLink("/link", "/f");
    memory.addLink("/f/broken", "nowhere");
    EXPECT_EQ(older("/f")->createFolder("new")->path(), "/f/new");
    EXPECT_TRUE(older("/f/new")->isFolder());
    EXPECT_EQ(older("/f")->createFolder("new")->path(), "/f/new") << "it is there";
    EXPECT_EQ(older("/")->createFolder("link")->path(), "/link") << "a link to a folder is one";
    EXPECT_EQ(older("/f/file")->createFolder("sibling")->path(), "/f/sibling");
    EXPECT_EQ(older("/f")->createFolder("file"), nullptr);
    EXPECT_EQ(older("/f")->createFolder("broken"), nullptr);
    EXPECT_EQ(older("/f")->createFolder("a/b"), nullptr) << "one level only";
    EXPECT_FALSE(older("/f/a")->exists());
    EXPECT_EQ(older("/missing/x")->createFolder("y"), nullptr);
    memory.isReadOnly = true;
    SeenLog log;
    EXPECT_EQ(older("/f")->createFolder("other"), nullptr);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OlderFolders, AnItemOfAMissingFileMakesFoldersInItsParent) {
    memory.addFolder("/f");
    EXPECT_EQ(older("/f/missing")->createFolder("new")->path(), "/f/new");
}

TEST_F(OlderFolders, RemovesFilesAndWholeFolders) {
    memory.addFile("/f/a/b", "");
    memory.addFile("/g", "");
    memory.addLink("/link", "/f");
    EXPECT_TRUE(older("/link")->remove());
    EXPECT_TRUE(older("/f/a/b")->exists()) << "only the link";
    const TavFileInfoPtr folder = older("/f");
    EXPECT_TRUE(folder->remove());
    EXPECT_FALSE(folder->exists());
    EXPECT_FALSE(folder->remove());
    EXPECT_TRUE(older("/g")->remove());
    EXPECT_FALSE(older("/missing")->remove());
    memory.addFile("/h", "");
    memory.isReadOnly = true;
    EXPECT_FALSE(older("/h")->remove());
    EXPECT_TRUE(older("/h")->exists());
}

TEST_F(OlderFolders, RemovesContentsWithoutAWord) {
    memory.addFile("/f/a", "");
    memory.addFile("/f/b/c", "");
    memory.addFolder("/outside");
    memory.addLink("/f/link", "/outside");
    SeenLog log;
    const TavFileInfoPtr folder = older("/f");
    EXPECT_TRUE(folder->removeContents());
    EXPECT_TRUE(older("/f")->isFolder());
    EXPECT_TRUE(older("/f")->folderContents().empty());
    EXPECT_TRUE(older("/outside")->exists());
    EXPECT_TRUE(folder->removeContents()) << "nothing is left";
    EXPECT_FALSE(older("/missing")->removeContents());
    memory.addFile("/file", "");
    EXPECT_FALSE(older("/file")->removeContents());
    EXPECT_TRUE(older("/file")->exists());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OlderFolders, AFailedRemovalDoesNotStopTheOthers) {
    memory.addFile("/f/a", "");
    memory.addFile("/f/b", "");
    memory.addFile("/f/c", "");
    memory.setImmutable("/f/b", true);
    EXPECT_FALSE(older("/f")->removeContents());
    EXPECT_EQ(namesOf(older("/f")->folderContents()), (Names{"b"}));
}

TEST_F(OlderFolders, AnEntryThatIsCalledLikeTheHomeFolderIsAName) {
    memory.addFile("/home/user/precious", "");
    memory.addFile("/~/x", "");
    const TavFileInfoArray items = older(".")->folderContents();
    const auto tilde =
        std::ranges::find_if(items, [](const TavFileInfoPtr& item) { return item->name() == "~"; });
    ASSERT_NE(tilde, items.end());
    EXPECT_TRUE((*tilde)->removeContents());
    EXPECT_TRUE(older("/home/user/precious")->exists());
    EXPECT_FALSE(older("/~/x")->exists());
}

} // namespace
} // namespace tav
