// The recorder plug-in as a host sees it: made, switched, and released through its two entry points.
#include <startup/cfgcenter.h>
#include <startup/translationcenter.h>
#include <vkbase/vkexception.h>

#include "loaded_recorder.h"
#include "station.h"

namespace RecorderTests {
namespace {

using namespace testing;

class Plugin : public testing::Test {
protected:
    Plugin() { station.addAllKeywords(); }

    void start() const
    {
        station.switchOn();
        station.clock.advanceMs(1'000);
    }
    [[nodiscard]] ParsedRecording stopAndRead() const
    {
        station.switchOff();
        return parsed(station.fileName());
    }
    template <typename T>
    [[nodiscard]] T& at(const char* path) const
    {
        return station.value<T>(path);
    }
    [[nodiscard]] Number& level() const { return at<Number>("/LEVEL"); }

    mutable Station station;
};

TEST_F(Plugin, CreateGivesAnInstanceThatHoldsItsNameAndTracesFromItsSources)
{
    plugin().destroy(nullptr);
    const TraceLog log;
    LoadedRecorder recorder = makeLoadedRecorder("Rx");
    ASSERT_NE(recorder, nullptr);
    EXPECT_EQ(recorder->InstanceName(), "Rx");
    EXPECT_TRUE(at<Flag>("/Devices/Rx1/REC_LOADED").GetValue());
    recorder.reset();
    ASSERT_THAT(log.lines(), SizeIs(2));
    EXPECT_EQ(log.lines()[0].source, "devicecontrol\\recording2\\recording");
}

TEST_F(Plugin, CreateSucceedsWithoutConfiguration)
{
    CfgCenter::Clear();
    EXPECT_NE(makeLoadedRecorder("Nobody"), nullptr);
    const LoadedRecorder unnamed = makeLoadedRecorder(QString());
    ASSERT_NE(unnamed, nullptr);
    EXPECT_NE(station.tree.Find("/Devices/NoName_Driver/REC_STATUS"), nullptr);
}

TEST(PluginWithoutTree, CreateSucceeds)
{
    EXPECT_NE(makeLoadedRecorder(QString()), nullptr);
}

TEST_F(Plugin, AConfigurationErrorPassesOutAndLeavesNoRecorder)
{
    CfgCenter::LoadText("[Rx]\nValuePath = \"/Devices/Rx1\"\nRecFileNameFormat83 = 1\n", "station.toml");
    try {
        makeLoadedRecorder("Rx");
        FAIL() << "no exception";
    } catch (const VKException& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("station.toml:3"));
        EXPECT_THAT(exception.what(), HasSubstr("RecFileNameFormat83"));
    }
    EXPECT_THAT(TranslationCenter::Instance().Contexts(), IsEmpty());
}

TEST_F(Plugin, DestroyStopsTheRecordingAndSaysSo)
{
    LoadedRecorder recorder = makeLoadedRecorder("Rx");
    start();
    level().SetValue(1);
    recorder.reset();
    EXPECT_FALSE(at<Flag>("/Devices/Rx1/REC_LOADED").GetValue());
    ASSERT_THAT(station.files(), SizeIs(1));
    EXPECT_EQ(parsed(station.file(station.files().first())).records.back().data, "3;1,0,0");
    EXPECT_THAT(TranslationCenter::Instance().Contexts(), IsEmpty());
}

TEST_F(Plugin, ARecorderCanBeMadeAgainAfterItsEnd)
{
    makeLoadedRecorder("Rx");
    const LoadedRecorder recorder = makeLoadedRecorder("Rx");
    EXPECT_TRUE(at<Flag>("/Devices/Rx1/REC_LOADED").GetValue());
    start();
    level().SetValue(1);
    EXPECT_THAT(dataOf(changesIn(stopAndRead())), ElementsAre("3;1,0,0"));
}

TEST_F(Plugin, RecordsOnTheClockOfTheHost)
{
    const LoadedRecorder recorder = makeLoadedRecorder("Rx");
    start();
    station.clock.advanceMs(2'345);
    level().SetValue(1);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, Noon / Millisecond);
    EXPECT_EQ(recording.records.back().time, 3'345U);
}

TEST_F(Plugin, ARestartWhileOnBeginsAFreshFile)
{
    const LoadedRecorder recorder = makeLoadedRecorder("Rx");
    start();
    level().SetValue(1);
    station.switchOn();
    station.clock.advanceMs(1'000);
    level().SetValue(2);
    station.switchOff();
    ASSERT_THAT(station.files(), SizeIs(2));
    for (const QString& name : station.files()) {
        EXPECT_TRUE(name.endsWith(".rec")) << name.toStdString();
        EXPECT_EQ(parsed(station.file(name)).header.typeTable, 500);
    }
}

TEST_F(Plugin, ValuesMayGoAndModesMayChangeWhileRecording)
{
    const LoadedRecorder recorder = makeLoadedRecorder("Rx");
    auto& mode = at<Selection>("/Devices/Rx1/Gen/DRVCOMMANDS");
    at<LevelMap>("/IfMapping").SetChannelRange(values::ChannelRange::Even(0, 1, 4));
    start();
    mode.SelectKey(23);
    at<LevelMap>("/IfMapping").SetCell(1, -3, 0);
    station.tree.Remove("/IfMapping");
    mode.SelectKey(5);
    mode.SelectKey(42);
    station.tree.Remove("/DEVICE_CAPTION");
    std::vector<std::int32_t> codes;
    for (const auto& record : changesIn(stopAndRead())) {
        codes.push_back(record.code);
    }
    EXPECT_THAT(codes, ElementsAre(3, 2, 3, 3));
}

TEST_F(Plugin, AFailingObserverOfTheFileNameReachesTheOperatorAndTheFileIsClosed)
{
    const LoadedRecorder recorder = makeLoadedRecorder("Rx");
    start();
    const Listener failing(*station.tree.Find("/Status/Rx1/REC_FILENAME"),
                           [](values::ValueBase&, TChangeCode) { throw std::runtime_error("display gone"); });
    try {
        station.switchOff();
        FAIL() << "no exception";
    } catch (const VKException& exception) {
        EXPECT_STREQ(exception.what(), "display gone");
        EXPECT_EQ(exception.Source(), "devicecontrol\\recording2\\recording");
        EXPECT_EQ(exception.Function(), "CRecording");
        EXPECT_EQ(exception.Line(), 1103);
    }
    EXPECT_EQ(parsed(station.file(station.files().first())).header.typeTable, 500);
}

/// A second recorder beside "Rx".
class TwoRecorders : public Plugin {
protected:
    TwoRecorders()
    {
        CfgCenter::LoadText(QString("[Rx]\nValuePath = \"/Devices/Rx1\"\nStatusValuePath = \"/Status/Rx1\"\n"
                                    "RecordingPath = \"%1\"\n"
                                    "[Other]\nValuePath = \"/Devices/Rx1/Other\"\nStatusValuePath = "
                                    "\"/Status/Other\"\nRecordingPath = \"%1\"\n"
                                    "[Other.Values]\nRFSPECTRUM = \"/Devices/Rx1/Scn/RfSpectrum\"\n"
                                    "LEVEL = \"/LEVEL\"\n")
                                .arg(station.directory()),
                            "station.toml");
        first = makeLoadedRecorder("Rx");
        second = makeLoadedRecorder("Other");
    }
    void startBoth() const
    {
        station.switchOn();
        station.switchOn("/Devices/Rx1/Other");
        station.clock.advanceMs(1'000);
    }
    [[nodiscard]] ParsedRecording otherRecording() const { return parsed(station.text("/Status/Other/REC_FILENAME")); }

    LoadedRecorder first;
    LoadedRecorder second;
};

TEST_F(TwoRecorders, GetTheSameTexts)
{
    auto& spectrum = at<LevelMap>("/Devices/Rx1/Scn/RfSpectrum");
    spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 64));
    startBoth();
    level().SetValue(7);
    for (std::size_t cell = 0; cell < 5; ++cell) {
        spectrum.SetCell(cell, static_cast<float>(cell), 0);
    }
    station.switchOff("/Devices/Rx1/Other");
    const ParsedRecording one = stopAndRead();
    const ParsedRecording other = otherRecording();
    EXPECT_THAT(changesIn(one), SizeIs(6));
    EXPECT_EQ(dataOf(changesIn(one)), dataOf(changesIn(other)));
}

TEST_F(TwoRecorders, TheEndOfOneLeavesTheOtherRecording)
{
    auto& spectrum = at<LevelMap>("/Devices/Rx1/Scn/RfSpectrum");
    spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 25e3, 64));
    startBoth();
    spectrum.SetCell(0, 1, 0);
    second.reset();
    spectrum.SetCell(1, 1, 0);
    EXPECT_TRUE(spectrum.IsCommandRecording());
    const auto changes = changesIn(stopAndRead());
    ASSERT_THAT(changes, SizeIs(2));
    EXPECT_LT(changes[1].data.size(), 60U) << "still only the cells that changed";
    EXPECT_FALSE(spectrum.IsCommandRecording());
}

TEST_F(TwoRecorders, StartedInOneSecondUnderOneNameDoNotMeet)
{
    station.tree.Remove("/DEVICE_CAPTION");
    station.add<Text>("/Devices/Rx1/Other/Adm/DRIVERNAME").SetValue("RX 1");
    startBoth();
    EXPECT_NE(station.fileName(), station.text("/Status/Other/REC_FILENAME"));
    level().SetValue(7);
    station.switchOff("/Devices/Rx1/Other");
    EXPECT_EQ(stopAndRead().records.back().data, otherRecording().records.back().data);
}

}  // namespace
}  // namespace RecorderTests
