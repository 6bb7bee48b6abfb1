// Whether a receiver's samples all come.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace RecStation {

/// A server on the network does not say what it had to drop: fewer samples come than the rate promises then.
class SampleWatch {
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit SampleWatch(double rateHz) : m_rateHz(rateHz) {}

    void begin(Time now);  ///< a new connection
    void add(std::uint64_t samples) { m_came += static_cast<double>(samples); }
    /// Of the last ten seconds, once they are over: how many samples are missing; nothing where all came. An
    /// oscillator that is a little off and a network that is late now and then are no loss.
    [[nodiscard]] std::optional<std::uint64_t> missing(Time now);

private:
    double m_rateHz;
    double m_came = 0;
    Time m_begin;
};

}  // namespace RecStation
