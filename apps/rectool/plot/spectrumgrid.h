// A spectrum over time, binned into the pixels of a picture while it is replayed.
#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <vector>

#include <values/maps.h>

#include "replay/frequencies.h"

namespace RecTool {

/// Levels by column (frequency) and row (time). A pixel stands for all channels of its column and all levels that were
/// in force in its time: a level is in force until the next one. Where nothing was measured a pixel is NaN; levels
/// that are no finite number count as not measured.
///
/// Memory: the grid and two copies of the map's cells. Work: for a record what changed and one fast comparison of the
/// cells, for a row the columns.
class SpectrumGrid {
public:
    enum class Mode : unsigned char {
        Max,   ///< the highest level
        Mean,  ///< the mean of the levels, of each as long as it was in force
    };

    SpectrumGrid(std::size_t columns, std::size_t rows, const FrequencySpan& frequencies, const TimeSpan& times,
                 Mode mode);

    /// Takes over what the map is from a time on. A time before the one before counts as that one; times may lie
    /// before the span, not after it.
    void update(const values::ChannelRange& range, std::span<const float> cells, double timeMs);
    /// What is in force stays so to the end of the span.
    void finish();

    [[nodiscard]] std::size_t columns() const { return m_columns; }
    [[nodiscard]] std::size_t rows() const { return m_rows; }
    [[nodiscard]] float at(std::size_t column, std::size_t row) const { return m_grid[row * m_columns + column]; }
    [[nodiscard]] const std::vector<float>& pixels() const { return m_grid; }
    /// The lowest and highest single level that was in force, in all channels of the span; NaN when there was none.
    [[nodiscard]] float lowest() const { return m_lowest; }
    [[nodiscard]] float highest() const { return m_highest; }

private:
    static constexpr float None = -std::numeric_limits<float>::infinity();

    void replace(const values::ChannelRange& range, std::span<const float> cells);
    void takeCells(std::span<const float> cells);
    void changed(std::size_t first, std::size_t end);
    void refresh(std::size_t column);
    void begin();
    void advanceTo(double timeMs);
    void endRow();
    [[nodiscard]] double beginOf(std::size_t row) const;
    void spend(std::size_t column, double timeMs);
    [[nodiscard]] float combined(const ColumnMap::Interval& channels) const;
    void countLevel(std::size_t rank);

    std::size_t m_columns;
    std::size_t m_rows;
    FrequencySpan m_frequencies;
    TimeSpan m_times;
    Mode m_mode;
    double m_rowMs;

    values::ChannelRange m_range;
    ColumnMap m_map;
    bool m_isSeen = false;         // the range has channels in the span
    std::vector<float> m_cells;    // as they were given
    std::vector<float> m_levels;   // ascending in frequency, None where nothing was measured
    std::vector<float> m_inForce;  // a column's level now
    std::vector<float> m_highestOfRow;
    std::vector<double> m_sum;     // of the row: level times milliseconds
    std::vector<double> m_weight;  // of the row: milliseconds
    std::vector<double> m_since;   // until when a column's level is in the sum
    std::vector<float> m_grid;
    std::size_t m_row = 0;
    double m_now;  // how far the span is binned
    bool m_begun = false;
    float m_lowest = std::numeric_limits<float>::quiet_NaN();
    float m_highest = std::numeric_limits<float>::quiet_NaN();
};

}  // namespace RecTool
