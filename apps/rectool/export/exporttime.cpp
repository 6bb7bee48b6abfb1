// Dates and clock times of microseconds since 1970.
#include "exporttime.h"

#include <algorithm>
#include <cmath>

#include <terminaltext/quantity.h>
#include <QDateTime>

#include "printing/text.h"

namespace RecTool {

namespace {

constexpr std::int64_t ExportedUsPerMs = 1000;
constexpr std::int64_t ExportedUsPerSecond = 1'000'000;

/// Six digits.
std::string microsecondsOf(std::int64_t us)
{
    return std::to_string(ExportedUsPerSecond + std::max<std::int64_t>(us, 0) % ExportedUsPerSecond).substr(1);
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
    m_text = QDateTime::fromSecsSinceEpoch(second, Qt::UTC).toString(Qt::ISODate).toStdString();
    m_text.pop_back();  // the zone's Z
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
    return m_text + '.' + (us % ExportedUsPerMs == 0 ? fraction.substr(0, 3) : fraction) + 'Z';
}

std::string ExportTime::dateAndTime(double momentMs)
{
    const std::int64_t time = us(momentMs);
    takeSecond(time);
    constexpr std::size_t DateLength = 10;
    return m_text.substr(0, DateLength) + ", " + m_text.substr(DateLength + 1) + '.' + microsecondsOf(time);
}

}  // namespace RecTool
