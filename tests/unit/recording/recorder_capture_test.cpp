// How a change becomes a record: time, keyword, header fields, text, channel range flag; and the mode switch.
#include <algorithm>

#include "recorder_fixture.h"
#include "scripted_value.h"

namespace RecorderTests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class RecorderCapture : public RecorderTest {
protected:
    RecorderCapture() { station.addAllKeywords(); }

    template <typename T>
    [[nodiscard]] T& at(const char* path) const
    {
        return station.value<T>(QString::fromLatin1(path));
    }
    [[nodiscard]] Number& level() const { return at<Number>("/LEVEL"); }
    [[nodiscard]] LevelMap& rfSpectrum() const { return at<LevelMap>("/Devices/Rx1/Scn/RfSpectrum"); }
    [[nodiscard]] LevelMap& ifSpectrum() const { return at<LevelMap>("/IfMapping"); }
    [[nodiscard]] BearingMap& dfSpectrum() const { return at<BearingMap>("/DfSpectrum"); }
    [[nodiscard]] Number& startFreq() const { return at<Number>("/Devices/Rx1/Scn/StartFreq"); }
    [[nodiscard]] Number& stopFreq() const { return at<Number>("/Devices/Rx1/Scn/StopFreq"); }
    [[nodiscard]] OffsetNumber& frequency() const { return at<OffsetNumber>("/FREQUENCY"); }
    [[nodiscard]] Selection& mode() const { return at<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS"); }
    [[nodiscard]] Selection& ifSpan() const { return at<Selection>("/IFSPAN"); }
    void setRecDf(bool on) const { at<Flag>("/Status/Rx1/REC_DF").SetValue(on); }

    void prepareSpectra() const
    {
        for (LevelMap* map : {&rfSpectrum(), &ifSpectrum()}) {
            map->SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 16));
        }
        dfSpectrum().SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 4));
    }
};

// --- time

/// Only LEVEL is recorded, so the one initial state takes the time 10.
class RecorderTime : public RecorderTest {
protected:
    RecorderTime()
    {
        station.configure(QString(), QStringLiteral("LEVEL = \"/LEVEL\""));
        station.add<Number>(QStringLiteral("/LEVEL"));
        makeRecorder();
        station.switchOn();
    }
    [[nodiscard]] std::uint64_t timeAfterMs(std::uint64_t ms)
    {
        station.clock.advanceMs(ms);
        station.value<Number>(QStringLiteral("/LEVEL")).SetValue(1);
        return stopAndRead().records.back().time;
    }
};

TEST_F(RecorderTime, TheFirstChangeAfter3MsHasTheTime11)
{
    EXPECT_EQ(timeAfterMs(3), 11U);
}

TEST_F(RecorderTime, AChangeAfter10MsHasTheTime11)
{
    EXPECT_EQ(timeAfterMs(10), 11U);
}

TEST_F(RecorderTime, AChangeAfter12MsKeepsItsTime)
{
    EXPECT_EQ(timeAfterMs(12), 12U);
}

TEST_F(RecorderTime, TimesAreTruncatedToMilliseconds)
{
    station.clock.now += 999;
    EXPECT_EQ(timeAfterMs(20), 20U);
}

TEST_F(RecorderTime, TimesPass32Bits)
{
    EXPECT_EQ(timeAfterMs(5'000'000'000ULL), 5'000'000'000ULL);
}

TEST_F(RecorderTime, AClockThatWentBackGivesTheDistance)
{
    station.clock.now -= 50 * Millisecond;
    EXPECT_EQ(timeAfterMs(0), 50U);
}

TEST_F(RecorderCapture, ChangesOfOneMillisecondFollowEachOther)
{
    makeRecorder();
    start();
    level().SetValue(1);
    level().SetValue(2);
    level().SetValue(3);
    EXPECT_THAT(timesOf(changesIn(stopAndRead())), ElementsAre(1'000, 1'001, 1'002));
}

TEST_F(RecorderCapture, AMapsOwnTimeIsTheTimeOfItsRecordAndOfPlainOnesUntilTheNext)
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

TEST_F(RecorderCapture, ALevelMapsOwnTimeCountsTheSame)
{
    prepareSpectra();
    makeRecorder();
    start();
    rfSpectrum().SetCell(0, -50, Noon + 90 * Second);
    EXPECT_EQ(stopAndRead().header.startMs, Noon / Millisecond + 90'000);
}

TEST_F(RecorderCapture, AMapMovesTheStartTimeAlsoAfterPlainRecords)
{
    prepareSpectra();
    makeRecorder();
    start();
    level().SetValue(1);
    station.clock.advanceMs(1'000);
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    rfSpectrum().SetCell(0, -51, Noon + 35 * Second);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond + 30'000);
    EXPECT_THAT(timesOf(changesIn(recording)), ElementsAre(1'000, 1'001, 5'000));
}

TEST_F(RecorderCapture, AMapMovesTheStartTimeOnlyOncePerFile)
{
    prepareSpectra();
    makeRecorder();
    start();
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    rfSpectrum().SetCell(0, -50, Noon + 31 * Second);
    EXPECT_EQ(stopAndRead().header.startMs, Noon / Millisecond + 30'000);
    start();
    rfSpectrum().SetCell(0, -50, Noon + 40 * Second);
    EXPECT_EQ(stopAndRead().header.startMs, Noon / Millisecond + 40'000) << "the next file has its own";
}

TEST_F(RecorderCapture, AMapWithoutOwnTimeTakesTheClock)
{
    prepareSpectra();
    makeRecorder();
    start();
    rfSpectrum().SetCell(0, -50, 0);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond);
    EXPECT_THAT(timesOf(changesIn(recording)), ElementsAre(1'000));
}

TEST_F(RecorderCapture, OtherMapClassesHaveNoTimeOfTheirOwn)
{
    station.tree.Remove(QStringLiteral("/DfSpectrum"));
    auto& bearings = station.add<FastBearingMap>(QStringLiteral("/DfSpectrum"));
    bearings.SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 4));
    makeRecorder();
    setRecDf(true);
    start();
    bearings.SetCell(0, values::Bearing{90, 0, 0, 0}, Noon + 500 * Second);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond);
    EXPECT_THAT(timesOf(changesIn(recording)), ElementsAre(1'000));
}

TEST_F(RecorderCapture, AMapsTimeIsTakenBeforeItsKeywordIsLookedUp)
{
    LevelMap stranger;
    stranger.SetChannelRange(values::ChannelRange::Even(0, 1, 1));
    stranger.SetCell(0, 1, Noon + 77 * Second);
    makeRecorder();
    start();
    recorder().Update(&stranger, TChangeCode::ValueChanged);
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), Noon + 77 * Second);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond + 77'000);
    EXPECT_EQ(recording.records.size(), recording.types.size()) << "nothing was written for it";
}

TEST_F(RecorderCapture, ASplitKeepsTheOverriddenTime)
{
    prepareSpectra();
    makeRecorder();
    start();
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    Peer::fileSizeLimit(recorder()) = 500;
    level().SetValue(1);
    Peer::fileSizeLimit(recorder()) = 500'000'000;
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), Noon + 30 * Second);
    station.clock.advanceMs(5'000);
    level().SetValue(2);
    EXPECT_EQ(stopAndRead().header.startMs, Noon / Millisecond + 30'000) << "the second file begins at that time";
}

TEST_F(RecorderCapture, ARestartKeepsTheOverriddenTime)
{
    prepareSpectra();
    makeRecorder();
    start();
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    station.switchOn();
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), Noon + 30 * Second);
}

TEST_F(RecorderCapture, OffClearsTheOverriddenTime)
{
    prepareSpectra();
    makeRecorder();
    start();
    rfSpectrum().SetCell(0, -50, Noon + 30 * Second);
    station.switchOff();
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), station.clock.now);
}

TEST_F(RecorderCapture, OffWhileIdleClearsTheOverriddenTimeToo)
{
    makeRecorder();
    CTimeStamp::SetCts(Noon + 30 * Second);
    recorder().Update(&at<Selection>("/Devices/Rx1/REC_STATUS"), TChangeCode::ValueChanged);
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), station.clock.now);
}

// --- which changes, under which type

TEST_F(RecorderCapture, EveryKeywordsChangeIsARecordOfItsType)
{
    makeRecorder();
    start();
    std::vector<std::pair<std::int32_t, std::string>> expected;
    for (const auto& row : Recording2::RecordTypeTable) {
        const QString path = Peer::resolve(recorder(), QString::fromLatin1(row.keyword), QString());
        values::ValueBase* value = station.tree.Find(path);
        if (auto* number = dynamic_cast<Number*>(value)) {
            number->SetValue(number->GetValue() + 1);
        } else if (auto* flag = dynamic_cast<Flag*>(value)) {
            flag->SetValue(!flag->GetValue());
        } else {
            continue;
        }
        expected.emplace_back(row.id, value->GetObjectStateStringForRecording());
    }
    std::vector<std::pair<std::int32_t, std::string>> found;
    for (const auto& record : changesIn(stopAndRead())) {
        found.emplace_back(record.code, record.data);
    }
    EXPECT_EQ(found, expected);
    EXPECT_GT(found.size(), 30U);
}

TEST_F(RecorderCapture, ALimitOrOffsetIsAChangeOfItsValue)
{
    makeRecorder();
    start();
    level().SetLimits(-120, 20);
    frequency().SetOffset(5);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("3;0,-120,20", "4;0,0,0,5"));
}

TEST_F(RecorderCapture, SelectingTheSelectedItemIsARecordToo)
{
    makeRecorder();
    start();
    at<Selection>("/OPERATEMODE").SelectKey(0);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("5;0,0,Normal"));
}

TEST_F(RecorderCapture, AValueSharedByTwoKeywordsIsOneRecordOfTheFirst)
{
    makeRecorder();
    start();
    at<Text>("/DEVICE_CAPTION").SetValue(QStringLiteral("South"));
    const auto changes = changesIn(stopAndRead());
    ASSERT_THAT(changes, SizeIs(1));
    EXPECT_EQ(changes[0].code, 47);
    EXPECT_EQ(changes[0].data, "2;South");
}

TEST_F(RecorderCapture, ASharedValueIsSwitchedOffAsOftenAsOn)
{
    makeRecorder();
    start();
    EXPECT_TRUE(at<Text>("/DEVICE_CAPTION").IsCommandRecording());
    station.switchOff();
    EXPECT_FALSE(at<Text>("/DEVICE_CAPTION").IsCommandRecording());
}

TEST_F(RecorderCapture, AnotherObserverReadsTheSameText)
{
    prepareSpectra();
    makeRecorder();
    std::vector<std::string> read;
    start();
    const Listener listener(rfSpectrum(), [&read](values::ValueBase& value, TChangeCode) {
        read.push_back(value.GetStringForRecording(true));
    });
    rfSpectrum().SetCell(3, -50, 0);
    rfSpectrum().SetCell(4, -60, 0);
    EXPECT_EQ(dataOf(changesIn(stopAndRead())), read);
    EXPECT_THAT(read, SizeIs(2));
}

TEST_F(RecorderCapture, AnEmptyTextIsNoRecord)
{
    station.tree.Remove(QStringLiteral("/LEVEL"));
    auto made = std::make_unique<ScriptedValue>();
    ScriptedValue& scripted = *made;
    station.insert(QStringLiteral("/LEVEL"), std::move(made));
    makeRecorder();
    start();
    scripted.change("", TChangeCode::ValueChanged);
    scripted.change("x", TChangeCode::ValueChanged);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("x"));
}

// --- header fields

TEST_F(RecorderCapture, TheHeadersStartFrequencyIsTheLowest)
{
    startFreq().SetValue(100e6);
    makeRecorder();
    start();
    startFreq().SetValue(80e6);
    startFreq().SetValue(120e6);
    EXPECT_EQ(stopAndRead().header.startFrequency, 80e6F);
}

TEST_F(RecorderCapture, TheHeadersStopFrequencyIsTheHighest)
{
    stopFreq().SetValue(100e6);
    makeRecorder();
    start();
    stopFreq().SetValue(120e6);
    stopFreq().SetValue(80e6);
    EXPECT_EQ(stopAndRead().header.stopFrequency, 120e6F);
}

TEST_F(RecorderCapture, TheNextRecordingBeginsWithTheRangeOfTheTree)
{
    startFreq().SetValue(100e6);
    makeRecorder();
    start();
    startFreq().SetValue(80e6);
    startFreq().SetValue(120e6);
    station.switchOff();
    start();
    EXPECT_EQ(stopAndRead().header.startFrequency, 120e6F);
}

TEST_F(RecorderCapture, FrequencyAndIfSpanGiveTheRangeInIfModes)
{
    mode().SelectKey(23);
    frequency().SetValue(100e6);
    makeRecorder();
    start();
    ifSpan().SelectKey(1);
    EXPECT_EQ(Peer::startFreq(recorder()), 99e6F);
    EXPECT_EQ(Peer::stopFreq(recorder()), 101e6F);
    EXPECT_EQ(startFreq().GetValue(), 0) << "only a start sets the device's scan range";
    frequency().SetValue(200e6);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startFrequency, 199e6F) << "overwritten, not widened";
    EXPECT_EQ(recording.header.stopFrequency, 201e6F);
}

TEST_F(RecorderCapture, TheOffsetMovesTheRange)
{
    mode().SelectKey(23);
    frequency().SetValue(100e6);
    makeRecorder();
    start();
    ifSpan().SelectKey(1);
    frequency().SetOffset(-20e6);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startFrequency, 79e6F);
    EXPECT_EQ(recording.header.stopFrequency, 81e6F);
}

TEST_F(RecorderCapture, OutsideTheIfModesSpanAndFrequencyLeaveTheRange)
{
    startFreq().SetValue(88e6);
    stopFreq().SetValue(108e6);
    frequency().SetValue(100e6);
    makeRecorder();
    start();
    ifSpan().SelectKey(1);
    frequency().SetValue(200e6);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startFrequency, 88e6F);
    EXPECT_EQ(recording.header.stopFrequency, 108e6F);
}

TEST_F(RecorderCapture, ASpanWithoutFrequencyIsPassedOver)
{
    mode().SelectKey(23);
    makeRecorder();
    start();
    ifSpan().SelectKey(2);
    EXPECT_EQ(Peer::ifSpan(recorder()), 0);
}

TEST_F(RecorderCapture, LevelsFollowTheirValuesTruncated)
{
    makeRecorder();
    start();
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

TEST_F(RecorderCapture, ALevelThatNoHeaderCanHoldIsTheNearestItCan)
{
    makeRecorder();
    start();
    at<Number>("/Devices/Rx1/Scn/StartLevel").SetValue(-1e300);
    at<Number>("/Devices/Rx1/Scn/StopLevel").SetValue(1e300);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.minLevel, std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(recording.header.maxLevel, std::numeric_limits<std::int32_t>::max());
}

// --- channel range flag

struct FlagCase {
    const char* keyword;
    std::int32_t id;
    const char* text;
    TChangeCode code;
    bool flagged;
};

std::ostream& operator<<(std::ostream& out, const FlagCase& flag)
{
    return out << flag.keyword << " \"" << flag.text << "\" code " << static_cast<std::int32_t>(flag.code);
}

class RecorderFlags : public RecorderTest, public testing::WithParamInterface<FlagCase> {};

constexpr auto Pending = TChangeCode::CommandsPending;
INSTANTIATE_TEST_SUITE_P(
    Changes, RecorderFlags,
    testing::Values(FlagCase{"RFSPECTRUM", 1, "a34;b", Pending, true},
                    FlagCase{"RFSPECTRUM", 1, "a134;b", Pending, true}, FlagCase{"RFSPECTRUM", 1, "34", Pending, false},
                    FlagCase{"RFSPECTRUM", 1, "35;", Pending, false},
                    FlagCase{"RFSPECTRUM", 1, "a34;b", TChangeCode::ValueChanged, false},
                    FlagCase{"RFSPECTRUM", 1, "a34;b", TChangeCode::SelectedAgain, false},
                    FlagCase{"IFSPECTRUM", 2, "a34;b", Pending, true}, FlagCase{"IFSPAN", 32, "a34;b", Pending, true},
                    FlagCase{"DFSPECTRUMSAMPLE", 48, "134;", Pending, true},
                    FlagCase{"DFSPECTRUM", 20, "a34;b", Pending, false}, FlagCase{"LEVEL", 36, "a34;b", Pending, false},
                    FlagCase{"FREQUENCY", 46, "a34;b", Pending, false},
                    FlagCase{"SPECIAL", 0, "a34;b", Pending, false}));

TEST_P(RecorderFlags, TellWhichChangesAreChannelRangeDefinitions)
{
    station.configure(QString(), QStringLiteral("%1 = \"/Value\"").arg(QString::fromLatin1(GetParam().keyword)));
    // The IF spectrum is taken into a recording only in the modes that have one.
    auto made = std::make_unique<ScriptedValue>();
    ScriptedValue& value = *made;
    station.insert(QStringLiteral("/Value"), std::move(made));
    Peer::modeKey(makeRecorder()) = GetParam().id == 2 ? 23 : 0;
    start();
    value.change(GetParam().text, GetParam().code);
    const ParsedRecording recording = stopAndRead();
    ASSERT_THAT(recording.records, SizeIs(2));
    EXPECT_EQ(recording.records[1].code, GetParam().id);
    if (GetParam().flagged) {
        EXPECT_THAT(recording.rangeDefs, ElementsAre(recording.records[1].time));
    } else {
        EXPECT_THAT(recording.rangeDefs, IsEmpty());
        EXPECT_EQ(recording.header.channelRangeTable, 0);
    }
}

TEST_F(RecorderCapture, ANewChannelRangeOfASpectrumIsAChannelRangeDefinition)
{
    prepareSpectra();
    makeRecorder();
    start();
    rfSpectrum().SetCell(0, -50, 0);  // the first text behind the start carries the range once more
    rfSpectrum().SetCell(1, -50, 0);
    rfSpectrum().SetChannelRange(values::ChannelRange::List({1e6, 2e6}));
    const ParsedRecording recording = stopAndRead();
    const auto spectra = recordsOf(recording, 1);
    ASSERT_THAT(spectra, SizeIs(4));
    EXPECT_THAT(recording.rangeDefs, ElementsAre(spectra[0].time, spectra[1].time, spectra[3].time));
}

// --- mode switch

TEST_F(RecorderCapture, AnIfModeRecordsTheIfSpectrumInPlaceOfTheRfSpectrum)
{
    prepareSpectra();
    makeRecorder();
    start();
    rfSpectrum().SetCell(0, -50, 0);
    mode().SelectKey(23);
    EXPECT_FALSE(rfSpectrum().IsObservedBy(&recorder()));
    EXPECT_FALSE(rfSpectrum().IsCommandRecording());
    EXPECT_TRUE(ifSpectrum().IsObservedBy(&recorder()));
    EXPECT_TRUE(ifSpectrum().IsCommandRecording());
    rfSpectrum().SetCell(0, -51, 0);
    ifSpectrum().SetCell(0, -52, 0);
    mode().SelectKey(5);
    ifSpectrum().SetCell(0, -53, 0);
    rfSpectrum().SetCell(0, -54, 0);
    std::vector<std::int32_t> codes;
    for (const auto& record : changesIn(stopAndRead())) {
        codes.push_back(record.code);
    }
    EXPECT_THAT(codes, ElementsAre(1, 3, 2, 3, 1));
}

TEST_F(RecorderCapture, AModeThatKeepsItsSpectrumSwitchesNothing)
{
    makeRecorder();
    start();
    mode().SelectKey(27);
    EXPECT_TRUE(rfSpectrum().IsObservedBy(&recorder()));
    EXPECT_FALSE(ifSpectrum().IsObservedBy(&recorder()));
}

TEST_F(RecorderCapture, TheModeSwitchDoesNotAskWhetherTheTypeIsRecorded)
{
    makeRecorder();
    setRecDf(true);
    start();
    EXPECT_FALSE(ifSpectrum().IsObservedBy(&recorder()));
    mode().SelectKey(23);
    EXPECT_FALSE(Peer::shouldRecord(recorder(), 2));
    EXPECT_TRUE(ifSpectrum().IsObservedBy(&recorder()));
}

TEST_F(RecorderCapture, TheInactiveKeywordOutlivesARecording)
{
    makeRecorder();
    start();
    mode().SelectKey(23);
    station.switchOff();
    EXPECT_TRUE(hasInactiveKeyword("RFSPECTRUM"));
    start();
    EXPECT_TRUE(hasInactiveKeyword("RFSPECTRUM"));
    EXPECT_FALSE(rfSpectrum().IsObservedBy(&recorder()));
    mode().SelectKey(5);
    EXPECT_TRUE(hasKeyword("RFSPECTRUM"));
    EXPECT_TRUE(hasInactiveKeyword("IFSPECTRUM"));
    EXPECT_TRUE(rfSpectrum().IsObservedBy(&recorder()));
}

TEST_F(RecorderCapture, AModeSwitchWorksWithoutTheSpectrumValues)
{
    station.tree.Remove(QStringLiteral("/IfMapping"));
    station.tree.Remove(QStringLiteral("/Devices/Rx1/Scn/RfSpectrum"));
    makeRecorder();
    start();
    mode().SelectKey(23);
    mode().SelectKey(5);
    EXPECT_TRUE(hasKeyword("RFSPECTRUM"));
    EXPECT_TRUE(hasInactiveKeyword("IFSPECTRUM"));
    EXPECT_THAT(changesIn(stopAndRead()), SizeIs(2));
}

TEST_F(RecorderCapture, ASpectrumThatIsNotConfiguredIsNotTaken)
{
    station.configure(QString(), QStringLiteral("RFSPECTRUM = \"Scn/RfSpectrum\"\nDRVCOMMANDS = \"Gen/DRVCOMMANDS\""));
    makeRecorder();
    start();
    mode().SelectKey(23);
    EXPECT_FALSE(hasKeyword("RFSPECTRUM"));
    EXPECT_FALSE(hasKeyword("IFSPECTRUM"));
    mode().SelectKey(5);
    EXPECT_TRUE(hasKeyword("RFSPECTRUM"));
    EXPECT_TRUE(rfSpectrum().IsObservedBy(&recorder()));
}

TEST_F(RecorderCapture, ADroppedSpectrumIsNotAnInitialStateOfTheNextFile)
{
    mode().SelectKey(24);  // both spectra are recorded as far as the types go; the mode switch drops one
    makeRecorder();
    start();
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(recordsOf(recording, 1), IsEmpty());
    EXPECT_THAT(recordsOf(recording, 2), SizeIs(1));
}

// --- removal

TEST_F(RecorderCapture, AValueRemovedWhileRecordingIsForgotten)
{
    makeRecorder();
    start();
    level().SetValue(1);
    station.tree.Remove(QStringLiteral("/LEVEL"));
    EXPECT_EQ(Peer::keywords(recorder()).Find(QStringLiteral("LEVEL"))->observed, nullptr);
    EXPECT_TRUE(hasKeyword("LEVEL"));
    station.add<Number>(QStringLiteral("/LEVEL")).SetValue(2);
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(dataOf(changesIn(recording)), ElementsAre("3;1,0,0")) << "the removal is no record";
    start();
    level().SetValue(3);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("3;3,0,0")) << "the next start finds the new value";
}

TEST_F(RecorderCapture, ARemovalForgetsTheValueInEveryEntry)
{
    makeRecorder();
    start();
    for (const char* keyword : {"DEVICE_CAPTION", "DFSPECTRUMSAMPLE"}) {
        EXPECT_NE(Peer::keywords(recorder()).Find(QString::fromLatin1(keyword))->observed, nullptr);
    }
    station.tree.Remove(QStringLiteral("/DEVICE_CAPTION"));
    for (const char* keyword : {"DEVICE_CAPTION", "DFSPECTRUMSAMPLE"}) {
        EXPECT_EQ(Peer::keywords(recorder()).Find(QString::fromLatin1(keyword))->observed, nullptr) << keyword;
    }
    EXPECT_THAT(changesIn(stopAndRead()), IsEmpty());
}

TEST_F(RecorderCapture, ADeletedItemIsNoRecordAndKeepsTheSelectionWatched)
{
    makeRecorder();
    start();
    auto& operation = at<Selection>("/OPERATEMODE");
    operation.DeleteItem(QStringLiteral("Normal"));
    operation.SelectKey(1);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("5;1,0,Gate"));
}

TEST_F(RecorderCapture, EveryValueMayGoWhileRecording)
{
    makeRecorder();
    start();
    for (const QString& path : station.tree.Paths()) {
        if (!path.contains(QStringLiteral("/REC_"))) {
            station.tree.Remove(path);
        }
    }
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(changesIn(recording), IsEmpty());
    EXPECT_EQ(recording.header.deviceName, "UNKNOWN");
}

TEST_F(RecorderCapture, ASpectrumRemovedWhileItIsDroppedIsNotTaken)
{
    makeRecorder();
    start();
    mode().SelectKey(23);
    station.tree.Remove(QStringLiteral("/Devices/Rx1/Scn/RfSpectrum"));
    mode().SelectKey(5);
    EXPECT_TRUE(hasKeyword("RFSPECTRUM"));
    EXPECT_EQ(Peer::keywords(recorder()).Find(QStringLiteral("RFSPECTRUM"))->observed, nullptr);
}

// --- others

TEST_F(RecorderCapture, ANotificationOfAStrangerIsIgnored)
{
    Number stranger;
    makeRecorder();
    start();
    recorder().Update(&stranger, TChangeCode::ValueChanged);
    recorder().Update(&stranger, TChangeCode::Removed);
    EXPECT_THAT(changesIn(stopAndRead()), IsEmpty());
    EXPECT_NO_THROW(recorder().Update(&stranger, TChangeCode::ValueChanged));
}

TEST_F(RecorderCapture, TheRecordersOwnStatusValuesCanBeRecorded)
{
    station.configure(QString(), QStringLiteral("HEADERTEXT = \"/Status/Rx1/REC_HEADER\""));
    makeRecorder();
    start();
    at<Text>("/Status/Rx1/REC_HEADER").SetValue(QStringLiteral("noted"));
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("2;noted"));
}

}  // namespace
}  // namespace RecorderTests
