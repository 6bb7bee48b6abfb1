// Whether a receiver's samples all come.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>

namespace RecStation {

/// A server on the network does not say what it had to drop: fewer samples come than the rate promises then.
class SampleWatch {
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit SampleWatch(double rateHz) : m_rateHz(rateHz) {}

    void begin(Time now);  ///< a new connection
    void add(std::uint64_t samples) { m_came += static_cast<double>(samples); }
    /// To be asked whenever some came. Every ten seconds: how many samples are missing since the ten seconds before,
    /// nothing where all came. What comes late is not missing: only by what the samples are behind the clock even when
    /// they are least behind. Nor is the little that an oscillator is off.
    [[nodiscard]] std::optional<std::uint64_t> missing(Time now);
    /// Told once in a connection: the rate at which samples come, where that is more than was asked for. What came late
    /// comes at once then, so all of the connection counts.
    [[nodiscard]] std::optional<double> higherRate(Time now);

private:
    double m_rateHz;
    Time m_connected;
    double m_came = 0;                                               // samples
    Time m_window;                                                   // begin of the ten seconds
    double m_leastBehind = std::numeric_limits<double>::infinity();  // in them, samples
    std::optional<double> m_leastBefore;                             // in those before
    bool m_rateTold = false;
};

}  // namespace RecStation
