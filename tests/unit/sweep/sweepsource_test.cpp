// Sweeps as spectra: their times, their channels, and rows that are bad or cut off.
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>

#include "sources/sweep/sweepsource.h"

namespace recstation {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsNan;
using testing::SizeIs;
using LevelMap = values::FastValueMap<float, values::levelHandler>;

constexpr unsigned long long eightOClock = 1'795'248'000'000'000;  // 2026-11-21 08:00:00 UTC

std::string row(const std::string& time, int lowMhz, int highMhz, const std::string& levels)
{
    return "2026-11-21, " + time + ", " + std::to_string(lowMhz) + "000000, " + std::to_string(highMhz) +
           "000000, 1000000.00, 20, " + levels + '\n';
}

struct Shown {
    unsigned long long due;
    unsigned long long time;
    values::ChannelRange range;
    std::vector<float> cells;
};

class SweepSourceTest : public testing::Test {
protected:
    void prepare(const std::string& text)
    {
        QFile file(m_directory.filePath(QStringLiteral("night.v2.csv")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::fromStdString(text));
        file.close();
        m_options.file = file.fileName().toStdString();
        m_source = makeSweepSource(m_options,
                                   [this](const QString& sentence) { m_reports.push_back(sentence.toStdString()); });
        m_source->prepare();
    }
    std::vector<Shown> run(const std::string& text)
    {
        prepare(text);
        std::vector<Shown> shown;
        while (const auto due = m_source->nextTime()) {
            m_source->step();
            const auto cells = spectrum().GetCells();
            shown.push_back(
                {*due, spectrum().GetTimeStamp(), spectrum().GetChannelRange(), {cells.begin(), cells.end()}});
        }
        return shown;
    }
    template <typename T>
    const T& value(const char* path) const
    {
        return dynamic_cast<const T&>(*m_tree.Find(QStringLiteral("/Devices/Rx1/") + QString::fromLatin1(path)));
    }
    [[nodiscard]] const LevelMap& spectrum() const { return value<LevelMap>("Scn/RfSpectrum"); }
    [[nodiscard]] double number(const char* path) const { return value<values::ValueNumeric<double>>(path).GetValue(); }

    values::Tree m_tree;
    QTemporaryDir m_directory;
    SweepOptions m_options;
    std::vector<std::string> m_reports;
    std::unique_ptr<Source> m_source;
};

TEST_F(SweepSourceTest, RowsOfASweepBecomeOneSpectrumAtTheTimeOfTheFirst)
{
    const auto shown = run(row("08:00:00.5", 100, 102, "1, 2") + row("08:00:00.75", 102, 104, "3, 4") +
                           row("08:00:01", 100, 102, "5, 6") + row("08:00:01.25", 102, 104, "7, 8"));
    ASSERT_THAT(shown, SizeIs(2));
    EXPECT_EQ(shown[0].due, eightOClock + 500'000);
    EXPECT_EQ(shown[0].time, eightOClock + 500'000);
    EXPECT_EQ(shown[0].range, values::ChannelRange::Even(100.5e6, 1e6, 4));
    EXPECT_THAT(shown[0].cells, ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(shown[1].time, eightOClock + 1'000'000);
    EXPECT_THAT(shown[1].cells, ElementsAre(5, 6, 7, 8));
    EXPECT_EQ(m_source->report().used, 4U);
    EXPECT_THAT(m_reports, IsEmpty());
}

TEST_F(SweepSourceTest, InterleavedHopsOfOneTimeBecomeOneSpectrum)
{
    std::string text;
    for (int sweep = 0; sweep < 5; ++sweep) {
        const std::string time = "08:00:00.00" + std::to_string(sweep);
        for (const int lowMhz : {2400, 2410, 2405, 2415}) {
            std::string levels;
            for (int bin = 0; bin < 5; ++bin) {
                levels += (bin == 0 ? "" : ", ") + std::to_string(-(lowMhz - 2400 + bin) - sweep) + ".00";
            }
            text += row(time, lowMhz, lowMhz + 5, levels);
        }
    }
    const auto shown = run(text);
    ASSERT_THAT(shown, SizeIs(5));
    for (std::size_t sweep = 0; sweep < 5; ++sweep) {
        EXPECT_EQ(shown[sweep].time, eightOClock + 1'000 * sweep);
        EXPECT_EQ(shown[sweep].range, values::ChannelRange::Even(2400.5e6, 1e6, 20));
        for (std::size_t channel = 0; channel < 20; ++channel) {
            EXPECT_EQ(shown[sweep].cells[channel], -static_cast<float>(channel + sweep));
        }
    }
}

TEST_F(SweepSourceTest, WholeRangesWithTheLastValueTwiceAreSweeps)
{
    const auto shown = run(row("08:00:00", 88, 91, "-1, -2, -3, -3") + row("08:00:10", 88, 91, "-4, -5, -6, -6"));
    ASSERT_THAT(shown, SizeIs(2));
    EXPECT_THAT(shown[0].cells, ElementsAre(-1, -2, -3));
    EXPECT_THAT(shown[1].cells, ElementsAre(-4, -5, -6));
    EXPECT_EQ(shown[1].due, eightOClock + 10'000'000);
}

TEST_F(SweepSourceTest, TheChannelsAndTheDeviceAreThereBeforeTheFirstStep)
{
    prepare(row("08:00:00", 88, 91, "-1, -2, -3"));
    ASSERT_TRUE(m_source->nextTime());
    EXPECT_EQ(spectrum().GetChannelRange(), values::ChannelRange::Even(88.5e6, 1e6, 3));
    EXPECT_EQ(spectrum().GetTimeStamp(), 0U);
    EXPECT_EQ(number("Scn/StartFreq"), 88e6);
    EXPECT_EQ(number("Scn/StopFreq"), 91e6);
    EXPECT_EQ(number("Scn/StepFreq"), 1e6);
    EXPECT_EQ(value<values::ValueSelection>("Gen/DRVCOMMANDS").GetCurrentKey(), 5);
    EXPECT_EQ(value<values::Value<QString>>("Adm/DRIVERNAME").GetValue(), QStringLiteral("night_v2"));
}

TEST_F(SweepSourceTest, AnotherRangeChangesTheChannels)
{
    const auto shown = run(row("08:00:00", 88, 90, "-1, -2") + row("08:00:01", 88, 90, "-1, -2") +
                           row("08:00:02", 88, 90, "-1, -2") + row("08:00:03", 100, 103, "-3, -4, -5"));
    ASSERT_THAT(shown, SizeIs(4));
    EXPECT_EQ(shown[2].range, values::ChannelRange::Even(88.5e6, 1e6, 2));
    EXPECT_EQ(shown[3].range, values::ChannelRange::Even(100.5e6, 1e6, 3));
    EXPECT_EQ(number("Scn/StopFreq"), 103e6);
}

TEST_F(SweepSourceTest, ARowThatTheEndCutsIsBadAndTheOthersAreASweep)
{
    const auto shown =
        run(row("08:00:00", 100, 102, "1, 2") + row("08:00:00", 102, 104, "3, 4") + row("08:00:01", 100, 102, "5, 6") +
            "2026-11-21, 08:00:01, 102000000, 104000000, 1000000, 20, 7");
    ASSERT_THAT(shown, SizeIs(2));
    EXPECT_EQ(shown[1].range, shown[0].range);
    EXPECT_THAT(shown[1].cells, ElementsAre(5, 6, IsNan(), IsNan()));
    EXPECT_EQ(m_source->report().bad, 1U);
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("sweep: line 4: ")));
}

TEST_F(SweepSourceTest, ABadRowIsAGapOfItsSweep)
{
    const std::string bad = "2026-11-21, 08:00:01, 102000000, 104000000, 1000000, 20, x, y\n";
    const auto shown =
        run(row("08:00:00", 100, 102, "1, 2") + row("08:00:00", 102, 104, "3, 4") + row("08:00:01", 100, 102, "5, 6") +
            bad + row("08:00:02", 100, 102, "7, 8") + row("08:00:02", 102, 104, "9, 9"));
    ASSERT_THAT(shown, SizeIs(3));
    EXPECT_THAT(shown[1].cells, ElementsAre(5, 6, IsNan(), IsNan()));
    EXPECT_THAT(shown[2].cells, ElementsAre(7, 8, 9, 9));
}

TEST_F(SweepSourceTest, TimesThatGoBackAreDueAtTheLatestTimeAndCounted)
{
    const auto shown = run(row("08:00:05", 88, 90, "-1, -2") + row("08:00:01", 88, 90, "-1, -2"));
    ASSERT_THAT(shown, SizeIs(2));
    EXPECT_EQ(shown[1].due, eightOClock + 5'000'000);
    EXPECT_EQ(shown[1].time, eightOClock + 5'000'000);
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("1 row goes back, by up to ")));
}

TEST_F(SweepSourceTest, StrictEndsAtTheFirstBadLine)
{
    m_options.strict = true;
    prepare("rubbish\n" + row("08:00:05", 88, 90, "-1, -2"));
    EXPECT_THROW(static_cast<void>(m_source->nextTime()), std::runtime_error);
}

TEST_F(SweepSourceTest, AnInputWithoutASweepIsRefused)
{
    for (const char* text : {"", "# nothing\n", "rubbish\n"}) {
        prepare(text);
        EXPECT_THROW(static_cast<void>(m_source->nextTime()), std::runtime_error) << text;
    }
}

TEST_F(SweepSourceTest, HostileInputIsBadAndHarmless)
{
    std::mt19937 random(7);
    std::string garbage(200'000, '\0');
    for (char& c : garbage) {
        c = static_cast<char>(random());
    }
    const std::string good = row("08:00:05", 88, 90, "-1, -2");
    std::string manyValues = "2026-11-21, 08:00:05, 0, 1000000, 1, 1";
    for (int i = 0; i < 200'000; ++i) {
        manyValues += ", -1";
    }
    const auto shown = run(garbage + '\n' + std::string(3'000'000, ',') + '\n' + std::string(20'000'000, 'x') + '\n' +
                           manyValues + '\n' + good);
    ASSERT_THAT(shown, SizeIs(1));
    EXPECT_THAT(shown[0].cells, ElementsAre(-1, -2));
    EXPECT_GE(m_source->report().bad, 3U);
    EXPECT_THAT(m_reports, SizeIs(21));
}

TEST_F(SweepSourceTest, ASweepThatWaitsForItsTimeIsNotUnfinished)
{
    prepare(row("08:00:05", 88, 90, "-1, -2"));
    EXPECT_EQ(m_source->unfinishedTime(), std::nullopt);
    ASSERT_TRUE(m_source->nextTime());
    EXPECT_EQ(m_source->unfinishedTime(), std::nullopt);
}

}  // namespace
}  // namespace recstation
