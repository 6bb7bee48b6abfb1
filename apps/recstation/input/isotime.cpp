// Parsing ISO 8601 to the microsecond, and writing moments and spans of time as text.
#include "input/isotime.h"

#include <QDateTime>
#include <QRegularExpression>

namespace RecStation {

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

std::string utcText(unsigned long long microseconds)
{
    constexpr unsigned long long PerSecond = 1'000'000;
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(microseconds / 1000), Qt::UTC);
    const bool whole = microseconds % PerSecond < 1000;
    return time.toString(whole ? QStringLiteral("yyyy-MM-dd hh:mm:ss") : QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"))
               .toStdString() +
           " UTC";
}

std::string spanText(unsigned long long microseconds)
{
    constexpr unsigned long long PerSecond = 1000;
    constexpr unsigned long long PerMinute = 60 * PerSecond;
    constexpr unsigned long long PerHour = 60 * PerMinute;
    constexpr unsigned long long PerDay = 24 * PerHour;
    const unsigned long long milliseconds = microseconds / 1000;
    if (milliseconds < PerSecond) {
        return std::to_string(milliseconds) + " ms";
    }
    if (milliseconds < PerMinute) {
        return QString::number(static_cast<double>(milliseconds) / static_cast<double>(PerSecond)).toStdString() + " s";
    }
    if (milliseconds < PerHour) {
        return std::to_string(milliseconds / PerMinute) + " min " +
               std::to_string(milliseconds % PerMinute / PerSecond) + " s";
    }
    if (milliseconds < 2 * PerDay) {
        return std::to_string(milliseconds / PerHour) + " h " + std::to_string(milliseconds % PerHour / PerMinute) +
               " min";
    }
    return std::to_string(milliseconds / PerDay) + " days";
}

}  // namespace RecStation
