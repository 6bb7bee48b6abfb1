// Checks of options' values, so that a wrong one is refused before anything starts.
#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

namespace recstation {

/// Refuses what is not good with "expected EXPECTED, found TEXT".
[[nodiscard]] CLI::Validator acceptedIf(std::function<bool(const std::string& text)> good, std::string expected);

/// Turns a number with a unit into the plain number that the option holds.
/// @param parse nothing for what is no such number
[[nodiscard]] CLI::Validator withUnit(std::function<std::optional<double>(const std::string& text)> parse,
                                      std::string expected, double lowest, double highest);

/// For options in Hz or samples a second.
[[nodiscard]] CLI::Validator inHertz(double lowest, double highest);
/// For options in seconds.
[[nodiscard]] CLI::Validator inSeconds(double lowest, double highest);
/// For options in percent or degrees.
[[nodiscard]] CLI::Validator inUnit(std::initializer_list<std::string_view> units, double lowest, double highest);

/// "an offset such as -05:00", for --utc-offset.
[[nodiscard]] CLI::Validator anUtcOffset();
/// "a time such as ...", for --start.
[[nodiscard]] CLI::Validator aTime();

}  // namespace recstation
