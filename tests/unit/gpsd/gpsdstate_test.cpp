// Which of gpsd's devices counts, and when nothing is known.
#include <cmath>

#include <gmock/gmock.h>

#include "sources/gpsd/gpsdstate.h"

namespace RecStation {
namespace {

using namespace testing;

GpsdState::Time at(double seconds)
{
    return GpsdState::Time() + std::chrono::milliseconds(std::llround(seconds * 1000));
}

GpsdReport fixOf(const char* device, double latitude, int dimensions = 3)
{
    GpsdReport report;
    report.kind = GpsdReport::Kind::Fix;
    report.device = device;
    report.dimensions = dimensions;
    if (dimensions >= 2) {
        report.fix.latitudeDeg = latitude;
        report.fix.longitudeDeg = 10;
        report.fix.speedMps = 3;
    }
    return report;
}

GpsdReport attitudeOf(const char* device, std::optional<double> heading, std::optional<double> magnetic = {})
{
    GpsdReport report;
    report.kind = GpsdReport::Kind::Attitude;
    report.device = device;
    report.fix.headingDeg = heading;
    report.magneticDeg = magnetic;
    return report;
}

TEST(GpsdState, TheFirstDeviceWithAFixCountsUntilItIsSilentForFiveSeconds)
{
    GpsdState state("", {});
    EXPECT_FALSE(state.take(fixOf("a", 0, 1), at(0)));
    EXPECT_TRUE(state.take(fixOf("b", 2), at(1)));
    EXPECT_THAT(state.takeChange().latitudeDeg, Optional(2));
    for (int i = 0; i < 40; ++i) {  // two devices that take turns
        EXPECT_FALSE(state.take(fixOf("a", 1), at(1.1 + i)));
        EXPECT_TRUE(state.take(fixOf("b", 3 + i), at(1.2 + i)));
        EXPECT_THAT(state.takeChange().latitudeDeg, Optional(3 + i));
    }
    EXPECT_FALSE(state.take(fixOf("a", 1), at(45.1)));
    EXPECT_TRUE(state.take(fixOf("a", 1), at(45.3)));
    EXPECT_THAT(state.takeChange().latitudeDeg, Optional(1));
    EXPECT_FALSE(state.take(fixOf("b", 9), at(45.4)));
    EXPECT_THAT(state.takeNews(),
                ElementsAre("positions come from b", "positions of b no longer come", "positions come from a"));
}

TEST(GpsdState, ADeviceThatIsSilentLeavesNothingKnown)
{
    GpsdState state("", {});
    EXPECT_EQ(state.silentAt(), std::nullopt);
    state.take(fixOf("a", 1), at(0));
    EXPECT_THAT(state.silentAt(), Optional(at(5)));
    static_cast<void>(state.takeChange());
    state.passTime(at(4.9));
    EXPECT_FALSE(state.hasChange());
    state.passTime(at(5));
    const Fix change = state.takeChange();
    EXPECT_THAT(change.latitudeDeg, Optional(IsNan()));
    EXPECT_THAT(change.longitudeDeg, Optional(IsNan()));
    EXPECT_THAT(change.altitudeM, Optional(IsNan()));
    EXPECT_THAT(change.speedMps, Optional(IsNan()));
    EXPECT_EQ(change.headingDeg, std::nullopt);
    EXPECT_EQ(state.silentAt(), std::nullopt);
}

TEST(GpsdState, ALostFixIsUnknownAtOnceAndFreesTheDeviceAfterFiveSeconds)
{
    GpsdState state("", {});
    state.take(fixOf("a", 1), at(0));
    static_cast<void>(state.takeChange());
    EXPECT_FALSE(state.take(fixOf("a", 0, 0), at(1)));  // says nothing about a fix
    EXPECT_TRUE(state.take(fixOf("a", 0, 1), at(2)));
    EXPECT_THAT(state.takeChange().latitudeDeg, Optional(IsNan()));
    EXPECT_FALSE(state.take(fixOf("b", 5), at(4)));
    state.take(fixOf("a", 0, 1), at(5));
    EXPECT_TRUE(state.take(fixOf("b", 5), at(5.5)));
    EXPECT_THAT(state.takeChange().latitudeDeg, Optional(5));
}

TEST(GpsdState, AFixOfTwoDimensionsHasNoAltitude)
{
    GpsdState state("", {});
    state.take(fixOf("a", 1, 2), at(0));
    EXPECT_THAT(state.takeChange().altitudeM, Optional(IsNan()));
    state.take(fixOf("a", 1, 3), at(1));
    EXPECT_EQ(state.takeChange().altitudeM, std::nullopt);
}

TEST(GpsdState, AReceiverAndACompassAreTwoDevices)
{
    GpsdState state("", {});
    EXPECT_TRUE(state.take(fixOf("receiver", 1), at(0)));
    EXPECT_TRUE(state.take(attitudeOf("compass", 90), at(0.1)));
    EXPECT_FALSE(state.take(attitudeOf("receiver", 91), at(0.2)));
    const Fix change = state.takeChange();
    EXPECT_THAT(change.latitudeDeg, Optional(1));
    EXPECT_THAT(change.headingDeg, Optional(90));
}

TEST(GpsdState, ACompassNeedsAVariationAndTheFirstOneStays)
{
    GpsdState state("", {});
    EXPECT_FALSE(state.take(attitudeOf("compass", {}, 10.0), at(0)));
    EXPECT_THAT(state.takeNews(), ElementsAre(HasSubstr("compass tells a magnetic heading")));
    GpsdReport report = fixOf("receiver", 1);
    report.variationDeg = -14.7;
    state.take(report, at(1));
    report.variationDeg = -15.8;
    state.take(report, at(2));
    EXPECT_TRUE(state.take(attitudeOf("compass", {}, 10.0), at(3)));
    EXPECT_THAT(state.takeChange().headingDeg, Optional(355.3));
    GpsdState told("", 2.0);
    told.take(report, at(0));
    EXPECT_TRUE(told.take(attitudeOf("compass", {}, 359.0), at(1)));
    EXPECT_THAT(told.takeChange().headingDeg, Optional(1));
}

TEST(GpsdState, ATrueHeadingAndTheCompassOfOneDeviceDoNotTakeTurns)
{
    GpsdState state("", 4.0);
    EXPECT_TRUE(state.take(attitudeOf("c", 90, 80.0), at(0)));
    EXPECT_THAT(state.takeChange().headingDeg, Optional(90));
    EXPECT_FALSE(state.take(attitudeOf("c", {}, 80.0), at(1)));
}

TEST(GpsdState, OnlyTheDeviceThatWasAskedForCounts)
{
    GpsdState state("b", {});
    GpsdReport devices;
    devices.kind = GpsdReport::Kind::Devices;
    devices.devices = {"a", "c"};
    state.take(devices, at(0));
    state.take(devices, at(0));
    EXPECT_THAT(state.takeNews(), ElementsAre("there is no b; there is a, c"));
    EXPECT_FALSE(state.take(fixOf("a", 1), at(0)));
    EXPECT_FALSE(state.take(fixOf("a", 1), at(60)));
    EXPECT_TRUE(state.take(fixOf("b", 2), at(61)));
    EXPECT_THAT(state.takeChange().latitudeDeg, Optional(2));
    EXPECT_THAT(state.takeNews(), IsEmpty());
}

TEST(GpsdState, ErrorsAreToldFiveTimes)
{
    GpsdState state("", {});
    GpsdReport error;
    error.kind = GpsdReport::Kind::Error;
    error.text = "no such request";
    for (int i = 0; i < 1000; ++i) {
        state.take(error, at(i));
    }
    EXPECT_EQ(state.takeNews().size(), 5U);
}

}  // namespace
}  // namespace RecStation
