#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace tav {

/// A lock that the thread which holds it may take again, and for which nobody waits longer than he
/// wants to. Time is that of `Clock::current()`. Taking it when nobody holds it asks no clock.
class TimedRecursiveLock {
  public:
    TimedRecursiveLock() = default;
    TimedRecursiveLock(const TimedRecursiveLock&) = delete;
    TimedRecursiveLock& operator=(const TimedRecursiveLock&) = delete;

    /// Whether the lock could be taken within that time.
    [[nodiscard]] bool lock(std::chrono::nanoseconds timeout);
    /// Once for each time that this thread has taken it.
    void unlock();

  private:
    bool take(std::uint64_t thread);
    bool wait(std::uint64_t thread, std::chrono::nanoseconds timeout);

    std::atomic<std::uint64_t> owner_ = 0; ///< The number of the thread; 0 when free.
    std::size_t depth_ = 0;                ///< The owner's.
    std::atomic<std::size_t> waiters_ = 0;
    std::mutex mutex_; ///< Of the condition only.
    std::condition_variable released_;
};

} // namespace tav
