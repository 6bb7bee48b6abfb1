// Names, addresses and links that lead elsewhere: none is followed, whoever gave it.
#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

using Security = ArchiveTest;

TEST_F(Security, RefusesNamesThatAreNotOneComponentOfAPath)
{
    const QString guid = newGroup();
    const QStringList names = {QString(),
                               ".",
                               "..",
                               "../a.rec",
                               "/etc/passwd",
                               "a/b.rec",
                               "a\\b.rec",
                               "..\\a.rec",
                               ".hidden",
                               "a\nb.rec",
                               QStringLiteral("a.rec") + QChar(0) + ".txt",
                               QString(QChar(0xD800)) + ".rec",
                               QString(300, QLatin1Char('a')),
                               "a.tmp"};
    for (const QString& name : names) {
        EXPECT_EQ(client().AddFile(name, guid), 0U) << name.toStdString();
        EXPECT_EQ(client().GetError(), ZelvoError::BadName) << name.toStdString();
    }
    EXPECT_TRUE(Archive(configuration()).files(guid).empty());
}

TEST_F(Security, RefusesDirectoriesThatAreNotAbsolute)
{
    for (const QString& directory : QStringList{QString(), "recordings", "../x", recordings() + QChar(0) + "/x"}) {
        EXPECT_EQ(groupOf(client(), directory), "ERROR") << directory.toStdString();
        EXPECT_EQ(client().GetError(), ZelvoError::BadName);
    }
}

TEST_F(Security, RefusesAddressesThatTheArchiveCannotHaveGiven)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(10));
    const QString guid = file(address).guid;
    const QStringList texts = {QString(),
                               "/etc/passwd",
                               "file:///etc/passwd",
                               "zelvo:///../1",
                               "zelvo:///..%2f..%2fetc/passwd",
                               "zelvo:///../../etc/passwd",
                               QStringLiteral("zelvo:///./") + guid,
                               "zelvo:////etc/passwd",
                               QStringLiteral("zelvo:///%1/../1").arg(guid),
                               QStringLiteral("zelvo:///%1/1/../1").arg(guid),
                               QStringLiteral("zelvo:///%1/-1").arg(guid),
                               QStringLiteral("zelvo:///%1/+1").arg(guid),
                               QStringLiteral("zelvo:///%1/01").arg(guid),
                               QStringLiteral("zelvo:///%1/1 ").arg(guid),
                               QStringLiteral("zelvo:///%1/0x1").arg(guid),
                               QStringLiteral("zelvo:///%1/4294967297").arg(guid),
                               QStringLiteral("zelvo:///%1/1").arg(guid.toUpper()) + QChar(0),
                               QStringLiteral("zelvo:///%1/1").arg(guid) + QChar(0) + "/x",
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
    const QString secret = folder() + "/secret";
    writeBytes(secret, bytesOf(10));
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
    const QString path = storedPath(first);
    const QString secret = folder() + "/secret";
    writeBytes(secret, bytesOf(10));
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(QFile::link(secret, path));
    expectRefused(first.toString(), ZelvoError::Damaged);
    // A directory of the storage that is a link leads outside for reading and for writing.
    const ZelvoUrl second = record("b", bytesOf(10));
    const QString outside = folder() + "/outside";
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
    for (const QString& path :
         QStringList{"/etc/passwd", "../../../../etc/passwd", QStringLiteral("2026-11/%1/../../../x").arg(guid),
                     QStringLiteral("2026-11/%1/1-..").arg(guid), ".."}) {
        EXPECT_EQ(database.change("UPDATE group_files SET stored_path = :path", {{"path", path}}), 1);
        expectRefused(address.toString(), ZelvoError::BadName);
    }
}

TEST_F(Security, BelievesNoNameOfTheRegistryThatLeavesTheCache)
{
    const ZelvoUrl address = recordAndMove("a", bytesOf(10));
    Database database(configuration().directory + "/archive.sqlite", 0600);
    for (const QString& name : QStringList{"../../../outside", "/tmp/outside", "..", QString()}) {
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
    EXPECT_EQ(modeOf(client().RequestFile(address, LockState::Shared)), 0440U) << "nobody writes what several read";
    client().CloseFile(address);
    EXPECT_EQ(modeOf(client().RequestFile(address, LockState::Exclusive)), 0640U);
}
