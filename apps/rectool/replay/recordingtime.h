// When what a record tells was measured, and the times that users give. Every form that a time may be written in is
// understood here and nowhere else.
#pragma once

#include <cstdint>
#include <limits>
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

/// What a time is called in help texts and messages.
constexpr const char* TimeForms =
    "milliseconds of the recording, such as 1500, or another unit, 90s or 1.5min; a clock time that says UTC or local, "
    "such as \"2023-11-14 22:13:21.5 UTC\" or \"22:13:21 local\"; a bookmark by its text and how long before or behind "
    "it, such as bookmark:alarm, bookmark:alarm-500 or bookmark:alarm+2s";

/// The last moment that belongs to the recording, in milliseconds of it.
[[nodiscard]] std::uint64_t lastMoment(const Recording2::Inspection::Summary& summary);

/// A time as milliseconds of the recording; nothing when it is not one, also when it lies before the recording's start
/// or when several bookmarks have the text. A clock time without a date is the first one from the start on.
[[nodiscard]] std::optional<std::uint64_t> parseTime(const std::string& text,
                                                     const Recording2::Inspection::Summary& summary);

/// Takes over what a user gave for an option or argument. @return false, told, when the text is not a time
[[nodiscard]] bool requireTime(const char* name, const std::string& text,
                               const Recording2::Inspection::Summary& summary, std::uint64_t& time);
/// The same, but an empty text leaves the time as it is.
[[nodiscard]] bool takeTime(const char* name, const std::string& text, const Recording2::Inspection::Summary& summary,
                            std::uint64_t& time);

/// Milliseconds of a recording, the first and the last included; all of it unless something else is said.
struct Span {
    std::uint64_t from = 0;
    std::uint64_t to = std::numeric_limits<std::uint64_t>::max();
};

/// The same for --from and --to, which must stand in this order.
/// @param file whose times they are, for the message
[[nodiscard]] bool takeSpan(const std::string& file, const std::string& fromText, const std::string& toText,
                            const Recording2::Inspection::Summary& summary, Span& span);

/// What --since and --until take.
constexpr const char* MomentForms =
    "a date, with a clock time or without, that says UTC or local, such as \"2023-11-14 22:13 UTC\" or \"2023-11-14 "
    "local\"; or how long ago, such as 2h or 7d";

/// What a date without a clock time stands for.
enum class DayEnd : std::uint8_t { First, Last };

/// A moment in milliseconds since 1970 UTC; nothing when the text is none.
[[nodiscard]] std::optional<std::uint64_t> parseMoment(const std::string& text, std::uint64_t nowMs, DayEnd end);

}  // namespace RecTool
