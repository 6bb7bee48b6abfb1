// Names of recording files.
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>
#include <tuple>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "recorder_fixture.h"

namespace RecorderTests {
namespace {

using Recording2::RecordingFileName;
using Recording2::UtcOffsetSuffix;

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

TEST(RecordingFileNames, BlanksBecomeUnderscoresAndNothingElseChanges)
{
    const Zone zone("UTC");
    EXPECT_EQ(RecordingFileName(QStringLiteral("a/b\\c: d__"), QStringLiteral("x\ty z"), Autumn, true),
              QStringLiteral("a/b\\c:_d__x\ty_z__2018-09-19__12-03-07.tmp"));
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

TEST_F(RecorderNaming, ASlashInTheCaptionPassesIntoThePath)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir(QStringLiteral("North")));
    setCaption(QStringLiteral("North/South"));
    makeRecorder();
    station.switchOn();
    EXPECT_EQ(QDir::fromNativeSeparators(station.fileName()),
              station.file(QStringLiteral("North/South__RX_1__2018-09-19__12-03-07_UTC+02-00.tmp")));
    station.switchOff();
    EXPECT_TRUE(QFile::exists(station.fileName()));
}

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
