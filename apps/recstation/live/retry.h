// How often what happens again and again is done and told: a peer that is tried, and what there is to say of it.
#pragma once

#include <algorithm>
#include <chrono>

namespace RecStation {

/// Pauses that grow from 250 ms to 30 s.
class Retry {
public:
    static constexpr std::chrono::milliseconds First{250};
    static constexpr std::chrono::milliseconds Longest{30'000};
    static constexpr std::chrono::milliseconds Lasting{1'000};

    /// The pause before the next try.
    [[nodiscard]] std::chrono::milliseconds next()
    {
        const auto pause = m_next;
        m_next = std::min(2 * m_next, Longest);
        return pause;
    }
    /// After success for so long: who always hangs up before Lasting has passed is tried later and later.
    void reset(std::chrono::steady_clock::duration lasted) { m_next = lasted < Lasting ? m_next : First; }

private:
    std::chrono::milliseconds m_next = First;
};

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
