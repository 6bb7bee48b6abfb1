// The real service, from the command line to the storage.
#include <csignal>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <zelvo/archive.h>
#include <zelvo/zelvo.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr int PatienceMs = 60'000;

struct Result {
    int exitCode = -1;
    std::string output;
    std::string messages;
};

Result finish(QProcess& process)
{
    EXPECT_TRUE(process.waitForFinished(PatienceMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), process.readAllStandardOutput().toStdString(),
            process.readAllStandardError().toStdString()};
}

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
    void configure(const QString& keys) { write(path("archive.toml"), ("[archive]\n" + keys.toUtf8())); }
    static void write(const QString& name, const QByteArray& bytes)
    {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    void start(QProcess& process, const QStringList& arguments)
    {
        process.start(QStringLiteral(ZELVOD),
                      QStringList{QStringLiteral("--config"), path("archive.toml")} + arguments);
        ASSERT_TRUE(process.waitForStarted(PatienceMs));
    }
    Result run(const QStringList& arguments)
    {
        QProcess process;
        start(process, arguments);
        return finish(process);
    }
    void setUpArchive() { ASSERT_EQ(run({QStringLiteral("--set-up")}).exitCode, 0); }

    Zelvo::ZelvoUrl record(const QString& base)
    {
        Zelvo::ZelvoClient client(Zelvo::LoadArchiveConfiguration(path("archive.toml")));
        QString directory = path("recordings");
        const QString guid = client.CreateFileGroup("2", QDateTime(), QString(), QString(), Zelvo::FileType::Recording,
                                                    0, QString(), directory, QString());
        write(directory + QLatin1Char('/') + base + ".rec", base.toUtf8());
        const std::uint32_t id = client.AddFile(base + ".rec", guid);
        client.MoveToNas(guid);
        EXPECT_EQ(client.GetError(), Zelvo::ZelvoError::None) << client.GetErrorString().toStdString();
        return Zelvo::ZelvoUrl(QStringLiteral("zelvo:///%1/%2").arg(guid).arg(id));
    }
    [[nodiscard]] Zelvo::FileState stateOf(const Zelvo::ZelvoUrl& url) const
    {
        return Zelvo::Archive(Zelvo::LoadArchiveConfiguration(path("archive.toml"))).file(url)->state;
    }
    [[nodiscard]] static nlohmann::json nextLine(QProcess& process)
    {
        while (!process.canReadLine() && process.waitForReadyRead(PatienceMs)) {
        }
        return nlohmann::json::parse(process.readLine().toStdString());
    }

private:
    QTemporaryDir m_folder;
};

}  // namespace

TEST_F(Zelvod, MovesWhatIsDueOnceAndEnds)
{
    setUpArchive();
    const Zelvo::ZelvoUrl url = record("a");
    const Result result = run({QStringLiteral("--once")});
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_EQ(result.output, "moved 1 file, 1 bytes\n");
    EXPECT_EQ(stateOf(url), Zelvo::FileState::Moved);
    EXPECT_TRUE(QDir(path("recordings")).isEmpty());
    EXPECT_THAT(run({QStringLiteral("--once")}).output, IsEmpty());
}

TEST_F(Zelvod, EndsWithThreeWhenSomethingThatWasDueCouldNotBeMoved)
{
    setUpArchive();
    record("a");
    ASSERT_TRUE(QFile::remove(path("recordings/a.rec")));
    const Result result = run({QStringLiteral("--once"), QStringLiteral("--json")});
    EXPECT_EQ(result.exitCode, 3);
    const nlohmann::json line = nlohmann::json::parse(result.output);
    EXPECT_EQ(line["failed"], 1);
    EXPECT_THAT(line["messages"][0].get<std::string>(), HasSubstr("a.rec is missing"));
    ASSERT_TRUE(QDir(path("storage")).removeRecursively());
    const Result away = run({QStringLiteral("--once")});
    EXPECT_EQ(away.exitCode, 3);
    EXPECT_THAT(away.output, HasSubstr("is the share mounted?"));
}

#if !defined(_WIN32)  // there nobody can ask a program without a window to end
TEST_F(Zelvod, GoesOnUntilItIsTerminatedAndThenEndsWell)
{
    setUpArchive();
    const Zelvo::ZelvoUrl first = record("a");
    QProcess process;
    start(process, {QStringLiteral("--json"), QStringLiteral("--every"), QStringLiteral("0.1")});
    EXPECT_EQ(nextLine(process)["moved"], 1);
    const Zelvo::ZelvoUrl second = record("b");
    EXPECT_EQ(nextLine(process)["moved"], 1);
    process.terminate();
    const Result result = finish(process);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.messages, IsEmpty());
    EXPECT_EQ(stateOf(first), Zelvo::FileState::Moved);
    EXPECT_EQ(stateOf(second), Zelvo::FileState::Moved);
}

TEST_F(Zelvod, EndsWellWhenItsTerminalGoes)
{
    setUpArchive();
    record("a");
    QProcess process;
    start(process, {QStringLiteral("--json")});
    EXPECT_EQ(nextLine(process)["moved"], 1);
    ASSERT_EQ(kill(static_cast<pid_t>(process.processId()), SIGHUP), 0);
    EXPECT_EQ(finish(process).exitCode, 0);
}

TEST_F(Zelvod, GoesOnWithoutItsTerminalWhenItWasStartedSo)
{
    setUpArchive();
    record("a");
    QProcess process;
    process.start("/bin/sh", {QStringLiteral("-c"), QStringLiteral("trap '' HUP; exec \"$@\""), QStringLiteral("sh"),
                              QStringLiteral(ZELVOD), QStringLiteral("--config"), path("archive.toml"),
                              QStringLiteral("--json"), QStringLiteral("--every"), QStringLiteral("0.1")});
    ASSERT_TRUE(process.waitForStarted(PatienceMs));
    EXPECT_EQ(nextLine(process)["moved"], 1);
    ASSERT_EQ(kill(static_cast<pid_t>(process.processId()), SIGHUP), 0);
    record("b");
    EXPECT_EQ(nextLine(process)["moved"], 1);
    process.terminate();
    EXPECT_EQ(finish(process).exitCode, 0);
}

TEST_F(Zelvod, LetsNoOtherServeTheSameStationAndIsNotKeptFromItByADeadOne)
{
    setUpArchive();
    record("a");
    QProcess process;
    start(process, {QStringLiteral("--json")});
    EXPECT_EQ(nextLine(process)["moved"], 1);
    const Result second = run({QStringLiteral("--once")});
    EXPECT_EQ(second.exitCode, 2);
    EXPECT_THAT(second.messages, StartsWith("zelvod: another zelvod serves "));
    process.kill();
    ASSERT_TRUE(process.waitForFinished(PatienceMs));
    EXPECT_EQ(run({QStringLiteral("--once")}).exitCode, 0);
}

#endif

TEST_F(Zelvod, SaysWhyItCannotRun)
{
    Result result = run({QStringLiteral("--once")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.messages, HasSubstr("zelvod --set-up"));
    configure(QStringLiteral("Directory = \"%1\"\n").arg(path("archive")));
    result = run({});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.messages, "zelvod: the archive's configuration has no Storage\n");
}

TEST_F(Zelvod, RefusesWrongArgumentsAndHelps)
{
    EXPECT_EQ(run({QStringLiteral("--twice")}).exitCode, 1);
    EXPECT_EQ(run({QStringLiteral("--once"), QStringLiteral("--set-up")}).exitCode, 1);
    EXPECT_EQ(run({QStringLiteral("--every"), QStringLiteral("0")}).exitCode, 1);
    const Result help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.output, HasSubstr("zelvod --config archive.toml --set-up"));
}
