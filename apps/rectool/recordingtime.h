// The times that users give. Every form that a time may be written in is understood here and nowhere else.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace RecTool {

/// What a time is called in help texts and messages.
constexpr const char* TimeForms = "milliseconds of the recording, such as 1500";

/// A time as milliseconds of the recording; nothing when it is not one. Called once a recording is open, so that forms
/// that need its start can be added.
[[nodiscard]] std::optional<std::uint64_t> parseTime(const std::string& text);

}  // namespace RecTool
