// Numbers, times and bytes as people read and write them, with units, and in colours on a terminal.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include <terminaltext/terminaltext.h>

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

/// By the codes of terminals: bold, cyan, green, red.
enum class Style : unsigned char { Heading = 1, Name = 36, Good = 32, Bad = 31 };

/// Whether styled() does anything from now on; at first it does not.
void useStyles(bool on);
/// The text between the terminal's codes for a style, or as it is.
[[nodiscard]] std::string styled(const std::string& text, Style style);

[[nodiscard]] std::string fromLatin1(const std::string& text);  ///< UTF-8
using TerminalText::oneLine;                                    ///< for all that files, names and values hold
/// Any bytes as quoted ASCII, cut after a number of them, which is then said.
[[nodiscard]] std::string escaped(const std::string& bytes, std::size_t most);
[[nodiscard]] std::string csvText(const std::string& utf8);  ///< a field of CSV, quoted where it must be
[[nodiscard]] bool isAscii(const std::string& bytes);

[[nodiscard]] std::string number(double value, int digits = 6);  ///< without an exponent where that is legible
[[nodiscard]] std::string fixed(double value, int digits);       ///< so many digits behind the point
[[nodiscard]] std::string grouped(std::uint64_t value);          ///< 1,136
/// "1 record", "1,136 records": the plural is made with an s.
[[nodiscard]] std::string counted(std::uint64_t number, const std::string& what);
[[nodiscard]] std::string frequency(double hz, int digits = 9);  ///< 90.0123 MHz
constexpr std::uint64_t EndOfYear9999Ms = 253'402'300'799'999;   ///< since 1970; damaged files may tell any time
[[nodiscard]] std::string utc(std::uint64_t msSince1970);        ///< 2023-11-14 22:13:20.123 UTC; "unknown" for 0
[[nodiscard]] std::string duration(std::uint64_t ms);            ///< 1:02:03.456

}  // namespace RecTool
