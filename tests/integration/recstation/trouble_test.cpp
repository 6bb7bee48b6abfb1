// What goes wrong around a recording while it is made: directories, clocks, and files that somebody takes away.
#include <QElapsedTimer>

#include <recording2/inspection/inspection.h>
#include <recording2/inspection/verify/verification.h>
#include <system/nativefile.h>

#include "programtest.h"

namespace RecStation {
namespace {

namespace Inspection = Recording2::Inspection;
using namespace testing;

TEST_F(ProgramTest, UnfinishedOutputsOfKilledCopiesAreRemovedAndNamed)
{
    const auto write = [this](const char* name, const QByteArray& bytes) {
        TestSupport::writeBytes(path(name), bytes);
    };
    const QByteArray blankHeader = QByteArray(499, '0') + '#';
    write("a.rec.part", blankHeader + "types");
    write("a.rec.part2", {});
    write("inuse.rec.part", blankHeader);
    write("download.rec.part", "2#0#and somebody else's");
    write("other.part", {});
    System::NativeFile writing;
    ASSERT_EQ(writing.open(path("inuse.rec.part").toStdString(), System::Access::Read), 0);
    ASSERT_EQ(writing.lock(), 0);
    const Result result = runFeed("{\"at\": 0, \"record\": \"On\"}\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, AllOf(HasSubstr("a.rec.part, which"), HasSubstr("a.rec.part2, which"),
                                  Not(HasSubstr("inuse")), Not(HasSubstr("download")), Not(HasSubstr("other"))));
    EXPECT_EQ(files("*.part*"), (QStringList{"download.rec.part", "inuse.rec.part", "other.part"}));
}

#if !defined(_WIN32)

bool isSound(const QString& path)
{
    const Inspection::Verification found = Inspection::verify(path.toStdString());
    return found.readability == Inspection::Readability::Ok && found.count(Inspection::Severity::Damage) == 0;
}

class LiveTest : public ProgramTest {
protected:
    /// A recording of a map that goes on until the feed ends.
    void begin(const QString& program = QStringLiteral(RECSTATION), const QStringList& before = {})
    {
        start(m_process, before + QStringList{"--json", "feed", "--start", "2026-01-02T03:04:05Z"}, program);
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
        for (; !messages.contains(message) && patience.elapsed() < PatienceMs; ++sent) {
            post(spectra(1));
            m_process.waitForReadyRead(lookMs);
            messages += m_process.readAllStandardError();
        }
        EXPECT_TRUE(messages.contains(message)) << messages.toStdString();
        return sent;
    }
    [[nodiscard]] QString temporary() const { return path(files("*.tmp").value(0)); }
    /// Ends the input of a recording to which something happened. @return its files, as the summary tells of them
    nlohmann::json endInTrouble()
    {
        const Result result = finish(m_process);
        EXPECT_EQ(result.exitCode, 3);
        return result.summary().at("files");
    }
    [[nodiscard]] static std::uint64_t records(const nlohmann::json& files)
    {
        std::uint64_t all = 0;
        for (const auto& file : files) {
            all += file.at("records").get<std::uint64_t>();
        }
        return all;
    }
    /// What was recorded before the trouble and what was recorded after it.
    void expectTwoSoundRecordings()
    {
        EXPECT_THAT(files("*.rec"), SizeIs(2));
        for (const QString& name : files("*.rec")) {
            EXPECT_TRUE(isSound(path(name))) << name.toStdString();
        }
    }

    QProcess m_process;

private:
    int m_lines = 0;
    int m_atMs = 100;
};

TEST_F(LiveTest, AHangUpClosesTheRecordings)
{
    begin();
    endBySignal(m_process, SIGHUP);
    EXPECT_THAT(files("*.rec"), SizeIs(1));
}

TEST_F(LiveTest, AHangUpThatIsIgnoredAtTheStartStaysIgnored)
{
    begin("sh", {"-c", "trap '' HUP; exec \"$0\" \"$@\"", RECSTATION});
    ASSERT_EQ(kill(static_cast<pid_t>(m_process.processId()), SIGHUP), 0);
    sendSpectra(2);
    EXPECT_EQ(records(finish(m_process).summary().at("files")), 3U);
}

TEST_F(LiveTest, ADeletedRecordingIsSavedAndRecordingGoesOn)
{
    begin();
    sendSpectra(40);
    ASSERT_TRUE(QFile::remove(temporary()));
    waitForMessage(m_process, "was deleted while it was recorded; it was saved as");
    sendSpectra(2);
    EXPECT_EQ(records(endInTrouble()), 1U + 40U + 1U + 2U);
    expectTwoSoundRecordings();
}

TEST_F(LiveTest, ARecordingWhoseDirectoryIsMovedIsWholeThereAndRecordingGoesOn)
{
    const QString directory = path("in");
    const QString moved = path("away");
    ASSERT_TRUE(QDir().mkdir(directory));
    begin(RECSTATION, {"-o", directory});
    sendSpectra(3);
    ASSERT_TRUE(QDir().rename(directory, moved));
    waitForMessage(m_process, "was moved to ");
    sendSpectra(2);
    EXPECT_EQ(records(endInTrouble()), 1U + 3U + 1U + 2U);
    const QStringList there = QDir(moved).entryList({"*.tmp"}, QDir::Files);
    ASSERT_THAT(there, SizeIs(1));
    EXPECT_TRUE(isSound(QDir(moved).filePath(there.front())));
    EXPECT_THAT(QDir(directory).entryList({"*.rec"}, QDir::Files), SizeIs(1));
}

TEST_F(LiveTest, ARecordingThatIsCutKeepsWhatIsWholeAndTheLossIsCounted)
{
    begin();
    sendSpectra(120);
    ASSERT_TRUE(QFile::resize(temporary(), 100'000));
    const int more = sendSpectraUntil("was cut while it was recorded");
    sendSpectra(2);
    const nlohmann::json recorded = endInTrouble();
    ASSERT_THAT(recorded, SizeIs(2));
    EXPECT_THAT(std::string(recorded[0].at("problem")), HasSubstr("records, "));
    expectTwoSoundRecordings();
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
    ASSERT_TRUE(QFile::resize(temporary() + ".journal", GetParam()));
    post(spectra(1));  // touches the memory that is gone
    waitForMessage(m_process, "was cut while it was recorded");
    sendSpectra(2);
    EXPECT_GT(endInTrouble()[0].at("records"), 20U);
    EXPECT_THAT(files("*.tmp*"), IsEmpty());
    expectTwoSoundRecordings();
}

INSTANTIATE_TEST_SUITE_P(Sizes, JournalCutTest, testing::Values(0, 5'000, 100'000));

TEST_F(LiveTest, ADeletedJournalIsToldAndANewFileHasOneAgain)
{
    begin();
    sendSpectra(2);
    ASSERT_TRUE(QFile::remove(temporary() + ".journal"));
    waitForMessage(m_process, "was taken away while it was recorded; nothing was lost");
    sendSpectra(1);
    EXPECT_TRUE(QFileInfo::exists(temporary() + ".journal"));
    EXPECT_EQ(records(endInTrouble()), 1U + 2U + 1U + 1U);
}

#endif

}  // namespace
}  // namespace RecStation
