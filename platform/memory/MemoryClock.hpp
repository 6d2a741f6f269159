#pragma once

#include "platform/Clock.hpp"

#include <cstddef>
#include <vector>

namespace tav {

/// Clocks that stand still until a test moves them. Any thread.
class MemoryClock final : public Clock {
  public:
    /// Begins at the reference date, with ticks of 0, in a zone `secondsEast` of UTC.
    explicit MemoryClock(Date now = Date(), std::chrono::seconds secondsEast = {})
        : now_(now), secondsEast_(secondsEast) {}

    /// Sets the calendar's clock alone, as a person does.
    void setNow(Date now);
    void setSecondsEast(std::chrono::seconds secondsEast);

    /// Lets time pass on both clocks, not backwards. Returns when everyone whose deadline has come
    /// by it has been woken and holds his lock: the caller must not hold it.
    void advance(std::chrono::nanoseconds time);
    /// Returns when so many callers wait for a deadline.
    void awaitWaiters(std::size_t count = 1);

    Date now() override;
    LocalTime localTime() override; ///< Without leap seconds; 1677 to 2262.
    std::chrono::nanoseconds ticks() override;
    /// Returns for `advance` and for notifications of the condition; real time does not count.
    bool waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                   std::chrono::nanoseconds deadline) override;

  private:
    struct Waiter {
        std::condition_variable* condition;
        std::chrono::nanoseconds deadline;
    };

    bool wakeDue();

    std::mutex mutex_; ///< Taken while a waiter's own lock is held, never the other way round.
    std::condition_variable waiting_;
    Date now_;
    std::chrono::seconds secondsEast_;
    std::chrono::nanoseconds ticks_{0};
    std::vector<const Waiter*> waiters_;
};

} // namespace tav
