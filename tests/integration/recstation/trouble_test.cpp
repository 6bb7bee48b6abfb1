// What goes wrong around a recording while it is made: directories, clocks, and files that somebody takes away.
#include <csignal>
#include <string>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <recording2/inspection/inspection.h>
#include <recording2/inspection/verify/verification.h>
#include <system/nativefile.h>

#include "programtest.h"

namespace recstation {
namespace {

namespace Inspection = Recording2::Inspection;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

bool isSound(const QString& path)
{
    const Inspection::Verification found = Inspection::verify(path.toStdString());
    return found.readability == Inspection::Readability::Ok && found.count(Inspection::Severity::Damage) == 0;
}

class TroubleTest : public ProgramTest {
protected:
    QString configure(const QString& receiverDirectory, const QString& finderDirectory)
    {
        QFile file(path(QStringLiteral("station.toml")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("[receiver]\nValuePath = '/Devices/Rx1'\nStatusValuePath = '/Devices/Rx1Status'\n"
                                  "RecordingPath = '%1'\n[df]\nValuePath = '/Devices/Df1'\nStatusValuePath = "
                                  "'/Devices/Df1Status'\nRecordingPath = '%2'\nRecordDF = true\n")
                       .arg(receiverDirectory, finderDirectory)
                       .toUtf8());
        return file.fileName();
    }
};

TEST_F(TroubleTest, ARecorderWithoutItsDirectoryDoesNotEndTheOthers)
{
    const QString config = configure(m_directory.path(), path(QStringLiteral("missing")));
    const Result result = run({QStringLiteral("--config"), config, QStringLiteral("--json"), QStringLiteral("sim"),
                               QStringLiteral("--duration"), QStringLiteral("2s")});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.messages, HasSubstr("df: cannot record: the directory"));
    const nlohmann::json summary = result.summary();
    ASSERT_THAT(summary.at("files"), SizeIs(1));
    EXPECT_EQ(summary.at("files")[0].at("recorder"), "receiver");
    EXPECT_EQ(summary.at("files")[0].at("state"), "finished");
    ASSERT_THAT(summary.at("notRecorded"), SizeIs(1));
    EXPECT_EQ(summary.at("notRecorded")[0].at("recorder"), "df");
}

TEST_F(TroubleTest, WhereNoRecorderHasItsDirectoryNothingIsRecorded)
{
    const QString config = configure(path(QStringLiteral("missing")), path(QStringLiteral("also_missing")));
    const Result result = run({QStringLiteral("--config"), config, QStringLiteral("sim")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages, HasSubstr("missing does not exist"));
}

TEST_F(TroubleTest, AFeedThatNamesAMissingDirectoryLosesThatRecorderOnly)
{
    const QByteArray missing = R"({"at": 0, "path": "/Devices/Df1Status/REC_FILEPATH", "set": "/no/such/place"}
{"at": 0, "record": "On", "recorder": "df"}
)";
    const Result both = runFeed(missing + "{\"at\": 1, \"record\": \"On\", \"recorder\": \"receiver\"}\n");
    EXPECT_EQ(both.exitCode, 3);
    EXPECT_THAT(both.messages, HasSubstr("df: cannot record: the directory /no/such/place does not exist"));
    EXPECT_THAT(files("*.rec"), SizeIs(1));
    const Result none = runFeed(missing);
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_THAT(none.messages, HasSubstr("nothing could be recorded"));
}

TEST_F(TroubleTest, ARecorderThatIsSwitchedOnBehindTheHostsBackAndCannotRecordIsOffAgain)
{
    const Result result = runFeed(R"({"at": 0, "record": "On", "recorder": "receiver"}
{"at": 0, "path": "/Devices/Df1Status/REC_FILEPATH", "set": "/no/such/place"}
{"at": 1, "path": "/Devices/Df1/REC_STATUS", "select": "On"}
{"at": 2, "path": "/LEVEL", "create": "number"}
)");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.messages, HasSubstr("df: cannot record: the file "));
    EXPECT_THAT(result.summary().at("files"), SizeIs(1));
}

TEST_F(TroubleTest, AClockThatNoNameCanTellIsRefused)
{
    for (const char* time : {"1970-01-01T00:00:00.5Z", "2501-01-01T00:00:00Z", "9999-01-01T00:00:00Z"}) {
        const Result result = run({QStringLiteral("sim"), QStringLiteral("--duration"), QStringLiteral("1s"),
                                   QStringLiteral("--start"), QLatin1String(time)});
        EXPECT_EQ(result.exitCode, 2) << time;
        EXPECT_THAT(result.messages, HasSubstr("the clock shows")) << time;
    }
    EXPECT_THAT(files("*.rec"), IsEmpty());
    const Result first = run({QStringLiteral("sim"), QStringLiteral("--duration"), QStringLiteral("1s"),
                              QStringLiteral("--start"), QStringLiteral("1970-01-01T00:00:01Z")});
    EXPECT_EQ(first.exitCode, 0) << first.messages;
}

TEST_F(TroubleTest, UnfinishedOutputsOfKilledCopiesAreRemovedAndNamed)
{
    const auto write = [this](const char* name, const QByteArray& bytes) {
        QFile file(path(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    const QByteArray blankHeader = QByteArray(499, '0') + '#';
    write("a.rec.part", blankHeader + "types");
    write("a.rec.part2", {});
    write("inuse.rec.part", blankHeader);
    write("download.rec.part", "2#0#and somebody else's");
    write("other.part", {});
    System::NativeFile writing;
    ASSERT_EQ(writing.open(path(QStringLiteral("inuse.rec.part")).toStdString(), System::Access::Read), 0);
    ASSERT_EQ(writing.lock(), 0);
    const Result result = runFeed("{\"at\": 0, \"record\": \"On\"}\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.messages, AllOf(HasSubstr("a.rec.part, which"), HasSubstr("a.rec.part2, which"),
                                       Not(HasSubstr("inuse")), Not(HasSubstr("download")), Not(HasSubstr("other"))));
    EXPECT_EQ(files("*.part*"), (QStringList{QStringLiteral("download.rec.part"), QStringLiteral("inuse.rec.part"),
                                             QStringLiteral("other.part")}));
}

TEST_F(TroubleTest, SweepsThatGoBackGiveASoundFileAndATold)
{
    QFile file(path(QStringLiteral("sweep.csv")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (const char* time : {"00:00:30", "00:00:05", "00:00:06", "00:00:31"}) {
        file.write(QByteArray("2026-01-02, ") + time + ", 430000000, 430100000, 25000.00, 1, -50, -51, -52, -53\n");
    }
    file.close();
    const QStringList arguments = {QStringLiteral("--json"), QStringLiteral("sweep"), file.fileName()};
    const Result result = run(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_THAT(result.messages, HasSubstr("sweep: the times of 2 rows go back, by up to 25.000 s"));
    const QString recorded = QString::fromStdString(result.summary().at("files")[0].at("path"));
    EXPECT_TRUE(isSound(recorded));
    const Inspection::Summary found = Inspection::inspect(recorded.toStdString());
    EXPECT_EQ(found.header.stopMs - found.header.startMs, 1'000U);

    const Result strict = run(arguments + QStringList{QStringLiteral("--strict")});
    EXPECT_EQ(strict.exitCode, 2);
    EXPECT_THAT(strict.messages, HasSubstr("line 2: its time is 25.000 s earlier"));
}

TEST_F(TroubleTest, AFeedsOwnTimesThatGoBackAreRaisedAndTold)
{
    const QByteArray feed =
        R"({"at": 0, "path": "/Devices/Rx1/Scn/RfSpectrum", "create": "levels", "range": {"start": 4e8, "step": 1e4, "count": 2}}
{"at": 0, "record": "On"}
{"at": 30000, "path": "/Devices/Rx1/Scn/RfSpectrum", "cells": [-1, -2], "time": 30000}
{"at": 30001, "path": "/Devices/Rx1/Scn/RfSpectrum", "cells": [-3, -4], "time": 5000}
)";
    const Result result = runFeed(feed);
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_THAT(result.messages, HasSubstr("feed: the time of 1 row goes back, by up to 25.000 s"));
    EXPECT_TRUE(isSound(QString::fromStdString(result.summary().at("files")[0].at("path"))));
    EXPECT_EQ(runFeed(feed, {QStringLiteral("feed"), QStringLiteral("--strict")}).exitCode, 2);
}

#if !defined(_WIN32)

class LiveTest : public TroubleTest {
protected:
    /// A recording of a map that goes on until the feed ends.
    void begin(const QString& program = QStringLiteral(RECSTATION), const QStringList& before = {})
    {
        start(m_process,
              before + QStringList{QStringLiteral("--json"), QStringLiteral("feed"), QStringLiteral("--start"),
                                   QStringLiteral("2026-01-02T03:04:05Z")},
              program);
        send(
            R"({"at": 0, "path": "/Devices/Rx1/Scn/RfSpectrum", "create": "levels", "range": {"start": 4e8, "step": 1e4, "count": 4096}}
{"at": 0, "record": "On"}
)");
    }
    void post(const QByteArray& lines)
    {
        m_lines += lines.count('\n');
        m_process.write(lines);
    }
    /// Waits until all of it was carried out.
    void send(const QByteArray& lines)
    {
        post(lines + "mark\n");
        waitForMessage(m_process, "feed: line " + QByteArray::number(m_lines) + ":");
    }
    QByteArray spectra(int count)
    {
        QByteArray lines;
        for (int i = 0; i < count; ++i, m_atMs += 10) {
            lines +=
                R"({"at": )" + QByteArray::number(m_atMs) + R"(, "path": "/Devices/Rx1/Scn/RfSpectrum", "cells": [)";
            for (int cell = 0; cell < 4095; ++cell) {
                lines += QByteArray::number(-(cell * 7 + i) % 90 - 20) + ',';
            }
            lines += "-1]}\n";
        }
        return lines;
    }
    void sendSpectra(int count) { send(spectra(count)); }
    /// A receiver goes on: what is cut before anybody looked is seen by the hole that the next ones leave.
    /// @return how many it took until the message came
    int sendSpectraUntil(const QByteArray& message)
    {
        constexpr int lookMs = 50;
        m_process.setReadChannel(QProcess::StandardError);
        QByteArray messages;
        QElapsedTimer patience;
        patience.start();
        int sent = 0;
        for (; !messages.contains(message) && patience.elapsed() < patienceMs; ++sent) {
            post(spectra(1));
            m_process.waitForReadyRead(lookMs);
            messages += m_process.readAllStandardError();
        }
        EXPECT_TRUE(messages.contains(message)) << messages.toStdString();
        return sent;
    }
    [[nodiscard]] QString temporary() const { return path(files("*.tmp").value(0)); }
    Result end()
    {
        Result result = finish(m_process);
        return result;
    }
    [[nodiscard]] static std::uint64_t records(const nlohmann::json& summary)
    {
        std::uint64_t all = 0;
        for (const auto& file : summary.at("files")) {
            all += file.at("records").get<std::uint64_t>();
        }
        return all;
    }

    QProcess m_process;

private:
    int m_lines = 0;
    int m_atMs = 100;
};

TEST_F(LiveTest, AHangUpClosesTheRecordings)
{
    begin();
    ASSERT_EQ(kill(static_cast<pid_t>(m_process.processId()), SIGHUP), 0);
    ASSERT_TRUE(m_process.waitForFinished(patienceMs));
    EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
    EXPECT_THAT(files("*.rec"), SizeIs(1));
}

TEST_F(LiveTest, AHangUpThatIsIgnoredAtTheStartStaysIgnored)
{
    begin(QStringLiteral("sh"),
          {QStringLiteral("-c"), QStringLiteral("trap '' HUP; exec \"$0\" \"$@\""), QStringLiteral(RECSTATION)});
    ASSERT_EQ(kill(static_cast<pid_t>(m_process.processId()), SIGHUP), 0);
    sendSpectra(2);
    const Result result = end();
    EXPECT_EQ(records(result.summary()), 3U);
}

TEST_F(LiveTest, ADeletedRecordingIsSavedAndRecordingGoesOn)
{
    begin();
    sendSpectra(40);
    ASSERT_TRUE(QFile::remove(temporary()));
    waitForMessage(m_process, "was deleted while it was recorded; it was saved as");
    sendSpectra(2);
    const Result result = end();
    EXPECT_EQ(result.exitCode, 3);
    ASSERT_THAT(files("*.rec"), SizeIs(2));
    for (const QString& name : files("*.rec")) {
        EXPECT_TRUE(isSound(path(name))) << name.toStdString();
    }
    EXPECT_EQ(records(result.summary()), 1U + 40U + 1U + 2U);
}

TEST_F(LiveTest, ARecordingWhoseDirectoryIsMovedIsWholeThereAndRecordingGoesOn)
{
    const QString directory = path(QStringLiteral("in"));
    const QString moved = path(QStringLiteral("away"));
    ASSERT_TRUE(QDir().mkdir(directory));
    begin(QStringLiteral(RECSTATION), {QStringLiteral("-o"), directory});
    sendSpectra(3);
    ASSERT_TRUE(QDir().rename(directory, moved));
    waitForMessage(m_process, "was moved to ");
    sendSpectra(2);
    const Result result = end();
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(records(result.summary()), 1U + 3U + 1U + 2U);
    const QStringList there = QDir(moved).entryList({QStringLiteral("*.tmp")}, QDir::Files);
    ASSERT_THAT(there, SizeIs(1));
    EXPECT_TRUE(isSound(QDir(moved).filePath(there.front())));
    EXPECT_THAT(QDir(directory).entryList({QStringLiteral("*.rec")}, QDir::Files), SizeIs(1));
}

TEST_F(LiveTest, ARecordingThatIsCutKeepsWhatIsWholeAndTheLossIsCounted)
{
    begin();
    sendSpectra(120);
    ASSERT_TRUE(QFile::resize(temporary(), 100'000));
    const int more = sendSpectraUntil("was cut while it was recorded");
    sendSpectra(2);
    const Result result = end();
    EXPECT_EQ(result.exitCode, 3);
    const auto recorded = result.summary().at("files");
    ASSERT_THAT(recorded, SizeIs(2));
    EXPECT_THAT(std::string(recorded[0].at("problem")), HasSubstr("records, "));
    for (const QString& name : files("*.rec")) {
        EXPECT_TRUE(isSound(path(name))) << name.toStdString();
    }
    EXPECT_GT(recorded[0].at("records"), 8U);
    EXPECT_LT(recorded[0].at("records"), 121U);
    EXPECT_GE(recorded[1].at("records"), 3U);
    EXPECT_LE(recorded[1].at("records"), 3U + static_cast<unsigned>(more));
}

class JournalCutTest : public LiveTest, public testing::WithParamInterface<qint64> {};

TEST_P(JournalCutTest, EndsNobodyAndTheLossIsCounted)
{
    begin();
    sendSpectra(60);
    ASSERT_TRUE(QFile::resize(temporary() + QStringLiteral(".journal"), GetParam()));
    post(spectra(1));  // touches the memory that is gone
    waitForMessage(m_process, "was cut while it was recorded");
    sendSpectra(2);
    const Result result = end();
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(files("*.rec"), SizeIs(2));
    EXPECT_THAT(files("*.tmp*"), IsEmpty());
    for (const QString& name : files("*.rec")) {
        EXPECT_TRUE(isSound(path(name))) << name.toStdString();
    }
    EXPECT_GT(result.summary().at("files")[0].at("records"), 20U);
}

INSTANTIATE_TEST_SUITE_P(Sizes, JournalCutTest, testing::Values(0, 5'000, 100'000));

TEST_F(LiveTest, ADeletedJournalIsToldAndANewFileHasOneAgain)
{
    begin();
    sendSpectra(2);
    ASSERT_TRUE(QFile::remove(temporary() + QStringLiteral(".journal")));
    waitForMessage(m_process, "was taken away while it was recorded; nothing was lost");
    sendSpectra(1);
    EXPECT_TRUE(QFileInfo::exists(temporary() + QStringLiteral(".journal")));
    const Result result = end();
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(records(result.summary()), 1U + 2U + 1U + 1U);
}

#endif

}  // namespace
}  // namespace recstation
