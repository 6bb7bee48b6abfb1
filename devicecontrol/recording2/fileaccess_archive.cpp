// The archive's part in a recording file: files asked for by address, groups of files, and the move to the storage.
#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <values/tree.h>
#include <values/value.h>
#include <vkbase/trace.h>
#include <zelvo/zelvo.h>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "filenames.h"

namespace Recording2 {

namespace {

const QString AddressFormat = QStringLiteral("zelvo:///%1/%2");
constexpr unsigned long long GroupBytes = 52'428'800;
constexpr qint64 DaysKept = 7;

// An archive that fails never stops a recording: what it says is traced and the file is written all the same.
void traceIfFailed(const Zelvo::ZelvoClient& client, const QString& message, std::uint16_t line)
{
    if (client.GetError() != Zelvo::ZelvoError::None && FileAccessTrace::enabled()) {
        _Q_Trace(message + client.GetErrorString(), FileAccessTrace::Source, line);
    }
}

const values::ValueBase* treeValue(const QString& path)
{
    const values::Tree* tree = values::Tree::Instance();
    return tree == nullptr ? nullptr : tree->Find(path);
}

// Who operates the device that the station is about.
QString userName()
{
    if (const values::ValueBase* device = treeValue(QStringLiteral("/ADMINISTRATION/DEVICE_NAME"))) {
        const QString path = QStringLiteral("/DEVICES/") + device->GetText() + QStringLiteral("/OPERATOR_NAME");
        if (const values::ValueBase* name = treeValue(path)) {
            return name->GetText();
        }
    }
    return QStringLiteral("Arbitary Username");  // the archive knows this spelling
}

QString createGroup(Zelvo::ZelvoClient& client, QString& directory)
{
    return client.CreateFileGroup(
        QStringLiteral("2"), QDateTime::currentDateTime().addDays(DaysKept),
        QStringLiteral("Start Time:") + QDateTime::currentDateTime().toString(Qt::TextDate),
        QStringLiteral("Scan-Records (Recording2)"), Zelvo::FileType::Recording, GroupBytes,
        QStringLiteral("Scan Recording - ") + QDateTime::currentDateTime().toString(QStringLiteral("hh-mm-ss")),
        directory, QString());
}

}  // namespace

ArchiveHold::~ArchiveHold()
{
    if (m_client != nullptr && m_client->IsConnected() && m_client->IsValidURL(m_url)) {
        m_client->CloseFile(m_url);
    }
}

bool CFileAccess::Private::requestFromArchive(bool write)
{
    if (client == nullptr || !client->IsConnected()) {
        return true;
    }
    const Zelvo::ZelvoUrl url(FileNames::fromBytes(path));
    if (url.isZelvoUrl()) {
        if (!client->IsValidURL(url)) {
            zelvoError = client->GetError();
            return false;
        }
        const auto lock = write ? Zelvo::LockState::Exclusive : Zelvo::LockState::Shared;
        path = FileNames::toBytes(client->RequestFile(url, lock));
        zelvoError = client->GetError();
        if (zelvoError != Zelvo::ZelvoError::None || path.empty()) {
            return false;
        }
    }
    shared->archiveHold.take(client, url);
    return true;
}

void CFileAccess::Private::showArchivePath(const QString& address) const
{
    if (Zelvo::ZelvoClient::IsZelvoAvailable() && shared->archiveFilePath) {
        shared->archiveFilePath->SetValue(address, nullptr);
    }
}

QString CFileAccess::getNewGroupGuid(bool reuse)
{
    if (reuse) {
        return m_sGuid;
    }
    if (d->client == nullptr || !Zelvo::ZelvoClient::IsZelvoAvailable()) {
        return QStringLiteral("ERROR");
    }
    d->client->SetUser(userName());
    QString directory = QDir::toNativeSeparators(QFileInfo(FileNames::fromBytes(d->path)).absolutePath());
    QString guid = createGroup(*d->client, directory);
    if (d->client->GetError() != Zelvo::ZelvoError::None) {
        traceIfFailed(*d->client, QStringLiteral("Zelvo ERROR: error while get the File-Group-GUID: --> "), __LINE__);
        return guid;
    }
    const QString name = FileNames::fromBytes(FileNames::fileName(d->path));
    d->path = FileNames::toBytes(QFileInfo(QDir(directory), name).absoluteFilePath());
    d->showArchivePath(QStringLiteral("zelvo:///") + guid);
    return guid;
}

int CFileAccess::addFileToFileGroup(const QString& filePath, const QString& guid)
{
    if (d->client == nullptr) {
        return -1;
    }
    const std::string name = FileNames::baseName(FileNames::toBytes(filePath)) + ".rec";
    const auto fileId = static_cast<int>(d->client->AddFile(FileNames::fromBytes(name), guid));
    if (d->client->GetError() == Zelvo::ZelvoError::None) {
        d->showArchivePath(AddressFormat.arg(m_sGuid, QString::number(fileId)));
    } else {
        traceIfFailed(*d->client, QStringLiteral("Zelvo ERROR: error while add the File to the FileGroup: --> "),
                      __LINE__);
    }
    return fileId;
}

// The archive moves the whole group; which file closed last is of no concern to it.
void CFileAccess::moveToNas(const QString& guid, int /*fileId*/)
{
    if (d->client != nullptr) {
        d->client->MoveToNas(guid);
        traceIfFailed(*d->client, QStringLiteral("Zelvo ERROR: error while move the File to the NAS: --> "), __LINE__);
    }
}

QString CFileAccess::fullRecordingFilePath() const
{
    return QStringLiteral("%1#zelvo:///%2/%3")
        .arg(FileNames::fromBytes(d->path), m_sGuid, QString::number(d->fileGroupResult));
}

}  // namespace Recording2
