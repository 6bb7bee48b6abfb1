// Points of a picture of bearings: the busiest channels, and one point for each pixel.
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plot/bearingpoints.h"

using RecTool::BearingPoints;
using RecTool::busiest;
using RecTool::wrapped;
using testing::ElementsAre;
using testing::IsEmpty;

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
