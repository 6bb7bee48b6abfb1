// Direction finding of animals near Salento, Colombia: recorded by the real program, read back and replayed.
#include <recording2/mappinggenerator.h>
#include <values/value.h>

#include "recordings.h"

namespace {

using namespace testing;
using Replayed = values::FastValueMap<values::Bearing, values::BearingHandler>;

constexpr std::size_t bearingsInFile = 286;
constexpr std::size_t rowsWithoutAzimuth = 193;

// A row with an azimuth, read without the code under test.
struct Row {
    unsigned long long time;  // microseconds since 1970 UTC
    double frequencyHz;
    double azimuthDeg;
    double latitudeDeg;
    double longitudeDeg;
    double altitudeM;
    bool backwards;                 // earlier than a bearing before it
    unsigned long long latestTime;  // of all up to this one
};

double degrees(const QStringList& fields, int column)
{
    return fields[column].toDouble() + fields[column + 1].toDouble() / 60 + fields[column + 2].toDouble() / 3600;
}

Row parseRow(const QStringList& fields)
{
    const QDate date = QDate::fromString(fields[0].left(6) + QStringLiteral("20") + fields[0].mid(6), "MM/dd/yyyy");
    const QDateTime local(date, QTime::fromString(fields[1], "h:mm"), Qt::OffsetFromUTC, -5 * 3600);
    return {static_cast<unsigned long long>(local.toMSecsSinceEpoch()) * 1000,
            std::round(fields[13].toDouble() * 1000) * 1000,
            fields[16].toDouble(),
            degrees(fields, 4),
            -degrees(fields, 8),
            fields[12].toDouble(),
            false,
            0};
}

std::vector<Row> readRows(const QString& path)
{
    QFile file(path);
    std::vector<Row> rows;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return rows;
    }
    file.readLine();
    unsigned long long latest = 0;
    while (!file.atEnd()) {
        const QStringList fields = QString::fromLatin1(file.readLine()).trimmed().split(QLatin1Char(';'));
        if (fields[16] != QLatin1String("NA")) {
            rows.push_back(parseRow(fields));
            rows.back().backwards = rows.back().time < latest;
            latest = std::max(latest, rows.back().time);
            rows.back().latestTime = latest;
        }
    }
    return rows;
}

// A DFSPECTRUM record after the initial state, with what was in force when it came.
struct Recorded {
    unsigned long long indexMs;
    unsigned long long time;
    std::vector<double> azimuths;  // one a channel
    double frequencyHz;
    double latitudeDeg;
    double longitudeDeg;
    double altitudeM;
};

struct Contents {
    unsigned long long startTime = 0;
    std::string deviceName;
    values::ChannelRange range;
    std::vector<Recorded> bearings;
    std::vector<double> longitudes;  // of all records
};

std::vector<double> azimuthsOf(const Replayed& map)
{
    std::vector<double> azimuths;
    for (const values::Bearing& bearing : map.GetCells()) {
        azimuths.push_back(bearing.azimuthDeg);
    }
    return azimuths;
}

// Azimuths as bits would have them: no measurement equals no measurement.
bool same(const std::vector<double>& one, const std::vector<double>& other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); });
}

Contents contentsOf(const std::string& path)
{
    const RecordedFile file = readRecordedFile(path);
    Contents contents;
    contents.startTime = file.startUs;
    contents.deviceName = file.header.deviceName();
    std::map<std::int32_t, std::unique_ptr<values::ValueNumeric<double>>> plain;
    for (const std::int32_t code : {Code::Latitude, Code::Longitude, Code::Altitude}) {
        plain[code] = std::make_unique<values::ValueNumeric<double>>();
    }
    plain[Code::Frequency] = std::make_unique<values::ValueNumericWithOffset<double>>();
    const auto number = [&plain](std::int32_t code) { return plain.at(code)->GetValue(); };
    Replayed map;
    for (const auto& [time, code, text] : file.records) {
        if (const auto found = plain.find(code); found != plain.end()) {
            EXPECT_TRUE(found->second->ApplyRecordedState(text, 0, false)) << text;
        }
        if (code == Code::Longitude) {
            contents.longitudes.push_back(number(code));
        }
        if (code == Code::DfSpectrum) {
            EXPECT_TRUE(map.ApplyRecordedState(text, 0, false)) << text;
            if (map.GetTimeStamp() != 0) {
                contents.bearings.push_back({time, map.GetTimeStamp(), azimuthsOf(map), number(Code::Frequency),
                                             number(Code::Latitude), number(Code::Longitude), number(Code::Altitude)});
            }
        }
    }
    contents.range = map.GetChannelRange();
    return contents;
}

class Salento : public RecordingTest {
protected:
    void SetUp() override
    {
        m_log = realData("telemetria_Salento.csv");
        if (m_log.isEmpty()) {
            GTEST_SKIP() << "no real log: telemetria_Salento.csv is missing";
        }
        m_rows = readRows(m_log);
    }

    // Records a file, or the standard input when it is "-"; gives the summary.
    nlohmann::json record(const QString& file, const QStringList& more = {})
    {
        const QStringList command{"--quiet",
                                  "bearings",
                                  file,
                                  "--date-format",
                                  "MM/dd/yy",
                                  "--utc-offset",
                                  "-05:00",
                                  "--latitude-column",
                                  "Gradosx,minx,segx",
                                  "--longitude-column",
                                  "Gradosy,miny,segy",
                                  "--west",
                                  "--frequency-column",
                                  "frec"};
        const Result result = run(command + more, TestSupport::readBytes(m_log));
        EXPECT_EQ(result.exitCode, 0) << result.messages;
        m_messages = result.messages;
        return result.summary;
    }
    [[nodiscard]] std::string recorded(const QString& file, const QStringList& more = {})
    {
        const nlohmann::json summary = record(file, more);
        EXPECT_THAT(summary.at("files"), SizeIs(1));
        return summary.at("files")[0].at("path");
    }

    QString m_log;
    std::vector<Row> m_rows;
    std::string m_messages;
};

void expectBearing(const Recorded& bearing, const Row& row, const values::ChannelRange& range,
                   std::vector<double>& azimuths)
{
    const auto channel = static_cast<std::size_t>(
        std::lower_bound(range.channelsHz.begin(), range.channelsHz.end(), row.frequencyHz) - range.channelsHz.begin());
    ASSERT_LT(channel, range.size());
    ASSERT_EQ(range.frequencyHz(channel), row.frequencyHz);
    azimuths[channel] = row.azimuthDeg;
    EXPECT_TRUE(same(bearing.azimuths, azimuths));
    EXPECT_EQ(bearing.time, row.latestTime);
    EXPECT_EQ(bearing.frequencyHz, row.frequencyHz);
    EXPECT_NEAR(bearing.latitudeDeg, row.latitudeDeg, 1e-12);
    EXPECT_NEAR(bearing.longitudeDeg, row.longitudeDeg, 1e-12);
    EXPECT_EQ(bearing.altitudeM, row.altitudeM);
}

TEST_F(Salento, EveryBearingComesBackWithItsChannelFrequencyAzimuthPositionAndTheLatestTimeUpToIt)
{
    ASSERT_EQ(m_rows.size(), bearingsInFile);
    const Contents contents = contentsOf(recorded(m_log));
    ASSERT_EQ(contents.bearings.size(), bearingsInFile);
    ASSERT_EQ(contents.range.size(), 9U);
    std::vector<double> azimuths(contents.range.size(), std::nan(""));
    for (std::size_t i = 0; i < bearingsInFile; ++i) {
        SCOPED_TRACE(i);
        expectBearing(contents.bearings[i], m_rows[i], contents.range, azimuths);
    }
    EXPECT_EQ(contents.startTime, m_rows.front().time);
}

TEST_F(Salento, RowsWithoutAzimuthNeverBecomeBearings)
{
    const nlohmann::json source = record(m_log).at("sources")[0];
    EXPECT_EQ(source.at("name"), "bearings");
    EXPECT_EQ(source.at("used"), bearingsInFile);
    EXPECT_EQ(source.at("skipped"), rowsWithoutAzimuth);
    EXPECT_EQ(source.at("bad"), 0);
    EXPECT_THAT(m_messages, HasSubstr("bearings: the times of 87 rows go back, by up to "));
}

TEST_F(Salento, TheIndexTimesOfBearingsThatRunBackwardsAreRaised)
{
    const Contents contents = contentsOf(recorded(m_log));
    ASSERT_EQ(contents.bearings.size(), bearingsInFile);
    constexpr unsigned long long mostMsTaken = 5 * bearingsInFile;  // by the records of equal or earlier times
    constexpr unsigned long long firstChangeMs = 11;
    std::size_t raised = 0;
    unsigned long long before = 0;
    for (std::size_t i = 0; i < bearingsInFile; ++i) {
        const unsigned long long ownMs = (m_rows[i].time - contents.startTime) / 1000;
        const unsigned long long indexMs = contents.bearings[i].indexMs;
        EXPECT_GT(indexMs, before);
        EXPECT_GE(indexMs, ownMs);
        const bool isRaised = indexMs > std::max(ownMs, firstChangeMs) + mostMsTaken;
        EXPECT_EQ(isRaised, m_rows[i].backwards) << i;
        raised += isRaised ? 1U : 0U;
        before = indexMs;
    }
    EXPECT_EQ(raised, 87U);
}

TEST_F(Salento, PositionsLieInColombia)
{
    const Contents contents = contentsOf(recorded(m_log));
    EXPECT_THAT(contents.longitudes, Each(testing::AllOf(testing::Ge(-75.55), testing::Le(-75.54))));
    for (const Recorded& bearing : contents.bearings) {
        EXPECT_NEAR(bearing.latitudeDeg, 4.64, 0.02);
    }
}

TEST_F(Salento, AReplayOfTheWholeRecordingEndsWithTheNewestBearingOfEveryChannel)
{
    const std::string path = recorded(m_log);
    Recording2::MappingGenerator generator;
    long long start = 0;
    long long stop = 0;
    ASSERT_TRUE(generator.LoadRecording(start, stop, path.c_str(), nullptr));
    EXPECT_EQ(static_cast<unsigned long long>(start), m_rows.front().time);
    Replayed map;
    generator.RequestMapping(map, start, stop);
    ASSERT_EQ(map.size(), 9U);
    std::map<double, double> newest;
    for (const Row& row : m_rows) {
        newest[row.frequencyHz] = row.azimuthDeg;
    }
    for (std::size_t channel = 0; channel < map.size(); ++channel) {
        EXPECT_EQ(map.GetCells()[channel].azimuthDeg, newest.at(map.GetChannelRange().frequencyHz(channel)));
    }
    EXPECT_EQ(map.GetTimeStamp(), m_rows.back().time);
}

TEST_F(Salento, TheStandardInputGivesTheSameBearings)
{
    const Contents file = contentsOf(recorded(m_log));
    const Contents piped = contentsOf(recorded("-"));
    ASSERT_EQ(piped.bearings.size(), file.bearings.size());
    for (std::size_t i = 0; i < file.bearings.size(); ++i) {
        EXPECT_EQ(piped.bearings[i].indexMs, file.bearings[i].indexMs);
        EXPECT_EQ(piped.bearings[i].time, file.bearings[i].time);
        EXPECT_TRUE(same(piped.bearings[i].azimuths, file.bearings[i].azimuths));
    }
    EXPECT_EQ(file.deviceName, "telemetria_Salento");
    EXPECT_EQ(piped.deviceName, "Bearings");
}

TEST_F(Salento, OneStationCanBeRecordedAlone)
{
    const Contents contents = contentsOf(recorded(m_log, {"--station", "E11"}));
    EXPECT_EQ(contents.deviceName, "E11");
    EXPECT_THAT(contents.bearings, SizeIs(testing::AllOf(testing::Gt(0U), testing::Le(7U))));
    EXPECT_THAT(m_messages, testing::Not(HasSubstr("bad")));
}

}  // namespace
