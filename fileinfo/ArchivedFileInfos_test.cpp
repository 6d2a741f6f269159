#include "base/Exception.hpp"
#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "base/PropertyList.hpp"
#include "fileinfo/ArchivedFileInfos.hpp"
#include "fileinfo/FakeFileInfo_test.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

/// An item with dates, which archives under its class's name.
class DatedFileInfo : public FakeFileInfo {
  public:
    static std::shared_ptr<DatedFileInfo> at(std::string_view path) {
        const auto made = internal::allocateItem<DatedFileInfo>();
        made->initWithPath(path);
        return made;
    }
    std::optional<Date> creationDate() override { return Date(100); }
    std::optional<Date> modificationDate() override { return Date(200.5); }

  protected:
    DatedFileInfo() = default;
};

FileInfoPtr throughArchive(const FileInfoPtr& item) {
    const Archived archived =
        TavBaseFileInfo::unarchiveFromData(archivedDataWithRootObject(item.get()));
    return std::dynamic_pointer_cast<TavBaseFileInfo>(std::get<std::shared_ptr<Coding>>(archived));
}

TEST(ArchivedItems, RememberTheirDatesAndSize) {
    const auto item = DatedFileInfo::at("/a/b.txt");
    item->facts.size = std::uint64_t{1} << 63;
    const FileInfoPtr back = throughArchive(item);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->className(), "TavPathBasedFileInfo");
    EXPECT_EQ(back->path(), "/a/b.txt");
    EXPECT_EQ(back->oldCreationDate(), Date(100));
    EXPECT_EQ(back->oldModificationDate(), Date(200.5));
    EXPECT_EQ(back->oldFileSize(), std::uint64_t{1} << 63);
    // The live questions are the back-end's.
    EXPECT_EQ(back->creationDate(), std::nullopt);
    EXPECT_EQ(back->size(), 0U);
}

TEST(ArchivedItems, HaveNoOldStateBefore) {
    const auto item = DatedFileInfo::at("/a");
    EXPECT_EQ(item->oldCreationDate(), std::nullopt);
    EXPECT_EQ(item->oldModificationDate(), std::nullopt);
    EXPECT_EQ(item->oldFileSize(), std::nullopt);
    item->setOldFileSize(7);
    item->setOldCreationDate(Date(1));
    item->setOldModificationDate(Date(2));
    EXPECT_EQ(item->oldFileSize(), 7U);
    EXPECT_EQ(item->oldCreationDate(), Date(1));
    EXPECT_EQ(item->oldModificationDate(), Date(2));
    item->setOldCreationDate(std::nullopt);
    EXPECT_EQ(item->oldCreationDate(), std::nullopt);
}

TEST(ArchivedItems, AFolderHasNoSize) {
    const FileInfoPtr back = throughArchive(FakeFileInfo::folder("/a"));
    EXPECT_EQ(back->oldFileSize(), std::nullopt);
    EXPECT_EQ(back->oldCreationDate(), std::nullopt);
}

TEST(ArchivedItems, ThePathComesBackWithoutARefreshWhateverItsBytes) {
    EXPECT_EQ(throughArchive(FakeFileInfo::fileInfoWithPath("/\xff\xfe"))->path(), "/\xff\xfe");
    EXPECT_EQ(throughArchive(FakeFileInfo::fileInfoWithPath(""))->path(), "");
}

/// What an item encodes, under the archive's top-level keys, as the archive has it.
struct TopLevel {
    explicit TopLevel(const FileInfoPtr& item) {
        KeyedArchiver archiver;
        item->encodeWithCoder(archiver);
        bytes = archiver.finishEncoding();
        list = PropertyList::read(bytes, nullptr).value();
    }
    /// In the order of their characters.
    [[nodiscard]] std::vector<std::string> keys() const {
        std::vector<std::string> names;
        for (const auto& [key, value] : *list.asDictionary()->find("$top")->asDictionary()) {
            names.push_back(key);
        }
        std::ranges::sort(names);
        return names;
    }
    Data bytes;
    Value list;
};

TEST(ArchivedItems, EncodeOnlyWhatTheyKnow) {
    EXPECT_EQ(TopLevel(DatedFileInfo::at("/a")).keys(),
              (std::vector<std::string>{"TavPathBasedFileInfo_path", "_creationDate", "_fileSize",
                                        "_isFile", "_modificationDate"}));
    const TopLevel folder(FakeFileInfo::folder("/a"));
    EXPECT_EQ(folder.keys(), (std::vector<std::string>{"TavPathBasedFileInfo_path", "_isFile"}));
    EXPECT_EQ(TopLevel(TavBaseFileInfo::fileInfo()).keys(), std::vector<std::string>{"_isFile"});
}

TEST(ArchivedItems, SayWhetherTheyAreFilesByABooleanNumber) {
    const TopLevel file(DatedFileInfo::at("/a"));
    const std::optional<Value> isFile = KeyedUnarchiver(file.bytes).decodeValue("_isFile");
    ASSERT_TRUE(isFile);
    EXPECT_EQ(isFile->type(), Value::Type::Boolean);
    EXPECT_TRUE(isFile->boolValue());
    EXPECT_EQ(KeyedUnarchiver(file.bytes).decodeValue("_fileSize"), Value(std::uint64_t{0}));
    const TopLevel folder(FakeFileInfo::folder("/a"));
    EXPECT_EQ(KeyedUnarchiver(folder.bytes).decodeValue("_isFile"), Value(false));
    // The numbers are objects of their own, not part of the item's record.
    const Value::Dictionary& top = *file.list.asDictionary()->find("$top")->asDictionary();
    EXPECT_EQ(top.find("_isFile")->type(), Value::Type::UID);
    EXPECT_EQ(top.find("_fileSize")->type(), Value::Type::UID);
}

TEST(ArchivedItems, AreFilledFromAnArchiveWithoutARefresh) {
    const TopLevel archive(DatedFileInfo::at("/a"));
    const auto item = FakeFileInfo::folder("/b");
    const int refreshes = item->facts.refreshes;
    KeyedUnarchiver coder(archive.bytes);
    item->initWithCoder(coder);
    EXPECT_EQ(item->path(), "/a");
    EXPECT_EQ(item->facts.refreshes, refreshes);
    EXPECT_TRUE(item->isFolder());
    EXPECT_EQ(item->oldCreationDate(), Date(100));
    EXPECT_EQ(item->oldModificationDate(), Date(200.5));
    EXPECT_EQ(item->oldFileSize(), 0U);
}

TEST(ArchivedItems, WindowsItemsAreThemselves) {
    const FileInfoPtr back = throughArchive(TavWindowsPathBasedFileInfo::fileInfoWithPath("E:\\a"));
    EXPECT_EQ(back->className(), "TavWindowsPathBasedFileInfo");
    EXPECT_EQ(back->path(), "E:\\a");
}

TEST(ArchivedItems, TheArchiveHasTheKeysOfOtherPrograms) {
    const Data archive = archivedDataWithRootObject(DatedFileInfo::at("/a").get());
    const std::optional<Value> list = PropertyList::read(archive, nullptr);
    ASSERT_TRUE(list);
    const Value::Array& objects = *list->asDictionary()->find("$objects")->asArray();
    const Value::Dictionary* root = nullptr;
    for (const Value& object : objects) {
        const Value::Dictionary* dictionary = object.asDictionary();
        if (dictionary != nullptr && dictionary->find("TavPathBasedFileInfo_path") != nullptr) {
            root = dictionary;
        }
    }
    ASSERT_NE(root, nullptr);
    for (const char* key : {"_creationDate", "_modificationDate", "_isFile", "_fileSize"}) {
        EXPECT_NE(root->find(key), nullptr) << key;
    }
}

TEST(ArchivedItems, TheClassItselfIsArchivedByTheClass) {
    const Archived archived = TavBaseFileInfo::unarchiveFromData(TavBaseFileInfo::archiveToData());
    ASSERT_TRUE(std::holds_alternative<ArchivedClass>(archived));
    EXPECT_EQ(std::get<ArchivedClass>(archived).name, "TavBaseFileInfo");
}

TEST(ArchivedItems, AnythingElseIsAnsweredOrRefused) {
    EXPECT_EQ(std::get<Value>(
                  TavBaseFileInfo::unarchiveFromData(archivedDataWithRootObject(Value("text")))),
              Value("text"));
    EXPECT_THROW(static_cast<void>(TavBaseFileInfo::unarchiveFromData({})), Exception);
}

} // namespace
} // namespace tav
