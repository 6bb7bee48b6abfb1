// Pictures show what was measured, where and when it was measured: recordings made for it, drawn by the real program.
#include "pictures.h"
#include "support/libraryobjects.h"

namespace {

using namespace PictureTests;
using namespace testing;

constexpr std::int32_t Rf = 1;
constexpr std::int32_t Df = 20;
constexpr std::int32_t Latitude = 25;
constexpr std::int32_t Longitude = 26;
constexpr std::int32_t Level = 36;
constexpr std::int32_t Heading = 41;
constexpr std::int32_t Frequency = 46;
constexpr unsigned long long StartMs = 1'700'000'000'000;  // 2023-11-14 22:13:20 UTC

struct Plain {
    std::uint64_t timeMs;
    std::int32_t code;
    std::string text;
};

struct Recorded {
    std::string device = "RX 1";
    unsigned long long startMs = StartMs;
    std::uint64_t lengthMs = 0;
    std::vector<Plain> records;
};

/// Four channels from 100 MHz on, all with one level; without one, not measured.
std::string sweep(double levelDb, unsigned long long stampUs = 0, bool withRange = false)
{
    std::string cell = "{{{";
    if (std::isfinite(levelDb)) {
        const auto c = static_cast<unsigned>(std::lround(levelDb * 100) + 131'072);
        cell = {static_cast<char>('<' + c / 4096), static_cast<char>('<' + c / 64 % 64),
                static_cast<char>('<' + c % 64)};
    }
    const std::string range = withRange ? "|34;1e+08,25000,4" : "";
    return "6;" + std::to_string(stampUs) + range + "|50;" + cell + cell + cell + cell;
}
const Plain NothingYet{10, Rf, sweep(std::nan(""), 0, true)};

std::string number(const std::string& value)
{
    return "3;" + value + ",0,0";
}

class PlotTruth : public Pictures {
protected:
    QString write(const Recorded& recorded, const QString& name = QStringLiteral("file.rec"))
    {
        QString path = this->path(name);
        Recording2::CFileAccess file(path.toStdString().c_str(), QString(), nullptr, true, false, false, nullptr,
                                     nullptr);
        Recording2::CVTTypesData types;
        types.get_vector() = {{Rf, 6, "RFSPECTRUM", "Scn/RfSpectrum"},
                              {Df, 7, "DFSPECTRUM", "/DfSpectrum"},
                              {Latitude, 3, "LOCATIONLATITUDE", "/LOCATIONLATITUDE"},
                              {Longitude, 3, "LOCATIONLONGITUDE", "/LOCATIONLONGITUDE"},
                              {Level, 3, "LEVEL", "/LEVEL"},
                              {Heading, 3, "TRUEHEADING", "/TRUEHEADING"},
                              {Frequency, 4, "FREQUENCY", "/FREQUENCY"}};
        file.write(types);
        for (const Plain& plain : recorded.records) {
            Recording2::CVTCmdData record = TestSupport::makeRecord(plain.code, plain.text);
            file.write(record, plain.timeMs, false);
        }
        Recording2::CHeaderData header = TestSupport::makeHeader({.startMs = recorded.startMs,
                                                                  .stopMs = recorded.startMs + recorded.lengthMs,
                                                                  .deviceName = recorded.device});
        file.CloseRecording(header, true);
        return path;
    }
    /// Of the receiver.
    QString write(std::uint64_t lengthMs, const std::vector<Plain>& records, const QString& name = "file.rec")
    {
        return write({.lengthMs = lengthMs, .records = records}, name);
    }
    /// The colour of the first channel at a time.
    QColor colourAt(const json& drawn, double timeMs) const
    {
        const json& piece = drawn.at("spectra")[0].at("pieces")[0];
        const double from = drawn.at("fromMs").get<double>();
        const double y = (timeMs - from) / (drawn.at("toMs").get<double>() - from) * piece.at("rows").get<double>();
        return m_image.pixelColor(piece.at("left").get<int>() + 30, piece.at("top").get<int>() + static_cast<int>(y));
    }
    /// The colour of a place in a panel of the earth.
    QColor colourOn(const json& panel, double latitudeDeg, double longitudeDeg) const
    {
        const auto of = [&](const char* name) { return panel.at(name).get<double>(); };
        const double x = of("left") + (longitudeDeg - of("west")) / (of("east") - of("west")) * of("columns");
        const double y = of("top") + (of("north") - latitudeDeg) / (of("north") - of("south")) * of("rows");
        return m_image.pixelColor(static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)));
    }
};

}  // namespace

TEST_F(PlotTruth, TheOnlySweepIsVisible)
{
    const json drawn = draw({"spectrum", write(12, {NothingYet, {12, Rf, sweep(-60)}})});
    EXPECT_EQ(drawn.at("toMs"), 1012);
    EXPECT_NE(colourAt(drawn, 500).rgb(), NotMeasured);
}

TEST_F(PlotTruth, TheLastSweepLastsAsLongAsTheOneBefore)
{
    const QString file =
        write(21000, {NothingYet, {1000, Rf, sweep(-100)}, {11000, Rf, sweep(-90)}, {21000, Rf, sweep(-20)}});
    json drawn = draw({"spectrum", file});
    EXPECT_EQ(drawn.at("toMs"), 31000);
    EXPECT_TRUE(isWarm(colourAt(drawn, 30000)));
    drawn = draw({"spectrum", "--to", "21000", file});  // both ends are included
    EXPECT_TRUE(isWarm(colourAt(drawn, drawn.at("toMs").get<double>() - 100)));
}

TEST_F(PlotTruth, WhereTheRecordingStopsLaterTheLastSweepLastsUntilThen)
{
    const QString file = write(26000, {NothingYet, {11000, Rf, sweep(-90)}, {21000, Rf, sweep(-20)}});
    EXPECT_EQ(draw({"spectrum", file}).at("toMs"), 26000);
}

TEST_F(PlotTruth, SpectraFasterThanTheirRecordsStandWhereTheyWereMeasured)
{
    constexpr unsigned long long Us = StartMs * 1000;
    const QString file = write(
        24,
        {NothingYet, {20, Rf, sweep(-100, Us)}, {22, Rf, sweep(-20, Us + 10'240)}, {24, Rf, sweep(-100, Us + 20'480)}});
    const json drawn = draw({"spectrum", file});
    EXPECT_EQ(drawn.at("fromMs"), 0);
    EXPECT_EQ(drawn.at("toMs"), 30.72);
    EXPECT_TRUE(isDark(colourAt(drawn, 9.5)));
    EXPECT_TRUE(isWarm(colourAt(drawn, 11)));
    EXPECT_TRUE(isWarm(colourAt(drawn, 19.5)));
    EXPECT_TRUE(isDark(colourAt(drawn, 21.5)));
}

TEST_F(PlotTruth, WhatWasNotMeasuredHasNoPartInALevel)
{
    const QString file =
        write(900, {{10, Level, number("nan")}, {300, Level, number("-30")}, {600, Level, number("-7.5")}});
    const json series = draw({"level", file}).at("series")[0];
    EXPECT_EQ(series.at("min"), -30);
    EXPECT_EQ(series.at("max"), -7.5);
    const QString never = write(900, {{10, Level, number("nan")}}, "never.rec");
    const Result result = plot({"level", never});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("LEVEL was not measured"));
}

TEST_F(PlotTruth, PanelsStandInTheOrderInWhichTheyAreAskedFor)
{
    const QString file =
        write(900, {{10, Level, number("-30")}, {11, Heading, number("7")}, {12, Frequency, "4;1e8,0,0,0"}});
    const json series =
        draw({"level", "--type", "frequency", "--type", "TRUEHEADING", "--type", "LEVEL", file}).at("series");
    ASSERT_EQ(series.size(), 3U);
    EXPECT_EQ(series[0].at("keyword"), "FREQUENCY");
    EXPECT_EQ(series[1].at("keyword"), "TRUEHEADING");
    EXPECT_EQ(series[2].at("keyword"), "LEVEL");
}

TEST_F(PlotTruth, ThePanelOfASingleValueTakesTheWholePicture)
{
    draw({"level", "--type", "TRUEHEADING", write(11, {{10, Heading, number("1")}, {11, Heading, number("2")}})});
    int drawn = 0;
    for (int x = 0; x < m_image.width(); ++x) {
        drawn += m_image.pixelColor(x, m_image.height() / 4) == QColor(Qt::white) ? 0 : 1;
    }
    EXPECT_GT(drawn, 1) << "at least both of its axes reach up there";
}

TEST_F(PlotTruth, NoLineCrossesThePictureWhereAHeadingPassesNorth)
{
    for (const int headings : {4, 4000}) {
        std::vector<Plain> records;
        for (int i = 0; i < headings; ++i) {
            records.push_back({10 + static_cast<std::uint64_t>(i), Heading, number(i % 2 == 0 ? "359" : "1")});
        }
        const QString file = write(records.back().timeMs, records, QString::number(headings) + ".rec");
        draw({"level", "--type", "TRUEHEADING", file});
        int blue = 0;
        for (int x = 0; x < m_image.width(); ++x) {
            const QColor colour = m_image.pixelColor(x, m_image.height() / 2);
            blue += colour.blue() > colour.red() + 80 ? 1 : 0;
        }
        EXPECT_EQ(blue, 0) << headings;
    }
}

TEST_F(PlotTruth, SplitsOfARecordingAreOnePicture)
{
    const QString first = write(9000, {NothingYet, {1000, Rf, sweep(-100)}, {5000, Rf, sweep(-90)}}, "1.rec");
    const QString second =
        write({"RX 1", StartMs + 9000, 9000, {{10, Rf, sweep(-90, 0, true)}, {1000, Rf, sweep(-20)}}}, "2.rec");
    const json drawn = draw({"spectrum", second, first});  // by time, whatever the order
    EXPECT_EQ(drawn.at("file"), first.toStdString());
    EXPECT_EQ(drawn.at("files").size(), 2U);
    EXPECT_EQ(drawn.at("spectra").size(), 1U);
    EXPECT_EQ(drawn.at("toMs"), 18000);
    EXPECT_TRUE(isWarm(colourAt(drawn, 15000)));
    EXPECT_TRUE(isDark(colourAt(drawn, 3000)));
}

TEST_F(PlotTruth, ReceiverAndFinderShareATimeline)
{
    const QString receiver = write(9000, {NothingYet, {1000, Rf, sweep(-60)}}, "rx.rec");
    const QString finder = write({"DF 1",
                                  StartMs + 2000,
                                  10000,
                                  {{10, Df, "7;0|34;1e+08,25000,3|50;///"},
                                   {500, Df, "7;1700000002500000|51;1,90/"},
                                   {600, Level, number("-50")}}},
                                 "df.rec");
    const json drawn = draw({"timeline", receiver, finder, "--type", "LEVEL"});
    ASSERT_EQ(drawn.at("panels").size(), 3U);
    EXPECT_EQ(drawn.at("panels")[0].at("type"), "spectrum");
    EXPECT_EQ(drawn.at("panels")[0].at("device"), "RX 1");
    EXPECT_EQ(drawn.at("panels")[1].at("type"), "bearings");
    EXPECT_EQ(drawn.at("panels")[1].at("bearings"), 1);
    EXPECT_EQ(drawn.at("panels")[2].at("device"), "DF 1");
    EXPECT_EQ(drawn.at("panels")[0].at("left"), drawn.at("panels")[1].at("left"));
    EXPECT_EQ(drawn.at("toMs"), 12000);
}

TEST_F(PlotTruth, ManyPanelsMakeAPictureHigherAndTooLowAHeightIsRefused)
{
    QStringList level = {"level"};
    for (int i = 1; i <= 9; ++i) {
        const Recorded recorded = {"RX " + std::to_string(i), StartMs, 9000, {{10, Level, number("-50")}}};
        level << write(recorded, QString::number(i) + ".rec");
    }
    const json drawn = draw(level);
    EXPECT_EQ(drawn.at("height"), 1160);
    EXPECT_EQ(m_image.height(), 1160);
    const Result result = plot(level + QStringList{"--height", "600"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("Its panels need a height of 620 pixels at least"));
}

TEST_F(PlotTruth, RecordingsThatDoNotTellTheirStartAreNotDrawnTogether)
{
    const QString known = write(9000, {NothingYet}, "known.rec");
    const QString unknown = write({"RX 1", 0, 9000, {NothingYet}}, "unknown.rec");
    const Result result = plot({"spectrum", known, unknown});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("does not tell when it began"));
}

#if defined(RECTOOL_HAS_GEO)
TEST_F(PlotTruth, HeatMapsAreDarkestWhereBearingsMeetAndHaveWaysToScale)
{
    const QString file = write({"DF 1",
                                StartMs,
                                300,
                                {{10, Df, "7;0|34;1e+08,25000,4|50;////"},
                                 {11, Latitude, number("49.45")},
                                 {12, Longitude, number("11.08")},
                                 {100, Df, "7;1700000000100000|51;1,45/"},
                                 {150, Latitude, number("49.47")},
                                 {200, Df, "7;1700000000200000|51;1,135/"}}});
    const json panel = draw({"--heat", "--sigma", "2", file}, "map").at("panels")[0];
    EXPECT_EQ(panel.at("bearings"), 2);
    const QColor meeting = colourOn(panel, 49.4603, 11.0957);  // beside the mark of the fix
    const QColor beam = colourOn(panel, 49.456, 11.08923);
    const QColor away = colourOn(panel, 49.4513, 11.0713);
    EXPECT_LT(meeting.green(), 60);
    EXPECT_LT(meeting.green(), beam.green());
    EXPECT_LT(beam.blue(), 200);
    EXPECT_EQ(away, QColor(Qt::white));
    const auto perDegree = [&](const char* size, const char* from, const char* to) {
        return panel.at(size).get<double>() / (panel.at(to).get<double>() - panel.at(from).get<double>());
    };
    // A degree of longitude is as long as 0.6517 of latitude there.
    EXPECT_NEAR(perDegree("columns", "west", "east") / perDegree("rows", "south", "north"), 0.6517, 0.002);
}

TEST_F(PlotTruth, TracksHaveTheColoursOfTheirLevels)
{
    const QString file = write(900, {{10, Frequency, number("1e8")},
                                     {20, Latitude, number("49.45")},
                                     {21, Longitude, number("11.08")},
                                     {100, Level, number("-90")},
                                     {200, Latitude, number("49.46")},
                                     {300, Level, number("-20")}});
    const json panel = draw({"--track", "--frequency", "100M", file}, "map").at("panels")[0];
    EXPECT_EQ(panel.at("points"), 2);
    EXPECT_TRUE(isDark(colourOn(panel, 49.45, 11.08)));
    EXPECT_TRUE(isWarm(colourOn(panel, 49.46, 11.08)));
}
#endif
