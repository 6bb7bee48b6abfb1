// The names that a recorder gives to its files.
#include "recorder_fixture.h"
#include "zone.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace RecorderTests {
namespace {

class RecorderNaming : public RecorderTest {
protected:
    RecorderNaming() { station.addAllKeywords(); }
    [[nodiscard]] QString startedName()
    {
        station.switchOn();
        return QFileInfo(station.fileName()).fileName();
    }
    void setCaption(const QString& caption) const { station.value<Text>("/DEVICE_CAPTION").SetValue(caption); }
    const Zone zone{"Europe/Berlin"};
    /// Of a station and a moment that the test did not change.
    const QString Stem = "North_Site__RX_1__2018-09-19__12-03-07_UTC+02-00";
};

struct Name {
    const char* what;
    const char* expected;
    const char* keys = "";
    const char* values = "";
    std::vector<const char*> removed = {};
};

const std::vector<Name> Names{
    {"caption, device and UTC", "North_Site__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp"},
    {"local time where configured", "North_Site__RX_1__2018-09-19__14-03-07.tmp", "RecordingNameLocalTime = true"},
    {"a keyword map without caption", "RX_1__2018-09-19__12-03-07_UTC+02-00.tmp", "", "LEVEL = \"/LEVEL\""},
    {"no caption in the tree", "RX_1__2018-09-19__12-03-07_UTC+02-00.tmp", "", "", {"/DEVICE_CAPTION"}},
    {.what = "a device without name",
     .expected = "UNKNOWN__2018-09-19__12-03-07_UTC+02-00.tmp",
     .removed = {"/Devices/Rx1/Adm/DRIVERNAME", "/DEVICE_CAPTION"}},
    {"a name from a configured path", "Own__2018-09-19__12-03-07_UTC+02-00.tmp", "", "DEVICENAME = \"/MyName\""},
};

class RecorderNames : public RecorderNaming, public testing::WithParamInterface<Name> {};

TEST_P(RecorderNames, AreMadeOfCaptionDeviceAndTime)
{
    SCOPED_TRACE(GetParam().what);
    station.configure(GetParam().keys, GetParam().values);
    station.add<Text>("/MyName").SetValue("Own");
    for (const char* path : GetParam().removed) {
        station.tree.Remove(path);
    }
    makeRecorder();
    EXPECT_EQ(startedName(), GetParam().expected);
    EXPECT_EQ(station.files().first(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Every, RecorderNames, testing::ValuesIn(Names));

TEST_F(RecorderNaming, NamesTellTheClockWhateverTimeRecordsHave)
{
    makeRecorder();
    CTimeStamp::SetCts(CTimeStamp::cts().getTimeStamp() + 3'600'000'000ULL);
    EXPECT_EQ(startedName(), Stem + ".tmp");
    CTimeStamp::SetCts(0);
}

TEST_F(RecorderNaming, LocalTimeIsLookedUpAgainAtEveryStart)
{
    makeRecorder();
    station.configure("RecordingNameLocalTime = true");
    EXPECT_EQ(startedName(), "North_Site__RX_1__2018-09-19__14-03-07.tmp");
    station.switchOff();
    station.configure(QString());
    station.clock.advanceMs(1'000);
    EXPECT_EQ(startedName(), "North_Site__RX_1__2018-09-19__12-03-08_UTC+02-00.tmp");
}

TEST_F(RecorderNaming, AnEmptyCaptionStillGivesItsUnderscores)
{
    setCaption(QString());
    makeRecorder();
    EXPECT_EQ(startedName(), "__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp");
}

TEST_F(RecorderNaming, NamesAreInTheEncodingOfThePlatform)
{
    setCaption("Nürnberg Süd");
    makeRecorder();
    station.switchOn();
    const QString expected = station.file("Nürnberg_Süd__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp");
    EXPECT_TRUE(QFile::exists(expected));
    EXPECT_EQ(QDir::fromNativeSeparators(station.fileName()), expected);
    station.switchOff();
    EXPECT_TRUE(QFile::exists(station.fileName()));
    readBack(station.fileName());
}

TEST_F(RecorderNaming, NoTextOfTheStationLeadsOutOfTheDirectory)
{
    const QString device = "d/" + QString(300, 'd');
    setCaption(QString("/x\n/") + QChar(0) + "y");
    station.value<Text>("/Devices/Rx1/Adm/DRIVERNAME").SetValue(device);
    makeRecorder();
    station.switchOn();
    EXPECT_EQ(QFileInfo(station.fileName()).absolutePath(), QFileInfo(station.directory()).absoluteFilePath());
    ASSERT_THAT(station.files(), testing::SizeIs(2)) << "the recording and its journal";
    station.switchOff();
    const QString left = station.file(station.files().first());
    EXPECT_THAT(QFileInfo(left).fileName().toStdString(), testing::StartsWith("_x___y__d_dddd"));
    EXPECT_EQ(readBack(left).header.deviceName.substr(0, 6), "d/dddd") << "the header tells it as it is";
}

/// A link; on Windows, where only shortcuts can be made and starting what makes them takes minutes, a file.
bool plant(const QString& target, const QString& name)
{
    if (!NamesAsWindows)
        return QFile::link(target, name);
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write("planted") > 0;
}

TEST_F(RecorderNaming, WhatIsPutUnderTheNameMeanwhileIsNeverOpened)
{
    const QString victim = station.file("victim");
    TestSupport::writeFile(victim, "precious");
    const QString nowhere = station.file("nowhere");
    ASSERT_TRUE(plant(victim, station.file(Stem + ".tmp")));
    ASSERT_TRUE(plant(nowhere, station.file(Stem + "_2.tmp")));
    ASSERT_TRUE(plant(victim, station.file(Stem + "_3.tmp.journal")));
    ASSERT_TRUE(plant(nowhere, station.file(Stem + "_4.rec")));
    ASSERT_TRUE(QDir(station.directory()).mkdir(Stem + "_5.tmp"));
    ASSERT_TRUE(QDir(station.directory()).mkdir(Stem + "_6.tmp.journal"));
    makeRecorder();
    EXPECT_EQ(startedName(), Stem + "_7.tmp");
    station.switchOff();
    EXPECT_FALSE(QFile::exists(nowhere));
    EXPECT_EQ(TestSupport::readFile(victim), "precious");
}

TEST_F(RecorderNaming, WhatReplacesTheOpenFileKeepsItsName)
{
    makeRecorder();
    const QString open = station.file(startedName());
    const QString aside = station.file("aside");
    ASSERT_TRUE(QFile::rename(open, aside));
    ASSERT_TRUE(QFile::rename(open + ".journal", aside + ".journal"));
    for (const char* ending : {"", ".journal"}) {
        TestSupport::writeFile(open + ending, "precious");
    }
    station.switchOff();
    for (const char* ending : {"", ".journal"}) {
        EXPECT_EQ(TestSupport::readFile(open + ending), "precious") << ending;
    }
    readBack(aside);
}

TEST_F(RecorderNaming, ADotInTheCaptionLeavesTheFullNameToTheOpenFile)
{
    setCaption("St. Gallen");
    makeRecorder();
    const QString stem = "St._Gallen__RX_1__2018-09-19__12-03-07_UTC+02-00";
    for (const char* ending :
         {".tmp", "_2.tmp", "_3.tmp"}) {  // the first is St.rec then, and its name is not used again
        EXPECT_EQ(startedName(), stem + ending);
        station.switchOff();
    }
    EXPECT_TRUE(QFile::exists(station.file("St.rec")));
    EXPECT_TRUE(QFile::exists(station.file(stem + "_2.tmp")));
    EXPECT_TRUE(QFile::exists(station.file(stem + "_3.tmp")));
}

#if !defined(_WIN32)
/// What permissions this process gives to new files, for as long as this exists.
class Umask {
public:
    explicit Umask(mode_t mask) : m_before(umask(mask)) {}
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;
    ~Umask() { umask(m_before); }

private:
    mode_t m_before;
};

class RecorderFileModes : public RecorderTest {
protected:
    [[nodiscard]] unsigned modeOf(const QString& path) const
    {
        struct stat status {};
        EXPECT_EQ(stat(path.toUtf8().constData(), &status), 0) << path.toStdString();
        return status.st_mode & 0777U;
    }
    void expectMode(unsigned mode)
    {
        makeRecorder();
        station.switchOn();
        EXPECT_EQ(modeOf(station.fileName()), mode);
        EXPECT_EQ(modeOf(station.fileName() + ".journal"), mode);
        station.switchOff();
        EXPECT_EQ(modeOf(station.fileName()), mode);
        destroyRecorder();
    }
};

TEST_F(RecorderFileModes, OthersReadNothingUnlessTheConfigurationSaysSo)
{
    const Umask none(0);
    expectMode(0640);
    station.configure("FileMode = \"0664\"");
    expectMode(0664);
}

TEST_F(RecorderFileModes, TheUmaskTakesAway)
{
    const Umask all(077);
    expectMode(0600);
    station.configure("FileMode = \"0664\"");
    expectMode(0600);
}

TEST_F(RecorderFileModes, OneThatLocksTheOwnerOutIsTracedAndNotTaken)
{
    const Umask none(0);
    for (const char* mode : {"0440", "rw-r--", "1777", ""}) {
        station.configure(QString("FileMode = \"%1\"").arg(QString::fromLatin1(mode)));
        const TraceLog log;
        expectMode(0640);
        EXPECT_NE(log.find(QString("CRecording::Init() - FileMode is <%1>, no permissions in octal with which "
                                   "the owner reads and writes; set it to <0640>")
                               .arg(QString::fromLatin1(mode))),
                  nullptr);
    }
}
#endif

TEST_F(RecorderNaming, AnotherRecordingOfTheSameSecondGetsANumber)
{
    makeRecorder();
    for (const char* name : {"UTC+02-00.tmp", "UTC+02-00_2.tmp", "UTC+02-00_3.tmp"}) {
        EXPECT_EQ(startedName(), "North_Site__RX_1__2018-09-19__12-03-07_" + QString::fromLatin1(name));
        station.switchOff();
    }
    EXPECT_EQ(station.files().size(), 3);
    for (const QString& name : station.files()) {
        EXPECT_TRUE(name.endsWith(".rec")) << name.toStdString();
        readBack(station.file(name));
    }
}

TEST_F(RecorderNaming, ANameThatAnotherRecordingGetsBetweenLookAndMakingLeadsToTheNext)
{
    makeRecorder();
    const QString other = station.file(Stem + ".rec");
    {
        // The final name is shown when it was looked at and before the file is made.
        const Listener listener(*station.tree.Find("/Status/Rx1/REC_UNCFILEPATH"),
                                [&](values::ValueBase& /*shown*/, TChangeCode /*code*/) {
                                    if (!QFile::exists(other)) {
                                        TestSupport::writeFile(other, "precious");
                                    }
                                });
        EXPECT_EQ(startedName(), Stem + "_2.tmp");
    }
    station.switchOff();
    EXPECT_THAT(station.files(), testing::UnorderedElementsAre(Stem + ".rec", Stem + "_2.rec"));
    EXPECT_EQ(TestSupport::readFile(other), "precious");
}

TEST_F(RecorderNaming, AnUnfinishedRecordingOfTheSameSecondIsNotDestroyed)
{
    const QString name = station.file(Stem + ".tmp");
    TestSupport::writeFile(name, "precious");
    makeRecorder();
    EXPECT_EQ(startedName(), Stem + "_2.tmp");
    station.switchOff();
    EXPECT_EQ(TestSupport::readFile(name), "precious");
}

TEST_F(RecorderNaming, AFileThatAppearsMeanwhileIsNotReplacedByTheRename)
{
    makeRecorder();
    const QString finished = station.file(startedName().replace(".tmp", ".rec"));
    TestSupport::writeFile(finished, "precious");
    station.switchOff();
    EXPECT_EQ(TestSupport::readFile(finished), "precious");
    readBack(QString(finished).replace(".rec", ".tmp"));
}

}  // namespace
}  // namespace RecorderTests
