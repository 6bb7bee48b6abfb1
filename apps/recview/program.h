// What recview does from its arguments to its exit code.
#pragma once

#include <string>
#include <vector>

#include "rectool/printing/exitcode.h"

namespace RecView {

/// @param arguments without the program's name
[[nodiscard]] RecTool::ExitCode runProgram(const std::vector<std::string>& arguments);

}  // namespace RecView
