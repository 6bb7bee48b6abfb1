// Construction, published status values and the end of a recorder.
#include <cstring>

#include <startup/cfgcenter.h>
#include <startup/translationcenter.h>
#include <vkbase/vkexception.h>

#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

using namespace testing;

const char* const Source = "devicecontrol\\recording2\\recording";

class RecorderSetup : public RecorderTest {};

/// Counts how often the type table is asked for without a file.
class CountingRecorder final : public CRecording {
public:
    using CRecording::CRecording;
    void WriteTypeTable(CFileAccess* file) override
    {
        tablesWithoutFile += file == nullptr ? 1 : 0;
        CRecording::WriteTypeTable(file);
    }
    int tablesWithoutFile = 0;
};

TEST_F(RecorderSetup, PublishesTheStatusValues)
{
    station.configure("RecFileNameFormat83 = true");
    makeRecorder();
    EXPECT_TRUE(station.value<Flag>("/Devices/Rx1/REC_LOADED").GetValue());
    const auto& status = station.value<Selection>("/Devices/Rx1/REC_STATUS");
    ASSERT_EQ(status.GetItems().size(), 2U);
    const auto item = [&status](std::size_t number) {
        const auto& found = *status.GetItems()[number];
        return std::tuple(found.GetName(), found.GetKey(), found.GetValue());
    };
    EXPECT_EQ(item(0), std::tuple("Off", 0, 0.0));
    EXPECT_EQ(item(1), std::tuple("On", 1, 1.0));
    EXPECT_EQ(status.GetText(), "Off");
    EXPECT_EQ(station.value<Text>("/Status/Rx1/REC_FILEPATH").GetValue(), station.directory());
    EXPECT_TRUE(station.value<Flag>("/Status/Rx1/REC_FILENAMEFORMAT83").GetValue());
    EXPECT_FALSE(station.value<Flag>("/Status/Rx1/REC_DF").GetValue());
    for (const char* name : {"REC_FILENAME", "REC_FILEGUID", "REC_HEADER", "REC_UNCFILEPATH", "REC_ZELVOFILEPATH"}) {
        EXPECT_EQ(station.value<Text>("/Status/Rx1/" + QString::fromLatin1(name)).GetValue(), QString());
    }
}

TEST_F(RecorderSetup, ObservesTheValuesThatControlItAndNoOthers)
{
    makeRecorder();
    for (const char* path : {"/Devices/Rx1/REC_LOADED", "/Devices/Rx1/REC_STATUS", "/Status/Rx1/REC_FILEPATH",
                             "/Status/Rx1/REC_FILENAMEFORMAT83", "/Status/Rx1/REC_HEADER"}) {
        EXPECT_TRUE(station.tree.Find(path)->IsObservedBy(&recorder())) << path;
    }
    for (const char* path : {"/Status/Rx1/REC_FILENAME", "/Status/Rx1/REC_FILEGUID", "/Status/Rx1/REC_UNCFILEPATH",
                             "/Status/Rx1/REC_ZELVOFILEPATH", "/Status/Rx1/REC_DF", "/Devices/Rx1/AntennaMode"}) {
        EXPECT_FALSE(station.tree.Find(path)->IsObservedBy(&recorder())) << path;
    }
}

TEST_F(RecorderSetup, TakesOverValuesThatAreInTheTreeAlready)
{
    auto& status = station.addSelection("/Devices/Rx1/REC_STATUS", {{"Old", 7, 7}});
    station.add<Text>("/Status/Rx1/REC_FILEGUID").SetValue("old");
    station.add<Flag>("/Status/Rx1/REC_DF").SetValue(true);
    makeRecorder();
    EXPECT_EQ(status.GetItems().size(), 2U);
    EXPECT_EQ(status.GetText(), "Off");
    EXPECT_EQ(station.text("/Status/Rx1/REC_FILEGUID"), QString());
    EXPECT_TRUE(station.value<Flag>("/Status/Rx1/REC_DF").GetValue()) << "REC_DF is the operator's";
    EXPECT_FALSE(Peer::shouldRecord(recorder(), 1));
}

TEST_F(RecorderSetup, AStatusValueOfAnotherTypeIsLeftAloneSilently)
{
    station.add<Flag>("/Status/Rx1/REC_FILEPATH");
    const TraceLog log;
    makeRecorder();
    EXPECT_NE(dynamic_cast<Flag*>(station.tree.Find("/Status/Rx1/REC_FILEPATH")), nullptr);
    EXPECT_EQ(log.lines().size(), 1U);
    start();
    EXPECT_THAT(stopAndRead().records, IsEmpty());
}

TEST_F(RecorderSetup, ARecDfOfAnotherTypeIsTracedWhereThatIsAskedForAndLeftAlone)
{
    station.add<Text>("/Status/Rx1/REC_DF").SetValue("mine");
    {
        const TraceLog none(~ErrorHandler::RecordingTraces);
        makeRecorder();
        EXPECT_THAT(none.lines(), IsEmpty());
    }
    const TraceLog log;
    makeRecorder();
    const auto* line = log.find(
        "!!!!!!!MEMORY LEAK! The value with the path '/Status/Rx1/REC_DF' could not be created!!! A value of this name "
        "already exists for a different type!!!!!!!!");
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->source, Source);
    EXPECT_EQ(station.text("/Status/Rx1/REC_DF"), "mine");
    EXPECT_TRUE(Peer::shouldRecord(recorder(), 1)) << "direction finding counts as off";
}

TEST_F(RecorderSetup, AddsItsValuesToTheDriverTreeSelection)
{
    auto& items = station.add<Selection>("/Drivers");
    station.add<Text>("/ADMINISTRATION/DRVTREESELECTION").SetValue("/Drivers");
    makeRecorder();
    QStringList names;
    for (const auto& item : items.GetItems()) {
        names << item->GetName();
        EXPECT_EQ(item->GetValue(), 0.0);
        EXPECT_EQ(item->GetKey(), 0);
    }
    EXPECT_EQ(names.join(' '), "REC_LOADED REC_STATUS REC_FILENAME REC_FILEPATH REC_FILEGUID REC_HEADER");
}

TEST_F(RecorderSetup, ADriverTreeSelectionThatNamesNothingIsPassedOver)
{
    station.add<Text>("/ADMINISTRATION/DRVTREESELECTION").SetValue("/Nothing");
    makeRecorder();
    EXPECT_NE(station.tree.Find("/Devices/Rx1/REC_STATUS"), nullptr);
    EXPECT_EQ(station.tree.Find("/Nothing"), nullptr);
}

TEST_F(RecorderSetup, TheTypeTableIsMadeOnceAtEveryExitOfSetUp)
{
    for (const char* target : {"", "/Nothing", "/Drivers"}) {
        CountingRecorder counting("Rx");
        if (station.tree.Find("/ADMINISTRATION/DRVTREESELECTION") == nullptr) {
            station.add<Text>("/ADMINISTRATION/DRVTREESELECTION");
            station.add<Selection>("/Drivers");
        }
        station.value<Text>("/ADMINISTRATION/DRVTREESELECTION").SetValue(target);
        counting.Init();
        EXPECT_EQ(counting.tablesWithoutFile, 1) << target;
    }
}

TEST(RecorderWithoutTree, PublishesNothingAndStillMakesTheTypeTable)
{
    ASSERT_EQ(values::Tree::Instance(), nullptr);
    CountingRecorder recorder("Rx");
    recorder.Init();
    EXPECT_EQ(recorder.tablesWithoutFile, 1);
    EXPECT_EQ(Peer::keywords(recorder).at("LEVEL").valuePath, "/LEVEL");
}

TEST(RecorderWithoutTree, RecordsAHeaderWithTheDefaultTexts)
{
    const QTemporaryDir directory;
    CfgCenter::LoadText(QString("[Rx]\nRecordingPath = \"%1\"\n").arg(directory.path()), QString());
    CRecording recorder("Rx");
    recorder.Init();
    const QString path = recorder.StartRecording(false);
    EXPECT_TRUE(QFileInfo(path).fileName().startsWith("UNKNOWN__")) << path.toStdString();
    recorder.StopRecording(false);
    CfgCenter::Clear();
    const ParsedRecording recording = parsed(QString(path).replace(".tmp", ".rec"));
    EXPECT_EQ(recording.header.deviceName, "UNKNOWN");
    EXPECT_EQ(recording.header.deviceType, "UNKNOWN");
    EXPECT_EQ(recording.header.jobId, "Not available");
    EXPECT_EQ(recording.header.minLevel, -30);
    EXPECT_EQ(recording.header.maxLevel, 120);
    EXPECT_EQ(recording.header.stepWidth, 100'000.0F);
}

TEST_F(RecorderSetup, RegistersItsTranslationContextWhileItLives)
{
    makeRecorder();
    EXPECT_THAT(TranslationCenter::Instance().Contexts(), ElementsAre("Recording"));
    destroyRecorder();
    EXPECT_THAT(TranslationCenter::Instance().Contexts(), IsEmpty());
}

TEST_F(RecorderSetup, ConstructionAndDestructionAreTraced)
{
    const TraceLog log;
    makeRecorder();
    destroyRecorder();
    EXPECT_THAT(log.lines(), ElementsAre(FieldsAre("CRecording::CRecording", Source, 152),
                                         FieldsAre("CRecording::~CRecording", Source, 175)));
}

TEST_F(RecorderSetup, NothingIsTracedWithoutTheTraceBit)
{
    const TraceLog log(~ErrorHandler::RecordingTraces);
    startRecorder();
    station.switchOff();
    destroyRecorder();
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RecorderSetup, DestructionSaysUnloadedAndClosesTheRecording)
{
    startRecorder();
    destroyRecorder();
    EXPECT_FALSE(station.value<Flag>("/Devices/Rx1/REC_LOADED").GetValue());
    ASSERT_EQ(station.files().size(), 1);
    EXPECT_TRUE(station.files().first().endsWith(".rec"));
    readBack(station.fileName());
}

TEST_F(RecorderSetup, IsUnloadedAndUnregisteredBeforeItsRecordingIsClosed)
{
    startRecorder();
    bool loaded = true;
    bool registered = true;
    const Listener closing(station.at("/Status/Rx1/REC_FILENAME"), [&](values::ValueBase&, TChangeCode) {
        loaded = station.value<Flag>("/Devices/Rx1/REC_LOADED").GetValue();
        registered = !TranslationCenter::Instance().Contexts().empty();
    });
    destroyRecorder();
    EXPECT_FALSE(loaded || registered);
}

TEST_F(RecorderSetup, DestructionLeavesNoValueObserved)
{
    station.addAllKeywords();
    startRecorder();
    destroyRecorder();
    for (const QString& path : station.tree.Paths()) {
        EXPECT_EQ(station.tree.Find(path)->ObserverCount(), 0U) << path.toStdString();
    }
}

TEST_F(RecorderSetup, AnExceptionFromClosingOrSayingUnloadedLeavesNoDestructorAndKeepsNoRecordingOpen)
{
    for (const char* path : {"/Status/Rx1/REC_FILENAME", "/Devices/Rx1/REC_LOADED"}) {
        startRecorder();
        const Listener failing(*station.tree.Find(path),
                               [](values::ValueBase&, TChangeCode) { throw std::runtime_error("no room"); });
        EXPECT_NO_THROW(destroyRecorder()) << path;
    }
    ASSERT_EQ(station.files().size(), 2);
    EXPECT_TRUE(station.files().first().endsWith(".rec") && station.files().last().endsWith(".rec"));
}

TEST_F(RecorderSetup, SurvivesTheEndOfItsStatusValues)
{
    makeRecorder();
    for (const QString& path : station.tree.Paths()) {
        station.tree.Remove(path);
    }
    EXPECT_NO_THROW(recorder().StartRecording(false));
    EXPECT_NO_THROW(recorder().StopRecording(false));
}

TEST_F(RecorderSetup, HoldsTheInstanceNameForTheHostWhoseOperationsKeepTheirDefaults)
{
    IDllInstance& instance = makeRecorder();
    EXPECT_EQ(instance.InstanceName(), "Rx");
    EXPECT_TRUE(instance.Start());
    instance.Stop();
    instance.Idle();
    EXPECT_TRUE(recorder().IsRecorder());
    EXPECT_THAT(station.files(), IsEmpty());
}

TEST_F(RecorderSetup, TheObserverPartIsFirstInTheObject)
{
    CRecording& object = makeRecorder();
    EXPECT_EQ(static_cast<void*>(static_cast<IObserver*>(&object)), static_cast<void*>(&object));
    EXPECT_NE(static_cast<void*>(static_cast<IDllInstance*>(&object)), static_cast<void*>(&object));
}

#if defined(__GNUC__) && defined(__x86_64__)
/// Place of a virtual operation in the table, counted with the destructor as one.
template <typename Operation>
std::size_t slotOf(Operation operation)
{
    std::size_t words[2];
    static_assert(sizeof(operation) == sizeof(words));
    std::memcpy(words, &operation, sizeof(words));
    return (words[0] - 1) / sizeof(void*) - 1;  // here a destructor takes two places
}

TEST(RecorderTable, HasItsOperationsInTheirSlots)
{
    EXPECT_EQ(slotOf(&CRecording::Update), 1U);
    EXPECT_EQ(slotOf(&CRecording::Init), 2U);
    EXPECT_EQ(slotOf(&CRecording::AttachRecordedValues), 3U);
    EXPECT_EQ(slotOf(&CRecording::DetachAllValues), 4U);
    EXPECT_EQ(slotOf(&CRecording::WriteInitialStates), 5U);
    EXPECT_EQ(slotOf(&CRecording::WriteTypeTable), 6U);
    EXPECT_EQ(slotOf(&CRecording::IsRecorder), 7U);
}
#endif

}  // namespace
}  // namespace RecorderTests
