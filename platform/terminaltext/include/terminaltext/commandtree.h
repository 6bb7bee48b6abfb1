// What a program takes on its command line, told to what makes man pages and completion of it.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace TerminalText {

/// Writes the program's commands and options as one JSON document to the standard output when the arguments ask for
/// that
/// (--print-command-tree and nothing else). What the help does not show is left out.
/// @return whether they did; the program has nothing else to do then
[[nodiscard]] bool printedCommandTree(const CLI::App& app, const std::vector<std::string>& arguments);

}  // namespace TerminalText
