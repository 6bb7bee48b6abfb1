// The verb "map" with --geojson.
#pragma once

#include <cstdint>

#include <recording2/inspection/inspection.h>

#include "verbs/commands.h"

namespace RecTool {

[[nodiscard]] ExitCode mapGeoJson(const MapOptions& options, const Recording2::Inspection::Summary& summary,
                                  std::uint64_t fromMs, std::uint64_t toMs);

}  // namespace RecTool
