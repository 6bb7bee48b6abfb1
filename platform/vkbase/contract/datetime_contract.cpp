// Date-times: made from dates in UTC, counted in days, formatted in English with any offset.
#include <limits>

#include <QLocale>

#include <gtest/gtest.h>

#include <vkbase/datetime.h>

using Quon::DateTime;

namespace {

constexpr unsigned long long Day = 86'400'000'000;
constexpr unsigned long long Largest = std::numeric_limits<unsigned long long>::max();
const QString DateTimeFormat = QStringLiteral("yyyy-MM-dd hh-mm-ss.zzz");

}  // namespace

TEST(DateTime, HoldsTheMicrosecondsItWasMadeFrom)
{
    for (const unsigned long long value : {0ULL, 1ULL, Day, 1'700'000'000'123'456ULL, Largest}) {
        EXPECT_EQ(DateTime(value).getTimeStamp(), value);
    }
}

TEST(DateTime, CanBeSet)
{
    DateTime time(5ULL);
    time.setTime_ts(7);
    EXPECT_EQ(time.getTimeStamp(), 7U);
}

TEST(DateTime, TakesADateAsMidnightUtc)
{
    EXPECT_EQ(DateTime(QDate(1970, 1, 1)).getTimeStamp(), 0U);
    EXPECT_EQ(DateTime(QDate(1970, 1, 3)).getTimeStamp(), 2 * Day);
    EXPECT_EQ(DateTime(QDate(2024, 2, 29)).getTimeStamp(), 1'709'164'800'000'000U);
}

TEST(DateTime, TakesADateAndTimeAsUtc)
{
    EXPECT_EQ(DateTime(QDate(1970, 1, 2), QTime(1, 2, 3, 4)).getTimeStamp(), Day + 3'723'004'000U);
}

TEST(DateTime, GivesZeroForInvalidAndEarlierDates)
{
    EXPECT_EQ(DateTime(QDate()).getTimeStamp(), 0U);
    EXPECT_EQ(DateTime(QDate(2024, 2, 30)).getTimeStamp(), 0U);
    EXPECT_EQ(DateTime(QDate(2024, 2, 29), QTime()).getTimeStamp(), 0U);
    EXPECT_EQ(DateTime(QDate(1969, 12, 31), QTime(23, 59)).getTimeStamp(), 0U);
}

TEST(DateTime, GivesTheLargestCountForDatesPastIt)
{
    EXPECT_EQ(DateTime(QDate(1'000'000, 1, 1)).getTimeStamp(), Largest);
    EXPECT_LT(DateTime(QDate(580'000, 1, 1)).getTimeStamp(), Largest);
}

TEST(DateTime, CountsWholeCalendarDays)
{
    const DateTime evening(QDate(2024, 1, 1), QTime(23, 59, 59));
    const DateTime midnight(QDate(2024, 1, 2));
    EXPECT_EQ(evening.daysTo(midnight), 1);
    EXPECT_EQ(midnight.daysTo(evening), -1);
    EXPECT_EQ(midnight.daysTo(DateTime(QDate(2024, 1, 2), QTime(12, 0))), 0);
    EXPECT_EQ(DateTime(0ULL).daysTo(midnight), 19'724);
    EXPECT_EQ(DateTime(0ULL).daysTo(DateTime(Largest)), 213'503'982);
}

TEST(DateTime, GivesTheTimeOfDayToTheMillisecond)
{
    EXPECT_EQ(DateTime(0ULL).time(), QTime(0, 0));
    EXPECT_EQ(DateTime(3 * Day + 3'723'004'999).time(), QTime(1, 2, 3, 4));
    EXPECT_TRUE(DateTime(Largest).time().isValid());
}

TEST(DateTime, FormatsWithQtPatternsInUtc)
{
    const DateTime time(QDate(2024, 2, 29), QTime(13, 4, 5, 67));
    EXPECT_EQ(time.toString(DateTimeFormat), QStringLiteral("2024-02-29 13-04-05.067"));
    EXPECT_EQ(time.toString(QStringLiteral("yyyy-MM-dd__hh-mm-ss")), QStringLiteral("2024-02-29__13-04-05"));
    EXPECT_EQ(DateTime(0ULL).toString(DateTimeFormat), QStringLiteral("1970-01-01 00-00-00.000"));
}

TEST(DateTime, FormatsInEnglishEverywhere)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    const QString text = DateTime(QDate(2024, 5, 1)).toString(QStringLiteral("MMMM"));
    QLocale::setDefault(before);
    EXPECT_EQ(text, QStringLiteral("May"));
}

TEST(DateTime, ShiftsTheTextByAnOffsetInSeconds)
{
    const DateTime time(QDate(2024, 1, 1), QTime(0, 30));
    EXPECT_EQ(time.toString(DateTimeFormat, 3600), QStringLiteral("2024-01-01 01-30-00.000"));
    EXPECT_EQ(time.toString(DateTimeFormat, -3600), QStringLiteral("2023-12-31 23-30-00.000"));
    EXPECT_EQ(time.toString(DateTimeFormat, 0), time.toString(DateTimeFormat));
}

TEST(DateTime, HasATextForEveryCountAndOffset)
{
    using Offset = std::numeric_limits<long long>;
    EXPECT_EQ(DateTime(Largest).toString(DateTimeFormat), QStringLiteral("586524-01-19 08-01-49.551"));
    for (const unsigned long long count : {0ULL, Largest / 2, Largest}) {
        for (const long long offset : {Offset::min(), 0LL, Offset::max()}) {
            EXPECT_FALSE(DateTime(count).toString(DateTimeFormat, offset).isEmpty()) << count << ' ' << offset;
        }
    }
}
