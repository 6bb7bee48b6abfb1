// The source of IQ samples: what it shows of them, made ones and a real recording.
#include <values/maps.h>
#include <values/tree.h>
#include <values/value.h>

#include "input/timetext.h"
#include "iqtesting.h"
#include "sources/iq/iqsource.h"
#include "support/files.h"
#include "support/problem.h"

namespace {

using RecStation::IqOptions;
using RecStation::Source;
using namespace testing;
using LevelMap = values::FastValueMap<float, values::levelHandler>;

QByteArray asFloats(const IqTesting::Samples& samples)
{
    return IqTesting::encoded(samples, IqTesting::asFloat);
}

constexpr std::size_t spectrumSize = 1024;
constexpr unsigned long long start = 1'795'249'800'000'000;  // 2026-11-21 08:30:00 UTC

class IqSource : public testing::Test {
protected:
    IqSource()
    {
        m_options.format = "cf32_le";
        m_options.rateHz = 1e6;
        m_options.centreHz = 100e6;
        m_options.startTime = RecStation::parseIsoTime("2026-11-21T08:30:00Z");
        m_options.average = 1;
    }

    // Writes the input and prepares the source over it.
    void prepare(const QByteArray& bytes)
    {
        const QString path = m_directory.filePath("capture one.bin");
        TestSupport::writeBytes(path, bytes);
        m_options.file = path.toStdString();
        m_source = RecStation::makeIqSource(
            m_options, [this](const QString& sentence) { m_reports.push_back(sentence.toStdString()); });
        m_source->prepare();
    }
    // Runs to the end and gives the times of the steps.
    std::vector<unsigned long long> run()
    {
        std::vector<unsigned long long> times;
        while (const auto time = m_source->nextTime()) {
            times.push_back(*time);
            m_source->step();
        }
        return times;
    }
    template <typename T>
    const T& value(const char* path) const
    {
        const auto* found = dynamic_cast<const T*>(m_tree.Find(QString::fromLatin1(path)));
        if (found == nullptr) {
            throw std::runtime_error(std::string("no such value: ") + path);
        }
        return *found;
    }
    [[nodiscard]] double number(const char* path) const { return value<values::ValueNumeric<double>>(path).GetValue(); }
    [[nodiscard]] const LevelMap& rfSpectrum() const { return value<LevelMap>("/Devices/Rx1/Scn/RfSpectrum"); }

    values::Tree m_tree;
    QTemporaryDir m_directory;
    IqOptions m_options;
    std::vector<std::string> m_reports;
    std::unique_ptr<Source> m_source;
};

TEST_F(IqSource, AToneComesOutAtItsFrequencyAndLevelInEveryFormat)
{
    using Encode = QByteArray (*)(const IqTesting::Samples&);
    const std::pair<const char*, Encode> formats[] = {
        {"cu8", IqTesting::asUnsignedBytes}, {"ci16_le", IqTesting::asSignedShorts}, {"cf32_le", asFloats}};
    for (const auto& [name, encode] : formats) {
        for (const double channel : {-400.0, -37.25, 0.5, 12.0, 300.75, 510.5}) {
            m_options.format = name;
            prepare(encode(IqTesting::tone(1024, channel, 1024, 0.5)));
            run();
            const auto cells = rfSpectrum().GetCells();
            const auto peak = std::max_element(cells.begin(), cells.end());
            const double stepHz = 1e6 / 1024;
            const double peakHz =
                rfSpectrum().GetChannelRange().frequencyHz(static_cast<std::size_t>(peak - cells.begin()));
            EXPECT_NEAR(static_cast<double>(*peak), -6.02, 0.1) << name << " " << channel;
            EXPECT_NEAR(peakHz, 100e6 + channel * stepHz, stepHz) << name << " " << channel;
            EXPECT_NEAR(number("/LEVEL"), -6.02, 0.05) << name << " " << channel;
        }
    }
}

TEST_F(IqSource, ASpectrumsTimeIsThatOfItsFirstSample)
{
    m_options.rateHz = 3e6;
    m_options.average = 2;
    m_options.overlapPercent = 50;
    prepare(asFloats(IqTesting::noise(4096, 1e-3)));
    // Spectra begin every 1,024 samples; 341.33 microseconds.
    EXPECT_THAT(run(), ElementsAre(start, start + 341, start + 683));
    EXPECT_EQ(rfSpectrum().GetTimeStamp(), start + 683);
    EXPECT_EQ(m_source->report().used, 3U);
}

TEST_F(IqSource, TheTimeIsTheSameHoweverOftenItIsAsked)
{
    prepare(asFloats(IqTesting::noise(2048, 1e-3)));
    EXPECT_EQ(m_source->nextTime(), start);
    EXPECT_EQ(m_source->nextTime(), start);
    m_source->step();
    EXPECT_EQ(m_source->nextTime(), start + 1024);
}

TEST_F(IqSource, TheLevelOfNoiseIsItsPower)
{
    m_options.average = 100;
    prepare(asFloats(IqTesting::noise(100 * spectrumSize, 1e-5)));
    run();
    EXPECT_NEAR(number("/LEVEL"), -50, 0.1);
    double sum = 0;
    for (const float level : rfSpectrum().GetCells()) {
        sum += static_cast<double>(level);
    }
    // 1,024 channels share the power, each takes in 5.76 dB more than its width.
    EXPECT_NEAR(sum / 1024, -50 - 30.10 + 5.76, 0.1);
}

TEST_F(IqSource, TheSpectrumIsShownBeforeTheLevel)
{
    struct Order final : IObserver {
        void Update(void* subject, TChangeCode /*code*/) override { subjects.push_back(subject); }
        std::vector<void*> subjects;
    } order;
    prepare(asFloats(IqTesting::noise(1024, 1e-3)));
    values::ValueBase* spectrum = m_tree.Find("/Devices/Rx1/Scn/RfSpectrum");
    values::ValueBase* level = m_tree.Find("/LEVEL");
    spectrum->AddObserver(&order);
    level->AddObserver(&order);
    run();
    EXPECT_THAT(order.subjects, ElementsAre(spectrum, level));
    spectrum->RemoveObserver(&order);
    level->RemoveObserver(&order);
}

TEST_F(IqSource, SpectraWithSamplesThatAreNoNumbersAreLeftOutAndReportedOnceARun)
{
    IqTesting::Samples samples = IqTesting::noise(6 * spectrumSize, 1e-3);
    samples[spectrumSize + 5] = {std::nan(""), 0};
    samples[2 * spectrumSize] = {0, std::numeric_limits<double>::infinity()};
    samples[5 * spectrumSize + 1023] = {0, std::nan("")};
    prepare(asFloats(samples));
    EXPECT_THAT(run(), ElementsAre(start, start + 3 * spectrumSize, start + 4 * spectrumSize));
    EXPECT_THAT(m_reports, ElementsAre(testing::AllOf(HasSubstr("from sample 1024 on"), HasSubstr(": 2")),
                                       testing::AllOf(HasSubstr("from sample 5120 on"), HasSubstr(": 1"))));
    EXPECT_EQ(m_source->report().bad, 3U);
    EXPECT_EQ(m_source->report().used, 3U);
}

TEST_F(IqSource, APathThatAnotherKindOfValueHoldsIsAnError)
{
    values::ValuePtr<values::Value<bool>> other;
    other.Attach("/LEVEL");
    EXPECT_THAT(TestSupport::problemOf([this] { prepare(asFloats(IqTesting::noise(1024, 1e-3))); }),
                HasSubstr("/LEVEL"));
}

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
        const QString path = IqTesting::testDataPath("modes1.bin");
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
        auto& spectrum = dynamic_cast<LevelMap&>(*tree.Find("/Devices/Rx1/Scn/RfSpectrum"));
        auto& level = dynamic_cast<values::ValueNumeric<double>&>(*tree.Find("/LEVEL"));
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
