// Outputs that copies and recoveries left unfinished when they were killed: "NAME.rec.part", "NAME.rec.part2", ...
#pragma once

#include <string>
#include <vector>

namespace Recording2::Inspection {

/// Removes what is left beside a name that is going to be written, but for what a running process writes and what is no
/// recording.
/// @return the paths removed
std::vector<std::string> removeLeftParts(const std::string& output);

/// The same for all recordings of a directory. A part that holds a whole header may be anybody's: it stays.
std::vector<std::string> removeLeftPartsIn(const std::string& directory);

}  // namespace Recording2::Inspection
