// Checks of options' values, so that a wrong one is refused before anything starts. Only for what parses a command
// line.
#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "terminaltext/quantity.h"

namespace TerminalText {

namespace Detail {

inline std::string refusal(const std::string& expected, const std::string& found)
{
    return "expected " + expected + ", found " + (found.empty() ? "nothing" : found);
}

}  // namespace Detail

/// Refuses what is not good with "expected EXPECTED, found TEXT".
[[nodiscard]] inline CLI::Validator acceptedIf(std::function<bool(const std::string& text)> good, std::string expected)
{
    return {[good = std::move(good), expected = std::move(expected)](std::string& text) {
                return good(text) ? std::string() : Detail::refusal(expected, text);
            },
            ""};
}

/// Turns a number with a unit into the plain number that the option holds.
/// @param parse nothing for what is no such number
/// @param range how messages call what is from lowest to highest; empty: the two numbers
[[nodiscard]] inline CLI::Validator withUnit(std::function<std::optional<double>(const std::string& text)> parse,
                                             std::string expected, double lowest, double highest,
                                             const std::string& range = {})
{
    std::string bounds = range.empty() ? shortest(lowest) + " to " + shortest(highest) : range;
    return {
        [=, parse = std::move(parse), expected = std::move(expected), bounds = std::move(bounds)](std::string& text) {
            const auto number = parse(text);
            if (!number || !(*number >= lowest && *number <= highest)) {
                return Detail::refusal(number ? bounds : expected, text);
            }
            text = shortest(*number);
            return std::string();
        },
        ""};
}

/// For options that take one of a few words, which help texts show.
[[nodiscard]] inline CLI::Validator oneOf(const std::vector<std::string>& words)
{
    std::string shown;
    std::string listed;
    for (const std::string& word : words) {
        shown += (shown.empty() ? "{" : ",") + word;
        listed += (listed.empty() ? "" : &word == &words.back() ? " or " : ", ") + word;
    }
    return {[words, listed](std::string& text) {
                const bool known = std::find(words.begin(), words.end(), text) != words.end();
                return known ? std::string() : Detail::refusal(listed, text);
            },
            shown + '}'};
}

/// For options that count something; a unit may stand after the number.
[[nodiscard]] inline CLI::Validator wholeNumber(double lowest, double highest, const std::string& unit = {})
{
    const std::string range = shortest(lowest) + " to " + shortest(highest);
    return withUnit(
        [unit](const std::string& text) {
            const auto number = parseInUnits(text, {{"", 1}, {unit, 1}});
            return number && *number == std::floor(*number) ? number : std::nullopt;
        },
        "a whole number from " + range, lowest, highest);
}

/// For options in Hz or samples a second.
/// @param range as with withUnit
[[nodiscard]] inline CLI::Validator inHertz(double lowest, double highest, const std::string& range = {})
{
    return withUnit(
        [](const std::string& text) {
            return parseQuantity(text, {"Hz", "S/s", "sps"});
        },
        "a number such as 48k, 145.5M or 1090e6", lowest, highest, range);
}

/// For options in seconds.
[[nodiscard]] inline CLI::Validator inSeconds(double lowest, double highest)
{
    return withUnit(parseSeconds, "a time such as 90s, 3min or 1h", lowest, highest);
}

/// For options in percent, degrees, pixels: a number, with the unit or without.
[[nodiscard]] inline CLI::Validator inUnit(std::initializer_list<std::string_view> units, double lowest, double highest)
{
    const std::vector<std::string> names(units.begin(), units.end());
    return withUnit(
        [names](const std::string& text) {
            auto number = parseInUnits(text, {{"", 1}});
            for (std::size_t i = 0; !number && i < names.size(); ++i) {
                number = parseInUnits(text, {{names[i], 1}});
            }
            return number;
        },
        "a number", lowest, highest);
}

}  // namespace TerminalText
