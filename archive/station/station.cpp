// Setting up a station's directory, its living processes, its locks, its files' paths.
#include "station.h"

#include <map>
#include <mutex>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>

namespace Zelvo {

namespace {

// Held until the process ends, so that others see that it lives.
struct ProcessOwner {
    QString name;
    std::unique_ptr<FileLock> lock;
};

QString processOwner(const StationPaths& paths, unsigned fileMode)
{
    static std::mutex mutex;
    // A process that was forked is another one.
    static std::map<std::pair<qint64, QString>, ProcessOwner> owners;
    const std::lock_guard guard(mutex);
    ProcessOwner& owner = owners[{QCoreApplication::applicationPid(), paths.root}];
    if (owner.lock == nullptr) {
        owner.name = newGuid();
        owner.lock = FileLock::tryLock(paths.owner(owner.name), FileLock::Mode::Exclusive, fileMode);
    }
    return owner.name;
}

// A registry that others write too must not name a path.
const QString& checkedName(const QString& name, bool (*isGiven)(const QString&))
{
    if (!isGiven(name)) {
        throw ArchiveError(QStringLiteral("the registry has a name that the archive does not give: \"%1\"").arg(name),
                           ZelvoError::BadName);
    }
    return name;
}

QString checkedFlatName(const Address& address)
{
    return flatName({checkedName(address.guid, isGuid), address.id});
}

QString pathOfVersion(const QString& folder, const FileRow& file)
{
    // In one go: a name may have "%1" in it.
    const QString version = QString::number(file.version);
    return QStringLiteral("%1/%2_%3/%4")
        .arg(folder, checkedFlatName(file.where()), version, checkedName(file.name, isFileName));
}

void makePath(Files& files, const QString& path, unsigned mode)
{
    const QString parent = path.left(path.lastIndexOf(QLatin1Char('/')));
    if (!parent.isEmpty() && files.kind(parent) == FileKind::Missing) {
        makePath(files, parent, mode);
    }
    files.makeDirectory(path, mode);
}

QStringList readIdentity(const StationPaths& paths)
{
    QFile file(paths.identity());
    if (!file.open(QIODevice::ReadOnly)) {
        throw ArchiveError(
            QStringLiteral("the archive in %1 is not set up (zelvod --set-up does that)").arg(paths.root),
            ZelvoError::NotAvailable);
    }
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    if (lines.size() < 2 || !isGuid(lines[1])) {
        throw ArchiveError(
            QStringLiteral("%1 is damaged; it should hold the station's name and number").arg(paths.identity()));
    }
    return lines;
}

}  // namespace

std::int64_t currentMs()
{
    return QDateTime::currentMSecsSinceEpoch();
}

Station::Station(const ArchiveConfiguration& checked)
    : m_configuration(checked),
      m_paths(checked.directory),
      m_journalDatabase(m_paths.journal(), checked.fileMode),
      m_journal(m_journalDatabase),
      m_origins(m_journalDatabase)
{
    const QStringList identity = readIdentity(m_paths);
    if (identity[0] != checked.station) {
        throw ArchiveError(QStringLiteral("%1 belongs to the station \"%2\", not to \"%3\"")
                               .arg(m_paths.root, identity[0], checked.station));
    }
    m_home = identity[1];
    if (!checked.registry.isEmpty()) {
        m_sharedDatabase = std::make_unique<Database>(checked.registry, checked.fileMode);
        m_shared = std::make_unique<Registry>(*m_sharedDatabase);
    }
}

void Station::setUp(const ArchiveConfiguration& checked, Files& files)
{
    const StationPaths paths(checked.directory);
    makePath(files, paths.root, checked.directoryMode);
    for (const QString& folder : {paths.owners(), paths.locks(), paths.cache(), paths.edited()}) {
        files.makeDirectory(folder, checked.directoryMode);
    }
    Database journal(paths.journal(), checked.fileMode);
    journal.makeTables();
    if (files.kind(paths.identity()) == FileKind::Missing) {
        const QString identity = checked.station + QLatin1Char('\n') + newGuid() + QLatin1Char('\n');
        files.write(paths.identity(), identity.toUtf8(), checked.fileMode);
    }
    Station station(checked);
    if (station.isShared()) {
        station.m_sharedDatabase->makeTables();
    }
    station.publish();
}

void Station::publish()
{
    if (!m_claimed) {
        if (registry().claimStation(name(), m_home) != m_home) {
            throw ArchiveError(QStringLiteral("another station of the name \"%1\" uses the registry %2; "
                                              "give this one its own name")
                                   .arg(name(), registry().database().address()));
        }
        m_claimed = true;
    }
    if (isShared()) {
        Zelvo::publish(m_journal, *m_shared);
    }
}

QString Station::owner() const
{
    return processOwner(m_paths, m_configuration.fileMode);
}

bool Station::ownerLives(const QString& owner) const
{
    // A name that is none of ours comes from a registry that others write too, and must not name a path.
    return isGuid(owner) && FileLock::isHeld(m_paths.owner(owner));
}

void Station::removeDeadOwners() const
{
    for (const QString& name : QDir(m_paths.owners()).entryList(QDir::Files)) {
        if (isGuid(name) && !FileLock::isHeld(m_paths.owner(name))) {
            // Taking and releasing the lock removes it.
            static_cast<void>(
                FileLock::tryLock(m_paths.owner(name), FileLock::Mode::Exclusive, m_configuration.fileMode));
        }
    }
}

std::unique_ptr<FileLock> Station::lock(const Address& address, FileLock::Mode mode)
{
    return FileLock::tryLock(m_paths.lock(checkedFlatName(m_origins.firstOf(address))), mode, m_configuration.fileMode);
}

QString Station::editedPath(const FileRow& file) const
{
    return pathOfVersion(m_paths.edited(), file);
}

QString Station::cachedPath(const FileRow& file) const
{
    return pathOfVersion(m_paths.cache(), file);
}

std::optional<FileRow> Station::own(const FileRow& file)
{
    return isShared() ? m_journal.file(file.where()) : std::optional(file);
}

QString Station::originalPath(const FileRow& file)
{
    if (file.state == FileState::Edited) {
        return editedPath(file);
    }
    const std::optional<FileRow> registered = own(file);
    return registered ? registered->localPath : QString();
}

}  // namespace Zelvo
