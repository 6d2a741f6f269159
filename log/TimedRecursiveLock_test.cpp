#include "log/TimedRecursiveLock.hpp"
#include "platform/memory/MemoryClock.hpp"

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using namespace std::chrono_literals;

TEST(TimedRecursiveLock, TheSameThreadTakesItAgain) {
    TimedRecursiveLock lock;
    ASSERT_TRUE(lock.lock(30s));
    ASSERT_TRUE(lock.lock(30s));
    lock.unlock();
    std::thread([&] { EXPECT_FALSE(lock.lock(0s)); }).join();
    lock.unlock();
    std::thread([&] {
        ASSERT_TRUE(lock.lock(0s));
        lock.unlock();
    }).join();
}

TEST(TimedRecursiveLock, TakenWhenFreeItAsksNoClock) {
    MemoryClock clock;
    const Clock::Replacement replacement(clock);
    TimedRecursiveLock lock;
    ASSERT_TRUE(lock.lock(-1s));
    lock.unlock();
}

TEST(TimedRecursiveLock, ThreadsWaitUntilTheirTimeIsOver) {
    MemoryClock clock;
    const Clock::Replacement replacement(clock);
    TimedRecursiveLock lock;
    ASSERT_TRUE(lock.lock(30s));
    std::atomic<bool> isBack = false;
    std::thread other([&] {
        EXPECT_FALSE(lock.lock(30s));
        isBack = true;
    });
    clock.awaitWaiters();
    clock.advance(30s - 1ns);
    clock.awaitWaiters();
    EXPECT_FALSE(isBack);
    clock.advance(1ns);
    other.join();
    EXPECT_TRUE(isBack);
    lock.unlock();
    // Who gave up is not counted any more and took nothing away.
    ASSERT_TRUE(lock.lock(30s));
    lock.unlock();
}

TEST(TimedRecursiveLock, ThreadsThatWaitGetItWhenItIsFree) {
    MemoryClock clock;
    const Clock::Replacement replacement(clock);
    TimedRecursiveLock lock;
    ASSERT_TRUE(lock.lock(30s));
    std::atomic<int> served = 0;
    std::vector<std::thread> others;
    for (int i = 0; i < 4; ++i) {
        others.emplace_back([&] {
            ASSERT_TRUE(lock.lock(30s));
            ++served;
            lock.unlock();
        });
    }
    clock.awaitWaiters(4);
    EXPECT_EQ(served, 0);
    lock.unlock();
    for (std::thread& other : others) {
        other.join();
    }
    EXPECT_EQ(served, 4);
}

TEST(TimedRecursiveLock, AThreadThatEndedWithItKeepsIt) {
    MemoryClock clock;
    const Clock::Replacement replacement(clock);
    TimedRecursiveLock lock;
    std::thread([&] { ASSERT_TRUE(lock.lock(30s)); }).join();
    // A later thread may well live at the addresses of the earlier one.
    std::thread([&] { EXPECT_FALSE(lock.lock(0s)); }).join();
}

TEST(TimedRecursiveLock, ThreadsExcludeOneAnother) {
    TimedRecursiveLock lock;
    long count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 5000; ++turn) {
                ASSERT_TRUE(lock.lock(30s));
                ASSERT_TRUE(lock.lock(30s));
                ++count;
                lock.unlock();
                lock.unlock();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 40000);
}

} // namespace
} // namespace tav
