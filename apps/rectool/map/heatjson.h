// A heat map as GeoJSON; doc/rectool.md describes what the features carry.
#pragma once

#include "geojson.h"
#include "heat.h"

namespace RecTool {

/// Writes a feature collection, one feature a line: cells, stations, fixes.
void writeHeatJson(const MapOptions& options, const Recordings& recordings, const Heat& heat, const TextSink& write);

}  // namespace RecTool
