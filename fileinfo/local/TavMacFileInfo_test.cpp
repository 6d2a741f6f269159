#include "base/KeyedArchiver.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

#include <array>

namespace tav {
namespace {

using TavMacFileInfoTest = MacFileInfoInMemory;

std::string resolve(std::string_view path) {
    const auto item = TavMacFileInfo::fileInfoResolveAliasesWithPath(path);
    return item ? item->path() : "nothing";
}

TEST_F(TavMacFileInfoTest, MakingAnItemAsksNothing) {
    memory.addFile("/a/b", "");
    EXPECT_EQ(callsOf([] { EXPECT_EQ(at("/a/b")->name(), "b"); }), Calls{});
    EXPECT_EQ(at("/gone/x")->path(), "/gone/x");
    EXPECT_FALSE(at("/gone/x")->exists());
}

TEST_F(TavMacFileInfoTest, ATildeIsExpanded) {
    EXPECT_EQ(at("~/x")->path(), "/home/user/x");
    EXPECT_EQ(at("~")->path(), "/home/user");
    EXPECT_EQ(at("/a/~")->path(), "/a/~");
}

TEST_F(TavMacFileInfoTest, FixedAnswers) {
    const Item item = at("/a");
    EXPECT_EQ(item->maxPathLength(), 1024);
    EXPECT_EQ(item->preferredChunkSize(), 1048576U);
    EXPECT_TRUE(item->supportsTimezones());
    EXPECT_FALSE(item->mustUseUTCDates());
    EXPECT_EQ(item->className(), "TavMacFileInfo");
    EXPECT_EQ(item->superclassNames(),
              (std::vector<std::string>{"TavPathBasedFileInfo", "TavBaseFileInfo", "NSObject"}));
}

TEST_F(TavMacFileInfoTest, AnItemOfItsOwnHasTheEmptyPath) {
    const Item item = TavMacFileInfo::fileInfo();
    EXPECT_EQ(item->path(), "");
    EXPECT_FALSE(item->exists());
    EXPECT_FALSE(item->isFolder());
    EXPECT_FALSE(item->isFile());
    EXPECT_FALSE(item->isAlias());
    EXPECT_EQ(item->size(), 0U);
    EXPECT_EQ(item->savedInfo(), std::nullopt);
}

TEST_F(TavMacFileInfoTest, ResolvingAtTheStart) {
    memory.addFile("/real/file", "");
    memory.addLink("/link", "/real/file");
    memory.addLink("/toFolder", "/real");
    EXPECT_EQ(TavMacFileInfo::withPath("/link", true)->path(), "/real/file");
    EXPECT_EQ(TavMacFileInfo::withPath("/link", false)->path(), "/link");
    // The whole path is asked for one alias only, that at its end.
    EXPECT_EQ(TavMacFileInfo::withPath("/toFolder/file", true)->path(), "/toFolder/file");

    const std::optional<Url> url = Url::withString("file:///link");
    EXPECT_EQ(TavMacFileInfo::fileInfoWithURL(&*url)->path(), "/link");
    EXPECT_EQ(TavMacFileInfo::fileInfoResolveAliasesWithURL(&*url)->path(), "/real/file");
    const std::optional<Url> elsewhere = Url::withString("http://host/link");
    EXPECT_EQ(TavMacFileInfo::fileInfoWithURL(&*elsewhere)->path(), "");
    EXPECT_EQ(TavMacFileInfo::fileInfoWithURL(nullptr)->path(), "");

    const FileRef reference = TavMacFileInfo::fileRefFromPath("/link");
    EXPECT_EQ(TavMacFileInfo::fileInfoWithFileRef(&reference)->path(), "/link");
    EXPECT_EQ(TavMacFileInfo::fileInfoResolveAliasesWithFileRef(&reference)->path(), "/real/file");

    const FileSpec specification = at("/link")->fileSpec();
    EXPECT_EQ(TavMacFileInfo::fileInfoWithFileSpec(&specification)->path(), "/link");
    EXPECT_EQ(TavMacFileInfo::fileInfoResolveAliasesWithFileSpec(&specification)->path(),
              "/real/file");
    EXPECT_EQ(TavMacFileInfo::fileInfoWithFileSpec(nullptr)->path(), "");
}

TEST_F(TavMacFileInfoTest, AReferenceIsTakenAsItIs) {
    memory.addFile("/f", "");
    FileRef reference = TavMacFileInfo::fileRefFromPath("/f");
    EXPECT_TRUE(TavMacFileInfo::fileInfoWithFileRef(&reference)->exists());
    // One that leads nowhere stays valid, and leaves the item without a path.
    reference.number += 1000;
    const Item lost = TavMacFileInfo::fileInfoWithFileRef(&reference);
    EXPECT_EQ(lost->path(), "");
    EXPECT_FALSE(lost->exists());
    FileRef out;
    EXPECT_EQ(lost->fileRef(&out), Status::Success);
    EXPECT_EQ(out, reference);
    const Item none = TavMacFileInfo::fileInfoWithFileRef(nullptr);
    EXPECT_EQ(none->path(), "");
    EXPECT_EQ(none->fileRef(nullptr), Status::BadParameter);
}

TEST_F(TavMacFileInfoTest, AnItemMadeFromAnItemHasNoPathWhateverTheArgument) {
    memory.addFile("/f", "");
    EXPECT_EQ(TavMacFileInfo::fileInfoWithFileInfo(at("/f").get())->path(), "");
    EXPECT_FALSE(TavMacFileInfo::fileInfoWithFileInfo(nullptr)->exists());
}

TEST_F(TavMacFileInfoTest, EveryComponentIsResolved) {
    memory.addFile("/real/deep/file", "");
    memory.addLink("/one", "/real");
    memory.addLink("/real/two", "deep");
    memory.addLink("/chain", "/one");
    EXPECT_EQ(resolve("/real/deep/file"), "/real/deep/file");
    EXPECT_EQ(resolve("/one/deep/file"), "/real/deep/file");
    EXPECT_EQ(resolve("/one/two/file"), "/real/deep/file");
    EXPECT_EQ(resolve("/chain/two"), "/real/deep");
    EXPECT_EQ(resolve("/real/deep/file/two"), "nothing") << "beside a file";
    EXPECT_EQ(resolve("/"), "/");
}

TEST_F(TavMacFileInfoTest, ResolvingEveryComponentEndsAtWhatIsMissing) {
    memory.addFile("/real/file", "");
    memory.addLink("/nowhere", "/gone");
    memory.addLink("/loop", "/loop");
    for (const char* path : {"/gone/x", "/real/gone", "/nowhere", "/nowhere/x", "/loop/x", ""}) {
        EXPECT_EQ(resolve(path), "nothing") << path;
    }
    EXPECT_EQ(resolve("/loop"), "/loop") << "the link exists, and no target is known";
}

TEST_F(TavMacFileInfoTest, ACopyIsAnItemOfItsOwnThatKnowsWhatIsKnown) {
    memory.addFile("/f", "12");
    const Item item = at("/f");
    ASSERT_EQ(item->size(), 2U);
    const Item copied = item->copy();
    EXPECT_NE(copied, item);
    EXPECT_TRUE(copied->isEqualTo(item.get()));
    memory.addFile("/f", "12345");
    EXPECT_EQ(callsOf([&] {
                  EXPECT_EQ(copied->size(), 2U);
                  EXPECT_TRUE(copied->isFile());
              }),
              Calls{})
        << "attributes and flags came along";
    copied->refresh();
    EXPECT_EQ(copied->size(), 5U);
    EXPECT_EQ(item->size(), 2U);
}

TEST_F(TavMacFileInfoTest, TheValidityOfACopysReferenceIsThatOfItsSource) {
    memory.addFile("/f", "");
    const Item fresh = at("/f");
    EXPECT_FALSE(callsOf([&] { EXPECT_TRUE(fresh->copy()->exists()); }).empty());
    const Item known = at("/f");
    ASSERT_TRUE(known->exists());
    memory.removeAll("/f");
    EXPECT_TRUE(known->copy()->exists()) << "although nothing was found";
    EXPECT_FALSE(fresh->copy()->exists());
}

TEST_F(TavMacFileInfoTest, ACopyOfAnAliasLeadsTheSameWay) {
    memory.addFile("/f", "");
    memory.addLink("/l", "/f");
    const Item item = at("/l");
    ASSERT_TRUE(item->isAlias());
    const Item copied = item->copy();
    EXPECT_TRUE(copied->resolveAlias());
    EXPECT_EQ(copied->path(), "/f");
    EXPECT_EQ(item->path(), "/l");
}

TEST_F(TavMacFileInfoTest, FoldersAndFilesWithTheirWholePath) {
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFolderWithFullPath("/a/b/c")->path(), "/a/b/c");
    EXPECT_TRUE(at("/a/b/c")->isFolder());
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFolderWithFullPath("~/new")->path(), "/home/user/new");
    memory.addFile("/file", "");
    EXPECT_EQ(TavMacFileInfo::fileInfoCreateFolderWithFullPath("/file/x/y"), nullptr);
    static_cast<void>(TavMacFileInfo::fileInfoCreateFileWithFullPath("~/in/file"));
    EXPECT_TRUE(at("/home/user/in")->isFolder()) << "the folders on the way are made";
}

TEST_F(TavMacFileInfoTest, AnItemAPath) {
    const std::array<std::string, 3> paths = {"/b", "/a", "~/c"};
    const FileInfoArray items = TavMacFileInfo::fileInfoArrayFromPathsArray(paths);
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0]->path(), "/b");
    EXPECT_EQ(items[1]->path(), "/a");
    EXPECT_EQ(items[2]->path(), "/home/user/c");
    EXPECT_TRUE(TavMacFileInfo::fileInfoArrayFromPathsArray({}).empty());
}

TEST_F(TavMacFileInfoTest, OnlyLocalItemsHaveALocalForm) {
    const Item item = at("/a");
    EXPECT_EQ(asMacFileInfo(item.get()), item.get());
    EXPECT_EQ(asMacFileInfo(TavPathBasedFileInfo::fileInfo().get()), nullptr);
    EXPECT_EQ(asMacFileInfo(nullptr), nullptr);
}

TEST_F(TavMacFileInfoTest, AnItemTravelsThroughAnArchiveAsItsPath) {
    memory.addFile("/f", "123");
    const Data archive = archivedDataWithRootObject(at("/f").get());
    const Archived read = TavMacFileInfo::unarchiveFromData(archive);
    const auto* object = std::get_if<std::shared_ptr<Coding>>(&read);
    ASSERT_NE(object, nullptr);
    const auto item = std::dynamic_pointer_cast<TavMacFileInfo>(*object);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->path(), "/f");
    EXPECT_EQ(item->oldFileSize(), 3U);
    EXPECT_TRUE(item->exists());
}

} // namespace
} // namespace tav
