#include "units.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <system_error>

namespace RecTool {

namespace {

struct Unit {
    const char* name;  // in small letters
    double factor;
};

/// A number and the factor of the unit behind it; nothing when one of them is none.
std::optional<double> parseWithUnit(const std::string& text, std::initializer_list<Unit> units)
{
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    if (error != std::errc() || !std::isfinite(number)) {
        return std::nullopt;
    }
    std::string name;
    for (const char* at = last; at != end; ++at) {
        if (*at != ' ' || !name.empty()) {
            name += static_cast<char>(std::tolower(static_cast<unsigned char>(*at)));
        }
    }
    for (const Unit& unit : units) {
        if (name == unit.name) {
            return number * unit.factor;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<double> parseHertz(const std::string& text)
{
    const std::optional<double> hertz = parseWithUnit(
        text, {{"", 1}, {"hz", 1}, {"k", 1e3}, {"khz", 1e3}, {"m", 1e6}, {"mhz", 1e6}, {"g", 1e9}, {"ghz", 1e9}});
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
        parseWithUnit(text, {{"ms", 1}, {"s", 1e3}, {"min", 60e3}, {"h", 3600e3}, {"d", 24 * 3600e3}});
    if (!ms || *ms < 0 || *ms > Most) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(std::llround(*ms));
}

}  // namespace RecTool
