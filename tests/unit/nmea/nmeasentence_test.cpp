// The frame of an NMEA sentence: type, fields, checksum, and lines that are none.

#include <gmock/gmock.h>

#include "sources/nmea/nmeasentence.h"

namespace RecStation {
namespace {

using testing::ElementsAre;

TEST(NmeaSentence, HasATypeWithoutTalkerAndFields)
{
    const auto sentence = parseNmeaSentence("$SDHDG,229.8,,,1.3,E*36\r");
    EXPECT_EQ(sentence.type, "HDG");
    EXPECT_THAT(sentence.fields, ElementsAre("229.8", "", "", "1.3", "E"));
    EXPECT_TRUE(sentence.hasChecksum);
    EXPECT_EQ(sentence.field(99), "");
}

TEST(NmeaSentence, ProprietaryTypesKeepTheirName)
{
    EXPECT_EQ(parseNmeaSentence("$PASHR,1").type, "PASHR");
    EXPECT_EQ(parseNmeaSentence("$PGRME,1").type, "PGRME");
}

TEST(NmeaSentence, OfSeveralDollarsTheLastBeginsIt)
{
    EXPECT_EQ(readNmeaLine("$$$GPHDT,1,T").sentences, "$GPHDT,1,T");
    EXPECT_EQ(readNmeaLine("$$").sentences, "$");
    std::string_view both = "$GPHDT,1,T*2A$$GPHDT,0,T*2b";
    EXPECT_EQ(takeNmeaSentence(both), "$GPHDT,1,T*2A");
    EXPECT_EQ(takeNmeaSentence(both), "$GPHDT,0,T*2b");
    EXPECT_EQ(both, "");
}

TEST(NmeaSentence, AChecksumMayBeMissingAndInSmallLetters)
{
    EXPECT_FALSE(parseNmeaSentence("$GPHDT,1,T").hasChecksum);
    EXPECT_TRUE(parseNmeaSentence("$GPHDT,0,T*2b").hasChecksum);
}

}  // namespace
}  // namespace RecStation
