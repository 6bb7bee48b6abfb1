// Quon::DateTime: a point in time in microseconds since 1970-01-01 00:00:00 UTC.
#pragma once

#include <cstdint>

#include <QDate>
#include <QString>
#include <QTime>

#include <vkbase/export.h>

namespace Quon {

/// Everything is UTC: dates and times given without a zone are taken as UTC, texts and times of day come out as UTC.
/// Every 64-bit count is a valid time. Dates before 1970 give 0, dates past the range its largest count.
class VKBASE_EXPORT DateTime {
public:
    explicit DateTime(const unsigned long long& microseconds);
    explicit DateTime(const QDate& date);            ///< midnight; an invalid date gives 0
    DateTime(const QDate& date, const QTime& time);  ///< an invalid date or time gives 0

    [[nodiscard]] unsigned long long getTimeStamp() const;  ///< microseconds since 1970 UTC
    void setTime_ts(unsigned long long microseconds);

    /// Whole days from this date to the other's (calendar days, UTC), negative when the other is earlier.
    [[nodiscard]] int daysTo(const DateTime& other) const;
    [[nodiscard]] QTime time() const;  ///< time of day, to the millisecond
    /// Text by Qt's date-time pattern ("yyyy-MM-dd hh-mm-ss.zzz"), the same on every machine (C locale).
    [[nodiscard]] QString toString(const QString& format) const;
    /// The same for this time shifted by an offset from UTC in seconds (cut to +-10^12).
    [[nodiscard]] QString toString(const QString& format, long long utcOffsetSeconds) const;

private:
    unsigned long long m_microseconds;
};

}  // namespace Quon
