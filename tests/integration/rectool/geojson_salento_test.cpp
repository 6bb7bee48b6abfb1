// Direction finding of animals near Salento, Colombia: recorded by the real program and drawn.
#include "geo/geodesic.h"
#include "geojsontesting.h"

namespace {

using nlohmann::json;
using RecTool::Geo::Position;
using testing::SizeIs;

constexpr int BearingsInFile = 286;

// The log as its document advises: by time, as rows that go back would lose theirs.
QString sorted(const QString& log, const QTemporaryDir& folder)
{
    QFile from(log);
    EXPECT_TRUE(from.open(QIODevice::ReadOnly));
    const QByteArray header = from.readLine();
    std::vector<std::pair<QDateTime, QByteArray>> rows;
    while (!from.atEnd()) {
        const QByteArray row = from.readLine().trimmed();
        const QString time = QString::fromLatin1(row).section(QLatin1Char(';'), 0, 1);
        rows.emplace_back(QDateTime::fromString(time, "MM/dd/yy;h:mm"), row);
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    QFile to(folder.filePath("sorted.csv"));
    EXPECT_TRUE(to.open(QIODevice::WriteOnly));
    to.write(header);
    for (const auto& [time, row] : rows) {
        EXPECT_TRUE(time.isValid()) << row.toStdString();
        to.write(row + '\n');
    }
    return to.fileName();
}

Position positionOf(const json& coordinates)
{
    return {coordinates[1], coordinates[0]};
}

void expectNearSalento(const json& coordinates, double degrees)
{
    EXPECT_NEAR(coordinates[0], -75.547, degrees);
    EXPECT_NEAR(coordinates[1], 4.637, degrees);
}

class SalentoMap : public testing::Test {
protected:
    void SetUp() override
    {
        const QString directory = qEnvironmentVariable("RECORDING2_TEST_DATA", QString::fromUtf8(TEST_DATA_DIRECTORY));
        const QString log = QDir(directory).filePath("telemetria_Salento.csv");
        if (!QFile::exists(log)) {
            GTEST_SKIP() << "no real log: " << log.toStdString() << " is missing";
        }
        m_file =
            recorded(m_folder.path(), {"bearings", sorted(log, m_folder), "--date-format", "MM/dd/yy", "--utc-offset",
                                       "-05:00", "--latitude-column", "Gradosx,minx,segx", "--longitude-column",
                                       "Gradosy,miny,segy", "--west", "--frequency-column", "frec"});
    }

    QTemporaryDir m_folder;
    QString m_file;
};

TEST_F(SalentoMap, EveryBearingIsALineFromWhereItWasTaken)
{
    const json document = geoJsonDocument(m_file);
    EXPECT_EQ(document.at("bearings"), BearingsInFile);
    EXPECT_EQ(document.at("lines"), BearingsInFile);
    EXPECT_EQ(document.at("withoutPosition"), 0);
    const std::vector<json> lines = featuresOf(document, "bearing");
    ASSERT_THAT(lines, SizeIs(BearingsInFile));
    for (const json& line : lines) {
        const json& points = line.at("geometry").at("coordinates");
        expectNearSalento(points[0], 0.02);
        EXPECT_EQ(line.at("properties").at("azimuthReference"), "true");
        const double azimuth = line.at("properties").at("azimuthDeg");
        EXPECT_NEAR(
            std::remainder(RecTool::Geo::azimuthDeg(positionOf(points[0]), positionOf(points.back())) - azimuth, 360),
            0, 0.2);  // seven decimals of short lines
    }
    // The first row of the log: 5:31 in Colombia.
    const json& first = lines[0].at("properties");
    EXPECT_EQ(first.at("time"), "2017-01-14T10:31:00.000Z");
    EXPECT_EQ(first.at("azimuthDeg"), 163);
    EXPECT_EQ(first.at("frequencyHz"), 150'015'000);
    EXPECT_EQ(lines[0].at("geometry").at("coordinates")[0], json::parse("[-75.5472222,4.6400556]"));
    EXPECT_THAT(featuresOf(document, "station"), SizeIs(13));
}

TEST_F(SalentoMap, SimultaneousBearingsOfTwoStationsFixAnAnimal)
{
    const json document = geoJsonDocument(m_file);
    const std::vector<json> fixes = featuresOf(document, "fix");
    EXPECT_EQ(document.at("fixes"), fixes.size());
    EXPECT_GT(fixes.size(), 30U);
    EXPECT_THAT(featuresOf(document, "uncertainty"), SizeIs(fixes.size()));
    for (const json& fix : fixes) {
        expectNearSalento(fix.at("geometry").at("coordinates"), 0.05);
    }
    // Every bearing is of one fix, or of one group without a fix.
    std::size_t bearings = 0;
    for (const json& fix : fixes) {
        bearings += fix.at("properties").at("bearings").get<std::size_t>();
    }
    for (const json& group : document.at("unfixed")) {
        bearings += group.at("bearings").get<std::size_t>();
    }
    EXPECT_EQ(bearings, BearingsInFile);
}

TEST_F(SalentoMap, LinesOfTwoBearingsCrossAtTheFix)
{
    const json document = geoJsonDocument(m_file);
    int crossed = 0;
    for (const json& fix : featuresOf(document, "fix")) {
        const Position place = positionOf(fix.at("geometry").at("coordinates"));
        for (const json& line : featuresOf(document, "bearing")) {
            if (line.at("properties").at("fix") != fix.at("properties").at("fix")) {
                continue;
            }
            const json& points = line.at("geometry").at("coordinates");
            const Position from = positionOf(points[0]);
            const double turn =
                RecTool::Geo::azimuthDeg(from, place) - line.at("properties").at("azimuthDeg").get<double>();
            EXPECT_LT(std::abs(std::remainder(turn, 360)) * std::acos(-1) / 180 * RecTool::Geo::distanceM(from, place),
                      0.05);
            EXPECT_NEAR(RecTool::Geo::distanceM(from, positionOf(points.back())),
                        1.2 * RecTool::Geo::distanceM(from, place), 0.05);
            ++crossed;
        }
    }
    EXPECT_GT(crossed, 60);
}

}  // namespace
