#include "measuredbearings.h"

#include <algorithm>

namespace RecTool {

void MeasuredBearings::apply(const Recording2::Inspection::Record& record)
{
    m_changed.clear();
    m_replay.apply(record);
    if (!m_carried.read(record.data, m_replay.range())) {
        return;
    }
    for (const std::size_t channel : measuredChannels()) {
        m_listener({channel, m_replay.channels()[channel].bearing, record.timeMs, m_carried.timeStampUs()});
    }
    m_timeStampUs = m_carried.timeStampUs();
}

std::vector<std::size_t> MeasuredBearings::measuredChannels() const
{
    std::vector<std::size_t> channels = m_changed;
    const bool isNews = m_carried.timeStampUs() != m_timeStampUs;
    const bool namesCells = !m_carried.all() || m_carried.channels().size() == 1;
    if (isNews && namesCells) {
        channels.insert(channels.end(), m_carried.channels().begin(), m_carried.channels().end());
        std::sort(channels.begin(), channels.end());
        channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    }
    return channels;
}

}  // namespace RecTool
