// The form of an archive address, and the error that archive requests throw.
#include <zelvo/archive.h>
#include <zelvo/zelvo.h>

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

ArchiveError::ArchiveError(const QString& sentence, ZelvoError code)
    : std::runtime_error(sentence.toStdString()), m_code(code)
{
}

ArchiveError::~ArchiveError() = default;

}  // namespace Zelvo
