// Small files that a thread reads ahead, and what it makes of failures.

#include "fileinfo/local/FilesAhead.hpp"
#include "platform/memory/FaultyFileSystem.hpp"
#include "platform/memory/MemoryClock.hpp"
#include "testing/TemporaryFolder.hpp"

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace tav::internal {
namespace {

/// Six files, of which the first is the one that the taker has come to. Between `start` and the
/// end of the thread nobody else uses the file system.
class FilesAheadThread : public testing::Test {
  protected:
    FilesAheadThread() {
        for (int number = 0; number < count; ++number) {
            EXPECT_TRUE(
                realFileSystem().writeFile(pathOf(number), bytesOf(textOf(number)), 0644).isNone());
            EXPECT_TRUE(realFileSystem()
                            .setExtendedAttribute(pathOf(number), "user.tav.creation-date",
                                                  bytesOf(std::to_string(number)))
                            .isNone());
        }
    }

    [[nodiscard]] std::string pathOf(int number) const {
        return folder.path(std::to_string(number));
    }
    static std::string textOf(int number) { return "text of " + std::to_string(number); }
    /// Lets the thread read and waits until it is done with so many.
    static void goOn(FilesAhead& ahead, std::size_t done) {
        ahead.go();
        for (int wait = 0; wait < 10'000 && ahead.done() < done; ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_EQ(ahead.done(), done);
    }
    std::unique_ptr<FilesAhead> started() {
        auto ahead = FilesAhead::start();
        EXPECT_NE(ahead, nullptr);
        ahead->comeTo(0);
        EXPECT_EQ(ahead->room(), FilesAhead::mostAhead);
        for (int number = 0; number < count; ++number) {
            ahead->add(pathOf(number));
        }
        EXPECT_EQ(ahead->room(), FilesAhead::mostAhead - count);
        goOn(*ahead, count);
        return ahead;
    }

    static constexpr int count = 6;
    TemporaryFolder folder;
    FaultyFileSystem faulty{realFileSystem()};
    FileSystem::Replacement replacement{faulty};
    MemoryClock clock{later(60)};
    Clock::Replacement replacedClock{clock};

    /// So many seconds from now, for the clock.
    static Date later(double seconds) {
        return Date(realClock().now().secondsSinceReferenceDate() + seconds);
    }
};

TEST_F(FilesAheadThread, ReadsAllButTheOneThatWasComeTo) {
    const auto ahead = started();
    EXPECT_EQ(ahead->current(), nullptr);
    for (int number = 1; number < count; ++number) {
        ahead->comeTo(std::size_t(number));
        const ReadFile* const file = ahead->current();
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(tav::textOf(file->content), textOf(number));
        EXPECT_EQ(tav::textOf(file->creationDate.value()), std::to_string(number));
        EXPECT_EQ(file->attributes.identity,
                  realFileSystem().attributes(pathOf(number)).value().identity);
    }
    ahead->comeTo(count);
    EXPECT_EQ(ahead->current(), nullptr);
    EXPECT_EQ(ahead->room(), FilesAhead::mostAhead);
}

TEST_F(FilesAheadThread, AFailureIsThatOfOneFile) {
    constexpr std::size_t callsOfOne = 4;
    for (std::size_t call = 1; call <= callsOfOne * (count - 1); ++call) {
        faulty.restartCount();
        faulty.failCall(call, EIO);
        const auto ahead = started();
        for (std::size_t number = 1; number < count; ++number) {
            ahead->comeTo(number);
            const ReadFile* const file = ahead->current();
            const bool fails = (call - 1) / callsOfOne + 1 == number;
            const bool isDate = call % callsOfOne == 0; // it has none then
            EXPECT_EQ(file == nullptr, fails && !isDate) << number << " at call " << call;
            if (file != nullptr) {
                EXPECT_EQ(file->creationDate.has_value(), !fails) << call;
            }
        }
    }
}

TEST_F(FilesAheadThread, AFileThatIsCutMeanwhileIsNotRead) {
    constexpr std::size_t callThatReads = 3;
    faulty.atCall(callThatReads, [this] {
        EXPECT_TRUE(realFileSystem().writeFile(pathOf(1), bytesOf("t"), 0644).isNone());
    });
    const auto ahead = started();
    ahead->comeTo(1);
    EXPECT_EQ(ahead->current(), nullptr);
    ahead->comeTo(2);
    EXPECT_NE(ahead->current(), nullptr);
}

TEST_F(FilesAheadThread, WhatHasJustChangedIsNotRead) {
    const double changed =
        realFileSystem().attributes(pathOf(1)).value().changeDate.secondsSinceReferenceDate();
    for (const double since : {-5.0, 0.0, 2.9, 3.1}) {
        clock.setNow(Date(changed + since));
        const auto ahead = started();
        ahead->comeTo(1);
        EXPECT_EQ(ahead->current() != nullptr, since > 3) << since;
    }
}

TEST_F(FilesAheadThread, NothingIsReadWithoutAPath) {
    const auto ahead = FilesAhead::start();
    ahead->add(pathOf(0));
    ahead->add("");
    ahead->add(folder.path("none"));
    ahead->add(folder.path());
    goOn(*ahead, 4);
    for (std::size_t number = 0; number < 4; ++number) {
        ahead->comeTo(number);
        EXPECT_EQ(ahead->current(), nullptr);
    }
}

} // namespace
} // namespace tav::internal
