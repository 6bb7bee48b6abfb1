// Parsing frequencies in Hz and times in ms, s, min, h and d.
#include "units.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include <terminaltext/quantity.h>

namespace RecTool {

std::optional<double> parseHertz(const std::string& text)
{
    const std::optional<double> hertz = TerminalText::parseQuantity(text, {"Hz"});
    return hertz && *hertz > 0 ? hertz : std::nullopt;
}

std::optional<std::uint64_t> parseMilliseconds(const std::string& text)
{
    std::uint64_t plain = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, plain);
    if (error == std::errc() && last == end) {
        return plain;
    }
    constexpr double Most = 1e15;  // some thirty thousand years; exact as a double
    const std::optional<double> ms =
        TerminalText::parseInUnits(text, {{"ms", 1}, {"s", 1e3}, {"min", 60e3}, {"h", 3600e3}, {"d", 24 * 3600e3}});
    if (!ms || *ms < 0 || *ms > Most) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(std::llround(*ms));
}

}  // namespace RecTool
