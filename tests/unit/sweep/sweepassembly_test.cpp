// Rows put together to sweeps: channels, gaps and overlaps, and where the next sweep begins.
#include <cmath>
#include <vector>

#include <gmock/gmock.h>

#include "sources/sweep/sweepassembly.h"

namespace RecStation {
namespace {

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

TEST(SweepAssembly, ASweepHasNoMoreValuesThanAMapHasChannels)
{
    SweepAssembly assembly(false);
    SweepRow huge = row(0, 16'777'216, std::vector<float>(SweepRowParser::MostBins));
    assembly.add(huge);
    EXPECT_THROW(assembly.add(row(1e9, 1e9 + 1, {1})), LineError);
}

}  // namespace
}  // namespace RecStation
