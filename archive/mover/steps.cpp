// One copy under a temporary name, which gets its own when it has been read back; giving back what the dead held, and
// removing what has expired.
#include "steps.h"

#include <QDir>
#include <QFileInfo>

namespace Zelvo {

namespace {

// Always the same, so that what a killed mover left is found.
QString temporaryPath(const QString& target, const FileRow& file)
{
    return QStringLiteral("%1/.%2.%3.part")
        .arg(QFileInfo(target).path(), QString::number(file.id), QString::number(file.version));
}

bool isStoredAlready(const Original& original, const QString& target, const Files& files, Digest& digest,
                     const StopWish& stop)
{
    if (files.kind(target) == FileKind::Missing) {
        return false;
    }
    digest = files.digest(original.path, stop);
    if (files.kind(target) != FileKind::File || files.digest(target, stop).sha256 != digest.sha256) {
        throw FileError(FileError::Kind::Exists,
                        QStringLiteral("%1 exists already and is another file; it is not replaced").arg(target));
    }
    return true;
}

// @return why the copy is not to be stored; empty when it is
QString whyNotStored(const Original& original, const QString& temporary, const Digest& digest, const Files& files,
                     const StopWish& stop)
{
    if (digest.identity.lasting() != original.identity.lasting()) {
        return QStringLiteral("%1 became another file while it was moved").arg(original.path);
    }
    // One that was begun and finished meanwhile is told by the file's time.
    if (QString why = whyNotCopied(original.path, files); !why.isEmpty()) {
        return why;
    }
    return files.digest(temporary, stop).sha256 == digest.sha256
               ? QString()
               : QStringLiteral("%1 read back from the storage is not what was written").arg(temporary);
}

// The registry first: it must never promise a file that is gone.
bool removeOne(const FileRow& file, Station& station, const Storage& storage, Files& files, std::int64_t nowMs)
{
    const std::unique_ptr<FileLock> lock = station.lock(file.where(), FileLock::Mode::Exclusive);
    const bool begun = file.state == FileState::Removed;
    if (lock == nullptr || !(begun || station.registry().recordRemoved(file, nowMs))) {
        return false;
    }
    const QString path = storage.path(file.storedPath);
    files.remove(path);
    QDir().rmdir(QFileInfo(path).path());
    station.registry().recordGone(file);
    return true;
}

}  // namespace

Digest copyIntoStorage(const FileRow& file, const Original& original, const QString& storedPath,
                       const StoragePlace& place, const StopWish& stop)
{
    const QString target = place.storage.path(storedPath);
    place.storage.makeDirectories(storedPath);
    Digest digest;
    const QString temporary = temporaryPath(target, file);
    place.files.remove(temporary);
    if (!isStoredAlready(original, target, place.files, digest, stop)) {
        digest = place.files.copy(original.path, temporary, place.fileMode, stop);
        if (const QString why = whyNotStored(original, temporary, digest, place.files, stop); !why.isEmpty()) {
            place.files.remove(temporary);
            throw FileError(FileError::Kind::Other, why);
        }
        place.files.rename(temporary, target);
    }
    place.files.fsyncDirectory(QFileInfo(target).path());
    return digest;
}

void abandonGroupsOfTheDead(Station& station)
{
    for (const QString& owner : station.registry().openOwners(station.name())) {
        if (!station.ownerLives(owner)) {
            station.registry().abandon(station.name(), owner);
        }
    }
}

void tendWriters(Station& station, std::int64_t nowMs)
{
    for (const FileRow& file : station.registry().writtenBy(station.name())) {
        if (!station.ownerLives(file.writer)) {
            station.registry().giveBack(file.where(), file.writer);
        } else if (file.writerUntilMs < nowMs + WriterLeaseMs / 2) {
            station.registry().prolong(file, nowMs + WriterLeaseMs);
        }
    }
}

void removeExpired(Station& station, const Storage& storage, Files& files, std::int64_t nowMs, std::int64_t& removed,
                   const std::function<void(const FileRow&, const QString&)>& tell)
{
    for (const FileRow& file : station.registry().expired(station.name(), nowMs)) {
        try {
            removed += removeOne(file, station, storage, files, nowMs) ? 1 : 0;
        } catch (const FileError& error) {
            tell(file, error.text());
        } catch (const ArchiveError& error) {
            if (error.code() == ZelvoError::Unreachable) {
                throw;
            }
            tell(file, error.text());
        }
    }
}

}  // namespace Zelvo
