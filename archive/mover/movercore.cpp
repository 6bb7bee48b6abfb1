// One run: files that are due are copied, compared and deleted, expired ones removed.
#include "movercore.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

#include "client/cache.h"
#include "steps.h"

namespace Zelvo {

namespace {

constexpr std::int64_t HeartbeatMs = 60'000;

}  // namespace

MoverCore::MoverCore(const ArchiveConfiguration& configuration, Files& files, Clock clock)
    : m_configuration(checkedConfiguration(configuration)),
      m_files(files),
      m_clock(std::move(clock)),
      m_storage(m_configuration, files)
{
}

MoverReport MoverCore::run(const StopWish& stop)
{
    m_report = MoverReport();
    const std::int64_t now = m_clock();
    if (now < m_registryNextTryMs) {
        m_report.problem = m_registryProblem;
        m_report.nextRunMs = m_registryNextTryMs;
        return m_report;
    }
    try {
        if (m_station == nullptr) {
            m_station = std::make_unique<Station>(m_configuration);
        }
        const std::unique_ptr<FileLock> lock =
            FileLock::tryLock(m_station->paths().moverLock(), FileLock::Mode::Exclusive, m_configuration.fileMode);
        if (lock == nullptr) {
            m_report.otherMover = true;
            return m_report;
        }
        runLocked(stop);
        m_registryFailures = 0;
    } catch (const Interrupted&) {
        m_report.interrupted = true;
    } catch (const std::exception& error) {
        m_registryProblem = QString::fromUtf8(error.what());
        m_report.problem = m_registryProblem;
        m_registryNextTryMs = now + pause(m_registryFailures++);
        due(m_registryNextTryMs);
    }
    return m_report;
}

void MoverCore::runLocked(const StopWish& stop)
{
    m_station->publish();
    abandonGroupsOfTheDead(*m_station);
    m_fullFromBytes = 0;
    moveDue(stop);
    tendWriters(*m_station, m_clock());
    removeUnfinishedEdits(*m_station);
    if (m_configuration.removeExpired && m_report.problem.isEmpty()) {
        removeExpired(*m_station, m_storage, m_files, m_clock(), m_report.removed,
                      [this](const FileRow& file, const QString& why) { tell(file, why); });
    }
    makeRoom(*m_station, m_files, 0);
    m_station->removeDeadOwners();
    if (m_station->isShared() && m_report.moved > 0) {
        prune(m_station->journal(), m_station->registry(),
              [this](const QString& owner) { return m_station->ownerLives(owner); });
    }
}

std::vector<MoverCore::Group> MoverCore::pendingGroups()
{
    std::vector<Group> groups;
    for (PendingFile& file : m_station->registry().pending(m_station->name())) {
        file.file.localPath = m_station->originalPath(file.file);
        if (groups.empty() || groups.back().front().file.guid != file.file.guid) {
            groups.emplace_back();
        }
        groups.back().push_back(std::move(file));
    }
    return groups;
}

void MoverCore::moveDue(const StopWish& stop)
{
    std::int64_t attempts = 0;
    const StationInfo before = m_station->registry().station(m_station->name(), attempts);
    m_storageAttempts = attempts;
    std::vector<Group> groups = pendingGroups();
    if (!before.storageError.isEmpty() && m_clock() < before.nextTryMs) {
        m_report.problem = before.storageError;
        for (const Group& group : groups) {
            m_report.waiting += static_cast<std::int64_t>(group.size());
        }
        due(before.nextTryMs);
        return;
    }
    // Looked at also when nothing is due, so that operators hear of a storage that is away before it is needed.
    bool usable = storageIsThere();
    for (Group& group : groups) {
        if (!usable) {
            m_report.waiting += static_cast<std::int64_t>(group.size());
            continue;
        }
        usable = moveGroup(group, stop);
    }
    const std::int64_t now = m_clock();
    if (usable && (!before.storageError.isEmpty() || now - m_heartbeatMs >= HeartbeatMs)) {
        m_station->registry().recordRun(m_station->name(), now, QString(), 0, 0);
        m_heartbeatMs = now;
    }
}

bool MoverCore::storageIsThere()
{
    try {
        m_storage.check(m_station->registry().property(QStringLiteral("storage")));
        return true;
    } catch (const FileError& error) {
        storageFailed(error.text());
        return false;
    }
}

void MoverCore::storageFailed(const QString& sentence)
{
    m_storage.forgetDirectories();
    const std::int64_t next = m_clock() + pause(m_storageAttempts);
    m_station->registry().recordRun(m_station->name(), m_clock(), sentence, m_storageAttempts + 1, next);
    m_report.problem = sentence;
    due(next);
}

// @return false when the storage went away
bool MoverCore::moveGroup(Group& group, const StopWish& stop)
{
    const bool finished = isFinished(group);
    for (auto file = group.begin(); file != group.end(); ++file) {
        if (!finished && file->file.state == FileState::Waiting) {
            ++m_report.waiting;
        } else if (!moveOne(file->file, file->group.createdMs, stop)) {
            m_report.waiting += group.end() - file - 1;
            return false;
        }
    }
    return true;
}

// Whether the waiting files of a group may go. One that is still recorded keeps them all.
bool MoverCore::isFinished(Group& group)
{
    const GroupRow& row = group.front().group;
    if (row.state == GroupState::Open) {
        return false;
    }
    const bool recorderMayLive = row.state == GroupState::Superseded;
    for (PendingFile& pending : group) {
        FileRow& file = pending.file;
        if (file.state != FileState::Waiting || file.localPath.isEmpty()) {
            continue;
        }
        const Original original = findOriginal(file, *m_station, m_files);
        if (original.state == Original::State::Unfinished) {
            note(file, original.why);
            return false;
        }
        if (original.state == Original::State::Finished && isBeingChanged(file, original.path)) {
            return false;
        }
        // Its last name says nothing about whether it is finished.
        if (recorderMayLive && file.unfinished.isEmpty()) {
            return false;
        }
    }
    return true;
}

// @return false when the storage went away
bool MoverCore::moveOne(FileRow& file, std::int64_t createdMs, const StopWish& stop)
{
    if (stop && stop()) {
        throw Interrupted();
    }
    if (file.nextTryMs > m_clock()) {
        due(file.nextTryMs);
        ++m_report.waiting;
        return true;
    }
    // Another registration of the same original may have been moved since, or a writer come.
    const std::optional<FileRow> current = m_station->registry().file(file.where());
    if (!current || current->state != file.state || current->version != file.version) {
        return true;
    }
    const Outcome outcome = attempt(file, createdMs, stop);
    m_report.moved += outcome == Outcome::Moved ? 1 : 0;
    m_report.waiting += outcome == Outcome::Waits ? 1 : 0;
    return outcome != Outcome::StorageAway;
}

MoverCore::Outcome MoverCore::attempt(FileRow& file, std::int64_t createdMs, const StopWish& stop)
{
    try {
        if (file.state == FileState::Stored) {
            return finish(m_station->lock(file.where(), FileLock::Mode::Exclusive), file,
                          file.version > 1 ? QString() : originalOf(file).path, nullptr, stop);
        }
        return store(file, createdMs, stop);
    } catch (const FileError& error) {
        fail(file, error.text());
        if (error.kind() == FileError::Kind::Full) {
            m_fullFromBytes = m_triedBytes;
        }
        if (error.kind() != FileError::Kind::Away) {
            return Outcome::Failed;
        }
        storageFailed(error.text());
        return Outcome::StorageAway;
    } catch (const ArchiveError& error) {
        if (error.code() == ZelvoError::Unreachable) {
            throw;
        }
        return fail(file, error.text());
    }
}

// What is to be stored: for an edited file the version in its folder.
Original MoverCore::originalOf(const FileRow& file)
{
    if (file.state != FileState::Edited) {
        return findOriginal(file, *m_station, m_files);
    }
    if (m_files.kind(file.localPath) == FileKind::Missing) {
        return noOriginal(Original::State::Missing, QStringLiteral("%1 is missing").arg(file.localPath));
    }
    return {Original::State::Finished, file.localPath, m_files.identity(file.localPath), {}};
}

MoverCore::Outcome MoverCore::store(FileRow& file, std::int64_t createdMs, const StopWish& stop)
{
    std::unique_ptr<FileLock> lock = m_station->lock(file.where(), FileLock::Mode::Shared);
    if (lock == nullptr) {
        note(file, QStringLiteral("is open for writing"));
        return Outcome::Waits;
    }
    const Original original = originalOf(file);
    if (original.state != Original::State::Finished) {
        return originalIsMissing(file, original.why);
    }
    if (isBeingChanged(file, original.path)) {
        return Outcome::Waits;
    }
    if (m_fullFromBytes > 0 && original.identity.bytes >= m_fullFromBytes) {
        return Outcome::Waits;
    }
    m_triedBytes = original.identity.bytes;
    StoredCopy copy;
    copy.version = file.state == FileState::Edited ? file.version + 1 : file.version;
    copy.path = storedName(createdMs, file.where(), copy.version, file.name);
    const Digest digest =
        copyIntoStorage(file, original, copy.path, {m_storage, m_files, m_configuration.fileMode}, stop);
    copy.bytes = digest.bytes;
    copy.sha256 = QString::fromLatin1(digest.sha256);
    if (!m_station->registry().recordStored(file, copy, m_clock(), m_station->origins().sharing(file.where()))) {
        return fail(file, QStringLiteral("the registry changed while the file was moved"));
    }
    m_report.bytes += digest.bytes;
    if (!lock->keepAlone()) {
        lock.reset();
    }
    const std::optional<FileRow> stored = m_station->registry().file(file.where());
    return stored ? finish(std::move(lock), *stored, original.path, &digest.identity, stop)
                  : fail(file, QStringLiteral("the registry lost the file while it was moved"));
}

MoverCore::Outcome MoverCore::originalIsMissing(const FileRow& file, const QString& why)
{
    if (file.state == FileState::Waiting &&
        m_station->registry().recordSame(file, m_station->origins().sharing(file.where()))) {
        return Outcome::Waits;
    }
    return fail(file, why);
}

// Deletes what the verified copy replaces: the original and an older version in the storage. Without the lock later.
MoverCore::Outcome MoverCore::finish(std::unique_ptr<FileLock> alone, const FileRow& file, const QString& original,
                                     const FileIdentity* known, const StopWish& stop)
{
    if (alone == nullptr) {
        FileRow noted = file;
        note(noted, QStringLiteral("is stored; the original is in use and deleted later"));
        return Outcome::Waits;
    }
    // An edited version lies where its name and the version it was made of say.
    FileRow before = file;
    before.version = file.version - 1;
    const bool edited = file.version > 1;
    const QString path = edited ? m_station->editedPath(before) : original;
    if (!path.isEmpty() && m_files.kind(path) != FileKind::Missing) {
        FileRow noted = file;
        if (isBeingChanged(noted, path)) {
            return Outcome::Waits;
        }
        const bool same = known != nullptr ? m_files.identity(path) == *known : isTheStoredOne(file, path, stop);
        if (same) {
            m_files.remove(path);
            m_files.fsyncDirectory(QFileInfo(path).path());
            m_station->origins().forget(file.where());
        } else {
            m_report.messages +=
                QStringLiteral("%1: %2 changed since it was stored and stays").arg(file.address(), path);
        }
    }
    if (edited) {
        QDir().rmdir(QFileInfo(path).path());
    }
    if (!file.oldPath.isEmpty()) {
        m_files.remove(m_storage.path(file.oldPath));
    }
    m_station->registry().recordMoved(file);
    return Outcome::Moved;
}

// For a file whose mover was killed after the registry said "stored". Trusts nothing but the bytes.
bool MoverCore::isTheStoredOne(const FileRow& file, const QString& original, const StopWish& stop)
{
    const QString target = m_storage.path(file.storedPath);
    if (m_files.kind(target) == FileKind::Missing) {
        m_station->registry().recordLost(file);
        throw FileError(FileError::Kind::Other,
                        QStringLiteral("%1 vanished from the storage; the original is moved again").arg(target));
    }
    if (QString::fromLatin1(m_files.digest(target, stop).sha256) != file.sha256) {
        throw FileError(FileError::Kind::Other,
                        QStringLiteral("%1 was altered in the storage; the original %2 stays").arg(target, original));
    }
    return QString::fromLatin1(m_files.digest(original, stop).sha256) == file.sha256;
}

bool MoverCore::isBeingChanged(FileRow& file, const QString& path)
{
    const QString why = whyNotCopied(path, m_files);
    if (!why.isEmpty()) {
        note(file, why);
    }
    return !why.isEmpty();
}

MoverCore::Outcome MoverCore::fail(const FileRow& file, const QString& sentence)
{
    const std::int64_t next = m_clock() + pause(file.attempts);
    m_station->registry().recordFailure(file, sentence, next);
    due(next);
    tell(file, sentence);
    return Outcome::Failed;
}

void MoverCore::tell(const FileRow& file, const QString& failure)
{
    ++m_report.failed;
    m_report.messages += file.address() + QStringLiteral(": ") + failure;
}

// What a file waits for; written only when it is news.
void MoverCore::note(FileRow& file, const QString& text)
{
    if (file.error != text) {
        m_station->registry().recordNote(file, text);
        file.error = text;
    }
}

std::int64_t MoverCore::pause(std::int64_t attempts) const
{
    std::int64_t result = m_configuration.firstPauseMs;
    for (std::int64_t i = 0; i < attempts && result < m_configuration.longestPauseMs; ++i) {
        result *= 2;
    }
    return std::min(result, m_configuration.longestPauseMs);
}

void MoverCore::due(std::int64_t timeMs)
{
    m_report.nextRunMs = m_report.nextRunMs < 0 ? timeMs : std::min(m_report.nextRunMs, timeMs);
}

}  // namespace Zelvo
