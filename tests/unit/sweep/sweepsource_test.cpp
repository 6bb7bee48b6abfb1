// Sweeps: bad lines, rows that make a sweep, and the source.
#include <random>

#include <values/maps.h>
#include <values/tree.h>

#include "input/badlines.h"
#include "input/fields.h"
#include "sources/sweep/sweepassembly.h"
#include "sources/sweep/sweepsource.h"
#include "support/recordingbytes.h"
#include "support/testing.h"

namespace RecStation {
namespace {

using namespace testing;

TEST(BadLines, TheFirstTwentyAreToldOneByOneAndTheRestAsANumber)
{
    std::vector<std::string> told;
    BadLines bad("source", false, [&told](const QString& sentence) { told.push_back(sentence.toStdString()); });
    for (std::size_t line = 1; line <= 23; ++line) {
        bad.add(line, "wrong");
    }
    ASSERT_THAT(told, SizeIs(20));
    EXPECT_EQ(told.back(), "source: line 20: wrong");
    bad.finish();
    bad.finish();
    ASSERT_THAT(told, SizeIs(21));
    EXPECT_EQ(told.back(), "source: and 3 more bad lines");
    EXPECT_EQ(bad.count(), 23U);
}

TEST(BadLines, StrictThrowsTheFirst)
{
    BadLines bad("source", true, [](const QString&) {});
    try {
        bad.add(7, "wrong");
        FAIL() << "nothing thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "source: line 7: wrong (--strict allows no bad line)");
    }
    EXPECT_EQ(bad.count(), 1U);
}

TEST(CommaFields, EmptyFieldsCountAndTheLastOneToo)
{
    std::vector<std::string> fields;
    CommaFields line(",a,,b,");
    while (const auto field = line.next()) {
        fields.emplace_back(*field);
    }
    EXPECT_THAT(fields, ElementsAre("", "a", "", "b", ""));
}

TEST(ParseNumber, TakesAllOfTheTextOrNothing)
{
    EXPECT_EQ(parseNumber<double>("-1.5e3"), -1500);
    EXPECT_EQ(parseNumber<double>("+2"), 2);
    for (const char* text : {"", "+", "+-2", "1.5x", " 1", "1,5", "--1"}) {
        EXPECT_EQ(parseNumber<double>(text), std::nullopt) << text;
    }
}

TEST(Shown, HidesControlCharactersAndCutsLongFields)
{
    EXPECT_EQ(shown(std::string_view("a\0\x1B\xFF", 4)), "\"a???\"");
    EXPECT_EQ(shown(std::string(1000, 'x')), '"' + std::string(40, 'x') + "...\"");
}

using values::ChannelRange;

SweepRow row(double lowHz, double highHz, std::vector<float> levels, unsigned long long time = 1)
{
    return {time, lowHz, highHz, std::move(levels)};
}

Sweep taken(SweepAssembly& assembly)
{
    Sweep sweep;
    assembly.take(sweep);
    return sweep;
}

TEST(SweepAssembly, EdgesRoundedToHertzStillLieOnOneGrid)
{
    // Seven hops of 2.8 MHz whose edges are whole Hz, as programs print them.
    SweepAssembly assembly(false);
    constexpr std::size_t bins = 409;
    constexpr double hopHz = 2'793'171.4;
    for (int hop = 0; hop < 7; ++hop) {
        assembly.add(row(std::floor(88e6 + hop * hopHz), std::floor(88e6 + (hop + 1) * hopHz),
                         std::vector<float>(bins, static_cast<float>(hop))));
    }
    const Sweep sweep = taken(assembly);
    const ChannelRange& range = assembly.layout().range();
    ASSERT_FALSE(range.isList());
    ASSERT_EQ(range.size(), 7 * bins);
    for (std::size_t channel = 0; channel < range.size(); ++channel) {
        EXPECT_NEAR(range.frequencyHz(channel), 88e6 + (static_cast<double>(channel) + 0.5) * hopHz / bins, 2);
        EXPECT_EQ(sweep.cells[channel], static_cast<float>(channel / bins));
    }
}

TEST(SweepAssembly, ARangeThatComesAgainBeginsTheNextSweep)
{
    SweepAssembly assembly(false);
    EXPECT_FALSE(assembly.beginsNext(row(100, 120, {1, 2})));
    assembly.add(row(100, 120, {1, 2}));
    assembly.add(row(140, 160, {5, 6}));
    EXPECT_TRUE(assembly.beginsNext(row(100, 120, {1, 2})));
    EXPECT_TRUE(assembly.beginsNext(row(140, 160, {1, 2})));
    EXPECT_TRUE(assembly.beginsNext(row(90, 200, {1})));   // covers one
    EXPECT_TRUE(assembly.beginsNext(row(109, 111, {1})));  // within one
    EXPECT_FALSE(assembly.beginsNext(row(120, 140, {3, 4})));
    EXPECT_FALSE(assembly.beginsNext(row(160, 180, {3, 4})));
}

TEST(SweepAssembly, AfterTwoSweepsOfTheSameRowsTheLastRowCompletesASweep)
{
    SweepAssembly assembly(false);
    for (int sweep = 0; sweep < 3; ++sweep) {
        assembly.add(row(100, 120, {1, 2}));
        EXPECT_FALSE(assembly.complete());
        assembly.add(row(120, 140, {1, 2}));
        EXPECT_EQ(assembly.complete(), sweep == 2);
        EXPECT_EQ(taken(assembly).newLayout, sweep == 0);
    }
    assembly.add(row(200, 220, {1, 2}));
    assembly.add(row(220, 240, {1, 2}));
    EXPECT_FALSE(assembly.complete());
    EXPECT_TRUE(taken(assembly).newLayout);
}

TEST(SweepAssembly, ASweepHasNoMoreValuesThanAMapHasChannels)
{
    SweepAssembly assembly(false);
    SweepRow huge = row(0, 16'777'216, std::vector<float>(SweepRowParser::MostBins));
    assembly.add(huge);
    EXPECT_THROW(assembly.add(row(1e9, 1e9 + 1, {1})), LineError);
}

using LevelMap = values::FastValueMap<float, values::levelHandler>;

std::string row(const std::string& time, int lowMhz, int highMhz, const std::string& levels)
{
    return "2026-11-21, " + time + ", " + std::to_string(lowMhz) + "000000, " + std::to_string(highMhz) +
           "000000, 1000000.00, 20, " + levels + '\n';
}

class SweepSourceTest : public testing::Test {
protected:
    void prepare(const std::string& text)
    {
        const QString file = m_directory.filePath("night.v2.csv");
        TestSupport::writeFile(file, text);
        m_options.files = {file.toStdString()};
        m_source = makeSweepSource(m_options,
                                   [this](const QString& sentence) { m_reports.push_back(sentence.toStdString()); });
        m_source->prepare();
    }
    values::Tree m_tree;
    QTemporaryDir m_directory;
    SweepOptions m_options;
    std::vector<std::string> m_reports;
    std::unique_ptr<Source> m_source;
};

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
    prepare(garbage + '\n' + std::string(3'000'000, ',') + '\n' + std::string(20'000'000, 'x') + '\n' + manyValues +
            '\n' + good);
    int shown = 0;
    for (; m_source->nextTime(); ++shown) {
        m_source->step();
        const auto& spectrum = dynamic_cast<const LevelMap&>(*m_tree.Find("/Devices/Rx1/Scn/RfSpectrum"));
        EXPECT_THAT(spectrum.GetCells(), ElementsAre(-1, -2));
    }
    EXPECT_EQ(shown, 1);
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
}  // namespace RecStation
