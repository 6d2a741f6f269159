#include "foundation/FileHandle.hpp"
#include "foundation/FileManager_test.hpp"

#include <sys/stat.h>

namespace tav {
namespace {

Data bytes(std::string_view text) { return dataFromText(text); }

class FileHandleTest : public FileManagerTest {
  protected:
    std::unique_ptr<FileHandle> open(std::string_view name) {
        return FileHandle::fileHandleOpeningOrCreatingAtPath(path(name));
    }
    /// Lets the next call fail.
    void failNextCall(int errorNumber) {
        faulty.restartCount();
        faulty.failCall(1, errorNumber);
    }
};

INSTANTIATE_TEST_SUITE_P(Worlds, FileHandleTest, testing::Values(Kind::Real, Kind::Memory),
                         nameOfWorld);

TEST_P(FileHandleTest, MakesAMissingFileForItsOwnerOnly) {
    ASSERT_NE(open("new"), nullptr);
    EXPECT_EQ(attributesOf("new").permissions, 0700U);
    EXPECT_EQ(attributesOf("new").size, 0U);
}

TEST_P(FileHandleTest, OpensAnExistingFileAtItsBeginningAndKeepsIt) {
    makeFile("a", "content");
    const auto handle = open("a");
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(handle->offsetInFile().value(), 0U);
    EXPECT_EQ(handle->fileSize(), 7U);
    EXPECT_EQ(read("a"), "content");
    EXPECT_EQ(attributesOf("a").permissions, 0600U);
}

TEST_P(FileHandleTest, OpensThroughLinks) {
    makeFile("a", "content");
    makeLink("link", "a");
    makeLink("toNothing", "made");
    EXPECT_EQ(open("link")->fileSize(), 7U);
    ASSERT_NE(open("toNothing"), nullptr);
    EXPECT_EQ(read("made"), "");
}

TEST_P(FileHandleTest, IsNullWhereNothingCanBeOpened) {
    makeFolder("folder");
    EXPECT_EQ(open("folder"), nullptr);
    EXPECT_EQ(open("missing/a"), nullptr);
    EXPECT_EQ(FileHandle::fileHandleOpeningOrCreatingAtPath(""), nullptr);
    failNextCall(EMFILE);
    EXPECT_EQ(open("a"), nullptr);
    if (GetParam() == Kind::Real) {
        ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
        EXPECT_EQ(open("pipe"), nullptr);
    }
}

TEST_P(FileHandleTest, WritesABufferAtThePosition) {
    makeFile("a", "0123456789");
    const auto handle = open("a");
    ASSERT_TRUE(handle->seekToFileOffset(3).isNone());
    EXPECT_EQ(handle->writeBuffer(bytes("abc")), 0);
    EXPECT_EQ(handle->offsetInFile().value(), 6U);
    EXPECT_EQ(handle->writeBuffer({}), 0);
    EXPECT_EQ(read("a"), "012abc6789");
}

TEST_P(FileHandleTest, AWriteThatFailsAnswersItsErrorNumber) {
    const auto handle = open("a");
    failNextCall(ENOSPC);
    EXPECT_EQ(handle->writeBuffer(bytes("abc")), ENOSPC);
    EXPECT_EQ(read("a"), "");
}

TEST_P(FileHandleTest, AWriteThatIsCutShortIsAFailure) {
    const auto handle = open("a");
    faulty.restartCount();
    faulty.shortWriteCall(1, 2);
    EXPECT_EQ(handle->writeBuffer(bytes("abc")), EIO);
    EXPECT_EQ(read("a"), "ab");
    EXPECT_EQ(faulty.callCount(), 1U); // one write, not tried again
}

TEST_P(FileHandleTest, ReadsABufferWholeOrFailsWithEIO) {
    makeFile("a", "0123456789");
    const auto handle = open("a");
    Data buffer(6);
    EXPECT_EQ(handle->readIntoBuffer(buffer), 0);
    EXPECT_EQ(buffer, bytes("012345"));
    EXPECT_EQ(handle->readIntoBuffer(buffer), 5);
    EXPECT_EQ(buffer, bytes("678945"));
    EXPECT_EQ(handle->readIntoBuffer({}), 0);
    ASSERT_TRUE(handle->seekToFileOffset(0).isNone());
    failNextCall(EACCES);
    EXPECT_EQ(handle->readIntoBuffer(buffer), EIO);
}

TEST_P(FileHandleTest, ReadsTheWholeFileFromWhereverThePositionIs) {
    makeFile("a", "0123456789");
    const auto handle = open("a");
    ASSERT_TRUE(handle->seekToFileOffset(4).isNone());
    EXPECT_EQ(handle->readFileIntoMutableData(), bytes("0123456789"));
    EXPECT_EQ(handle->offsetInFile().value(), 10U);
    EXPECT_EQ(handle->readFileIntoMutableData(), bytes("0123456789"));
}

TEST_P(FileHandleTest, AnEmptyFileIsAnEmptyBuffer) {
    EXPECT_EQ(open("a")->readFileIntoMutableData(), Data());
}

TEST_P(FileHandleTest, AWholeReadThatFailsAnywhereAnswersNothing) {
    makeFile("a", "0123456789");
    for (const int error : sweptErrors) {
        const auto handle = open("a");
        std::size_t call = 1;
        for (;; ++call) {
            faulty.restartCount();
            faulty.failCall(call, error);
            const auto content = handle->readFileIntoMutableData();
            if (faulty.callCount() < call) {
                EXPECT_EQ(content, bytes("0123456789"));
                break;
            }
            EXPECT_EQ(content, std::nullopt) << call;
        }
        EXPECT_EQ(call, 4U); // size, position, content
        faulty.failCall(0, 0);
    }
}

TEST_P(FileHandleTest, ReadsNoMoreThanTheLimit) {
    makeFile("a", "0123456789");
    const auto file = files.open(path("a"), {});
    ASSERT_TRUE(file.ok());
    EXPECT_EQ(internal::readFromStart(*file.value(), 10), bytes("0123456789"));
    EXPECT_EQ(internal::readFromStart(*file.value(), 9), bytes("012345678"));
    EXPECT_EQ(internal::readFromStart(*file.value(), 0), Data());
    EXPECT_EQ(FileHandle::largestRead, 1000000000U);
}

TEST_P(FileHandleTest, AFileThatWasCutMeanwhileAnswersNothing) {
    makeFile("a", "0123456789");
    const auto handle = open("a");
    faulty.restartCount();
    faulty.atCall(3, [&] { ASSERT_TRUE(files.writeFile(path("a"), {}, 0600).isNone()); });
    EXPECT_EQ(handle->readFileIntoMutableData(), std::nullopt);
}

TEST_P(FileHandleTest, AFileThatGrewMeanwhileIsReadAsFarAsItsOldSize) {
    makeFile("a", "0123");
    const auto handle = open("a");
    faulty.restartCount();
    faulty.atCall(3, [&] { makeFile("a", "0123456789"); });
    EXPECT_EQ(handle->readFileIntoMutableData(), bytes("0123"));
}

TEST_P(FileHandleTest, TheSizeIsZeroWhereItCannotBeTold) {
    makeFile("a", "0123");
    const auto handle = open("a");
    EXPECT_EQ(handle->fileSize(), 4U);
    failNextCall(EIO);
    EXPECT_EQ(handle->fileSize(), 0U);
    EXPECT_EQ(FileHandle(nullptr).fileSize(), 0U);
}

TEST_P(FileHandleTest, AppendsBehindTheEnd) {
    makeFile("a", "0123");
    const auto handle = open("a");
    EXPECT_EQ(handle->seekToEndOfFile().value(), 4U);
    EXPECT_TRUE(handle->writeData(bytes("45")).isNone());
    EXPECT_EQ(handle->offsetInFile().value(), 6U);
    EXPECT_TRUE(handle->synchronizeFile().isNone());
    EXPECT_EQ(read("a"), "012345");
}

TEST_P(FileHandleTest, ReadsALengthAtThePosition) {
    makeFile("a", "012345");
    const auto handle = open("a");
    EXPECT_EQ(handle->readDataOfLength(4).value(), bytes("0123"));
    EXPECT_EQ(handle->readDataOfLength(4).value(), bytes("45"));
    EXPECT_EQ(handle->readDataOfLength(4).value(), Data());
    EXPECT_EQ(handle->readDataOfLength(SIZE_MAX).error().number(), ENOMEM);
    failNextCall(EIO);
    EXPECT_EQ(handle->readDataOfLength(1).error().number(), EIO);
}

TEST_P(FileHandleTest, CuttingMovesThePosition) {
    makeFile("a", "0123456789");
    const auto handle = open("a");
    EXPECT_TRUE(handle->truncateFileAtOffset(4).isNone());
    EXPECT_EQ(handle->offsetInFile().value(), 4U);
    EXPECT_EQ(read("a"), "0123");
    EXPECT_TRUE(handle->truncateFileAtOffset(6).isNone());
    EXPECT_EQ(handle->offsetInFile().value(), 6U);
    EXPECT_EQ(read("a"), std::string("0123\0\0", 6));
    failNextCall(EROFS);
    EXPECT_EQ(handle->truncateFileAtOffset(0).number(), EROFS);
    EXPECT_EQ(handle->offsetInFile().value(), 6U);
}

TEST_P(FileHandleTest, AnEndThatCannotBeFoundLeavesThePosition) {
    makeFile("a", "0123456789");
    const auto handle = open("a");
    failNextCall(EIO);
    EXPECT_EQ(handle->seekToEndOfFile().error().number(), EIO);
    EXPECT_EQ(handle->offsetInFile().value(), 0U);
}

TEST_P(FileHandleTest, AClosedHandleAnswersFailures) {
    makeFile("a", "0123");
    const auto handle = open("a");
    EXPECT_TRUE(handle->closeFile().isNone());
    EXPECT_TRUE(handle->closeFile().isNone());
    Data buffer(1);
    EXPECT_EQ(handle->writeBuffer(buffer), EBADF);
    EXPECT_EQ(handle->readIntoBuffer(buffer), EIO);
    EXPECT_EQ(handle->readFileIntoMutableData(), std::nullopt);
    EXPECT_EQ(handle->fileSize(), 0U);
    EXPECT_EQ(handle->offsetInFile().error().number(), EBADF);
    EXPECT_EQ(handle->seekToFileOffset(0).number(), EBADF);
    EXPECT_EQ(handle->seekToEndOfFile().error().number(), EBADF);
    EXPECT_EQ(handle->readDataOfLength(1).error().number(), EBADF);
    EXPECT_EQ(handle->writeData(buffer).number(), EBADF);
    EXPECT_EQ(handle->truncateFileAtOffset(0).number(), EBADF);
    EXPECT_EQ(handle->synchronizeFile().number(), EBADF);
    EXPECT_EQ(read("a"), "0123");
}

TEST_P(FileHandleTest, ClosingTellsWhatTheHostStillHadToSay) {
    const auto handle = open("a");
    failNextCall(ENOSPC);
    EXPECT_EQ(handle->closeFile().number(), ENOSPC);
}

TEST_P(FileHandleTest, FollowsARemovedFile) {
    makeFile("a", "0123");
    const auto handle = open("a");
    ASSERT_TRUE(files.removeFile(path("a")).isNone());
    EXPECT_EQ(handle->readFileIntoMutableData(), bytes("0123"));
}

} // namespace
} // namespace tav
