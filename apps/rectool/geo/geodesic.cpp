// Distance, azimuth and the end of a line of bearing, computed on the ellipsoid.
#include "geodesic.h"

#include <GeographicLib/Geodesic.hpp>

namespace RecTool::Geo {

using GeographicLib::Geodesic;

double distanceM(const Position& from, const Position& to)
{
    double metres = 0;
    Geodesic::WGS84().Inverse(from.latitudeDeg, from.longitudeDeg, to.latitudeDeg, to.longitudeDeg, metres);
    return metres;
}

double azimuthDeg(const Position& from, const Position& to)
{
    double departureDeg = 0;
    double arrivalDeg = 0;
    Geodesic::WGS84().Inverse(from.latitudeDeg, from.longitudeDeg, to.latitudeDeg, to.longitudeDeg, departureDeg,
                              arrivalDeg);
    return departureDeg;
}

Position endOf(const LineOfBearing& line, double lengthM)
{
    Position end;
    Geodesic::WGS84().Direct(line.from.latitudeDeg, line.from.longitudeDeg, line.azimuthDeg, lengthM, end.latitudeDeg,
                             end.longitudeDeg);
    return end;
}

}  // namespace RecTool::Geo
