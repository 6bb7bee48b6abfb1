// IQ samples through the real program and plug-in into a recording, and back by the library's public interface.
#include <recording2/fileaccess.h>
#include <values/maps.h>
#include <values/value.h>

#include "iqtesting.h"
#include "support/program.h"

namespace {

using LevelMap = values::FastValueMap<float, values::levelHandler>;

constexpr std::int32_t rfSpectrumType = 1;
constexpr std::int32_t ifSpectrumType = 2;
constexpr std::int32_t levelType = 36;
constexpr unsigned long long start = 1'795'249'800'000'000;  // 2026-11-21 08:30:00 UTC

struct ReadBack {
    struct Spectrum {
        unsigned long long timeMs;
        std::vector<float> cells;
    };
    Recording2::CHeaderData header;
    values::ChannelRange range;
    std::vector<Spectrum> spectra;  ///< in record order, without the initial state
    std::vector<double> levels;     ///< likewise
    std::size_t otherSpectra = 0;
};

// The initial states come first: a spectrum without a measurement.
void readRecords(Recording2::CFileAccess& file, std::int32_t spectrumType, ReadBack& out)
{
    const std::int32_t otherType = spectrumType == rfSpectrumType ? ifSpectrumType : rfSpectrumType;
    LevelMap map;
    values::ValueNumeric<double> level;
    Recording2::CVTCmdData record;
    unsigned long long time = 0;
    for (unsigned long long next = file.readfirst(record);; next = file.readnext(record)) {
        const std::string text(record.strData(), record.strDataLen());
        out.otherSpectra += record.cmd() == otherType ? 1U : 0U;
        if (record.cmd() == spectrumType) {
            ASSERT_TRUE(map.ApplyRecordedState(text, 0, false)) << text.substr(0, 80);
            const auto cells = map.GetCells();
            out.spectra.push_back({time, {cells.begin(), cells.end()}});
        } else if (record.cmd() == levelType) {
            ASSERT_TRUE(level.ApplyRecordedState(text, 0, false)) << text;
            out.levels.push_back(level.GetValue());
        }
        if (next == 0) {
            break;
        }
        time = next;
    }
    out.range = map.GetChannelRange();
    ASSERT_FALSE(out.spectra.empty() || out.levels.empty());
    EXPECT_TRUE(std::all_of(out.spectra[0].cells.begin(), out.spectra[0].cells.end(),
                            [](float cell) { return std::isnan(cell); }));
    out.spectra.erase(out.spectra.begin());
    out.levels.erase(out.levels.begin());
}

class IqProgram : public testing::Test {
protected:
    IqProgram() { TestSupport::requireApplication(); }

    // Runs the program to its end with samples on its standard input.
    void record(const QStringList& arguments, const QByteArray& input = QByteArray())
    {
        QProcess process;
        process.start(RECSTATION, QStringList{"--plugin", PLUGIN, "-q", "-o", m_directory.path(), "iq"} + arguments);
        ASSERT_TRUE(process.waitForStarted()) << process.errorString().toStdString();
        process.write(input);
        process.closeWriteChannel();
        ASSERT_TRUE(process.waitForFinished(100'000));
        m_messages = process.readAllStandardError();
        ASSERT_EQ(process.exitStatus(), QProcess::NormalExit) << m_messages.toStdString();
        m_exitCode = process.exitCode();
    }

    [[nodiscard]] ReadBack readBack(std::int32_t spectrumType) const
    {
        ReadBack out;
        const QStringList files = QDir(m_directory.path()).entryList({"*.rec"}, QDir::Files);
        EXPECT_EQ(files.size(), 1) << m_messages.toStdString();
        if (files.size() == 1) {
            const QByteArray path = QFile::encodeName(m_directory.filePath(files.front()));
            Recording2::CFileAccess file(path.constData(), QString(), nullptr, false, true, false, nullptr, nullptr);
            EXPECT_EQ(file.read(out.header), 1U);
            readRecords(file, spectrumType, out);
        }
        return out;
    }

    QTemporaryDir m_directory;
    QByteArray m_messages;
    int m_exitCode = -1;
};

void expectSpectrum(const ReadBack::Spectrum& spectrum, double levelDb, const IqTesting::Samples& samples,
                    std::size_t firstSample, std::size_t average)
{
    constexpr std::size_t fftSize = 1024;
    const auto expected =
        IqTesting::spectrumByDefinition(samples, firstSample, fftSize, fftSize, average, IqTesting::flatTopTerms());
    ASSERT_EQ(spectrum.cells.size(), fftSize);
    for (std::size_t i = 0; i < fftSize; ++i) {
        ASSERT_NEAR(static_cast<double>(spectrum.cells[i]), expected[i], 0.01) << firstSample << " channel " << i;
    }
    EXPECT_NEAR(levelDb, IqTesting::meanLevelDb(samples, firstSample, average * fftSize), 0.006);
}

TEST_F(IqProgram, SpectraOfRealBurstsReadBackAgreeWithTheSamples)
{
    const QString path = IqTesting::testDataPath("modes1.bin");
    QFile input(path);
    if (!input.open(QIODevice::ReadOnly)) {
        GTEST_SKIP() << "no real samples: " << path.toStdString() << " is missing";
    }
    const IqTesting::Samples samples = IqTesting::fromUnsignedBytes(input.readAll());
    record({path, "--rate", "2000000", "--centre", "1090e6", "--format", "cu8", "--start", "2026-11-21T08:30:00Z"});
    ASSERT_EQ(m_exitCode, 0) << m_messages.toStdString();
    EXPECT_TRUE(m_messages.contains("the last 4612 samples")) << m_messages.toStdString();

    const ReadBack recording = readBack(rfSpectrumType);
    EXPECT_EQ(recording.range, values::ChannelRange::Even(1089e6, 2e6 / 1024, 1024));
    EXPECT_EQ(recording.header.startFreq(), 1089e6F);
    EXPECT_EQ(recording.header.stopFreq(), 1091e6F);
    EXPECT_EQ(recording.header.startTS().getTimeStamp(), start);
    EXPECT_EQ(recording.otherSpectra, 0U);
    constexpr std::size_t average = 8;
    ASSERT_EQ(recording.spectra.size(), samples.size() / (average * 1024));
    ASSERT_EQ(recording.levels.size(), recording.spectra.size());
    for (std::size_t i = 0; i < recording.spectra.size(); i += 8) {
        expectSpectrum(recording.spectra[i], recording.levels[i], samples, i * average * 1024, average);
    }
    const auto loudest = std::max_element(recording.levels.begin(), recording.levels.end()) - recording.levels.begin();
    const auto burst = static_cast<std::size_t>(loudest);
    expectSpectrum(recording.spectra[burst], recording.levels[burst], samples, burst * average * 1024, average);
}

TEST_F(IqProgram, RecordTimesFollowTheSamples)
{
    const QByteArray samples = IqTesting::asUnsignedBytes(IqTesting::noise(102'400, 1e-2));
    record({"-", "--rate", "256000", "--centre", "100e6", "--format", "cu8", "--start", "2026-11-21T08:30:00Z"},
           samples);
    ASSERT_EQ(m_exitCode, 0) << m_messages.toStdString();
    const ReadBack recording = readBack(rfSpectrumType);
    ASSERT_EQ(recording.spectra.size(), 100U);
    // The initial states take the milliseconds from 10 on and move the first spectra; after that there is room for all.
    for (std::size_t i = 20; i < recording.spectra.size(); ++i) {
        EXPECT_EQ(recording.spectra[i].timeMs, 4 * i);
    }
}

TEST_F(IqProgram, AToneOnStandardInputIsRecordedAsAnIfSpectrum)
{
    const QByteArray samples = IqTesting::asSignedShorts(IqTesting::tone(20'480, 100.5, 1024, 0.1));
    record({"-", "--rate", "1e6", "--centre", "100e6", "--format", "ci16_le", "--as", "if", "--average", "4"}, samples);
    ASSERT_EQ(m_exitCode, 0) << m_messages.toStdString();
    const ReadBack recording = readBack(ifSpectrumType);
    EXPECT_EQ(recording.otherSpectra, 0U);
    EXPECT_EQ(recording.header.startFreq(), 99.5e6F);
    EXPECT_EQ(recording.header.stopFreq(), 100.5e6F);
    ASSERT_EQ(recording.spectra.size(), 5U);
    const std::vector<float>& cells = recording.spectra.back().cells;
    const auto peak = std::max_element(cells.begin(), cells.end());
    EXPECT_NEAR(static_cast<double>(*peak), -20, 0.05);
    EXPECT_NEAR(recording.range.frequencyHz(static_cast<std::size_t>(peak - cells.begin())), 100e6 + 100.5e6 / 1024,
                1e6 / 1024);
}

}  // namespace
