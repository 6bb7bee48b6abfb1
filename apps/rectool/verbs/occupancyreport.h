// How "occupancy" prints what it found.
#pragma once

#include <vector>

#include "analysis/occupancycount.h"
#include "printing/json.h"

namespace RecTool {

/// @param names of channels, may be empty
void printOccupancy(const OccupancyOptions& options, const Recordings& recordings,
                    const std::vector<TypeOccupancy>& types, const std::vector<NamedChannel>& names);

/// The document that is printed with --json.
[[nodiscard]] Json occupancyJson(const OccupancyOptions& options, const Recordings& recordings,
                                 const std::vector<TypeOccupancy>& types, const std::vector<NamedChannel>& names);

}  // namespace RecTool
