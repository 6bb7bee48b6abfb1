// The whole of recstation, but for what only a process of its own does, and its command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options.h"

namespace RecStation {

/// Records what the arguments, in UTF-8 and without the program's name, ask for, and writes the summary. The calling
/// thread has the application object.
[[nodiscard]] ExitCode runProgram(const std::vector<std::string>& arguments);

/// The options, or the exit code when the program has nothing to do: help was shown, or the arguments are wrong and
/// the reason was written to the standard error output.
struct CommandLine {
    std::optional<Options> options;
    ExitCode exitCode = ExitCode::Success;
};

/// @param arguments UTF-8, without the program name
[[nodiscard]] CommandLine parseCommandLine(std::vector<std::string> arguments);

}  // namespace RecStation
