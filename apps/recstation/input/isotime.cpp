// Parsing ISO 8601 to the microsecond, and writing moments and spans of time as text.
#include "input/isotime.h"

#include <cmath>

#include <QDateTime>
#include <QRegularExpression>

#include "input/fields.h"

namespace RecStation {

std::optional<unsigned long long> parseIsoTime(const std::string& text)
{
    // Qt keeps milliseconds only, so the fraction is read apart.
    static const QRegularExpression pattern(
        R"(\A(\d{4})(-?)(\d\d)\2(\d\d)[Tt](\d\d)(:?)(\d\d)(?:\6(\d\d)(?:[.,](\d+))?)?(?:[Zz]|([+-]\d\d)(?::?(\d\d))?)?\z)");
    const QRegularExpressionMatch match = pattern.match(QString::fromStdString(text));
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const auto orZero = [&match](int group) {
        return match.captured(group).isEmpty() ? QStringLiteral("00") : match.captured(group);
    };
    const QString zone =
        match.captured(10).isEmpty() ? QStringLiteral("Z") : match.captured(10) + QLatin1Char(':') + orZero(11);
    const QDateTime seconds = QDateTime::fromString(QStringLiteral("%1-%2-%3T%4:%5:%6%7")
                                                        .arg(match.captured(1), match.captured(3), match.captured(4),
                                                             match.captured(5), match.captured(7), orZero(8), zone),
                                                    Qt::ISODate);
    if (!seconds.isValid()) {
        return std::nullopt;
    }
    const QString fraction = match.captured(9).leftJustified(6, QLatin1Char('0'), true);
    const qint64 microseconds = seconds.toSecsSinceEpoch() * 1'000'000 + fraction.toLongLong();
    if (!isRecordable(microseconds)) {
        return std::nullopt;
    }
    return static_cast<unsigned long long>(microseconds);
}

// No log has seconds after the year 5000, or any of the others before 1974.
std::optional<unsigned long long> parseEpoch(const std::string& text)
{
    constexpr double Thousand = 1e3;
    constexpr double LeastMilliseconds = 1e11;
    constexpr double Latest = 1e20;
    double unitUs = 1e6;
    const auto number = parseNumber<double>(text);
    if (!number || !(*number > 0 && *number < Latest)) {
        return std::nullopt;
    }
    double asSeconds = *number;
    while (asSeconds >= LeastMilliseconds) {
        asSeconds /= Thousand;
        unitUs /= Thousand;
    }
    const long long us = std::llround(*number * unitUs);
    return isRecordable(us) ? std::optional(static_cast<unsigned long long>(us)) : std::nullopt;
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
