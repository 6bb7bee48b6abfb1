// Dates, times of day and UTC offsets as logs write them.
#include <stdexcept>

#include <gtest/gtest.h>

#include "input/timetext.h"

namespace {

using RecStation::LogDateFormat;
using RecStation::parseTimeOfDay;
using RecStation::parseUtcOffset;

constexpr long long second = 1'000'000;
constexpr long long hour = 3600 * second;

TEST(LogTime, DatesAreReadByTheirFormat)
{
    // Two digits mean the years 1970 to 2069.
    const std::vector<std::tuple<const char*, const char*, long long>> rows = {
        {"yyyy-MM-dd", "1970-01-02", 1},  {"MM/dd/yy", "01/14/17", 17'180}, {"d.M.yyyy", "14.1.2017", 17'180},
        {"yyyy-MM-dd", "1969-12-31", -1}, {"MM/dd/yy", "01/01/70", 0},      {"MM/dd/yy", "12/31/99", 10'956},
        {"MM/dd/yy", "02/29/00", 11'016}, {"MM/dd/yy", "02/29/68", 35'853}, {"(yyyy.MM) dd", "(1970.01) 03", 2},
        {"yyyyMMdd", "19700103", 2},
    };
    for (const auto& [format, text, days] : rows) {
        EXPECT_EQ(LogDateFormat(format).parse(text), days) << format << ' ' << text;
    }
    for (const char* text : {"", "13/01/17", "02/29/17", "1/14/17", "01/14/2017", "NA"}) {
        EXPECT_EQ(LogDateFormat("MM/dd/yy").parse(text), std::nullopt) << text;
    }
    EXPECT_EQ(LogDateFormat("yyyy.MM.dd").parse("1970-01-03"), std::nullopt);
}

TEST(LogTime, AFormatHasEachOfDayMonthAndYearOnce)
{
    for (const char* format : {"", "dd", "dd.MM", "dd.MM.y", "dd.MM.yyyy dd", "d.d.yyyy", "dd.MM.yyyyyy"}) {
        EXPECT_THROW(LogDateFormat{format}, std::invalid_argument) << format;
    }
}

TEST(LogTime, TimesOfDayHaveMinutesSecondsOrMicroseconds)
{
    EXPECT_EQ(parseTimeOfDay("5:31"), 5 * hour + 31 * 60 * second);
    EXPECT_EQ(parseTimeOfDay("05:31:07"), 5 * hour + (31 * 60 + 7) * second);
    EXPECT_EQ(parseTimeOfDay("23:59:59.25"), 24 * hour - second * 3 / 4);
    EXPECT_EQ(parseTimeOfDay("0:00:00.0000019"), 1);
    for (const char* text : {"", "24:00", "5:60", "5:31:60", "5", "5:3", "-5:30", "5:31pm", "5:31:07."}) {
        EXPECT_EQ(parseTimeOfDay(text), std::nullopt) << text;
    }
}

TEST(LogTime, UtcOffsets)
{
    EXPECT_EQ(parseUtcOffset("UTC"), 0);
    EXPECT_EQ(parseUtcOffset("Z"), 0);
    EXPECT_EQ(parseUtcOffset("-05:00"), -5 * hour);
    EXPECT_EQ(parseUtcOffset("+5:45"), 5 * hour + hour * 3 / 4);
    EXPECT_EQ(parseUtcOffset("+14"), 14 * hour);
    for (const char* text : {"", "5", "+14:01", "-05:60", "America/Bogota", "utc+5"}) {
        EXPECT_EQ(parseUtcOffset(text), std::nullopt) << text;
    }
}

}  // namespace
