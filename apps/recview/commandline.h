// From arguments to options.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options.h"
#include "rectool/printing/exitcode.h"

namespace RecView {

struct CommandLine {
    std::optional<ProgramOptions> options;  ///< nothing: what was to be said is said, the program ends
    RecTool::ExitCode exitCode = RecTool::ExitCode::Fine;
};

/// @param arguments without the program's name
[[nodiscard]] CommandLine parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace RecView
