// What a new file begins with: the type table and the state of everything that is recorded.
#include "recorder_fixture.h"
#include "scripted_value.h"

namespace RecorderTests {
namespace {

using namespace testing;
using TestSupport::TypeFields;

class RecorderStart : public RecorderTest {
protected:
    /// A device in an IF mode whose scan range follows the span when a recording starts.
    void addDeviceInIfMode()
    {
        station.addAllKeywords();
        at<OffsetNumber>("/FREQUENCY").SetValue(100e6);
        at<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS").SelectKey(23);
        at<Selection>("/IFSPAN").SelectKey(1);
    }
};

/// Counts the walks through the values.
class AttachCounter final : public CRecording {
public:
    using CRecording::CRecording;
    void AttachRecordedValues() override
    {
        ++attached;
        CRecording::AttachRecordedValues();
    }
    int attached = 0;
};

TEST_F(RecorderStart, WhatWasToBeWrittenOfAStartThatWasStoppedIsNotOfTheNextRecording)
{
    addDeviceInIfMode();
    makeRecorder();
    {
        const Listener device(at<Number>("/Devices/Rx1/Scn/StartFreq"), [this](values::ValueBase&, TChangeCode) {
            at<Number>("/Devices/Rx1/Mon/Attenuation").SetValue(20);
            station.switchOff();
        });
        station.switchOn();
    }
    station.tree.Remove("/Devices/Rx1/Mon/Attenuation");
    station.clock.advanceMs(5'000);
    start();
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.records.size(), recording.types.size());
    EXPECT_EQ(recording.header.stopMs, recording.header.startMs);
}

TEST_F(RecorderStart, TheScanRangeThatFollowsTheIfSpanIsTheRecordersOwnChange)
{
    addDeviceInIfMode();
    station.configure(QString(),
                      "ALTITUDE = \"Scn/StartFreq\"\nDRVCOMMANDS = \"Gen/DRVCOMMANDS\"\n"
                      "FREQUENCY = \"/FREQUENCY\"\nIFSPAN = \"/IFSPAN\"\nSTARTFREQ = \"Scn/StartFreq\"");
    startRecorder();
    EXPECT_THAT(recordsOf(stopAndRead(), 42), SizeIs(1)) << "its initial state";
}

TEST_F(RecorderStart, TheTypeTableStandsAtOffset500InTheOrderOfTheKeywords)
{
    station.addAllKeywords();
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.typeTable, 500);
    ASSERT_THAT(recording.types, SizeIs(44)) << "all but two header texts and two spectra";
    EXPECT_TRUE(std::is_sorted(recording.types.begin(), recording.types.end(),
                               [](const auto& a, const auto& b) { return a.keyword < b.keyword; }));
    for (const char* missing : {"DEVICENAME", "DEVICETYPE", "IFSPECTRUM", "DFSPECTRUM"}) {
        EXPECT_THAT(recording.types, Not(Contains(Field(&TypeFields::keyword, missing))));
    }
}

TEST_F(RecorderStart, TypesNameNumberKindKeywordAndPath)
{
    station.addAllKeywords();
    startRecorder();
    EXPECT_THAT(stopAndRead().types,
                IsSupersetOf({TypeFields{1, 6, "RFSPECTRUM", "/Devices/Rx1/Scn/RfSpectrum"},
                              TypeFields{17, 1, "SQUELCHSTATE", "/Devices/Rx1/Mon/SquelchState"},
                              TypeFields{9, 2, "ANTENNA", "/Devices/Rx1/Mon/Antenna"},
                              TypeFields{36, 3, "LEVEL", "/LEVEL"}, TypeFields{46, 4, "FREQUENCY", "/FREQUENCY"},
                              TypeFields{3, 5, "DRVCOMMANDS", "/Devices/Rx1/Gen/DRVCOMMANDS"},
                              TypeFields{47, 2, "DEVICE_CAPTION", "/DEVICE_CAPTION"},
                              TypeFields{48, 2, "DFSPECTRUMSAMPLE", "/DEVICE_CAPTION"}}));
}

TEST_F(RecorderStart, TypeTableStringsAreLatin1)
{
    station.configure(QString(), "LEVEL = \"/Süd/Pegel\"");
    station.add<Number>("/Süd/Pegel");
    startRecorder();
    EXPECT_EQ(stopAndRead().types.at(0).valuePath,
              "/S\xFC"
              "d/Pegel");
}

TEST_F(RecorderStart, ValuesMissingFromTheTreeHaveNoType)
{
    station.add<Number>("/LEVEL");
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    ASSERT_THAT(recording.types, SizeIs(1));
    EXPECT_EQ(recording.types[0].keyword, "LEVEL");
}

TEST_F(RecorderStart, AKeywordWithoutTypeIdIsRecordedUnder0AndHasNoType)
{
    station.configure(QString(), "SPECIAL = \"/Special\"");
    auto& special = station.add<Number>("/Special");
    startRecorder();
    special.SetValue(5);
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(recording.types, IsEmpty());
    EXPECT_THAT(dataOf(recordsOf(recording, 0)), ElementsAre("3;0,0,0", "3;5,0,0"));
}

TEST_F(RecorderStart, ANewTypeTableIsWrittenForEveryFileAndItsSpectrum)
{
    station.addAllKeywords();
    makeRecorder();
    at<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS").SelectKey(23);
    start();
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(recordsOf(recording, 2), SizeIs(1));
    EXPECT_THAT(recordsOf(recording, 1), IsEmpty());
    EXPECT_THAT(recording.types, Contains(Field(&TypeFields::typeNumber, 2)).Times(1));
    EXPECT_THAT(recording.types, Not(Contains(Field(&TypeFields::typeNumber, 1))));
}

TEST_F(RecorderStart, InitialStatesLandOnTheMillisecondsFrom10On)
{
    station.addAllKeywords();
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    ASSERT_EQ(recording.records.size(), recording.types.size());
    for (std::size_t i = 0; i < recording.records.size(); ++i) {
        EXPECT_EQ(recording.records[i].time, 10 + i);
        EXPECT_EQ(recording.records[i].code, recording.types[i].typeNumber);
    }
}

TEST_F(RecorderStart, InitialStatesAreTheCompleteStates)
{
    station.addAllKeywords();
    auto& spectrum = at<LevelMap>("/Devices/Rx1/Scn/RfSpectrum");
    spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 3));
    const std::vector<float> cells{-10, -20, -30};
    spectrum.SetCells(0, cells, Noon);
    at<Selection>("/OPERATEMODE").SelectKey(1);
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(dataOf(recordsOf(recording, 1)), ElementsAre(spectrum.GetObjectStateStringForRecording()));
    EXPECT_THAT(dataOf(recordsOf(recording, 40)), ElementsAre("5;1,0,Gate"));
    EXPECT_THAT(dataOf(recordsOf(recording, 47)), ElementsAre("2;North Site"));
    EXPECT_THAT(dataOf(recordsOf(recording, 48)), ElementsAre("2;North Site"));
}

TEST_F(RecorderStart, OnlyInitialStatesOfMapsAreChannelRangeDefinitions)
{
    station.addAllKeywords();
    makeRecorder();
    at<Flag>("/Status/Rx1/REC_DF").SetValue(true);
    start();
    const ParsedRecording recording = stopAndRead();
    // The DF spectrum was chosen; the RF spectrum's keyword stays, but it is not recorded.
    ASSERT_THAT(recordsOf(recording, 20), SizeIs(1));
    EXPECT_THAT(recording.rangeDefs, ElementsAre(recordsOf(recording, 20)[0].time));
}

TEST_F(RecorderStart, AnEmptyStateIsNotWritten)
{
    station.configure(QString(), "ALTITUDE = \"/Empty\"\nLEVEL = \"/LEVEL\"");
    station.add<ScriptedValue>("/Empty").state.clear();
    station.add<Number>("/LEVEL");
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    ASSERT_THAT(recording.records, SizeIs(1));
    EXPECT_EQ(recording.records[0].code, 36);
    EXPECT_EQ(recording.records[0].time, 10U);
}

TEST_F(RecorderStart, DataCompressionIsOffForInitialStatesAndBackAfterwards)
{
    station.configure(QString(), "LEVEL = \"/Probe\"");
    bool compressed = true;
    station.add<ScriptedValue>("/Probe").onState = [&compressed] {
        compressed = values::HandlerBase::GetDataCompressMode();
    };
    makeRecorder();
    station.switchOn();
    EXPECT_FALSE(compressed);
    EXPECT_TRUE(values::HandlerBase::GetDataCompressMode());
    values::HandlerBase::SetDataCompressMode(false);
    station.switchOn();
    EXPECT_FALSE(values::HandlerBase::GetDataCompressMode());
}

TEST_F(RecorderStart, AChangeDuringTheStartIsRecordedBehindTheInitialStates)
{
    addDeviceInIfMode();
    makeRecorder();
    // The device answers its new scan range with another attenuation.
    const Listener device(at<Number>("/Devices/Rx1/Scn/StartFreq"), [this](values::ValueBase&, TChangeCode) {
        at<Number>("/Devices/Rx1/Mon/Attenuation").SetValue(20);
    });
    start();
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.typeTable, 500);
    ASSERT_EQ(recording.records.size(), recording.types.size() + 1);
    for (std::size_t i = 0; i < recording.types.size(); ++i) {
        EXPECT_EQ(recording.records[i].code, recording.types[i].typeNumber) << "initial states come first";
    }
    EXPECT_EQ(recording.records.back().code, 8);
    EXPECT_EQ(recording.records.back().data, "3;20,0,0");
    EXPECT_EQ(recording.records.back().time, 10 + recording.types.size());
}

TEST_F(RecorderStart, TheScanRangeThatAStartSetsIsAnInitialStateOnly)
{
    addDeviceInIfMode();
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(dataOf(recordsOf(recording, 11)), ElementsAre("3;9.9e+07,0,0"));
    EXPECT_THAT(dataOf(recordsOf(recording, 12)), ElementsAre("3;1.01e+08,0,0"));
    EXPECT_EQ(recording.header.startFrequency, 99e6F);
    EXPECT_EQ(recording.header.stopFrequency, 101e6F);
}

TEST_F(RecorderStart, AModeSwitchDuringTheStartComesBehindTheInitialStates)
{
    addDeviceInIfMode();
    makeRecorder();
    const Listener device(at<Number>("/Devices/Rx1/Scn/StartFreq"), [this](values::ValueBase&, TChangeCode) {
        at<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS").SelectKey(5);
    });
    start();
    const ParsedRecording recording = stopAndRead();
    ASSERT_EQ(recording.records.size(), recording.types.size() + 1);
    EXPECT_EQ(recording.records.back().code, 3);
    EXPECT_TRUE(hasInactiveKeyword("IFSPECTRUM"));
    EXPECT_TRUE(hasKeyword("RFSPECTRUM"));
}

TEST_F(RecorderStart, AStopDuringTheStartLeavesNothingObserved)
{
    addDeviceInIfMode();
    makeRecorder();
    const Listener device(at<Number>("/Devices/Rx1/Scn/StartFreq"),
                          [this](values::ValueBase&, TChangeCode) { station.switchOff(); });
    station.switchOn();
    EXPECT_FALSE(Peer::isRecording(recorder()));
    for (const char* path : {"/LEVEL", "/IfMapping"}) {
        EXPECT_FALSE(station.tree.Find(path)->IsObservedBy(&recorder())) << path;
    }
    at<Number>("/LEVEL").SetValue(1);
    ASSERT_THAT(station.files(), SizeIs(1));
    EXPECT_THAT(readBack(station.file(station.files().first())).records, IsEmpty());
}

TEST_F(RecorderStart, ARestartDuringTheStartLeavesTwoSoundFiles)
{
    addDeviceInIfMode();
    makeRecorder();
    const Listener device(at<Number>("/Devices/Rx1/Scn/StartFreq"),
                          [this](values::ValueBase&, TChangeCode) { station.switchOn(); });
    start();
    at<Number>("/LEVEL").SetValue(1);
    const ParsedRecording recording = stopAndRead();
    ASSERT_EQ(recording.records.size(), recording.types.size() + 1) << "one start sequence per file";
    EXPECT_EQ(recording.records.back().data, "3;1,0,0");
    EXPECT_THAT(station.files(), SizeIs(2));
    for (const QString& name : station.files()) {
        readBack(station.file(name));
    }
}

TEST_F(RecorderStart, AChangeDoesNotWalkThroughTheValues)
{
    station.addAllKeywords();
    AttachCounter counting("Rx");
    counting.Init();
    start();
    at<Number>("/LEVEL").SetValue(1);
    at<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS").SelectKey(23);
    at<OffsetNumber>("/FREQUENCY").SetValue(1e6);
    EXPECT_EQ(counting.attached, 1);
}

TEST_F(RecorderStart, RecordsNothingOfWhatChangedWhileIdle)
{
    station.addAllKeywords();
    makeRecorder();
    at<Number>("/LEVEL").SetValue(1);
    start();
    station.switchOff();
    at<Number>("/LEVEL").SetValue(2);
    start();
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(dataOf(recordsOf(recording, 36)), ElementsAre("3;2,0,0"));
}

}  // namespace
}  // namespace RecorderTests
