// Recovery of what was left behind in other ways than by a kill.
#include <QByteArray>

#include <recording2/inspection/rescue/recovery.h>

#include "life.h"
#include "support/files.h"
#include "support/modelreader.h"

namespace CrashTests {
namespace {

using Recording2::Inspection::Recovery;
using Recording2::Inspection::RecoveryOutcome;

class Recovering : public testing::Test {
protected:
    static Recovery recover(const QString& file, const QString& output)
    {
        return Recording2::Inspection::recover(file.toStdString(), {output.toStdString(), 0, {}, {}});
    }
    [[nodiscard]] QString path(const char* name) const { return m_directory.filePath(QString::fromLatin1(name)); }
    [[nodiscard]] QString tmp() const { return fileIn(m_directory.path(), ".tmp"); }

    QTemporaryDir m_directory{directoryTemplate()};
};

TEST_F(Recovering, AFileThatIsBeingWrittenIsRefusedAlsoWithoutAJournal)
{
    for (const char* journal : {"process", "off"}) {
        Life life(m_directory.path(), journal);
        life.switchOn();
        EXPECT_EQ(QFile::exists(tmp() + ".journal"), std::string("off") != journal);
        EXPECT_EQ(recover(tmp(), path("out")).outcome, RecoveryOutcome::InUse) << journal;
        EXPECT_FALSE(QFile::exists(path("out")));
        life.switchOff();
    }
}

TEST_F(Recovering, TheJournalIsGoneOnceTheFileIsClosed)
{
    Life life(m_directory.path());
    life.switchOn();
    EXPECT_TRUE(QFile::exists(tmp() + ".journal"));
    const QString journal = tmp() + ".journal";
    life.switchOff();
    EXPECT_FALSE(QFile::exists(journal));
    EXPECT_EQ(recover(life.fileName(), path("out")).outcome, RecoveryOutcome::NothingToDo);
}

TEST_F(Recovering, AClosedRecordingThatWasCutOffIsForRepairing)
{
    Life life(m_directory.path());
    life.switchOn();
    life.switchOff();
    QFile file(life.fileName());
    ASSERT_TRUE(file.resize(file.size() - 20));
    const Recovery recovery = recover(life.fileName(), path("out"));
    EXPECT_EQ(recovery.outcome, RecoveryOutcome::Nothing);
    EXPECT_EQ(recovery.problem, "This recording was closed and is damaged: repair it instead.");
    EXPECT_FALSE(QFile::exists(path("out")));
}

TEST_F(Recovering, AnExistingFileIsNeverReplaced)
{
    const QString copy = path("copy.tmp");
    {
        Life life(m_directory.path());
        life.switchOn();
        life.change(0);
        ASSERT_TRUE(QFile::copy(tmp() + ".journal", copy + ".journal"));
        ASSERT_TRUE(QFile::copy(fileIn(m_directory.path(), ".tmp"), copy));
        life.switchOff();
    }
    TestSupport::writeFile(path("out"), "mine");
    EXPECT_EQ(recover(copy, path("out")).outcome, RecoveryOutcome::NotWritten);
    EXPECT_EQ(TestSupport::readFile(path("out")), "mine");
    EXPECT_FALSE(QFile::exists(path("out.part")));
}

TEST_F(Recovering, WithoutAJournalTimesLieEvenlyBetweenTheStartInTheNameAndTheLastWrite)
{
    const QString copy = path("Rx__2018-09-19__12-03-07_UTC-00-00.tmp");
    {
        Life life(m_directory.path());
        life.switchOn();
        for (std::uint64_t number = 0; number < 100; ++number) {
            life.change(number);
        }
        life.switchOff();
        std::string bytes = TestSupport::readFile(life.fileName());
        const auto header = TestSupport::parseRecording(bytes).header;
        bytes.replace(0, 500, std::string(499, '0') + '#');
        bytes.resize(static_cast<std::size_t>(header.timeTable));
        TestSupport::writeFile(copy, bytes);
        QFile file(copy);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        const qint64 oneMinute = 60'000;
        ASSERT_TRUE(file.setFileTime(
            QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(RecorderTests::Noon / 1'000) + oneMinute),
            QFileDevice::FileModificationTime));
    }
    const Recovery recovery = recover(copy, path("out"));
    EXPECT_EQ(recovery.outcome, RecoveryOutcome::SomethingLost);
    const auto recording = TestSupport::parseRecording(TestSupport::readFile(path("out")));
    EXPECT_EQ(recording.header.startMs, RecorderTests::Noon / 1'000);
    EXPECT_EQ(recording.records.back().time, 60'000U);
    EXPECT_EQ(recording.records.front().time, 60'000U / recording.records.size());
}

TEST_F(Recovering, TheTimeTableIsUsedWhenTheFileWasClosedButForItsHeader)
{
    std::string bytes = closedAfter(100);
    const auto closed = TestSupport::parseRecording(bytes);
    bytes.replace(0, 500, std::string(499, '0') + '#');
    TestSupport::writeFile(path("a.tmp"), bytes);
    recover(path("a.tmp"), path("out"));
    const auto found = TestSupport::parseRecording(TestSupport::readFile(path("out")));
    ASSERT_EQ(found.records.size(), closed.records.size());
    for (std::size_t i = 0; i < found.records.size(); ++i) {
        EXPECT_EQ(found.records[i].time, closed.records[i].time);
    }
}

// What the feed did that was killed: every change but those of a spectrum, at each thousandth, half a dB less.
TEST_F(Recovering, AJournalOfAnOlderVersionGivesEveryRecord)
{
    TestSupport::writeBytes(path("a.tmp"), QByteArray(499, '0') + '#');
    TestSupport::writeBytes(path("a.tmp.journal"), qUncompress(TestSupport::readBytes(OLDER_JOURNAL)));

    const Recovery recovery = recover(path("a.tmp"), path("out"));
    EXPECT_EQ(recovery.outcome, RecoveryOutcome::Whole);
    EXPECT_TRUE(recovery.journalComplete);
    EXPECT_EQ(recovery.times.kept, 4303U);
    std::vector<std::string> levels;
    for (const auto& record : TestSupport::parseRecording(TestSupport::readFile(path("out"))).records) {
        if (record.data.rfind("3;-", 0) == 0) {
            levels.push_back(record.data);
        }
    }
    ASSERT_EQ(levels.size(), 4296U);
    EXPECT_EQ(levels.front(), "3;-30,-150,50");
    std::size_t at = 0;
    for (int change = 1; change < 4300; ++change) {
        if (change % 1000 != 0) {
            const std::string level = QString::number(-30 - change % 50 * 0.5).toStdString();
            ASSERT_EQ(levels[++at], "3;" + level + ",-150,50") << change;
        }
    }
}

}  // namespace
}  // namespace CrashTests
