// recstation's command line and its configurations; what is refused is tested in tests/cases, too.
#include <startup/cfgcenter.h>

#include "program.h"
#include "sources/bearings/bearingssource.h"
#include "sources/feed/feedsource.h"
#include "sources/nmea/nmeasource.h"
#include "sources/sim/simsource.h"
#include "sources/sweep/sweepsource.h"
#include "support/files.h"
#include "support/problem.h"

#if defined(RECSTATION_HAS_IQ)
#include "sources/iq/iqsource.h"
#endif

namespace RecStation {

namespace {

using testing::HasSubstr;

class ConfigurationTest : public testing::Test {
protected:
    ~ConfigurationTest() override { CfgCenter::Clear(); }

    static Configuration load(const char* text) { return loadConfigurationText(QString::fromUtf8(text), "test.toml"); }

    static std::string problemOf(const char* text)
    {
        return TestSupport::problemOf([text] { static_cast<void>(load(text)); });
    }
};

TEST_F(ConfigurationTest, TheBuiltInOneHasAReceiverAndADirectionFinder)
{
    const QString directory = QStringLiteral("/a \"quoted\"\\back\tslash");
    const auto configuration = loadConfigurationText(defaultConfigurationText(directory), "built in");
    ASSERT_EQ(configuration.instances.size(), 2U);
    const Instance& receiver = configuration.instances[0];
    EXPECT_EQ(receiver.name, "receiver");
    EXPECT_EQ(receiver.valuePath, "/Devices/Rx1");
    EXPECT_EQ(receiver.statusValuePath, "/Devices/Rx1Status");
    EXPECT_EQ(receiver.recordingPath, directory);
    EXPECT_FALSE(receiver.directionFinding);
    EXPECT_EQ(configuration.instances[1].name, "df");
    EXPECT_TRUE(configuration.instances[1].directionFinding);
    EXPECT_TRUE(configuration.warnings.isEmpty());
}

TEST_F(ConfigurationTest, TheBuiltInOneKeepsTheJournalThatIsAskedFor)
{
    static_cast<void>(loadConfigurationText(defaultConfigurationText("/r", "power"), "built in"));
    for (const QString& name : CfgCenter::InstanceNames()) {
        const std::unique_ptr<ICfg> cfg(CfgCenter::CreateCfg(name, CfgCenter::View::Instance, QString()));
        EXPECT_EQ(cfg->ReadString("Journal", QString()), "power");
    }
}

TEST_F(ConfigurationTest, TheRecordersFallbacksCountAsPaths)
{
    const auto one = load("[a]\n");
    EXPECT_EQ(one.instances[0].valuePath, "/Devices/NoName_Driver");
    const auto emptyStatus = load("[a]\nValuePath='/A'\nStatusValuePath=''\n");
    EXPECT_EQ(emptyStatus.instances[0].valuePath, "/Devices/RecStatus");
    EXPECT_THAT(problemOf("[a]\nStatusValuePath='/A'\n[b]\nStatusValuePath='/B'\n"),
                HasSubstr("share the ValuePath \"/Devices/NoName_Driver\""));
}

TEST_F(ConfigurationTest, TheTableOfTheArchiveIsNoRecorder)
{
    const Configuration configuration = load("[Rx]\n[archive]\nStorage = \"/storage\"\nUnknown = 7\n");
    EXPECT_EQ(configuration.instances.size(), 1U);
    EXPECT_TRUE(configuration.warnings.isEmpty());
    EXPECT_EQ(configuration.archiveFile, "test.toml");
    EXPECT_TRUE(load("[Rx]\n").archiveFile.isEmpty());
    EXPECT_THAT(problemOf("[archive]\nStorage = \"/storage\"\n"), HasSubstr("no recorder is configured"));
}

TEST_F(ConfigurationTest, AFileIsRead)
{
    const QTemporaryDir directory;
    const QString name = directory.filePath("station.toml");
    TestSupport::writeBytes(name, "[a]\nValuePath = '/A'\nRecordDF = true\n");
    const auto configuration = loadConfigurationFile(name);
    EXPECT_TRUE(configuration.instances.at(0).directionFinding);
    EXPECT_THROW(static_cast<void>(loadConfigurationFile(directory.filePath("none"))), std::runtime_error);
}

using testing::ElementsAre;

Options parse(const std::vector<std::string>& arguments)
{
    const CommandLine result = parseCommandLine(arguments);
    return result.options.value();
}

/// The options of a source; nothing when it was not chosen.
template <typename SourceOptions>
std::optional<SourceOptions> of(const Options& options)
{
    for (const auto& source : options.sources) {
        if (const auto* found = dynamic_cast<const SourceWith<SourceOptions>*>(source.get())) {
            return found->options();
        }
    }
    return std::nullopt;
}

TEST(CommandLine, WithoutASourceTheSimulatorRuns)
{
    const Options options = parse({});
    EXPECT_TRUE(of<SimOptions>(options));
    EXPECT_FALSE(of<FeedOptions>(options));
    EXPECT_FALSE(options.speed);
    EXPECT_EQ(of<SimOptions>(options)->durationSeconds, 180);
}

TEST(CommandLine, ANamedSourceRunsAloneAndItsOptionsAreRead)
{
    const Options options = parse({"feed", "x.jsonl", "--start", "1970-01-01T00:00:01.500Z"});
    EXPECT_FALSE(of<SimOptions>(options));
    ASSERT_TRUE(of<FeedOptions>(options));
    EXPECT_EQ(of<FeedOptions>(options)->file, "x.jsonl");
    EXPECT_EQ(of<FeedOptions>(options)->startTime, 1'500'000U);
    EXPECT_FALSE(of<FeedOptions>(options)->strict);
    EXPECT_TRUE(of<FeedOptions>(parse({"feed", "--strict"}))->strict);
}

TEST(CommandLine, TheJournalIsChosen)
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
    ASSERT_TRUE(of<SimOptions>(options));
    EXPECT_EQ(of<SimOptions>(options)->seed, 9U);
    ASSERT_TRUE(of<FeedOptions>(options));
    EXPECT_EQ(of<FeedOptions>(options)->file, "-");
}

TEST(CommandLine, OptionsBelongToTheSourceBeforeThem)
{
    const Options options = parse({"sweep", "a.csv", "--utc-offset", "+01:00", "--bin-frequency", "lower", "nmea",
                                   "b.log", "--date", "2026-11-21", "--fix-week-rollover", "bearings", "c.csv",
                                   "--strict", "--utc-offset", "-05:00", "-o", "d"});
    ASSERT_TRUE(of<SweepOptions>(options) && of<NmeaOptions>(options) && of<BearingsOptions>(options));
    EXPECT_THAT(of<SweepOptions>(options)->files, ElementsAre("a.csv"));
    EXPECT_EQ(of<SweepOptions>(options)->utcOffsetUs, 3'600'000'000);
    EXPECT_EQ(of<SweepOptions>(options)->binFrequency, "lower");
    EXPECT_FALSE(of<SweepOptions>(options)->strict);
    EXPECT_EQ(of<NmeaOptions>(options)->file, "b.log");
    EXPECT_EQ(of<NmeaOptions>(options)->firstDay, 20'778);
    EXPECT_TRUE(of<NmeaOptions>(options)->fixWeekRollover);
    EXPECT_FALSE(of<NmeaOptions>(options)->strict);
    EXPECT_TRUE(of<BearingsOptions>(options)->strict);
    EXPECT_EQ(of<BearingsOptions>(options)->utcOffsetUs, -18'000'000'000);
    EXPECT_EQ(options.output, "d");
    EXPECT_FALSE(of<SimOptions>(options));
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
    const std::map<std::string, double> seconds{{"90", 90}, {"1.5s", 1.5}, {"3min", 180}, {"2h", 7200}};
    for (const auto& [text, expected] : seconds) {
        EXPECT_EQ(of<SimOptions>(parse({"sim", "--duration", text}))->durationSeconds, expected) << text;
    }
}

TEST(CommandLine, NumbersHaveUnits)
{
#if defined(RECSTATION_HAS_IQ)
    const Options options =
        parse({"iq", "x", "--rate", "48k", "--centre", "145.5M", "--overlap", "50%", "--window", "hann"});
    EXPECT_EQ(of<IqOptions>(options)->rateHz, 48e3);
    EXPECT_EQ(of<IqOptions>(options)->centreHz, 145.5e6);
    EXPECT_EQ(of<IqOptions>(options)->overlapPercent, 50);
    EXPECT_EQ(of<IqOptions>(options)->window, RecStation::Window::Hann);
    for (const char* centre : {"1.4200 GHz", "1.42G", "1420MHz", "1420000kHz", "1.42e9", "1420000000 hz"}) {
        EXPECT_EQ(of<IqOptions>(parse({"iq", "x", "--centre", centre}))->centreHz, 1.42e9) << centre;
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

TEST(CommandLine, StartsReachBackToTheFirstSecondOf1970AndAreReadToTheMicrosecond)
{
    EXPECT_EQ(of<SimOptions>(parse({"sim", "--start", "1970-01-01T00:00:01Z"}))->startTime, 1'000'000U);
    EXPECT_EQ(of<FeedOptions>(parse({"feed", "--start", "1970-01-01T00:00:01Z"}))->startTime, 1'000'000U);
    EXPECT_EQ(of<SimOptions>(parse({"sim", "--start", "1970-01-02T02:00:00.000250+02:00"}))->startTime,
              86'400'000'250U);
    EXPECT_EQ(of<FeedOptions>(parse({"feed", "--start", "1970-01-02T00:00"}))->startTime, 86'400'000'000U);
}

TEST(CommandLine, SeedsAreWholeNumbersOf64Bits)
{
    EXPECT_EQ(of<SimOptions>(parse({"sim", "--seed", "18446744073709551615"}))->seed, 18'446'744'073'709'551'615U);
}

}  // namespace
}  // namespace RecStation
