#include "fileinfo/BaseFilterNestedFolders.hpp"
#include "fileinfo/FakeFileInfo_test.hpp"
#include "fileinfo/KindFilters.hpp"
#include "fileinfo/ListingFilters.hpp"
#include "fileinfo/NameFilters.hpp"
#include "fileinfo/SeenLog_test.hpp"
#include "fileinfo/TavFileExtensionsFilter.hpp"
#include "platform/memory/MemoryUserFolders.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

std::shared_ptr<FakeFileInfo> file(std::string_view path, std::uint64_t size = 1) {
    const auto item = FakeFileInfo::fileInfoWithPath(path);
    item->facts.size = size;
    return item;
}

std::shared_ptr<FakeFileInfo> folder(std::string_view path, FileInfoArray children = {}) {
    const auto item = FakeFileInfo::folder(path);
    item->facts.children = std::move(children);
    return item;
}

/// The filter's answer, which must not end the listing.
bool includes(TavBaseFileInfoFilter& filter, const FileInfoPtr& item) {
    bool stop = false;
    const bool isIncluded = filter.includeItem(*item, &stop);
    EXPECT_FALSE(stop);
    return isIncluded;
}

TEST(FilterItemsNamed, AsksForTheNameIgnoringCaseAndForTheKind) {
    BaseFilterItemsNamed filesOnly({"DCIM"}, true, false);
    EXPECT_TRUE(includes(filesOnly, file("/x/dcim")));
    EXPECT_FALSE(includes(filesOnly, folder("/x/dcim")));
    EXPECT_FALSE(includes(filesOnly, file("/x/dcim.jpg")));
    EXPECT_FALSE(includes(filesOnly, file("/x/DCI")));

    BaseFilterItemsNamed foldersOnly({"a", "DCIM"}, false, true);
    EXPECT_TRUE(includes(foldersOnly, folder("/x/dcim")));
    EXPECT_FALSE(includes(foldersOnly, file("/x/dcim")));

    BaseFilterItemsNamed neither({"DCIM"}, false, false);
    EXPECT_FALSE(includes(neither, file("/x/DCIM")));
    BaseFilterItemsNamed none({}, true, true);
    EXPECT_FALSE(includes(none, file("/x/DCIM")));
}

TEST(FilterItemsNamed, FindOneEndsTheListingWithTheFirstThatIsLetIn) {
    const auto filter = BaseFilterItemsNamed::filterWithItemNames({"b", "c"}, true, false);
    EXPECT_FALSE(filter->findOne());
    filter->setFindOne(true);
    EXPECT_TRUE(filter->findOne());
    const auto listed = folder("/x", {file("/x/a"), folder("/x/b"), file("/x/B"), file("/x/c")});
    EXPECT_EQ(namesOf(listed->folderContentsWithFilter(filter.get())),
              std::vector<std::string>{"B"});
    filter->setFindOne(false);
    EXPECT_EQ(namesOf(listed->folderContentsWithFilter(filter.get())),
              (std::vector<std::string>{"B", "c"}));
}

TEST(FilterFilenamePrefix, IsTheWholeBaseNameIgnoringCase) {
    BaseFilterFilenamePrefix filter("Img");
    EXPECT_TRUE(includes(filter, file("/x/img.jpg")));
    EXPECT_TRUE(includes(filter, file("/x/IMG.png")));
    EXPECT_TRUE(includes(filter, file("/x/IMG")));
    EXPECT_TRUE(includes(filter, folder("/x/iMg.d")));
    EXPECT_FALSE(includes(filter, file("/x/IMG_0001.jpg")));
    EXPECT_FALSE(includes(filter, file("/x/im.jpg")));
    // Two upper-cased texts are compared, so that one letter may match two.
    EXPECT_TRUE(includes(*BaseFilterFilenamePrefix::filterWithFilenamePrefix("STRASSE"),
                         file("/x/straße.txt")));
    // They are compared as they stand: composed and decomposed letters differ.
    EXPECT_FALSE(includes(*BaseFilterFilenamePrefix::filterWithFilenamePrefix("caf\u00e9"),
                          file("/x/cafe\u0301.txt")));
}

TEST(ExcludeFilenamesFilter, KeepsNamesOutAndFoldersUnlessTheyAreAskedFor) {
    const auto filesOnly = TavExcludeFilenamesFilter::filterWithFilenames({"Thumbs.db"}, false);
    EXPECT_TRUE(includes(*filesOnly, file("/x/a.jpg")));
    EXPECT_FALSE(includes(*filesOnly, file("/x/THUMBS.DB")));
    EXPECT_FALSE(includes(*filesOnly, folder("/x/a")));

    TavExcludeFilenamesFilter both({"Thumbs.db"}, true);
    EXPECT_TRUE(includes(both, folder("/x/a")));
    EXPECT_FALSE(includes(both, folder("/x/thumbs.DB")));
    EXPECT_TRUE(includes(both, file("/x/a")));
}

TEST(FileExtensionsFilter, AsksForTheExtensionIgnoringCase) {
    const auto filter = TavFileExtensionsFilter::filterWithExtensions({"MP3", "aac"});
    EXPECT_TRUE(includes(*filter, file("/x/song.mp3")));
    EXPECT_TRUE(includes(*filter, file("/x/SONG.Mp3")));
    EXPECT_TRUE(includes(*filter, file("/x/SONG.AAC", 0)));
    EXPECT_FALSE(includes(*filter, file("/x/song")));
    EXPECT_FALSE(includes(*filter, file("/x/mp3")));
    EXPECT_FALSE(includes(*filter, file("/x/song.mp3.txt")));
}

TEST(FileExtensionsFilter, FoldersAreAskedLikeFilesUnlessAllAreLetIn) {
    TavFileExtensionsFilter filter({"jpg"});
    EXPECT_TRUE(includes(filter, folder("/x/Album.jpg")));
    EXPECT_FALSE(includes(filter, folder("/x/Album")));
    filter.setAllowFolders(true);
    EXPECT_TRUE(includes(filter, folder("/x/Album")));
    EXPECT_FALSE(includes(filter, file("/x/Album")));
}

TEST(FileExtensionsFilter, EmptyFilesAreKeptOutOnRequest) {
    TavFileExtensionsFilter filter({"mp3"});
    EXPECT_FALSE(filter.hideEmptyFiles());
    filter.setHideEmptyFiles(true);
    EXPECT_TRUE(filter.hideEmptyFiles());
    EXPECT_FALSE(includes(filter, file("/x/a.mp3", 0)));
    // All 64 bits of the size count.
    EXPECT_TRUE(includes(filter, file("/x/a.mp3", std::uint64_t{1} << 32)));
    EXPECT_TRUE(includes(filter, folder("/x/empty.mp3")));
}

TEST(KindFilters, LetInFoldersFilesAndWhatIsVisible) {
    const auto gone = file("/x/gone");
    gone->facts.exists = false;
    const auto hidden = file("/x/hidden");
    hidden->facts.isVisible = false;
    const auto folders = TavFoldersOnlyFilter::filter();
    EXPECT_TRUE(includes(*folders, folder("/x/a")));
    EXPECT_FALSE(includes(*folders, file("/x/a")));
    EXPECT_FALSE(includes(*folders, gone));
    const auto files = TavFilesOnlyFilter::filter();
    EXPECT_TRUE(includes(*files, file("/x/a")));
    EXPECT_FALSE(includes(*files, folder("/x/a")));
    EXPECT_FALSE(includes(*files, gone));
    const auto visible = TavVisibleItemsFilter::filter();
    EXPECT_TRUE(includes(*visible, file("/x/a")));
    EXPECT_FALSE(includes(*visible, hidden));
}

class NestedFolders : public testing::Test {
  protected:
    static FileInfoPtr aliasTo(const FileInfoPtr& target) {
        const auto alias = file("/home/user/Music/alias");
        alias->facts.aliasTarget = target;
        return alias;
    }

    MemoryUserFolders folders_;
    UserFolders::Replacement replacement_{folders_};
    BaseFilterNestedFolders filter_{"~/Music"};
};

TEST_F(NestedFolders, AliasesBackIntoTheTreeAreKeptOut) {
    EXPECT_FALSE(includes(filter_, aliasTo(folder("/home/user/Music"))));
    EXPECT_FALSE(includes(filter_, aliasTo(folder("/home/user/Music/a/b"))));
    EXPECT_FALSE(includes(filter_, aliasTo(folder("/HOME/user/music/A"))));
}

TEST_F(NestedFolders, EverythingElseIsLetIn) {
    EXPECT_TRUE(includes(filter_, aliasTo(folder("/home/user/Musical"))));
    EXPECT_TRUE(includes(filter_, aliasTo(folder("/home/user"))));
    EXPECT_TRUE(includes(filter_, aliasTo(file("/home/user/Music/a.mp3"))));
    EXPECT_TRUE(includes(filter_, file("/home/user/Music/a.mp3")));
    EXPECT_TRUE(includes(filter_, folder("/home/user/Music/a")));
}

TEST_F(NestedFolders, TheRootOfAllHasTwoSlashes) {
    // A slash is appended to both paths, so that only an alias to the root itself is kept out.
    BaseFilterNestedFolders root("/");
    EXPECT_FALSE(includes(root, aliasTo(folder("/"))));
    EXPECT_TRUE(includes(root, aliasTo(folder("/home"))));
}

TEST(FindItemFilter, ComparesWithOrWithoutCase) {
    bool stop = false;
    internal::FindItemFilter loose("a.TXT", true, false);
    EXPECT_TRUE(loose.includeItem(*file("/x/A.txt"), &stop));
    EXPECT_FALSE(stop);
    EXPECT_FALSE(loose.includeItem(*file("/x/b.txt"), &stop));
    internal::FindItemFilter strict("a.TXT", false, false);
    EXPECT_FALSE(strict.includeItem(*file("/x/A.txt"), &stop));
    EXPECT_TRUE(strict.includeItem(*file("/x/a.TXT"), &stop));
}

TEST(FindItemFilter, StoresWhetherOneIsEnough) {
    bool stop = false;
    internal::FindItemFilter one("a", true, true);
    EXPECT_FALSE(one.includeItem(*file("/x/b"), &stop));
    EXPECT_FALSE(stop);
    EXPECT_TRUE(one.includeItem(*file("/x/a"), &stop));
    EXPECT_TRUE(stop);
    // It stores its answer, so that one which wants all takes the flag back.
    internal::FindItemFilter all("a", true, false);
    EXPECT_TRUE(all.includeItem(*file("/x/a"), &stop));
    EXPECT_FALSE(stop);
    EXPECT_TRUE(one.includeItem(*file("/x/a"), nullptr));
}

/// /x with a file, a folder of two levels and a file behind it.
std::shared_ptr<FakeFileInfo> smallTree() {
    return folder("/x", {file("/x/1"),
                         folder("/x/f", {file("/x/f/2"), folder("/x/f/g", {file("/x/f/g/3")}),
                                         file("/x/f/4")}),
                         file("/x/5")});
}

TEST(DeepListing, WhatIsInsideAFolderStandsBeforeIt) {
    EXPECT_EQ(namesOf(smallTree()->folderContentsDeepWithFilter(nullptr)),
              (std::vector<std::string>{"1", "3", "2", "g", "4", "f", "5"}));
}

TEST(DeepListing, AFolderThatIsNotLetInIsSearchedAllTheSame) {
    TavFilesOnlyFilter filesOnly;
    EXPECT_EQ(namesOf(smallTree()->folderContentsDeepWithFilter(&filesOnly)),
              (std::vector<std::string>{"1", "3", "2", "4", "5"}));
}

TEST(DeepListing, AStopKeepsWhatOuterLevelsHaveAlready) {
    internal::FindItemFilter one("3", true, true);
    EXPECT_EQ(namesOf(smallTree()->folderContentsDeepWithFilter(&one)),
              (std::vector<std::string>{"3"}));
    // A stop at a folder keeps the walk from going into it.
    internal::FindItemFilter theFolder("f", true, true);
    EXPECT_EQ(namesOf(smallTree()->folderContentsDeepWithFilter(&theFolder)),
              (std::vector<std::string>{"f"}));
}

/// Lets everything in and ends the listing at one name.
class StopAt final : public TavBaseFileInfoFilter {
  public:
    explicit StopAt(std::string name) : name_(std::move(name)) {}
    bool includeItem(TavBaseFileInfo& item, bool* stopAccumulating) override {
        *stopAccumulating = item.name() == name_;
        return true;
    }

  private:
    std::string name_;
};

TEST(DeepListing, AFolderThatTheListingStopsAtIsNotSearched) {
    StopAt stop("f");
    EXPECT_EQ(namesOf(smallTree()->folderContentsDeepWithFilter(&stop)),
              (std::vector<std::string>{"1", "f"}));
}

TEST(DeepListing, AStopInsideAFolderEndsThatFolderOnly) {
    // The inner listing has a flag of its own; only the level that the filter stopped ends at once.
    StopAt stop("2");
    EXPECT_EQ(namesOf(smallTree()->folderContentsDeepWithFilter(&stop)),
              (std::vector<std::string>{"1", "2", "f", "5"}));
}

TEST(DeepListing, WithoutAnArrayNothingIsAppended) {
    SeenLog log;
    internal::GoDeepFilter filter(nullptr, nullptr);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"__GoDeepFilter: inArray is nil!"});
    bool stop = false;
    EXPECT_TRUE(filter.includeItem(*smallTree(), &stop));
}

TEST(DeepListing, EachFolderIsTheRootOfItsOwnListing) {
    const auto inner = folder("/x/f/");
    const auto outer = folder("/x/./y/../", {inner});
    static_cast<void>(outer->folderContentsDeepWithFilter(nullptr));
    EXPECT_EQ(outer->facts.rootPaths, std::vector<std::string>{"/x/"});
    EXPECT_EQ(inner->facts.rootPaths, std::vector<std::string>{"/x/f/"});
}

} // namespace
} // namespace tav
