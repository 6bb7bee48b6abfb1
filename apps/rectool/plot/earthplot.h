// Pictures of the earth: heat maps of bearings, and levels where they were measured.
#pragma once

#include <vector>

#include "analysis/fieldtrack.h"
#include "map/heat.h"

namespace RecTool {

/// The recordings are not walked.
[[nodiscard]] ExitCode drawHeat(const MapOptions& options, Recordings& recordings, const Heat& heat);
/// A panel for each track. Each has a point. The recordings are not walked.
[[nodiscard]] ExitCode drawField(const MapOptions& options, Recordings& recordings,
                                 const std::vector<FieldTrack>& tracks);

}  // namespace RecTool
