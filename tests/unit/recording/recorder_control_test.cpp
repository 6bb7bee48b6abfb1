// Switching recordings on and off, splitting them, and the header that a finished one has.
#include <stdexcept>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class RecorderControl : public RecorderTest {
protected:
    RecorderControl() { station.addAllKeywords(); }
    [[nodiscard]] Number& level() const { return station.value<Number>(QStringLiteral("/LEVEL")); }
    [[nodiscard]] Selection& status() const
    {
        return station.value<Selection>(QStringLiteral("/Devices/Rx1/REC_STATUS"));
    }
};

/// Notes which changes of a value reach it.
class NotingRecorder final : public CRecording {
public:
    using CRecording::CRecording;
    void Update(void* subject, TChangeCode code) override
    {
        subjects.push_back(subject);
        CRecording::Update(subject, code);
    }
    std::vector<void*> subjects;
};

TEST_F(RecorderControl, OnOpensAFileAndOffFinishesIt)
{
    makeRecorder();
    station.switchOn();
    EXPECT_TRUE(Peer::isRecording(recorder()));
    EXPECT_TRUE(station.fileName().endsWith(QStringLiteral(".tmp")));
    EXPECT_TRUE(QFile::exists(station.fileName()));
    EXPECT_EQ(Peer::currentFileName(recorder()), station.fileName());
    station.switchOff();
    EXPECT_FALSE(Peer::isRecording(recorder()));
    EXPECT_TRUE(station.fileName().endsWith(QStringLiteral(".rec")));
    EXPECT_EQ(Peer::currentFileName(recorder()), station.fileName());
    EXPECT_EQ(station.files(), QStringList(QFileInfo(station.fileName()).fileName()));
}

TEST_F(RecorderControl, AFileCarriesTmpUntilItIsClosed)
{
    makeRecorder();
    start();
    level().SetValue(1);
    const QStringList files = station.files();  // by name: the recording and its journal
    ASSERT_THAT(files, SizeIs(2));
    EXPECT_TRUE(files[0].endsWith(QStringLiteral(".tmp")));
    EXPECT_EQ(files[1], files[0] + QStringLiteral(".journal"));
}

TEST_F(RecorderControl, SwitchingOnTwiceClosesTheFirstFileAndOpensASecond)
{
    makeRecorder();
    start();
    const QString first = station.fileName();
    station.switchOn();  // notified with the code for the item that is selected already
    EXPECT_NE(station.fileName(), first);
    EXPECT_TRUE(Peer::isRecording(recorder()));
    readBack(QString(first).replace(QStringLiteral(".tmp"), QStringLiteral(".rec")));
    station.switchOff();
    EXPECT_THAT(station.files(), SizeIs(2));
}

TEST_F(RecorderControl, TwoNotificationsOfOnCloseTheFirstFileAndOpenASecond)
{
    makeRecorder();
    start();
    const QString first = station.fileName();
    recorder().Update(&status(), TChangeCode::ValueChanged);
    EXPECT_NE(station.fileName(), first);
    station.switchOff();
    EXPECT_THAT(station.files(), SizeIs(2));
}

TEST_F(RecorderControl, SelectingOffAgainDoesNothing)
{
    makeRecorder();
    station.switchOff();
    EXPECT_THAT(station.files(), IsEmpty());
}

TEST_F(RecorderControl, OtherChangesOfTheStatusDoNothing)
{
    makeRecorder();
    start();
    const QString name = station.fileName();
    for (const TChangeCode code : {TChangeCode::CommandsPending, TChangeCode::Removed}) {
        recorder().Update(&status(), code);
    }
    EXPECT_EQ(station.fileName(), name);
    EXPECT_TRUE(Peer::isRecording(recorder()));
}

TEST_F(RecorderControl, AnyOtherSelectionStops)
{
    makeRecorder();
    status().AddItem(std::make_unique<values::SelectionItem>(QStringLiteral("Pause"), 2, 2).release());
    start();
    status().Select(QStringLiteral("Pause"));
    EXPECT_FALSE(Peer::isRecording(recorder()));
}

TEST_F(RecorderControl, StoppingWhileIdleChangesAndPublishesNothing)
{
    NotingRecorder noting(QStringLiteral("Rx"));
    noting.Init();
    station.value<Text>(QStringLiteral("/Status/Rx1/REC_FILENAME")).SetValue(QStringLiteral("/old.tmp"));
    station.value<Text>(QStringLiteral("/Status/Rx1/REC_UNCFILEPATH")).SetValue(QStringLiteral("unc"));
    noting.subjects.clear();
    noting.StopRecording(false);
    EXPECT_THAT(noting.subjects, IsEmpty());
    EXPECT_EQ(station.fileName(), QStringLiteral("/old.tmp"));
    EXPECT_EQ(station.text(QStringLiteral("/Status/Rx1/REC_UNCFILEPATH")), QStringLiteral("unc"));
}

TEST_F(RecorderControl, TheRecorderSendsTheFileNameOfAStartAndNobodyThatOfAStop)
{
    NotingRecorder noting(QStringLiteral("Rx"));
    noting.Init();
    values::ValueBase* name = station.tree.Find(QStringLiteral("/Status/Rx1/REC_FILENAME"));
    name->AddObserver(&noting);
    station.switchOn();
    EXPECT_THAT(noting.subjects, testing::Not(testing::Contains(name))) << "the sender is not told";
    station.switchOff();
    EXPECT_THAT(noting.subjects, testing::Contains(name).Times(1));
    name->RemoveObserver(&noting);
}

TEST_F(RecorderControl, ObserversOfTheFileNameSeeBothNames)
{
    makeRecorder();
    QStringList names;
    const Listener listener(*station.tree.Find(QStringLiteral("/Status/Rx1/REC_FILENAME")),
                            [&names](values::ValueBase& value, TChangeCode) { names << value.GetText().right(4); });
    station.switchOn();
    station.switchOff();
    EXPECT_EQ(names, QStringList({QStringLiteral(".tmp"), QStringLiteral(".rec")}));
}

TEST_F(RecorderControl, TheFinalPathIsPublishedWhileRecordingAndTakenBackAtStop)
{
    makeRecorder();
    station.switchOn();
    const QString unc = station.text(QStringLiteral("/Status/Rx1/REC_UNCFILEPATH"));
    EXPECT_EQ(unc, station.directory() + '/' + QFileInfo(station.fileName()).completeBaseName() + ".rec");
    station.value<Text>(QStringLiteral("/Status/Rx1/REC_ZELVOFILEPATH")).SetValue(QStringLiteral("zelvo"));
    station.switchOff();
    EXPECT_EQ(station.text(QStringLiteral("/Status/Rx1/REC_UNCFILEPATH")), QString());
    EXPECT_EQ(station.text(QStringLiteral("/Status/Rx1/REC_ZELVOFILEPATH")), QString());
}

TEST_F(RecorderControl, ANewDirectoryAppliesFromTheNextStart)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir(QStringLiteral("other")));
    makeRecorder();
    start();
    const QString first = station.fileName();
    station.value<Text>(QStringLiteral("/Status/Rx1/REC_FILEPATH")).SetValue(station.file(QStringLiteral("other")));
    level().SetValue(1);
    EXPECT_EQ(station.fileName(), first);
    station.switchOff();
    station.switchOn();
    EXPECT_EQ(QFileInfo(station.fileName()).absolutePath(), station.file(QStringLiteral("other")));
}

/// The process's current directory for as long as this exists.
class CurrentDirectory {
public:
    explicit CurrentDirectory(const QString& path) : m_before(QDir::currentPath()) { QDir::setCurrent(path); }
    CurrentDirectory(const CurrentDirectory&) = delete;
    CurrentDirectory& operator=(const CurrentDirectory&) = delete;
    ~CurrentDirectory() { QDir::setCurrent(m_before); }

private:
    QString m_before;
};

TEST_F(RecorderControl, AnEmptyDirectoryMakesTheNextRecordingGoToTheCurrentOne)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir(QStringLiteral("here")));
    makeRecorder();
    const CurrentDirectory here(station.file(QStringLiteral("here")));
    station.value<Text>(QStringLiteral("/Status/Rx1/REC_FILEPATH")).SetValue(QString());
    station.switchOn();
    EXPECT_EQ(QFileInfo(station.fileName()).absolutePath(), QDir::currentPath());
    station.switchOff();
    EXPECT_TRUE(QFile::exists(station.fileName()));
}

TEST_F(RecorderControl, TheShortNameFlagFollowsItsValueAndChangesNoName)
{
    makeRecorder();
    station.value<Flag>(QStringLiteral("/Status/Rx1/REC_FILENAMEFORMAT83")).SetValue(true);
    EXPECT_TRUE(Peer::fileNameFormat83(recorder()));
    station.switchOn();
    EXPECT_TRUE(QFileInfo(station.fileName()).fileName().startsWith(QStringLiteral("North_Site__RX_1__2018-09-19")));
    station.value<Flag>(QStringLiteral("/Status/Rx1/REC_FILENAMEFORMAT83")).SetValue(false);
    EXPECT_FALSE(Peer::fileNameFormat83(recorder()));
}

TEST_F(RecorderControl, APathWithoutTmpLeavesTheFileNameAtStop)
{
    makeRecorder();
    station.switchOn();
    const QString name = station.fileName();
    Peer::replaceFile(recorder(), station.file(QStringLiteral("plain.TMP")));
    station.switchOff();
    EXPECT_EQ(station.fileName(), name);
    EXPECT_TRUE(QFile::exists(station.file(QStringLiteral("plain.TMP"))));
}

TEST_F(RecorderControl, AFileThatCannotBeMadeStillHasItsNamePublished)
{
    makeRecorder();
    station.value<Text>(QStringLiteral("/Status/Rx1/REC_FILEPATH")).SetValue(station.file(QStringLiteral("missing")));
    station.switchOn();
    EXPECT_TRUE(Peer::isRecording(recorder()));
    level().SetValue(1);
    station.switchOff();
    EXPECT_TRUE(station.fileName().endsWith(QStringLiteral(".rec")));
    EXPECT_FALSE(QFile::exists(station.fileName()));
}

TEST_F(RecorderControl, RestartsEndTheFileAndBeginAFreshOne)
{
    makeRecorder();
    start();
    level().SetValue(1);
    const QString first = station.fileName();
    station.clock.advanceMs(4'000);
    station.switchOn();
    station.clock.advanceMs(1'000);
    level().SetValue(2);
    const ParsedRecording second = stopAndRead();
    EXPECT_THAT(dataOf(recordsOf(readBack(QString(first).replace(QStringLiteral(".tmp"), QStringLiteral(".rec"))), 36)),
                ElementsAre("3;0,0,0", "3;1,0,0"));
    EXPECT_THAT(dataOf(recordsOf(second, 36)), ElementsAre("3;1,0,0", "3;2,0,0"));
    EXPECT_THAT(timesOf(changesIn(second)), ElementsAre(1'000));
}

TEST_F(RecorderControl, AFilePastTheLimitIsContinuedInTheSameGroupAndAnotherStartIsNot)
{
    Peer::fileSizeLimit(makeRecorder()) = 4'000;
    start();
    Recording2::FileAccessTestPeer::setGroup(QStringLiteral("GROUP"));
    const QString first = Peer::currentFileName(recorder());
    for (int i = 1; Peer::currentFileName(recorder()) == first; ++i) {
        station.clock.advanceMs(100);
        level().SetValue(i);
    }
    EXPECT_EQ(Recording2::FileAccessTestPeer::group(), QStringLiteral("GROUP"));
    station.switchOff();
    station.switchOn();
    EXPECT_EQ(Recording2::FileAccessTestPeer::group(), QStringLiteral("ERROR"));
}

TEST_F(RecorderControl, AFilePastTheLimitIsContinuedInANewOne)
{
    Peer::fileSizeLimit(makeRecorder()) = 4'000;
    start();
    std::vector<std::string> expected;
    for (int i = 1; i <= 200; ++i) {
        station.clock.advanceMs(100);
        level().SetValue(i);
        expected.push_back("3;" + std::to_string(i) + ",0,0");
    }
    station.switchOff();
    const QStringList names = station.files();
    EXPECT_GT(names.size(), 1);
    std::vector<std::string> found;
    for (const QString& name : names) {
        const ParsedRecording recording = readBack(station.file(name));
        EXPECT_EQ(recording.header.typeTable, 500);
        EXPECT_THAT(recordsOf(recording, 46), SizeIs(1)) << "the initial states stand in every file";
        for (const std::string& data : dataOf(recordsOf(recording, 36))) {
            if (found.empty() || found.back() != data) {
                found.push_back(data);
            }
        }
    }
    expected.insert(expected.begin(), "3;0,0,0");
    EXPECT_EQ(found, expected);
}

TEST_F(RecorderControl, TheRecordThatPassesTheLimitIsTheLastOfItsFile)
{
    makeRecorder();
    start();
    const QString first = station.fileName();
    Peer::fileSizeLimit(recorder()) = 500;
    level().SetValue(2);
    EXPECT_NE(station.fileName(), first);
    EXPECT_TRUE(station.fileName().endsWith(QStringLiteral(".tmp")));
    const auto finished = readBack(QString(first).replace(QStringLiteral(".tmp"), QStringLiteral(".rec")));
    EXPECT_EQ(finished.records.back().data, "3;2,0,0");
}

TEST_F(RecorderControl, AFileOfExactlyTheLimitIsNotSplit)
{
    makeRecorder();
    start();
    level().SetValue(1);
    const std::int32_t sizeWithOneChange = stopAndRead().header.timeTable;
    level().SetValue(0);
    Peer::fileSizeLimit(recorder()) = sizeWithOneChange;
    start();
    const QString name = station.fileName();
    level().SetValue(1);
    EXPECT_EQ(station.fileName(), name);
    level().SetValue(2);
    EXPECT_NE(station.fileName(), name);
}

TEST_F(RecorderControl, TheLimitIsHalfAGigabyteWhateverIsConfigured)
{
    station.configure(QStringLiteral("MaxFileLength = 600\nFileExpandingSize = 600\nDiskExpandingSize = \"600\""));
    makeRecorder();
    EXPECT_EQ(Peer::fileSizeLimit(recorder()), 500'000'000);
    start();
    const QString first = station.fileName();
    for (int i = 1; i <= 100; ++i) {
        level().SetValue(i);
    }
    EXPECT_EQ(station.fileName(), first);
}

TEST_F(RecorderControl, TheHeaderIsThatOfTheRecorderAtStop)
{
    station.add<Text>(QStringLiteral("/KDXServer/Dcd/DcdAttr/DcdID")).SetValue(QStringLiteral("Job 7"));
    station.value<Number>(QStringLiteral("/Devices/Rx1/Scn/StartFreq")).SetValue(88e6);
    station.value<Number>(QStringLiteral("/Devices/Rx1/Scn/StopFreq")).SetValue(108e6);
    station.value<Number>(QStringLiteral("/Devices/Rx1/Scn/StartLevel")).SetValue(-20);
    station.value<Number>(QStringLiteral("/Devices/Rx1/Scn/StopLevel")).SetValue(90);
    makeRecorder();
    start();
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
    EXPECT_EQ(recording.header.deviceName, "RX 1");
    EXPECT_EQ(recording.header.deviceType, "Monitoring receiver");
    EXPECT_FALSE(recording.header.automatic);
}

TEST_F(RecorderControl, ARecordingWithoutChangesStopsWhenItStarted)
{
    makeRecorder();
    start();
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.header.startMs, recording.header.stopMs);
}

TEST_F(RecorderControl, HeaderTimesHaveAll64Bits)
{
    station.clock.now = 4'102'444'800'123'456ULL;  // 2100-01-01, far past 32 bits of milliseconds
    makeRecorder();
    start();
    EXPECT_EQ(stopAndRead().header.startMs, 4'102'444'800'123ULL);
}

TEST_F(RecorderControl, AJobThatIsNoTextIsNotAvailable)
{
    station.add<Number>(QStringLiteral("/KDXServer/Dcd/DcdAttr/DcdID")).SetValue(7);
    makeRecorder();
    start();
    EXPECT_EQ(stopAndRead().header.jobId, "Not available");
}

TEST_F(RecorderControl, HeaderTextsAreLatin1)
{
    station.add<Text>(QStringLiteral("/KDXServer/Dcd/DcdAttr/DcdID")).SetValue(QStringLiteral("Prüfung"));
    station.value<Text>(QStringLiteral("/Devices/Rx1/Adm/DRIVERNAME")).SetValue(QStringLiteral("Empfänger"));
    station.value<Text>(QStringLiteral("/Devices/Rx1/Adm/DEVICE_TYPE")).SetValue(QStringLiteral("Größe €"));
    makeRecorder();
    start();
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

TEST_F(RecorderControl, HeaderTextsThatAreTooLongAreCutToTheHeaderArea)
{
    station.add<Text>(QStringLiteral("/KDXServer/Dcd/DcdAttr/DcdID")).SetValue(QString(1'000, QLatin1Char('j')));
    station.value<Text>(QStringLiteral("/Devices/Rx1/Adm/DEVICE_TYPE")).SetValue(QString(1'000, QLatin1Char('t')));
    makeRecorder();
    start();
    level().SetValue(1);
    const ParsedRecording recording = stopAndRead();
    EXPECT_LE(headerLength(recording), 500U);
    EXPECT_EQ(recording.header.typeTable, 500);
    EXPECT_EQ(recording.header.deviceName, "RX 1") << "texts that fit are not cut";
    EXPECT_GT(recording.header.jobId.size(), 50U);
    EXPECT_EQ(recording.header.jobId, std::string(recording.header.jobId.size(), 'j'));
    EXPECT_EQ(recording.header.deviceType, std::string(recording.header.deviceType.size(), 't'));
    EXPECT_EQ(recordsOf(recording, 36).back().data, "3;1,0,0");
}

TEST_F(RecorderControl, ALongDeviceNameIsCutInTheHeader)
{
    station.value<Text>(QStringLiteral("/Devices/Rx1/Adm/DRIVERNAME")).SetValue(QString(100, QLatin1Char('n')));
    station.value<Text>(QStringLiteral("/Devices/Rx1/Adm/DEVICE_TYPE")).SetValue(QString(2'000, QLatin1Char('t')));
    station.add<Text>(QStringLiteral("/KDXServer/Dcd/DcdAttr/DcdID")).SetValue(QString(2'000, QLatin1Char('j')));
    makeRecorder();
    start();
    const ParsedRecording recording = stopAndRead();
    EXPECT_LE(headerLength(recording), 500U);
    EXPECT_GE(recording.header.deviceName.size(), 90U);
}

TEST_F(RecorderControl, AHeaderTextEndsAtANul)
{
    QString name = QStringLiteral("RX");
    name.append(QChar(QChar::Null)).append(QStringLiteral("1"));
    station.value<Text>(QStringLiteral("/Devices/Rx1/Adm/DEVICE_TYPE")).SetValue(name);
    makeRecorder();
    start();
    EXPECT_EQ(stopAndRead().header.deviceType, "RX");
}

TEST_F(RecorderControl, TheDeviceIsThatOfTheStop)
{
    makeRecorder();
    start();
    station.value<Text>(QStringLiteral("/Devices/Rx1/Adm/DRIVERNAME")).SetValue(QStringLiteral("Exchanged"));
    EXPECT_EQ(stopAndRead().header.deviceName, "Exchanged");
}

TEST_F(RecorderControl, StoppingDetachesFromEveryValue)
{
    makeRecorder();
    start();
    station.switchOff();
    for (const auto& row : Recording2::RecordTypeTable) {
        const QString path = Peer::resolve(recorder(), QString::fromLatin1(row.keyword), QString());
        if (values::ValueBase* value = station.tree.Find(path)) {
            EXPECT_FALSE(value->IsObservedBy(&recorder())) << row.keyword;
            EXPECT_FALSE(value->IsCommandRecording()) << row.keyword;
        }
    }
}

TEST_F(RecorderControl, TwoRecordersKeepEachOthersCommandRecording)
{
    makeRecorder();
    CRecording other(QString{});
    other.Init();
    start();
    auto& directory = station.value<Text>(QStringLiteral("/Devices/RecStatus/REC_FILEPATH"));
    directory.SetValue(station.directory());
    other.StartRecording(false);
    other.StopRecording(false);
    EXPECT_TRUE(level().IsCommandRecording());
    station.switchOff();
    EXPECT_FALSE(level().IsCommandRecording());
}

// The receiver records the IF spectrum; the other recorder drops that keyword at its start and never had it on.
TEST_F(RecorderControl, ARecorderThatStartsLeavesTheSpectrumOfAnotherAlone)
{
    auto& spectrum = station.value<LevelMap>(QStringLiteral("/IfMapping"));
    spectrum.SetChannelRange(values::ChannelRange::Even(1e8, 25e3, 4096));
    station.value<Selection>(QStringLiteral("/Devices/Rx1/Gen/DRVCOMMANDS")).SelectKey(23);
    makeRecorder();
    CRecording other(QString{});
    other.Init();
    station.value<Text>(QStringLiteral("/Devices/RecStatus/REC_FILEPATH")).SetValue(station.directory());
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

TEST_F(RecorderControl, ASpectrumThatAnotherRecordsBeginsWithItsRangeWhenTheModeTakesIt)
{
    auto& spectrum = station.value<LevelMap>(QStringLiteral("/IfMapping"));
    spectrum.SetChannelRange(values::ChannelRange::Even(1e8, 25e3, 4096));
    spectrum.CommandRecordingOn();  // by somebody else
    spectrum.SetCell(0, -50, 0);
    makeRecorder();
    start();
    station.value<Selection>(QStringLiteral("/Devices/Rx1/Gen/DRVCOMMANDS")).SelectKey(23);
    spectrum.SetCell(7, -60, 0);
    spectrum.SetCell(8, -70, 0);
    const auto changes = recordsOf(stopAndRead(), Recording2::IfSpectrum);
    ASSERT_THAT(changes, SizeIs(2));
    EXPECT_NE(changes[0].data.find("34;"), std::string::npos);
    EXPECT_LT(changes[1].data.size(), 100U);
    spectrum.CommandRecordingOff();
}

TEST_F(RecorderControl, WhatWasSwitchedOnIsSwitchedOffAlsoWhenRecDfOrTheModeChangedInBetween)
{
    makeRecorder();
    const std::vector<values::ValueBase*> spectra = {station.tree.Find(QStringLiteral("/Devices/Rx1/Scn/RfSpectrum")),
                                                     station.tree.Find(QStringLiteral("/IfMapping")),
                                                     station.tree.Find(QStringLiteral("/DfSpectrum"))};
    auto& directionFinding = station.value<Flag>(QStringLiteral("/Status/Rx1/REC_DF"));
    auto& mode = station.value<Selection>(QStringLiteral("/Devices/Rx1/Gen/DRVCOMMANDS"));
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

TEST_F(RecorderControl, ARecordingMayStartAndStopManyTimes)
{
    makeRecorder();
    for (int i = 1; i <= 5; ++i) {
        start();
        level().SetValue(i);
        EXPECT_EQ(stopAndRead().records.back().data, "3;" + std::to_string(i) + ",0,0");
    }
    EXPECT_THAT(station.files(), SizeIs(5));
}

}  // namespace
}  // namespace RecorderTests
