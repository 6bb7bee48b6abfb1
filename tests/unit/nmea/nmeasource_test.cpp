// NMEA logs: when each sentence is due, what the values become, and bad lines.
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <values/tree.h>
#include <values/value.h>

#include "sources/nmea/nmeasource.h"

namespace recstation {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using Number = values::ValueNumeric<double>;

constexpr unsigned long long oneSecond = 1'000'000;
constexpr unsigned long long eight = 1'795'248'000'000'000;  // 2026-11-21 08:00:00 UTC

std::string rmc(const std::string& time, const std::string& date = "211126")
{
    return "$GPRMC," + time + ",A,5230.0000,N,01330.0000,E,10.0,90.0," + date + ",,,A\n";
}

std::string gga(const std::string& time, const std::string& altitude)
{
    return "$GPGGA," + time + ",5230.0000,N,01330.0000,E,1,12,0.60," + altitude + ",M,46.8,M,,\n";
}

std::string hdt(int heading)
{
    return "$HEHDT," + std::to_string(heading) + ",T\n";
}

class NmeaSourceTest : public testing::Test {
protected:
    void prepare(const std::string& text)
    {
        QFile file(m_directory.filePath(QStringLiteral("drive.log")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::fromStdString(text));
        file.close();
        m_options.file = file.fileName().toStdString();
        m_source =
            makeNmeaSource(m_options, [this](const QString& sentence) { m_reports.push_back(sentence.toStdString()); });
        m_source->prepare();
    }
    // The heading behind every step, and when the step was.
    std::vector<std::pair<unsigned long long, double>> run(const std::string& text)
    {
        prepare(text);
        std::vector<std::pair<unsigned long long, double>> steps;
        while (const auto due = m_source->nextTime()) {
            m_source->step();
            steps.emplace_back(*due, number("/TRUEHEADING"));
        }
        return steps;
    }
    std::string failure(const std::string& text)
    {
        try {
            run(text);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no failure";
    }
    [[nodiscard]] double number(const char* path) const
    {
        return dynamic_cast<const Number&>(*m_tree.Find(QString::fromLatin1(path))).GetValue();
    }

    values::Tree m_tree;
    QTemporaryDir m_directory;
    NmeaOptions m_options;
    std::vector<std::string> m_reports;
    std::unique_ptr<Source> m_source;
};

TEST_F(NmeaSourceTest, SentencesWithoutATimeLieBetweenTheTimedOnesByTheirLines)
{
    const auto steps = run(rmc("080000") + hdt(1) + hdt(2) + hdt(3) + rmc("080001"));
    ASSERT_THAT(steps, SizeIs(5));
    EXPECT_EQ(steps[0].first, eight);
    EXPECT_THAT(steps[1], Pair(eight + oneSecond / 4, 1));
    EXPECT_THAT(steps[2], Pair(eight + oneSecond / 2, 2));
    EXPECT_THAT(steps[3], Pair(eight + oneSecond * 3 / 4, 3));
    EXPECT_EQ(steps[4].first, eight + oneSecond);
    EXPECT_THAT(m_reports, IsEmpty());
}

TEST_F(NmeaSourceTest, TheTimeIsThatOfTheLastTimedSentenceBeforeThem)
{
    const auto steps = run(gga("080000", "1") + rmc("080000") + hdt(1) + gga("080001", "1") + rmc("080001"));
    ASSERT_THAT(steps, SizeIs(5));
    EXPECT_THAT(steps[2], Pair(eight + oneSecond / 2, 1));
}

TEST_F(NmeaSourceTest, ATimedSentenceOfTheSameTimeComesBeforeWhatIsLater)
{
    const auto steps = run(rmc("080000") + hdt(1) + gga("080000", "5") + hdt(2) + rmc("080001"));
    ASSERT_THAT(steps, SizeIs(5));
    EXPECT_EQ(steps[1].first, eight);  // GGA
    EXPECT_THAT(steps[2], Pair(eight + oneSecond / 4, 1));
    EXPECT_THAT(steps[3], Pair(eight + oneSecond * 3 / 4, 2));
}

TEST_F(NmeaSourceTest, BeforeTheFirstAndBehindTheLastTimeTheyHaveThatTime)
{
    const auto steps = run(hdt(1) + hdt(2) + gga("075959", "5") + rmc("080000") + hdt(3));
    ASSERT_THAT(steps, SizeIs(5));
    EXPECT_THAT(steps[0], Pair(eight - oneSecond, 1));
    EXPECT_THAT(steps[1], Pair(eight - oneSecond, 2));
    EXPECT_EQ(steps[2].first, eight - oneSecond);
    EXPECT_THAT(steps[4], Pair(eight, 3));
}

TEST_F(NmeaSourceTest, TheFirstDateHoldsForTheTimesBeforeItAcrossMidnight)
{
    const auto steps = run(gga("235958", "5") + gga("235959", "6") + rmc("000000", "221126"));
    ASSERT_THAT(steps, SizeIs(3));
    EXPECT_EQ(steps[0].first, eight + 57'600 * oneSecond - 2 * oneSecond);
    EXPECT_EQ(steps[2].first, eight + 57'600 * oneSecond);
}

TEST_F(NmeaSourceTest, ValuesHaveTheirUnitsAndAreNotANumberBefore)
{
    prepare(rmc("080000") + gga("080000", "-4.5") + "$PASHR,080000,10,T,1,2,0,0,0,0,1,0\n");
    for (const char* path :
         {"/LOCATIONLATITUDE", "/LOCATIONLONGITUDE", "/ALTITUDE", "/VELOCITY", "/TRUEHEADING", "/PITCH", "/ROLL"}) {
        EXPECT_TRUE(std::isnan(number(path))) << path;
    }
    while (m_source->nextTime()) {
        m_source->step();
    }
    EXPECT_EQ(number("/LOCATIONLATITUDE"), 52.5);
    EXPECT_EQ(number("/LOCATIONLONGITUDE"), 13.5);
    EXPECT_EQ(number("/ALTITUDE"), -4.5);
    EXPECT_NEAR(number("/VELOCITY"), 18520.0 / 3600, 1e-12);
    EXPECT_EQ(number("/ROLL"), 1);
    EXPECT_EQ(number("/PITCH"), 2);
}

TEST_F(NmeaSourceTest, AValueOfAnotherSourceKeepsWhatItIsUntilASentenceComes)
{
    values::ValuePtr<Number> heading;
    heading.Attach(QStringLiteral("/TRUEHEADING"));
    heading->SetValue(12);
    prepare(rmc("080000"));
    EXPECT_EQ(number("/TRUEHEADING"), 12);
}

TEST_F(NmeaSourceTest, WithoutRmcTheDateIsAskedFor)
{
    EXPECT_THAT(failure(gga("080000", "1")), HasSubstr("tells no date: name it with --date"));
    m_options.date = "2026-11-21";
    const auto steps = run(gga("080000", "1") + hdt(5) + gga("080002", "2"));
    ASSERT_THAT(steps, SizeIs(3));
    EXPECT_EQ(steps[1].first, eight + oneSecond);
    m_options.date = "21.11.2026";
    EXPECT_THAT(failure(gga("080000", "1")), HasSubstr("--date"));
}

TEST_F(NmeaSourceTest, MidnightAndTimesThatGoBackAreCounted)
{
    m_options.date = "2026-11-20";
    const auto steps = run(gga("235959", "1") + gga("000001", "2") + gga("000000", "3") + hdt(5) + gga("000002", "4"));
    ASSERT_THAT(steps, SizeIs(5));
    EXPECT_EQ(steps[1].first, eight - 28'799 * oneSecond);
    EXPECT_EQ(steps[2].first, steps[1].first);
    EXPECT_EQ(steps[3].first, steps[1].first + oneSecond / 2);
    EXPECT_EQ(steps[4].first, eight - 28'798 * oneSecond);
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("1 row goes back, by up to "), HasSubstr("midnight passed 1 times")));
}

std::string twoDrives()
{
    std::string log;
    for (const char* hours : {"09", "08"}) {
        for (int i = 10; i < 21; ++i) {
            log += rmc(hours + ("00" + std::to_string(i))) + hdt(i);
        }
    }
    return log;
}

TEST_F(NmeaSourceTest, ADriveBehindALaterOneIsToldWithItsTimes)
{
    const auto steps = run(twoDrives());
    EXPECT_EQ(steps.back().first, eight + 3620 * oneSecond);
    EXPECT_THAT(m_reports,
                ElementsAre(AllOf(HasSubstr("11 rows go back, by up to 3610.000 s, from 2026-11-21 09:00:20 UTC"),
                                  HasSubstr("from 2026-11-21 08:00:10 UTC to 2026-11-21 08:00:20 UTC"),
                                  HasSubstr("--split-on-gap"))));
}

TEST_F(NmeaSourceTest, WhereGapsPartRecordingsADriveBehindALaterOneHasItsOwnTimes)
{
    m_options.splitGapUs = 600 * oneSecond;
    const auto steps = run(twoDrives());
    ASSERT_THAT(steps, SizeIs(44));
    EXPECT_THAT(steps[21], Pair(eight + 3620 * oneSecond, 20));  // behind the last time of the first drive
    EXPECT_EQ(steps[22].first, eight + 10 * oneSecond);
    EXPECT_THAT(steps[23], Pair(eight + 10 * oneSecond + oneSecond / 2, 10));
    EXPECT_EQ(steps.back().first, eight + 20 * oneSecond);
    EXPECT_THAT(m_reports, IsEmpty());
}

TEST_F(NmeaSourceTest, NothingIsSpreadOverAGapThatPartsRecordings)
{
    m_options.splitGapUs = 600 * oneSecond;
    const auto steps = run(rmc("080000") + hdt(1) + rmc("090000"));
    ASSERT_THAT(steps, SizeIs(3));
    EXPECT_THAT(steps[1], Pair(eight, 1));
    EXPECT_EQ(steps[2].first, eight + 3600 * oneSecond);
}

TEST_F(NmeaSourceTest, ARolledBackDateIsReportedAndOnlyCorrectedWhenAsked)
{
    // 2018-08-20 less 1,024 weeks.
    const std::string text = rmc("080000", "050199");
    EXPECT_EQ(run(text).at(0).first, 915'523'200 * oneSecond);
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("--fix-week-rollover")));
    m_options.fixWeekRollover = true;
    EXPECT_EQ(run(text).at(0).first, (915'523'200 + 7'168 * 86'400ULL) * oneSecond);
    EXPECT_THAT(m_reports.back(), HasSubstr("set 1,024 weeks later"));
}

TEST_F(NmeaSourceTest, CountsAreOfUsedSkippedAndBadLines)
{
    run(rmc("080000") + "# comment\n$GPGSV,3,1,12\n$GPGGA,080001,,,,,0,,,,,,,,\n$HEHDT,x,T\nrubbish\n" + hdt(4));
    EXPECT_EQ(m_source->report().used, 2U);
    EXPECT_EQ(m_source->report().skipped, 3U);
    EXPECT_EQ(m_source->report().bad, 2U);
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("nmea: line 5: the heading \"x\""), HasSubstr("nmea: line 6: ")));
}

TEST_F(NmeaSourceTest, OnceASentenceHadAChecksumItsLikesWithoutOneAreBad)
{
    const auto steps = run(rmc("080000") + "$SDHDG,229.8,,,1.3,E*36\n$SDHDG,229\n" + hdt(5));
    EXPECT_THAT(steps, SizeIs(3));
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("line 3: it lacks the checksum that SDHDG had before")));
}

TEST_F(NmeaSourceTest, StrictEndsAtTheFirstBadLine)
{
    m_options.strict = true;
    EXPECT_THAT(failure(rmc("080000") + "rubbish\n"), HasSubstr("nmea: line 2: "));
}

TEST_F(NmeaSourceTest, AnInputThatNeverTellsATimeIsRefusedInBoundedMemory)
{
    std::string text;
    for (int i = 0; i < 20'000; ++i) {
        text += hdt(i % 360);
    }
    EXPECT_THAT(failure(text), HasSubstr("the first 10000 sentences"));
    m_options.date = "2026-11-21";
    EXPECT_THAT(failure(text), HasSubstr("tell no time"));
    EXPECT_THAT(failure(""), HasSubstr("tells no time and position"));
}

TEST_F(NmeaSourceTest, ManySentencesOfOneTimeDoNotWaitForever)
{
    std::string text = rmc("080000");
    for (int i = 0; i < 25'000; ++i) {
        text += hdt(i % 360);
    }
    const auto steps = run(text + rmc("080100"));
    ASSERT_THAT(steps, SizeIs(25'002));
    EXPECT_TRUE(
        std::is_sorted(steps.begin(), steps.end(), [](const auto& a, const auto& b) { return a.first < b.first; }));
    EXPECT_EQ(steps.back().first, eight + 60 * oneSecond);
}

TEST_F(NmeaSourceTest, HostileInputIsBadAndHarmless)
{
    std::mt19937 random(7);
    std::string garbage(200'000, '\0');
    for (char& c : garbage) {
        c = static_cast<char>(random());
    }
    const auto steps = run(garbage + '\n' + std::string(3'000'000, '$') + "\n$GPGGA" + std::string(4000, ',') + '\n' +
                           rmc("080000") + hdt(7));
    ASSERT_THAT(steps, SizeIs(2));
    EXPECT_THAT(steps[1], Pair(eight, 7));
    EXPECT_THAT(m_reports, SizeIs(21));
}

}  // namespace
}  // namespace recstation
