// Reports of gpsd, and the state that they add up to.
#include <random>

#include "sources/gpsd/gpsdreport.h"
#include "sources/gpsd/gpsdstate.h"
#include "support/testing.h"

namespace RecStation {
namespace {

using namespace testing;

constexpr auto fixLine =
    R"({"class":"TPV","device":"/dev/pts/1","status":2,"mode":3,"time":"2026-05-02T19:41:24.000Z","ept":0.005,)"
    R"("lat":44.435333333,"lon":-71.675238333,"altHAE":239.1994,"altMSL":268.2000,"alt":268.2000,"track":77.3,)"
    R"("magvar":-14.7,"speed":2.123})";

TEST(GpsdReport, AFixHasPositionAltitudeSpeedVariationAndTime)
{
    const auto report = parseGpsdReport(fixLine);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->kind, GpsdReport::Kind::Fix);
    EXPECT_EQ(report->device, "/dev/pts/1");
    EXPECT_EQ(report->dimensions, 3);
    EXPECT_THAT(report->timeUs, Optional(1'777'750'884'000'000ULL));
    EXPECT_THAT(report->fix.latitudeDeg, Optional(44.435333333));
    EXPECT_THAT(report->fix.longitudeDeg, Optional(-71.675238333));
    EXPECT_THAT(report->fix.altitudeM, Optional(268.2));
    EXPECT_THAT(report->fix.speedMps, Optional(2.123));
    EXPECT_EQ(report->fix.headingDeg, std::nullopt);  // the course is none
    EXPECT_THAT(report->variationDeg, Optional(-14.7));
}

TEST(GpsdReport, OldReleasesTellTheTimeInSeconds)
{
    EXPECT_THAT(parseGpsdReport(R"({"class":"TPV","time":1795248000.280,"mode":3})")->timeUs,
                Optional(1'795'248'000'280'000ULL));
    EXPECT_EQ(parseGpsdReport(R"({"class":"TPV","time":1e99,"mode":3})")->timeUs, std::nullopt);
    EXPECT_EQ(parseGpsdReport(R"({"class":"TPV","time":-1,"mode":3})")->timeUs, std::nullopt);
}

TEST(GpsdReport, AVariationThatCannotBeCostsNoPosition)
{
    const auto report = parseGpsdReport(R"({"class":"TPV","mode":3,"lat":1.5,"lon":2.5,"magvar":999.9})");
    ASSERT_TRUE(report);
    EXPECT_THAT(report->fix.latitudeDeg, Optional(1.5));
    EXPECT_EQ(report->variationDeg, std::nullopt);
    EXPECT_EQ(parseGpsdReport(R"({"class":"TPV","mode":3,"magvar":"x"})")->variationDeg, std::nullopt);
}

TEST(GpsdReport, AnAltitudeAboveTheEllipsoidAloneIsNoneAndWithoutAFixThereIsNoPosition)
{
    const auto report = parseGpsdReport(R"({"class":"TPV","mode":3,"altHAE":239.1,"alt":239.1})");
    ASSERT_TRUE(report);
    EXPECT_EQ(report->fix.altitudeM, std::nullopt);
    EXPECT_THAT(parseGpsdReport(R"({"class":"TPV","mode":3,"alt":239.1})")->fix.altitudeM, Optional(239.1));
    const auto none = parseGpsdReport(R"({"class":"TPV","mode":1,"lat":1,"lon":2,"speed":3})");
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->fix.empty());
    EXPECT_EQ(none->dimensions, 1);
}

TEST(GpsdReport, AnAttitudeHasHeadingsPitchAndRoll)
{
    const auto report =
        parseGpsdReport(R"({"class":"ATT","device":"c","heading":360,"mheading":218.634,"pitch":0.135,"roll":-3.861})");
    ASSERT_TRUE(report);
    EXPECT_EQ(report->kind, GpsdReport::Kind::Attitude);
    EXPECT_THAT(report->fix.headingDeg, Optional(0));
    EXPECT_THAT(report->magneticDeg, Optional(218.634));
    EXPECT_THAT(report->fix.pitchDeg, Optional(0.135));
    EXPECT_THAT(report->fix.rollDeg, Optional(-3.861));
}

TEST(GpsdReport, GreetingDevicesAndErrorsAreToldApart)
{
    EXPECT_EQ(parseGpsdReport(R"({"class":"VERSION","release":"3.22"})")->kind, GpsdReport::Kind::Version);
    EXPECT_THAT(parseGpsdReport(R"({"class":"DEVICES","devices":[{"path":"a"},{"path":"b"}]})")->devices,
                ElementsAre("a", "b"));
    EXPECT_EQ(parseGpsdReport(R"({"class":"ERROR","message":"no"})")->text, "no");
    EXPECT_EQ(parseGpsdReport(R"({"class":"SKY","satellites":[broken)")->kind, GpsdReport::Kind::Other);
    EXPECT_EQ(parseGpsdReport(R"({"class":"PPS"})")->kind, GpsdReport::Kind::Other);
}

TEST(GpsdReport, WhatGpsdNeverSendsIsNone)
{
    for (const char* line :
         {"", "$GPRMC,1*00", "{", "[]", "7", "null", R"({"mode":3})", R"({"class":7})", R"({"class":"TPV","mode":"3"})",
          R"({"class":"TPV","mode":9})", R"({"class":"TPV","mode":3,"lat":91,"lon":0})",
          R"({"class":"TPV","mode":3,"lat":1e999,"lon":0})", R"({"class":"TPV","mode":3,"speed":-1})",
          R"({"class":"TPV","mode":3,"lat":null,"lon":0})", R"({"class":"ATT","heading":400})",
          R"({"class":"DEVICES","devices":7})", "{\"class\":\"TPV\xff\",\"mode\":3}", R"({"class":"TPV"} {})"}) {
        EXPECT_FALSE(parseGpsdReport(line)) << line;
    }
}

TEST(GpsdReport, DeepNestingAndAnyBytesAreHarmless)
{
    EXPECT_FALSE(parseGpsdReport(std::string(60'000, '[')));
    std::string nested;
    for (int i = 0; i < 8000; ++i) {
        nested += R"({"a":)";
    }
    EXPECT_FALSE(parseGpsdReport(nested));
    std::mt19937 random(7);
    for (int i = 0; i < 5000; ++i) {
        std::string line = fixLine;
        for (int change = 0; change < 3; ++change) {
            line[random() % line.size()] = static_cast<char>(random());
        }
        if (const auto report = parseGpsdReport(line); report && report->fix.latitudeDeg) {
            EXPECT_LE(std::abs(*report->fix.latitudeDeg), 90);
        }
    }
}

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

/// Of any device, without a variation that was told.
class GpsdStateTest : public testing::Test {
protected:
    GpsdState state{"", {}};
};

TEST_F(GpsdStateTest, TheFirstDeviceWithAFixCountsUntilItIsSilentForFiveSeconds)
{
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

TEST_F(GpsdStateTest, ADeviceThatIsSilentLeavesNothingKnown)
{
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

TEST_F(GpsdStateTest, ALostFixIsUnknownAtOnceAndFreesTheDeviceAfterFiveSeconds)
{
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

TEST_F(GpsdStateTest, AFixOfTwoDimensionsHasNoAltitude)
{
    state.take(fixOf("a", 1, 2), at(0));
    EXPECT_THAT(state.takeChange().altitudeM, Optional(IsNan()));
    state.take(fixOf("a", 1, 3), at(1));
    EXPECT_EQ(state.takeChange().altitudeM, std::nullopt);
}

TEST_F(GpsdStateTest, AReceiverAndACompassAreTwoDevices)
{
    EXPECT_TRUE(state.take(fixOf("receiver", 1), at(0)));
    EXPECT_TRUE(state.take(attitudeOf("compass", 90), at(0.1)));
    EXPECT_FALSE(state.take(attitudeOf("receiver", 91), at(0.2)));
    const Fix change = state.takeChange();
    EXPECT_THAT(change.latitudeDeg, Optional(1));
    EXPECT_THAT(change.headingDeg, Optional(90));
}

TEST_F(GpsdStateTest, ACompassNeedsAVariationAndTheFirstOneStays)
{
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

TEST_F(GpsdStateTest, ErrorsAreToldFiveTimes)
{
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
