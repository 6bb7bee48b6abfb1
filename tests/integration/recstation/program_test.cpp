// The real program with the real plug-in, from the command line to the files.
#include <csignal>
#include <string>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <recording2/fileaccess.h>
#include <values/maps.h>
#include <values/recordingtext.h>
#include <values/value.h>

#include "feedexamples.h"
#include "programtest.h"

namespace recstation {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// A path with its drive, as the programs run in folders that may be on another.
QString whole(const char* path)
{
    return QFileInfo(QString::fromUtf8(path)).absoluteFilePath();
}

struct Record {
    unsigned long long timeMs;
    std::int32_t code;
    std::string text;
};

/// A name in UTF-8 as the library takes it.
std::string name8(const std::string& path)
{
#if defined(_WIN32)
    return QString::fromStdString(path).toLatin1().toStdString();
#else
    return path;
#endif
}

std::vector<Record> recordsOf(const std::string& path)
{
    Recording2::CFileAccess file(name8(path).c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    EXPECT_TRUE(file.IsValidFile()) << path;
    std::vector<Record> records;
    Recording2::CVTCmdData record;
    file.readfirst(record, 0);
    file.readTables();  // back to the first record
    unsigned long long next = 0;
    do {
        const unsigned long long time = file.readAndReturnTimeOfCurrentCmd(record);
        if (time == 0) {
            break;
        }
        records.push_back({time, record.cmd(), std::string(record.strData(), record.strDataLen())});
        next = time;
    } while (next != 0);
    return records;
}

const QByteArray smallFeed = R"({"at": 0, "path": "/DEVICE_CAPTION", "create": "text", "value": "Nürnberg Süd"}
{"at": 0, "path": "/Devices/Rx1/Adm/DRIVERNAME", "create": "text", "value": "RX 1"}
{"at": 0, "path": "/LEVEL", "create": "number", "value": -30, "lower": -150, "upper": 50}
{"at": 0, "record": "On"}
{"at": 1500, "path": "/LEVEL", "set": -31.5}
{"at": 2500, "path": "/LEVEL", "set": -40.25}
{"at": 4000, "record": "Off"}
)";

TEST_F(ProgramTest, AFeedBecomesAFileThatReadsBackAsItWasFed)
{
    const Result result = runFeed(smallFeed);
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    const auto recorded = result.summary().at("files");
    ASSERT_THAT(recorded, SizeIs(1));
    EXPECT_EQ(recorded[0].at("state"), "finished");
    const std::string file = recorded[0].at("path");
    EXPECT_THAT(QFileInfo(QString::fromStdString(file)).fileName().toStdString(),
                AllOf(HasSubstr("Nürnberg_Süd__RX_1__2026-01-02__03-04-05_UTC"), HasSubstr(".rec")));

    constexpr std::int32_t levelCode = 36;
    std::vector<std::pair<unsigned long long, double>> levels;
    for (const Record& record : recordsOf(file)) {
        if (record.code == levelCode) {
            values::ValueNumeric<double> level;
            EXPECT_TRUE(level.ApplyRecordedState(record.text, 0, false));
            levels.emplace_back(record.timeMs, level.GetValue());
            EXPECT_EQ(level.GetLowerLimit(), -150);
        }
    }
    ASSERT_THAT(levels, SizeIs(3));
    EXPECT_EQ(levels[0].second, -30);
    EXPECT_EQ(levels[1], std::make_pair(1'500ULL, -31.5));
    EXPECT_EQ(levels[2], std::make_pair(2'500ULL, -40.25));
    EXPECT_EQ(recorded[0].at("records"), recordsOf(file).size());
}

TEST_F(ProgramTest, TheSameFeedGivesTheSameBytes)
{
    const std::string first = runFeed(smallFeed).summary().at("files")[0].at("path");
    const std::string second = runFeed(smallFeed).summary().at("files")[0].at("path");
    ASSERT_NE(first, second);
    QFile one(QString::fromStdString(first));
    QFile other(QString::fromStdString(second));
    ASSERT_TRUE(one.open(QIODevice::ReadOnly) && other.open(QIODevice::ReadOnly));
    EXPECT_EQ(one.readAll(), other.readAll());
}

TEST_F(ProgramTest, ARecordingStillOpenAtTheEndOfTheFeedIsClosed)
{
    const Result result = runFeed("{\"at\": 0, \"record\": \"On\"}\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(files("*.rec"), SizeIs(1));
    EXPECT_THAT(files("*.tmp"), IsEmpty());
}

TEST_F(ProgramTest, OnWhileARecordingRunsBeginsTheNextFile)
{
    const Result result = runFeed("{\"at\": 0, \"record\": \"On\"}\n{\"at\": 100, \"record\": \"On\"}\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.summary().at("files"), SizeIs(2));
    EXPECT_THAT(files("*.rec"), SizeIs(2));
}

TEST_F(ProgramTest, TheExamplesOfTheFeedDocumentRun)
{
    for (const std::string& example : feedExamples(QStringLiteral("jsonl"))) {
        const bool records = example.find("\"record\"") != std::string::npos;
        const Result result = runFeed(QByteArray::fromStdString(example));
        EXPECT_EQ(result.exitCode, records ? 0 : 3) << example << result.messages;
        EXPECT_EQ(result.summary().at("sources")[0].at("bad"), 0) << example << result.messages;
    }
}

TEST_F(ProgramTest, BadLinesAreReportedTheRunGoesOnAndTheExitCodeTells)
{
    const Result result = runFeed("{\"at\": 0, \"record\": \"On\"}\nbroken\n{\"at\": 10, \"record\": \"Off\"}\n");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.messages, HasSubstr("feed: line 2: not JSON"));
    EXPECT_THAT(files("*.rec"), SizeIs(1));
}

TEST_F(ProgramTest, AFeedThatSwitchesNothingOnIsToldSo)
{
    const Result result = runFeed("{\"at\": 0, \"path\": \"/A\", \"create\": \"bool\"}\n");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.messages, HasSubstr("nothing was recorded"));
}

TEST_F(ProgramTest, TheSimulatorRecordsAReceiverAndADirectionFinder)
{
    const Result result =
        run({QStringLiteral("sim"), QStringLiteral("--duration"), QStringLiteral("60s"), QStringLiteral("--json")});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    const auto recorded = result.summary().at("files");
    ASSERT_THAT(recorded, SizeIs(2));
    std::map<std::string, std::map<std::int32_t, int>> counts;
    for (const auto& file : recorded) {
        for (const Record& record : recordsOf(file.at("path"))) {
            ++counts[file.at("recorder")][record.code];
        }
    }
    constexpr std::int32_t rfSpectrum = 1;
    constexpr std::int32_t ifSpectrum = 2;
    constexpr std::int32_t dfSpectrum = 20;
    EXPECT_GT(counts["receiver"][rfSpectrum], 50);
    EXPECT_GT(counts["receiver"][ifSpectrum], 20);
    EXPECT_EQ(counts["receiver"][dfSpectrum], 0);
    EXPECT_GT(counts["df"][dfSpectrum], 250);
    EXPECT_EQ(counts["df"][rfSpectrum] + counts["df"][ifSpectrum], 0);
}

TEST_F(ProgramTest, ASeedGivesTheSameRecordingsAgain)
{
    const QStringList arguments = {QStringLiteral("sim"), QStringLiteral("--duration"), QStringLiteral("10s")};
    run(arguments);
    run(arguments);
    const QStringList names = files("*__RX_1__*.rec");
    ASSERT_THAT(names, SizeIs(2));
    QFile one(path(names[0]));
    QFile other(path(names[1]));
    ASSERT_TRUE(one.open(QIODevice::ReadOnly) && other.open(QIODevice::ReadOnly));
    EXPECT_EQ(one.readAll(), other.readAll());
}

TEST_F(ProgramTest, OnlyTheNamedRecordersAreSwitchedOn)
{
    const Result result = run({QStringLiteral("--record"), QStringLiteral("df"), QStringLiteral("sim"),
                               QStringLiteral("--duration"), QStringLiteral("2s"), QStringLiteral("--json")});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    ASSERT_THAT(result.summary().at("files"), SizeIs(1));
    EXPECT_EQ(result.summary().at("files")[0].at("recorder"), "df");
}

TEST_F(ProgramTest, SeveralSourcesAreRecordedTogether)
{
    const Result result =
        run({QStringLiteral("sim"), QStringLiteral("--duration"), QStringLiteral("3s"), QStringLiteral("--start"),
             QStringLiteral("2026-01-02T03:04:05Z"), QStringLiteral("feed"), QStringLiteral("--start"),
             QStringLiteral("2026-01-02T03:04:05Z"), QStringLiteral("--json")},
            R"({"at": 1000, "path": "/LEVEL", "set": 7.5})");
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_THAT(result.summary().at("sources"), SizeIs(2));
}

TEST_F(ProgramTest, TheOutputDirectoryReplacesTheConfiguredOne)
{
    ASSERT_TRUE(QDir(m_directory.path()).mkpath(QStringLiteral("elsewhere")));
    const Result result = runFeed(smallFeed, {QStringLiteral("-o"), QStringLiteral("elsewhere")});
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_THAT(QDir(path(QStringLiteral("elsewhere"))).entryList({QStringLiteral("*.rec")}), SizeIs(1));
    EXPECT_THAT(files("*.rec"), IsEmpty());
}

TEST_F(ProgramTest, AConfigurationFileNamesTheRecorders)
{
    QFile file(path(QStringLiteral("station.toml")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[only]\nValuePath = '/X'\nStatusValuePath = '/XS'\nUnknown = 1\nRecordingPath = '" +
               m_directory.path().toUtf8() + "'\n[only.Values]\nLEVEL = '/Other/Level'\n");
    file.close();
    const Result result = runFeed(R"({"at": 0, "path": "/Other/Level", "create": "number"}
{"at": 0, "record": "On", "recorder": "only"}
{"at": 100, "path": "/Other/Level", "set": 3}
)",
                                  {QStringLiteral("--config"), file.fileName()});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_THAT(result.messages, HasSubstr("\"Unknown\""));
    EXPECT_EQ(result.summary().at("files")[0].at("records"), 2);
}

TEST_F(ProgramTest, AWrongConfigurationEndsTheProgramWithASentence)
{
    QFile file(path(QStringLiteral("station.toml")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[a]\nMaxFileLength = 'big'\n");
    file.close();
    const Result result = run({QStringLiteral("--config"), file.fileName()});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages, AllOf(HasSubstr("station.toml:2"), HasSubstr("MaxFileLength")));
}

TEST_F(ProgramTest, AMissingDirectoryIsRefused)
{
    const Result result = run({QStringLiteral("-o"), QStringLiteral("nowhere")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages, HasSubstr("the directory nowhere does not exist; --make-output makes it"));
}

TEST_F(ProgramTest, AMissingDirectoryIsMadeWhenAskedFor)
{
    const Result result = run({QStringLiteral("-o"), QStringLiteral("new/place"), QStringLiteral("--make-output"),
                               QStringLiteral("sim"), QStringLiteral("--duration"), QStringLiteral("1s")});
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_THAT(QDir(path(QStringLiteral("new/place"))).entryList({QStringLiteral("*.rec")}), SizeIs(2));
}

TEST_F(ProgramTest, TheProgressCountsWhatIsStillInTheRecordersMemory)
{
    QProcess process;
    start(process, {QStringLiteral("feed"), QStringLiteral("-"), QStringLiteral("--start"),
                    QStringLiteral("1970-01-01T00:00:01Z")});
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

TEST_F(ProgramTest, AConfiguredDirectoryThatIsMissingIsRefusedAndNotReplaced)
{
    QFile file(path(QStringLiteral("station.toml")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[a]\nRecordingPath = '/no/such/place'\n");
    file.close();
    const Result result = run({QStringLiteral("--config"), file.fileName()});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages, HasSubstr("the directory /no/such/place does not exist"));
}

TEST_F(ProgramTest, AFileInPlaceOfTheDirectoryIsRefused)
{
    const Result result = run({QStringLiteral("-o"), whole(RECSTATION)});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages, HasSubstr("is no directory"));
}

TEST_F(ProgramTest, ADirectoryThatCannotBeWrittenIsRefused)
{
    // Not even root can create files there.
    const QString directory = whole("/proc");
    if (!QFileInfo::exists(directory)) {
        GTEST_SKIP() << "needs a read-only directory";
    }
    const Result result = run({QStringLiteral("-o"), directory});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages, HasSubstr("the directory " + directory.toStdString() + " cannot be written"));
}

TEST_F(ProgramTest, ACaptionThatNoNameCanHoldIsRecordedUnderOneThatCan)
{
    for (const QByteArray& caption : {QByteArray("a/b"), QByteArray(300, 'x')}) {
        const Result result = runFeed(R"({"at": 0, "path": "/DEVICE_CAPTION", "create": "text", "value": ")" + caption +
                                      "\"}\n{\"at\": 0, \"record\": \"On\"}\n");
        EXPECT_EQ(result.exitCode, 0) << result.messages;
    }
    EXPECT_THAT(files("a_b__*.rec"), SizeIs(1));
    EXPECT_THAT(files("xxx*.rec"), SizeIs(1));
}

TEST_F(ProgramTest, ACaptionWithADotShortensTheNameAndTheRealNameIsReported)
{
    const QByteArray feed = R"({"at": 0, "path": "/DEVICE_CAPTION", "create": "text", "value": "site 1.5"}
{"at": 0, "record": "On"}
)";
    const Result first = runFeed(feed);
    EXPECT_EQ(first.exitCode, 0) << first.messages;
    EXPECT_THAT(first.summary().at("files")[0].at("path"), testing::EndsWith("/site_1.rec"));
    const Result second = runFeed(feed);
    EXPECT_EQ(second.exitCode, 3);
    EXPECT_EQ(second.summary().at("files")[0].at("state"), "temporary");
    EXPECT_THAT(second.messages, HasSubstr("site_1.rec exists already"));
    EXPECT_THAT(files("*.tmp"), SizeIs(1));
}

TEST_F(ProgramTest, AMissingPlugInOrAnotherLibraryIsRefused)
{
    const Result missing = run({QStringLiteral("--plugin"), QStringLiteral("none.so")});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.messages, HasSubstr("none.so does not exist"));
    const Result noLibrary = run({QStringLiteral("--plugin"), whole(FEED_DOCUMENT)});
    EXPECT_EQ(noLibrary.exitCode, 2);
    EXPECT_THAT(noLibrary.messages, HasSubstr("cannot load the recorder plug-in"));
}

TEST_F(ProgramTest, ThePlugInCanBeNamed)
{
    EXPECT_EQ(runFeed(smallFeed, {QStringLiteral("--plugin"), whole(PLUGIN)}).exitCode, 0);
}

TEST_F(ProgramTest, AnUnknownRecorderIsRefused)
{
    const Result result = run({QStringLiteral("--record"), QStringLiteral("reciever")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.messages, HasSubstr("no recorder of that name is configured: did you mean receiver?"));
}

TEST_F(ProgramTest, WrongArgumentsGiveExitCodeOneAndHelpNone)
{
    EXPECT_EQ(run({QStringLiteral("--nonsense")}).exitCode, 1);
    const Result help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, HasSubstr("Examples:"));
}

TEST_F(ProgramTest, AMissingFeedFileIsToldWithItsName)
{
    const Result result = run({QStringLiteral("feed"), QStringLiteral("none.jsonl")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages, HasSubstr("cannot open none.jsonl"));
}

TEST_F(ProgramTest, WithoutATerminalTheProgressIsPlainLinesAndQuietMeansNone)
{
    const Result result = runFeed(smallFeed);
    EXPECT_THAT(result.messages, AllOf(HasSubstr("4.000 s recorded, "), testing::Not(HasSubstr("\r"))));
    EXPECT_THAT(runFeed(smallFeed, {QStringLiteral("--quiet")}).messages, IsEmpty());
}

#if !defined(_WIN32)

TEST_F(ProgramTest, SigtermWhileItWaitsForInputClosesAndRenamesTheRecording)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        QProcess process;
        start(process, {QStringLiteral("feed"), QStringLiteral("--json")});
        process.write("{\"at\": 0, \"record\": \"On\"}\nmark\n");
        waitForMessage(process, "feed: line 2");
        ASSERT_THAT(files("*.tmp"), SizeIs(1));
        ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), signal), 0);
        ASSERT_TRUE(process.waitForFinished(patienceMs));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 3);  // for the line that marked the moment
        EXPECT_THAT(files("*.tmp"), IsEmpty());
        const auto summary = nlohmann::json::parse(process.readAllStandardOutput().toStdString());
        EXPECT_EQ(summary.at("files")[0].at("state"), "finished");
    }
}

TEST_F(ProgramTest, SigtermWhileItWaitsForTheTimeOfAStepClosesAndRenamesTheRecording)
{
    QProcess process;
    start(process, {QStringLiteral("--speed"), QStringLiteral("1"), QStringLiteral("feed")});
    process.write("{\"at\": 0, \"record\": \"On\"}\nmark\n{\"at\": 1e9, \"record\": \"Off\"}\n");
    process.closeWriteChannel();
    waitForMessage(process, "feed: line 2");
    ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGTERM), 0);
    ASSERT_TRUE(process.waitForFinished(patienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_THAT(files("*.tmp"), IsEmpty());
    EXPECT_THAT(files("*.rec"), SizeIs(1));
}

TEST_F(ProgramTest, ALineThatASignalCutsShortIsNoBadLine)
{
    QProcess process;
    start(process, {QStringLiteral("feed"), QStringLiteral("--json")});
    process.write("{\"at\": 0, \"record\": \"On\"}\nmark\n{\"at\": 1, \"rec");
    waitForMessage(process, "feed: line 2");
    ASSERT_EQ(::kill(static_cast<pid_t>(process.processId()), SIGTERM), 0);
    ASSERT_TRUE(process.waitForFinished(patienceMs));
    const auto summary = nlohmann::json::parse(process.readAllStandardOutput().toStdString());
    EXPECT_EQ(summary.at("sources")[0].at("bad"), 1);
}

// A limit on the size of files stops the writing as a full disk does.
TEST_F(ProgramTest, AFileThatCouldNotBeWrittenToItsEndIsReported)
{
    QProcess process;
    const QString script = QStringLiteral("trap '' XFSZ; ulimit -f 40; exec \"$0\" --json sim --duration 20s");
    start(process, {QStringLiteral("-c"), script, QStringLiteral(RECSTATION)}, QStringLiteral("/bin/bash"));
    const Result result = finish(process);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.messages, HasSubstr("not completely written, perhaps because the disk is full"));
    EXPECT_THAT(std::string(result.summary().at("files")[0].at("problem")), HasSubstr("not completely written"));
}

TEST_F(ProgramTest, AFileTakenAwayBeforeTheInputEndsIsSavedAndReported)
{
    QProcess process;
    start(process, {QStringLiteral("feed"), QStringLiteral("--json")});
    process.write("{\"at\": 0, \"record\": \"On\"}\nmark\n");
    waitForMessage(process, "feed: line 2");
    ASSERT_TRUE(QFile::remove(path(files("*.tmp").value(0))));
    const Result result = finish(process);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.summary().at("files")[0].at("state"), "finished");
    EXPECT_THAT(std::string(result.summary().at("files")[0].at("problem")), HasSubstr("was deleted"));
}

#endif

}  // namespace
}  // namespace recstation
