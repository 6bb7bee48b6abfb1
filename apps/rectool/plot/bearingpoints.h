// Bearings over time as the points of a picture, channel by channel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "replay/frequencies.h"

namespace RecTool {

/// How many bearings every frequency has.
using BearingCounts = std::map<double, std::uint64_t>;

/// The frequencies with the most bearings, ascending: those that are worth a colour of their own.
[[nodiscard]] std::vector<double> busiest(const BearingCounts& counts, std::size_t number);

/// The points of one colour: of those that fall onto one pixel only the first, so that their number is that of the
/// pixels at most.
class BearingPoints {
public:
    struct Point {
        double timeMs = 0;
        double azimuthDeg = 0;
    };

    /// @param columns,rows pixels over the span and over 360 degrees
    BearingPoints(const TimeSpan& times, std::size_t columns, std::size_t rows)
        : m_times(times), m_columns(columns), m_rows(rows), m_taken(columns * rows)
    {
    }

    /// @param azimuthDeg 0 to below 360
    void add(double timeMs, double azimuthDeg);
    [[nodiscard]] const std::vector<Point>& points() const { return m_points; }

private:
    TimeSpan m_times;
    std::size_t m_columns;
    std::size_t m_rows;
    std::vector<bool> m_taken;
    std::vector<Point> m_points;
};

/// An azimuth from 0 to below 360.
[[nodiscard]] double wrapped(double degrees);

}  // namespace RecTool
