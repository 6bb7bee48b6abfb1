// The verb "map" with --geojson.
#pragma once

#include <functional>
#include <string>

#include <recording2/inspection/inspection.h>

#include "features.h"
#include "mapoptions.h"
#include "replay/recordingtime.h"

namespace RecTool {

/// Lets something write text to a file, or to standard output where there is no name. @return Fine, or, told,
/// CannotRead
[[nodiscard]] ExitCode writeMapDocument(const std::string& output, const std::function<void(const TextSink&)>& produce);

[[nodiscard]] ExitCode mapGeoJson(const MapOptions& options, const Recording2::Inspection::Summary& summary,
                                  const Span& span);

}  // namespace RecTool
