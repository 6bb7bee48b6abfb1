// Giving back what the dead held, and removing what has expired.
#include "housekeeping.h"

#include <QDir>
#include <QFileInfo>

namespace Zelvo {

namespace {

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
