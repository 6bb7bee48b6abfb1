// Which recorder a log goes to, and how the program ends.
#include <string>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using testing::SizeIs;

constexpr int patienceMs = 60'000;
const QByteArray goodLog = "date,time,frequency,azimuth\n2017-01-14,10:31,150,7\n2017-01-14,10:32,151,8\n";

struct Result {
    int exitCode = -1;
    std::string output;
    std::string messages;
};

class BearingsProgram : public testing::Test {
protected:
    Result run(const QByteArray& log, const QStringList& arguments)
    {
        static int argc = 1;
        static char name[] = "test";
        static char* argv[] = {name, nullptr};
        static const QCoreApplication application(argc, argv);
        QProcess process;
        process.setWorkingDirectory(m_directory.path());
        process.start(QStringLiteral(RECSTATION), QStringList{QStringLiteral("--json")} + arguments);
        process.write(log);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(patienceMs));
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }
    Result run(const QByteArray& log) { return run(log, {QStringLiteral("bearings"), QStringLiteral("-")}); }

    QTemporaryDir m_directory;
};

nlohmann::json filesOf(const Result& result)
{
    return nlohmann::json::parse(result.output).at("files");
}

TEST_F(BearingsProgram, TheDirectionFinderRecordsThemByItself)
{
    const Result result = run(goodLog);
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    ASSERT_THAT(filesOf(result), SizeIs(1));
    EXPECT_EQ(filesOf(result)[0].at("recorder"), "df");
}

TEST_F(BearingsProgram, WhereNoRecorderIsForDirectionFindingTheFirstBecomesOne)
{
    QFile file(m_directory.filePath(QStringLiteral("station.toml")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        "[only]\nValuePath = '/X'\nStatusValuePath = '/XS'\n[only.Values]\nDFSPECTRUM = '/DfSpectrum'\n"
        "RFSPECTRUM = 'Scn/RfSpectrum'\n");
    file.close();
    const Result result = run(goodLog, {QStringLiteral("--config"), file.fileName(), QStringLiteral("--output"),
                                        m_directory.path(), QStringLiteral("bearings"), QStringLiteral("-")});
    ASSERT_EQ(result.exitCode, 0) << result.messages;
    ASSERT_THAT(filesOf(result), SizeIs(1));
    EXPECT_EQ(filesOf(result)[0].at("records"), 3);  // the initial map and two bearings
}

TEST_F(BearingsProgram, BadRowsAreToldAndTheExitCodeTells)
{
    const Result result = run(goodLog + "2017-01-14,10:33,150,east\n");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.messages, HasSubstr("bearings: line 4: column \"azimuth\": \"east\" is no number"));
    EXPECT_THAT(filesOf(result), SizeIs(1));
}

TEST_F(BearingsProgram, StrictRecordsNothingWhenARowIsBad)
{
    const Result result = run(goodLog + "2017-01-14,10:33,150,east\n",
                              {QStringLiteral("bearings"), QStringLiteral("--strict"), QStringLiteral("-")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(QDir(m_directory.path()).entryList(QDir::Files), SizeIs(0));
}

}  // namespace
