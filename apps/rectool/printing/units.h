// Numbers with a unit, as people write them.
#pragma once

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

}  // namespace RecTool
