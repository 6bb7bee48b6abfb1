// Requests to the archive, and what is traced of its answers.
#include "archivefile.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include "filenames.h"
#include "traces.h"

namespace Recording2 {

namespace {

constexpr unsigned long long GroupBytes = 52'428'800;
constexpr qint64 DaysKept = 7;

void traceIfFailed(const Zelvo::ZelvoClient& client, const QString& message, std::uint16_t line)
{
    if (client.GetError() != Zelvo::ZelvoError::None) {
        Traces::tell(Traces::FileAccess, message + client.GetErrorString(), line);
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

const QString ArchiveFile::NoGroup = QStringLiteral("ERROR");

ArchiveFile::~ArchiveFile()
{
    if (m_hold && m_client->IsConnected() && m_client->IsValidURL(m_url)) {
        m_client->CloseFile(m_url);
    }
}

bool ArchiveFile::request(std::string& path, bool write)
{
    if (m_client == nullptr || !m_client->IsConnected()) {
        return true;
    }
    const Zelvo::ZelvoUrl url(FileNames::fromBytes(path));
    if (url.isZelvoUrl()) {
        if (!m_client->IsValidURL(url)) {
            m_error = m_client->GetError();
            return false;
        }
        const auto lock = write ? Zelvo::LockState::Exclusive : Zelvo::LockState::Shared;
        path = FileNames::toBytes(m_client->RequestFile(url, lock));
        m_error = m_client->GetError();
        if (m_error != Zelvo::ZelvoError::None || path.empty()) {
            return false;
        }
    }
    m_url = url;
    m_hold = true;
    return true;
}

void ArchiveFile::show(const QString& address) const
{
    if (Zelvo::ZelvoClient::IsZelvoAvailable() && m_shown) {
        m_shown->SetValue(QStringLiteral("zelvo:///") + address, nullptr);
    }
}

QString ArchiveFile::newGroup(std::string& path)
{
    if (m_client == nullptr || !Zelvo::ZelvoClient::IsZelvoAvailable()) {
        return NoGroup;
    }
    m_client->SetUser(userName());
    QString directory = QDir::toNativeSeparators(QFileInfo(FileNames::fromBytes(path)).absolutePath());
    QString guid = createGroup(*m_client, directory);
    if (m_client->GetError() != Zelvo::ZelvoError::None) {
        traceIfFailed(*m_client, QStringLiteral("Zelvo ERROR: error while get the File-Group-GUID: --> "), __LINE__);
        return guid;
    }
    // Joined as text: Qt takes a name that begins with ":" for one of its own and leaves the directory out.
    const QString folder = QDir(directory).absolutePath();
    path = FileNames::toBytes(folder + (folder.endsWith(QLatin1Char('/')) ? "" : "/")) + FileNames::fileName(path);
    show(guid);
    return guid;
}

int ArchiveFile::add(const QString& path, const QString& guid, const QString& currentGuid)
{
    if (m_client == nullptr) {
        return -1;
    }
    const std::string name = FileNames::baseName(FileNames::toBytes(path)) + ".rec";
    const auto fileId = static_cast<int>(m_client->AddFile(FileNames::fromBytes(name), guid));
    if (m_client->GetError() == Zelvo::ZelvoError::None) {
        show(QStringLiteral("%1/%2").arg(currentGuid, QString::number(fileId)));
    } else {
        traceIfFailed(*m_client, QStringLiteral("Zelvo ERROR: error while add the File to the FileGroup: --> "),
                      __LINE__);
    }
    return fileId;
}

// The archive moves the whole group; which file closed last is of no concern to it.
void ArchiveFile::move(const QString& guid)
{
    if (m_client != nullptr) {
        m_client->MoveToNas(guid);
        traceIfFailed(*m_client, QStringLiteral("Zelvo ERROR: error while move the File to the NAS: --> "), __LINE__);
    }
}

}  // namespace Recording2
