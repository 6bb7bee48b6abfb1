// WAV and RF64 files as receivers' programs leave them.
#include "input/timetext.h"
#include "iqfiles_fixture.h"
#include "sources/iq/wavheader.h"

namespace IqTesting {
namespace {

using namespace testing;

TEST_F(IqFiles, ARecordersChunkTellsTimeAndFrequencyBeforeTheName)
{
    const QByteArray data = chunk("data", encoded(steps(FftSize, 0), asInteger(2)));
    const QByteArray format = formatChunk(1, 2, 48000, 16);
    for (const QByteArray& chunks : {format + auxiChunk(7'100'000) + data, format + data + auxiChunk(7'100'000)}) {
        write("HDSDR_20210102_030405Z_3500kHz_RF.wav", riff(chunks));
        const auto spectra = run();
        EXPECT_EQ(spectra.at(0).time, NewYear + 250'000);
        EXPECT_EQ(spectra.at(0).frequencyHz, 7.1e6);
        EXPECT_EQ(spectra.at(0).firstHz, 7.1e6 - 24000);
    }
    write("HDSDR_20200102_030405Z_3500kHz_RF.wav",
          riff(format + chunk("auxi", "<?xml version='1.0'?>" + QByteArray(40, ' ')) + data));
    const auto spectra = run();
    EXPECT_EQ(spectra.at(0).time, NewYear);
    EXPECT_EQ(spectra.at(0).frequencyHz, 3.5e6);
    EXPECT_THAT(m_said, ElementsAre(HasSubstr("\"auxi\" says is not understood")));
    m_options.centreHz = 1e6;
    EXPECT_EQ(run().at(0).frequencyHz, 1e6);
}

TEST_F(IqFiles, ARecordersChunkMayTellTheFrequencyAlone)
{
    write("x_20200102_030405Z.wav",
          riff(formatChunk(1, 2, 48000, 16) + chunk("auxi", QByteArray(32, '\0') + littleEndian(7'100'000, 4)) +
               chunk("data", encoded(steps(FftSize, 0), asInteger(2)))));
    const auto spectra = run();
    EXPECT_EQ(spectra.at(0).time, NewYear);
    EXPECT_EQ(spectra.at(0).frequencyHz, 7.1e6);
    EXPECT_THAT(m_said, IsEmpty());
}

TEST_F(IqFiles, ARecordersChunkMayBeXml)
{
    const QByteArray data = chunk("data", encoded(steps(FftSize, 0), asInteger(2)));
    const QByteArray xml =
        "<?xml version=\"1.0\"?><SDR-XML-Root Created=\"02-Jan-2020\"><Definition "
        "RadioCenterFreq=\"10489750000\" SampleRate=\"48000\" UTCSeconds=\"1577934245\"/>";
    QByteArray wide;
    for (const char letter : xml) {
        wide += QByteArray(1, letter) + '\0';
    }
    for (const QByteArray& text : {xml, wide}) {
        write("x.wav", riff(formatChunk(1, 2, 48000, 16) + chunk("auxi", text) + data));
        const auto spectra = run();
        EXPECT_EQ(spectra.at(0).time, NewYear);
        EXPECT_EQ(spectra.at(0).frequencyHz, 10489.75e6);
        EXPECT_THAT(m_said, IsEmpty());
    }
    m_options.startTime = RecStation::parseIsoTime("2020-01-02T03:04:05Z");
    write("x_7100kHz.wav",
          riff(formatChunk(1, 2, 48000, 16) + chunk("auxi", xml.left(60) + "RadioCenterFreq=\"x") + data));
    EXPECT_EQ(run().at(0).frequencyHz, 7.1e6);
    EXPECT_THAT(m_said, ElementsAre(HasSubstr("\"auxi\" says is not understood")));
}

TEST_F(IqFiles, Rf64TellsItsLengthInALongerField)
{
    m_options.startTime = RecStation::parseIsoTime("2020-01-02T03:04:05Z");
    const Samples samples = steps(3 * FftSize, 2);
    const QByteArray data = encoded(samples, asInteger(2));
    const QByteArray sizes = littleEndian(0, 8) + littleEndian(static_cast<std::uint64_t>(data.size()), 8) +
                             littleEndian(samples.size(), 8) + littleEndian(0, 4);
    write("x_7100kHz.wav", "RF64" + littleEndian(0xFFFFFFFF, 4) + "WAVE" + chunk("ds64", sizes) +
                               formatChunk(1, 2, 48000, 16) + "data" + littleEndian(0xFFFFFFFF, 4) + data);
    const auto spectra = run();
    ASSERT_EQ(spectra.size(), 3U);
    expectSpectrumOf(spectra[2].cells, samples, 2 * FftSize);
    EXPECT_THAT(m_said, IsEmpty());
}

TEST_F(IqFiles, AWavThatIsCutOffIsReadAsFarAsItGoesAndTold)
{
    m_options.startTime = RecStation::parseIsoTime("2020-01-02T03:04:05Z");
    const QByteArray whole =
        riff(formatChunk(1, 2, 48000, 16) + chunk("data", encoded(steps(4 * FftSize, 0), asInteger(2))));
    write("x_7100kHz.wav", whole.left(whole.size() - static_cast<int>(FftSize) * 4));
    EXPECT_EQ(run().size(), 3U);
    EXPECT_EQ(m_report.bad, 1U);
    EXPECT_THAT(m_said, ElementsAre(HasSubstr("x_7100kHz.wav is cut off")));
}

// As a recorder leaves it that was killed: no length yet, that of some time before, or one that the field cannot hold.
TEST_F(IqFiles, AWavWhoseHeaderWasNeverFinishedIsReadToItsEnd)
{
    const Samples samples = steps(4 * FftSize, 0);
    for (const int bytes : {2, 3}) {
        const QByteArray start =
            "RIFF" + littleEndian(0, 4) + "WAVE" + formatChunk(1, 2, 48000, 8 * bytes) + auxiChunk(7'100'000) + "data";
        for (const std::uint64_t length : {std::uint64_t{0}, std::uint64_t{0xFFFFFFFF}, std::uint64_t{2 * FftSize}}) {
            write("x.wav", start + littleEndian(length, 4) + encoded(samples, asInteger(bytes)));
            const auto spectra = run();
            ASSERT_EQ(spectra.size(), 4U) << length;
            for (std::size_t i = 0; i < spectra.size(); ++i) {
                expectSpectrumOf(spectra[i].cells, samples, i * FftSize);
            }
            EXPECT_EQ(m_report.bad, 0U);
            EXPECT_THAT(m_said, ElementsAre(HasSubstr("x.wav was never finished")));
        }
    }
}

TEST_F(IqFiles, OtherChunksAndRatesOfAWavDoNotMatter)
{
    const Samples samples = steps(FftSize, 4);
    const QByteArray data = chunk("data", encoded(samples, asInteger(2)));
    const QByteArray sizes = littleEndian(0, 8) + littleEndian(static_cast<std::uint64_t>(data.size()) - 8, 8) +
                             littleEndian(samples.size(), 8) + littleEndian(0, 4);
    write("x_7100kHz.wav", "RF64" + littleEndian(0xFFFFFFFF, 4) + "WAVE" + chunk("ds64", sizes) +
                               chunk("bext", QByteArray(603, 'x')) + formatChunk(1, 2, 48000, 16) + data);
    expectSpectrumOf(run().at(0).cells, samples, 0);
    write("x_7100kHz.wav", riff(formatChunk(1, 2, 2'000'000'000, 16) + data));
    EXPECT_EQ(run().at(0).firstHz, 7.1e6 - 1e9);
    write("x_7100kHz.wav", riff(formatChunk(1, 2, 0, 16) + data));
    EXPECT_THAT(problem(), HasSubstr("the sample rate is not known: give --rate"));
    m_options.rateHz = 48000;
    expectSpectrumOf(run().at(0).cells, samples, 0);
    write("x_7100kHz.wav", riff(formatChunk(1, 2, 48000, 16) + data + data));
    EXPECT_THAT(problem(), HasSubstr("cannot be read as WAV: it has more than one chunk \"data\""));
}

TEST_F(IqFiles, WhatIsNoIqInAWavIsRefused)
{
    const QByteArray data = chunk("data", encoded(steps(FftSize, 0), asInteger(2)));
    const QByteArray format = formatChunk(1, 2, 48000, 16);
    const std::pair<QByteArray, const char*> files[] = {
        {riff(formatChunk(1, 1, 48000, 16) + data),
         "x_7100kHz.wav has 1 channel; samples of IQ are WAV of two, I and Q"},
        {"rubbish", "is no WAV file"},
        {"", "is no WAV file"},
        {riff(""), "cannot be read as WAV: it has no chunk \"fmt \""},
        {riff(format), "cannot be read as WAV: it has no chunk \"data\""},
        {riff(format + chunk("data", "")), "holds no samples"},
        {riff(formatChunk(2, 2, 48000, 4) + data), "x_7100kHz.wav"}};
    for (const auto& [bytes, told] : files) {
        write("x_7100kHz.wav", bytes);
        EXPECT_THAT(problem(), HasSubstr(told)) << bytes.size() << " bytes";
    }
    write("x_7100kHz.wav", riff(format + data));
    m_options.format = "ci16_le";
    EXPECT_THAT(problem(), HasSubstr("x_7100kHz.wav is a WAV file, which tells its own format: leave out --format"));
    write("x.bin", riff(format + data));
    EXPECT_THAT(problem(), HasSubstr("x.bin is a WAV file"));
    m_options.format = "";
    EXPECT_THAT(problem(), HasSubstr("the centre frequency is not known: give --centre"));
}

TEST_F(IqFiles, AnyHeaderEndsInAnAnswer)
{
    const QByteArray whole =
        riff(formatChunk(1, 2, 48000, 16) + auxiChunk(7'100'000) + chunk("data", QByteArray(512, 'x')));
    for (int at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\xff', '\x80', 'a'}) {
            QByteArray changed = whole.left(at % 3 == 0 ? at + 1 : whole.size());
            changed[at] = byte;
            const RecStation::ReadAt readAt = [&changed](std::uint64_t offset, char* buffer, std::size_t size) {
                const std::string bytes = changed.toStdString();
                return offset > bytes.size() ? std::size_t{0} : bytes.copy(buffer, size, offset);
            };
            try {
                static_cast<void>(RecStation::readWavHeader(readAt));
            } catch (const std::runtime_error& error) {
                EXPECT_STRNE(error.what(), "");
            }
        }
    }
}

}  // namespace
}  // namespace IqTesting
