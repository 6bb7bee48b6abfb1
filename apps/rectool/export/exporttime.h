// Moments of recordings as clock times of other programs' files.
#pragma once

#include <cstdint>
#include <string>

namespace RecTool {

/// Turns moments of the axis into microseconds since 1970 UTC. Fast where moments share a second.
class ExportTime {
public:
    /// @param startMs of the first recording, since 1970 UTC; 0, or after the year 9999: not known
    explicit ExportTime(std::uint64_t startMs);

    /// Whether clock times can be told; otherwise microseconds are since the recording's start.
    [[nodiscard]] bool isKnown() const { return m_startUs != 0; }
    [[nodiscard]] std::int64_t us(double momentMs) const;
    /// "2023-11-14T22:13:20.010Z", microseconds only where there are any; milliseconds of the recording where clock
    /// times are not known.
    [[nodiscard]] std::string iso(double momentMs);
    /// "2023-11-14, 22:13:20.010000"
    [[nodiscard]] std::string dateAndTime(double momentMs);
    /// The same as iso for microseconds since 1970.
    [[nodiscard]] std::string isoAt(std::int64_t us);

private:
    void takeSecond(std::int64_t us);

    std::int64_t m_startUs = 0;
    std::int64_t m_second = -1;
    std::string m_text;  // of that second: "2023-11-14T22:13:20"
};

}  // namespace RecTool
