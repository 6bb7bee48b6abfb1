// The bytes of fields, and the order in which headers, types and records have them.
#include <recording2/format/encode.h>
#include <recording2/format/layout.h>

#include "support/memorysource.h"
#include "support/testing.h"

using namespace Recording2::Format;

TEST(Encode, NumbersAreDecimalWithASeparator)
{
    std::string out;
    appendNumber(out, std::int32_t{-30});
    appendNumber(out, std::uint32_t{4294967295U});
    appendNumber(out, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(out, "-30#4294967295#-9223372036854775808#");
}

TEST(Encode, FloatsHaveSixSignificantDigitsInTheShorterNotation)
{
    std::string out;
    for (const float value : {9e7F, 1.2e8F, 100'000.0F, 90'012'345.0F, 0.025F, 20.0F, 3000.0F, -1.5F, 0.0F, 1e-5F}) {
        appendFloat(out, value);
    }
    EXPECT_EQ(out, "9e+07#1.2e+08#100000#9.00123e+07#0.025#20#3000#-1.5#0#1e-05#");
}

TEST(Encode, TimesAreEightBytesLeastSignificantFirst)
{
    std::string out;
    appendTime(out, 0x0102030405060708U);
    EXPECT_EQ(out, "\x08\x07\x06\x05\x04\x03\x02\x01#");
}

TEST(Encode, StringsHaveTheirLengthInFrontAndNothingBehind)
{
    std::string out;
    appendString(out, 4, "A1B2");
    appendString(out, 0, "");
    EXPECT_EQ(out, "4#A1B20#");
}

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
