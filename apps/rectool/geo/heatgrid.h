// A grid over a piece of the earth in which bearings add up to how likely a transmitter is where.
//
// A bearing's error D is taken to be Gaussian with one standard deviation s (R. G. Stansfield, "Statistical theory of
// D.F. fixing", Journal of the IEE 94 (1947), part IIIA, 762-770), but for a share e = 0.1 of bearings that may point
// anywhere, as reflections do (J. W. Tukey, "A survey of sampling from contaminated distributions", 1960). Its evidence
// for a cell is the logarithm of how much more likely it is with a transmitter there than with one that says nothing:
//
//     ln( 1 + (1 - e) / e * 360 / (s sqrt(2 pi)) * exp(-D^2 / (2 s^2)) )        s, D in degrees
//
// times its weight, and 0 for cells beyond its reach. Evidence of all bearings is added: unlike with a plain sum of
// squares, bearings of other transmitters do not take away what others say. Azimuth and distance are those of the
// mid-latitude formula on WGS84, to 0.03 degrees and 0.1 % up to 300 km and 70 degrees of latitude.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "geodesic.h"

namespace RecTool::Geo {

struct Area {
    double southDeg = 0;
    double westDeg = 0;  ///< -180 to 180
    double northDeg = 0;
    double eastDeg = 0;  ///< above west, also beyond 180

    [[nodiscard]] Position middle() const { return {(southDeg + northDeg) / 2, (westDeg + eastDeg) / 2}; }
};

struct HeatSettings {
    double sigmaDeg = 3;      ///< standard deviation of a bearing, 0.5 to 45
    double reachM = 20'000;   ///< of a bearing, at most 300 km
    std::size_t cells = 100;  ///< along the longer side of the area
};

/// Lengths of a degree on WGS84, in metres.
struct DegreeLengths {
    double northM = 0;
    double eastM = 0;
};
[[nodiscard]] DegreeLengths degreeLengths(double latitudeDeg);

/// Everything that lies within so many metres of positions, as an area; nothing without a position. Positions on both
/// sides of the antimeridian make a narrow area across it.
class AreaAround {
public:
    void add(const Position& position);
    /// @return nothing without a position, and where the area would reach beyond 85 degrees of latitude
    [[nodiscard]] std::optional<Area> area(double aroundM) const;

private:
    std::optional<Area> m_area;
};

/// Memory: 32 bytes a cell, and half a megabyte.
class HeatGrid {
public:
    struct Cell {
        double evidence = 0;                                       ///< of all bearings, see above
        std::uint64_t bearings = 0;                                ///< that point at it within two standard deviations
        double firstMs = std::numeric_limits<double>::infinity();  ///< when the first of these was taken
        double lastMs = -std::numeric_limits<double>::infinity();  ///< and the last
    };

    HeatGrid(const Area& area, const HeatSettings& settings);

    [[nodiscard]] const Area& area() const { return m_area; }
    [[nodiscard]] std::size_t columns() const { return m_columns; }  ///< from west to east
    [[nodiscard]] std::size_t rows() const { return m_rows; }        ///< from south to north
    [[nodiscard]] const Cell& at(std::size_t column, std::size_t row) const
    {
        return m_cells[row * m_columns + column];
    }
    [[nodiscard]] Area areaOf(std::size_t column, std::size_t row) const;

    /// Adds a bearing. Those that come one after the other from within a quarter of a cell are taken from the place of
    /// the first of them: bearings of a station that stands cost next to nothing, those of one that moves a pass over
    /// the cells in reach. @param weight 0 to 1 @param momentMs when it was taken
    void add(const LineOfBearing& line, double weight, double momentMs);
    /// After the last bearing.
    void finish();

private:
    struct Pointing {
        double weight = 0;  // shared by the two directions around an azimuth
        std::uint64_t bearings = 0;
        double firstMs = std::numeric_limits<double>::infinity();
        double lastMs = -std::numeric_limits<double>::infinity();
    };
    [[nodiscard]] bool isAtAnchor(const Position& position) const;
    void spread(std::size_t direction);
    void fillRow(std::size_t row);

    Area m_area;
    double m_reachM;
    std::size_t m_columns = 1;
    std::size_t m_rows = 1;
    std::vector<Cell> m_cells;
    std::vector<double> m_kernel;      // evidence by distance in directions, from 0 on
    std::size_t m_within = 0;          // directions of two standard deviations
    std::optional<Position> m_anchor;  // where the bearings were taken that are not in the cells yet
    std::vector<Pointing> m_taken;     // there, by direction
    std::vector<Cell> m_seen;          // what they say, by direction
};

}  // namespace RecTool::Geo
