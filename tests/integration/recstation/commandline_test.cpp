// recstation's command line: sources and their options, and which words and values are refused.
#include "commandline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace recstation {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

Options parse(const std::vector<std::string>& arguments)
{
    const CommandLine result = parseCommandLine(arguments);
    return result.options.value();
}

ExitCode refused(const std::vector<std::string>& arguments)
{
    const CommandLine result = parseCommandLine(arguments);
    EXPECT_FALSE(result.options);
    return result.exitCode;
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
    EXPECT_EQ(refused({"--journal", "paper"}), ExitCode::Usage);
    EXPECT_EQ(refused({"--journal", "off", "--config", "station.toml"}), ExitCode::Usage);
}

TEST(CommandLine, EveryOptionRefusesAWrongValue)
{
    const std::vector<std::vector<std::string>> wrong = {
        {"-o", ""},
        {"--config", ""},
        {"--plugin", ""},
        {"--speed", "fast"},
        {"--archive-wait", "soon"},
        {"--split-on-gap=x"},
        {"sim", "--seed", "-1"},
        {"sim", "--duration", "x"},
        {"sim", "--start", "1969-12-31T00:00:00Z"},
        {"feed", "--start", "noon"},
        {"sweep", "x", "--utc-offset", "5"},
        {"sweep", "x", "--bin-frequency", "upper"},
        {"nmea", "x", "--date", "21.11.2026"},
        {"bearings", "x", "--separator", "ab"},
        {"bearings", "x", "--date-format", "xx"},
        {"bearings", "x", "--utc-offset", "x"},
        {"bearings", "x", "--frequency-unit", "kilohertz"},
        {"bearings", "x", "--heading", "400"},
    };
    for (const std::vector<std::string>& arguments : wrong) {
        EXPECT_EQ(refused(arguments), ExitCode::Usage) << testing::PrintToString(arguments);
    }
}

#if defined(RECSTATION_HAS_IQ)
TEST(CommandLine, EveryOptionOfIqRefusesAWrongValue)
{
    for (const auto& [option, value] : {std::pair("--rate", "0"),
                                        {"--centre", "x"},
                                        {"--fft", "15"},
                                        {"--window", "x"},
                                        {"--overlap", "99"},
                                        {"--average", "-1"},
                                        {"--as", "af"},
                                        {"--format", "wav"},
                                        {"--start", "noon"}}) {
        EXPECT_EQ(refused({"iq", "x", option, value}), ExitCode::Usage) << option;
    }
    EXPECT_EQ(refused({"iq", "night.rec"}), ExitCode::Usage);
}
#endif

TEST(CommandLine, ARecordingIsNoSource)
{
    for (const char* source : {"feed", "sweep", "nmea", "bearings"}) {
        EXPECT_EQ(refused({source, "night.rec"}), ExitCode::Usage) << source;
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

TEST(CommandLine, HelpIsNoFailure)
{
    EXPECT_EQ(refused({"--help"}), ExitCode::Success);
    EXPECT_EQ(refused({"sim", "--help"}), ExitCode::Success);
    EXPECT_EQ(refused({"feed", "--help"}), ExitCode::Success);
    EXPECT_EQ(refused({"sweep", "--help"}), ExitCode::Success);
    EXPECT_EQ(refused({"nmea", "--help"}), ExitCode::Success);
}

TEST(CommandLine, WrongArgumentsAreRefused)
{
    EXPECT_EQ(refused({"--nonsense"}), ExitCode::Usage);
    EXPECT_EQ(refused({"nosource"}), ExitCode::Usage);
    EXPECT_EQ(refused({"--speed", "0"}), ExitCode::Usage);
    EXPECT_EQ(refused({"--speed", "fast"}), ExitCode::Usage);
    EXPECT_EQ(refused({"sim", "--duration", "-3"}), ExitCode::Usage);
    EXPECT_EQ(refused({"sim", "--duration", "3 days"}), ExitCode::Usage);
    EXPECT_EQ(refused({"sim", "--start", "yesterday"}), ExitCode::Usage);
    EXPECT_EQ(refused({"feed", "a", "b"}), ExitCode::Usage);
}

std::string sentenceFor(const std::vector<std::string>& arguments)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(refused(arguments), ExitCode::Usage);
    return testing::internal::GetCapturedStderr();
}

TEST(CommandLine, AMistypedWordIsAnsweredWithTheNearest)
{
    EXPECT_THAT(sentenceFor({"sweeep", "x"}), HasSubstr("there is no source \"sweeep\": did you mean sweep?"));
    EXPECT_THAT(sentenceFor({"drive.log"}), HasSubstr("the sources are sim, feed, sweep, bearings, nmea"));
    EXPECT_THAT(sentenceFor({"--ouput", "d", "sim"}), HasSubstr("there is no option --ouput: did you mean --output?"));
    EXPECT_THAT(sentenceFor({"sweep", "x", "--utc-ofset", "Z"}), HasSubstr("did you mean --utc-offset?"));
    EXPECT_THAT(sentenceFor({"--seed", "7", "sweep", "x"}), HasSubstr("--seed is an option of sim"));
    EXPECT_THAT(sentenceFor({"sweep", "x", "nmea"}), HasSubstr("nmea needs the name of a file"));
    EXPECT_THAT(sentenceFor({"feed", "a", "b"}), HasSubstr("\"b\" is one word too many behind feed"));
}

TEST(CommandLine, ASecondSourceOfOneKindIsRefusedInASentence)
{
    EXPECT_THAT(sentenceFor({"sweep", "a.csv", "sweep", "b.csv"}), HasSubstr("a run has one sweep: "));
    EXPECT_THAT(sentenceFor({"sim", "sim"}), HasSubstr("a run has one sim: "));
    EXPECT_THAT(sentenceFor({"sweep", "a.csv", "nmea", "b.log", "sweep", "c.csv"}), HasSubstr("a run has one sweep: "));
}

TEST(CommandLine, WrongValuesOfOptionsAreWrongArguments)
{
    const std::vector<std::vector<std::string>> all = {
        {"sweep", "x", "--utc-offset", "east"},
        {"sweep", "x", "--bin-frequency", "upper"},
        {"nmea", "x", "--date", "21.11.2026"},
        {"bearings", "x", "--separator", "abc"},
        {"bearings", "x", "--date-format", "yyyy"},
        {"bearings", "x", "--utc-offset", "25"},
        {"bearings", "x", "--frequency-unit", "m"},
        {"bearings", "x", "--heading", "400"},
        {"--split-on-gap=soon", "nmea", "x"},
        {"--archive-wait", "-1"},
        {"--make-output", "sim"},
#if defined(RECSTATION_HAS_IQ)
        {"iq", "x", "--rate", "fast"},
        {"iq", "x", "--rate", "0"},
        {"iq", "x", "--centre", "1 light"},
        {"iq", "x", "--start", "noon"},
        {"iq", "x", "--fft", "17"},
        {"iq", "x", "--window", "square"},
        {"iq", "x", "--overlap", "96"},
        {"iq", "x", "--average", "-1"},
        {"iq", "x", "--as", "af"},
        {"iq", "x", "--format", "mp3"},
#endif
    };
    for (const auto& arguments : all) {
        EXPECT_THAT(sentenceFor(arguments), HasSubstr("recstation: ")) << testing::PrintToString(arguments);
    }
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
    EXPECT_THAT(sentenceFor({"feed", "--start", "1970-01-01T00:00:00Z"}), HasSubstr("after the start of 1970"));
}

TEST(CommandLine, StartsAreReadToTheMicrosecond)
{
    EXPECT_EQ(parse({"sim", "--start", "1970-01-02T02:00:00.000250+02:00"}).sim->startTime, 86'400'000'250U);
    EXPECT_EQ(parse({"feed", "--start", "1970-01-02T00:00"}).feed->startTime, 86'400'000'000U);
}

TEST(CommandLine, SeedsAreWholeNumbersOf64Bits)
{
    EXPECT_EQ(parse({"sim", "--seed", "18446744073709551615"}).sim->seed, 18'446'744'073'709'551'615U);
    for (const char* seed : {"18446744073709551616", "1e30", "1.5", "x", "", "-1"}) {
        EXPECT_EQ(refused({"sim", "--seed", seed}), ExitCode::Usage) << seed;
    }
}

}  // namespace
}  // namespace recstation
