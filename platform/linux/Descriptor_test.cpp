#include "platform/linux/Descriptor.hpp"

#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tav {
namespace {

bool isOpenInKernel(int number) { return ::fcntl(number, F_GETFD) >= 0; }

struct Pipe {
    Descriptor reader;
    Descriptor writer;
    Pipe() {
        int numbers[2] = {-1, -1};
        EXPECT_EQ(::pipe2(numbers, O_CLOEXEC), 0);
        reader = Descriptor(numbers[0]);
        writer = Descriptor(numbers[1]);
    }
};

/// A kernel file in memory.
Descriptor fileWith(std::string_view content) {
    Descriptor file(::memfd_create("tav-test", MFD_CLOEXEC));
    EXPECT_TRUE(file.isOpen());
    EXPECT_TRUE(writeFully(file, bytesOf(content)).isNone());
    EXPECT_EQ(::lseek(file.number(), 0, SEEK_SET), 0);
    return file;
}

TEST(Descriptor, ClosesAtItsEnd) {
    int number = -1;
    {
        auto opened = Descriptor::open("/", O_RDONLY | O_DIRECTORY);
        ASSERT_TRUE(opened.ok());
        number = opened.value().number();
        EXPECT_TRUE(isOpenInKernel(number));
    }
    EXPECT_FALSE(isOpenInKernel(number));
}

TEST(Descriptor, IsClosedOnExec) {
    const auto opened = Descriptor::open("/", O_RDONLY | O_DIRECTORY);
    ASSERT_TRUE(opened.ok());
    EXPECT_EQ(::fcntl(opened.value().number(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(Descriptor, OpensRelativeToAFolder) {
    const auto folder = Descriptor::open("/proc/self", O_RDONLY | O_DIRECTORY);
    ASSERT_TRUE(folder.ok());
    EXPECT_TRUE(Descriptor::open(folder.value().number(), "stat", O_RDONLY, 0).ok());
    EXPECT_EQ(Descriptor::open(folder.value().number(), "no such", O_RDONLY, 0).error(),
              SystemError(ENOENT));
}

TEST(Descriptor, MovingHandsItOn) {
    Descriptor first = fileWith("");
    const int number = first.number();
    Descriptor second = std::move(first);
    EXPECT_FALSE(first.isOpen()); // NOLINT: this is what is tested
    EXPECT_EQ(second.number(), number);
    Descriptor third = fileWith("");
    const int replaced = third.number();
    third = std::move(second);
    EXPECT_FALSE(isOpenInKernel(replaced));
    EXPECT_TRUE(isOpenInKernel(number));
}

TEST(Descriptor, ReleaseLeavesItOpen) {
    int number = -1;
    {
        Descriptor file = fileWith("");
        number = file.release();
        EXPECT_FALSE(file.isOpen());
    }
    EXPECT_TRUE(isOpenInKernel(number));
    Descriptor again(number);
    EXPECT_TRUE(again.close().isNone());
    EXPECT_FALSE(isOpenInKernel(number));
    EXPECT_TRUE(again.close().isNone());
}

TEST(Descriptor, CloseAnswersAFailure) {
    Descriptor file = fileWith("");
    ASSERT_EQ(::close(file.number()), 0);
    EXPECT_EQ(file.close(), SystemError(EBADF));
}

TEST(RetryInterrupted, CallsUntilNoSignalInterrupts) {
    int calls = 0;
    EXPECT_EQ(retryInterrupted([&] {
                  errno = EINTR;
                  return ++calls < 4 ? -1 : 7;
              }),
              7);
    EXPECT_EQ(calls, 4);
    EXPECT_EQ(retryInterrupted([&] {
                  errno = EIO;
                  ++calls;
                  return -1;
              }),
              -1);
    EXPECT_EQ(calls, 5);
}

TEST(TransferFully, TakesUpShortAndInterruptedTransfers) {
    std::vector<std::pair<std::size_t, std::size_t>> asked;
    const auto moved = transferFully(10, [&](std::size_t done, std::size_t remaining) -> ::ssize_t {
        asked.emplace_back(done, remaining);
        if (asked.size() == 2) {
            errno = EINTR;
            return -1;
        }
        return 4 > remaining ? static_cast<::ssize_t>(remaining) : 4;
    });
    ASSERT_TRUE(moved.ok());
    EXPECT_EQ(moved.value(), 10U);
    const std::vector<std::pair<std::size_t, std::size_t>> expected{
        {0, 10}, {4, 6}, {4, 6}, {8, 2}};
    EXPECT_EQ(asked, expected);
}

TEST(TransferFully, EndsWhenNothingMoves) {
    const auto moved = transferFully(
        10, [](std::size_t done, std::size_t) -> ::ssize_t { return done == 0 ? 3 : 0; });
    ASSERT_TRUE(moved.ok());
    EXPECT_EQ(moved.value(), 3U);
}

TEST(TransferFully, AnswersTheFailure) {
    const auto moved = transferFully(10, [](std::size_t done, std::size_t) -> ::ssize_t {
        errno = ENOSPC;
        return done == 0 ? 3 : -1;
    });
    EXPECT_EQ(moved.error(), SystemError(ENOSPC));
}

TEST(TransferFully, AsksNothingForNothing) {
    const auto moved =
        transferFully(0, [](std::size_t, std::size_t) -> ::ssize_t { return ADD_FAILURE(), -1; });
    ASSERT_TRUE(moved.ok());
    EXPECT_EQ(moved.value(), 0U);
}

TEST(ReadSome, AnswersWhatIsThere) {
    Pipe pipe;
    ASSERT_TRUE(writeFully(pipe.writer, bytesOf("abc")).isNone());
    Data buffer(10);
    const auto got = readSome(pipe.reader, buffer);
    ASSERT_TRUE(got.ok());
    EXPECT_EQ(got.value(), 3U);
    pipe.writer.reset();
    EXPECT_EQ(readSome(pipe.reader, buffer).value(), 0U);
    EXPECT_EQ(readSome(Descriptor(), buffer).error(), SystemError(EBADF));
}

TEST(ReadFully, WaitsForTheWholeBufferThatAThreadWrites) {
    Pipe pipe;
    std::thread writer([&] {
        EXPECT_TRUE(writeFully(pipe.writer, bytesOf("abc")).isNone());
        EXPECT_TRUE(writeFully(pipe.writer, bytesOf("defg")).isNone());
    });
    Data buffer(7);
    EXPECT_EQ(readFully(pipe.reader, buffer).value(), 7U);
    EXPECT_EQ(textOf(buffer), "abcdefg");
    writer.join();
    pipe.writer.reset();
    EXPECT_EQ(readFully(pipe.reader, buffer).value(), 0U);
    EXPECT_EQ(readFully(Descriptor(), buffer).error(), SystemError(EBADF));
}

TEST(ReadToEnd, WhateverSizeWasExpected) {
    const std::string content(20'000, 'x');
    for (const std::uint64_t expected : {0ULL, 1ULL, 4095ULL, 19'999ULL, 20'000ULL, 50'000ULL}) {
        const auto read = readToEnd(fileWith(content), expected, 1'000'000);
        ASSERT_TRUE(read.ok()) << expected;
        EXPECT_EQ(textOf(read.value()), content) << expected;
    }
    const auto nothing = readToEnd(fileWith(""), 0, 0);
    ASSERT_TRUE(nothing.ok());
    EXPECT_TRUE(nothing.value().empty());
}

TEST(ReadToEnd, KeepsTheLimit) {
    const std::string content(20'000, 'x');
    EXPECT_TRUE(readToEnd(fileWith(content), 20'000, 20'000).ok());
    EXPECT_EQ(readToEnd(fileWith(content), 20'000, 19'999).error(), SystemError(EFBIG));
    EXPECT_EQ(readToEnd(fileWith(content), 0, 19'999).error(), SystemError(EFBIG));
    EXPECT_EQ(readToEnd(fileWith("x"), 0, 0).error(), SystemError(EFBIG));
}

TEST(ReadToEnd, AnswersWhatDoesNotFitIntoMemory) {
    const auto read = readToEnd(fileWith("x"), UINT64_MAX, UINT64_MAX);
    EXPECT_EQ(read.error(), SystemError(ENOMEM));
}

TEST(ReadToEnd, AnswersTheFailure) {
    const auto folder = Descriptor::open("/", O_RDONLY | O_DIRECTORY);
    ASSERT_TRUE(folder.ok());
    EXPECT_EQ(readToEnd(folder.value(), 0, 100).error(), SystemError(EISDIR));
}

TEST(WriteFully, TakesUpWhatThePipeThatAThreadReadsDidNotTake) {
    Pipe pipe;
    // Far more than a pipe holds: the kernel takes it in pieces.
    const std::string content(1 << 20, 'y');
    Data received;
    std::thread reader([&] {
        auto read = readToEnd(pipe.reader, 0, content.size());
        EXPECT_TRUE(read.ok());
        received = std::move(read).value();
    });
    EXPECT_TRUE(writeFully(pipe.writer, bytesOf(content)).isNone());
    pipe.writer.reset();
    reader.join();
    EXPECT_EQ(textOf(received), content);
}

TEST(WriteFully, AnswersTheFailure) {
    const auto full = Descriptor::open("/dev/full", O_WRONLY);
    ASSERT_TRUE(full.ok());
    EXPECT_EQ(writeFully(full.value(), bytesOf("x")), SystemError(ENOSPC));
    EXPECT_TRUE(writeFully(full.value(), {}).isNone());
}

} // namespace
} // namespace tav
