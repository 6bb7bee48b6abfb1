// The order of the header's fields, type entries and record heads, written and read back.
#include <recording2/format/layout.h>

#include <gtest/gtest.h>

#include "support/memorysource.h"

using namespace Recording2::Format;
using RecordingTests::MemorySource;

namespace {

HeaderRecord exampleHeader()
{
    HeaderRecord header;
    header.majorVersion = 2;
    header.startFrequencyHz = 20;
    header.stopFrequencyHz = 3000;
    header.stepWidthHz = 0.025F;
    header.minLevel = -30;
    header.maxLevel = 100;
    header.startMs = 1;
    header.stopMs = 2;
    header.jobId = "A1B2";
    header.deviceName = "RX#1";
    header.positions = {500, 600, 700, 0, 0};
    header.automatic = true;
    return header;
}

}  // namespace

TEST(Layout, TheHeaderRecordStandsInItsOrderAndIsReadBackAsItWasWritten)
{
    EXPECT_EQ(headerArea(), std::string(499, '0') + "#");
    std::string out;
    appendHeader(out, exampleHeader());
    EXPECT_EQ(out, std::string("2#0#20#3000#0.025#-30#100#\x01\0\0\0\0\0\0\0#\x02\0\0\0\0\0\0\0#"
                               "4#A1B24#RX#10#500#600#700#0#0#1#",
                               26 + 18 + 32));
    MemorySource source(out);
    Cursor cursor(source);
    HeaderRecord read;
    ASSERT_EQ(readHeader(cursor, read), HeaderStatus::Ok);
    EXPECT_EQ(read.stepWidthHz, 0.025F);
    EXPECT_EQ(read.deviceName, "RX#1");
    EXPECT_EQ(read.deviceType, "");
    EXPECT_EQ(read.positions.timeTable, 700);
    EXPECT_TRUE(read.automatic);
}

TEST(Layout, AHeaderTextIsWrittenUpToItsFirstNulWithItsWholeLength)
{
    HeaderRecord header;
    header.jobId = std::string("ab\0c", 4);
    std::string out;
    appendHeader(out, header);
    EXPECT_NE(out.find("4#ab0#0#"), std::string::npos);
}

TEST(Layout, AMajorVersionBelowTwoIsAnOldFormatAndADamagedFieldKeepsItsTarget)
{
    for (const auto& [bytes, status] :
         {std::pair("1#9#1#", HeaderStatus::OldFormat), std::pair("2#0#x20#3000#1#-30#100#", HeaderStatus::Ok)}) {
        MemorySource source(bytes);
        Cursor cursor(source);
        HeaderRecord read;
        read.startFrequencyHz = 5;
        EXPECT_EQ(readHeader(cursor, read), status);
        if (status == HeaderStatus::Ok) {
            EXPECT_EQ(read.startFrequencyHz, 5);
            EXPECT_EQ(read.stopFrequencyHz, 20);  // one byte was skipped, so the fields after it move up
        }
    }
}

TEST(Layout, ATypeEntryIsReadBackAsItWasWritten)
{
    std::string out;
    appendTypeEntry(out, 46, -1, "FREQUENCY", std::string("/A#\0B", 5));
    EXPECT_EQ(out, std::string("46#-1#9#FREQUENCY5#/A#\0B", 24));
    MemorySource source(out);
    Cursor cursor(source);
    TypeEntryRecord entry;
    readTypeEntry(cursor, entry);
    EXPECT_EQ(entry.valueType, -1);
    EXPECT_EQ(entry.valuePath, std::string("/A#\0B", 5));
}

TEST(Layout, ARecordHeadIsCodeAndLength)
{
    char buffer[MaxRecordHeadBytes];
    char* const end = putRecordHead(buffer, -7, 4294967295U);
    EXPECT_EQ(std::string(buffer, end), "-7#4294967295#");
}
