#include "fileinfo/local/FilterNestedFolders.hpp"
#include "fileinfo/local/LegacyListingFilters.hpp"
#include "fileinfo/local/TavFileInfoFixture_test.hpp"

#include <stdexcept>

namespace tav {
namespace {

using Names = std::vector<std::string>;
using LegacyFilters = TavFileInfoInMemory;

/// Notes what it is asked about, and may end a listing.
class NotingFilter final : public TavFileInfoFilter {
  public:
    Names asked;
    std::string refused;
    std::string last;

    bool includeItem(TavFileInfo& item, bool* stopAccumulating) override {
        asked.push_back(item.name());
        *stopAccumulating = item.name() == last;
        return item.name() != refused;
    }
};

TEST_F(LegacyFilters, ThePlainOneLetsAllInAndClearsTheFlag) {
    TavFileInfoFilter filter;
    bool stop = true;
    EXPECT_TRUE(filter.includeItem(*older("/a"), &stop));
    EXPECT_FALSE(stop);
    EXPECT_TRUE(filter.includeItem(*older("/a"), nullptr));
}

TEST_F(LegacyFilters, FindsANameExactlyOrIgnoringCase) {
    legacy::FindItemFilter exactly("Name", false, false);
    legacy::FindItemFilter ignoringCase("Name", true, false);
    EXPECT_TRUE(exactly.includeItem(*older("/a/Name"), nullptr));
    EXPECT_FALSE(exactly.includeItem(*older("/a/name"), nullptr));
    EXPECT_TRUE(ignoringCase.includeItem(*older("/a/nAME"), nullptr));
    EXPECT_FALSE(ignoringCase.includeItem(*older("/a/Name2"), nullptr));
    EXPECT_TRUE(
        legacy::FindItemFilter("\xFF", true, false).includeItem(*older("/a/\xFF"), nullptr));
}

TEST_F(LegacyFilters, TheFlagOfAFoundItemSaysWhetherOneIsEnough) {
    legacy::FindItemFilter one("n", true, true);
    legacy::FindItemFilter all("n", true, false);
    bool stop = false;
    EXPECT_TRUE(one.includeItem(*older("/n"), &stop));
    EXPECT_TRUE(stop);
    EXPECT_TRUE(all.includeItem(*older("/n"), &stop));
    EXPECT_FALSE(stop) << "set to what is wanted, not only set";
    stop = true;
    EXPECT_FALSE(one.includeItem(*older("/m"), &stop));
    EXPECT_TRUE(stop) << "left alone for what is not found";
}

TEST_F(LegacyFilters, GoingDeepAsksTheRealFilterAndAppendsWhatIsInAFolder) {
    memory.addFile("/f/a", "");
    memory.addFile("/f/b", "");
    NotingFilter real;
    real.refused = "f";
    TavFileInfoArray array;
    legacy::GoDeepFilter filter(&real, &array);
    bool stop = false;
    EXPECT_FALSE(filter.includeItem(*older("/f"), &stop)) << "the real filter's verdict";
    EXPECT_EQ(namesOf(array), (Names{"a", "b"}));
    EXPECT_EQ(real.asked, (Names{"f", "a", "b"}));
}

TEST_F(LegacyFilters, GoingDeepWithoutAFilterOrAnArray) {
    memory.addFile("/f/a", "");
    TavFileInfoArray array;
    bool stop = false;
    EXPECT_TRUE(legacy::GoDeepFilter(nullptr, &array).includeItem(*older("/f"), &stop));
    EXPECT_EQ(namesOf(array), (Names{"a"}));
    EXPECT_TRUE(legacy::GoDeepFilter(nullptr, nullptr).includeItem(*older("/f"), &stop));
    EXPECT_TRUE(legacy::GoDeepFilter(nullptr, &array).includeItem(*older("/f"), nullptr));
    EXPECT_EQ(array.size(), 2U);
    EXPECT_TRUE(legacy::GoDeepFilter(nullptr, &array).includeItem(*older("/f/a"), &stop));
    EXPECT_EQ(array.size(), 2U) << "a file holds nothing";
}

TEST_F(LegacyFilters, AFolderThatEndsTheListingIsNotGoneInto) {
    memory.addFile("/f/a", "");
    NotingFilter real;
    real.last = "f";
    TavFileInfoArray array;
    legacy::GoDeepFilter filter(&real, &array);
    bool stop = false;
    EXPECT_TRUE(filter.includeItem(*older("/f"), &stop));
    EXPECT_TRUE(stop);
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(real.asked, (Names{"f"}));
}

TEST_F(LegacyFilters, WhatAFilterThrowsPassesAndTheNextListingIsAsDeep) {
    memory.addFile("/f/g/h/a", "");
    class Throwing final : public TavFileInfoFilter {
      public:
        bool throws = true;
        bool includeItem(TavFileInfo& item, bool* /*stop*/) override {
            if (throws && item.name() == "a") {
                throw std::runtime_error("no");
            }
            return true;
        }
    };
    Throwing real;
    TavFileInfoArray array;
    legacy::GoDeepFilter filter(&real, &array);
    bool stop = false;
    EXPECT_THROW(filter.includeItem(*older("/f"), &stop), std::runtime_error);
    real.throws = false;
    EXPECT_TRUE(filter.includeItem(*older("/f"), &stop));
    EXPECT_EQ(namesOf(array), (Names{"a", "h", "g"}));
}

TEST_F(LegacyFilters, AliasesIntoTheRootsOwnTreeAreNested) {
    memory.addFile("/home/user/Root/inner/file", "");
    memory.addFolder("/home/user/Rootless");
    memory.addFolder("/elsewhere");
    memory.addLink("/toRoot", "/home/user/Root");
    memory.addLink("/toInner", "/home/user/Root/inner");
    memory.addLink("/toFile", "/home/user/Root/inner/file");
    memory.addLink("/toSibling", "/home/user/Rootless");
    memory.addLink("/toParent", "/home/user");
    memory.addLink("/out", "/elsewhere");
    memory.addLink("/broken", "/home/user/Root/nothing");
    FilterNestedFolders filter("~/rOOT");
    bool stop = true;
    EXPECT_FALSE(filter.includeItem(*older("/toRoot"), &stop));
    EXPECT_FALSE(filter.includeItem(*older("/toInner"), &stop)) << "whatever the letter case";
    EXPECT_FALSE(filter.includeItem(*older("/toSibling"), &stop))
        << "meant: its path begins with that of the root";
    EXPECT_TRUE(filter.includeItem(*older("/toFile"), &stop));
    EXPECT_TRUE(filter.includeItem(*older("/toParent"), &stop));
    EXPECT_TRUE(filter.includeItem(*older("/out"), &stop));
    EXPECT_TRUE(filter.includeItem(*older("/broken"), &stop));
    EXPECT_TRUE(filter.includeItem(*older("/home/user/Root/inner"), &stop)) << "no alias";
    EXPECT_TRUE(filter.includeItem(*older("/missing"), &stop));
    EXPECT_TRUE(stop) << "left alone";
}

TEST_F(LegacyFilters, EveryPathBeginsWithAnEmptyRoot) {
    memory.addFolder("/elsewhere");
    memory.addLink("/out", "/elsewhere");
    EXPECT_FALSE(FilterNestedFolders("").includeItem(*older("/out"), nullptr));
    EXPECT_FALSE(FilterNestedFolders("/").includeItem(*older("/out"), nullptr));
}

TEST_F(LegacyFilters, ARootOfOtherBytes) {
    memory.addFolder("/\xFFroot/in");
    memory.addLink("/link", "/\xFFroot/in");
    EXPECT_FALSE(FilterNestedFolders("/\xFFROOT").includeItem(*older("/link"), nullptr));
    EXPECT_TRUE(FilterNestedFolders("/\xFEROOT").includeItem(*older("/link"), nullptr));
}

} // namespace
} // namespace tav
