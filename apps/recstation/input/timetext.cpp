// Parsing times to the microsecond, date formats as patterns, and writing moments and spans of time as text.
#include "input/timetext.h"

#include <cmath>
#include <stdexcept>

#include <QDate>
#include <QDateTime>

#include "input/fields.h"

namespace RecStation {

namespace {

constexpr long long MicrosecondsPerSecond = 1'000'000;
constexpr long long SecondsPerMinute = 60;
constexpr long long MinutesPerHour = 60;
constexpr long long HoursPerDay = 24;

long long number(const QRegularExpressionMatch& match, int group)
{
    return match.captured(group).toLongLong();
}

// A named group for d, dd, M, MM, yy or yyyy; one letter takes one or two digits.
QString groupFor(const QString& field)
{
    const QString digits = field.size() == 1 ? QStringLiteral("1,2") : QString::number(field.size());
    return QStringLiteral("(?<%1>\\d{%2})").arg(field.at(0)).arg(digits);
}

}  // namespace

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

std::optional<long long> daysSince1970(int year, int month, int day)
{
    const QDate date(year, month, day);
    return date.isValid() ? std::optional(QDate(1970, 1, 1).daysTo(date)) : std::nullopt;
}

LogDateFormat::LogDateFormat(const std::string& format) : m_text(format)
{
    static const QRegularExpression fields(QStringLiteral("dd?|MM?|yyyy|yy"));
    const QString text = QString::fromStdString(format);
    QString pattern = QStringLiteral("\\A");
    int end = 0;
    for (auto matches = fields.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        pattern += QRegularExpression::escape(text.mid(end, match.capturedStart() - end)) + groupFor(match.captured());
        end = match.capturedEnd();
    }
    m_pattern.setPattern(pattern + QRegularExpression::escape(text.mid(end)) + QStringLiteral("\\z"));
    // A field that stands twice makes two groups of one name, which is no valid pattern.
    constexpr int FieldsOfADate = 3;
    if (!m_pattern.isValid() || m_pattern.captureCount() != FieldsOfADate) {
        throw std::invalid_argument("not one day, month and year");
    }
}

std::optional<long long> LogDateFormat::parse(const std::string& text) const
{
    constexpr int FirstYear = 1970;
    constexpr int Century = 100;
    const QRegularExpressionMatch match = m_pattern.match(QString::fromStdString(text));
    const QString digits = match.captured(QStringLiteral("y"));
    int year = digits.toInt();
    if (digits.size() == 2) {
        year += year < FirstYear % Century ? 20 * Century : 19 * Century;
    }
    return match.hasMatch() ? daysSince1970(year, match.captured(QStringLiteral("M")).toInt(),
                                            match.captured(QStringLiteral("d")).toInt())
                            : std::nullopt;
}

std::optional<long long> parseTimeOfDay(const std::string& text)
{
    static const QRegularExpression pattern(R"(\A(\d{1,2}):([0-5]\d)(?::([0-5]\d)(?:[.,](\d+))?)?\z)");
    const QRegularExpressionMatch match = pattern.match(QString::fromStdString(text));
    if (!match.hasMatch() || number(match, 1) >= HoursPerDay) {
        return std::nullopt;
    }
    const long long minutes = number(match, 1) * MinutesPerHour + number(match, 2);
    const long long seconds = minutes * SecondsPerMinute + number(match, 3);
    const QString fraction = match.captured(4).leftJustified(6, QLatin1Char('0'), true);
    return seconds * MicrosecondsPerSecond + fraction.toLongLong();
}

std::optional<long long> parseUtcOffset(const std::string& text)
{
    constexpr long long MostHours = 14;
    if (text == "Z" || text == "UTC") {
        return 0;
    }
    static const QRegularExpression pattern(R"(\A([+-])(\d{1,2})(?::([0-5]\d))?\z)");
    const QRegularExpressionMatch match = pattern.match(QString::fromStdString(text));
    const long long minutes = number(match, 2) * MinutesPerHour + number(match, 3);
    if (!match.hasMatch() || minutes > MostHours * MinutesPerHour) {
        return std::nullopt;
    }
    const long long offset = minutes * SecondsPerMinute * MicrosecondsPerSecond;
    return match.captured(1) == QLatin1String("-") ? -offset : offset;
}

}  // namespace RecStation
