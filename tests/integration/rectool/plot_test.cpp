// The pictures as users get them: what is in them, what is said about them, and what is refused.
#include "filesizelimit.h"
#include "pictures.h"
#include "support/samplerecording.h"

namespace {

using namespace PictureTests;
using namespace testing;
using TestSupport::bytesOf;
using TestSupport::writeBytes;

class Plot : public Pictures {
protected:
    [[nodiscard]] QString recording() const
    {
        QString file = path("recording.rec");
        writePlotRecording(file.toStdString());
        return file;
    }
    /// Where a frequency and a time are in the first piece of a spectrum.
    [[nodiscard]] QColor pixel(const json& drawn, double hz, double timeMs) const
    {
        return pixelOf(m_image, drawn, hz, timeMs);
    }
    static QColor pixelOf(const QImage& image, const json& drawn, double hz, double timeMs)
    {
        const json& piece = drawn.at("spectra")[0].at("pieces")[0];
        const auto of = [&](const char* name) { return piece.at(name).get<double>(); };
        const double begin = drawn.at("fromMs").get<double>();
        const double end = drawn.at("toMs").get<double>();
        const double x = (hz - of("startHz")) / (of("stopHz") - of("startHz")) * of("columns");
        const double y = (timeMs - begin) / (end - begin) * of("rows");
        return image.pixelColor(piece.at("left").get<int>() + static_cast<int>(x),
                                piece.at("top").get<int>() + static_cast<int>(y));
    }
    /// The records of the spectrum.
    static std::vector<json> spectraOf(const QString& file)
    {
        std::istringstream lines(rectool({"cat", "--json", "--type", "RFSPECTRUM", file}).out);
        std::vector<json> records;
        for (std::string line; std::getline(lines, line);) {
            records.push_back(json::parse(line));
        }
        return records;
    }
};

}  // namespace

// spectrum

TEST_F(Plot, SpectrumShowsLevelsGapsAndWhatWasNotMeasured)
{
    const json drawn = draw({"spectrum", recording()});
    ASSERT_EQ(m_image.size(), QSize(1400, 900));
    EXPECT_EQ(pixel(drawn, 100.2e6, 500).rgb(), NotMeasured);   // nothing yet
    EXPECT_TRUE(isDark(pixel(drawn, 100.1e6, 1200)));           // noise
    EXPECT_TRUE(isDark(pixel(drawn, 100.2e6, 1200)));           // not yet strong
    EXPECT_TRUE(isWarm(pixel(drawn, 100.2e6, 1800)));           // the strong channel
    EXPECT_TRUE(isDark(pixel(drawn, 100.3e6, 1800)));           // its neighbour
    EXPECT_EQ(pixel(drawn, 100.6e6, 1800).rgb(), NotMeasured);  // the gap
    EXPECT_TRUE(isDark(pixel(drawn, 100.8e6, 1800)));           // after the gap
    EXPECT_EQ(pixel(drawn, 100.8e6, 2300).rgb(), NotMeasured);  // not in the new range
    const QColor middle = pixel(drawn, 100.1e6, 2300);
    EXPECT_FALSE(isDark(middle) || isWarm(middle) || middle.rgb() == NotMeasured);
}

TEST_F(Plot, SpectrumTellsWhatItDrewAsTheRecordsHaveIt)
{
    const QString file = recording();
    const json drawn = draw({"spectrum", file});
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
    const std::vector<json> records = spectraOf(file);
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    for (const json& record : records) {
        for (const json& cell : record.at("value").at("cells")) {
            if (!cell.is_null()) {
                lowest = std::min(lowest, cell.get<double>());
                highest = std::max(highest, cell.get<double>());
            }
        }
    }
    EXPECT_EQ(spectrum.at("records"), records.size());
    EXPECT_EQ(spectrum.at("minLevel"), lowest);
    EXPECT_EQ(spectrum.at("maxLevel"), highest);
}

TEST_F(Plot, SpectrumOfASpanBeginsWithWhatIsInForceThen)
{
    const json drawn = draw({"spectrum", "--from", "1600", "--to", "1900", recording()});
    const json& spectrum = drawn.at("spectra")[0];
    EXPECT_EQ(spectrum.at("records"), 0);
    EXPECT_EQ(spectrum.at("maxLevel"), -20);
    EXPECT_EQ(spectrum.at("channelRangeTimesMs"), json::array());
    EXPECT_TRUE(isWarm(pixel(drawn, 100.2e6, 1601)));
    EXPECT_TRUE(isWarm(pixel(drawn, 100.2e6, 1899)));
}

TEST_F(Plot, SpectrumIsDrawnInTheSizeAndUnitThatAreAskedFor)
{
    const json drawn =
        draw({"spectrum", "--width", "600", "--height", "400", "--mean", "--unit", "dBm", "--rf", recording()});
    EXPECT_EQ(m_image.size(), QSize(600, 400));
    EXPECT_EQ(drawn.at("unit"), "dBm");
    EXPECT_EQ(drawn.at("pixel"), "mean");
}

TEST_F(Plot, RfAndIfSpectraAreDrawnApartAlsoWhereTheTypeTableNamesOnlyOne)
{
    const QString file = recording();
    std::string bytes = bytesOf(file.toStdString());
    // The record at 1000 ms becomes one of the type 2: the IF spectrum, which the type table does not name.
    ASSERT_EQ(json::parse(rectool({"info", "--json", file}).out).at("files")[0].at("sound"), true);
    const std::vector<json> spectra = spectraOf(file);
    const auto atSecond =
        std::find_if(spectra.begin(), spectra.end(), [](const json& record) { return record.at("timeMs") == 1000; });
    const auto position = atSecond->at("position").get<std::size_t>();
    ASSERT_EQ(bytes[position], '1');
    bytes[position] = '2';
    writeBytes(file.toStdString(), bytes);
    const json drawn = draw({"spectrum", file});
    ASSERT_EQ(drawn.at("spectra").size(), 2U);
    EXPECT_EQ(drawn.at("spectra")[0].at("keyword"), "RFSPECTRUM");
    EXPECT_EQ(drawn.at("spectra")[1].at("keyword"), "IFSPECTRUM");
    EXPECT_EQ(drawn.at("spectra")[1].at("maxLevel"), -100);
    EXPECT_EQ(draw({"spectrum", "--if", file}).at("spectra").size(), 1U);
}

// level

TEST_F(Plot, LevelShowsTheValuesOverTime)
{
    const QString file = path("sample.rec");
    writeSampleRecording(file.toStdString());
    const json drawn = draw({"level", file});
    ASSERT_EQ(drawn.at("series").size(), 1U);
    EXPECT_EQ(
        drawn.at("series")[0],
        json::parse(
            R"({"keyword":"LEVEL","code":36,"unit":"dB","records":2,"min":-31.5,"max":-30.25,"drawn":"values"})"));
    ASSERT_EQ(m_image.size(), QSize(1400, 900));
    int blue = 0;
    for (int y = 0; y < m_image.height(); ++y) {
        for (int x = 0; x < m_image.width(); ++x) {
            const QColor colour = m_image.pixelColor(x, y);
            blue += colour.blue() > colour.red() + 80 ? 1 : 0;
        }
    }
    EXPECT_GT(blue, 500);  // a line, half of it across the picture
}

TEST_F(Plot, LevelTakesOtherNumbersAndRefusesWhatIsNone)
{
    const json drawn = draw({"level", "--type", "TRUEHEADING", recording()});
    EXPECT_EQ(drawn.at("series")[0].at("unit"), "\u00b0");
    EXPECT_EQ(drawn.at("series")[0].at("max"), 350);
    const Result result = rectool({"plot", "level", recording(), "-o", picture(), "--type", "DFSPECTRUM"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.err, HasSubstr("The records of DFSPECTRUM hold no numbers."));
}

// bearings

TEST_F(Plot, ABearingStandsAtItsTimeAndAzimuth)
{
    const json drawn = draw({"bearings", recording()});
    const json& view = drawn.at("view");
    const double x = (500.0 - 10) / (2500 - 10) * view.at("columns").get<double>();
    const double y = (1 - 10.0 / 360) * view.at("rows").get<double>();
    const QColor colour = m_image.pixelColor(view.at("left").get<int>() + static_cast<int>(x),
                                             view.at("top").get<int>() + static_cast<int>(y));
    EXPECT_EQ(colour, QColor(0x1f, 0x77, 0xb4));
}

TEST_F(Plot, FromAboveABearingStandsInItsDirectionAlsoInALowPicture)
{
    constexpr double Middle = 0.08;
    const double angle = 10 * std::acos(-1) / 180;
    for (const QStringList& size : {QStringList{"1400", "900"}, {"1000", "400"}, {"600", "600"}, {"400", "400"}}) {
        const json drawn = draw({"bearings", "--width", size[0], "--height", size[1], recording()});
        const json& circle = drawn.at("circle");
        const double distance =
            circle.at("radius").get<double>() * (Middle + (1 - Middle) * (500.0 - 10) / (2500 - 10));
        const double x = circle.at("x").get<double>() + distance * std::sin(angle);
        const double y = circle.at("y").get<double>() - distance * std::cos(angle);
        EXPECT_EQ(m_image.pixelColor(static_cast<int>(x), static_cast<int>(y)), QColor(0x1f, 0x77, 0xb4))
            << size.join(" by ").toStdString();
    }
}

// Bookmarks, formats, errors

TEST_F(Plot, BookmarksOfTheSpanAreMarked)
{
    const QString file = recording();
    draw({"spectrum", file});
    const QImage before = m_image;
    ASSERT_EQ(rectool({"bookmark", "add", file, "1200", "alarm", "--yes"}).exitCode, 0);
    const json drawn = draw({"spectrum", file});
    EXPECT_EQ(drawn.at("bookmarks"), json::parse(R"([{"timeMs":1200,"data":{"text":"alarm"}}])"));
    EXPECT_NE(pixel(drawn, 100.6e6, 1200), pixelOf(before, drawn, 100.6e6, 1200));
    EXPECT_EQ(draw({"level", "--type", "TRUEHEADING", "--to", "1199", file}).at("bookmarks"), json::array());
}

TEST_F(Plot, PicturesCanBeJpegAndPdf)
{
    const QString file = recording();
    EXPECT_EQ(rectool({"plot", "spectrum", file, "-o", path("picture.jpg")}).exitCode, 0);
    EXPECT_EQ(QImage(path("picture.jpg")).size(), QSize(1400, 900));
    EXPECT_EQ(rectool({"plot", "bearings", file, "-o", path("picture.pdf")}).exitCode, 0);
    EXPECT_EQ(bytesOf(path("picture.pdf").toStdString()).substr(0, 5), "%PDF-");
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
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files).size(), 1);
}

TEST_F(Plot, ADamagedRecordingIsDrawnAsFarAsItGoes)
{
    const QString file = recording();
    std::string bytes = bytesOf(file.toStdString());
    bytes[spectraOf(file).back().at("position").get<std::size_t>()] = 'x';
    writeBytes(file.toStdString(), bytes);
    const Result result = plot({"spectrum", file});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.err, HasSubstr("damaged at "));
    EXPECT_TRUE(isWarm(pixelOf(QImage(picture()), json::parse(result.out), 100.2e6, 1800)));
}
