// The time that a picture shows.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace RecTool {

/// Both ends are included, in milliseconds of the recording.
struct TimeSpan {
    std::uint64_t fromMs = 0;
    std::uint64_t toMs = 0;

    [[nodiscard]] double width() const { return static_cast<double>(toMs - fromMs); }
    /// Which of so many equal parts a time lies in; the last end belongs to the last part.
    [[nodiscard]] std::size_t partOf(std::uint64_t timeMs, std::size_t parts) const
    {
        const double part = static_cast<double>(timeMs - fromMs) / width() * static_cast<double>(parts);
        return std::min(static_cast<std::size_t>(part), parts - 1);
    }
};

}  // namespace RecTool
