// What each NMEA message gives: time, position, speed, heading, pitch and roll.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sources/nmea/nmeamessage.h"

namespace recstation {
namespace {

std::optional<NmeaMessage> read(const std::string& text)
{
    return readNmeaMessage(parseNmeaSentence(text).value());
}

constexpr long long messageSecond = 1'000'000;

TEST(NmeaMessage, GgaGivesTimePositionAndAltitude)
{
    const auto message = read("$GNGGA,094736.25,5251.0094,N,00518.8172,W,1,12,0.60,-4.5,M,46.8,M,,");
    ASSERT_TRUE(message);
    EXPECT_EQ(message->timeOfDay, ((9 * 60 + 47) * 60 + 36) * messageSecond + 250'000);
    EXPECT_EQ(message->day, std::nullopt);
    EXPECT_NEAR(*message->fix.latitudeDeg, 52 + 51.0094 / 60, 1e-12);
    EXPECT_NEAR(*message->fix.longitudeDeg, -(5 + 18.8172 / 60), 1e-12);
    EXPECT_EQ(message->fix.altitudeM, -4.5);
    EXPECT_FALSE(message->fix.speedMps);
}

TEST(NmeaMessage, RmcGivesTimeDatePositionAndSpeed)
{
    const auto message = read("$GPRMC,000000,A,0030.0000,S,17959.9999,E,3600,230.5,200818,1.4,E,A");
    ASSERT_TRUE(message);
    EXPECT_EQ(message->timeOfDay, 0);
    EXPECT_EQ(message->day, 17'763);  // 2018-08-20
    EXPECT_EQ(message->fix.latitudeDeg, -0.5);
    EXPECT_NEAR(*message->fix.speedMps, 1852, 1e-9);
}

TEST(NmeaMessage, VtgGivesTheSpeedInKnotsOrElseInKilometresAnHour)
{
    EXPECT_NEAR(*read("$GPVTG,230.5,T,229.1,M,7.2,N,99,K,A")->fix.speedMps, 7.2 * 1852 / 3600, 1e-12);
    EXPECT_NEAR(*read("$GPVTG,230.5,T,229.1,M,,N,36,K,A")->fix.speedMps, 10, 1e-12);
    EXPECT_FALSE(read("$GPVTG,,T,,M,0.00,N,0.00,K,N"));
    EXPECT_TRUE(read("$GPVTG,,,,,,,,,")->fix.empty());
}

TEST(NmeaMessage, HeadingsAreTrue)
{
    EXPECT_EQ(read("$HEHDT,274.07,T")->fix.headingDeg, 274.07);
    EXPECT_EQ(read("$HEHDT,360,T")->fix.headingDeg, 0);
    EXPECT_EQ(read("$SDHDG,229.8,,,1.3,E")->fix.headingDeg, 231.1);
    EXPECT_EQ(read("$SDHDG,229.8,2,W,1.3,E")->fix.headingDeg, 229.1);
    EXPECT_EQ(read("$SDHDG,359.5,,,1.3,E")->fix.headingDeg, 0.8);
    EXPECT_EQ(read("$SDHDG,0.5,,,1.3,W")->fix.headingDeg, 359.2);
}

TEST(NmeaMessage, AMagneticHeadingAloneIsNone)
{
    EXPECT_TRUE(read("$SDHDG,229.8,,,,")->fix.empty());
    EXPECT_TRUE(read("$SDHDG,229.8,2,E,,")->fix.empty());
    EXPECT_TRUE(read("$SDHDG,,,,1.3,E")->fix.empty());
}

TEST(NmeaMessage, PashrGivesHeadingPitchAndRoll)
{
    const auto message = read("$PASHR,085335.000,224.19,T,-01.26,+00.83,+00.10,0.101,0.113,0.267,1,0");
    ASSERT_TRUE(message);
    EXPECT_EQ(message->timeOfDay, ((8 * 60 + 53) * 60 + 35) * messageSecond);
    EXPECT_EQ(message->fix.headingDeg, 224.19);
    EXPECT_EQ(message->fix.rollDeg, -1.26);
    EXPECT_EQ(message->fix.pitchDeg, 0.83);
    EXPECT_FALSE(read("$PASHR,085335.000,224.19,T,-01.26,+00.83,+00.10,0.101,0.113,0.267,0,0"));
    EXPECT_FALSE(read("$PASHR,POS,1,12"));
}

TEST(NmeaMessage, WhatIsNotValidOrNotKnownIsNone)
{
    for (const char* line : {"$GPGGA,094736,5251.0094,N,00518.8172,E,0,12,0.60,-4,M,46.8,M,,", "$GPGGA,,,,,,,,,,,,,,",
                             "$GPRMC,094737,V,5251.0093,N,00518.8170,E,5.6,230.5,200818,1.4,E",
                             "$GPRMC,094737,A,5251.0093,N,00518.8170,E,5.6,230.5,200818,1.4,E,N", "$GPGSV,3,1,12",
                             "$GPZDA,094737,20,08"}) {
        EXPECT_FALSE(read(line)) << line;
    }
}

TEST(NmeaMessage, EmptyFieldsAreLeftOut)
{
    const auto message = read("$GPGGA,094736,,,,,1,12,0.60,,M,46.8,M,,");
    ASSERT_TRUE(message);
    EXPECT_TRUE(message->timeOfDay);
    EXPECT_TRUE(message->fix.empty());
    EXPECT_FALSE(read("$GPRMC,094737,A,5251.0093,N,,,5.6,,200818,,,A")->fix.latitudeDeg);
}

TEST(NmeaMessage, FieldsThatCannotBeReadAreBad)
{
    for (const char* line : {"$GPGGA,9473,5251.0,N,00518.8,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,250000,5251.0,N,00518.8,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,096000,5251.0,N,00518.8,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,094736,5261.0,N,00518.8,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,094736,9100.0,N,00518.8,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,094736,5251.0,X,00518.8,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,094736,51.0,N,00518.8,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,094736,-5251.0,N,00518.8,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,094736,5251.0,N,18100.0,E,1,12,0.6,-4,M,4,M,,",
                             "$GPGGA,094736,5251.0,N,00518.8,E,1,12,0.6,nan,M,4,M,,",
                             "$GPGGA,094736,5251.0,N,00518.8,E,1,12,0.6,-4,F,4,M,,",
                             "$GPGGA,094736x25,5251.0,N,00518.8,E,1,12,0.6,-4,M,4",
                             "$GPRMC,094737,A,5251.0,N,00518.8,E,-5,230.5,200818,,,A",
                             "$GPRMC,094737,A,5251.0,N,00518.8,E,5,230.5,320818,,,A",
                             "$GPRMC,094737,A,5251.0,N,00518.8,E,5,230.5,2008,,,A",
                             "$HEHDT,361,T",
                             "$HEHDT,nan,T",
                             "$HEHDT,-1,T",
                             "$SDHDG,1,2,X,3,E",
                             "$SDHDG,1,,,3,Q",
                             "$PASHR,085335,224,T,-181,0,0,0,0,0,1,0",
                             "$PASHR,085335,224,T,0,91,0,0,0,0,1,0"}) {
        EXPECT_THROW(static_cast<void>(read(line)), LineError) << line;
    }
}

}  // namespace
}  // namespace recstation
