// The service: one mover, again and again.
#pragma once

#include "options.h"

namespace Zelvod {

/// Ends when the process is to stop, or nobody can read what it tells. @return the program's exit code
ExitCode runService(const Options& options);

}  // namespace Zelvod
