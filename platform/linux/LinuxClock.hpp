#pragma once

#include "platform/Clock.hpp"

namespace tav {

/// The kernel's clocks. `ticks` counts from the start of the machine, without the time that it
/// slept, on the same clock as `std::chrono::steady_clock`.
class LinuxClock final : public Clock {
  public:
    Date now() override;
    LocalTime localTime() override;
    std::chrono::nanoseconds ticks() override;
    bool waitUntil(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                   std::chrono::nanoseconds deadline) override;
};

} // namespace tav
