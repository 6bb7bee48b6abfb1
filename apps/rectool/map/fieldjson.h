// The verb "map" with --track and --heat; doc/rectool.md describes what the features carry.
#pragma once

#include <vector>

#include "analysis/fieldtrack.h"
#include "features.h"
#include "heat.h"
#include "mapoptions.h"

namespace RecTool {

/// Writes a feature collection, one feature a line: ways and the positions on them.
void writeFieldJson(const MapOptions& options, const Recordings& recordings, const std::vector<FieldTrack>& tracks,
                    const TextSink& write);

/// Writes a feature collection, one feature a line: cells, stations, fixes.
void writeHeatJson(const MapOptions& options, const Recordings& recordings, const Heat& heat, const TextSink& write);

}  // namespace RecTool
