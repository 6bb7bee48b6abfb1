// Comparing what came with the clock, ten seconds with those before.
#include "iqspectra/samplewatch.h"

#include <algorithm>
#include <utility>

namespace RecStation {

namespace {

constexpr std::chrono::seconds WatchWindow{10};
constexpr double Tolerated = 0.02;  // of all

}  // namespace

void SampleWatch::begin(Time now)
{
    *this = SampleWatch(m_rateHz);
    m_connected = now;
    m_window = now;
}

std::optional<std::uint64_t> SampleWatch::missing(Time now)
{
    m_leastBehind =
        std::min(m_leastBehind, std::chrono::duration<double>(now - m_connected).count() * m_rateHz - m_came);
    if (now - m_window < WatchWindow) {
        return std::nullopt;
    }
    const double tolerated = Tolerated * std::chrono::duration<double>(now - m_window).count() * m_rateHz;
    const double missing = m_leastBehind - m_leastBefore.value_or(m_leastBehind);
    m_leastBefore = std::exchange(m_leastBehind, std::numeric_limits<double>::infinity());
    m_window = now;
    return missing > tolerated ? std::optional(static_cast<std::uint64_t>(missing)) : std::nullopt;
}

std::optional<double> SampleWatch::higherRate(Time now)
{
    if (m_rateTold || now - m_connected < WatchWindow) {
        return std::nullopt;
    }
    const double rate = m_came / std::chrono::duration<double>(now - m_connected).count();
    m_rateTold = rate > (1 + Tolerated) * m_rateHz;
    return m_rateTold ? std::optional(rate) : std::nullopt;
}

}  // namespace RecStation
