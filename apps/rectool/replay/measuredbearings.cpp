// Telling from each map record which channels were measured, also where nothing changed.
#include "measuredbearings.h"

#include <algorithm>
#include <cmath>

#include <values/recordingtext.h>

#include "printing/valuetext.h"

namespace RecTool {

void MeasuredBearings::apply(const Recording2::Inspection::Record& record)
{
    m_changed.clear();
    m_replay.apply(record);
    if (!m_carried.read(record.data, m_replay.range())) {
        return;
    }
    const bool isState = values::CarriesChannelRange(record.data) && m_carried.timeStampUs() == m_timeStampUs;
    for (const std::size_t channel : measuredChannels(isState)) {
        m_listener({channel, m_replay.channels()[channel].bearing, record.timeMs, m_carried.timeStampUs()});
    }
    m_timeStampUs = m_carried.timeStampUs();
}

std::vector<std::size_t> MeasuredBearings::measuredChannels(bool isState) const
{
    std::vector<std::size_t> channels = m_changed;
    if (isState || m_carried.channels().empty()) {
        return channels;
    }
    const bool namesCells = !m_carried.all() || m_carried.channels().size() == 1;
    if (namesCells) {
        channels.insert(channels.end(), m_carried.channels().begin(), m_carried.channels().end());
        std::sort(channels.begin(), channels.end());
        channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    }
    return channels.empty() ? likelyChannel() : channels;
}

/// Of a complete map in which nothing changed: what was measured again, as far as anybody can know.
std::vector<std::size_t> MeasuredBearings::likelyChannel() const
{
    constexpr double SameHz = 0.001;  // frequencies are written that exactly
    std::vector<std::size_t> withBearing;
    for (const BearingChange& channel : m_replay.channels()) {
        if (isEmpty(channel.bearing)) {
            continue;
        }
        if (std::abs(range().frequencyHz(channel.channel) - m_frequencyHz) <= SameHz) {
            return {channel.channel};
        }
        withBearing.push_back(channel.channel);
    }
    return withBearing.size() == 1 ? withBearing : std::vector<std::size_t>();
}

}  // namespace RecTool
