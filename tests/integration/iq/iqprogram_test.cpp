// IQ samples through the real program and plug-in into a recording, and back by the library's public interface.
#include "iqtesting.h"
#include "recordings.h"

namespace {

constexpr unsigned long long firstSampleUs = 1'795'249'800'000'000;  // 2026-11-21 08:30:00 UTC

class IqProgram : public RecordingTest {
protected:
    // Runs the program to its end with samples on its standard input. @return what its only recording holds
    RecordedFile record(const QStringList& arguments, const QByteArray& input = {})
    {
        const Result result = run(QStringList{"--plugin", PLUGIN, "-q", "iq"} + arguments, input);
        EXPECT_EQ(result.exitCode, 0) << result.messages;
        m_messages = result.messages;
        return readRecordedFile(result.path("receiver"));
    }

    std::string m_messages;
};

void expectSpectrum(const RecordedFile::Spectrum& spectrum, double levelDb, const IqTesting::Samples& samples,
                    std::size_t firstSample, std::size_t average)
{
    constexpr std::size_t fftSize = 1024;
    IqTesting::expectSpectrum(spectrum.cells, samples, firstSample, fftSize, average, 0.01);
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
    const RecordedFile recording =
        record({path, "--rate", "2000000", "--centre", "1090e6", "--format", "cu8", "--start", "2026-11-21T08:30:00Z"});
    EXPECT_THAT(m_messages, testing::HasSubstr("the last 4612 samples"));

    EXPECT_EQ(recording.header.startFreq(), 1089e6F);
    EXPECT_EQ(recording.header.stopFreq(), 1091e6F);
    EXPECT_EQ(recording.header.startTS().getTimeStamp(), firstSampleUs);
    EXPECT_TRUE(recording.texts(Code::IfSpectrum).empty());
    constexpr std::size_t average = 8;
    const auto spectra = recording.spectra(Code::RfSpectrum);
    const auto levels = recording.numbers(Code::Level);
    ASSERT_EQ(spectra.size(), samples.size() / (average * 1024));
    ASSERT_EQ(levels.size(), spectra.size());
    EXPECT_EQ(spectra.back().range, values::ChannelRange::Even(1089e6, 2e6 / 1024, 1024));
    for (std::size_t i = 0; i < spectra.size(); i += 8) {
        expectSpectrum(spectra[i], levels[i].number, samples, i * average * 1024, average);
    }
    const auto loudest = std::ranges::max_element(levels, {}, &RecordedFile::Number::number) - levels.begin();
    const auto burst = static_cast<std::size_t>(loudest);
    expectSpectrum(spectra[burst], levels[burst].number, samples, burst * average * 1024, average);
}

TEST_F(IqProgram, RecordTimesFollowTheSamples)
{
    const QByteArray samples = IqTesting::asUnsignedBytes(IqTesting::noise(102'400, 1e-2));
    const auto spectra =
        record({"-", "--rate", "256000", "--centre", "100e6", "--format", "cu8", "--start", "2026-11-21T08:30:00Z"},
               samples)
            .spectra(Code::RfSpectrum);
    ASSERT_EQ(spectra.size(), 100U);
    // The initial states take the milliseconds from 10 on and move the first spectra; after that there is room for all.
    for (std::size_t i = 20; i < spectra.size(); ++i) {
        EXPECT_EQ(spectra[i].timeUs, firstSampleUs + 4'000 * i);
    }
}

TEST_F(IqProgram, AToneOnStandardInputIsRecordedAsAnIfSpectrum)
{
    const QByteArray samples = IqTesting::asSignedShorts(IqTesting::tone(20'480, 100.5, 1024, 0.1));
    const RecordedFile recording = record(
        {"-", "--rate", "1e6", "--centre", "100e6", "--format", "ci16_le", "--as", "if", "--average", "4"}, samples);
    EXPECT_TRUE(recording.texts(Code::RfSpectrum).empty());
    EXPECT_EQ(recording.header.startFreq(), 99.5e6F);
    EXPECT_EQ(recording.header.stopFreq(), 100.5e6F);
    const auto spectra = recording.spectra(Code::IfSpectrum);
    ASSERT_EQ(spectra.size(), 5U);
    const auto& [timeUs, ownTimeUs, range, cells] = spectra.back();
    const auto peak = std::max_element(cells.begin(), cells.end());
    EXPECT_NEAR(static_cast<double>(*peak), -20, 0.05);
    EXPECT_NEAR(range.frequencyHz(static_cast<std::size_t>(peak - cells.begin())), 100e6 + 100.5e6 / 1024, 1e6 / 1024);
}

}  // namespace
