// The service: one mover, again and again.
#pragma once

#include <cstdint>

#include <QString>

namespace Zelvod {

enum class ExitCode { Success = 0, WrongArguments = 1, CannotRun = 2, Incomplete = 3 };

/// What the service is told on its command line.
struct Options {
    QString config;
    bool setUp = false;
    bool once = false;
    bool json = false;
    bool quiet = false;
    std::int64_t everyMs = 5'000;  ///< between two looks for new recordings
};

/// Ends when the process is to stop, or nobody can read what it tells. @return the program's exit code
ExitCode runService(const Options& options);

}  // namespace Zelvod
