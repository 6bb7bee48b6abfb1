// Copying out of the storage with the hash checked, and making room in the cache.
#include "cache.h"

#include <algorithm>
#include <vector>

#include <QDir>
#include <QFileInfo>

namespace Zelvo {

namespace {

// "GUID_ID_VERSION" of a folder in the cache or among the edited files.
std::optional<std::pair<Address, std::int64_t>> partsOf(const QString& folder)
{
    const QStringList parts = folder.split(QLatin1Char('_'));
    if (parts.size() != 3 || !isGuid(parts[0])) {
        return std::nullopt;
    }
    return std::pair(Address{parts[0], parts[1].toUInt()}, parts[2].toLongLong());
}

struct Entry {
    QString path;
    Address address;
    std::int64_t bytes = 0;
    std::int64_t usedNs = 0;
};

std::vector<Entry> entries(const QString& cache, const Files& files)
{
    std::vector<Entry> found;
    for (const QFileInfo& folder : QDir(cache).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const auto parts = partsOf(folder.fileName());
        for (const QString& name : QDir(folder.filePath()).entryList(QDir::Files | QDir::Hidden | QDir::System)) {
            const QString path = folder.filePath() + QLatin1Char('/') + name;
            // Another process may be making room at the same time.
            if (parts && files.kind(path) == FileKind::File) {
                const FileIdentity identity = files.identity(path);
                found.push_back({path, parts->first, identity.bytes, identity.changedNs});
            }
        }
    }
    std::sort(found.begin(), found.end(), [](const Entry& a, const Entry& b) { return a.usedNs < b.usedNs; });
    return found;
}

[[noreturn]] void fail(const FileRow& file, const FileError& error)
{
    const bool damaged = error.kind() == FileError::Kind::Missing || error.kind() == FileError::Kind::NotAFile;
    throw ArchiveError(QStringLiteral("%1 cannot be fetched: %2").arg(file.address(), error.text()),
                       damaged ? ZelvoError::Damaged : ZelvoError::Unreachable);
}

}  // namespace

void copyStored(const FileRow& file, const QString& path, unsigned mode, const Storage& storage, Files& files)
{
    try {
        const Digest digest = files.copy(storage.path(file.storedPath), path, mode, {});
        if (QString::fromLatin1(digest.sha256) != file.sha256 || digest.bytes != file.bytes) {
            files.remove(path);
            throw ArchiveError(QStringLiteral("%1 in the storage is not what was stored there; its hash is another")
                                   .arg(storage.path(file.storedPath)),
                               ZelvoError::Damaged);
        }
    } catch (const FileError& error) {
        fail(file, error);
    }
}

void fetchStored(const FileRow& file, const QString& path, unsigned mode, const ArchiveConfiguration& configuration,
                 const Storage& storage, Files& files)
{
    try {
        if (files.kind(path) == FileKind::File && files.identity(path).bytes == file.bytes) {
            return;
        }
        const QFileInfo info(path);
        files.makeDirectory(info.path(), configuration.directoryMode);
        files.remove(path);
        const QString temporary = info.path() + QLatin1Char('/') + newGuid();
        copyStored(file, temporary, mode, storage, files);
        try {
            files.rename(temporary, path);
        } catch (const FileError& error) {
            // Another process fetched it at the same time.
            files.remove(temporary);
            if (error.kind() != FileError::Kind::Exists) {
                throw;
            }
        }
    } catch (const FileError& error) {
        fail(file, error);
    }
}

void makeRoom(Station& station, const Files& files, std::int64_t bytesToCome)
{
    const std::vector<Entry> all = entries(station.paths().cache(), files);
    std::int64_t sum = bytesToCome;
    for (const Entry& entry : all) {
        sum += entry.bytes;
    }
    const auto most = static_cast<std::int64_t>(
        std::min(station.configuration().cacheBytes, std::uint64_t{std::numeric_limits<std::int64_t>::max()}));
    for (const Entry& entry : all) {
        if (sum <= most) {
            return;
        }
        const std::unique_ptr<FileLock> lock = station.lock(entry.address, FileLock::Mode::Exclusive);
        if (lock != nullptr) {
            removeWithFolder(entry.path);
            sum -= entry.bytes;
        }
    }
}

void removeWithFolder(const QString& path)
{
    QFile::remove(path);
    // Stays while something else lies in it.
    QDir().rmdir(QFileInfo(path).path());
}

void removeUnfinishedEdits(Station& station)
{
    const QDir edited(station.paths().edited());
    for (const QString& folder : edited.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const auto parts = partsOf(folder);
        const auto lock = parts ? station.lock(parts->first, FileLock::Mode::Exclusive) : nullptr;
        if (lock == nullptr) {
            continue;
        }
        const std::optional<FileRow> file = station.registry().file(parts->first);
        const bool wanted =
            file && file->station == station.name() &&
            ((file->state == FileState::Edited && file->version == parts->second) || file->state == FileState::Stored);
        if (!wanted) {
            QDir(edited.filePath(folder)).removeRecursively();
        }
    }
}

}  // namespace Zelvo
