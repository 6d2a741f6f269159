#include "platform/linux/LinuxClock.hpp"

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace tav {
namespace {

using namespace std::chrono_literals;

TEST(LinuxClock, IsWhatCurrentBeginsWith) {
    EXPECT_EQ(&Clock::current(), &internal::realClock());
    EXPECT_NE(dynamic_cast<LinuxClock*>(&Clock::current()), nullptr);
}

TEST(LinuxClock, NowIsTheCalendarsClock) {
    LinuxClock clock;
    const auto before = std::chrono::system_clock::now() - 1us; // what a double rounds off
    const auto now = clock.now().timePoint();
    const auto after = std::chrono::system_clock::now() + 1us;
    EXPECT_GE(now, before);
    EXPECT_LE(now, after);
}

LocalTime fromHost(::time_t second) {
    struct ::tm parts {};
    ::localtime_r(&second, &parts);
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
            parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}

/// Whether the clock's local time is the host's, now.
bool agreesWithHost(LinuxClock& clock) {
    for (;;) {
        const ::time_t before = ::time(nullptr);
        const LocalTime answer = clock.localTime();
        // `time` may lag behind the clock by some milliseconds.
        if (answer == fromHost(before) || answer == fromHost(before + 1)) {
            return true;
        }
        if (::time(nullptr) == before) {
            return false;
        }
    }
}

TEST(LinuxClock, LocalTimeIsTheHosts) {
    LinuxClock clock;
    EXPECT_TRUE(agreesWithHost(clock));
    EXPECT_TRUE(agreesWithHost(clock)); // what is kept of the second
}

TEST(LinuxClock, LocalTimeGoesOnWithTheSeconds) {
    LinuxClock clock;
    const LocalTime first = clock.localTime();
    const auto end = std::chrono::steady_clock::now() + 3s;
    while (clock.localTime() == first && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_NE(clock.localTime(), first);
    EXPECT_TRUE(agreesWithHost(clock));
}

TEST(LinuxClock, AnotherZoneHoldsAfterTzsetFromTheNextSecondOn) {
    // In a process of its own: the zone belongs to all of it.
    const ::pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        LinuxClock clock;
        static_cast<void>(clock.localTime()); // in the zone that was
        ::setenv("TZ", "FAR-05:30", 1);
        ::tzset();
        std::this_thread::sleep_for(1020ms);
        const LocalTime local = clock.localTime();
        const ::time_t now = ::time(nullptr);
        const int later = (local.hour * 60 + local.minute) - static_cast<int>(now / 60 % (24 * 60));
        const bool isFar = later == 330 || later == 330 - 24 * 60 || later == 329;
        ::_exit(isFar && agreesWithHost(clock) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(LinuxClock, ThreadsMayAskForTheLocalTimeAtTheSameTime) {
    LinuxClock clock;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 2000; ++round) {
                wrong += agreesWithHost(clock) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST(LinuxClock, TicksOnlyGrow) {
    LinuxClock clock;
    auto last = clock.ticks();
    for (int round = 0; round < 1000; ++round) {
        const auto next = clock.ticks();
        ASSERT_GE(next, last);
        last = next;
    }
    const auto before = clock.ticks();
    std::this_thread::sleep_for(5ms);
    EXPECT_GE(clock.ticks() - before, 5ms);
}

TEST(LinuxClock, WaitUntilEndsAtTheDeadlineAndHoldsTheLock) {
    LinuxClock clock;
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock lock(mutex);
    const auto deadline = clock.ticks() + 20ms;
    while (!clock.waitUntil(condition, lock, deadline)) {
        EXPECT_TRUE(lock.owns_lock());
    }
    EXPECT_TRUE(lock.owns_lock());
    EXPECT_GE(clock.ticks(), deadline);
}

TEST(LinuxClock, ADeadlineInThePastIsOverAtOnce) {
    LinuxClock clock;
    std::mutex mutex;
    std::condition_variable condition;
    std::unique_lock lock(mutex);
    EXPECT_TRUE(clock.waitUntil(condition, lock, clock.ticks()));
    EXPECT_TRUE(clock.waitUntil(condition, lock, 0ns));
    EXPECT_TRUE(clock.waitUntil(condition, lock, -1ns));
    EXPECT_TRUE(clock.waitUntil(condition, lock, std::chrono::nanoseconds::min()));
}

TEST(LinuxClock, WaitUntilEndsWhenAThreadNotifiesTheCondition) {
    LinuxClock clock;
    std::mutex mutex;
    std::condition_variable condition;
    bool isReady = false;
    std::thread notifier([&] {
        const std::lock_guard lock(mutex);
        isReady = true;
        condition.notify_one();
    });
    {
        std::unique_lock lock(mutex);
        while (!isReady) {
            EXPECT_FALSE(clock.waitUntil(condition, lock, std::chrono::nanoseconds::max()));
        }
    }
    notifier.join();
}

} // namespace
} // namespace tav
