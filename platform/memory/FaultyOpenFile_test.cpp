#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "testing/ForkedProcess.hpp"
#include "testing/TemporaryFolder.hpp"

#include <array>
#include <cerrno>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <signal.h>

namespace tav {
namespace {

constexpr OpenOptions forWriting = {.write = true, .create = true};
constexpr OpenOptions forAppending = {.write = true, .create = true, .append = true};

class FaultyOpenFileTest : public testing::Test {
  protected:
    MemoryFileSystem memory;
    FaultyFileSystem files{memory};

    FaultyOpenFileTest() { memory.addFile("/f", "text"); }

    std::unique_ptr<OpenFile> opened(const OpenOptions& options = forWriting) {
        auto file = files.open("/f", options);
        EXPECT_TRUE(file.ok());
        return file.ok() ? std::move(file).value() : nullptr;
    }
    std::string content() {
        const auto read = memory.readFile("/f", 1000);
        return read.ok() ? std::string(textOf(read.value())) : "error";
    }
    /// Each operation once, opening first; the errors in that order.
    std::vector<int> doEverything() {
        const auto opening = files.open("/f", forWriting);
        std::vector<int> errors = {opening.error().number()};
        if (!opening.ok()) {
            return errors;
        }
        OpenFile& file = *opening.value();
        std::array<std::byte, 2> buffer = {};
        errors.push_back(file.attributes().error().number());
        errors.push_back(file.read(buffer).error().number());
        errors.push_back(file.readAt(0, buffer).error().number());
        errors.push_back(file.writeOnce(bytesOf("a")).error().number());
        errors.push_back(file.write(bytesOf("b")).number());
        errors.push_back(file.position().error().number());
        errors.push_back(file.setPosition(1).number());
        errors.push_back(file.setSize(4).number());
        errors.push_back(file.nextData(0).error().number());
        errors.push_back(file.cloneRange(file, 0, 0, 0).number());
        errors.push_back(file.sync().number());
        errors.push_back(file.close().number());
        return errors;
    }
};

const std::vector<std::string> operations = {"open",
                                             "OpenFile.attributes",
                                             "OpenFile.read",
                                             "OpenFile.readAt",
                                             "OpenFile.writeOnce",
                                             "OpenFile.write",
                                             "OpenFile.position",
                                             "OpenFile.setPosition",
                                             "OpenFile.setSize",
                                             "OpenFile.nextData",
                                             "OpenFile.cloneRange",
                                             "OpenFile.sync",
                                             "OpenFile.close"};

TEST_F(FaultyOpenFileTest, PassesEverythingOnAndCounts) {
    EXPECT_EQ(doEverything(), std::vector<int>(operations.size(), 0));
    EXPECT_EQ(files.callCount(), operations.size());
    ASSERT_EQ(memory.calls().size(), operations.size());
    for (std::size_t index = 0; index < operations.size(); ++index) {
        EXPECT_EQ(memory.calls()[index], operations[index] + " /f");
    }
    EXPECT_EQ(content(), "teab");
}

TEST_F(FaultyOpenFileTest, EachCallCanFailWithoutReachingTheOther) {
    for (std::size_t number = 2; number < operations.size(); ++number) {
        memory.clearCalls();
        files.restartCount();
        files.failCall(number, EIO);
        std::vector<int> expected(operations.size(), 0);
        expected[number - 1] = EIO;
        EXPECT_EQ(doEverything(), expected) << number;
        EXPECT_EQ(memory.calls().size(), operations.size() - 1) << number;
        EXPECT_EQ(files.callCount(), operations.size());
    }
    files.restartCount();
    memory.clearCalls();
    files.failCall(1, ENFILE);
    EXPECT_EQ(doEverything(), std::vector<int>{ENFILE});
    EXPECT_TRUE(memory.calls().empty());
}

TEST_F(FaultyOpenFileTest, EachOperationCanFail) {
    for (std::size_t index = 0; index < operations.size(); ++index) {
        files.failOperation(operations[index], EDQUOT);
        EXPECT_EQ(doEverything().at(index), EDQUOT) << operations[index];
        files.failOperation(operations[index], 0);
    }
}

TEST_F(FaultyOpenFileTest, ACloseThatFailsHasClosed) {
    const auto file = opened();
    files.failCall(2, EIO);
    EXPECT_EQ(file->close(), SystemError(EIO));
    EXPECT_EQ(file->close(), SystemError(EBADF));
    EXPECT_EQ(file->write(bytesOf("x")), SystemError(EBADF));
}

TEST_F(FaultyOpenFileTest, AnActionComesBeforeItsCall) {
    const auto file = opened(forAppending);
    files.atCall(2, [&] { memory.addFile("/f", "other"); });
    EXPECT_TRUE(file->write(bytesOf("!")).isNone());
    EXPECT_EQ(content(), "other!");
}

TEST_F(FaultyOpenFileTest, AnExpectedWriteCountsAndNobodyHearsOfItsFailure) {
    const auto file = opened(forAppending);
    files.failCall(2, ENOSPC);
    file->expectWrite(0, 1);
    EXPECT_EQ(files.callCount(), 2U);
    EXPECT_TRUE(file->write(bytesOf("!")).isNone());
}

TEST_F(FaultyOpenFileTest, EndingWithTheObjectIsNoCall) {
    opened().reset();
    EXPECT_EQ(files.callCount(), 1U);
}

TEST_F(FaultyOpenFileTest, AShortWriteReallyWritesAPart) {
    const auto file = opened();
    files.shortWriteCall(2, 3);
    EXPECT_EQ(file->writeOnce(bytesOf("12345")).value(), 3U);
    EXPECT_EQ(content(), "123t");
    EXPECT_EQ(file->position().value(), 3U);
    EXPECT_EQ(file->writeOnce(bytesOf("45")).value(), 2U);
    EXPECT_EQ(content(), "12345");

    files.restartCount();
    files.shortWriteCall(1, 2, EDQUOT);
    EXPECT_EQ(file->write(bytesOf("678")), SystemError(EDQUOT));
    EXPECT_EQ(content(), "1234567");

    files.restartCount();
    EXPECT_EQ(files.writeFile("/f", bytesOf("abc"), 0600), SystemError(EDQUOT));
    EXPECT_EQ(content(), "ab");

    files.restartCount();
    files.shortWriteCall(1, 100, EDQUOT);
    EXPECT_EQ(files.writeFile("/f", bytesOf("all"), 0600), SystemError(EDQUOT));
    EXPECT_EQ(content(), "all");
}

TEST_F(FaultyOpenFileTest, OnlyAWriteIsShort) {
    const auto file = opened();
    files.shortWriteCall(2, 0);
    EXPECT_TRUE(file->setSize(2).isNone());
    EXPECT_TRUE(file->write(bytesOf("ab")).isNone());
    EXPECT_EQ(content(), "ab");
    files.shortWriteCall(0, 0);
    files.restartCount();
    EXPECT_TRUE(file->write(bytesOf("cd")).isNone());
}

TEST_F(FaultyOpenFileTest, WhatFailsIsNotWrittenInPartEither) {
    const auto file = opened();
    files.shortWriteCall(2, 3);
    files.failCall(2, EIO);
    EXPECT_EQ(file->write(bytesOf("12345")), SystemError(EIO));
    EXPECT_EQ(content(), "text");
}

// Ends, on a real disk in a child.

enum class Way : std::uint8_t { AtCall, WithinCall };

/// What stands in a file when the process that does these four calls has ended at one.
std::string contentAfterEnd(Way way, std::size_t call) {
    const TemporaryFolder folder;
    const std::string path = folder.path("f");
    FileSystem& real = internal::realFileSystem();
    const ProcessEnd end = runForked([&] {
        FaultyFileSystem files(real);
        if (way == Way::AtCall) {
            files.endProcessAtCall(call);
        } else {
            files.endProcessWithinCall(call);
        }
        const auto file = files.open(path, forWriting);
        return file.value()->write(bytesOf("1234")).number() +
               file.value()->writeOnce(bytesOf("56")).error().number() +
               files.writeFile(path, bytesOf("abcdef"), 0600).number();
    });
    EXPECT_EQ(end, (call == 0 || call > 4 ? ProcessEnd{0, 0} : ProcessEnd{0, SIGKILL})) << call;
    const auto content = real.readFile(path, 100);
    return content.ok() ? std::string(textOf(content.value())) : "none";
}

TEST(FaultyFileSystemEnds, AtACallItIsNotDone) {
    EXPECT_EQ(contentAfterEnd(Way::AtCall, 1), "none");
    EXPECT_EQ(contentAfterEnd(Way::AtCall, 2), "");
    EXPECT_EQ(contentAfterEnd(Way::AtCall, 3), "1234");
    EXPECT_EQ(contentAfterEnd(Way::AtCall, 4), "123456");
    EXPECT_EQ(contentAfterEnd(Way::AtCall, 5), "abcdef");
    EXPECT_EQ(contentAfterEnd(Way::AtCall, 0), "abcdef");
}

TEST(FaultyFileSystemEnds, WithinAWriteHalfOfItIsDone) {
    EXPECT_EQ(contentAfterEnd(Way::WithinCall, 1), "none");
    EXPECT_EQ(contentAfterEnd(Way::WithinCall, 2), "12");
    EXPECT_EQ(contentAfterEnd(Way::WithinCall, 3), "12345");
    EXPECT_EQ(contentAfterEnd(Way::WithinCall, 4), "abc");
    EXPECT_EQ(contentAfterEnd(Way::WithinCall, 5), "abcdef");
    EXPECT_EQ(contentAfterEnd(Way::WithinCall, 0), "abcdef");
}

} // namespace
} // namespace tav
