// The verb "map" with --track; doc/rectool.md describes what the features carry.
#pragma once

#include <vector>

#include "analysis/fieldtrack.h"
#include "features.h"
#include "mapoptions.h"

namespace RecTool {

/// Writes a feature collection, one feature a line: ways and the positions on them.
void writeFieldJson(const MapOptions& options, const Recordings& recordings, const std::vector<FieldTrack>& tracks,
                    const TextSink& write);

}  // namespace RecTool
