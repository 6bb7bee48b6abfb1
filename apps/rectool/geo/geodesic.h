// Shortest ways on the WGS84 ellipsoid.
#pragma once

#include "position.h"

namespace RecTool::Geo {

[[nodiscard]] double distanceM(const Position& from, const Position& to);
/// The direction in which the way begins, -180 to 180.
[[nodiscard]] double azimuthDeg(const Position& from, const Position& to);
/// Where one is after so many metres.
[[nodiscard]] Position endOf(const LineOfBearing& line, double lengthM);

}  // namespace RecTool::Geo
