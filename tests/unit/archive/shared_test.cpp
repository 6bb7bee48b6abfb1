// Stations that share a registry in PostgreSQL and a storage.
#include <QElapsedTimer>

#include "archivefixture.h"
#include "postgresserver.h"

using namespace Zelvo;
using namespace ArchiveTests;

namespace {

class SharedRegistry : public testing::Test {
protected:
    void SetUp() override
    {
        const QString missing = PostgresServer::missing();
        if (!missing.isEmpty()) {
            GTEST_SKIP() << missing.toStdString();
        }
        server = std::make_unique<PostgresServer>();
        ASSERT_TRUE(server->start()) << server->output().toStdString();
        for (StationFolder* station : {&north, &south}) {
            station->configuration.registry = server->registry();
            SetUpArchive(station->configuration);
        }
    }

    [[nodiscard]] QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }
    static MoverReport move(const StationFolder& station)
    {
        Files files;
        return MoverCore(station.configuration, files).run({});
    }
    [[nodiscard]] int storedFiles() const
    {
        int count = 0;
        QDirIterator walk(path("storage"), {"*.rec"}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        for (; walk.hasNext(); walk.next()) {
            ++count;
        }
        return count;
    }

    std::unique_ptr<PostgresServer> server;

private:
    QTemporaryDir m_folder{temporaryTemplate()};

protected:
    StationFolder north{path("north"), path("storage"), "north"};
    StationFolder south{path("south"), path("storage"), "south"};
};

constexpr int FilesOfAStation = 500;

// Records and moves in turns, in a process of its own.
pid_t runStation(const StationFolder& station, int seed)
{
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    std::int64_t moved = 0;
    {
        ZelvoClient client(station.configuration);
        Files files;
        MoverCore mover(station.configuration, files);
        constexpr int FilesOfAGroup = 5;
        for (int group = 0; group < FilesOfAStation / FilesOfAGroup; ++group) {
            const QString guid = groupOf(client, station.recordings());
            for (int i = 0; i < FilesOfAGroup; ++i) {
                const int number = group * FilesOfAGroup + i;
                addFile(client, guid, station.recordings(), QString::number(number), bytesOf(1'000, seed + number));
            }
            client.MoveToNas(guid);
            if (group % 10 == 9) {
                moved += mover.run({}).moved;
            }
        }
    }
    _exit(moved == FilesOfAStation && !testing::Test::HasFailure() ? 0 : 1);
}

void expectSuccess(pid_t child)
{
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace

TEST_F(SharedRegistry, OfTwoStationsMovesAThousandFilesWithoutADoubleOrALoss)
{
    const pid_t first = runStation(north, 0);
    const pid_t second = runStation(south, FilesOfAStation);
    expectSuccess(first);
    expectSuccess(second);
    EXPECT_EQ(storedFiles(), 2 * FilesOfAStation);
    EXPECT_TRUE(QDir(north.recordings()).isEmpty());
    EXPECT_TRUE(QDir(south.recordings()).isEmpty());
    Archive archive(north.configuration);
    const ArchiveStatus status = archive.status();
    EXPECT_EQ(status.moved, 2 * FilesOfAStation);
    EXPECT_EQ(status.waiting, 0);
    EXPECT_EQ(status.failed, 0);
    EXPECT_EQ(verifyAll(archive), 2 * FilesOfAStation);
    std::map<QByteArray, int> bytes;
    forEachFile(archive,
                [&](const FileInfo& file) { ++bytes[readFile(path("storage") + QLatin1Char('/') + file.storedPath)]; });
    for (int number = 0; number < 2 * FilesOfAStation; ++number) {
        EXPECT_EQ(bytes[bytesOf(1'000, number)], 1) << number;
    }
}

TEST_F(SharedRegistry, ThatIsDownStopsNoRequestAndIsToldLater)
{
    ZelvoClient client(north.configuration);
    server->stop();
    QElapsedTimer timer;
    timer.start();
    const ZelvoUrl address = recordOne(client, north.recordings(), "a", bytesOf(10));
    EXPECT_EQ(client.GetError(), ZelvoError::None);
    EXPECT_TRUE(client.RequestFile(address, LockState::Shared).isEmpty());
    EXPECT_EQ(client.GetError(), ZelvoError::Unreachable);
    constexpr qint64 Bearable = 10'000;  // of a busy machine; nothing waits for the server
    EXPECT_LT(timer.elapsed(), Bearable);
    const MoverReport report = move(north);
    EXPECT_EQ(report.moved, 0);
    EXPECT_FALSE(report.problem.isEmpty());
    EXPECT_TRUE(QFile::exists(north.recording("a.rec")));
    EXPECT_THROW(Archive{north.configuration}, ArchiveError);
    ASSERT_TRUE(server->start()) << server->output().toStdString();
    EXPECT_EQ(move(north).moved, 1);
    EXPECT_EQ(Archive(south.configuration).file(address)->state, FileState::Moved);
}

TEST_F(SharedRegistry, ThatGoesDownPrintsNothing)
{
    Archive archive(north.configuration);
    static_cast<void>(archive.status());
    testing::internal::CaptureStderr();
    server->stop();
    EXPECT_THROW(static_cast<void>(archive.status()), ArchiveError);
    EXPECT_THROW(static_cast<void>(archive.status()), ArchiveError);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_TRUE(server->start()) << server->output().toStdString();
    EXPECT_EQ(archive.status().groups, 0);
}

TEST_F(SharedRegistry, OfRecordingsOfOneNameGivesEachItsOwn)
{
    ZelvoClient client(north.configuration);
    const auto record = [&](const char* base, int seed) {
        const QString guid = groupOf(client, north.recordings());
        writeBytes(north.recording(QString::fromLatin1(base)), bytesOf(10, seed));
        return url(guid, client.AddFile("St.rec", guid));
    };
    const ZelvoUrl first = record("St.1.tmp", 1);
    ASSERT_TRUE(QFile::rename(north.recording("St.1.tmp"), north.recording("St.rec")));
    client.MoveToNas(first.toString().section(QLatin1Char('/'), 3, 3));
    const ZelvoUrl second = record("St.2.tmp", 2);
    EXPECT_EQ(move(north).moved, 1);
    EXPECT_EQ(Archive(south.configuration).file(second)->state, FileState::Waiting);
    ASSERT_TRUE(QFile::rename(north.recording("St.2.tmp"), north.recording("St.rec")));
    client.MoveToNas(second.toString().section(QLatin1Char('/'), 3, 3));
    EXPECT_EQ(move(north).moved, 1);
    ZelvoClient other(south.configuration);
    EXPECT_EQ(readFile(other.RequestFile(first, LockState::Shared)), bytesOf(10, 1));
    EXPECT_EQ(readFile(other.RequestFile(second, LockState::Shared)), bytesOf(10, 2));
}

TEST_F(SharedRegistry, TellsWhereAFileIsThatIsNotMovedYet)
{
    ZelvoClient client(north.configuration);
    const ZelvoUrl address = recordOne(client, north.recordings(), "a", bytesOf(10));
    EXPECT_FALSE(client.RequestFile(address, LockState::Shared).isEmpty());
    client.CloseFile(address);
    ZelvoClient other(south.configuration);
    EXPECT_TRUE(other.RequestFile(address, LockState::Shared).isEmpty());
    EXPECT_EQ(other.GetError(), ZelvoError::Elsewhere);
    EXPECT_EQ(move(south).moved, 0);
    EXPECT_EQ(move(north).moved, 1);
    EXPECT_EQ(readFile(other.RequestFile(address, LockState::Shared)), bytesOf(10));
}

TEST_F(SharedRegistry, LetsOneStationWriteAtATime)
{
    ZelvoClient client(north.configuration);
    const ZelvoUrl address = recordOne(client, north.recordings(), "a", bytesOf(10));
    ASSERT_EQ(move(north).moved, 1);
    ZelvoClient other(south.configuration);
    const QString edited = other.RequestFile(address, LockState::Exclusive);
    ASSERT_FALSE(edited.isEmpty()) << other.GetErrorString().toStdString();
    EXPECT_TRUE(client.RequestFile(address, LockState::Exclusive).isEmpty());
    EXPECT_EQ(client.GetError(), ZelvoError::Locked);
    EXPECT_EQ(readFile(client.RequestFile(address, LockState::Shared)), bytesOf(10)) << "as it was";
    client.CloseFile(address);
    writeBytes(edited, bytesOf(30));
    other.CloseFile(address);
    EXPECT_EQ(other.GetError(), ZelvoError::None) << other.GetErrorString().toStdString();
    EXPECT_EQ(move(north).moved, 0);
    EXPECT_EQ(move(south).moved, 1);
    EXPECT_EQ(readFile(client.RequestFile(address, LockState::Shared)), bytesOf(30));
    EXPECT_EQ(storedFiles(), 1);
}

TEST_F(SharedRegistry, RefusesASecondStationOfTheSameName)
{
    StationFolder impostor(path("impostor"), path("storage"), "north");
    impostor.configuration.registry = server->registry();
    EXPECT_THROW(SetUpArchive(impostor.configuration), ArchiveError);
    EXPECT_TRUE(move(impostor).problem.contains("another station of the name \"north\""));
}

// Others write the registry too: what it says of paths must not make a mover read or delete a file.
TEST_F(SharedRegistry, CannotMakeAMoverTakeAFileThatWasNeverRegistered)
{
    const QString secret = path("secret");
    writeBytes(secret, bytesOf(10));
    ZelvoClient client(north.configuration);
    const ZelvoUrl address = recordOne(client, north.recordings(), "a", bytesOf(10));
    EXPECT_EQ(Archive(north.configuration).status().waiting, 1);
    Database database(server->registry(), 0600);
    EXPECT_EQ(database.change("UPDATE group_files SET local_path = :path", {{"path", secret}}), 1);
    database.change(QStringLiteral("INSERT INTO group_files (guid, id, name, station, local_path, unfinished, created) "
                                   "SELECT guid, 7, 'secret', station, :path, '', created FROM file_groups"),
                    {{"path", secret}});
    const MoverReport report = move(north);
    EXPECT_EQ(report.moved, 1);
    EXPECT_EQ(report.failed, 1);
    EXPECT_TRUE(QFile::exists(secret));
    EXPECT_FALSE(QFile::exists(north.recording("a.rec")));
}

TEST(PasswordOfTheRegistry, ComesFromTheEnvironmentAndReachesNoMessage)
{
    const QString missing = PostgresServer::missing();
    if (!missing.isEmpty()) {
        GTEST_SKIP() << missing.toStdString();
    }
    const QTemporaryDir folder(temporaryTemplate());
    PostgresServer server("s3cr3t-w0rd");
    ASSERT_TRUE(server.start()) << server.output().toStdString();
    StationFolder station(folder.path(), folder.filePath("storage"));
    station.configuration.registry = server.registry();
    try {
        qputenv("PGPASSWORD", "wr0ng-s3cr3t");
        SetUpArchive(station.configuration);
        ADD_FAILURE() << "was let in with a wrong password";
    } catch (const ArchiveError& error) {
        EXPECT_FALSE(error.text().contains("s3cr3t")) << error.what();
    }
    qputenv("PGPASSWORD", "s3cr3t-w0rd");
    SetUpArchive(station.configuration);
    qunsetenv("PGPASSWORD");
    const QString file = folder.filePath("pgpass");
    writeBytes(file, "*:*:*:archive:s3cr3t-w0rd\n");
    ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
    qputenv("PGPASSFILE", QFile::encodeName(file));
    const ArchiveStatus status = Archive(station.configuration).status();
    EXPECT_FALSE(status.registry.contains("s3cr3t"));
    qunsetenv("PGPASSFILE");
}
