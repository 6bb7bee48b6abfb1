// Times as ISO 8601 texts.
#pragma once

#include <optional>
#include <string>

namespace RecStation {

/// Microseconds since 1970 UTC of a date and time such as "2026-11-21T08:30:00.25Z" or "2026-11-21T08:30"; without a
/// zone it is UTC, digits after the microseconds are cut. Nothing for any other text and for times that are not after
/// the start of 1970.
std::optional<unsigned long long> parseIsoTime(const std::string& text);

/// "2026-11-21 08:30:00 UTC", with milliseconds where there are some.
[[nodiscard]] std::string utcText(unsigned long long microseconds);
/// "850 ms", "22.5 s", "52 min 10 s", "3 h 5 min", "12 days".
[[nodiscard]] std::string spanText(unsigned long long microseconds);

}  // namespace RecStation
