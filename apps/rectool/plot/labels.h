// What stands at the axes of pictures: units of frequencies, ticks of time at whole seconds, minutes, hours or days,
// and labels that must not cover each other.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "replay/frequencies.h"

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

struct FrequencyUnit {
    double hz = 1;
    const char* name = "Hz";
};

/// The unit that a frequency axis is best shown in.
[[nodiscard]] FrequencyUnit unitFor(double highestHz, double widthHz);
/// The unit in which receivers show a frequency, however little it changes: MHz from 1 MHz on, kHz from 1 kHz on.
[[nodiscard]] FrequencyUnit usualUnit(double highestHz);
/// Frequencies in Hz, all in the unit of the lowest and with as many decimals as one of them needs: "431.70 MHz".
[[nodiscard]] std::vector<std::string> frequenciesAlike(const std::vector<double>& hz);

/// Finds places for labels along a line, each as near to what it names as the others allow.
/// @param wanted where the middles of the labels should be, ascending
/// @param size of one label along the line
/// @param low,high the ends of the line, which no label passes
/// @return the middles; none for labels for which there is no room near by: those are taken out where it is most
/// crowded
[[nodiscard]] std::vector<std::optional<double>> placeLabels(const std::vector<double>& wanted, double size, double low,
                                                             double high);

}  // namespace RecTool
