// The units in which pictures show frequencies.
#pragma once

#include <string>
#include <vector>

namespace RecTool {

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

}  // namespace RecTool
