// Recordings that an earlier run left behind, and recordings that end before their time: the real program.
#include <recording2/inspection/inspection.h>

#include "programtest.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace RecStation {
namespace {

namespace Inspection = Recording2::Inspection;
using namespace testing;

class UnfinishedTest : public ProgramTest {
protected:
    /// Leaves a recording with changes unfinished, as a crash does.
    void crash()
    {
        QProcess process;
        beginLevels(process, {});
        process.kill();
        ASSERT_TRUE(process.waitForFinished(PatienceMs));
        ASSERT_THAT(files("*.tmp"), SizeIs(1));
    }
    Result nextRun(const QStringList& arguments = {})
    {
        return runFeed("{\"at\": 0, \"record\": \"On\"}\n", arguments);
    }
    [[nodiscard]] QByteArray bytes(const QString& name) const { return TestSupport::readBytes(path(name)); }
    void write(const QString& name, const QByteArray& content) const { TestSupport::writeBytes(path(name), content); }
    [[nodiscard]] QStringList putAway() const { return QDir(path("recovered")).entryList(QDir::Files); }
    /// What a run says of the one recording that it recovered.
    static nlohmann::json recoveredBy(const Result& run)
    {
        const nlohmann::json recovered = run.summary().value("recovered", nlohmann::json::array());
        EXPECT_THAT(recovered, SizeIs(1)) << run.err;
        return recovered.at(0);
    }
    static Inspection::Summary look(const nlohmann::json& recording)
    {
        return Inspection::inspect(recording.get<std::string>());
    }
};

TEST_F(UnfinishedTest, TheNextRunRecoversWhatAKilledOneLeft)
{
    crash();
    const QString left = files("*.tmp").value(0);
    const QByteArray before = bytes(left);
    const Result result = nextRun();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const nlohmann::json recovered = recoveredBy(result);
    EXPECT_EQ(recovered.at("whole"), true);
    EXPECT_EQ(recovered.at("byJournal"), true);
    EXPECT_EQ(recovered.at("records"), 3);
    const Inspection::Summary summary = look(recovered.at("recovered"));
    ASSERT_THAT(summary.times, SizeIs(3));
    EXPECT_EQ(summary.times[1].timeMs, 1'500U);
    EXPECT_EQ(summary.times[2].timeMs, 2'500U);
    EXPECT_THAT(summary.findings, IsEmpty());
    EXPECT_THAT(result.err, AllOf(HasSubstr("recovered "), HasSubstr("nothing was lost")));
    EXPECT_THAT(files("*.rec"), SizeIs(2));  // and the run's own
    EXPECT_THAT(files("*.tmp*"), IsEmpty());
    EXPECT_EQ(putAway(), QStringList({left, left + ".journal"}));
    EXPECT_EQ(bytes(QStringLiteral("recovered/") + left), before);
}

TEST_F(UnfinishedTest, ARecordingIsRecoveredOnce)
{
    crash();
    nextRun();
    const Result again = nextRun();
    EXPECT_FALSE(again.summary().contains("recovered"));
    EXPECT_THAT(again.err, Not(HasSubstr("recovered")));
}

TEST_F(UnfinishedTest, OriginalsOfTheSameNameDoNotReplaceEachOther)
{
    for (int round = 0; round < 2; ++round) {
        crash();
        QDir directory(path(QString()));
        nextRun();
        for (const QString& name : files("*.rec")) {  // so that the next recording gets the same name
            ASSERT_TRUE(directory.remove(name));
        }
    }
    EXPECT_THAT(putAway(), SizeIs(4));
}

TEST_F(UnfinishedTest, NoRecoverLeavesThem)
{
    crash();
    const QStringList before = files("*.tmp*");
    const Result result = nextRun({"--no-recover"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(files("*.tmp*"), before);
    EXPECT_FALSE(result.summary().contains("recovered"));
    EXPECT_FALSE(QFileInfo::exists(path("recovered")));
}

TEST_F(UnfinishedTest, WithoutAJournalWhatReachedTheFileIsRecoveredAndTheTimesAreToldAsLost)
{
    QProcess process;
    start(process, {"--journal", "off", "feed", "--start", "2026-01-02T03:04:05Z"});
    QByteArray feed =
        "{\"at\": 0, \"path\": \"/LEVEL\", \"create\": \"text\", \"value\": \"x\"}\n"
        "{\"at\": 0, \"record\": \"On\"}\n";
    for (int i = 0; i < 40; ++i) {
        feed += "{\"at\": 2000, \"path\": \"/LEVEL\", \"set\": \"" +
                QByteArray(10'000, static_cast<char>('a' + i % 26)) + "\"}\n";
    }
    process.write(feed + "mark\n");
    waitForMessage(process, "feed: line 43");
    process.kill();
    ASSERT_TRUE(process.waitForFinished(PatienceMs));
    EXPECT_THAT(files("*.tmp*"), SizeIs(1));  // no journal
    const Result result = nextRun();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const nlohmann::json recovered = recoveredBy(result);
    ASSERT_TRUE(recovered.contains("recovered")) << result.err;
    EXPECT_EQ(recovered.at("whole"), false);
    EXPECT_EQ(recovered.at("byJournal"), false);
    EXPECT_GT(recovered.at("records"), 20);
    EXPECT_LT(recovered.at("records"), 41);
    EXPECT_THAT(result.err, AllOf(HasSubstr("lost: "), HasSubstr("the exact time of ")));
}

TEST_F(UnfinishedTest, ARecordingThatAnotherRunIsWritingStaysAndIsTold)
{
    QProcess other;
    beginLevels(other, {});
    const QStringList live = files("*.tmp*");
    const Result result = nextRun();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.err, HasSubstr("A running program is writing this recording"));
    EXPECT_EQ(files("*.tmp*"), live);
    EXPECT_THAT(files("*.rec"), SizeIs(1));
    EXPECT_EQ(finish(other).exitCode, 3);  // for the line that marked the moment
    EXPECT_THAT(files("*.tmp*"), IsEmpty());
    EXPECT_THAT(files("*.rec"), SizeIs(2));
}

TEST_F(UnfinishedTest, ARecordingWhoseClosingFailedIsRecoveredFromItsJournal)
{
    crash();
    const QString stem = files("*.tmp").value(0).chopped(4);
    QDir directory(path(QString()));
    ASSERT_TRUE(directory.rename(stem + ".tmp", stem + ".rec"));
    const nlohmann::json recovered = recoveredBy(nextRun());
    EXPECT_EQ(recovered.at("whole"), true);
    EXPECT_EQ(look(recovered.at("recovered")).times.size(), 3U);
    EXPECT_EQ(QFileInfo(QString::fromStdString(recovered.at("recovered"))).fileName(), stem + ".rec")
        << "the name that an archive waits for";
    EXPECT_EQ(putAway(), QStringList({stem + ".rec", stem + ".tmp.journal"}));
}

TEST_F(UnfinishedTest, OfAClosedRecordingOnlyTheJournalIsPutAway)
{
    crash();
    const QString stem = files("*.tmp").value(0).chopped(4);
    const QByteArray journal = bytes(stem + ".tmp.journal");
    const std::string made = recoveredBy(nextRun()).at("recovered");
    write(stem + ".tmp.journal", journal);  // as if only removing it had failed
    const int recordings = files("*.rec").size();
    const Result result = nextRun();
    const std::string found = recoveredBy(result).at("recovered");
    EXPECT_EQ(QDir::fromNativeSeparators(QString::fromStdString(found)),
              QDir::fromNativeSeparators(QString::fromStdString(made)));
    EXPECT_THAT(result.err, HasSubstr("is whole; its journal was moved to"));
    EXPECT_THAT(files("*.tmp*"), IsEmpty());
    EXPECT_EQ(files("*.rec").size(), recordings + 1);
}

#if !defined(_WIN32)

TEST_F(UnfinishedTest, WhatIsNoFileIsToldAndTheRestIsRecovered)
{
    crash();
    const QString left = files("*.tmp").value(0);
    ASSERT_EQ(mkfifo(path("a.tmp").toUtf8().constData(), 0600), 0);
    write("b.tmp", bytes(left));
    ASSERT_EQ(mkfifo(path("b.tmp.journal").toUtf8().constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(path(left), path("c.tmp")));
    ASSERT_TRUE(QFile::link("nowhere", path("d.tmp")));
    ASSERT_TRUE(QDir(path(QString())).mkdir("e.tmp"));
    ASSERT_TRUE(QFile::link("/dev/zero", path("f.tmp.journal")));
    const Result result = nextRun();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.err,
                AllOf(HasSubstr("a.tmp is no ordinary file"), HasSubstr("b.tmp.journal is no ordinary file"),
                      HasSubstr("c.tmp is a link"), HasSubstr("d.tmp is a link"), HasSubstr("e.tmp is a directory"),
                      HasSubstr("f.tmp.journal is a link"), HasSubstr("recovered " + path(QString()).toStdString())));
    EXPECT_EQ(putAway(), QStringList({left, left + ".journal"}));
    EXPECT_TRUE(QFileInfo(path("c.tmp")).isSymLink());
}

TEST_F(UnfinishedTest, OriginalsAreNotPutWhereALinkLeads)
{
    crash();
    const QString left = files("*.tmp").value(0);
    const QTemporaryDir elsewhere;
    ASSERT_TRUE(QFile::link(elsewhere.path(), path("recovered")));
    const Result result = nextRun();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.err, HasSubstr("recovered, where its original is to go, is no directory"));
    EXPECT_EQ(files("*.tmp"), QStringList(left));
    EXPECT_TRUE(QDir(elsewhere.path()).isEmpty());
}

TEST_F(UnfinishedTest, ARecorderThatCannotWriteIsToldAtOnceAndTheOtherGoesOn)
{
    const QByteArray here = "RecordingPath = '" + path(QString()).toUtf8() + "'\n";
    write("station.toml", "[big]\nValuePath = '/Big'\nStatusValuePath = '/BigS'\n" + here +
                              "[big.Values]\nLEVEL = '/Big/Level'\n" +
                              "[small]\nValuePath = '/Small'\nStatusValuePath = '/SmallS'\n" + here +
                              "[small.Values]\nLEVEL = '/Small/Level'\n");
    QByteArray feed =
        "{\"at\": 0, \"path\": \"/Big/Level\", \"create\": \"text\", \"value\": \"x\"}\n"
        "{\"at\": 0, \"path\": \"/Big/Adm/DRIVERNAME\", \"create\": \"text\", \"value\": \"big\"}\n"
        "{\"at\": 0, \"path\": \"/Small/Level\", \"create\": \"number\", \"value\": 1}\n"
        "{\"at\": 0, \"record\": \"On\", \"recorder\": \"big\"}\n"
        "{\"at\": 1000, \"record\": \"On\", \"recorder\": \"small\"}\n";
    for (int i = 0; i < 40; ++i) {
        feed += "{\"at\": 2000, \"path\": \"/Big/Level\", \"set\": \"" +
                QByteArray(50'000, static_cast<char>('a' + i % 26)) + "\"}\n";
    }
    feed += "{\"at\": 3000, \"path\": \"/Small/Level\", \"set\": 2}\n";
    write("changes.jsonl", feed);
    const Result result =
        runLimited(1200, "--config station.toml --json feed changes.jsonl --start 2026-01-02T03:04:05Z");
    EXPECT_EQ(result.exitCode, 3) << result.err;
    EXPECT_THAT(result.err,
                AllOf(HasSubstr("big: recording stopped, "), HasSubstr("cannot be written: File too large")));
    const nlohmann::json recorded = result.summary().at("files");
    ASSERT_THAT(recorded, SizeIs(2));
    EXPECT_THAT(std::string(recorded[0].at("problem")), HasSubstr("File too large"));
    EXPECT_FALSE(recorded[1].contains("problem")) << recorded;
    EXPECT_EQ(recorded[1].at("records"), 2);
    const nlohmann::json recovered = recoveredBy(nextRun());  // no file could grow, so that closing had failed too
    EXPECT_EQ(recovered.at("whole"), true) << recovered;
    EXPECT_GT(recovered.at("records"), 20);
}

TEST_F(UnfinishedTest, ARunWhoseRecordersHaveAllStoppedEnds)
{
    const Result result = runLimited(40, "sim --duration 1000h");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.err, HasSubstr("the run ends: no recorder is left"));
}

#endif

}  // namespace
}  // namespace RecStation
