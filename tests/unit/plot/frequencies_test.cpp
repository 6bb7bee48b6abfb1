// The frequency axis of a picture: spans, gaps, and the columns of each channel.
#include "replay/frequencies.h"

#include "support/testing.h"

using namespace RecTool;
using values::ChannelRange;

namespace {

using Columns = std::vector<std::vector<std::size_t>>;
using Spans = std::vector<std::pair<double, double>>;

Spans spansOf(const std::vector<FrequencySpan>& spans)
{
    Spans numbers;
    for (const FrequencySpan& span : spans) {
        numbers.emplace_back(span.lowHz, span.highHz);
    }
    return numbers;
}

/// The channels of every column.
Columns columnsOf(const ChannelRange& range, const FrequencySpan& span, std::size_t columns)
{
    const ColumnMap map(range, span, columns);
    Columns all(columns);
    for (std::size_t channel = 0; channel < range.size(); ++channel) {
        for (std::size_t column = 0; column < columns; ++column) {
            const auto holds = [](const auto& several, std::size_t one) {
                return several.begin <= one && one < several.end;
            };
            const std::size_t rank = map.rankOf(channel);
            const bool byColumn = holds(map.channelsOf(column), rank);
            EXPECT_EQ(byColumn, holds(map.columnsOf(rank), column));
            if (byColumn) {
                all[column].push_back(channel);
            }
        }
    }
    return all;
}

}  // namespace

TEST(Frequencies, AChannelIsAsWideAsTheStepOrTheSmallestDistance)
{
    EXPECT_EQ(channelWidthHz(ChannelRange::Even(100, 25, 4)), 25);
    EXPECT_EQ(channelWidthHz(ChannelRange::Even(100, -25, 4)), 25);
    EXPECT_EQ(channelWidthHz(ChannelRange::List({500, 100, 140, 100})), 40);
    EXPECT_EQ(channelWidthHz(ChannelRange::List({500})), 0);
}

TEST(Frequencies, ARangeCoversItsChannelsWithTheirWidth)
{
    EXPECT_EQ(spansOf(coveredBy(ChannelRange::Even(100, 10, 3))), Spans({{95, 125}}));
    EXPECT_EQ(spansOf(coveredBy(ChannelRange::Even(120, -10, 3))), Spans({{95, 125}}));
    EXPECT_EQ(spansOf(coveredBy(ChannelRange::List({100, 150, 110}))), Spans({{95, 115}, {145, 155}}));
    EXPECT_TRUE(coveredBy(ChannelRange()).empty());
}

TEST(Frequencies, SpansThatTouchOrOverlapAreOne)
{
    EXPECT_EQ(spansOf(joined({{30, 40}, {10, 20}, {20, 25}, {35, 36}})), Spans({{10, 25}, {30, 40}}));
}

TEST(Frequencies, TheAxisIsBrokenAtGapsWiderThanAllThatIsMeasured)
{
    EXPECT_EQ(spansOf(axisPieces({{0, 10}, {30, 40}, {71, 80}}, 8)), Spans({{0, 40}, {71, 80}}));
    EXPECT_EQ(spansOf(axisPieces({{0, 10}, {31, 40}}, 8)), Spans({{0, 10}, {31, 40}}));
    EXPECT_EQ(spansOf(axisPieces({{0, 10}, {29, 40}}, 8)), Spans({{0, 40}}));
}

TEST(Frequencies, OfTooManyPiecesTheNearestAreJoined)
{
    EXPECT_EQ(spansOf(axisPieces({{0, 1}, {100, 101}, {150, 151}, {300, 301}}, 3)),
              Spans({{0, 1}, {100, 151}, {300, 301}}));
    EXPECT_EQ(spansOf(axisPieces({{0, 1}, {100, 101}}, 1)), Spans({{0, 101}}));
}

TEST(Frequencies, ASpanWithoutWidthIsGivenOne)
{
    const std::vector<FrequencySpan> pieces = axisPieces({{1e6, 1e6}}, 8);
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_LT(pieces[0].lowHz, 1e6);
    EXPECT_GT(pieces[0].highHz, 1e6);
}

TEST(ColumnMap, ChannelsLieInTheColumnsThatTheyCover)
{
    struct {
        ChannelRange range;
        FrequencySpan span;
        Columns expected;
    } const cases[]{
        {ChannelRange::Even(5, 10, 4), {0, 40}, {{0, 1}, {2, 3}}},  // several share a column
        {ChannelRange::Even(10, 20, 2), {0, 40}, {{0}, {0}, {1}, {1}}},
        {ChannelRange::Even(10, 20, 1), {0, 40}, {{0}, {0}, {}, {}}},
        {ChannelRange::List({5, 15, 45}), {0, 50}, {{0}, {1}, {}, {}, {2}}},  // gaps have none
        {ChannelRange::List({45, 5, 15}), {0, 50}, {{1}, {2}, {}, {}, {0}}},  // in any order
        {ChannelRange::Even(35, -10, 4), {0, 40}, {{3}, {2}, {1}, {0}}},
    };
    for (const auto& [range, span, expected] : cases) {
        EXPECT_EQ(columnsOf(range, span, expected.size()), expected);
    }
}

TEST(ColumnMap, AChannelOfUnknownWidthIsWideEnoughToBeSeen)
{
    const Columns columns = columnsOf(ChannelRange::List({500}), {0, 1000}, 500);
    EXPECT_TRUE(columns[244].empty());
    for (const std::size_t column : {246U, 250U, 253U}) {
        EXPECT_EQ(columns[column], std::vector<std::size_t>{0});
    }
    EXPECT_TRUE(columns[256].empty());
}

TEST(ColumnMap, EveryChannelInTheSpanIsSomewhereAndNoneOutside)
{
    const Columns columns = columnsOf(ChannelRange::List({0, 1, 2, 999, 1000, 2000}), {0, 1000}, 7);
    EXPECT_EQ(columns[0], (std::vector<std::size_t>{0, 1, 2}));
    EXPECT_EQ(columns[6], (std::vector<std::size_t>{3, 4}));
    EXPECT_TRUE(columns[3].empty());
}

TEST(ColumnMap, ARangeOutsideTheSpanHasNoColumn)
{
    const ColumnMap map(ChannelRange::Even(1000, 10, 4), {0, 100}, 10);
    EXPECT_FALSE(map.hasChannels());
    EXPECT_TRUE(ColumnMap(ChannelRange::Even(50, 10, 4), {0, 100}, 10).hasChannels());
}
