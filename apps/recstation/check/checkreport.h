// The findings of a check as tables and as JSON.
#pragma once

#include <string>

#include "check/findings.h"
#include "options.h"

namespace RecStation {

/// Incomplete where anything is missing, CannotRun where no source or no recorder is left.
[[nodiscard]] ExitCode exitCodeOf(const Findings& findings);
[[nodiscard]] std::string findingsText(const Findings& findings);
[[nodiscard]] std::string findingsJson(const Findings& findings);

}  // namespace RecStation
