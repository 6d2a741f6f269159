#include "fileinfo/FakeFileInfo_test.hpp"
#include "fileinfo/SeenLog_test.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"
#include "testing/Golden.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

using Lines = std::vector<std::string>;

std::shared_ptr<FakeFileInfo> file(std::string_view path) {
    return FakeFileInfo::fileInfoWithPath(path);
}

std::shared_ptr<FakeFileInfo> folder(std::string_view path, FileInfoArray children = {}) {
    const auto made = FakeFileInfo::folder(path);
    made->facts.children = std::move(children);
    return made;
}

TEST(BaseItem, CannotBeMadeFromAPath) {
    EXPECT_EQ(TavBaseFileInfo::fileInfoWithPath("/a"), nullptr);
}

TEST(BaseItem, AnswersNothingWithoutRaising) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    EXPECT_EQ(item->path(), "");
    EXPECT_EQ(item->standardPath(), "");
    EXPECT_EQ(item->humanFriendlyPath(), "");
    EXPECT_EQ(item->name(), "");
    EXPECT_EQ(item->humanFriendlyName(), "");
    EXPECT_EQ(item->extension(), "");
    EXPECT_EQ(item->nameWithoutExtension(), "");
    EXPECT_TRUE(item->pathComponents().empty());
    EXPECT_EQ(item->numBytesNeededForPath(), 0);
    EXPECT_FALSE(item->exists());
    EXPECT_FALSE(item->isFolder());
    EXPECT_FALSE(item->isFile());
    EXPECT_FALSE(item->isBundle());
    EXPECT_FALSE(item->isVolume());
    EXPECT_FALSE(item->hasDRM());
    EXPECT_FALSE(item->isEqualTo(item.get()));
    EXPECT_FALSE(item->contains(item.get()));
    EXPECT_TRUE(item->visible());
    EXPECT_EQ(item->size(), 0U);
    EXPECT_EQ(item->resolvedSize(), 0U);
    EXPECT_EQ(item->freeSpaceOnVolume(), 0U);
    EXPECT_EQ(item->modificationDate(), std::nullopt);
    EXPECT_EQ(item->creationDate(), std::nullopt);
    EXPECT_EQ(item->volume(), nullptr);
    EXPECT_EQ(item->uuid(), std::nullopt);
    EXPECT_EQ(item->parentFolder(), nullptr);
    EXPECT_EQ(item->tempFolder(), nullptr);
    EXPECT_EQ(item->relativePathTo(item.get()), std::nullopt);
    EXPECT_EQ(item->volumeRelativeStandardPath(), std::nullopt);
    EXPECT_EQ(item->metadata(), std::nullopt);
    item->setMetadata("x");
    EXPECT_EQ(item->metadata(), std::nullopt);
    EXPECT_EQ(item->kindString(), "unknown");
}

TEST(BaseItem, OffersWhatBackEndsMostlyHave) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    EXPECT_EQ(item->preferredChunkSize(), 8192U);
    EXPECT_TRUE(item->supportsTimezones());
    EXPECT_TRUE(item->supportsCreationDate());
    EXPECT_TRUE(item->supportsModificationDate());
}

TEST(BaseItem, ChangesDoNothingAndSaySo) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    item->setName("a");
    item->setNameKeepingExtension("a");
    item->updateName("a");
    item->setModificationDate(Date());
    item->setCreationDate(Date());
    item->refresh();
    EXPECT_EQ(item->path(), "");
    EXPECT_EQ(item->modificationDate(), std::nullopt);
    EXPECT_FALSE(item->remove());
    EXPECT_EQ(item->moveTo(item.get()), Status::NotSupported);
    EXPECT_EQ(item->createFolder("a"), nullptr);
    EXPECT_EQ(item->createUniqueFolder("a"), nullptr);
    EXPECT_EQ(item->copyFromFile(item.get(), false, nullptr, nullptr, nullptr), Status::Failure);
}

TEST(BaseItem, HasNoContents) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    EXPECT_EQ(item->openFileForReading(), nullptr);
    EXPECT_EQ(item->openFileForWriting(), nullptr);
    item->closeFile(nullptr);
    EXPECT_EQ(item->fileContentsWithRange({0, 1}, nullptr), std::nullopt);
    EXPECT_EQ(item->setFileContentsWithRange({}, {0, 1}, nullptr), Status::NotSupported);
    EXPECT_EQ(item->fileContents(), Data());
    EXPECT_EQ(item->fileContentsWithProgress(nullptr, nullptr), Data());
    EXPECT_FALSE(item->setFileContents({}));
    EXPECT_FALSE(item->setFileContents({}, nullptr, nullptr));
    EXPECT_EQ(item->zip(), std::nullopt);
    EXPECT_EQ(item->ditto(), std::nullopt);
    EXPECT_EQ(item->zipToFolder(nullptr), nullptr);
    EXPECT_EQ(item->unzip(), std::nullopt);
}

TEST(BaseItem, FindsAnItemThatDoesNotExist) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    const FileInfoPtr found = item->find("a");
    ASSERT_NE(found, nullptr);
    EXPECT_FALSE(found->exists());
    EXPECT_EQ(found->path(), "");
    EXPECT_EQ(item->findFirstDeep("a"), nullptr);
    EXPECT_TRUE(item->findDeep("a").empty());
    EXPECT_EQ(item->findWithWindowsName("a"), nullptr);
    EXPECT_TRUE(item->findAllFoldersWithName("a").empty());
    EXPECT_TRUE(item->folderContents().empty());
    EXPECT_TRUE(item->folderContentsDeepWithFilter(nullptr).empty());
}

TEST(BaseItem, ResolvesToItself) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    EXPECT_EQ(item->resolvedFileInfo(), item);
    EXPECT_FALSE(item->resolveAlias());
    EXPECT_EQ(item->aliasTarget(), nullptr);
}

TEST(BaseItem, WhatABackEndHasToSupplyIsLogged) {
    SeenLog log;
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    EXPECT_EQ(item->maxPathLength(), 0);
    EXPECT_FALSE(item->isLocked());
    item->setLocked(true);
    item->setHideExtension(true);
    EXPECT_EQ(item->createFile("a", {}, nullptr), nullptr);
    EXPECT_EQ(item->createFile("a", {}, nullptr, true), nullptr);
    EXPECT_EQ(item->createFile("a", {}, nullptr, true, nullptr, nullptr), nullptr);
    EXPECT_FALSE(item->removeContents());
    EXPECT_FALSE(file("/a/%@.txt")->removeContents());
    EXPECT_EQ(
        log.lines(),
        (Lines{"Subclasses must override maxPathLength.", "Class does not implement isLocked.",
               "Class does not implement setLocked:", "Class does not implement setHideExtension:",
               "TavBaseFileInfo:createFile:--subclasses must override.",
               "TavBaseFileInfo:createFile:--subclasses must override.",
               "TavBaseFileInfo:createFile:--subclasses must override.",
               "TavBaseFileInfo: Couldn't remove contents of file \"\"; not implemented.",
               "TavBaseFileInfo: Couldn't remove contents of file \"/a/%@.txt\"; not "
               "implemented."}));
}

TEST(BaseItem, TheLinesAreVerbose) {
    SeenLog log;
    gLogEnable[4] = false;
    EXPECT_EQ(TavBaseFileInfo::fileInfo()->maxPathLength(), 0);
    EXPECT_TRUE(log.lines().empty());
}

TEST(BaseItem, CopyFlags) {
    const FileInfoPtr item = TavBaseFileInfo::fileInfo();
    EXPECT_FALSE(item->deviceControlsCopy());
    item->setDeviceControlsCopy(true);
    EXPECT_TRUE(item->deviceControlsCopy());
    item->cancelCopy();
}

TEST(BaseItem, TheFlagForValidNamesSaysTheOpposite) {
    for (const GoldenCase& golden : goldenCases("edges.json", "makeValidFilename")) {
        EXPECT_EQ(
            TavBaseFileInfo::fileInfo()->makeValidFilename(golden.in["self"].get<std::string>(),
                                                           golden.in["encodeNonASCII"].get<bool>()),
            golden.out.get<std::string>())
            << golden.description();
    }
}

TEST(BaseItem, TheResolvedSizeHas32Bits) {
    for (const GoldenCase& golden : goldenCases("edges.json", "resolvedSize")) {
        const auto item = file("/a");
        item->facts.size = golden.in.get<std::uint64_t>();
        EXPECT_EQ(item->resolvedSize(), golden.out.get<std::uint32_t>()) << golden.description();
    }
}

TEST(BaseItem, AFolderIsAsLargeAsAllThatIsInIt) {
    const auto large = file("/x/f/large");
    large->facts.size = std::uint64_t{5} << 30;
    const auto hidden = file("/x/.hidden");
    hidden->facts.size = 3;
    hidden->facts.isVisible = false;
    EXPECT_EQ(folder("/x", {hidden, folder("/x/f", {large})})->size(),
              (std::uint64_t{5} << 30) + 3);
    EXPECT_EQ(folder("/x")->size(), 0U);
}

TEST(UniqueFilename, Golden) {
    for (const GoldenCase& golden : goldenCases("edges.json", "uniqueFilename")) {
        FileInfoArray children;
        for (const auto& name : golden.in["existing"]) {
            children.push_back(file("/x/" + name.get<std::string>()));
        }
        EXPECT_EQ(folder("/x", children)->uniqueFilename(golden.in["name"].get<std::string>()),
                  golden.out.get<std::string>())
            << golden.description();
    }
}

TEST(UniqueFilename, OfAnItemWithoutAFolderIsTheNameItself) {
    EXPECT_EQ(TavBaseFileInfo::fileInfo()->uniqueFilename("a.txt"), "a.txt");
}

TEST(UniqueFilename, SplitsAtTheLastDot) {
    const auto there = folder("/x", {file("/x/a.tar.gz"), file("/x/.profile"), file("/x/a.")});
    EXPECT_EQ(there->uniqueFilename("a.tar.gz"), "a.tar-1.gz");
    EXPECT_EQ(there->uniqueFilename(".profile"), ".profile-1");
    EXPECT_EQ(there->uniqueFilename("a."), "a.-1");
}

TEST(FindWithWindowsName, Golden) {
    for (const GoldenCase& golden : goldenCases("edges.json", "findWithWindowsName")) {
        FileInfoArray children;
        for (const auto& name : golden.in["children"]) {
            children.push_back(file("/x/" + name.get<std::string>()));
        }
        const FileInfoPtr found = folder("/x", children)
                                      ->findWithWindowsName(golden.in["name"].get<std::string>(),
                                                            golden.in["asciiOnly"].get<bool>());
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->name(), golden.out.get<std::string>()) << golden.description();
    }
}

TEST(FindWithWindowsName, TheFirstThatBecomesTheNameIsTaken) {
    const auto there =
        folder("/x", {file("/x/b"), file("/x/a:b"), file("/x/a*b"), file("/x/caf\u00e9")});
    EXPECT_EQ(there->findWithWindowsName("A_B")->name(), "a:b");
    EXPECT_EQ(there->findWithWindowsName("cafU00e9")->name(), "caf\u00e9");
    EXPECT_EQ(there->findWithWindowsName("cafe"), nullptr);
    EXPECT_EQ(there->findWithWindowsName("CAFE", true)->name(), "caf\u00e9");
    EXPECT_EQ(there->findWithWindowsName("nothing"), nullptr);
    EXPECT_EQ(file("/x/a")->findWithWindowsName("a"), nullptr);
}

TEST(FindAllFolders, AnswersEachFolderOfThatNameIgnoringCase) {
    const auto there = folder("/x", {folder("/x/DCIM"), file("/x/dcim"), folder("/x/other"),
                                     folder("/x/dcim", {folder("/x/dcim/dcim")})});
    EXPECT_EQ(namesOf(there->findAllFoldersWithName("Dcim")), (Lines{"DCIM", "dcim"}));
}

TEST(Removing, TriesEveryChild) {
    const auto first = file("/x/1");
    const auto stuck = file("/x/2");
    stuck->facts.canBeRemoved = false;
    const auto last = file("/x/3");
    EXPECT_FALSE(folder("/x", {first, stuck, last})->removeContents());
    EXPECT_FALSE(first->exists());
    EXPECT_TRUE(stuck->exists());
    EXPECT_FALSE(last->exists());
    EXPECT_TRUE(folder("/x", {file("/x/1"), folder("/x/f")})->removeContents());
    EXPECT_TRUE(folder("/x")->removeContents());
}

TEST(Removing, EmptySubfoldersOfOneLevelOnly) {
    const auto hidden = file("/x/hidden/.a");
    hidden->facts.isVisible = false;
    const auto withHidden = folder("/x/hidden", {hidden});
    const auto empty = folder("/x/empty");
    const auto inner = folder("/x/full/empty");
    const auto full = folder("/x/full", {inner});
    const auto plain = file("/x/file");
    folder("/x", {withHidden, empty, full, plain})->removeEmptySubfolders();
    EXPECT_FALSE(withHidden->exists());
    EXPECT_FALSE(empty->exists());
    EXPECT_TRUE(full->exists());
    EXPECT_TRUE(inner->exists());
    EXPECT_TRUE(plain->exists());
    plain->removeEmptySubfolders();
    EXPECT_EQ(plain->facts.removals, 0);
}

TEST(Listing, TheRootPathIsStandardisedAndEndsWithASlash) {
    const auto there = folder("/x/../y//z/");
    static_cast<void>(there->folderContents());
    static_cast<void>(there->folderContentsWithFilter(nullptr, "/any"));
    EXPECT_EQ(there->facts.rootPaths, (Lines{"/y/z/", "/any"}));
}

/// A folder that makes folders and files, as far as a test lets it.
class MakingFileInfo : public FakeFileInfo {
  public:
    static std::shared_ptr<MakingFileInfo> folder(std::string_view path) {
        const auto made = internal::allocateItem<MakingFileInfo>();
        made->initWithPath(path);
        made->facts.isFolder = true;
        return made;
    }
    FileInfoPtr createFolder(std::string_view name) override {
        const auto made = folder(path() + '/' + std::string(name));
        made->facts.exists = name != "gone";
        return name != "null" ? made : nullptr;
    }
    using FakeFileInfo::createFile;
    FileInfoPtr createFile(std::string_view name, BytesView contents,
                           const Value::Dictionary* /*attributes*/, bool ensureUniqueName,
                           const ProgressDelegate* /*withProgress*/, void* /*userData*/) override {
        created.push_back(std::string(name) + (ensureUniqueName ? " unique " : " ") +
                          std::string(textOf(contents)));
        return cannotCreate ? nullptr : file(path() + '/' + std::string(name));
    }
    using FakeFileInfo::setFileContents;
    bool setFileContents(BytesView data, const ProgressDelegate* /*withProgress*/,
                         void* /*userData*/) override {
        written = std::string(textOf(data));
        return !cannotWrite;
    }
    std::optional<Data> fileContentsWithProgress(const ProgressDelegate* /*progress*/,
                                                 void* /*userData*/) override {
        return dataFromText("contents");
    }

    Lines created;
    std::string written;
    bool cannotCreate = false;
    bool cannotWrite = false;

  protected:
    MakingFileInfo() = default;
};

TEST(CreateFolders, GoesDownNameByName) {
    const auto top = MakingFileInfo::folder("/x");
    EXPECT_EQ(top->createFolderWithPathComponents({"a", "b"})->path(), "/x/a/b");
    EXPECT_EQ(top->createFolderWithPathComponents({}), top);
    EXPECT_EQ(top->createFolderWithPathComponents({"a", "gone", "b"}), nullptr);
    EXPECT_EQ(top->createFolderWithPathComponents({"null", "b"}), nullptr);
    // From a file it starts at the parent.
    EXPECT_EQ(file("/x/f.txt")->createFolderWithPathComponents({})->path(), "/x");
}

class NamedCopy : public testing::Test {
  protected:
    NamedCopy() { source_->facts.isFolder = false; }

    std::shared_ptr<MakingFileInfo> source_ = MakingFileInfo::folder("/s/file.txt");
    std::shared_ptr<MakingFileInfo> target_ = MakingFileInfo::folder("/t");
    FileInfoPtr out_ = source_;
};

TEST_F(NamedCopy, MakesAFileOfAUniqueName) {
    EXPECT_EQ(source_->copyTo(target_.get(), "new.txt", &out_), Status::Success);
    EXPECT_EQ(target_->created, Lines{"new.txt unique contents"});
    EXPECT_EQ(out_->path(), "/t/new.txt");
    target_->cannotCreate = true;
    EXPECT_EQ(source_->copyTo(target_.get(), "new.txt", &out_), Status::Success);
    EXPECT_EQ(out_, nullptr);
    EXPECT_EQ(source_->copyTo(target_.get(), "new.txt", nullptr), Status::Success);
}

TEST_F(NamedCopy, WritesToAFileOfThatName) {
    const auto there = MakingFileInfo::folder("/t/there.txt");
    there->facts.isFolder = false;
    target_->facts.children = {there};
    EXPECT_EQ(source_->copyTo(target_.get(), "there.txt", &out_), Status::Success);
    EXPECT_EQ(there->written, "contents");
    EXPECT_EQ(out_, there);
    there->cannotWrite = true;
    EXPECT_EQ(source_->copyTo(target_.get(), "there.txt", &out_), Status{-207});
    EXPECT_EQ(out_, there);
}

TEST_F(NamedCopy, WritesToAFolderOfThatNameAllTheSame) {
    const auto there = MakingFileInfo::folder("/t/there");
    target_->facts.children = {there};
    EXPECT_EQ(source_->copyTo(target_.get(), "there", &out_), Status{-208});
    EXPECT_EQ(there->written, "contents");
    there->cannotWrite = true;
    EXPECT_EQ(source_->copyTo(target_.get(), "there", &out_), Status{-207});
}

TEST_F(NamedCopy, AskForAFileAndAPlace) {
    source_->facts.isFolder = true;
    EXPECT_EQ(source_->copyTo(target_.get(), "a", &out_), Status::BadParameter);
    source_->facts.isFolder = false;
    source_->facts.exists = false;
    EXPECT_EQ(source_->copyTo(target_.get(), "a", &out_), Status::BadParameter);
    source_->facts.exists = true;
    target_->facts.exists = false;
    EXPECT_EQ(source_->copyTo(target_.get(), "a", &out_), Status::BadParameter);
    EXPECT_EQ(source_->copyTo(nullptr, "a", &out_), Status::BadParameter);
    EXPECT_EQ(out_, source_);
}

TEST_F(NamedCopy, BesideAFileMeansInItsFolder) {
    // The parent of a plain item is a plain item, which makes nothing.
    const auto beside = file("/t/beside.txt");
    EXPECT_EQ(source_->copyTo(beside.get(), "a", &out_), Status::Success);
    EXPECT_EQ(out_, nullptr);
}

} // namespace
} // namespace tav
