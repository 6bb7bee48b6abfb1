#include "input/isotime.h"

#include <QDateTime>
#include <QRegularExpression>

namespace recstation {

std::optional<unsigned long long> parseIsoTime(const std::string& text)
{
    // Qt keeps milliseconds only, so the fraction is read apart.
    static const QRegularExpression pattern(
        R"(\A(\d{4}-\d\d-\d\dT\d\d:\d\d)(?::(\d\d)(?:\.(\d+))?)?(Z|[+-]\d\d:\d\d)?\z)");
    const QRegularExpressionMatch match = pattern.match(QString::fromStdString(text));
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const QString zone = match.captured(4).isEmpty() ? QStringLiteral("Z") : match.captured(4);
    const QString second = match.captured(2).isEmpty() ? QStringLiteral("00") : match.captured(2);
    const QDateTime seconds = QDateTime::fromString(match.captured(1) + QLatin1Char(':') + second + zone, Qt::ISODate);
    if (!seconds.isValid()) {
        return std::nullopt;
    }
    const QString fraction = match.captured(3).leftJustified(6, QLatin1Char('0'), true);
    const qint64 microseconds = seconds.toSecsSinceEpoch() * 1'000'000 + fraction.toLongLong();
    if (microseconds <= 0) {
        return std::nullopt;
    }
    return static_cast<unsigned long long>(microseconds);
}

}  // namespace recstation
