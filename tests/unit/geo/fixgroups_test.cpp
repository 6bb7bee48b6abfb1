// Which bearings of a transmitter belong to one window of time.
#include "geo/fix.h"

#include "support/testing.h"

namespace {

using RecTool::Geo::groupSightings;
using namespace testing;

TEST(FixGroups, AGroupTakesWhatComesOfOneTransmitterLessThanTheWindowAfterItsFirst)
{
    EXPECT_THAT(groupSightings({}, 10), IsEmpty());
    EXPECT_THAT(groupSightings({{1, 100}, {1, 109}, {1, 110}, {1, 119}}, 10),
                ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    EXPECT_THAT(groupSightings({{2, 100}, {1, 101}, {2, 102}}, 10), ElementsAre(ElementsAre(1), ElementsAre(0, 2)));
    EXPECT_THAT(groupSightings({{1, 205}, {1, 100}, {1, 200}, {1, 95}}, 10),
                ElementsAre(ElementsAre(3, 1), ElementsAre(2, 0)));
    EXPECT_THAT(groupSightings({{1, 7}, {1, 7}, {1, 7}}, 1), ElementsAre(ElementsAre(0, 1, 2)));
}

}  // namespace
