#include "platform/memory/MemoryClock.hpp"

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tav {
namespace {

using namespace std::chrono_literals;

TEST(MemoryClock, StandsStillUntilItIsMoved) {
    MemoryClock clock(Date(1000));
    EXPECT_EQ(clock.now(), Date(1000));
    EXPECT_EQ(clock.ticks(), 0ns);
    clock.advance(1500ms);
    EXPECT_EQ(clock.now(), Date(1001.5));
    EXPECT_EQ(clock.ticks(), 1500ms);
}

TEST(MemoryClock, SettingTheCalendarLeavesTheTicks) {
    MemoryClock clock;
    clock.advance(1s);
    clock.setNow(Date(-5));
    EXPECT_EQ(clock.now(), Date(-5));
    EXPECT_EQ(clock.ticks(), 1s);
}

TEST(MemoryClock, LocalTimeIsThatOfItsZone) {
    MemoryClock clock(*Date::fromISO8601("2009-12-31T23:59:59Z"));
    EXPECT_EQ(clock.localTime(), (LocalTime{2009, 12, 31, 23, 59, 59}));
    clock.setSecondsEast(2h);
    EXPECT_EQ(clock.localTime(), (LocalTime{2010, 1, 1, 1, 59, 59}));
    clock.setSecondsEast(-5h - 30min);
    EXPECT_EQ(clock.localTime(), (LocalTime{2009, 12, 31, 18, 29, 59}));
    clock.setNow(*Date::fromISO8601("1969-12-31T23:59:58Z"));
    clock.setSecondsEast(0s);
    clock.advance(500ms);
    EXPECT_EQ(clock.localTime(), (LocalTime{1969, 12, 31, 23, 59, 58}));
}

TEST(MemoryClock, ADeadlineThatHasComeDoesNotWait) {
    MemoryClock clock;
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock lock(mutex);
    EXPECT_TRUE(clock.waitUntil(condition, lock, 0ns));
    clock.advance(1s);
    EXPECT_TRUE(clock.waitUntil(condition, lock, 1s));
    EXPECT_TRUE(lock.owns_lock());
}

/// Waits for a deadline on a thread of its own.
class Waiter {
  public:
    Waiter(MemoryClock& clock, std::chrono::nanoseconds deadline)
        : thread_([this, &clock, deadline] {
              std::unique_lock lock(mutex_);
              while (!clock.waitUntil(condition_, lock, deadline)) {
                  ++earlyReturns_;
              }
              isOver_ = true;
          }) {}
    ~Waiter() { thread_.join(); }
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

    bool isOver() {
        const std::lock_guard lock(mutex_);
        return isOver_;
    }
    [[nodiscard]] std::unique_lock<std::mutex> hold() { return std::unique_lock(mutex_); }
    void notify() {
        const std::lock_guard lock(mutex_);
        condition_.notify_all();
    }
    [[nodiscard]] int earlyReturns() const { return earlyReturns_; }

  private:
    std::mutex mutex_;
    std::condition_variable condition_;
    bool isOver_ = false;
    std::atomic<int> earlyReturns_ = 0;
    std::thread thread_;
};

TEST(MemoryClock, AdvancingWakesThoseWhoseDeadlineHasCome) {
    MemoryClock clock;
    Waiter first(clock, 1s);
    Waiter second(clock, 2s);
    clock.awaitWaiters(2);
    clock.advance(999ms);
    EXPECT_FALSE(first.isOver());
    clock.advance(1ms);
    EXPECT_TRUE(first.isOver());
    EXPECT_FALSE(second.isOver());
    clock.advance(1h);
    EXPECT_TRUE(second.isOver());
}

TEST(MemoryClock, ANotificationEndsTheWaitEarly) {
    MemoryClock clock;
    Waiter waiter(clock, 1s);
    clock.awaitWaiters();
    while (waiter.earlyReturns() == 0) {
        waiter.notify();
    }
    EXPECT_FALSE(waiter.isOver());
    clock.awaitWaiters();
    clock.advance(1s);
    EXPECT_TRUE(waiter.isOver());
}

TEST(MemoryClock, AdvancingReturnsWhenTheThreadThatWasWokenHoldsItsLock) {
    MemoryClock clock;
    Waiter waiter(clock, 1s);
    clock.awaitWaiters();
    std::atomic<bool> hasReturned = false;
    std::thread advancer;
    {
        const std::unique_lock held = waiter.hold();
        advancer = std::thread([&] {
            clock.advance(1s);
            hasReturned = true;
        });
        std::this_thread::sleep_for(20ms);
        EXPECT_FALSE(hasReturned);
    }
    advancer.join();
    EXPECT_TRUE(waiter.isOver());
}

TEST(MemoryClock, NoWaiterIsMissedHoweverTheThreadsRun) {
    for (int round = 0; round < 200; ++round) {
        MemoryClock clock;
        Waiter first(clock, 1s);
        Waiter second(clock, 1s);
        clock.advance(1s); // before, while or after they begin to wait
    }
}

} // namespace
} // namespace tav
