// Sweeps through the real program and plug-in into a recording, and back.
#include <random>

#if !defined(_WIN32)
#include <signal.h>
#endif

#include <values/maps.h>

#include "recordings.h"

namespace {

using namespace testing;
using LevelMap = values::FastValueMap<float, values::levelHandler>;

constexpr std::int32_t sweepCode = 1;
constexpr unsigned long long firstSweepUs = 1'795'248'000'000'000;  // 2026-11-21 08:00:00 UTC

struct Spectrum {
    unsigned long long timeUs;
    unsigned long long ownTimeUs;
    values::ChannelRange range;
    std::vector<float> cells;
};

// After the initial state.
std::vector<Spectrum> spectraOf(const RecordedFile& file)
{
    std::vector<Spectrum> out;
    LevelMap map;
    for (const Record& record : file.records) {
        if (record.code == sweepCode) {
            EXPECT_TRUE(map.ApplyRecordedState(record.text, 0, false)) << record.text.substr(0, 80);
            if (map.GetTimeStamp() != 0) {
                const auto cells = map.GetCells();
                out.push_back({file.startUs + record.timeMs * 1000,
                               map.GetTimeStamp(),
                               map.GetChannelRange(),
                               {cells.begin(), cells.end()}});
            }
        }
    }
    return out;
}

// Levels of two decimals, as the programs print them.
class Levels {
public:
    float next() { return static_cast<float>(m_steps(m_random)) / 100; }

private:
    std::mt19937 m_random{11};
    std::uniform_int_distribution<int> m_steps{-12'000, -100};
};

QByteArray row(const QString& time, double lowHz, double highHz, double stepHz, const std::vector<float>& levels)
{
    QString line = QStringLiteral("2026-11-21, %1, %2, %3, %4, 20")
                       .arg(time)
                       .arg(lowHz, 0, 'f', 0)
                       .arg(highHz, 0, 'f', 0)
                       .arg(stepHz, 0, 'f', 2);
    for (const float level : levels) {
        line += QStringLiteral(", %1").arg(static_cast<double>(level), 0, 'f', 2);
    }
    return line.toLatin1() + '\n';
}

class SweepProgram : public RecordingTest {};

TEST_F(SweepProgram, InterleavedHopsComeBackAsSpectra)
{
    constexpr std::size_t sweeps = 20;
    constexpr std::size_t hopBins = 51;
    constexpr double hopHz = 5e6;
    Levels levels;
    QByteArray csv;
    std::vector<std::vector<float>> expected;
    for (std::size_t sweep = 0; sweep < sweeps; ++sweep) {
        std::vector<float>& cells = expected.emplace_back(8 * hopBins);
        const QString time = QStringLiteral("08:00:%1.%2").arg(sweep / 2, 2, 10, QLatin1Char('0')).arg(sweep % 2 * 5);
        for (const std::size_t hop : {0U, 2U, 1U, 3U, 4U, 6U, 5U, 7U}) {
            std::vector<float> values(hopBins);
            for (float& value : values) {
                value = levels.next();
            }
            std::copy(values.begin(), values.end(), cells.begin() + static_cast<std::ptrdiff_t>(hop * hopBins));
            const double lowHz = 2400e6 + static_cast<double>(hop) * hopHz;
            csv += row(time, lowHz, lowHz + hopHz, hopHz / hopBins, values);
        }
    }
    const Result result = run({"sweep", write("hops.csv", csv)});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_THAT(result.messages, HasSubstr("sweep: 160 used, 0 skipped, 0 bad"));
    const auto spectra = spectraOf(readRecordedFile(result.path("receiver")));
    ASSERT_THAT(spectra, SizeIs(sweeps));
    for (std::size_t sweep = 0; sweep < sweeps; ++sweep) {
        EXPECT_EQ(spectra[sweep].ownTimeUs, firstSweepUs + sweep * 500'000);
        ASSERT_EQ(spectra[sweep].cells, expected[sweep]);
        EXPECT_NEAR(spectra[sweep].range.frequencyHz(0), 2400e6 + hopHz / hopBins / 2, 1e-3);
        EXPECT_NEAR(spectra[sweep].range.frequencyHz(407), 2440e6 - hopHz / hopBins / 2, 1e-3);
        if (sweep > 0) {  // the first one waits for the initial states
            EXPECT_EQ(spectra[sweep].timeUs, firstSweepUs + sweep * 500'000);
        }
    }
}

#if !defined(_WIN32)
TEST_F(SweepProgram, ASignalKeepsWhatWasReadOfTheLastSweep)
{
    for (const int completeSweeps : {0, 3}) {
        QByteArray csv;
        for (int sweep = 0; sweep < completeSweeps; ++sweep) {
            const QString time = QStringLiteral("08:00:0%1").arg(sweep);
            csv += row(time, 0, 4, 1, {1, 2, 3, 4}) + row(time, 4, 8, 1, {5, 6, 7, 8});
        }
        QProcess process;
        start(process, {"sweep", "-"});
        process.write(csv + row("08:00:05", 0, 4, 1, {-1, -2, -3, -4}) + "mark\n");
        process.setReadChannel(QProcess::StandardError);
        QByteArray messages;
        while (!messages.contains("the line ends before")) {
            ASSERT_TRUE(process.waitForReadyRead(60'000)) << messages.toStdString();
            messages += process.readAllStandardError();
        }
        ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
        const Result result = finish(process);
        EXPECT_EQ(result.exitCode, 3);  // for the line that marked the moment
        const auto spectra = spectraOf(readRecordedFile(result.path("receiver")));
        ASSERT_EQ(spectra.size(), static_cast<std::size_t>(completeSweeps) + 1);
        EXPECT_EQ(spectra.back().ownTimeUs, firstSweepUs + 5'000'000);
        ASSERT_EQ(spectra.back().cells.size(), completeSweeps == 0 ? 4U : 8U);
        EXPECT_EQ(spectra.back().cells[3], -4.F);
    }
}
#endif

}  // namespace
