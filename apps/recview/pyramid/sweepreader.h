// Reads the sweeps of a type again, from a checkpoint on.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "checkpoints.h"
#include "overview.h"
#include "tables.h"

namespace RecView {

/// A sweep as it passes; good during the call.
struct PassingSweep {
    const Record& record;
    double momentMs = 0;
    const values::ChannelRange& range;
    std::span<const float> levels;
};

/// Visits the sweeps of a type, the one in force at the checkpoint first, until the visitor gives false.
/// @param from what the checkpoint holds of this type
void readSweeps(const RecordSource& records, const OverviewHead& head, std::int32_t code, Restored from,
                const std::function<bool(const PassingSweep&)>& visit);

/// Enters single sweeps into a grid: each from its moment to the next one's, or as long as one stands at most.
class SweepPainter {
public:
    explicit SweepPainter(Grid& grid, const KnownType& type);

    /// The next sweep; those before the view may be among them. @return false behind the view
    bool add(const PassingSweep& sweep);
    /// After the last one.
    void finish();

private:
    void enter(double untilMs);
    void place(const values::ChannelRange& range);
    [[nodiscard]] double holdMs(const values::ChannelRange& range) const;

    Grid& m_grid;
    const KnownType& m_type;
    std::optional<double> m_momentMs;  // of the sweep that is not yet entered
    double m_hold = 0;
    values::ChannelRange m_range;
    struct Place {
        std::uint32_t channel;
        std::uint32_t firstRow;
        std::uint32_t endRow;
    };
    std::vector<Place> m_places;
    bool m_isPlaced = false;
    std::size_t m_lowRow = 0;
    std::size_t m_highRow = 0;
    std::vector<float> m_levels;
    std::vector<float> m_counts;
};

}  // namespace RecView
