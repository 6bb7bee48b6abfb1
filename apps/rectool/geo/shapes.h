// Lines and outlines on the ellipsoid as longitude and latitude, cut where they pass the antimeridian.
#pragma once

#include <vector>

#include "geodesic.h"

namespace RecTool::Geo {

/// Longitudes are -180 to 180 and never jump within a path.
using Path = std::vector<Position>;

/// The geodesic, with so many points between its ends that it is one also where points are joined by straight lines.
/// One part, or two and more where it passes the antimeridian.
[[nodiscard]] std::vector<Path> linePaths(const LineOfBearing& line, double lengthM);

/// Points joined by straight lines; as linePaths.
[[nodiscard]] std::vector<Path> pathParts(Path path);
/// An outline, without its first point again at the end, as closed rings that are cut as those of ellipses.
[[nodiscard]] std::vector<Path> outlineRings(Path ring);
/// The outline of an ellipse around a position: closed rings, counter-clockwise. Several where it reaches over the
/// antimeridian; around a pole the ring runs along the antimeridian and the pole.
[[nodiscard]] std::vector<Path> ellipseRings(const Position& centre, const Ellipse& ellipse);

}  // namespace RecTool::Geo
