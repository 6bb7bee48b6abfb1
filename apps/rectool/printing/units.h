// Numbers with a unit, as people write them, and rounded to what they are worth.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace RecTool {

/// "433.5M", "433.5 MHz", "48k", "48000": a frequency in Hz, above 0; nothing when the text is none.
[[nodiscard]] std::optional<double> parseHertz(const std::string& text);
/// "1500", "1500ms", "90s", "1.5min", "2h": milliseconds, rounded; a plain number is whole milliseconds. Nothing when
/// the text is none, also for a negative number.
[[nodiscard]] std::optional<std::uint64_t> parseMilliseconds(const std::string& text);

/// What the numbers of a keyword are counted in: "dB", "Hz"; empty where that is not fixed or there is no unit.
[[nodiscard]] std::string unitOfKeyword(const std::string& keyword);

/// To the nearest step, of which so many make one.
[[nodiscard]] inline double rounded(double value, double perUnit)
{
    return std::round(value * perUnit) / perUnit;
}

/// As levels are recorded.
[[nodiscard]] inline double hundredths(double value)
{
    constexpr double PerUnit = 100;
    return rounded(value, PerUnit);
}
[[nodiscard]] inline double thousandths(double value)
{
    constexpr double PerUnit = 1000;
    return rounded(value, PerUnit);
}

/// Of a latitude or longitude: to a centimetre on the ground.
[[nodiscard]] inline double placeDegrees(double degrees)
{
    constexpr double PerDegree = 1e7;
    return rounded(degrees, PerDegree);
}

}  // namespace RecTool
