// Ticks of a time axis: at whole seconds, minutes, hours or days, labelled as clocks show them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "replay/timespan.h"

namespace RecTool {

struct TimeTick {
    double timeMs = 0;  ///< of the recording
    std::string label;  ///< a date, if there is one, stands on a line of its own after the clock
};

/// Clock times in UTC. The first tick, and each that is the first of a day, has the date if the span touches two days.
/// @param startMs of the recording, since 1970
[[nodiscard]] std::vector<TimeTick> clockTicks(const TimeSpan& span, std::uint64_t startMs, std::size_t most);
/// Time since the start of the recording: "1.5 s" where the span is within a minute, otherwise "h:mm:ss".
[[nodiscard]] std::vector<TimeTick> elapsedTicks(const TimeSpan& span, std::size_t most);

/// The day of a time, "2026-11-21", when the whole span lies in it; otherwise empty.
[[nodiscard]] std::string onlyDay(const TimeSpan& span, std::uint64_t startMs);
/// Whether a start time can be shown on a clock.
[[nodiscard]] bool isClockTime(std::uint64_t startMs, const TimeSpan& span);

}  // namespace RecTool
