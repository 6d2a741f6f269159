// What the interface builds from its other operations: the short forms, the names, the root path of
// listings, and what an item keeps for a copy.

#include "fileinfo/FakeFileInfo_test.hpp"
#include "platform/memory/MemoryUserFolders.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

using Lines = std::vector<std::string>;

/// An item that tells which of the long forms it was asked for, and with what.
class ToldFileInfo : public FakeFileInfo {
  public:
    static std::shared_ptr<ToldFileInfo> at(std::string_view path) {
        const auto made = internal::allocateItem<ToldFileInfo>();
        made->initWithPath(path);
        return made;
    }

    using FakeFileInfo::copyTo;
    Status copyTo(TavBaseFileInfo* destination, bool ensureUniqueName,
                  const ProgressDelegate* withProgress, void* userData,
                  FileInfoPtr* outNewItem) override {
        tell("copyTo " + destination->path(), ensureUniqueName, withProgress, userData);
        out = outNewItem;
        return Status{-203};
    }
    using FakeFileInfo::createFile;
    FileInfoPtr createFile(std::string_view name, BytesView contents,
                           const Value::Dictionary* attributes, bool ensureUniqueName,
                           const ProgressDelegate* withProgress, void* userData) override {
        tell("createFile " + std::string(name) + ' ' + std::string(textOf(contents)),
             ensureUniqueName, withProgress, userData);
        given = attributes;
        return shared_from_this();
    }
    using FakeFileInfo::setFileContents;
    bool setFileContents(BytesView data, const ProgressDelegate* withProgress,
                         void* userData) override {
        tell("setFileContents " + std::string(textOf(data)), false, withProgress, userData);
        return true;
    }
    std::optional<Data> fileContentsWithProgress(const ProgressDelegate* progress,
                                                 void* userData) override {
        tell("fileContents", false, progress, userData);
        return dataFromText("contents");
    }
    std::optional<std::string> udidCreating(bool create) override {
        return create ? "made" : "there";
    }
    FileInfoPtr parentFolder() override { return parent ? parent : FakeFileInfo::parentFolder(); }
    FileInfoPtr resolvedFileInfo() override {
        return resolved ? resolved : FakeFileInfo::resolvedFileInfo();
    }

    [[nodiscard]] bool isCancelled() const { return _cancelCopy; }
    [[nodiscard]] std::uint64_t freeSpaceToKeep() { return _freeSpaceToKeepOnVolume(); }

    Lines told;
    FileInfoPtr* out = nullptr;
    const Value::Dictionary* given = nullptr;
    FileInfoPtr parent;
    FileInfoPtr resolved;

  protected:
    ToldFileInfo() = default;

  private:
    void tell(std::string line, bool unique, const ProgressDelegate* progress, const void* user) {
        line += unique ? " unique" : "";
        line += progress != nullptr ? " progress" : "";
        told.push_back(line + (user != nullptr ? " user" : ""));
    }
};

TEST(ShortForms, OfACopyAskForNoUniqueNameAndNoProgress) {
    const auto item = ToldFileInfo::at("/a");
    const FileInfoPtr there = TavPathBasedFileInfo::fileInfoWithPath("/b");
    EXPECT_EQ(item->copyTo(there.get()), Status{-203});
    EXPECT_EQ(item->out, nullptr);
    FileInfoPtr copy;
    EXPECT_EQ(item->copyTo(there.get(), &copy), Status{-203});
    EXPECT_EQ(item->out, &copy);
    EXPECT_EQ(item->told, (Lines{"copyTo /b", "copyTo /b"}));
}

TEST(ShortForms, OfANewFileAskForNoProgress) {
    const auto item = ToldFileInfo::at("/a");
    const Data contents = dataFromText("x");
    const Value::Dictionary attributes;
    EXPECT_EQ(item->createFile("f", contents, &attributes), item);
    EXPECT_EQ(item->given, &attributes);
    EXPECT_EQ(item->createFile("f", contents, nullptr, true), item);
    EXPECT_EQ(item->given, nullptr);
    EXPECT_EQ(item->createFile("f", contents, &attributes, false), item);
    EXPECT_EQ(item->given, &attributes);
    EXPECT_EQ(item->told, (Lines{"createFile f x", "createFile f x unique", "createFile f x"}));
}

TEST(ShortForms, OfContentsAskForNoProgress) {
    const auto item = ToldFileInfo::at("/a");
    EXPECT_EQ(item->fileContents(), dataFromText("contents"));
    EXPECT_TRUE(item->setFileContents(dataFromText("x")));
    EXPECT_EQ(item->told, (Lines{"fileContents", "setFileContents x"}));
}

TEST(ShortForms, OfTheDeviceIdentifierDoNotMakeIt) {
    const auto item = ToldFileInfo::at("/a");
    EXPECT_EQ(item->UDID(), "there");
    EXPECT_EQ(item->UDID(false), "there");
    EXPECT_EQ(item->UDID(true), "made");
}

TEST(BaseItem, HasNoSavedState) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    EXPECT_EQ(item->savedInfo(), std::nullopt);
    EXPECT_EQ(item->syncCriteria(), std::nullopt);
    const Value::Dictionary record;
    EXPECT_FALSE(TavBaseFileInfo::savedFileInfoIsSimilarToSavedInfo(&record, &record));
    EXPECT_EQ(item->UDID(), std::nullopt);
    EXPECT_EQ(item->UDID(true), std::nullopt);
}

TEST(BaseItem, DoesNotExistAndCannotBeCopied) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    EXPECT_EQ(item->copyTo(item.get()), Status{-200});
    EXPECT_EQ(item->copyTo(nullptr), Status{-200});
}

TEST(BaseItem, ACopyIsCancelledByAFlagAndNeedsNoReserve) {
    const auto item = ToldFileInfo::at("/a");
    EXPECT_FALSE(item->isCancelled());
    item->cancelCopy();
    EXPECT_TRUE(item->isCancelled());
    EXPECT_EQ(item->freeSpaceToKeep(), 0U);
}

/// An item that a back-end gives a path and nothing else.
class BareFileInfo : public TavBaseFileInfo {
  public:
    static FileInfoPtr made() { return internal::allocateItem<BareFileInfo>(); }
    std::string path() override { return "/a.b/c\u00e9.tar.gz"; }

  protected:
    BareFileInfo() = default;
};

TEST(BaseItem, NamesComeFromThePathOfTheBackEnd) {
    const FileInfoPtr item = BareFileInfo::made();
    EXPECT_EQ(item->name(), "c\u00e9.tar.gz");
    EXPECT_EQ(item->humanFriendlyName(), "c\u00e9.tar.gz");
    EXPECT_EQ(item->extension(), "gz");
    EXPECT_EQ(item->nameWithoutExtension(), "c\u00e9.tar");
    EXPECT_EQ(item->standardPath(), "/a.b/c\u00e9.tar.gz");
    EXPECT_EQ(item->humanFriendlyPath(), "/a.b/c\u00e9.tar.gz");
    EXPECT_EQ(item->numBytesNeededForPath(), 28);
    EXPECT_TRUE(item->pathComponents().empty());
}

TEST(BaseItem, AFileWorksInItsFolder) {
    const auto folder = FakeFileInfo::folder("/x");
    folder->facts.children = {FakeFileInfo::fileInfoWithPath("/x/a.txt")};
    const auto item = ToldFileInfo::at("/x/a.txt");
    item->parent = folder;
    EXPECT_EQ(item->uniqueFilename("a.txt"), "a-1.txt");
    EXPECT_EQ(item->createFolderWithPathComponents({}), folder);
    FileInfoPtr copy;
    EXPECT_EQ(item->copyTo(item.get(), "a.txt", &copy), Status{-207});
    EXPECT_EQ(copy, folder->facts.children.front());
}

/// A file as its back-end remembers it, which is gone.
class GoneFileInfo : public ToldFileInfo {
  public:
    static FileInfoPtr made() { return internal::allocateItem<GoneFileInfo>(); }
    bool exists() override { return false; }
    bool isFile() override { return true; }

  protected:
    GoneFileInfo() = default;
};

TEST(NamedCopyOfAFile, AsksWhetherItExistsAndNotOnlyForItsKind) {
    const auto folder = FakeFileInfo::folder("/x");
    FileInfoPtr copy = folder;
    EXPECT_EQ(GoneFileInfo::made()->copyTo(folder.get(), "a", &copy), Status::BadParameter);
    EXPECT_EQ(copy, folder);
}

TEST(Listing, TheRootPathIsThatOfWhatAnAliasLeadsTo) {
    MemoryUserFolders folders;
    const UserFolders::Replacement replacement(folders);
    const auto alias = ToldFileInfo::at("/alias");
    for (const char* path : {"/target/", "/", "~/Music"}) {
        alias->resolved = TavPathBasedFileInfo::fileInfoWithPath(path);
        static_cast<void>(alias->folderContents());
        static_cast<void>(alias->folderContentsDeepWithFilter(nullptr));
    }
    // The slash is appended to whatever the path is, to that of the root too.
    EXPECT_EQ(alias->facts.rootPaths, (Lines{"/target/", "/target/", "//", "//",
                                             "/home/user/Music/", "/home/user/Music/"}));
}

} // namespace
} // namespace tav
