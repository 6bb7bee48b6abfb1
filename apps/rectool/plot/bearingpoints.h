// Bearings over time as the points of a picture, channel by channel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "timespan.h"

namespace RecTool {

/// How many bearings every frequency has, to find those that are worth a colour of their own.
class BearingCount {
public:
    void add(double frequencyHz)
    {
        ++m_bearings[frequencyHz];
        ++m_all;
    }
    /// The frequencies with the most bearings, ascending.
    [[nodiscard]] std::vector<double> most(std::size_t number) const;
    [[nodiscard]] std::uint64_t of(double frequencyHz) const;
    [[nodiscard]] std::size_t channels() const { return m_bearings.size(); }
    [[nodiscard]] std::uint64_t all() const { return m_all; }

private:
    std::map<double, std::uint64_t> m_bearings;
    std::uint64_t m_all = 0;
};

/// The points of one colour: of those that fall onto one pixel only the first, so that their number is that of the
/// pixels at most.
class BearingPoints {
public:
    struct Point {
        double timeMs = 0;
        double azimuthDeg = 0;
    };

    /// @param columns,rows pixels over the span and over 360 degrees
    BearingPoints(const TimeSpan& times, std::size_t columns, std::size_t rows);

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
