// The progress line: bytes, durations, records and rate as a person would write them.
#include "progress.h"

#include <gtest/gtest.h>

namespace RecStation {
namespace {

TEST(LagText, HasTheUnitThatItsSizeMakesSenseIn)
{
    EXPECT_EQ(lagText(12'340), QStringLiteral("12.3 ms"));
    EXPECT_EQ(lagText(-1'500'000), QStringLiteral("-1500.0 ms"));
    EXPECT_EQ(lagText(12'340'000), QStringLiteral("12.3 s"));
    EXPECT_EQ(lagText(7'499'000'000), QStringLiteral("2 h 05 min"));
    EXPECT_EQ(lagText(-11 * 60 * 1'000'000LL), QStringLiteral("-11 min"));
    EXPECT_EQ(lagText(12 * 86'400 * 1'000'000LL), QStringLiteral("12 days"));
}

TEST(Progress, BytesAreWrittenAsAPersonWould)
{
    EXPECT_EQ(byteText(0), QStringLiteral("0 bytes"));
    EXPECT_EQ(byteText(999), QStringLiteral("999 bytes"));
    EXPECT_EQ(byteText(1'500), QStringLiteral("1.5 kB"));
    EXPECT_EQ(byteText(4'200'000), QStringLiteral("4.2 MB"));
    EXPECT_EQ(byteText(2'000'000'000'000'000), QStringLiteral("2000.0 TB"));
}

TEST(Progress, DurationsNameHoursAndMinutesWhenThereAreAny)
{
    EXPECT_EQ(durationText(0), QStringLiteral("0.000 s"));
    EXPECT_EQ(durationText(2'250), QStringLiteral("2.250 s"));
    EXPECT_EQ(durationText(62'250), QStringLiteral("1 min 02.250 s"));
    EXPECT_EQ(durationText(3'662'250), QStringLiteral("1 h 01 min 02.250 s"));
}

TEST(Progress, TheLineTellsElapsedRecordsBytesAndRate)
{
    EXPECT_EQ(progressText({62'250, 12'345, 4'200'000}, 2'000),
              QStringLiteral("1 min 02.250 s recorded, 12345 records, 4.2 MB, 2.1 MB/s"));
    EXPECT_EQ(progressText({}, 0), QStringLiteral("0.000 s recorded, 0 records, 0 bytes, 0 bytes/s"));
}

}  // namespace
}  // namespace RecStation
