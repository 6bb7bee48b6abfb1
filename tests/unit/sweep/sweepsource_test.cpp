// Sweeps that wait for their time, and hostile input; what becomes of rows is tested in tests/cases.
#include <random>
#include <string>
#include <vector>

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <values/maps.h>
#include <values/tree.h>

#include "sources/sweep/sweepsource.h"
#include "support/recordingbytes.h"

namespace RecStation {
namespace {

using namespace testing;
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
