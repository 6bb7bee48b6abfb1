// What is drawn where there are more values than pixels: envelopes, and points of bearings.
#include "plot/envelope.h"
#include "plot/bearingpoints.h"
#include "support/testing.h"

using namespace RecTool;

namespace {

using namespace testing;

constexpr double NoValue = std::numeric_limits<double>::quiet_NaN();

/// Of values with their times.
Envelope drawn(std::size_t columns, const TimeSpan& span, const std::vector<std::pair<double, double>>& values,
               std::optional<double> middle = std::nullopt)
{
    Envelope envelope(columns, span, middle);
    for (const auto& [timeMs, value] : values) {
        envelope.add(timeMs, value);
    }
    envelope.finish();
    return envelope;
}

auto isPoint(double timeMs, double value)
{
    return AllOf(Field(&Envelope::Point::timeMs, timeMs), Field(&Envelope::Point::value, value));
}

Matcher<double> exactly(double value)
{
    return std::isnan(value) ? Matcher<double>(IsNan()) : Matcher<double>(value);
}

/// A bar or a column.
auto reaches(double lowest, double highest)
{
    return AllOf(Field("lowest", &Envelope::Bar::lowest, exactly(lowest)),
                 Field("highest", &Envelope::Bar::highest, exactly(highest)));
}

/// Two azimuths that take turns, on a circle.
Envelope alternating(double one, double other)
{
    std::vector<std::pair<double, double>> values;
    for (int i = 0; i < 20; ++i) {
        values.emplace_back(i, i % 2 == 0 ? one : other);
    }
    return drawn(10, {0, 1000}, values, 180);
}

}  // namespace

TEST(Envelope, FewValuesAreKeptAsTheyAre)
{
    const Envelope envelope = drawn(10, {100, 200}, {{100, 1}, {150, -2}});
    ASSERT_TRUE(envelope.hasPoints());
    EXPECT_THAT(envelope.points(), ElementsAre(isPoint(100, 1), isPoint(150, -2)));
    EXPECT_EQ(envelope.records(), 2U);
    EXPECT_EQ(envelope.lowest(), -2);
    EXPECT_EQ(envelope.highest(), 1);
}

TEST(Envelope, WhatIsInForceAtTheBeginningOfTheSpanIsItsFirstValue)
{
    const Envelope envelope = drawn(10, {100, 200}, {{10, 7}, {20, 5}, {150, -2}});
    EXPECT_THAT(envelope.points(), ElementsAre(isPoint(100, 5), isPoint(150, -2)));
    EXPECT_EQ(envelope.records(), 1U);
    EXPECT_EQ(envelope.highest(), 5);
}

TEST(Envelope, AValueBeforeTheSpanThatEndsWhereItBeginsDoesNotCount)
{
    const Envelope envelope = drawn(10, {100, 200}, {{20, 5}, {100, 1}});
    EXPECT_THAT(envelope.points(), SizeIs(1));
    EXPECT_EQ(envelope.highest(), 1);
}

TEST(Envelope, ASpanWithoutARecordShowsTheValueInForce)
{
    const Envelope envelope = drawn(4, {100, 200}, {{20, 5}});
    EXPECT_EQ(envelope.records(), 0U);
    EXPECT_THAT(envelope.columns(), Each(reaches(5, 5)));
}

TEST(Envelope, ManyValuesBecomeTheLowestAndHighestOfEachColumn)
{
    const Envelope envelope = drawn(2, {0, 100}, {{10, 3}, {20, -8}, {30, 4}, {60, 9}});
    EXPECT_FALSE(envelope.hasPoints());
    EXPECT_TRUE(envelope.points().empty());
    EXPECT_THAT(envelope.columns(), ElementsAre(reaches(-8, 4), reaches(4, 9)));  // 4 is in force until 60
}

TEST(Envelope, ColumnsWithoutAFiniteValueAreEmptyAndTheEndOfTheSpanBelongsToTheLast)
{
    const auto none = reaches(NoValue, NoValue);
    EXPECT_THAT(drawn(4, {0, 100}, {{60, 9}}).columns(), ElementsAre(none, none, reaches(9, 9), reaches(9, 9)));
    EXPECT_THAT(drawn(3, {0, 90}, {{90, 4}}).columns(), ElementsAre(none, none, reaches(4, 4)));
    const Envelope envelope =
        drawn(4, {0, 100}, {{0, NoValue}, {50, std::numeric_limits<double>::infinity()}, {75, 1}});
    EXPECT_THAT(envelope.columns(), ElementsAre(none, none, none, reaches(1, 1)));
    EXPECT_EQ(envelope.highest(), 1);
}

TEST(Envelope, OnACircleNothingLiesBetweenTheSidesOfNorth)
{
    const Envelope envelope = alternating(359, 1);
    EXPECT_THAT(envelope.bars(0), ElementsAre(Field(&Envelope::Bar::highest, 1), Field(&Envelope::Bar::lowest, 359)));
    EXPECT_TRUE(envelope.passesSeam(359, 1));
    EXPECT_FALSE(envelope.passesSeam(170, 190));
}

TEST(Envelope, OnACircleAWayThroughTheMiddleIsOneBar)
{
    const Envelope envelope = alternating(170, 190);
    EXPECT_THAT(envelope.bars(0), ElementsAre(reaches(170, 190)));
    EXPECT_EQ(envelope.bars(5).size(), 1U);  // the last one is in force
}

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
