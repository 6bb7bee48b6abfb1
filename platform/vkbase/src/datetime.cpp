// Dates and times of day as microseconds since 1970, and their texts in English.
#include <vkbase/datetime.h>

#include <algorithm>
#include <limits>

#include <QDateTime>
#include <QLocale>

namespace {

constexpr unsigned long long MicrosecondsPerMillisecond = 1000;
constexpr unsigned long long MicrosecondsPerDay = 86'400'000'000;

unsigned long long ToMicroseconds(const QDate& date, const QTime& time)
{
    if (!date.isValid() || !time.isValid()) {
        return 0;
    }
    const qint64 days = QDate(1970, 1, 1).daysTo(date);
    if (days < 0) {
        return 0;
    }
    constexpr unsigned long long LastDay = std::numeric_limits<unsigned long long>::max() / MicrosecondsPerDay;
    const auto wholeDays = static_cast<unsigned long long>(days);
    if (wholeDays >= LastDay) {
        return std::numeric_limits<unsigned long long>::max();
    }
    return wholeDays * MicrosecondsPerDay +
           static_cast<unsigned long long>(time.msecsSinceStartOfDay()) * MicrosecondsPerMillisecond;
}

}  // namespace

namespace Quon {

DateTime::DateTime(const unsigned long long& microseconds) : m_microseconds(microseconds)
{
}

DateTime::DateTime(const QDate& date) : DateTime(date, QTime(0, 0))
{
}

DateTime::DateTime(const QDate& date, const QTime& time) : m_microseconds(ToMicroseconds(date, time))
{
}

unsigned long long DateTime::getTimeStamp() const
{
    return m_microseconds;
}

void DateTime::setTime_ts(unsigned long long microseconds)
{
    m_microseconds = microseconds;
}

int DateTime::daysTo(const DateTime& other) const
{
    // The largest count of days, about 213 million, fits.
    return static_cast<int>(other.m_microseconds / MicrosecondsPerDay) -
           static_cast<int>(m_microseconds / MicrosecondsPerDay);
}

QTime DateTime::time() const
{
    return QTime::fromMSecsSinceStartOfDay(
        static_cast<int>(m_microseconds % MicrosecondsPerDay / MicrosecondsPerMillisecond));
}

QString DateTime::toString(const QString& format) const
{
    return toString(format, 0);
}

QString DateTime::toString(const QString& format, long long utcOffsetSeconds) const
{
    // Any time of 64 bits and any such offset together stay well inside what QDateTime can hold.
    constexpr long long LargestOffset = 1'000'000'000'000;
    const long long offset = std::clamp(utcOffsetSeconds, -LargestOffset, LargestOffset);
    const auto milliseconds = static_cast<qint64>(m_microseconds / MicrosecondsPerMillisecond) + offset * 1000;
    // Texts become file names: they must not depend on the language of the machine.
    return QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC), format);
}

}  // namespace Quon
