// What a client is given for an address, and what it is refused.
#include <csignal>

#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

namespace {

class Requests : public ArchiveTest {
protected:
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
};

using Registration = ArchiveTest;
using Cache = Requests;

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
    writeBytes(path, bytesOf(2'000, 1));
    EXPECT_EQ(move().moved, 0) << "not while it is open";
    client().CloseFile(address);
    EXPECT_EQ(client().GetError(), ZelvoError::None);
    EXPECT_EQ(file(address).state, FileState::Edited);
    EXPECT_EQ(given(address), bytesOf(2'000, 1));
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
    EXPECT_EQ(given(address), bytesOf(1'000));
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
    writeBytes(ZelvoClient(configuration()).RequestFile(address, LockState::Exclusive), bytesOf(1));
    EXPECT_EQ(readFile(client().RequestFile(address, LockState::Exclusive)), bytesOf(1'000));
}

TEST_F(Requests, ForACopyThatWasAlteredAreRefused)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(1'000));
    const QString path = storedPath(address);
    writeBytes(path, bytesOf(1'000, 1));
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
    EXPECT_EQ(given(addresses[1]).size(), 1'000);
    EXPECT_FALSE(client().RequestFile(addresses[2], LockState::Shared).isEmpty());
    EXPECT_EQ(cached(), QStringList({"a.rec", "c.rec"})) << "the oldest is in use, the next had to go";
    client().CloseFile(addresses[0]);
    client().CloseFile(addresses[2]);
    EXPECT_EQ(given(addresses[0]).size(), 1'000);
    EXPECT_FALSE(client().RequestFile(addresses[1], LockState::Shared).isEmpty());
    EXPECT_EQ(cached(), QStringList({"a.rec", "b.rec"})) << "what was read last stays longest";
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
    for (const QString& guid :
         QStringList{QString(), "ERROR", "Initial GUID String", "4c1c3b0e-0000-4000-8000-000000000000"}) {
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
