// The first map with a time of its own, and the changes before it.
#include "movedtimes.h"

#include "input/isotime.h"
#include "input/timeorder.h"

namespace RecStation {

void MovedTimes::recordingBegins(unsigned long long atUs)
{
    m_start = atUs;
    m_before = 0;
    m_moved = false;
}

std::string MovedTimes::changed(const FeedLine& line)
{
    constexpr unsigned long long LeastUs = 999;  // records have milliseconds
    const auto* change = std::get_if<FeedChange>(&line.action);
    if (change == nullptr || m_moved) {
        return {};
    }
    const unsigned long long start = m_start.value_or(line.at.us);
    m_start = start;
    const auto own = change->cells ? change->ownTime : std::nullopt;
    if (!own) {
        ++m_before;
        return {};
    }
    m_moved = true;
    if (m_before == 0 || !isBeyond(start, own->us, LeastUs)) {
        return {};
    }
    const std::string changes = m_before == 1 ? "1 change" : std::to_string(m_before) + " changes";
    return changes + " in front of the first map with a \"time\" of its own (" + line.path.toStdString() +
           ") recorded " + spanText(own->us > start ? own->us - start : start - own->us) +
           (own->us > start ? " later" : " earlier") +
           " than made, because a recording starts at that map's time; --keep-at avoids it";
}

}  // namespace RecStation
