// The real program with the real plug-in, while it runs; what it prints and records is tested in tests/cases.
#include "programtest.h"
#include "support/documentexamples.h"

namespace RecStation {
namespace {

using namespace testing;

/// A path with its drive, as the programs run in folders that may be on another.
QString whole(const char* path)
{
    return QFileInfo(QString::fromUtf8(path)).absoluteFilePath();
}

const QByteArray smallFeed = R"({"at": 0, "path": "/DEVICE_CAPTION", "create": "text", "value": "Nürnberg Süd"}
{"at": 0, "path": "/Devices/Rx1/Adm/DRIVERNAME", "create": "text", "value": "RX 1"}
{"at": 0, "path": "/LEVEL", "create": "number", "value": -30, "lower": -150, "upper": 50}
{"at": 0, "record": "On"}
{"at": 1500, "path": "/LEVEL", "set": -31.5}
{"at": 2500, "path": "/LEVEL", "set": -40.25}
{"at": 4000, "record": "Off"}
)";

TEST_F(ProgramTest, TheExamplesOfTheFeedDocumentRun)
{
    const auto examples = TestSupport::documentExamples(FEED_DOCUMENT, "jsonl", true);
    ASSERT_GE(examples.size(), 6U);
    for (const std::string& example : examples) {
        const bool records = example.find("\"record\"") != std::string::npos;
        const Result result = runFeed(QByteArray::fromStdString(example));
        EXPECT_EQ(result.exitCode, records ? 0 : 3) << example << result.err;
        EXPECT_EQ(result.summary().at("sources")[0].at("bad"), 0) << example << result.err;
    }
}

TEST_F(ProgramTest, TheProgressCountsWhatIsStillInTheRecordersMemory)
{
    QProcess process;
    start(process, {"feed", "-", "--start", "1970-01-01T00:00:01Z"});
    QByteArray feed = R"({"at": 0, "path": "/DEVICE_CAPTION", "create": "text", "value": "A"}
{"at": 0, "path": "/LEVEL", "create": "number"}
{"at": 0, "record": "On"}
)";
    for (int i = 1; i <= 2'000; ++i) {
        feed += QStringLiteral("{\"at\": %1, \"path\": \"/LEVEL\", \"set\": %2}\n").arg(10 * i).arg(i).toLatin1();
    }
    process.write(feed);
    process.setReadChannel(QProcess::StandardError);
    QByteArray messages;
    // The lines come every five seconds, when something changes: far less than what is handed to the system at a time.
    for (int at = 20'010; !messages.contains(" kB, "); at += 10) {
        process.write(QStringLiteral("{\"at\": %1, \"path\": \"/LEVEL\", \"set\": %1}\n").arg(at).toLatin1());
        process.waitForReadyRead(100);
        messages += process.readAllStandardError();
        ASSERT_LT(at, 30'000) << messages.toStdString();
        ASSERT_FALSE(messages.contains(" 500 bytes")) << messages.toStdString();
    }
    EXPECT_EQ(finish(process).exitCode, 0);
}

TEST_F(ProgramTest, ADirectoryThatCannotBeWrittenIsRefused)
{
    // Not even root can create files there.
    const QString directory = whole("/proc");
    if (!QFileInfo::exists(directory)) {
        GTEST_SKIP() << "needs a read-only directory";
    }
    const Result result = run({"-o", directory});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("the directory " + directory.toStdString() + " cannot be written"));
}

TEST_F(ProgramTest, ThePlugInCanBeNamed)
{
    EXPECT_EQ(runFeed(smallFeed, {"--plugin", whole(PLUGIN)}).exitCode, 0);
}

#if !defined(_WIN32)

TEST_F(ProgramTest, AFileThatSomebodyPipesIsReadOnce)
{
    const Result result = run({"--config", "/dev/stdin", "--print-config"}, "[[source]]\ntype = 'sim'\nseed = 4\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("seed = \"4\""));
}

class InterruptedTest : public ProgramTest {
protected:
    /// Starts a program and waits until it records. @param more input, behind the line that marks that moment
    void record(QProcess& process, const QStringList& arguments, const QByteArray& more = {})
    {
        start(process, arguments);
        process.write("{\"at\": 0, \"record\": \"On\"}\nmark\n" + more);
        waitForMessage(process, "feed: line 2");
    }
};

TEST_F(InterruptedTest, SigtermWhileItWaitsForInputClosesAndRenamesTheRecording)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        QProcess process;
        record(process, {"feed", "--json"});
        ASSERT_THAT(files("*.tmp"), SizeIs(1));
        endBySignal(process, signal);
        EXPECT_EQ(process.exitCode(), 3);  // for the line that marked the moment
        EXPECT_THAT(files("*.tmp"), IsEmpty());
        const auto summary = nlohmann::json::parse(process.readAllStandardOutput().toStdString());
        EXPECT_EQ(summary.at("files")[0].at("state"), "finished");
    }
}

TEST_F(InterruptedTest, SigtermWhileItWaitsForTheTimeOfAStepClosesAndRenamesTheRecording)
{
    QProcess process;
    record(process, {"--speed", "1", "feed"}, "{\"at\": 1e9, \"record\": \"Off\"}\n");
    process.closeWriteChannel();
    endBySignal(process, SIGTERM);
    EXPECT_THAT(files("*.tmp"), IsEmpty());
    EXPECT_THAT(files("*.rec"), SizeIs(1));
}

TEST_F(InterruptedTest, ALineThatASignalCutsShortIsNoBadLine)
{
    QProcess process;
    record(process, {"feed", "--json"}, "{\"at\": 1, \"rec");
    endBySignal(process, SIGTERM);
    const auto summary = nlohmann::json::parse(process.readAllStandardOutput().toStdString());
    EXPECT_EQ(summary.at("sources")[0].at("bad"), 1);
}

TEST_F(ProgramTest, AFileThatCouldNotBeWrittenToItsEndIsReported)
{
    const Result result = runLimited(40, "--json sim --duration 20s");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.err, HasSubstr("not completely written, perhaps because the disk is full"));
    EXPECT_THAT(std::string(result.summary().at("files")[0].at("problem")), HasSubstr("not completely written"));
}

TEST_F(InterruptedTest, AFileTakenAwayBeforeTheInputEndsIsSavedAndReported)
{
    QProcess process;
    record(process, {"feed", "--json"});
    ASSERT_TRUE(QFile::remove(path(files("*.tmp").value(0))));
    const Result result = finish(process);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.summary().at("files")[0].at("state"), "finished");
    EXPECT_THAT(std::string(result.summary().at("files")[0].at("problem")), HasSubstr("was deleted"));
}

TEST_F(ProgramTest, AnOutputThatCannotBeWrittenIsTold)
{
    for (const QStringList& arguments : {QStringList{"check", "sim"}, QStringList{"--print-config", "sim"}}) {
        QProcess process;
        process.setStandardOutputFile("/dev/full");
        start(process, arguments);
        const Result result = finish(process);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.err, HasSubstr("to the standard output"));
    }
}

#endif

}  // namespace
}  // namespace RecStation
