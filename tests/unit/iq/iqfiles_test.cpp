// Files of IQ as they come: WAV and RF64, raw samples named by their recorder, SigMF of several captures.
#include <bit>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <values/maps.h>
#include <values/tree.h>
#include <values/value.h>

#include "iqtesting.h"
#include "sources/iq/iqsource.h"
#include "sources/iq/recordername.h"
#include "sources/iq/wavheader.h"

namespace {

using RecStation::IqOptions;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using FileLevels = values::FastValueMap<float, values::levelHandler>;

constexpr std::size_t FftSize = 64;
unsigned long long microseconds(std::size_t samples, double rateHz)
{
    return static_cast<unsigned long long>(std::llround(static_cast<double>(samples) / rateHz * 1e6));
}

constexpr unsigned long long NewYear = 1'577'934'245'000'000;  // 2020-01-02 03:04:05 UTC

QByteArray littleEndian(std::uint64_t number, int bytes)
{
    QByteArray out;
    for (int i = 0; i < bytes; ++i) {
        out.append(static_cast<char>(number >> (8 * i) & 0xFFU));
    }
    return out;
}

QByteArray chunk(const char* tag, const QByteArray& bytes)
{
    return tag + littleEndian(static_cast<std::uint64_t>(bytes.size()), 4) + bytes +
           QByteArray(bytes.size() % 2 == 0 ? 0 : 1, '\0');
}

QByteArray formatChunk(int kind, int channels, int rate, int bits)
{
    return chunk("fmt ", littleEndian(static_cast<std::uint64_t>(kind), 2) +
                             littleEndian(static_cast<std::uint64_t>(channels), 2) +
                             littleEndian(static_cast<std::uint64_t>(rate), 4) +
                             littleEndian(static_cast<std::uint64_t>(rate * channels * bits / 8), 4) +
                             littleEndian(static_cast<std::uint64_t>(channels * bits / 8), 2) +
                             littleEndian(static_cast<std::uint64_t>(bits), 2));
}

// 2020-01-02 03:04:05.250, a Thursday.
QByteArray auxiChunk(std::uint32_t centreHz)
{
    QByteArray bytes;
    for (int times = 0; times < 2; ++times) {
        for (const unsigned field : {2020U, 1U, 4U, 2U, 3U, 4U, 5U, 250U}) {
            bytes += littleEndian(field, 2);
        }
    }
    return chunk("auxi", bytes + littleEndian(centreHz, 4) + QByteArray(32, '\0'));
}

QByteArray riff(const QByteArray& chunks)
{
    return chunk("RIFF", "WAVE" + chunks);
}

// Samples that every format holds exactly but cu8, which has no 0.
IqTesting::Samples steps(std::size_t count, int seed)
{
    IqTesting::Samples samples(count);
    for (std::size_t n = 0; n < count; ++n) {
        const auto step = static_cast<int>(n) * (7 + seed) + static_cast<int>(n * n) % 61;
        samples[n] = {(step % 200 - 100) / 128.0, (step % 173 - 86) / 128.0};
    }
    return samples;
}

QByteArray encoded(const IqTesting::Samples& samples, const std::function<QByteArray(double)>& number)
{
    QByteArray out;
    for (const auto& sample : samples) {
        out += number(sample.real()) + number(sample.imag());
    }
    return out;
}

std::function<QByteArray(double)> asInteger(int bytes, int offset = 0)
{
    return [bytes, offset](double number) {
        const double scaled = number * static_cast<double>(std::uint64_t{1} << (8 * bytes - 1)) + offset;
        return littleEndian(static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled)), bytes);
    };
}

class IqFiles : public testing::Test {
protected:
    struct Spectrum {
        unsigned long long time;
        double firstHz;
        double frequencyHz;
        std::vector<float> cells;
    };

    IqFiles()
    {
        m_options.fftSize = FftSize;
        m_options.average = 1;
    }
    QString write(const char* name, const QByteArray& bytes)
    {
        const QString path = m_directory.filePath(QString::fromUtf8(name));
        IqTesting::writeFile(path, bytes);
        m_options.file = path.toStdString();
        return path;
    }
    std::vector<Spectrum> run()
    {
        m_said.clear();
        const values::Tree tree;
        const auto source = RecStation::makeIqSource(
            m_options, [this](const QString& sentence) { m_said.push_back(sentence.toStdString()); });
        source->prepare();
        m_lastTime = source->lastTime();
        std::vector<Spectrum> out;
        while (const auto time = source->nextTime()) {
            source->step();
            const auto& map =
                dynamic_cast<const FileLevels&>(*tree.Find(QStringLiteral("/Devices/Rx1/Scn/RfSpectrum")));
            const auto& frequency =
                dynamic_cast<const values::ValueNumericWithOffset<double>&>(*tree.Find(QStringLiteral("/FREQUENCY")));
            const auto cells = map.GetCells();
            out.push_back({*time, map.GetChannelRange().startHz, frequency.GetValue(), {cells.begin(), cells.end()}});
        }
        m_report = source->report();
        return out;
    }
    std::string problem()
    {
        try {
            run();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no problem";
    }

    QTemporaryDir m_directory;
    IqOptions m_options;
    std::vector<std::string> m_said;
    std::optional<unsigned long long> m_lastTime;
    RecStation::SourceReport m_report;
};

void expectSpectrumOf(const std::vector<float>& cells, const IqTesting::Samples& samples, std::size_t first)
{
    const auto expected =
        IqTesting::spectrumByDefinition(samples, first, FftSize, FftSize, 1, IqTesting::flatTopTerms());
    ASSERT_EQ(cells.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(static_cast<double>(cells[i]), expected[i], 1e-3) << first << " channel " << i;
    }
}

TEST_F(IqFiles, EveryFormatGivesTheSameSpectraForTheSameSamples)
{
    const IqTesting::Samples samples = steps(4 * FftSize, 0);
    const std::function<QByteArray(double)> real = [](double number) {
        const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(number));
        return littleEndian(bits, 4);
    };
    const auto wav = [&](int kind, int bits, const std::function<QByteArray(double)>& number) {
        return riff(formatChunk(kind, 2, 48000, bits) + chunk("data", encoded(samples, number)));
    };
    const std::pair<const char*, QByteArray> files[] = {{"x.ci8", encoded(samples, asInteger(1))},
                                                        {"x.cs8", encoded(samples, asInteger(1))},
                                                        {"x.cs16", encoded(samples, asInteger(2))},
                                                        {"x.cf32", encoded(samples, real)},
                                                        {"8.wav", wav(1, 8, asInteger(1, 128))},
                                                        {"16.wav", wav(1, 16, asInteger(2))},
                                                        {"24.wav", wav(1, 24, asInteger(3))},
                                                        {"32.wav", wav(1, 32, asInteger(4))},
                                                        {"float.wav", wav(3, 32, real)}};
    m_options.rateHz = 48000;
    m_options.centreHz = 7.1e6;
    m_options.start = "2020-01-02T03:04:05Z";
    for (const auto& [name, bytes] : files) {
        write(name, bytes);
        const auto spectra = run();
        ASSERT_EQ(spectra.size(), 4U) << name;
        for (std::size_t i = 0; i < spectra.size(); ++i) {
            expectSpectrumOf(spectra[i].cells, samples, i * FftSize);
            EXPECT_EQ(spectra[i].time, NewYear + microseconds(i * FftSize, 48000)) << name;
        }
        EXPECT_EQ(m_lastTime, NewYear + microseconds(4 * FftSize, 48000)) << name;
        EXPECT_THAT(m_said, IsEmpty()) << name;
    }
}

TEST_F(IqFiles, RawNamesAreReadWithAFormat)
{
    const IqTesting::Samples samples = steps(FftSize, 1);
    m_options.rateHz = 48000;
    m_options.centreHz = 7.1e6;
    for (const char* name : {"x.iq", "x.raw", "x.bin"}) {
        write(name, encoded(samples, asInteger(2)));
        m_options.format = "";
        EXPECT_THAT(problem(), HasSubstr("give --format"));
        m_options.format = "ci16_le";
        expectSpectrumOf(run().at(0).cells, samples, 0);
    }
}

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

TEST_F(IqFiles, Rf64TellsItsLengthInALongerField)
{
    const IqTesting::Samples samples = steps(3 * FftSize, 2);
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

TEST_F(IqFiles, AWavIsReadAsFarAsItGoes)
{
    const QByteArray whole =
        riff(formatChunk(1, 2, 48000, 16) + chunk("data", encoded(steps(4 * FftSize, 0), asInteger(2))));
    write("x_7100kHz.wav", whole.left(whole.size() - static_cast<int>(FftSize) * 4));
    EXPECT_EQ(run().size(), 3U);
    EXPECT_EQ(m_report.bad, 1U);
    EXPECT_THAT(m_said, ElementsAre(HasSubstr("x_7100kHz.wav is cut off")));
    QByteArray unfinished = whole;
    const int sizeAt = unfinished.indexOf("data") + 4;
    unfinished.replace(sizeAt, 4, QByteArray(4, '\0'));
    write("x_7100kHz.wav", unfinished);
    EXPECT_EQ(run().size(), 4U);
    EXPECT_EQ(m_report.bad, 0U);
    EXPECT_THAT(m_said, ElementsAre(HasSubstr("was never finished")));
}

TEST_F(IqFiles, WhatIsNoIqInAWavIsRefused)
{
    const QByteArray data = chunk("data", encoded(steps(FftSize, 0), asInteger(2)));
    write("x_7100kHz.wav", riff(formatChunk(1, 1, 48000, 16) + data));
    EXPECT_THAT(problem(), HasSubstr("x_7100kHz.wav has 1 channel; samples of IQ are WAV of two, I and Q"));
    write("x_7100kHz.wav", riff(formatChunk(1, 2, 48000, 16) + data));
    m_options.format = "ci16_le";
    EXPECT_THAT(problem(), HasSubstr("x_7100kHz.wav is a WAV file, which tells its own format: leave out --format"));
    write("x.bin", riff(formatChunk(1, 2, 48000, 16) + data));
    EXPECT_THAT(problem(), HasSubstr("x.bin is a WAV file"));
    m_options.format = "";
    EXPECT_THAT(problem(), HasSubstr("the centre frequency is not known: give --centre"));
    write("x_7100kHz.wav", "rubbish");
    EXPECT_THAT(problem(), HasSubstr("is no WAV file"));
    write("x_7100kHz.wav", "");
    EXPECT_THAT(problem(), HasSubstr("is no WAV file"));
    write("x_7100kHz.wav", riff(""));
    EXPECT_THAT(problem(), HasSubstr("cannot be read as WAV: it has no chunk \"fmt \""));
    write("x_7100kHz.wav", riff(formatChunk(1, 2, 48000, 16)));
    EXPECT_THAT(problem(), HasSubstr("cannot be read as WAV: it has no chunk \"data\""));
    write("x_7100kHz.wav", riff(formatChunk(1, 2, 48000, 16) + chunk("data", "")));
    EXPECT_THAT(problem(), HasSubstr("holds no samples"));
    write("x_7100kHz.wav", riff(formatChunk(2, 2, 48000, 4) + data));
    EXPECT_THAT(problem(), HasSubstr("x_7100kHz.wav"));
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

TEST(RecorderName, ItsFormsAreUnderstood)
{
    const auto check = [](const char* name, std::optional<double> centreHz, std::optional<double> rateHz, bool time) {
        const auto known = RecStation::knownByName(QString::fromLatin1(name));
        EXPECT_EQ(known.captures.front().centreHz, centreHz) << name;
        EXPECT_EQ(known.rateHz, rateHz) << name;
        EXPECT_EQ(known.captures.front().startTime, time ? std::optional(NewYear) : std::nullopt) << name;
    };
    check("HDSDR_20200102_030405Z_7100kHz_RF", 7.1e6, {}, true);
    check("SDRuno_20200102_030405Z_7100kHz", 7.1e6, {}, true);
    check("night_20200102_030405_100.5MHz_IQ", 100.5e6, {}, true);
    check("x_20200102_030405Z_1296000000Hz_IQ", 1296e6, {}, true);
    check("gqrx_20200102_030405_7100000_1800000_fc", 7.1e6, 1.8e6, true);
    check("g001_433.92M_250k", 433.92e6, 250e3, false);
    check("20200102_030405", {}, {}, true);
    check("x_20201302_030405Z", {}, {}, false);
    check("x_20200102_250405Z", {}, {}, false);
    check("holiday", {}, {}, false);
    check("", {}, {}, false);
}

TEST_F(IqFiles, CapturesHaveTheirOwnFrequenciesAndTimes)
{
    const IqTesting::Samples samples = steps(6 * FftSize, 3);
    const QByteArray bytes = encoded(samples, asInteger(1));
    const int capture = static_cast<int>(2 * FftSize) * 2;
    write("x.sigmf-data", QByteArray(10, 'h') + bytes.left(capture) + bytes.mid(capture, capture) + QByteArray(7, 'h') +
                              bytes.mid(2 * capture) + "trailing");
    IqTesting::writeFile(m_directory.filePath(QStringLiteral("x.sigmf-meta")), R"({"global": {"core:datatype": "ci8",
        "core:sample_rate": 64000, "core:offset": 1000, "core:trailing_bytes": 8}, "captures": [
        {"core:sample_start": 1000, "core:header_bytes": 10, "core:frequency": 1e6, "core:datetime": "2020-01-02T03:04:05Z"},
        {"core:sample_start": 1128, "core:frequency": 2e6, "core:datetime": "2020-01-02T03:05:05Z"},
        {"core:sample_start": 1256, "core:header_bytes": 7, "core:frequency": 2e6}]})");
    const auto spectra = run();
    ASSERT_EQ(spectra.size(), 6U);
    const std::vector<unsigned long long> after = {0, 1000, 60'000'000, 60'001'000, 60'002'000, 60'003'000};
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        expectSpectrumOf(spectra[i].cells, samples, i * FftSize);
        EXPECT_EQ(spectra[i].time, NewYear + after[i]) << i;
        EXPECT_EQ(spectra[i].frequencyHz, i < 2 ? 1e6 : 2e6) << i;
        EXPECT_EQ(spectra[i].firstHz, (i < 2 ? 1e6 : 2e6) - 32000) << i;
    }
    EXPECT_EQ(m_lastTime, NewYear + 60'004'000);
    EXPECT_THAT(m_said, IsEmpty());
    EXPECT_EQ(m_report.bad, 0U);
    m_options.centreHz = 1e6;
    EXPECT_THAT(problem(), HasSubstr("--centre would not be true of each of the 3 captures"));
    m_options.centreHz.reset();
    m_options.start = "2020-01-02T03:04:05Z";
    EXPECT_THAT(problem(), HasSubstr("--start would not be true of each of the 3 captures"));
}

TEST_F(IqFiles, CapturesThatDoNotFitAreTold)
{
    write("x.sigmf-data", encoded(steps(3 * FftSize, 3), asInteger(1)));
    const QString metadata = m_directory.filePath(QStringLiteral("x.sigmf-meta"));
    const QByteArray global = R"({"global": {"core:datatype": "ci8", "core:sample_rate": 64000}, "captures": )";
    IqTesting::writeFile(metadata, global + R"([{"core:sample_start": 64, "core:frequency": 1e6,
        "core:datetime": "2020-01-02T03:04:05Z"}, {"core:sample_start": 128, "core:frequency": 2e6,
        "core:datetime": "2020-01-02T03:04:04Z"}, {"core:sample_start": 192, "core:frequency": 3e6}]})");
    const auto spectra = run();
    ASSERT_EQ(spectra.size(), 2U);
    EXPECT_EQ(spectra[1].time, NewYear);
    EXPECT_EQ(spectra[1].frequencyHz, 2e6);
    EXPECT_THAT(m_said, ElementsAre(HasSubstr("first 64 samples belong to no capture"),
                                    HasSubstr("capture 3 does not lie whole in the file"),
                                    HasSubstr("capture 2: it begins 1 s before the end of what comes before it")));
    EXPECT_EQ(m_report.bad, 1U);
    IqTesting::writeFile(metadata, global + R"([{"core:sample_start": 64}, {"core:sample_start": 0}]})");
    EXPECT_THAT(problem(), HasSubstr("lies before that of the one before it"));
    IqTesting::writeFile(metadata, global + R"([{"core:sample_start": -1}]})");
    EXPECT_THAT(problem(), HasSubstr("\"core:sample_start\" must be a whole number, 0 or more"));
}

}  // namespace
