// recstation's command line: sources and their options, and what they say; what is refused is tested in tests/cases.
#include "commandline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace recstation {
namespace {

using testing::ElementsAre;

Options parse(const std::vector<std::string>& arguments)
{
    const CommandLine result = parseCommandLine(arguments);
    return result.options.value();
}

TEST(CommandLine, WithoutASourceTheSimulatorRuns)
{
    const Options options = parse({});
    EXPECT_TRUE(options.sim);
    EXPECT_FALSE(options.feed);
    EXPECT_FALSE(options.speed);
    EXPECT_EQ(options.sim->durationSeconds, 180);
}

TEST(CommandLine, ANamedSourceRunsAloneAndItsOptionsAreRead)
{
    const Options options = parse({"feed", "x.jsonl", "--start", "1970-01-01T00:00:01.500Z"});
    EXPECT_FALSE(options.sim);
    ASSERT_TRUE(options.feed);
    EXPECT_EQ(options.feed->file, "x.jsonl");
    EXPECT_EQ(options.feed->startTime, 1'500'000U);
    EXPECT_FALSE(options.feed->strict);
    EXPECT_TRUE(parse({"feed", "--strict"}).feed->strict);
}

TEST(CommandLine, TheJournalIsChosenUnlessAConfigurationDoesIt)
{
    EXPECT_EQ(parse({}).journal, "");
    for (const char* journal : {"process", "power", "off"}) {
        EXPECT_EQ(parse({"--journal", journal}).journal, journal);
    }
}

TEST(CommandLine, UnfinishedRecordingsAreRecoveredUnlessTheyAreToBeLeft)
{
    EXPECT_TRUE(parse({}).recover);
    EXPECT_FALSE(parse({"--no-recover", "feed"}).recover);
}

TEST(CommandLine, SeveralSourcesRunTogether)
{
    const Options options = parse({"sim", "--seed", "9", "feed"});
    ASSERT_TRUE(options.sim);
    EXPECT_EQ(options.sim->seed, 9U);
    ASSERT_TRUE(options.feed);
    EXPECT_EQ(options.feed->file, "-");
}

TEST(CommandLine, OptionsBelongToTheSourceBeforeThem)
{
    const Options options = parse({"sweep", "a.csv", "--utc-offset", "+01:00", "--bin-frequency", "lower", "nmea",
                                   "b.log", "--date", "2026-11-21", "--fix-week-rollover", "bearings", "c.csv",
                                   "--strict", "--utc-offset", "-05:00", "-o", "d"});
    ASSERT_TRUE(options.sweep && options.nmea && options.bearings);
    EXPECT_EQ(options.sweep->file, "a.csv");
    EXPECT_EQ(options.sweep->utcOffset, "+01:00");
    EXPECT_EQ(options.sweep->binFrequency, "lower");
    EXPECT_FALSE(options.sweep->strict);
    EXPECT_EQ(options.nmea->file, "b.log");
    EXPECT_EQ(options.nmea->date, "2026-11-21");
    EXPECT_TRUE(options.nmea->fixWeekRollover);
    EXPECT_FALSE(options.nmea->strict);
    EXPECT_TRUE(options.bearings->strict);
    EXPECT_EQ(options.bearings->utcOffset, "-05:00");
    EXPECT_EQ(options.output, "d");
    EXPECT_FALSE(options.sim);
}

TEST(CommandLine, CommonOptionsStandBeforeOrBehindTheSource)
{
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"-o", "d", "--speed", "2", "--record", "a", "--record", "b", "--json", "sim"},
             {"sim", "-o", "d", "--speed", "2", "--record", "a", "--record", "b", "--json"}}) {
        const Options options = parse(arguments);
        EXPECT_EQ(options.output, "d");
        EXPECT_EQ(options.speed, 2);
        EXPECT_THAT(options.recorders, ElementsAre("a", "b"));
        EXPECT_TRUE(options.json);
    }
}

TEST(CommandLine, DurationsHaveUnits)
{
    EXPECT_EQ(parse({"sim", "--duration", "90"}).sim->durationSeconds, 90);
    EXPECT_EQ(parse({"sim", "--duration", "1.5s"}).sim->durationSeconds, 1.5);
    EXPECT_EQ(parse({"sim", "--duration", "3min"}).sim->durationSeconds, 180);
    EXPECT_EQ(parse({"sim", "--duration", "2h"}).sim->durationSeconds, 7200);
}

TEST(CommandLine, NumbersHaveUnits)
{
#if defined(RECSTATION_HAS_IQ)
    const Options options = parse({"iq", "x", "--rate", "48k", "--centre", "145.5M", "--overlap", "50%"});
    EXPECT_EQ(options.iq->rateHz, 48e3);
    EXPECT_EQ(options.iq->centreHz, 145.5e6);
    EXPECT_EQ(options.iq->overlapPercent, 50);
    for (const char* centre : {"1.4200 GHz", "1.42G", "1420MHz", "1420000kHz", "1.42e9", "1420000000 hz"}) {
        EXPECT_EQ(parse({"iq", "x", "--centre", centre}).iq->centreHz, 1.42e9) << centre;
    }
#endif
    EXPECT_EQ(parse({"--archive-wait", "2min"}).archiveWaitSeconds, 120);
    EXPECT_EQ(parse({"--speed", "2x"}).speed, 2);
}

TEST(CommandLine, GapsAreOfTenMinutesUnlessATimeIsGiven)
{
    EXPECT_EQ(parse({"nmea", "x"}).splitGapUs, std::nullopt);
    EXPECT_EQ(parse({"--split-on-gap", "nmea", "x"}).splitGapUs, 600'000'000U);
    EXPECT_EQ(parse({"nmea", "x", "--split-on-gap=2h"}).splitGapUs, 7'200'000'000U);
    EXPECT_TRUE(parse({"nmea", "x", "--allow-gap"}).allowGap);
}

TEST(CommandLine, StartsReachBackToTheFirstSecondOf1970)
{
    EXPECT_EQ(parse({"sim", "--start", "1970-01-01T00:00:01Z"}).sim->startTime, 1'000'000U);
    EXPECT_EQ(parse({"feed", "--start", "1970-01-01T00:00:01Z"}).feed->startTime, 1'000'000U);
}

TEST(CommandLine, StartsAreReadToTheMicrosecond)
{
    EXPECT_EQ(parse({"sim", "--start", "1970-01-02T02:00:00.000250+02:00"}).sim->startTime, 86'400'000'250U);
    EXPECT_EQ(parse({"feed", "--start", "1970-01-02T00:00"}).feed->startTime, 86'400'000'000U);
}

TEST(CommandLine, SeedsAreWholeNumbersOf64Bits)
{
    EXPECT_EQ(parse({"sim", "--seed", "18446744073709551615"}).sim->seed, 18'446'744'073'709'551'615U);
}

}  // namespace
}  // namespace recstation
