// What GeoJSON (RFC 7946) is made of: geometries and features, with numbers rounded to what they are worth.
#pragma once

#include <vector>

#include "geo/fix.h"
#include "geo/shapes.h"
#include "making/savedfile.h"
#include "printing/json.h"
#include "printing/text.h"
#include "replay/recordings.h"

namespace RecTool {

/// Degrees, without the digits that adding two recorded angles makes.
[[nodiscard]] double direction(double degrees);
/// In UTC, null after the year 9999. @param us since 1970
[[nodiscard]] Json clockTime(unsigned long long us);

/// Longitude first, to a centimetre.
[[nodiscard]] Json coordinates(const Geo::Position& position);
[[nodiscard]] Json point(const Geo::Position& position);
/// Several parts are a MultiLineString, several rings a MultiPolygon.
[[nodiscard]] Json lineString(const std::vector<Geo::Path>& parts);
[[nodiscard]] Json polygon(const std::vector<Geo::Path>& rings);
[[nodiscard]] Json feature(Json geometry, Json properties);
/// The properties that tell how sure a fix is.
[[nodiscard]] Json uncertaintyOf(const Geo::Fix& fix);

/// Writes a feature collection, one feature a line, piece by piece: there may be millions.
class FeatureWriter {
public:
    /// @param about further members of the collection, an object
    FeatureWriter(const Json& about, TextSink write);
    void add(const Json& feature);
    void end();  ///< to be called last

private:
    TextSink m_write;
    const char* m_separator = "\n";
};

/// Which recordings a collection is made of, and the span of them.
[[nodiscard]] Json aboutFiles(const RecordingsOptions& options, const Recordings& recordings);

}  // namespace RecTool
