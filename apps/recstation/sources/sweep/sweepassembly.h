// Rows put together to sweeps, and the channels that a sweep's values stand for.
#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <vector>

#include <values/maps.h>

#include "sources/sweep/sweeprow.h"

namespace RecStation {

/// The channels of a sweep, and where the values of each of its rows go.
///
/// A value's channel is the centre of its bin, or the bin's lower edge. Where rows overlap, the higher row's values
/// in the overlap are left out. The range is even, with channels nobody measures in the gaps, when all bins lie on one
/// grid to a hundredth of a bin and the gaps are at most three times as wide as what was measured; otherwise it is the
/// list of the channels.
class SweepLayout {
public:
    /// A row of the sweep.
    struct Place {
        double lowHz;
        double highHz;
        std::size_t bins;
        std::size_t skipped = 0;  ///< bins at the low end that the row below covers
        std::size_t channel = 0;  ///< of the first bin that is not skipped
        [[nodiscard]] bool sameRow(const Place& other) const
        {
            return lowHz == other.lowHz && highHz == other.highHz && bins == other.bins;
        }
    };

    SweepLayout() = default;
    /// @param rows ascending, none covering the centre of another; skipped and channel are found here
    SweepLayout(std::vector<Place> rows, bool lowerEdges);

    [[nodiscard]] const std::vector<Place>& rows() const { return m_rows; }
    [[nodiscard]] const values::ChannelRange& range() const { return m_range; }
    [[nodiscard]] double lowHz() const { return m_rows.front().lowHz; }
    [[nodiscard]] double highHz() const { return m_rows.back().highHz; }
    [[nodiscard]] double stepHz() const;

private:
    void skipOverlaps(bool lowerEdges);
    bool placeOnGrid(double offset);
    void placeInList(double offset);

    std::vector<Place> m_rows;
    values::ChannelRange m_range;
};

/// A sweep to be shown.
struct Sweep {
    unsigned long long time = 0;  ///< of its first row
    bool newLayout = false;       ///< the channels are others than those of the sweep before
    std::vector<float> cells;     ///< one per channel
};

class SweepAssembly {
public:
    explicit SweepAssembly(bool lowerEdges) : m_lowerEdges(lowerEdges) {}

    [[nodiscard]] bool empty() const { return m_rows.empty(); }
    [[nodiscard]] std::size_t rows() const { return m_rows.size(); }
    /// Whether a row belongs to the sweep after the one that is being put together.
    [[nodiscard]] bool beginsNext(const SweepRow& row) const;
    /// @throws LineError when the sweep has too many values or rows
    void add(const SweepRow& row);
    /// A row of the sweep could not be read: what it lacks are no measurements, not another range.
    void noteLoss() { m_loss = true; }
    /// All rows are there, as far as the sweeps before tell.
    [[nodiscard]] bool complete() const;
    /// The time of the first row.
    [[nodiscard]] unsigned long long time() const { return m_time; }
    /// Ends the sweep. Its cells replace those of an older sweep, whose memory is used again.
    void take(Sweep& sweep);
    [[nodiscard]] const SweepLayout& layout() const { return m_layout; }  ///< of the sweep taken last

private:
    struct Row {
        double highHz;
        std::size_t bins;
        std::size_t firstLevel;  // in m_levels
    };

    [[nodiscard]] bool isLayout() const;
    [[nodiscard]] bool isPartOfLayout() const;

    bool m_lowerEdges;
    std::map<double, Row> m_rows;  // by the lowest frequency
    std::vector<float> m_levels;
    unsigned long long m_time = 0;
    unsigned long long m_lastTime = 0;
    bool m_loss = false;
    SweepLayout m_layout;
    std::size_t m_sameLayouts = 0;  // sweeps in a row that had it
};

}  // namespace RecStation
