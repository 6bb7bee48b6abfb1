// Placing times of day on days: midnights, dates, and the rollover of GPS weeks.
#include "sources/nmea/nmeaclock.h"

namespace RecStation {

namespace {

constexpr long long MicrosecondsPerDay = 86'400'000'000;
constexpr long long RolloverDays = 1024LL * 7;

}  // namespace

long long NmeaClock::corrected(long long day)
{
    if (day + RolloverDays > m_today) {
        return day;
    }
    if (!m_rolledBack) {
        m_rolledBack = day;
    }
    return m_fixRollover ? day + RolloverDays : day;
}

long long NmeaClock::at(long long timeOfDay, std::optional<long long> day)
{
    long long time = 0;
    m_dated = m_dated || day;
    if (day) {
        time = *day * MicrosecondsPerDay + timeOfDay;
    } else if (!m_last) {
        time = m_firstDay.value_or(0) * MicrosecondsPerDay + timeOfDay;
    } else {
        time = *m_last / MicrosecondsPerDay * MicrosecondsPerDay + timeOfDay;
        if (time < *m_last - MicrosecondsPerDay / 2) {
            time += MicrosecondsPerDay;
            m_midnights += m_dated ? 0U : 1U;
        } else if (time > *m_last + MicrosecondsPerDay / 2) {
            time -= MicrosecondsPerDay;
        }
    }
    m_last = time;
    return time;
}

}  // namespace RecStation
