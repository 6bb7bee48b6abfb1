// Date formats as patterns; parsing of dates, times of day and offsets from UTC.
#include "input/logtime.h"

#include <stdexcept>

#include <QDate>

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
    const QDate date(year, match.captured(QStringLiteral("M")).toInt(), match.captured(QStringLiteral("d")).toInt());
    if (!match.hasMatch() || !date.isValid()) {
        return std::nullopt;
    }
    return date.toJulianDay() - QDate(FirstYear, 1, 1).toJulianDay();
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
