// The lowest and highest value of each column of a plot, also on a circle.
#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plot/envelope.h"

using RecTool::Envelope;

TEST(Envelope, FewValuesAreKeptAsTheyAre)
{
    Envelope envelope(10, {100, 200});
    envelope.add(100, 1);
    envelope.add(150, -2);
    envelope.finish();
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
    Envelope envelope(10, {100, 200});
    envelope.add(10, 7);
    envelope.add(20, 5);
    envelope.add(150, -2);
    envelope.finish();
    ASSERT_EQ(envelope.points().size(), 2U);
    EXPECT_EQ(envelope.points()[0].timeMs, 100U);
    EXPECT_EQ(envelope.points()[0].value, 5);
    EXPECT_EQ(envelope.records(), 1U);
    EXPECT_EQ(envelope.highest(), 5);
}

TEST(Envelope, AValueBeforeTheSpanThatEndsWhereItBeginsDoesNotCount)
{
    Envelope envelope(10, {100, 200});
    envelope.add(20, 5);
    envelope.add(100, 1);
    envelope.finish();
    EXPECT_EQ(envelope.points().size(), 1U);
    EXPECT_EQ(envelope.highest(), 1);
}

TEST(Envelope, ASpanWithoutARecordShowsTheValueInForce)
{
    Envelope envelope(4, {100, 200});
    envelope.add(20, 5);
    envelope.finish();
    EXPECT_EQ(envelope.records(), 0U);
    for (const Envelope::Column& column : envelope.columns()) {
        EXPECT_EQ(column.lowest, 5);
        EXPECT_EQ(column.highest, 5);
    }
}

TEST(Envelope, ManyValuesBecomeTheLowestAndHighestOfEachColumn)
{
    Envelope envelope(2, {0, 100});
    envelope.add(10, 3);
    envelope.add(20, -8);
    envelope.add(30, 4);
    envelope.add(60, 9);
    envelope.finish();
    EXPECT_FALSE(envelope.hasPoints());
    EXPECT_TRUE(envelope.points().empty());
    EXPECT_EQ(envelope.columns()[0].lowest, -8);
    EXPECT_EQ(envelope.columns()[0].highest, 4);
    EXPECT_EQ(envelope.columns()[1].lowest, 4);  // in force until 60
    EXPECT_EQ(envelope.columns()[1].highest, 9);
}

TEST(Envelope, ColumnsInFrontOfTheFirstValueAreEmpty)
{
    Envelope envelope(4, {0, 100});
    envelope.add(60, 9);
    envelope.finish();
    EXPECT_TRUE(std::isnan(envelope.columns()[1].lowest));
    EXPECT_EQ(envelope.columns()[2].lowest, 9);
    EXPECT_EQ(envelope.columns()[3].highest, 9);
}

TEST(Envelope, WhatIsNoFiniteNumberIsNoValue)
{
    Envelope envelope(4, {0, 100});
    envelope.add(0, std::numeric_limits<double>::quiet_NaN());
    envelope.add(50, std::numeric_limits<double>::infinity());
    envelope.add(75, 1);
    envelope.finish();
    EXPECT_TRUE(std::isnan(envelope.columns()[0].highest));
    EXPECT_TRUE(std::isnan(envelope.columns()[2].highest));
    EXPECT_EQ(envelope.columns()[3].highest, 1);
    EXPECT_EQ(envelope.highest(), 1);
}

TEST(Envelope, TheEndOfTheSpanBelongsToTheLastColumn)
{
    Envelope envelope(3, {0, 90});
    envelope.add(90, 4);
    envelope.finish();
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
