// Moments that users give without a recording at hand.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace RecTool {

/// What --since and --until take.
constexpr const char* MomentForms =
    "a date, with a clock time or without, that says UTC or local, such as \"2023-11-14 22:13 UTC\" or \"2023-11-14 "
    "local\"; or how long ago, such as 2h or 7d";

/// What a date without a clock time stands for.
enum class DayEnd : std::uint8_t { First, Last };

/// A moment in milliseconds since 1970 UTC; nothing when the text is none.
[[nodiscard]] std::optional<std::uint64_t> parseMoment(const std::string& text, std::uint64_t nowMs, DayEnd end);

}  // namespace RecTool
