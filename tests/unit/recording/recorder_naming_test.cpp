// Names of recording files.
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>
#include <tuple>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <recording2/record/recordingname.h>

#include "recorder_fixture.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace RecorderTests {
namespace {

using Recording2::RecordingFileName;
using Recording2::UtcOffsetSuffix;

#if defined(_WIN32)
constexpr bool NamesAsWindows = true;
#else
constexpr bool NamesAsWindows = false;
#endif

#if defined(_WIN32)
/// The same zone as the C runtime of Windows has it: names and offsets, and summers as in the United States.
const char* zoneOfRuntime(const std::string& name)
{
    static const std::map<std::string, const char*> Zones = {{"UTC", "UTC0"},
                                                             {"Europe/Berlin", "CET-1CES"},
                                                             {"Europe/London", "GMT0BST"},
                                                             {"Asia/Kolkata", "IST-5:30"},
                                                             {"America/St_Johns", "NST3:30NDT"}};
    return Zones.at(name);
}
#else
const char* zoneOfRuntime(const char* name)
{
    return name;
}
#endif

/// The zone of local time for as long as this exists.
class Zone {
public:
    explicit Zone(const char* name) : m_environment("TZ", zoneOfRuntime(name)) { tzset(); }

private:
    struct Restore {
        Restore() = default;
        Restore(const Restore&) = delete;
        Restore& operator=(const Restore&) = delete;
        ~Restore() { tzset(); }
    };
    Restore m_restore;  // runs after the environment is back
    Environment m_environment;
};

const QDateTime Autumn(QDate(2018, 9, 19), QTime(12, 3, 7), Qt::UTC);
const QDateTime Winter(QDate(2018, 12, 31), QTime(23, 30, 0), Qt::UTC);

TEST(RecordingFileNames, OffsetEastOfGreenwichHasAPlus)
{
    EXPECT_EQ(UtcOffsetSuffix(3'600), QStringLiteral("+01-00"));
    EXPECT_EQ(UtcOffsetSuffix(5 * 3'600 + 1'800), QStringLiteral("+05-30"));
    EXPECT_EQ(UtcOffsetSuffix(14 * 3'600), QStringLiteral("+14-00"));
}

TEST(RecordingFileNames, OffsetWestOfGreenwichHasAMinus)
{
    EXPECT_EQ(UtcOffsetSuffix(-5 * 3'600), QStringLiteral("-05-00"));
    EXPECT_EQ(UtcOffsetSuffix(-(3 * 3'600 + 1'800)), QStringLiteral("-03-30"));
}

TEST(RecordingFileNames, OffsetOfZeroHasAMinus)
{
    EXPECT_EQ(UtcOffsetSuffix(0), QStringLiteral("-00-00"));
}

struct ZoneCase {
    const char* zone;
    const char* autumnUtc;
    const char* autumnLocal;
    const char* winterUtc;
    const char* winterLocal;
};

std::ostream& operator<<(std::ostream& out, const ZoneCase& zone)
{
    return out << zone.zone;
}

class RecordingFileNamesInZones : public testing::TestWithParam<ZoneCase> {};

INSTANTIATE_TEST_SUITE_P(
    Zones, RecordingFileNamesInZones,
    testing::Values(ZoneCase{"UTC", "2018-09-19__12-03-07_UTC-00-00", "2018-09-19__12-03-07",
                             "2018-12-31__23-30-00_UTC-00-00", "2018-12-31__23-30-00"},
                    ZoneCase{"Europe/Berlin", "2018-09-19__12-03-07_UTC+02-00", "2018-09-19__14-03-07",
                             "2018-12-31__23-30-00_UTC+01-00", "2019-01-01__00-30-00"},
                    ZoneCase{"Asia/Kolkata", "2018-09-19__12-03-07_UTC+05-30", "2018-09-19__17-33-07",
                             "2018-12-31__23-30-00_UTC+05-30", "2019-01-01__05-00-00"},
                    ZoneCase{"America/St_Johns", "2018-09-19__12-03-07_UTC-02-30", "2018-09-19__09-33-07",
                             "2018-12-31__23-30-00_UTC-03-30", "2018-12-31__20-00-00"}));

TEST_P(RecordingFileNamesInZones, CarryUtcAndTheOffset)
{
    const Zone zone(GetParam().zone);
    const auto name = [](const char* time) { return QStringLiteral("RX_1__%1.tmp").arg(QString::fromLatin1(time)); };
    EXPECT_EQ(RecordingFileName(QString(), QStringLiteral("RX 1"), Autumn, false), name(GetParam().autumnUtc));
    EXPECT_EQ(RecordingFileName(QString(), QStringLiteral("RX 1"), Winter, false), name(GetParam().winterUtc));
}

TEST_P(RecordingFileNamesInZones, CarryLocalTimeWhereThatIsWanted)
{
    const Zone zone(GetParam().zone);
    const auto name = [](const char* time) { return QStringLiteral("RX_1__%1.tmp").arg(QString::fromLatin1(time)); };
    EXPECT_EQ(RecordingFileName(QString(), QStringLiteral("RX 1"), Autumn, true), name(GetParam().autumnLocal));
    EXPECT_EQ(RecordingFileName(QString(), QStringLiteral("RX 1"), Winter, true), name(GetParam().winterLocal));
}

/// A name by local time in UTC.
QString named(const QString& caption, const QString& device)
{
    const Zone zone("UTC");
    return RecordingFileName(caption + QStringLiteral("__"), device, Autumn, true);
}

const QString BehindDevice = QStringLiteral("__2018-09-19__12-03-07.tmp");

TEST(RecordingFileNames, BlanksBecomeUnderscoresAndOrdinaryCharactersStay)
{
    EXPECT_EQ(named(QStringLiteral("a-b+c, (d)"), QString::fromUtf8("x~y zä")),
              QString::fromUtf8("a-b+c,_(d)__x~y_zä") + BehindDevice);
}

TEST(RecordingFileNames, WhatMakesAPathOrControlsATerminalBecomesAnUnderscore)
{
    EXPECT_EQ(named(QStringLiteral("../x"), QStringLiteral("a/b")), QStringLiteral("_._x__a_b") + BehindDevice);
    EXPECT_EQ(named(QStringLiteral("a\x1b[31m\nb"), QStringLiteral("c\x7f\u0085\td")),
              QStringLiteral("a_[31m_b__c___d") + BehindDevice);
    EXPECT_EQ(named(QStringLiteral("a") + QChar(0) + QStringLiteral("b"), QString(QChar(0))),
              QStringLiteral("a_b___") + BehindDevice);
}

TEST(RecordingFileNames, NoNameIsHiddenByALeadingDot)
{
    EXPECT_EQ(named(QStringLiteral(".."), QStringLiteral(".x")), QStringLiteral("_.__.x") + BehindDevice);
    const Zone zone("UTC");
    EXPECT_EQ(RecordingFileName(QString(), QStringLiteral(".x"), Autumn, true), QStringLiteral("_x") + BehindDevice);
}

TEST(RecordingFileNames, WhatWindowsCannotNameIsChangedThere)
{
    const QString name = named(QStringLiteral("a\\b:c*?\"<>|"), QString::fromUtf8("\xd0\x96"));
    EXPECT_EQ(name, (NamesAsWindows ? QStringLiteral("a_b_c________") : QString::fromUtf8("a\\b:c*?\"<>|__\xd0\x96")) +
                        (NamesAsWindows ? QStringLiteral("_") : QString()) + BehindDevice);
    EXPECT_EQ(named(QStringLiteral("nul.x"), QStringLiteral("d")),
              (NamesAsWindows ? QStringLiteral("_nul.x__d") : QStringLiteral("nul.x__d")) + BehindDevice);
}

TEST(RecordingFileNames, LongTextsAreCutAndTimeAndEndingStay)
{
    constexpr int Most = 200;
    const int room = Most - 2 - (BehindDevice.size() - 4);
    const QString both = named(QString(300, QLatin1Char('c')), QString(300, QLatin1Char('d')));
    EXPECT_EQ(both, QString(room - room / 2, QLatin1Char('c')) + QStringLiteral("__") +
                        QString(room / 2, QLatin1Char('d')) + BehindDevice);
    const QString caption = named(QString(1'000'000, QLatin1Char('c')), QStringLiteral("RX 1"));
    EXPECT_EQ(caption, QString(room - 4, QLatin1Char('c')) + QStringLiteral("__RX_1") + BehindDevice);
    const QString device = named(QStringLiteral("North"), QString(300, QLatin1Char('d')));
    EXPECT_EQ(device, QStringLiteral("North__") + QString(room - 5, QLatin1Char('d')) + BehindDevice);
}

TEST(RecordingFileNames, LongTextsAreCutBehindWholeCharacters)
{
    if (NamesAsWindows) {
        GTEST_SKIP() << "names are Latin-1 there: every character is a byte";
    }
    const QString umlaut = QString::fromUtf8("a\xcc\x88");                       // with a mark of its own: 3 bytes
    const QString flag = QString::fromUtf8("\xf0\x9f\x87\xa9\xf0\x9f\x87\xaa");  // two code points: 8 bytes
    for (const QString& character : {umlaut, flag}) {
        for (int shift = 0; shift < 8; ++shift) {
            const QString lead(shift, QLatin1Char('x'));
            const QString name = named(lead + character.repeated(200), QStringLiteral("RX 1"));
            EXPECT_LE(name.toUtf8().size(), 204);
            EXPECT_GE(name.toUtf8().size(), 204 - 8);
            const QString cut = name.left(name.indexOf(QStringLiteral("__RX_1__"))).mid(shift);
            EXPECT_EQ(cut, character.repeated(cut.size() / character.size())) << shift;
        }
    }
}

class RecorderNaming : public RecorderTest {
protected:
    RecorderNaming() { station.addAllKeywords(); }
    [[nodiscard]] QString startedName()
    {
        station.switchOn();
        return QFileInfo(station.fileName()).fileName();
    }
    void setCaption(const QString& caption) const
    {
        station.value<Text>(QStringLiteral("/DEVICE_CAPTION")).SetValue(caption);
    }
    const Zone zone{"Europe/Berlin"};
};

TEST_F(RecorderNaming, NameIsCaptionDeviceAndUtc)
{
    makeRecorder();
    EXPECT_EQ(startedName(), QStringLiteral("North_Site__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp"));
    EXPECT_EQ(station.files().first(), QStringLiteral("North_Site__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp"));
}

TEST_F(RecorderNaming, NameTellsLocalTimeWhereConfigured)
{
    station.configure(QStringLiteral("RecordingNameLocalTime = true"));
    makeRecorder();
    EXPECT_EQ(startedName(), QStringLiteral("North_Site__RX_1__2018-09-19__14-03-07.tmp"));
}

TEST_F(RecorderNaming, LocalTimeIsLookedUpAgainAtEveryStart)
{
    makeRecorder();
    station.configure(QStringLiteral("RecordingNameLocalTime = true"));
    EXPECT_EQ(startedName(), QStringLiteral("North_Site__RX_1__2018-09-19__14-03-07.tmp"));
    station.switchOff();
    station.configure(QString());
    station.clock.advanceMs(1'000);
    EXPECT_EQ(startedName(), QStringLiteral("North_Site__RX_1__2018-09-19__12-03-08_UTC+02-00.tmp"));
}

TEST_F(RecorderNaming, AKeywordMapWithoutCaptionGivesNamesThatBeginWithTheDevice)
{
    station.configure(QString(), QStringLiteral("LEVEL = \"/LEVEL\""));
    makeRecorder();
    EXPECT_EQ(startedName(), QStringLiteral("RX_1__2018-09-19__12-03-07_UTC+02-00.tmp"));
}

TEST_F(RecorderNaming, ACaptionThatIsMissingFromTheTreeGivesNoPrefix)
{
    station.tree.Remove(QStringLiteral("/DEVICE_CAPTION"));
    makeRecorder();
    EXPECT_EQ(startedName(), QStringLiteral("RX_1__2018-09-19__12-03-07_UTC+02-00.tmp"));
}

TEST_F(RecorderNaming, AnEmptyCaptionStillGivesItsUnderscores)
{
    setCaption(QString());
    makeRecorder();
    EXPECT_EQ(startedName(), QStringLiteral("__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp"));
}

TEST_F(RecorderNaming, ADeviceWithoutNameIsUnknown)
{
    station.tree.Remove(QStringLiteral("/Devices/Rx1/Adm/DRIVERNAME"));
    station.tree.Remove(QStringLiteral("/DEVICE_CAPTION"));
    makeRecorder();
    EXPECT_EQ(startedName(), QStringLiteral("UNKNOWN__2018-09-19__12-03-07_UTC+02-00.tmp"));
}

TEST_F(RecorderNaming, TheDeviceNameMayComeFromAConfiguredPath)
{
    station.configure(QString(), QStringLiteral("DEVICENAME = \"/MyName\""));
    station.add<Text>(QStringLiteral("/MyName")).SetValue(QStringLiteral("Own"));
    makeRecorder();
    EXPECT_EQ(startedName(), QStringLiteral("Own__2018-09-19__12-03-07_UTC+02-00.tmp"));
}

TEST_F(RecorderNaming, NamesAreInTheEncodingOfThePlatform)
{
    setCaption(QStringLiteral("Nürnberg Süd"));
    makeRecorder();
    station.switchOn();
    const QString expected = station.file(QStringLiteral("Nürnberg_Süd__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp"));
    EXPECT_TRUE(QFile::exists(expected));
    EXPECT_EQ(QDir::fromNativeSeparators(station.fileName()), expected);
    station.switchOff();
    EXPECT_TRUE(QFile::exists(station.fileName()));
    readBack(station.fileName());
}

TEST_F(RecorderNaming, NoTextOfTheStationLeadsOutOfTheDirectory)
{
    const QString device = QStringLiteral("d/") + QString(300, QLatin1Char('d'));
    setCaption(QStringLiteral("/x\n/") + QChar(0) + QStringLiteral("y"));
    station.value<Text>(QStringLiteral("/Devices/Rx1/Adm/DRIVERNAME")).SetValue(device);
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
    const QString stem = QStringLiteral("North_Site__RX_1__2018-09-19__12-03-07_UTC+02-00");
    const QString victim = station.file(QStringLiteral("victim"));
    QFile precious(victim);
    ASSERT_TRUE(precious.open(QIODevice::WriteOnly));
    precious.write("precious");
    precious.close();
    const QString nowhere = station.file(QStringLiteral("nowhere"));
    ASSERT_TRUE(plant(victim, station.file(stem + QStringLiteral(".tmp"))));
    ASSERT_TRUE(plant(nowhere, station.file(stem + QStringLiteral("_2.tmp"))));
    ASSERT_TRUE(plant(victim, station.file(stem + QStringLiteral("_3.tmp.journal"))));
    ASSERT_TRUE(plant(nowhere, station.file(stem + QStringLiteral("_4.rec"))));
    ASSERT_TRUE(QDir(station.directory()).mkdir(stem + QStringLiteral("_5.tmp")));
    ASSERT_TRUE(QDir(station.directory()).mkdir(stem + QStringLiteral("_6.tmp.journal")));
    makeRecorder();
    EXPECT_EQ(startedName(), stem + QStringLiteral("_7.tmp"));
    station.switchOff();
    EXPECT_FALSE(QFile::exists(nowhere));
    ASSERT_TRUE(precious.open(QIODevice::ReadOnly));
    EXPECT_EQ(precious.readAll(), QByteArray("precious"));
}

TEST_F(RecorderNaming, WhatReplacesTheOpenFileKeepsItsName)
{
    makeRecorder();
    const QString open = station.file(startedName());
    const QString aside = station.file(QStringLiteral("aside"));
    ASSERT_TRUE(QFile::rename(open, aside));
    ASSERT_TRUE(QFile::rename(open + QStringLiteral(".journal"), aside + QStringLiteral(".journal")));
    for (const char* ending : {"", ".journal"}) {
        QFile other(open + QString::fromLatin1(ending));
        ASSERT_TRUE(other.open(QIODevice::WriteOnly));
        other.write("precious");
    }
    station.switchOff();
    for (const char* ending : {"", ".journal"}) {
        QFile other(open + QString::fromLatin1(ending));
        ASSERT_TRUE(other.open(QIODevice::ReadOnly)) << ending;
        EXPECT_EQ(other.readAll(), QByteArray("precious"));
    }
    readBack(aside);
}

TEST_F(RecorderNaming, ADotInTheCaptionLeavesTheFullNameToTheOpenFile)
{
    setCaption(QStringLiteral("St. Gallen"));
    makeRecorder();
    const QString stem = QStringLiteral("St._Gallen__RX_1__2018-09-19__12-03-07_UTC+02-00");
    for (const char* ending :
         {".tmp", "_2.tmp", "_3.tmp"}) {  // the first is St.rec then, and its name is not used again
        EXPECT_EQ(startedName(), stem + QString::fromLatin1(ending));
        station.switchOff();
    }
    EXPECT_TRUE(QFile::exists(station.file(QStringLiteral("St.rec"))));
    EXPECT_TRUE(QFile::exists(station.file(stem + QStringLiteral("_2.tmp"))));
    EXPECT_TRUE(QFile::exists(station.file(stem + QStringLiteral("_3.tmp"))));
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
        EXPECT_EQ(modeOf(station.fileName() + QStringLiteral(".journal")), mode);
        station.switchOff();
        EXPECT_EQ(modeOf(station.fileName()), mode);
        destroyRecorder();
    }
};

TEST_F(RecorderFileModes, OthersReadNothingUnlessTheConfigurationSaysSo)
{
    const Umask none(0);
    expectMode(0640);
    station.configure(QStringLiteral("FileMode = \"0664\""));
    expectMode(0664);
}

TEST_F(RecorderFileModes, TheUmaskTakesAway)
{
    const Umask all(077);
    expectMode(0600);
    station.configure(QStringLiteral("FileMode = \"0664\""));
    expectMode(0600);
}

TEST_F(RecorderFileModes, OneThatLocksTheOwnerOutIsTracedAndNotTaken)
{
    const Umask none(0);
    for (const char* mode : {"0440", "rw-r--", "1777", ""}) {
        station.configure(QStringLiteral("FileMode = \"%1\"").arg(QString::fromLatin1(mode)));
        const TraceLog log;
        expectMode(0640);
        EXPECT_NE(log.find(QStringLiteral("CRecording::Init() - FileMode is <%1>, no permissions in octal with which "
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
        EXPECT_EQ(startedName(), QStringLiteral("North_Site__RX_1__2018-09-19__12-03-07_") + QString::fromLatin1(name));
        station.switchOff();
    }
    EXPECT_EQ(station.files().size(), 3);
    for (const QString& name : station.files()) {
        EXPECT_TRUE(name.endsWith(QStringLiteral(".rec"))) << name.toStdString();
        readBack(station.file(name));
    }
}

TEST_F(RecorderNaming, ANameThatAnotherRecordingGetsBetweenLookAndMakingLeadsToTheNext)
{
    makeRecorder();
    const QString stem = QStringLiteral("North_Site__RX_1__2018-09-19__12-03-07_UTC+02-00");
    QFile other(station.file(stem + QStringLiteral(".rec")));
    {
        // The final name is shown when it was looked at and before the file is made.
        const Listener listener(*station.tree.Find(QStringLiteral("/Status/Rx1/REC_UNCFILEPATH")),
                                [&](values::ValueBase& /*shown*/, TChangeCode /*code*/) {
                                    if (!other.exists()) {
                                        ASSERT_TRUE(other.open(QIODevice::WriteOnly));
                                        other.write("precious");
                                        other.close();
                                    }
                                });
        EXPECT_EQ(startedName(), stem + QStringLiteral("_2.tmp"));
    }
    station.switchOff();
    EXPECT_THAT(station.files(),
                testing::UnorderedElementsAre(stem + QStringLiteral(".rec"), stem + QStringLiteral("_2.rec")));
    ASSERT_TRUE(other.open(QIODevice::ReadOnly));
    EXPECT_EQ(other.readAll(), QByteArray("precious"));
}

TEST_F(RecorderNaming, AnUnfinishedRecordingOfTheSameSecondIsNotDestroyed)
{
    const QString name = station.file(QStringLiteral("North_Site__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp"));
    QFile unfinished(name);
    ASSERT_TRUE(unfinished.open(QIODevice::WriteOnly));
    unfinished.write("precious");
    unfinished.close();
    makeRecorder();
    EXPECT_EQ(startedName(), QStringLiteral("North_Site__RX_1__2018-09-19__12-03-07_UTC+02-00_2.tmp"));
    station.switchOff();
    ASSERT_TRUE(unfinished.open(QIODevice::ReadOnly));
    EXPECT_EQ(unfinished.readAll(), QByteArray("precious"));
}

TEST_F(RecorderNaming, AFileThatAppearsMeanwhileIsNotReplacedByTheRename)
{
    makeRecorder();
    const QString finished = station.file(startedName().replace(QStringLiteral(".tmp"), QStringLiteral(".rec")));
    QFile appeared(finished);
    ASSERT_TRUE(appeared.open(QIODevice::WriteOnly));
    appeared.write("precious");
    appeared.close();
    station.switchOff();
    ASSERT_TRUE(appeared.open(QIODevice::ReadOnly));
    EXPECT_EQ(appeared.readAll(), QByteArray("precious"));
    readBack(QString(finished).replace(QStringLiteral(".rec"), QStringLiteral(".tmp")));
}

}  // namespace
}  // namespace RecorderTests
