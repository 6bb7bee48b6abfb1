// What recordings are: one report each, or all of them as a table of one line each.
#pragma once

#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

#include "commands.h"

namespace RecTool {

struct OverviewOptions {
    std::vector<std::string> files;  ///< or directories, of which there is a table
    bool json = false;
    bool levels = false;     ///< measured levels as well
    bool table = false;      ///< one line a recording, also without a directory; the following ask for it, too
    bool recursive = false;  ///< directories in directories
    bool verify = false;     ///< check every recording
    std::string device;      ///< only recordings whose device has this in its name or type
    std::string since;       ///< only recordings that end at this moment or later
    std::string until;       ///< only recordings that begin at this moment or earlier
    std::string covers;      ///< only recordings of this frequency
    std::string sort;        ///< a column; empty: by start
    bool reverse = false;
};

/// The verb info with everything that it takes.
ExitCode overview(const OverviewOptions& options);

/// Whether a table is what is asked for: it was said, something to choose or sort by is given, or a directory.
[[nodiscard]] bool asksForListing(const OverviewOptions& options);
/// Prints the table. Memory: one line for each recording that is shown.
[[nodiscard]] ExitCode listRecordings(const OverviewOptions& options);

/// The word for a file that can or cannot be read ("missing").
[[nodiscard]] const char* stateName(const std::string& file, const Recording2::Inspection::Summary& summary);

}  // namespace RecTool
