// Setting an archive up, and its status, files, fetching and verification.
#include <zelvo/archive.h>

#include "client/cache.h"
#include "client/originals.h"
#include "mover/movercore.h"
#include "station/configuration.h"
#include "station/station.h"
#include "storage/storage.h"

namespace Zelvo {

namespace {

constexpr int ShownFiles = 1'000;
const QString StorageProperty = QStringLiteral("storage");

// What a status says of a file that nothing went wrong with.
QString waitingFor(const FileRow& file, const std::optional<GroupRow>& group)
{
    if (!file.error.isEmpty() || file.state != FileState::Waiting || !group) {
        return file.error;
    }
    return group->state == GroupState::Open ? QStringLiteral("its recorder has not asked for the move yet")
                                            : QStringLiteral("waits for the mover");
}

}  // namespace

void SetUpArchive(const ArchiveConfiguration& configuration)
{
    const ArchiveConfiguration checked = checkedConfiguration(configuration);
    try {
        Files files;
        Station::setUp(checked, files);
        Station station(checked);
        Storage storage(checked, files);
        Registry& registry = station.registry();
        if (registry.property(StorageProperty).isEmpty()) {
            // A storage that carries a mark is taken over: its registry may have been lost.
            const QString mark = storage.mark();
            const QString id = mark.isEmpty() ? newGuid() : mark;
            if (mark.isEmpty()) {
                storage.writeMark(id);
            }
            registry.setPropertyOnce(StorageProperty, id);
        }
    } catch (const FileError& error) {
        throw ArchiveError(QStringLiteral("the archive cannot be set up: ") + error.text());
    }
}

struct Archive::Private {
    explicit Private(const ArchiveConfiguration& configuration)
        : checked(checkedConfiguration(configuration)), station(checked), storage(checked, files)
    {
    }

    // Of a recording that waits at this station the disk tells more than the last run of a mover.
    void tellWhy(FileRow& file)
    {
        if (file.state != FileState::Waiting || file.station != station.name() || !station.own(file)) {
            return;
        }
        const Original original = findOriginal(file, station, files);
        if (original.state == Original::State::Unfinished || original.state == Original::State::Unusable) {
            file.error = original.why;
        } else if (original.state == Original::State::Finished) {
            const QString why = whyNotCopied(original.path, files);
            file.error = why.isEmpty() ? file.error : why;
        }
    }

    // @return nothing when the copy is good
    [[nodiscard]] std::optional<StorageProblem> problemOf(const FileRow& file) const
    {
        const auto problem = [&file](StorageProblem::Kind kind, const QString& sentence) {
            return StorageProblem{kind, static_cast<const FileInfo&>(file), sentence};
        };
        try {
            const QString path = storage.path(file.storedPath);
            if (files.kind(path) == FileKind::Missing) {
                return problem(StorageProblem::Kind::Missing, QStringLiteral("%1 is missing").arg(path));
            }
            const Digest digest = files.digest(path, {});
            if (digest.bytes != file.bytes || QString::fromLatin1(digest.sha256) != file.sha256) {
                return problem(StorageProblem::Kind::Altered,
                               QStringLiteral("%1 was altered: it has %2 bytes and the hash %3, stored were %4 bytes "
                                              "with the hash %5")
                                   .arg(path, QString::number(digest.bytes), QString::fromLatin1(digest.sha256),
                                        QString::number(file.bytes), file.sha256));
            }
        } catch (const FileError& error) {
            return problem(StorageProblem::Kind::Unreadable, error.text());
        } catch (const ArchiveError& error) {
            return problem(StorageProblem::Kind::Unreadable, error.text());
        }
        return std::nullopt;
    }

    void checkStorage()
    {
        try {
            storage.check(station.registry().property(StorageProperty));
        } catch (const FileError& error) {
            throw ArchiveError(error.text(), ZelvoError::Unreachable);
        }
    }

    ArchiveConfiguration checked;
    Files files;
    Station station;
    Storage storage;
};

Archive::Archive(const ArchiveConfiguration& configuration)
{
    try {
        d = std::make_unique<Private>(configuration);
        d->station.publish();
    } catch (const FileError& error) {
        throw ArchiveError(error.text());
    }
}

Archive::~Archive() = default;

ArchiveStatus Archive::status()
{
    ArchiveStatus status;
    Registry& registry = d->station.registry();
    status.registry = registry.database().address();
    status.storage = d->checked.storage;
    try {
        d->storage.check(registry.property(StorageProperty));
        status.storageUsable = true;
    } catch (const FileError& error) {
        status.storageError = error.text();
    }
    registry.count(status);
    status.stations = registry.stations();
    status.unpublished = d->station.isShared() ? unpublished(d->station.journal()) : 0;
    std::optional<GroupRow> group;
    for (FileRow& file : registry.notMoved(ShownFiles)) {
        if (!group || group->data.guid != file.guid) {
            group = registry.group(file.guid);
        }
        d->tellWhy(file);
        file.error = waitingFor(file, group);
        status.notMoved.push_back(std::move(file));
    }
    return status;
}

std::vector<GroupInfo> Archive::groups(std::int64_t limit)
{
    const std::vector<GroupRow> rows = d->station.registry().groups(limit);
    return {rows.begin(), rows.end()};
}

std::optional<GroupInfo> Archive::group(const QString& guid)
{
    return d->station.registry().group(guid);
}

std::vector<FileInfo> Archive::files(const QString& guid)
{
    std::vector<FileRow> rows = d->station.registry().files(guid);
    for (FileRow& row : rows) {
        d->tellWhy(row);
    }
    return {rows.begin(), rows.end()};
}

std::optional<FileInfo> Archive::file(const ZelvoUrl& url)
{
    const std::optional<Address> address = parseAddress(url);
    std::optional<FileRow> row = address ? d->station.registry().file(*address) : std::nullopt;
    if (row) {
        d->tellWhy(*row);
    }
    return row;
}

void Archive::fetch(const ZelvoUrl& url, const QString& path)
{
    const FileRow file = d->station.registry().fileOf(addressOf(url));
    requireNotRemoved(file);
    if (file.state != FileState::Waiting) {
        d->checkStorage();
        copyStored(file, path, d->checked.fileMode, d->storage, d->files);
        return;
    }
    const Original original = finishedOriginal(file, d->station, d->files);
    if (const QString why = whyNotCopied(original.path, d->files); !why.isEmpty()) {
        throw notToBeHad(file, why);
    }
    try {
        const Digest copied = d->files.copy(original.path, path, d->checked.fileMode, {});
        if (copied.identity.lasting() != original.identity.lasting() ||
            !whyNotCopied(original.path, d->files).isEmpty()) {
            d->files.remove(path);
            throw ArchiveError(QStringLiteral("%1 was moved or changed meanwhile; try again").arg(file.address()));
        }
    } catch (const FileError& error) {
        throw ArchiveError(error.text(), ZelvoError::Failed);
    }
}

std::int64_t Archive::verify(const std::function<bool(const StorageProblem&)>& onProblem,
                             const std::function<void(const FileInfo&)>& onFile, const QString& onlyGuid)
{
    constexpr int AtATime = 1'000;
    d->checkStorage();
    std::int64_t good = 0;
    Address last;
    while (true) {
        const std::vector<FileRow> files = d->station.registry().storedAfter(last, onlyGuid, AtATime);
        if (files.empty()) {
            return good;
        }
        for (const FileRow& file : files) {
            last = file.where();
            if (onFile) {
                onFile(file);
            }
            const std::optional<StorageProblem> problem = d->problemOf(file);
            if (!problem) {
                ++good;
            } else if (!onProblem(*problem)) {
                return good;
            }
        }
    }
}

std::int64_t Archive::retry(const QString& guid)
{
    return d->station.registry().forgetPauses(d->station.name(), guid);
}

struct Mover::Private {
    explicit Private(const ArchiveConfiguration& configuration) : core(configuration, files) {}

    Files files;
    MoverCore core;
};

Mover::Mover(const ArchiveConfiguration& configuration) : d(std::make_unique<Private>(configuration))
{
}

Mover::~Mover() = default;

MoverReport Mover::runPending(const std::function<bool()>& stop)
{
    return d->core.run(stop);
}

}  // namespace Zelvo
