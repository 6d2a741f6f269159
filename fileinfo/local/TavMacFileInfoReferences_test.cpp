#include "fileinfo/local/MacFileInfoFixture_test.hpp"

#include <cerrno>

#include <pthread.h>

namespace tav {
namespace {

using ReferencesTest = MacFileInfoInMemory;
using ReferencesOnDiskTest = MacFileInfoOnDisk;

std::string urlOf(std::string_view path) {
    const std::optional<Url> url = TavMacFileInfo::urlFromPath(path);
    return url ? url->absoluteString() : "nothing";
}

std::optional<std::string> pathOf(std::string_view text) {
    const std::optional<Url> url = Url::withString(text);
    return TavMacFileInfo::pathFromURL(url ? &*url : nullptr);
}

TEST(MacFileInfoUrlTest, PathsBecomeFileUrls) {
    EXPECT_EQ(TavMacFileInfo::urlFromPath(nullptr), std::nullopt);
    EXPECT_EQ(urlOf("/a/b c"), "file:///a/b%20c");
    EXPECT_EQ(urlOf("/a;b?c#d%[e"), "file:///a%3Bb%3Fc%23d%25%5Be");
    EXPECT_EQ(urlOf("/\xC3\xA9\xFF"), "file:///%C3%A9%FF");
    EXPECT_EQ(urlOf("a:b"), "file:a:b");
    for (const std::string path : {"/", "/a", "/a b/\xFF;?#%", "a:b"}) {
        EXPECT_EQ(pathOf(urlOf(path)), path);
    }
}

TEST(MacFileInfoUrlTest, OnlyUrlsOfFilesHereHaveAPath) {
    EXPECT_EQ(pathOf("file:///a%20b"), "/a b");
    EXPECT_EQ(pathOf("FILE://LocalHost/a/"), "/a");
    EXPECT_EQ(pathOf("file:/a"), "/a");
    EXPECT_EQ(pathOf("file:///"), "/");
    EXPECT_EQ(pathOf("file://elsewhere/a"), std::nullopt);
    EXPECT_EQ(pathOf("http:///a"), std::nullopt);
    EXPECT_EQ(pathOf("/a"), std::nullopt);
    EXPECT_EQ(pathOf("file:///a%00b"), std::nullopt);
    EXPECT_EQ(TavMacFileInfo::pathFromURL(nullptr), std::nullopt);
}

TEST_F(ReferencesTest, PathsAndReferences) {
    memory.addFile("/d/f", "");
    const FileRef reference = TavMacFileInfo::fileRefFromPath("/d/f");
    EXPECT_FALSE(reference.isZero());
    EXPECT_EQ(TavMacFileInfo::pathFromFileRef(reference), "/d/f");
    const std::optional<Url> url = TavMacFileInfo::urlFromPath("/d/f");
    EXPECT_EQ(TavMacFileInfo::fileRefFromURL(&*url), reference);
    EXPECT_TRUE(TavMacFileInfo::fileRefFromPath(nullptr).isZero());
    EXPECT_TRUE(TavMacFileInfo::fileRefFromPath("").isZero());
    EXPECT_TRUE(TavMacFileInfo::fileRefFromPath("/gone").isZero());
    EXPECT_TRUE(TavMacFileInfo::fileRefFromURL(nullptr).isZero());
    EXPECT_EQ(TavMacFileInfo::pathFromFileRef(FileRef()), std::nullopt);
    EXPECT_EQ(at("/d/f")->URL(), url);
}

TEST_F(ReferencesTest, FileSpecifications) {
    memory.addFile("/d/f", "");
    const FileRef reference = TavMacFileInfo::fileRefFromPath("/d/f");
    const FileSpec specification = TavMacFileInfo::fileSpecFromFileRef(reference);
    EXPECT_EQ(specification.name, "f");
    EXPECT_EQ(specification.folder, TavMacFileInfo::fileRefFromPath("/d"));
    EXPECT_EQ(TavMacFileInfo::pathFromFileSpec(specification), "/d/f");
    EXPECT_EQ(TavMacFileInfo::fileRefFromFileSpec(specification), reference);
    EXPECT_TRUE(TavMacFileInfo::fileSpecFromFileRef(FileRef()).isZero());
    const FileSpec root = at("/")->fileSpec();
    EXPECT_EQ(TavMacFileInfo::pathFromFileSpec(root), "/");

    Status error = Status::NotSupported;
    EXPECT_EQ(at("/d/f")->fileSpecWithError(&error), specification);
    EXPECT_EQ(error, Status::Success);
    EXPECT_TRUE(at("/gone")->fileSpecWithError(&error).isZero());
    EXPECT_EQ(error, Status::Failure);
    EXPECT_TRUE(at("")->fileSpecWithError(&error).isZero());
    EXPECT_EQ(error, Status::BadParameter);
}

TEST_F(ReferencesTest, StatusOfAReference) {
    memory.addFile("/f", "");
    FileRef out;
    EXPECT_EQ(at("/f")->fileRef(&out), Status::Success);
    EXPECT_EQ(out, TavMacFileInfo::fileRefFromPath("/f"));
    EXPECT_EQ(out.path, "/f");
    EXPECT_EQ(at("/f")->fileRef(nullptr), Status::Success);
    EXPECT_EQ(at("/gone")->fileRef(&out), Status::Failure);
    EXPECT_TRUE(out.isZero());
    EXPECT_EQ(at("")->fileRef(&out), Status::BadParameter);
}

TEST_F(ReferencesTest, TheReferenceIsTakenOnceUntilRefresh) {
    memory.addFile("/f", "");
    const Item item = at("/f");
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(item->exists()); }), Calls{"attributes /f"});
    EXPECT_EQ(callsOf([&] {
                  EXPECT_TRUE(item->exists());
                  EXPECT_EQ(item->fileRef(nullptr), Status::Success);
              }),
              Calls{});
    memory.removeAll("/f");
    EXPECT_TRUE(item->exists());
    item->refresh();
    EXPECT_FALSE(item->exists());
    EXPECT_FALSE(item->exists()) << "and is asked for again";
    memory.addFile("/f", "");
    EXPECT_TRUE(item->exists());
}

TEST_F(ReferencesTest, TooManyLinksOnTheWayAreFollowedStepByStep) {
    memory.addFolder("/0/d");
    std::string path = "/0";
    for (int i = 0; i < 50; ++i) {
        memory.addLink("/0/d/l" + std::to_string(i), "/0/d");
        path += (i == 0 ? "/d/l" : "/l") + std::to_string(i);
    }
    memory.addFile("/0/d/f", "");
    path += "/f";
    ASSERT_EQ(files.attributes(path).error().number(), ELOOP);
    const Item item = at(path);
    EXPECT_TRUE(item->exists());
    EXPECT_EQ(item->path(), "/0/d/f");
    EXPECT_TRUE(item->isFile());
}

TEST_F(ReferencesTest, ASlashBehindAFileIsNotInItsWay) {
    memory.addFile("/f", "");
    const Item item = at("/f/");
    EXPECT_TRUE(item->exists());
    EXPECT_EQ(item->path(), "/f");
    EXPECT_FALSE(at("/f/x")->exists());
}

TEST_F(ReferencesTest, ResolvedPaths) {
    memory.addFile("/real/file", "");
    memory.addLink("/l", "real");
    memory.addLink("/m", "/l/file");
    memory.addLink("/loop", "loop");
    EXPECT_EQ(at("/l/file")->resolvedPath(), "/real/file");
    EXPECT_EQ(at("/m")->resolvedPath(), "/real/file");
    EXPECT_EQ(at("/real/../l")->resolvedPath(), "/real") << "an alias gives its whole path";
    EXPECT_EQ(at("/")->resolvedPath(), "/");
    EXPECT_EQ(at("")->resolvedPath(), std::nullopt);
    EXPECT_EQ(at("/gone/file")->resolvedPath(), std::nullopt);
    EXPECT_EQ(at("/loop")->resolvedPath(), std::nullopt);
}

TEST_F(ReferencesTest, AnItemFollowsItsFileToAnotherNameInItsFolder) {
    memory.addFile("/d/old", "1");
    const Item item = at("/d/old");
    ASSERT_TRUE(item->exists());
    ASSERT_TRUE(memory.move("/d/old", "/d/new", Replace::No).isNone());
    EXPECT_EQ(item->path(), "/d/new");
    EXPECT_EQ(item->name(), "new");
    ASSERT_TRUE(memory.move("/d/new", "/d/newer", Replace::No).isNone());
    EXPECT_EQ(item->path(), "/d/newer") << "and again";
    EXPECT_EQ(item->size(), 1U);
    FileRef reference = TavMacFileInfo::fileRefFromPath("/d/newer");
    ASSERT_TRUE(memory.move("/d/newer", "/d/last", Replace::No).isNone());
    EXPECT_EQ(TavMacFileInfo::pathFromFileRef(reference), "/d/last");
}

TEST_F(ReferencesTest, QuestionsFollowTheFileToo) {
    memory.addFile("/d/old", "12");
    const Item item = at("/d/old");
    ASSERT_TRUE(item->exists());
    ASSERT_TRUE(memory.move("/d/old", "/d/new", Replace::No).isNone());
    memory.addFile("/d/old", "123456");
    EXPECT_EQ(item->size(), 2U) << "the file, not what has taken its name";
    EXPECT_EQ(item->path(), "/d/new");
}

TEST_F(ReferencesTest, AnItemThatWasNeverAskedKnowsNoFileToFollow) {
    memory.addFile("/d/old", "");
    const Item item = at("/d/old");
    ASSERT_TRUE(memory.move("/d/old", "/d/new", Replace::No).isNone());
    EXPECT_EQ(item->path(), "/d/old");
    EXPECT_FALSE(item->exists());
}

TEST_F(ReferencesTest, AnItemMadeByAUrlKnowsItsFileAtOnce) {
    memory.addFile("/d/old", "");
    const std::optional<Url> url = TavMacFileInfo::urlFromPath("/d/old");
    const Item item = TavMacFileInfo::fileInfoWithURL(&*url);
    ASSERT_TRUE(memory.move("/d/old", "/d/new", Replace::No).isNone());
    EXPECT_EQ(item->path(), "/d/new");
}

TEST_F(ReferencesTest, TheReferenceThatAFilterIsGivenIsWhole) {
    class Filter final : public TavBaseFileInfoFilter {
      public:
        bool includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) override {
            TavMacFileInfo* const local = asMacFileInfo(&item);
            EXPECT_EQ(local->fileRef(&reference), Status::Success);
            return true;
        }
        FileRef reference;
    };
    memory.addFile("/d/f", "");
    Filter filter;
    ASSERT_EQ(at("/d")->folderContentsWithFilter(&filter).size(), 1U);
    EXPECT_EQ(filter.reference, TavMacFileInfo::fileRefFromPath("/d/f"));
}

TEST_F(ReferencesTest, AFileThatWasReplacedLeavesThePath) {
    memory.addFile("/d/f", "1");
    memory.addFile("/d/g", "1234");
    const Item item = at("/d/f");
    FileRef before;
    ASSERT_EQ(item->fileRef(&before), Status::Success);
    ASSERT_TRUE(memory.move("/d/g", "/d/f", Replace::Yes).isNone());
    EXPECT_EQ(item->path(), "/d/f");
    EXPECT_TRUE(item->exists());
    EXPECT_EQ(item->size(), 4U);
    item->refresh();
    FileRef after;
    ASSERT_EQ(item->fileRef(&after), Status::Success);
    EXPECT_NE(after, before);
}

TEST_F(ReferencesTest, AFileThatIsGoneIsLookedForOnce) {
    memory.addFile("/d/f", "");
    memory.addFile("/d/other", "");
    const Item item = at("/d/f");
    ASSERT_TRUE(item->exists());
    memory.removeAll("/d/f");
    EXPECT_EQ(item->path(), "/d/f");
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(item->path(), "/d/f"); }), Calls{});
}

TEST_F(ReferencesTest, WhereNumbersAreMadeUpThePathIsEnough) {
    memory.addFolder("/");
    VolumeInfo fat;
    fat.rootPath = "/";
    fat.typeName = "vfat";
    volumes.add(fat);
    memory.addFile("/d/f", "1");
    const Item item = at("/d/f");
    ASSERT_TRUE(item->exists());
    ASSERT_TRUE(memory.move("/d/f", "/d/moved", Replace::No).isNone());
    memory.addFile("/d/f", "123");
    EXPECT_EQ(item->path(), "/d/f");
    EXPECT_EQ(item->size(), 3U);
    memory.removeAll("/d/f");
    item->refresh();
    EXPECT_FALSE(item->exists());
}

TEST_F(ReferencesOnDiskTest, AnItemFollowsItsFile) {
    addFile("old", "123");
    const Item item = in("old");
    ASSERT_TRUE(item->exists());
    rename("old", "new");
    EXPECT_EQ(item->path(), folder.path("new"));
    EXPECT_EQ(item->size(), 3U);
    removeFile("new");
    addFile("newer", "");
    EXPECT_EQ(item->path(), folder.path("new")) << "a number that was given again is another file";
}

TEST_F(ReferencesOnDiskTest, NamesThatAreNoUtf8) {
    const std::string name = "caf\xE9 \xFF";
    addFile(name, "12345");
    const Item item = in(name);
    EXPECT_TRUE(item->exists());
    EXPECT_EQ(item->name(), name);
    EXPECT_EQ(item->size(), 5U);
    const std::optional<Url> url = item->URL();
    EXPECT_EQ(TavMacFileInfo::pathFromURL(&*url), folder.path(name));
    item->setName("\xFE");
    EXPECT_EQ(item->path(), folder.path("\xFE"));
    EXPECT_TRUE(in("\xFE")->exists());
    EXPECT_TRUE(item->remove());
}

/// Asked on a stack that has no room for a call a folder.
std::uint64_t sizeOnASmallStack(TavMacFileInfo& item) {
    struct Question {
        TavMacFileInfo* item;
        std::uint64_t answer;
    } question{&item, 0};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{192} << 10U);
    pthread_t thread{};
    const int error = pthread_create(
        &thread, &attributes,
        [](void* asked) -> void* {
            auto* const it = static_cast<Question*>(asked);
            it->answer = it->item->size();
            return nullptr;
        },
        &question);
    EXPECT_EQ(error, 0);
    if (error == 0) {
        pthread_join(thread, nullptr);
    }
    pthread_attr_destroy(&attributes);
    return question.answer;
}

TEST_F(ReferencesOnDiskTest, TwoThousandNestedFolders) {
    const Item top = in("deep");
    std::string path = folder.path("deep");
    ASSERT_TRUE(FileSystem::current().createFolder(path, 0755).isNone());
    for (int i = 0; i < 2000; ++i) {
        path += "/d" + std::to_string(i % 10);
        ASSERT_TRUE(FileSystem::current().createFolder(path, 0755).isNone());
    }
    ASSERT_GT(path.size(), 4096U);
    const Item deepest = at(path);
    EXPECT_TRUE(deepest->isFolder());
    EXPECT_EQ(deepest->path(), path);
    EXPECT_TRUE(deepest->parentFolder()->isFolder());
    EXPECT_FALSE(deepest->find("x")->exists());
    EXPECT_EQ(TavMacFileInfo::pathFromFileRef(TavMacFileInfo::fileRefFromPath(path)), path);
    ASSERT_TRUE(FileSystem::current().writeFile(path + "/f", bytesOf("1"), 0644).isNone());
    EXPECT_EQ(deepest->find("f")->size(), 1U);
    EXPECT_EQ(sizeOnASmallStack(*top), 1U);
    EXPECT_TRUE(top->remove());
    EXPECT_FALSE(top->exists());
}

} // namespace
} // namespace tav
