// Comparing what came with the rate, window by window.
#include "iqspectra/samplewatch.h"

namespace RecStation {

void SampleWatch::begin(Time now)
{
    m_begin = now;
    m_came = 0;
}

std::optional<std::uint64_t> SampleWatch::missing(Time now)
{
    constexpr std::chrono::seconds Window{10};
    constexpr double Tolerated = 0.02;  // of all
    if (now - m_begin < Window) {
        return std::nullopt;
    }
    const double expected = std::chrono::duration<double>(now - m_begin).count() * m_rateHz;
    const double missing = expected - m_came;
    begin(now);
    return missing > Tolerated * expected ? std::optional(static_cast<std::uint64_t>(missing)) : std::nullopt;
}

}  // namespace RecStation
