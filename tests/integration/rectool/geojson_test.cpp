// rectool map --geojson on recordings made for it: which bearings are drawn, from where, and how the program answers.
#include <cmath>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "geojsontesting.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

const std::string FourChannels = "34;1e+08,25000,4";
const PlainRecord EmptyMap{10, DfSpectrum, "7;0|" + FourChannels + "|50;////"};

std::string bytesOf(const QString& path)
{
    std::ifstream stream(path.toStdString(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class GeoJson : public testing::Test {
protected:
    QString recording(const std::vector<PlainRecord>& records)
    {
        QString path = m_folder.filePath(QStringLiteral("file.rec"));
        QFile::remove(path);
        writePlainRecording(path, records);
        return path;
    }
    /// With a map of four channels and a position and without a heading.
    QString withPosition(std::vector<PlainRecord> records)
    {
        records.insert(records.begin(),
                       {EmptyMap, {11, Latitude, numberText(49.45)}, {12, Longitude, numberText(11.08)}});
        return recording(records);
    }
    QString folderFile(const char* name) { return m_folder.filePath(QString::fromLatin1(name)); }
    [[nodiscard]] QString folder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};

/// Record time and azimuth of each line.
std::vector<std::pair<int, double>> linesOf(const json& document)
{
    std::vector<std::pair<int, double>> lines;
    for (const json& line : featuresOf(document, "bearing")) {
        lines.emplace_back(line.at("properties").at("timeMs"), line.at("properties").at("azimuthDeg"));
    }
    return lines;
}

// Which bearings

TEST_F(GeoJson, EveryChangeOfACellIsALine)
{
    const json document = geoJsonDocument(withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                                        {200, DfSpectrum, "7;1700000000200000|51;1,91/180/"},
                                                        {300, DfSpectrum, "7;1700000000300000|51;1,/"},
                                                        {400, DfSpectrum, "7;1700000000400000|51;1,91,3,-40,77/"}}));
    EXPECT_THAT(linesOf(document),
                ElementsAre(std::pair(100, 90.0), std::pair(200, 91.0), std::pair(200, 180.0), std::pair(400, 91.0)));
    EXPECT_EQ(document.at("bearings"), 4);
    EXPECT_EQ(document.at("withoutPosition"), 0);
    const json line = featuresOf(document, "bearing")[3];
    EXPECT_EQ(line.at("geometry").at("coordinates").size(), 3U);  // 10 km
    EXPECT_EQ(line.at("properties"),
              json::parse(R"({"type":"bearing","channel":1,"frequencyHz":100025000.0,"azimuthDeg":91.0,
                              "azimuthReference":"antenna","headingDeg":null,"elevationDeg":3.0,"levelDb":-40.0,
                              "quality":77.0,"timeMs":400,"time":"2023-11-14T22:13:20.400Z","fix":null})"));
}

TEST_F(GeoJson, TheSameBearingMeasuredAgainIsAnotherLine)
{
    const json document = geoJsonDocument(withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                                        {200, DfSpectrum, "7;1700000000200000|51;1,90/"},
                                                        {300, DfSpectrum, "7;1700000000200000|51;1,90/"}}));
    EXPECT_THAT(linesOf(document), ElementsAre(std::pair(100, 90.0), std::pair(200, 90.0), std::pair(300, 90.0)));
}

TEST_F(GeoJson, TwoStationsThatHearTheSameInTheSameMinuteGiveTwoLinesFromTheirPositions)
{
    std::vector<PlainRecord> records;
    for (std::uint64_t timeMs = 100; timeMs < 700; timeMs += 100) {
        const bool isFirst = timeMs % 200 == 100;
        const std::string minute = std::to_string(1700000000000000 + (timeMs + 100) / 200 * 60'000'000);
        records.push_back({timeMs, Latitude, numberText(isFirst ? 49.45 : 49.55)});
        records.push_back({timeMs + 1, DfSpectrum, "7;" + minute + "|51;1,90/"});
    }
    const json document = geoJsonDocument(withPosition(records));
    EXPECT_EQ(document.at("bearings"), 6);
    const std::vector<json> lines = featuresOf(document, "bearing");
    ASSERT_THAT(lines, SizeIs(6));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].at("geometry").at("coordinates")[0][1], i % 2 == 0 ? 49.45 : 49.55);
    }
}

TEST_F(GeoJson, AFullTextSaysNothingAboutCellsThatStay)
{
    const json document =
        geoJsonDocument(withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                      {200, DfSpectrum, "7;1700000000200000|50;/90//45/"},
                                      {300, DfSpectrum, "7;1700000000300000|" + FourChannels + "|50;/90//45/"}}));
    EXPECT_THAT(linesOf(document), ElementsAre(std::pair(100, 90.0), std::pair(200, 45.0)));
}

TEST_F(GeoJson, AMapOfOneChannelIsMeasuredWithEveryText)
{
    const json document = geoJsonDocument(recording({{10, DfSpectrum, "7;0|134;1e+08|50;/"},
                                                     {11, Latitude, numberText(49.45)},
                                                     {12, Longitude, numberText(11.08)},
                                                     {100, DfSpectrum, "7;1700000000100000|50;90/"},
                                                     {200, DfSpectrum, "7;1700000000200000|50;90/"}}));
    EXPECT_THAT(linesOf(document), ElementsAre(std::pair(100, 90.0), std::pair(200, 90.0)));
}

TEST_F(GeoJson, BearingsWithoutATimeStampHaveTheTimeOfTheirRecord)
{
    const json document = geoJsonDocument(withPosition({{100, DfSpectrum, "7;0|51;1,90/"}}));
    EXPECT_EQ(featuresOf(document, "bearing").at(0).at("properties").at("time"), "2023-11-14T22:13:20.100Z");
}

TEST_F(GeoJson, OnlyTheSpanIsDrawnButReplayedFromTheBeginning)
{
    const QString file = withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                       {200, DfSpectrum, "7;1700000000200000|50;/90//45/"},
                                       {300, DfSpectrum, "7;1700000000300000|51;1,92/"}});
    const json document = geoJsonDocument(file, {"--from", "200", "--to", "299"});
    EXPECT_THAT(linesOf(document), ElementsAre(std::pair(200, 45.0)));
    EXPECT_EQ(document.at("fromMs"), 200);
    EXPECT_EQ(document.at("toMs"), 299);
    EXPECT_EQ(geoJson(file, {"--from", "2", "--to", "1"}).exitCode, 1);
}

// From where and whereto

TEST_F(GeoJson, TheHeadingInForceMakesAzimuthsTrue)
{
    const json document = geoJsonDocument(withPosition({{99, Heading, numberText(300.5)},
                                                        {100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                                        {150, Heading, numberText(10)},
                                                        {200, DfSpectrum, "7;1700000000200000|51;1,90/"}}));
    EXPECT_THAT(linesOf(document), ElementsAre(std::pair(100, 30.5), std::pair(200, 100.0)));
    const json first = featuresOf(document, "bearing").at(0).at("properties");
    EXPECT_EQ(first.at("azimuthReference"), "true");
    EXPECT_EQ(first.at("headingDeg"), 300.5);
}

TEST_F(GeoJson, ALineBeginsAtThePositionInForceAndIsAsLongAsAsked)
{
    const json document = geoJsonDocument(withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                                        {150, Latitude, numberText(-10.5)},
                                                        {200, DfSpectrum, "7;1700000000200000|51;2,180/"}}),
                                          {"--length", "2"});
    const std::vector<json> lines = featuresOf(document, "bearing");
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[0].at("geometry").at("coordinates")[0], json::parse("[11.08,49.45]"));
    EXPECT_EQ(lines[1].at("geometry").at("coordinates")[0], json::parse("[11.08,-10.5]"));
    // 2 km south; a degree of latitude has 110,611 m there.
    EXPECT_NEAR(lines[1].at("geometry").at("coordinates")[1][1], -10.5 - 2'000 / 110'611.0, 1e-6);
    EXPECT_EQ(lines[1].at("geometry").at("coordinates")[1][0], 11.08);
}

TEST_F(GeoJson, StationsSayWhenTheyWereUsed)
{
    const json document = geoJsonDocument(withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                                        {110, DfSpectrum, "7;1700000000110000|51;2,90/"},
                                                        {150, Latitude, numberText(49.5)},
                                                        {200, DfSpectrum, "7;1700000000200000|51;2,180/"},
                                                        {250, Latitude, numberText(49.45)},
                                                        {300, DfSpectrum, "7;1700000000300000|51;2,20/"}}));
    const std::vector<json> stations = featuresOf(document, "station");
    ASSERT_THAT(stations, SizeIs(2));
    EXPECT_EQ(stations[0].at("geometry"), json::parse(R"({"type":"Point","coordinates":[11.08,49.45]})"));
    EXPECT_EQ(stations[0].at("properties"),
              json::parse(R"({"type":"station","bearings":3,"used":[{"fromMs":100,"toMs":110,"bearings":2},
                                                                    {"fromMs":300,"toMs":300,"bearings":1}]})"));
    EXPECT_EQ(stations[1].at("geometry").at("coordinates"), json::parse("[11.08,49.5]"));
}

TEST_F(GeoJson, BearingsOfUnknownPositionAreCountedAndTold)
{
    const std::vector<PlainRecord> bearings = {{100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                               {200, DfSpectrum, "7;1700000000200000|51;1,91/"}};
    const std::vector<std::vector<PlainRecord>> positions = {
        {},
        {{11, Latitude, numberText(49.45)}},
        {{11, Latitude, numberText(0)}, {12, Longitude, numberText(0)}},  // nobody has set them
        {{11, Latitude, numberText(91)}, {12, Longitude, numberText(11)}},
        {{11, Latitude, "3;nan,0,0"}, {12, Longitude, numberText(11)}},
        {{11, Latitude, numberText(49.45)}, {12, Longitude, "2;east"}},
    };
    for (std::vector<PlainRecord> records : positions) {
        records.insert(records.begin(), EmptyMap);
        records.insert(records.end(), bearings.begin(), bearings.end());
        const ProgramResult result = geoJson(recording(records));
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_THAT(result.err, HasSubstr("2 of 2 bearings are left out: where they were taken is not recorded."));
        const json document = json::parse(result.out);
        EXPECT_EQ(document.at("features"), json::array());
        EXPECT_EQ(document.at("bearings"), 2);
        EXPECT_EQ(document.at("withoutPosition"), 2);
    }
}

TEST_F(GeoJson, WhatStoodInTheMapBeforeThePositionWasKnownIsLeftOut)
{
    const json document =
        geoJsonDocument(recording({{10, DfSpectrum, "7;1690000000000000|" + FourChannels + "|50;7////"},
                                   {11, Latitude, numberText(49.45)},
                                   {12, Longitude, numberText(11.08)},
                                   {100, DfSpectrum, "7;1700000000100000|51;1,90/"}}));
    EXPECT_THAT(linesOf(document), ElementsAre(std::pair(100, 90.0)));
    EXPECT_EQ(document.at("withoutPosition"), 1);
}

TEST_F(GeoJson, ALineOverTheAntimeridianIsCut)
{
    const json document = geoJsonDocument(recording({EmptyMap,
                                                     {11, Latitude, numberText(-17)},
                                                     {12, Longitude, numberText(179.98)},
                                                     {100, DfSpectrum, "7;1700000000100000|51;1,90/"}}));
    const json geometry = featuresOf(document, "bearing").at(0).at("geometry");
    EXPECT_EQ(geometry.at("type"), "MultiLineString");
    EXPECT_EQ(geometry.at("coordinates").size(), 2U);
    EXPECT_EQ(geometry.at("coordinates")[0].back()[0], 180);
    EXPECT_EQ(geometry.at("coordinates")[1].front()[0], -180);
}

// Fixes

/// Two positions, 0.02 degrees of latitude apart; their lines of channel 1 cross at right angles east of them.
std::vector<PlainRecord> crossedBearings(const std::string& secondTimeUs)
{
    return {{100, DfSpectrum, "7;1700000000100000|51;1,45/"},
            {150, Latitude, numberText(49.47)},
            {200, DfSpectrum, "7;" + secondTimeUs + "|51;1,135/"}};
}

TEST_F(GeoJson, BearingsOfTwoPositionsAreFixed)
{
    const json document = geoJsonDocument(withPosition(crossedBearings("1700000000200000")));
    const std::vector<json> fixes = featuresOf(document, "fix");
    ASSERT_THAT(fixes, SizeIs(1));
    EXPECT_NEAR(fixes[0].at("geometry").at("coordinates")[0], 11.08 + 1112.3 / 72'530, 1e-4);
    EXPECT_NEAR(fixes[0].at("geometry").at("coordinates")[1], 49.46, 1e-4);
    const json& properties = fixes[0].at("properties");
    EXPECT_EQ(properties.at("fix"), 1);
    EXPECT_EQ(properties.at("channel"), 1);
    EXPECT_EQ(properties.at("frequencyHz"), 100'025'000);
    EXPECT_EQ(properties.at("firstTime"), "2023-11-14T22:13:20.100Z");
    EXPECT_EQ(properties.at("lastTime"), "2023-11-14T22:13:20.200Z");
    EXPECT_EQ(properties.at("bearings"), 2);
    EXPECT_EQ(properties.at("positions"), 2);
    EXPECT_EQ(properties.at("confidence"), 0.95);
    EXPECT_TRUE(properties.at("chi2PerDof").is_null());
    // Each line is 1573 m long there; 3 degrees of it, and 95 % of two dimensions.
    EXPECT_NEAR(properties.at("semiMajorM"), 1'573 * 0.05236 * 2.4477, 1);
    EXPECT_NEAR(properties.at("semiMinorM"), 1'573 * 0.05236 * 2.4477, 1);
    EXPECT_EQ(document.at("fixes"), 1);
    EXPECT_EQ(document.at("unfixed"), json::array());
    for (const json& line : featuresOf(document, "bearing")) {
        EXPECT_EQ(line.at("properties").at("fix"), 1);
    }
    const std::vector<json> uncertainties = featuresOf(document, "uncertainty");
    ASSERT_THAT(uncertainties, SizeIs(1));
    EXPECT_EQ(uncertainties[0].at("geometry").at("type"), "Polygon");
    EXPECT_EQ(uncertainties[0].at("properties").at("fix"), 1);
}

TEST_F(GeoJson, SigmaScalesTheEllipse)
{
    const json document = geoJsonDocument(withPosition(crossedBearings("1700000000200000")), {"--sigma", "1"});
    EXPECT_EQ(document.at("sigmaDeg"), 1);
    EXPECT_NEAR(featuresOf(document, "fix").at(0).at("properties").at("semiMajorM"), 1'573 * 0.05236 * 2.4477 / 3, 1);
}

TEST_F(GeoJson, BearingsOfDifferentWindowsAreNotFixedTogether)
{
    const QString file = withPosition(crossedBearings("1700000601100000"));  // 10 min and 1 s later
    const json document = geoJsonDocument(file);
    EXPECT_THAT(featuresOf(document, "fix"), IsEmpty());
    ASSERT_THAT(document.at("unfixed"), SizeIs(2));
    EXPECT_EQ(document.at("unfixed")[0],
              json::parse(R"({"channel":1,"frequencyHz":100025000.0,"firstTime":"2023-11-14T22:13:20.100Z",
                              "lastTime":"2023-11-14T22:13:20.100Z","bearings":1,"reason":"one-position",
                              "note":"All bearings were taken at one position."})"));
    EXPECT_THAT(featuresOf(geoJsonDocument(file, {"--window", "11min"}), "fix"), SizeIs(1));
}

TEST_F(GeoJson, AFixKeepsItsFrequencyWhenTheChannelRangeChanges)
{
    const json document = geoJsonDocument(
        withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,45/"},
                      {150, Latitude, numberText(49.47)},
                      {200, DfSpectrum, "7;1700000000200000|134;1e+08,100010000,100025000|50;//135/"}}));
    const std::vector<json> fixes = featuresOf(document, "fix");
    ASSERT_THAT(fixes, SizeIs(1));
    EXPECT_EQ(fixes[0].at("properties").at("channel"), 2);
    EXPECT_EQ(fixes[0].at("properties").at("frequencyHz"), 100'025'000);
}

TEST_F(GeoJson, LinesThatDivergeAreListedAsUnfixed)
{
    const json document = geoJsonDocument(withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,135/"},
                                                        {150, Latitude, numberText(49.47)},
                                                        {200, DfSpectrum, "7;1700000000200000|51;1,45/"}}));
    EXPECT_THAT(featuresOf(document, "fix"), IsEmpty());
    ASSERT_THAT(document.at("unfixed"), SizeIs(1));
    EXPECT_EQ(document.at("unfixed")[0].at("reason"), "no-crossing");
    EXPECT_EQ(document.at("unfixed")[0].at("bearings"), 2);
}

// How the program answers

TEST_F(GeoJson, JsonAndGeoJsonExcludeEachOther)
{
    const QString file = withPosition({});
    const ProgramResult result = geoJson(file, {"--json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.err, AllOf(HasSubstr("--json"), HasSubstr("--geojson")));
}

TEST_F(GeoJson, ItsOptionsNeedIt)
{
    const QString file = withPosition({});
    for (const QStringList& option :
         {QStringList{"--sigma", "2"}, {"--length", "2"}, {"--window", "2s"}, {"-o", folderFile("out.geojson")}}) {
        const ProgramResult result = runProgram(QStringLiteral(RECTOOL), QStringList{"map", file} + option);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.err, HasSubstr("requires --geojson"));
    }
}

TEST_F(GeoJson, OptionsOutOfRangeAreRefused)
{
    const QString file = withPosition({});
    for (const QStringList& option : {QStringList{"--sigma", "0"},
                                      {"--sigma", "46"},
                                      {"--sigma", "nan"},
                                      {"--length", "-1"},
                                      {"--length", "30000"},
                                      {"--window", "0"},
                                      {"--window", "nan"},
                                      {"--window", "3 fortnights"}}) {
        const ProgramResult result = geoJson(file, option);
        EXPECT_EQ(result.exitCode, 1) << option.join(' ').toStdString();
        EXPECT_THAT(result.out, IsEmpty());
    }
}

TEST_F(GeoJson, TheOutputFileHoldsTheDocument)
{
    const QString file = withPosition(crossedBearings("1700000000200000"));
    const QString out = folderFile("out.geojson");
    std::ofstream(out.toStdString()) << "what was there before";
    const ProgramResult result = geoJson(file, {"-o", out});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.out, IsEmpty());
    EXPECT_THAT(result.err, IsEmpty());
    EXPECT_EQ(bytesOf(out), geoJson(file).out);
    EXPECT_THAT(QDir(folder()).entryList(QDir::Files), SizeIs(2));
}

TEST_F(GeoJson, NoRecordingIsOverwritten)
{
    const QString file = withPosition({});
    const QString other = folderFile("other.rec");
    ASSERT_TRUE(QFile::copy(file, other));
    const std::string before = bytesOf(file);
    for (const QString& out : {file, other, folder() + "/./file.rec"}) {
        const ProgramResult result = geoJson(file, {"-o", out});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.err, HasSubstr("It is a recording and not overwritten."));
        EXPECT_EQ(bytesOf(out), before);
    }
}

TEST_F(GeoJson, WhatIsNoOrdinaryFileIsNotReplaced)
{
    QStringList outputs = {folder()};
#if !defined(_WIN32)
    ASSERT_EQ(runProgram("mkfifo", {folderFile("pipe")}).exitCode, 0);
    outputs += folderFile("pipe");
#endif
    for (const QString& out : outputs) {
        const ProgramResult result = geoJson(withPosition({}), {"-o", out});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.err, HasSubstr("It is no ordinary file and not replaced."));
        EXPECT_FALSE(QFileInfo(out).isFile());
    }
}

TEST_F(GeoJson, AFileThatCannotBeWrittenIsTold)
{
    const ProgramResult result = geoJson(withPosition({}), {"-o", folderFile("missing/out.geojson")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("missing/out.geojson: It cannot be written: "));
}

#if defined(__linux__)
TEST_F(GeoJson, AFullDiskIsTold)
{
    const QString file = withPosition(std::vector<PlainRecord>(
        {{100, DfSpectrum, "7;1700000000100000|51;1,90/"}, {200, DfSpectrum, "7;1700000000200000|51;1,91/"}}));
    const ProgramResult result =
        runProgram("sh", {"-c", QStringLiteral("%1 map %2 --geojson > /dev/full").arg(RECTOOL, file)});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("the output could not be written: No space left on device"));
}
#endif

TEST_F(GeoJson, RecordsThatAreNoBearingsArePassedOver)
{
    const ProgramResult result = geoJson(withPosition({{100, DfSpectrum, "7;1700000000100000|51;1,90/"},
                                                       {200, DfSpectrum, "7;1700000000200000|51;9,90/"},
                                                       {300, DfSpectrum, "7;1700000000300000|51;1,91/"}}));
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.err, HasSubstr("DFSPECTRUM records that are no bearings, passed over: 1."));
    EXPECT_THAT(linesOf(json::parse(result.out)), ElementsAre(std::pair(100, 90.0), std::pair(300, 91.0)));
}

TEST_F(GeoJson, ARecordingWithoutBearingsGivesAnEmptyCollection)
{
    const json document = geoJsonDocument(recording({}));
    EXPECT_EQ(document.at("features"), json::array());
    EXPECT_EQ(document.at("bearings"), 0);
}

}  // namespace
