// Bearings and fixes as GeoJSON (RFC 7946); doc/rectool.md describes what the features carry.
#pragma once

#include <vector>

#include "features.h"
#include "geofixes.h"
#include "printing/json.h"
#include "replay/linesofbearing.h"

namespace RecTool {

struct GeoJsonSettings {
    Geo::FixSettings fix;
    unsigned long long windowUs = 0;
    double lengthM = 0;  ///< of the lines; 0: chosen
};

/// Writes a feature collection, one feature a line, piece by piece: there may be millions of bearings.
/// @param about further members of the collection, an object
void writeGeoJson(const Json& about, const TakenBearings& taken, const std::vector<BearingGroup>& groups,
                  const GeoJsonSettings& settings, const TextSink& write);

}  // namespace RecTool
