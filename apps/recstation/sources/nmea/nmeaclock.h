// The time of a log whose sentences tell the time of day, and only some of them the date.
#pragma once

#include <cstdint>
#include <optional>

namespace RecStation {

/// Times are microseconds since 1970 UTC, days are days since 1970-01-01.
class NmeaClock {
public:
    /// @param today decides which dates may have been rolled back: those that 1,024 weeks later are not in the future
    /// @param fixRollover add the 1,024 weeks to them
    NmeaClock(long long today, bool fixRollover) : m_today(today), m_fixRollover(fixRollover) {}

    /// A date as it counts.
    [[nodiscard]] long long corrected(long long day);

    /// Before the first time of all: which day that is.
    void start(long long day) { m_firstDay = day; }
    [[nodiscard]] bool started() const { return m_firstDay.has_value(); }

    /// When a sentence was; without a date, the time of day that is nearest to the time before.
    /// @param day corrected
    long long at(long long timeOfDay, std::optional<long long> day);

    /// The first date that may have been rolled back, uncorrected.
    [[nodiscard]] std::optional<long long> rolledBack() const { return m_rolledBack; }
    [[nodiscard]] std::uint64_t midnights() const { return m_midnights; }  ///< passed while no date was told

private:
    long long m_today;
    bool m_fixRollover;
    std::optional<long long> m_firstDay;
    std::optional<long long> m_last;
    std::optional<long long> m_rolledBack;
    bool m_dated = false;
    std::uint64_t m_midnights = 0;
};

}  // namespace RecStation
