// The real service, from the command line to the storage.
#include <csignal>

#include <nlohmann/json.hpp>

#include <zelvo/archive.h>
#include <zelvo/zelvo.h>

#include "support/program.h"

using namespace testing;

namespace {

using Result = TestSupport::ProgramResult;
using namespace TestSupport;

class Zelvod : public testing::Test {
protected:
    void SetUp() override
    {
        qunsetenv("ZELVO_CONFIG");
        ASSERT_TRUE(m_folder.isValid());
        ASSERT_TRUE(QDir(m_folder.path()).mkpath("storage"));
        ASSERT_TRUE(QDir(m_folder.path()).mkpath("recordings"));
        configure(QStringLiteral("Directory = \"%1\"\nStorage = \"%2\"\nFirstPauseSeconds = 0\n")
                      .arg(path("archive"), path("storage")));
    }

    [[nodiscard]] QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    void configure(const QString& keys) { writeBytes(path("archive.toml"), ("[archive]\n" + keys.toUtf8())); }

    Result run(const QStringList& arguments)
    {
        return runProgram(ZELVOD, QStringList{"--config", path("archive.toml")} + arguments);
    }
    void setUpArchive() { ASSERT_EQ(run({"--set-up"}).exitCode, 0); }
    /// Starts the service and waits until it has moved the first recording, whose address is given.
    Zelvo::ZelvoUrl serve(const QString& program, const QStringList& arguments)
    {
        setUpArchive();
        Zelvo::ZelvoUrl url = record("a");
        m_service.start(program, arguments);
        EXPECT_TRUE(m_service.waitForStarted(PatienceMs));
        EXPECT_EQ(nextLine()["moved"], 1);
        return url;
    }
    Zelvo::ZelvoUrl serve(const QStringList& arguments)
    {
        return serve(ZELVOD, QStringList{"--config", path("archive.toml")} + arguments);
    }
    [[nodiscard]] nlohmann::json nextLine()
    {
        while (!m_service.canReadLine() && m_service.waitForReadyRead(PatienceMs)) {
        }
        return nlohmann::json::parse(m_service.readLine().toStdString());
    }

    Zelvo::ZelvoUrl record(const QString& base)
    {
        Zelvo::ZelvoClient client(Zelvo::LoadArchiveConfiguration(path("archive.toml")));
        QString directory = path("recordings");
        const QString guid = client.CreateFileGroup("2", QDateTime(), QString(), QString(), Zelvo::FileType::Recording,
                                                    0, QString(), directory, QString());
        writeBytes(directory + QLatin1Char('/') + base + ".rec", base.toUtf8());
        const std::uint32_t id = client.AddFile(base + ".rec", guid);
        client.MoveToNas(guid);
        EXPECT_EQ(client.GetError(), Zelvo::ZelvoError::None) << client.GetErrorString().toStdString();
        return Zelvo::ZelvoUrl(QStringLiteral("zelvo:///%1/%2").arg(guid).arg(id));
    }
    [[nodiscard]] Zelvo::FileState stateOf(const Zelvo::ZelvoUrl& url) const
    {
        return Zelvo::Archive(Zelvo::LoadArchiveConfiguration(path("archive.toml"))).file(url)->state;
    }

    QProcess m_service;

private:
    QTemporaryDir m_folder;
};

}  // namespace

TEST_F(Zelvod, MovesWhatIsDueOnceAndEnds)
{
    setUpArchive();
    const Zelvo::ZelvoUrl url = record("a");
    const Result result = run({"--once"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "moved 1 file, 1 bytes\n");
    EXPECT_EQ(stateOf(url), Zelvo::FileState::Moved);
    EXPECT_TRUE(QDir(path("recordings")).isEmpty());
    EXPECT_THAT(run({"--once"}).out, IsEmpty());
}

TEST_F(Zelvod, EndsWithThreeWhenSomethingThatWasDueCouldNotBeMoved)
{
    setUpArchive();
    record("a");
    ASSERT_TRUE(QFile::remove(path("recordings/a.rec")));
    const Result result = run({"--once", "--json"});
    EXPECT_EQ(result.exitCode, 3);
    const nlohmann::json line = nlohmann::json::parse(result.out);
    EXPECT_EQ(line["failed"], 1);
    EXPECT_THAT(line["messages"][0].get<std::string>(), HasSubstr("a.rec is missing"));
    ASSERT_TRUE(QDir(path("storage")).removeRecursively());
    const Result away = run({"--once"});
    EXPECT_EQ(away.exitCode, 3);
    EXPECT_THAT(away.out, HasSubstr("is the share mounted?"));
}

#if !defined(_WIN32)  // there nobody can ask a program without a window to end
TEST_F(Zelvod, GoesOnUntilItIsTerminatedAndThenEndsWell)
{
    const Zelvo::ZelvoUrl first = serve({"--json", "--every", "0.1"});
    const Zelvo::ZelvoUrl second = record("b");
    EXPECT_EQ(nextLine()["moved"], 1);
    m_service.terminate();
    const Result result = finish(m_service);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, IsEmpty());
    EXPECT_EQ(stateOf(first), Zelvo::FileState::Moved);
    EXPECT_EQ(stateOf(second), Zelvo::FileState::Moved);
}

TEST_F(Zelvod, EndsWellWhenItsTerminalGoes)
{
    serve({"--json"});
    ASSERT_EQ(kill(static_cast<pid_t>(m_service.processId()), SIGHUP), 0);
    EXPECT_EQ(finish(m_service).exitCode, 0);
}

TEST_F(Zelvod, GoesOnWithoutItsTerminalWhenItWasStartedSo)
{
    serve("/bin/sh", {"-c", "trap '' HUP; exec \"$@\"", "sh", ZELVOD, "--config", path("archive.toml"), "--json",
                      "--every", "0.1"});
    ASSERT_EQ(kill(static_cast<pid_t>(m_service.processId()), SIGHUP), 0);
    record("b");
    EXPECT_EQ(nextLine()["moved"], 1);
    m_service.terminate();
    EXPECT_EQ(finish(m_service).exitCode, 0);
}

TEST_F(Zelvod, LetsNoOtherServeTheSameStationAndIsNotKeptFromItByADeadOne)
{
    serve({"--json"});
    const Result second = run({"--once"});
    EXPECT_EQ(second.exitCode, 2);
    EXPECT_THAT(second.err, StartsWith("zelvod: another zelvod serves "));
    m_service.kill();
    ASSERT_TRUE(m_service.waitForFinished(PatienceMs));
    EXPECT_EQ(run({"--once"}).exitCode, 0);
}

#endif

TEST_F(Zelvod, SaysWhyItCannotRun)
{
    Result result = run({"--once"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, HasSubstr("zelvod --set-up"));
    configure(QStringLiteral("Directory = \"%1\"\n").arg(path("archive")));
    result = run({});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, "zelvod: the archive's configuration has no Storage\n");
}

TEST_F(Zelvod, RefusesWrongArgumentsAndHelps)
{
    const Result unknown = run({"--onec"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.err, "zelvod: there is no option --onec: did you mean --once?\nzelvod --help tells more.\n");
    const Result word = run({"twice"});
    EXPECT_EQ(word.exitCode, 1);
    EXPECT_EQ(word.err, "zelvod: \"twice\" is one word too many\nzelvod --help tells more.\n");
    EXPECT_EQ(run({"--once", "--set-up"}).exitCode, 1);
    EXPECT_EQ(run({"--every", "0"}).exitCode, 1);
    const Result help = run({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("zelvod --config archive.toml --set-up"));
}
