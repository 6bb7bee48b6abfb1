// The archive's configuration and its set-up.
#include "archivefixture.h"

using namespace Zelvo;
using namespace ArchiveTests;

namespace {

QString refusalOf(const QString& text)
{
    try {
        static_cast<void>(ParseArchiveConfiguration(text, "archive.toml"));
        return "taken";
    } catch (const ArchiveError& error) {
        return error.text();
    }
}

const QString Least = QStringLiteral("[archive]\nDirectory = \"/var/lib/a\"\nStorage = \"/mnt/b/\"\n");

}  // namespace

TEST(ArchiveConfiguration, NeedsADirectoryAndAStorageOnly)
{
    const ArchiveConfiguration configuration =
        ParseArchiveConfiguration(QStringLiteral("[receiver]\nValuePath = 7\n") + Least, "a.toml");
    EXPECT_EQ(configuration.directory, "/var/lib/a");
    EXPECT_EQ(configuration.storage, "/mnt/b");
    EXPECT_TRUE(configuration.registry.isEmpty());
    EXPECT_EQ(configuration.station, QSysInfo::machineHostName());
    EXPECT_FALSE(configuration.removeExpired);
}

TEST(ArchiveConfiguration, TakesEveryKey)
{
    const ArchiveConfiguration configuration = ParseArchiveConfiguration(
        Least + QStringLiteral("Registry = \"postgresql://rec@db.example:5433/archive\"\nStation = \"north\"\n"
                               "CacheBytes = 1_000\nFileMode = \"0600\"\nDirectoryMode = \"0700\"\n"
                               "RemoveExpired = true\nFirstPauseSeconds = 2\nLongestPauseSeconds = 60\n"),
        "a.toml");
    EXPECT_EQ(configuration.registry, "postgresql://rec@db.example:5433/archive");
    EXPECT_EQ(configuration.station, "north");
    EXPECT_EQ(configuration.cacheBytes, 1'000U);
    EXPECT_EQ(configuration.fileMode, 0600U);
    EXPECT_EQ(configuration.directoryMode, 0700U);
    EXPECT_TRUE(configuration.removeExpired);
    EXPECT_EQ(configuration.firstPauseMs, 2'000);
    EXPECT_EQ(configuration.longestPauseMs, 60'000);
}

TEST(ArchiveConfiguration, TellsWhereItIsWrong)
{
    EXPECT_EQ(refusalOf(QString()), "archive.toml has no table [archive]");
    EXPECT_EQ(refusalOf(Least + "Storge = 1\n"), "archive.toml:4: Storge of [archive] means nothing");
    EXPECT_EQ(refusalOf(Least + "RemoveExpired = 1\n"),
              "archive.toml:4: RemoveExpired of [archive] must be true or false");
    EXPECT_EQ(refusalOf(Least + "CacheBytes = -1\n"),
              "archive.toml:4: CacheBytes of [archive] must be from 0 to 9223372036854775807");
    EXPECT_EQ(refusalOf(Least + "FileMode = \"rw\"\n"),
              "archive.toml:4: FileMode of [archive] must be permissions in octal such as \"0640\"");
    EXPECT_EQ(refusalOf("[archive]\nDirectory = \"/a\"\n"), "the archive's configuration has no Storage");
    EXPECT_EQ(refusalOf("[archive]\nDirectory = \"a\"\nStorage = \"/b\"\n"),
              "Directory of the archive must be an absolute path, found \"a\"");
    EXPECT_EQ(refusalOf("[archive]\nDirectory = \"/a\"\nStorage = \"/a/b\"\n"),
              "Directory and Storage of the archive must lie apart: /a, /a/b");
    EXPECT_TRUE(refusalOf("[archive\n").startsWith("archive.toml:1: "));
    EXPECT_TRUE(refusalOf(Least + "Registry = \"mysql://a/b\"\n").contains("postgresql://USER@HOST:PORT/DATABASE"));
}

TEST(ArchiveConfiguration, RefusesWhatTheParserDoesNotExpectToo)
{
    EXPECT_TRUE(refusalOf(Least + "[,a]\n").startsWith("archive.toml:4: "));
    EXPECT_TRUE(refusalOf(Least + QString(QChar(0xFC)) + " = 1\n").startsWith("archive.toml:4: "));
}

TEST(ArchiveConfiguration, RefusesAPasswordAndDoesNotRepeatIt)
{
    for (const QString registry :
         {"postgresql://rec:s3cr3t@db/archive", "postgresql://rec@db/archive?password=s3cr3t"}) {
        const QString refusal = refusalOf(Least + QStringLiteral("Registry = \"%1\"\n").arg(registry));
        EXPECT_TRUE(refusal.contains("PGPASSWORD")) << refusal.toStdString();
        EXPECT_FALSE(refusal.contains("s3cr3t"));
    }
}

TEST(ProcessArchive, IsWhatClientsWithoutAConfigurationUse)
{
    const QTemporaryDir folder(temporaryTemplate());
    StationFolder station(folder.path(), folder.filePath("storage"));
    EXPECT_FALSE(ZelvoClient::IsZelvoAvailable());
    SetProcessArchive(station.configuration);
    EXPECT_FALSE(ZelvoClient::IsZelvoAvailable()) << "it is not set up";
    EXPECT_FALSE(ZelvoClient().IsConnected());
    SetUpArchive(station.configuration);
    EXPECT_TRUE(ZelvoClient::IsZelvoAvailable());
    ZelvoClient client;
    EXPECT_TRUE(client.IsConnected());
    EXPECT_FALSE(groupOf(client, station.recordings()).isEmpty());
    SetProcessArchive(std::nullopt);
    EXPECT_FALSE(ZelvoClient::IsZelvoAvailable());
}

TEST(ProcessArchive, IsTheOneOfTheEnvironmentWhereNoneIsSet)
{
    const QTemporaryDir folder(temporaryTemplate());
    StationFolder station(folder.path(), folder.filePath("storage"));
    const QString path = folder.filePath("archive.toml");
    writeBytes(path, QStringLiteral("[archive]\nDirectory = \"%1\"\nStorage = \"%2\"\n")
                         .arg(station.configuration.directory, station.configuration.storage)
                         .toUtf8());
    SetUpArchive(LoadArchiveConfiguration(path));
    qputenv("ZELVO_CONFIG", QFile::encodeName(path));
    EXPECT_TRUE(ZelvoClient::IsZelvoAvailable());
    qputenv("ZELVO_CONFIG", "/nowhere");
    EXPECT_FALSE(ZelvoClient::IsZelvoAvailable());
    qunsetenv("ZELVO_CONFIG");
    EXPECT_FALSE(ZelvoClient::IsZelvoAvailable());
}

class SetUp : public ArchiveTest {};

TEST_F(SetUp, CanBeRepeatedAndChangesNothing)
{
    record("a", bytesOf(10));
    SetUpArchive(configuration());
    EXPECT_EQ(Archive(configuration()).status().waiting, 1);
    EXPECT_EQ(move().moved, 1);
}

TEST_F(SetUp, WritesNoSecondMarkIntoAStorageThatIsAway)
{
    ASSERT_TRUE(QFile::remove(storage() + "/.zelvo-storage"));
    SetUpArchive(configuration());
    EXPECT_FALSE(QFile::exists(storage() + "/.zelvo-storage"));
    EXPECT_FALSE(Archive(configuration()).status().storageUsable);
}

TEST_F(SetUp, KeepsADirectoryForOneStation)
{
    configuration().station = QStringLiteral("south");
    EXPECT_THROW(SetUpArchive(configuration()), ArchiveError);
    EXPECT_THROW(Archive{configuration()}, ArchiveError);
    EXPECT_FALSE(ZelvoClient(configuration()).IsConnected());
}

TEST_F(SetUp, NeedsAStorageThatIsThere)
{
    const QTemporaryDir folder(temporaryTemplate());
    StationFolder station(folder.path(), folder.filePath("storage"));
    ASSERT_TRUE(QDir().rmdir(station.configuration.storage));
    EXPECT_THROW(SetUpArchive(station.configuration), ArchiveError);
}
