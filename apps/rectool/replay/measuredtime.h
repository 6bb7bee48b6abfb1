// When the value of a record was measured, which a map tells by itself.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <recording2/inspection/inspection.h>

namespace RecTool {

/// The time stamp that a map carries in a record's text: microseconds since 1970 UTC. Nothing where there is none, and
/// for values that carry none: they are as old as their record.
[[nodiscard]] std::optional<std::uint64_t> measuredUs(const std::string& text);

/// The moment that a record tells of, in milliseconds since the start of its recording: when its value was measured,
/// or else the record's own time. The two differ where records came faster than one a millisecond, after the
/// records of a recording's initial state, and where a log was not in order of time; so a moment may lie before
/// that of the record before, and before the start. A complete map older than the recording is the state it began
/// with, and is as old as its record.
/// @param startMs of the recording, since 1970 UTC; 0 where it is not known
[[nodiscard]] double momentMs(const Recording2::Inspection::Record& record, std::uint64_t startMs);

/// The beginning of a span of moments. Without one (0) nothing is left out, however early it was measured.
[[nodiscard]] double firstMoment(std::uint64_t fromMs);

/// A time as utc in text.h writes it, with microseconds where there are any: "2023-11-14 22:13:20.010240 UTC".
[[nodiscard]] std::string utcExactly(std::uint64_t usSince1970);

}  // namespace RecTool
