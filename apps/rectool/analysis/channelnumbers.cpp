// Numbering channels by their frequencies, with the latest ranges at hand.
#include "channelnumbers.h"

#include <algorithm>
#include <cmath>

namespace RecTool {

ChannelNumbers::ChannelNumbers(std::optional<FrequencySpan> span, std::size_t most)
    : ChannelNumbers(
          [span](double hz) { return span && !span->holds(hz) ? std::numeric_limits<double>::quiet_NaN() : hz; }, most)
{
}

std::uint32_t ChannelNumbers::numberOf(double cellHz)
{
    const double hz = m_channelOf(cellHz);
    if (std::isnan(hz)) {
        return Outside;
    }
    const auto [place, isNew] = m_byFrequency.try_emplace(hz, static_cast<std::uint32_t>(m_frequencies.size()));
    if (isNew) {
        m_frequencies.push_back(hz);
    }
    return place->second;
}

const std::vector<std::uint32_t>* ChannelNumbers::of(const values::ChannelRange& range)
{
    constexpr std::size_t Remembered = 64;  // a scanning receiver's
    const auto known = std::find_if(m_recent.begin(), m_recent.end(),
                                    [&](const Numbering& numbering) { return numbering.range == range; });
    if (known != m_recent.end()) {
        m_recent.splice(m_recent.begin(), m_recent, known);
        return &m_recent.front().numbers;
    }
    Numbering numbering{range, {}};
    for (std::size_t channel = 0; channel < range.size(); ++channel) {
        numbering.numbers.push_back(numberOf(range.frequencyHz(channel)));
        if (m_frequencies.size() > m_most) {
            return nullptr;
        }
    }
    m_recent.push_front(std::move(numbering));
    m_recent.resize(std::min(m_recent.size(), Remembered));
    return &m_recent.front().numbers;
}

}  // namespace RecTool
