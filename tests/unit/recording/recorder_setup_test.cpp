// Construction, configuration, published status values and the end of a recorder.
#include <cstring>
#include <stdexcept>

#include <QDir>
#include <QFileInfo>

#include <startup/cfgcenter.h>
#include <startup/translationcenter.h>
#include <vkbase/vkexception.h>

#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const char* const Source = "devicecontrol\\recording2\\recording";

#if defined(_WIN32)
constexpr bool Windows = true;
#else
constexpr bool Windows = false;
#endif

/// Where recordings go without a configured directory.
QString defaultDirectory()
{
    return Windows ? QStringLiteral("c:\\temp") : QDir::tempPath();
}

class RecorderSetup : public RecorderTest {
protected:
    void load(const QString& toml) const { CfgCenter::LoadText(toml, QStringLiteral("station.toml")); }
};

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

TEST_F(RecorderSetup, AnEmptyInstanceNameReadsNoConfiguration)
{
    makeRecorder(QString());
    EXPECT_EQ(Peer::valuePath(recorder()), QStringLiteral("/Devices/NoName_Driver"));
    EXPECT_EQ(Peer::statusValuePath(recorder()), QStringLiteral("/Devices/RecStatus"));
    EXPECT_EQ(keywords().size(), 48);
    EXPECT_EQ(Peer::recordingPath(recorder()), QDir::currentPath());
    EXPECT_EQ(Peer::maxFileLength(recorder()), 0);
    EXPECT_NE(station.tree.Find(QStringLiteral("/Devices/NoName_Driver/REC_STATUS")), nullptr);
    EXPECT_NE(station.tree.Find(QStringLiteral("/Devices/RecStatus/REC_FILENAME")), nullptr);
}

TEST_F(RecorderSetup, AnInstanceWithoutConfigurationGetsTheBuiltInDefaults)
{
    const TraceLog log;
    makeRecorder(QStringLiteral("Nobody"));
    EXPECT_EQ(keywords().size(), 48);
    // Nothing gave a status path, and an empty one moves the value path.
    EXPECT_EQ(Peer::valuePath(recorder()), QStringLiteral("/Devices/RecStatus"));
    EXPECT_EQ(Peer::statusValuePath(recorder()), QString());
    EXPECT_EQ(Peer::recordingPath(recorder()), QDir::currentPath());
    EXPECT_EQ(log.lines().size(), 1U) << "nothing but the construction is traced";
}

TEST_F(RecorderSetup, AConfigurationWithoutKeysGivesTheDefaultsOfTheKeys)
{
    load(QStringLiteral("[Rx]\n"));
    makeRecorder();
    EXPECT_EQ(Peer::valuePath(recorder()), QStringLiteral("/Devices/NoName_Driver"));
    EXPECT_EQ(Peer::statusValuePath(recorder()), QStringLiteral("/DEVICES/RECSTATUS"));
    EXPECT_EQ(Peer::recordingPath(recorder()), defaultDirectory());
    EXPECT_FALSE(Peer::fileNameFormat83(recorder()));
    EXPECT_EQ(Peer::maxFileLength(recorder()), 10'000'000);
    EXPECT_EQ(Peer::fileExpandingSize(recorder()), 9'000'000);
    EXPECT_EQ(Peer::diskExpandingSize(recorder()), 100'000'000);
}

TEST_F(RecorderSetup, EveryKeyIsRead)
{
    station.configure(QStringLiteral(
        "RecFileNameFormat83 = true\nMaxFileLength = 1\nFileExpandingSize = 2\nDiskExpandingSize = \"3\""));
    makeRecorder();
    EXPECT_EQ(Peer::valuePath(recorder()), QStringLiteral("/Devices/Rx1"));
    EXPECT_EQ(Peer::statusValuePath(recorder()), QStringLiteral("/Status/Rx1"));
    EXPECT_EQ(Peer::recordingPath(recorder()), station.directory());
    EXPECT_TRUE(Peer::fileNameFormat83(recorder()));
    EXPECT_EQ(Peer::maxFileLength(recorder()), 1);
    EXPECT_EQ(Peer::fileExpandingSize(recorder()), 2);
    EXPECT_EQ(Peer::diskExpandingSize(recorder()), 3);
}

TEST_F(RecorderSetup, AnEmptyStatusValuePathMovesTheValuePathAndStaysEmpty)
{
    load(QStringLiteral("[Rx]\nValuePath = \"/Devices/Rx1\"\nStatusValuePath = \"\"\n"));
    makeRecorder();
    EXPECT_EQ(Peer::valuePath(recorder()), QStringLiteral("/Devices/RecStatus"));
    EXPECT_EQ(Peer::statusValuePath(recorder()), QString());
    for (const char* name : {"/REC_FILENAME", "/REC_FILEPATH", "/REC_FILEGUID", "/REC_FILENAMEFORMAT83", "/REC_HEADER",
                             "/REC_UNCFILEPATH", "/REC_ZELVOFILEPATH", "/REC_DF"}) {
        EXPECT_NE(station.tree.Find(QString::fromLatin1(name)), nullptr) << name;
    }
    EXPECT_NE(station.tree.Find(QStringLiteral("/Devices/RecStatus/REC_LOADED")), nullptr);
    EXPECT_NE(station.tree.Find(QStringLiteral("/Devices/RecStatus/REC_STATUS")), nullptr);
}

TEST_F(RecorderSetup, AMissingRecordingDirectoryIsTracedAndReplaced)
{
    const QString missing = station.file(QStringLiteral("missing"));
    load(QStringLiteral("[Rx]\nRecordingPath = \"%1\"\n").arg(missing));
    const TraceLog log;
    makeRecorder();
    EXPECT_EQ(Peer::recordingPath(recorder()), defaultDirectory());
    const auto* line = log.find(QStringLiteral("CRecording::Init() - Cannot find the <%1> directory, set it to <%2>")
                                    .arg(missing, defaultDirectory()));
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->source, QString::fromLatin1(Source));
    EXPECT_EQ(line->line, 212);
}

TEST_F(RecorderSetup, AMissingRecordingDirectoryIsReplacedAlsoWithoutTraces)
{
    load(QStringLiteral("[Rx]\nRecordingPath = \"/no/such/directory\"\n"));
    const TraceLog log(~ErrorHandler::RecordingTraces);
    makeRecorder();
    EXPECT_EQ(Peer::recordingPath(recorder()), defaultDirectory());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RecorderSetup, AMissingDefaultDirectoryIsKept)
{
    const QString missing = station.file(QStringLiteral("no-temp"));
    const Environment temporary("TMPDIR", missing.toUtf8());  // Windows has one default, there or not
    load(QStringLiteral("[Rx]\nRecordingPath = \"/no/such/directory\"\n"));
    makeRecorder();
    EXPECT_EQ(Peer::recordingPath(recorder()), Windows ? defaultDirectory() : missing);
}

TEST_F(RecorderSetup, AnEmptyRecordingPathBecomesTheCurrentDirectory)
{
    load(QStringLiteral("[Rx]\nRecordingPath = \"\"\n"));
    makeRecorder();
    EXPECT_EQ(Peer::recordingPath(recorder()), QDir::currentPath());
    makeRecorder(QString());
    EXPECT_EQ(Peer::recordingPath(recorder()), QDir::currentPath());
}

class DiskExpandingSize : public RecorderSetup,
                          public testing::WithParamInterface<std::pair<const char*, std::int64_t>> {};

TEST_P(DiskExpandingSize, IsTheLeadingNumberOfItsText)
{
    const auto& [text, expected] = GetParam();
    station.configure(QStringLiteral("DiskExpandingSize = \"%1\"").arg(QString::fromLatin1(text)));
    makeRecorder();
    EXPECT_EQ(Peer::diskExpandingSize(recorder()), expected);
}

INSTANTIATE_TEST_SUITE_P(Texts, DiskExpandingSize,
                         testing::Values(std::pair{"123abc", 123}, std::pair{"abc", 0}, std::pair{"", 0},
                                         std::pair{"abc123", 0}, std::pair{" 42", 42}, std::pair{"-7x", -7},
                                         std::pair{"5000000000", 5'000'000'000}));

TEST_F(RecorderSetup, KeysOfTheValuesSectionAreStoredInUpperCase)
{
    station.configure(QString(), QStringLiteral("level = \"/LEVEL\"\nazimuth = \"Df/Azimuth\""));
    makeRecorder();
    EXPECT_EQ(keywords(), QStringList({QStringLiteral("AZIMUTH"), QStringLiteral("LEVEL")}));
    EXPECT_EQ(Peer::resolve(recorder(), QStringLiteral("AZIMUTH"), QString()),
              QStringLiteral("/Devices/Rx1/Df/Azimuth"));
}

TEST_F(RecorderSetup, KeysWithoutValueInTheValuesSectionAreSkipped)
{
    station.configure(QString(), QStringLiteral("LEVEL = \"\"\nAZIMUTH = \"/AZIMUTH\""));
    makeRecorder();
    EXPECT_EQ(keywords(), QStringList(QStringLiteral("AZIMUTH")));
}

TEST_F(RecorderSetup, OneEntryOfTheValuesSectionSuppressesTheBuiltInRows)
{
    station.configure(QString(), QStringLiteral("LEVEL = \"/LEVEL\""));
    makeRecorder();
    EXPECT_EQ(keywords(), QStringList(QStringLiteral("LEVEL")));
}

TEST_F(RecorderSetup, AValuesSectionOfEmptyValuesLeavesTheBuiltInRows)
{
    station.configure(QString(), QStringLiteral("LEVEL = \"\""));
    makeRecorder();
    EXPECT_EQ(keywords().size(), 48);
}

TEST_F(RecorderSetup, TheLaterOfTwoSpellingsOfAKeywordWins)
{
    station.configure(QString(), QStringLiteral("level = \"/First\"\nLEVEL = \"/Second\""));
    makeRecorder();
    EXPECT_EQ(Peer::resolve(recorder(), QStringLiteral("LEVEL"), QString()), QStringLiteral("/Second"));
}

TEST_F(RecorderSetup, TheValuesSectionNeverChangesTypeIds)
{
    station.configure(QString(), QStringLiteral("NEWKEYWORD = \"/NEW\"\nLEVEL = \"/Other/Level\""));
    makeRecorder();
    EXPECT_EQ(Peer::typeIds(recorder()).size(), 48U);
    EXPECT_EQ(Peer::typeIds(recorder()).count(QStringLiteral("NEWKEYWORD")), 0U);
}

TEST_F(RecorderSetup, AKeyOfTheWrongTypePassesOutWithFileLineAndKey)
{
    load(QStringLiteral("[Rx]\nValuePath = \"/Devices/Rx1\"\nMaxFileLength = \"long\"\n"));
    try {
        makeRecorder();
        FAIL() << "no exception";
    } catch (const VKException& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("station.toml:3"));
        EXPECT_THAT(exception.what(), HasSubstr("MaxFileLength"));
    }
}

TEST_F(RecorderSetup, AValuesKeyThatIsNoSectionPassesOutWithFileLineAndKey)
{
    load(QStringLiteral("[Rx]\nValues = 1\n"));
    try {
        makeRecorder();
        FAIL() << "no exception";
    } catch (const VKException& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("station.toml:2"));
        EXPECT_THAT(exception.what(), HasSubstr("Values"));
    }
}

TEST_F(RecorderSetup, AWrongTypeInTheValuesSectionPassesOutWithFileLineAndKey)
{
    station.configure(QString(), QStringLiteral("LEVEL = 5"));
    try {
        makeRecorder();
        FAIL() << "no exception";
    } catch (const VKException& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("station.toml:7"));
        EXPECT_THAT(exception.what(), HasSubstr("LEVEL"));
    }
}

TEST_F(RecorderSetup, PublishesTheStatusValues)
{
    station.configure(QStringLiteral("RecFileNameFormat83 = true"));
    makeRecorder();
    EXPECT_TRUE(station.value<Flag>(QStringLiteral("/Devices/Rx1/REC_LOADED")).GetValue());
    const auto& status = station.value<Selection>(QStringLiteral("/Devices/Rx1/REC_STATUS"));
    ASSERT_EQ(status.GetItems().size(), 2U);
    EXPECT_EQ(status.GetItems()[0]->GetName(), QStringLiteral("Off"));
    EXPECT_EQ(status.GetItems()[0]->GetKey(), 0);
    EXPECT_EQ(status.GetItems()[0]->GetValue(), 0.0);
    EXPECT_EQ(status.GetItems()[1]->GetName(), QStringLiteral("On"));
    EXPECT_EQ(status.GetItems()[1]->GetKey(), 1);
    EXPECT_EQ(status.GetItems()[1]->GetValue(), 1.0);
    EXPECT_EQ(status.GetText(), QStringLiteral("Off"));
    EXPECT_EQ(station.value<Text>(QStringLiteral("/Status/Rx1/REC_FILEPATH")).GetValue(), station.directory());
    EXPECT_TRUE(station.value<Flag>(QStringLiteral("/Status/Rx1/REC_FILENAMEFORMAT83")).GetValue());
    EXPECT_FALSE(station.value<Flag>(QStringLiteral("/Status/Rx1/REC_DF")).GetValue());
    for (const char* name : {"REC_FILENAME", "REC_FILEGUID", "REC_HEADER", "REC_UNCFILEPATH", "REC_ZELVOFILEPATH"}) {
        EXPECT_EQ(station.value<Text>(QStringLiteral("/Status/Rx1/") + QString::fromLatin1(name)).GetValue(),
                  QString());
    }
}

TEST_F(RecorderSetup, ObservesTheValuesThatControlItAndNoOthers)
{
    makeRecorder();
    for (const char* path : {"/Devices/Rx1/REC_LOADED", "/Devices/Rx1/REC_STATUS", "/Status/Rx1/REC_FILEPATH",
                             "/Status/Rx1/REC_FILENAMEFORMAT83", "/Status/Rx1/REC_HEADER"}) {
        EXPECT_TRUE(station.tree.Find(QString::fromLatin1(path))->IsObservedBy(&recorder())) << path;
    }
    for (const char* path : {"/Status/Rx1/REC_FILENAME", "/Status/Rx1/REC_FILEGUID", "/Status/Rx1/REC_UNCFILEPATH",
                             "/Status/Rx1/REC_ZELVOFILEPATH", "/Status/Rx1/REC_DF", "/Devices/Rx1/AntennaMode"}) {
        EXPECT_FALSE(station.tree.Find(QString::fromLatin1(path))->IsObservedBy(&recorder())) << path;
    }
}

TEST_F(RecorderSetup, TakesOverValuesThatAreInTheTreeAlready)
{
    auto& status = station.addSelection(QStringLiteral("/Devices/Rx1/REC_STATUS"), {{"Old", 7, 7}});
    station.add<Text>(QStringLiteral("/Status/Rx1/REC_FILEGUID")).SetValue(QStringLiteral("old"));
    station.add<Flag>(QStringLiteral("/Status/Rx1/REC_DF")).SetValue(true);
    makeRecorder();
    EXPECT_EQ(status.GetItems().size(), 2U);
    EXPECT_EQ(status.GetText(), QStringLiteral("Off"));
    EXPECT_EQ(station.text(QStringLiteral("/Status/Rx1/REC_FILEGUID")), QString());
    EXPECT_TRUE(station.value<Flag>(QStringLiteral("/Status/Rx1/REC_DF")).GetValue()) << "REC_DF is the operator's";
    EXPECT_FALSE(Peer::shouldRecord(recorder(), 1));
}

TEST_F(RecorderSetup, AStatusValueOfAnotherTypeIsLeftAloneSilently)
{
    station.add<Flag>(QStringLiteral("/Status/Rx1/REC_FILEPATH"));
    const TraceLog log;
    makeRecorder();
    EXPECT_NE(dynamic_cast<Flag*>(station.tree.Find(QStringLiteral("/Status/Rx1/REC_FILEPATH"))), nullptr);
    EXPECT_EQ(log.lines().size(), 1U);
    start();
    EXPECT_THAT(stopAndRead().records, IsEmpty());
}

TEST_F(RecorderSetup, ARecDfOfAnotherTypeIsTracedAndLeftAlone)
{
    station.add<Text>(QStringLiteral("/Status/Rx1/REC_DF")).SetValue(QStringLiteral("mine"));
    const TraceLog log;
    makeRecorder();
    const auto* line = log.find(QStringLiteral(
        "!!!!!!!MEMORY LEAK! The value with the path '/Status/Rx1/REC_DF' could not be created!!! A value of this name "
        "already exists for a different type!!!!!!!!"));
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->source, QString::fromLatin1(Source));
    EXPECT_EQ(station.text(QStringLiteral("/Status/Rx1/REC_DF")), QStringLiteral("mine"));
    EXPECT_TRUE(Peer::shouldRecord(recorder(), 1)) << "direction finding counts as off";
}

TEST_F(RecorderSetup, ARecDfOfAnotherTypeIsNotTracedWithoutTheTraceBit)
{
    station.add<Text>(QStringLiteral("/Status/Rx1/REC_DF"));
    const TraceLog log(~ErrorHandler::RecordingTraces);
    makeRecorder();
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RecorderSetup, AddsItsValuesToTheDriverTreeSelection)
{
    auto& items = station.add<Selection>(QStringLiteral("/Drivers"));
    station.add<Text>(QStringLiteral("/ADMINISTRATION/DRVTREESELECTION")).SetValue(QStringLiteral("/Drivers"));
    makeRecorder();
    QStringList names;
    for (const auto& item : items.GetItems()) {
        names << item->GetName();
        EXPECT_EQ(item->GetValue(), 0.0);
        EXPECT_EQ(item->GetKey(), 0);
    }
    EXPECT_EQ(names.join(QLatin1Char(' ')),
              QStringLiteral("REC_LOADED REC_STATUS REC_FILENAME REC_FILEPATH REC_FILEGUID REC_HEADER"));
}

TEST_F(RecorderSetup, ADriverTreeSelectionThatNamesNothingIsPassedOver)
{
    station.add<Text>(QStringLiteral("/ADMINISTRATION/DRVTREESELECTION")).SetValue(QStringLiteral("/Nothing"));
    makeRecorder();
    EXPECT_NE(station.tree.Find(QStringLiteral("/Devices/Rx1/REC_STATUS")), nullptr);
    EXPECT_EQ(station.tree.Find(QStringLiteral("/Nothing")), nullptr);
}

TEST_F(RecorderSetup, TheTypeTableIsMadeOnceAtEveryExitOfSetUp)
{
    for (const char* target : {"", "/Nothing", "/Drivers"}) {
        CountingRecorder counting(QStringLiteral("Rx"));
        if (station.tree.Find(QStringLiteral("/ADMINISTRATION/DRVTREESELECTION")) == nullptr) {
            station.add<Text>(QStringLiteral("/ADMINISTRATION/DRVTREESELECTION"));
            station.add<Selection>(QStringLiteral("/Drivers"));
        }
        station.value<Text>(QStringLiteral("/ADMINISTRATION/DRVTREESELECTION")).SetValue(QString::fromLatin1(target));
        counting.Init();
        EXPECT_EQ(counting.tablesWithoutFile, 1) << target;
    }
}

TEST(RecorderWithoutTree, PublishesNothingAndStillMakesTheTypeTable)
{
    ASSERT_EQ(values::Tree::Instance(), nullptr);
    CountingRecorder recorder(QStringLiteral("Rx"));
    recorder.Init();
    EXPECT_EQ(recorder.tablesWithoutFile, 1);
    EXPECT_EQ(Peer::keywords(recorder).Find(QStringLiteral("LEVEL"))->GetValuePath(), QStringLiteral("/LEVEL"));
}

TEST(RecorderWithoutTree, RecordsAHeaderWithTheDefaultTexts)
{
    const QTemporaryDir directory;
    CfgCenter::LoadText(QStringLiteral("[Rx]\nRecordingPath = \"%1\"\n").arg(directory.path()), QString());
    CRecording recorder(QStringLiteral("Rx"));
    recorder.Init();
    const QString path = recorder.StartRecording(false);
    EXPECT_TRUE(QFileInfo(path).fileName().startsWith(QStringLiteral("UNKNOWN__"))) << path.toStdString();
    recorder.StopRecording(false);
    CfgCenter::Clear();
    const ParsedRecording recording = parsed(QString(path).replace(QStringLiteral(".tmp"), QStringLiteral(".rec")));
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
    EXPECT_THAT(TranslationCenter::Instance().Contexts(), ElementsAre(QStringLiteral("Recording")));
    destroyRecorder();
    EXPECT_THAT(TranslationCenter::Instance().Contexts(), IsEmpty());
}

TEST_F(RecorderSetup, ConstructionAndDestructionAreTraced)
{
    const TraceLog log;
    makeRecorder();
    destroyRecorder();
    ASSERT_EQ(log.lines().size(), 2U);
    EXPECT_EQ(log.lines()[0].text, QStringLiteral("CRecording::CRecording"));
    EXPECT_EQ(log.lines()[0].line, 152);
    EXPECT_EQ(log.lines()[0].source, QString::fromLatin1(Source));
    EXPECT_EQ(log.lines()[1].text, QStringLiteral("CRecording::~CRecording"));
    EXPECT_EQ(log.lines()[1].line, 175);
    EXPECT_EQ(log.lines()[1].source, QString::fromLatin1(Source));
}

TEST_F(RecorderSetup, NothingIsTracedWithoutTheTraceBit)
{
    const TraceLog log(~ErrorHandler::RecordingTraces);
    makeRecorder();
    start();
    station.switchOff();
    destroyRecorder();
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RecorderSetup, DestructionSaysUnloadedAndClosesTheRecording)
{
    makeRecorder();
    start();
    destroyRecorder();
    EXPECT_FALSE(station.value<Flag>(QStringLiteral("/Devices/Rx1/REC_LOADED")).GetValue());
    ASSERT_EQ(station.files().size(), 1);
    EXPECT_TRUE(station.files().first().endsWith(QStringLiteral(".rec")));
    readBack(station.fileName());
}

TEST_F(RecorderSetup, DestructionLeavesNoValueObserved)
{
    station.addAllKeywords();
    makeRecorder();
    start();
    destroyRecorder();
    for (const QString& path : station.tree.Paths()) {
        EXPECT_EQ(station.tree.Find(path)->ObserverCount(), 0U) << path.toStdString();
    }
}

TEST_F(RecorderSetup, AnExceptionFromClosingDoesNotLeaveTheDestructor)
{
    makeRecorder();
    start();
    const Listener failing(*station.tree.Find(QStringLiteral("/Status/Rx1/REC_FILENAME")),
                           [](values::ValueBase&, TChangeCode) { throw std::runtime_error("no room for the name"); });
    EXPECT_NO_THROW(destroyRecorder());
    ASSERT_EQ(station.files().size(), 1);
    EXPECT_TRUE(station.files().first().endsWith(QStringLiteral(".rec")));
}

TEST_F(RecorderSetup, AnExceptionFromSayingUnloadedDoesNotKeepTheRecordingOpen)
{
    makeRecorder();
    start();
    const Listener failing(*station.tree.Find(QStringLiteral("/Devices/Rx1/REC_LOADED")),
                           [](values::ValueBase&, TChangeCode) { throw std::runtime_error("not unloaded"); });
    EXPECT_NO_THROW(destroyRecorder());
    ASSERT_EQ(station.files().size(), 1);
    EXPECT_TRUE(station.files().first().endsWith(QStringLiteral(".rec")));
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

TEST_F(RecorderSetup, HoldsTheInstanceNameForTheHost)
{
    const IDllInstance& instance = makeRecorder();
    EXPECT_EQ(instance.InstanceName(), QStringLiteral("Rx"));
}

TEST_F(RecorderSetup, TheHostsOperationsKeepTheirDefaults)
{
    IDllInstance& instance = makeRecorder();
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
