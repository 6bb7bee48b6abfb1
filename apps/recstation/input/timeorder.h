// The times that an input tells, and how far some of them go back.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "input/badlines.h"

namespace RecStation {

/// What counts as a gap unless somebody says otherwise, microseconds.
constexpr unsigned long long DefaultGapUs = 600'000'000;

/// Whether from one time to the other is more than the gap, in either direction.
[[nodiscard]] inline bool isBeyond(unsigned long long from, unsigned long long to, unsigned long long gap)
{
    return (to > from ? to - from : from - to) > gap;
}

/// When something is recorded: not before the latest time so far, unless it lies after a gap that parts recordings.
[[nodiscard]] inline unsigned long long notBefore(unsigned long long latest, unsigned long long time,
                                                  std::optional<unsigned long long> splitGapUs)
{
    return splitGapUs && isBeyond(latest, time, *splitGapUs) ? time : std::max(latest, time);
}

/// Recorders are handed no time that is earlier than one before it: what goes back is recorded at the latest time so
/// far, and counted here. Times are microseconds since 1970 UTC.
class TimeOrder {
public:
    /// @param splitGapUs a time that goes back by more than this begins a new recording and is no disorder
    explicit TimeOrder(std::optional<unsigned long long> splitGapUs = std::nullopt) : m_splitGapUs(splitGapUs) {}

    /// Notes the time of a row.
    /// @return the latest so far
    unsigned long long take(unsigned long long time);
    /// The same of a line. @throws StrictError when it goes back and the input is read strictly
    unsigned long long take(unsigned long long time, std::size_t line, const BadLines& bad);
    [[nodiscard]] unsigned long long latest() const { return m_latest; }
    [[nodiscard]] std::uint64_t rowsBack() const { return m_rows; }
    /// How many rows go back, by how much, from where to where.
    [[nodiscard]] std::string sentence() const;
    /// Tells that at the end of the input, if any does, behind what is left of bad lines. It has an effect once.
    void finish(BadLines& bad);

private:
    std::optional<unsigned long long> m_splitGapUs;
    unsigned long long m_latest = 0;
    unsigned long long m_most = 0;
    unsigned long long m_behind = 0;  // the time before the row that goes back most
    unsigned long long m_first = 0;   // of the rows that go back
    unsigned long long m_last = 0;
    std::uint64_t m_rows = 0;
    bool m_finished = false;
};

}  // namespace RecStation
