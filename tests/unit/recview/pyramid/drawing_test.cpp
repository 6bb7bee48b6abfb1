// Pictures of overviews: of single sweeps, of blocks, while they grow.
#include <pyramid/units.h>
#include "madeoverview.h"

namespace RecViewTests {
namespace {

using namespace RecView;

/// Sweeps of 64 channels, four a second, with a burst of one cell in one of them.
std::shared_ptr<MemoryRecords> withBurst(std::size_t sweeps, std::size_t burstSweep, float burst)
{
    auto records = std::make_shared<MemoryRecords>();
    const auto range = values::ChannelRange::Even(100e6, 1e6, 64);
    std::vector<float> levels(64, -100);
    for (std::size_t i = 0; i < sweeps; ++i) {
        levels[40] = i == burstSweep ? burst : -100;
        records->add(1, 250 * (i + 1), levelsText(range, levels, 0, i == 0));
    }
    return records;
}

TEST(Pictures, ABurstOfOneCellShowsAtItsLevelAtEveryZoom)
{
    constexpr std::size_t Sweeps = 20'000;
    constexpr float Burst = -31.37F;
    const auto records = withBurst(Sweeps, 12'345, Burst);
    MadeOverview made(records);
    const Overview& overview = made.finish();
    const double burstMs = Start + 250.0 * 12'346;
    for (double width = 250.0 * Sweeps; width > 500; width /= 2.7) {
        for (const std::size_t rows : {1U, 7U, 600U}) {
            const View view{1, burstMs - width / 3, burstMs + width / 2, 99e6, 165e6, 40, rows, Combine::Max, false};
            const Grid grid = drawn(overview, view);
            EXPECT_EQ(grid.highest(), Burst) << width << " ms, " << rows << " rows";
            EXPECT_THAT(grid.levels(), testing::Contains(Burst));
        }
    }
}

TEST(Pictures, OfFewSweepsAreMadeOfThemOneByOne)
{
    const auto records = RandomRecording(11).make(400);
    MadeOverview made(records);
    const Overview& overview = made.finish();
    const std::vector<PlainSweep> sweeps = plainSweeps(records->all(), 1);
    // Pixels so narrow that each sweep has some of its own, and one for each channel.
    std::size_t seen = 0;
    for (std::size_t i = 0; i + 1 < sweeps.size(); ++i) {
        const PlainSweep& sweep = sweeps[i];
        if (sweep.range.size() < 30 || sweep.range.isList() || sweeps[i + 1].momentMs - sweep.momentMs < 1) {
            continue;
        }
        const RecTool::FrequencySpan span = wholeSpan(sweep.range);
        const View view{1, sweep.momentMs,     sweeps[i + 1].momentMs, span.lowHz, span.highHz,
                        1, sweep.range.size(), Combine::Max,           true};
        const Grid grid = drawn(overview, view);
        ASSERT_TRUE(grid.exact());
        for (std::size_t channel = 0; channel < sweep.range.size(); ++channel) {
            const std::size_t row = sweep.range.stepHz < 0 ? channel : sweep.range.size() - 1 - channel;
            const float level = grid.levels()[row];
            ASSERT_TRUE(level == sweep.levels[channel] || (std::isnan(level) && std::isnan(sweep.levels[channel])));
            ++seen;
        }
    }
    EXPECT_GT(seen, 5000U);
}

/// The largest level of the sweeps that begin within a stretch, in channels that lie within a span.
float largest(const std::vector<PlainSweep>& sweeps, const Stretch& time, const RecTool::FrequencySpan& span)
{
    float most = -std::numeric_limits<float>::infinity();
    for (const PlainSweep& sweep : sweeps) {
        for (std::size_t i = 0; i < sweep.levels.size() && time.fromMs <= sweep.momentMs && sweep.momentMs <= time.toMs;
             ++i) {
            const double hz = sweep.range.frequencyHz(i);
            most = span.lowHz <= hz && hz <= span.highHz ? std::max(most, sweep.levels[i]) : most;
        }
    }
    return most;
}

TEST(Pictures, OfBlocksShowNothingThatIsNotNearAndLeaveNothingOut)
{
    const auto records = std::make_shared<MemoryRecords>();
    std::mt19937 random(5);
    const auto range = values::ChannelRange::Even(100e6, 1e6, 200);
    std::vector<float> levels(200);
    for (std::size_t i = 0; i < 3000; ++i) {
        for (float& level : levels) {
            level = static_cast<float>(std::round(-12'000 + std::normal_distribution<>(0, 500)(random)) / 100);
        }
        records->add(1, 100 * (i + 1), levelsText(range, levels, 0, i == 0));
    }
    MadeOverview made(records);
    const Overview& overview = made.finish();
    const std::vector<PlainSweep> sweeps = plainSweeps(records->all(), 1);
    for (int i = 0; i < 20; ++i) {
        const double from = Start + static_cast<double>(random() % 200'000);
        const View view{1,      from,         from + 20'000 + static_cast<double>(random() % 80'000),
                        99.5e6, 299.5e6,      25,
                        20,     Combine::Max, false};
        const Grid grid = drawn(overview, view);
        EXPECT_FALSE(grid.exact());
        const double columnMs = (view.toMs - view.fromMs) / 25;
        for (int pixel = 0; pixel < 25; ++pixel) {
            const double left = view.fromMs + columnMs * pixel;
            const float top = *std::max_element(&grid.levels()[0] + pixel, &grid.levels()[0] + pixel + 1);
            const RecTool::FrequencySpan row{289.5e6, 299.5e6};
            EXPECT_LE(top,
                      largest(sweeps, {left - columnMs, left + 2 * columnMs}, {row.lowHz - 10e6, row.highHz + 10e6}));
            EXPECT_GE(top, largest(sweeps, {left + columnMs * 0.49, left + columnMs * 0.51}, {294e6, 295e6}));
        }
        EXPECT_GE(grid.highest(), largest(sweeps, {view.fromMs + columnMs, view.toMs - columnMs}, {99e6, 300e6}));
    }
}

TEST(Pictures, WhileARecordingGrowsShowItsNewestSweep)
{
    for (const std::size_t sweeps : {1U, 3U, 50U, 700U}) {
        const auto records = withBurst(sweeps, sweeps - 1, 12.5F);
        MadeOverview made(records);
        const double end = Start + 250.0 * static_cast<double>(sweeps + 2);
        const View view{1, Start, end, 99e6, 165e6, 100, 64, Combine::Max, false};
        EXPECT_EQ(drawn(made.growing(), view).highest(), 12.5F) << sweeps;
        EXPECT_EQ(drawn(made.finish(), view).highest(), 12.5F) << sweeps;
    }
}

TEST(Pictures, AreGreyWhereNothingWasMeasured)
{
    const auto records = std::make_shared<MemoryRecords>();
    const auto range = values::ChannelRange::Even(100e6, 1e6, 8);
    const std::vector<float> levels(8, -50);
    for (std::uint64_t i = 0; i < 400; ++i) {
        const std::uint64_t pause = i < 200 ? 0 : 60'000;
        records->add(1, 10 + 100 * i + pause, levelsText(range, levels, 0, i == 0));
    }
    MadeOverview made(records);
    const Overview& overview = made.finish();
    for (const bool exact : {false, true}) {
        const View view{1, Start, Start + 100'000, 90e6, 108e6, 1000, 18, Combine::Max, exact};
        const Grid grid = drawn(overview, view);
        ASSERT_EQ(grid.gaps().size(), 2U) << exact;
        EXPECT_NEAR(grid.gaps()[1].fromMs, Start + 19'910 + 1000, 20);
        EXPECT_EQ(grid.gaps()[1].toMs, Start + 80'010);
        EXPECT_TRUE(std::isnan(grid.levels()[17 * 1000 + 100])) << "below the channels";
        EXPECT_EQ(grid.levels()[1000 + 150], -50);
        EXPECT_TRUE(std::isnan(grid.levels()[1000 + 500]));
    }
}

TEST(Pictures, OfAChannelOverTimeKnowItsNeighboursNot)
{
    MadeOverview made(withBurst(2000, 1000, -5));
    const Overview& overview = made.finish();
    const Stretch all{Start, Start + 500'000};
    const Curve burst = overview.channelOver(1, 140.2e6, all, 300);
    const Curve beside = overview.channelOver(1, 141e6, all, 300);
    EXPECT_EQ(burst.hz, 140e6);
    EXPECT_EQ(*std::max_element(burst.max.begin(), burst.max.end()), -5);
    EXPECT_EQ(*std::max_element(beside.max.begin(), beside.max.end()), -100);
    const Curve spectrum = overview.spectrumOver(1, all, {99.5e6, 163.5e6}, 64);
    EXPECT_EQ(spectrum.max[40], -5);
    EXPECT_EQ(spectrum.max[39], -100);
    EXPECT_EQ(spectrum.min[40], -100);
    EXPECT_NEAR(spectrum.mean[40], -100, 0.1);
}

}  // namespace
}  // namespace RecViewTests
