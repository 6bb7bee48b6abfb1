// A number over time, as much of it as a picture can show.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "replay/frequencies.h"

namespace RecTool {

/// The values in force in a span: each from its record to the next one. While there are few they are kept as they are,
/// otherwise as the lowest and the highest of every column.
class Envelope {
public:
    struct Point {
        double timeMs = 0;
        double value = 0;  ///< NaN or infinite: no value
    };
    struct Bar {
        double lowest = std::numeric_limits<double>::quiet_NaN();  ///< NaN: nothing in force
        double highest = std::numeric_limits<double>::quiet_NaN();
    };
    struct Column : Bar {
        std::array<Bar, 2> halves;  ///< of a circle: below its middle and from there on
        bool joined = false;        ///< the halves are one: a value went through the middle
    };

    /// @param times at least a millisecond wide
    /// @param middle of values on a circle of 360 degrees, such as 180 for 0 to 360: nothing lies between 359 and 1
    /// then
    Envelope(std::size_t columns, const TimeSpan& times, std::optional<double> middle = std::nullopt);

    /// A time before the one before counts as that one; times may lie before the span, not after it.
    void add(double timeMs, double value);
    void finish();

    /// All values of the span, the first one at its beginning if it was in force then; empty when there were more than
    /// columns.
    [[nodiscard]] const std::vector<Point>& points() const { return m_points; }
    [[nodiscard]] bool hasPoints() const { return m_values <= m_columns.size(); }
    [[nodiscard]] const std::vector<Column>& columns() const { return m_columns; }
    /// What is to be drawn in a column: none, one, or the two sides of a circle's seam.
    [[nodiscard]] std::vector<Bar> bars(std::size_t column) const;
    /// Whether the way from a value to the next one leads over the seam of the circle.
    [[nodiscard]] bool passesSeam(double before, double next) const;
    [[nodiscard]] const TimeSpan& times() const { return m_times; }
    [[nodiscard]] std::uint64_t records() const { return m_records; }  ///< in the span
    [[nodiscard]] double lowest() const { return m_lowest; }           ///< NaN: there is no value
    [[nodiscard]] double highest() const { return m_highest; }

private:
    void put(const Point& point);
    void keepInForceTo(std::size_t column);
    void count(std::size_t column);
    void join(std::size_t column, double before);

    TimeSpan m_times;
    std::optional<double> m_middle;
    std::vector<Column> m_columns;
    std::vector<Point> m_points;
    std::uint64_t m_values = 0;
    std::uint64_t m_records = 0;
    std::size_t m_column = 0;
    double m_inForce = std::numeric_limits<double>::quiet_NaN();
    bool m_begun = false;
    bool m_hasBefore = false;
    double m_lowest = std::numeric_limits<double>::quiet_NaN();
    double m_highest = std::numeric_limits<double>::quiet_NaN();
};

}  // namespace RecTool
