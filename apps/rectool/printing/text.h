// Numbers, times and bytes as people read them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <terminaltext/terminaltext.h>

namespace RecTool {

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
