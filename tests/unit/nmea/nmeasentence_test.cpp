// NMEA sentences: their line ends, their frame, and the day of their times.
#include "sources/nmea/nmeasentence.h"
#include "sources/nmea/nmeaclock.h"
#include "sources/nmea/nmealog.h"
#include "support/testing.h"
#include "support/textinput.h"

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

std::string readInPieces(const std::string& text, std::size_t piece)
{
    const ByteInput input = withLineFeeds(TestSupport::textInput(text, piece));
    std::string out;
    char buffer[8];
    for (std::size_t count = input(buffer, sizeof buffer); count > 0; count = input(buffer, sizeof buffer)) {
        out.append(buffer, count);
    }
    return out;
}

TEST(LineEnds, ACarriageReturnAloneBecomesALineFeed)
{
    for (const std::size_t piece : {1U, 2U, 3U, 100U}) {
        EXPECT_EQ(readInPieces("a\rb\r\nc\r\r\nd\n\re\r", piece), "a\nb\r\nc\r\r\nd\n\ne\r") << piece;
        EXPECT_EQ(readInPieces("\r", piece), "\r");
        EXPECT_EQ(readInPieces("", piece), "");
    }
}

constexpr long long second = 1'000'000;
constexpr long long hour = 3600 * second;
constexpr long long day = 24 * hour;
constexpr long long today = 20'000;

TEST(NmeaClock, WithoutADateTheDayStaysUntilMidnight)
{
    NmeaClock clock(today, false);
    clock.start(19'000);
    EXPECT_EQ(clock.at(23 * hour, std::nullopt), 19'000 * day + 23 * hour);
    EXPECT_EQ(clock.at(day - second, std::nullopt), 19'001 * day - second);
    EXPECT_EQ(clock.at(second, std::nullopt), 19'001 * day + second);
    EXPECT_EQ(clock.midnights(), 1U);
}

TEST(NmeaClock, ATimeOfThePastDayBehindMidnightGoesBack)
{
    NmeaClock clock(today, false);
    clock.start(19'000);
    clock.at(0, std::nullopt);
    EXPECT_EQ(clock.at(day - second, std::nullopt), 19'000 * day - second);
    EXPECT_EQ(clock.at(second, std::nullopt), 19'000 * day + second);
}

TEST(NmeaClock, ADateCountsAndMidnightIsNotReported)
{
    NmeaClock clock(today, false);
    clock.start(19'000);
    clock.at(day - second, 19'000);
    EXPECT_EQ(clock.at(0, std::nullopt), 19'001 * day);
    EXPECT_EQ(clock.at(0, 19'005), 19'005 * day);
    EXPECT_EQ(clock.at(hour, 19'004), 19'004 * day + hour);
    EXPECT_EQ(clock.midnights(), 0U);
}

TEST(NmeaClock, DatesThatMayHaveLost1024WeeksAreNotedAndOnlyCorrectedWhenAsked)
{
    NmeaClock noting(today, false);
    EXPECT_EQ(noting.corrected(today), today);
    EXPECT_EQ(noting.corrected(today - 7'167), today - 7'167);
    EXPECT_EQ(noting.rolledBack(), std::nullopt);
    EXPECT_EQ(noting.corrected(today - 7'168), today - 7'168);
    EXPECT_EQ(noting.rolledBack(), today - 7'168);

    NmeaClock fixing(today, true);
    EXPECT_EQ(fixing.corrected(today - 7'168), today);
    EXPECT_EQ(fixing.corrected(today - 100), today - 100);
    EXPECT_EQ(fixing.rolledBack(), today - 7'168);
}

}  // namespace
}  // namespace RecStation
