// ISO times, with and without zone, to the microsecond.
#include <gtest/gtest.h>

#include "input/timetext.h"

namespace {

using RecStation::parseIsoTime;

constexpr unsigned long long halfPastEight = 1'795'249'800'000'000;  // 2026-11-21 08:30:00 UTC

TEST(IsoTime, ATimeInUtcIsReadToTheMicrosecond)
{
    EXPECT_EQ(parseIsoTime("2026-11-21T08:30:00Z"), halfPastEight);
    EXPECT_EQ(parseIsoTime("2026-11-21T08:30:00.25Z"), halfPastEight + 250'000);
    EXPECT_EQ(parseIsoTime("2026-11-21T08:30:00.000001Z"), halfPastEight + 1);
    EXPECT_EQ(parseIsoTime("2026-11-21T08:30:00.1234569Z"), halfPastEight + 123'456);
}

TEST(IsoTime, ATimeWithoutZoneIsUtcAndSecondsMayBeLeftOut)
{
    EXPECT_EQ(parseIsoTime("2026-11-21T08:30"), halfPastEight);
    EXPECT_EQ(parseIsoTime("2026-11-21T08:30Z"), halfPastEight);
    EXPECT_EQ(parseIsoTime("2026-11-21T08:30:00"), halfPastEight);
}

TEST(IsoTime, AnOffsetIsTakenIntoAccount)
{
    EXPECT_EQ(parseIsoTime("2026-11-21T10:30:00+02:00"), halfPastEight);
    EXPECT_EQ(parseIsoTime("2026-11-21T05:00:00.5-03:30"), halfPastEight + 500'000);
}

TEST(IsoTime, OtherFormsOfIso8601AreRead)
{
    for (const char* text : {"2026-11-21T09:30:00+0100", "2026-11-21T09:30:00+01", "20261121T083000Z", "20261121T0830",
                             "20261121T093000+0100", "2026-11-21t08:30:00z"}) {
        EXPECT_EQ(parseIsoTime(text), halfPastEight) << text;
    }
    EXPECT_EQ(parseIsoTime("2026-11-21T09:30:00,123456789+01:00"), halfPastEight + 123'456);  // GNU date -Ins
}

TEST(IsoTime, OtherTextsAreNone)
{
    for (const char* text :
         {"", "now", "2026-11-21", "2026-11-21 08:30:00Z", "2026-13-21T08:30:00Z", "2026-11-21T25:30:00Z",
          "2026-11-21T08:30:00.Z", "2026-11-21T08:30.5", "2026-11-21T08:30:00Zulu", "2026-1121T08:30",
          "202611-21T08:30", "2026-11-21T08:3000", "2026-11-21T08:30:00+1", "20261121083000"}) {
        EXPECT_FALSE(parseIsoTime(text)) << text;
    }
}

TEST(IsoTime, TimesThatRecordingsCannotHoldAreNone)
{
    EXPECT_FALSE(parseIsoTime("1969-12-31T23:59:59Z"));
    EXPECT_FALSE(parseIsoTime("1970-01-01T00:00:00Z"));
    EXPECT_EQ(parseIsoTime("1970-01-01T00:00:00.000001Z"), 1U);
    EXPECT_TRUE(parseIsoTime("2500-12-31T23:59:59.999999Z"));
    EXPECT_FALSE(parseIsoTime("2501-01-01T00:00:00Z"));
}

}  // namespace
