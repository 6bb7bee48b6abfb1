// What is wrong with a command line, in a sentence.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace RecStation {

/// "a, b, c".
[[nodiscard]] std::string listed(const std::vector<std::string>& words);

/// Says that a source is named twice, which the parser takes for more of the first; empty when none is.
[[nodiscard]] std::string namedTwice(const CLI::App& app);

/// @param error what the parser threw
/// @param arguments what it was given
[[nodiscard]] std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error,
                                      const std::vector<std::string>& arguments);

}  // namespace RecStation
