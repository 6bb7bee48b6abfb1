// Emissions: random scenes whose emissions are known, and the rules one by one.
#include <numeric>
#include <random>

#include "analysis/emissiontracker.h"
#include "support/testing.h"

using namespace RecTool;

namespace {

constexpr double StepHz = 25e3;
constexpr double FirstHz = 400e6;
constexpr float Quiet = -100;
constexpr float Limit = -90;
constexpr float Missing = std::numeric_limits<float>::quiet_NaN();

/// Feeds sweeps of an even range to a tracker.
class Receiver {
public:
    explicit Receiver(std::size_t channels, const EmissionRules& rules = {})
        : m_thresholds(channels, Limit),
          m_tracker(rules, StepHz, [this](const Emission& one) { m_found.push_back(one); })
    {
        for (std::size_t i = 0; i < channels; ++i) {
            m_hz.push_back(FirstHz + StepHz * static_cast<double>(i));
        }
    }
    void sweep(double momentMs, const std::vector<float>& levels)
    {
        SweptLevels swept;
        swept.hz = m_hz;
        swept.levels = levels;
        swept.thresholds = m_thresholds;
        swept.momentMs = momentMs;
        swept.record.position = ++m_sweeps;
        m_tracker.add(swept);
    }
    /// A sweep in which these channels are on.
    void sweepOn(double momentMs, const std::vector<std::size_t>& channels, float level = -60)
    {
        std::vector<float> levels(m_hz.size(), Quiet);
        for (const std::size_t channel : channels) {
            levels[channel] = level;
        }
        sweep(momentMs, levels);
    }
    std::vector<Emission> end()
    {
        m_tracker.end();
        std::stable_sort(m_found.begin(), m_found.end(), [](const Emission& a, const Emission& b) {
            return std::pair(a.startMs, a.band.lowHz) < std::pair(b.startMs, b.band.lowHz);
        });
        return m_found;
    }

private:
    std::vector<double> m_hz;
    std::vector<float> m_thresholds;
    std::vector<Emission> m_found;
    EmissionTracker m_tracker;
    std::int64_t m_sweeps = 0;
};

std::vector<std::size_t> channelsFrom(std::size_t first, std::size_t count)
{
    std::vector<std::size_t> all(count);
    std::iota(all.begin(), all.end(), first);
    return all;
}

/// The channel in the middle of a band.
double middleChannel(const Emission& emission)
{
    return (emission.centreHz() - FirstHz) / StepHz;
}

/// A signal of a scene, in sweeps and channels; all of its channels have one level.
struct Signal {
    std::size_t firstSweep = 0;
    std::size_t lastSweep = 0;
    std::size_t firstChannel = 0;
    std::size_t channels = 1;
    float level = 0;
    std::vector<std::size_t> shownIn;  // sweeps: now and then it is off for one
};

constexpr double SweepMs = 200;
constexpr std::size_t Lanes = 6;
constexpr std::size_t LaneChannels = 16;

/// Signals one after the other in lanes of channels, far enough apart not to be one.
std::vector<Signal> randomScene(std::mt19937& random, std::size_t sweeps)
{
    std::vector<Signal> scene;
    for (std::size_t lane = 0; lane < Lanes; ++lane) {
        for (std::size_t sweep = random() % 20; sweep < sweeps; sweep += 7 + random() % 30) {  // off for over a second
            Signal signal;
            signal.firstSweep = sweep;
            signal.lastSweep = std::min(sweeps - 1, sweep + random() % 25);
            signal.channels = 1 + random() % 9;
            signal.firstChannel = lane * LaneChannels + random() % 4;
            signal.level = -80 + static_cast<float>(random() % 50);
            for (std::size_t at = signal.firstSweep; at <= signal.lastSweep; ++at) {
                const bool isEnd = at == signal.firstSweep || at == signal.lastSweep;
                if (isEnd || random() % 5 != 0 || signal.shownIn.back() + 3 < at) {
                    signal.shownIn.push_back(at);
                }
            }
            sweep = signal.lastSweep;
            scene.push_back(signal);
        }
    }
    std::stable_sort(scene.begin(), scene.end(), [](const Signal& a, const Signal& b) {
        return std::pair(a.firstSweep, a.firstChannel) < std::pair(b.firstSweep, b.firstChannel);
    });
    return scene;
}

}  // namespace

TEST(EmissionTrackerTest, TheSignalsOfRandomScenesAreFoundAsTheyAre)
{
    std::mt19937 random(3);
    for (int round = 0; round < 30; ++round) {
        constexpr std::size_t Sweeps = 200;
        const std::vector<Signal> scene = randomScene(random, Sweeps);
        Receiver receiver(Lanes * LaneChannels);
        for (std::size_t sweep = 0; sweep < Sweeps; ++sweep) {
            std::vector<float> levels(Lanes * LaneChannels, Quiet);
            for (const Signal& signal : scene) {
                if (std::binary_search(signal.shownIn.begin(), signal.shownIn.end(), sweep)) {
                    std::fill_n(levels.begin() + static_cast<std::ptrdiff_t>(signal.firstChannel), signal.channels,
                                signal.level);
                }
            }
            receiver.sweep(static_cast<double>(sweep) * SweepMs, levels);
        }
        const std::vector<Emission> found = receiver.end();
        ASSERT_EQ(found.size(), scene.size());
        for (std::size_t i = 0; i < scene.size(); ++i) {
            const Signal& signal = scene[i];
            EXPECT_EQ(found[i].startMs, static_cast<double>(signal.firstSweep) * SweepMs);
            EXPECT_EQ(found[i].stopMs, static_cast<double>(signal.lastSweep) * SweepMs);
            EXPECT_EQ(found[i].sweeps, signal.shownIn.size());
            EXPECT_EQ(found[i].first.position, static_cast<std::int64_t>(signal.firstSweep) + 1);
            EXPECT_EQ(found[i].last.position, static_cast<std::int64_t>(signal.lastSweep) + 1);
            EXPECT_EQ(found[i].highest, signal.level);
            EXPECT_NEAR(found[i].mean, signal.level, 1e-3);
            const auto channels = static_cast<double>(signal.channels);
            EXPECT_NEAR(middleChannel(found[i]), static_cast<double>(signal.firstChannel) + (channels - 1) / 2, 1e-6);
            EXPECT_NEAR(found[i].band.width(), 0.99 * channels * StepHz, 1e-2);
        }
    }
}

TEST(EmissionTrackerTest, WhatDriftsIsOneAndWhatHopsIsSeveral)
{
    Receiver drifting(60);
    for (std::size_t i = 0; i < 50; ++i) {
        drifting.sweepOn(static_cast<double>(i) * 100, {i, i + 1});
    }
    const std::vector<Emission> drift = drifting.end();
    ASSERT_EQ(drift.size(), 1U);
    EXPECT_EQ(drift[0].sweeps, 50U);
    EXPECT_NEAR(middleChannel(drift[0]), 25, 0.01);

    Receiver hopping(60);
    for (std::size_t i = 0; i < 10; ++i) {
        hopping.sweepOn(static_cast<double>(i) * 100, {i * 5, i * 5 + 1});
    }
    EXPECT_EQ(hopping.end().size(), 10U);
}

TEST(EmissionTrackerTest, ItMayBeOffForTheGapAndUnseenForLonger)
{
    EmissionRules rules;
    rules.gapMs = 1000;
    rules.unseenMs = 5000;
    const std::vector<float> unseen(10, Missing);
    for (const auto& [backMs, isMeasured, emissions] :
         {std::tuple(1000., true, 1U), {1001., true, 2U}, {5000., false, 1U}, {5001., false, 2U}}) {
        Receiver receiver(10, rules);
        receiver.sweepOn(0, {4});
        isMeasured ? receiver.sweepOn(500, {}) : receiver.sweep(500, unseen);
        receiver.sweepOn(backMs, {4});
        EXPECT_EQ(receiver.end().size(), emissions) << backMs;
    }
}

TEST(EmissionTrackerTest, NeighboursThatTouchForAWhileStayTwoAndOneWithAHoleStaysOne)
{
    Receiver receiver(40);
    for (std::size_t i = 0; i < 30; ++i) {
        const bool isTouching = i % 4 == 3;
        std::vector<std::size_t> on = channelsFrom(5, isTouching ? 8 : 4);  // 5 to 8, and 9 to 12 while they touch
        for (const std::size_t channel : channelsFrom(12, 4)) {
            on.push_back(channel);
        }
        for (const std::size_t channel : i % 3 == 2 ? channelsFrom(22, 2) : channelsFrom(22, 8)) {
            on.push_back(channel);
        }
        if (i % 3 == 2) {
            on.insert(on.end(), {28, 29});
        }
        receiver.sweepOn(static_cast<double>(i) * 100, on);
    }
    const std::vector<Emission> found = receiver.end();
    ASSERT_EQ(found.size(), 3U);
    for (const Emission& emission : found) {
        EXPECT_EQ(emission.sweeps, 30U);
    }
    EXPECT_NEAR(middleChannel(found[2]), 25.5, 0.01);
}

TEST(EmissionTrackerTest, AnImpulseOverTheBandGathersNothing)
{
    Receiver receiver(200);
    for (std::size_t i = 0; i < 20; ++i) {
        const double momentMs = static_cast<double>(i) * 100;
        using Channels = std::vector<std::size_t>;
        receiver.sweepOn(momentMs, i == 10 ? channelsFrom(0, 200) : i > 10 ? Channels{100, 150} : Channels{100});
    }
    const std::vector<Emission> found = receiver.end();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].sweeps, 20U);
    EXPECT_EQ(found[1].startMs, 1100);
    EXPECT_NEAR(middleChannel(found[1]), 150, 0.01);
}

TEST(EmissionTrackerTest, ShortOnesAreLeftOutWhereTheRulesSaySo)
{
    EmissionRules rules;
    rules.minDurationMs = 300;
    rules.minSweeps = 3;
    Receiver receiver(30, rules);
    receiver.sweepOn(0, {1, 10, 20});
    receiver.sweepOn(100, {1});
    receiver.sweepOn(200, {1, 20});
    receiver.sweepOn(300, {10, 20});
    const std::vector<Emission> found = receiver.end();
    ASSERT_EQ(found.size(), 1U);  // 1 is too short, 10 is in two sweeps
    EXPECT_NEAR(middleChannel(found[0]), 20, 0.01);
}

TEST(OccupiedBandTest, ItHoldsThePartOfThePowerAsAddingUpSmallPiecesTells)
{
    std::mt19937 random(4);
    for (int round = 0; round < 50; ++round) {
        std::vector<ChannelPower> channels;
        for (std::size_t i = 0; i < 1 + random() % 12; ++i) {
            channels.push_back({1000 + 10 * static_cast<double>(i), 1 + static_cast<double>(random() % 1000)});
        }
        constexpr int Pieces = 10'000;
        double all = 0;
        std::for_each(channels.begin(), channels.end(), [&](const ChannelPower& one) { all += one.power; });
        double low = 0;
        double high = 0;
        double sum = 0;
        for (const ChannelPower& channel : channels) {
            for (int piece = 0; piece < Pieces; ++piece) {
                const double at = channel.hz - 5 + 10. * piece / Pieces;
                sum += channel.power / Pieces;
                low = sum <= all * 0.05 ? at : low;
                high = sum <= all * 0.95 ? at : high;
            }
        }
        const FrequencySpan band = RecTool::bandOfPower(channels, 10, 0.9);
        EXPECT_NEAR(band.lowHz, low == 0 ? 995 : low, 0.01);
        EXPECT_NEAR(band.highHz, high, 0.01);
    }
}

TEST(OccupiedBandTest, WithinSoManyDecibelsOfTheHighest)
{
    const std::vector<ChannelPower> channels = {{100, 0.5}, {110, 1}, {120, 100}, {130, 5}, {140, 11}, {150, 0.1}};
    const FrequencySpan band = RecTool::bandWithin(channels, 10, 20);
    EXPECT_EQ(band.lowHz, 105);
    EXPECT_EQ(band.highHz, 145);
}
