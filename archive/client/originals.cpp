// The names that closing or recovery may have given a recording, and choosing among them.
#include "originals.h"

#include <algorithm>
#include <tuple>

#include <QDir>
#include <QFileInfo>

namespace Zelvo {

namespace {

const QString JournalEnding = QStringLiteral(".journal");

/// The names that a file may have from its first byte to the move.
struct Paths {
    explicit Paths(const FileRow& file) : closed(file.localPath)
    {
        const QString folder = QFileInfo(file.localPath).path() + QLatin1Char('/');
        const QString name = file.unfinished.isEmpty() ? unfinishedName(file.name) : file.unfinished;
        const int ending = file.name.lastIndexOf(QLatin1Char('.'));
        unfinished = folder + name;
        recovered =
            folder + name.left(name.lastIndexOf(QLatin1Char('.'))) + (ending > 0 ? file.name.mid(ending) : QString());
    }
    QString closed;      ///< where closing leaves it
    QString unfinished;  ///< while it is recorded
    /// Differs from the unfinished one in its ending only, and so belongs to no other recording.
    QString recovered;
};

std::optional<FileIdentity> fileAt(const QString& path, const Files& files)
{
    try {
        return files.kind(path) == FileKind::File ? std::optional(files.identity(path)) : std::nullopt;
    } catch (const FileError& error) {
        if (error.kind() == FileError::Kind::Missing || error.kind() == FileError::Kind::NotAFile) {
            return std::nullopt;  // it went between two looks
        }
        throw;
    }
}

bool ownerLives(const FileRow& file, Station& station)
{
    const std::optional<GroupRow> group = station.journal().group(file.guid);
    return group && station.ownerLives(group->owner);
}

// Empty for one that is none of these.
QString whyUnfinished(const FileRow& file, const Paths& paths, const Origin& origin, Station& station,
                      const Files& files)
{
    const bool journal = fileAt(paths.unfinished + JournalEnding, files).has_value();
    const std::optional<FileIdentity> unfinished = fileAt(paths.unfinished, files);
    if (unfinished && (origin.file.isEmpty() || unfinished->lasting() == origin.file)) {
        // A recorder removes its journal when the file is whole.
        if (origin.journaled && !journal) {
            return QStringLiteral(
                       "is closed and whole, but could not take its name %1 and stays %2; rename it to %3, "
                       "and it is moved")
                .arg(QFileInfo(paths.closed).fileName(), paths.unfinished, QFileInfo(paths.recovered).fileName());
        }
        return ownerLives(file, station)
                   ? QStringLiteral("is still recorded as %1").arg(paths.unfinished)
                   : QStringLiteral("waits until %1, whose recorder ended, is recovered").arg(paths.unfinished);
    }
    if (!unfinished && journal) {
        return QStringLiteral("waits until it is recovered: closing it had failed, and %1 can make it whole")
            .arg(paths.unfinished + JournalEnding);
    }
    return {};
}

// What was registered, wherever it is; else what was recovered of it, or put in its place.
std::optional<std::pair<QString, FileIdentity>> finishedFile(const FileRow& file, const Paths& paths,
                                                             const Origin& origin, Station& station, const Files& files)
{
    for (const QString& path : {paths.closed, paths.recovered}) {
        const std::optional<FileIdentity> found = fileAt(path, files);
        if (found && found->lasting() == origin.file) {
            return std::pair(path, *found);
        }
    }
    // Nothing that was finished before this recording began. Some file systems keep times to two seconds.
    constexpr std::int64_t NanosecondsPerMs = 1'000'000;
    constexpr std::int64_t CoarseMs = 2'000;
    const std::optional<FileIdentity> found = fileAt(paths.recovered, files);
    if (found && found->changedNs / NanosecondsPerMs >= file.createdMs - CoarseMs &&
        !station.origins().isAnothers(found->lasting(), file.where())) {
        return std::pair(paths.recovered, *found);
    }
    return std::nullopt;
}

Original notThere(const Paths& paths, const Files& files)
{
    for (const QString& path : {paths.closed, paths.recovered}) {
        switch (files.kind(path)) {
            case FileKind::Missing:
                break;
            case FileKind::File:
                return noOriginal(Original::State::Unusable,
                                  QStringLiteral("is missing: %1 is another recording").arg(path));
            default:
                return noOriginal(
                    Original::State::Unusable,
                    QStringLiteral("%1 is no ordinary file (a folder, a link, a pipe or a device)").arg(path));
        }
    }
    return noOriginal(Original::State::Missing, QStringLiteral("%1 is missing").arg(paths.closed));
}

/// One of the files that may be the one that is registered. The greater is the likelier.
struct Candidate {
    QString directory;
    QString unfinished;
    FileIdentity identity;
    bool isOpenHere = false;
    bool isNew = false;

    [[nodiscard]] auto likelihood() const
    {
        return std::tuple(isOpenHere, !unfinished.isEmpty(), isNew,
                          identity.bornNs != 0 ? identity.bornNs : identity.changedNs);
    }
};

// The library takes as base name what precedes the first dot, so "a.b.tmp" becomes "a.rec".
QStringList namesIn(const QString& directory, const QString& name)
{
    const QString exact = unfinishedName(name);
    const QString begin = name.left(name.indexOf(QLatin1Char('.'))) + QLatin1Char('.');
    QStringList names = {name, exact};
    for (const QString& other : QDir(directory).entryList({QStringLiteral("*.tmp")}, QDir::Files | QDir::Hidden)) {
        if (other.startsWith(begin) && other != exact) {
            names += other;
        }
    }
    return names;
}

// A file belongs to one recording: only who registered it may do so once more, and not while it is recorded.
bool mayBeRegistered(Candidate& candidate, const QString& name, Station& station)
{
    const std::vector<QString> owners = station.origins().owners(candidate.identity.lasting());
    candidate.isNew = owners.empty();
    const auto isOwn = [&station](const QString& owner) { return owner == station.owner(); };
    return candidate.isNew || candidate.unfinished.isEmpty() ||
           (candidate.unfinished == unfinishedName(name) && !candidate.isOpenHere &&
            std::all_of(owners.begin(), owners.end(), isOwn));
}

}  // namespace

Original findOriginal(const FileRow& file, Station& station, const Files& files)
{
    const std::optional<FileRow> own = station.own(file);
    if (!own) {
        return noOriginal(Original::State::Missing,
                          QStringLiteral("the journal of station \"%1\" does not know the file").arg(station.name()));
    }
    const Paths paths(*own);
    const Origin origin = station.origins().of(file.where());
    try {
        const QString why = whyUnfinished(*own, paths, origin, station, files);
        if (!why.isEmpty()) {
            return noOriginal(Original::State::Unfinished, why);
        }
        const auto found = finishedFile(*own, paths, origin, station, files);
        return found ? Original{Original::State::Finished, found->first, found->second, {}} : notThere(paths, files);
    } catch (const FileError& error) {
        return noOriginal(Original::State::Unusable, error.text());
    }
}

ArchiveError notToBeHad(const FileRow& file, const QString& why)
{
    return ArchiveError(QStringLiteral("%1 is not to be had yet: %2").arg(file.address(), why),
                        ZelvoError::UnknownFile);
}

Original finishedOriginal(const FileRow& file, Station& station, const Files& files)
{
    if (file.station != station.name() || !station.own(file)) {
        throw ArchiveError(QStringLiteral("%1 still lies at the station \"%2\"").arg(file.address(), file.station),
                           ZelvoError::Elsewhere);
    }
    Original original = findOriginal(file, station, files);
    if (original.state != Original::State::Finished) {
        throw notToBeHad(file, original.why);
    }
    return original;
}

void requireNotRemoved(const FileRow& file)
{
    if (file.state == FileState::Removed) {
        throw ArchiveError(QStringLiteral("%1 was removed when its time was over").arg(file.address()),
                           ZelvoError::UnknownFile);
    }
}

QString whyNotCopied(const QString& path, const Files& files)
{
    const QString undo = path + QStringLiteral(".undo");
    return fileAt(undo, files) ? QStringLiteral(
                                     "waits while %1 is there: bookmarks or channel ranges are being stored, "
                                     "or that was interrupted, and the next change of them settles it")
                                     .arg(undo)
                               : QString();
}

NewFile findNewFile(const std::vector<QString>& directories, const QString& name, Station& station, const Files& files)
{
    std::optional<Candidate> best;
    for (const QString& directory : directories) {
        for (const QString& candidateName : namesIn(directory, name)) {
            const std::optional<FileIdentity> identity = fileAt(directory + QLatin1Char('/') + candidateName, files);
            if (!identity) {
                continue;
            }
            Candidate candidate{directory, candidateName == name ? QString() : candidateName, *identity,
                                System::isOpenHere(*identity)};
            if (mayBeRegistered(candidate, name, station) && (!best || candidate.likelihood() > best->likelihood())) {
                best = candidate;
            }
        }
    }
    if (!best) {
        return {directories.front(), {}, {}};
    }
    NewFile found{best->directory, best->unfinished, {}};
    if (best->unfinished.isEmpty() && !(best->isOpenHere && best->isNew)) {
        return found;  // an earlier one of that name may lie there
    }
    found.origin.file = best->identity.lasting();
    const QString unfinished = best->unfinished.isEmpty() ? unfinishedName(name) : best->unfinished;
    found.origin.journaled = fileAt(best->directory + QLatin1Char('/') + unfinished + JournalEnding, files).has_value();
    return found;
}

}  // namespace Zelvo
