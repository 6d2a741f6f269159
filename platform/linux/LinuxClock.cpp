#include "platform/linux/LinuxClock.hpp"

#include "platform/NeverDestroyed.hpp"

#include <algorithm>

#include <time.h>

namespace tav {

namespace {

::timespec calendarTime() {
    ::timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return time;
}

LocalTime brokenDown(::time_t second) {
    struct ::tm parts {};
    if (::localtime_r(&second, &parts) == nullptr) {
        return {}; // a year that no int holds
    }
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
            parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}

/// The last second that a thread asked for. Breaking a second down takes a lock of the whole
/// process, and as long again as reading the clock.
struct LastSecond {
    bool isKnown = false;
    ::time_t second = 0;
    LocalTime time;
};

} // namespace

Clock& internal::realClock() { return neverDestroyed<LinuxClock>(); }

Date LinuxClock::now() {
    const ::timespec time = calendarTime();
    // Whole seconds are moved to 2001 first: a double then keeps more of the fraction.
    return Date(double(time.tv_sec) - Date::secondsFrom1970To2001 + double(time.tv_nsec) / 1e9);
}

LocalTime LinuxClock::localTime() {
    static thread_local constinit LastSecond last;
    const ::time_t second = ::time(nullptr); // a few milliseconds late, at a tenth of the cost
    if (!last.isKnown || last.second != second) {
        last = {true, second, brokenDown(second)};
    }
    return last.time;
}

std::chrono::nanoseconds LinuxClock::ticks() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

bool LinuxClock::waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                           std::chrono::nanoseconds deadline) {
    // The kernel refuses moments before its clock began.
    const auto end = std::max(deadline, std::chrono::nanoseconds::zero());
    return condition.wait_until(lock, std::chrono::steady_clock::time_point(end)) ==
               std::cv_status::timeout ||
           ticks() >= deadline;
}

} // namespace tav
