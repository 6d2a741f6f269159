#include "platform/memory/MemoryFileSystem.hpp"

#include <array>
#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

constexpr OpenOptions forWriting = {.write = true, .create = true};
constexpr OpenOptions forAppending = {.write = true, .create = true, .append = true};

/// What only files in memory have; see the conformance tests for the rest.
class MemoryOpenFileTest : public testing::Test {
  protected:
    MemoryFileSystem files;

    std::unique_ptr<OpenFile> opened(std::string_view path, const OpenOptions& options) {
        auto file = files.open(path, options);
        EXPECT_TRUE(file.ok()) << path;
        return file.ok() ? std::move(file).value() : nullptr;
    }
    std::string contentOf(std::string_view path) {
        const auto content = files.readFile(path, 1000);
        return content.ok() ? std::string(textOf(content.value()))
                            : "error " + std::to_string(content.error().number());
    }
    std::string textIn(OpenFile& file) {
        Data buffer(1000);
        const auto got = file.readAt(0, buffer);
        EXPECT_TRUE(got.ok());
        return std::string(textOf(buffer).substr(0, got.ok() ? got.value() : 0));
    }
};

TEST_F(MemoryOpenFileTest, TheJournalHasEveryCall) {
    files.addFile("/f", "text");
    files.addLink("/l", "f");
    std::array<std::byte, 1> buffer = {};
    {
        const auto file = opened("/l", forWriting);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->attributes().ok());
        EXPECT_TRUE(file->read(buffer).ok());
        EXPECT_TRUE(file->readAt(0, buffer).ok());
        EXPECT_TRUE(file->writeOnce(buffer).ok());
        EXPECT_TRUE(file->write(buffer).isNone());
        EXPECT_TRUE(file->position().ok());
        EXPECT_TRUE(file->setPosition(0).isNone());
        EXPECT_TRUE(file->setSize(0).isNone());
        EXPECT_TRUE(file->sync().isNone());
        EXPECT_TRUE(file->close().isNone());
        EXPECT_FALSE(file->sync().isNone());
    }
    EXPECT_TRUE(files.syncFolder("/").isNone());
    EXPECT_FALSE(files.open("/missing", {}).ok());
    const std::vector<std::string> expected = {"open /l",
                                               "OpenFile.attributes /l",
                                               "OpenFile.read /l",
                                               "OpenFile.readAt /l",
                                               "OpenFile.writeOnce /l",
                                               "OpenFile.write /l",
                                               "OpenFile.position /l",
                                               "OpenFile.setPosition /l",
                                               "OpenFile.setSize /l",
                                               "OpenFile.sync /l",
                                               "OpenFile.close /l",
                                               "OpenFile.sync /l",
                                               "syncFolder /",
                                               "open /missing"};
    EXPECT_EQ(files.calls(), expected);
}

TEST_F(MemoryOpenFileTest, BeyondTheCapacityWhatFitsIsWritten) {
    files.addFile("/other", "123");
    files.capacity = 8;
    for (const OpenOptions& options : {forWriting, forAppending}) {
        const auto file = opened("/f", options);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->writeOnce(bytesOf("abc")).value(), 3U);
        EXPECT_EQ(file->writeOnce(bytesOf("defg")).value(), 2U);
        EXPECT_EQ(file->position().value(), 5U);
        EXPECT_EQ(file->writeOnce(bytesOf("fg")).error(), SystemError(ENOSPC));
        EXPECT_EQ(file->writeOnce({}).value(), 0U);
        EXPECT_EQ(file->write(bytesOf("fg")), SystemError(ENOSPC));
        EXPECT_EQ(file->setSize(6), SystemError(ENOSPC));
        EXPECT_EQ(contentOf("/f"), "abcde");
        EXPECT_TRUE(file->setSize(4).isNone());
        EXPECT_TRUE(file->setPosition(4).isNone());
        EXPECT_EQ(file->write(bytesOf("xyz")), SystemError(ENOSPC));
        EXPECT_EQ(contentOf("/f"), "abcdx");
        files.removeAll("/f");
    }
}

TEST_F(MemoryOpenFileTest, OverwritingNeedsNoRoom) {
    files.addFile("/f", "12345");
    files.capacity = 0;
    const auto file = opened("/f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->setPosition(1).isNone());
    EXPECT_TRUE(file->write(bytesOf("abc")).isNone());
    EXPECT_EQ(file->writeOnce(bytesOf("de")).value(), 1U);
    EXPECT_EQ(contentOf("/f"), "1abcd");
    EXPECT_TRUE(file->setSize(5).isNone());
    EXPECT_TRUE(file->setSize(2).isNone());
    EXPECT_EQ(file->setSize(3), SystemError(ENOSPC));
}

TEST_F(MemoryOpenFileTest, ZerosBeforeAPositionNeedRoomToo) {
    files.capacity = 4;
    const auto file = opened("/f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->setPosition(4).isNone());
    EXPECT_EQ(file->writeOnce(bytesOf("x")).error(), SystemError(ENOSPC));
    EXPECT_EQ(contentOf("/f"), "");
    EXPECT_TRUE(file->setPosition(3).isNone());
    EXPECT_EQ(file->writeOnce(bytesOf("xy")).value(), 1U);
}

TEST_F(MemoryOpenFileTest, FilesDoNotGrowWithoutBound) {
    const auto file = opened("/f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->setSize((1ULL << 30U) + 1), SystemError(EFBIG));
    EXPECT_TRUE(file->setPosition(1ULL << 40U).isNone());
    EXPECT_EQ(file->writeOnce(bytesOf("x")).error(), SystemError(EFBIG));
    EXPECT_EQ(file->write(bytesOf("x")), SystemError(EFBIG));
    EXPECT_EQ(contentOf("/f"), "");
}

TEST_F(MemoryOpenFileTest, ARemovedFileTakesRoomUntilTheLastIsClosed) {
    files.addFile("/d/f", "12345");
    files.capacity = 5;
    auto one = opened("/d/f", forWriting);
    const auto other = opened("/d/f", {});
    ASSERT_TRUE(one != nullptr && other != nullptr);
    files.removeAll("/d");
    EXPECT_EQ(textIn(*other), "12345");
    EXPECT_EQ(files.writeFile("/g", bytesOf("x"), 0600), SystemError(ENOSPC));
    one.reset();
    EXPECT_EQ(files.writeFile("/g", bytesOf("x"), 0600), SystemError(ENOSPC));
    EXPECT_EQ(textIn(*other), "12345");
    EXPECT_TRUE(other->close().isNone());
    EXPECT_TRUE(files.writeFile("/g", bytesOf("12345"), 0600).isNone());
}

TEST_F(MemoryOpenFileTest, AFileThatIsClosedWhileItHasANameStays) {
    files.addFile("/f", "text");
    opened("/f", forWriting).reset();
    EXPECT_EQ(contentOf("/f"), "text");
    const auto file = opened("/f", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->close().isNone());
    EXPECT_FALSE(file->close().isNone());
    EXPECT_EQ(contentOf("/f"), "text");
}

TEST_F(MemoryOpenFileTest, AReadOnlyFileSystemIsNotChanged) {
    files.addFile("/f", "text");
    const auto file = opened("/f", forWriting);
    ASSERT_NE(file, nullptr);
    files.isReadOnly = true;
    EXPECT_EQ(files.open("/f", forWriting).error(), SystemError(EROFS));
    EXPECT_EQ(files.open("/f", {.write = true}).error(), SystemError(EROFS));
    EXPECT_EQ(files.open("/new", forWriting).error(), SystemError(EROFS));
    EXPECT_EQ(files.open("/f", {.write = true, .create = true, .mustBeNew = true}).error(),
              SystemError(EEXIST));
    EXPECT_EQ(files.open("/", {.write = true}).error(), SystemError(EISDIR));
    EXPECT_TRUE(files.open("/f", {}).ok());
    // Also where it became so later.
    EXPECT_EQ(file->write(bytesOf("x")), SystemError(EROFS));
    EXPECT_EQ(file->writeOnce(bytesOf("x")).error(), SystemError(EROFS));
    EXPECT_EQ(file->setSize(0), SystemError(EROFS));
    EXPECT_EQ(textIn(*file), "text");
    EXPECT_TRUE(file->sync().isNone());
    EXPECT_TRUE(file->close().isNone());
}

TEST_F(MemoryOpenFileTest, AChangeTakesTheClocksTime) {
    files.keepsTwoSecondDates = true;
    files.addFile("/f", "text");
    const auto file = opened("/f", forWriting);
    ASSERT_NE(file, nullptr);
    files.setNow(Date(1001.5));
    EXPECT_TRUE(file->write(bytesOf("x")).isNone());
    EXPECT_EQ(file->attributes().value().modificationDate, Date(1000));
    files.setNow(Date(2003));
    EXPECT_TRUE(file->setSize(2).isNone());
    EXPECT_EQ(files.attributes("/f").value().modificationDate, Date(2002));
    const Date now = files.now();
    EXPECT_EQ(textIn(*file), "xe");
    EXPECT_TRUE(file->setPosition(1).isNone());
    EXPECT_TRUE(file->sync().isNone());
    EXPECT_TRUE(file->write({}).isNone());
    EXPECT_EQ(files.now(), now);
}

TEST_F(MemoryOpenFileTest, CaseMayNotMatter) {
    files.isCaseInsensitive = true;
    files.addFile("/Name", "text");
    EXPECT_EQ(files.open("/NAME", {.write = true, .create = true, .mustBeNew = true}).error(),
              SystemError(EEXIST));
    const auto file = opened("/nAME", forWriting);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(files.move("/Name", "/name", Replace::No).isNone());
    EXPECT_TRUE(file->write(bytesOf("T")).isNone());
    EXPECT_EQ(contentOf("/NAME"), "Text");
    EXPECT_EQ(files.folderEntries("/").value().size(), 1U);
}

TEST_F(MemoryOpenFileTest, ForbiddenCharactersStopOnlyNewNames) {
    files.forbiddenCharacters = ":";
    files.addFile("/a:b", "text");
    EXPECT_EQ(files.open("/c:d", forWriting).error(), SystemError(EINVAL));
    EXPECT_TRUE(files.open("/a:b", forWriting).ok());
}

TEST_F(MemoryOpenFileTest, WhatIsStagedMeanwhileIsSeen) {
    files.addFile("/f", "text");
    const auto file = opened("/f", {});
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->setPosition(3).isNone());
    files.addFile("/f", "ab");
    Data buffer(10);
    EXPECT_EQ(file->read(buffer).value(), 0U);
    EXPECT_EQ(textIn(*file), "ab");
}

} // namespace
} // namespace tav
