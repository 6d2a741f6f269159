// The log's file when the host fails, at every call in turn.
#include "log/LogFile.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"

#include <cerrno>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using Messages = std::vector<std::string>;

void add(LogFile& log, int number) {
    const std::string message = "record number " + std::to_string(number);
    log.addFields({.type = number % 12, .message = message});
}

Messages messagesOf(LogFile& log) {
    Messages messages;
    for (std::size_t i = 0; i < log.getItemCount(); ++i) {
        const RecordPtr record = log.getItem(i);
        const std::string* message = record ? record->findString("message") : nullptr;
        messages.push_back(message != nullptr ? *message : "unreadable");
    }
    return messages;
}

class LogFileFaults : public testing::Test {
  protected:
    /// What the file holds when somebody opens it afresh; no byte may be left over.
    Messages inFile() {
        LogFile log("/logs/log");
        const auto bytes = memory.readFile("/logs/log", 1U << 20U);
        EXPECT_EQ(textOf(bytes.value()), log.buildFileImage()) << "torn";
        return messagesOf(log);
    }

    /// Opens a log of three records, adds, trims, adds, clears and adds; then compares. At most
    /// one record, the one whose write failed, may be missing in the file.
    void checkRun() {
        const FileSystem::Replacement replacement(files);
        LogFile log("/logs/log");
        const bool isRead = log.getItemCount() == 3;
        for (int i = 3; i < 6; ++i) {
            add(log, i);
        }
        EXPECT_EQ(messagesOf(log).back(), "record number 5");
        log.trimLines(2);
        EXPECT_EQ(messagesOf(log), (Messages{"record number 4", "record number 5"}));
        compare(log, isRead);
        add(log, 6);
        add(log, 7);
        EXPECT_EQ(messagesOf(log).size(), 4U);
        compare(log, isRead);
        log.clear();
        EXPECT_EQ(log.getItemCount(), 0U);
        add(log, 8);
        compare(log, isRead);
    }

    void compare(LogFile& log, bool isRead) {
        const FileSystem::Replacement replacement(memory);
        const Messages expected = messagesOf(log);
        const Messages found = inFile();
        std::size_t missing = 0;
        std::size_t at = 0;
        for (const std::string& message : expected) {
            const bool isThere = at < found.size() && found[at] == message;
            at += isThere ? 1 : 0;
            missing += isThere ? 0 : 1;
        }
        if (isRead) {
            EXPECT_LE(missing, 1U);
            EXPECT_LE(found.size() - at, 3U);
        }
    }

    void prepare() {
        memory.removeAll("/logs");
        const FileSystem::Replacement replacement(memory);
        LogFile log("/logs/log");
        for (int i = 0; i < 3; ++i) {
            add(log, i);
        }
        files.restartCount();
    }

    MemoryFileSystem memory;
    FaultyFileSystem files{memory};
};

TEST_F(LogFileFaults, EveryCallMayFail) {
    prepare();
    checkRun();
    const std::size_t calls = files.callCount();
    ASSERT_GT(calls, 20U);
    for (const int error : {ENOSPC, EIO, EINTR, EDQUOT, EACCES, EMFILE}) {
        for (std::size_t call = 1; call <= calls + 5; ++call) {
            SCOPED_TRACE(std::to_string(call) + ", error " + std::to_string(error));
            prepare();
            files.failCall(call, error);
            checkRun();
        }
    }
}

TEST_F(LogFileFaults, EveryWriteMayBeShort) {
    prepare();
    checkRun();
    const std::size_t calls = files.callCount();
    for (std::size_t call = 1; call <= calls + 5; ++call) {
        for (const std::size_t bytes : {0U, 1U, 2U, 3U, 20U, 40U}) {
            SCOPED_TRACE(std::to_string(call) + ", bytes " + std::to_string(bytes));
            prepare();
            files.shortWriteCall(call, bytes);
            checkRun();
        }
    }
}

TEST_F(LogFileFaults, AShortWriteIsCutBackAndTheRecordStaysInMemory) {
    prepare();
    const FileSystem::Replacement replacement(files);
    LogFile log("/logs/log");
    files.restartCount();
    files.shortWriteCall(1, 10);
    add(log, 3);
    EXPECT_EQ(log.getItemCount(), 4U);
    EXPECT_EQ(inFile().size(), 3U);
    files.shortWriteCall(0, 0);
    add(log, 4);
    EXPECT_EQ(inFile().back(), "record number 4");
    log.trimLines(4);
    EXPECT_EQ(inFile().size(), 4U) << "the rewrite brings it back";
}

TEST_F(LogFileFaults, WhatCannotBeCutBackIsCutBeforeTheNextAppend) {
    prepare();
    const FileSystem::Replacement replacement(files);
    LogFile log("/logs/log");
    files.restartCount();
    files.shortWriteCall(1, 10);
    files.failOperation("OpenFile.setSize", EIO);
    add(log, 3);
    const auto torn = memory.readFile("/logs/log", 1000).value();
    add(log, 4);
    add(log, 5);
    EXPECT_EQ(memory.readFile("/logs/log", 1000).value(), torn) << "nothing is put behind it";
    files.failOperation("OpenFile.setSize", 0);
    add(log, 6);
    EXPECT_EQ(inFile(), (Messages{"record number 0", "record number 1", "record number 2",
                                  "record number 6"}));
}

TEST_F(LogFileFaults, ARewriteThatDoesNotBeginLeavesTheEndToBeCut) {
    prepare();
    const FileSystem::Replacement replacement(files);
    LogFile log("/logs/log");
    files.restartCount();
    files.shortWriteCall(1, 10);
    files.failOperation("OpenFile.setSize", EIO);
    add(log, 3);
    // Somebody has moved the file away: it can only be rewritten in place, and that fails.
    ASSERT_TRUE(memory.move("/logs/log", "/logs/moved", Replace::No).isNone());
    log.trimLines(2);
    files.failOperation("OpenFile.setSize", 0);
    add(log, 4);
    LogFile moved("/logs/moved");
    EXPECT_EQ(messagesOf(moved), (Messages{"record number 0", "record number 1", "record number 2",
                                           "record number 4"}));
}

TEST_F(LogFileFaults, WhatSomebodyElseAppendedBehindAShortWriteStays) {
    prepare();
    const FileSystem::Replacement replacement(files);
    LogFile log("/logs/log");
    files.restartCount();
    files.shortWriteCall(1, 10);
    files.atCall(2, [&] {
        auto other = memory.open("/logs/log", {.write = true, .append = true});
        ASSERT_TRUE(other.value()->write(bytesOf("somebody else's")).isNone());
    });
    add(log, 3);
    const auto bytes = memory.readFile("/logs/log", 1000);
    EXPECT_TRUE(textOf(bytes.value()).ends_with("somebody else's"));
}

TEST_F(LogFileFaults, AFullDisk) {
    prepare();
    const FileSystem::Replacement replacement(memory);
    LogFile log("/logs/log");
    memory.capacity = memory.readFile("/logs/log", 1000).value().size() + 70;
    for (int i = 3; i < 10; ++i) {
        add(log, i);
    }
    EXPECT_EQ(log.getItemCount(), 10U);
    EXPECT_EQ(inFile().size(), 4U);
    // There is no room for a second file, but in place the shorter one fits.
    log.trimLines(2);
    EXPECT_EQ(inFile(), (Messages{"record number 8", "record number 9"}));
    memory.capacity = 70;
    log.trimLines(1);
    EXPECT_EQ(inFile(), Messages{"record number 9"});
}

TEST_F(LogFileFaults, ARewriteInPlaceThatDoesNotFitKeepsWholePackets) {
    prepare();
    const FileSystem::Replacement replacement(memory);
    LogFile log("/logs/log");
    memory.capacity = 130; // less than there is
    log.trimLines(2);
    EXPECT_EQ(inFile(), (Messages{"record number 1", "record number 2"}));
    memory.capacity = 100;
    add(log, 3);
    log.trimLines(2);
    EXPECT_EQ(inFile(), Messages{"record number 2"});
    EXPECT_EQ(log.getItemCount(), 2U);
}

TEST_F(LogFileFaults, AReadOnlyHost) {
    prepare();
    memory.isReadOnly = true;
    const FileSystem::Replacement replacement(memory);
    LogFile log("/logs/log");
    EXPECT_EQ(log.getItemCount(), 0U) << "it cannot be opened to write";
    add(log, 3);
    log.clear();
    memory.isReadOnly = false;
    EXPECT_EQ(inFile().size(), 3U);
}

} // namespace
} // namespace tav
