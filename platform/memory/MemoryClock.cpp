#include "platform/memory/MemoryClock.hpp"

#include <algorithm>
#include <thread>

namespace tav {

void MemoryClock::setNow(Date now) {
    const std::lock_guard lock(mutex_);
    now_ = now;
}

void MemoryClock::setSecondsEast(std::chrono::seconds secondsEast) {
    const std::lock_guard lock(mutex_);
    secondsEast_ = secondsEast;
}

void MemoryClock::advance(std::chrono::nanoseconds time) {
    {
        const std::lock_guard lock(mutex_);
        ticks_ += time;
        now_ = Date(now_.secondsSinceReferenceDate() + std::chrono::duration<double>(time).count());
    }
    // A waiter may have said that it waits and not have begun to: it would miss one notification.
    while (wakeDue()) {
        std::this_thread::yield();
    }
}

/// Whether there was anyone to wake.
bool MemoryClock::wakeDue() {
    const std::lock_guard lock(mutex_);
    bool found = false;
    for (const Waiter* waiter : waiters_) {
        if (waiter->deadline <= ticks_) {
            found = true;
            waiter->condition->notify_all();
        }
    }
    return found;
}

void MemoryClock::awaitWaiters(std::size_t count) {
    std::unique_lock lock(mutex_);
    waiting_.wait(lock, [&] { return waiters_.size() >= count; });
}

Date MemoryClock::now() {
    const std::lock_guard lock(mutex_);
    return now_;
}

LocalTime MemoryClock::localTime() {
    const std::lock_guard lock(mutex_);
    const auto second = std::chrono::floor<std::chrono::seconds>(now_.timePoint()) + secondsEast_;
    const auto day = std::chrono::floor<std::chrono::days>(second);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(second - day);
    return {int(date.year()),
            static_cast<int>(unsigned(date.month())),
            static_cast<int>(unsigned(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
}

std::chrono::nanoseconds MemoryClock::ticks() {
    const std::lock_guard lock(mutex_);
    return ticks_;
}

bool MemoryClock::waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                            std::chrono::nanoseconds deadline) {
    const Waiter waiter{&condition, deadline};
    {
        const std::lock_guard guard(mutex_);
        if (ticks_ >= deadline) {
            return true;
        }
        waiters_.push_back(&waiter);
        waiting_.notify_all();
    }
    condition.wait(lock);
    const std::lock_guard guard(mutex_);
    std::erase(waiters_, &waiter);
    return ticks_ >= deadline;
}

} // namespace tav
