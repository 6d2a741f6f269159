#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/ItemMedia.hpp"
#include "fileinfo/local/CachedAttributes.hpp"
#include "fileinfo/local/MacFileInfoFixture_test.hpp"
#include "platform/memory/MemoryClock.hpp"

#include <cerrno>
#include <chrono>
#include <limits>

#include <unistd.h>

namespace tav {
namespace {

using AttributesTest = MacFileInfoInMemory;
using AttributesOnDiskTest = MacFileInfoOnDisk;

const Date someDate = Date::fromSecondsSince1970(1288834974.5);

TEST_F(AttributesTest, AttributesAreFetchedOnceAndAgainAfterRefresh) {
    memory.addFile("/f", "123");
    const Item item = at("/f");
    EXPECT_EQ(callsOf([&] {
                  EXPECT_EQ(item->size(), 3U);
                  EXPECT_TRUE(item->modificationDate());
                  EXPECT_FALSE(item->isLocked());
                  EXPECT_EQ(item->attribute("NSFileSize"), Value(3));
              }),
              (Calls{"attributes /f", "attributes /f"}))
        << "one for what it is, one for its attributes";
    memory.addFile("/f", "12345");
    EXPECT_EQ(item->size(), 3U);
    item->refresh();
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(item->modificationDate()); }), Calls{"attributes /f"});
    EXPECT_EQ(item->size(), 5U);
}

TEST_F(AttributesTest, AMissingItemHasNone) {
    const Item item = at("/gone");
    EXPECT_EQ(item->attribute("NSFileSize"), std::nullopt);
    EXPECT_EQ(item->modificationDate(), std::nullopt);
    EXPECT_EQ(item->creationDate(), std::nullopt);
    EXPECT_EQ(item->typeCode(), 0x3F3F3F3FU);
    EXPECT_EQ(item->typeCodeString(), "");
    EXPECT_FALSE(item->isLocked());
    item->setLocked(true);
    item->setHideExtension(true);
    item->setModificationDate(someDate);
    item->setCreationDate(someDate);
    EXPECT_FALSE(item->fileWrapper());
}

TEST_F(AttributesTest, AttributesByTheirNames) {
    memory.setNow(someDate);
    memory.addFile("/f", "123");
    memory.addLink("/l", "/f");
    const Item item = at("/f");
    EXPECT_EQ(item->attribute("NSFileType"), Value("NSFileTypeRegular"));
    EXPECT_EQ(at("/")->attribute("NSFileType"), Value("NSFileTypeDirectory"));
    EXPECT_EQ(at("/l")->attribute("NSFileType"), Value("NSFileTypeSymbolicLink"));
    EXPECT_EQ(at("/l")->attribute("NSFileSize"), Value(2)) << "of the link itself";
    const FileAttributes raw = memory.attributes("/f").value();
    EXPECT_EQ(item->attribute("NSFilePosixPermissions"), Value(raw.permissions));
    EXPECT_EQ(item->attribute("NSFileOwnerAccountID"), Value(raw.user));
    EXPECT_EQ(item->attribute("NSFileGroupOwnerAccountID"), Value(raw.group));
    EXPECT_EQ(item->attribute("NSFileSystemNumber"), Value(raw.identity.device));
    EXPECT_EQ(item->attribute("NSFileSystemFileNumber"), Value(raw.identity.number));
    EXPECT_EQ(item->attribute("NSFileModificationDate"), Value(raw.modificationDate));
    EXPECT_EQ(item->attribute("NSFileCreationDate"), Value(*raw.creationDate));
    EXPECT_EQ(item->attribute("NSFileImmutable"), Value(false));
    EXPECT_EQ(item->attribute("NSFileExtensionHidden"), Value(false));
    EXPECT_EQ(item->attribute("NSFileHFSTypeCode"), std::nullopt);
    EXPECT_EQ(item->attribute("else"), std::nullopt);
}

TEST_F(AttributesTest, TypeAndCreatorCodes) {
    memory.addFile("/f", "");
    memory.addFile("/plain", "");
    memory.addFile("/wrong", "");
    memory.addLink("/l", "/f");
    ASSERT_TRUE(memory.setExtendedAttribute("/f", "user.tav.type", bytesOf("MooV")).isNone());
    ASSERT_TRUE(memory
                    .setExtendedAttribute("/f", "user.tav.creator",
                                          bytesOf("\xB5"
                                                  "doc"))
                    .isNone());
    ASSERT_TRUE(memory.setExtendedAttribute("/wrong", "user.tav.type", bytesOf("Moo")).isNone());
    const Item item = at("/f");
    EXPECT_EQ(item->typeCode(), 0x4D6F6F56U);
    EXPECT_EQ(item->creatorCode(), 0xB5646F63U);
    EXPECT_EQ(item->typeCodeString(), "'MooV'");
    EXPECT_EQ(item->attribute("NSFileHFSTypeCode"), Value(0x4D6F6F56U));
    EXPECT_EQ(callsOf([&] { EXPECT_EQ(item->typeCode(), 0x4D6F6F56U); }), Calls{}) << "kept";
    EXPECT_EQ(at("/plain")->typeCode(), 0x3F3F3F3FU);
    EXPECT_EQ(at("/plain")->creatorCode(), 0x3F3F3F3FU);
    EXPECT_EQ(at("/plain")->typeCodeString(), "''");
    EXPECT_EQ(at("/wrong")->typeCode(), 0x3F3F3F3FU);
    EXPECT_EQ(at("/l")->typeCode(), 0x3F3F3F3FU) << "a link has none";
}

TEST_F(AttributesTest, WithoutExtendedAttributesTheRestWorks) {
    memory.keepsExtendedAttributes = false;
    memory.addFile("/f", "1");
    const Item item = at("/f");
    item->setHideExtension(true);
    item->setCreationDate(someDate);
    EXPECT_EQ(item->attribute("NSFileExtensionHidden"), Value(false));
    EXPECT_EQ(item->creationDate(), memory.attributes("/f").value().creationDate);
    EXPECT_EQ(item->typeCode(), 0x3F3F3F3FU);
}

TEST_F(AttributesTest, LockingTakesTheRightToWrite) {
    memory.addFile("/f", "");
    ASSERT_TRUE(memory.setPermissions("/f", 0666).isNone());
    const Item item = at("/f");
    item->setLocked(true);
    EXPECT_EQ(memory.attributes("/f").value().permissions, 0444U);
    EXPECT_TRUE(item->isLocked()) << "asked for again";
    EXPECT_EQ(item->attribute("NSFileImmutable"), Value(true));
    item->setLocked(false);
    EXPECT_EQ(memory.attributes("/f").value().permissions, 0644U);
    EXPECT_FALSE(item->isLocked());
    memory.clearCalls();
    item->setLocked(false);
    EXPECT_EQ(memory.calls(), Calls{}) << "it is so";
    files.failOperation("setPermissions", EPERM);
    item->setLocked(true);
    EXPECT_FALSE(item->isLocked());
}

TEST_F(AttributesTest, AnImmutableFileIsLocked) {
    memory.addFile("/f", "");
    memory.setImmutable("/f", true);
    EXPECT_TRUE(at("/f")->isLocked());
    at("/f")->setLocked(false);
    EXPECT_TRUE(at("/f")->isLocked());
}

TEST_F(AttributesTest, ALinkIsNeitherLockedNorDatedThroughItself) {
    memory.addFile("/f", "");
    memory.addLink("/l", "/f");
    const FileAttributes before = memory.attributes("/f").value();
    const Item item = at("/l");
    item->setLocked(true);
    item->setHideExtension(true);
    item->setCreationDate(someDate);
    item->setModificationDate(someDate);
    EXPECT_FALSE(item->isLocked());
    EXPECT_EQ(item->modificationDate(), someDate);
    EXPECT_EQ(memory.attributes("/f").value().permissions, before.permissions);
    EXPECT_EQ(memory.attributes("/f").value().modificationDate, before.modificationDate);
    EXPECT_EQ(at("/f")->creationDate(), before.creationDate);
    EXPECT_EQ(at("/f")->attribute("NSFileExtensionHidden"), Value(false));
}

TEST_F(AttributesTest, HidingTheExtension) {
    memory.addFile("/f.txt", "");
    const Item item = at("/f.txt");
    EXPECT_EQ(item->attribute("NSFileExtensionHidden"), Value(false));
    item->setHideExtension(true);
    EXPECT_EQ(item->attribute("NSFileExtensionHidden"), Value(true));
    item->setHideExtension(false);
    EXPECT_EQ(item->attribute("NSFileExtensionHidden"), Value(false));
    item->setHideExtension(false);
}

TEST_F(AttributesTest, ACreationDateIsKeptToItsLastBit) {
    memory.addFile("/f", "");
    const Item item = at("/f");
    for (const double seconds : {816985358.75926721, 816985358.7592674, 0.1, -1000.1, -978307200.25,
                                 -978307201.3, 1000.5, 1e-9, 3e9 + 0.7, 1e17, -1e17, 0.0}) {
        item->setCreationDate(Date(seconds));
        EXPECT_EQ(at("/f")->creationDate(), Date(seconds)) << seconds;
    }
}

TEST_F(AttributesTest, Dates) {
    memory.addFile("/f", "");
    const Item item = at("/f");
    item->setModificationDate(someDate);
    EXPECT_EQ(item->modificationDate(), someDate);
    item->setCreationDate(Date::fromSecondsSince1970(-1.25));
    EXPECT_EQ(item->creationDate(), Date::fromSecondsSince1970(-1.25));
    EXPECT_EQ(item->modificationDate(), someDate);
    item->setModificationDate(std::nullopt);
    item->setCreationDate(std::nullopt);
    item->setCreationDate(Date(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(item->modificationDate(), someDate);
    EXPECT_EQ(item->creationDate(), Date::fromSecondsSince1970(-1.25));
    ASSERT_TRUE(
        memory.setExtendedAttribute("/f", "user.tav.creation-date", bytesOf("rubbish")).isNone());
    item->refresh();
    EXPECT_EQ(item->creationDate(), memory.attributes("/f").value().creationDate);
}

TEST_F(AttributesTest, AFailureToSetTheModificationDateIsLoggedAndRefreshes) {
    memory.addFile("/f", "1");
    const Item item = at("/f");
    ASSERT_EQ(item->size(), 1U);
    memory.addFile("/f", "12");
    files.failOperation("setModificationDate", EPERM);
    files.failOperation("setExtendedAttribute", EPERM);
    SeenLog log;
    item->setCreationDate(someDate);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(item->size(), 2U) << "refreshed";
    memory.addFile("/f", "123");
    item->setModificationDate(someDate);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_TRUE(log.lines()[0].ends_with("Failed to set the modification date for file \"/f\"."));
    EXPECT_EQ(item->size(), 3U) << "refreshed all the same";
}

TEST_F(AttributesTest, NothingIsLoggedWhenVerboseMessagesAreOff) {
    memory.addFile("/f", "1");
    files.failOperation("setModificationDate", EPERM);
    SeenLog log;
    gLogEnable[4] = false;
    at("/f")->setModificationDate(someDate);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AttributesTest, WhereFilesKeepLocalTimeDatesAreShifted) {
    class LocalTimes : public TavMacFileInfo {
      public:
        bool mustUseUTCDates() override { return true; }
        void take(std::string_view path) { initWithPath(path); }
    };
    MemoryClock clock(someDate, std::chrono::hours(2));
    const Clock::Replacement replaced(clock);
    memory.addFile("/f", "");
    const auto item = internal::allocateItem<LocalTimes>();
    item->take("/f");
    item->setModificationDate(someDate);
    EXPECT_EQ(memory.attributes("/f").value().modificationDate,
              Date(someDate.secondsSinceReferenceDate() - 7200));
    EXPECT_EQ(item->modificationDate(), someDate);
    item->setCreationDate(someDate);
    EXPECT_EQ(item->creationDate(), someDate);
    EXPECT_EQ(at("/f")->creationDate(), Date(someDate.secondsSinceReferenceDate() - 7200));
}

TEST_F(AttributesTest, FileWrappers) {
    memory.addFile("/d/f", "abc");
    const std::optional<FileWrapper> wrapper = at("/d/f")->fileWrapper();
    ASSERT_TRUE(wrapper);
    EXPECT_EQ(wrapper->name, "f");
    EXPECT_EQ(textOf(wrapper->contents), "abc");
    EXPECT_FALSE(at("/d")->fileWrapper());
}

class SomeMedia final : public ItemMedia {
  public:
    bool isProtectedFile(std::string_view path) override {
        ++questions;
        return path == "/protected";
    }
    std::optional<Value> metadataForFile(std::string_view path) override { return Value(path); }
    void setMetadata(const Value& metadata, std::string_view forFile) override {
        stored = std::string(forFile) + "=" + metadata.description();
    }
    int questions = 0;
    std::string stored;
};

TEST_F(AttributesTest, MediaIsAskedOnceWhetherAFileIsProtected) {
    const Item item = at("/protected");
    EXPECT_FALSE(at("/protected")->hasDRM()) << "without media";
    EXPECT_EQ(item->metadata(), std::nullopt);
    item->setMetadata("x");
    SomeMedia media;
    const ItemMedia::Replacement replaced(media);
    EXPECT_TRUE(item->hasDRM());
    EXPECT_TRUE(item->hasDRM());
    EXPECT_EQ(media.questions, 1);
    EXPECT_FALSE(at("/other")->hasDRM());
    item->refresh();
    EXPECT_TRUE(item->hasDRM());
    EXPECT_EQ(media.questions, 3);
    EXPECT_EQ(item->metadata(), Value("/protected"));
    item->setMetadata("x");
    EXPECT_EQ(media.stored, "/protected=x");
}

TEST_F(AttributesOnDiskTest, DatesAndLocks) {
    addFile("f", "");
    const Item item = in("f");
    item->setModificationDate(someDate);
    EXPECT_EQ(item->modificationDate(), someDate);
    EXPECT_TRUE(item->creationDate());
    item->setLocked(true);
    EXPECT_TRUE(item->isLocked());
    item->setLocked(false);
    EXPECT_FALSE(item->isLocked());
    addLink("l", "gone");
    in("l")->setModificationDate(someDate);
    EXPECT_EQ(in("l")->modificationDate(), someDate);
}

TEST_F(AttributesOnDiskTest, TheSizeOfFiveGibibytesWraps) {
    addFile("sparse", "");
    if (::truncate(folder.path("sparse").c_str(), off_t{5} << 30) != 0) {
        GTEST_SKIP() << "no files of 5 GiB here";
    }
    EXPECT_EQ(in("sparse")->size(), std::uint64_t{1} << 30);
    EXPECT_EQ(in("sparse")->resolvedSize(), std::uint32_t{1} << 30);
    EXPECT_FALSE(in("sparse")->fileWrapper());
}

} // namespace
} // namespace tav
