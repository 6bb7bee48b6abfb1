// Lines out of bytes that arrive in pieces, and ISO times.
#include "input/linereader.h"
#include "input/badlines.h"
#include "input/timetext.h"
#include "support/testing.h"
#include "support/textinput.h"

namespace RecStation {

namespace {

void expectLines(LineReader& reader, const std::vector<std::string>& lines)
{
    for (std::size_t i = 0; i < lines.size(); ++i) {
        ASSERT_TRUE(reader.next());
        EXPECT_EQ(reader.line(), lines[i]);
        EXPECT_EQ(reader.number(), i + 1);
    }
    EXPECT_FALSE(reader.next());
}

TEST(LineReader, TellsWhetherTheLastLineHadItsLineFeed)
{
    LineReader reader(TestSupport::textInput("one\ntwo", 3), 100);
    ASSERT_TRUE(reader.next());
    EXPECT_TRUE(reader.terminated());
    ASSERT_TRUE(reader.next());
    EXPECT_FALSE(reader.terminated());
}

TEST(LineReader, SplitsAtLineFeedsHoweverTheBytesArrive)
{
    struct {
        std::string text;
        std::size_t longest;
        std::vector<std::string> lines;
    } const cases[]{{"one\n\nthree\n", 100, {"one", "", "three"}},
                    {"one\ntwo", 100, {"one", "two"}},
                    {"\xEF\xBB\xBFone\n\xEF\xBB\xBFtwo\n", 100, {"one", "\xEF\xBB\xBFtwo"}},
                    {"", 100, {}},
                    {"12345\n12345", 5, {"12345", "12345"}}};
    for (const auto& [text, longest, lines] : cases) {
        for (const std::size_t pieceSize : {1U, 2U, 3U, 100U}) {
            LineReader reader(TestSupport::textInput(text, pieceSize), longest);
            expectLines(reader, lines);
        }
    }
}

TEST(LineReader, ALongerLineIsPassedOverAsAWholeAndCounted)
{
    for (const std::size_t pieceSize : {1U, 4U, 100U}) {
        LineReader reader(TestSupport::textInput("one\n" + std::string(50, 'x') + "\ntwo\n", pieceSize), 5);
        EXPECT_TRUE(reader.next());
        EXPECT_EQ(reader.line(), "one");
        EXPECT_TRUE(reader.next());
        EXPECT_THROW(static_cast<void>(reader.line()), LineError);
        EXPECT_EQ(reader.number(), 2U);
        EXPECT_TRUE(reader.next());
        EXPECT_EQ(reader.line(), "two");
        EXPECT_FALSE(reader.next());
    }
}

}  // namespace
}  // namespace RecStation

namespace {

using RecStation::parseIsoTime;

constexpr unsigned long long halfPastEight = 1'795'249'800'000'000;  // 2026-11-21 08:30:00 UTC

TEST(IsoTime, TimesAreReadToTheMicrosecondInAnyZoneAndFormOfIso8601)
{
    for (const auto& [text, microseconds] : std::vector<std::pair<const char*, unsigned long long>>{
             {"2026-11-21T08:30:00Z", 0},
             {"2026-11-21T08:30:00.25Z", 250'000},
             {"2026-11-21T08:30:00.000001Z", 1},
             {"2026-11-21T08:30:00.1234569Z", 123'456},
             {"2026-11-21T08:30", 0},  // without zone it is UTC, and seconds may be left out
             {"2026-11-21T08:30Z", 0},
             {"2026-11-21T08:30:00", 0},
             {"2026-11-21T10:30:00+02:00", 0},
             {"2026-11-21T05:00:00.5-03:30", 500'000},
             {"2026-11-21T09:30:00+0100", 0},
             {"2026-11-21T09:30:00+01", 0},
             {"20261121T083000Z", 0},
             {"20261121T0830", 0},
             {"20261121T093000+0100", 0},
             {"2026-11-21t08:30:00z", 0},
             {"2026-11-21T09:30:00,123456789+01:00", 123'456}}) {  // GNU date -Ins
        EXPECT_EQ(parseIsoTime(text), halfPastEight + microseconds) << text;
    }
}

TEST(IsoTime, OtherTextsAreNone)
{
    for (const char* text :
         {"", "now", "2026-11-21", "2026-11-21 08:30:00Z", "2026-13-21T08:30:00Z", "2026-11-21T25:30:00Z",
          "2026-11-21T08:30:00.Z", "2026-11-21T08:30.5", "2026-11-21T08:30:00Zulu", "2026-1121T08:30",
          "202611-21T08:30", "2026-11-21T08:3000", "2026-11-21T08:30:00+1", "20261121083000"}) {
        EXPECT_FALSE(parseIsoTime(text)) << text;
    }
}

TEST(IsoTime, TimesThatRecordingsCannotHoldAreNone)
{
    EXPECT_FALSE(parseIsoTime("1969-12-31T23:59:59Z"));
    EXPECT_FALSE(parseIsoTime("1970-01-01T00:00:00Z"));
    EXPECT_EQ(parseIsoTime("1970-01-01T00:00:00.000001Z"), 1U);
    EXPECT_TRUE(parseIsoTime("2500-12-31T23:59:59.999999Z"));
    EXPECT_FALSE(parseIsoTime("2501-01-01T00:00:00Z"));
}

}  // namespace
