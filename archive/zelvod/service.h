// The service: one mover, again and again.
#pragma once

#include <functional>

#include "options.h"

namespace zelvod {

/// What the service needs of the world around it.
struct Surroundings {
    std::function<bool()> stopRequested;
    std::function<void(std::int64_t)> wait;       ///< milliseconds, shorter when the process is to stop
    std::function<bool(const std::string&)> out;  ///< false when nobody can read it any more
    std::function<void(const QString&)> complain;
};

/// @return the program's exit code
ExitCode runService(const Options& options, const Surroundings& surroundings);

}  // namespace zelvod
