// The header of a finished recording: what values told of its range, its times, its texts.
#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

class RecorderHeader : public FullStationTest {};

TEST_F(RecorderHeader, FrequenciesThatBecomeKnownWhileRecordingAreTheHeaders)
{
    constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
    startFreq().SetValue(Unknown);
    stopFreq().SetValue(Unknown);
    startRecorder();
    startFreq().SetValue(100e6);
    stopFreq().SetValue(120e6);
    startFreq().SetValue(Unknown);
    EXPECT_EQ(Peer::startFreq(recorder()), 100e6F);
    EXPECT_EQ(stopAndRead().header.stopFrequency, 120e6F);
    start();
    EXPECT_EQ(stopAndRead().header.startFrequency, 0) << "it was not told again";
}

TEST_F(RecorderHeader, NumbersThatNoReaderTakesAreNoFrequencies)
{
    constexpr double Infinite = std::numeric_limits<double>::infinity();
    constexpr double TooLarge = 1e39;  // for the 32 bits of a header
    startFreq().SetValue(100e6);
    stopFreq().SetValue(120e6);
    startRecorder();
    startFreq().SetValue(-Infinite);
    stopFreq().SetValue(TooLarge);
    const auto header = stopAndRead().header;
    EXPECT_EQ(header.startFrequency, 100e6F);
    EXPECT_EQ(header.stopFrequency, 120e6F);
    mode().SelectKey(23);
    ifSpan().SelectKey(1);
    for (const auto& [value, offset] : {std::pair(Infinite, 0.0), std::pair(100e6, TooLarge), std::pair(3e38, 3e38)}) {
        start();
        frequency().SetValue(value);
        frequency().SetOffset(offset);
        const auto computed = stopAndRead().header;
        EXPECT_TRUE(std::isfinite(computed.startFrequency) && std::isfinite(computed.stopFrequency)) << value;
    }
}

TEST_F(RecorderHeader, TheHeadersRangeIsTheWidestAndTheNextRecordingBeginsWithThatOfTheTree)
{
    startFreq().SetValue(100e6);
    stopFreq().SetValue(100e6);
    startRecorder();
    for (const double lower : {80e6, 120e6}) {
        startFreq().SetValue(lower);
        stopFreq().SetValue(200e6 - lower);
    }
    const auto header = stopAndRead().header;
    EXPECT_EQ(header.startFrequency, 80e6F);
    EXPECT_EQ(header.stopFrequency, 120e6F);
    start();
    EXPECT_EQ(stopAndRead().header.startFrequency, 120e6F);
}

TEST_F(RecorderHeader, FrequencyOffsetAndIfSpanGiveTheRangeInIfModes)
{
    mode().SelectKey(23);
    frequency().SetValue(100e6);
    startRecorder();
    ifSpan().SelectKey(1);
    EXPECT_EQ(Peer::startFreq(recorder()), 99e6F);
    EXPECT_EQ(Peer::stopFreq(recorder()), 101e6F);
    EXPECT_EQ(startFreq().GetValue(), 0) << "only a start sets the device's scan range";
    frequency().SetOffset(-20e6);
    EXPECT_EQ(Peer::startFreq(recorder()), 79e6F);
    EXPECT_EQ(Peer::stopFreq(recorder()), 81e6F);
    frequency().SetValue(200e6);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startFrequency, 179e6F) << "overwritten, not widened";
    EXPECT_EQ(recording.header.stopFrequency, 181e6F);
}

TEST_F(RecorderHeader, OutsideTheIfModesSpanAndFrequencyLeaveTheRange)
{
    startFreq().SetValue(88e6);
    stopFreq().SetValue(108e6);
    frequency().SetValue(100e6);
    startRecorder();
    ifSpan().SelectKey(1);
    frequency().SetValue(200e6);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startFrequency, 88e6F);
    EXPECT_EQ(recording.header.stopFrequency, 108e6F);
}

TEST_F(RecorderHeader, ASpanWithoutFrequencyIsPassedOver)
{
    mode().SelectKey(23);
    startRecorder();
    ifSpan().SelectKey(2);
    EXPECT_EQ(Peer::ifSpan(recorder()), 0);
}

TEST_F(RecorderHeader, LevelsFollowTheirValuesTruncated)
{
    startRecorder();
    at<Number>("/Devices/Rx1/Scn/StartLevel").SetValue(-12.9);
    at<Number>("/Devices/Rx1/Scn/StopLevel").SetValue(77.9);
    ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.minLevel, -12);
    EXPECT_EQ(recording.header.maxLevel, 77);
    start();
    at<Number>("/Devices/Rx1/Mon/RFYLIMIT").SetLimits(-99.9, 99.9);
    recording = stopAndRead();
    EXPECT_EQ(recording.header.minLevel, -99);
    EXPECT_EQ(recording.header.maxLevel, 99);
}

TEST_F(RecorderHeader, ALevelThatNoHeaderCanHoldIsTheNearestItCan)
{
    startRecorder();
    at<Number>("/Devices/Rx1/Scn/StartLevel").SetValue(-1e300);
    at<Number>("/Devices/Rx1/Scn/StopLevel").SetValue(1e300);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.minLevel, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(recording.header.maxLevel, std::numeric_limits<std::int32_t>::max());
}

TEST_F(RecorderHeader, TheHeaderIsThatOfTheRecorderAtStop)
{
    station.add<Text>("/KDXServer/Dcd/DcdAttr/DcdID").SetValue("Job 7");
    startFreq().SetValue(88e6);
    stopFreq().SetValue(108e6);
    at<Number>("/Devices/Rx1/Scn/StartLevel").SetValue(-20);
    at<Number>("/Devices/Rx1/Scn/StopLevel").SetValue(90);
    startRecorder();
    at<Text>("/Devices/Rx1/Adm/DRIVERNAME").SetValue("Exchanged");
    station.clock.advanceMs(500);
    level().SetValue(1);
    station.clock.advanceMs(10'000);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.majorVersion, 2);
    EXPECT_EQ(recording.header.minorVersion, 0);
    EXPECT_EQ(recording.header.startFrequency, 88e6F);
    EXPECT_EQ(recording.header.stopFrequency, 108e6F);
    EXPECT_EQ(recording.header.stepWidth, 100'000.0F);
    EXPECT_EQ(recording.header.minLevel, -20);
    EXPECT_EQ(recording.header.maxLevel, 90);
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond);
    EXPECT_EQ(recording.header.stopMs, Noon / Millisecond + 1'500) << "the time of the last record";
    EXPECT_EQ(recording.header.jobId, "Job 7");
    EXPECT_EQ(recording.header.deviceName, "Exchanged");
    EXPECT_EQ(recording.header.deviceType, "Monitoring receiver");
    EXPECT_FALSE(recording.header.automatic);
}

TEST_F(RecorderHeader, ARecordingWithoutChangesStopsWhenItStarted)
{
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, recording.header.stopMs);
}

TEST_F(RecorderHeader, HeaderTimesHaveAll64Bits)
{
    station.clock.now = 4'102'444'800'123'456ULL;  // 2100-01-01, far past 32 bits of milliseconds
    startRecorder();
    EXPECT_EQ(stopAndRead().header.startMs, 4'102'444'800'123ULL);
}

TEST_F(RecorderHeader, AJobThatIsNoTextIsNotAvailable)
{
    station.add<Number>("/KDXServer/Dcd/DcdAttr/DcdID").SetValue(7);
    startRecorder();
    EXPECT_EQ(stopAndRead().header.jobId, "Not available");
}

TEST_F(RecorderHeader, HeaderTextsAreLatin1)
{
    station.add<Text>("/KDXServer/Dcd/DcdAttr/DcdID").SetValue("Prüfung");
    station.value<Text>("/Devices/Rx1/Adm/DRIVERNAME").SetValue("Empfänger");
    station.value<Text>("/Devices/Rx1/Adm/DEVICE_TYPE").SetValue("Größe €");
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.jobId,
              "Pr\xFC"
              "fung");
    EXPECT_EQ(recording.header.deviceName, "Empf\xE4nger");
    EXPECT_EQ(recording.header.deviceType,
              "Gr\xF6\xDF"
              "e ?");
}

/// Where the header record ends in a file.
std::size_t headerLength(const ParsedRecording& recording)
{
    return recording.header.bytes().size();
}

TEST_F(RecorderHeader, HeaderTextsThatAreTooLongAreCutToTheHeaderArea)
{
    auto& job = station.add<Text>("/KDXServer/Dcd/DcdAttr/DcdID");
    auto& type = station.value<Text>("/Devices/Rx1/Adm/DEVICE_TYPE");
    job.SetValue(QString(1'000, 'j'));
    type.SetValue(QString(1'000, 't'));
    startRecorder();
    level().SetValue(1);
    ParsedRecording recording = stopAndRead();
    EXPECT_LE(headerLength(recording), 500U);
    EXPECT_EQ(recording.header.typeTable, 500);
    EXPECT_EQ(recording.header.deviceName, "RX 1") << "texts that fit are not cut";
    EXPECT_GT(recording.header.jobId.size(), 50U);
    EXPECT_EQ(recording.header.jobId, std::string(recording.header.jobId.size(), 'j'));
    EXPECT_EQ(recording.header.deviceType, std::string(recording.header.deviceType.size(), 't'));
    EXPECT_EQ(recordsOf(recording, 36).back().data, "3;1,0,0");
    station.value<Text>("/Devices/Rx1/Adm/DRIVERNAME").SetValue(QString(100, 'n'));
    job.SetValue(QString(2'000, 'j'));
    type.SetValue(QString(2'000, 't'));
    start();
    recording = stopAndRead();
    EXPECT_LE(headerLength(recording), 500U);
    EXPECT_GE(recording.header.deviceName.size(), 90U);
}

TEST_F(RecorderHeader, AHeaderTextEndsAtANul)
{
    QString name = "RX";
    name.append(QChar(QChar::Null)).append("1");
    station.value<Text>("/Devices/Rx1/Adm/DEVICE_TYPE").SetValue(name);
    startRecorder();
    EXPECT_EQ(stopAndRead().header.deviceType, "RX");
}

}  // namespace
}  // namespace RecorderTests
