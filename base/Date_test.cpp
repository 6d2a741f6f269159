#include "base/Date.hpp"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace tav {

namespace {

using Clock = std::chrono::system_clock;
using std::chrono::nanoseconds;
using std::chrono::seconds;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(Date, ReadsAndWritesCalendarDates) {
    EXPECT_EQ(Date(0).iso8601(), "2001-01-01T00:00:00Z");
    EXPECT_EQ(Date().secondsSince1970(), 978307200);
    EXPECT_EQ(Date::fromSecondsSince1970(0).iso8601(), "1970-01-01T00:00:00Z");
    EXPECT_EQ(Date::fromSecondsSince1970(951782400).iso8601(), "2000-02-29T00:00:00Z");
    EXPECT_EQ(Date::fromISO8601("2009-12-31T23:59:59Z"), Date(283996799));
    // Before the reference date, too, fractions are cut downwards.
    EXPECT_EQ(Date(0.75).iso8601(), "2001-01-01T00:00:00Z");
    EXPECT_EQ(Date(-0.25).iso8601(), "2000-12-31T23:59:59Z");
}

TEST(Date, YearsBeyondFourDigitsHaveASign) {
    EXPECT_EQ(Date::fromISO8601("9999-12-31T23:59:59Z")->iso8601(), "9999-12-31T23:59:59Z");
    const Date next(Date::fromISO8601("9999-12-31T23:59:59Z")->secondsSinceReferenceDate() + 1);
    EXPECT_EQ(next.iso8601(), "+10000-01-01T00:00:00Z");
    const Date before(Date::fromISO8601("0000-01-01T00:00:00Z")->secondsSinceReferenceDate() - 1);
    EXPECT_EQ(before.iso8601(), "-0001-12-31T23:59:59Z");
    EXPECT_EQ(Date::fromISO8601("0000-02-29T00:00:00Z")->iso8601(), "0000-02-29T00:00:00Z");
    EXPECT_EQ(Date::fromISO8601("-0004-02-29T00:00:00Z")->iso8601(), "-0004-02-29T00:00:00Z");
    EXPECT_EQ(Date::fromISO8601("+123456-07-08T09:10:11Z")->iso8601(), "+123456-07-08T09:10:11Z");
}

TEST(Date, RefusesEveryOtherText) {
    for (const char* text : {"",
                             "Z",
                             "2009-12-31T23:59:59",
                             "2009-12-31T23:59:59z",
                             "2009-12-31 23:59:59Z",
                             "2009-12-31T23:59:59Z ",
                             " 2009-12-31T23:59:59Z",
                             "2009-1-31T23:59:59Z",
                             "2009-13-01T00:00:00Z",
                             "2009-00-01T00:00:00Z",
                             "2009-02-29T00:00:00Z",
                             "2009-04-31T00:00:00Z",
                             "2009-01-00T00:00:00Z",
                             "1900-02-29T00:00:00Z",
                             "2009-01-01T24:00:00Z",
                             "2009-01-01T00:60:00Z",
                             "2009-01-01T00:00:60Z",
                             "+2009-01-01T00:00:00Z",
                             "-2009-1-01T00:00:00Z",
                             "-0000-01-01T00:00:00Z",
                             "10000-01-01T00:00:00Z",
                             "+010000-01-01T00:00:00Z",
                             "-012345-01-01T00:00:00Z",
                             "009-01-01T00:00:00Z",
                             "2009-01-01T00:00:00.5Z",
                             "2009--1-01T00:00:00Z",
                             "2009-01-01T-1:00:00Z",
                             "--2009-01-01T00:00:00Z",
                             "+-2009-01-01T00:00:00Z",
                             "99999999999999999999-01-01T00:00:00Z",
                             "+999999999-01-01T00:00:00Z",
                             "-999999999-01-01T00:00:00Z",
                             "2009-01-01T+1:00:00Z",
                             "-",
                             "+",
                             "2009",
                             "2009-"}) {
        EXPECT_FALSE(Date::fromISO8601(text)) << text;
    }
}

TEST(Date, MomentsThatNoCalendarReachesHaveNoText) {
    const double furthest = std::ldexp(1.0, 53);
    for (const double moment : {infinity, -infinity, notANumber, 1e300, -1e300, 9.3e15, -9.3e15}) {
        EXPECT_FALSE(Date(moment).iso8601()) << moment;
    }
    for (const double moment : {furthest, -furthest}) {
        const std::optional<std::string> text = Date(moment).iso8601();
        ASSERT_TRUE(text);
        EXPECT_EQ(Date::fromISO8601(*text), Date(moment)) << *text;
    }
}

TEST(Date, TextsComeBack) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 20000; ++round) {
        const auto shift = static_cast<int>(random() % 43);
        const auto whole = static_cast<double>(static_cast<std::int64_t>(random() >> 11 >> shift));
        const Date date(round % 2 == 0 ? whole : -whole);
        const std::optional<std::string> text = date.iso8601();
        ASSERT_TRUE(text);
        EXPECT_EQ(Date::fromISO8601(*text), date) << *text;
    }
}

TEST(Date, CalendarAgreesWithTheStandardOne) {
    using namespace std::chrono;
    for (int year = -3000; year <= 12000; year += 7) {
        for (unsigned month = 1; month <= 12; ++month) {
            const sys_days firstDay = std::chrono::year(year) / std::chrono::month(month) / 1;
            const auto since1970 = duration_cast<seconds>(firstDay.time_since_epoch()).count();
            const Date date = Date::fromSecondsSince1970(static_cast<double>(since1970) - 1);
            const year_month_day last(firstDay - days(1));
            char text[64];
            std::snprintf(text, sizeof text, "%s%04d-%02u-%02uT23:59:59Z",
                          int(last.year()) < 0      ? "-"
                          : int(last.year()) > 9999 ? "+"
                                                    : "",
                          std::abs(int(last.year())), unsigned(last.month()), unsigned(last.day()));
            EXPECT_EQ(date.iso8601(), text);
        }
    }
}

TEST(Date, TimePointsComeBack) {
    EXPECT_EQ(Date(0).timePoint(), Clock::time_point(seconds(978307200)));
    EXPECT_EQ(Date(-0.5).timePoint(),
              Clock::time_point(seconds(978307200) - nanoseconds(500000000)));
    EXPECT_EQ(Date::fromTimePoint(Clock::time_point(seconds(0))), Date(-978307200));
    EXPECT_EQ(Date::fromTimePoint(Clock::time_point(nanoseconds(-500000000))), Date(-978307200.5));
    std::mt19937_64 random(4);
    for (int round = 0; round < 20000; ++round) {
        const auto count = static_cast<std::int64_t>(random());
        const Clock::time_point point{nanoseconds(count)};
        const Clock::time_point back = Date::fromTimePoint(point).timePoint();
        // What a double can tell, 2^33 seconds away from its zero.
        EXPECT_LE(std::abs((back - point).count()), 2000) << count;
    }
}

TEST(Date, TimePointsStayInTheRangeOfTheClock) {
    EXPECT_EQ(Date(infinity).timePoint(), Clock::time_point::max());
    EXPECT_EQ(Date(1e11).timePoint(), Clock::time_point::max());
    EXPECT_EQ(Date(-infinity).timePoint(), Clock::time_point::min());
    EXPECT_EQ(Date(-1e11).timePoint(), Clock::time_point::min());
    EXPECT_EQ(Date(notANumber).timePoint(), Clock::time_point::min());
    const double last = 9223372036.0;
    EXPECT_EQ(Date::fromSecondsSince1970(last + 0.75).timePoint(),
              Clock::time_point(seconds(9223372036) + nanoseconds(750000000)));
    EXPECT_EQ(Date::fromSecondsSince1970(last + 0.875).timePoint(), Clock::time_point::max());
    EXPECT_EQ(Date::fromSecondsSince1970(-last - 0.75).timePoint(),
              Clock::time_point(-seconds(9223372036) - nanoseconds(750000000)));
    EXPECT_EQ(Date::fromSecondsSince1970(-last - 0.875).timePoint(), Clock::time_point::min());
}

} // namespace

} // namespace tav
