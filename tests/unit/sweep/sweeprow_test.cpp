// Single rows of a sweep: time, band, levels and their bins, and bad rows.
#include <cmath>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sources/sweep/sweeprow.h"

namespace recstation {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsNan;
using testing::SizeIs;

constexpr unsigned long long eight = 1'795'248'000'000'000;  // 2026-11-21 08:00:00 UTC

SweepRow parsed(const std::string& line, bool whole = true, const std::string& utcOffset = "UTC")
{
    SweepRow row;
    SweepRowParser(utcOffset).parse(line, whole, row);
    return row;
}

std::string problem(const std::string& line, bool whole = true)
{
    try {
        static_cast<void>(parsed(line, whole));
    } catch (const LineError& error) {
        return error.what();
    }
    return "no problem";
}

const std::string head = "2026-11-21, 08:00:00, 100000000, 101000000, 250000, 20, ";

TEST(SweepRow, HasTimeBandAndALevelForEveryBin)
{
    const SweepRow row = parsed("2026-11-21, 08:00:00.125, 100000000, 101000000, 250000.00, 20, -71.5, -72, -73.25, 4");
    EXPECT_EQ(row.time, eight + 125'000);
    EXPECT_EQ(row.lowHz, 100e6);
    EXPECT_EQ(row.highHz, 101e6);
    EXPECT_THAT(row.levelsDb, ElementsAre(-71.5F, -72.F, -73.25F, 4.F));
}

TEST(SweepRow, BlanksAndLineEndsDoNotMatter)
{
    EXPECT_EQ(parsed("2026-11-21,08:00:00,1e8,101e6,250e3,20,-1,-2,-3,-4\r"), parsed(head + "-1, -2,  -3,\t-4"));
}

TEST(SweepRow, TheUtcOffsetIsTakenOff)
{
    EXPECT_EQ(parsed(head + "1,2,3,4", true, "+01:00").time, eight - 3'600'000'000);
    EXPECT_THROW(SweepRowParser("1:00"), std::runtime_error);
}

TEST(SweepRow, AValueMoreThanBinsIsDropped)
{
    EXPECT_THAT(parsed(head + "-1, -2, -3, -4, -4").levelsDb, ElementsAre(-1.F, -2.F, -3.F, -4.F));
    EXPECT_THAT(parsed(head + "-1, -2, -3, -4, ").levelsDb, SizeIs(4));
}

TEST(SweepRow, TheNumberOfBinsIsRounded)
{
    // 2.8 MHz of 410 bins, the width cut to two decimals.
    std::string line = "2026-11-21, 08:00:00, 88000000, 90800000, 6829.27, 100";
    for (int i = 0; i < 410; ++i) {
        line += ", -50.00";
    }
    EXPECT_THAT(parsed(line).levelsDb, SizeIs(410));
    EXPECT_THAT(parsed(line + ", -50.00").levelsDb, SizeIs(410));
}

// 100 to 101 MHz, the middle of FFTs of 250 kHz and of 200 kHz bins.
TEST(SweepRow, ValuesOfACroppedFftLieEvenlyAboutTheMiddleOfTheBand)
{
    const SweepRow evenBins = parsed(head + "-1, -2, -3, -4, -5, -6, -6");
    EXPECT_EQ(evenBins.lowHz, 100e6 - 250e3);
    EXPECT_EQ(evenBins.highHz, 101e6 + 250e3);
    EXPECT_THAT(evenBins.levelsDb, ElementsAre(-1.F, -2.F, -3.F, -4.F, -5.F, -6.F));

    const SweepRow oddBins =
        parsed("2026-11-21, 08:00:00, 100000000, 101000000, 200000, 20, -1, -2, -3, -4, -5, -6, -6");
    EXPECT_EQ(oddBins.lowHz, 100e6 - 100e3);
    EXPECT_EQ(oddBins.highHz, 101e6 + 100e3);
    EXPECT_THAT(oddBins.levelsDb, ElementsAre(-1.F, -2.F, -3.F, -4.F, -5.F, -6.F));
}

TEST(SweepRow, MoreValuesWhosePlacesCannotBeToldAreBad)
{
    EXPECT_THAT(problem(head + "-1, -2, -3, -4, -5, -6"), HasSubstr("found 6"));              // nothing twice
    EXPECT_THAT(problem(head + "-1, -2, -3, -4, -5, -5"), HasSubstr("found 6"));              // no middle
    EXPECT_THAT(problem(head + "-1, -2, -3, -4, -5, -6, -7"), HasSubstr("found 7"));          // nothing twice
    EXPECT_THAT(problem(head + "-1, -2, -3, -4, -5, -6, -7, -8, -8"), HasSubstr("found 9"));  // too many
    EXPECT_THAT(problem(head + "-1, -2, -3, -4, -5, -6, -6", false), HasSubstr("found 7"));   // may be cut
}

TEST(SweepRow, AnyOtherNumberOfValuesIsBad)
{
    const std::string expected = "100000000 to 101000000 Hz in steps of 250000 Hz are 4 values, found ";
    EXPECT_EQ(problem(head + "1,2,3"), expected + '3');
    EXPECT_EQ(problem(head + "1,2,3,4,5,6"), expected + '6');
    EXPECT_EQ(problem("2026-11-21, 08:00:00, 100000000, 101000000, 250000, 20"), expected + '0');
}

TEST(SweepRow, WhatWasNotMeasuredIsNotANumber)
{
    EXPECT_THAT(parsed(head + "nan, -inf, , -4").levelsDb, ElementsAre(IsNan(), IsNan(), IsNan(), -4.F));
}

TEST(SweepRow, LevelsThatNoReceiverShowsAreBad)
{
    for (const char* level : {"inf", "1e30", "1e300", "-1001", "x", "-5 0", "--5"}) {
        EXPECT_THAT(problem(head + "1,2,3," + level), HasSubstr("the level")) << level;
    }
}

TEST(SweepRow, BandsAndStepsThatCannotBeAreBad)
{
    const std::string time = "2026-11-21, 08:00:00, ";
    for (const char* band : {"nan, 1e6, 1e3", "0, inf, 1e3", "1e6, 1e6, 1", "2e6, 1e6, 1e5", "-5, 5, 1", "0, 1e13, 1",
                             "0, 1e6, 0", "0, 1e6, -1000", "0, 1e6, 1e-3", "0, 10, 1e6", "0, 1e6, inf", "a, b, c"}) {
        EXPECT_NE(problem(time + band + ", 1, -5"), "no problem") << band;
    }
}

TEST(SweepRow, WrongDatesAndTimesAreBad)
{
    for (const char* time : {"2026-13-01, 08:00:00", "21.11.2026, 08:00:00", "2026-11-21, 24:00:00", "2026-11-21, 8",
                             "2026-11-21", "1969-12-31, 08:00:00", ", ", ""}) {
        EXPECT_NE(problem(std::string(time) + ", 0, 4, 1, 1, 1, 2, 3, 4"), "no problem") << time;
    }
}

TEST(SweepRow, AfterABadTimeTheNextGoodOneCounts)
{
    SweepRowParser parser("UTC");
    SweepRow row;
    EXPECT_THROW(parser.parse("2026-11-21, 99:00:00, 0, 4, 1, 1, 1, 2, 3, 4", true, row), LineError);
    parser.parse("2026-11-21, 08:00:00, 0, 4, 1, 1, 1, 2, 3, 4", true, row);
    EXPECT_EQ(row.time, eight);
}

TEST(SweepRow, ALastNumberThatTheEndOfTheInputMayHaveCutIsBad)
{
    const std::string end = "the input ends within the last value";
    EXPECT_EQ(problem(head + "-1.00, -2.00, -3.00, -45.6", false), end);
    EXPECT_EQ(problem(head + "-1.00, -2.00, -3.00, -4", false), end);
    EXPECT_EQ(problem(head + "-1.00, -2.00, -3.00, ", false), end);
    EXPECT_EQ(problem(head + "-1.00, -2.00, -3.00, -45.67", false), "no problem");
    EXPECT_EQ(problem(head + "-1.00, -2.00, -3.00, -45.67, -4", false), "no problem");
    EXPECT_EQ(problem(head + "-1.00, -2.00, -3.00, -45.67, -", false), "no problem");
    // The last one written twice would begin alike: this is a row with more values.
    EXPECT_EQ(problem(head + "-1.00, -2.00, -3.00, -45.67, -5", false), end);
}

TEST(SweepRow, CommentsAndColumnNamesAreNoRows)
{
    for (const char* line : {"", " \r", "# comment", "date, time, Hz low, Hz high, Hz step, samples, dB, dB"}) {
        EXPECT_TRUE(SweepRowParser::isNoRow(line)) << line;
    }
    EXPECT_FALSE(SweepRowParser::isNoRow(head));
}

}  // namespace
}  // namespace recstation
