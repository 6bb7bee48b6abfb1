// How often what happens again and again is told.
#pragma once

#include <algorithm>
#include <chrono>

namespace RecStation {

/// Twenty times, and once more for every minute that passes: a peer that comes and goes fills no log, and in weeks
/// nothing stays unsaid that happens now and then.
class TellRate {
public:
    using Time = std::chrono::steady_clock::time_point;
    static constexpr int Most = 20;
    static constexpr std::chrono::minutes Each{1};

    /// Whether it may be told; then that counts.
    [[nodiscard]] bool take(Time now)
    {
        const auto earned = m_left == Most ? 0 : (now - m_since) / Each;
        m_since = m_left == Most ? now : m_since + earned * Each;
        m_left = static_cast<int>(std::min<decltype(earned)>(Most, m_left + earned));
        return m_left > 0 && m_left-- > 0;
    }
    /// Nothing may be told until a minute has passed.
    [[nodiscard]] bool isSpent() const { return m_left == 0; }

private:
    int m_left = Most;
    Time m_since;
};

}  // namespace RecStation
