#include "log/LogFacility.hpp"
#include "log/LogHandler.hpp"
#include "platform/MainThread.hpp"
#include "platform/MainThreadQueue.hpp"
#include "platform/memory/MemoryClock.hpp"
#include "platform/memory/MemoryFileSystem.hpp"
#include "platform/memory/MemoryProcessTable.hpp"
#include "platform/memory/MemoryUserFolders.hpp"

#include <latch>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using namespace std::chrono_literals;

RecordPtr record(int number) {
    return std::make_shared<const Record>(Record{{"type", 0}, {"message", std::to_string(number)}});
}

class LogHandlerTest : public testing::Test {
  protected:
    std::shared_ptr<LogHandler> handler(std::string_view path = "/logs/log") {
        return LogHandler::withDelegateAndPath(delegate, path);
    }

    MemoryFileSystem files;
    MemoryUserFolders folders;
    MemoryClock clock;
    MainThreadQueue mainThread;
    FileSystem::Replacement filesReplacement{files};
    UserFolders::Replacement foldersReplacement{folders};
    Clock::Replacement clockReplacement{clock};
    MainThread::Replacement mainThreadReplacement{mainThread};
    std::shared_ptr<LogDelegate> delegate = std::make_shared<LogDelegate>();
};

TEST_F(LogHandlerTest, ItAddsReadsAndCounts) {
    const auto log = handler();
    log->logWithDataFromDictionary(record(1));
    log->logWithFields({.type = 4, .message = "second"});
    EXPECT_EQ(log->getItemCount(), 2U);
    EXPECT_EQ(*log->getItem(0)->findString("message"), "1");
    EXPECT_EQ(*log->getItem(1)->findString("message"), "second");
    EXPECT_EQ(log->getItem(2), nullptr);
    EXPECT_TRUE(log->saveToFile("/copy"));
    EXPECT_EQ(files.readFile("/copy", 1000).value(), files.readFile("/logs/log", 1000).value());
    EXPECT_FALSE(log->saveToFile("/missing/copy"));
}

TEST_F(LogHandlerTest, TheFlagStaysUntilItIsTakenAway) {
    const auto log = handler();
    EXPECT_FALSE(log->getWarningAndErrorFlag());
    log->setWarningAndErrorFlag(true);
    log->clear();
    EXPECT_TRUE(log->getWarningAndErrorFlag());
    log->setWarningAndErrorFlag(false);
    EXPECT_FALSE(log->getWarningAndErrorFlag());
}

TEST_F(LogHandlerTest, AFullLogIsTrimmedBeforeTheNextRecord) {
    std::vector<std::string> told;
    delegate->logItemAddedNotification = [&](LogHandler&) { told.emplace_back("added"); };
    delegate->logTrimmedNotification = [&](LogHandler&) { told.emplace_back("trimmed"); };
    const auto log = handler("");
    for (int i = 0; i < 25000; ++i) {
        log->logWithDataFromDictionary(record(i));
    }
    EXPECT_EQ(log->getItemCount(), 25000U);
    mainThread.runPending();
    EXPECT_EQ(told, std::vector<std::string>(25000, "added"));
    told.clear();
    log->logWithDataFromDictionary(record(25000));
    EXPECT_EQ(log->getItemCount(), 2501U);
    EXPECT_EQ(*log->getItem(0)->findString("message"), "22500");
    EXPECT_EQ(*log->getItem(2500)->findString("message"), "25000");
    mainThread.runPending();
    EXPECT_EQ(told, (std::vector<std::string>{"trimmed", "added"}));
}

TEST_F(LogHandlerTest, NotificationsAreQueuedAndMayReadTheLog) {
    std::vector<std::size_t> counts;
    delegate->logItemAddedNotification = [&](LogHandler& log) {
        counts.push_back(log.getItemCount());
    };
    delegate->logTrimmedNotification = [&](LogHandler& log) {
        counts.push_back(100 + log.getItemCount());
    };
    const auto log = handler();
    log->logWithDataFromDictionary(record(1));
    log->logWithDataFromDictionary(record(2));
    log->clear();
    EXPECT_TRUE(counts.empty());
    // They tell what is there by then.
    mainThread.runPending();
    EXPECT_EQ(counts, (std::vector<std::size_t>{0, 0, 100}));
}

/// Counts what is posted, and keeps it.
class CountingMainThread final : public MainThread {
  public:
    void post(std::function<void()> work) override { posted.push_back(std::move(work)); }
    void runAndWait(const std::function<void()>& work) override { work(); }
    void runPending() override {}
    void installLoop(std::function<void()> /*wake*/) override {}
    std::vector<std::function<void()>> posted;
};

TEST_F(LogHandlerTest, NothingIsQueuedForWhoDoesNotRespond) {
    CountingMainThread counting;
    const MainThread::Replacement replacement(counting);
    const auto log = handler();
    log->logWithDataFromDictionary(record(1));
    log->clear();
    EXPECT_TRUE(counting.posted.empty());
    delegate->logTrimmedNotification = [](LogHandler&) {};
    log->logWithDataFromDictionary(record(1));
    EXPECT_TRUE(counting.posted.empty());
    log->clear();
    EXPECT_EQ(counting.posted.size(), 1U);
    delegate.reset();
    log->clear();
    EXPECT_EQ(counting.posted.size(), 1U);
}

TEST_F(LogHandlerTest, ADelegateThatIsGoneIsNil) {
    int told = 0;
    delegate->logItemAddedNotification = [&](LogHandler&) { ++told; };
    const auto log = handler();
    EXPECT_EQ(log->delegate(), delegate);
    log->logWithDataFromDictionary(record(1));
    delegate.reset();
    EXPECT_EQ(log->delegate(), nullptr);
    mainThread.runPending();
    log->logWithDataFromDictionary(record(2));
    mainThread.runPending();
    EXPECT_EQ(told, 0);

    const auto other = std::make_shared<LogDelegate>();
    other->logItemAddedNotification = [&](LogHandler&) { told += 10; };
    log->setDelegate(other);
    log->logWithDataFromDictionary(record(3));
    mainThread.runPending();
    EXPECT_EQ(told, 10);
    log->setDelegate({});
    EXPECT_EQ(log->delegate(), nullptr);
}

TEST_F(LogHandlerTest, NotificationsOfAHandlerThatIsGoneAreDropped) {
    int told = 0;
    delegate->logItemAddedNotification = [&](LogHandler&) { ++told; };
    handler()->logWithDataFromDictionary(record(1));
    mainThread.runPending();
    EXPECT_EQ(told, 0);
}

TEST_F(LogHandlerTest, AThreadThatDoesNotGetTheLockInTimeDoesNothing) {
    std::vector<std::string> told;
    delegate->logTrimmedNotification = [&](LogHandler&) { told.emplace_back("trimmed"); };
    const auto log = handler();
    log->logWithDataFromDictionary(record(1));
    std::latch isHeld(1);
    std::latch mayGo(1);
    std::thread holder([&] {
        ASSERT_TRUE(log->lockWithTimeout());
        ASSERT_TRUE(log->lockWithTimeout()); // again, on the same thread
        log->unlock();
        isHeld.count_down();
        mayGo.wait();
        log->unlock();
    });
    isHeld.wait();
    const auto afterHalfAMinute = [&](const auto& call) {
        std::thread waiting(call);
        clock.awaitWaiters();
        clock.advance(30s);
        waiting.join();
    };
    afterHalfAMinute([&] { EXPECT_FALSE(log->lockWithTimeout()); });
    afterHalfAMinute([&] { log->logWithDataFromDictionary(record(2)); });
    afterHalfAMinute([&] { EXPECT_EQ(log->getItem(0), nullptr); });
    afterHalfAMinute([&] { EXPECT_EQ(log->getItemCount(), 0U); });
    afterHalfAMinute([&] { EXPECT_FALSE(log->saveToFile("/copy")); });
    afterHalfAMinute([&] { log->clear(); });
    mayGo.count_down();
    holder.join();
    EXPECT_EQ(log->getItemCount(), 1U);
    EXPECT_FALSE(files.attributes("/copy").ok());
    mainThread.runPending();
    EXPECT_TRUE(told.empty());
}

TEST_F(LogHandlerTest, AThreadWaitsForTheLockForHalfAMinute) {
    const auto log = handler();
    ASSERT_TRUE(log->lockWithTimeout());
    std::thread other([&] { log->logWithDataFromDictionary(record(1)); });
    clock.awaitWaiters();
    clock.advance(30s - 1ns);
    clock.awaitWaiters();
    log->unlock();
    other.join();
    EXPECT_EQ(log->getItemCount(), 1U);
}

TEST_F(LogHandlerTest, AnExceptionGivesTheLockToOtherThreads) {
    class Broken final : public MainThread {
        void post(std::function<void()> /*work*/) override { throw std::bad_alloc(); }
        void runAndWait(const std::function<void()>& work) override { work(); }
        void runPending() override {}
        void installLoop(std::function<void()> /*wake*/) override {}
    };
    Broken broken;
    const MainThread::Replacement replacement(broken);
    delegate->logItemAddedNotification = [](LogHandler&) {};
    const auto log = handler();
    EXPECT_THROW(log->logWithDataFromDictionary(record(1)), std::bad_alloc);
    std::thread([&] { EXPECT_EQ(log->getItemCount(), 1U); }).join();
}

TEST_F(LogHandlerTest, AHandlerThatGoesEndsTheRoleOfTheProcessesOwn) {
    LogInit({}, "/logs/own");
    ASSERT_TRUE(LogHandler::defaultHandler());
    handler("/logs/other").reset();
    EXPECT_FALSE(LogHandler::defaultHandler());
}

TEST_F(LogHandlerTest, OneThatWasTakenOutEndsNobodysRole) {
    LogInit({}, "/logs/own");
    auto first = LogHandler::defaultHandler();
    LogDInit();
    LogInit({}, "/logs/second");
    first.reset();
    EXPECT_TRUE(LogHandler::defaultHandler());
    LogDInit();
}

TEST_F(LogHandlerTest, WhileAThreadHasTheLockNothingIsReleased) {
    LogInit({}, "/logs/own");
    auto log = handler("/logs/other");
    // A thread that ends with the lock never gives it back.
    std::thread([&] { ASSERT_TRUE(log->lockWithTimeout()); }).join();
    std::thread last([&] { log.reset(); });
    clock.awaitWaiters();
    clock.advance(30s);
    last.join();
    EXPECT_TRUE(LogHandler::defaultHandler());
    LogDInit();
}

TEST_F(LogHandlerTest, TheDefaultFileIsNamedForTheMainBundle) {
    MemoryProcessTable processes;
    const ProcessTable::Replacement replacement(processes);
    processes.ownProcess = 1;
    processes.add(1, "/Applications/Sync.app/Contents/MacOS/Sync");
    EXPECT_EQ(LogHandler::defaultPath(), "") << "no such folder";
    files.addFile("/Applications/Sync.app/Contents/MacOS/Sync", "");
    EXPECT_EQ(LogHandler::defaultPath(), "/home/user/Library/Logs/Sync Log");
    static_cast<void>(LogHandler::withDelegateAndPath({}, nullptr));
    EXPECT_TRUE(files.attributes("/home/user/Library/Logs/Sync Log").ok());
    folders.homeFolder.clear();
    EXPECT_EQ(LogHandler::defaultPath(), "");
    EXPECT_EQ(LogHandler::withDelegateAndPath({}, nullptr)->getItemCount(), 0U);
}

} // namespace
} // namespace tav
