// Labels beside an axis: moved apart, or left out where there is no room.
#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plot/labels.h"

using RecTool::placeLabels;
using testing::ElementsAre;
using testing::Optional;

TEST(Labels, LabelsWithRoomStandWhereTheyShould)
{
    EXPECT_THAT(placeLabels({10, 50, 80}, 10, 0, 100), ElementsAre(Optional(10.0), Optional(50.0), Optional(80.0)));
}

TEST(Labels, LabelsNearEachOtherAreMovedApartEvenly)
{
    EXPECT_THAT(placeLabels({50, 50}, 10, 0, 100), ElementsAre(Optional(45.0), Optional(55.0)));
    EXPECT_THAT(placeLabels({49, 50, 51}, 10, 0, 100), ElementsAre(Optional(40.0), Optional(50.0), Optional(60.0)));
}

TEST(Labels, LabelsStayBetweenTheEnds)
{
    EXPECT_THAT(placeLabels({0, 1}, 10, 0, 100), ElementsAre(Optional(5.0), Optional(15.0)));
    EXPECT_THAT(placeLabels({99, 100}, 10, 0, 100), ElementsAre(Optional(85.0), Optional(95.0)));
}

TEST(Labels, LabelsWithoutRoomAreLeftOutWhereItIsMostCrowded)
{
    const auto places = placeLabels({0, 40, 41, 42, 100}, 25, 0, 100);
    EXPECT_TRUE(places[0].has_value());
    EXPECT_FALSE(places[2].has_value());
    EXPECT_TRUE(places[4].has_value());
}

TEST(Labels, NeitherCoverEachOtherNorStandFarFromWhatTheyName)
{
    std::vector<double> wanted;
    for (int i = 0; i < 3000; ++i) {
        wanted.push_back(i < 2900 ? i * 0.01 : i * 0.2);
    }
    const auto places = placeLabels(wanted, 20, 0, 800);
    double last = -10;
    std::size_t placed = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (places[i]) {
            EXPECT_GE(*places[i], last + 20 - 1e-9);
            EXPECT_LE(std::abs(*places[i] - wanted[i]), 80);
            last = *places[i];
            ++placed;
        }
    }
    EXPECT_GT(placed, 2U);
}

TEST(Labels, NoLabelFitsOnALineThatIsTooShort)
{
    EXPECT_THAT(placeLabels({1}, 10, 0, 5), ElementsAre(std::nullopt));
    EXPECT_THAT(placeLabels({}, 10, 0, 5), ElementsAre());
}
