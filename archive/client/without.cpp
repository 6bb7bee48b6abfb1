// The build without an archive: nothing can be configured and every request fails.
#include <zelvo/archive.h>
#include <zelvo/zelvo.h>

namespace Zelvo {

namespace {

QString noArchiveText()
{
    return QStringLiteral("No archive is available.");
}

[[noreturn]] void refuse()
{
    throw ArchiveError(QStringLiteral("this build has no archive (RECORDING2_ARCHIVE is off)"),
                       ZelvoError::NotAvailable);
}

}  // namespace

struct ZelvoClient::Private {
    ZelvoError error = ZelvoError::None;
};

ZelvoClient::ZelvoClient() : d(std::make_unique<Private>())
{
}

ZelvoClient::ZelvoClient(const ArchiveConfiguration& /*configuration*/) : ZelvoClient()
{
}

ZelvoClient::~ZelvoClient() = default;

bool ZelvoClient::IsZelvoAvailable()
{
    return false;
}

bool ZelvoClient::IsConnected() const
{
    return false;
}

void ZelvoClient::SetUser(const QString& /*user*/)
{
}

QString ZelvoClient::CreateFileGroup(const QString& /*version*/, const QDateTime& /*expires*/,
                                     const QString& /*startText*/, const QString& /*description*/, FileType /*type*/,
                                     unsigned long long /*maxBytes*/, const QString& /*title*/, QString& /*directory*/,
                                     const QString& /*reserved*/)
{
    d->error = ZelvoError::NotAvailable;
    return QStringLiteral("ERROR");
}

std::uint32_t ZelvoClient::AddFile(const QString& /*name*/, const QString& /*guid*/)
{
    d->error = ZelvoError::NotAvailable;
    return 0;
}

QString ZelvoClient::MoveToNas(const QString& /*guid*/)
{
    d->error = ZelvoError::NotAvailable;
    return noArchiveText();
}

QString ZelvoClient::RequestFile(const ZelvoUrl& /*url*/, LockState /*lock*/)
{
    d->error = ZelvoError::NotAvailable;
    return {};
}

void ZelvoClient::CloseFile(const ZelvoUrl& /*url*/)
{
    d->error = ZelvoError::NotAvailable;
}

bool ZelvoClient::IsValidURL(const ZelvoUrl& /*url*/) const
{
    return false;
}

ZelvoError ZelvoClient::GetError() const
{
    return d->error;
}

QString ZelvoClient::GetErrorString() const
{
    return d->error == ZelvoError::None ? QString() : noArchiveText();
}

ArchiveConfiguration LoadArchiveConfiguration(const QString& /*path*/)
{
    refuse();
}

ArchiveConfiguration ParseArchiveConfiguration(const QString& /*text*/, const QString& /*fileName*/)
{
    refuse();
}

std::optional<ArchiveConfiguration> ArchiveConfigurationOfEnvironment()
{
    refuse();
}

bool ArchiveIsBuiltIn()
{
    return false;
}

void SetProcessArchive(const std::optional<ArchiveConfiguration>& /*configuration*/)
{
    refuse();
}

std::optional<ArchiveConfiguration> ProcessArchive()
{
    return std::nullopt;
}

void SetUpArchive(const ArchiveConfiguration& /*configuration*/)
{
    refuse();
}

struct Archive::Private {};

Archive::Archive(const ArchiveConfiguration& /*configuration*/)
{
    refuse();
}

Archive::~Archive() = default;

ArchiveStatus Archive::status()
{
    refuse();
}

std::vector<GroupInfo> Archive::groups(std::int64_t /*limit*/)
{
    refuse();
}

std::optional<GroupInfo> Archive::group(const QString& /*guid*/)
{
    refuse();
}

std::vector<FileInfo> Archive::files(const QString& /*guid*/)
{
    refuse();
}

std::optional<FileInfo> Archive::file(const ZelvoUrl& /*url*/)
{
    refuse();
}

void Archive::fetch(const ZelvoUrl& /*url*/, const QString& /*path*/)
{
    refuse();
}

std::int64_t Archive::verify(const std::function<bool(const StorageProblem&)>& /*onProblem*/,
                             const std::function<void(const FileInfo&)>& /*onFile*/, const QString& /*onlyGuid*/)
{
    refuse();
}

std::int64_t Archive::retry(const QString& /*guid*/)
{
    refuse();
}

struct Mover::Private {};

Mover::Mover(const ArchiveConfiguration& /*configuration*/)
{
    refuse();
}

Mover::~Mover() = default;

MoverReport Mover::runPending(const std::function<bool()>& /*stop*/)
{
    refuse();
}

}  // namespace Zelvo
