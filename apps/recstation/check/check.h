// What a run would record, found out without recording.
#pragma once

#include "options.h"

namespace RecStation {

/// Tries the sources, looks at the recorders' directories, and writes what it found to the standard output.
/// @return Success, Incomplete where something is missing, CannotRun where nothing would be recorded, Usage
[[nodiscard]] ExitCode checkStation(const Options& options);

}  // namespace RecStation
