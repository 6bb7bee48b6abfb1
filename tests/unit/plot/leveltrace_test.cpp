// Level against frequency: extremes, powers and percentiles against plain arithmetic over all levels.
#include <random>

#include "analysis/leveltrace.h"
#include "support/testing.h"

using namespace RecTool;
using values::ChannelRange;

namespace {

constexpr float NotMeasured = std::numeric_limits<float>::quiet_NaN();

struct Sweep {
    ChannelRange range;
    std::vector<float> levels;
};

/// As numpy has it: between two levels in proportion.
double percentileOf(std::vector<float> levels, double fraction)
{
    std::sort(levels.begin(), levels.end());
    const double place = static_cast<double>(levels.size() - 1) * fraction;
    const auto low = static_cast<std::size_t>(place);
    const std::size_t high = std::min(low + 1, levels.size() - 1);
    return double{levels[low]} + (double{levels[high]} - double{levels[low]}) * (place - static_cast<double>(low));
}

std::vector<Sweep> randomSweeps(std::mt19937& random)
{
    const std::vector<ChannelRange> ranges = {ChannelRange::Even(100e6, 25e3, 7), ChannelRange::Even(100.05e6, 25e3, 5),
                                              ChannelRange::List({99e6, 100.1e6, 433.92e6})};
    std::vector<Sweep> sweeps;
    for (std::size_t i = 0; i < 1 + random() % 60; ++i) {
        Sweep& sweep = sweeps.emplace_back();
        sweep.range = ranges[random() % ranges.size()];
        for (std::size_t channel = 0; channel < sweep.range.size(); ++channel) {
            const bool isLow = random() % 2 == 0;
            const auto hundredths = static_cast<float>(random() % (isLow ? 300 : 12'000));
            sweep.levels.push_back(random() % 5 == 0 ? NotMeasured : -120 + hundredths / 100);
        }
    }
    return sweeps;
}

std::vector<ChannelLevels> traced(const std::vector<Sweep>& sweeps, LevelTrace& trace)
{
    for (std::size_t i = 0; i < sweeps.size(); ++i) {
        EXPECT_TRUE(trace.add(sweeps[i].range, sweeps[i].levels, static_cast<double>(i)));
    }
    trace.beginRanking();
    for (const Sweep& sweep : sweeps) {
        trace.rank(sweep.range, sweep.levels);
    }
    return trace.channels();
}

}  // namespace

TEST(LevelTrace, FiguresAreThoseOfAllLevelsOfAChannel)
{
    constexpr double Near = 2e-3;  // levels are counted in hundredths, which floats nearly are
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const std::vector<Sweep> sweeps = randomSweeps(random);
        const std::vector<double> fractions = {0.5, 0, 1, 0.9, 0.137};
        LevelTrace trace(std::nullopt, fractions);
        const std::vector<ChannelLevels> channels = traced(sweeps, trace);
        std::map<double, std::vector<float>> levelsOf;
        for (const Sweep& sweep : sweeps) {
            for (std::size_t channel = 0; channel < sweep.levels.size(); ++channel) {
                if (!std::isnan(sweep.levels[channel])) {
                    levelsOf[sweep.range.frequencyHz(channel)].push_back(sweep.levels[channel]);
                }
            }
        }
        ASSERT_EQ(channels.size(), levelsOf.size());
        auto expected = levelsOf.begin();
        for (const ChannelLevels& channel : channels) {
            const std::vector<float>& levels = expected->second;
            EXPECT_EQ(channel.hz, (expected++)->first);
            EXPECT_EQ(channel.sweeps, levels.size());
            EXPECT_EQ(channel.highest, *std::max_element(levels.begin(), levels.end()));
            EXPECT_EQ(channel.lowest, *std::min_element(levels.begin(), levels.end()));
            double power = 0;
            std::for_each(levels.begin(), levels.end(),
                          [&](float level) { power += std::pow(10.0, double{level} / 10); });
            EXPECT_NEAR(channel.mean, 10 * std::log10(power / static_cast<double>(levels.size())), Near);
            for (std::size_t i = 0; i < fractions.size(); ++i) {
                EXPECT_NEAR(channel.percentiles[i], percentileOf(levels, fractions[i]), Near) << seed;
            }
        }
    }
}

TEST(LevelTrace, AnExtremeNamesTheFirstSweepThatItComesFrom)
{
    LevelTrace trace(std::nullopt, {});
    const ChannelRange range = ChannelRange::Even(100e6, 25e3, 1);
    for (const auto& [momentMs, level] :
         std::vector<std::pair<double, float>>{{5, -90}, {7, -80}, {9, -80}, {11, -99}}) {
        EXPECT_TRUE(trace.add(range, std::vector<float>{level}, momentMs));
    }
    ASSERT_EQ(trace.channels().size(), 1U);
    EXPECT_EQ(trace.channels()[0].highestMs, 7);
    EXPECT_EQ(trace.channels()[0].lowestMs, 11);
    EXPECT_EQ(trace.sweeps(), 4U);
    EXPECT_EQ(trace.firstMs(), 5);
    EXPECT_EQ(trace.lastMs(), 11);
}

TEST(LevelTrace, TakesOnlyTheChannelsOfASpan)
{
    LevelTrace trace(FrequencySpan{100.025e6, 100.05e6}, {});
    EXPECT_TRUE(trace.add(ChannelRange::Even(100e6, 25e3, 4), std::vector<float>{1, 2, 3, 4}, 0));
    ASSERT_EQ(trace.channels().size(), 2U);
    EXPECT_EQ(trace.channels()[0].hz, 100.025e6);
    EXPECT_EQ(trace.channels()[1].highest, 3);
}

TEST(LevelTrace, WhatIsNoFiniteNumberWasNotMeasured)
{
    LevelTrace trace(std::nullopt, {0.5});
    const Sweep sweep{ChannelRange::Even(100e6, 25e3, 3),
                      {std::numeric_limits<float>::infinity(), NotMeasured, 2000.5F}};
    const std::vector<ChannelLevels> channels = traced({sweep}, trace);
    ASSERT_EQ(channels.size(), 1U);
    EXPECT_EQ(channels[0].highest, 2000.5F);
    EXPECT_NEAR(channels[0].mean, 2000.5, 1e-9);
}

TEST(LevelTrace, MoreChannelsThanItTakesAreRefused)
{
    LevelTrace trace(std::nullopt, {0.5});
    const ChannelRange range = ChannelRange::Even(0, 1, LevelTrace::MostRankedChannels + 1);
    EXPECT_FALSE(trace.add(range, std::vector<float>(range.size(), -100.0F), 0));
}
