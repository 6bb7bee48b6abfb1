// Sweeps through the real program and plug-in into a recording, and back.
#include <random>

#if !defined(_WIN32)
#include <signal.h>
#endif

#include "recordings.h"

namespace {

using namespace testing;

constexpr unsigned long long firstSweepUs = 1'795'248'000'000'000;  // 2026-11-21 08:00:00 UTC

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

using SweepProgram = RecordingTest;

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
    const auto spectra = readRecordedFile(result.path("receiver")).spectra(Code::RfSpectrum);
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
        awaitMessage(process, "the line ends before");
        ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
        const Result result = finish(process);
        EXPECT_EQ(result.exitCode, 3);  // for the line that marked the moment
        const auto spectra = readRecordedFile(result.path("receiver")).spectra(Code::RfSpectrum);
        ASSERT_EQ(spectra.size(), static_cast<std::size_t>(completeSweeps) + 1);
        EXPECT_EQ(spectra.back().ownTimeUs, firstSweepUs + 5'000'000);
        ASSERT_EQ(spectra.back().cells.size(), completeSweeps == 0 ? 4U : 8U);
        EXPECT_EQ(spectra.back().cells[3], -4.F);
    }
}
#endif

}  // namespace
