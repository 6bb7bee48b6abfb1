// Where a device was: points made of the records of its position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "export.h"

class QXmlStreamWriter;

namespace RecTool {

struct TrackPoint {
    double momentMs = 0;
    double latitudeDeg = 0;   ///< -90 to 90
    double longitudeDeg = 0;  ///< from -180 to below 180
    std::optional<double> altitudeM;
};

/// Visits the points of a device in one pass.
void walkTrack(Recordings& recordings, std::size_t track, const NewFile& file,
               const std::function<void(const TrackPoint&)>& visit);

/// What a format writes of all recordings. @return how many points
using TrackWriter = std::function<std::uint64_t(Recordings& recordings, NewFile& file, QXmlStreamWriter& xml)>;
/// @param passes over the recordings a device
[[nodiscard]] ExitCode exportTrack(const ExportOptions& options, std::size_t passes, const TrackWriter& write);

/// Degrees or metres with the fewest digits that give the number again, never with an exponent.
[[nodiscard]] QString plainDecimal(double number);

}  // namespace RecTool
