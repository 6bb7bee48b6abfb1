// How long to wait before a peer is tried again.
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

}  // namespace RecStation
