// Moving: what goes when, and what is left after it.
#include <set>

#include <QCryptographicHash>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

namespace {

class Moving : public ArchiveTest {};
class Groups : public ArchiveTest {};

// In a process that ends without asking for the move, as a recorder that was killed.
template <typename Work>
void inAnotherProcess(const Work& work)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
}

}  // namespace

TEST_F(Moving, TakesAFinishedRecordingToTheStorageAndDeletesTheOriginal)
{
    const QByteArray bytes = bytesOf(100'000);
    const ZelvoUrl address = record("a", bytes);
    const MoverReport report = move();
    EXPECT_TRUE(report.problem.isEmpty()) << report.problem.toStdString();
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

TEST_F(Groups, StayUntilTheyAreAskedFor)
{
    const QString guid = newGroup();
    begin(guid, "a", bytesOf(10));
    finish("a");
    EXPECT_EQ(move().moved, 0);
    EXPECT_TRUE(QFile::exists(recording("a.rec")));
    client().MoveToNas(guid);
    EXPECT_EQ(move().moved, 1);
}

TEST_F(Groups, OfASplitRecordingGoTogetherWithTheOneMoveAtItsEnd)
{
    const QString guid = newGroup();
    for (std::uint32_t part = 0; part < 3; ++part) {
        EXPECT_EQ(begin(guid, QString::number(part), bytesOf(10, static_cast<int>(part))), part + 1);
        EXPECT_EQ(move().moved, 0);
        finish(QString::number(part));
    }
    client().MoveToNas(guid);
    EXPECT_EQ(move().moved, 3);
    EXPECT_EQ(stored().size(), 3);
}

TEST_F(Groups, StayAsAWholeWhileOneMemberIsStillRecorded)
{
    const QString guid = newGroup();
    const std::uint32_t first = begin(guid, "a", bytesOf(10, 1));
    const std::uint32_t second = begin(guid, "b", bytesOf(10, 2));
    finish("a");
    client().MoveToNas(guid);
    const MoverReport report = move();
    EXPECT_EQ(report.moved, 0);
    EXPECT_EQ(report.waiting, 2);
    EXPECT_EQ(file(url(guid, second)).error, QStringLiteral("is still recorded as ") + recording("b.tmp"));
    finish("b");
    EXPECT_EQ(move().moved, 2);
    EXPECT_EQ(storedBytes(url(guid, first)), bytesOf(10, 1));
    EXPECT_EQ(storedBytes(url(guid, second)), bytesOf(10, 2));
}

TEST_F(Groups, KnowAMemberWhoseUnfinishedNameHasDots)
{
    const QString guid = newGroup();
    writeFile(recording("rx.1.tmp"), bytesOf(10));
    client().AddFile("rx.rec", guid);
    client().MoveToNas(guid);
    EXPECT_EQ(move().failed, 0);
    QFile::rename(recording("rx.1.tmp"), recording("rx.rec"));
    EXPECT_EQ(move().moved, 1);
}

// A recorder that was split after another one of its process began a group adds its next file to that group.
TEST_F(Groups, TakeAFileOfAnotherRecorderFromWhereItIs)
{
    const QString other = folder() + QStringLiteral("/other");
    QDir().mkpath(other);
    ZelvoClient one(configuration());
    ZelvoClient two(configuration());
    const QString first = groupOf(one, recordings());
    const std::uint32_t a1 = beginFile(one, first, recordings(), "a1", bytesOf(10, 1));
    const QString second = groupOf(two, other);
    const std::uint32_t b1 = beginFile(two, second, other, "b1", bytesOf(10, 2));
    finish("a1");
    const std::uint32_t a2 = beginFile(one, second, recordings(), "a2", bytesOf(10, 3));
    // The first group is never asked for, but its process has gone on with another.
    EXPECT_EQ(move().moved, 1);
    finish("a2");
    one.MoveToNas(second);
    EXPECT_EQ(move().moved, 0) << "b1 is still recorded";
    finishFile(other, "b1");
    two.MoveToNas(second);
    EXPECT_EQ(move().moved, 2);
    EXPECT_EQ(storedBytes(url(first, a1)), bytesOf(10, 1));
    EXPECT_EQ(storedBytes(url(second, b1)), bytesOf(10, 2));
    EXPECT_EQ(storedBytes(url(second, a2)), bytesOf(10, 3));
    EXPECT_EQ(stored().size(), 3);
}

// Its name tells nothing about whether it is finished: only its recorder does.
TEST_F(Groups, WhoseFileBearsItsLastNameFromTheBeginningStayUntilTheyAreAskedFor)
{
    ZelvoClient one(configuration());
    ZelvoClient two(configuration());
    const QString first = groupOf(one, recordings());
    writeFile(recording("a.rec"), bytesOf(10));
    QFile open(recording("a.rec"));
    ASSERT_TRUE(open.open(QIODevice::ReadWrite));
    const std::uint32_t a = one.AddFile("a.rec", first);
    groupOf(two, recordings());  // the process goes on with another group
    const MoverReport report = move();
    EXPECT_EQ(report.moved, 0);
    EXPECT_EQ(report.waiting, 1);
    EXPECT_TRUE(open.exists());
    one.MoveToNas(first);
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(url(first, a)), bytesOf(10));
}

TEST_F(Groups, ThatShareAFileMoveItOnce)
{
    const QString first = newGroup();
    const QString second = newGroup();
    const std::uint32_t a = begin(first, "a", bytesOf(10));
    const std::uint32_t b = client().AddFile("a.rec", second);
    finish("a");
    client().MoveToNas(second);
    client().MoveToNas(second);
    client().MoveToNas(first);
    const MoverReport report = move();
    EXPECT_EQ(report.moved, 1);
    EXPECT_EQ(report.failed, 0);
    EXPECT_EQ(stored().size(), 1);
    const std::set<FileState> states = {file(url(first, a)).state, file(url(second, b)).state};
    EXPECT_EQ(states, (std::set{FileState::Moved, FileState::Same}));
    EXPECT_FALSE(client().RequestFile(url(first, a), LockState::Shared).isEmpty());
    client().CloseFile(url(first, a));
    EXPECT_FALSE(client().RequestFile(url(second, b), LockState::Shared).isEmpty());
    EXPECT_EQ(move().waiting, 0);
}

TEST_F(Groups, KeepAFileThatIsRecordedAnewUnderTheNameOfAMovedOne)
{
    const ZelvoUrl first = record("a", bytesOf(10, 1));
    EXPECT_EQ(move().moved, 1);
    const ZelvoUrl second = record("a", bytesOf(10, 2));
    clock.now += 1'000;
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(first), bytesOf(10, 1));
    EXPECT_EQ(storedBytes(second), bytesOf(10, 2));
}

TEST_F(Groups, OfADeadRecorderAreMovedWithoutBeingAskedFor)
{
    inAnotherProcess([this] {
        const QString guid = newGroup();
        begin(guid, "a", bytesOf(10));
        finish("a");
    });
    EXPECT_EQ(move().moved, 1);
    Archive archive(configuration());
    EXPECT_EQ(archive.groups().at(0).state, GroupState::Abandoned);
}

TEST_F(Groups, OfADeadRecorderWaitForTheRecoveryOfItsLastFile)
{
    inAnotherProcess([this] {
        const QString guid = newGroup();
        begin(guid, "a", bytesOf(10));
        finish("a");
        begin(guid, "b", bytesOf(20));
    });
    EXPECT_EQ(move().moved, 0);
    const std::vector<FileInfo> waiting = Archive(configuration()).status().notMoved;
    ASSERT_EQ(waiting.size(), 2U);
    EXPECT_EQ(waiting[1].error,
              QStringLiteral("waits until %1, whose recorder ended, is recovered").arg(recording("b.tmp")));
    finish("b");
    EXPECT_EQ(move().moved, 2);
}

TEST_F(Groups, WaitForTheRecoveryOfAFileWhoseClosingFailed)
{
    const QString journal = recording("a.tmp.journal");
    writeFile(journal, "what can make it whole");
    const ZelvoUrl address = record("a", bytesOf(10));
    EXPECT_EQ(move().moved, 0);
    EXPECT_EQ(
        file(address).error,
        QStringLiteral("waits until it is recovered: closing it had failed, and %1 can make it whole").arg(journal));
    ASSERT_TRUE(QFile::remove(journal));
    writeFile(recording("a.rec"), bytesOf(20));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(20));
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
    writeFile(recording("a.rec"), bytesOf(10));
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(file(address).attempts, 0);
}

TEST_F(Moving, NeverReplacesAnotherFileInTheStorage)
{
    const ZelvoUrl address = record("a", bytesOf(10, 1));
    const GroupInfo group = Archive(configuration()).groups().at(0);
    const QString path = storage() + QLatin1Char('/') + storedName(group.createdMs, {group.data.guid, 1}, 1, "a.rec");
    QDir().mkpath(QFileInfo(path).path());
    writeFile(path, bytesOf(10, 2));
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
    EXPECT_EQ(report.moved, 0);
    EXPECT_EQ(report.waiting, 1);
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
    writeFile(storage() + "/.zelvo-storage", "4c1c3b0e-0000-4000-8000-000000000000\n");
    EXPECT_TRUE(move().problem.endsWith("is the storage of another archive"));
}

TEST_F(Moving, MakesFilesWithTheConfiguredPermissions)
{
    configuration().fileMode = 0604;
    configuration().directoryMode = 0705;
    const ZelvoUrl address = record("a", bytesOf(10));
    EXPECT_EQ(move().moved, 1);
    struct stat info = {};
    const QString path = storage() + QLatin1Char('/') + file(address).storedPath;
    ASSERT_EQ(stat(QFile::encodeName(path).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0604U);
    ASSERT_EQ(stat(QFile::encodeName(QFileInfo(path).path()).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0705U);
}

TEST_F(Moving, MakesFilesWithTheirPermissionsLessTheMaskOfTheProcess)
{
    const auto modeOf = [](const QString& path) {
        struct stat info = {};
        EXPECT_EQ(stat(QFile::encodeName(path).constData(), &info), 0) << path.toStdString();
        return info.st_mode & 0777U;
    };
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
        for (const QString& name : {QStringLiteral("/archive.sqlite"), QStringLiteral("/station")}) {
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
    writeFile(path, bytesOf(20, 5));
    client().CloseFile(address);
    EXPECT_EQ(move().moved, 1);
    EXPECT_EQ(storedBytes(address), bytesOf(20, 5));
}

TEST_F(Moving, RemovesExpiredGroupsOnlyWhenItMay)
{
    const QString guid = newGroup(QDateTime::fromMSecsSinceEpoch(clock.now + 1'000));
    const std::uint32_t id = begin(guid, "a", bytesOf(10));
    finish("a");
    client().MoveToNas(guid);
    EXPECT_EQ(move().moved, 1);
    clock.now += 10'000;
    EXPECT_EQ(move().removed, 0);
    EXPECT_EQ(stored().size(), 1);
    configuration().removeExpired = true;
    EXPECT_EQ(move().removed, 1);
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_EQ(file(url(guid, id)).state, FileState::Removed);
    EXPECT_TRUE(client().RequestFile(url(guid, id), LockState::Shared).isEmpty());
    EXPECT_EQ(move().removed, 0);
}

TEST_F(Moving, RemovesTheOtherExpiredFilesWhenTheRegistryNamesAPathElsewhere)
{
    const QString guid = newGroup(QDateTime::fromMSecsSinceEpoch(clock.now + 1'000));
    for (const QString& base : {QStringLiteral("a"), QStringLiteral("b")}) {
        begin(guid, base, bytesOf(10));
        finish(base);
    }
    client().MoveToNas(guid);
    EXPECT_EQ(move().moved, 2);
    const QString outside = recording("outside");
    writeFile(outside, bytesOf(10));
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
