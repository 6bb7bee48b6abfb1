#include "input/timeorder.h"

#include <algorithm>
#include <stdexcept>

#include <QString>

namespace recstation {

namespace {

std::string secondsText(unsigned long long microseconds)
{
    constexpr double perSecond = 1e6;
    return QString::number(static_cast<double>(microseconds) / perSecond, 'f', 3).toStdString() + " s";
}

}  // namespace

unsigned long long TimeOrder::take(unsigned long long time, std::size_t line)
{
    if (time < m_latest) {
        if (m_strict) {
            throw std::runtime_error(m_source + ": line " + std::to_string(line) + ": its time is " +
                                     secondsText(m_latest - time) +
                                     " earlier than one before it (--strict allows no time that goes back)");
        }
        ++m_rows;
        m_most = std::max(m_most, m_latest - time);
    }
    m_latest = std::max(m_latest, time);
    return m_latest;
}

std::string TimeOrder::sentence() const
{
    return (m_rows == 1 ? std::string("the time of 1 row goes")
                        : "the times of " + std::to_string(m_rows) + " rows go") +
           " back, by up to " + secondsText(m_most) + "; what is earlier is recorded at the latest time before it";
}

void TimeOrder::finish(const BadLines& to)
{
    if (m_rows > 0 && !std::exchange(m_finished, true)) {
        to.say(sentence());
    }
}

}  // namespace recstation
