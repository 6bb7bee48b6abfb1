// Real samples: secondary radar bursts over noise, 2,000,000 samples/s at 1,090 MHz.
#include <algorithm>
#include <cmath>
#include <vector>

#include <QFile>

#include <gtest/gtest.h>

#include <values/maps.h>
#include <values/tree.h>
#include <values/value.h>

#include "input/timetext.h"
#include "iqtesting.h"
#include "sources/iq/iqsource.h"

namespace {

using LevelMap = values::FastValueMap<float, values::levelHandler>;

constexpr std::size_t binCount = 1024;
constexpr std::size_t samplesInFile = 356'868;

// Replays the texts that a recorder would write.
class Replay final : public IObserver {
public:
    explicit Replay(values::ValueBase& live) : m_live(live)
    {
        m_live.AddObserver(this);
        m_live.CommandRecordingOn();
    }
    ~Replay() override { m_live.RemoveObserver(this); }
    void Update(void* /*subject*/, TChangeCode code) override
    {
        EXPECT_EQ(code, TChangeCode::CommandsPending);
        EXPECT_TRUE(map.ApplyRecordedState(m_live.GetStringForRecording(true), 0, false));
    }

    LevelMap map;

private:
    values::ValueBase& m_live;
};

struct Frame {
    double levelDb;
    std::vector<float> cells;
    std::vector<float> replayed;
};

class RealSamples : public testing::Test {
protected:
    void SetUp() override
    {
        const QString path = IqTesting::testDataPath(QStringLiteral("modes1.bin"));
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            GTEST_SKIP() << "no real samples: " << path.toStdString() << " is missing";
        }
        m_samples = IqTesting::fromUnsignedBytes(file.readAll());
        m_options.file = path.toStdString();
        m_options.format = "cu8";
        m_options.rateHz = 2e6;
        m_options.centreHz = 1090e6;
        m_options.startTime = RecStation::parseIsoTime("2026-11-21T08:30:00Z");
    }

    std::vector<Frame> run()
    {
        values::Tree tree;
        const auto source = RecStation::makeIqSource(m_options, [](const QString& /*sentence*/) {});
        source->prepare();
        auto& spectrum = dynamic_cast<LevelMap&>(*tree.Find(QStringLiteral("/Devices/Rx1/Scn/RfSpectrum")));
        auto& level = dynamic_cast<values::ValueNumeric<double>&>(*tree.Find(QStringLiteral("/LEVEL")));
        Replay replay(spectrum);
        std::vector<Frame> frames;
        while (source->nextTime()) {
            source->step();
            frames.push_back({level.GetValue(), copy(spectrum), copy(replay.map)});
        }
        m_report = source->report();
        return frames;
    }
    static std::vector<float> copy(const LevelMap& map)
    {
        const auto cells = map.GetCells();
        return {cells.begin(), cells.end()};
    }

    void expectSpectrum(const Frame& frame, std::size_t firstSample, std::size_t average) const
    {
        const auto expected = IqTesting::spectrumByDefinition(m_samples, firstSample, binCount, binCount, average,
                                                              IqTesting::flatTopTerms());
        ASSERT_EQ(frame.cells.size(), binCount);
        ASSERT_EQ(frame.replayed.size(), binCount);
        for (std::size_t i = 0; i < binCount; ++i) {
            ASSERT_NEAR(static_cast<double>(frame.cells[i]), expected[i], 0.001) << firstSample << " channel " << i;
            ASSERT_NEAR(static_cast<double>(frame.replayed[i]), expected[i], 0.01) << firstSample << " channel " << i;
        }
        EXPECT_NEAR(frame.levelDb, IqTesting::meanLevelDb(m_samples, firstSample, average * binCount), 0.006);
    }

    IqTesting::Samples m_samples;
    RecStation::IqOptions m_options;
    RecStation::SourceReport m_report;
};

TEST_F(RealSamples, BurstsStandOutOfTheNoise)
{
    m_options.average = 1;
    const std::vector<Frame> frames = run();
    ASSERT_EQ(m_samples.size(), samplesInFile);
    ASSERT_EQ(frames.size(), samplesInFile / binCount);
    EXPECT_EQ(m_report.used, frames.size());
    EXPECT_EQ(m_report.skipped, 1U);
    EXPECT_EQ(m_report.bad, 0U);

    std::vector<double> levels;
    levels.reserve(frames.size());
    for (const Frame& frame : frames) {
        levels.push_back(frame.levelDb);
    }
    std::sort(levels.begin(), levels.end());
    const double noiseDb = levels[levels.size() / 10];
    const auto bursts = std::count_if(levels.begin(), levels.end(), [&](double level) { return level > noiseDb + 9; });
    EXPECT_GT(levels.back(), noiseDb + 15);
    EXPECT_GT(bursts, 10);
    EXPECT_LT(static_cast<std::size_t>(bursts), frames.size() / 2);
}

TEST_F(RealSamples, SpectraAgreeWithTheDefinitionBeforeAndAfterRecording)
{
    const std::vector<Frame> frames = run();
    constexpr std::size_t average = 8;
    ASSERT_EQ(frames.size(), samplesInFile / binCount / average);
    for (std::size_t i = 0; i < frames.size(); i += 10) {
        expectSpectrum(frames[i], i * average * binCount, average);
    }
    const auto loudest = std::max_element(frames.begin(), frames.end(),
                                          [](const Frame& a, const Frame& b) { return a.levelDb < b.levelDb; });
    expectSpectrum(*loudest, static_cast<std::size_t>(loudest - frames.begin()) * average * binCount, average);
}

}  // namespace
