#include "base/Date.hpp"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace tav {

namespace {

constexpr std::int64_t secondsPerDay = 86400;
constexpr std::int64_t epochOffset = 978307200; // of 2001 from 1970
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

// Up to here every whole second is a double of its own: 2^53 seconds, about 285 million years.
constexpr double furthestSecond = 9007199254740992.0;

// The calendar repeats every 400 years. Years are counted from March on, so that the day that comes
// and goes is the last of the year, and eras of 400 years from March of the year 0.
constexpr std::int64_t daysPerEra = 146097;
constexpr std::int64_t yearsPerEra = 400;
constexpr std::int64_t daysBefore1970 = 719468;

struct Day {
    std::int64_t year;
    std::int64_t month;
    std::int64_t day;
};

constexpr std::int64_t floorDivide(std::int64_t a, std::int64_t b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

constexpr std::int64_t daysSince1970(const Day& date) {
    const std::int64_t year = date.year - (date.month <= 2 ? 1 : 0);
    const std::int64_t era = floorDivide(year, yearsPerEra);
    const std::int64_t yearOfEra = year - era * yearsPerEra;
    const std::int64_t monthFromMarch = (date.month + 9) % 12;
    const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + date.day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * daysPerEra + dayOfEra - daysBefore1970;
}

constexpr Day dayFromDaysSince1970(std::int64_t days) {
    days += daysBefore1970;
    const std::int64_t era = floorDivide(days, daysPerEra);
    const std::int64_t dayOfEra = days - era * daysPerEra;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    return {era * yearsPerEra + yearOfEra + (month <= 2 ? 1 : 0), month,
            dayOfYear - (153 * monthFromMarch + 2) / 5 + 1};
}

// The number that the first `digits` characters are, which are taken off; 0 where they are none.
std::int64_t takeNumber(std::string_view& text, std::size_t digits) {
    const std::string_view number = text.substr(0, digits);
    text.remove_prefix(number.size());
    std::int64_t value = 0;
    std::from_chars(number.data(), number.data() + number.size(), value);
    return value;
}

void takeCharacter(std::string_view& text) { text.remove_prefix(text.empty() ? 0 : 1); }

} // namespace

Date Date::fromTimePoint(std::chrono::system_clock::time_point point) {
    const std::int64_t nanoseconds =
        std::chrono::duration_cast<std::chrono::nanoseconds>(point.time_since_epoch()).count();
    const std::int64_t whole = floorDivide(nanoseconds, nanosecondsPerSecond);
    const std::int64_t rest = nanoseconds - whole * nanosecondsPerSecond;
    return Date(static_cast<double>(whole - epochOffset) +
                static_cast<double>(rest) / static_cast<double>(nanosecondsPerSecond));
}

std::chrono::system_clock::time_point Date::timePoint() const {
    using Clock = std::chrono::system_clock;
    constexpr double farOutside = 1e12;
    // Not a number fails every comparison.
    if (!(seconds_ > -farOutside)) {
        return Clock::time_point::min();
    }
    if (seconds_ > farOutside) {
        return Clock::time_point::max();
    }
    const double whole = std::floor(seconds_);
    auto rest = static_cast<std::int64_t>(
        std::round((seconds_ - whole) * static_cast<double>(nanosecondsPerSecond)));
    std::int64_t seconds = static_cast<std::int64_t>(whole) + epochOffset;
    if (seconds < 0) {
        // Both of one sign, so that neither step leaves the range when the sum does not.
        ++seconds;
        rest -= nanosecondsPerSecond;
    }
    std::int64_t nanoseconds = 0;
    if (__builtin_mul_overflow(seconds, nanosecondsPerSecond, &nanoseconds) ||
        __builtin_add_overflow(nanoseconds, rest, &nanoseconds)) {
        return seconds < 0 ? Clock::time_point::min() : Clock::time_point::max();
    }
    return Clock::time_point(
        std::chrono::duration_cast<Clock::duration>(std::chrono::nanoseconds(nanoseconds)));
}

std::optional<std::string> Date::iso8601() const {
    const double whole = std::floor(seconds_);
    if (!(std::fabs(whole) <= furthestSecond)) {
        return std::nullopt;
    }
    const std::int64_t seconds = static_cast<std::int64_t>(whole) + epochOffset;
    const std::int64_t days = floorDivide(seconds, secondsPerDay);
    const std::int64_t second = seconds - days * secondsPerDay;
    const Day date = dayFromDaysSince1970(days);
    const char* const sign = date.year < 0 ? "-" : date.year > 9999 ? "+" : "";
    char text[64];
    const int length = std::snprintf(
        text, sizeof text, "%s%04lld-%02d-%02dT%02d:%02d:%02dZ", sign,
        static_cast<long long>(date.year < 0 ? -date.year : date.year),
        static_cast<int>(date.month), static_cast<int>(date.day), static_cast<int>(second / 3600),
        static_cast<int>(second / 60 % 60), static_cast<int>(second % 60));
    return std::string(text, static_cast<std::size_t>(length));
}

std::optional<Date> Date::fromISO8601(std::string_view text) {
    constexpr std::size_t mostYearDigits = 9;
    std::string_view rest = text;
    const bool negative = rest.starts_with('-');
    if (negative || rest.starts_with('+')) {
        takeCharacter(rest);
    }
    const std::size_t yearDigits = rest.find('-');
    if (yearDigits > mostYearDigits) { // npos, too
        return std::nullopt;
    }
    // Whatever stands in the place of a digit or between them is read as if it were right, since
    // only a text that the result is written as counts in the end.
    Day date{};
    date.year = takeNumber(rest, yearDigits) * (negative ? -1 : 1);
    takeCharacter(rest);
    date.month = takeNumber(rest, 2);
    takeCharacter(rest);
    date.day = takeNumber(rest, 2);
    takeCharacter(rest);
    const std::int64_t hour = takeNumber(rest, 2);
    takeCharacter(rest);
    const std::int64_t minute = takeNumber(rest, 2);
    takeCharacter(rest);
    const std::int64_t second = takeNumber(rest, 2);
    const Date result(static_cast<double>(daysSince1970(date) * secondsPerDay - epochOffset +
                                          hour * 3600 + minute * 60 + second));
    if (result.iso8601() != text) {
        return std::nullopt;
    }
    return result;
}

} // namespace tav
