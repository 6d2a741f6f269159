#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace tav::internal {

/// The moment at which waiting ends, by a clock that nobody sets.
class Deadline {
  public:
    explicit Deadline(std::chrono::milliseconds fromNow) : end_(Clock::now() + fromNow) {}

    [[nodiscard]] bool hasPassed() const { return Clock::now() >= end_; }
    /// 0 when it has passed.
    [[nodiscard]] std::uint64_t remainingMicroseconds() const {
        const auto left =
            std::chrono::duration_cast<std::chrono::microseconds>(end_ - Clock::now());
        return static_cast<std::uint64_t>(std::max<std::int64_t>(0, left.count()));
    }
    /// As `poll` wants it, rounded up so that it does not spin at the end.
    [[nodiscard]] int remainingMilliseconds() const {
        return static_cast<int>((remainingMicroseconds() + 999) / 1000);
    }

  private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point end_;
};

} // namespace tav::internal
