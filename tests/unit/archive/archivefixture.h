// An archive in a temporary folder, with recordings made of chosen bytes.
#pragma once

#include <QDirIterator>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zelvo/archive.h>
#include <zelvo/zelvo.h>

#include "mover/movercore.h"
#include "storage/files.h"
#include "support/files.h"

namespace ArchiveTests {

/// Bytes that tell files apart.
inline QByteArray bytesOf(int size, int seed = 0)
{
    QByteArray bytes(size, Qt::Uninitialized);
    unsigned value = static_cast<unsigned>(seed) * 2'654'435'761U + 1;
    for (char& byte : bytes) {
        value = value * 1'664'525U + 1'013'904'223U;
        byte = static_cast<char>(value >> 24U);
    }
    return bytes;
}

using TestSupport::writeBytes;

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct ManualClock {
    std::int64_t now = 1'800'000'000'000;
    [[nodiscard]] Zelvo::Clock clock()
    {
        return [this] { return now; };
    }
};

/// What these tests are about outlasts a process, not a power cut; in memory they are many times faster.
inline QString temporaryTemplate()
{
    const QFileInfo memory("/dev/shm");
    return (memory.isWritable() ? memory.filePath() : QDir::tempPath()) + "/archive-test-XXXXXX";
}

/// One station; several may share a storage and a registry.
class StationFolder {
public:
    explicit StationFolder(const QString& root, const QString& storage, const QString& name = QStringLiteral("north"))
        : m_root(root)
    {
        configuration.directory = root + "/archive";
        configuration.storage = storage;
        configuration.station = name;
        QDir().mkpath(recordings());
        QDir().mkpath(storage);
    }

    [[nodiscard]] QString recordings() const { return m_root + "/recordings"; }
    [[nodiscard]] QString recording(const QString& name) const { return recordings() + QLatin1Char('/') + name; }

    Zelvo::ArchiveConfiguration configuration;

private:
    QString m_root;
};

inline QString groupOf(Zelvo::ZelvoClient& client, const QString& directory,
                       const QDateTime& expires = QDateTime::currentDateTime().addDays(7))
{
    QString settled = directory;
    constexpr unsigned long long Most = 52'428'800;
    return client.CreateFileGroup("2", expires, "Start Time:now", "Scan-Records (Recording2)",
                                  Zelvo::FileType::Recording, Most, "Scan Recording - 12-00-00", settled, QString());
}

inline Zelvo::ZelvoUrl url(const QString& guid, std::uint32_t id)
{
    return Zelvo::ZelvoUrl(QStringLiteral("zelvo:///%1/%2").arg(guid).arg(id));
}

/// Registers a file while it is unfinished, as a recorder does.
inline std::uint32_t beginFile(Zelvo::ZelvoClient& client, const QString& guid, const QString& directory,
                               const QString& base, const QByteArray& bytes)
{
    writeBytes(directory + QLatin1Char('/') + base + ".tmp", bytes);
    return client.AddFile(base + ".rec", guid);
}

/// What a mover did, for comparisons: "2 moved, 0 failed, 1 waiting".
inline std::string summed(const Zelvo::MoverReport& report)
{
    return std::to_string(report.moved) + " moved, " + std::to_string(report.failed) + " failed, " +
           std::to_string(report.waiting) + " waiting";
}

inline mode_t modeOf(const QString& path)
{
    struct stat info = {};
    EXPECT_EQ(stat(QFile::encodeName(path).constData(), &info), 0) << path.toStdString();
    return info.st_mode & 0777U;
}

/// Compares every stored file with what the registry says of it. @return how many are as they should be
inline std::int64_t verifyAll(Zelvo::Archive& archive)
{
    return archive.verify([](const Zelvo::StorageProblem& problem) {
        ADD_FAILURE() << problem.sentence.toStdString();
        return true;
    });
}

/// Does something with the registry's entry of every file.
inline void forEachFile(Zelvo::Archive& archive, const std::function<void(const Zelvo::FileInfo&)>& work)
{
    for (const Zelvo::GroupInfo& group : archive.groups()) {
        for (const Zelvo::FileInfo& file : archive.files(group.data.guid)) {
            work(file);
        }
    }
}

inline void finishFile(const QString& directory, const QString& base)
{
    ASSERT_TRUE(
        QFile::rename(directory + QLatin1Char('/') + base + ".tmp", directory + QLatin1Char('/') + base + ".rec"));
}

/// A finished file of a group. @return its address
inline Zelvo::ZelvoUrl addFile(Zelvo::ZelvoClient& client, const QString& guid, const QString& directory,
                               const QString& base, const QByteArray& bytes)
{
    const std::uint32_t id = beginFile(client, guid, directory, base, bytes);
    finishFile(directory, base);
    return url(guid, id);
}

/// A whole recording of one file. @return its address
inline Zelvo::ZelvoUrl recordOne(Zelvo::ZelvoClient& client, const QString& directory, const QString& base,
                                 const QByteArray& bytes)
{
    const QString guid = groupOf(client, directory);
    Zelvo::ZelvoUrl address = addFile(client, guid, directory, base, bytes);
    client.MoveToNas(guid);
    EXPECT_EQ(client.GetError(), Zelvo::ZelvoError::None) << client.GetErrorString().toStdString();
    return address;
}

/// In a process that ends without asking for the move, as a recorder that was killed.
template <typename Work>
void inAnotherProcess(const Work& work)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        work();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
}

class ArchiveTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_folder.isValid());
        Zelvo::SetUpArchive(configuration());
    }

    [[nodiscard]] QString folder() const { return m_folder.path(); }
    [[nodiscard]] QString storage() const { return m_folder.filePath("storage"); }
    [[nodiscard]] Zelvo::ArchiveConfiguration& configuration() { return m_station.configuration; }
    [[nodiscard]] QString recordings() const { return m_station.recordings(); }
    [[nodiscard]] QString recording(const QString& name) const { return m_station.recording(name); }

    Zelvo::MoverReport move() { return move(m_files); }
    Zelvo::MoverReport move(Zelvo::Files& files)
    {
        return Zelvo::MoverCore(configuration(), files, clock.clock()).run({});
    }
    [[nodiscard]] Zelvo::FileInfo file(const Zelvo::ZelvoUrl& address)
    {
        return Zelvo::Archive(configuration()).file(address).value();
    }
    /// Regular files in the storage but its mark, relative to it, sorted.
    [[nodiscard]] QStringList stored() const
    {
        QStringList names;
        QDirIterator walk(storage(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            walk.next();
            if (walk.fileName() != QLatin1String(".zelvo-storage")) {
                names += QDir(storage()).relativeFilePath(walk.filePath());
            }
        }
        names.sort();
        return names;
    }
    [[nodiscard]] QString storedPath(const Zelvo::ZelvoUrl& address)
    {
        return storage() + QLatin1Char('/') + file(address).storedPath;
    }
    [[nodiscard]] QByteArray storedBytes(const Zelvo::ZelvoUrl& address) { return readFile(storedPath(address)); }

    /// Made at its first use.
    [[nodiscard]] Zelvo::ZelvoClient& client() { return m_client ? *m_client : m_client.emplace(configuration()); }
    QString newGroup(const QDateTime& expires = QDateTime::currentDateTime().addDays(7))
    {
        return ArchiveTests::groupOf(client(), recordings(), expires);
    }
    std::uint32_t begin(const QString& guid, const QString& base, const QByteArray& bytes)
    {
        return beginFile(client(), guid, recordings(), base, bytes);
    }
    void finish(const QString& base) const { finishFile(recordings(), base); }
    /// A finished file of a group. @return its address
    Zelvo::ZelvoUrl add(const QString& guid, const QString& base, const QByteArray& bytes)
    {
        return addFile(client(), guid, recordings(), base, bytes);
    }
    /// What a reader is given for an address.
    QByteArray given(const Zelvo::ZelvoUrl& address)
    {
        const QByteArray bytes = readFile(client().RequestFile(address, Zelvo::LockState::Shared));
        client().CloseFile(address);
        return bytes;
    }
    /// A whole recording of one file. @return its address
    Zelvo::ZelvoUrl record(const QString& base, const QByteArray& bytes)
    {
        return recordOne(client(), recordings(), base, bytes);
    }

    Zelvo::ZelvoUrl recordAndMove(const QString& base, const QByteArray& bytes)
    {
        const Zelvo::ZelvoUrl address = record(base, bytes);
        EXPECT_EQ(move().moved, 1);
        return address;
    }
    void expectRefused(const QString& text, Zelvo::ZelvoError code)
    {
        for (const Zelvo::LockState lock : {Zelvo::LockState::Shared, Zelvo::LockState::Exclusive}) {
            EXPECT_TRUE(client().RequestFile(Zelvo::ZelvoUrl(text), lock).isEmpty()) << text.toStdString();
            EXPECT_EQ(client().GetError(), code) << text.toStdString();
            EXPECT_FALSE(client().GetErrorString().isEmpty());
        }
    }

    ManualClock clock;

private:
    QTemporaryDir m_folder{temporaryTemplate()};
    StationFolder m_station{m_folder.path(), storage()};
    Zelvo::Files m_files;
    std::optional<Zelvo::ZelvoClient> m_client;
};

}  // namespace ArchiveTests
