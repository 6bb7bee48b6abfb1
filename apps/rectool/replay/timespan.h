// The time that a picture shows.
#pragma once

#include <algorithm>
#include <cstddef>

namespace RecTool {

/// Both ends are included, in milliseconds of the recording; measured values have parts of them.
struct TimeSpan {
    double fromMs = 0;
    double toMs = 0;

    [[nodiscard]] double width() const { return toMs - fromMs; }
    /// Which of so many equal parts a time lies in; the last end belongs to the last part.
    [[nodiscard]] std::size_t partOf(double timeMs, std::size_t parts) const
    {
        const double part = (timeMs - fromMs) / width() * static_cast<double>(parts);
        return static_cast<std::size_t>(std::clamp(part, 0.0, static_cast<double>(parts - 1)));
    }
};

}  // namespace RecTool
