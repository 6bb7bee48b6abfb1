// What a client is given for an address, and what it is refused.
#include <array>
#include <csignal>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

namespace {

class Requests : public ArchiveTest {
protected:
    ZelvoUrl recordAndMove(const QString& base, const QByteArray& bytes)
    {
        const ZelvoUrl address = record(base, bytes);
        EXPECT_EQ(move().moved, 1);
        return address;
    }
    [[nodiscard]] QStringList cached() const
    {
        QStringList names;
        QDirIterator walk(folder() + "/archive/cache", QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            walk.next();
            names += walk.fileName();
        }
        names.sort();
        return names;
    }
    void expectRefused(const QString& text, ZelvoError code)
    {
        for (const LockState lock : {LockState::Shared, LockState::Exclusive}) {
            EXPECT_TRUE(client().RequestFile(ZelvoUrl(text), lock).isEmpty()) << text.toStdString();
            EXPECT_EQ(client().GetError(), code) << text.toStdString();
            EXPECT_FALSE(client().GetErrorString().isEmpty());
        }
    }
};

class Registration : public Requests {};
class Security : public Requests {};
class Cache : public Requests {};

/// A process that has a file open until it is killed.
class Holder {
public:
    Holder(const ArchiveConfiguration& configuration, const ZelvoUrl& address, LockState lock)
    {
        std::array<int, 2> ready{};
        EXPECT_EQ(pipe(ready.data()), 0);
        m_child = fork();
        if (m_child == 0) {
            ZelvoClient client(configuration);
            const QString path = client.RequestFile(address, lock);
            if (lock == LockState::Exclusive && !path.isEmpty()) {
                QFile file(path);
                static_cast<void>(file.open(QIODevice::Append) && file.write("unfinished") > 0 && file.flush());
            }
            const char answer = path.isEmpty() ? 'n' : 'y';
            static_cast<void>(write(ready[1], &answer, 1) == 1);
            while (true) {
                pause();
            }
        }
        char answer = 'n';
        EXPECT_EQ(read(ready[0], &answer, 1), 1);
        EXPECT_EQ(answer, 'y');
        close(ready[0]);
        close(ready[1]);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() { end(); }

    void end()
    {
        if (m_child > 0) {
            kill(m_child, SIGKILL);
            waitpid(m_child, nullptr, 0);
            m_child = 0;
        }
    }

private:
    pid_t m_child = 0;
};

}  // namespace

TEST_F(Requests, ForReadingGiveTheFetchedFileToSeveral)
{
    ZelvoClient other(configuration());
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    const QString path = client().RequestFile(address, LockState::Shared);
    EXPECT_EQ(readFile(path), bytesOf(1'000));
    EXPECT_TRUE(path.endsWith("/a.rec"));
    EXPECT_EQ(other.RequestFile(address, LockState::Shared), path);
    EXPECT_TRUE(other.RequestFile(address, LockState::Shared).isEmpty()) << "it has the file open already";
    EXPECT_EQ(other.GetError(), ZelvoError::Locked);
}

TEST_F(Requests, ForWritingAreForOneAlone)
{
    ZelvoClient other(configuration());
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    ASSERT_FALSE(client().RequestFile(address, LockState::Exclusive).isEmpty());
    for (const LockState lock : {LockState::Shared, LockState::Exclusive}) {
        EXPECT_TRUE(other.RequestFile(address, lock).isEmpty());
        EXPECT_EQ(other.GetError(), ZelvoError::Locked);
    }
    client().CloseFile(address);
    ASSERT_FALSE(other.RequestFile(address, LockState::Shared).isEmpty());
    EXPECT_TRUE(client().RequestFile(address, LockState::Exclusive).isEmpty());
    EXPECT_EQ(client().GetError(), ZelvoError::Locked);
}

TEST_F(Requests, ForWritingMakeANewVersionWhenTheFileIsClosed)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    const QString before = file(address).storedPath;
    const QString path = client().RequestFile(address, LockState::Exclusive);
    writeFile(path, bytesOf(2'000, 1));
    EXPECT_EQ(move().moved, 0) << "not while it is open";
    client().CloseFile(address);
    EXPECT_EQ(client().GetError(), ZelvoError::None);
    EXPECT_EQ(file(address).state, FileState::Edited);
    EXPECT_EQ(readFile(client().RequestFile(address, LockState::Shared)), bytesOf(2'000, 1));
    client().CloseFile(address);
    EXPECT_EQ(move().moved, 1);
    const FileInfo info = file(address);
    EXPECT_EQ(info.version, 2);
    EXPECT_EQ(info.bytes, 2'000);
    EXPECT_EQ(storedBytes(address), bytesOf(2'000, 1));
    EXPECT_NE(info.storedPath, before);
    EXPECT_EQ(stored(), QStringList(info.storedPath));
    EXPECT_EQ(readFile(client().RequestFile(address, LockState::Shared)), bytesOf(2'000, 1));
}

TEST_F(Requests, ForWritingThatChangeNothingStoreNothing)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    const QString path = client().RequestFile(address, LockState::Exclusive);
    client().CloseFile(address);
    EXPECT_EQ(file(address).state, FileState::Moved);
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_FALSE(client().RequestFile(address, LockState::Exclusive).isEmpty());
}

TEST_F(Requests, OfADeadProcessAreReleasedAndItsHalfDoneChangesDropped)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    Holder holder(configuration(), address, LockState::Exclusive);
    EXPECT_TRUE(client().RequestFile(address, LockState::Shared).isEmpty());
    EXPECT_EQ(client().GetError(), ZelvoError::Locked);
    holder.end();
    EXPECT_EQ(readFile(client().RequestFile(address, LockState::Shared)), bytesOf(1'000));
    client().CloseFile(address);
    EXPECT_EQ(readFile(client().RequestFile(address, LockState::Exclusive)), bytesOf(1'000));
    client().CloseFile(address);
    EXPECT_EQ(move().failed, 0);
    EXPECT_EQ(storedBytes(address), bytesOf(1'000));
}

TEST_F(Requests, OfADeadReaderAreReleased)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    Holder holder(configuration(), address, LockState::Shared);
    EXPECT_TRUE(client().RequestFile(address, LockState::Exclusive).isEmpty());
    holder.end();
    EXPECT_FALSE(client().RequestFile(address, LockState::Exclusive).isEmpty());
}

TEST_F(Requests, AreReleasedWithTheClient)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    writeFile(ZelvoClient(configuration()).RequestFile(address, LockState::Exclusive), bytesOf(1));
    EXPECT_EQ(readFile(client().RequestFile(address, LockState::Exclusive)), bytesOf(1'000));
}

TEST_F(Requests, ForACopyThatWasAlteredAreRefused)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    const QString path = storage() + QLatin1Char('/') + file(address).storedPath;
    writeFile(path, bytesOf(1'000, 1));
    expectRefused(address.toString(), ZelvoError::Damaged);
    EXPECT_TRUE(cached().isEmpty());
    std::vector<StorageProblem> problems;
    Archive archive(configuration());
    const auto collect = [&problems](const StorageProblem& problem) {
        problems.push_back(problem);
        return true;
    };
    EXPECT_EQ(archive.verify(collect), 0);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems[0].kind, StorageProblem::Kind::Altered);
    QFile::remove(path);
    EXPECT_EQ(archive.verify(collect), 0);
    ASSERT_EQ(problems.size(), 2U);
    EXPECT_EQ(problems[1].kind, StorageProblem::Kind::Missing);
    expectRefused(address.toString(), ZelvoError::Damaged);
}

TEST_F(Requests, WhoseTimeIsOverAreNotKnownToAnArchive)
{
    expectRefused("zelvo:///4c1c3b0e-0000-4000-8000-000000000000/1", ZelvoError::UnknownFile);
    client().CloseFile(ZelvoUrl("zelvo:///4c1c3b0e-0000-4000-8000-000000000000/1"));
    EXPECT_EQ(client().GetError(), ZelvoError::UnknownFile);
}

TEST_F(Cache, KeepsWithinItsLimitWithoutWhatIsInUse)
{
    configuration().cacheBytes = 2'500;
    std::vector<ZelvoUrl> addresses;
    for (const char* name : {"a", "b", "c"}) {
        addresses.push_back(recordAndMove(QLatin1String(name), bytesOf(1'000)));
    }
    EXPECT_FALSE(client().RequestFile(addresses[0], LockState::Shared).isEmpty());
    EXPECT_FALSE(client().RequestFile(addresses[1], LockState::Shared).isEmpty());
    client().CloseFile(addresses[1]);
    EXPECT_FALSE(client().RequestFile(addresses[2], LockState::Shared).isEmpty());
    EXPECT_EQ(cached(), QStringList({QStringLiteral("a.rec"), QStringLiteral("c.rec")}))
        << "the oldest is in use, the next had to go";
    client().CloseFile(addresses[0]);
    client().CloseFile(addresses[2]);
    EXPECT_FALSE(client().RequestFile(addresses[0], LockState::Shared).isEmpty());
    client().CloseFile(addresses[0]);
    EXPECT_FALSE(client().RequestFile(addresses[1], LockState::Shared).isEmpty());
    EXPECT_EQ(cached(), QStringList({QStringLiteral("a.rec"), QStringLiteral("b.rec")}))
        << "what was read last stays longest";
}

TEST_F(Cache, FetchesOnceWhatIsReadTwice)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    const QString path = client().RequestFile(address, LockState::Shared);
    client().CloseFile(address);
    ASSERT_TRUE(QDir().rename(storage(), storage() + ".away"));
    EXPECT_EQ(client().RequestFile(address, LockState::Shared), path);
    EXPECT_EQ(readFile(path), bytesOf(1'000));
}

TEST_F(Registration, NeedsAGroupThatIsThere)
{
    for (const QString& guid : {QString(), QStringLiteral("ERROR"), QStringLiteral("Initial GUID String"),
                                QStringLiteral("4c1c3b0e-0000-4000-8000-000000000000")}) {
        EXPECT_EQ(client().AddFile("a.rec", guid), 0U);
        EXPECT_EQ(client().GetError(), ZelvoError::UnknownGroup);
        client().MoveToNas(guid);
        EXPECT_EQ(client().GetError(), ZelvoError::UnknownGroup);
    }
    newGroup();
    EXPECT_EQ(client().GetError(), ZelvoError::None) << "the next request is a new one";
}

TEST_F(Registration, LeavesTheDirectoryAsItIs)
{
    QString directory = recordings();
    client().CreateFileGroup(QString(), QDateTime(), QString(), QString(), FileType::Recording, 0, QString(), directory,
                             QString());
    EXPECT_EQ(directory, recordings());
}

TEST_F(Registration, KeepsTextsThatLookLikeCommandsOfTheRegistry)
{
    const QString text = QStringLiteral("'); DROP TABLE group_files; --\u00e4\"%1 ?");
    client().SetUser(text);
    QString directory = recordings();
    const QString guid = client().CreateFileGroup(text, QDateTime::currentDateTime(), text, text, FileType::Recording,
                                                  1, text, directory, text);
    const QString name = QStringLiteral("'); DROP TABLE group_files; --.rec");
    EXPECT_EQ(client().AddFile(name, guid), 1U);
    Archive archive(configuration());
    EXPECT_EQ(archive.group(guid)->data.description, text);
    EXPECT_EQ(archive.group(guid)->data.user, text);
    EXPECT_EQ(archive.files(guid).at(0).name, name);
    EXPECT_TRUE(archive.files("' OR '1'='1").empty());
}

TEST_F(Security, RefusesNamesThatAreNotOneComponentOfAPath)
{
    const QString guid = newGroup();
    const QStringList names = {QString(),
                               QStringLiteral("."),
                               QStringLiteral(".."),
                               QStringLiteral("../a.rec"),
                               QStringLiteral("/etc/passwd"),
                               QStringLiteral("a/b.rec"),
                               QStringLiteral("a\\b.rec"),
                               QStringLiteral("..\\a.rec"),
                               QStringLiteral(".hidden"),
                               QStringLiteral("a\nb.rec"),
                               QStringLiteral("a.rec") + QChar(0) + QStringLiteral(".txt"),
                               QString(QChar(0xD800)) + QStringLiteral(".rec"),
                               QString(300, QLatin1Char('a')),
                               QStringLiteral("a.tmp")};
    for (const QString& name : names) {
        EXPECT_EQ(client().AddFile(name, guid), 0U) << name.toStdString();
        EXPECT_EQ(client().GetError(), ZelvoError::BadName) << name.toStdString();
    }
    EXPECT_TRUE(Archive(configuration()).files(guid).empty());
}

TEST_F(Security, RefusesDirectoriesThatAreNotAbsolute)
{
    for (const QString& directory : {QString(), QStringLiteral("recordings"), QStringLiteral("../x"),
                                     recordings() + QChar(0) + QStringLiteral("/x")}) {
        EXPECT_EQ(groupOf(client(), directory), "ERROR") << directory.toStdString();
        EXPECT_EQ(client().GetError(), ZelvoError::BadName);
    }
}

TEST_F(Security, RefusesAddressesThatTheArchiveCannotHaveGiven)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(10));
    const QString guid = file(address).guid;
    const QStringList texts = {QString(),
                               QStringLiteral("/etc/passwd"),
                               QStringLiteral("file:///etc/passwd"),
                               QStringLiteral("zelvo:///../1"),
                               QStringLiteral("zelvo:///..%2f..%2fetc/passwd"),
                               QStringLiteral("zelvo:///../../etc/passwd"),
                               QStringLiteral("zelvo:///./") + guid,
                               QStringLiteral("zelvo:////etc/passwd"),
                               QStringLiteral("zelvo:///%1/../1").arg(guid),
                               QStringLiteral("zelvo:///%1/1/../1").arg(guid),
                               QStringLiteral("zelvo:///%1/-1").arg(guid),
                               QStringLiteral("zelvo:///%1/+1").arg(guid),
                               QStringLiteral("zelvo:///%1/01").arg(guid),
                               QStringLiteral("zelvo:///%1/1 ").arg(guid),
                               QStringLiteral("zelvo:///%1/0x1").arg(guid),
                               QStringLiteral("zelvo:///%1/4294967297").arg(guid),
                               QStringLiteral("zelvo:///%1/1").arg(guid.toUpper()) + QChar(0),
                               QStringLiteral("zelvo:///%1/1").arg(guid) + QChar(0) + QStringLiteral("/x"),
                               QStringLiteral("zelvo:///%1/1\n").arg(guid),
                               QStringLiteral("zelvo:///{%1}/1").arg(guid)};
    for (const QString& text : texts) {
        EXPECT_FALSE(client().IsValidURL(ZelvoUrl(text))) << text.toStdString();
        expectRefused(text, ZelvoError::BadName);
    }
    EXPECT_TRUE(client().IsValidURL(address));
}

TEST_F(Security, MovesNoFileThatIsALink)
{
    const QString secret = folder() + QStringLiteral("/secret");
    writeFile(secret, bytesOf(10));
    ASSERT_TRUE(QFile::link(secret, recording("a.rec")));
    const QString guid = newGroup();
    const std::uint32_t id = client().AddFile("a.rec", guid);
    client().MoveToNas(guid);
    EXPECT_EQ(move().failed, 1);
    EXPECT_TRUE(stored().isEmpty());
    EXPECT_TRUE(QFile::exists(secret));
    EXPECT_TRUE(client().RequestFile(url(guid, id), LockState::Shared).isEmpty());
    EXPECT_TRUE(client().RequestFile(url(guid, id), LockState::Exclusive).isEmpty());
}

TEST_F(Security, FollowsNoLinkInTheStorage)
{
    const ZelvoUrl first = recordAndMove("a", bytesOf(10));
    const QString path = storage() + QLatin1Char('/') + file(first).storedPath;
    const QString secret = folder() + QStringLiteral("/secret");
    writeFile(secret, bytesOf(10));
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QFile::link(secret, path));
    expectRefused(first.toString(), ZelvoError::Damaged);
    // A directory of the storage that is a link leads outside for reading and for writing.
    const ZelvoUrl second = record("b", bytesOf(10));
    const QString outside = folder() + QStringLiteral("/outside");
    ASSERT_TRUE(QDir().mkpath(outside));
    const QString month = QFileInfo(path).dir().path().section(QLatin1Char('/'), 0, -2);
    const QString group = month + QLatin1Char('/') + file(second).guid;
    ASSERT_TRUE(QFile::link(outside, group));
    EXPECT_EQ(move().failed, 1);
    EXPECT_TRUE(QDir(outside).isEmpty());
    EXPECT_EQ(file(second).error, group + " should be a directory of the storage and is none");
}

TEST_F(Security, BelievesNoPathOfTheRegistryThatLeavesTheStorage)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(10));
    const QString guid = file(address).guid;
    Database database(configuration().directory + "/archive.sqlite", 0600);
    for (const QString& path : {QStringLiteral("/etc/passwd"), QStringLiteral("../../../../etc/passwd"),
                                QStringLiteral("2026-11/%1/../../../x").arg(guid),
                                QStringLiteral("2026-11/%1/1-..").arg(guid), QStringLiteral("..")}) {
        EXPECT_EQ(database.change("UPDATE group_files SET stored_path = :path", {{"path", path}}), 1);
        expectRefused(address.toString(), ZelvoError::BadName);
    }
}

TEST_F(Security, BelievesNoNameOfTheRegistryThatLeavesTheCache)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(10));
    Database database(configuration().directory + "/archive.sqlite", 0600);
    for (const QString& name :
         {QStringLiteral("../../../outside"), QStringLiteral("/tmp/outside"), QStringLiteral(".."), QString()}) {
        EXPECT_EQ(database.change("UPDATE group_files SET name = :name", {{"name", name}}), 1);
        expectRefused(address.toString(), ZelvoError::BadName);
    }
}

TEST_F(Security, BelievesNoGroupOfTheRegistryThatLeavesTheLocks)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(10));
    Database database(configuration().directory + "/archive.sqlite", 0600);
    database.run("PRAGMA foreign_keys = OFF");
    const QString elsewhere = QStringLiteral("../../outside");
    EXPECT_EQ(
        database.change(QStringLiteral("INSERT INTO group_files (guid, id, name, station, local_path, unfinished, "
                                       "created, state, stored_path) SELECT :guid, id, name, station, local_path, "
                                       "unfinished, created, 2, stored_path FROM group_files"),
                        {{"guid", elsewhere}}),
        1);
    EXPECT_EQ(database.change(QStringLiteral("UPDATE group_files SET state = 5, same_guid = :guid, same_id = id "
                                             "WHERE guid <> :guid"),
                              {{"guid", elsewhere}}),
              1);
    expectRefused(address.toString(), ZelvoError::BadName);
    EXPECT_FALSE(QFile::exists(QDir::cleanPath(folder() + "/outside_1")));
}

TEST_F(Security, FetchedFilesHaveTheConfiguredPermissions)
{
    configuration().fileMode = 0640;
    const ZelvoUrl address = recordAndMove("a", bytesOf(10));
    struct stat info = {};
    ASSERT_EQ(stat(QFile::encodeName(client().RequestFile(address, LockState::Shared)).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0440U) << "nobody writes what several read";
    client().CloseFile(address);
    ASSERT_EQ(stat(QFile::encodeName(client().RequestFile(address, LockState::Exclusive)).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0640U);
}
