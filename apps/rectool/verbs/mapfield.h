// The verb "map" with --heat and --track, of several recordings.
#pragma once

#include "map/mapoptions.h"
#include "printing/exitcode.h"

namespace RecTool {

[[nodiscard]] ExitCode mapHeat(const MapOptions& options);
[[nodiscard]] ExitCode mapTrack(const MapOptions& options);

}  // namespace RecTool
