// Logs of bearings: rows that become bearings, their times, positions and units, bad rows.
#include <cmath>
#include <string>
#include <vector>

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <values/maps.h>
#include <values/tree.h>
#include <values/value.h>

#include "sources/bearings/bearingssource.h"

namespace {

using recstation::BearingsOptions;
using recstation::Source;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using BearingMap = values::ValueMap<values::Bearing, values::BearingHandler>;
using Number = values::ValueNumeric<double>;

constexpr unsigned long long start = 1'484'389'860'000'000;  // 2017-01-14 10:31:00 UTC
constexpr unsigned long long minute = 60'000'000;

const std::string header = "date;time;station;latitude;longitude;altitude;frequency;azimuth\n";

class BearingsSource : public testing::Test {
protected:
    void prepare(const std::string& text)
    {
        const QString path = m_directory.filePath(QStringLiteral("field log.v2.csv"));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::fromStdString(text));
        file.close();
        m_options.file = path.toStdString();
        m_source = recstation::makeBearingsSource(
            m_options, [this](const QString& sentence) { m_reports.push_back(sentence.toStdString()); });
        m_source->prepare();
    }
    std::string problem(const std::string& text)
    {
        try {
            prepare(text);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no problem";
    }
    // The only report about a single row behind the plain header.
    std::string reportOn(const std::string& row)
    {
        m_reports.clear();
        prepare(header + "2017-01-14;10:31;E1;4;-75;0;150;7\n" + row);
        run();
        EXPECT_EQ(m_source->report().bad, 1U) << row;
        EXPECT_EQ(m_source->report().used, 1U) << row;
        return m_reports.size() == 1 ? m_reports.front() : std::to_string(m_reports.size()) + " reports";
    }
    std::vector<unsigned long long> run()
    {
        std::vector<unsigned long long> times;
        while (const auto time = m_source->nextTime()) {
            times.push_back(*time);
            m_source->step();
            m_ownTimes.push_back(map().GetTimeStamp());
        }
        return times;
    }
    template <typename T>
    const T& value(const char* path) const
    {
        const auto* found = dynamic_cast<const T*>(m_tree.Find(QString::fromLatin1(path)));
        if (found == nullptr) {
            throw std::runtime_error(std::string("no such value: ") + path);
        }
        return *found;
    }
    [[nodiscard]] double number(const char* path) const { return value<Number>(path).GetValue(); }
    [[nodiscard]] std::string deviceName() const
    {
        return value<values::Value<QString>>("/Devices/Df1/Adm/DRIVERNAME").GetValue().toStdString();
    }
    [[nodiscard]] const BearingMap& map() const { return value<BearingMap>("/DfSpectrum"); }
    [[nodiscard]] double azimuth(std::size_t channel) const { return map().GetCells()[channel].azimuthDeg; }

    values::Tree m_tree;
    QTemporaryDir m_directory;
    BearingsOptions m_options;
    std::vector<std::string> m_reports;
    std::vector<unsigned long long> m_ownTimes;
    std::unique_ptr<Source> m_source;
};

TEST_F(BearingsSource, ARowBecomesABearingOnItsChannelAtItsTime)
{
    prepare(header + "2017-01-14;10:31;E1;4.5;-75.5;1942;150.015;163\n" +
            "2017-01-14;10:32:00.5;E1;4.6;-75.6;NA;150.005;92.5\n");
    EXPECT_EQ(m_source->nextTime(), start);
    m_source->step();
    EXPECT_EQ(map().GetTimeStamp(), start);
    EXPECT_EQ(azimuth(1), 163);
    EXPECT_TRUE(std::isnan(azimuth(0)));
    EXPECT_TRUE(std::isnan(map().GetCells()[1].levelDb));
    EXPECT_EQ(m_source->nextTime(), start + minute + 500'000);
    m_source->step();
    EXPECT_EQ(azimuth(0), 92.5);
    EXPECT_EQ(number("/LOCATIONLATITUDE"), 4.6);
    EXPECT_EQ(number("/LOCATIONLONGITUDE"), -75.6);
    EXPECT_TRUE(std::isnan(number("/ALTITUDE")));
    EXPECT_EQ(value<values::ValueNumericWithOffset<double>>("/FREQUENCY").GetValue(), 150'005'000);
    EXPECT_EQ(m_source->nextTime(), std::nullopt);
    EXPECT_EQ(m_source->report().used, 2U);
    EXPECT_THAT(m_reports, IsEmpty());
}

TEST_F(BearingsSource, ChannelsAndTheFirstPositionAreThereBeforeTheFirstStep)
{
    prepare(header + "2017-01-14;10:30;E1;1;1;1;151;NA\n2017-01-14;10:31;E1;4.5;-75.5;1942;150.015;163\n" +
            "2017-01-14;10:31;E1;4.5;-75.5;1942;150.005;1\n");
    EXPECT_EQ(map().GetChannelRange(), values::ChannelRange::List({150'005'000, 150'015'000, 151'000'000}));
    EXPECT_EQ(map().GetTimeStamp(), 0U);
    EXPECT_EQ(number("/LOCATIONLATITUDE"), 4.5);
    EXPECT_EQ(number("/ALTITUDE"), 1942);
    EXPECT_EQ(number("/TRUEHEADING"), 0);
    EXPECT_EQ(number("/Devices/Df1/Scn/StartFreq"), 150'005'000);
    EXPECT_EQ(number("/Devices/Df1/Scn/StopFreq"), 151'000'000);
    EXPECT_EQ(value<values::Value<QString>>("/Devices/Df1/Adm/DEVICE_TYPE").GetValue(), QStringLiteral("Bearing log"));
}

TEST_F(BearingsSource, PositionsCanBeLeftOut)
{
    m_options.noPosition = true;
    prepare(header + "2017-01-14;10:31;E1;4.5;-75.5;1942;150.015;163\n");
    run();
    EXPECT_EQ(m_tree.Find(QStringLiteral("/LOCATIONLATITUDE")), nullptr);
    EXPECT_EQ(m_tree.Find(QStringLiteral("/ALTITUDE")), nullptr);
    EXPECT_EQ(azimuth(0), 163);
    EXPECT_THAT(m_reports, IsEmpty());
}

TEST_F(BearingsSource, PositionIsShownBeforeTheBearing)
{
    class Listener final : public IObserver {
    public:
        explicit Listener(const Number& latitude) : m_latitude(latitude) {}
        void Update(void* /*subject*/, TChangeCode /*code*/) override { seen.push_back(m_latitude.GetValue()); }
        std::vector<double> seen;

    private:
        const Number& m_latitude;
    };
    prepare(header + "2017-01-14;10:31;E1;1;2;3;150;163\n2017-01-14;10:31;E1;4;5;6;150;163\n");
    Listener listener(value<Number>("/LOCATIONLATITUDE"));
    m_tree.Find(QStringLiteral("/DfSpectrum"))->AddObserver(&listener);
    run();
    m_tree.Find(QStringLiteral("/DfSpectrum"))->RemoveObserver(&listener);
    EXPECT_THAT(listener.seen, ElementsAre(1, 4));
}

TEST_F(BearingsSource, WhereTimesGoBackStepsAndMapHaveTheLatestTimeAndTheRowsAreCounted)
{
    prepare(header + "2017-01-14;10:31;E1;1;2;3;150;1\n2017-01-14;10:34;E1;1;2;3;150;2\n" +
            "2017-01-14;10:32;E1;1;2;3;150;3\n2017-01-14;10:35;E1;1;2;3;150;4\n");
    EXPECT_THAT(run(), ElementsAre(start, start + 3 * minute, start + 3 * minute, start + 4 * minute));
    EXPECT_THAT(m_ownTimes, ElementsAre(start, start + 3 * minute, start + 3 * minute, start + 4 * minute));
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("1 row goes back, by up to 120.000 s")));
}

TEST_F(BearingsSource, BearingsBeforeTheFirstOneAreToldOf)
{
    prepare(header + "2017-01-14;10:31;E1;1;2;3;150;1\n2017-01-14;10:30;E1;1;2;3;150;2\n");
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("1 row goes back, by up to 60.000 s")));
    EXPECT_EQ(m_source->report().bad, 0U);
}

TEST_F(BearingsSource, RowsWithoutAzimuthAreSkippedAndNeverBearings)
{
    prepare(header + "2017-01-14;10:31;E1;1;2;3;150;NA\n2017-01-14;10:31;E1;1;2;3;150;\n" +
            "2017-01-14;10:31;E1;1;2;3;150;NaN\nNA;NA;E1;NA;NA;NA;150;NA\n2017-01-14;10:31;E1;1;2;3;150;0\n");
    EXPECT_THAT(run(), SizeIs(1));
    EXPECT_EQ(azimuth(0), 0);
    EXPECT_EQ(m_source->report().skipped, 4U);
    EXPECT_EQ(m_source->report().bad, 0U);
}

TEST_F(BearingsSource, DegreesMinutesAndSecondsWithWestAndSouthWithoutSign)
{
    m_options.latitudeColumns = "Gx,mx,sx";
    m_options.longitudeColumns = "Gy, my";
    m_options.west = m_options.south = true;
    prepare("Date,Time,Gx,mx,sx,Gy,my,Frequency,Azimuth\n2017-01-14,10:31,4,38,24.2,75,32.5,150,1\n");
    EXPECT_NEAR(number("/LOCATIONLATITUDE"), -(4 + 38.0 / 60 + 24.2 / 3600), 1e-12);
    EXPECT_NEAR(number("/LOCATIONLONGITUDE"), -(75 + 32.5 / 60), 1e-12);
    EXPECT_EQ(m_tree.Find(QStringLiteral("/ALTITUDE")), nullptr);
}

TEST_F(BearingsSource, TheSignOfTheDegreesIsThatOfTheWholeAngle)
{
    m_options.latitudeColumns = "d,m";
    prepare("date,time,d,m,longitude,frequency,azimuth\n2017-01-14,10:31,-0,30,+7.25,150,1\n");
    EXPECT_EQ(number("/LOCATIONLATITUDE"), -0.5);
    EXPECT_EQ(number("/LOCATIONLONGITUDE"), 7.25);
}

TEST_F(BearingsSource, LocalTimesAreShiftedToUtc)
{
    m_options.utcOffset = "-05:00";
    m_options.dateFormat = "MM/dd/yy";
    prepare(header + "01/14/17;5:31;E1;1;2;3;150;1\n01/14/17;23:31;E1;1;2;3;150;1\n");
    EXPECT_THAT(run(), ElementsAre(start, start + 18 * 60 * minute));
}

TEST_F(BearingsSource, FrequencyUnitsAreTakenToTheMillihertz)
{
    const std::pair<const char*, const char*> units[] = {
        {"Hz", "150254000"}, {"kHz", "150254"}, {"MHz", "150.254"}, {"GHz", "0.150254"}};
    for (const auto& [unit, text] : units) {
        m_options.frequencyUnit = unit;
        prepare(header + "2017-01-14;10:31;E1;1;2;3;" + text + ";1\n");
        EXPECT_EQ(map().GetChannelRange().frequencyHz(0), 150'254'000) << unit;
    }
}

TEST_F(BearingsSource, TheHeadingOfAzimuthZeroIsATrueHeading)
{
    m_options.headingDeg = -6.5;
    prepare(header + "2017-01-14;10:31;E1;1;2;3;150;1\n");
    EXPECT_EQ(number("/TRUEHEADING"), 353.5);
}

TEST_F(BearingsSource, TheDeviceIsNamedAfterTheFileOrTheOnlyStation)
{
    const std::string rows = header + "2017-01-14;10:31;E 1/a;1;2;3;150;1\n2017-01-14;10:31;E2;1;2;3;151;1\n";
    prepare(rows);
    EXPECT_EQ(deviceName(), "field log_v2");
    m_options.station = "E 1/a";
    prepare(rows);
    EXPECT_EQ(deviceName(), "E 1_a");
}

TEST_F(BearingsSource, OneStationCanBeChosen)
{
    m_options.station = "E2";
    prepare(header + "2017-01-14;10:31;E1;1;2;3;150;1\n2017-01-14;10:32;E2;1;2;3;151;7\nx;x;E1;x;x;x;x;x\n");
    EXPECT_THAT(run(), ElementsAre(start + minute));
    EXPECT_EQ(map().GetChannelRange(), values::ChannelRange::List({151'000'000}));
    EXPECT_EQ(m_source->report().skipped, 2U);
    EXPECT_EQ(m_source->report().bad, 0U);
}

TEST_F(BearingsSource, BadRowsAreReportedWithLineAndColumnAndPassedOver)
{
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"2017-02-30;10:31;E1;4;-75;0;150;7\n", {"line 3: column \"date\": \"2017-02-30\"", "yyyy-MM-dd"}},
        {"2017-01-14;25:31;E1;4;-75;0;150;7\n", {"line 3: column \"time\": \"25:31\""}},
        {"1970-01-01;0:00;E1;4;-75;0;150;7\n", {"column \"date\"", "after the start of 1970"}},
        {"2017-01-14;10:31;E1;north;-75;0;150;7\n", {"column \"latitude\": \"north\" is no number"}},
        {"2017-01-14;10:31;E1;90.1;-75;0;150;7\n", {"column \"latitude\": \"90.1\""}},
        {"2017-01-14;10:31;E1;4;180.5;0;150;7\n", {"column \"longitude\": \"180.5\""}},
        {"2017-01-14;10:31;E1;4;NA;0;150;7\n", {"column \"longitude\": \"NA\" is no number"}},
        {"2017-01-14;10:31;E1;4;-75;high;150;7\n", {"column \"altitude\""}},
        {"2017-01-14;10:31;E1;4;-75;0;1,5;7\n", {"column \"frequency\": \"1,5\" is no number"}},
        {"2017-01-14;10:31;E1;4;-75;0;0;NA\n", {"column \"frequency\""}},
        {"2017-01-14;10:31;E1;4;-75;0;inf;7\n", {"column \"frequency\""}},
        {"2017-01-14;10:31;E1;4;-75;0;150;360.5\n", {"column \"azimuth\": \"360.5\" is not from 0 to 360"}},
        {"2017-01-14;10:31;E1;4;-75;0;150;-1\n", {"column \"azimuth\""}},
        {"2017-01-14;10:31;E1;4;-75;0;150;7x\n", {"column \"azimuth\": \"7x\" is no number"}},
        {"2017-01-14;10:31;E1;4;-75;0;150\n", {"line 3: 7 fields", "8"}},
        {"2017-01-14;10:31;E1;4;-75;0;150;7;8\n", {"line 3: 9 fields", "8"}},
        {"2017-01-14;10:31;\"E1\"x;4;-75;0;150;7\n", {"line 3: text stands behind a closing quote"}},
    };
    for (const auto& [row, parts] : rows) {
        const std::string report = reportOn(row);
        for (const std::string& part : parts) {
            EXPECT_THAT(report, HasSubstr(part)) << row;
        }
    }
}

TEST_F(BearingsSource, MinutesSecondsAndUnsignedCoordinatesAreChecked)
{
    m_options.longitudeColumns = "longitude,altitude";
    EXPECT_THAT(reportOn("2017-01-14;10:31;E1;4;75;60;150;7\n"), HasSubstr("column \"altitude\": \"60\""));
    EXPECT_THAT(reportOn("2017-01-14;10:31;E1;4;180;1;150;7\n"), HasSubstr("column \"longitude\": \"180\""));
    m_options.south = true;
    EXPECT_THAT(reportOn("2017-01-14;10:31;E1;-4;75;6;150;7\n"), HasSubstr("in spite of --south"));
}

TEST_F(BearingsSource, ALineMayEndWithASeparator)
{
    prepare(header + "2017-01-14;10:31;E1;4;-75;0;150;360;\n");
    EXPECT_THAT(run(), SizeIs(1));
    EXPECT_EQ(azimuth(0), 360);
}

TEST_F(BearingsSource, QuotedFieldsHoldSeparatorsAndLineBreaks)
{
    m_options.stationColumn = "the, station";
    prepare(
        "\"the, station\",date,time,frequency,\"azimuth\"\n\"North\n\"\"hill\"\", 2\",2017-01-14,10:31,150,\"7\"\n");
    EXPECT_THAT(run(), SizeIs(1));
    EXPECT_EQ(deviceName(), "North__hill__ 2");
}

TEST_F(BearingsSource, ManyBadRowsAreNotAllReported)
{
    std::string rows;
    for (int i = 0; i < 30; ++i) {
        rows += "2017-01-14;10:31;E1;4;-75;0;150;x\n";
    }
    prepare(header + "2017-01-14;10:31;E1;4;-75;0;150;7\n" + rows);
    run();
    EXPECT_THAT(m_reports, SizeIs(21));
    EXPECT_THAT(m_reports.back(), HasSubstr("and 10 more bad lines"));
    EXPECT_EQ(m_source->report().bad, 30U);
}

TEST_F(BearingsSource, StrictAllowsNoBadRow)
{
    m_options.strict = true;
    const std::string good = header + "2017-01-14;10:31;E1;4;-75;0;150;7\n2017-01-14;10:31;E1;4;-75;0;150;NA\n";
    EXPECT_EQ(problem(good), "no problem");
    EXPECT_THAT(problem(good + "2017-01-14;10:31;E1;4;-75;0;150;x\n"), HasSubstr("1 bad lines"));
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("line 4")));
}

TEST_F(BearingsSource, ALogWithoutPositionsIsToldOfAndPublishesNone)
{
    prepare("date,time,frequency,azimuth\n2017-01-14,10:31,150,7\n");
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("--latitude-column")));
    EXPECT_EQ(m_tree.Find(QStringLiteral("/LOCATIONLATITUDE")), nullptr);
    EXPECT_THAT(run(), SizeIs(1));
}

TEST_F(BearingsSource, WherePositionsComeFromElsewhereALogWithoutThemIsFine)
{
    m_options.positionElsewhere = true;
    prepare("date,time,frequency,azimuth\n2017-01-14,10:31,150,7\n");
    EXPECT_THAT(m_reports, IsEmpty());
}

TEST_F(BearingsSource, AMissingColumnIsNamedWithItsOption)
{
    EXPECT_THAT(problem("date,time,azimuth\n"),
                AllOf(HasSubstr("no column \"frequency\" (--frequency-column)"), HasSubstr("\"time\"")));
    m_options.altitudeColumn = "height";
    EXPECT_THAT(problem(header), HasSubstr("no column \"height\" (--altitude-column)"));
    m_options.altitudeColumn.reset();
    EXPECT_THAT(problem("date,time,latitude,frequency,azimuth\n"), HasSubstr("only one of latitude and longitude"));
    m_options.latitudeColumns = "date,time,azimuth,frequency";
    EXPECT_THAT(problem(header), HasSubstr("more than degrees, minutes and seconds"));
    m_options.latitudeColumns.reset();
    m_options.station = "E1";
    EXPECT_THAT(problem("date,time,frequency,azimuth\n"), HasSubstr("--station-column"));
}

TEST_F(BearingsSource, WrongOptionsAreNamed)
{
    const std::pair<std::string BearingsOptions::*, const char*> options[] = {
        {&BearingsOptions::separator, "--separator"},
        {&BearingsOptions::dateFormat, "--date-format"},
        {&BearingsOptions::utcOffset, "--utc-offset"},
        {&BearingsOptions::frequencyUnit, "--frequency-unit"}};
    for (const auto& [option, name] : options) {
        m_options = {};
        m_options.*option = "nonsense";
        EXPECT_THAT(problem(header), HasSubstr(std::string(name) + " nonsense"));
    }
}

TEST_F(BearingsSource, AnInputWithoutBearingsIsRefused)
{
    EXPECT_THAT(problem(""), HasSubstr("is empty"));
    EXPECT_THAT(problem("\"date\n"), HasSubstr("a quote is not closed"));
    EXPECT_THAT(problem(header), HasSubstr("holds no bearing (0 rows skipped, 0 bad)"));
    EXPECT_THAT(problem(header + "2017-01-14;10:31;E1;4;-75;0;150;NA\nx\n"),
                HasSubstr("holds no bearing (1 rows skipped, 1 bad)"));
}

TEST_F(BearingsSource, AMissingFileIsRefused)
{
    m_options.file = "none.csv";
    try {
        recstation::makeBearingsSource(m_options)->prepare();
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("none.csv"));
    }
}

TEST_F(BearingsSource, AFileThatChangedSinceItsChannelsWereFoundIsRefused)
{
    prepare(header + "2017-01-14;10:31;E1;4;-75;0;150;7\n");
    QFile file(QString::fromStdString(m_options.file));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Append));
    file.write("2017-01-14;10:31;E1;4;-75;0;151;7\n");
    file.close();
    EXPECT_THROW(run(), std::runtime_error);
}

TEST_F(BearingsSource, APathHeldByAnotherKindOfValueIsRefused)
{
    values::ValuePtr<Number> other;
    other.Attach(QStringLiteral("/DfSpectrum"));
    EXPECT_THAT(problem(header + "2017-01-14;10:31;E1;4;-75;0;150;7\n"), HasSubstr("/DfSpectrum is already there"));
}

}  // namespace
