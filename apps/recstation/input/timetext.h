// Times as texts: ISO 8601, seconds since 1970, dates and times of day as logs write them.
#pragma once

#include <optional>
#include <string>

#include <QRegularExpression>
#include <QString>

namespace RecStation {

/// Whether a time in microseconds since 1970 UTC can be recorded: after the start of 1970, up to the end of 2500. One
/// behind it is a mistake that would hold back all that comes later.
[[nodiscard]] constexpr bool isRecordable(long long microseconds)
{
    constexpr long long EndOf2500 = 16'756'761'600'000'000;
    return microseconds > 0 && microseconds < EndOf2500;
}

/// Microseconds since 1970 UTC of a date and time in ISO 8601 such as "2026-11-21T08:30:00.25Z", "2026-11-21T08:30",
/// "2026-11-21T09:30:00,5+0100" or "20261121T083000Z"; without a zone it is UTC, digits after the microseconds are
/// cut. Nothing for any other text and for times that cannot be recorded.
std::optional<unsigned long long> parseIsoTime(const std::string& text);
/// The same of a number of seconds since 1970, such as "1795248000.25", or of thousandths, millionths or billionths of
/// them, which is seen by its size.
[[nodiscard]] std::optional<unsigned long long> parseEpoch(const std::string& text);

/// "2026-11-21 08:30:00 UTC", with milliseconds where there are some.
[[nodiscard]] std::string utcText(unsigned long long microseconds);
/// "850 ms", "22.5 s", "52 min 10 s", "3 h 5 min", "12 days".
[[nodiscard]] std::string spanText(unsigned long long microseconds);

/// Of a day of the calendar; nothing where it has none such.
[[nodiscard]] std::optional<long long> daysSince1970(int year, int month, int day);

/// Dates in one format such as "MM/dd/yy": d or M (one or two digits), dd, MM, yy (1970 to 2069), yyyy; all else stands
/// for itself. Own code, because Qt takes yy for the 20th century, which lacks the 29 February 2000.
class LogDateFormat {
public:
    /// @throws std::invalid_argument when the format does not have each of day, month and year once
    explicit LogDateFormat(const std::string& format);
    [[nodiscard]] const std::string& text() const { return m_text; }

    /// Whole days since 1970-01-01.
    [[nodiscard]] std::optional<long long> parse(const std::string& text) const;

private:
    std::string m_text;
    QRegularExpression m_pattern;
};

/// Microseconds since midnight of a time such as "5:31", "05:31:07" or "05:31:07.25" (also with a comma);
/// digits after the microseconds are cut.
[[nodiscard]] std::optional<long long> parseTimeOfDay(const std::string& text);

/// Microseconds by which local time is ahead of UTC: "-05:00", "+5", "Z" or "UTC", at most 14 hours.
[[nodiscard]] std::optional<long long> parseUtcOffset(const std::string& text);

}  // namespace RecStation
