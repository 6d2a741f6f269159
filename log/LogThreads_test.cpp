#include "log/LogFacility.hpp"
#include "platform/MainThreadQueue.hpp"
#include "platform/memory/MemoryPreferences.hpp"
#include "platform/memory/MemorySystemLog.hpp"
#include "testing/TemporaryFolder.hpp"

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

constexpr int writers = 16;

class LogThreads : public testing::Test {
  protected:
    ~LogThreads() override { LogDInit(); }

    /// Has all threads log so many messages each, "thread:number", while another one does
    /// something again and again.
    template <class Meanwhile>
    static void logFromAll(int count, const Meanwhile& meanwhile) {
        std::atomic<bool> isOver = false;
        std::thread other([&] {
            while (!isOver) {
                meanwhile();
            }
        });
        std::vector<std::thread> threads;
        for (int thread = 0; thread < writers; ++thread) {
            threads.emplace_back([=] {
                for (int i = 0; i < count; ++i) {
                    Log_("%d:%d", thread, i);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        isOver = true;
        other.join();
    }

    /// Checks that each thread's messages stand in their order without a gap, and answers how many
    /// of each there are.
    static std::array<int, writers> checkOrder(LogFile& log) {
        std::array<int, writers> counts = {};
        std::array<int, writers> last;
        last.fill(-1);
        for (std::size_t i = 0; i < log.getItemCount(); ++i) {
            const RecordPtr record = log.getItem(i);
            const std::string* message = record ? record->findString("message") : nullptr;
            if (message == nullptr) {
                ADD_FAILURE() << "unreadable";
                return counts;
            }
            const auto thread = static_cast<std::size_t>(std::stoi(*message));
            const int number = std::stoi(message->substr(message->find(':') + 1));
            EXPECT_TRUE(last.at(thread) == -1 || number == last.at(thread) + 1) << *message;
            last.at(thread) = number;
            ++counts.at(thread);
        }
        return counts;
    }

    TemporaryFolder folder;
    std::string path = folder.path("log");
    MemoryPreferences preferences;
    MemorySystemLog systemLog;
    MainThreadQueue mainThread;
    Preferences::Replacement preferencesReplacement{preferences};
    SystemLog::Replacement systemLogReplacement{systemLog};
    MainThread::Replacement mainThreadReplacement{mainThread};
};

TEST_F(LogThreads, NothingIsLostWhileOthersRead) {
    const auto delegate = std::make_shared<LogDelegate>();
    std::atomic<int> told = 0;
    delegate->logItemAddedNotification = [&](LogHandler&) { ++told; };
    LogInit(delegate, path);
    const auto handler = LogHandler::defaultHandler();
    logFromAll(300, [&] {
        if (const std::size_t count = handler->getItemCount(); count > 0) {
            EXPECT_TRUE(handler->getItem(count / 2));
            EXPECT_TRUE(handler->getItem(count - 1));
        }
        mainThread.runPending();
    });
    mainThread.runPending();
    EXPECT_EQ(told, writers * 300);
    LogFile log(path);
    for (const int count : checkOrder(log)) {
        EXPECT_EQ(count, 300);
    }
}

TEST_F(LogThreads, ClearingTakesTheOldestOnly) {
    LogInit({}, path);
    const auto handler = LogHandler::defaultHandler();
    int clears = 0;
    logFromAll(300, [&] {
        if (++clears < 20) {
            handler->clear();
            EXPECT_TRUE(handler->saveToFile(folder.path("copy")));
        }
    });
    LogFile log(path);
    EXPECT_EQ(log.getItemCount(), handler->getItemCount());
    checkOrder(log);
    LogFile copy(folder.path("copy"));
    checkOrder(copy);
}

TEST_F(LogThreads, AFullLogIsTrimmedOnce) {
    {
        LogFile log(path);
        for (int i = 0; i < 24'000; ++i) {
            log.addFields({.type = 0, .message = "0:0"});
        }
        log.trimLines(24'000);
    }
    LogInit({}, path);
    logFromAll(100, [] { std::this_thread::yield(); });
    EXPECT_EQ(LogHandler::defaultHandler()->getItemCount(), 2500U + 600U);
    EXPECT_EQ(LogFile(path).getItemCount(), 2500U + 600U);
}

TEST_F(LogThreads, TheHandlerMayGoAndComeMeanwhile) {
    LogInit({}, path);
    logFromAll(100, [&] {
        LogDInit();
        std::this_thread::yield();
        LogInit({}, path);
    });
    EXPECT_TRUE(LogHandler::defaultHandler());
    LogDInit();
    LogFile log(path);
    EXPECT_EQ(log.getItemCount() + systemLog.lines().size(), std::size_t(writers * 100));
}

TEST_F(LogThreads, SwitchesAndDelegatesMayChangeMeanwhile) {
    LogInit({}, path);
    const auto handler = LogHandler::defaultHandler();
    bool flag = false;
    logFromAll(100, [&] {
        flag = !flag;
        LogEnable(5, flag);
        LogEnablePackets(flag);
        LogEnableDates(flag);
        const auto delegate = std::make_shared<LogDelegate>();
        delegate->logItemAddedNotification = [](LogHandler&) {};
        handler->setDelegate(delegate);
        handler->setWarningAndErrorFlag(flag);
        mainThread.runPending();
    });
    LogEnableDates(true);
    LogFile log(path);
    EXPECT_EQ(log.getItemCount(), std::size_t(writers * 100));
}

} // namespace
} // namespace tav
