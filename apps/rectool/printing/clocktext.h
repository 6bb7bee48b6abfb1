// Times of records as clocks show them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace RecTool {

/// How a verb shows the times of records.
enum class TimeForm : unsigned char {
    Offset,  ///< milliseconds of the recording
    Utc,
    Local,  ///< of this computer
};

/// "offset", "utc" or "local".
[[nodiscard]] TimeForm timeFormOf(const std::string& name);

/// Writes the times of one recording. Fast where one time follows another within the same second.
class ClockText {
public:
    /// @param startMs of the recording, since 1970 UTC
    ClockText(TimeForm form, std::uint64_t startMs) : m_form(form), m_startMs(startMs) {}

    /// "1500", "2023-11-14T22:13:21.500Z" or "2023-11-14T23:13:21.500+01:00"; "?" for the time 0, which is a lost one.
    /// Valid until the next call.
    [[nodiscard]] const std::string& of(std::uint64_t timeMs);

private:
    TimeForm m_form;
    std::uint64_t m_startMs;
    std::optional<std::uint64_t> m_second;  // that the text is for; nothing while it is no clock time
    std::string m_text;
};

/// A moment with parts of a millisecond, rounded; one before the start of the recording in milliseconds.
[[nodiscard]] std::string momentText(ClockText& clock, double momentMs);

}  // namespace RecTool
