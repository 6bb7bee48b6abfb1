// What the start of a recording takes from the tree: the fields of the header, and the values to observe.
#include <cmath>

#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

class RecorderAttach : public FullStationTest {};
class RecorderAttachOfFew : public RecorderTest {};

TEST_F(RecorderAttach, AttachingTakesTheFieldsFromTheTree)
{
    startFreq().SetValue(88e6);
    stopFreq().SetValue(108e6);
    frequency().SetValue(98.5e6);
    frequency().SetOffset(-1e6);
    at<Number>("/Devices/Rx1/Scn/StartLevel").SetValue(-19.9);
    at<Number>("/Devices/Rx1/Scn/StopLevel").SetValue(99.9);
    mode().SelectKey(27);
    attachRecorder();
    expectRange(88e6F, 108e6F);
    EXPECT_EQ(Peer::frequency(recorder()), 98.5e6F);
    EXPECT_EQ(Peer::frequencyOffset(recorder()), -1e6);
    EXPECT_EQ(Peer::minLevel(recorder()), -19) << "truncated";
    EXPECT_EQ(Peer::maxLevel(recorder()), 99);
    EXPECT_EQ(Peer::modeKey(recorder()), 27);
}

TEST_F(RecorderAttach, AttachingAssignsWhereCapturingWouldWiden)
{
    makeRecorder();
    Peer::startFreq(recorder()) = 1e6F;
    Peer::stopFreq(recorder()) = 9e9F;
    startFreq().SetValue(88e6);
    stopFreq().SetValue(108e6);
    recorder().AttachRecordedValues();
    expectRange(88e6F, 108e6F);
}

TEST_F(RecorderAttach, FieldsAreTakenInTheOrderOfTheKeywords)
{
    // RFYLIMIT stands before STARTLEVEL and STOPLEVEL, which therefore have the last word.
    station.value<Number>("/Devices/Rx1/Mon/RFYLIMIT").SetLimits(-50, 50);
    at<Number>("/Devices/Rx1/Scn/StartLevel").SetValue(-20);
    attachRecorder();
    EXPECT_EQ(Peer::minLevel(recorder()), -20);
    EXPECT_EQ(Peer::maxLevel(recorder()), 0);
}

TEST_F(RecorderAttachOfFew, TheLevelLimitsComeFromRfYLimit)
{
    station.add<Number>("/Devices/Rx1/Mon/RFYLIMIT").SetLimits(-50.7, 50.7);
    attachRecorder();
    EXPECT_EQ(Peer::minLevel(recorder()), -50);
    EXPECT_EQ(Peer::maxLevel(recorder()), 50);
}

TEST_F(RecorderAttachOfFew, ValuesOfOtherTypesLeaveTheFieldsAlone)
{
    for (const char* path :
         {"/Devices/Rx1/Scn/StartFreq", "/Devices/Rx1/Scn/StopFreq", "/FREQUENCY", "/Devices/Rx1/Scn/StartLevel",
          "/Devices/Rx1/Scn/StopLevel", "/Devices/Rx1/Mon/RFYLIMIT", "/Devices/Rx1/Gen/DRVCOMMANDS", "/IFSPAN"}) {
        station.add<Text>(path).SetValue("7");
    }
    attachRecorder();
    expectRange(0, 0);
    EXPECT_EQ(Peer::frequency(recorder()), 0);
    EXPECT_EQ(Peer::ifSpan(recorder()), 0);
    EXPECT_EQ(Peer::minLevel(recorder()), -30);
    EXPECT_EQ(Peer::maxLevel(recorder()), 120);
    EXPECT_EQ(Peer::modeKey(recorder()), 0);
    EXPECT_TRUE(station.at("/IFSPAN").IsObservedBy(&recorder())) << "recorded all the same";
}

TEST_F(RecorderAttach, TheIfSpanSetsTheScanRangeOfTheDeviceAndTheFrequencyOffsetMovesIt)
{
    ifSpan().SelectKey(1);
    mode().SelectKey(23);
    attachRecorder();
    EXPECT_EQ(Peer::ifSpan(recorder()), 0) << "without a frequency";
    frequency().SetValue(100e6);
    mode().SelectKey(5);
    attachRecorder();
    EXPECT_EQ(Peer::ifSpan(recorder()), 0) << "outside the IF modes";
    EXPECT_EQ(Peer::startFreq(recorder()), 0);
    EXPECT_EQ(startFreq().GetValue(), 0);
    mode().SelectKey(23);
    attachRecorder();
    EXPECT_EQ(Peer::ifSpan(recorder()), 2e6F);
    expectRange(99e6F, 101e6F);
    EXPECT_EQ(startFreq().GetValue(), 99e6);
    EXPECT_EQ(stopFreq().GetValue(), 101e6);
    frequency().SetOffset(5e6);
    attachRecorder();
    expectRange(104e6F, 106e6F);
}

TEST_F(RecorderAttach, AFrequencyThatIsNotKnownYetMovesNoRange)
{
    mode().SelectKey(23);
    ifSpan().SelectKey(1);
    startFreq().SetValue(88e6);
    frequency().SetValue(std::nan(""));
    startRecorder();
    EXPECT_EQ(startFreq().GetValue(), 88e6);
    frequency().SetValue(100e6);
    ifSpan().SelectKey(2);
    ifSpan().SelectKey(1);
    frequency().SetValue(std::nan(""));
    expectRange(99e6F, 101e6F);
}

TEST_F(RecorderAttach, AFrequencyMovesTheRangeOnlyWithASpanAndInAnIfMode)
{
    mode().SelectKey(23);
    startFreq().SetValue(88e6);
    stopFreq().SetValue(108e6);
    frequency().SetValue(0);
    ifSpan().SelectKey(1);
    startRecorder();
    frequency().SetValue(200e6);
    expectRange(88e6F, 108e6F);
    ifSpan().SelectKey(2);
    ifSpan().SelectKey(1);
    expectRange(199e6F, 201e6F);
    mode().SelectKey(5);
    frequency().SetValue(300e6);
    expectRange(199e6F, 201e6F);
}

class IfSpan : public RecorderAttach {
protected:
    /// Attaches a recorder of the IF spectrum to a receiver whose span is chosen from a list.
    void attachWith(double spanHz)
    {
        mode().SelectKey(23);
        auto& spans = ifSpan();
        spans.AddItem(std::make_unique<values::SelectionItem>("span", spanHz, 9).release());
        spans.SelectKey(9);
        attachRecorder();
    }
};

TEST_F(IfSpan, BelowOneHertzMovesNoRange)
{
    startFreq().SetValue(88e6);
    frequency().SetValue(100e6);
    attachWith(0.9);
    EXPECT_EQ(Peer::ifSpan(recorder()), 0.9F);
    EXPECT_EQ(startFreq().GetValue(), 88e6);
    EXPECT_EQ(Peer::startFreq(recorder()), 88e6F);
}

TEST_F(IfSpan, OfOneHertzIsARange)
{
    frequency().SetValue(1'000);
    attachWith(1);
    EXPECT_EQ(startFreq().GetValue(), 999.5);
    expectRange(999.5F, 1'000.5F);
}

TEST_F(RecorderAttach, OnlyWhatIsToBeRecordedIsObservedAndSwitchedOnAndNoNameAndTypeOfTheDevice)
{
    attachRecorder();
    for (const auto& [path, recorded] :
         {std::pair{"/Devices/Rx1/Scn/RfSpectrum", true}, std::pair{"/LEVEL", true}, std::pair{"/IfMapping", false},
          std::pair{"/DfSpectrum", false}, std::pair{"/Devices/Rx1/Adm/DRIVERNAME", false},
          std::pair{"/Devices/Rx1/Adm/DEVICE_TYPE", false}}) {
        EXPECT_EQ(station.at(path).IsObservedBy(&recorder()), recorded) << path;
        EXPECT_EQ(station.at(path).IsCommandRecording(), recorded) << path;
    }
}

TEST_F(RecorderAttachOfFew, AKeywordWithoutTypeIdIsObservedToo)
{
    station.configure(QString(), "SPECIAL = \"/Special\"");
    station.add<Number>("/Special");
    attachRecorder();
    EXPECT_TRUE(station.at("/Special").IsObservedBy(&recorder()));
}

TEST_F(RecorderAttachOfFew, ValuesThatAreMissingArePassedOver)
{
    makeRecorder();
    EXPECT_NO_THROW(recorder().AttachRecordedValues());
    EXPECT_NO_THROW(recorder().DetachAllValues());
}

}  // namespace
}  // namespace RecorderTests
