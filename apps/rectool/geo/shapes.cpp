// Points along lines of bearing and ellipses, cut at the antimeridian and closed around poles.
#include "shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/GeodesicLine.hpp>
#include <GeographicLib/Math.hpp>

namespace RecTool::Geo {

namespace {

using GeographicLib::Geodesic;

constexpr double AntimeridianDeg = 180;
constexpr double FullCircleDeg = 360;
constexpr double PoleDeg = 90;

/// Longitudes go on past 180 instead of jumping back.
Path unwrapped(Path path)
{
    for (std::size_t i = 1; i < path.size(); ++i) {
        path[i].longitudeDeg =
            path[i - 1].longitudeDeg + GeographicLib::Math::AngDiff(path[i - 1].longitudeDeg, path[i].longitudeDeg);
    }
    return path;
}

/// Where the straight line between two points has a longitude.
Position between(const Position& a, const Position& b, double longitudeDeg)
{
    const double share = (longitudeDeg - a.longitudeDeg) / (b.longitudeDeg - a.longitudeDeg);
    return {a.latitudeDeg + share * (b.latitudeDeg - a.latitudeDeg), longitudeDeg};
}

/// How often the longitude has gone around. The antimeridian itself belongs to the turn that the path is in.
int turnOf(double longitudeDeg)
{
    return static_cast<int>(std::floor((longitudeDeg + AntimeridianDeg) / FullCircleDeg));
}

Position turnedBack(Position position, int turn)
{
    position.longitudeDeg -= FullCircleDeg * turn;
    return position;
}

std::vector<Path> cutLine(const Path& path)
{
    std::vector<Path> parts(1);
    int turn = turnOf(path.front().longitudeDeg);
    Position last = path.front();
    for (const Position& point : path) {
        const int next = turnOf(point.longitudeDeg);
        if (next != turn) {
            const double edgeDeg = FullCircleDeg * std::max(turn, next) - AntimeridianDeg;
            const Position edge = between(last, point, edgeDeg);
            parts.back().push_back(turnedBack(edge, turn));
            parts.emplace_back(1, turnedBack(edge, next));
            turn = next;
        }
        parts.back().push_back(turnedBack(point, turn));
        last = point;
    }
    // A line that begins or ends on the antimeridian leaves a part without length.
    const auto isPoint = [](const Path& part) { return part.size() == 2 && part.front() == part.back(); };
    if (parts.size() > 1) {
        parts.erase(std::remove_if(parts.begin(), parts.end(), isPoint), parts.end());
    }
    return parts;
}

/// The part of an open ring on one side of a meridian.
/// @param side 1: east of it, -1: west
Path clipped(const Path& ring, double meridianDeg, int side)
{
    const auto inside = [&](const Position& point) { return (point.longitudeDeg - meridianDeg) * side >= 0; };
    Path part;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Position& point = ring[i];
        const Position& next = ring[(i + 1) % ring.size()];
        if (inside(point)) {
            part.push_back(point);
        }
        if (inside(point) != inside(next)) {
            part.push_back(between(point, next, meridianDeg));
        }
    }
    return part;
}

Path closed(Path ring)
{
    ring.push_back(ring.front());
    return ring;
}

/// An outline of which a pole is inside: along it from -180 to 180, then along the pole.
Path aroundPole(Path ring)
{
    const double poleDeg = ring.front().latitudeDeg > 0 ? PoleDeg : -PoleDeg;
    for (Position& point : ring) {
        point = turnedBack(point, turnOf(point.longitudeDeg));
    }
    std::sort(ring.begin(), ring.end(),
              [](const Position& a, const Position& b) { return a.longitudeDeg < b.longitudeDeg; });
    const Position beyond{ring.front().latitudeDeg, ring.front().longitudeDeg + FullCircleDeg};
    const double edgeDeg = between(ring.back(), beyond, AntimeridianDeg).latitudeDeg;
    ring.insert(ring.begin(), {edgeDeg, -AntimeridianDeg});
    ring.insert(ring.end(), {{edgeDeg, AntimeridianDeg}, {poleDeg, AntimeridianDeg}, {poleDeg, -AntimeridianDeg}});
    if (poleDeg < 0) {
        std::reverse(ring.begin(), ring.end());
    }
    return closed(std::move(ring));
}

}  // namespace

std::vector<Path> pathParts(Path path)
{
    return cutLine(unwrapped(std::move(path)));
}

std::vector<Path> outlineRings(Path ring)
{
    ring = unwrapped(closed(std::move(ring)));
    const double woundDeg = ring.back().longitudeDeg - ring.front().longitudeDeg;
    ring.pop_back();
    if (std::abs(woundDeg) > AntimeridianDeg) {
        return {aroundPole(std::move(ring))};
    }
    const auto [west, east] = std::minmax_element(
        ring.begin(), ring.end(), [](const Position& a, const Position& b) { return a.longitudeDeg < b.longitudeDeg; });
    const int first = turnOf(west->longitudeDeg);
    const double edgeDeg = FullCircleDeg * first + AntimeridianDeg;
    std::vector<std::pair<Path, int>> parts = {{ring, first}};
    if (east->longitudeDeg > edgeDeg) {
        parts = {{clipped(ring, edgeDeg, -1), first}, {clipped(ring, edgeDeg, 1), first + 1}};
    }
    std::vector<Path> rings;
    for (auto& [part, turn] : parts) {
        for (Position& point : part) {
            point = turnedBack(point, turn);
        }
        rings.push_back(closed(std::move(part)));
    }
    return rings;
}

std::vector<Path> linePaths(const LineOfBearing& line, double lengthM)
{
    constexpr double PieceM = 5'000;
    constexpr double MostPieces = 1'000;
    const int pieces = static_cast<int>(std::clamp(std::ceil(lengthM / PieceM), 1.0, MostPieces));
    const GeographicLib::GeodesicLine geodesic =
        Geodesic::WGS84().Line(line.from.latitudeDeg, line.from.longitudeDeg, line.azimuthDeg);
    Path path = {line.from};
    for (int i = 1; i <= pieces; ++i) {
        Position point;
        geodesic.Position(lengthM * i / pieces, point.latitudeDeg, point.longitudeDeg);
        path.push_back(point);
    }
    return pathParts(std::move(path));
}

std::vector<Path> ellipseRings(const Position& centre, const Ellipse& ellipse)
{
    constexpr int Points = 72;
    Path ring;
    for (int i = 0; i < Points; ++i) {
        // Against the clock, evenly around the circle that the ellipse is a squeezed picture of.
        const double angle = -2 * std::numbers::pi * i / Points;
        const double along = ellipse.semiMajorM * std::cos(angle);
        const double across = ellipse.semiMinorM * std::sin(angle);
        const double azimuthDeg =
            ellipse.orientationDeg + std::atan2(across, along) * AntimeridianDeg / std::numbers::pi;
        ring.push_back(endOf({centre, azimuthDeg}, std::hypot(along, across)));
    }
    return outlineRings(std::move(ring));
}

}  // namespace RecTool::Geo
