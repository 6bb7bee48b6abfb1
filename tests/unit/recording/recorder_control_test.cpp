// Switching recordings on and off, and splitting them.
#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

using namespace testing;

class RecorderControl : public FullStationTest {
protected:
    [[nodiscard]] Selection& status() const { return at<Selection>("/Devices/Rx1/REC_STATUS"); }
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

TEST_F(RecorderControl, OnOpensAFileThatCarriesTmpUntilOffFinishesIt)
{
    makeRecorder();
    station.switchOn();
    EXPECT_TRUE(Peer::isRecording(recorder()));
    EXPECT_TRUE(station.fileName().endsWith(".tmp"));
    EXPECT_TRUE(QFile::exists(station.fileName()));
    EXPECT_EQ(Peer::currentFileName(recorder()), station.fileName());
    level().SetValue(1);
    const QStringList files = station.files();  // by name: the recording and its journal
    ASSERT_THAT(files, SizeIs(2));
    EXPECT_TRUE(files[0].endsWith(".tmp"));
    EXPECT_EQ(files[1], files[0] + ".journal");
    station.switchOff();
    EXPECT_FALSE(Peer::isRecording(recorder()));
    EXPECT_TRUE(station.fileName().endsWith(".rec"));
    EXPECT_EQ(Peer::currentFileName(recorder()), station.fileName());
    EXPECT_EQ(station.files(), QStringList(QFileInfo(station.fileName()).fileName()));
}

TEST_F(RecorderControl, SwitchingOnTwiceClosesTheFirstFileAndOpensASecond)
{
    const auto select = [this] { station.switchOn(); };  // notified with the code for the item that is selected already
    const auto notify = [this] { recorder().Update(&status(), TChangeCode::ValueChanged); };
    for (const std::function<void()>& again : {std::function<void()>(select), std::function<void()>(notify)}) {
        startRecorder();
        const QString first = station.fileName();
        again();
        EXPECT_NE(station.fileName(), first);
        EXPECT_TRUE(Peer::isRecording(recorder()));
        readBack(QString(first).replace(".tmp", ".rec"));
        station.switchOff();
    }
    EXPECT_THAT(station.files(), SizeIs(4));
}

TEST_F(RecorderControl, SelectingOffAgainDoesNothing)
{
    makeRecorder();
    const unsigned long long before = CTimeStamp::cts().getTimeStamp();
    CTimeStamp::SetCts(before + 1);
    station.switchOff();
    EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), before + 1);
    CTimeStamp::SetCts(0);
    EXPECT_THAT(station.files(), IsEmpty());
}

TEST_F(RecorderControl, ADirectoryMayBeCalledLikeAnOpenRecording)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir("x.tmp"));
    makeRecorder();
    station.value<Text>("/Status/Rx1/REC_FILEPATH").SetValue(station.file("x.tmp"));
    station.switchOn();
    station.switchOff();
    EXPECT_TRUE(QFile::exists(station.fileName())) << station.fileName().toStdString();
}

TEST_F(RecorderControl, OtherChangesOfTheStatusDoNothing)
{
    startRecorder();
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
    status().AddItem(std::make_unique<values::SelectionItem>("Pause", 2, 2).release());
    start();
    status().Select("Pause");
    EXPECT_FALSE(Peer::isRecording(recorder()));
}

TEST_F(RecorderControl, StoppingWhileIdleChangesAndPublishesNothing)
{
    NotingRecorder noting("Rx");
    noting.Init();
    EXPECT_THAT(noting.subjects, IsEmpty()) << "its own changes";
    station.value<Text>("/Status/Rx1/REC_FILENAME").SetValue("/old.tmp");
    station.value<Text>("/Status/Rx1/REC_UNCFILEPATH").SetValue("unc");
    noting.subjects.clear();
    noting.StopRecording(false);
    EXPECT_THAT(noting.subjects, IsEmpty());
    EXPECT_EQ(station.fileName(), "/old.tmp");
    EXPECT_EQ(station.text("/Status/Rx1/REC_UNCFILEPATH"), "unc");
}

TEST_F(RecorderControl, TheRecorderSendsTheFileNameOfAStartAndNobodyThatOfAStop)
{
    NotingRecorder noting("Rx");
    noting.Init();
    values::ValueBase* name = station.tree.Find("/Status/Rx1/REC_FILENAME");
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
    const Listener listener(*station.tree.Find("/Status/Rx1/REC_FILENAME"),
                            [&names](values::ValueBase& value, TChangeCode) { names << value.GetText().right(4); });
    station.switchOn();
    station.switchOff();
    EXPECT_EQ(names, QStringList({".tmp", ".rec"}));
}

TEST_F(RecorderControl, TheFinalPathIsPublishedWhileRecordingAndTakenBackAtStop)
{
    makeRecorder();
    station.switchOn();
    const QString unc = station.text("/Status/Rx1/REC_UNCFILEPATH");
    EXPECT_EQ(unc, station.directory() + '/' + QFileInfo(station.fileName()).completeBaseName() + ".rec");
    station.value<Text>("/Status/Rx1/REC_ZELVOFILEPATH").SetValue("zelvo");
    station.switchOff();
    EXPECT_EQ(station.text("/Status/Rx1/REC_UNCFILEPATH"), QString());
    EXPECT_EQ(station.text("/Status/Rx1/REC_ZELVOFILEPATH"), QString());
}

TEST_F(RecorderControl, ANewDirectoryAppliesFromTheNextStart)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir("other"));
    startRecorder();
    const QString first = station.fileName();
    station.value<Text>("/Status/Rx1/REC_FILEPATH").SetValue(station.file("other"));
    level().SetValue(1);
    EXPECT_EQ(station.fileName(), first);
    station.switchOff();
    station.switchOn();
    EXPECT_EQ(QFileInfo(station.fileName()).absolutePath(), station.file("other"));
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
    ASSERT_TRUE(QDir(station.directory()).mkdir("here"));
    makeRecorder();
    const CurrentDirectory here(station.file("here"));
    station.value<Text>("/Status/Rx1/REC_FILEPATH").SetValue(QString());
    station.switchOn();
    EXPECT_EQ(QFileInfo(station.fileName()).absolutePath(), QDir::currentPath());
    station.switchOff();
    EXPECT_TRUE(QFile::exists(station.fileName()));
}

TEST_F(RecorderControl, TheShortNameFlagFollowsItsValueAndChangesNoName)
{
    makeRecorder();
    station.value<Flag>("/Status/Rx1/REC_FILENAMEFORMAT83").SetValue(true);
    EXPECT_TRUE(Peer::configuration(recorder()).fileNameFormat83);
    station.switchOn();
    EXPECT_TRUE(QFileInfo(station.fileName()).fileName().startsWith("North_Site__RX_1__2018-09-19"));
    station.value<Flag>("/Status/Rx1/REC_FILENAMEFORMAT83").SetValue(false);
    EXPECT_FALSE(Peer::configuration(recorder()).fileNameFormat83);
}

TEST_F(RecorderControl, APathWithoutTmpLeavesTheFileNameAtStop)
{
    makeRecorder();
    station.switchOn();
    const QString name = station.fileName();
    Peer::replaceFile(recorder(), station.file("plain.TMP"));
    station.switchOff();
    EXPECT_EQ(station.fileName(), name);
    EXPECT_TRUE(QFile::exists(station.file("plain.TMP")));
}

TEST_F(RecorderControl, AFileThatCannotBeMadeStillHasItsNamePublished)
{
    makeRecorder();
    station.value<Text>("/Status/Rx1/REC_FILEPATH").SetValue(station.file("missing"));
    station.switchOn();
    EXPECT_TRUE(Peer::isRecording(recorder()));
    level().SetValue(1);
    station.switchOff();
    EXPECT_TRUE(station.fileName().endsWith(".rec"));
    EXPECT_FALSE(QFile::exists(station.fileName()));
}

TEST_F(RecorderControl, RestartsEndTheFileAndBeginAFreshOne)
{
    startRecorder();
    level().SetValue(1);
    const QString first = station.fileName();
    station.clock.advanceMs(4'000);
    station.switchOn();
    station.clock.advanceMs(1'000);
    level().SetValue(2);
    const ParsedRecording second = stopAndRead();
    EXPECT_THAT(dataOf(recordsOf(readBack(QString(first).replace(".tmp", ".rec")), 36)),
                ElementsAre("3;0,0,0", "3;1,0,0"));
    EXPECT_THAT(dataOf(recordsOf(second, 36)), ElementsAre("3;1,0,0", "3;2,0,0"));
    EXPECT_THAT(timesOf(changesIn(second)), ElementsAre(1'000));
}

TEST_F(RecorderControl, AFilePastTheLimitIsContinuedInTheSameGroupAndAnotherStartIsNot)
{
    Peer::fileSizeLimit(makeRecorder()) = 4'000;
    start();
    Recording2::FileAccessTestPeer::setGroup("GROUP");
    const QString first = Peer::currentFileName(recorder());
    for (int i = 1; Peer::currentFileName(recorder()) == first; ++i) {
        station.clock.advanceMs(100);
        level().SetValue(i);
    }
    EXPECT_EQ(Recording2::FileAccessTestPeer::group(), "GROUP");
    station.switchOff();
    station.switchOn();
    EXPECT_EQ(Recording2::FileAccessTestPeer::group(), "ERROR");
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
    startRecorder();
    const QString first = station.fileName();
    Peer::fileSizeLimit(recorder()) = 500;
    level().SetValue(2);
    EXPECT_NE(station.fileName(), first);
    EXPECT_TRUE(station.fileName().endsWith(".tmp"));
    const auto finished = readBack(QString(first).replace(".tmp", ".rec"));
    EXPECT_EQ(finished.records.back().data, "3;2,0,0");
}

TEST_F(RecorderControl, AFileOfExactlyTheLimitIsNotSplit)
{
    startRecorder();
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
    station.configure("MaxFileLength = 600\nFileExpandingSize = 600\nDiskExpandingSize = \"600\"");
    makeRecorder();
    EXPECT_EQ(Peer::fileSizeLimit(recorder()), 500'000'000);
    start();
    const QString first = station.fileName();
    for (int i = 1; i <= 100; ++i) {
        level().SetValue(i);
    }
    EXPECT_EQ(station.fileName(), first);
}

TEST_F(RecorderControl, StoppingDetachesFromEveryValue)
{
    startRecorder();
    station.switchOff();
    for (const auto& row : Recording2::RecordTypeTable) {
        const QString path = Peer::resolve(recorder(), row.keyword, QString());
        if (values::ValueBase* value = station.tree.Find(path)) {
            EXPECT_FALSE(value->IsObservedBy(&recorder())) << row.keyword;
            EXPECT_FALSE(value->IsCommandRecording()) << row.keyword;
        }
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
