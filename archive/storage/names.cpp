// Which group ids, addresses and file names are allowed, and how stored files are called.
#include "names.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QUuid>

#include <zelvo/archive.h>

namespace Zelvo {

namespace {

const QRegularExpression& guidPattern()
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QStringLiteral("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}")));
    return pattern;
}

bool isControl(QChar c)
{
    return c < QLatin1Char(' ') || c == QChar(0x7F);
}

}  // namespace

bool isGuid(const QString& text)
{
    return guidPattern().match(text).hasMatch();
}

QString newGuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

std::optional<Address> parseAddress(const ZelvoUrl& url)
{
    if (!url.isZelvoUrl()) {
        return std::nullopt;
    }
    const QString& text = url.toString();
    const int slash = text.lastIndexOf(QLatin1Char('/'));
    const int begin = QStringLiteral("zelvo:///").size();
    Address address{text.mid(begin, slash - begin), 0};
    static const QRegularExpression number(QRegularExpression::anchoredPattern(QStringLiteral("[1-9][0-9]{0,9}")));
    const QString id = text.mid(slash + 1);
    bool fits = false;
    address.id = id.toUInt(&fits);
    if (!isGuid(address.guid) || !number.match(id).hasMatch() || !fits) {
        return std::nullopt;
    }
    return address;
}

Address addressOf(const ZelvoUrl& url)
{
    const std::optional<Address> address = parseAddress(url);
    if (!address) {
        throw ArchiveError(QStringLiteral("\"%1\" is no address of the archive").arg(url.toString()),
                           ZelvoError::BadName);
    }
    return *address;
}

bool isFileName(const QString& name)
{
    constexpr int MostBytes = 220;  // of 255; before it come two numbers, where it is stored
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')) || name.toUtf8().size() > MostBytes ||
        QString::fromUtf8(name.toUtf8()) != name) {
        return false;
    }
    for (const QChar c : name) {
        if (isControl(c) || c == QLatin1Char('/') || c == QLatin1Char('\\')) {
            return false;
        }
    }
    return true;
}

QString unfinishedName(const QString& name)
{
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    return (dot > 0 ? name.left(dot) : name) + QStringLiteral(".tmp");
}

QString storedName(std::int64_t createdMs, const Address& address, std::int64_t version, const QString& name)
{
    const QString month = QDateTime::fromMSecsSinceEpoch(createdMs, Qt::UTC).toString(QStringLiteral("yyyy-MM"));
    const QString number =
        version > 1 ? QStringLiteral("%1.%2").arg(address.id).arg(version) : QString::number(address.id);
    return month + QLatin1Char('/') + address.guid + QLatin1Char('/') + number + QLatin1Char('-') + name;
}

bool isStoredName(const QString& path)
{
    const QStringList parts = path.split(QLatin1Char('/'));
    static const QRegularExpression month(QRegularExpression::anchoredPattern(QStringLiteral("[0-9]{4,6}-[0-9]{2}")));
    static const QRegularExpression number(QStringLiteral("^[0-9]+(\\.[0-9]+)?-"));
    if (parts.size() != 3 || !month.match(parts[0]).hasMatch() || !isGuid(parts[1])) {
        return false;
    }
    const QRegularExpressionMatch match = number.match(parts[2]);
    return match.hasMatch() && isFileName(parts[2].mid(match.capturedLength()));
}

QString flatName(const Address& address)
{
    return address.guid + QLatin1Char('_') + QString::number(address.id);
}

}  // namespace Zelvo
