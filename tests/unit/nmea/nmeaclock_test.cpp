// The day of NMEA times: midnight, dates, and dates that lost 1,024 weeks.
#include <gtest/gtest.h>

#include "sources/nmea/nmeaclock.h"

namespace RecStation {
namespace {

constexpr long long second = 1'000'000;
constexpr long long hour = 3600 * second;
constexpr long long day = 24 * hour;
constexpr long long today = 20'000;

TEST(NmeaClock, WithoutADateTheDayStaysUntilMidnight)
{
    NmeaClock clock(today, false);
    clock.start(19'000);
    EXPECT_EQ(clock.at(23 * hour, std::nullopt), 19'000 * day + 23 * hour);
    EXPECT_EQ(clock.at(day - second, std::nullopt), 19'001 * day - second);
    EXPECT_EQ(clock.at(second, std::nullopt), 19'001 * day + second);
    EXPECT_EQ(clock.midnights(), 1U);
}

TEST(NmeaClock, ATimeOfThePastDayBehindMidnightGoesBack)
{
    NmeaClock clock(today, false);
    clock.start(19'000);
    clock.at(0, std::nullopt);
    EXPECT_EQ(clock.at(day - second, std::nullopt), 19'000 * day - second);
    EXPECT_EQ(clock.at(second, std::nullopt), 19'000 * day + second);
}

TEST(NmeaClock, ADateCountsAndMidnightIsNotReported)
{
    NmeaClock clock(today, false);
    clock.start(19'000);
    clock.at(day - second, 19'000);
    EXPECT_EQ(clock.at(0, std::nullopt), 19'001 * day);
    EXPECT_EQ(clock.at(0, 19'005), 19'005 * day);
    EXPECT_EQ(clock.at(hour, 19'004), 19'004 * day + hour);
    EXPECT_EQ(clock.midnights(), 0U);
}

TEST(NmeaClock, DatesThatMayHaveLost1024WeeksAreNotedAndOnlyCorrectedWhenAsked)
{
    NmeaClock noting(today, false);
    EXPECT_EQ(noting.corrected(today), today);
    EXPECT_EQ(noting.corrected(today - 7'167), today - 7'167);
    EXPECT_EQ(noting.rolledBack(), std::nullopt);
    EXPECT_EQ(noting.corrected(today - 7'168), today - 7'168);
    EXPECT_EQ(noting.rolledBack(), today - 7'168);

    NmeaClock fixing(today, true);
    EXPECT_EQ(fixing.corrected(today - 7'168), today);
    EXPECT_EQ(fixing.corrected(today - 100), today - 100);
    EXPECT_EQ(fixing.rolledBack(), today - 7'168);
}

}  // namespace
}  // namespace RecStation
