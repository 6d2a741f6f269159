#pragma once

#include "base/Date.hpp"
#include "platform/Seam.hpp"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tav {

class Clock;

namespace internal {
/// The host's clocks (platform/linux).
Clock& realClock();
} // namespace internal

/// A moment in the local time zone, as people write it.
struct LocalTime {
    int year = 1970;
    int month = 1; ///< 1 to 12
    int day = 1;   ///< 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0; ///< 60 in a leap second.
    friend bool operator==(const LocalTime&, const LocalTime&) = default;
};

/// The seam to time: the calendar's clock, the local time and the clock that never jumps. Any
/// thread.
class Clock : public Seam<Clock, internal::realClock> {
  public:
    virtual ~Clock() = default;

    /// The calendar's clock; it may be set forward and back.
    virtual Date now() = 0;
    /// The same in the local time zone, which is the one that the environment named when the
    /// process first asked. After a change the program calls `tzset`; the new zone holds from the
    /// next second on.
    virtual LocalTime localTime() = 0;

    /// Time since some moment in the past; only ever grows.
    virtual std::chrono::nanoseconds ticks() = 0;
    /// Waits on the condition until it is notified or `deadline` (of `ticks`) has come. Whether the
    /// deadline has come. May return early, as conditions do. The lock is held, of the mutex that
    /// all waiters of this condition use, and is held again at the return.
    virtual bool waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                           std::chrono::nanoseconds deadline) = 0;
};

} // namespace tav
