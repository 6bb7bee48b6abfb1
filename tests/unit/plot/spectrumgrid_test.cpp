// Spectra binned into the pixels of a waterfall, highest or mean, beside a plain model.
#include <random>

#include "plot/spectrumgrid.h"
#include "support/testing.h"

using namespace RecTool;
using testing::ElementsAre;
using testing::IsNan;
using values::ChannelRange;

namespace {

constexpr float None = std::numeric_limits<float>::quiet_NaN();

/// A map at a time.
struct State {
    double timeMs = 0;
    ChannelRange range;
    std::vector<float> cells;
};

/// What a pixel should be, worked out from all states at once.
class Model {
public:
    Model(std::vector<State> states, FrequencySpan span, TimeSpan times, std::size_t columns, std::size_t rows)
        : m_states(std::move(states)), m_span(span), m_times(times), m_columns(columns), m_rows(rows)
    {
    }

    [[nodiscard]] float highest(std::size_t column, std::size_t row) const
    {
        float highest = None;
        visit(row, [&](const State& state, double /*ms*/) {
            for (const float level : levelsOf(state, column)) {
                highest = std::fmax(highest, level);
            }
        });
        return highest;
    }

    [[nodiscard]] double mean(std::size_t column, std::size_t row) const
    {
        double sum = 0;
        double weight = 0;
        visit(row, [&](const State& state, double ms) {
            const std::vector<float> levels = levelsOf(state, column);
            if (!levels.empty()) {
                double total = 0;
                for (const float level : levels) {
                    total += double{level};
                }
                sum += total / static_cast<double>(levels.size()) * ms;
                weight += ms;
            }
        });
        return weight > 0 ? sum / weight : double{None};
    }

private:
    template <typename Visitor>
    void visit(std::size_t row, const Visitor& visitor) const
    {
        const double rowMs = m_times.width() / static_cast<double>(m_rows);
        const double begin = static_cast<double>(m_times.fromMs) + rowMs * static_cast<double>(row);
        const double end = begin + rowMs;
        for (std::size_t i = 0; i < m_states.size(); ++i) {
            const auto since = m_states[i].timeMs;
            const bool isLast = i + 1 == m_states.size();
            const double until = isLast ? m_times.toMs : m_states[i + 1].timeMs;
            const bool atEnd = row + 1 == m_rows && since >= end;
            if ((since < end || atEnd) && (until > begin || isLast)) {
                visitor(m_states[i], std::max(0.0, std::min(until, end) - std::max(since, begin)));
            }
        }
    }

    [[nodiscard]] std::vector<float> levelsOf(const State& state, std::size_t column) const
    {
        const double width = m_span.width() / static_cast<double>(m_columns);
        const double low = m_span.lowHz + width * static_cast<double>(column);
        std::vector<float> within;
        std::vector<float> across;
        bool hasChannel = false;
        double nearest = std::numeric_limits<double>::infinity();
        const double known = RecTool::channelWidthHz(state.range);
        const double channelWidth = known > 0 ? known : m_span.width() / 50;
        for (std::size_t i = 0; i < state.cells.size(); ++i) {
            const double distance = state.range.frequencyHz(i) - (low + width / 2);
            if (state.range.frequencyHz(i) >= low && state.range.frequencyHz(i) < low + width) {
                hasChannel = true;
                within.push_back(state.cells[i]);
            } else if (std::abs(distance) < channelWidth / 2 && std::abs(distance) < nearest) {
                nearest = std::abs(distance);
                across.assign(1, state.cells[i]);
            }
        }
        std::vector<float> levels = hasChannel ? within : across;
        levels.erase(std::remove_if(levels.begin(), levels.end(), [](float level) { return !std::isfinite(level); }),
                     levels.end());
        return levels;
    }

    std::vector<State> m_states;
    FrequencySpan m_span;
    TimeSpan m_times;
    std::size_t m_columns;
    std::size_t m_rows;
};

SpectrumGrid binned(const std::vector<State>& states, const FrequencySpan& span, const TimeSpan& times,
                    std::size_t columns, std::size_t rows, SpectrumGrid::Mode mode)
{
    SpectrumGrid grid(columns, rows, span, times, mode);
    for (const State& state : states) {
        grid.update(state.range, state.cells, state.timeMs);
    }
    grid.finish();
    return grid;
}

std::vector<float> rowOf(const SpectrumGrid& grid, std::size_t row)
{
    std::vector<float> levels;
    for (std::size_t column = 0; column < grid.columns(); ++column) {
        levels.push_back(grid.at(column, row));
    }
    return levels;
}

const ChannelRange FourChannels = ChannelRange::Even(5, 10, 4);
constexpr FrequencySpan FourColumns{0, 40};

}  // namespace

TEST(SpectrumGrid, ALevelIsInForceUntilTheNextOneAndNothingIsInFrontOfTheFirst)
{
    const SpectrumGrid grid = binned({{25, FourChannels, {1, 2, 3, 4}}, {75, FourChannels, {1, 9, 3, 4}}}, FourColumns,
                                     {0, 100}, 4, 10, SpectrumGrid::Mode::Max);
    EXPECT_TRUE(std::isnan(grid.at(0, 1)));
    EXPECT_THAT(rowOf(grid, 2), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(rowOf(grid, 6), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(rowOf(grid, 7), ElementsAre(1, 9, 3, 4));
    EXPECT_THAT(rowOf(grid, 9), ElementsAre(1, 9, 3, 4));
    EXPECT_EQ(grid.lowest(), 1);
    EXPECT_EQ(grid.highest(), 9);
}

TEST(SpectrumGrid, APixelIsTheHighestOfItsChannelsAndOfItsTime)
{
    const SpectrumGrid grid = binned(
        {{0, FourChannels, {1, 2, 3, None}}, {10, FourChannels, {8, 2, 3, None}}, {20, FourChannels, {0, 2, 3, None}}},
        FourColumns, {0, 100}, 2, 2, SpectrumGrid::Mode::Max);
    EXPECT_THAT(rowOf(grid, 0), ElementsAre(8, 3));
    EXPECT_THAT(rowOf(grid, 1), ElementsAre(2, 3));
}

TEST(SpectrumGrid, TheMeanCountsEachLevelAsLongAsItWasInForce)
{
    const SpectrumGrid grid = binned({{0, FourChannels, {10, 20, None, 5}}, {75, FourChannels, {50, 20, None, 5}}},
                                     FourColumns, {0, 100}, 2, 1, SpectrumGrid::Mode::Mean);
    EXPECT_FLOAT_EQ(grid.at(0, 0), 0.75F * 15 + 0.25F * 35);
    EXPECT_FLOAT_EQ(grid.at(1, 0), 5);
}

TEST(SpectrumGrid, WhatIsInForceAtTheBeginningOfTheSpanIsShown)
{
    const SpectrumGrid grid = binned({{5, FourChannels, {9, 9, 9, 9}}, {10, FourChannels, {1, 2, 3, 4}}}, FourColumns,
                                     {50, 100}, 4, 5, SpectrumGrid::Mode::Max);
    EXPECT_THAT(rowOf(grid, 0), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(rowOf(grid, 4), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(grid.highest(), 4);  // the 9 was over before
}

TEST(SpectrumGrid, ANewRangeTakesThePlaceOfTheOldOne)
{
    const ChannelRange other = ChannelRange::List({35, 15});
    const SpectrumGrid grid = binned({{0, FourChannels, {1, 2, 3, 4}}, {50, other, {7, 8}}}, FourColumns, {0, 100}, 4,
                                     2, SpectrumGrid::Mode::Max);
    EXPECT_THAT(rowOf(grid, 0), ElementsAre(1, 2, 3, 4));
    EXPECT_TRUE(std::isnan(grid.at(2, 1)) || grid.at(2, 1) == 7 || grid.at(2, 1) == 8);  // 20 Hz wide channels
    EXPECT_EQ(grid.at(1, 1), 8);
    EXPECT_EQ(grid.at(3, 1), 7);
}

TEST(SpectrumGrid, LevelsThatAreNoFiniteNumberAreNotMeasured)
{
    constexpr float Infinite = std::numeric_limits<float>::infinity();
    const SpectrumGrid grid = binned({{0, FourChannels, {None, Infinite, -Infinite, -7}}}, FourColumns, {0, 100}, 4, 2,
                                     SpectrumGrid::Mode::Max);
    for (const std::size_t row : {0U, 1U}) {
        EXPECT_THAT(rowOf(grid, row), ElementsAre(IsNan(), IsNan(), IsNan(), -7));
    }
    EXPECT_EQ(grid.lowest(), -7);
    EXPECT_EQ(grid.highest(), -7);
}

TEST(SpectrumGrid, WithoutARecordNothingIsMeasured)
{
    const SpectrumGrid grid = binned({}, FourColumns, {0, 100}, 4, 2, SpectrumGrid::Mode::Mean);
    EXPECT_TRUE(std::isnan(grid.at(3, 1)));
    EXPECT_TRUE(std::isnan(grid.lowest()));
}

TEST(SpectrumGrid, ChannelsOutsideTheSpanDoNotCount)
{
    const SpectrumGrid grid =
        binned({{0, FourChannels, {1, 2, 3, 400}}}, {0, 30}, {0, 100}, 3, 2, SpectrumGrid::Mode::Max);
    EXPECT_EQ(grid.highest(), 3);
}

TEST(SpectrumGrid, AnySequenceIsBinnedAsTheWholeSequenceTells)
{
    constexpr std::size_t Columns = 23;
    constexpr std::size_t Rows = 17;
    constexpr FrequencySpan Span{900, 3100};
    constexpr TimeSpan Times{500, 2200};
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 random(seed);
        const auto upTo = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
        std::vector<State> states;
        State state;
        double time = upTo(600);
        while (time <= Times.toMs) {
            if (states.empty() || upTo(12) == 0) {
                if (upTo(2) == 0) {
                    state.range = ChannelRange::Even(800.5 + upTo(500), 7.25 + upTo(150), 1 + upTo(200));
                } else {
                    std::vector<double> channels(1 + upTo(40));
                    for (double& channel : channels) {
                        channel = 850.3 + upTo(2400);
                    }
                    state.range = ChannelRange::List(channels);
                }
                state.cells.assign(state.range.size(), None);
            }
            for (unsigned i = upTo(20); i > 0; --i) {
                float& cell = state.cells[upTo(static_cast<unsigned>(state.cells.size()))];
                cell = upTo(5) == 0 ? None : -static_cast<float>(upTo(1000)) / 10;
            }
            state.timeMs = time;
            states.push_back(state);
            time += 1 + upTo(upTo(4) == 0 ? 400 : 15);
        }
        const Model model(states, Span, Times, Columns, Rows);
        const SpectrumGrid highest = binned(states, Span, Times, Columns, Rows, SpectrumGrid::Mode::Max);
        const SpectrumGrid mean = binned(states, Span, Times, Columns, Rows, SpectrumGrid::Mode::Mean);
        for (std::size_t row = 0; row < Rows; ++row) {
            for (std::size_t column = 0; column < Columns; ++column) {
                const auto place = testing::Message() << "seed " << seed << " column " << column << " row " << row;
                const float wanted = model.highest(column, row);
                const float found = highest.at(column, row);
                ASSERT_TRUE(std::isnan(wanted) ? std::isnan(found) : found == wanted)
                    << place << ": " << found << " instead of " << wanted;
                ASSERT_THAT(double{mean.at(column, row)},
                            testing::NanSensitiveDoubleNear(model.mean(column, row), 1e-3))
                    << place;
            }
        }
    }
}

TEST(SpectrumGrid, ATimeThatGoesBackCountsAsTheOneBefore)
{
    const ChannelRange range = ChannelRange::Even(150, 100, 1);
    const SpectrumGrid grid = binned({{0, range, {-50}}, {2.5, range, {-40}}, {1, range, {-30}}}, {100, 200}, {0, 4}, 1,
                                     4, SpectrumGrid::Mode::Max);
    EXPECT_EQ(grid.at(0, 1), -50);
    EXPECT_EQ(grid.at(0, 2), -30);
    EXPECT_EQ(grid.at(0, 3), -30);
}
