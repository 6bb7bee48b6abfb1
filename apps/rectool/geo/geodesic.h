// Places on the WGS84 ellipsoid, and the shortest ways between them.
#pragma once

namespace RecTool::Geo {

struct Position {
    double latitudeDeg = 0;   ///< north is positive
    double longitudeDeg = 0;  ///< east is positive
    bool operator==(const Position&) const = default;
};

/// From a position into a direction; the transmitter lies somewhere on it.
struct LineOfBearing {
    Position from;
    double azimuthDeg = 0;  ///< clockwise from true north
};

struct Ellipse {
    double semiMajorM = 0;
    double semiMinorM = 0;
    double orientationDeg = 0;  ///< of the major axis, clockwise from true north, 0 to below 180
};

[[nodiscard]] double distanceM(const Position& from, const Position& to);
/// The direction in which the way begins, -180 to 180.
[[nodiscard]] double azimuthDeg(const Position& from, const Position& to);
/// Where one is after so many metres.
[[nodiscard]] Position endOf(const LineOfBearing& line, double lengthM);

}  // namespace RecTool::Geo
