// Rows put together to sweeps: channels, gaps and overlaps, and where the next sweep begins.
#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sources/sweep/sweepassembly.h"

namespace recstation {
namespace {

using testing::ElementsAre;
using testing::IsNan;
using values::ChannelRange;

SweepRow row(double lowHz, double highHz, std::vector<float> levels, unsigned long long time = 1)
{
    return {time, lowHz, highHz, std::move(levels)};
}

Sweep taken(SweepAssembly& assembly)
{
    Sweep sweep;
    assembly.take(sweep);
    return sweep;
}

TEST(SweepAssembly, AValuesChannelIsTheCentreOfItsBin)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 140, {1, 2, 3, 4}));
    const Sweep sweep = taken(assembly);
    EXPECT_TRUE(sweep.newLayout);
    EXPECT_EQ(assembly.layout().range(), ChannelRange::Even(105, 10, 4));
    EXPECT_THAT(sweep.cells, ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(assembly.layout().lowHz(), 100);
    EXPECT_EQ(assembly.layout().highHz(), 140);
}

TEST(SweepAssembly, AValuesChannelCanBeTheLowerEdgeOfItsBin)
{
    SweepAssembly assembly(true);
    assembly.add(row(100, 140, {1, 2, 3, 4}));
    static_cast<void>(taken(assembly));
    EXPECT_EQ(assembly.layout().range(), ChannelRange::Even(100, 10, 4));
}

TEST(SweepAssembly, RowsOutOfOrderArePutTogetherByFrequency)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 120, {1, 2}, 7));
    assembly.add(row(140, 160, {5, 6}, 7));
    assembly.add(row(120, 140, {3, 4}, 8));
    const Sweep sweep = taken(assembly);
    EXPECT_EQ(sweep.time, 7U);
    EXPECT_EQ(assembly.layout().range(), ChannelRange::Even(105, 10, 6));
    EXPECT_THAT(sweep.cells, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_TRUE(assembly.empty());
}

TEST(SweepAssembly, AGapOnTheGridIsAChannelWithoutMeasurement)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 120, {1, 2}));
    assembly.add(row(140, 160, {5, 6}));
    EXPECT_THAT(taken(assembly).cells, ElementsAre(1, 2, IsNan(), IsNan(), 5, 6));
    EXPECT_EQ(assembly.layout().range(), ChannelRange::Even(105, 10, 6));
}

TEST(SweepAssembly, BinsOffTheGridMakeAListOfChannels)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 120, {1, 2}));
    assembly.add(row(143, 163, {5, 6}));
    EXPECT_THAT(taken(assembly).cells, ElementsAre(1, 2, 5, 6));
    EXPECT_EQ(assembly.layout().range(), ChannelRange::List({105, 115, 148, 158}));
    EXPECT_EQ(assembly.layout().stepHz(), 10);
}

TEST(SweepAssembly, BinsOfTwoWidthsMakeAListOfChannels)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 120, {1, 2}));
    assembly.add(row(120, 140, {3, 4, 5, 6}));
    EXPECT_THAT(taken(assembly).cells, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(assembly.layout().range(), ChannelRange::List({105, 115, 122.5, 127.5, 132.5, 137.5}));
}

TEST(SweepAssembly, AGapMuchWiderThanTheRowsMakesAListOfChannels)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 120, {1, 2}));
    assembly.add(row(1'000'000'000, 1'000'000'020, {5, 6}));
    EXPECT_THAT(taken(assembly).cells, ElementsAre(1, 2, 5, 6));
    EXPECT_TRUE(assembly.layout().range().isList());
}

TEST(SweepAssembly, EdgesRoundedToHertzStillLieOnOneGrid)
{
    // Seven hops of 2.8 MHz whose edges are whole Hz, as programs print them.
    SweepAssembly assembly(false);
    constexpr std::size_t bins = 409;
    constexpr double hopHz = 2'793'171.4;
    for (int hop = 0; hop < 7; ++hop) {
        assembly.add(row(std::floor(88e6 + hop * hopHz), std::floor(88e6 + (hop + 1) * hopHz),
                         std::vector<float>(bins, static_cast<float>(hop))));
    }
    const Sweep sweep = taken(assembly);
    const ChannelRange& range = assembly.layout().range();
    ASSERT_FALSE(range.isList());
    ASSERT_EQ(range.size(), 7 * bins);
    for (std::size_t channel = 0; channel < range.size(); ++channel) {
        EXPECT_NEAR(range.frequencyHz(channel), 88e6 + (static_cast<double>(channel) + 0.5) * hopHz / bins, 2);
        EXPECT_EQ(sweep.cells[channel], static_cast<float>(channel / bins));
    }
}

TEST(SweepAssembly, WhereRowsOverlapTheHigherRowsValuesAreLeftOut)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 140, {1, 2, 3, 4}));
    const SweepRow higher = row(130, 170, {40, 5, 6, 7});
    EXPECT_FALSE(assembly.beginsNext(higher));
    assembly.add(higher);
    EXPECT_THAT(taken(assembly).cells, ElementsAre(1, 2, 3, 4, 5, 6, 7));
    EXPECT_EQ(assembly.layout().range(), ChannelRange::Even(105, 10, 7));
}

TEST(SweepAssembly, ChannelsAscendWhereRowsOfDifferentBinsOverlap)
{
    for (const bool lowerEdges : {false, true}) {
        SweepAssembly assembly(lowerEdges);
        assembly.add(row(100, 140, {1, 2, 3, 4, 5, 6, 7, 8}));
        assembly.add(row(136, 176, {5, 6, 7, 8}));
        static_cast<void>(taken(assembly));
        const std::vector<double>& channels = assembly.layout().range().channelsHz;
        ASSERT_FALSE(channels.empty());
        EXPECT_TRUE(std::is_sorted(channels.begin(), channels.end(), std::less_equal<>()));
    }
}

TEST(SweepAssembly, ARangeThatComesAgainBeginsTheNextSweep)
{
    SweepAssembly assembly(false);
    EXPECT_FALSE(assembly.beginsNext(row(100, 120, {1, 2})));
    assembly.add(row(100, 120, {1, 2}));
    assembly.add(row(140, 160, {5, 6}));
    EXPECT_TRUE(assembly.beginsNext(row(100, 120, {1, 2})));
    EXPECT_TRUE(assembly.beginsNext(row(140, 160, {1, 2})));
    EXPECT_TRUE(assembly.beginsNext(row(90, 200, {1})));   // covers one
    EXPECT_TRUE(assembly.beginsNext(row(109, 111, {1})));  // within one
    EXPECT_FALSE(assembly.beginsNext(row(120, 140, {3, 4})));
    EXPECT_FALSE(assembly.beginsNext(row(160, 180, {3, 4})));
}

TEST(SweepAssembly, ARowBelowAllBeginsTheNextSweepUnlessItsTimeIsTheSame)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 120, {1, 2}, 7));
    EXPECT_TRUE(assembly.beginsNext(row(80, 100, {1, 2}, 8)));
    EXPECT_FALSE(assembly.beginsNext(row(80, 100, {1, 2}, 7)));
}

TEST(SweepAssembly, AfterTwoSweepsOfTheSameRowsTheLastRowCompletesASweep)
{
    SweepAssembly assembly(false);
    for (int sweep = 0; sweep < 3; ++sweep) {
        assembly.add(row(100, 120, {1, 2}));
        EXPECT_FALSE(assembly.complete());
        assembly.add(row(120, 140, {1, 2}));
        EXPECT_EQ(assembly.complete(), sweep == 2);
        EXPECT_EQ(taken(assembly).newLayout, sweep == 0);
    }
    assembly.add(row(200, 220, {1, 2}));
    assembly.add(row(220, 240, {1, 2}));
    EXPECT_FALSE(assembly.complete());
    EXPECT_TRUE(taken(assembly).newLayout);
}

TEST(SweepAssembly, RowsThatWereLostLeaveTheirChannelsWithoutMeasurement)
{
    SweepAssembly assembly(false);
    assembly.add(row(100, 120, {1, 2}));
    assembly.add(row(120, 140, {3, 4}));
    static_cast<void>(taken(assembly));
    assembly.add(row(120, 140, {30, 40}));
    assembly.noteLoss();
    const Sweep lossy = taken(assembly);
    EXPECT_FALSE(lossy.newLayout);
    EXPECT_THAT(lossy.cells, ElementsAre(IsNan(), IsNan(), 30, 40));
    assembly.add(row(120, 140, {30, 40}));
    const Sweep smaller = taken(assembly);
    EXPECT_TRUE(smaller.newLayout);
    EXPECT_THAT(smaller.cells, ElementsAre(30, 40));
}

TEST(SweepAssembly, ASweepHasNoMoreValuesThanAMapHasChannels)
{
    SweepAssembly assembly(false);
    SweepRow huge = row(0, 16'777'216, std::vector<float>(SweepRowParser::mostBins));
    assembly.add(huge);
    EXPECT_THROW(assembly.add(row(1e9, 1e9 + 1, {1})), LineError);
}

}  // namespace
}  // namespace recstation
