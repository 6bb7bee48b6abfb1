// The time at which something live is recorded, and how late it came.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "clock.h"
#include "sources/source.h"

namespace RecStation {

/// What a peer sent. Times are microseconds since 1970 UTC.
struct Received {
    unsigned long long arrivalUs = 0;          ///< by the system's clock
    std::optional<unsigned long long> peerUs;  ///< by the peer's, if it tells one
};

/// Times of one source. Used by one thread at a time.
class LiveTimes {
public:
    /// @param sourceTime the peer's time is recorded where it tells one, else that of the arrival
    explicit LiveTimes(bool sourceTime) : m_sourceTime(sourceTime) {}

    /// The time to record it at: not earlier than the one before, unless a clock was set back by more than ten seconds.
    /// What has no time of the peer's among what has lies as much behind its arrival as what came before; so does what
    /// has one that leaps by more than an hour, until the next confirms it.
    [[nodiscard]] unsigned long long take(const Received& received);
    /// Arrival minus the peer's time, also where that is not what is recorded; nothing when the peer told none.
    [[nodiscard]] std::optional<Lag> lag() const;

private:
    static constexpr unsigned long long SetBackUs = 10'000'000;

    void takeLag(long long lagUs);
    void note(long long lagUs);

    bool m_sourceTime;
    unsigned long long m_latest = 0;
    std::optional<long long> m_lastLagUs;
    std::optional<long long> m_doubtedLagUs;
    long long m_mostUs = 0;
    std::vector<long long> m_some;  // evenly taken of all
    std::uint64_t m_every = 1;
    std::uint64_t m_count = 0;
};

}  // namespace RecStation
