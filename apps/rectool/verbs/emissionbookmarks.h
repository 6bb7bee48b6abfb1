// Emissions as bookmarks of a copy.
#pragma once

#include "analysis/emissions.h"
#include "making/newrecording.h"

namespace RecTool {

/// Copies the recording, record by record, with a bookmark at the first sweep of each emission besides those that it
/// has; where there is one already, at the next free millisecond. What is wrong is told.
[[nodiscard]] ExitCode bookmarkEmissions(const std::string& file, const std::string& unit, const FoundEmissions& found,
                                         NewRecording& copy);

}  // namespace RecTool
