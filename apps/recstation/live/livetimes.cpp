// Taking times in, and keeping enough of the lags to tell their middle.
#include "live/livetimes.h"

#include <algorithm>
#include <cstdlib>

namespace RecStation {

unsigned long long LiveTimes::take(const Received& received)
{
    if (received.peerUs) {
        takeLag(static_cast<long long>(received.arrivalUs) - static_cast<long long>(*received.peerUs));
    }
    const auto lag = static_cast<unsigned long long>(m_sourceTime ? m_lastLagUs.value_or(0) : 0);
    const unsigned long long time = received.arrivalUs - lag;  // modulo 2^64, as the lag may be negative
    // A clock that was set back is followed; who records decides what becomes of that.
    m_latest = m_latest > time + SetBackUs ? time : std::max(m_latest, time);
    return m_latest;
}

// One time alone that leaps, as a receiver without a date yet may tell, is not believed; two that agree are.
void LiveTimes::takeLag(long long lagUs)
{
    constexpr long long LeapUs = 3'600'000'000;
    const auto isNear = [lagUs](const std::optional<long long>& other) {
        return other && std::abs(lagUs - *other) <= LeapUs;
    };
    if (m_lastLagUs && !isNear(m_lastLagUs) && !isNear(m_doubtedLagUs)) {
        m_doubtedLagUs = lagUs;
        return;
    }
    m_doubtedLagUs.reset();
    m_lastLagUs = lagUs;
    note(lagUs);
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
