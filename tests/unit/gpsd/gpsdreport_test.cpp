// Lines of gpsd, as it prints them and as it never should.
#include <random>
#include <string>

#include <gmock/gmock.h>

#include "sources/gpsd/gpsdreport.h"

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

}  // namespace
}  // namespace RecStation
