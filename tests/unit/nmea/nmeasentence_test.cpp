// The frame of an NMEA sentence: type, fields, checksum, and lines that are none.
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sources/nmea/nmeasentence.h"

namespace recstation {
namespace {

using testing::ElementsAre;

TEST(NmeaSentence, HasATypeWithoutTalkerAndFields)
{
    const auto sentence = parseNmeaSentence("$SDHDG,229.8,,,1.3,E*36\r");
    ASSERT_TRUE(sentence);
    EXPECT_EQ(sentence->type, "HDG");
    EXPECT_THAT(sentence->fields, ElementsAre("229.8", "", "", "1.3", "E"));
    EXPECT_TRUE(sentence->hasChecksum);
    EXPECT_EQ(sentence->field(99), "");
}

TEST(NmeaSentence, ProprietaryTypesKeepTheirName)
{
    EXPECT_EQ(parseNmeaSentence("$PASHR,1")->type, "PASHR");
    EXPECT_EQ(parseNmeaSentence("$PGRME,1")->type, "PGRME");
}

TEST(NmeaSentence, AChecksumMayBeMissingAndInSmallLetters)
{
    EXPECT_FALSE(parseNmeaSentence("$GPHDT,1,T")->hasChecksum);
    EXPECT_TRUE(parseNmeaSentence("$GPHDT,0,T*2b")->hasChecksum);
}

TEST(NmeaSentence, AWrongChecksumIsBad)
{
    for (const char* line : {"$SDHDG,229.8,,,1.3,E*37", "$SDHDG,229.9,,,1.3,E*36", "$SDHDG,229.8,,,1.3,E*3",
                             "$SDHDG,229.8,,,1.3,E*", "$SDHDG,229.8,,,1.3,E*3G", "$SDHDG,229.8,,,1.3,E*036"}) {
        EXPECT_THROW(static_cast<void>(parseNmeaSentence(line)), LineError) << line;
    }
}

TEST(NmeaSentence, WhatDoesNotBeginWithADollarIsBad)
{
    for (const char* line : {"GPGGA,1", "x$GPGGA", "$", "$*00", "$gpgga,1", "\\s:1*2", "{}", "$\x01,1"}) {
        EXPECT_THROW(static_cast<void>(parseNmeaSentence(line)), LineError) << line;
    }
}

TEST(NmeaSentence, BlankLinesCommentsAndAisAreNone)
{
    for (const char* line : {"", " \r", "# log", "!AIVDM,1,1,,A,1,0*00"}) {
        EXPECT_FALSE(parseNmeaSentence(line)) << line;
    }
}

TEST(NmeaSentence, ATagBlockInFrontIsPassedOver)
{
    EXPECT_EQ(parseNmeaSentence("\\s:r1,c:120959341*5D\\$SDHDG,229.8,,,1.3,E*36")->type, "HDG");
}

}  // namespace
}  // namespace recstation
