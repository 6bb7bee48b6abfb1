// The whole of recstation, but for what only a process of its own does.
#pragma once

#include <string>
#include <vector>

#include "options.h"

namespace RecStation {

/// Records what the arguments, in UTF-8 and without the program's name, ask for, and writes the summary. The calling
/// thread has the application object.
[[nodiscard]] ExitCode runProgram(const std::vector<std::string>& arguments);

}  // namespace RecStation
