// Taking times in, and keeping enough of the lags to tell their middle.
#include "live/livetimes.h"

#include <algorithm>

namespace RecStation {

unsigned long long LiveTimes::take(const Received& received)
{
    if (received.peerUs) {
        m_lastLagUs = static_cast<long long>(received.arrivalUs) - static_cast<long long>(*received.peerUs);
        note(*m_lastLagUs);
    }
    const auto lag = static_cast<unsigned long long>(m_sourceTime ? m_lastLagUs.value_or(0) : 0);
    m_latest = std::max(m_latest, received.arrivalUs - lag);  // modulo 2^64, as the lag may be negative
    return m_latest;
}

// Memory is bounded: when there are too many, every second one is kept, and of those to come as many fewer.
void LiveTimes::note(long long lagUs)
{
    constexpr std::size_t Most = 4096;
    m_mostUs = m_count == 0 ? lagUs : std::max(m_mostUs, lagUs);
    if (m_count++ % m_every != 0) {
        return;
    }
    m_some.push_back(lagUs);
    if (m_some.size() == Most) {
        for (std::size_t i = 0; i < Most / 2; ++i) {
            m_some[i] = m_some[2 * i];
        }
        m_some.resize(Most / 2);
        m_every *= 2;
    }
}

std::optional<Lag> LiveTimes::lag() const
{
    if (m_some.empty()) {
        return std::nullopt;
    }
    std::vector<long long> some = m_some;
    const auto middle = some.begin() + static_cast<std::ptrdiff_t>(some.size() / 2);
    std::nth_element(some.begin(), middle, some.end());
    return Lag{*middle, m_mostUs};
}

}  // namespace RecStation
