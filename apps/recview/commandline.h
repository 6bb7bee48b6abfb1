// What the command line asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "answers/answers.h"
#include "rectool/printing/exitcode.h"

namespace RecView {

/// All texts are UTF-8. Among the paths may be archive addresses.
struct ProgramOptions : Options {
    std::uint16_t port = 0;            ///< 0: one that is free
    std::string listen;                ///< a numeric address; empty: the loopback one
    std::string archiveConfiguration;  ///< empty: of the environment
    bool open = false;                 ///< the page, in the user's browser
    bool json = false;
    bool quiet = false;
    bool untilInputEnds = false;  ///< end with whoever holds the standard input
};

struct CommandLine {
    std::optional<ProgramOptions> options;  ///< nothing: what was to be said is said, the program ends
    RecTool::ExitCode exitCode = RecTool::ExitCode::Fine;
};

/// @param arguments without the program's name
[[nodiscard]] CommandLine parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace RecView
