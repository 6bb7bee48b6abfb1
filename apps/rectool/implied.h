// What arguments ask for that begin with no verb, and what is wrong with arguments.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace RecTool::CommandLine {

/// Puts the verb in front that a user of files or directories alone hopes for: info, as a table of several files.
void addImpliedVerb(const CLI::App& app, std::vector<std::string>& arguments);

/// A sentence about the first argument where it is none of the app's verbs, or about the second where a verb has
/// verbs of its own; empty where nothing is wrong. It names the verb that comes nearest.
[[nodiscard]] std::string unknownVerb(const CLI::App& app, const std::vector<std::string>& arguments);

/// A sentence about arguments that could not be parsed.
[[nodiscard]] std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error);
/// "rectool cat --help tells more.", of the verb that was given.
[[nodiscard]] std::string whereHelpIs(const CLI::App& app);

}  // namespace RecTool::CommandLine
