// The verbs of the archive itself.
#pragma once

#include <cstdint>
#include <string>

#include "printing/exitcode.h"

namespace RecTool {

/// Each verb takes some of them.
struct ArchiveOptions {
    std::string what;        ///< a group or an address
    std::string address;     ///< of a file
    std::string output;      ///< empty: under its own name into the current directory
    std::string group;       ///< empty: all
    std::int64_t limit = 0;  ///< the newest so many groups; 0: all
    bool all = false;        ///< go on after the first problem
    bool json = false;
};

/// What the archive's verbs do.
struct ArchiveWork {
    using Run = ExitCode (*)(const ArchiveOptions& options);
    Run status;
    Run groups;
    Run show;
    Run fetch;
    Run verify;
    Run retry;
};
extern const ArchiveWork ArchiveVerbs;

}  // namespace RecTool
