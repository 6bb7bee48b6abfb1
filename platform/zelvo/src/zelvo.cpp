#include <zelvo/zelvo.h>

namespace {

QString NoArchiveText()
{
    return QStringLiteral("No archive is available.");
}

}  // namespace

namespace Zelvo {

ZelvoUrl::ZelvoUrl(const QString& text) : m_text(text)
{
}

bool ZelvoUrl::isZelvoUrl() const
{
    const QString scheme = QStringLiteral("zelvo:///");
    if (!m_text.startsWith(scheme)) {
        return false;
    }
    const QStringList parts = m_text.mid(scheme.size()).split(QLatin1Char('/'));
    return parts.size() == 2 && !parts[0].isEmpty() && !parts[1].isEmpty();
}

const QString& ZelvoUrl::toString() const
{
    return m_text;
}

void ZelvoUrl::clear()
{
    m_text.clear();
}

ZelvoClient::ZelvoClient() = default;

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
    m_error = ZelvoError::NotAvailable;
    return {};
}

std::uint32_t ZelvoClient::AddFile(const QString& /*name*/, const QString& /*guid*/)
{
    m_error = ZelvoError::NotAvailable;
    return 0;
}

QString ZelvoClient::MoveToNas(const QString& /*guid*/)
{
    m_error = ZelvoError::NotAvailable;
    return NoArchiveText();
}

QString ZelvoClient::RequestFile(const ZelvoUrl& /*url*/, LockState /*lock*/)
{
    m_error = ZelvoError::NotAvailable;
    return {};
}

void ZelvoClient::CloseFile(const ZelvoUrl& /*url*/)
{
    m_error = ZelvoError::NotAvailable;
}

bool ZelvoClient::IsValidURL(const ZelvoUrl& /*url*/) const
{
    return false;
}

ZelvoError ZelvoClient::GetError() const
{
    return m_error;
}

QString ZelvoClient::GetErrorString() const
{
    return m_error == ZelvoError::None ? QString() : NoArchiveText();
}

}  // namespace Zelvo
