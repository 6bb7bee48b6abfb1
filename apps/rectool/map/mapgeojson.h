// The verb "map" with --geojson.
#pragma once

#include <recording2/inspection/inspection.h>

#include "mapoptions.h"
#include "printing/exitcode.h"
#include "replay/recordingtime.h"

namespace RecTool {

[[nodiscard]] ExitCode mapGeoJson(const MapOptions& options, const Recording2::Inspection::Summary& summary,
                                  const Span& span);

}  // namespace RecTool
