// The programs, called within this process: a start takes longer than most verbs do.
#pragma once

#include "support/testing.h"

namespace Cases {

struct Printed {
    int exitCode = 0;
    std::string out;
    std::string err;
};

/// Runs rectool or recstation with arguments in the current folder; rectool plot, which needs an application of its
/// own, in a process. @param input what stands in the standard input
[[nodiscard]] Printed runProgram(const std::vector<std::string>& words, const std::string& input);

/// A file of the build or the sources. On Windows cases run on another drive than it is on.
std::string fromAnyDrive(const char* path);

}  // namespace Cases
