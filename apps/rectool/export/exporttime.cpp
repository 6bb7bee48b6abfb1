// Dates and clock times of microseconds since 1970.
#include "exporttime.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include <terminaltext/quantity.h>

#include "printing/text.h"

namespace RecTool {

namespace {

constexpr std::int64_t ExportedUsPerMs = 1000;
constexpr std::int64_t ExportedUsPerSecond = 1'000'000;
constexpr std::int64_t ExportedSecondsPerDay = 86'400;

std::string withZeros(std::int64_t number, std::size_t digits)
{
    const std::string text = std::to_string(number);
    return text.size() < digits ? std::string(digits - text.size(), '0') + text : text;
}

std::string microsecondsOf(std::int64_t us)
{
    constexpr std::size_t Digits = 6;
    return withZeros(std::max<std::int64_t>(us, 0) % ExportedUsPerSecond, Digits);
}

}  // namespace

ExportTime::ExportTime(std::uint64_t startMs)
    : m_startUs(startMs <= EndOfYear9999Ms ? static_cast<std::int64_t>(startMs) * ExportedUsPerMs : 0)
{
}

std::int64_t ExportTime::us(double momentMs) const
{
    constexpr double Farthest = 9e18;  // that a number of microseconds tells
    const double us = std::round(momentMs * static_cast<double>(ExportedUsPerMs));
    const double all = us + static_cast<double>(m_startUs);
    return std::abs(all) < Farthest ? m_startUs + static_cast<std::int64_t>(us) : 0;
}

void ExportTime::takeSecond(std::int64_t us)
{
    constexpr std::int64_t Last = static_cast<std::int64_t>(EndOfYear9999Ms) * ExportedUsPerMs;
    const std::int64_t second = std::clamp<std::int64_t>(us, 0, Last) / ExportedUsPerSecond;
    if (second == m_second) {
        return;
    }
    m_second = second;
    const std::chrono::sys_days day{std::chrono::days(static_cast<int>(second / ExportedSecondsPerDay))};
    const std::chrono::year_month_day date(day);
    const std::int64_t ofDay = second % ExportedSecondsPerDay;
    m_date = withZeros(static_cast<int>(date.year()), 4) + '-' + withZeros(static_cast<unsigned>(date.month()), 2) +
             '-' + withZeros(static_cast<unsigned>(date.day()), 2);
    m_clock = withZeros(ofDay / 3600, 2) + ':' + withZeros(ofDay / 60 % 60, 2) + ':' + withZeros(ofDay % 60, 2);
}

std::string ExportTime::iso(double momentMs)
{
    const std::int64_t time = us(momentMs);
    return isKnown() && time > 0 ? isoAt(time) : TerminalText::shortest(momentMs);
}

std::string ExportTime::isoAt(std::int64_t us)
{
    takeSecond(us);
    const std::string fraction = microsecondsOf(us);
    return m_date + 'T' + m_clock + '.' + (us % ExportedUsPerMs == 0 ? fraction.substr(0, 3) : fraction) + 'Z';
}

std::string ExportTime::dateAndTime(double momentMs)
{
    const std::int64_t time = us(momentMs);
    takeSecond(time);
    return m_date + ", " + m_clock + '.' + microsecondsOf(time);
}

}  // namespace RecTool
