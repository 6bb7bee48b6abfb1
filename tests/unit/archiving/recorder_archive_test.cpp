// What a recorder's files say to the archive over the life of a recording: starts, splits, stops, several recorders.
#include "../recording/recorder_fixture.h"
#include "scriptedarchive.h"

namespace RecorderTests {
namespace {

using FilePeer = Recording2::FileAccessTestPeer;
using namespace testing;
using TestSupport::scriptedArchive;
using TestSupport::ScriptedArchive;

class RecorderArchive : public RecorderTest {
protected:
    RecorderArchive()
    {
        archive = ScriptedArchive();
        FilePeer::setGroup("Initial GUID String");
        station.add<Number>("/LEVEL");
        station.configure(QString(),
                          QString("LEVEL = \"/LEVEL\"\n[Rx2]\nValuePath = \"/Devices/Rx2\"\nStatusValuePath = "
                                  "\"/Status/Rx2\"\nRecordingPath = \"%1\"\n[Rx2.Values]\nLEVEL = \"/LEVEL\"")
                              .arg(station.directory()));
    }

    void change(double level)
    {
        station.clock.advanceMs(100);
        station.value<Number>("/LEVEL").SetValue(level);
    }
    /// Changes a value until the recorder goes on in another file.
    void split()
    {
        const QString before = station.fileName();
        for (int i = 1; station.fileName() == before; ++i) {
            change(i);
        }
    }
    /// The requests, without what names user and file.
    [[nodiscard]] QStringList requests() const
    {
        QStringList found;
        for (const QString& call : archive.calls) {
            if (call.startsWith("AddFile")) {
                found << "AddFile " + call.section(' ', -1);
            } else if (!call.startsWith("SetUser")) {
                found << call;
            }
        }
        return found;
    }

    ScriptedArchive& archive = scriptedArchive();
};

TEST_F(RecorderArchive, ARecorderOwnsOneClientFromItsConstructionToItsEnd)
{
    {
        const CRecording made("Rx");
        EXPECT_EQ(archive.clients, 1);
    }
    EXPECT_EQ(archive.clients, 0);
    startRecorder();
    station.switchOff();
    start();
    EXPECT_EQ(archive.clientsMade, 2) << "its files share it";
    destroyRecorder();
    EXPECT_EQ(archive.clients, 0);
}

TEST_F(RecorderArchive, EachRecordingIsAGroupOfItsOwn)
{
    startRecorder();
    EXPECT_EQ(FilePeer::group(), "GROUP-1");
    station.switchOff();
    start();
    EXPECT_EQ(FilePeer::group(), "GROUP-2");
    station.switchOff();
    EXPECT_THAT(requests(), ElementsAre("CreateFileGroup", "AddFile GROUP-1", "MoveToNas GROUP-1", "CreateFileGroup",
                                        "AddFile GROUP-2", "MoveToNas GROUP-2"));
}

TEST_F(RecorderArchive, TheArchiveIsGivenTheNameThatTheFinishedFileHas)
{
    startRecorder();
    const QString name = QFileInfo(station.fileName()).completeBaseName() + ".rec";
    EXPECT_EQ(archive.calls.last(), QString("AddFile %1 GROUP-1").arg(name));
    station.switchOff();
    EXPECT_TRUE(QFile::exists(station.file(name)));
}

TEST_F(RecorderArchive, ANameIsNotUsedAgainWhenItsRecordingWasMovedWithinTheSecond)
{
    makeRecorder();
    QStringList names;
    for (int i = 0; i < 3; ++i) {
        station.switchOn();
        names << station.fileName();
        station.switchOff();
        ASSERT_TRUE(QFile::remove(station.fileName()));
    }
    EXPECT_EQ(names.removeDuplicates(), 0);
}

TEST_F(RecorderArchive, ARecordingSplitBySizeIsOneGroupThatIsHandedOverOnceAtItsEnd)
{
    Peer::fileSizeLimit(makeRecorder()) = 2'000;
    start();
    split();
    EXPECT_EQ(FilePeer::group(), "GROUP-1");
    split();
    EXPECT_EQ(FilePeer::group(), "GROUP-1");
    EXPECT_THAT(requests(), ElementsAre("CreateFileGroup", "AddFile GROUP-1", "AddFile GROUP-1", "AddFile GROUP-1"))
        << "a file that is split off is closed without a hand-off";
    QStringList namesWhenHandedOver;
    archive.onMove = [&] { namesWhenHandedOver = station.files(); };
    station.switchOff();
    EXPECT_EQ(archive.calls.last(), "MoveToNas GROUP-1");
    EXPECT_EQ(archive.calls.count("MoveToNas GROUP-1"), 1);
    EXPECT_EQ(namesWhenHandedOver.size(), 3);
    EXPECT_TRUE(namesWhenHandedOver.filter(".tmp").isEmpty());
}

TEST_F(RecorderArchive, TheFilesOfASplitHaveNumbersOfTheirOwn)
{
    Peer::fileSizeLimit(makeRecorder()) = 2'000;
    start();
    const QString value = "/Status/Rx1/REC_ZELVOFILEPATH";
    EXPECT_EQ(station.text(value), "zelvo:///GROUP-1/1");
    split();
    EXPECT_EQ(station.text(value), "zelvo:///GROUP-1/2");
    station.switchOff();
    EXPECT_EQ(station.text(value), QString());
}

TEST_F(RecorderArchive, ARestartBeginsANewGroupAndHandsTheOldOneOver)
{
    startRecorder();
    archive.calls.clear();
    recorder().StartRecording(false);
    EXPECT_THAT(requests(), ElementsAre("MoveToNas GROUP-1", "CreateFileGroup", "AddFile GROUP-2"));
}

TEST_F(RecorderArchive, ARecorderThatIsDestroyedWhileItRecordsHandsItsGroupOver)
{
    startRecorder();
    destroyRecorder();
    EXPECT_EQ(archive.calls.last(), "MoveToNas GROUP-1");
    EXPECT_EQ(archive.clients, 0);
}

// The group is one for the whole process: the archive must sort out what belongs where by what it was told.
TEST_F(RecorderArchive, TheLaterOfTwoRecordersOfAProcessSetsTheGroupOfBoth)
{
    makeRecorder();
    CRecording second("Rx2");
    second.Init();
    EXPECT_EQ(archive.clients, 2);
    station.switchOn();
    station.switchOn("/Devices/Rx2");
    station.clock.advanceMs(1'000);
    EXPECT_EQ(FilePeer::group(), "GROUP-2");
    Peer::fileSizeLimit(recorder()) = 0;
    change(1);  // splits the first recorder's file
    Peer::fileSizeLimit(recorder()) = 1'000'000;
    station.switchOff();
    station.switchOff("/Devices/Rx2");
    EXPECT_THAT(requests(), ElementsAre("CreateFileGroup", "AddFile GROUP-1", "CreateFileGroup", "AddFile GROUP-2",
                                        "AddFile GROUP-2", "MoveToNas GROUP-2", "MoveToNas GROUP-2"));
    EXPECT_TRUE(station.files().filter(".tmp").isEmpty());
    EXPECT_EQ(station.files().size(), 3);
}

TEST_F(RecorderArchive, ARecorderWithoutAnArchiveAfterOneThatHadItIsInNoGroup)
{
    startRecorder();
    station.switchOff();
    archive.available = false;
    archive.calls.clear();
    start();
    EXPECT_EQ(FilePeer::group(), "ERROR");
    EXPECT_EQ(QDir::fromNativeSeparators(station.text("/Status/Rx1/REC_UNCFILEPATH")),
              QDir::fromNativeSeparators(station.fileName().replace(".tmp", ".rec")));
    station.switchOff();
    EXPECT_THAT(requests(), IsEmpty());
}

TEST_F(RecorderArchive, AnArchiveThatFailsAtEveryStepDoesNotStopARecording)
{
    archive.createError = archive.addError = archive.moveError = Zelvo::ZelvoError::Unreachable;
    Peer::fileSizeLimit(makeRecorder()) = 2'000;
    start();
    split();
    change(-1);
    const ParsedRecording recording = stopAndRead();
    EXPECT_EQ(recording.records.back().data, "3;-1,0,0");
    EXPECT_EQ(station.files().size(), 2);
    EXPECT_TRUE(station.files().filter(".tmp").isEmpty());
}

TEST_F(RecorderArchive, RecordsIntoTheDirectoryThatTheArchiveNames)
{
    const QTemporaryDir elsewhere;
    archive.directory = elsewhere.path();
    startRecorder();
    EXPECT_EQ(QFileInfo(station.fileName()).path(), elsewhere.path());
    change(1);
    EXPECT_EQ(stopAndRead().records.back().data, "3;1,0,0");
    EXPECT_EQ(QFileInfo(station.fileName()).path(), elsewhere.path());
    EXPECT_TRUE(QFile::exists(station.fileName()));
    EXPECT_THAT(station.files(), IsEmpty());
}

TEST_F(RecorderArchive, AFileThatAnObserverStartsWhileTheRecorderEndsDoesNotOutliveTheClient)
{
    CRecording& ending = startRecorder();
    bool started = false;
    const Listener restarts(station.value<Text>("/Status/Rx1/REC_FILENAME"), [&](auto&, TChangeCode) {
        if (!started) {
            started = true;
            ending.StartRecording(false);
        }
    });
    destroyRecorder();
    EXPECT_TRUE(started);
    EXPECT_EQ(archive.clients, 0);
    EXPECT_EQ(archive.calledWithoutClient, 0);
}

}  // namespace
}  // namespace RecorderTests
