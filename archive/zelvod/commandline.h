// The command line of zelvod, the service that takes recordings to the archive.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "service.h"

namespace Zelvod {

struct CommandLine {
    std::optional<Options> options;  ///< nothing: the program ends with the exit code, all is said already
    ExitCode exitCode = ExitCode::Success;
};

/// Writes help to the standard output and complaints to the standard error.
/// @param arguments without the program's name, UTF-8
[[nodiscard]] CommandLine parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace Zelvod
