// What the command line asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "input/usageerror.h"

namespace recstation {

/// Exit codes of the program.
enum class ExitCode : std::uint8_t {
    Success = 0,
    Usage = 1,       ///< the command line is wrong
    CannotRun = 2,   ///< nothing could be recorded, or the run broke off
    Incomplete = 3,  ///< it ran, but input was bad or a file is not properly written
};

struct SimOptions {
    std::uint64_t seed = 1;
    double durationSeconds = 180;                          ///< recorded time
    unsigned long long startTime = 1'767'225'600'000'000;  ///< microseconds since 1970 UTC; 2026-01-01 00:00:00
};

struct FeedOptions {
    std::string file = "-";                       ///< UTF-8; "-": the standard input
    std::optional<unsigned long long> startTime;  ///< microseconds since 1970 UTC; nothing: the current time
    bool strict = false;                          ///< the first bad line ends the run
    bool keepAt = false;  ///< plain values are recorded at their own time, not at that of the map before them
};

}  // namespace recstation
