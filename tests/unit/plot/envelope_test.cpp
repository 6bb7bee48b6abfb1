// What is drawn where there are more values than pixels: envelopes, and points of bearings.
#include "plot/envelope.h"
#include "plot/bearingpoints.h"
#include "support/testing.h"

using namespace RecTool;

namespace {

/// Of values with their times.
Envelope drawn(std::size_t columns, const TimeSpan& span, const std::vector<std::pair<double, double>>& values)
{
    Envelope envelope(columns, span);
    for (const auto& [timeMs, value] : values) {
        envelope.add(timeMs, value);
    }
    envelope.finish();
    return envelope;
}

}  // namespace

TEST(Envelope, FewValuesAreKeptAsTheyAre)
{
    const Envelope envelope = drawn(10, {100, 200}, {{100, 1}, {150, -2}});
    ASSERT_TRUE(envelope.hasPoints());
    ASSERT_EQ(envelope.points().size(), 2U);
    EXPECT_EQ(envelope.points()[1].timeMs, 150U);
    EXPECT_EQ(envelope.points()[1].value, -2);
    EXPECT_EQ(envelope.records(), 2U);
    EXPECT_EQ(envelope.lowest(), -2);
    EXPECT_EQ(envelope.highest(), 1);
}

TEST(Envelope, WhatIsInForceAtTheBeginningOfTheSpanIsItsFirstValue)
{
    const Envelope envelope = drawn(10, {100, 200}, {{10, 7}, {20, 5}, {150, -2}});
    ASSERT_EQ(envelope.points().size(), 2U);
    EXPECT_EQ(envelope.points()[0].timeMs, 100U);
    EXPECT_EQ(envelope.points()[0].value, 5);
    EXPECT_EQ(envelope.records(), 1U);
    EXPECT_EQ(envelope.highest(), 5);
}

TEST(Envelope, AValueBeforeTheSpanThatEndsWhereItBeginsDoesNotCount)
{
    const Envelope envelope = drawn(10, {100, 200}, {{20, 5}, {100, 1}});
    EXPECT_EQ(envelope.points().size(), 1U);
    EXPECT_EQ(envelope.highest(), 1);
}

TEST(Envelope, ASpanWithoutARecordShowsTheValueInForce)
{
    const Envelope envelope = drawn(4, {100, 200}, {{20, 5}});
    EXPECT_EQ(envelope.records(), 0U);
    for (const Envelope::Column& column : envelope.columns()) {
        EXPECT_EQ(column.lowest, 5);
        EXPECT_EQ(column.highest, 5);
    }
}

TEST(Envelope, ManyValuesBecomeTheLowestAndHighestOfEachColumn)
{
    const Envelope envelope = drawn(2, {0, 100}, {{10, 3}, {20, -8}, {30, 4}, {60, 9}});
    EXPECT_FALSE(envelope.hasPoints());
    EXPECT_TRUE(envelope.points().empty());
    EXPECT_EQ(envelope.columns()[0].lowest, -8);
    EXPECT_EQ(envelope.columns()[0].highest, 4);
    EXPECT_EQ(envelope.columns()[1].lowest, 4);  // in force until 60
    EXPECT_EQ(envelope.columns()[1].highest, 9);
}

TEST(Envelope, ColumnsInFrontOfTheFirstValueAreEmpty)
{
    const Envelope envelope = drawn(4, {0, 100}, {{60, 9}});
    EXPECT_TRUE(std::isnan(envelope.columns()[1].lowest));
    EXPECT_EQ(envelope.columns()[2].lowest, 9);
    EXPECT_EQ(envelope.columns()[3].highest, 9);
}

TEST(Envelope, WhatIsNoFiniteNumberIsNoValue)
{
    const Envelope envelope =
        drawn(4, {0, 100},
              {{0, std::numeric_limits<double>::quiet_NaN()}, {50, std::numeric_limits<double>::infinity()}, {75, 1}});
    EXPECT_TRUE(std::isnan(envelope.columns()[0].highest));
    EXPECT_TRUE(std::isnan(envelope.columns()[2].highest));
    EXPECT_EQ(envelope.columns()[3].highest, 1);
    EXPECT_EQ(envelope.highest(), 1);
}

TEST(Envelope, TheEndOfTheSpanBelongsToTheLastColumn)
{
    const Envelope envelope = drawn(3, {0, 90}, {{90, 4}});
    EXPECT_EQ(envelope.columns()[2].highest, 4);
    EXPECT_TRUE(std::isnan(envelope.columns()[1].highest));
}

TEST(Envelope, OnACircleNothingLiesBetweenTheSidesOfNorth)
{
    Envelope envelope(10, {0, 1000}, 180);
    for (int i = 0; i < 20; ++i) {
        envelope.add(i, i % 2 == 0 ? 359 : 1);
    }
    envelope.finish();
    const std::vector<Envelope::Bar> bars = envelope.bars(0);
    ASSERT_EQ(bars.size(), 2U);
    EXPECT_EQ(bars[0].highest, 1);
    EXPECT_EQ(bars[1].lowest, 359);
    EXPECT_TRUE(envelope.passesSeam(359, 1));
    EXPECT_FALSE(envelope.passesSeam(170, 190));
}

TEST(Envelope, OnACircleAWayThroughTheMiddleIsOneBar)
{
    Envelope envelope(10, {0, 1000}, 180);
    for (int i = 0; i < 20; ++i) {
        envelope.add(i, i % 2 == 0 ? 170 : 190);
    }
    envelope.finish();
    ASSERT_EQ(envelope.bars(0).size(), 1U);
    EXPECT_EQ(envelope.bars(0)[0].lowest, 170);
    EXPECT_EQ(envelope.bars(0)[0].highest, 190);
    EXPECT_EQ(envelope.bars(5).size(), 1U);  // the last one is in force
}

using namespace testing;

TEST(BearingPoints, TheChannelsWithTheMostBearingsComeInOrderOfFrequency)
{
    const RecTool::BearingCounts counts{{1e6, 2}, {2e6, 1}, {3e6, 3}};
    EXPECT_THAT(busiest(counts, 2), ElementsAre(1e6, 3e6));
    EXPECT_THAT(busiest(counts, 9), ElementsAre(1e6, 2e6, 3e6));
    EXPECT_THAT(busiest(counts, 0), IsEmpty());
}

TEST(BearingPoints, OfThoseOnOnePixelOnlyTheFirstIsKept)
{
    BearingPoints points({1000, 2000}, 10, 36);
    points.add(1000, 0);
    points.add(1099, 9.9);  // the same pixel
    points.add(1100, 9.9);  // the next column
    points.add(1100, 10);   // the next row
    points.add(2000, 359.9);
    ASSERT_EQ(points.points().size(), 4U);
    EXPECT_EQ(points.points()[0].timeMs, 1000U);
    EXPECT_EQ(points.points()[1].azimuthDeg, 9.9);
    EXPECT_EQ(points.points()[3].timeMs, 2000U);
}

TEST(BearingPoints, ThereAreNeverMorePointsThanPixels)
{
    BearingPoints points({0, 100'000}, 20, 18);
    for (unsigned i = 0; i <= 100'000; ++i) {
        points.add(i, wrapped(i * 0.37));
    }
    EXPECT_LE(points.points().size(), 20U * 18U);
}

TEST(BearingPoints, AzimuthsAreWrappedIntoOneCircle)
{
    EXPECT_EQ(wrapped(0), 0);
    EXPECT_EQ(wrapped(360), 0);
    EXPECT_EQ(wrapped(370), 10);
    EXPECT_EQ(wrapped(-10), 350);
    EXPECT_EQ(wrapped(-730), 350);
    EXPECT_EQ(wrapped(-1e-300), 0);
}
