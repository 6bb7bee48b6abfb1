// When the value of a record was measured.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include <replay/recordingtime.h>

namespace RecToolTests {
namespace {

using RecTool::measuredUs;

double momentOf(const std::string& text, std::uint64_t timeMs, std::uint64_t startMs)
{
    Recording2::Inspection::Record record;
    record.timeMs = timeMs;
    record.data = text;
    return RecTool::momentMs(record, startMs);
}

TEST(MeasuredTime, AMapTellsIt)
{
    EXPECT_EQ(measuredUs("6;1700000000010240|51;0,<<<"), 1700000000010240U);
    EXPECT_EQ(measuredUs("7;1700000000010240"), 1700000000010240U);
}

TEST(MeasuredTime, PlainValuesAndMapsWithoutATimeStampDoNot)
{
    for (const char* text : {"3;1700000000010240,0,1", "6;0|51;0,<<<", "6;", "6;12x|51;0,<<<", "7", "", "34;1,2,3"}) {
        EXPECT_EQ(measuredUs(text), std::nullopt) << text;
    }
}

TEST(MeasuredTime, SpectraThatWereFiledOneMillisecondApartStandWhereTheyWereMeasured)
{
    EXPECT_EQ(momentOf("6;1700000000000000|51;0,<<<", 20, 1700000000000), 0);
    EXPECT_EQ(momentOf("6;1700000000010240|51;0,<<<", 22, 1700000000000), 10.24);
    EXPECT_EQ(momentOf("6;1700000000020480|51;0,<<<", 24, 1700000000000), 20.48);
}

TEST(MeasuredTime, WithoutOneTheRecordsOwnTimeCounts)
{
    EXPECT_EQ(momentOf("3;-30,-120,20", 25, 1700000000000), 25);
    EXPECT_EQ(momentOf("6;1700000000010240|51;0,<<<", 22, 0), 22);
    EXPECT_EQ(momentOf("6;1700000000010240|51;0,<<<", 22, std::numeric_limits<std::uint64_t>::max()), 22);
}

TEST(MeasuredTime, ABearingOlderThanTheStartIsInFrontOfItButTheStateAtTheStartIsNot)
{
    EXPECT_EQ(momentOf("7;1699999940000000|51;0,90/", 15, 1700000000000), -60000);
    EXPECT_EQ(momentOf("7;1699999940000000|34;1e6,25000,1|50;90/", 15, 1700000000000), 15);
}

}  // namespace
}  // namespace RecToolTests
