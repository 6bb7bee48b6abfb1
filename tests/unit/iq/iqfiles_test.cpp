// Files of IQ as they come: raw samples named by their recorder, SigMF of several captures.
#include "input/timetext.h"
#include "iqfiles_fixture.h"
#include "sources/iq/knownsamples.h"

namespace IqTesting {
namespace {

using namespace testing;

TEST_F(IqFiles, EveryFormatGivesTheSameSpectraForTheSameSamples)
{
    const Samples samples = steps(4 * FftSize, 0);
    const auto wav = [&](int kind, int bits, const std::function<QByteArray(double)>& number) {
        return riff(formatChunk(kind, 2, 48000, bits) + chunk("data", encoded(samples, number)));
    };
    const std::pair<const char*, QByteArray> files[] = {
        {"x.ci8", encoded(samples, asInteger(1))},  {"x.cs8", encoded(samples, asInteger(1))},
        {"x.cs16", encoded(samples, asInteger(2))}, {"x.cf32", encoded(samples, asFloat)},
        {"8.wav", wav(1, 8, asInteger(1, 128))},    {"16.wav", wav(1, 16, asInteger(2))},
        {"24.wav", wav(1, 24, asInteger(3))},       {"32.wav", wav(1, 32, asInteger(4))},
        {"float.wav", wav(3, 32, asFloat)}};
    m_options.rateHz = 48000;
    m_options.centreHz = 7.1e6;
    m_options.startTime = RecStation::parseIsoTime("2020-01-02T03:04:05Z");
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
    const Samples samples = steps(FftSize, 1);
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

TEST(RecorderName, ItsFormsAreUnderstood)
{
    const auto check = [](const char* name, std::optional<double> centreHz, std::optional<double> rateHz, bool time,
                          Qt::TimeSpec zone = Qt::UTC) {
        const QDateTime moment(QDate(2020, 1, 2), QTime(3, 4, 5), zone);
        const auto expected = static_cast<unsigned long long>(moment.toMSecsSinceEpoch()) * 1000;
        const auto known = RecStation::knownByName(QString::fromLatin1(name));
        EXPECT_EQ(known.captures.front().centreHz, centreHz) << name;
        EXPECT_EQ(known.rateHz, rateHz) << name;
        EXPECT_EQ(known.captures.front().startTime, time ? std::optional(expected) : std::nullopt) << name;
        EXPECT_EQ(known.localTime, zone == Qt::LocalTime) << name;
    };
    check("HDSDR_20200102_030405Z_7100kHz_RF", 7.1e6, {}, true);
    check("SDRuno_20200102_030405Z_7100kHz", 7.1e6, {}, true);
    check("night_20200102_030405_100.5MHz_IQ", 100.5e6, {}, true);
    check("x_20200102_030405Z_1296000000Hz_IQ", 1296e6, {}, true);
    check("gqrx_20200102_030405_7100000_1800000_fc", 7.1e6, 1.8e6, true);
    check("g001_433.92M_250k", 433.92e6, 250e3, false);
    check("20200102T030405Z_7100000_Site_iq", 7.1e6, {}, true);
    check("baseband_7100000Hz_03-04-05_02-01-2020", 7.1e6, {}, true, Qt::LocalTime);
    check("RTL-SDR-20200102_030405-433_92MHz-1MSps-1MHz", 433.92e6, 1e6, true, Qt::LocalTime);
    check("HackRF-20200102_030405-868MHz-2_5MSps", 868e6, 2.5e6, true, Qt::LocalTime);
    check("20200102_030405", {}, {}, true);
    check("x_20201302_030405Z", {}, {}, false);
    check("baseband_03-04-05_32-01-2020", {}, {}, false);
    check("x_20200102_250405Z", {}, {}, false);
    check("holiday", {}, {}, false);
    check("", {}, {}, false);
}

TEST_F(IqFiles, ATimeThatIsReadAsLocalIsTold)
{
    m_options.format = "ci16";
    m_options.rateHz = 48000;
    write("baseband_7100000Hz_03-04-05_02-01-2020.raw", encoded(steps(FftSize, 1), asInteger(2)));
    EXPECT_EQ(run().at(0).frequencyHz, 7.1e6);
    EXPECT_THAT(m_said,
                ElementsAre(HasSubstr("the time in the name is read as this computer's local time: it is 2020-")));
    m_options.startTime = RecStation::parseIsoTime("2020-01-02T03:04:05Z");
    EXPECT_EQ(run().at(0).time, NewYear);
    EXPECT_THAT(m_said, IsEmpty());
}

TEST_F(IqFiles, CapturesHaveTheirOwnFrequenciesAndTimes)
{
    const Samples samples = steps(6 * FftSize, 3);
    const QByteArray bytes = encoded(samples, asInteger(1));
    const int capture = static_cast<int>(2 * FftSize) * 2;
    write("x.sigmf-data", QByteArray(10, 'h') + bytes.left(capture) + bytes.mid(capture, capture) + QByteArray(7, 'h') +
                              bytes.mid(2 * capture) + "trailing");
    describe(R"({"global": {"core:datatype": "ci8",
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
    m_options.startTime = RecStation::parseIsoTime("2020-01-02T03:04:05Z");
    EXPECT_THAT(problem(), HasSubstr("--start would not be true of each of the 3 captures"));
}

TEST_F(IqFiles, CapturesThatDoNotFitAreTold)
{
    write("x.sigmf-data", encoded(steps(3 * FftSize, 3), asInteger(1)));
    const QByteArray global = R"({"global": {"core:datatype": "ci8", "core:sample_rate": 64000}, "captures": )";
    describe(global + R"([{"core:sample_start": 64, "core:frequency": 1e6,
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
    describe(global + R"([{"core:sample_start": 64}, {"core:sample_start": 0}]})");
    EXPECT_THAT(problem(), HasSubstr("lies before that of the one before it"));
    describe(global + R"([{"core:sample_start": -1}]})");
    EXPECT_THAT(problem(), HasSubstr("\"core:sample_start\" must be a whole number, 0 or more"));
}

TEST_F(IqFiles, AFormatThatIsGivenSaysWhereCapturesLie)
{
    const Samples samples = steps(4 * FftSize, 3);
    write("x.sigmf-data", encoded(samples, asInteger(2)));
    m_options.format = "ci16";
    for (const char* datatype : {R"("core:datatype": "ri16_le",)", R"("core:datatype": "cf32_le",)", ""}) {
        describe(QByteArray(R"({"global": {)") + datatype + R"("core:sample_rate": 64000}, "captures": [
            {"core:frequency": 1e6}, {"core:sample_start": 128, "core:frequency": 2e6}]})");
        const auto spectra = run();
        ASSERT_EQ(spectra.size(), 4U) << datatype;
        expectSpectrumOf(spectra[2].cells, samples, 2 * FftSize);
        EXPECT_EQ(spectra[2].frequencyHz, 2e6);
    }
}

TEST_F(IqFiles, TheFirstCaptureThatTellsItsTimeTellsThatOfThoseBeforeIt)
{
    write("x.sigmf-data", encoded(steps(3 * FftSize, 3), asInteger(2)));
    describe(
        R"({"global": {"core:datatype": "ci16_le", "core:sample_rate": 64000}, "captures": [
        {"core:sample_start": 0, "core:frequency": 1e6}, {"core:sample_start": 64, "core:frequency": 2e6},
        {"core:sample_start": 128, "core:frequency": 3e6, "core:datetime": "2020-01-02T03:04:05Z"}]})");
    const auto spectra = run();
    ASSERT_EQ(spectra.size(), 3U);
    EXPECT_EQ(spectra[0].time, NewYear - 2000);
    EXPECT_EQ(spectra[1].time, NewYear - 1000);
    EXPECT_EQ(spectra[2].time, NewYear);
    EXPECT_THAT(m_said, IsEmpty());
}

TEST_F(IqFiles, MetadataMayNameTheirSamples)
{
    const Samples samples = steps(2 * FftSize, 3);
    write("night.bin", QByteArray(100, 'h') + encoded(samples, asInteger(2)) + "end");
    const QByteArray start = R"({"global": {"core:datatype": "ci16_le", "core:sample_rate": 64000, )";
    const QByteArray captures = R"(}, "captures": [{"core:frequency": 1e6, "core:header_bytes": 100}]})";
    m_options.file =
        describe(start + R"("core:dataset": "night.bin", "core:trailing_bytes": 3)" + captures).toStdString();
    m_options.startTime = RecStation::parseIsoTime("2020-01-02T03:04:05Z");
    const auto spectra = run();
    ASSERT_EQ(spectra.size(), 2U);
    expectSpectrumOf(spectra[1].cells, samples, FftSize);
    EXPECT_THAT(m_said, IsEmpty());
    describe(start + R"("core:dataset": "day.bin")" + captures);
    EXPECT_THAT(problem(), HasSubstr("/day.bin"));
    describe(start + R"("core:metadata_only": true)" + captures);
    EXPECT_THAT(problem(), HasSubstr("it says \"core:metadata_only\", so there are no samples"));
}

TEST_F(IqFiles, MetadataBesideAWavTellItsCaptures)
{
    const Samples samples = steps(4 * FftSize, 3);
    write("x.wav", riff(formatChunk(1, 2, 48000, 24) + chunk("data", encoded(samples, asInteger(3)))));
    describe(
        R"({"global": {"core:datatype": "ri24_le", "core:sample_rate": 64000, "core:dataset": "x.wav"}, "captures": [
        {"core:header_bytes": 44, "core:frequency": 1e6, "core:datetime": "2020-01-02T03:04:05Z"},
        {"core:sample_start": 128, "core:frequency": 2e6}]})");
    const auto spectra = run();
    ASSERT_EQ(spectra.size(), 4U);
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        expectSpectrumOf(spectra[i].cells, samples, i * FftSize);
        EXPECT_EQ(spectra[i].time, NewYear + i * 1000);
        EXPECT_EQ(spectra[i].frequencyHz, i < 2 ? 1e6 : 2e6);
    }
}

TEST_F(IqFiles, WhatMetadataDoNotTellOfASingleCaptureIsReadFromTheName)
{
    write("HDSDR_20200102_030405Z_7100kHz_RF.sigmf-data", encoded(steps(FftSize, 3), asInteger(1)));
    TestSupport::writeBytes(m_directory.filePath("HDSDR_20200102_030405Z_7100kHz_RF.sigmf-meta"),
                            R"({"global": {"core:datatype": "ci8", "core:sample_rate": 64000}, "captures": [{}]})");
    EXPECT_EQ(run().at(0).time, NewYear);
    EXPECT_EQ(run().at(0).frequencyHz, 7.1e6);
}

TEST_F(IqFiles, ACaptureWithoutAFrequencyBesideOthersWithOneIsNamed)
{
    write("x.sigmf-data", encoded(steps(4 * FftSize, 3), asInteger(1)));
    describe(
        R"({"global": {"core:datatype": "ci8", "core:sample_rate": 64000}, "captures": [
        {"core:frequency": 1e6}, {"core:sample_start": 64}]})");
    EXPECT_THAT(problem(), HasSubstr("capture 2 tells no centre frequency, and others do: add core:frequency in"));
    m_options.centreHz = 1e6;
    EXPECT_THAT(problem(), HasSubstr("capture 2 tells no centre frequency"));
}

TEST_F(IqFiles, WhatIsPackedOrSoundIsNotReadAsSamples)
{
    m_options.format = "ci16";
    m_options.rateHz = 48000;
    m_options.centreHz = 7.1e6;
    const QByteArray rest(1000, '\0');
    const std::tuple<const char*, QByteArray, const char*> files[] = {
        {"x.gz", "\x1F\x8B\x08" + rest, "x.gz is packed by gzip: unpack it first"},
        {"x.cs16", "\x28\xB5\x2F\xFD" + rest, "is packed by Zstandard"},
        {"x.cs16", "riff\x2E\x91\xCF\x11" + rest, "is Wave64: make a file of WAV or RF64 of it first"},
        {"x.sigmf", rest, "is a SigMF archive: unpack it with tar"}};
    for (const auto& [name, bytes, told] : files) {
        write(name, bytes);
        EXPECT_THAT(problem(), HasSubstr(told));
    }
    EXPECT_EQ(RecStation::whyNoSamples("RIFF\1\1\1\1WAVE"), "is WAV, which can only be read from a file: name that");
    for (const char* samples : {"", "RIFF", "RIFF\1\1\1\1WAVY", "PK"}) {
        EXPECT_EQ(RecStation::whyNoSamples(samples), "") << samples;
    }
}

}  // namespace
}  // namespace IqTesting
