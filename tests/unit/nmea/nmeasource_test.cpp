// NMEA logs beside other sources, and hostile ones; what becomes of sentences is tested in tests/cases.
#include <random>

#include <values/tree.h>
#include <values/value.h>

#include "sources/nmea/nmealog.h"
#include "sources/nmea/nmeasource.h"
#include "support/recordingbytes.h"
#include "support/testing.h"

namespace RecStation {
namespace {

using namespace testing;
using Number = values::ValueNumeric<double>;

constexpr unsigned long long oneSecond = 1'000'000;
constexpr unsigned long long eight = 1'795'248'000'000'000;  // 2026-11-21 08:00:00 UTC

std::string rmc(const std::string& time)
{
    return "$GPRMC," + time + ",A,5230.0000,N,01330.0000,E,10.0,90.0,211126,,,A\n";
}

std::string hdt(int heading)
{
    return "$HEHDT," + std::to_string(heading) + ",T\n";
}

class NmeaSourceTest : public testing::Test {
protected:
    void prepare(const std::string& text)
    {
        const QString log = m_directory.filePath("drive.log");
        TestSupport::writeFile(log, text);
        m_options.file = log.toStdString();
        m_source =
            makeNmeaSource(m_options, [this](const QString& sentence) { m_reports.push_back(sentence.toStdString()); });
        m_source->prepare();
    }
    // The heading after every step, and when the step was.
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
    [[nodiscard]] double number(const char* path) const
    {
        return dynamic_cast<const Number&>(*m_tree.Find(path)).GetValue();
    }

    values::Tree m_tree;
    QTemporaryDir m_directory;
    NmeaOptions m_options;
    std::vector<std::string> m_reports;
    std::unique_ptr<Source> m_source;
};

TEST_F(NmeaSourceTest, AValueOfAnotherSourceKeepsWhatItIsUntilASentenceComes)
{
    values::ValuePtr<Number> heading;
    heading.Attach("/TRUEHEADING");
    heading->SetValue(12);
    prepare(rmc("080000"));
    EXPECT_EQ(number("/TRUEHEADING"), 12);
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

// Lines that arrive live, each at a time in milliseconds that the test sets.
class NmeaArrival : public testing::Test {
protected:
    using Lines = std::vector<std::pair<long long, std::string>>;

    std::vector<std::pair<unsigned long long, double>> headings(const Lines& lines)
    {
        const QString path = m_directory.filePath("live");
        std::string text;
        for (const auto& [time, line] : lines) {
            text += line;
        }
        TestSupport::writeFile(path, text);
        NmeaOptions options;
        options.file = path.toStdString();
        std::size_t read = 0;
        NmeaLog log(
            options, [this](const QString& sentence) { m_reports.push_back(sentence.toStdString()); },
            [&] { return 1000 * lines.at(read++).first; });
        std::vector<std::pair<unsigned long long, double>> out;
        while (const auto fix = log.next()) {
            if (fix->fix.headingDeg) {
                out.emplace_back(fix->time / 1000, *fix->fix.headingDeg);
            }
        }
        return out;
    }

    QTemporaryDir m_directory;
    std::vector<std::string> m_reports;
};

TEST_F(NmeaArrival, WithoutADateForTenSecondsEverySentenceHasTheTimeOfItsArrival)
{
    const std::string undated = "$GPGGA,080001,5230.0000,N,01330.0000,E,1,12,0.60,31.5,M,46.8,M,,\n";
    EXPECT_THAT(
        headings(
            {{500'000, hdt(1)}, {501'000, undated}, {510'500, hdt(2)}, {510'600, rmc("080011")}, {509'000, hdt(3)}}),
        testing::ElementsAre(Pair(500'000, 1), Pair(510'500, 2), Pair(510'600, 3)));
    EXPECT_THAT(m_reports.front(), testing::HasSubstr("tells no date: times are those of arrival"));
}

TEST_F(NmeaArrival, ADateWithinTenSecondsGivesEverySentenceItsTime)
{
    EXPECT_THAT(headings({{500'000, hdt(1)}, {509'900, rmc("080000")}, {509'950, hdt(2)}}),
                testing::ElementsAre(Pair(eight / 1000, 1), Pair(eight / 1000, 2)));
    EXPECT_THAT(m_reports, testing::IsEmpty());
}

TEST_F(NmeaArrival, ADeviceThatEndsBeforeThatIsNotLost)
{
    EXPECT_THAT(headings({{500'000, hdt(1)}, {500'100, hdt(2)}}),
                testing::ElementsAre(Pair(500'000, 1), Pair(500'100, 2)));
}

TEST_F(NmeaSourceTest, HostileInputIsCountedAndHarmless)
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
    ASSERT_THAT(m_reports, SizeIs(2));
    EXPECT_THAT(m_reports[0], testing::HasSubstr("is longer than 4096 bytes"));
    EXPECT_THAT(m_reports[1], testing::HasSubstr("lines hold binary data, of which only sentences were used"));
}

}  // namespace
}  // namespace RecStation
