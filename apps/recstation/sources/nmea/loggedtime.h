// The time that a logger or a multiplexer put in front of a sentence.
#pragma once

#include <optional>
#include <string_view>

namespace RecStation {

/// ISO 8601, also with a blank between date and time and in brackets, seconds or milliseconds since 1970, or the field
/// c of a tag block ("\\s:AB,c:1795248000*5D\\"); microseconds since 1970 UTC. Nothing for anything else.
[[nodiscard]] std::optional<unsigned long long> readLoggedTime(std::string_view front);

}  // namespace RecStation
