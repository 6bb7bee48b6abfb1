// The service: one mover, again and again, and what it says about a run.
#pragma once

#include <cstdint>
#include <string>

#include <QString>

#include <zelvo/archive.h>

namespace Zelvod {

/// Whether a run is worth a line: it did something, or its problem is another than before.
[[nodiscard]] bool isNews(const Zelvo::MoverReport& report, const QString& lastProblem);
/// One object on one line, with its line feed. Times in ISO 8601, UTC.
[[nodiscard]] std::string jsonLine(const Zelvo::MoverReport& report, std::int64_t nowMs);
/// Lines for people; the last is about the whole run. Empty when there is nothing to say.
[[nodiscard]] QString text(const Zelvo::MoverReport& report, const QString& lastProblem, bool failuresOnly);

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
