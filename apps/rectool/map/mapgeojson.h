// The verb "map" with --geojson.
#pragma once

#include <recording2/inspection/inspection.h>

#include "mapoptions.h"
#include "printing/exitcode.h"
#include "replay/recordingtime.h"

namespace RecTool {

/// Lines of bearing and fixes of the span.
[[nodiscard]] ExitCode mapGeoJson(const MapOptions& options, const Recording2::Inspection::Summary& summary,
                                  const Span& span);
[[nodiscard]] ExitCode mapHeat(const MapOptions& options);
[[nodiscard]] ExitCode mapTrack(const MapOptions& options);

}  // namespace RecTool
