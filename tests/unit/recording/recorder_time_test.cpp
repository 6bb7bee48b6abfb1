// The times of records: the clock, the distance from the start, and maps that bring a time of their own.
#include "recorder_fixture.h"
#include "scripted_value.h"

namespace RecorderTests {
namespace {

using testing::ElementsAre;

/// Only LEVEL is recorded, so the one initial state takes the time 10.
class RecorderTime : public RecorderTest {
protected:
    RecorderTime()
    {
        station.configure(QString(), "LEVEL = \"/LEVEL\"");
        station.add<Number>("/LEVEL");
        makeRecorder();
        station.switchOn();
    }
};

TEST_F(RecorderTime, IsTheDistanceFromTheStartInWholeMillisecondsBut11AtLeast)
{
    const std::vector<std::pair<long long, std::uint64_t>> rows = {
        {3'000, 11}, {10'000, 11}, {12'000, 12}, {-50'000, 50}, {5'000'000'000'000, 5'000'000'000}, {20'999, 20}};
    for (const auto& [microseconds, expected] : rows) {
        station.switchOn();
        station.clock.now += static_cast<unsigned long long>(microseconds);
        auto& level = station.value<Number>("/LEVEL");
        level.SetValue(level.GetValue() + 1);
        EXPECT_EQ(stopAndRead().records.back().time, expected) << microseconds;
    }
}

class RecorderTimeWithoutStates : public RecorderTest {};

TEST_F(RecorderTimeWithoutStates, IsElevenAtLeastToo)
{
    station.configure(QString(), "LEVEL = \"/LEVEL\"");
    auto& value = station.add<ScriptedValue>("/LEVEL");
    value.state.clear();  // of which no record is made
    makeRecorder();
    station.switchOn();
    station.clock.advanceMs(3);
    value.change("x", TChangeCode::ValueChanged);
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(timesOf(recording.records), ElementsAre(11));
}

class RecorderMapTime : public FullStationTest {};

TEST_F(RecorderMapTime, ChangesOfOneMillisecondFollowEachOther)
{
    startRecorder();
    level().SetValue(1);
    level().SetValue(2);
    level().SetValue(3);
    EXPECT_THAT(timesOf(changesIn(stopAndRead())), ElementsAre(1'000, 1'001, 1'002));
}

TEST_F(RecorderMapTime, AMapsOwnTimeIsTheTimeOfItsRecordAndOfPlainOnesUntilTheNext)
{
    prepareSpectra();
    makeRecorder();
    setRecDf(true);
    start();
    const values::Bearing bearing{90, 0, -10, 50};
    dfSpectrum().SetCell(0, bearing, Noon + 60 * Second);
    station.clock.advanceMs(7'000);
    level().SetValue(1);
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), Noon + 60 * Second);
    dfSpectrum().SetCell(1, bearing, Noon + 62 * Second);
    level().SetValue(2);
    const ParsedRecording recording = stopAndRead();
    // The map's time is the start time: so its record follows the initial states at once.
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond + 60'000);
    EXPECT_EQ(recording.header.stopMs, Noon / Millisecond + 62'000);
    const auto changes = std::vector(recording.records.end() - 4, recording.records.end());
    const std::uint64_t first = 10 + recording.types.size();
    EXPECT_THAT(timesOf(changes), ElementsAre(first, first + 1, 2'000, 2'001));
    EXPECT_EQ(changes[0].code, 20);
    EXPECT_EQ(changes[1].code, 36);
}

TEST_F(RecorderMapTime, AMapMovesTheStartTimeAlsoAfterPlainRecords)
{
    prepareSpectra();
    startRecorder();
    level().SetValue(1);
    station.clock.advanceMs(1'000);
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    rfSpectrum().SetCell(0, -51, Noon + 35 * Second);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond + 30'000);
    EXPECT_THAT(timesOf(changesIn(recording)), ElementsAre(1'000, 1'001, 5'000));
}

TEST_F(RecorderMapTime, ALevelMapsOwnTimeCountsTheSameAndMovesTheStartTimeOnlyOncePerFile)
{
    prepareSpectra();
    startRecorder();
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    rfSpectrum().SetCell(0, -50, Noon + 31 * Second);
    EXPECT_EQ(stopAndRead().header.startMs, Noon / Millisecond + 30'000);
    start();
    rfSpectrum().SetCell(0, -50, Noon + 40 * Second);
    EXPECT_EQ(stopAndRead().header.startMs, Noon / Millisecond + 40'000) << "the next file has its own";
}

TEST_F(RecorderMapTime, AMapWithoutOwnTimeTakesTheClock)
{
    prepareSpectra();
    startRecorder();
    rfSpectrum().SetCell(0, -50, 0);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond);
    EXPECT_THAT(timesOf(changesIn(recording)), ElementsAre(1'000));
}

TEST_F(RecorderMapTime, OtherMapClassesHaveNoTimeOfTheirOwn)
{
    station.tree.Remove("/DfSpectrum");
    auto& bearings = station.add<FastBearingMap>("/DfSpectrum");
    bearings.SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 4));
    makeRecorder();
    setRecDf(true);
    start();
    bearings.SetCell(0, values::Bearing{90, 0, 0, 0}, Noon + 500 * Second);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond);
    EXPECT_THAT(timesOf(changesIn(recording)), ElementsAre(1'000));
}

TEST_F(RecorderMapTime, AMapsTimeIsTakenBeforeItsKeywordIsLookedUp)
{
    LevelMap stranger;
    stranger.SetChannelRange(values::ChannelRange::Even(0, 1, 1));
    stranger.SetCell(0, 1, Noon + 77 * Second);
    startRecorder();
    recorder().Update(&stranger, TChangeCode::ValueChanged);
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), Noon + 77 * Second);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond + 77'000);
    EXPECT_EQ(recording.records.size(), recording.types.size()) << "nothing was written for it";
}

TEST_F(RecorderMapTime, ASplitKeepsTheOverriddenTime)
{
    prepareSpectra();
    startRecorder();
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    Peer::fileSizeLimit(recorder()) = 500;
    level().SetValue(1);
    Peer::fileSizeLimit(recorder()) = 500'000'000;
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), Noon + 30 * Second);
    station.clock.advanceMs(5'000);
    level().SetValue(2);
    EXPECT_EQ(stopAndRead().header.startMs, Noon / Millisecond + 30'000) << "the second file begins at that time";
}

TEST_F(RecorderMapTime, ARestartKeepsTheOverriddenTimeAndOffClearsItAlsoWhileIdle)
{
    prepareSpectra();
    startRecorder();
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    station.switchOn();
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), Noon + 30 * Second);
    station.switchOff();
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), station.clock.now);
    CTimeStamp::SetCts(Noon + 30 * Second);
    recorder().Update(&at<Selection>("/Devices/Rx1/REC_STATUS"), TChangeCode::ValueChanged);
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), station.clock.now);
}

}  // namespace
}  // namespace RecorderTests
