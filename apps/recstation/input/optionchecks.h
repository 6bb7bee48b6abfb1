// Options that several sources have, and checks of values that only recstation has.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <terminaltext/optionvalues.h>

namespace RecStation {

/// FILE, which must be given; a recording is none, whatever the source would make of its bytes.
CLI::Option* addInputFile(CLI::App& command, std::string& file, const char* description);
/// FILE..., one at least, of which none is a recording.
CLI::Option* addInputFiles(CLI::App& command, std::vector<std::string>& files, const char* description);
/// --utc-offset
void addUtcOffset(CLI::App& command, std::string& offset, const char* description);
/// --start, told in microseconds since 1970 UTC
void addStart(CLI::App& command, const char* description, std::function<void(unsigned long long)> set);
/// --strict
void addStrict(CLI::App& command, bool& strict, const char* description = "The first bad line ends the run");
/// "a time such as ...", for --start.
[[nodiscard]] CLI::Validator aTime();

}  // namespace RecStation
