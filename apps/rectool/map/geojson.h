// Bearings and fixes as GeoJSON (RFC 7946); doc/rectool.md describes what the features carry.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "geofixes.h"
#include "linesofbearing.h"
#include "printing/json.h"

namespace RecTool {

struct GeoJsonSettings {
    Geo::FixSettings fix;
    unsigned long long windowUs = 0;
    double lengthM = 0;  ///< of the lines; 0: chosen
};

/// Takes a piece of text.
using TextSink = std::function<void(const std::string&)>;

/// Writes a feature collection, one feature a line, piece by piece: there may be millions of bearings.
/// @param about further members of the collection, an object
void writeGeoJson(const Json& about, const TakenBearings& taken, const std::vector<BearingGroup>& groups,
                  const GeoJsonSettings& settings, const TextSink& write);

}  // namespace RecTool
