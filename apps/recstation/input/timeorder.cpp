// Keeping times from going back, and the sentence about the rows that did.
#include "input/timeorder.h"

#include <algorithm>
#include <stdexcept>

#include <QString>

#include "input/timetext.h"

namespace RecStation {

namespace {

std::string secondsText(unsigned long long microseconds)
{
    constexpr double PerSecond = 1e6;
    return QString::number(static_cast<double>(microseconds) / PerSecond, 'f', 3).toStdString() + " s";
}

}  // namespace

unsigned long long TimeOrder::take(unsigned long long time)
{
    const unsigned long long recorded = notBefore(m_latest, time, m_splitGapUs);
    if (time < recorded) {
        m_first = m_rows == 0 ? time : std::min(m_first, time);
        m_last = std::max(m_last, time);
        ++m_rows;
        if (m_latest - time > m_most) {
            m_most = m_latest - time;
            m_behind = m_latest;
        }
    }
    m_latest = recorded;
    return m_latest;
}

unsigned long long TimeOrder::take(unsigned long long time, std::size_t line, const BadLines& bad)
{
    if (bad.isStrict() && time < notBefore(m_latest, time, m_splitGapUs)) {
        throw StrictError(bad.at(line) + "its time is " + secondsText(m_latest - time) +
                          " earlier than one before it (--strict allows no time that goes back)");
    }
    return take(time);
}

std::string TimeOrder::sentence() const
{
    return (m_rows == 1 ? std::string("the time of 1 row goes")
                        : "the times of " + std::to_string(m_rows) + " rows go") +
           " back, by up to " + secondsText(m_most) + ", from " + utcText(m_behind) + " to times from " +
           utcText(m_first) + " to " + utcText(m_last) + "; what is earlier is recorded at the latest time before it" +
           (m_most > DefaultGapUs ? " (--split-on-gap begins a new recording instead)" : "");
}

void TimeOrder::finish(BadLines& bad)
{
    bad.finish();
    if (m_rows > 0 && !std::exchange(m_finished, true)) {
        bad.say(sentence());
    }
}

}  // namespace RecStation
