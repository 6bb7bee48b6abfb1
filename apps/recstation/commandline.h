// The command line of recstation.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options.h"

namespace RecStation {

/// The options, or the exit code when the program has nothing to do: help was shown, or the arguments are wrong and
/// the reason was written to the standard error output.
struct CommandLine {
    std::optional<Options> options;
    ExitCode exitCode = ExitCode::Success;
};

/// @param arguments UTF-8, without the program name
[[nodiscard]] CommandLine parseCommandLine(std::vector<std::string> arguments);

}  // namespace RecStation
