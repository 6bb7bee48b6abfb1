// The source "rtltcp" against a server with tones on the air: spectra, hops, losses, hostile servers.
#include <values/maps.h>
#include <values/tree.h>
#include <values/value.h>

#include "input/badlines.h"
#include "iqspectra/receiver.h"
#include "iqtesting.h"
#include "program.h"
#include "rtltcpserver.h"
#include "sources/rtltcp/rtltcpreceiver.h"
#include "support/problem.h"

namespace {

using namespace RecStation;
using RtlTcpTesting::Air;
using RtlTcpTesting::Server;
using namespace testing;
using ReceivedLevels = values::FastValueMap<float, values::levelHandler>;

constexpr double RateHz = 1'024'000;
constexpr double QuarterDb = -12.04;  // of a tone of a quarter of full scale

class RtlTcp : public testing::Test {
protected:
    RtlTcp()
    {
        m_options.rateHz = RateHz;
        m_options.centreHz = 100e6;
    }
    void serve(const Air& air) { m_server = std::make_unique<Server>(air); }
    void prepare()
    {
        m_source.reset();
        if (m_server) {
            m_options.address = {"127.0.0.1", m_server->port()};
        }
        RecStation::StationHooks hooks;
        hooks.report = [this](const QString& sentence) { m_said.push_back(sentence.toStdString()); };
        m_source = RecStation::makeRtlTcpSource(
            m_options, {.configuration = m_configuration, .hooks = hooks, .splitGapUs = std::nullopt});
        m_source->prepare();
    }
    void step(int times = 1)
    {
        for (int i = 0; i < times; ++i) {
            const auto time = m_source->nextTime();
            ASSERT_TRUE(time.has_value());
            EXPECT_GE(*time, m_time);
            m_time = *time;
            m_source->step();
        }
    }
    void stepToGap()
    {
        while (!std::isnan(levelAt(100.25e6))) {
            step(1);
        }
    }
    [[nodiscard]] const ReceivedLevels& spectrum() const
    {
        return dynamic_cast<const ReceivedLevels&>(*m_tree.Find("/Devices/Rx1/Scn/RfSpectrum"));
    }
    [[nodiscard]] double number(const char* path) const
    {
        return dynamic_cast<const values::ValueNumeric<double>&>(*m_tree.Find(QString::fromLatin1(path))).GetValue();
    }
    [[nodiscard]] double levelAt(double hz) const
    {
        const auto cells = spectrum().GetCells();
        const auto& range = spectrum().GetChannelRange();
        std::size_t nearest = 0;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (std::abs(range.frequencyHz(i) - hz) < std::abs(range.frequencyHz(nearest) - hz)) {
                nearest = i;
            }
        }
        return static_cast<double>(cells[nearest]);
    }
    std::string problem()
    {
        return TestSupport::problemOf<RecStation::UsageError>([this] { prepare(); });
    }

    values::Tree m_tree;
    RecStation::Configuration m_configuration =
        RecStation::loadConfigurationText(RecStation::defaultConfigurationText("."), "built in");
    RecStation::RtlTcpOptions m_options;
    std::unique_ptr<Server> m_server;
    std::unique_ptr<RecStation::Source> m_source;
    std::vector<std::string> m_said;
    unsigned long long m_time = 0;
};

TEST_F(RtlTcp, ATonesSpectrumHasItsFrequencyAndLevel)
{
    serve({.tonesHz = {100.25e6}, .pace = 8});
    m_options.gainDb = 28.5;
    prepare();
    EXPECT_TRUE(std::isnan(number("/LEVEL")));
    step(3);
    EXPECT_EQ(spectrum().GetCells().size(), 1024U);
    EXPECT_NEAR(levelAt(100.25e6), QuarterDb, 0.1);
    EXPECT_LT(levelAt(99.75e6), -60);
    EXPECT_NEAR(number("/LEVEL"), QuarterDb, 0.1);
    EXPECT_THAT(m_server->commands(), ElementsAre(Pair(2, 1'024'000), Pair(3, 1), Pair(4, 285), Pair(1, 100'000'000)));
    EXPECT_EQ(m_source->report().used, 3U);
    EXPECT_EQ(m_source->report().lost, 0U);
}

TEST_F(RtlTcp, ASpectrumIsThatOfTheSamplesByTheDefinition)
{
    // A period is four samples, so that it does not matter where a spectrum begins.
    serve({.tonesHz = {100.256e6}, .pace = 8});
    prepare();
    step(2);
    const auto samples = IqTesting::fromUnsignedBytes(
        IqTesting::asUnsignedBytes(IqTesting::tone(1024, 256, 1024, 0.25, RtlTcpTesting::TonePhase)));
    const auto expected = IqTesting::spectrumByDefinition(samples, 0, 1024, 1024, 1, IqTesting::flatTopTerms());
    const auto cells = spectrum().GetCells();
    ASSERT_EQ(cells.size(), expected.size());
    constexpr double Noise = -100;  // of the computation
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(std::max(static_cast<double>(cells[i]), Noise), std::max(expected[i], Noise), 0.01) << i;
    }
}

TEST_F(RtlTcp, AnotherServerIsToldAndTriedAgain)
{
    serve({.tonesHz = {100.25e6}, .pace = 8, .wrongGreetings = 1});
    prepare();
    step(1);
    EXPECT_NEAR(levelAt(100.25e6), QuarterDb, 0.1);
    EXPECT_THAT(m_said, ElementsAre(HasSubstr("it is no rtl_tcp server: it does not begin with RTL0; trying again"),
                                    HasSubstr("connected")));
}

TEST_F(RtlTcp, HopsThatJoinMakeOnePanoramaWithoutSamplesOfTheFrequencyBefore)
{
    serve({.tonesHz = {100.25e6, 101.1e6, 102.3e6}, .pace = 8});
    m_options.centreHz.reset();
    m_options.hopHz = {100e6, 102.048e6, 101.024e6};
    m_options.dwellSeconds = 0.01;
    prepare();
    step(1);
    EXPECT_NEAR(levelAt(100.25e6), QuarterDb, 0.2);
    EXPECT_TRUE(std::isnan(levelAt(101.1e6)));
    for (int round = 0; round < 3; ++round) {
        step(3);
        EXPECT_EQ(spectrum().GetChannelRange(), values::ChannelRange::Even(100e6 - RateHz / 2, 1000, 3072));
        for (const double toneHz : {100.25e6, 101.1e6, 102.3e6}) {
            EXPECT_NEAR(levelAt(toneHz), QuarterDb, 0.2) << toneHz;
        }
        // Samples that are not of their band would show these tones as far from the centre of another.
        for (const double elsewhereHz : {101.274e6, 102.298e6 - 0.4e6, 100.076e6, 101.1e6 + 0.3e6}) {
            EXPECT_LT(levelAt(elsewhereHz), -50) << elsewhereHz;
        }
    }
    EXPECT_EQ(m_tree.Find("/FREQUENCY"), nullptr);
}

TEST_F(RtlTcp, ALostServerLeavesAGapAndIsTriedAgain)
{
    serve({.tonesHz = {100.25e6}, .pace = 8});
    prepare();
    step(2);
    const std::uint16_t port = m_server->port();
    m_server.reset();
    stepToGap();
    EXPECT_TRUE(std::isnan(number("/LEVEL")));
    EXPECT_EQ(number("/FREQUENCY"), 100e6);
    m_server = std::make_unique<Server>(Air{.tonesHz = {100.25e6}, .pace = 8}, port);
    step(1);
    EXPECT_NEAR(levelAt(100.25e6), QuarterDb, 0.1);
    EXPECT_EQ(m_source->report().reconnects, 1U);
    EXPECT_THAT(m_said, ElementsAre(HasSubstr("connection lost: "), HasSubstr("connected again")));
    m_server->dropClient();
    stepToGap();
    step(1);
    EXPECT_EQ(m_source->report().reconnects, 2U);
    EXPECT_EQ(m_server->clients(), 2);
}

TEST_F(RtlTcp, OptionsThatDoNotGoTogetherAreRefused)
{
    m_options.centreHz.reset();
    EXPECT_EQ(problem(), "rtltcp: the centre frequency is not known: give --centre, or several with --hop");
    m_options.hopHz = {100e6, 101e6, 100e6};
    EXPECT_EQ(problem(), "rtltcp: --hop names a frequency twice");
    m_options.hopHz = {100e6, 101e6};
    m_options.ifSpectrum = true;
    EXPECT_THAT(problem(), HasSubstr("--hop makes a panorama"));
    m_options.ifSpectrum = false;
    m_options.average = 3;
    m_options.dwellSeconds = 1;
    EXPECT_THAT(problem(), HasSubstr("--dwell and --average exclude each other"));
    m_options.average = 0;
    m_options.centreHz = 1e6;
    EXPECT_THAT(problem(), HasSubstr("--centre and --hop exclude each other"));
    m_options.hopHz.clear();
    EXPECT_THAT(problem(), HasSubstr("--dwell says how long"));
    m_options.dwellSeconds.reset();
    m_options.centreHz = 5e9;
    EXPECT_THAT(problem(), HasSubstr("above 4.294967295 GHz"));
}

TEST(RtlTcpProtocol, AGreetingIsTwelveBytesOfTheRightBeginning)
{
    using namespace std::string_literals;
    EXPECT_TRUE(RecStation::isRtlTcpGreeting("RTL0\0\0\0\5\0\0\1\x1d"s));
    for (const std::string& bytes : {""s, "RTL0"s, "RTL1\0\0\0\5\0\0\1\x1d"s, "RTL0\0\0\0\5\0\0\1\x1d\0"s}) {
        EXPECT_FALSE(RecStation::isRtlTcpGreeting(bytes));
    }
    EXPECT_THAT(RecStation::rtlTcpBytes(RecStation::RtlTcpCommand::Frequency, 0x01020304), ElementsAre(1, 1, 2, 3, 4));
}

TEST(Hops, BandsThatOverlapAreCutInTheMiddle)
{
    const auto layout = layOutHops({102e6, 101e6}, 2e6, 1000);
    EXPECT_EQ(layout.channels, values::ChannelRange::Even(100e6, 2000, 1500));
    EXPECT_EQ(layout.lowHz, 100e6);
    EXPECT_EQ(layout.highHz, 103e6);
    EXPECT_THAT(layout.parts, ElementsAre(FieldsAre(750U, 250U, 750U), FieldsAre(0U, 0U, 750U)));
}

TEST(Hops, BandsThatDoNotJoinOrFallOnNoGridMakeAListOfChannels)
{
    const auto apart = layOutHops({100e6, 110e6}, 2e6, 16);
    ASSERT_TRUE(apart.channels.isList());
    EXPECT_EQ(apart.channels.size(), 32U);
    EXPECT_EQ(apart.channels.channelsHz[15], 99e6 + 15 * 125e3);
    EXPECT_EQ(apart.channels.channelsHz[16], 109e6);
    const auto offGrid = layOutHops({100e6, 101.95e6}, 2e6, 16);
    EXPECT_TRUE(offGrid.channels.isList());
    EXPECT_TRUE(std::is_sorted(offGrid.channels.channelsHz.begin(), offGrid.channels.channelsHz.end()));
}

class SampleWatchTest : public testing::Test {
protected:
    using seconds = std::chrono::seconds;

    SampleWatchTest() { watch.begin(start); }

    const SampleWatch::Time start;
    SampleWatch watch{1000};
};

TEST_F(SampleWatchTest, FewerSamplesThanTheRatePromisesAreMissing)
{
    const auto after = [&](int second, std::uint64_t samples) {
        watch.add(samples);
        return watch.missing(start + seconds(second));
    };
    EXPECT_EQ(after(5, 4000), std::nullopt);
    EXPECT_EQ(after(10, 5900), std::nullopt);
    EXPECT_EQ(after(15, 3000), std::nullopt) << "so far late";
    EXPECT_EQ(after(20, 4000), 2000U) << "as many as at the best moment of these ten seconds";
    EXPECT_EQ(after(25, 5000), std::nullopt);
    EXPECT_EQ(after(30, 5000), 1000U);
    EXPECT_EQ(after(40, 10'000), std::nullopt) << "none more";
}

TEST_F(SampleWatchTest, SamplesThatComeLateAreNotMissing)
{
    std::uint64_t told = 0;
    for (int second = 1; second <= 100; ++second) {
        const bool stuck = second % 10 == 9 || second % 10 == 0;  // at the end of all ten seconds
        watch.add(stuck ? 0 : second % 10 == 1 && second > 1 ? 3000 : 1000);
        told += watch.missing(start + seconds(second)).value_or(0);
    }
    EXPECT_EQ(told, 0U);
}

// As a receiver that does not have the rate, and keeps another one.
TEST_F(SampleWatchTest, MoreSamplesThanTheRatePromisesAreAnotherRate)
{
    watch.add(10'000);
    EXPECT_EQ(watch.higherRate(start + seconds(5)), std::nullopt) << "too early to say";
    EXPECT_EQ(watch.higherRate(start + seconds(10)), std::nullopt);
    watch.add(5'000);
    EXPECT_EQ(watch.higherRate(start + seconds(20)), std::nullopt);
    watch.add(15'000);
    EXPECT_EQ(watch.higherRate(start + seconds(30)), std::nullopt) << "what was late is there";
    watch.add(34'000);
    EXPECT_EQ(watch.higherRate(start + seconds(40)), 1600.0);
    watch.add(20'000);
    EXPECT_EQ(watch.higherRate(start + seconds(50)), std::nullopt) << "told once";
    watch.begin(start + seconds(50));
    watch.add(20'000);
    EXPECT_EQ(watch.higherRate(start + seconds(60)), 2000.0);
}

}  // namespace
