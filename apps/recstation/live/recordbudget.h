// How many records live sources may make, so that the times of a recording stay those of the clock.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>

namespace RecStation {

/// A recording holds one record for every millisecond: more of them move it, and everybody's records behind, into the
/// future. Who makes the most of them waits then.
class RecordBudget {
public:
    using Clock = std::chrono::steady_clock;

    /// @return whether the source is to wait until the budget is there again
    [[nodiscard]] bool spend(std::size_t source, std::uint64_t records, Clock::time_point now)
    {
        refill(now);
        m_left -= static_cast<double>(records);
        double& used = m_used[source] += static_cast<double>(records);
        return m_left < 0 &&
               std::all_of(m_used.begin(), m_used.end(), [used](const auto& other) { return other.second <= used; });
    }
    /// How long that is. @return 0: it is there
    [[nodiscard]] std::chrono::milliseconds wait(Clock::time_point now)
    {
        refill(now);
        return std::chrono::ceil<std::chrono::milliseconds>(Seconds(std::max(0.0, -m_left / PerSecond)));
    }

private:
    using Seconds = std::chrono::duration<double>;
    static constexpr double PerSecond = 1000;
    static constexpr double AtOnce = 100;

    void refill(Clock::time_point now)
    {
        m_left = std::min(AtOnce, m_left + Seconds(now - m_filled).count() * PerSecond);
        m_filled = now;
        if (now - m_halved > std::chrono::seconds(1)) {
            m_halved = now;
            for (auto& [source, used] : m_used) {
                used /= 2;
            }
        }
    }

    double m_left = AtOnce;
    Clock::time_point m_filled = Clock::now();
    Clock::time_point m_halved = Clock::now();
    std::map<std::size_t, double> m_used;  // lately, by each source
};

}  // namespace RecStation
