#pragma once

#include <chrono>
#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// A moment: seconds since 2001-01-01 00:00:00 UTC, before and after it, with fractions.
class Date {
  public:
    /// From the reference date back to the Unix epoch, in seconds.
    static constexpr double secondsFrom1970To2001 = 978307200.0;

    constexpr Date() = default;
    constexpr explicit Date(double secondsSinceReferenceDate)
        : seconds_(secondsSinceReferenceDate) {}

    [[nodiscard]] static constexpr Date fromSecondsSince1970(double seconds) {
        return Date(seconds - secondsFrom1970To2001);
    }
    [[nodiscard]] static Date fromTimePoint(std::chrono::system_clock::time_point point);

    [[nodiscard]] constexpr double secondsSinceReferenceDate() const { return seconds_; }
    [[nodiscard]] constexpr double secondsSince1970() const {
        return seconds_ + secondsFrom1970To2001;
    }
    /// The nearest time point of the system clock; its first or last for a moment that its range
    /// has not, and the first for one that is not a number.
    [[nodiscard]] std::chrono::system_clock::time_point timePoint() const;

    /// "2009-12-31T23:59:59Z": whole seconds (rounded down), UTC, the form that property lists use.
    /// Years outside 0000 to 9999 have as many digits as they need (four at least), and a sign.
    /// Nothing for a moment that no calendar reaches (not a number, infinite, further than about
    /// 285 million years).
    [[nodiscard]] std::optional<std::string> iso8601() const;

    /// Reads what `iso8601` writes; nothing for any other text.
    [[nodiscard]] static std::optional<Date> fromISO8601(std::string_view text);

    friend constexpr bool operator==(Date, Date) = default;
    // NOLINTNEXTLINE(modernize-use-nullptr): the linter trips over the operator's own literal 0.
    friend constexpr std::partial_ordering operator<=>(Date, Date) = default;

  private:
    double seconds_ = 0;
};

} // namespace tav
