// The pictures as users get them: what is in them, what is said about them, and what is refused.
#include <iterator>

#include <QColor>
#include <QImage>
#include <nlohmann/json.hpp>

#include "filesizelimit.h"
#include "support/program.h"
#include "support/samplerecording.h"

namespace {

using nlohmann::json;
using namespace testing;

using Result = TestSupport::ProgramResult;

/// Runs the program as a service would.
Result rectool(const QStringList& arguments)
{
    QProcess process;
    process.setProcessEnvironment(TestSupport::bareEnvironment(LEAKS_OF_QT));
    process.start(RECTOOL, arguments);
    return TestSupport::finish(process);
}

std::string bytesOf(const QString& path)
{
    std::ifstream stream(path.toStdString(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

constexpr QRgb NotMeasured = 0xffd4d7da;

class Plot : public testing::Test {
protected:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }
    [[nodiscard]] QString folder() const { return m_folder.path(); }
    [[nodiscard]] QString recording() const
    {
        QString file = path("recording.rec");
        writePlotRecording(file.toStdString());
        return file;
    }
    /// Draws without a word of complaint. @return what the program says was drawn
    json draw(const QStringList& arguments, const QString& file)
    {
        const Result result = rectool(QStringList{"plot"} + arguments + QStringList{file, "-o", picture(), "--json"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_THAT(result.err, IsEmpty());
        return json::parse(result.out, nullptr, false);
    }
    [[nodiscard]] QString picture() const { return path("picture.png"); }
    [[nodiscard]] QImage image() const { return QImage(picture()); }

private:
    QTemporaryDir m_folder;
};

/// Where a frequency and a time are in the first piece of a spectrum.
QColor pixel(const QImage& image, const json& drawn, double hz, double timeMs)
{
    const json& piece = drawn.at("spectra")[0].at("pieces")[0];
    const double from = piece.at("startHz").get<double>();
    const double to = piece.at("stopHz").get<double>();
    const double begin = drawn.at("fromMs").get<double>();
    const double end = drawn.at("toMs").get<double>();
    const double x = (hz - from) / (to - from) * piece.at("columns").get<double>();
    const double y = (timeMs - begin) / (end - begin) * piece.at("rows").get<double>();
    return image.pixelColor(piece.at("left").get<int>() + static_cast<int>(x),
                            piece.at("top").get<int>() + static_cast<int>(y));
}

bool isWarm(const QColor& colour)
{
    return colour.red() > 200 && colour.green() > 150;
}

bool isDark(const QColor& colour)
{
    return colour.red() < 60 && colour.green() < 60;
}

}  // namespace

// spectrum

TEST_F(Plot, SpectrumShowsLevelsGapsAndWhatWasNotMeasured)
{
    const json drawn = draw({"spectrum"}, recording());
    const QImage image = this->image();
    ASSERT_EQ(image.size(), QSize(1400, 900));
    EXPECT_EQ(pixel(image, drawn, 100.2e6, 500).rgb(), NotMeasured);   // nothing yet
    EXPECT_TRUE(isDark(pixel(image, drawn, 100.1e6, 1200)));           // noise
    EXPECT_TRUE(isDark(pixel(image, drawn, 100.2e6, 1200)));           // not yet strong
    EXPECT_TRUE(isWarm(pixel(image, drawn, 100.2e6, 1800)));           // the strong channel
    EXPECT_TRUE(isDark(pixel(image, drawn, 100.3e6, 1800)));           // its neighbour
    EXPECT_EQ(pixel(image, drawn, 100.6e6, 1800).rgb(), NotMeasured);  // the gap
    EXPECT_TRUE(isDark(pixel(image, drawn, 100.8e6, 1800)));           // after the gap
    EXPECT_EQ(pixel(image, drawn, 100.8e6, 2300).rgb(), NotMeasured);  // not in the new range
    const QColor middle = pixel(image, drawn, 100.1e6, 2300);
    EXPECT_FALSE(isDark(middle) || isWarm(middle) || middle.rgb() == NotMeasured);
}

TEST_F(Plot, SpectrumTellsWhatItDrewAsTheRecordsHaveIt)
{
    const QString file = recording();
    const json drawn = draw({"spectrum"}, file);
    EXPECT_EQ(drawn.at("file"), file.toStdString());
    EXPECT_EQ(drawn.at("picture"), picture().toStdString());
    EXPECT_EQ(drawn.at("fromMs"), 10);
    EXPECT_EQ(drawn.at("toMs"), 2500);
    EXPECT_EQ(drawn.at("pixel"), "max");
    ASSERT_EQ(drawn.at("spectra").size(), 1U);
    const json& spectrum = drawn.at("spectra")[0];
    EXPECT_EQ(spectrum.at("keyword"), "RFSPECTRUM");
    EXPECT_EQ(spectrum.at("channelRangeTimesMs"), json::parse("[2001]"));
    EXPECT_NEAR(spectrum.at("pieces")[0].at("startHz").get<double>(), 99.95e6, 1);
    EXPECT_NEAR(spectrum.at("pieces")[0].at("stopHz").get<double>(), 100.95e6, 1);

    // The same figures from the records themselves.
    std::istringstream lines(rectool({"cat", "--json", "--type", "RFSPECTRUM", file}).out);
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    std::size_t records = 0;
    for (std::string line; std::getline(lines, line); ++records) {
        const json cells = json::parse(line).at("value").at("cells");
        for (const json& cell : cells) {
            if (!cell.is_null()) {
                lowest = std::min(lowest, cell.get<double>());
                highest = std::max(highest, cell.get<double>());
            }
        }
    }
    EXPECT_EQ(spectrum.at("records"), records);
    EXPECT_EQ(spectrum.at("minLevel"), lowest);
    EXPECT_EQ(spectrum.at("maxLevel"), highest);
}

TEST_F(Plot, SpectrumOfASpanBeginsWithWhatIsInForceThen)
{
    const json drawn = draw({"spectrum", "--from", "1600", "--to", "1900"}, recording());
    const json& spectrum = drawn.at("spectra")[0];
    EXPECT_EQ(spectrum.at("records"), 0);
    EXPECT_EQ(spectrum.at("maxLevel"), -20);
    EXPECT_EQ(spectrum.at("channelRangeTimesMs"), json::array());
    EXPECT_TRUE(isWarm(pixel(image(), drawn, 100.2e6, 1601)));
    EXPECT_TRUE(isWarm(pixel(image(), drawn, 100.2e6, 1899)));
}

TEST_F(Plot, SpectrumIsDrawnInTheSizeAndUnitThatAreAskedFor)
{
    const json drawn =
        draw({"spectrum", "--width", "600", "--height", "400", "--mean", "--unit", "dBm", "--rf"}, recording());
    EXPECT_EQ(image().size(), QSize(600, 400));
    EXPECT_EQ(drawn.at("unit"), "dBm");
    EXPECT_EQ(drawn.at("pixel"), "mean");
}

TEST_F(Plot, RfAndIfSpectraAreDrawnApartAlsoWhereTheTypeTableNamesOnlyOne)
{
    const QString file = path("both.rec");
    writePlotRecording(file.toStdString());
    std::string bytes = bytesOf(file);
    // The record at 1000 ms becomes one of the type 2: the IF spectrum, which the type table does not name.
    const json records = json::parse(rectool({"info", "--json", file}).out);
    ASSERT_EQ(records.at("files")[0].at("sound"), true);
    std::istringstream lines(rectool({"cat", "--json", "--type", "RFSPECTRUM", file}).out);
    std::string line;
    while (std::getline(lines, line) && json::parse(line).at("timeMs") != 1000) {
    }
    const auto position = json::parse(line).at("position").get<std::size_t>();
    ASSERT_EQ(bytes[position], '1');
    bytes[position] = '2';
    std::ofstream(file.toStdString(), std::ios::binary) << bytes;
    const json drawn = draw({"spectrum"}, file);
    ASSERT_EQ(drawn.at("spectra").size(), 2U);
    EXPECT_EQ(drawn.at("spectra")[0].at("keyword"), "RFSPECTRUM");
    EXPECT_EQ(drawn.at("spectra")[1].at("keyword"), "IFSPECTRUM");
    EXPECT_EQ(drawn.at("spectra")[1].at("maxLevel"), -100);
    EXPECT_EQ(draw({"spectrum", "--if"}, file).at("spectra").size(), 1U);
}

// level

TEST_F(Plot, LevelShowsTheValuesOverTime)
{
    const QString file = path("sample.rec");
    writeSampleRecording(file.toStdString());
    const json drawn = draw({"level"}, file);
    ASSERT_EQ(drawn.at("series").size(), 1U);
    EXPECT_EQ(
        drawn.at("series")[0],
        json::parse(
            R"({"keyword":"LEVEL","code":36,"unit":"dB","records":2,"min":-31.5,"max":-30.25,"drawn":"values"})"));
    const QImage image = this->image();
    ASSERT_EQ(image.size(), QSize(1400, 900));
    int blue = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor colour = image.pixelColor(x, y);
            blue += colour.blue() > colour.red() + 80 ? 1 : 0;
        }
    }
    EXPECT_GT(blue, 500);  // a line, half of it across the picture
}

TEST_F(Plot, LevelTakesOtherNumbersAndRefusesWhatIsNone)
{
    const json drawn = draw({"level", "--type", "TRUEHEADING"}, recording());
    EXPECT_EQ(drawn.at("series")[0].at("unit"), "\u00b0");
    EXPECT_EQ(drawn.at("series")[0].at("max"), 350);
    const Result result = rectool({"plot", "level", recording(), "-o", picture(), "--type", "DFSPECTRUM"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("The records of DFSPECTRUM hold no numbers."));
}

// bearings

TEST_F(Plot, ABearingStandsAtItsTimeAndAzimuth)
{
    const json drawn = draw({"bearings"}, recording());
    const json& view = drawn.at("view");
    const double x = (500.0 - 10) / (2500 - 10) * view.at("columns").get<double>();
    const double y = (1 - 10.0 / 360) * view.at("rows").get<double>();
    const QColor colour = image().pixelColor(view.at("left").get<int>() + static_cast<int>(x),
                                             view.at("top").get<int>() + static_cast<int>(y));
    EXPECT_EQ(colour, QColor(0x1f, 0x77, 0xb4));
}

TEST_F(Plot, FromAboveABearingStandsInItsDirectionAlsoInALowPicture)
{
    constexpr double Middle = 0.08;
    const double angle = 10 * std::acos(-1) / 180;
    for (const QStringList& size : {QStringList{"1400", "900"}, {"1000", "400"}, {"600", "600"}, {"400", "400"}}) {
        const json drawn = draw({"bearings", "--width", size[0], "--height", size[1]}, recording());
        const json& circle = drawn.at("circle");
        const double distance =
            circle.at("radius").get<double>() * (Middle + (1 - Middle) * (500.0 - 10) / (2500 - 10));
        const double x = circle.at("x").get<double>() + distance * std::sin(angle);
        const double y = circle.at("y").get<double>() - distance * std::cos(angle);
        EXPECT_EQ(image().pixelColor(static_cast<int>(x), static_cast<int>(y)), QColor(0x1f, 0x77, 0xb4))
            << size.join(" by ").toStdString();
    }
}

// Bookmarks, formats, errors

TEST_F(Plot, BookmarksOfTheSpanAreMarked)
{
    const QString file = recording();
    const QImage before = (draw({"spectrum"}, file), image());
    ASSERT_EQ(rectool({"bookmark", "add", file, "1200", "alarm", "--yes"}).exitCode, 0);
    const json drawn = draw({"spectrum"}, file);
    EXPECT_EQ(drawn.at("bookmarks"), json::parse(R"([{"timeMs":1200,"data":{"text":"alarm"}}])"));
    EXPECT_NE(pixel(image(), drawn, 100.6e6, 1200), pixel(before, drawn, 100.6e6, 1200));
    EXPECT_EQ(draw({"level", "--type", "TRUEHEADING", "--to", "1199"}, file).at("bookmarks"), json::array());
}

TEST_F(Plot, PicturesCanBeJpegAndPdf)
{
    const QString file = recording();
    EXPECT_EQ(rectool({"plot", "spectrum", file, "-o", path("picture.jpg")}).exitCode, 0);
    EXPECT_EQ(QImage(path("picture.jpg")).size(), QSize(1400, 900));
    EXPECT_EQ(rectool({"plot", "bearings", file, "-o", path("picture.pdf")}).exitCode, 0);
    EXPECT_EQ(bytesOf(path("picture.pdf")).substr(0, 5), "%PDF-");
}

TEST_F(Plot, AFullDiskIsToldInOneSentenceAndLeavesNothing)
{
    const QString file = recording();
    for (const QString name : {"picture.png", "picture.pdf"}) {
        const RecToolTests::FileSizeLimit limit(2'000);
        if (!limit.works()) {
            GTEST_SKIP() << "This system has no limit on the size of files.";
        }
        const Result result = rectool({"plot", "spectrum", file, "-o", path(name)});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.err,
                  "rectool: " + path(name).toStdString() + ": It could not be written to its end; is the disk full?\n");
    }
    EXPECT_EQ(QDir(folder()).entryList(QDir::Files).size(), 1);
}

TEST_F(Plot, ADamagedRecordingIsDrawnAsFarAsItGoes)
{
    const QString file = recording();
    std::string bytes = bytesOf(file);
    std::istringstream lines(rectool({"cat", "--json", "--type", "RFSPECTRUM", file}).out);
    std::string last;
    for (std::string line; std::getline(lines, line);) {
        last = line;
    }
    bytes[json::parse(last).at("position").get<std::size_t>()] = 'x';
    std::ofstream(file.toStdString(), std::ios::binary) << bytes;
    const Result result = rectool({"plot", "spectrum", file, "-o", picture(), "--json"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.err, HasSubstr("damaged at "));
    EXPECT_TRUE(isWarm(pixel(image(), json::parse(result.out), 100.2e6, 1800)));
}
