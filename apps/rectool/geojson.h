// Bearings and fixes as GeoJSON (RFC 7946); doc/rectool.md describes what the features carry.
#pragma once

#include <string>
#include <vector>

#include "geofixes.h"
#include "json.h"
#include "linesofbearing.h"

namespace RecTool {

struct GeoJsonSettings {
    Geo::FixSettings fix;
    unsigned long long windowUs = 0;
    double lengthM = 0;  ///< of the lines; 0: chosen
};

/// A feature collection, one feature a line.
/// @param about further members of the collection, an object
[[nodiscard]] std::string geoJson(const Json& about, const TakenBearings& taken,
                                  const std::vector<BearingGroup>& groups, const GeoJsonSettings& settings);

}  // namespace RecTool
