#include "fileinfo/FakeFileInfo_test.hpp"
#include "testing/Golden.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

/// An item on a volume of its own or, with the same path for the volume, on a common one.
std::shared_ptr<FakeFileInfo> item(std::string_view path, bool isFolder,
                                   std::string_view volume = "/") {
    const auto made = FakeFileInfo::fileInfoWithPath(path);
    made->facts.isFolder = isFolder;
    made->facts.volume = TavPathBasedFileInfo::fileInfoWithPath(volume);
    return made;
}

TEST(PathItem, GoldenComponents) {
    for (const GoldenCase& golden : goldenCases("edges.json", "pathBased.pathComponents")) {
        EXPECT_EQ(
            TavPathBasedFileInfo::fileInfoWithPath(golden.in.get<std::string>())->pathComponents(),
            golden.out.get<std::vector<std::string>>())
            << golden.description();
    }
}

TEST(PathItem, GoldenWaysToOthers) {
    for (const GoldenCase& golden : goldenCases("edges.json", "pathBased.relativePathTo")) {
        const auto own =
            item(golden.in["path"].get<std::string>(), golden.in["isFolder"].get<bool>());
        const auto other = item(golden.in["other"].get<std::string>(), false,
                                golden.in["sameVolume"].get<bool>() ? "/" : "/Volumes/C");
        EXPECT_EQ(own->relativePathTo(other.get()), golden.out.get<std::string>())
            << golden.description();
    }
}

TEST(PathItem, GoldenContains) {
    for (const GoldenCase& golden : goldenCases("edges.json", "pathBased.contains")) {
        const auto own =
            item(golden.in["path"].get<std::string>(), golden.in["isFolder"].get<bool>());
        const auto other = item(golden.in["other"].get<std::string>(), false);
        EXPECT_EQ(own->contains(other.get()), golden.out.get<bool>()) << golden.description();
    }
}

TEST(PathItem, GoldenPathsInsideAVolume) {
    for (const GoldenCase& golden :
         goldenCases("edges.json", "pathBased.volumeRelativeStandardPath")) {
        const auto own = item(golden.in["path"].get<std::string>(), true,
                              golden.in["volume"].get<std::string>());
        EXPECT_EQ(own->volumeRelativeStandardPath(), golden.out.get<std::string>())
            << golden.description();
    }
}

TEST(PathItem, ThePathIsEmptyUntilThereIsOne) {
    EXPECT_EQ(TavPathBasedFileInfo::fileInfo()->path(), "");
    EXPECT_EQ(TavPathBasedFileInfo::fileInfo()->name(), "");
    EXPECT_TRUE(TavPathBasedFileInfo::fileInfo()->pathComponents().empty());
    EXPECT_EQ(TavPathBasedFileInfo::fileInfoWithPath("")->path(), "");
}

TEST(PathItem, NamesComeFromTheLastComponent) {
    const FileInfoPtr file = TavPathBasedFileInfo::fileInfoWithPath("/a.b/c.tar.gz");
    EXPECT_EQ(file->name(), "c.tar.gz");
    EXPECT_EQ(file->nameWithoutExtension(), "c.tar");
    EXPECT_EQ(file->extension(), "gz");
    EXPECT_EQ(file->description(), "/a.b/c.tar.gz");
    EXPECT_EQ(file->standardPath(), "/a.b/c.tar.gz");
    EXPECT_EQ(file->humanFriendlyPath(), "/a.b/c.tar.gz");
    EXPECT_EQ(file->humanFriendlyName(), "c.tar.gz");
    EXPECT_EQ(file->numBytesNeededForPath(), 26);
}

TEST(PathItem, NamesThatAreNoUTF8ComeThrough) {
    const std::string path = "/x/\xff\xfe.\x80";
    const FileInfoPtr file = TavPathBasedFileInfo::fileInfoWithPath(path);
    EXPECT_EQ(file->path(), path);
    EXPECT_EQ(file->name(), "\xff\xfe.\x80");
    EXPECT_EQ(file->extension(), "\x80");
    file->updateName("\xc3");
    EXPECT_EQ(file->path(), "/x/\xc3");
    EXPECT_EQ(item("/v/\xff\xfe/", true, "/v")->volumeRelativeStandardPath(), "\xff\xfe");
}

TEST(PathItem, NothingExistsAtThisLevel) {
    const FileInfoPtr root = TavPathBasedFileInfo::fileInfoWithPath("/");
    EXPECT_FALSE(root->exists());
    EXPECT_FALSE(root->isFolder());
    EXPECT_FALSE(root->isFile());
    EXPECT_EQ(root->volume(), nullptr);
    EXPECT_FALSE(root->contains(root.get()));
}

TEST(PathItem, TheParentIsAPlainItem) {
    const FileInfoPtr parent = FakeFileInfo::fileInfoWithPath("/a/b")->parentFolder();
    EXPECT_EQ(parent->path(), "/a");
    EXPECT_EQ(parent->className(), "TavPathBasedFileInfo");
    EXPECT_FALSE(parent->exists());
    EXPECT_EQ(TavPathBasedFileInfo::fileInfoWithPath("/")->parentFolder()->path(), "/");
    EXPECT_EQ(TavPathBasedFileInfo::fileInfoWithPath("a")->parentFolder()->path(), "");
}

TEST(PathItem, PathsAreEqualIgnoringCase) {
    const FileInfoPtr upper = TavPathBasedFileInfo::fileInfoWithPath("/A/B");
    EXPECT_TRUE(upper->isEqualTo(TavPathBasedFileInfo::fileInfoWithPath("/a/b").get()));
    EXPECT_FALSE(upper->isEqualTo(TavPathBasedFileInfo::fileInfoWithPath("/a/b/").get()));
    EXPECT_FALSE(upper->isEqualTo(TavBaseFileInfo::fileInfo().get()));
    EXPECT_FALSE(upper->isEqualTo(nullptr));
}

TEST(PathItem, OnlyMakingAnItemFromAPathRefreshesIt) {
    const auto made = FakeFileInfo::fileInfoWithPath("/a");
    EXPECT_EQ(made->facts.refreshes, 1);
    made->setPath("/b");
    made->updateName("c");
    EXPECT_EQ(made->moveTo(TavPathBasedFileInfo::fileInfoWithPath("/d").get()), Status::Success);
    EXPECT_EQ(made->path(), "/d");
    EXPECT_EQ(made->facts.refreshes, 1);
}

TEST(PathItem, ANewNameStandsInTheSameFolder) {
    const FileInfoPtr file = TavPathBasedFileInfo::fileInfoWithPath("/a/b.txt");
    file->updateName("c.txt");
    EXPECT_EQ(file->path(), "/a/c.txt");
}

TEST(PathItem, ContainsAsksForTheBeginningOfThePathOnly) {
    const auto folder = item("/a/B", true);
    EXPECT_TRUE(folder->contains(item("/A/b/c", false).get()));
    EXPECT_TRUE(folder->contains(item("/a/b", false).get()));
    EXPECT_FALSE(folder->contains(item("/a/c", false).get()));
    EXPECT_FALSE(item("/a/b/", true)->contains(item("/a/bc", false).get()));
    EXPECT_FALSE(folder->contains(nullptr));
}

TEST(PathItem, ContainsComparesUpperCasedPaths) {
    // One letter may become two, and one of these may be all that the folder's path ends with.
    EXPECT_TRUE(item("/STRASSE", true)->contains(item("/stra\u00dfe/a", false).get()));
    EXPECT_TRUE(item("/stra\u00dfe", true)->contains(item("/STRASSE/a", false).get()));
    EXPECT_TRUE(item("/s", true)->contains(item("/\u00df", false).get()));
    EXPECT_FALSE(item("/\u00df", true)->contains(item("/s", false).get()));
    EXPECT_TRUE(item("", true)->contains(item("/a", false).get()));
}

TEST(PathItem, AByteThatIsNoUTF8BeginsNoLetter) {
    EXPECT_FALSE(item("/a\xc3", true)->contains(item("/a\u00e9/b", false).get()));
    EXPECT_TRUE(item("/a\xc3", true)->contains(item("/A\xc3/b", false).get()));
    EXPECT_EQ(item("/a\u00e9", true, "/a\xc3")->volumeRelativeStandardPath(), "/a\u00e9");
    EXPECT_EQ(item("/a\xc3/b", true, "/a\xc3")->volumeRelativeStandardPath(), "b");
}

TEST(PathItem, TheVolumeIsTakenAwayByItsOwnLength) {
    // The paths are compared upper-cased, but as many characters go as the volume's path has.
    EXPECT_EQ(item("/STRASSE/a", true, "/stra\u00dfe")->volumeRelativeStandardPath(), "E/a");
    EXPECT_EQ(item("/stra\u00dfe/ab", true, "/STRASSE")->volumeRelativeStandardPath(), "ab");
    EXPECT_EQ(item("/\u00df", true, "/SS")->volumeRelativeStandardPath(), "");
    // A character beyond the first 65536 has two units in both.
    EXPECT_EQ(item("/\U00010428/a", true, "/\U00010400")->volumeRelativeStandardPath(), "a");
}

TEST(PathItem, ThePathInsideAVolumeHasNoSlashAtItsEnds) {
    EXPECT_EQ(item("/a/b/", true, "/")->volumeRelativeStandardPath(), "a/b");
    EXPECT_EQ(item("/Volumes/CARD", true, "/Volumes/CARD")->volumeRelativeStandardPath(), "");
    EXPECT_EQ(item("/Volumes/CARD/", true, "/Volumes/CARD")->volumeRelativeStandardPath(), "");
    EXPECT_EQ(item("/volumes/card/DCIM", true, "/Volumes/CARD")->volumeRelativeStandardPath(),
              "DCIM");
    EXPECT_EQ(item("/other/a/", true, "/Volumes/CARD")->volumeRelativeStandardPath(), "/other/a/");
    // The volume's length is counted in its own characters.
    EXPECT_EQ(item("/v\u00c9/a", true, "/v\u00e9")->volumeRelativeStandardPath(), "a");
    // Without a volume there is nothing to take away.
    EXPECT_EQ(TavPathBasedFileInfo::fileInfoWithPath("/a/")->volumeRelativeStandardPath(), "/a/");
}

TEST(PathItem, TheWayStartsInTheFolderOfAFile) {
    EXPECT_EQ(item("/x/a/f.txt", false)->relativePathTo(item("/x/c", false).get()), "../c");
    EXPECT_EQ(item("/x/a/f.txt", false)->relativePathTo(item("/x/a/g", false).get()), "g");
    EXPECT_EQ(item("/x/a/", true)->relativePathTo(item("/x", true).get()), "..");
    EXPECT_EQ(item("/x", true)->relativePathTo(item("/X", true).get()), "");
}

TEST(PathItem, TheRootHasNoComponentsOnAWay) {
    // It is all slash, which goes as that at the end of any other path does.
    EXPECT_EQ(item("/", true)->relativePathTo(item("/x/y", false).get()), "/x/y");
    EXPECT_EQ(item("/x", true)->relativePathTo(item("/", true).get()), "../..");
    EXPECT_EQ(item("/", true)->relativePathTo(item("/", true).get()), "");
}

TEST(PathItem, ALongerNameBesideTheFolderNeedsNoWayUp) {
    // It is contained by the text of its path, so that no ".." is put in front.
    EXPECT_EQ(item("/a/b", true)->relativePathTo(item("/a/bc", false).get()), "bc");
}

TEST(PathItem, ItemsWithoutAVolumeAreOnDifferentOnes) {
    const FileInfoPtr one = TavPathBasedFileInfo::fileInfoWithPath("/a");
    EXPECT_EQ(one->relativePathTo(TavPathBasedFileInfo::fileInfoWithPath("/a/b").get()), "/a/b");
    EXPECT_EQ(one->relativePathTo(nullptr), std::nullopt);
}

} // namespace
} // namespace tav
