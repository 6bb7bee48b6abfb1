// The mode switch: which of two spectra is recorded, and what several recorders do to one.
#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

using namespace testing;

class RecorderModeSwitch : public FullStationTest {};

TEST_F(RecorderModeSwitch, AnIfModeRecordsTheIfSpectrumInPlaceOfTheRfSpectrum)
{
    prepareSpectra();
    startRecorder();
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

TEST_F(RecorderModeSwitch, AModeThatKeepsItsSpectrumSwitchesNothing)
{
    startRecorder();
    mode().SelectKey(27);
    EXPECT_TRUE(rfSpectrum().IsObservedBy(&recorder()));
    EXPECT_FALSE(ifSpectrum().IsObservedBy(&recorder()));
}

TEST_F(RecorderModeSwitch, TheModeSwitchDoesNotAskWhetherTheTypeIsRecorded)
{
    makeRecorder();
    setRecDf(true);
    start();
    EXPECT_FALSE(ifSpectrum().IsObservedBy(&recorder()));
    mode().SelectKey(23);
    EXPECT_FALSE(Peer::shouldRecord(recorder(), 2));
    EXPECT_TRUE(ifSpectrum().IsObservedBy(&recorder()));
}

TEST_F(RecorderModeSwitch, TheInactiveKeywordOutlivesARecording)
{
    startRecorder();
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

TEST_F(RecorderModeSwitch, AModeSwitchWorksWithoutTheSpectrumValues)
{
    station.tree.Remove("/IfMapping");
    station.tree.Remove("/Devices/Rx1/Scn/RfSpectrum");
    startRecorder();
    mode().SelectKey(23);
    mode().SelectKey(5);
    EXPECT_TRUE(hasKeyword("RFSPECTRUM"));
    EXPECT_TRUE(hasInactiveKeyword("IFSPECTRUM"));
    EXPECT_THAT(changesIn(stopAndRead()), SizeIs(2));
}

TEST_F(RecorderModeSwitch, ASpectrumThatIsNotConfiguredIsNotTaken)
{
    station.configure(QString(), "RFSPECTRUM = \"Scn/RfSpectrum\"\nDRVCOMMANDS = \"Gen/DRVCOMMANDS\"");
    startRecorder();
    mode().SelectKey(23);
    EXPECT_FALSE(hasKeyword("RFSPECTRUM"));
    EXPECT_FALSE(hasKeyword("IFSPECTRUM"));
    mode().SelectKey(5);
    EXPECT_TRUE(hasKeyword("RFSPECTRUM"));
    EXPECT_TRUE(rfSpectrum().IsObservedBy(&recorder()));
}

TEST_F(RecorderModeSwitch, ADroppedSpectrumIsNotAnInitialStateOfTheNextFile)
{
    mode().SelectKey(24);  // both spectra are recorded as far as the types go; the mode switch drops one
    startRecorder();
    const ParsedRecording recording = stopAndRead();
    EXPECT_THAT(recordsOf(recording, 1), IsEmpty());
    EXPECT_THAT(recordsOf(recording, 2), SizeIs(1));
    EXPECT_THAT(recording.types, Not(Contains(Field(&TestSupport::TypeFields::typeNumber, 1))));
    mode().SelectKey(5);
    start();
    EXPECT_THAT(recordsOf(stopAndRead(), 1), SizeIs(1)) << "and is taken back at a start";
}

TEST_F(RecorderModeSwitch, AnObservedSpectrumThatIsNotToBeRecordedIsNoInitialState)
{
    startRecorder();
    station.switchOff();
    setRecDf(true);
    mode().SelectKey(23);
    start();
    EXPECT_THAT(recordsOf(stopAndRead(), 2), IsEmpty());
}

TEST_F(RecorderModeSwitch, TwoRecordersKeepEachOthersCommandRecording)
{
    makeRecorder();
    CRecording other(QString{});
    other.Init();
    start();
    auto& directory = station.value<Text>("/Devices/RecStatus/REC_FILEPATH");
    directory.SetValue(station.directory());
    other.StartRecording(false);
    other.StopRecording(false);
    EXPECT_TRUE(level().IsCommandRecording());
    station.switchOff();
    EXPECT_FALSE(level().IsCommandRecording());
}

// The receiver records the IF spectrum; the other recorder drops that keyword at its start and never had it on.
TEST_F(RecorderModeSwitch, ARecorderThatStartsLeavesTheSpectrumOfAnotherAlone)
{
    auto& spectrum = station.value<LevelMap>("/IfMapping");
    spectrum.SetChannelRange(values::ChannelRange::Even(1e8, 25e3, 4096));
    station.value<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS").SelectKey(23);
    makeRecorder();
    CRecording other(QString{});
    other.Init();
    station.value<Text>("/Devices/RecStatus/REC_FILEPATH").SetValue(station.directory());
    start();
    spectrum.SetCell(0, -50, 0);
    other.StartRecording(false);
    spectrum.SetCell(7, -60, 0);
    other.StopRecording(false);
    spectrum.SetCell(8, -70, 0);
    const auto changes = recordsOf(stopAndRead(), Recording2::IfSpectrum);
    ASSERT_GE(changes.size(), 3U);
    EXPECT_LT(changes[changes.size() - 2].data.size(), 100U);
    EXPECT_LT(changes.back().data.size(), 100U);
    EXPECT_FALSE(spectrum.IsCommandRecording());
}

TEST_F(RecorderModeSwitch, ASpectrumThatAnotherRecordsBeginsWithItsRangeWhenTheModeTakesIt)
{
    auto& spectrum = station.value<LevelMap>("/IfMapping");
    spectrum.SetChannelRange(values::ChannelRange::Even(1e8, 25e3, 4096));
    spectrum.CommandRecordingOn();  // by somebody else
    spectrum.SetCell(0, -50, 0);
    startRecorder();
    station.value<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS").SelectKey(23);
    spectrum.SetCell(7, -60, 0);
    spectrum.SetCell(8, -70, 0);
    const auto changes = recordsOf(stopAndRead(), Recording2::IfSpectrum);
    ASSERT_THAT(changes, SizeIs(2));
    EXPECT_NE(changes[0].data.find("34;"), std::string::npos);
    EXPECT_LT(changes[1].data.size(), 100U);
    spectrum.CommandRecordingOff();
}

TEST_F(RecorderModeSwitch, WhatWasSwitchedOnIsSwitchedOffAlsoWhenRecDfOrTheModeChangedInBetween)
{
    makeRecorder();
    const std::vector<values::ValueBase*> spectra = {station.tree.Find("/Devices/Rx1/Scn/RfSpectrum"),
                                                     station.tree.Find("/IfMapping"), station.tree.Find("/DfSpectrum")};
    auto& directionFinding = station.value<Flag>("/Status/Rx1/REC_DF");
    auto& mode = station.value<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS");
    for (values::ValueBase* spectrum : spectra) {
        spectrum->CommandRecordingOn();  // of somebody else
    }
    for (const bool begin : {false, true}) {
        directionFinding.SetValue(begin);
        start();
        directionFinding.SetValue(!begin);
        for (const std::int32_t key : {23, 5, 27, 42, 24, 3, 5}) {
            mode.SelectKey(key);
        }
        station.switchOff();
    }
    for (values::ValueBase* spectrum : spectra) {
        EXPECT_TRUE(spectrum->IsCommandRecording()) << "the other's: " << spectrum->GetPath().toStdString();
        spectrum->CommandRecordingOff();
        EXPECT_FALSE(spectrum->IsCommandRecording()) << "left on: " << spectrum->GetPath().toStdString();
    }
}

}  // namespace
}  // namespace RecorderTests
