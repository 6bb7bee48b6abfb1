// Numbers as text: with units, as people write them after an option, and with the fewest digits.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace TerminalText {

namespace Detail {

struct NumberAndRest {
    double number = 0;
    std::string_view rest;  ///< without blanks around it
};

inline std::string_view withoutBlanks(std::string_view text)
{
    constexpr std::string_view Blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(Blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

inline std::optional<NumberAndRest> parted(std::string_view text)
{
    text = withoutBlanks(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    NumberAndRest found;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, found.number);
    if (error != std::errc() || !std::isfinite(found.number)) {
        return std::nullopt;
    }
    found.rest = withoutBlanks(std::string_view(stop, static_cast<std::size_t>(end - stop)));
    return found;
}

/// Upper and lower case are alike.
inline bool isSameWord(std::string_view a, std::string_view b)
{
    const auto lowered = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    bool same = a.size() == b.size();
    for (std::size_t i = 0; same && i < a.size(); ++i) {
        same = lowered(a[i]) == lowered(b[i]);
    }
    return same;
}

}  // namespace Detail

struct Unit {
    std::string_view name;  ///< empty for a plain number
    double factor = 1;
};

namespace Detail {

inline std::optional<double> inUnits(const NumberAndRest& found, std::initializer_list<Unit> units)
{
    for (const Unit& unit : units) {
        if (isSameWord(found.rest, unit.name)) {
            const double value = found.number * unit.factor;
            return std::isfinite(value) ? std::optional(value) : std::nullopt;
        }
    }
    return std::nullopt;
}

}  // namespace Detail

/// A number in one of the units, times its factor; upper and lower case of units are alike. Always finite.
[[nodiscard]] inline std::optional<double> parseInUnits(std::string_view text, std::initializer_list<Unit> units)
{
    const auto found = Detail::parted(text);
    return found ? Detail::inUnits(*found, units) : std::nullopt;
}

/// "48k", "145.5M", "2.4 GHz", "1090e6": a number with one of the prefixes k, M, G and one of the units; both may be
/// missing. Upper and lower case are alike: nobody measures radio in millihertz.
[[nodiscard]] inline std::optional<double> parseQuantity(std::string_view text,
                                                         std::initializer_list<std::string_view> units)
{
    const auto found = Detail::parted(text);
    if (!found) {
        return std::nullopt;
    }
    std::string_view prefix = found->rest;
    for (const std::string_view unit : units) {
        const std::size_t from = prefix.size() - std::min(prefix.size(), unit.size());
        if (Detail::isSameWord(prefix.substr(from), unit)) {
            prefix = Detail::withoutBlanks(prefix.substr(0, from));
            break;
        }
    }
    return Detail::inUnits({found->number, prefix}, {{"", 1}, {"k", 1e3}, {"M", 1e6}, {"G", 1e9}});
}

/// Seconds of "90", "90s", "250ms", "3min", "1h" or "7d".
[[nodiscard]] inline std::optional<double> parseSeconds(std::string_view text)
{
    return parseInUnits(text, {{"", 1}, {"ms", 1e-3}, {"s", 1}, {"min", 60}, {"h", 3600}, {"d", 86400}});
}

/// The fewest digits that give the number again; without an exponent where that is legible.
[[nodiscard]] inline std::string shortest(double number)
{
    constexpr double LeastLegible = 1e-4;
    constexpr double MostLegible = 1e15;
    constexpr std::size_t Longest = 40;
    const double magnitude = std::fabs(number);
    const bool isLegible = number == 0 || (magnitude >= LeastLegible && magnitude < MostLegible);
    std::array<char, Longest> text{};
    char* const end = text.data() + text.size();
    const auto written = isLegible ? std::to_chars(text.data(), end, number, std::chars_format::fixed)
                                   : std::to_chars(text.data(), end, number);
    return {text.data(), written.ptr};
}

}  // namespace TerminalText
