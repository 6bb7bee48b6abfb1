// What a client registers, hands over and opens: waiting, edited and stored files.
#include <map>

#include <vector>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <zelvo/archive.h>
#include <zelvo/zelvo.h>

#include "cache.h"
#include "originals.h"
#include "station/configuration.h"
#include "station/station.h"
#include "storage/storage.h"

namespace Zelvo {

namespace {

constexpr unsigned WriteBits = 0222;

QString noArchiveText()
{
    return QStringLiteral("No archive is available.");
}

// A file that the client has open.
struct OpenFile {
    std::unique_ptr<FileLock> lock;
    LockState state = LockState::None;
    FileRow file;
    QString originalPath;   ///< of one that waits
    QString editedPath;     ///< of a fetched file that is open for writing
    FileIdentity original;  ///< of either as it was given
};

}  // namespace

struct ZelvoClient::Private {
    explicit Private(const std::optional<ArchiveConfiguration>& configuration)
    {
        if (!configuration) {
            return;
        }
        try {
            station = std::make_unique<Station>(checkedConfiguration(*configuration));
        } catch (const std::exception& failure) {
            whyNot = QString::fromUtf8(failure.what());
        }
    }

    // Does a request; whatever it throws becomes the client's error.
    template <typename Result, typename Request>
    Result attempt(Result failed, const Request& request)
    {
        error = ZelvoError::None;
        errorText.clear();
        try {
            if (station == nullptr) {
                throw ArchiveError(whyNot.isEmpty() ? noArchiveText() : whyNot, ZelvoError::NotAvailable);
            }
            return request();
        } catch (const ArchiveError& failure) {
            setError(failure.code(), failure.text());
        } catch (const std::exception& failure) {
            setError(ZelvoError::Failed, QString::fromUtf8(failure.what()));
        }
        return failed;
    }

    void setError(ZelvoError code, const QString& text)
    {
        error = code;
        errorText = text;
    }

    [[nodiscard]] std::uint32_t add(const QString& name, const QString& guid);
    [[nodiscard]] FileRow find(const Address& address);
    QString open(const Address& address, LockState state);
    QString openOriginal(OpenFile& opened);
    QString openEdited(const FileRow& file);
    QString openStored(OpenFile& opened, LockState state);
    QString fetchForReading(const FileRow& file);
    QString fetchForWriting(OpenFile& opened);
    void close(OpenFile& opened);

    std::unique_ptr<Station> station;
    QString whyNot;
    QString user;
    std::map<QString, OpenFile> openFiles;  ///< by address
    Files files;
    ZelvoError error = ZelvoError::None;
    QString errorText;
};

std::uint32_t ZelvoClient::Private::add(const QString& name, const QString& guid)
{
    if (!isFileName(name) || unfinishedName(name) == name) {
        throw ArchiveError(QStringLiteral("\"%1\" is no name for a file of the archive").arg(name),
                           ZelvoError::BadName);
    }
    const std::optional<GroupRow> group = isGuid(guid) ? station->journal().group(guid) : std::nullopt;
    if (!group) {
        throw ArchiveError(QStringLiteral("the archive has no group \"%1\" of this station").arg(guid),
                           ZelvoError::UnknownGroup);
    }
    // Two recorders of one process share one group name, so a file may lie in the directory of another group than the
    // one it is added to.
    std::vector<QString> directories = station->journal().directoriesOf(group->owner);
    directories.insert(directories.begin(), group->directory);
    const NewFile found = findNewFile(directories, name, *station, files);
    FileRow file;
    file.guid = guid;
    file.name = name;
    file.station = station->name();
    file.localPath = found.directory + QLatin1Char('/') + name;
    file.unfinished = found.unfinished;
    file.origin = found.origin;
    file.createdMs = currentMs();
    return station->journal().addFile(file);
}

FileRow ZelvoClient::Private::find(const Address& address)
{
    // A file that was registered a moment ago may be known to the journal alone.
    if (station->isShared()) {
        station->publish();
    }
    return station->registry().fileOf(address);
}

QString ZelvoClient::Private::open(const Address& address, LockState state)
{
    if (state != LockState::Shared && state != LockState::Exclusive) {
        throw ArchiveError(QStringLiteral("a file is requested for reading or for writing"), ZelvoError::Failed);
    }
    const QString key = QStringLiteral("%1/%2").arg(address.guid).arg(address.id);
    if (openFiles.count(key) > 0) {
        throw ArchiveError(QStringLiteral("zelvo:///%1 is open already").arg(key), ZelvoError::Locked);
    }
    OpenFile opened;
    opened.file = find(address);
    opened.lock = station->lock(opened.file.where(),
                                state == LockState::Shared ? FileLock::Mode::Shared : FileLock::Mode::Exclusive);
    if (opened.lock == nullptr) {
        throw ArchiveError(QStringLiteral("%1 is in use").arg(opened.file.address()), ZelvoError::Locked);
    }
    // It may have been moved until the lock was there; from now on it stays where it is.
    opened.file = find(address);
    opened.state = state;
    const FileState where = opened.file.state;
    const bool isEditedHere = where == FileState::Edited && opened.file.station == station->name();
    QString path = where == FileState::Waiting ? openOriginal(opened)
                   : isEditedHere              ? openEdited(opened.file)
                                               : openStored(opened, state);
    openFiles.emplace(key, std::move(opened));
    return path;
}

QString ZelvoClient::Private::openOriginal(OpenFile& opened)
{
    const Original original = finishedOriginal(opened.file, *station, files);
    opened.originalPath = original.path;
    opened.original = original.identity;
    return original.path;
}

QString ZelvoClient::Private::openEdited(const FileRow& file)
{
    QString path = station->originalPath(file);
    if (files.kind(path) != FileKind::File) {
        throw ArchiveError(QStringLiteral("the newer version of %1 is not there: %2").arg(file.address(), path),
                           ZelvoError::UnknownFile);
    }
    return path;
}

QString ZelvoClient::Private::openStored(OpenFile& opened, LockState state)
{
    const FileRow& file = opened.file;
    requireNotRemoved(file);
    if (state == LockState::Shared) {
        return fetchForReading(file);
    }
    if (file.state == FileState::Edited) {
        throw ArchiveError(
            QStringLiteral("a newer version of %1 still lies at the station \"%2\"").arg(file.address(), file.station),
            ZelvoError::Elsewhere);
    }
    if (file.state == FileState::Stored) {
        throw ArchiveError(QStringLiteral("%1 is being moved").arg(file.address()), ZelvoError::Locked);
    }
    return fetchForWriting(opened);
}

QString ZelvoClient::Private::fetchForReading(const FileRow& file)
{
    const Storage storage(station->configuration(), files);
    QString path = station->cachedPath(file);
    makeRoom(*station, files, QFileInfo::exists(path) ? 0 : file.bytes);
    fetchStored(file, path, station->configuration().fileMode & ~WriteBits, station->configuration(), storage, files);
    files.touch(path);
    return path;
}

QString ZelvoClient::Private::fetchForWriting(OpenFile& opened)
{
    const FileRow& file = opened.file;
    QString path = station->editedPath(file);
    const std::int64_t now = currentMs();
    const auto writerIsGone = [this, now](const FileRow& other) {
        return other.writerStation == station->name() ? !station->ownerLives(other.writer) : other.writerUntilMs < now;
    };
    if (!station->registry().takeForWriting(file, station->owner(), station->name(), now + WriterLeaseMs,
                                            writerIsGone)) {
        throw ArchiveError(QStringLiteral("%1 is open for writing elsewhere").arg(file.address()), ZelvoError::Locked);
    }
    try {
        // What a writer that died left of this version is of no use.
        removeWithFolder(path);
        fetchStored(file, path, station->configuration().fileMode, station->configuration(),
                    Storage(station->configuration(), files), files);
        opened.original = files.identity(path);
    } catch (...) {
        station->registry().giveBack(file.where(), station->owner());
        throw;
    }
    opened.editedPath = path;
    return path;
}

void ZelvoClient::Private::close(OpenFile& opened)
{
    if (opened.state == LockState::Exclusive && !opened.originalPath.isEmpty()) {
        // A program that saves may have put a new file in the place of the old one.
        const QString now = files.identity(opened.originalPath).lasting();
        if (now != opened.original.lasting()) {
            station->origins().change(opened.file.where(), now);
        }
    }
    if (opened.editedPath.isEmpty()) {
        return;
    }
    if (files.identity(opened.editedPath) == opened.original) {
        station->registry().giveBack(opened.file.where(), station->owner());
        removeWithFolder(opened.editedPath);
        return;
    }
    if (!station->registry().recordEdited(opened.file, station->owner(), station->name(), opened.editedPath)) {
        throw ArchiveError(
            QStringLiteral("%1 was changed elsewhere meanwhile; this version is not stored").arg(opened.file.address()),
            ZelvoError::Locked);
    }
}

ZelvoClient::ZelvoClient() : d(std::make_unique<Private>(ProcessArchive()))
{
}

ZelvoClient::ZelvoClient(const ArchiveConfiguration& configuration)
    : d(std::make_unique<Private>(std::optional(configuration)))
{
}

ZelvoClient::~ZelvoClient()
{
    for (auto& [key, opened] : d->openFiles) {
        if (!opened.editedPath.isEmpty()) {
            d->attempt(0, [this, &file = opened] {
                d->station->registry().giveBack(file.file.where(), d->station->owner());
                removeWithFolder(file.editedPath);
                return 0;
            });
        }
    }
}

bool ZelvoClient::IsZelvoAvailable()
{
    const std::optional<ArchiveConfiguration> configuration = ProcessArchive();
    return configuration && Private(configuration).station != nullptr;
}

bool ZelvoClient::IsConnected() const
{
    return d->station != nullptr;
}

void ZelvoClient::SetUser(const QString& user)
{
    d->user = user;
}

QString ZelvoClient::CreateFileGroup(const QString& version, const QDateTime& expires, const QString& startText,
                                     const QString& description, FileType type, unsigned long long maxBytes,
                                     const QString& title, QString& directory, const QString& /*reserved*/)
{
    return d->attempt(QStringLiteral("ERROR"), [&] {
        const QString path = QDir::cleanPath(QDir::fromNativeSeparators(directory));
        if (!QDir::isAbsolutePath(path) || path.contains(QChar(0))) {
            throw ArchiveError(QStringLiteral("\"%1\" is no absolute path of a directory").arg(directory),
                               ZelvoError::BadName);
        }
        GroupRow group;
        group.data = {newGuid(), description, d->user, type, maxBytes, expires};
        group.version = version;
        group.title = title;
        group.startText = startText;
        group.directory = path;
        group.station = d->station->name();
        group.owner = d->station->owner();
        group.createdMs = currentMs();
        d->station->journal().createGroup(group);
        return group.data.guid;
    });
}

std::uint32_t ZelvoClient::AddFile(const QString& name, const QString& guid)
{
    return d->attempt(std::uint32_t{0}, [&] { return d->add(name, guid); });
}

QString ZelvoClient::MoveToNas(const QString& guid)
{
    const QString answer = d->attempt(QString(), [&] {
        if (!isGuid(guid) || !d->station->journal().ask(guid, d->user)) {
            throw ArchiveError(QStringLiteral("the archive has no group \"%1\" of this station").arg(guid),
                               ZelvoError::UnknownGroup);
        }
        return QStringLiteral("The files of group %1 will be moved.").arg(guid);
    });
    return d->error == ZelvoError::None ? answer : d->errorText;
}

QString ZelvoClient::RequestFile(const ZelvoUrl& url, LockState lock)
{
    return d->attempt(QString(), [&] { return d->open(addressOf(url), lock); });
}

void ZelvoClient::CloseFile(const ZelvoUrl& url)
{
    d->attempt(0, [&] {
        const std::optional<Address> address = parseAddress(url);
        const auto found = address ? d->openFiles.find(QStringLiteral("%1/%2").arg(address->guid).arg(address->id))
                                   : d->openFiles.end();
        if (found == d->openFiles.end()) {
            throw ArchiveError(QStringLiteral("%1 is not open").arg(url.toString()), ZelvoError::UnknownFile);
        }
        OpenFile opened = std::move(found->second);
        d->openFiles.erase(found);
        d->close(opened);
        return 0;
    });
}

bool ZelvoClient::IsValidURL(const ZelvoUrl& url) const
{
    return d->station != nullptr && parseAddress(url).has_value();
}

ZelvoError ZelvoClient::GetError() const
{
    return d->error;
}

QString ZelvoClient::GetErrorString() const
{
    return d->errorText;
}

}  // namespace Zelvo
