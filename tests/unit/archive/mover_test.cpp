// Moving: what goes when, and what is left after it.
#include <QCryptographicHash>

#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

using Moving = ArchiveTest;

TEST_F(Moving, TakesAFinishedRecordingToTheStorageAndDeletesTheOriginal)
{
    const QByteArray bytes = bytesOf(100'000);
    const ZelvoUrl address = record("a", bytes);
    const MoverReport report = move();
    EXPECT_EQ(report.problem, QString());
    EXPECT_EQ(report.moved, 1);
    EXPECT_EQ(report.bytes, bytes.size());
    EXPECT_FALSE(QFile::exists(recording("a.rec")));
    EXPECT_EQ(stored().size(), 1);
    EXPECT_EQ(storedBytes(address), bytes);
    const FileInfo info = file(address);
    EXPECT_EQ(info.state, FileState::Moved);
    EXPECT_EQ(info.bytes, bytes.size());
    EXPECT_EQ(info.sha256.toLatin1(), QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
    EXPECT_EQ(info.movedMs, clock.now);
    EXPECT_EQ(move().moved, 0);
}

TEST_F(Moving, TakesTheLongestNameOfARecorderToAStorageOfAnyName)
{
    const QTemporaryDir root(temporaryTemplate());
    const StationFolder station(root.path(), root.filePath("st%1%2%2Fx"));
    SetUpArchive(station.configuration);
    ZelvoClient recorder(station.configuration);
    const QByteArray bytes = bytesOf(10);
    constexpr int Longest = 210;  // 200, and a number behind them
    const ZelvoUrl address = recordOne(recorder, station.recordings(), QString(Longest, QLatin1Char('c')), bytes);
    EXPECT_EQ(summed(Mover(station.configuration).runPending()), "1 moved, 0 failed, 0 waiting");
    const FileInfo moved = Archive(station.configuration).file(address).value();
    EXPECT_EQ(moved.state, FileState::Moved);
    EXPECT_EQ(readFile(station.configuration.storage + QLatin1Char('/') + moved.storedPath), bytes);
}

TEST_F(Moving, KeepsWhatTheClientSaidOfAGroup)
{
    client().SetUser("Arbitary Username");
    const QDateTime expires(QDate(2031, 2, 3), QTime(4, 5, 6));
    const QString guid = newGroup(expires);
    const std::optional<GroupInfo> group = Archive(configuration()).group(guid);
    ASSERT_TRUE(group);
    EXPECT_EQ(group->data.guid, guid);
    EXPECT_EQ(group->data.user, "Arbitary Username");
    EXPECT_EQ(group->data.description, "Scan-Records (Recording2)");
    EXPECT_EQ(group->data.type, FileType::Recording);
    EXPECT_EQ(group->data.maxBytes, 52'428'800U);
    EXPECT_EQ(group->data.expires, expires);
    EXPECT_EQ(group->version, "2");
    EXPECT_EQ(group->title, "Scan Recording - 12-00-00");
    EXPECT_EQ(group->startText, "Start Time:now");
    EXPECT_EQ(group->directory, recordings());
    EXPECT_EQ(group->station, "north");
    EXPECT_EQ(group->state, GroupState::Open);
}

TEST_F(Moving, TellsOfAFileThatVanishedAndTriesAgainLaterAndLater)
{
    const ZelvoUrl address = record("a", bytesOf(10));
    QFile::remove(recording("a.rec"));
    std::int64_t last = 0;
    for (const std::int64_t pause : {5'000, 10'000, 20'000}) {
        const MoverReport report = move();
        EXPECT_EQ(report.failed, 1);
        EXPECT_EQ(report.nextRunMs, clock.now + pause);
        EXPECT_EQ(file(address).error, recording("a.rec") + " is missing");
        EXPECT_EQ(move().failed, 0) << "not before its time";
        clock.now += pause;
        EXPECT_EQ(file(address).attempts, ++last);
    }
    writeBytes(recording("a.rec"), bytesOf(10));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(file(address).attempts, 0);
}

TEST_F(Moving, NeverReplacesAnotherFileInTheStorage)
{
    const ZelvoUrl address = record("a", bytesOf(10, 1));
    const GroupInfo group = Archive(configuration()).groups().at(0);
    const QString path = storage() + QLatin1Char('/') + storedName(group.createdMs, {group.data.guid, 1}, 1, "a.rec");
    QDir().mkpath(QFileInfo(path).path());
    writeBytes(path, bytesOf(10, 2));
    EXPECT_EQ(move().failed, 1);
    EXPECT_EQ(file(address).error, path + " exists already and is another file; it is not replaced");
    EXPECT_EQ(readFile(path), bytesOf(10, 2));
    EXPECT_EQ(readFile(recording("a.rec")), bytesOf(10, 1));
}

TEST_F(Moving, DoesNotTakeAnEmptyMountPointForTheStorage)
{
    record("a", bytesOf(10));
    ASSERT_TRUE(QDir().rename(storage(), storage() + ".away"));
    ASSERT_TRUE(QDir().mkpath(storage()));
    MoverReport report = move();
    EXPECT_EQ(summed(report), "0 moved, 0 failed, 1 waiting");
    EXPECT_TRUE(report.problem.contains("is the share mounted?")) << report.problem.toStdString();
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(Archive(configuration()).status().stations.at(0).storageError, report.problem);
    ASSERT_TRUE(QDir().rmdir(storage()));
    ASSERT_TRUE(QDir().rename(storage() + ".away", storage()));
    EXPECT_EQ(move().moved, 0) << "not before its time";
    clock.now = report.nextRunMs;
    EXPECT_EQ(move().moved, 1);
    EXPECT_TRUE(Archive(configuration()).status().stations.at(0).storageError.isEmpty());
}

TEST_F(Moving, RefusesTheStorageOfAnotherArchive)
{
    writeBytes(storage() + "/.zelvo-storage", "4c1c3b0e-0000-4000-8000-000000000000\n");
    EXPECT_TRUE(move().problem.endsWith("is the storage of another archive"));
}

TEST_F(Moving, MakesFilesWithTheConfiguredPermissions)
{
    configuration().fileMode = 0604;
    configuration().directoryMode = 0705;
    const ZelvoUrl address = record("a", bytesOf(10));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(modeOf(storedPath(address)), 0604U);
    EXPECT_EQ(modeOf(QFileInfo(storedPath(address)).path()), 0705U);
}

TEST_F(Moving, MakesFilesWithTheirPermissionsLessTheMaskOfTheProcess)
{
    struct Case {
        unsigned fileMode;
        mode_t mask;
        unsigned made;
    };
    for (const auto& [fileMode, mask, made] :
         {Case{0640, 0022, 0640}, Case{0640, 0077, 0600}, Case{0664, 0002, 0664}}) {
        const QTemporaryDir own(temporaryTemplate());
        StationFolder station(own.path(), own.filePath("storage"));
        station.configuration.fileMode = fileMode;
        const mode_t before = umask(mask);
        SetUpArchive(station.configuration);
        ZelvoClient client(station.configuration);
        const ZelvoUrl address = recordOne(client, station.recordings(), "a", bytesOf(10));
        Files files;
        EXPECT_EQ(MoverCore(station.configuration, files).run({}).moved, 1);
        umask(before);
        const QString archive = station.configuration.directory;
        for (const QString name : {"/archive.sqlite", "/station"}) {
            EXPECT_EQ(modeOf(archive + name), made) << name.toStdString();
        }
        const QString stored = Archive(station.configuration).file(address)->storedPath;
        EXPECT_EQ(modeOf(station.configuration.storage + QLatin1Char('/') + stored), made);
        EXPECT_EQ(modeOf(station.configuration.storage + "/.zelvo-storage"), made);
    }
}

TEST_F(Moving, LeavesTheWorkToAnotherOneThatIsAtIt)
{
    const std::unique_ptr<FileLock> lock =
        FileLock::tryLock(configuration().directory + "/mover.lock", FileLock::Mode::Exclusive, 0600);
    ASSERT_NE(lock, nullptr);
    EXPECT_TRUE(move().otherMover);
}

TEST_F(Moving, DeletesAnOriginalThatIsReadWhenItIsClosed)
{
    const ZelvoUrl address = record("a", bytesOf(10));
    const QString path = client().RequestFile(address, LockState::Shared);
    EXPECT_EQ(path, recording("a.rec"));
    EXPECT_EQ(move().moved, 0);
    EXPECT_EQ(file(address).state, FileState::Stored);
    EXPECT_TRUE(QFile::exists(path));
    client().CloseFile(address);
    EXPECT_EQ(move().moved, 1);
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(file(address).state, FileState::Moved);
}

TEST_F(Moving, LeavesAFileAloneThatIsOpenForWriting)
{
    const ZelvoUrl address = record("a", bytesOf(10));
    const QString path = client().RequestFile(address, LockState::Exclusive);
    EXPECT_EQ(move().moved, 0);
    EXPECT_EQ(file(address).state, FileState::Waiting);
    writeBytes(path, bytesOf(20, 5));
    client().CloseFile(address);
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(20, 5));
}

TEST_F(Moving, LeavesAFileAloneThatIsOpenForWritingUnderAnotherOfItsAddresses)
{
    const QString guid = newGroup();
    const QString otherGuid = newGroup();
    const std::uint32_t id = begin(guid, "a", bytesOf(10));
    const ZelvoUrl other = url(otherGuid, client().AddFile("a.rec", otherGuid));
    finish("a");
    client().MoveToNas(guid);
    client().MoveToNas(otherGuid);
    const QString path = client().RequestFile(other, LockState::Exclusive);
    EXPECT_EQ(path, recording("a.rec"));
    ZelvoClient reader(configuration());
    EXPECT_EQ(reader.RequestFile(url(guid, id), LockState::Shared), QString());
    EXPECT_EQ(reader.GetError(), ZelvoError::Locked);
    EXPECT_EQ(summed(move()), "0 moved, 0 failed, 2 waiting");
    writeBytes(path, bytesOf(20, 5));
    client().CloseFile(other);
    EXPECT_EQ(move().moved, 1);
    for (const ZelvoUrl& address : {url(guid, id), other}) {
        EXPECT_EQ(given(address), bytesOf(20, 5));
    }
}

TEST_F(Moving, RemovesExpiredGroupsOnlyWhenItMay)
{
    const QString guid = newGroup(QDateTime::fromMSecsSinceEpoch(clock.now + 1'000));
    const ZelvoUrl address = add(guid, "a", bytesOf(10));
    client().MoveToNas(guid);
    EXPECT_EQ(move().moved, 1);
    clock.now += 10'000;
    EXPECT_EQ(move().removed, 0);
    EXPECT_EQ(stored().size(), 1);
    configuration().removeExpired = true;
    EXPECT_EQ(move().removed, 1);
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(file(address).state, FileState::Removed);
    EXPECT_TRUE(client().RequestFile(address, LockState::Shared).isEmpty());
    EXPECT_EQ(move().removed, 0);
}

TEST_F(Moving, RemovesTheOtherExpiredFilesWhenTheRegistryNamesAPathElsewhere)
{
    const QString guid = newGroup(QDateTime::fromMSecsSinceEpoch(clock.now + 1'000));
    add(guid, "a", bytesOf(10));
    add(guid, "b", bytesOf(10));
    client().MoveToNas(guid);
    EXPECT_EQ(move().moved, 2);
    const QString outside = recording("outside");
    writeBytes(outside, bytesOf(10));
    Database database(configuration().directory + "/archive.sqlite", 0600);
    EXPECT_EQ(database.change("UPDATE group_files SET stored_path = :path WHERE id = 1", {{"path", outside}}), 1);
    clock.now += 10'000;
    configuration().removeExpired = true;
    const MoverReport report = move();
    EXPECT_EQ(report.removed, 1);
    EXPECT_EQ(report.failed, 1);
    EXPECT_TRUE(report.problem.isEmpty()) << report.problem.toStdString();
    EXPECT_TRUE(QFile::exists(outside));
    EXPECT_EQ(stored().size(), 1);
}

TEST_F(Moving, SaysAgainWhatAPowerCutTookFromTheRegistry)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(10));
    Database database(configuration().directory + "/archive.sqlite", 0600);
    EXPECT_EQ(database.change("UPDATE group_files SET state = :state", {{"state", FileState::Stored}}), 1);
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(file(address).state, FileState::Moved);
    EXPECT_EQ(stored().size(), 1);
}

TEST_F(Moving, WaitsForTheDeviceButWhereAChangeMayBeLost)
{
    constexpr int Wal = 1;
    constexpr int EveryChange = 2;
    recordAndMove("a", bytesOf(10));
    Database database(configuration().directory + "/archive.sqlite", 0600);
    const auto waits = [&database] { return database.value("PRAGMA synchronous")->toInt(); };
    EXPECT_EQ(waits(), EveryChange);
    database.withoutWaiting([&] { EXPECT_EQ(waits(), Wal); });
    EXPECT_EQ(waits(), EveryChange);
    EXPECT_THROW(database.withoutWaiting([] { throw ArchiveError({}, ZelvoError::BadName); }), ArchiveError);
    EXPECT_EQ(waits(), EveryChange);
}

TEST_F(Moving, StopsBetweenPiecesWithoutLeavingAnything)
{
    record("a", bytesOf(3'000'000));
    Files files;
    int asked = 0;
    const MoverReport report = MoverCore(configuration(), files, clock.clock()).run([&asked] { return ++asked == 3; });
    EXPECT_TRUE(report.interrupted);
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(move().moved, 1);
}

TEST_F(Moving, DoesNotBelieveAStorageThatKeepsOtherBytes)
{
    class Forgetful final : public Files {
    public:
        Digest copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop) override
        {
            const Digest digest = Files::copy(from, to, mode, stop);
            QFile file(to);
            EXPECT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(5) && file.write("?") == 1);
            return digest;
        }
    };
    record("a", bytesOf(10));
    Forgetful files;
    const MoverReport report = move(files);
    EXPECT_EQ(report.failed, 1);
    EXPECT_TRUE(report.messages.at(0).endsWith("is not what was written"));
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(readFile(recording("a.rec")), bytesOf(10));
}
