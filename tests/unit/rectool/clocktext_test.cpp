// The times of records as clock times, also of a recording whose times nobody would expect.
#include "printing/text.h"

#include "support/testing.h"

using RecTool::ClockText;
using RecTool::TimeForm;

TEST(ClockTimes, WithinASecondAndBeyondItAreExact)
{
    ClockText clock(TimeForm::Utc, 1'700'000'000'000);
    EXPECT_EQ(clock.of(1), "2023-11-14T22:13:20.001Z");
    EXPECT_EQ(clock.of(999), "2023-11-14T22:13:20.999Z");
    EXPECT_EQ(clock.of(0), "?");
    EXPECT_EQ(clock.of(40), "2023-11-14T22:13:20.040Z");
    EXPECT_EQ(clock.of(1000), "2023-11-14T22:13:21.000Z");
    EXPECT_EQ(clock.of(7), "2023-11-14T22:13:20.007Z");
}

TEST(ClockTimes, InTheFirstSecondOf1970AreWhole)
{
    ClockText clock(TimeForm::Utc, 5);
    EXPECT_EQ(clock.of(10), "1970-01-01T00:00:00.015Z");
    EXPECT_EQ(clock.of(11), "1970-01-01T00:00:00.016Z");
}

TEST(ClockTimes, BehindTheYear9999AreMillisecondsAndHarmNoTimeBehindThem)
{
    constexpr std::uint64_t Never = UINT64_MAX;
    ClockText clock(TimeForm::Utc, 1'700'000'000'000);
    EXPECT_EQ(clock.of(1), "2023-11-14T22:13:20.001Z");
    EXPECT_EQ(clock.of(Never), "18446744073709551615");
    EXPECT_EQ(clock.of(2), "2023-11-14T22:13:20.002Z");
}
