// Which way a KrakenSDR's angle is counted, and what else its lines tell.
#include <cmath>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "input/badlines.h"
#include "input/fields.h"
#include "krakentesting.h"
#include "sources/bearings/krakenrow.h"

namespace RecStation {
namespace {

LoggedBearing parse(KrakenRows& rows, const std::string& line)
{
    std::vector<std::string_view> fields;
    CommaFields rest(line);
    for (auto field = rest.next(); field; field = rest.next()) {
        fields.push_back(trimmed(*field));
    }
    return rows.parse(fields);
}

double azimuth(Mirror mirror, const std::string& line)
{
    KrakenRows rows(mirror);
    return parse(rows, line).azimuthDeg;
}

TEST(KrakenRow, TellsAllThatHasAKeyword)
{
    KrakenRows rows(Mirror::Auto);
    const LoggedBearing bearing = parse(rows, krakenLine("134"));
    EXPECT_EQ(bearing.time, 1'679'512'414'650'000U);
    EXPECT_EQ(bearing.azimuthDeg, 134);
    EXPECT_EQ(bearing.quality, 0.41);
    EXPECT_EQ(bearing.levelDb, -48.5);
    EXPECT_EQ(bearing.frequencyHz, 151'880'000);
    EXPECT_EQ(bearing.station, "dingus");
    EXPECT_EQ(bearing.latitudeDeg, 66.961348);
    EXPECT_EQ(bearing.longitudeDeg, -66.4438057);
    EXPECT_EQ(bearing.headingDeg, 12.5);
}

TEST(KrakenRow, AnAngleAtThePeakOfTheValuesIsCounterClockwiseUnlessAnOptionDecides)
{
    EXPECT_EQ(azimuth(Mirror::Auto, krakenLine("134", outputWithPeak(134))), 226);
    EXPECT_EQ(azimuth(Mirror::Auto, krakenLine("134.5", outputWithPeak(137))), 225.5);
    EXPECT_EQ(azimuth(Mirror::Auto, krakenLine("134", outputWithPeak(226))), 134);
    EXPECT_EQ(azimuth(Mirror::Auto, krakenLine("360", outputWithPeak(0))), 0);
    EXPECT_EQ(azimuth(Mirror::Yes, krakenLine("134", outputWithPeak(226))), 226);
    EXPECT_EQ(azimuth(Mirror::No, krakenLine("134", outputWithPeak(134))), 134);
    EXPECT_EQ(azimuth(Mirror::Yes, krakenLine("0")), 0);
    EXPECT_EQ(azimuth(Mirror::No, krakenLine("-32")), 328);
}

TEST(KrakenRow, WhatTellsNeitherIsTakenAsTheLineBefore)
{
    KrakenRows rows(Mirror::Auto);
    EXPECT_EQ(parse(rows, krakenLine("100", outputWithPeak(30))).azimuthDeg, 100);  // neither
    EXPECT_FALSE(rows.foundMirrored());
    EXPECT_EQ(parse(rows, krakenLine("30", outputWithPeak(30))).azimuthDeg, 330);
    EXPECT_TRUE(rows.foundMirrored());
    EXPECT_EQ(parse(rows, krakenLine("2", outputWithPeak(0))).azimuthDeg, 358);  // both
    EXPECT_EQ(parse(rows, krakenLine("10")).azimuthDeg, 350);                    // no values
    EXPECT_EQ(parse(rows, krakenLine("330", outputWithPeak(30))).azimuthDeg, 330);
    EXPECT_EQ(parse(rows, krakenLine("10", ", nan" + outputWithPeak(10).substr(6))).azimuthDeg, 10);
}

TEST(KrakenRow, WhatIsNotKnownStaysUnknown)
{
    KrakenRows rows(Mirror::Auto);
    const LoggedBearing bearing =
        parse(rows, "1679512414650, 1, 1e9, -inf, 1, UCA, 100, x, 0.0, 0.0, None, 0, GPS, R, R, R, R");
    EXPECT_TRUE(std::isnan(bearing.latitudeDeg));
    EXPECT_TRUE(std::isnan(bearing.longitudeDeg));
    EXPECT_TRUE(std::isnan(bearing.headingDeg));
    EXPECT_TRUE(std::isnan(bearing.levelDb));
    EXPECT_EQ(bearing.quality, 100);
}

TEST(KrakenRow, WhatCannotBeIsRefused)
{
    const std::string behind = ", UCA, 100, x, 1, 1, 0, 0, GPS, R, R, R, R";
    KrakenRows rows(Mirror::Auto);
    for (const std::string& line :
         {std::string(), std::string("1679512414650, 1, 1, 1, 1"), std::string(20'000, ','), "0, 1, 1, 1, 1" + behind,
          "-1, 1, 1, 1, 1" + behind, "99999999999999999999, 1, 1, 1, 1" + behind,
          "1679512414650, 361, 1, 1, 1" + behind, "1679512414650, inf, 1, 1, 1" + behind,
          "1679512414650, 1, nan, 1, 1" + behind, "1679512414650, 1, 1, 1, 0" + behind,
          "1679512414650, 1, 1, 1, 1e13" + behind,
          std::string("1679512414650, 1, 1, 1, 1, UCA, 100, x, 91, 1, 0, 0, GPS, R, R, R, R")}) {
        EXPECT_THROW(static_cast<void>(parse(rows, line)), LineError) << line.substr(0, 80);
    }
}

}  // namespace
}  // namespace RecStation
