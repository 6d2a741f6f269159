#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "base/PropertyList.hpp"
#include "fileinfo/local/ArchivedLocalFileInfos.hpp"
#include "fileinfo/local/TavFileInfoFixture_test.hpp"

#include <array>
#include <cstdlib>
#include <utility>

namespace tav {
namespace {

using TavFileInfoTest = TavFileInfoInMemory;

TEST_F(TavFileInfoTest, PathsAreStandardised) {
    EXPECT_EQ(older("/a/../b/./c//d/")->path(), "/b/c/d");
    EXPECT_EQ(older("/../..")->path(), "/");
    EXPECT_EQ(older("~/x/../y")->path(), "/home/user/y");
    EXPECT_EQ(older("~other/x")->path(), "~other/x");
    EXPECT_EQ(older("/\xFF/../\xFE\n")->path(), "/\xFE\n") << "names are bytes";
    EXPECT_EQ(older("")->path(), "");
    EXPECT_EQ(callsOf([] { static_cast<void>(older("/a")->path()); }), Calls())
        << "making an item asks nothing";
}

TEST_F(TavFileInfoTest, APathMayBeMissingWhichIsNotTheEmptyOne) {
    EXPECT_EQ(older(nullptr)->description(), "TavFileInfo has (null) path.");
    EXPECT_EQ(older("")->description(), "");
    EXPECT_EQ(older("/a")->description(), "/a");
    EXPECT_EQ(older(nullptr)->path(), "");
}

TEST_F(TavFileInfoTest, WithoutAPathEverythingAnswersNothing) {
    const TavFileInfoPtr none = older(nullptr);
    EXPECT_FALSE(none->exists());
    EXPECT_FALSE(none->isFolder());
    EXPECT_FALSE(none->isFile());
    EXPECT_FALSE(none->isAlias());
    EXPECT_FALSE(none->cacheInfo());
    EXPECT_FALSE(none->cacheAttributes());
    EXPECT_EQ(none->fileRef(), nullptr);
    EXPECT_TRUE(none->fileSpec().isZero());
    EXPECT_EQ(none->resolvedPath(), std::nullopt);
    EXPECT_EQ(none->aliasTarget(), nullptr);
    EXPECT_FALSE(none->resolveAlias());
    EXPECT_EQ(none->resolvedFileInfo(), none);
    EXPECT_EQ(none->resolvedSize(), 0U);
    EXPECT_EQ(none->name(), "");
    EXPECT_EQ(none->nameWithoutExtension(), "");
    EXPECT_EQ(none->extension(), "");
    EXPECT_EQ(none->uniqueFilename("a"), "a");
    EXPECT_EQ(none->typeCode(), 0x3F3F3F3FU);
    EXPECT_EQ(none->creatorCode(), 0x3F3F3F3FU);
    EXPECT_EQ(none->typeCodeString(), "");
    EXPECT_EQ(none->modificationDate(), std::nullopt);
    EXPECT_EQ(none->creationDate(), std::nullopt);
    EXPECT_EQ(none->size(), 0U);
    EXPECT_FALSE(none->isLocked());
    EXPECT_TRUE(none->visible());
    EXPECT_EQ(none->preview(), nullptr);
    EXPECT_EQ(none->find("a")->description(), "TavFileInfo has (null) path.");
    EXPECT_EQ(none->parentFolder()->description(), "TavFileInfo has (null) path.");
    EXPECT_TRUE(none->folderContents().empty());
    EXPECT_TRUE(none->findDeep("a").empty());
    EXPECT_EQ(none->findFirstDeep("a"), nullptr);
    EXPECT_EQ(none->fileContents(), std::nullopt);
    EXPECT_FALSE(none->setFileContents({}));
    EXPECT_EQ(none->createFolder(""), nullptr);
    EXPECT_EQ(none->createFolder("a"), nullptr);
    EXPECT_EQ(older("a")->fileRef(), nullptr) << "nothing is made in the working directory";
    EXPECT_FALSE(none->createFile("a", {}, nullptr)->exists());
    EXPECT_FALSE(none->createFile("a", {}, nullptr, true)->exists());
    EXPECT_EQ(older("a")->fileRef(), nullptr);
    EXPECT_FALSE(none->removeContents());
    EXPECT_FALSE(none->remove());
    none->setName("a");
    none->setLocked(true);
    none->setHideExtension(true);
    none->setModificationDate(Date(1));
    none->setCreationDate(Date(1));
    EXPECT_EQ(none->copy()->description(), "TavFileInfo has (null) path.");
}

TEST_F(TavFileInfoTest, AliasesAreResolvedAtTheEndOrAtEveryComponent) {
    memory.addFile("/real/folder/file", "");
    memory.addLink("/link", "/real");
    memory.addLink("/real/folder/alias", "file");
    EXPECT_EQ(TavFileInfo::withPath("/link", true)->path(), "/real");
    EXPECT_EQ(TavFileInfo::withPath("/link", false)->path(), "/link");
    EXPECT_EQ(TavFileInfo::withPath("/link/folder/alias", true)->path(), "/real/folder/file");
    EXPECT_EQ(TavFileInfo::fileInfoResolveAliasesWithPath("/link/folder/alias")->path(),
              "/real/folder/file");
    EXPECT_EQ(TavFileInfo::fileInfoResolveAliasesWithPath("/link/folder")->path(), "/real/folder");
    EXPECT_EQ(TavFileInfo::fileInfoResolveAliasesWithPath("/link/missing"), nullptr);
    EXPECT_EQ(TavFileInfo::fileInfoResolveAliasesWithPath(""), nullptr);
}

TEST_F(TavFileInfoTest, FromURLs) {
    memory.addFile("/a b", "");
    memory.addLink("/link", "/a b");
    const std::optional<Url> url = Url::withString("file:///x/../a%20b");
    EXPECT_EQ(TavFileInfo::fileInfoWithURL(&*url)->path(), "/a b");
    const std::optional<Url> link = Url::withString("file:///link");
    EXPECT_EQ(TavFileInfo::fileInfoWithURL(&*link)->path(), "/link");
    EXPECT_EQ(TavFileInfo::fileInfoResolveAliasesWithURL(&*link)->path(), "/a b");
    const std::optional<Url> other = Url::withString("http://host/a");
    EXPECT_EQ(TavFileInfo::fileInfoWithURL(&*other)->description(), "TavFileInfo has (null) path.");
    EXPECT_EQ(TavFileInfo::fileInfoWithURL(nullptr)->description(), "TavFileInfo has (null) path.");
}

TEST_F(TavFileInfoTest, FromReferences) {
    memory.addFile("/f", "");
    memory.addLink("/link", "/f");
    const FileRef reference = TavFileInfo::fileRefFromPath("/link");
    EXPECT_EQ(TavFileInfo::fileInfoWithFileRef(&reference)->path(), "/link");
    EXPECT_EQ(*TavFileInfo::fileInfoWithFileRef(&reference)->fileRef(), reference);
    EXPECT_EQ(TavFileInfo::fileInfoResolveAliasesWithFileRef(&reference)->path(), "/f");
    EXPECT_EQ(TavFileInfo::fileInfoWithFileRef(nullptr)->description(),
              "TavFileInfo has (null) path.");
    EXPECT_EQ(TavFileInfo::fileInfoWithFileRef(nullptr)->fileRef(), nullptr);
    const FileRef zero;
    EXPECT_FALSE(TavFileInfo::fileInfoWithFileRef(&zero)->exists());
}

TEST_F(TavFileInfoTest, FromFileSpecifications) {
    memory.addFile("/folder/f", "");
    memory.addLink("/folder/link", "f");
    const FileSpec specification = older("/folder/link")->fileSpec();
    EXPECT_EQ(specification.name, "link");
    EXPECT_EQ(TavFileInfo::fileInfoWithFileSpec(&specification)->path(), "/folder/link");
    EXPECT_EQ(TavFileInfo::fileInfoResolveAliasesWithFileSpec(&specification)->path(), "/folder/f");
    EXPECT_EQ(TavFileInfo::fileInfoWithFileSpec(nullptr)->description(),
              "TavFileInfo has (null) path.");
}

TEST_F(TavFileInfoTest, FromAnItemIsACopyOfAnEmptyOneWhateverTheArgument) {
    const TavFileInfoPtr item = older("/a");
    EXPECT_EQ(TavFileInfo::fileInfoWithFileInfo(item.get())->description(),
              "TavFileInfo has (null) path.");
    EXPECT_EQ(TavFileInfo::fileInfoWithFileInfo(nullptr)->path(), "");
}

TEST_F(TavFileInfoTest, AnItemAPath) {
    const std::array<std::string, 3> paths = {"/b/../c", "", "~"};
    const TavFileInfoArray items = TavFileInfo::fileInfoArrayFromPathsArray(paths);
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0]->path(), "/c");
    EXPECT_EQ(items[1]->path(), "");
    EXPECT_EQ(items[2]->path(), "/home/user");
    EXPECT_TRUE(TavFileInfo::fileInfoArrayFromPathsArray({}).empty());
}

TEST_F(TavFileInfoTest, InitXForgetsEverything) {
    memory.addFile("/f", "123");
    const TavFileInfoPtr item = older("/f");
    EXPECT_EQ(item->size(), 3U);
    EXPECT_TRUE(item->isFile());
    item->initX();
    EXPECT_EQ(item->description(), "TavFileInfo has (null) path.");
    EXPECT_FALSE(item->exists());
    EXPECT_FALSE(item->isFile());
    EXPECT_EQ(item->size(), 0U);
}

TEST_F(TavFileInfoTest, ACopyKnowsWhatTheItemKnows) {
    memory.addFile("/f", "123");
    memory.addLink("/link", "/f");
    const TavFileInfoPtr known = older("/f");
    const TavFileInfoPtr fresh = older("/f");
    EXPECT_EQ(known->size(), 3U);
    EXPECT_TRUE(known->isFile());
    memory.removeAll("/f");
    const TavFileInfoPtr copied = known->copy();
    EXPECT_NE(copied, known);
    EXPECT_EQ(copied->path(), "/f");
    EXPECT_TRUE(copied->exists()) << "although nothing was found";
    EXPECT_TRUE(copied->isFile());
    EXPECT_EQ(copied->size(), 3U);
    EXPECT_FALSE(fresh->copy()->exists());

    memory.addFile("/f", "");
    const TavFileInfoPtr link = older("/link");
    EXPECT_TRUE(link->isAlias());
    EXPECT_TRUE(link->copy()->resolveAlias());
    EXPECT_EQ(link->path(), "/link");
}

TEST_F(TavFileInfoTest, EqualityIsThatOfThePathsIgnoringCase) {
    const TavFileInfoPtr item = older("/A/é");
    const TavFileInfoPtr same = older("/a/E\xCC\x81");
    EXPECT_TRUE(item->isEqualTo(same.get()));
    EXPECT_TRUE(item->isEqualToFileInfo(same.get()));
    EXPECT_TRUE(item->isEqualTo(item.get()));
    EXPECT_FALSE(item->isEqualTo(older("/a/f").get()));
    EXPECT_FALSE(item->isEqualToFileInfo(older("/a/f").get()));
    EXPECT_FALSE(item->isEqualTo(at("/A/é").get())) << "no older item";
    EXPECT_FALSE(item->isEqualTo(nullptr));
    EXPECT_FALSE(item->isEqualToFileInfo(nullptr));
    EXPECT_FALSE(older(nullptr)->isEqualToFileInfo(older(nullptr).get()));
    EXPECT_FALSE(older("")->isEqualToFileInfo(older(nullptr).get()));
    EXPECT_TRUE(older("")->isEqualToFileInfo(older("").get()));
}

TEST_F(TavFileInfoTest, AFolderContainsWhateverBeginsWithItsPath) {
    memory.addFolder("/a/B");
    memory.addFile("/a/file", "");
    const TavFileInfoPtr folder = older("/a/B");
    EXPECT_TRUE(folder->contains(older("/a/B/c").get()));
    EXPECT_TRUE(folder->contains(older("/A/b/c").get()));
    EXPECT_TRUE(folder->contains(older("/a/B").get()));
    EXPECT_TRUE(folder->contains(older("/a/Bcd").get())) << "meant: a sibling with a longer name";
    EXPECT_FALSE(folder->contains(older("/a/c").get()));
    EXPECT_FALSE(folder->contains(older("/a").get()));
    EXPECT_FALSE(folder->contains(nullptr));
    EXPECT_FALSE(older("/a/file")->contains(older("/a/file/x").get())) << "no folder";
    EXPECT_FALSE(older("/missing")->contains(older("/missing/x").get()));
}

// Archives

std::shared_ptr<TavFileInfo> throughArchive(const TavFileInfoPtr& item) {
    const Data archive = archivedDataWithRootObject(item.get());
    registerArchivedLocalFileInfos();
    const Archived read = unarchiveObjectWithData(archive);
    const auto* object = std::get_if<std::shared_ptr<Coding>>(&read);
    return object != nullptr ? std::dynamic_pointer_cast<TavFileInfo>(*object) : nullptr;
}

TEST_F(TavFileInfoTest, AnItemTravelsThroughAnArchiveAsItsPath) {
    for (const char* path : {"/f", "/\xFF\xFE", "", "/a b/\xC3\xA9"}) {
        const TavFileInfoPtr back = throughArchive(older(path));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(back->description(), path);
    }
    const TavFileInfoPtr none = throughArchive(older(nullptr));
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none->description(), "TavFileInfo has (null) path.");
}

TEST_F(TavFileInfoTest, AnArchiveHoldsThePathAloneUnderItsKey) {
    memory.addFile("/f", "123");
    const std::optional<Value> list =
        PropertyList::read(archivedDataWithRootObject(older("/f").get()), nullptr);
    ASSERT_TRUE(list);
    const Value::Array& objects = *list->asDictionary()->find("$objects")->asArray();
    int items = 0;
    for (const Value& object : objects) {
        const Value::Dictionary* dictionary = object.asDictionary();
        if (dictionary != nullptr && dictionary->find("$class") != nullptr) {
            ++items;
            EXPECT_EQ(dictionary->size(), 2U) << "the class and the path";
            EXPECT_NE(dictionary->find("TavFileInfo_path"), nullptr);
        }
    }
    EXPECT_EQ(items, 1);
}

TEST_F(TavFileInfoTest, AnItemThatIsFilledFromAnArchiveForgetsWhatItWas) {
    memory.addFile("/old", "123");
    memory.addFolder("/new");
    KeyedArchiver archiver;
    older("/new")->encodeWithCoder(archiver);
    const Data archive = archiver.finishEncoding();
    const TavFileInfoPtr item = older("/old");
    ASSERT_TRUE(item->isFile());
    KeyedUnarchiver unarchiver(archive);
    item->initWithCoder(unarchiver);
    EXPECT_EQ(item->path(), "/new");
    EXPECT_TRUE(item->isFolder());
}

TEST_F(TavFileInfoTest, ReadsAnArchiveThatWasWrittenByHand) {
    const std::string_view archive = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>$archiver</key><string>NSKeyedArchiver</string>
<key>$version</key><integer>100000</integer>
<key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>1</integer></dict></dict>
<key>$objects</key><array>
<string>$null</string>
<dict><key>$class</key><dict><key>CF$UID</key><integer>3</integer></dict>
<key>TavFileInfo_path</key><dict><key>CF$UID</key><integer>2</integer></dict></dict>
<string>/Users/me/../Pictures</string>
<dict><key>$classname</key><string>TavFileInfo</string>
<key>$classes</key><array><string>TavFileInfo</string><string>NSObject</string></array></dict>
</array></dict></plist>)";
    registerArchivedLocalFileInfos();
    const Archived read = unarchiveObjectWithData(bytesOf(archive));
    const auto* object = std::get_if<std::shared_ptr<Coding>>(&read);
    ASSERT_NE(object, nullptr);
    const auto item = std::dynamic_pointer_cast<TavFileInfo>(*object);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->path(), "/Users/Pictures") << "as any path that an item is made with";
}

TEST_F(TavFileInfoTest, ArchivesKeepTheirForm) {
    // What was written once is readable for ever.
    const Result<Data> golden =
        internal::realFileSystem().readFile(TAV_TESTDATA "/archives/TavFileInfo.plist", 1U << 16U);
    ASSERT_TRUE(golden.ok());
    EXPECT_EQ(archivedDataWithRootObject(older("/golden/\u00FC").get()), golden.value());
    registerArchivedLocalFileInfos();
    const Archived read = unarchiveObjectWithData(golden.value());
    const auto* object = std::get_if<std::shared_ptr<Coding>>(&read);
    ASSERT_NE(object, nullptr);
    const auto item = std::dynamic_pointer_cast<TavFileInfo>(*object);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->path(), "/golden/\u00FC");
}

TEST_F(TavFileInfoTest, AnArchiveOfAFileWithAnotherNameHasTheNewOne) {
    memory.addFile("/f", "");
    const TavFileInfoPtr item = older("/f");
    ASSERT_TRUE(item->exists());
    ASSERT_TRUE(memory.move("/f", "/g", Replace::No).isNone());
    EXPECT_EQ(throughArchive(item)->path(), "/g");
}

} // namespace
} // namespace tav
