// Dates and times of day as logs write them.
#pragma once

#include <optional>
#include <string>

#include <QRegularExpression>
#include <QString>

namespace RecStation {

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
