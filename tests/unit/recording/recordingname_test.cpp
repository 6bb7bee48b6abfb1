// The file name of a recording: its texts, its time, its length.
#include <recording2/record/recordingname.h>

#include "zone.h"

namespace RecorderTests {
namespace {

using Recording2::RecordingFileName;
using Recording2::UtcOffsetSuffix;

const QDateTime Autumn(QDate(2018, 9, 19), QTime(12, 3, 7), Qt::UTC);
const QDateTime Winter(QDate(2018, 12, 31), QTime(23, 30, 0), Qt::UTC);

TEST(RecordingFileNames, OffsetEastOfGreenwichHasAPlusAndAnyOtherAMinus)
{
    EXPECT_EQ(UtcOffsetSuffix(3'600), "+01-00");
    EXPECT_EQ(UtcOffsetSuffix(5 * 3'600 + 1'800), "+05-30");
    EXPECT_EQ(UtcOffsetSuffix(14 * 3'600), "+14-00");
    EXPECT_EQ(UtcOffsetSuffix(-5 * 3'600), "-05-00");
    EXPECT_EQ(UtcOffsetSuffix(-(3 * 3'600 + 1'800)), "-03-30");
    EXPECT_EQ(UtcOffsetSuffix(0), "-00-00");
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

TEST_P(RecordingFileNamesInZones, CarryUtcAndTheOffsetOrLocalTimeWhereThatIsWanted)
{
    const Zone zone(GetParam().zone);
    const auto expect = [](const QDateTime& time, bool local, const char* expected) {
        EXPECT_EQ(RecordingFileName(QString(), "RX 1", time, local), QString("RX_1__") + expected + ".tmp");
    };
    expect(Autumn, false, GetParam().autumnUtc);
    expect(Winter, false, GetParam().winterUtc);
    expect(Autumn, true, GetParam().autumnLocal);
    expect(Winter, true, GetParam().winterLocal);
}

#if !defined(_WIN32)  // whose summers begin elsewhere
TEST(RecordingFileNames, TheOffsetOfAReadingThatLocalTimeLeavesOutIsThatOfTheMoment)
{
    const Zone zone("Europe/Berlin");
    const QDateTime time(QDate(2026, 3, 29), QTime(2, 30), Qt::UTC);
    EXPECT_EQ(RecordingFileName(QString(), "RX 1", time, false), "RX_1__2026-03-29__02-30-00_UTC+02-00.tmp");
}
#endif

/// A name by local time in UTC.
QString named(const QString& caption, const QString& device)
{
    const Zone zone("UTC");
    return RecordingFileName(caption + "__", device, Autumn, true);
}

const QString BehindDevice = "__2018-09-19__12-03-07.tmp";

TEST(RecordingFileNames, BlanksBecomeUnderscoresAndOrdinaryCharactersStay)
{
    EXPECT_EQ(named("a-b+c, (d)", QString::fromUtf8("x~y zä")), QString::fromUtf8("a-b+c,_(d)__x~y_zä") + BehindDevice);
}

TEST(RecordingFileNames, WhatMakesAPathOrControlsATerminalBecomesAnUnderscore)
{
    EXPECT_EQ(named("../x", "a/b"), "_._x__a_b" + BehindDevice);
    EXPECT_EQ(named("a\x1b[31m\nb", "c\x7f\u0085\td"), "a_[31m_b__c___d" + BehindDevice);
    EXPECT_EQ(named(QString("a") + QChar(0) + "b", QString(QChar(0))), "a_b___" + BehindDevice);
}

TEST(RecordingFileNames, NoNameIsHiddenByALeadingDot)
{
    EXPECT_EQ(named("..", ".x"), "_.__.x" + BehindDevice);
    const Zone zone("UTC");
    EXPECT_EQ(RecordingFileName(QString(), ".x", Autumn, true), "_x" + BehindDevice);
}

TEST(RecordingFileNames, WhatWindowsCannotNameIsChangedThere)
{
    const QString name = named("a\\b:c*?\"<>|", QString::fromUtf8("\xd0\x96"));
    EXPECT_EQ(name, (NamesAsWindows ? "a_b_c________" : QString::fromUtf8("a\\b:c*?\"<>|__\xd0\x96")) +
                        (NamesAsWindows ? "_" : QString()) + BehindDevice);
    EXPECT_EQ(named("nul.x", "d"), (NamesAsWindows ? "_nul.x__d" : "nul.x__d") + BehindDevice);
}

TEST(RecordingFileNames, LongTextsAreCutAndTimeAndEndingStay)
{
    constexpr int Most = 200;
    const int room = Most - 2 - (BehindDevice.size() - 4);
    const QString both = named(QString(300, 'c'), QString(300, 'd'));
    EXPECT_EQ(both, QString(room - room / 2, 'c') + "__" + QString(room / 2, 'd') + BehindDevice);
    const QString caption = named(QString(1'000'000, 'c'), "RX 1");
    EXPECT_EQ(caption, QString(room - 4, 'c') + "__RX_1" + BehindDevice);
    const QString device = named("North", QString(300, 'd'));
    EXPECT_EQ(device, "North__" + QString(room - 5, 'd') + BehindDevice);
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
            const QString lead(shift, 'x');
            const QString name = named(lead + character.repeated(200), "RX 1");
            EXPECT_LE(name.toUtf8().size(), 204);
            EXPECT_GE(name.toUtf8().size(), 204 - 8);
            const QString cut = name.left(name.indexOf("__RX_1__")).mid(shift);
            EXPECT_EQ(cut, character.repeated(cut.size() / character.size())) << shift;
        }
    }
}

}  // namespace
}  // namespace RecorderTests
