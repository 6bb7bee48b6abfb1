// The whole of rectool, but for what only a process of its own does.
#pragma once

#include <string>
#include <vector>

namespace RecTool::CommandLine {

/// Does what the arguments, without the program's name, ask for. @return the program's exit code
[[nodiscard]] int run(std::vector<std::string> arguments);

}  // namespace RecTool::CommandLine
